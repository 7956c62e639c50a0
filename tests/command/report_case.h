// What the tests of the reports share: the lines of the table of sizes, and objects to measure.
#pragma once

#include "tests/command/command_case.h"

#include <array>
#include <cstdio>

#include "tests/support/elf_builder.h"

namespace commandtest {

inline constexpr uint64_t entrySectionFlag = 0x10000000;

// The five columns of a row: code, read-only data, read-write data, zero-initialised data, debug
// tables.
using Columns = std::array<uint32_t, 5>;

inline Columns& operator+=(Columns& sum, const Columns& columns) {
    for (size_t i = 0; i < sum.size(); ++i) {
        sum[i] += columns[i];
    }
    return sum;
}

inline const char* const sizesHeading =
    "\n      Code    RO Data    RW Data    ZI Data      Debug   Object Name\n";

inline std::string sizesRow(const Columns& columns, const std::string& name) {
    std::string row;
    for (const uint32_t column : columns) {
        char text[16];
        std::snprintf(text, sizeof text, "%10u ", column);
        row += text;
    }
    return row + "  " + name + "\n";
}

inline std::string totalRow(const Columns& columns) {
    return sizesRow(columns, "TOTAL\n");
}

// The heading and a zero row.
inline std::string emptySizes() {
    return sizesHeading + totalRow({});
}

// An object with so many bytes of each kind.
inline testsupport::ElfBuilder objectOfSizes(const Columns& sizes,
                                             testsupport::ElfFormat format = {}) {
    using namespace testsupport::elf;
    struct Kind {
        const char* name;
        uint32_t type;
        uint64_t flags;
    };
    constexpr std::array<Kind, 5> kinds = {{{".text", SHT_PROGBITS, SHF_ALLOC | SHF_EXECINSTR},
                                            {".constdata", SHT_PROGBITS, SHF_ALLOC},
                                            {".data", SHT_PROGBITS, SHF_ALLOC | SHF_WRITE},
                                            {".bss", SHT_NOBITS, SHF_ALLOC | SHF_WRITE},
                                            {".debug_info", SHT_PROGBITS, 0}}};
    testsupport::ElfBuilder builder(format);
    for (size_t i = 0; i < kinds.size(); ++i) {
        testsupport::BuiltSection section;
        section.name = kinds[i].name;
        section.type = kinds[i].type;
        section.flags = kinds[i].flags;
        section.contents.assign(kinds[i].type == SHT_NOBITS ? 0 : sizes[i], 'c');
        section.noBitsSize = sizes[i];
        builder.add(section);
    }
    return builder;
}

} // namespace commandtest
