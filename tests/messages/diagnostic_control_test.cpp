#include "messages/interface/diagnostic_control.h"

#include "captured_stream.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/msg_lib_listener.h"
#include "messages/interface/report.h"
#include "tabledrivenparser/interface/parameters.h"

namespace {

using messages::applyDiagnosticControl;
using messages::effectiveSeverity;
using messages::Severity_Error;
using messages::Severity_FixedWarning;
using messages::Severity_Remark;
using messages::Severity_Suppressed;
using messages::Severity_Warning;

constexpr uint32_t warningKey = messages::MessageKey_NonElfObject;    // L6875W
constexpr uint32_t errorKey = messages::MessageKey_NotArchiveFormat;  // L6826E
constexpr uint32_t parserKey = messages::MessageKey_DeprecatedOption; // X3912W

class DiagnosticControlTest : public MessagesTest {};
using DiagnosticControlDeathTest = DiagnosticControlTest;

TEST_F(DiagnosticControlTest, LeavesSeveritiesAsRaisedAtFirst) {
    for (uint32_t severity = 1; severity < 7; ++severity) {
        for (uint32_t bits = 0; bits < 4; ++bits) {
            EXPECT_EQ(effectiveSeverity((severity << 16) | bits, warningKey), severity);
        }
    }
}

TEST_F(DiagnosticControlTest, MovesByNumberWithinWhatTheFlagsAllow) {
    const struct {
        uint32_t flags;
        uint32_t target;
        uint32_t expected;
    } cases[] = {
        {0x30003, Severity_Suppressed, 1},   {0x30003, Severity_Remark, 2},
        {0x30003, Severity_FixedWarning, 3}, {0x30003, Severity_Error, 4},
        {0x30001, Severity_Suppressed, 1},   {0x30001, Severity_Error, 3},
        {0x30002, Severity_Suppressed, 3},   {0x30002, Severity_Error, 4},
        {0x30000, Severity_Suppressed, 3},   {0x30000, Severity_Error, 3},
        {0x40000, Severity_Suppressed, 4},   {0x40001, Severity_Suppressed, 1},
        {0x40001, Severity_FixedWarning, 3}, {0x50000, Severity_Suppressed, 5},
        {0x20000, Severity_Error, 2},        {0x20002, Severity_Error, 4},
        {0x10002, Severity_Error, 4},
    };
    for (const auto& row : cases) {
        ASSERT_FALSE(applyDiagnosticControl(row.target, "6875"));
        EXPECT_EQ(effectiveSeverity(row.flags, warningKey), row.expected)
            << std::hex << row.flags << " " << row.target;
    }
}

TEST_F(DiagnosticControlTest, ReadsANumberInEachOfItsForms) {
    for (const char* text : {"L6875", "l6875", "6875", "L6875W", "6875E", "L 6875", "6875 x"}) {
        messages::initMessages();
        EXPECT_FALSE(applyDiagnosticControl(Severity_Error, text)) << text;
        EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 4U) << text;
        EXPECT_EQ(effectiveSeverity(Severity_Warning, messages::MessageKey_NoBaseVariant), 3U);
    }
}

TEST_F(DiagnosticControlTest, ReachesANumberInAllSeries) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "3912"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, parserKey), 1U);
    const uint32_t sameNumber = (uint32_t{'L'} * 16384 + 3912) * 16 + 4;
    EXPECT_EQ(effectiveSeverity(Severity_Warning, sameNumber), 1U);
}

TEST_F(DiagnosticControlTest, IgnoresAnotherToolsLetterWithoutAWord) {
    for (const char* text : {"X3912", "x3912", "foo", "X"}) {
        EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, text)) << text;
    }
    EXPECT_EQ(effectiveSeverity(Severity_Warning, parserKey), 3U);
    EXPECT_EQ(output(), "");
}

TEST_F(DiagnosticControlTest, DoesNothingForAnEmptyText) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, ""));
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, nullptr));
    EXPECT_EQ(output(), "");
}

TEST_F(DiagnosticControlTest, WarnsOfANumberThatDoesNotExist) {
    for (const char* text : {"0", "10000", "-1", "L", "L0", "Lx", "4294974171", "L10000W", "_",
                             "99999999999999999999", ",6875"}) {
        EXPECT_TRUE(applyDiagnosticControl(Severity_Suppressed, text)) << text;
        EXPECT_EQ(output(),
                  std::string("Warning: L9962I: Unknown diagnostic number ") + text + "\n");
    }
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "1"));
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "9999"));
    EXPECT_EQ(output(), "");
}

TEST_F(DiagnosticControlTest, RefusesWordsForRemarks) {
    EXPECT_TRUE(applyDiagnosticControl(Severity_Remark, "warning"));
    EXPECT_EQ(output(), "Warning: L9962I: Unknown diagnostic number warning\n");
    EXPECT_TRUE(applyDiagnosticControl(Severity_Remark, "Error"));
    EXPECT_EQ(output(), "Warning: L9962I: Unknown diagnostic number Error\n");
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 3U);
}

TEST_F(DiagnosticControlTest, RaisesAllWarningsThatMayBeRaised) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_Error, "warning"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 4U);
    EXPECT_EQ(effectiveSeverity(Severity_FixedWarning, warningKey), 3U);
    EXPECT_EQ(effectiveSeverity(Severity_Remark, warningKey), 2U);
    EXPECT_EQ(effectiveSeverity(Severity_Error, errorKey), 4U);
}

