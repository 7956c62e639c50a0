// Options with their values, as text.
#pragma once

#include "tabledrivenparser/interface/text_buffer.h"

#include <cstdint>

namespace tabledrivenparser {

// Writes the option `name` without a value: behind the buffer's separator unless the buffer is
// empty, with one dash or, before a long name, two. Of an empty name only the separator is written.
void writeOption(TextBuffer& buffer, const char* name);

// Writes the option `name` with `value`, which is held as ParameterType `type` tells:
//   BOOLEAN                     true or false
//   ENUM                        the name of the first row of `constraints` with the value
//   ADDRESS, ADDRESS64          hexadecimal, with 0x
//   INT, INT_VECTOR, INT64_VECTOR  decimal
//   STRING, STRING_VECTOR, VIA_FILE  the text, "<null>" for none
//   CALL_BACK                   "<call back>"
// A long name is followed by "=", a letter by the value directly, and an empty name leaves the
// value alone. The elements of a vector are joined by `separator` into one option, or, if that is
// 0, are an option each; an empty vector writes nothing. With buffer.quoting, words are written so
// that a via file gives them back, an option or positional word with its value each time.
void writeValue(TextBuffer& buffer, uint32_t type, uint64_t value, const void* constraints,
                const char* name, char separator);

} // namespace tabledrivenparser
