// A file that holds all kinds of sections, symbols and records that the reader knows.
//
// It is free of defects in each of the four formats, so that whatever a test spoils in it is the
// only defect. As a relocatable object it has groups and relocations; as an image (ET_EXEC, ET_DYN)
// it has the same and segments, gaps between its sections that belong to none of them, and a note
// that maps sections to segments.
#pragma once

#include <string>
#include <vector>

#include "tests/support/elf_builder.h"

namespace testsupport {

// Indexes of what a test may want to spoil.
struct RichElf {
    ElfBuilder builder;
    size_t text = 0;
    size_t data = 0;
    size_t bss = 0;
    size_t initArray = 0;
    size_t exidx = 0;
    size_t dynamicStrings = 0;
    size_t dynamicSymbols = 0;
    size_t hash = 0;
    size_t versym = 0;
    size_t verdef = 0;
    size_t verneed = 0;
    size_t preemptionMap = 0;
    size_t dynamic = 0;
    size_t note = 0;
    size_t groupedText = 0;
    size_t debugInfo = 0;
    size_t debugLine = 0;
    size_t debugOverlay = 0;
    size_t strings = 0;
    size_t symbols = 0;
    size_t extension = 0; // SHT_SYMTAB_SHNDX
    size_t group = 0;
    size_t textRelocations = 0; // SHT_REL
    size_t dataRelocations = 0; // SHT_RELA
    size_t dynamicRelocations = 0;
    size_t attributes = 0;
    size_t names = 0; // the table of section names

    std::string bytes() const { return builder.bytes(); }
};

// Places of symbols in the static table of a rich file.
enum RichSymbol : uint32_t {
    RichSymbol_File = 1,
    RichSymbol_TextSection,
    RichSymbol_DebugSection,
    RichSymbol_LocalData,
    RichSymbol_Function,
    RichSymbol_Data,
    RichSymbol_Weak,
    RichSymbol_Bss,
    RichSymbol_Absolute,
    RichSymbol_Common,
    RichSymbol_Undefined,
    RichSymbol_Signature,
    RichSymbol_Extended,
    RichSymbol_Debug,
    RichSymbol_Count,
};

RichElf richElf(ElfFormat format = {}, uint16_t type = elf::ET_REL);

// How many sections the mapping note of an image speaks of.
size_t richMappingWords(const RichElf& rich);

// The names that a member of these bytes brings into an archive's symbol table, in order; with and
// without those of debug sections.
std::vector<std::string> richNames(bool debugSymbols = false);

} // namespace testsupport
