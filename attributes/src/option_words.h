// The words of option strings, as data.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace attributes {

// A word takes the bits of `clear` out of the options and puts those of `set` in.
struct OptionWord {
    std::string_view text;
    uint64_t set;
    uint64_t clear;
};

// In the order in which they are tried: the first that is a prefix is taken.
extern const std::span<const OptionWord> optionWords;

} // namespace attributes
