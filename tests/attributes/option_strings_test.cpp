// Option strings: every word, its negation, and where the walk ends.
#include "attributes/interface/option_strings.h"
#include "attributes/src/option_words.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace attributes::test {
namespace {

uint64_t applied(uint64_t options, const std::string& text) {
    applyOptionString(options, text.c_str());
    return options;
}

struct WordRow {
    std::string_view text;
    uint64_t set;
    uint64_t clear;
};

// In order: where one word begins another, the longer one stands first.
constexpr WordRow expectedWords[] = {
    {"interwork", 0x1, 0x2},
    {"inter", 0x1, 0x2},
    {"ropi", 0x40000, 0},
    {"pic", 0x40000, 0},
    {"rwpiclient", 0, 0xC},
    {"rwpi", 0x4, 0x8},
    {"pid", 0x4, 0x8},
    {"usev6", 0x8, 0},
    {"hardfp", 0x100, 0x200},
    {"softfp", 0x200, 0x100},
    {"swstna", 0, 0},
    {"swstackcheck", 0, 0},
    {"swst", 0, 0},
    {"usev7", 0, 0},
    {"ospace", 0x10000, 0x30000},
    {"otime", 0x30000, 0x10000},
    {"ieee_full", 0x700000, 0},
    {"ieee_part", 0x300000, 0},
    {"ieee_java", 0x100000, 0},
    {"8byte", 0x800000, 0x80000},
    {"fpic", 0x28040000, 0},
    {"indirect", 0x20000000, 0},
    {"standardlib", 0x40000000, 0},
    {"microlib", 0x80000000, 0},
    {"threadedcxx", 0x10000000, 0},
    {"sign_ret_addr", 0x100000000, 0},
    {"tagged_stack", 0x200000000, 0},
    {"bti", 0x400000000, 0},
    {"pacbtilib", 0x800000000, 0},
};

constexpr uint64_t AllOptions = 0xFFFFFFFFFFFFFFFF;

TEST(OptionStrings, WordsStandInTheirOrder) {
    ASSERT_EQ(optionWords.size(), std::size(expectedWords));
    for (size_t i = 0; i < optionWords.size(); ++i) {
        EXPECT_EQ(optionWords[i].text, expectedWords[i].text) << i;
        EXPECT_EQ(optionWords[i].set, expectedWords[i].set) << expectedWords[i].text;
        EXPECT_EQ(optionWords[i].clear, expectedWords[i].clear) << expectedWords[i].text;
        for (size_t later = i + 1; later < optionWords.size(); ++later) {
            EXPECT_FALSE(optionWords[later].text.starts_with(optionWords[i].text))
                << optionWords[later].text << " can never be found";
        }
    }
}

TEST(OptionStrings, EachWordSetsAndClears) {
    for (const WordRow& word : expectedWords) {
        for (const uint64_t options : {uint64_t{0}, AllOptions, uint64_t{0x818069}}) {
            const uint64_t expected = (options & ~word.clear) | word.set;
            EXPECT_EQ(applied(options, "/" + std::string(word.text)), expected) << word.text;
            EXPECT_EQ(applied(options, "-" + std::string(word.text)), expected) << word.text;
        }
    }
}

TEST(OptionStrings, EachWordWithNoDoesTheReverse) {
    for (const WordRow& word : expectedWords) {
        const std::string text = "/no" + std::string(word.text);
        if (word.text == "8byte") {
            continue;
        }
        EXPECT_EQ(applied(0, text), word.clear) << word.text;
        EXPECT_EQ(applied(AllOptions, text), (AllOptions & ~word.set) | word.clear) << word.text;
    }
}

TEST(OptionStrings, NoRwpiGivesTheRegisterBackOnlyWhereItWasNotTaken) {
    EXPECT_EQ(applied(0, "/norwpi"), 0x8U);
    EXPECT_EQ(applied(0x4, "/norwpi"), 0x0U);
    EXPECT_EQ(applied(0xC, "/norwpi"), 0x8U);
    EXPECT_EQ(applied(0x4, "/nopid"), 0x0U);
    EXPECT_EQ(applied(0, "/norwpiclient"), 0xCU);
    EXPECT_EQ(applied(0x4, "/norwpiclient"), 0x4U);
    EXPECT_EQ(applied(0x4, "/norwpi/norwpi"), 0x8U);
}

TEST(OptionStrings, No8byteLeavesNeitherAlignment) {
    EXPECT_EQ(applied(0x880000, "/no8byte"), 0U);
    EXPECT_EQ(applied(0x80000, "/no8byte"), 0U);
    EXPECT_EQ(applied(0, "/no8byte"), 0U);
    EXPECT_EQ(applied(AllOptions, "/no8byte"), AllOptions & ~uint64_t{0x880000});
}

TEST(OptionStrings, IgnoreCase) {
    EXPECT_EQ(applied(0x2, "/InterWork"), 0x1U);
    EXPECT_EQ(applied(0x1, "-NOINTERWORK"), 0x2U);
    EXPECT_EQ(applied(0, "/Sign_Ret_Addr"), 0x100000000U);
}

TEST(OptionStrings, TheFirstWordThatFitsIsTaken) {
    // "rwpiclient" is a word of its own and not "rwpi" with something behind it.
    EXPECT_EQ(applied(0xC, "/rwpiclient"), 0U);
    EXPECT_EQ(applied(0x8, "/rwpi"), 0x4U);
    EXPECT_EQ(applied(0x2, "/inter"), 0x1U);
    EXPECT_EQ(applied(0, "/swstackcheck/ropi"), 0x40000U);
}

TEST(OptionStrings, TheWalkEndsWhereNoSeparatorStands) {
    EXPECT_EQ(applied(0, "ropi"), 0U);
    EXPECT_EQ(applied(0, " /ropi"), 0U);
    EXPECT_EQ(applied(0, "/ropi /rwpi"), 0x40000U);
    EXPECT_EQ(applied(0, "/ropix/rwpi"), 0x40000U);
    EXPECT_EQ(applied(0, "/unknown/ropi"), 0U);
    EXPECT_EQ(applied(0, "/nounknown/ropi"), 0U);
    EXPECT_EQ(applied(0, "//ropi"), 0x40000U);
    EXPECT_EQ(applied(0, "/no/ropi"), 0x40000U);
    EXPECT_EQ(applied(0, "-/-no-no/ropi"), 0x40000U);
    EXPECT_EQ(applied(5, ""), 5U);
    EXPECT_EQ(applied(5, "/"), 5U);
    EXPECT_EQ(applied(5, "/n"), 5U);
    EXPECT_EQ(applied(5, "-no"), 5U);
    EXPECT_EQ(applied(5, "/rop"), 5U);
}

TEST(OptionStrings, WordsApplyInOrder) {
    EXPECT_EQ(applied(0, "-otime-ospace"), 0x10000U);
    EXPECT_EQ(applied(0, "-ospace-otime"), 0x30000U);
    EXPECT_EQ(applied(0x30000, "-noospace"), 0x30000U);
    EXPECT_EQ(applied(0x30000, "-nootime"), 0x10000U);
    EXPECT_EQ(applied(0, "-noieee_part-noieee_java-ieee_full"), 0x700000U);
    EXPECT_EQ(applied(0x700000, "-noieee_full-noieee_java-ieee_part"), 0x300000U);
    EXPECT_EQ(applied(0x700000, "-noieee_full-noieee_part-ieee_java"), 0x100000U);
    EXPECT_EQ(applied(0x700000, "-noieee_java"), 0x600000U);
    EXPECT_EQ(applied(0, "/norwpi/fpic/noropi/noindirect"), 0x8000008U);
}

TEST(OptionStrings, AnyTextIsTaken) {
    std::mt19937_64 random(11);
    const std::string alphabet = "-/noNOrwpi8byteusev6_\x80\xFF ";
    uint64_t known = 0;
    for (const WordRow& word : expectedWords) {
        known |= word.set | word.clear;
    }
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const uint64_t length = random() % 40;
        for (uint64_t j = 0; j < length; ++j) {
            text += alphabet[random() % alphabet.size()];
        }
        const uint64_t options = random();
        EXPECT_EQ((applied(options, text) ^ options) & ~known, 0U) << text;
    }
    EXPECT_EQ(applied(0, std::string(1000000, '-') + "ropi"), 0x40000U);
    std::string longText;
    for (int i = 0; i < 100000; ++i) {
        longText += "/noropi/ropi";
    }
    EXPECT_EQ(applied(0, longText), 0x40000U);
}

} // namespace
} // namespace attributes::test
