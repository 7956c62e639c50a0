// A file opened for reading at any offset, and the first look at a file.
//
// Reads say how much they got, so that a short read is told from a failure. errno is cleared
// before each host call: after a failure it is that call's own number, and 0 means that the file
// simply ended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/interface/file_query.h"

namespace platform {

class InputFile {
public:
    InputFile() = default;
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&& other) noexcept;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    // Opens a file; one that is open already is closed first. Never waits for a writer, as a pipe
    // without one would have it. False leaves errno.
    bool open(const char* name);
    bool isOpen() const { return m_Descriptor >= 0; }
    int descriptor() const { return m_Descriptor; }

    // What the host knows of the open file. False leaves errno.
    bool queryStatus(FileStatus& status) const;

    // Reads count bytes at offset unless the file ends before. The number of bytes read, or -1
    // with errno set.
    int64_t readAt(void* buffer, size_t count, uint64_t offset) const;

    // False leaves errno. The file counts as closed in any case.
    bool close();

private:
    int m_Descriptor = -1;
};

// What one look at a file gives: whether it is there, what it is, and how it begins.
struct FileProbe {
    bool exists = false;           // something stands under the name, readable or not
    FileStatus status;             // valid if exists
    int error = 0;                 // host number for why it could not be read, or 0
    int closeError = 0;            // host number for why it could not be closed, or 0
    std::span<const uint8_t> head; // its first bytes, in the caller's buffer
};

// Looks at a file: one opening serves its status and as many of its first bytes as the buffer
// takes.
FileProbe probeFile(const char* name, std::span<uint8_t> buffer);

} // namespace platform
