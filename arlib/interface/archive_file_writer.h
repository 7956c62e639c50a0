// Saves an Archive under a file name.
//
// The archive is written to a temporary file beside the target, which takes the target's place
// only when all of it stands on disk: at every moment the name holds either the old archive or the
// new one, on every host whose rename replaces files. Contents of members travel from where they
// lie to the new file, one at a time.
#pragma once

namespace arlib {

class Archive;

class ArchiveFileWriter {
public:
    // Brings the archive's tables up to date and writes it. fileName must not be null. On true the
    // archive has that file name, and all contents are located in the new file. On false the
    // failure has been reported and the old file stands as it was, unless it was the last step that
    // failed on a host whose rename does not replace files.
    bool writeFile(const char* fileName, Archive& archive);

private:
    class Pass;
};

} // namespace arlib
