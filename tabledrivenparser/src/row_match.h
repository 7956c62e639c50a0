// Comparing a word's text with one row of the option table.
#pragma once

#include "tabledrivenparser/interface/match_string.h"

#include <cstdint>

namespace tabledrivenparser {

// Matches `text` against `row` and fills all fields of the result; it judges nothing. The first
// characters must be known to agree but for case, unless the row is the positional one, which
// matches any text with nothing of it used up.
MatchString matchRow(const OptionRow& row, const char* text, uint32_t activeMask);

// Whether `row` is the one for words that are no options.
inline bool isPositional(const OptionRow& row) {
    return row.name[0] == 0;
}

// Whether the name of `row` has more than one character.
inline bool isLongName(const OptionRow& row) {
    return row.name[0] != 0 && row.name[1] != 0;
}

} // namespace tabledrivenparser
