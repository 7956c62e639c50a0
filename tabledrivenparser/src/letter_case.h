// Case folding of option names, argument names and patterns.
//
// Only the letters a to z fold, whatever the locale: the tables are written in them, and what an
// option means must not hang on the user's language.
#pragma once

namespace tabledrivenparser {

constexpr char foldCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

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
