#include "messages/src/emit.h"

#include "messages/interface/formatted_output.h"
#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_code.h"
#include "messages/interface/message_keys.h"
#include "messages/src/message_state.h"
#include "messages/src/stream_output.h"
#include "platform/interface/internal_check.h"

namespace messages {

constinit const uint32_t g_locationKeys[styleCount][locationDepths] = {
    {MessageKey_PlainLocationNone, MessageKey_PlainLocationFile, MessageKey_PlainLocationLine,
     MessageKey_PlainLocationColumn},
    {MessageKey_IdeLocationNone, MessageKey_IdeLocationFile, MessageKey_IdeLocationLine,
     MessageKey_IdeLocationColumn},
    {MessageKey_GnuLocationNone, MessageKey_GnuLocationFile, MessageKey_GnuLocationLine,
     MessageKey_GnuLocationColumn},
};

constinit const uint32_t g_severityKeys[styleCount][5] = {
    {MessageKey_PlainRemark, MessageKey_PlainWarning, MessageKey_PlainError,
     MessageKey_PlainFatalError, MessageKey_PlainInternalFault},
    {MessageKey_IdeRemark, MessageKey_IdeWarning, MessageKey_IdeError, MessageKey_IdeFatalError,
     MessageKey_IdeInternalFault},
    {MessageKey_PlainRemark, MessageKey_PlainWarning, MessageKey_PlainError,
     MessageKey_PlainFatalError, MessageKey_PlainInternalFault},
};

namespace {

constexpr uint32_t suppressed = Severity_Suppressed >> 16;
constexpr uint32_t remark = Severity_Remark >> 16;
constexpr uint32_t firstError = Severity_Error >> 16;

// The series letter of a key is never printed: all codes of a tool go under the tool's letter.
constexpr const char* codeFormats[styleCount] = {"%c%.5s: ", "%c%.4s:  ", "%c%.5s: "};

void printPiece(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printFormatted(outputStream(), format, arguments);
    va_end(arguments);
}

// The style as an index. A fault about a bad style is itself printed in a good one.
uint32_t checkedStyle() {
    const int32_t style = messageState().style;
    if (style < 0 || style >= static_cast<int32_t>(styleCount)) {
        messageState().style = 0;
        platform::assertionFailed("Messages: unexpected diagnostic style %d", style);
    }
    return static_cast<uint32_t>(style);
}

// Counting comes before printing: the report that exceeds the limit is not seen any more.
void count(uint32_t severity) {
    MessageState& state = messageState();
    ++state.counts[severity - 1];
    if (severity < firstError) {
        return;
    }
    uint64_t errors = 0;
    for (uint32_t i = firstError; i < severityCount; ++i) {
        errors += state.counts[i - 1];
    }
    if (errors == uint64_t{state.errorLimit} + 1) {
        if (state.limitHandler == nullptr) {
            leaveProgram(1);
        }
        state.limitHandler();
    }
}

uint32_t locationDepth(const MessageLocation& location) {
    if (location.file == nullptr) {
        return 0;
    }
    if (location.line == 0) {
        return 1;
    }
    return location.column == 0 ? 2 : 3;
}

void printPrefix(uint32_t style, uint32_t severity, const MessageLocation* location) {
    constexpr MessageLocation nowhere{nullptr, 0, 0};
    const MessageLocation& place = location != nullptr ? *location : nowhere;
    const char* file = place.file != nullptr ? place.file : messageState().toolName;
    printPiece(messageText(g_locationKeys[style][locationDepth(place)]), file, place.line,
               place.column);
    printPiece(messageText(g_severityKeys[style][severity - remark]));
}

void printCode(uint32_t style, uint32_t key) {
    char code[codeBufferSize];
    formatCode(key, code);
    printPiece(codeFormats[style], messageState().toolLetter, code + 1);
}

void emitArguments(uint32_t severity, const char* text, int newline, ...) {
    va_list arguments;
    va_start(arguments, newline);
    emit(severity, nullptr, 0, text, arguments, newline != 0);
    va_end(arguments);
}

} // namespace

bool emit(uint32_t severity, const MessageLocation* location, uint32_t key, const char* text,
          va_list arguments, bool newline) {
    messageState().column = 0;
    count(severity);
    if (severity == suppressed) {
        return false;
    }
    const uint32_t style = checkedStyle();
    std::FILE* stream = outputStream();
    beginOutput(stream);
    printPrefix(style, severity, location);
    if (text == nullptr) {
        text = messageText(key);
        if (severity != remark) {
            printCode(style, key);
        }
    }
    printFormatted(stream, text, arguments);
    if (newline && *text != '\0') {
        writeBytes(stream, "\n", 1);
    }
    endOutput(stream);
    return true;
}

void emitFaultPrefix() {
    emitArguments(Severity_InternalFault >> 16, "", 0);
}

} // namespace messages
