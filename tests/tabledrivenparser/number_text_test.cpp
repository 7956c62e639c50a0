// Numbers in arguments, corner by corner.

#include "tabledrivenparser/src/number_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace tabledrivenparser {

namespace {

struct Case {
    const char* name;
    const char* text;
    NumberKind kind;
    NumberOutcome outcome;
    uint64_t value;
    const char* rest;
};

constexpr uint64_t minus(uint64_t number) {
    return 0 - number;
}

constexpr auto s32 = NumberKind::Signed32;
constexpr auto u32 = NumberKind::Unsigned32;
constexpr auto s64 = NumberKind::Signed64;
constexpr auto u64 = NumberKind::Unsigned64;
constexpr auto read = NumberOutcome::Read;
constexpr auto none = NumberOutcome::NoNumber;
constexpr auto over = NumberOutcome::Overflow;

const Case cases[] = {
    {"Plain", "42", s32, read, 42, ""},
    {"LeadingZeroIsDecimal", "010", s32, read, 10, ""},
    {"HexadecimalLowerPrefix", "0x1f", s32, read, 31, ""},
    {"HexadecimalUpperPrefix", "0X1F", s32, read, 31, ""},
    {"PrefixAloneIsZero", "0x", s32, read, 0, ""},
    {"PrefixAloneIsZeroUnsigned", "0X", u64, read, 0, ""},
    {"PrefixThenJunkStopsBehindThePrefix", "0xg", s32, read, 0, "g"},
    {"HexadecimalLettersNeedThePrefix", "1f", s32, read, 1, "f"},
    {"SignBeforeThePrefixIsDecimal", "-0x10", s32, read, 0, "x10"},
    {"SignBehindThePrefix", "0x-10", s32, read, minus(16), ""},
    {"Minus", "-5", s32, read, minus(5), ""},
    {"Plus", "+5", s32, read, 5, ""},
    {"LeadingBlank", " 5", s32, read, 5, ""},
    {"TrailingBlank", "5 ", s32, read, 5, " "},
    {"Empty", "", s32, none, 0, ""},
    {"NoDigits", "x", s32, none, 0, "x"},
    {"SignAlone", "-", s32, none, 0, "-"},
    {"Signed32Highest", "2147483647", s32, read, 2147483647, ""},
    {"Signed32Above", "2147483648", s32, over, 2147483648, ""},
    {"Signed32Lowest", "-2147483648", s32, read, minus(2147483648), ""},
    {"Signed32Below", "-2147483649", s32, over, minus(2147483649), ""},
    {"Signed32FarAbove", "99999999999999999999", s32, over, INT64_MAX, ""},
    {"Signed32HexadecimalAbove", "0x80000000", s32, over, 0x80000000, ""},
    {"Signed64Highest", "9223372036854775807", s64, read, INT64_MAX, ""},
    {"Signed64Above", "9223372036854775808", s64, over, INT64_MAX, ""},
    {"Signed64Lowest", "-9223372036854775808", s64, read, uint64_t{1} << 63, ""},
    {"Signed64Below", "-9223372036854775809", s64, over, uint64_t{1} << 63, ""},
    {"Signed64TakesMoreThan32Bits", "2147483648", s64, read, 2147483648, ""},
    {"Unsigned32Highest", "4294967295", u32, read, 4294967295, ""},
    {"Unsigned32HighestHexadecimal", "0xFFFFFFFF", u32, read, 4294967295, ""},
    {"Unsigned32Above", "4294967296", u32, over, 0, ""},
    {"Unsigned32MinusWrapsRound", "-1", u32, read, 4294967295, ""},
    {"Unsigned32MinusBehindBlanks", " \t-1", u32, read, 4294967295, ""},
    {"Unsigned32LowestMinus", "-4294967295", u32, read, 1, ""},
    {"Unsigned32BelowLowestMinus", "-4294967296", u32, over, 0, ""},
    {"Unsigned32FarAbove", "99999999999999999999", u32, over, 4294967295, ""},
    {"Unsigned64Highest", "18446744073709551615", u64, read, UINT64_MAX, ""},
    {"Unsigned64HighestHexadecimal", "0xFFFFFFFFFFFFFFFF", u64, read, UINT64_MAX, ""},
    {"Unsigned64Above", "18446744073709551616", u64, over, UINT64_MAX, ""},
    {"Unsigned64MinusWrapsRound", "-1", u64, read, UINT64_MAX, ""},
    {"ElementOfAList", "12,13", s32, read, 12, ",13"},
    {"OverflowBeforeJunk", "99999999999x", s32, over, 99999999999, "x"},
};

class NumberTextTest : public ::testing::TestWithParam<Case> {};

} // namespace

TEST_P(NumberTextTest, Reads) {
    const Case& expected = GetParam();
    NumberText number = readNumber(expected.text, expected.kind);
    EXPECT_EQ(number.outcome, expected.outcome);
    EXPECT_STREQ(number.end, expected.rest);
    EXPECT_EQ(number.value, expected.value);
}

INSTANTIATE_TEST_SUITE_P(All, NumberTextTest, ::testing::ValuesIn(cases),
                         [](const auto& instance) { return std::string(instance.param.name); });

} // namespace tabledrivenparser
