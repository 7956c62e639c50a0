// Finds the files of a folder that a pattern with wildcards means, as the host's shells do it: with
// case, and a leading dot only by a pattern that begins with one.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

// The names found by firstMatch, in unsigned byte order, and the place of the next one.
struct MatchIterator {
    std::vector<std::string> names;
    size_t next = 0;
};

// Lists the entries of a folder (null or empty: the current one) whose names match the pattern and
// returns the first, or null if there is none or the folder cannot be read to its end. The entries
// "." and ".." are entries like others. The text belongs to the iterator.
const char* firstMatch(const char* directory, const char* pattern, MatchIterator& iterator);

// The next name, or null behind the last.
const char* nextMatch(MatchIterator& iterator);

} // namespace platform
