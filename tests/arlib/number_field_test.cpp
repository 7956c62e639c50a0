#include "arlib/src/number_field.h"

#include <string_view>

#include <gtest/gtest.h>

namespace arlib {
namespace {

using namespace std::string_view_literals;

struct NumberCase {
    std::string_view field;
    uint32_t base;
    bool isGood;
    uint32_t value;
};

class NumberField : public testing::TestWithParam<NumberCase> {};

TEST_P(NumberField, Case) {
    const NumberCase& expected = GetParam();
    uint32_t value = 0;
    EXPECT_EQ(parseNumberField(expected.field, expected.base, value), expected.isGood);
    if (expected.isGood) {
        EXPECT_EQ(value, expected.value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Reads, NumberField,
    testing::Values(NumberCase{"0     "sv, 10, true, 0}, NumberCase{"123456"sv, 10, true, 123456},
                    NumberCase{"  12  "sv, 10, true, 12}, NumberCase{"    12"sv, 10, true, 12},
                    NumberCase{"4294967295  "sv, 10, true, 4294967295},
                    NumberCase{"4294967296  "sv, 10, false, 0},
                    NumberCase{"9999999999"sv, 10, false, 0},
                    NumberCase{"100644  "sv, 8, true, 0100644},
                    NumberCase{"8       "sv, 8, false, 0}, NumberCase{"18      "sv, 8, false, 0},
                    NumberCase{"17      "sv, 8, true, 15}, NumberCase{"      "sv, 10, false, 0},
                    NumberCase{"1 2   "sv, 10, false, 0}, NumberCase{"12x   "sv, 10, false, 0},
                    NumberCase{"-1    "sv, 10, false, 0}, NumberCase{"+1    "sv, 10, false, 0},
                    NumberCase{"12\0   "sv, 10, false, 0}, NumberCase{"12\t   "sv, 10, false, 0},
                    NumberCase{""sv, 10, false, 0}));

TEST(BlankField, IsBlanksToTheEnd) {
    EXPECT_TRUE(isBlankField("    "));
    EXPECT_TRUE(isBlankField(""));
    EXPECT_FALSE(isBlankField("   x"));
    EXPECT_FALSE(isBlankField("  \0 "sv));
}

} // namespace
} // namespace arlib
