// Puts bytes that are ready in memory under a name, so that at every moment the name holds either
// all of the old file or all of the new one.
#pragma once

#include <cstdint>

namespace platform {

// Makes or replaces the file `name` with `size` bytes. They are written to a new file beside it,
// "NAME.N" with the first number that is free ("tomex.N" where NAME has no room for that), which
// then takes its place; after a failure it is gone and the old file is as it was. A stopping signal
// finds it guarded (temporary_file_guard.h), so no other guarded file may be open. It is removed
// then only if installTemporaryFileCleanup() has been called; without that call a write beyond the
// user's limit on file sizes, too, ends the process and leaves the new file behind.
//
// The file keeps the permissions of the one that it replaces; others have the host's default ones.
// With `isExecutable`, whoever may read it may also execute it. A symbolic link stays, and the file
// that it leads to is replaced; one that leads nowhere is replaced itself. A file that this process
// may not write is not replaced, though its folder would let it. What is no plain file, such as a
// device or a pipe, is written to as it is and never removed.
//
// The result is the host's number of the failure, or 0. Memory that has run out throws
// std::bad_alloc; then all is as it was, too.
int replaceFile(const char* name, const void* bytes, uint64_t size, bool isExecutable);

} // namespace platform
