// The report of the archive's symbol table.
#pragma once

#include "arlib/interface/archive.h"
#include "tomex/command_state.h"

namespace tomex {

// Prints a line for each entry of the symbol table: the name with its decoration, the member that
// defines it, and the place of that one's header in the file. An archive without a table is worth
// a remark.
void reportSymbols(arlib::Archive& archive, const ArchiveReadStatus& status);

} // namespace tomex
