// The static libraries that this host has, as real input.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

// Every file named *.a below the system's library folders that is an archive (many are texts for
// the linker), each once however many names lead to it, sorted by path. Empty if the host has none.
std::vector<std::string> hostLibraries();

// The same below any folders.
std::vector<std::string> librariesBelow(const std::vector<std::string>& folders);

} // namespace testsupport
