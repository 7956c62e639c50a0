#include "messages/interface/formatted_output.h"

#include "captured_stream.h"
#include "messages/interface/code_page.h"

#include <clocale>
#include <cwchar>

namespace {

int print(std::FILE* stream, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int written = messages::printFormatted(stream, format, arguments);
    va_end(arguments);
    return written;
}

uint32_t printAt(std::FILE* stream, uint32_t column, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    messages::printFormattedAt(stream, column, format, arguments);
    va_end(arguments);
    return column;
}

class FormattedOutputTest : public MessagesTest {
protected:
    std::FILE* stream() { return m_Output.stream(); }
};

TEST_F(FormattedOutputTest, WritesTheFormattedTextAndCountsIt) {
    EXPECT_EQ(print(stream(), "%s has %d", "x", 3), 7);
    EXPECT_EQ(output(), "x has 3");
    EXPECT_EQ(print(stream(), "%s", ""), 0);
    EXPECT_EQ(output(), "");
}

TEST_F(FormattedOutputTest, TakesArgumentsByPosition) {
    EXPECT_EQ(print(stream(), "%2$s before %1$d", 10, "x"), 11);
    EXPECT_EQ(output(), "x before 10");
}

TEST_F(FormattedOutputTest, ShowsControlCharactersInOctal) {
    EXPECT_EQ(print(stream(), "[%s]", "a\x1B[31m\x7F\r\x01\x1F"), 27);
    EXPECT_EQ(output(), "[a\\033[31m\\177\\015\\001\\037]");
}

TEST_F(FormattedOutputTest, LeavesTabsAndLineFeeds) {
    print(stream(), "%s", "a\tb\nc");
    EXPECT_EQ(output(), "a\tb\nc");
}

TEST_F(FormattedOutputTest, ShowsEveryControlCharacterByItsOwnNumber) {
    for (int c = 1; c < 128; ++c) {
        const char text[] = {static_cast<char>(c), '\0'};
        print(stream(), "%s", text);
        char expected[8];
        const bool control = (c < 32 && c != '\t' && c != '\n') || c == 127;
        std::snprintf(expected, sizeof(expected), control ? "\\%.3o" : "%c", c);
        EXPECT_EQ(output(), expected) << c;
    }
}

TEST_F(FormattedOutputTest, WritesALongTextWithControlCharactersWhole) {
    for (const uint64_t length : {255U, 256U, 1023U, 1024U, 20000U}) {
        const std::string text(length, '\x02');
        std::string expected;
        for (uint64_t i = 0; i < length; ++i) {
            expected += "\\002";
        }
        EXPECT_EQ(print(stream(), "%s", text.c_str()), static_cast<int>(length * 4));
        EXPECT_EQ(output(), expected) << length;
    }
}

TEST_F(FormattedOutputTest, WritesTextsOfAnyLengthWhole) {
    for (const uint64_t length : {10238U, 10239U, 10240U, 10241U, 30000U, 100U, 70000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(print(stream(), "%s", text.c_str()), static_cast<int>(length));
        EXPECT_EQ(output(), text) << length;
    }
}

TEST_F(FormattedOutputTest, WritesNothingForAFormatError) {
    // A character that the "C" rules cannot write.
    const wchar_t text[] = {L'a', static_cast<wchar_t>(0x110000), L'\0'};
    EXPECT_EQ(print(stream(), "before %ls", text), 0);
    EXPECT_EQ(output(), "");
}

TEST_F(FormattedOutputTest, EndsATextAtACharacterOfValueZero) {
    EXPECT_EQ(print(stream(), "ab%ccd", 0), 2);
    EXPECT_EQ(output(), "ab");
}

TEST_F(FormattedOutputTest, FormatsUnderPlainRulesAndRestoresTheLocale) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    // Under the rules of UTF-8 this would be one character and no error.
    const wchar_t text[] = {0xE9, L'\0'};
    EXPECT_EQ(print(stream(), "%ls", text), 0);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
    std::setlocale(LC_CTYPE, "C");
}

TEST_F(FormattedOutputTest, KnowsTheColumnBehindTheLastLineFeed) {
    EXPECT_EQ(printAt(stream(), 0, "abc"), 3U);
    EXPECT_EQ(printAt(stream(), 3, "de"), 5U);
    EXPECT_EQ(printAt(stream(), 5, "x\nabcd"), 4U);
    EXPECT_EQ(printAt(stream(), 4, "line\n"), 0U);
    EXPECT_EQ(printAt(stream(), 7, "%s", ""), 7U);
}

TEST_F(FormattedOutputTest, RemembersThatAWriteFailed) {
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_FALSE(messages::outputLost());
    EXPECT_LT(print(full, "text"), 0);
    EXPECT_TRUE(messages::outputLost());
    std::fclose(full);
}

std::string formatted(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string text(messages::formatText(format, arguments));
    va_end(arguments);
    return text;
}

TEST_F(FormattedOutputTest, GivesATextAsItsArgumentsAre) {
    EXPECT_EQ(formatted("%s-%5d-%s", "a\x1B", 42, "\xE9\n"), "a\x1B-   42-\xE9\n");
    EXPECT_EQ(formatted("%s|%s", "a\x1B", "\xE9\n"), "a\x1B|\xE9\n");
    EXPECT_EQ(formatted(""), "");
    EXPECT_EQ(formatted("%s", ""), "");
    EXPECT_EQ(output(), "");
}

TEST_F(FormattedOutputTest, FormatsTextsLikeTheHost) {
    const char* volatile none = nullptr;
    EXPECT_EQ(formatted("<%s>", none), "<(null)>");
    EXPECT_EQ(formatted("100%% of %s", "x"), "100% of x");
    EXPECT_EQ(formatted("%s%s%s", "", "b", ""), "b");
    EXPECT_EQ(formatted("%2$s%1$s", "a", "b"), "ba");
    EXPECT_EQ(formatted("%s|%-4s|%.1s", "a", "b", "cd"), "a|b   |c");
    EXPECT_EQ(formatted("%%s"), "%s");
}

// At each length around those of the buffer, in the fixed part of a format and in an argument.
TEST_F(FormattedOutputTest, FormatsTextsOfAnyLength) {
    for (uint64_t length = 10230; length < 10250; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(formatted("%s", text.c_str()), text);
        EXPECT_EQ(formatted("%s\n", text.c_str()), text + "\n");
        EXPECT_EQ(formatted("a%sb%s", text.c_str(), "c"), "a" + text + "bc");
        EXPECT_EQ(formatted((text + "%s").c_str(), "y"), text + "y");
    }
}

class Utf8FormattedOutputTest : public Utf8MessagesTest {};

TEST_F(Utf8FormattedOutputTest, KeepsTheEndOfALineBehindANameThatIsNoUtf8) {
    for (const char* name : {"caf\xC3", "caf\xE9", "caf\xE3\x81", "caf\xF0\x9F\x98", "caf\xFF"}) {
        EXPECT_EQ(print(m_Output.stream(), "%s\n", name), 5);
        EXPECT_EQ(output(), "caf?\n");
        uint32_t column = printAt(m_Output.stream(), 7, "\n<%s\n\n", name);
        EXPECT_EQ(output(), "\n<caf?\n\n");
        EXPECT_EQ(column, 0U);
        column = printAt(m_Output.stream(), 7, "%s", name);
        EXPECT_EQ(output(), "caf?");
        EXPECT_EQ(column, 11U);
    }
    print(m_Output.stream(), "%s", "\n\n");
    print(m_Output.stream(), "%s", "");
    EXPECT_EQ(output(), "\n\n");
}

TEST_F(Utf8FormattedOutputTest, ShowsControlCharactersAlsoInATextOfOtherCharacters) {
    print(m_Output.stream(), "%s\n", "\x1B日\x07本\x7F");
    EXPECT_EQ(output(), "\\033日\\007本\\177\n");
    const std::string many(5000, '\x1B');
    EXPECT_EQ(print(m_Output.stream(), "日%s\n", many.c_str()), 20004);
    EXPECT_EQ(output().substr(0, 11), "日\\033\\033");
}

// Once a text was not ASCII all others take the long way, and come out the same.
TEST_F(Utf8FormattedOutputTest, PrintsAsciiTheSameBeforeAndAfterOtherTexts) {
    print(m_Output.stream(), "%s\t%d\n", "a.o", 1);
    EXPECT_TRUE(messages::asciiPasses());
    print(m_Output.stream(), "%s\n", "日");
    EXPECT_FALSE(messages::asciiPasses());
    print(m_Output.stream(), "%s\t%d\n", "a.o", 1);
    EXPECT_EQ(output(), "a.o\t1\n日\na.o\t1\n");
}

TEST_F(Utf8FormattedOutputTest, LeavesOtherCharactersInUtf8) {
    EXPECT_EQ(print(m_Output.stream(), "%s", "日本\x1B"), 10);
    EXPECT_EQ(output(), "日本\\033");
}

} // namespace
