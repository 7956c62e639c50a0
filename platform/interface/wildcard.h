// Wildcards: "*" stands for any run of characters, "?" for any one.
//
// Two uses with rules of their own. Member names of an archive are matched here, without regard
// to case. Names of files are matched as the host's shells do it: with case, and a leading dot
// only by a pattern that begins with one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Folding of ASCII letters to lower case, whatever the locale; other bytes stay as they are.
constexpr char foldCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// True if the text holds "*" or "?".
bool hasWildcard(std::string_view text);

// True if the whole text matches the pattern; letters are compared folded. The cost is at worst
// pattern length times text length, however many stars there are.
bool wildcardMatch(std::string_view pattern, std::string_view text);

// The names found by firstMatch, in unsigned byte order, and the place of the next one.
struct MatchIterator {
    std::vector<std::string> names;
    size_t next = 0;
};

// Lists the entries of a folder (null or empty: the current one) whose names match the pattern and
// returns the first, or null if there is none or the folder cannot be read. The entries "." and
// ".." are entries like others. The text belongs to the iterator.
const char* firstMatch(const char* directory, const char* pattern, MatchIterator& iterator);

// The next name, or null behind the last.
const char* nextMatch(MatchIterator& iterator);

} // namespace platform
