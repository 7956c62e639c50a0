// What a section is for, as those who measure see it.
#pragma once

#include "elfext/interface/elf_constants.h"

#include <cstdint>

namespace elfext {

enum class SectionUse : uint8_t {
    NotLoaded, // debug tables and all else that no program has in its memory
    Zeros,
    Code,
    Constants,
    Data, // that can be written
};

// The order of the tests is part of the meaning: what is not loaded is never data, and executable
// bytes are code whether or not they can be written.
constexpr SectionUse sectionUseOf(uint32_t type, uint64_t flags) {
    if ((flags & SHF_ALLOC) == 0) {
        return SectionUse::NotLoaded;
    }
    if (type == SHT_NOBITS) {
        return SectionUse::Zeros;
    }
    if ((flags & SHF_EXECINSTR) != 0) {
        return SectionUse::Code;
    }
    return (flags & SHF_WRITE) == 0 ? SectionUse::Constants : SectionUse::Data;
}

} // namespace elfext
