// Comparing option names, argument names and patterns without regard to case.
#pragma once

#include "platform/interface/letter_case.h"

namespace tabledrivenparser {

using platform::foldCase;

constexpr bool isLetter(char character) {
    return foldCase(character) >= 'a' && foldCase(character) <= 'z';
}

// Whether two NUL-ended texts are equal without regard to case.
constexpr bool equalFolded(const char* one, const char* other) {
    while (*one != 0 && foldCase(*one) == foldCase(*other)) {
        ++one;
        ++other;
    }
    return foldCase(*one) == foldCase(*other);
}

// Whether `text` begins with `start` without regard to case.
constexpr bool startsFolded(const char* text, const char* start) {
    while (*start != 0 && foldCase(*text) == foldCase(*start)) {
        ++text;
        ++start;
    }
    return *start == 0;
}

} // namespace tabledrivenparser
