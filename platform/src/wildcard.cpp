#include "platform/interface/wildcard.h"

#include <algorithm>

#include <dirent.h>

#include "platform/interface/path_name.h"

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

bool matchesFileName(std::string_view pattern, std::string_view name) {
    const bool isHidden = !name.empty() && name[0] == '.';
    const bool asksForHidden = !pattern.empty() && pattern[0] == '.';
    return (!isHidden || asksForHidden) && matches<asIs>(pattern, name);
}

bool byUnsignedBytes(const std::string& left, const std::string& right) {
    return left.compare(right) < 0; // char_traits<char> compares bytes as unsigned
}

} // namespace

bool hasWildcard(std::string_view text) {
    return text.find_first_of("*?") != text.npos;
}

bool wildcardMatch(std::string_view pattern, std::string_view text) {
    return matches<foldCase>(pattern, text);
}

const char* firstMatch(const char* directory, const char* pattern, MatchIterator& iterator) {
    iterator.names.clear();
    iterator.next = 0;
    const bool isHere = directory == nullptr || *directory == '\0';
    DIR* folder = ::opendir(isHere ? "." : longSystemPath(directory).get());
    if (folder == nullptr) {
        return nullptr;
    }
    while (const dirent* entry = ::readdir(folder)) {
        if (matchesFileName(pattern, entry->d_name)) {
            iterator.names.emplace_back(entry->d_name);
        }
    }
    ::closedir(folder);
    std::sort(iterator.names.begin(), iterator.names.end(), byUnsignedBytes);
    return nextMatch(iterator);
}

const char* nextMatch(MatchIterator& iterator) {
    return iterator.next < iterator.names.size() ? iterator.names[iterator.next++].c_str()
                                                 : nullptr;
}

} // namespace platform
