#include "platform/interface/wildcard.h"

#include "platform/interface/letter_case.h"

namespace platform {
namespace {

char asIs(char c) {
    return c;
}

// Greedy matching that goes back to the latest star only: an earlier star never needs to take
// more than it first did, so the cost stays a product instead of exploding with each star.
template <char fold(char)>
bool matches(std::string_view pattern, std::string_view text) {
    size_t p = 0;
    size_t t = 0;
    size_t starPattern = std::string_view::npos;
    size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starPattern = ++p;
            starText = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || fold(pattern[p]) == fold(text[t]))) {
            ++p;
            ++t;
        } else if (starPattern != std::string_view::npos) {
            p = starPattern;
            t = ++starText;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

} // namespace

bool hasWildcard(std::string_view text) {
    return text.find_first_of("*?") != text.npos;
}

bool wildcardMatch(std::string_view pattern, std::string_view text) {
    return matches<foldCase>(pattern, text);
}

bool wildcardMatchExact(std::string_view pattern, std::string_view text) {
    return matches<asIs>(pattern, text);
}

} // namespace platform
