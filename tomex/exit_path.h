// The way out of the process.
#pragma once

namespace arlib {
class Archive;
}

namespace tomex {

// Closes the messages, ends the allocators, and leaves with the status. A run whose output could
// not be written ends with status 1 whatever is asked for. May be called from the depth of a run:
// a temporary file that is being written is removed.
[[noreturn]] void exitProgram(int status);

// Says that an archive is alive on the stack. The way out from the depth of a run never comes back
// to the archive's scope, so exitProgram destroys it: its regions must go before the allocators do.
class ArchiveInUse {
public:
    // The archive must outlive this object.
    explicit ArchiveInUse(arlib::Archive& archive);
    ~ArchiveInUse();
    ArchiveInUse(const ArchiveInUse&) = delete;
    ArchiveInUse& operator=(const ArchiveInUse&) = delete;

    // Destroys the archives of all that are alive, latest first. Only for leaving the process.
    static void destroyArchives();

private:
    arlib::Archive& m_archive;
    ArchiveInUse* m_outer;
};

} // namespace tomex
