// Reads an archive file into an Archive.
//
// The reader is strict about every field of the format; each flaw has an operation of the error
// handler. Many can be forgiven: if the handler says to go on, the field gets a neutral value.
// Contents of members are not read, only located, but for the two tables.
#pragma once

namespace arlib {

class Archive;
class ReadObserver;

class ArchiveFileReader {
public:
    // Replaces what the archive holds by what the file holds. fileName must not be null. On false
    // the failure has been reported and the archive is empty. After true no member counts as
    // changed, all tables and offsets are up to date, and the archive is read-only if the file
    // cannot be written. An observer, unless null, is told of each member on the way; it outlives
    // the call.
    bool readFile(const char* fileName, Archive& archive, ReadObserver* observer = nullptr);

private:
    class Pass;
};

} // namespace arlib
