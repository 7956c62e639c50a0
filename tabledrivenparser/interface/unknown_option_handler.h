// A program's last chance to make sense of a word that no option row takes.
#pragma once

#include "tabledrivenparser/interface/option_table.h"

#include <cstdint>

namespace tabledrivenparser {

class Parser;
struct TextBuffer;

class UnknownOptionHandler {
public:
    // Called for a word that fits no row, that gives an argument to a row that takes none, or whose
    // argument could not be stored. `row` is always null. `dashes` and `text` are those of the
    // word, `nextWord` is the word behind it or null. The result is the number of words used, 0 if
    // the word means nothing here either.
    virtual uint32_t handle(Parser& parser, const OptionRow* row, uint32_t dashes, const char* text,
                            const char* nextWord) = 0;
    // Writes the options that it has handled into `buffer`, where the command line is shown.
    // Nothing, unless a handler knows better.
    virtual void describe(Parser& /*parser*/, TextBuffer& /*buffer*/) {}

protected:
    UnknownOptionHandler() = default;
    UnknownOptionHandler(const UnknownOptionHandler&) = default;
    UnknownOptionHandler& operator=(const UnknownOptionHandler&) = default;
    ~UnknownOptionHandler() = default;
};

} // namespace tabledrivenparser
