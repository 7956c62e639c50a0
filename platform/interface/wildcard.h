// Wildcards: "*" stands for any run of characters, "?" for any one. Names of an archive's members
// are matched with them, without regard to case.
#pragma once

#include <string_view>

namespace platform {

// True if the text holds "*" or "?".
bool hasWildcard(std::string_view text);

// True if the whole text matches the pattern; letters are compared folded. The cost is at worst
// pattern length times text length, however many stars there are.
bool wildcardMatch(std::string_view pattern, std::string_view text);

// The same with letters compared as they are.
bool wildcardMatchExact(std::string_view pattern, std::string_view text);

} // namespace platform
