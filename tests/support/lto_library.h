// A link-time optimisation library made for a test.
//
// It offers the functions that the program looks for, or all but some of them, and understands
// "modules" that are plain text, one line a symbol: its attributes in hexadecimal and its name
// ("100 main"), or its attributes alone for a symbol whose name is null, or followed by one blank
// for an empty name. A first line may be an order instead:
//   !fail TEXT    the module cannot be read, and TEXT is why
//   !silent       the same without a text: it is null
//   !say TEXT     TEXT is printed to both standard streams, then all goes on
//   !die TEXT     TEXT is printed to the standard error stream and the process is aborted
//   !crash        the process ends by SIGSEGV, without a word
//   !exit         the process ends with status 0
//   !fill         it takes all memory there is, says "all memory is used" and is aborted
//   !second       the process dies unless this is the first module that it reads
// The path that came with the module is a symbol too, behind all others, if the last line is
// "!path". Each call is noted in the file that the environment variable TOMEX_LTO_LOG names.
#pragma once

#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace testsupport {

// The names of the functions, in the order in which they are looked for.
const std::vector<std::string>& ltoFunctions();

// Compiles the library as `file` in the folder, without those functions. Throws
// std::runtime_error with the compiler's words if it fails.
void makeLtoLibrary(const ScratchFolder& folder, const std::string& file,
                    const std::vector<std::string>& without = {});

} // namespace testsupport
