// A stretch of a file that is looked at where the host keeps it, without being copied.
//
// For readers that look at a small part of much: pages that nobody touches are never read. Unlike a
// read, such a look has nobody to tell of a failure: the host stops the process where bytes of a
// mapped file cannot be had, because the file was cut meanwhile or the disk fails. Here such bytes
// read as zeros instead, and the stretch says afterwards that it has lost some.
//
// For that the first mapping of a process puts a handler for SIGBUS in place, which stays, and the
// first of a stretch lets that signal through to its thread, which may have begun with it held
// back. The handler hands on what is none of its own to the one that was there before. Who puts
// another one in its place later, or holds the signal back again, does without the zeros.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/interface/input_file.h"

namespace platform {

struct Guard;

// Up to 64 stretches may be mapped at a time. One stretch is one thread's; others may have their
// own.
class MappedStretch {
public:
    MappedStretch() = default;
    ~MappedStretch();
    MappedStretch(const MappedStretch&) = delete;
    MappedStretch& operator=(const MappedStretch&) = delete;

    // Maps `size` bytes, not 0, at `offset` of an open file, in place of what was mapped before.
    // The file must have had so many when it was last looked at. False leaves errno.
    bool map(const InputFile& file, uint64_t offset, size_t size);

    // The byte at `offset` and those behind it. Valid until the next call of map().
    const uint8_t* bytes() const { return m_Bytes; }

    // True if bytes that were looked at could not be had. What was read of them means nothing.
    bool hasLostBytes() const;

private:
    void unmap();

    Guard* m_Guard = nullptr;
    const uint8_t* m_Bytes = nullptr;
};

} // namespace platform
