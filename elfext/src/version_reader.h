// Symbol versions: what the three version sections of a dynamic file say.
//
// Definitions and requirements are chains of records, each with a chain of auxiliary records that
// hold names; every record says how far away the next one is. The versym section has a number for
// each dynamic symbol, and the definition or requirement of that number is the symbol's. The
// layouts are those of `Elf_Verdef`, `Elf_Verdaux`, `Elf_Verneed` and `Elf_Vernaux` as the Linux
// Standard Base has them ("Symbol Versioning").
#pragma once

#include "elfext/src/text_table.h"

#include <cstdint>
#include <span>

namespace elfext {

class ReadState;

// The contents of the sections that there are, and how many records the dynamic tags promise.
struct VersionSections {
    std::span<const uint8_t> definitions;
    uint32_t definitionCount = 0;
    std::span<const uint8_t> requirements;
    uint32_t requirementCount = 0;
    std::span<const uint8_t> versym;
};

// Reads the definitions alone, for a file without dynamic symbols. A chain that leaves its section
// ends there, as does one that goes on for longer than the section is. False if the read has passed
// its limits.
bool readVersionDefinitions(ReadState& state, const VersionSections& sections,
                            const TextTable& texts);

// Notes with the symbols of the table in section `symbolTable` what `versym` says of them: entry i
// belongs to symbol i.
void readVersionEntries(ReadState& state, std::span<const uint8_t> versym, uint32_t symbolTable);

// Reads definitions and requirements and ties them to the symbols of the table in section
// `symbolTable`. Entry i of `versym` belongs to symbol i. False as above.
bool readVersions(ReadState& state, const VersionSections& sections, const TextTable& texts,
                  uint32_t symbolTable);

} // namespace elfext
