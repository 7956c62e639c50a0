#include "messages/interface/code_page.h"

#include "captured_stream.h"
#include "messages/src/utf16.h"

#include <vector>

namespace {

using messages::CodePage_Default;
using messages::CodePage_Gb2312;
using messages::CodePage_None;
using messages::CodePage_Utf8;
using messages::convertOutput;

std::string out(const std::string& text, uint32_t codePage) {
    return convertOutput(text.c_str(), codePage, false);
}

std::string in(const std::string& text, uint32_t codePage) {
    return convertOutput(text.c_str(), codePage, true);
}

class CodePageTest : public MessagesTest {};
class Utf8CodePageTest : public Utf8MessagesTest {};

TEST_F(CodePageTest, GivesNullForNull) {
    EXPECT_EQ(convertOutput(nullptr, CodePage_Utf8, false), nullptr);
    EXPECT_EQ(convertOutput(nullptr, CodePage_None, true), nullptr);
}

TEST_F(CodePageTest, GivesTheTextItselfWithoutACodePage) {
    const char* text = "\xC3\xA9";
    EXPECT_EQ(convertOutput(text, CodePage_None, false), text);
}

TEST_F(CodePageTest, GivesAsciiItselfUntilTheFirstOtherText) {
    const char* text = "plain";
    EXPECT_EQ(convertOutput(text, CodePage_Utf8, false), text);
    EXPECT_EQ(convertOutput(text, 1252, true), text);
    EXPECT_EQ(out("\xC3\xA9", CodePage_Utf8), "\xC3\xA9");
    const char* later = convertOutput(text, CodePage_Utf8, false);
    EXPECT_NE(later, text);
    EXPECT_STREQ(later, text);
}

TEST_F(CodePageTest, WritesAQuestionMarkForWhatTheEnvironmentLacks) {
    EXPECT_EQ(out("caf\xC3\xA9 日本", CodePage_Default), "caf? ??");
}

TEST_F(Utf8CodePageTest, WritesUtf8ForAnEnvironmentOfUtf8) {
    EXPECT_EQ(out("caf\xC3\xA9 日本", CodePage_Default), "caf\xC3\xA9 日本");
    EXPECT_EQ(in("日本", CodePage_Default), "日本");
}

TEST_F(CodePageTest, TakesTheCharacterSetOfALocaleThatIsNotInstalled) {
    ::setenv("LC_ALL", "xx_YY.ISO-8859-1@euro", 1);
    messages::initMessages();
    EXPECT_EQ(out("\xC3\xA9", CodePage_Default), "\xE9");
    ::setenv("LC_ALL", "xx_YY.utf8", 1);
    messages::initMessages();
    EXPECT_EQ(out("\xC3\xA9", CodePage_Default), "\xC3\xA9");
    ::setenv("LC_ALL", "xx_YY.no-such-set", 1);
    messages::initMessages();
    EXPECT_EQ(out("\xC3\xA9", CodePage_Default), "?");
}

TEST_F(CodePageTest, ConvertsToNumberedPages) {
    EXPECT_EQ(out("caf\xC3\xA9", 1252), "caf\xE9");
    EXPECT_EQ(out("日本", 932), "\x93\xFA\x96\x7B");
    EXPECT_EQ(out("中文", CodePage_Gb2312), "\xD6\xD0\xCE\xC4");
    EXPECT_EQ(out("日x本", 1252), "?x?");
    EXPECT_EQ(out("日本", CodePage_Utf8), "日本");
}

TEST_F(CodePageTest, ConvertsFromNumberedPages) {
    EXPECT_EQ(in("caf\xE9", 1252), "caf\xC3\xA9");
    EXPECT_EQ(in("\x93\xFA\x96\x7B", 932), "日本");
    EXPECT_EQ(in("\xD6\xD0\xCE\xC4", CodePage_Gb2312), "中文");
}

TEST_F(CodePageTest, ReadsWhatIsNoCharacterAsAQuestionMark) {
    EXPECT_EQ(in("a\x93", 932), "a?");
    EXPECT_EQ(in("a\xFF"
                 "b",
                 CodePage_Utf8),
              "a?b");
    EXPECT_EQ(in("\xF0\x9F\x98\x80", CodePage_Utf8), "\xF0\x9F\x98\x80");
}

TEST_F(CodePageTest, LeavesTheTextForAPageThatDoesNotExist) {
    EXPECT_EQ(out("\xC3\xA9", 12345678), "\xC3\xA9");
    EXPECT_EQ(in("\xC3\xA9", 12345678), "\xC3\xA9");
}

TEST_F(CodePageTest, KnowsWhichPagesExist) {
    for (const uint32_t page : {0U, 437U, 932U, 1252U, 20936U, 65001U}) {
        EXPECT_TRUE(messages::canConvertTo(page)) << page;
        EXPECT_TRUE(messages::canConvertFrom(page)) << page;
    }
    for (const uint32_t page : {1U, 12345678U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(messages::canConvertTo(page)) << page;
        EXPECT_FALSE(messages::canConvertFrom(page)) << page;
    }
}

TEST_F(CodePageTest, TakesTheLengthOfASequenceFromItsFirstByteAlone) {
    // A continuation byte without a start is the character of its value.
    EXPECT_EQ(out("a\xA9z", CodePage_Utf8), "a\xC2\xA9z");
    EXPECT_EQ(out("\xA9", 1252), "\xA9");
    // The byte behind a start belongs to it, whatever it is: 0xE9 'x' 'y' is U+9E39.
    EXPECT_EQ(out("\xE9xyz", CodePage_Utf8), "\xE9\xB8\xB9z");
}

TEST_F(CodePageTest, WritesAQuestionMarkBeyondTheBasicPlane) {
    EXPECT_EQ(out("a\xF0\x9F\x98\x80z", CodePage_Utf8), "a?z");
    EXPECT_EQ(out("\xF8\x88\x80\x80\x80z", CodePage_Utf8), "?z");
    EXPECT_EQ(out("\xFC\x84\x80\x80\x80\x80z", CodePage_Utf8), "?z");
    EXPECT_EQ(out("\xFF\xBF\xBF\xBF\xBF\xBFz", CodePage_Utf8), "?z");
    EXPECT_EQ(out("a\xF0\x9F\x98\x80z", 1252), "a?z");
}

TEST_F(CodePageTest, ReadsNothingBehindTheEndOfACutSequence) {
    for (const char* text : {"a\xC3", "a\xE3", "a\xE3\x81", "a\xF0\x9F\x98", "a\xFC\x84\x80"}) {
        EXPECT_EQ(out(text, CodePage_Utf8), "a?");
    }
}

TEST_F(CodePageTest, ReadsOnBehindWhatIsLeftOfACutSequence) {
    EXPECT_EQ(out("caf\xE9\n", CodePage_Utf8), "caf?\n");
    EXPECT_EQ(out("caf\xE9\n", 1252), "caf?\n");
    EXPECT_EQ(out("\xF0z", CodePage_Utf8), "?z");
    EXPECT_EQ(out("\xF0\x9F\x98z\xC3", CodePage_Utf8), "??");
    EXPECT_EQ(out("\xFC\x84z\xFD", CodePage_Utf8), "?z?");
    EXPECT_EQ(out("\xE9\xE9", CodePage_Utf8), "??");
}

TEST_F(CodePageTest, LetsNoControlCharacterInThroughALongForm) {
    EXPECT_EQ(out("\xC0\x9B[m", CodePage_Utf8), "?[m");
    EXPECT_EQ(out("\xE0\x80\x8A|\xC0\x80|\xC1\xBF", CodePage_Utf8), "?|?|?");
}

TEST_F(CodePageTest, PairsSurrogatesAndDropsLoneOnes) {
    const uint16_t units[] = {'a', 0xD83D, 0xDE00, 0xD83D, 'b', 0xDE00, 0xDE00, 0xD83D};
    char text[64];
    const uint64_t length = messages::encodeUtf8(units, 8, text);
    EXPECT_EQ(std::string(text, length), "a\xF0\x9F\x98\x80?b???");
    EXPECT_EQ(messages::unitsOfCharacter(units + 1, 7), 2U);
    EXPECT_EQ(messages::unitsOfCharacter(units + 1, 1), 1U);
    EXPECT_EQ(messages::unitsOfCharacter(units + 3, 5), 1U);
}

TEST_F(CodePageTest, WritesAPairThatAPageLacksAsOneQuestionMark) {
    // Two halves of a pair, each written as a sequence of three bytes.
    EXPECT_EQ(out("\xED\xA0\xBD\xED\xB8\x80z", 1252), "?z");
    EXPECT_EQ(out("\xED\xA0\xBDz", 1252), "?z");
    EXPECT_EQ(out("\xED\xA0\xBD\xED\xB8\x80z", CodePage_Utf8), "\xF0\x9F\x98\x80z");
}

TEST_F(CodePageTest, ConvertsTextsOfAnyLength) {
    for (const uint64_t count : {3413U, 3414U, 10240U, 50000U, 10U}) {
        std::string utf8;
        std::string japanese;
        for (uint64_t i = 0; i < count; ++i) {
            utf8 += "日";
            japanese += "\x93\xFA";
        }
        EXPECT_EQ(out(utf8, CodePage_Utf8), utf8);
        EXPECT_EQ(out(utf8, 932), japanese);
        EXPECT_EQ(in(japanese, 932), utf8);
        EXPECT_EQ(out(utf8, 1252), std::string(count, '?'));
    }
}

TEST_F(CodePageTest, RoundTripsEveryUnitThroughUtf8) {
    for (uint32_t unit = 0x20; unit < 0x10000; ++unit) {
        if (unit == 0x7F || (unit >= 0xD800 && unit < 0xE000)) {
            continue;
        }
        const auto value = static_cast<uint16_t>(unit);
        char text[4];
        const uint64_t length = messages::encodeUtf8(&value, 1, text);
        uint16_t units[4];
        ASSERT_EQ(messages::decodeUtf8(text, length, units), 1U) << unit;
        ASSERT_EQ(units[0], value);
    }
}

TEST_F(CodePageTest, RemembersBothPages) {
    messages::setCodePages(932, 1252);
    EXPECT_EQ(messages::inputCodePage(), 932U);
    EXPECT_EQ(messages::outputCodePage(), 1252U);
    messages::initMessages();
    EXPECT_EQ(messages::inputCodePage(), 0U);
    EXPECT_EQ(messages::outputCodePage(), 0U);
}

} // namespace
