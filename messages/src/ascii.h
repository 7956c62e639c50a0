// Characters of codes and option texts: plain ASCII rules, whatever locale the host is set to.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace messages {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr char foldUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool isLetter(char c) {
    return foldUpper(c) >= 'A' && foldUpper(c) <= 'Z';
}

// Equal but for the case of letters.
constexpr bool equalFolded(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return foldUpper(a) == foldUpper(b); });
}

// The number at the start of a text, 0 if there is none; what is out of range becomes the nearest
// 32-bit value.
inline int32_t decimalValue(const char* text) {
    const long value = std::strtol(text, nullptr, 10);
    return static_cast<int32_t>(std::clamp<long>(value, INT32_MIN, INT32_MAX));
}

} // namespace messages
