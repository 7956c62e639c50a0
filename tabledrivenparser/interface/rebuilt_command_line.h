// The command line as the parser understood it, written anew.
//
// Not the words that were given, but the state that they led to: each parameter that was set and
// differs from its default, in the order of the parameters and in the most canonical spelling, then
// the positional words. Read again, as a text in memory, it leads to the same values; as a via file
// it does so too unless a word is too long for one or a text has a "#" or a ";" (see via_file.h),
// which begin comments there. The end of a line as part of a text has no spelling in either. How
// the words were spelled, and what was reported of that, is not part of the state.
#pragma once

#include "tabledrivenparser/interface/parser.h"
#include "tabledrivenparser/interface/text_buffer.h"

#include <cstdint>

namespace tabledrivenparser {

// Writes the line into `buffer`, as its settings have it, and ends it with a NUL. The result is the
// size that the line needs, NUL included; if it is above buffer.capacity the line was cut and has
// no NUL. VIA_FILE parameters are left out: the words of their files are in the line.
uint32_t rebuildCommandLine(Parser& parser, TextBuffer& buffer);

// Whether the value of `parameter` equals its default under `mask`. Never for CALL_BACK and
// VIA_FILE parameters, nor where there is no default to compare with.
bool isDefault(const Parameters& parameters, uint32_t parameter, uint32_t mask);

} // namespace tabledrivenparser
