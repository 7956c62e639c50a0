// The wrapped calls that open, close, rename, remove and look at files.
#include <cstdarg>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "tests/support/fault_wrapper.h"

namespace testsupport {

namespace {

int opened(int descriptor, const char* path) {
    const int before = errno;
    nameDescriptor(descriptor, path);
    errno = before;
    return descriptor;
}

FILE* opened(FILE* stream, const char* path) {
    if (stream != nullptr) {
        opened(::fileno(stream), path);
    }
    return stream;
}

bool takesMode(int flags) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

} // namespace

// --- opening -------------------------------------------------------------------------------------

WRAPPER(int, open, (const char* path, int flags, ...)) {
    mode_t mode = 0;
    if (takesMode(flags)) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    const FaultVerdict verdict = meet("open", path);
    return verdict.errorNumber ? failed(verdict, -1) : opened(HOST(open)(path, flags, mode), path);
}
ALSO_CALLED(open64, open)

WRAPPER(int, openat, (int folder, const char* path, int flags, ...)) {
    mode_t mode = 0;
    if (takesMode(flags)) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    const FaultVerdict verdict = meet("openat", path);
    return verdict.errorNumber ? failed(verdict, -1)
                               : opened(HOST(openat)(folder, path, flags, mode), path);
}
ALSO_CALLED(openat64, openat)

WRAPPER(int, __open_2, (const char* path, int flags)) {
    const FaultVerdict verdict = meet("open", path);
    return verdict.errorNumber ? failed(verdict, -1) : opened(HOST(__open_2)(path, flags), path);
}
ALSO_CALLED(__open64_2, __open_2)

WRAPPER(int, __openat_2, (int folder, const char* path, int flags)) {
    const FaultVerdict verdict = meet("openat", path);
    return verdict.errorNumber ? failed(verdict, -1)
                               : opened(HOST(__openat_2)(folder, path, flags), path);
}
ALSO_CALLED(__openat64_2, __openat_2)

WRAPPER(int, creat, (const char* path, mode_t mode)) {
    const FaultVerdict verdict = meet("creat", path);
    return verdict.errorNumber ? failed(verdict, -1) : opened(HOST(creat)(path, mode), path);
}
ALSO_CALLED(creat64, creat)

WRAPPER(int, mkstemp, (char* path)) {
    const FaultVerdict verdict = meet("mkstemp", path);
    return verdict.errorNumber ? failed(verdict, -1) : opened(HOST(mkstemp)(path), path);
}
ALSO_CALLED(mkstemp64, mkstemp)

WRAPPER(FILE*, fopen, (const char* path, const char* mode)) {
    const FaultVerdict verdict = meet("fopen", path);
    return verdict.errorNumber ? failed<FILE*>(verdict, nullptr)
                               : opened(HOST(fopen)(path, mode), path);
}
ALSO_CALLED(fopen64, fopen)

WRAPPER(FILE*, freopen, (const char* path, const char* mode, FILE* stream)) {
    const char* name = path != nullptr ? path : "";
    const FaultVerdict verdict = meet("freopen", name);
    return verdict.errorNumber ? failed<FILE*>(verdict, nullptr)
                               : opened(HOST(freopen)(path, mode, stream), name);
}
ALSO_CALLED(freopen64, freopen)

// --- closing: the descriptor is gone in any case -------------------------------------------------

WRAPPER(int, close, (int descriptor)) {
    const FaultVerdict verdict = meetDescriptor("close", descriptor);
    nameDescriptor(descriptor, "");
    const int result = HOST(close)(descriptor);
    return verdict.errorNumber ? failed(verdict, -1) : result;
}

WRAPPER(int, fclose, (FILE * stream)) {
    const FaultVerdict verdict = meetStream("fclose", stream);
    nameDescriptor(::fileno(stream), "");
    const int result = HOST(fclose)(stream);
    return verdict.errorNumber ? failed(verdict, EOF) : result;
}

// --- names ---------------------------------------------------------------------------------------

WRAPPER(int, rename, (const char* from, const char* to)) {
    const FaultVerdict verdict = meet("rename", from, to);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(rename)(from, to);
}

WRAPPER(int, renameat, (int fromFolder, const char* from, int toFolder, const char* to)) {
    const FaultVerdict verdict = meet("renameat", from, to);
    return verdict.errorNumber ? failed(verdict, -1)
                               : HOST(renameat)(fromFolder, from, toFolder, to);
}

WRAPPER(int, renameat2,
        (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags)) {
    const FaultVerdict verdict = meet("renameat2", from, to);
    return verdict.errorNumber ? failed(verdict, -1)
                               : HOST(renameat2)(fromFolder, from, toFolder, to, flags);
}

WRAPPER(int, link, (const char* from, const char* to)) {
    const FaultVerdict verdict = meet("link", from, to);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(link)(from, to);
}

WRAPPER(int, linkat, (int fromFolder, const char* from, int toFolder, const char* to, int flags)) {
    const FaultVerdict verdict = meet("linkat", from, to);
    return verdict.errorNumber ? failed(verdict, -1)
                               : HOST(linkat)(fromFolder, from, toFolder, to, flags);
}

WRAPPER(int, unlink, (const char* path)) {
    const FaultVerdict verdict = meet("unlink", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(unlink)(path);
}

WRAPPER(int, unlinkat, (int folder, const char* path, int flags)) {
    const FaultVerdict verdict = meet("unlinkat", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(unlinkat)(folder, path, flags);
}

WRAPPER(int, remove, (const char* path)) {
    const FaultVerdict verdict = meet("remove", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(remove)(path);
}

// --- looking -------------------------------------------------------------------------------------

WRAPPER(int, stat, (const char* path, struct stat* status)) {
    const FaultVerdict verdict = meet("stat", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(stat)(path, status);
}
ALSO_CALLED(stat64, stat)

WRAPPER(int, lstat, (const char* path, struct stat* status)) {
    const FaultVerdict verdict = meet("lstat", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(lstat)(path, status);
}
ALSO_CALLED(lstat64, lstat)

WRAPPER(int, fstat, (int descriptor, struct stat* status)) {
    const FaultVerdict verdict = meetDescriptor("fstat", descriptor);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(fstat)(descriptor, status);
}
ALSO_CALLED(fstat64, fstat)

WRAPPER(int, fstatat, (int folder, const char* path, struct stat* status, int flags)) {
    const FaultVerdict verdict = meetAt("fstatat", folder, path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(fstatat)(folder, path, status, flags);
}
ALSO_CALLED(fstatat64, fstatat)

WRAPPER(int, statx,
        (int folder, const char* path, int flags, unsigned mask, struct statx* status)) {
    const FaultVerdict verdict = meetAt("statx", folder, path);
    return verdict.errorNumber ? failed(verdict, -1)
                               : HOST(statx)(folder, path, flags, mask, status);
}

WRAPPER(int, access, (const char* path, int mode)) {
    const FaultVerdict verdict = meet("access", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(access)(path, mode);
}

WRAPPER(int, faccessat, (int folder, const char* path, int mode, int flags)) {
    const FaultVerdict verdict = meet("faccessat", path);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(faccessat)(folder, path, mode, flags);
}

WRAPPER(DIR*, opendir, (const char* path)) {
    const FaultVerdict verdict = meet("opendir", path);
    if (verdict.errorNumber) {
        return failed<DIR*>(verdict, nullptr);
    }
    DIR* folder = HOST(opendir)(path);
    if (folder != nullptr) {
        nameDescriptor(::dirfd(folder), path);
    }
    return folder;
}

WRAPPER(dirent*, readdir, (DIR * folder)) {
    const FaultVerdict verdict = meetDescriptor("readdir", ::dirfd(folder));
    return verdict.errorNumber ? failed<dirent*>(verdict, nullptr) : HOST(readdir)(folder);
}
ALSO_CALLED(readdir64, readdir)

} // namespace testsupport
