#include "platform/interface/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#ifdef __linux__
#include <sys/sendfile.h>
#endif
#include <unistd.h>

#include "platform/interface/system_path.h"

namespace platform {
namespace {

constexpr size_t bufferCapacity = size_t{256} << 10;

// From this size on a body is copied by the host itself; below, its two calls cost more than
// passing the bytes through the buffer.
constexpr uint64_t largeBody = uint64_t{16} << 10;

constexpr size_t largestTransfer = size_t{1} << 30;

} // namespace

OutputFile::~OutputFile() {
    abandon();
}

void OutputFile::abandon() {
    if (m_Descriptor >= 0) {
        ::close(std::exchange(m_Descriptor, -1));
    }
}

void OutputFile::adopt(int descriptor) {
    m_Descriptor = descriptor;
    m_Error = 0;
    m_BytesWritten = 0;
    m_Used = 0;
}

// The buffer is made when something is first gathered: bodies that the host copies need none.
uint8_t* OutputFile::bufferEnd() {
    if (!m_Buffer) {
        m_Buffer = std::make_unique_for_overwrite<uint8_t[]>(bufferCapacity);
    }
    return m_Buffer.get() + m_Used;
}

bool OutputFile::createNew(const char* name) {
    errno = 0;
    const int descriptor =
        ::open(longSystemPath(name).get(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    adopt(descriptor);
    return true;
}

bool OutputFile::overwrite(const char* name, const FileStatus& protectedFile) {
    errno = 0;
    const int descriptor = ::open(longSystemPath(name).get(),
                                  O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
    if (descriptor < 0) {
        return false;
    }
    struct stat status = {};
    int error = ::fstat(descriptor, &status) == 0 ? 0 : errno;
    if (error == 0 && fileStatusOf(status).isSameFile(protectedFile)) {
        error = EBUSY;
    }
    if (error == 0 && status.st_size != 0 && ::ftruncate(descriptor, 0) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::close(descriptor);
        errno = error;
        return false;
    }
    adopt(descriptor);
    return true;
}

bool OutputFile::writeThrough(const uint8_t* bytes, size_t count) {
    while (count != 0 && m_Error == 0) {
        errno = 0;
        const ssize_t done = ::write(m_Descriptor, bytes, std::min(count, largestTransfer));
        if (done < 0 && errno != EINTR) {
            m_Error = errno;
        } else if (done == 0) {
            m_Error = EIO; // a host that takes nothing and gives no reason
        } else if (done > 0) {
            bytes += done;
            count -= static_cast<size_t>(done);
            m_BytesWritten += static_cast<uint64_t>(done);
        }
    }
    return m_Error == 0;
}

bool OutputFile::flush() {
    return writeThrough(m_Buffer.get(), std::exchange(m_Used, 0));
}

bool OutputFile::write(const void* bytes, size_t count) {
    if (m_Error != 0) {
        return false;
    }
    if (count == 0) {
        return true; // there may be no bytes to point to
    }
    if (count > bufferCapacity - m_Used && !flush()) {
        return false;
    }
    if (count > bufferCapacity) {
        return writeThrough(static_cast<const uint8_t*>(bytes), count);
    }
    std::memcpy(bufferEnd(), bytes, count);
    m_Used += count;
    return true;
}

CopyOutcome OutputFile::copyFrom(const InputFile& input, uint64_t offset, uint64_t size) {
    if (m_Error != 0) {
        return CopyOutcome::OutputFailed;
    }
    return size < largeBody ? copyThroughBuffer(input, offset, size)
                            : copyBetweenFiles(input, offset, size);
}

CopyOutcome OutputFile::copyThroughBuffer(const InputFile& input, uint64_t offset, uint64_t size) {
    while (size != 0) {
        if (m_Used == bufferCapacity && !flush()) {
            return CopyOutcome::OutputFailed;
        }
        const auto count = static_cast<size_t>(std::min<uint64_t>(size, bufferCapacity - m_Used));
        const int64_t got = input.readAt(bufferEnd(), count, offset);
        if (got != static_cast<int64_t>(count)) {
            m_Error = got < 0 ? errno : EIO;
            return CopyOutcome::InputFailed;
        }
        m_Used += count;
        offset += count;
        size -= count;
    }
    return CopyOutcome::Done;
}

CopyOutcome OutputFile::copyBetweenFiles(const InputFile& input, uint64_t offset, uint64_t size) {
    if (!flush()) {
        return CopyOutcome::OutputFailed;
    }
#ifdef __linux__
    while (size != 0) {
        auto position = static_cast<off_t>(offset);
        const ssize_t done =
            ::copy_file_range(input.descriptor(), &position, m_Descriptor, nullptr,
                              static_cast<size_t>(std::min<uint64_t>(size, largestTransfer)), 0);
        if (done <= 0) {
            break; // not for these two files, or a failure: the plain copy finds out which side
        }
        offset += static_cast<uint64_t>(done);
        size -= static_cast<uint64_t>(done);
        m_BytesWritten += static_cast<uint64_t>(done);
    }
    while (size != 0) { // the same for pipes and devices
        auto position = static_cast<off_t>(offset);
        const ssize_t done =
            ::sendfile(m_Descriptor, input.descriptor(), &position,
                       static_cast<size_t>(std::min<uint64_t>(size, largestTransfer)));
        if (done <= 0) {
            break;
        }
        offset += static_cast<uint64_t>(done);
        size -= static_cast<uint64_t>(done);
        m_BytesWritten += static_cast<uint64_t>(done);
    }
#endif
    return copyThroughBuffer(input, offset, size);
}

void OutputFile::discardAll() {
    m_Used = 0;
    m_BytesWritten = 0;
    if (::ftruncate(m_Descriptor, 0) != 0 || ::lseek(m_Descriptor, 0, SEEK_SET) != 0) {
        m_Error = errno;
    }
}

bool OutputFile::close() {
    flush();
    errno = 0;
    if (::close(std::exchange(m_Descriptor, -1)) != 0 && m_Error == 0) {
        m_Error = errno;
    }
    return m_Error == 0;
}

} // namespace platform
