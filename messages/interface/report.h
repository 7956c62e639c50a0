// The reporting entries: every text that the tool shows goes through one of these.
//
// There are two roads. A diagnostic (`report` and its kin) has a severity that the user's --diag_
// options may move, is counted, and is printed with a prefix and a code in the chosen style. A
// plain text (`printMessage`, `printText`) is printed as it is: listings, reports, the usage.
//
// The arguments after a key fit the conversions of the key's catalogue text, as with `printf`.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace messages {

// Flags words: the severity in the upper half, in the lower half what the user may do to it.
enum Severity : uint32_t {
    Severity_Suppressed = 0x10000,
    Severity_Remark = 0x20000,
    Severity_FixedWarning = 0x30000, // a warning that the user cannot change
    Severity_Warning = 0x30003,
    Severity_Error = 0x40000,
    Severity_Fatal = 0x50000,
    Severity_InternalFault = 0x60000,

    Severity_MayDowngrade = 1, // bits to be combined with one of the above
    Severity_MayUpgrade = 2,
};

// A place in a user's file. `file` null, `line` 0 or `column` 0: not known. The text behind `file`
// is only used during the call that the location is given to.
struct MessageLocation {
    const char* file;
    uint32_t line;
    uint32_t column;
};

// Reports `key` with no location. At flags of 0x50000 and above the process then ends with status
// 1 through the exit handler, whatever the user asked for.
void report(uint32_t flags, uint32_t key, ...);
void reportArguments(uint32_t flags, uint32_t key, va_list arguments);

// The same for the command-line parser, whose severities are 0 remark, 1 warning, 2 error, and
// anything else fatal.
void reportParseMessage(uint32_t severity, uint32_t key, ...);
void reportParseMessageArguments(uint32_t severity, uint32_t key, va_list arguments);

// Reports `key` for a library, at `location` (null for none). Always returns: what a fatal report
// means is the caller's business.
void libReport(uint32_t flags, const MessageLocation* location, uint32_t key, ...);

// `libReport` at fatal severity with no location; true says that the caller is to give up.
bool libReportFatal(uint32_t key, ...);

// `libReport` of a remark.
void libRemark(uint32_t key, ...);

// Reports a ready text that has no key, and so never shows a code. `text` is a format for the
// arguments after it; it is ended by a line feed.
#if defined(__GNUC__)
__attribute__((format(printf, 3, 4)))
#endif
void reportText(uint32_t flags, const MessageLocation* location, const char* text, ...);

// Prints the text of `key` to the current stream: no prefix, no line feed of its own, not counted.
void printMessage(uint32_t key, ...);

// The same for a format that is in no catalogue.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void printText(const char* format, ...);
void printTextArguments(const char* format, va_list arguments);

// `printMessage` to the standard output, whatever the current stream is.
void printMessageToStandardOutput(uint32_t key, ...);

} // namespace messages
