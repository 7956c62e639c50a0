// The way out of the process.
#pragma once

namespace tomex {

// Closes the messages, ends the allocators, and leaves with the status. A run whose output could
// not be written ends with status 1 whatever is asked for. May be called from the depth of a run:
// a temporary file that is being written is removed.
[[noreturn]] void exitProgram(int status);

// Says that an archive is alive on the stack. While there is one its regions are in use, and
// exitProgram leaves the allocators to the host, which takes the memory back all the same.
class ArchiveInUse {
public:
    ArchiveInUse();
    ~ArchiveInUse();
    ArchiveInUse(const ArchiveInUse&) = delete;
    ArchiveInUse& operator=(const ArchiveInUse&) = delete;
};

} // namespace tomex
