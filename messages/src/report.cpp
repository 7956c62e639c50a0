#include "messages/interface/report.h"

#include "messages/interface/diagnostic_control.h"
#include "messages/interface/formatted_output.h"
#include "messages/interface/message_catalogue.h"
#include "messages/src/emit.h"
#include "messages/src/message_state.h"
#include "messages/src/stream_output.h"
#include "platform/interface/internal_check.h"

#include <cstdlib>

namespace messages {

namespace {

void reportAt(uint32_t flags, const MessageLocation* location, uint32_t key, va_list arguments) {
    emit(effectiveSeverity(flags, key), location, key, nullptr, arguments, true);
}

void leaveIfFatal(uint32_t flags) {
    if (flags >= Severity_Fatal) {
        leaveProgram(EXIT_FAILURE);
    }
}

uint32_t flagsOfParseSeverity(uint32_t severity) {
    switch (severity) {
    case 0:
        return Severity_Remark;
    case 1:
        return Severity_Warning;
    case 2:
        return Severity_Error;
    default:
        return Severity_Fatal;
    }
}

void printPlain(const char* format, va_list arguments) {
    std::FILE* stream = outputStream();
    beginOutput(stream);
    printFormattedAt(stream, messageState().column, format, arguments);
    endOutput(stream);
}

} // namespace

void reportArguments(uint32_t flags, uint32_t key, va_list arguments) {
    reportAt(flags, nullptr, key, arguments);
    leaveIfFatal(flags);
}

void report(uint32_t flags, uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    reportArguments(flags, key, arguments);
    va_end(arguments);
}

void reportParseMessageArguments(uint32_t severity, uint32_t key, va_list arguments) {
    reportArguments(flagsOfParseSeverity(severity), key, arguments);
}

void reportParseMessage(uint32_t severity, uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    reportParseMessageArguments(severity, key, arguments);
    va_end(arguments);
}

void libReport(uint32_t flags, const MessageLocation* location, uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    reportAt(flags, location, key, arguments);
    va_end(arguments);
}

bool libReportFatal(uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    reportAt(Severity_Fatal, nullptr, key, arguments);
    va_end(arguments);
    return true;
}

void libRemark(uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    reportAt(Severity_Remark, nullptr, key, arguments);
    va_end(arguments);
}

void reportText(uint32_t flags, const MessageLocation* location, const char* text, ...) {
    if (text == nullptr) {
        platform::assertionFailed("Messages: Bad message format %s\n", "(null)");
    }
    va_list arguments;
    va_start(arguments, text);
    emit(effectiveSeverity(flags, 0), location, 0, text, arguments, true);
    va_end(arguments);
}

void printMessage(uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    printPlain(messageText(key), arguments);
    va_end(arguments);
}

void printTextArguments(const char* format, va_list arguments) {
    printPlain(format, arguments);
}

void printText(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printPlain(format, arguments);
    va_end(arguments);
}

void printMessageToStandardOutput(uint32_t key, ...) {
    // No `StreamSwitch`: its flushes would cost a system call for each line of a listing. The
    // order of all streams is kept all the same, see stream_output.h.
    MessageState& state = messageState();
    std::FILE* previous = state.stream;
    state.stream = stdout;
    va_list arguments;
    va_start(arguments, key);
    printPlain(messageText(key), arguments);
    va_end(arguments);
    state.stream = previous;
}

} // namespace messages
