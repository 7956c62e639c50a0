// The list of arguments that an enumerated option offers, for the user who asks for it.
#pragma once

#include "tabledrivenparser/interface/parser.h"

namespace tabledrivenparser {

// Reports what can be written after `option`, one way a line, and notes in the parameters that a
// list was shown.
void reportSelectableArguments(Parser& parser, const OptionRow& option);

} // namespace tabledrivenparser
