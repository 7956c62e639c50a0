// A file being written from its start to its end.
//
// Small pieces are gathered in one buffer, so that an archive of thousands of small members costs
// few host calls; large bodies go from file to file without passing through it. The first failure
// is kept: every later operation fails with the same number, so a caller may write on and ask once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/interface/input_file.h"

namespace platform {

// How a copy from file to file ended.
enum class CopyOutcome {
    Done,
    InputFailed,  // could not be read to the end; error() tells why, EIO if the file ended early
    OutputFailed, // could not be written; error() tells why
};

class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile(); // abandons

    // Takes a descriptor that is open for writing at offset 0.
    void adopt(int descriptor);

    // Creates the file, or empties the one that is there. A file that is the protected one, by
    // whatever name, is left alone with EBUSY. False leaves errno.
    bool overwrite(const char* name, const FileStatus& protectedFile);

    // Creates the file; EEXIST if anything stands under the name, a dangling link included. False
    // leaves errno.
    bool createNew(const char* name);

    // Appends bytes. False if they, or any before them, could not be written.
    bool write(const void* bytes, size_t count);

    // Appends size bytes that stand at offset of the input.
    CopyOutcome copyFrom(const InputFile& input, uint64_t offset, uint64_t size);

    // Hands what is in the buffer to the host.
    bool flush();

    // Makes the file empty, in place of what has been written so far.
    void discardAll();

    // Writes what is left and closes. False leaves the number in error(); the descriptor is gone
    // in any case. To tell a failed close from a failed write, flush first.
    bool close();

    // Closes without writing what is left.
    void abandon();

    // The host's number of the first failure, 0 while there is none.
    int error() const { return m_Error; }

    // How many bytes have reached the host.
    uint64_t bytesWritten() const { return m_BytesWritten; }

private:
    uint8_t* bufferEnd();
    bool writeThrough(const uint8_t* bytes, size_t count);
    CopyOutcome copyThroughBuffer(const InputFile& input, uint64_t offset, uint64_t size);
    CopyOutcome copyBetweenFiles(const InputFile& input, uint64_t offset, uint64_t size);

    int m_Descriptor = -1;
    int m_Error = 0;
    uint64_t m_BytesWritten = 0;
    size_t m_Used = 0;
    std::unique_ptr<uint8_t[]> m_Buffer;
};

} // namespace platform