TEST_F(DiagnosticControlTest, SilencesAllWarningsInAnyCase) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "WARNing"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 1U);
    EXPECT_FALSE(applyDiagnosticControl(Severity_FixedWarning, "warning"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 3U);
}

TEST_F(DiagnosticControlTest, DoesNotTouchErrorsThatMayNotBeLowered) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "error"));
    EXPECT_EQ(effectiveSeverity(Severity_Error, errorKey), 4U);
    EXPECT_EQ(effectiveSeverity(Severity_Error | messages::Severity_MayDowngrade, errorKey), 1U);
    EXPECT_FALSE(applyDiagnosticControl(Severity_FixedWarning, "error"));
    EXPECT_EQ(effectiveSeverity(Severity_Error, errorKey), 4U);
    EXPECT_EQ(effectiveSeverity(Severity_Error | messages::Severity_MayDowngrade, errorKey), 3U);
    EXPECT_FALSE(applyDiagnosticControl(Severity_Error, "error"));
    EXPECT_EQ(effectiveSeverity(Severity_Error | messages::Severity_MayDowngrade, errorKey), 4U);
}

TEST_F(DiagnosticControlTest, PassesANumbersSettingThroughThatOfItsClass) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_FixedWarning, "6875"));
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "warning"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 1U);
    EXPECT_FALSE(applyDiagnosticControl(Severity_Error, "6875"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 4U);
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "error"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 1U);
}

TEST_F(DiagnosticControlTest, LetsALaterSettingReplaceAnEarlierOne) {
    EXPECT_FALSE(applyDiagnosticControl(Severity_Error, "6875"));
    EXPECT_FALSE(applyDiagnosticControl(Severity_Suppressed, "6875"));
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 1U);
    messages::initMessages();
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 3U);
}

TEST_F(DiagnosticControlTest, TakesNoSettingForNumbersBeyondTheTable) {
    const uint32_t key = (uint32_t{'L'} * 16384 + 10000) * 16 + 4;
    EXPECT_EQ(effectiveSeverity(Severity_Warning, key), 3U);
    EXPECT_EQ(effectiveSeverity(Severity_Warning, 0xFFFFFFFF), 3U);
}

TEST_F(DiagnosticControlDeathTest, TakesASeverityThatDoesNotExistForAnInternalFault) {
    m_Switch.reset();
    EXPECT_EXIT(effectiveSeverity(0x70000, warningKey), testing::ExitedWithCode(1),
                "^Internal fault: \\[0x[0-9a-f]{6}:[0-9]+\\] Messages: Bad severity number 7\n\n$");
    EXPECT_EXIT(effectiveSeverity(0xFFFF0000, warningKey), testing::ExitedWithCode(1),
                "Messages: Bad severity number 65535\n");
    EXPECT_EXIT(effectiveSeverity(3, warningKey), testing::ExitedWithCode(1),
                "Messages: Bad severity number 0\n");
}

class MsgLibListenerTest : public MessagesTest {
protected:
    bool set(uint32_t parameter, uint64_t value) {
        tabledrivenparser::Parameters parameters;
        return m_Listener.parameterSet(parameters, parameter, value);
    }
    bool set(uint32_t parameter, const char* text) {
        return set(parameter, reinterpret_cast<uintptr_t>(text));
    }

    messages::MsgLibListener m_Listener{
        {.style = 29, .suppress = 30, .error = 31, .warning = 32, .remark = 33}};
};

TEST_F(MsgLibListenerTest, SetsTheStyleOfEachValueAndLetsTheParserStoreIt) {
    const struct {
        uint32_t value;
        int32_t style;
    } rows[] = {
        {messages::DiagnosticStyle_List, 1}, {messages::DiagnosticStyle_Qel, 0},
        {messages::DiagnosticStyle_Ide, 1},  {messages::DiagnosticStyle_DevStudio, 1},
        {messages::DiagnosticStyle_Gnu, 2},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(set(29, uint64_t{row.value}));
        EXPECT_EQ(messages::style(), row.style) << row.value;
    }
}

TEST_F(MsgLibListenerTest, GivesEachListItsSeverity) {
    const struct {
        uint32_t parameter;
        uint32_t severity;
    } rows[] = {{30, 1}, {31, 4}, {32, 3}, {33, 2}};
    for (const auto& row : rows) {
        EXPECT_FALSE(set(row.parameter, "6875"));
        EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), row.severity) << row.parameter;
    }
}

TEST_F(MsgLibListenerTest, TakesARefusedElementSoThatItIsNotStored) {
    EXPECT_TRUE(set(30, "10000"));
    EXPECT_EQ(output(), "Warning: L9962I: Unknown diagnostic number 10000\n");
    EXPECT_TRUE(set(33, "warning"));
    EXPECT_FALSE(set(30, "X3912"));
}

TEST_F(MsgLibListenerTest, LeavesOtherParametersAlone) {
    EXPECT_FALSE(set(28, "6875"));
    EXPECT_FALSE(set(34, "10000"));
    EXPECT_EQ(output(), "");
    EXPECT_EQ(effectiveSeverity(Severity_Warning, warningKey), 3U);
}

} // namespace
