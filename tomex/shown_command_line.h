// What --show_cmdline shows.
#pragma once

#include "tabledrivenparser/interface/parser.h"

namespace tomex {

// Prints "[NAME WORDS]" on the standard output: the command line as the parser can rebuild it,
// behind the name under which the program was called. The words, put into a via file, give the same
// run.
void showCommandLine(tabledrivenparser::Parser& parser, const char* toolName);

} // namespace tomex
