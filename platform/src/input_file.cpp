#include "platform/interface/input_file.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "platform/interface/system_path.h"

namespace platform {
namespace {

// The host moves at most 0x7ffff000 bytes a call; asking for less keeps every answer exact.
constexpr size_t largestRead = size_t{1} << 30;

} // namespace

InputFile::InputFile(InputFile&& other) noexcept
    : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {
}

InputFile& InputFile::operator=(InputFile&& other) noexcept {
    if (this != &other) {
        close();
        m_Descriptor = std::exchange(other.m_Descriptor, -1);
    }
    return *this;
}

InputFile::~InputFile() {
    close();
}

bool InputFile::open(const char* name) {
    close();
    const OwnedText systemName = longSystemPath(name);
    do {
        errno = 0;
        m_Descriptor = ::open(systemName.get(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    } while (m_Descriptor < 0 && errno == EINTR);
    return m_Descriptor >= 0;
}

bool InputFile::queryStatus(FileStatus& status) const {
    struct stat hostStatus = {};
    errno = 0;
    if (::fstat(m_Descriptor, &hostStatus) != 0) {
        return false;
    }
    status = fileStatusOf(hostStatus);
    return true;
}

int64_t InputFile::readAt(void* buffer, size_t count, uint64_t offset) const {
    auto* destination = static_cast<uint8_t*>(buffer);
    size_t done = 0;
    while (done < count) {
        errno = 0;
        const ssize_t got =
            ::pread(m_Descriptor, destination + done, std::min(count - done, largestRead),
                    static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return -1;
        }
        if (got == 0) {
            break;
        }
        done += static_cast<size_t>(got);
    }
    return static_cast<int64_t>(done);
}

bool InputFile::close() {
    if (m_Descriptor < 0) {
        return true;
    }
    errno = 0;
    // The descriptor is gone even after an error, so there is nothing to try again.
    return ::close(std::exchange(m_Descriptor, -1)) == 0;
}

FileProbe probeFile(const char* name, std::span<uint8_t> buffer) {
    FileProbe probe;
    InputFile file;
    if (!file.open(name)) {
        probe.error = errno;
        probe.status = queryFile(name);
        probe.exists = probe.status.kind != FileKind_None;
        return probe;
    }
    if (!file.queryStatus(probe.status)) {
        probe.error = errno;
        return probe;
    }
    probe.exists = true;
    // Asking for no more than there is spares the read that would find the end.
    size_t wanted = buffer.size();
    if (probe.status.isRegular) {
        wanted = std::min(wanted, static_cast<size_t>(probe.status.size));
    }
    const int64_t got = file.readAt(buffer.data(), wanted, 0);
    if (got < 0) {
        probe.error = errno;
    } else {
        probe.head = buffer.first(static_cast<size_t>(got));
    }
    probe.closeError = file.close() ? 0 : errno;
    return probe;
}

} // namespace platform
