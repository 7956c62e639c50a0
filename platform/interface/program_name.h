// The name under which the user knows the program.
#pragma once

#include <cstddef>

namespace platform {

// The tool's name as the user sees it, from the first word of the command line: without folders
// and a trailing ".exe", ".EXE", ".dll" or ".DLL". A dot inside counts as a folder mark, a leading
// "rv" is skipped, and at most 31 characters are kept. With a null buffer the result is argument0
// itself, otherwise buffer, which must hold 32 bytes.
inline constexpr size_t programNameSize = 32;
const char* programName(const char* argument0, char* buffer);

} // namespace platform
