// Which row of an enumeration an argument, or a bare option, chooses.
#pragma once

#include "tabledrivenparser/interface/parser.h"

#include <cstdint>
#include <span>

namespace tabledrivenparser {

// The rows of the ENUM `parameter`, holes included; none if its descriptor has no table.
std::span<const EnumRow> enumRows(const Parser& parser, uint32_t parameter);

// The row of the ENUM `parameter` that `argument` names, or null: its name equals the argument
// without regard to case, and its value is available. Of several such rows the later one wins,
// unless it alone is restricted or deprecated.
const EnumRow* chooseEnumRow(Parser& parser, uint32_t parameter, const char* argument);

// Whether `value` can be chosen at all: some row carries it, the first such row's valueRestrictions
// pass, and the parameter's filter accepts it (asked quietly if `quiet`).
bool isEnumValueAvailable(Parser& parser, uint32_t parameter, uint32_t value, bool quiet);

// Stores the choice that `argument` makes, with its warning and the list of arguments it may ask
// for. `option` is the row by which the parameter is set. False if it chooses nothing.
bool storeEnumArgument(Parser& parser, const OptionRow& option, const char* argument,
                       bool isSelectivePass);

// Stores the value that the bare `option` implies. False if it is not available.
bool storeEnumImplied(Parser& parser, const OptionRow& option);

} // namespace tabledrivenparser
