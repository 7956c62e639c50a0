#include "messages/interface/report.h"

#include "captured_stream.h"
#include "messages/interface/diagnostic_control.h"
#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/parse_reporter.h"
#include "messages/src/emit.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/tool_identity.h"

namespace {

using messages::libReport;
using messages::MessageLocation;
using messages::report;
using messages::setStyle;
using messages::Severity_Error;
using messages::Severity_Fatal;
using messages::Severity_FixedWarning;
using messages::Severity_InternalFault;
using messages::Severity_Remark;
using messages::Severity_Suppressed;
using messages::Severity_Warning;

constexpr uint32_t errorKey = messages::MessageKey_NotArchiveFormat;

class ReportTest : public MessagesTest {};
using ReportDeathTest = ReportTest;

TEST_F(ReportTest, PrintsALineInEachStyle) {
    const char* lines[] = {
        "Error: L6826E: 'x' not in archive format\n",
        "tomex : error L6826:  'x' not in archive format\n",
        "Error: L6826E: 'x' not in archive format\n",
    };
    for (int32_t style = 0; style < 3; ++style) {
        setStyle(style);
        report(Severity_Error, errorKey, "x");
        EXPECT_EQ(output(), lines[style]);
    }
}

TEST_F(ReportTest, PrintsTheWordOfEachSeverityInEachStyle) {
    const char* words[3][5] = {
        {"", "Warning: L6826E: ", "Error: L6826E: ", "Fatal error: L6826E: ",
         "Internal fault: L6826E: "},
        {"tomex : ", "tomex : warning L6826:  ", "tomex : error L6826:  ",
         "tomex : Fatal error L6826:  ", "tomex : Internal fault: L6826:  "},
        {"", "Warning: L6826E: ", "Error: L6826E: ", "Fatal error: L6826E: ",
         "Internal fault: L6826E: "},
    };
    for (int32_t style = 0; style < 3; ++style) {
        setStyle(style);
        for (uint32_t severity = 2; severity < 7; ++severity) {
            libReport(severity << 16, nullptr, errorKey, "x");
            EXPECT_EQ(output(),
                      std::string(words[style][severity - 2]) + "'x' not in archive format\n")
                << style << " " << severity;
        }
    }
}

TEST_F(ReportTest, PrintsTheLocationAsFarAsItIsKnown) {
    const MessageLocation locations[] = {
        {nullptr, 0, 0}, {nullptr, 3, 4}, {"f.c", 0, 0},
        {"f.c", 0, 4},   {"f.c", 3, 0},   {"f.c", 3, 4},
    };
    const char* prefixes[3][6] = {
        {"", "", "\"f.c\": ", "\"f.c\": ", "\"f.c\", line 3: ", "\"f.c\", line 3 (column 4): "},
        {"tomex : ", "tomex : ", "f.c : ", "f.c : ", "f.c(3) : ", "f.c(3,4) : "},
        {"", "", "f.c: ", "f.c: ", "f.c:3: ", "f.c:3:4: "},
    };
    const char* rest[] = {
        "Warning: L6826E: 'x' not in archive format\n",
        "warning L6826:  'x' not in archive format\n",
        "Warning: L6826E: 'x' not in archive format\n",
    };
    for (int32_t style = 0; style < 3; ++style) {
        setStyle(style);
        for (size_t i = 0; i < 6; ++i) {
            libReport(Severity_Warning, &locations[i], errorKey, "x");
            EXPECT_EQ(output(), std::string(prefixes[style][i]) + rest[style]) << style << i;
        }
    }
}

TEST_F(ReportTest, HoldsATextForEveryPrefix) {
    for (uint32_t style = 0; style < messages::styleCount; ++style) {
        for (const uint32_t key : messages::g_locationKeys[style]) {
            EXPECT_EQ(std::string(messages::messageText(key)).find("<NotFound"), std::string::npos);
        }
        for (const uint32_t key : messages::g_severityKeys[style]) {
            EXPECT_EQ(std::string(messages::messageText(key)).find("<NotFound"), std::string::npos);
        }
    }
}

TEST_F(ReportTest, PrintsEveryCodeUnderTheToolsLetter) {
    libReport(Severity_Error, nullptr, messages::MessageKey_UnrecognizedOption, "--", "zap");
    EXPECT_EQ(output(), "Error: L3900U: Unrecognized option '--zap'.\n");
    setStyle(1);
    libReport(Severity_Error, nullptr, messages::MessageKey_UnrecognizedOption, "--", "zap");
    EXPECT_EQ(output(), "tomex : error L3900:  Unrecognized option '--zap'.\n");
}

TEST_F(ReportTest, PrintsAnUnknownKeyWithItsNumber) {
    libReport(Severity_Error, nullptr, (uint32_t{'X'} * 16384 + 3999) * 16 + 10);
    EXPECT_EQ(output(), "Error: L3999U: <NotFound Code=X3999U key=0x0160f9fa>\n");
}

TEST_F(ReportTest, PrintsARemarkAsAPlainLine) {
    messages::libRemark(messages::MessageKey_CreatingArchive, "l.a");
    EXPECT_EQ(output(), "Creating archive 'l.a'\n");
    EXPECT_EQ(messages::countAtOrAbove(Severity_Remark), 1U);
    EXPECT_EQ(messages::countAtOrAbove(Severity_Warning), 0U);
}

TEST_F(ReportTest, PrintsNothingForASuppressedReportAndCountsIt) {
    messages::applyDiagnosticControl(Severity_Suppressed, "warning");
    report(Severity_Warning, messages::MessageKey_NonElfObject, "a", "b");
    EXPECT_EQ(output(), "");
    EXPECT_EQ(messages::countAtOrAbove(Severity_Suppressed), 1U);
    EXPECT_EQ(messages::countAtOrAbove(Severity_Remark), 0U);
}

TEST_F(ReportTest, CountsEachReportAtItsEffectiveSeverity) {
    report(Severity_Warning, messages::MessageKey_NonElfObject, "a", "b");
    EXPECT_EQ(messages::errorCount(), 0U);
    messages::applyDiagnosticControl(Severity_Error, "warning");
    report(Severity_Warning, messages::MessageKey_NonElfObject, "a", "b");
    report(Severity_FixedWarning, messages::MessageKey_NonElfObject, "a", "b");
    EXPECT_EQ(output(), "Warning: L6875W: Adding non-ELF object 'a' to archive 'b'\n"
                        "Error: L6875W: Adding non-ELF object 'a' to archive 'b'\n"
                        "Warning: L6875W: Adding non-ELF object 'a' to archive 'b'\n");
    EXPECT_EQ(messages::errorCount(), 1U);
    libReport(Severity_Fatal, nullptr, messages::MessageKey_OutOfMemory);
    libReport(Severity_InternalFault, nullptr, messages::MessageKey_OutOfMemory);
    EXPECT_EQ(messages::errorCount(), 1U);
    EXPECT_EQ(messages::countAtOrAbove(Severity_Error), 3U);
    EXPECT_EQ(messages::countAtOrAbove(Severity_Warning), 5U);
    EXPECT_EQ(messages::countAtOrAbove(0), 5U);
    EXPECT_EQ(messages::countAtOrAbove(0x70000), 0U);
    EXPECT_EQ(messages::countAtOrAbove(0xFFFF0000), 0U);
}

TEST_F(ReportTest, WritesNoLineFeedBehindAnEmptyText) {
    const messages::MessageEntry entries[] = {{messages::MessageKey_OutOfMemory, ""}};
    const messages::MessageCatalogue overlay{1, entries};
    messages::setOverlay(&overlay);
    libReport(Severity_Error, nullptr, messages::MessageKey_OutOfMemory);
    EXPECT_EQ(output(), "Error: L6800U: ");
    messages::reportText(Severity_Remark, nullptr, "%s", "");
    EXPECT_EQ(output(), "\n");
}

TEST_F(ReportTest, PrintsAReadyTextWithoutACode) {
    const MessageLocation location{"f.c", 3, 0};
    messages::reportText(Severity_Remark, nullptr, " * %s [%u] : %s", "a", 2U, "b");
    messages::reportText(Severity_Error, &location, "100%% %s", "bad");
    EXPECT_EQ(output(), " * a [2] : b\n\"f.c\", line 3: Error: 100% bad\n");
    EXPECT_EQ(messages::errorCount(), 1U);
}

TEST_F(ReportTest, MovesAReadyTextWithItsClass) {
    messages::applyDiagnosticControl(Severity_Error, "warning");
    messages::reportText(Severity_Warning, nullptr, "text");
    EXPECT_EQ(output(), "Error: text\n");
}

TEST_F(ReportTest, ShowsControlCharactersOfArgumentsInOctal) {
    report(Severity_Error, errorKey, "a\x1B[2Jb");
    EXPECT_EQ(output(), "Error: L6826E: 'a\\033[2Jb' not in archive format\n");
}

TEST_F(ReportTest, ReturnsFromAFatalReportOfALibrary) {
    EXPECT_TRUE(messages::libReportFatal(messages::MessageKey_OutOfMemory));
    EXPECT_EQ(output(), "Fatal error: L6800U: Out of memory\n");
}

TEST_F(ReportTest, MapsTheSeveritiesOfTheParser) {
    messages::reportParseMessage(0, messages::MessageKey_DeprecatedOption, "x");
    EXPECT_EQ(output(), "Option 'x' is deprecated.\n");
    messages::reportParseMessage(1, messages::MessageKey_DeprecatedOption, "x");
    EXPECT_EQ(output(), "Warning: L3912W: Option 'x' is deprecated.\n");
    messages::ParseReporter reporter;
    reporter.reportParseMessage(2, messages::MessageKey_DeprecatedOption, "x");
    EXPECT_EQ(output(), "Error: L3912W: Option 'x' is deprecated.\n");
    EXPECT_EQ(messages::errorCount(), 1U);
}

TEST_F(ReportTest, LetsTheUserMoveTheParsersWarningsOnly) {
    messages::applyDiagnosticControl(Severity_Suppressed, "3912");
    messages::reportParseMessage(1, messages::MessageKey_DeprecatedOption, "x");
    EXPECT_EQ(output(), "");
    messages::reportParseMessage(2, messages::MessageKey_DeprecatedOption, "x");
    EXPECT_EQ(output(), "Error: L3912W: Option 'x' is deprecated.\n");
}

TEST_F(ReportTest, PrintsFiftyErrorsAndCallsTheHandlerAtTheNext) {
    static int calls = 0;
    calls = 0;
    messages::setErrorLimit(50, [] { ++calls; });
    for (int i = 0; i < 48; ++i) {
        report(Severity_Error, errorKey, "x");
    }
    libReport(Severity_Fatal, nullptr, errorKey, "x");
    libReport(Severity_InternalFault, nullptr, errorKey, "x");
    for (int i = 0; i < 100; ++i) {
        report(Severity_Warning, errorKey, "x");
    }
    EXPECT_EQ(calls, 0);
    report(Severity_Error, errorKey, "x");
    EXPECT_EQ(calls, 1);
    report(Severity_Error, errorKey, "x");
    EXPECT_EQ(calls, 1);
}

TEST_F(ReportTest, CountsPastAnyLimit) {
    static int calls = 0;
    calls = 0;
    messages::setErrorLimit(UINT32_MAX, [] { ++calls; });
    report(Severity_Error, errorKey, "x");
    EXPECT_EQ(calls, 0);
    messages::setErrorLimit(1, [] { ++calls; });
    report(Severity_Error, errorKey, "x");
    EXPECT_EQ(calls, 1);
}

TEST_F(ReportDeathTest, EndsTheRunAtTheFiftyFirstErrorBeforeItIsPrinted) {
    m_Switch.reset();
    const auto raise = [] {
        for (int i = 1; i <= 60; ++i) {
            const std::string name = "x" + std::to_string(i);
            report(Severity_Error, errorKey, name.c_str());
        }
    };
    std::string expected = "^";
    for (int i = 1; i <= 50; ++i) {
        expected += "Error: L6826E: 'x" + std::to_string(i) + "' not in archive format\n";
    }
    EXPECT_EXIT(raise(), testing::ExitedWithCode(1), expected + "$");
}

TEST_F(ReportDeathTest, EndsTheRunForAFatalReport) {
    m_Switch.reset();
    EXPECT_EXIT(report(Severity_Fatal, messages::MessageKey_OutOfMemory),
                testing::ExitedWithCode(1), "^Fatal error: L6800U: Out of memory\n$");
    EXPECT_EXIT(messages::reportParseMessage(3, messages::MessageKey_MissingArgument, "a"),
                testing::ExitedWithCode(1),
                "^Fatal error: L3901U: Missing argument for option 'a'.\n$");
    EXPECT_EXIT(messages::reportParseMessage(17, messages::MessageKey_MissingArgument, "a"),
                testing::ExitedWithCode(1), "^Fatal error: L3901U");
}

TEST_F(ReportDeathTest, LeavesThroughTheExitHandler) {
    m_Switch.reset();
    messages::setExitHandler([](int status) { std::_Exit(status + 40); });
    EXPECT_EXIT(report(Severity_Fatal, messages::MessageKey_OutOfMemory),
                testing::ExitedWithCode(41), "Out of memory");
    EXPECT_EXIT(platform::assertionFailed("bad"), testing::ExitedWithCode(41), "bad");
    messages::setErrorLimit(0, nullptr);
    EXPECT_EXIT(report(Severity_Error, errorKey, "x"), testing::ExitedWithCode(41), "^$");
}

TEST_F(ReportDeathTest, PrintsAnInternalFaultInTheStyleInForce) {
    m_Switch.reset();
    const std::string version = platform::versionNumberText();
    EXPECT_EXIT(platform::assertionFailed("number %d of %s", 3, "x"), testing::ExitedWithCode(1),
                "^Internal fault: \\[0x[0-9a-f]{6}:" + version + "\\] number 3 of x\n$");
    setStyle(1);
    EXPECT_EXIT(platform::assertionFailed("number %d of %s", 3, "x"), testing::ExitedWithCode(1),
                "^tomex : Internal fault: \\[0x[0-9a-f]{6}:" + version + "\\] number 3 of x\n$");
}

TEST_F(ReportDeathTest, CountsAnInternalFault) {
    m_Switch.reset();
    messages::setErrorLimit(0, [] { std::_Exit(7); });
    EXPECT_EXIT(platform::assertionFailed("bad"), testing::ExitedWithCode(7), "^$");
}

TEST_F(ReportDeathTest, TakesAStyleThatDoesNotExistForAnInternalFault) {
    m_Switch.reset();
    for (const int32_t style : {3, -1, 1000}) {
        setStyle(style);
        EXPECT_EXIT(report(Severity_Error, errorKey, "x"), testing::ExitedWithCode(1),
                    "^Internal fault: \\[0x[0-9a-f]{6}:[0-9]+\\] Messages: unexpected diagnostic "
                    "style " +
                        std::to_string(style) + "\n$");
    }
}

TEST_F(ReportDeathTest, TakesAMissingTextForAnInternalFault) {
    m_Switch.reset();
    const char* volatile none = nullptr;
    EXPECT_EXIT(messages::reportText(Severity_Error, nullptr, none, 0), testing::ExitedWithCode(1),
                "Messages: Bad message format \\(null\\)\n");
}

TEST_F(ReportTest, PrintsPlainTextsAndKnowsTheColumn) {
    messages::printText("%s", "abc");
    EXPECT_EQ(messages::column(), 3U);
    messages::printMessage(messages::MessageKey_SummaryErrors);
    EXPECT_EQ(messages::column(), 9U);
    messages::printMessage(messages::MessageKey_ListName, "x");
    EXPECT_EQ(messages::column(), 0U);
    EXPECT_EQ(output(), "abcerrorsx\n");
    EXPECT_EQ(messages::countAtOrAbove(Severity_Suppressed), 0U);
    messages::printText("abc");
    report(Severity_Error, errorKey, "x");
    EXPECT_EQ(messages::column(), 0U);
}

TEST_F(ReportTest, ShowsTheChecksThroughTheCurrentStream) {
    platform::setCheckLevel("show,high");
    EXPECT_EQ(output(), "COLD LOW checks enabled\nCOLD MEDIUM checks enabled\n"
                        "COLD HIGH checks enabled\nHOT LOW checks enabled\n");
    platform::setCheckLevel("low");
}

TEST_F(ReportTest, GivesTheLetterAndNameOfTheTool) {
    EXPECT_EQ(messages::toolLetter(), 'L');
    EXPECT_STREQ(messages::toolName(), "tomex");
}

} // namespace
