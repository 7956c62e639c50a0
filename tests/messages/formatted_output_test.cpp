#include "messages/interface/formatted_output.h"

#include "captured_stream.h"

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

class Utf8FormattedOutputTest : public Utf8MessagesTest {};

TEST_F(Utf8FormattedOutputTest, LeavesOtherCharactersInUtf8) {
    EXPECT_EQ(print(m_Output.stream(), "%s", "日本\x1B"), 10);
    EXPECT_EQ(output(), "日本\\033");
}

} // namespace
