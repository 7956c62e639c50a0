// What --show_cmdline shows.
#pragma once

#include "tabledrivenparser/interface/parser.h"

namespace tomex {

// Prints "[NAME WORDS]" on the standard output: the command line as the parser can rebuild it,
// behind the name under which the program was called. The words, put into a via file, lead to the
// same values, as far as a via file can hold them (see rebuilt_command_line.h) and the output shows
// them as they are, which it does not with control characters and with those that its character set
// lacks.
void showCommandLine(tabledrivenparser::Parser& parser, const char* toolName);

} // namespace tomex
