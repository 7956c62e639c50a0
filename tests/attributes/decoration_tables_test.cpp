// All token tables, row by row, against numbers written by hand: the bits and the order of rows are
// shared with compilers and linkers.
#include "attributes/src/decoration_tables.h"
#include "platform/interface/letter_case.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

namespace attributes::test {
namespace {

struct IsaRow {
    std::string_view text;
    uint64_t low;
    uint64_t high;
};

constexpr IsaRow expectedPrintRows[] = {
    {"FCH_ISAv5", 0x7C0, 0},
    {"FCH_ISAv4", 0x3C0, 0},
    {"FCH_ISAv3M", 0x11C0, 0},
    {"FCH_ISAv3", 0x1C0, 0},
    {"FCH_ISAv2", 0xC0, 0},
    {"FCH_ISAv1", 0x40, 0},
    {"QEL_ISAv9", 0x3F, 0x10000},
    {"QEL_ISAv8", 0x3F, 0},
    {"Q64_ISAv9", 0x30000000000, 0},
    {"Q64_ISAv8$R_PROFILE", 0x210000000000, 0},
    {"Q64_ISAv8$A_PROFILE", 0x10000800000, 0},
    {"Q64_ISAv8", 0x10000000000, 0},
    {"QEL_ISAv7", 0x1F, 0},
    {"QEL_ISAv6", 0xF, 0},
    {"QEL_ISAv5", 0x7, 0},
    {"QEL_ISAv4", 0x3, 0},
    {"QEL_ISAv3", 0x1, 0},
    {"X", 0x10000, 0},
    {"E", 0x40000, 0},
    {"P", 0x20000, 0},
    {"J", 0x80000, 0},
    {"Z", 0x1000000, 0},
    {"N", 0x2000000, 0},
    {"DE", 0xC000000000, 0},
    {"D", 0x4000000000, 0},
    {"K", 0x100000, 0},
    {"B", 0x800, 0},
    {"S", 0x200000, 0},
    {"MX7", 0x400000, 0},
    {"MX81", 0x2000, 0x20},
    {"MX82", 0x2000, 0x220},
    {"MX8", 0x2000, 0},
    {"FLAv3", 0x800000000000000, 0},
    {"FP_QELv8_FP16", 0x7FF000000000000, 0x2},
    {"FP_QELv8", 0x7FF000000000000, 0},
    {"FP_QELv8_D16", 0x7EF000000000000, 0},
    {"ZLTv5_D16_FP16", 0x7ED000000000000, 0x2},
    {"ZLTv5_D16", 0x7ED000000000000, 0},
    {"ZLTv4", 0x7FC000000000000, 0},
    {"ZLTv3", 0x3F8000000000000, 0},
    {"ZLTv3_D16", 0x3E8000000000000, 0},
    {"ZLTv2", 0x1E8000000000000, 0},
    {"ZLTv1", 0xE8000000000000, 0},
    {"ZLTi5", 0x381000000000000, 0},
    {"FPiv8", 0x383000000000000, 0},
    {"ZLTi3", 0x380000000000000, 0},
    {"ZLTi2", 0x180000000000000, 0},
    {"ZLTi1", 0x80000000000000, 0},
    {"EXTD32", 0x18000000000000, 0},
    {"EXTD16", 0x8000000000000, 0},
    {"ZLTS", 0x20000000000000, 0},
    {"ZLTD", 0x40000000000000, 0},
    {"VFMA", 0x4000000000000, 0},
    {"PE", 0x2000000000000000, 0},
    {"ME", 0x4000000000000000, 0},
    {"FZ_POSZERO", 0x8000000000000000, 0},
    {"PLD8", 0x5007F0000000, 0},
    {"PLD6", 0x1007F0000000, 0},
    {"PLD5", 0x7F0000000, 0},
    {"PLD4", 0x3F0000000, 0},
    {"PLD3", 0x1F0000000, 0},
    {"PLD2", 0xF0000000, 0},
    {"PLD1", 0x70000000, 0},
    {"PLD0", 0x30000000, 0},
    {"PLD7", 0x10000000, 0},
    {"WMMX2", 0xC000, 0},
    {"WMMX", 0x4000, 0},
    {"MD", 0x4000000, 0},
    {"MPE", 0x8000000, 0},
    {"CX81", 0, 0x1},
    {"CX81", 0x800000000000, 0},
    {"TRGf", 0, 0xC0},
    {"TRGi", 0, 0x40},
    {"RAS", 0, 0x8},
};

// What is printed and cannot be read.
const std::set<std::string_view> printOnly = {"Q64_ISAv8$R_PROFILE", "Q64_ISAv8$A_PROFILE",
                                              "ZLTv5_D16_FP16", "CX81"};

// What can be read and is never printed.
constexpr IsaRow parseOnly[] = {
    {"FINCH_ISAv5", 0x2007C0, 0}, {"FINCH_ISAv4", 0x2003C0, 0},
    {"FINCH_ISAv3", 0x2001CF, 0}, {"FINCH_ISAv2", 0x2000C7, 0},
    {"FINCH_ISAv1", 0x200043, 0}, {"R_PROFILE", 0x200000000000, 0},
    {"A_PROFILE", 0x800000, 0},   {"FPiv8_2", 0x383000000000000, 0x2},
};

struct BitRow {
    std::string_view text;
    uint64_t bits;
};

constexpr BitRow expectedAccessRows[] = {
    {"L88", 0x1},         {"L84", 0x2},         {"L82", 0x4},         {"L81", 0x8},
    {"L44", 0x10},        {"L42", 0x20},        {"L41", 0x40},        {"L22", 0x80},
    {"L21", 0x100},       {"L11", 0x200},       {"UL84", 0x400},      {"UL82", 0x800},
    {"UL81", 0x1000},     {"UL42", 0x2000},     {"UL41", 0x4000},     {"UL21", 0x8000},
    {"S88", 0x10000},     {"S84", 0x20000},     {"S82", 0x40000},     {"S81", 0x80000},
    {"S44", 0x100000},    {"S42", 0x200000},    {"S41", 0x400000},    {"S22", 0x800000},
    {"S21", 0x1000000},   {"S11", 0x2000000},   {"US84", 0x4000000},  {"US82", 0x8000000},
    {"US81", 0x10000000}, {"US42", 0x20000000}, {"US41", 0x40000000}, {"US21", 0x80000000},
};

constexpr BitRow expectedOptionRows[] = {
    {"IW", 0x1},
    {"~IW", 0x2},
    {"RWPI", 0x4},
    {"USESV6", 0x8},
    {"STKCKD", 0x10},
    {"~STKCKD", 0x20},
    {"USESV7", 0x40},
    {"HARDFP", 0x100},
    {"SOFTFP", 0x200},
    {"WCHAR32", 0x1000},
    {"ENUMINT", 0x800},
    {"~SHL", 0x8000},
    {"OTIME", 0x30000},
    {"OSPACE", 0x10000},
    {"ROPI", 0x40000},
    {"IEEEX", 0x700000},
    {"IEEEF", 0x300000},
    {"IEEEJ", 0x100000},
    {"EBA4", 0x80000},
    {"EBA8", 0x800000},
    {"UX", 0x4000000},
    {"FPIC", 0x8000000},
    {"INDIRECT", 0x20000000},
    {"STANDARDLIB", 0x40000000},
    {"MICROLIB", 0x80000000},
    {"THREADEDCXX", 0x10000000},
    {"SIGN_RET_ADDR", 0x100000000},
    {"TAGGED_STACK", 0x200000000},
    {"BTI", 0x400000000},
    {"PACBTILIB", 0x800000000},
    {"ACCEL_MOPS", 0x1000000000},
};

constexpr BitRow expectedRegionNames[] = {
    {"code", 0x10000000}, {"text", 0x10000000}, {"rodata", 0x20000000}, {"ro", 0x30000000},
    {"rw", 0x40000000},   {"data", 0x40000000}, {"all", 0x70000000},
};

template <typename Rows, typename Expected, typename Bits>
void expectRows(const Rows& rows, const Expected& expected, Bits bitsOf) {
    ASSERT_EQ(std::size(rows), std::size(expected));
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(rows[i].text, expected[i].text) << i;
        EXPECT_EQ(bitsOf(rows[i]), expected[i].bits) << expected[i].text;
    }
}

TEST(DecorationTables, OfPrintedFeatures) {
    ASSERT_EQ(isaPrintTable.size(), 74U);
    ASSERT_EQ(isaPrintTable.size(), std::size(expectedPrintRows));
    for (size_t i = 0; i < isaPrintTable.size(); ++i) {
        const IsaRow& expected = expectedPrintRows[i];
        EXPECT_EQ(isaPrintTable[i].text, expected.text) << i;
        EXPECT_EQ(isaPrintTable[i].mask.low, expected.low) << expected.text;
        EXPECT_EQ(isaPrintTable[i].mask.high, expected.high) << expected.text;
    }
}

TEST(DecorationTables, OfReadFeatures) {
    ASSERT_EQ(isaParseTable.size(), 77U);
    std::set<std::string_view> seen;
    for (const IsaToken& row : isaParseTable) {
        EXPECT_TRUE(seen.insert(row.text).second) << row.text;
        EXPECT_EQ(printOnly.count(row.text), 0U) << row.text;
        EXPECT_EQ(row.text.find('$'), std::string_view::npos) << row.text;
        const auto isRow = [&row](const IsaRow& expected) {
            return row.text == expected.text && row.mask.low == expected.low &&
                   row.mask.high == expected.high;
        };
        EXPECT_TRUE(
            std::any_of(std::begin(expectedPrintRows), std::end(expectedPrintRows), isRow) ||
            std::any_of(std::begin(parseOnly), std::end(parseOnly), isRow))
            << row.text;
    }
}

TEST(DecorationTables, OfAccess) {
    expectRows(accessTokens, expectedAccessRows,
               [](const AccessToken& row) { return uint64_t{row.bit}; });
    std::string letters;
    for (const RegionLetter& row : regionLetters) {
        letters += row.letter;
        letters += '=';
        letters += std::to_string(row.region >> 28) + ' ';
        EXPECT_EQ(row.region & 0x0FFFFFFF, 0U);
    }
    EXPECT_EQ(letters, "A=7 C=3 R=2 W=4 X=1 ");
    expectRows(regionNames, expectedRegionNames,
               [](const RegionName& row) { return uint64_t{row.region}; });
}

TEST(DecorationTables, OfOptionsRequirementsAndFormat) {
    const auto bitsOf = [](const OptionToken& row) { return row.bits; };
    expectRows(optionTokens, expectedOptionRows, bitsOf);
    constexpr BitRow requirements[] = {{"REQ8", 0x1}, {"PRES8", 0x2}};
    expectRows(requirementTokens, requirements, bitsOf);
    constexpr BitRow formats[] = {{"EABIv2", 0x2}};
    expectRows(abiTokens, formats, bitsOf);
    constexpr BitRow defaults[] = {{"IEEE1", 0x300000}};
    expectRows(defaultTokens, defaults, bitsOf);
}

TEST(DecorationTables, NoTwoTokensAreTheSame) {
    std::set<std::string> seen;
    const auto add = [&seen](std::string_view text) {
        std::string folded;
        for (const char c : text) {
            folded += platform::foldCase(c);
        }
        EXPECT_TRUE(seen.insert(folded).second) << text;
    };
    for (const IsaToken& row : isaParseTable) {
        add(row.text);
    }
    for (const auto& table : {optionTokens, requirementTokens, abiTokens, defaultTokens}) {
        for (const OptionToken& row : table) {
            add(row.text);
        }
    }
}

// A token that begins with another one must not be taken for it, as access strings have no
// separators.
TEST(DecorationTables, NoFormOfAccessBeginsWithAnother) {
    for (const AccessToken& a : accessTokens) {
        for (const AccessToken& b : accessTokens) {
            EXPECT_TRUE(&a == &b || !a.text.starts_with(b.text)) << a.text << ' ' << b.text;
        }
    }
}

} // namespace
} // namespace attributes::test
