// The row under which a parameter is shown to the user.
#pragma once

#include "tabledrivenparser/interface/option_table.h"

#include <cstdint>

namespace tabledrivenparser {

class Parser;

// Of the rows that set `parameter` and could bring about its present value, the one in the most
// canonical spelling: rather not deprecated, rather without an argument, rather under a long name.
// Null if there is none.
const OptionRow* bestRowForParameter(const Parser& parser, uint32_t parameter);

// Whether showing the present value of `parameter` by `row` needs an argument.
bool rowShowsArgument(const Parser& parser, uint32_t parameter, const OptionRow& row);

} // namespace tabledrivenparser
