// Texts in the spelling of via files.

#include "tests/tabledrivenparser/via_fixture.h"
#include "tests/tabledrivenparser/via_words_model.h"

#include "tabledrivenparser/src/quoted_text.h"

#include <random>

namespace tabledrivenparser {

namespace {

std::string spelled(const std::string& text) {
    std::string room(4 * text.size() + 2, '!');
    TextBuffer buffer;
    buffer.capacity = static_cast<uint32_t>(room.size());
    buffer.text = room.data();
    writeQuoted(buffer, text.c_str());
    EXPECT_TRUE(buffer.fits());
    return room.substr(0, buffer.length);
}

struct Spelling {
    const char* text;
    const char* spelling;
};

class QuotedTextTest : public ViaTest {
protected:
    // Each spelling is as told, and gives the text when a via file holds it, alone and behind an
    // option's name.
    void expectSpellings(std::initializer_list<Spelling> spellings) {
        for (const Spelling& each : spellings) {
            EXPECT_EQ(spelled(each.text), each.spelling);
            expectReadBack(each.text);
        }
    }
    void expectReadBack(const std::string& text) {
        const std::string line = spelled(text) + " --x=" + spelled(text) + " -a" + spelled(text);
        EXPECT_EQ(textWords(line), (Texts{text, "--x=" + text, "-a" + text})) << line;
        EXPECT_EQ(viamodel::wordsOf(line).words.size(), 3U) << line;
        EXPECT_TRUE(messages().empty()) << line;
    }
};

} // namespace

TEST_F(QuotedTextTest, PlainTextStaysAsItIs) {
    expectSpellings({{"lib.a", "lib.a"},
                     {"*?[x]", "*?[x]"},
                     {"caf\xc3\xa9", "caf\xc3\xa9"},
                     {"--x=y", "--x=y"},
                     {"a,b", "a,b"},
                     {"(a)", "(a)"}});
}

TEST_F(QuotedTextTest, EmptyTextIsAPairOfQuotes) {
    expectSpellings({{"", "\"\""}});
}

TEST_F(QuotedTextTest, BlankAndTabNeedQuotes) {
    expectSpellings(
        {{"a b", "\"a b\""}, {" ", "\" \""}, {"a\tb", "\"a\tb\""}, {"a, b", "\"a, b\""}});
}

TEST_F(QuotedTextTest, BlankAndTabNeedQuotesInsideParenthesesToo) {
    expectSpellings({{"(a b)", "\"(a b)\""},
                     {"( )", "\"( )\""},
                     {"x(1\t2)", "\"x(1\t2)\""},
                     {"(it's a)", "\"(it's a)\""},
                     {"(a \"b\")", "\"(a \\\"b\\\")\""},
                     {"(a\vb)", "(a\vb)"}});
}

TEST_F(QuotedTextTest, DoubleQuoteGetsABackslash) {
    expectSpellings({{"a\"b", "a\\\"b"}, {"\"", "\\\""}, {"a \"b\"", "\"a \\\"b\\\"\""}});
}

TEST_F(QuotedTextTest, BackslashBeforeADoubleQuoteGetsAnother) {
    expectSpellings({{"a \\\"b", "\"a \\\\\\\"b\""}, {"a\\\"b", "\"a\\\\\\\"b\""}});
}

TEST_F(QuotedTextTest, BackslashAtTheEndIsDoubledInsideQuotes) {
    expectSpellings(
        {{"a b\\", "\"a b\\\\\""}, {"a,b\\", "\"a,b\\\\\""}, {"a\"\\", "\"a\\\"\\\\\""}});
}

TEST_F(QuotedTextTest, BackslashElsewhereStaysAlone) {
    expectSpellings({{"c:\\dir\\x", "c:\\dir\\x"},
                     {"c:\\my dir\\x", "\"c:\\my dir\\x\""},
                     {"dir\\", "dir\\"},
                     {"\\\\server\\x", "\\\\server\\x"},
                     {"a\\,b", "a\\,b"}});
}

TEST_F(QuotedTextTest, BackslashesInARowAreDoubledInsideQuotes) {
    expectSpellings(
        {{"\\\\my server\\x", "\"\\\\\\\\my server\\x\""}, {"a b\\\\", "\"a b\\\\\\\\\""}});
}

TEST_F(QuotedTextTest, WhatWouldBeReadAsSomethingElseGetsQuotes) {
    expectSpellings({{"it's", "\"it's\""},
                     {"(a", "\"(a\""},
                     {"a\vb", "\"a\vb\""},
                     {"a\fb", "\"a\fb\""},
                     {"\\'", "\\'"},
                     {"(it's)", "(it's)"},
                     {"(\"x\")", "(\\\"x\\\")"}});
}

TEST_F(QuotedTextTest, AnyTextIsReadBack) {
    std::mt19937 random(53);
    const std::string letters = "ab  \t\"\"''\\\\\\(),=-#;\v\f.\xc3";
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (size_t length = random() % 12; length > 0; --length) {
            text += letters[random() % letters.size()];
        }
        expectReadBack(text);
        if (text.find_first_of(" \t") != std::string::npos) {
            EXPECT_EQ(spelled(text).front(), '"') << text;
            EXPECT_EQ(spelled(text).back(), '"') << text;
        }
    }
}

} // namespace tabledrivenparser
