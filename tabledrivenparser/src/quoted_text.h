// Writing a text so that a via file gives it back.
#pragma once

#include "tabledrivenparser/interface/text_buffer.h"

namespace tabledrivenparser {

// Writes `text` as part of a word, or as one, in the spelling of via files: as it is if that does,
// with a backslash before each double quote, or between double quotes; so if it has a blank or a
// tab. Only "#", ";" and the ends of a line have no spelling.
void writeQuoted(TextBuffer& buffer, const char* text);

} // namespace tabledrivenparser
