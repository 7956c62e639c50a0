// File names in the form in which the system must be given them.
#pragma once

#include "platform/interface/owned_text.h"

namespace platform {

// Joins name to base and cleans up, in Windows spelling: a name with a root of its own stands
// alone, "." segments and repeated separators fall away, ".." takes back a segment but never goes
// above the start, separators at the end are removed.
OwnedText joinAndNormalise(const char* base, const char* name);

// The name in the form in which the system must be given it. Windows hosts need a prefix for
// names beyond the classic length limit; on this host it is a plain copy.
OwnedText longSystemPath(const char* name);

// The same with Windows rules, relative to the given current directory, on any host.
OwnedText longWindowsPath(const char* currentDirectory, const char* name);

} // namespace platform
