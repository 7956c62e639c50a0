// What the reader does with sections, by their type.
#pragma once

#include "elfext/interface/elf_records.h"
#include "elfext/src/file_layout.h"

#include <cstdint>
#include <string_view>

namespace elfext {

class ObjectModule;
class Section;

struct SectionKind {
    uint32_t type;
    // Makes the section from what its header says, without a name.
    Section* (*create)(ObjectModule& objectModule, const Elf64_Shdr& header);
    // The size of an entry, for tables that are read entry by entry; null for those that are read
    // as they stand.
    uint32_t RecordSizes::*entrySize;
    // False if the reader itself looks into the contents, so that they cannot be left in the file.
    bool mayBeDeferred;
};

// The row of a type; types that nothing is special about share one.
const SectionKind& sectionKind(uint32_t type);

// True for the name of a section that only debuggers read.
bool isDebugSectionName(std::string_view name);

} // namespace elfext
