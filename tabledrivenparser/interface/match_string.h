// The result of looking a word up in the option table.
#pragma once

#include "tabledrivenparser/interface/option_table.h"

#include <cstdint>

namespace tabledrivenparser {

struct MatchString {
    // Null if no row was found. The fields below then mean nothing.
    const OptionRow* row = nullptr;
    // The word's text behind the matched name (and behind the dot of a shortened one).
    const char* rest = nullptr;
    uint32_t matchedLength = 0;
    // The name fits: it is there in full or was shortened by a dot.
    bool matched = false;
    // The name fits, but the row's restrictions rule it out.
    bool unavailable = false;
    // The name was shortened by a dot.
    bool dot = false;
    // The name is there in full.
    bool exact = false;
    // `rest` begins with "=" or with the row's separator.
    bool hasSeparator = false;
    // The first letter is in the row's own case.
    bool sameCase = false;
    // The row may be written the old way.
    bool oldSyntax = false;
    // The row's name has more than one character.
    bool isLong = false;
};

} // namespace tabledrivenparser
