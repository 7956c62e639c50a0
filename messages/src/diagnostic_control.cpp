#include "messages/interface/diagnostic_control.h"

#include "messages/interface/message_code.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "messages/src/ascii.h"
#include "messages/src/message_state.h"
#include "platform/interface/internal_check.h"

namespace messages {

namespace {

constexpr uint32_t severityShift = 16;

// A setting for all warnings or all errors. False if the target is none that a class can take.
bool mapClass(uint32_t from, uint32_t severity) {
    switch (severity) {
    case Severity_Suppressed:
    case Severity_FixedWarning:
    case Severity_Error:
        messageState().severityMap[from >> severityShift] =
            static_cast<int32_t>(severity >> severityShift);
        return true;
    default:
        return false;
    }
}

bool setNumber(int32_t number, uint32_t severity) {
    if (number < 1 || number >= static_cast<int32_t>(numberedSeverities)) {
        return false;
    }
    MessageState& state = messageState();
    (*state.numberSeverity)[static_cast<uint32_t>(number)] = severity >> severityShift;
    state.numberSeverityDirty = true;
    return true;
}

bool setByText(uint32_t severity, const char* text) {
    if (equalFolded(text, "warning")) {
        return mapClass(Severity_FixedWarning, severity);
    }
    if (equalFolded(text, "error")) {
        return mapClass(Severity_Error, severity);
    }
    const char* number = text;
    if (isLetter(*number)) {
        if (foldUpper(*number) != messageState().toolLetter) {
            return true; // a number of another tool that shares the same build settings
        }
        ++number;
    }
    return setNumber(decimalValue(number), severity);
}

} // namespace

uint32_t effectiveSeverity(uint32_t flags, uint32_t key) {
    const MessageState& state = messageState();
    const uint32_t base = flags >> severityShift;
    if (base == 0 || base >= severityCount) {
        platform::assertionFailed("Messages: Bad severity number %d\n", static_cast<int>(base));
    }
    const uint32_t number = keyNumber(key);
    uint32_t chosen = base;
    if (number < numberedSeverities && (*state.numberSeverity)[number] != 0) {
        chosen = (*state.numberSeverity)[number];
    }
    const auto mapped = static_cast<uint32_t>(state.severityMap[chosen]);
    if (mapped < base) {
        return (flags & Severity_MayDowngrade) != 0 ? mapped : base;
    }
    if (mapped > base) {
        return (flags & Severity_MayUpgrade) != 0 ? mapped : base;
    }
    return base;
}

bool applyDiagnosticControl(uint32_t severity, const char* text) {
    if (text == nullptr || *text == '\0' || setByText(severity, text)) {
        return false;
    }
    report(Severity_FixedWarning, MessageKey_UnknownDiagnosticNumber, text);
    return true;
}

} // namespace messages
