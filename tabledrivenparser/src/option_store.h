// Storing what an option says, by the type of its parameter.
#pragma once

#include "tabledrivenparser/interface/parser.h"
#include "tabledrivenparser/src/option_use.h"

namespace tabledrivenparser {

// Stores the value of `use`, whose row and argument are settled, and stamps each setting. False if
// the value was refused; elements of a vector that were stored before that stay. A call back's
// answer goes into `use.words`.
bool storeOption(Parser& parser, OptionUse& use);

} // namespace tabledrivenparser
