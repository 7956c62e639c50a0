// Folding of letters to lower case.
//
// Only the ASCII letters fold, whatever the locale: option tables are written in them, and what an
// option or a member's name means must not hang on the user's language.
#pragma once

namespace platform {

constexpr char foldCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace platform
