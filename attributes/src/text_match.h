// Comparing with fixed words: as a whole or as a prefix. Ignoring case means the ASCII letters.
#pragma once

#include "platform/interface/letter_case.h"

#include <cstddef>
#include <string_view>

namespace attributes {

// Nearly all pairs that a walk over a table compares differ in length or in the first letter.
inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (platform::foldCase(a[i]) != platform::foldCase(b[i])) {
            return false;
        }
    }
    return true;
}

// Whether `text`, which ends with a NUL, begins with `word`, which holds none.
inline bool startsWithIgnoringCase(const char* text, std::string_view word) {
    for (const char c : word) {
        if (platform::foldCase(*text) != platform::foldCase(c)) {
            return false;
        }
        ++text;
    }
    return true;
}

} // namespace attributes
