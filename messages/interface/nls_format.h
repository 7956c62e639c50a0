// A formatter with positional arguments ("%2$s"), independent of the host's.
//
// Texts in another language often need their arguments in another order. The arguments are first
// gathered into numbered cells, by what the format says of their types, and the format is then
// filled from the cells. The tool's own reports do not need it where the host's formatter knows
// the positional form; it is there for hosts and tools where it does not.
//
// Formats are trusted like code: they come from a catalogue, and one that names an argument of
// another type than was passed is a fault of its author, as with `printf`.
#pragma once

#include "messages/interface/message_catalogue.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace messages {

// The number of arguments that a format can have.
constexpr uint32_t nlsCellCount = 20;

// One argument, by the type of its conversion; while arguments are gathered, the address of that
// conversion's type character.
union NlsCell {
    const char* conversion;
    int32_t number;
    double real;
    const void* pointer;
};
static_assert(sizeof(NlsCell) == 8);

// Gathers the arguments of `format` into `nlsCellCount` static cells, which hold until the next
// call. A format with too many arguments says so on standard error and ends the process with
// status 1. A width or precision of "*" takes the cell behind that of its own conversion, unless a
// digit and "$" name one.
const NlsCell* nlsArguments(const char* format, va_list arguments);

// Writes `format`, filled from `cells`, and its end to `destination`, which must be large enough:
// a null destination only counts. The result is the number of bytes without the end. "%n" stores
// nothing.
uint64_t nlsFormat(char* destination, const char* format, const NlsCell* cells);

// The same to a stream, as it stands. The result is the number of bytes, negative on failure.
int64_t nlsPrint(std::FILE* stream, const char* format, const NlsCell* cells);

// Prints the message `key` by `overlay` (may be null) and the language in force: the code and ": "
// (not if its class letter is "I"), then the text, in the output code page. The result is the
// number of bytes, negative on failure.
int64_t nlsPrintMessage(std::FILE* stream, const MessageCatalogue* overlay, uint32_t key, ...);

// The same into a buffer of `capacity` bytes: what fits is written, and ended. The result is the
// number of bytes of the whole message.
uint64_t nlsFormatMessage(char* destination, uint64_t capacity, const MessageCatalogue* overlay,
                          uint32_t key, ...);

} // namespace messages
