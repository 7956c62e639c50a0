#include "platform/interface/file_query.h"

#include <cerrno>

#include <unistd.h>

#include "platform/interface/system_path.h"

namespace platform {

FileStatus fileStatusOf(const struct stat& status) {
    FileStatus result;
    result.kind = S_ISDIR(status.st_mode) ? FileKind_Directory : FileKind_File;
    result.isRegular = S_ISREG(status.st_mode);
    result.size = status.st_size;
    result.date = status.st_mtime;
    result.uid = status.st_uid;
    result.gid = status.st_gid;
    result.mode = status.st_mode;
    result.device = status.st_dev;
    result.inode = status.st_ino;
    result.dateNanoseconds = status.st_mtim.tv_nsec;
    return result;
}

FileStatus queryFile(const char* name) {
    struct stat status = {};
    if (::stat(longSystemPath(name).get(), &status) != 0) {
        return FileStatus();
    }
    return fileStatusOf(status);
}

FileKind fileKind(const char* name) {
    return queryFile(name).kind;
}

bool isAbsent(const char* name) {
    errno = 0;
    if (fileKind(name) != FileKind_None) {
        return false;
    }
    const int error = errno;
    return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

uint64_t fileSize(const char* name) {
    return static_cast<uint64_t>(queryFile(name).size);
}

bool isWritable(const char* name) {
    return ::access(longSystemPath(name).get(), W_OK) == 0;
}

} // namespace platform
