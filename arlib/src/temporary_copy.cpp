#include "arlib/src/temporary_copy.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <fcntl.h>
#include <unistd.h>

#include "platform/interface/output_file.h"

namespace arlib {
namespace {

constexpr int attempts = 3;

// A name that no other process is likely to choose: the process's number and a random part.
std::string candidateName() {
    const char* folder = std::getenv("TMPDIR");
    if (folder == nullptr || *folder == '\0') {
        folder = P_tmpdir;
    }
    char leaf[32];
    std::random_device random;
    std::snprintf(leaf, sizeof leaf, "/p%x-%08x", static_cast<unsigned>(::getpid()), random());
    return std::string(folder) + leaf;
}

} // namespace

int TemporaryCopy::createFile() {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::string name = candidateName();
        errno = 0;
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (descriptor >= 0) {
            m_Name = name;
            return descriptor;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return -1;
}

bool TemporaryCopy::write(const void* bytes, uint32_t size) {
    const int descriptor = createFile();
    if (descriptor < 0) {
        return false;
    }
    platform::OutputFile file;
    file.adopt(descriptor);
    const bool isWritten = file.write(bytes, size) && file.flush();
    const bool isClosed = file.close();
    if (isWritten && isClosed) {
        return true;
    }
    m_FailedToClose = isWritten;
    ::unlink(m_Name.c_str());
    errno = file.error();
    return false;
}

} // namespace arlib
