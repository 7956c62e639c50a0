// All parameters and rows of a parser as text, for whoever looks for the fault in a table.
#pragma once

#include "tabledrivenparser/interface/parser.h"

namespace tabledrivenparser {

// Writes a line for each parameter, and below it one for each row that sets it, to the parser's
// trace hook, a call a line:
//
//       0: BOOLEAN set from:false to:true
//            'create' oldSyntax,public implied parameter:true
//       1: STRING_VECTOR unset:
//            'diag_error' public parameter required separator=','
//
// Nothing is done without a hook. A default that a provider fails to give is reported.
void dumpParameters(Parser& parser);

} // namespace tabledrivenparser
