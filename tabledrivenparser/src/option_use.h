// One option at work: what is known of it between finding its row and storing its value.
#pragma once

#include "tabledrivenparser/interface/match_string.h"

#include <cstdint>

namespace tabledrivenparser {

struct OptionUse {
    // The word, as handed to Parser::parseOption.
    const char* text = nullptr;
    const char* nextWord = nullptr;
    uint32_t dashes = 0;
    uint32_t filterCount = 0;
    const uint32_t* filter = nullptr;

    MatchString match;
    // Null for an option without argument.
    const char* argument = nullptr;
    bool takesArgument = false;
    bool argumentIsNextWord = false;
    // The number of words used; 0 is a failure that a call back declared.
    uint32_t words = 1;

    const OptionRow& row() const { return *match.row; }
};

} // namespace tabledrivenparser
