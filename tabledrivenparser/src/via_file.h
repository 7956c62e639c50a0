// Via files: text files that hold further words of the command line.
#pragma once

#include "tabledrivenparser/interface/parser.h"

#include <cstdint>

namespace tabledrivenparser {

// The parser's entry, called for each file name of a VIA_FILE parameter: stores `name` as an
// element of `parameter`, a copy of it if `copyName` is set. `filterCount` and `filter` are those
// of the pass (see Parser::parseOption). False if the name was rejected.
bool readViaFile(Parser& parser, uint32_t parameter, const char* name, bool copyName,
                 uint32_t filterCount, const uint32_t* filter);

} // namespace tabledrivenparser
