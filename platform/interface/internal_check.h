// Internal checks: what the tool asserts of itself, at which level, and how a failure ends.
//
// A failed check is a fault of the program, never of its input. It prints one line with a short
// fingerprint, by which reports of the same fault can be told together across builds, and leaves
// with status 1. The line and the exit go through functions that are handed in, since messages and
// the exit path live above this library.
//
// A check site reads `TOMEX_CHECK(index < m_Used);`.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>

namespace platform {

// Which checks run: only the first two levels are ever tested, the others are for `showChecks`.
enum CheckLevel : uint32_t {
    CheckLevel_None = 0,
    CheckLevel_Low = 1,
    CheckLevel_Medium = 2,
    CheckLevel_High = 3,
    CheckLevel_Extravagant = 4,
};

// How the text of a fault and of `showChecks` reaches the user.
struct CheckOutput {
    // Counts an internal fault and prints what stands in front of its text.
    void (*beginFault)();
    // Prints a format with its arguments.
    void (*print)(const char* format, va_list arguments);
    // Makes sure that all that was printed has left the process.
    void (*flush)();
};

// Installs the output; null restores the plain one, which writes to the standard error stream.
// The object must outlive its use.
void setCheckOutput(const CheckOutput* output);

// Installs the way out of the process, which must not return; null restores the host's `exit`.
void setCheckExit(void (*exitProgram)(int status));

// The level in force. Read through `checkEnabled`, written through `setCheckLevel`.
extern uint32_t checkLevel;

// True if checks of this level run: those at level 0 always, those at level 1 unless the user
// switched them off, those above never.
inline bool checkEnabled(uint32_t level) {
    return level <= 1 && level <= checkLevel;
}

// The option `db_check`: a level's name, with "show," in front to print the levels in force, or
// "show" alone. Any other text is ignored without a word, null too.
void setCheckLevel(const char* text);

// Prints the levels in force, one line each.
void showChecks();

// Prints an internal fault and ends the process with status 1. `format` is part of the fault's
// fingerprint, so what varies from run to run belongs into the arguments.
[[noreturn, gnu::format(printf, 1, 2)]] void assertionFailed(const char* format, ...);

// `assertionFailed` for a check site: `file` is its source path, printed without the extension.
[[noreturn]] void checkFailed(const char* file, uint32_t line, const char* condition);

// The text that a fault's fingerprint is taken of: for a format that names a source path, the path
// counts from its last folder "work" on, so that the place of a build does not matter.
std::string normalisedFault(const char* format);

// The fingerprint of a fault's format, and the hash of a text as it stands up to a line feed: both
// 24 bits wide.
uint32_t faultFingerprint(const char* format);
uint32_t faultHash(const char* text);

} // namespace platform

#if defined(TOMEX_CHECK_STATISTICS)
#define TOMEX_RECORD_CHECK()                                                                       \
    ::platform::recordCheck(__FILE__, static_cast<uint32_t>(__LINE__),                             \
                            ::platform::CheckTemperature_Cold, ::platform::CheckLevel_Low)
#else
#define TOMEX_RECORD_CHECK() static_cast<void>(0)
#endif

// A check at level 1 whose text in the report is `text`.
#define TOMEX_CHECK_TEXT(condition, text)                                                          \
    do {                                                                                           \
        TOMEX_RECORD_CHECK();                                                                      \
        if (::platform::checkEnabled(1) && !(condition)) {                                         \
            ::platform::checkFailed(__FILE__, static_cast<uint32_t>(__LINE__), text);              \
        }                                                                                          \
    } while (false)

// A check at level 1 whose text is the condition's own.
#define TOMEX_CHECK(condition) TOMEX_CHECK_TEXT(condition, #condition)

#if defined(TOMEX_CHECK_STATISTICS)
#include "platform/interface/check_statistics.h"
#endif
