// Small questions about files: what is there, how large, how old, whose.
#pragma once

#include <cstdint>

#include <sys/stat.h>

namespace platform {

enum FileKind : uint32_t {
    FileKind_None = 0,
    FileKind_File = 2,
    FileKind_Directory = 4,
};

// What is known of a file from one look at it.
struct FileStatus {
    FileKind kind = FileKind_None;
    bool isRegular = false; // a plain file: its size holds, and it can be read at any offset
    int64_t size = -1;      // bytes
    int64_t date = -1;      // last change of the contents, seconds since 1970
    int64_t uid = -1;
    int64_t gid = -1;
    uint32_t mode = 0;

    // Which file it is, and the moment of its last change as finely as the host tells.
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t dateNanoseconds = 0;

    // True if both looks were at the same file, under whatever names.
    bool isSameFile(const FileStatus& other) const {
        return kind != FileKind_None && device == other.device && inode == other.inode;
    }

    // True if both looks saw the same file with the same contents, as far as the host tells.
    bool isSameState(const FileStatus& other) const {
        return isSameFile(other) && size == other.size && date == other.date &&
               dateNanoseconds == other.dateNanoseconds;
    }
};

// The record that a stat call's answer amounts to.
FileStatus fileStatusOf(const struct stat& status);

// Looks at a file by name, through symbolic links. A failure leaves errno and gives a record of
// kind FileKind_None.
FileStatus queryFile(const char* name);

// What stands under the name; FileKind_None also when it cannot be looked at.
FileKind fileKind(const char* name);

// True if the host says that nothing stands under the name. A file that cannot be looked at for
// another reason may well be there, and must not be taken for absent.
bool isAbsent(const char* name);

// The size in bytes, or all ones on failure.
uint64_t fileSize(const char* name);

// True if the file can be written by this process; a failure leaves errno.
bool isWritable(const char* name);

} // namespace platform
