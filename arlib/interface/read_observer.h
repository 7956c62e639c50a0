// Somebody who wants to know of members as soon as their headers have been read.
#pragma once

namespace arlib {

class ArchiveMember;

class ReadObserver {
public:
    virtual ~ReadObserver() = default;

    // Called for each member in the order of the file, the archive's own tables too. The member
    // has its name, type, size and location; it lives as long as the read goes well.
    virtual void memberRead(const ArchiveMember& member) = 0;
};

} // namespace arlib
