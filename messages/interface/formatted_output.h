// The one output step: every message and every line of a listing is formatted, made safe for a
// terminal, converted to the user's character set and written here.
//
// A listing is one call a member, so the way of a plain line is short: a format of nothing but
// texts is put together without the host's formatter, and a line of plain ASCII is looked at once.
//
// Control characters other than tab and line feed come out as a backslash and three octal digits:
// file and member names are anybody's, and must not drive the user's terminal.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace messages {

// The text of a format, which holds until the next call of this or of anything that prints. Empty
// for a format error. It is as the arguments are: not made safe, not converted.
std::string_view formatText(const char* format, va_list arguments);

// Formats and writes to `stream`. The result is the number of bytes written, or negative if the
// stream failed (which `outputLost` remembers). A format error writes nothing. Texts of any length
// are written whole.
int printFormatted(std::FILE* stream, const char* format, va_list arguments);

// The same, and moves `column` on: to the number of bytes behind the last line feed.
int printFormattedAt(std::FILE* stream, uint32_t& column, const char* format, va_list arguments);

} // namespace messages
