// Names of ELF constants.
#include "elfext/interface/naming.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace elfext::test {
namespace {

struct TypeName {
    uint32_t type;
    const char* name;
};

constexpr TypeName typeNames[] = {
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

TEST(NamingTest, SectionTypes) {
    EXPECT_EQ(std::size(typeNames), 30U);
    for (const TypeName& row : typeNames) {
        EXPECT_STREQ(getSectionTypeName(row.type), row.name);
    }
}

TEST(NamingTest, AnyOtherTypeIsANumberInOneBuffer) {
    const char* const first = getSectionTypeName(12);
    EXPECT_STREQ(first, "SHT_? (0x0000000C)");
    EXPECT_EQ(getSectionTypeName(0xABCDEF01), first);
    EXPECT_STREQ(first, "SHT_? (0xABCDEF01)");
}

TEST(NamingTest, KnownNamesStay) {
    const char* const name = getSectionTypeName(7);
    getSectionTypeName(0x12345);
    EXPECT_STREQ(name, "SHT_NOTE");
}

TEST(NamingTest, SectionFlags) {
    EXPECT_EQ(getSectionFlagNames(0), "");
    EXPECT_EQ(getSectionFlagNames(0x1), "SHF_WRITE");
    EXPECT_EQ(getSectionFlagNames(0x6), "SHF_ALLOC | SHF_EXECINSTR");
    EXPECT_EQ(getSectionFlagNames(0xFF7),
              "SHF_WRITE | SHF_ALLOC | SHF_EXECINSTR | SHF_MERGE | SHF_STRINGS | SHF_INFO_LINK | "
              "SHF_LINK_ORDER | SHF_OS_NONCONFORMING | SHF_GROUP | SHF_TLS | SHF_COMPRESSED");
}

TEST(NamingTest, FlagsWithoutANameComeLastAsANumber) {
    EXPECT_EQ(getSectionFlagNames(0x80000008), "0x80000008");
    EXPECT_EQ(getSectionFlagNames(0x1002), "SHF_ALLOC | 0x00001000");
}

} // namespace
} // namespace elfext::test
