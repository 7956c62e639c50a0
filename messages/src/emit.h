// The output step under all reporting entries: counts a report, and prints it with its prefix.
#pragma once

#include "messages/interface/report.h"

#include <cstdarg>
#include <cstdint>

namespace messages {

// Reports at `severity`, 1 to 6, at `location` (null for none). `text` is a ready format without a
// code; null takes the text of `key`, with its code unless the severity is that of a remark. With
// `newline` a line feed ends a text that is not empty. False if nothing was printed.
bool emit(uint32_t severity, const MessageLocation* location, uint32_t key, const char* text,
          va_list arguments, bool newline);

// Counts an internal fault and prints its prefix alone.
void emitFaultPrefix();

// The keys of the prefixes by style, which tests walk.
constexpr uint32_t styleCount = 3;
constexpr uint32_t locationDepths = 4; // nothing, file, line, column
extern const uint32_t g_locationKeys[styleCount][locationDepths];
extern const uint32_t g_severityKeys[styleCount][5]; // severities 2 to 6

} // namespace messages
