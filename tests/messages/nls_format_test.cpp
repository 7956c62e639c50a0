#include "messages/interface/nls_format.h"

#include "captured_stream.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/message_locale.h"
#include "messages/interface/report.h"

#include <climits>

namespace {

const messages::NlsCell* gather(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const messages::NlsCell* cells = messages::nlsArguments(format, arguments);
    va_end(arguments);
    return cells;
}

template <class... Arguments>
std::string format(const char* text, Arguments... arguments) {
    const messages::NlsCell* cells = gather(text, arguments...);
    const uint64_t length = messages::nlsFormat(nullptr, text, cells);
    std::string result(length + 1, '#');
    EXPECT_EQ(messages::nlsFormat(result.data(), text, cells), length);
    EXPECT_EQ(result.back(), '\0');
    result.pop_back();
    return result;
}

class NlsFormatTest : public MessagesTest {};
using NlsFormatDeathTest = NlsFormatTest;

TEST_F(NlsFormatTest, FormatsArgumentsInSequence) {
    EXPECT_EQ(format("%s has %d of %u", "x", -3, 7U), "x has -3 of 7");
    EXPECT_EQ(format("plain"), "plain");
    EXPECT_EQ(format(""), "");
}

TEST_F(NlsFormatTest, FormatsArgumentsByPosition) {
    EXPECT_EQ(format("%2$s before %1$d", 10, "x"), "x before 10");
    EXPECT_EQ(format("%3$s%1$s%2$s", "a", "b", "c"), "cab");
    EXPECT_EQ(format("%1$s %1$s", "a"), "a a");
}

TEST_F(NlsFormatTest, FormatsEachTypeOfConversion) {
    EXPECT_EQ(format("%d|%i|%o|%u|%x|%X|%c", -1, 2, 8, 9U, 255, 255, 'z'), "-1|2|10|9|ff|FF|z");
    EXPECT_EQ(format("%e|%E|%f|%g|%G", 1.5, 1.5, 1.5, 1.5, 1.5),
              "1.500000e+00|1.500000E+00|1.500000|1.5|1.5");
    EXPECT_EQ(format("%p", static_cast<void*>(nullptr)), "(nil)");
}

TEST_F(NlsFormatTest, TakesThirtyTwoBitsAlsoForLongNumbers) {
    EXPECT_EQ(format("%ld %lu %lx", -5, 6U, -1), "-5 6 ffffffff");
    EXPECT_EQ(format("%lf", 2.5), "2.500000");
}

TEST_F(NlsFormatTest, FormatsWideTexts) {
    EXPECT_EQ(format("%ls|%lc", L"ab", L'c'), "ab|c");
}

TEST_F(NlsFormatTest, KeepsFlagsWidthsAndPrecisions) {
    EXPECT_EQ(format("[%5d][%-5d][%05d][%+d][% d][%#x]", 42, 42, 42, 42, 42, 42),
              "[   42][42   ][00042][+42][ 42][0x2a]");
    EXPECT_EQ(format("[%.2s][%6.2s][%-6.2s][%.s]", "abc", "abc", "abc", "abc"),
              "[ab][    ab][ab    ][]");
    EXPECT_EQ(format("[%2$-6s][%1$.3f]", 1.0, "ab"), "[ab    ][1.000]");
    EXPECT_EQ(format("[%--+ #5d]", 42), "[+42  ]");
}

TEST_F(NlsFormatTest, TakesAStarFromTheCellBehindItsConversion) {
    EXPECT_EQ(format("[%*d]", 42, 5), "[   42]");
    EXPECT_EQ(format("[%-*d]", 42, 5), "[42   ]");
    EXPECT_EQ(format("[%.*s]", "abc", 2), "[ab]");
    EXPECT_EQ(format("[%*.*s]", "abc", 5, 2), "[   ab]");
}

TEST_F(NlsFormatTest, TakesAStarFromTheCellItNames) {
    EXPECT_EQ(format("[%2$*1$d]", 5, 42), "[   42]");
    EXPECT_EQ(format("[%1$*3$.*2$s]", "abc", 2, 5), "[   ab]");
    EXPECT_EQ(format("[%1$*2$d]", 42, -5), "[42   ]");
    EXPECT_EQ(format("[%1$.*2$s]", "abc", -1), "[abc]");
}

TEST_F(NlsFormatTest, WritesTwoPercentSignsAsOne) {
    EXPECT_EQ(format("%d%% of %s", 5, "x"), "5% of x");
    EXPECT_EQ(format("%%"), "%");
}

TEST_F(NlsFormatTest, PassesOverWhatIsNoConversion) {
    EXPECT_EQ(format("end %"), "end ");
    EXPECT_EQ(format("end %5"), "end ");
    EXPECT_EQ(format("%q|%d", 1), "|1");
}

TEST_F(NlsFormatTest, StoresNothingForACount) {
    int count = 17;
    EXPECT_EQ(format("ab%n%s", &count, "c"), "abc");
    EXPECT_EQ(count, 17);
}

TEST_F(NlsFormatTest, TakesTwentyArguments) {
    EXPECT_EQ(format("%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 2,
                     3, 4, 5, 6, 7, 8, 9, 0),
              "12345678901234567890");
}

TEST_F(NlsFormatTest, StopsAtTheFirstCellWithoutAConversion) {
    const messages::NlsCell* cells = gather("%1$s %3$s", "a", "b", "c");
    EXPECT_STREQ(static_cast<const char*>(cells[0].pointer), "a");
    EXPECT_EQ(cells[1].pointer, nullptr);
}

TEST_F(NlsFormatDeathTest, EndsTheRunForTooManyArguments) {
    const char* tooMany = "^\\*\\* NLS Fatal Error: Too many arguments in format string\n$";
    EXPECT_EXIT(gather("%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d"), testing::ExitedWithCode(1),
                tooMany);
    EXPECT_EXIT(gather("%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%*d"), testing::ExitedWithCode(1),
                tooMany);
    EXPECT_EXIT(gather("%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%.*d"), testing::ExitedWithCode(1),
                tooMany);
}

TEST_F(NlsFormatTest, PrintsToAStream) {
    EXPECT_EQ(messages::nlsPrint(m_Output.stream(), "%2$s %1$s", gather("%2$s %1$s", "a", "b")), 3);
    EXPECT_EQ(output(), "b a");
}

TEST_F(NlsFormatTest, PrintsAMessageWithItsOwnCode) {
    EXPECT_EQ(messages::nlsPrintMessage(m_Output.stream(), nullptr,
                                        messages::MessageKey_ViaFileTooDeep, 10, "a.via"),
              73);
    EXPECT_EQ(output(),
              "X3902U: Recursive via file inclusion depth of 10 reached in file 'a.via'.");
}

TEST_F(NlsFormatTest, PrintsNoCodeForPlainInformation) {
    EXPECT_EQ(messages::nlsPrintMessage(m_Output.stream(), nullptr,
                                        messages::MessageKey_CreatingArchive, "l.a"),
              22);
    EXPECT_EQ(output(), "Creating archive 'l.a'");
}

TEST_F(NlsFormatTest, PrintsAMessageInItsLanguageAndCodePage) {
    messages::setMessageLocale("ja_JP.932", messages::libReportFatal);
    messages::nlsPrintMessage(m_Output.stream(), nullptr, messages::MessageKey_SummaryWarning);
    EXPECT_EQ(output(), "\x8C\x78\x8D\x90");
}

TEST_F(NlsFormatTest, PrintsAMessageOfAnOverlay) {
    const messages::MessageEntry entries[] = {{messages::MessageKey_OutOfMemory, "none left"}};
    const messages::MessageCatalogue overlay{1, entries};
    messages::nlsPrintMessage(m_Output.stream(), &overlay, messages::MessageKey_OutOfMemory);
    EXPECT_EQ(output(), "L6800U: none left");
}

TEST_F(NlsFormatTest, WritesAMessageIntoABuffer) {
    char buffer[32];
    EXPECT_EQ(messages::nlsFormatMessage(buffer, sizeof(buffer), nullptr,
                                         messages::MessageKey_OutOfMemory),
              21U);
    EXPECT_STREQ(buffer, "L6800U: Out of memory");
    EXPECT_EQ(messages::nlsFormatMessage(buffer, 12, nullptr, messages::MessageKey_OutOfMemory),
              21U);
    EXPECT_STREQ(buffer, "L6800U: Out");
    EXPECT_EQ(messages::nlsFormatMessage(nullptr, 0, nullptr, messages::MessageKey_OutOfMemory),
              21U);
}

TEST_F(NlsFormatTest, RemembersThatAWriteFailed) {
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_LT(messages::nlsPrintMessage(full, nullptr, messages::MessageKey_OutOfMemory), 0);
    EXPECT_TRUE(messages::outputLost());
    std::fclose(full);
}

} // namespace
