#include "platform/interface/file_query.h"

#include <unistd.h>

#include "platform/interface/path_name.h"

namespace platform {

FileStatus fileStatusOf(const struct stat& status) {
    FileStatus result;
    result.kind = S_ISDIR(status.st_mode) ? FileKind_Directory : FileKind_File;
    result.isRegular = S_ISREG(status.st_mode);
    // The size of a pipe or a device says nothing of what could be read from it.
    result.size = result.isRegular || S_ISDIR(status.st_mode) ? status.st_size : -1;
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
    const FileKind kind = queryFile(name).kind;
    if (kind == FileKind_None && hostPathStyle == PathStyle_Windows) {
        const OwnedPath path = newPath(name, hostPathStyle);
        const bool isDriveAlone = path->root && !path->directory && !path->base && !path->extension;
        return isDriveAlone ? FileKind_Directory : FileKind_None;
    }
    return kind;
}

uint64_t fileSize(const char* name) {
    return static_cast<uint64_t>(queryFile(name).size);
}

bool isWritable(const char* name) {
    return ::access(longSystemPath(name).get(), W_OK) == 0;
}

} // namespace platform
