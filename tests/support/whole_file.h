// A file of the host in memory.
#pragma once

#include <string>

namespace testsupport {

// All bytes of a file; none if it cannot be read.
std::string wholeFile(const std::string& path);

} // namespace testsupport
