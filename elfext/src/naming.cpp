// Name tables: constant rows, and a look-up table made of them when the first name is asked for.
#include "elfext/interface/naming.h"

#include "elfext/interface/hash_table.h"

#include <cstdio>
#include <span>

namespace elfext {
namespace {

struct NameRow {
    uint32_t value;
    const char* name;
};

constexpr NameRow sectionTypeRows[] = {
    {0, "SHT_NULL"},
    {1, "SHT_PROGBITS"},
    {2, "SHT_SYMTAB"},
    {3, "SHT_STRTAB"},
    {4, "SHT_RELA"},
    {5, "SHT_HASH"},
    {6, "SHT_DYNAMIC"},
    {7, "SHT_NOTE"},
    {8, "SHT_NOBITS"},
    {9, "SHT_REL"},
    {10, "SHT_SHLIB"},
    {11, "SHT_DYNSYM"},
    {14, "SHT_INIT_ARRAY"},
    {15, "SHT_FINI_ARRAY"},
    {16, "SHT_PREINIT_ARRAY"},
    {17, "SHT_GROUP"},
    {18, "SHT_SYMTAB_SHNDX"},
    {0x60000000, "SHT_LOOS"},
    {0x6FFFFFF7, "SHT_GNU_LIBLIST"},
    {0x6FFFFFFD, "SHT_GNU_verdef"},
    {0x6FFFFFFE, "SHT_GNU_verneed"},
    {0x6FFFFFFF, "SHT_GNU_versym"},
    {0x70000000, "SHT_LOPROC"},
    {0x70000001, "SHT_QEL_EXIDX"},
    {0x70000002, "SHT_QEL_PREEMPTMAP"},
    {0x70000003, "SHT_QEL_ATTRIBUTES"},
    {0x70000004, "SHT_QEL_DEBUGOVERLAY"},
    {0x7FFFFFFF, "SHT_HIPROC"},
    {0x80000000, "SHT_LOUSER"},
    {0xFFFFFFFF, "SHT_HIUSER"},
};

// One row a bit, in ascending order.
constexpr NameRow sectionFlagRows[] = {
    {0x1, "SHF_WRITE"},        {0x2, "SHF_ALLOC"},
    {0x4, "SHF_EXECINSTR"},    {0x10, "SHF_MERGE"},
    {0x20, "SHF_STRINGS"},     {0x40, "SHF_INFO_LINK"},
    {0x80, "SHF_LINK_ORDER"},  {0x100, "SHF_OS_NONCONFORMING"},
    {0x200, "SHF_GROUP"},      {0x400, "SHF_TLS"},
    {0x800, "SHF_COMPRESSED"},
};

class NameTable {
public:
    explicit NameTable(std::span<const NameRow> rows) {
        for (const NameRow& row : rows) {
            m_Names.set(row.value, row.name);
        }
    }

    // Null for a value without a name.
    const char* find(uint32_t value) const {
        const char* const* const name = m_Names.find(value);
        return name != nullptr ? *name : nullptr;
    }

private:
    hash_table<uint32_t, const char*> m_Names;
};

constexpr const char* hexadecimalFormat = "0x%8.8X";

} // namespace

const char* getSectionTypeName(uint32_t type) {
    static const NameTable table(sectionTypeRows);
    const char* const name = table.find(type);
    if (name != nullptr) {
        return name;
    }
    static char unknownName[sizeof "SHT_? (0x00000000)"];
    std::snprintf(unknownName, sizeof unknownName, "SHT_? (0x%8.8X)", type);
    return unknownName;
}

std::string getSectionFlagNames(uint32_t flags) {
    std::string names;
    const auto append = [&names](const char* name) {
        names += names.empty() ? "" : " | ";
        names += name;
    };
    uint32_t left = flags;
    for (const NameRow& row : sectionFlagRows) {
        if ((left & row.value) != 0) {
            append(row.name);
            left &= ~row.value;
        }
    }
    if (left != 0) {
        char number[sizeof "0x00000000"];
        std::snprintf(number, sizeof number, hexadecimalFormat, left);
        append(number);
    }
    return names;
}

} // namespace elfext
