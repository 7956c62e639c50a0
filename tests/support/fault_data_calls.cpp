// The wrapped calls that read, write, copy and size files.
#include <algorithm>

#include <sys/uio.h>

#include "tests/support/fault_wrapper.h"

namespace testsupport {

namespace {

// A stream remembers that a transfer of it failed.
void markError(FILE* stream) {
    if (stream != nullptr) {
        stream->_flags |= _IO_ERR_SEEN;
    }
}

// The first `limit` bytes of a list of stretches.
struct CutVector {
    iovec stretches[64];
    int count = 0;

    CutVector(const iovec* source, int sourceCount, size_t limit) {
        for (int i = 0; i < sourceCount && count < 64 && limit > 0; ++i) {
            stretches[count] = source[i];
            stretches[count].iov_len = std::min(limit, source[i].iov_len);
            limit -= stretches[count].iov_len;
            ++count;
        }
    }
};

} // namespace

// --- reading -------------------------------------------------------------------------------------

WRAPPER(ssize_t, read, (int descriptor, void* data, size_t size)) {
    const FaultVerdict verdict = meetDescriptor("read", descriptor);
    return verdict.errorNumber ? failed<ssize_t>(verdict, -1)
                               : HOST(read)(descriptor, data, verdict.cut(size));
}

WRAPPER(ssize_t, __read_chk, (int descriptor, void* data, size_t size, size_t room)) {
    const FaultVerdict verdict = meetDescriptor("read", descriptor);
    return verdict.errorNumber ? failed<ssize_t>(verdict, -1)
                               : HOST(__read_chk)(descriptor, data, verdict.cut(size), room);
}

WRAPPER(ssize_t, pread, (int descriptor, void* data, size_t size, off_t offset)) {
    const FaultVerdict verdict = meetDescriptor("pread", descriptor);
    return verdict.errorNumber ? failed<ssize_t>(verdict, -1)
                               : HOST(pread)(descriptor, data, verdict.cut(size), offset);
}
ALSO_CALLED(pread64, pread)

WRAPPER(ssize_t, __pread_chk,
        (int descriptor, void* data, size_t size, off_t offset, size_t room)) {
    const FaultVerdict verdict = meetDescriptor("pread", descriptor);
    return verdict.errorNumber
               ? failed<ssize_t>(verdict, -1)
               : HOST(__pread_chk)(descriptor, data, verdict.cut(size), offset, room);
}
ALSO_CALLED(__pread64_chk, __pread_chk)

WRAPPER(ssize_t, readv, (int descriptor, const iovec* stretches, int count)) {
    const FaultVerdict verdict = meetDescriptor("readv", descriptor);
    if (verdict.errorNumber) {
        return failed<ssize_t>(verdict, -1);
    }
    if (verdict.limit) {
        const CutVector cut(stretches, count, *verdict.limit);
        return cut.count == 0 ? 0 : HOST(readv)(descriptor, cut.stretches, cut.count);
    }
    return HOST(readv)(descriptor, stretches, count);
}

WRAPPER(ssize_t, preadv, (int descriptor, const iovec* stretches, int count, off_t offset)) {
    const FaultVerdict verdict = meetDescriptor("preadv", descriptor);
    if (verdict.errorNumber) {
        return failed<ssize_t>(verdict, -1);
    }
    if (verdict.limit) {
        const CutVector cut(stretches, count, *verdict.limit);
        return cut.count == 0 ? 0 : HOST(preadv)(descriptor, cut.stretches, cut.count, offset);
    }
    return HOST(preadv)(descriptor, stretches, count, offset);
}
ALSO_CALLED(preadv64, preadv)

WRAPPER(size_t, fread, (void* data, size_t size, size_t count, FILE* stream)) {
    const FaultVerdict verdict = meetStream("fread", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed<size_t>(verdict, 0);
    }
    if (verdict.limit && size != 0 && *verdict.limit < size * count) {
        return HOST(fread)(data, 1, *verdict.limit, stream) / size;
    }
    return HOST(fread)(data, size, count, stream);
}
ALSO_CALLED(fread_unlocked, fread)

WRAPPER(char*, fgets, (char* data, int size, FILE* stream)) {
    const FaultVerdict verdict = meetStream("fgets", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed<char*>(verdict, nullptr);
    }
    return HOST(fgets)(data, size, stream);
}

WRAPPER(int, fgetc, (FILE * stream)) {
    const FaultVerdict verdict = meetStream("fgetc", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed(verdict, EOF);
    }
    return HOST(fgetc)(stream);
}
ALSO_CALLED(getc, fgetc)

// --- writing -------------------------------------------------------------------------------------

WRAPPER(ssize_t, write, (int descriptor, const void* data, size_t size)) {
    const FaultVerdict verdict = meetDescriptor("write", descriptor);
    return verdict.errorNumber ? failed<ssize_t>(verdict, -1)
                               : HOST(write)(descriptor, data, verdict.cut(size));
}

WRAPPER(ssize_t, pwrite, (int descriptor, const void* data, size_t size, off_t offset)) {
    const FaultVerdict verdict = meetDescriptor("pwrite", descriptor);
    return verdict.errorNumber ? failed<ssize_t>(verdict, -1)
                               : HOST(pwrite)(descriptor, data, verdict.cut(size), offset);
}
ALSO_CALLED(pwrite64, pwrite)

WRAPPER(ssize_t, writev, (int descriptor, const iovec* stretches, int count)) {
    const FaultVerdict verdict = meetDescriptor("writev", descriptor);
    if (verdict.errorNumber) {
        return failed<ssize_t>(verdict, -1);
    }
    if (verdict.limit) {
        const CutVector cut(stretches, count, *verdict.limit);
        return cut.count == 0 ? 0 : HOST(writev)(descriptor, cut.stretches, cut.count);
    }
    return HOST(writev)(descriptor, stretches, count);
}

WRAPPER(ssize_t, pwritev, (int descriptor, const iovec* stretches, int count, off_t offset)) {
    const FaultVerdict verdict = meetDescriptor("pwritev", descriptor);
    if (verdict.errorNumber) {
        return failed<ssize_t>(verdict, -1);
    }
    if (verdict.limit) {
        const CutVector cut(stretches, count, *verdict.limit);
        return cut.count == 0 ? 0 : HOST(pwritev)(descriptor, cut.stretches, cut.count, offset);
    }
    return HOST(pwritev)(descriptor, stretches, count, offset);
}
ALSO_CALLED(pwritev64, pwritev)

WRAPPER(size_t, fwrite, (const void* data, size_t size, size_t count, FILE* stream)) {
    const FaultVerdict verdict = meetStream("fwrite", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed<size_t>(verdict, 0);
    }
    if (verdict.limit && size != 0 && *verdict.limit < size * count) {
        const size_t written = HOST(fwrite)(data, 1, *verdict.limit, stream) / size;
        markError(stream);
        return written;
    }
    return HOST(fwrite)(data, size, count, stream);
}
ALSO_CALLED(fwrite_unlocked, fwrite)

WRAPPER(int, fputs, (const char* text, FILE* stream)) {
    const FaultVerdict verdict = meetStream("fputs", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed(verdict, EOF);
    }
    return HOST(fputs)(text, stream);
}

WRAPPER(int, fputc, (int character, FILE* stream)) {
    const FaultVerdict verdict = meetStream("fputc", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed(verdict, EOF);
    }
    return HOST(fputc)(character, stream);
}
ALSO_CALLED(putc, fputc)

WRAPPER(int, fflush, (FILE * stream)) {
    const FaultVerdict verdict = meetStream("fflush", stream);
    if (verdict.errorNumber) {
        markError(stream);
        return failed(verdict, EOF);
    }
    return HOST(fflush)(stream);
}

// --- from file to file ---------------------------------------------------------------------------

WRAPPER(ssize_t, copy_file_range,
        (int from, off_t* fromOffset, int to, off_t* toOffset, size_t size, unsigned flags)) {
    const FaultVerdict verdict = meetTwo("copy_file_range", from, to);
    return verdict.errorNumber
               ? failed<ssize_t>(verdict, -1)
               : HOST(copy_file_range)(from, fromOffset, to, toOffset, verdict.cut(size), flags);
}

WRAPPER(ssize_t, sendfile, (int to, int from, off_t* offset, size_t size)) {
    const FaultVerdict verdict = meetTwo("sendfile", from, to);
    return verdict.errorNumber ? failed<ssize_t>(verdict, -1)
                               : HOST(sendfile)(to, from, offset, verdict.cut(size));
}
ALSO_CALLED(sendfile64, sendfile)

WRAPPER(ssize_t, splice,
        (int from, off_t* fromOffset, int to, off_t* toOffset, size_t size, unsigned flags)) {
    const FaultVerdict verdict = meetTwo("splice", from, to);
    return verdict.errorNumber
               ? failed<ssize_t>(verdict, -1)
               : HOST(splice)(from, fromOffset, to, toOffset, verdict.cut(size), flags);
}

// --- place and size ------------------------------------------------------------------------------

WRAPPER(off_t, lseek, (int descriptor, off_t offset, int from)) {
    const FaultVerdict verdict = meetDescriptor("lseek", descriptor);
    return verdict.errorNumber ? failed<off_t>(verdict, -1) : HOST(lseek)(descriptor, offset, from);
}
ALSO_CALLED(lseek64, lseek)

WRAPPER(int, fseek, (FILE * stream, long offset, int from)) {
    const FaultVerdict verdict = meetStream("fseek", stream);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(fseek)(stream, offset, from);
}

WRAPPER(int, fseeko, (FILE * stream, off_t offset, int from)) {
    const FaultVerdict verdict = meetStream("fseeko", stream);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(fseeko)(stream, offset, from);
}
ALSO_CALLED(fseeko64, fseeko)

WRAPPER(int, ftruncate, (int descriptor, off_t size)) {
    const FaultVerdict verdict = meetDescriptor("ftruncate", descriptor);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(ftruncate)(descriptor, size);
}
ALSO_CALLED(ftruncate64, ftruncate)

WRAPPER(int, fallocate, (int descriptor, int mode, off_t offset, off_t size)) {
    const FaultVerdict verdict = meetDescriptor("fallocate", descriptor);
    return verdict.errorNumber ? failed(verdict, -1)
                               : HOST(fallocate)(descriptor, mode, offset, size);
}
ALSO_CALLED(fallocate64, fallocate)

// This one gives the error as its result and leaves errno alone.
WRAPPER(int, posix_fallocate, (int descriptor, off_t offset, off_t size)) {
    const FaultVerdict verdict = meetDescriptor("posix_fallocate", descriptor);
    return verdict.errorNumber ? *verdict.errorNumber
                               : HOST(posix_fallocate)(descriptor, offset, size);
}
ALSO_CALLED(posix_fallocate64, posix_fallocate)

WRAPPER(int, fsync, (int descriptor)) {
    const FaultVerdict verdict = meetDescriptor("fsync", descriptor);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(fsync)(descriptor);
}

WRAPPER(int, fdatasync, (int descriptor)) {
    const FaultVerdict verdict = meetDescriptor("fdatasync", descriptor);
    return verdict.errorNumber ? failed(verdict, -1) : HOST(fdatasync)(descriptor);
}

} // namespace testsupport
