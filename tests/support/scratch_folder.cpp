// Plain host calls, so that nothing here depends on how a library thinks about permissions. Before
// the folder is removed, each folder in it gets its owner's permissions back.
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace testsupport {

namespace {

constexpr uid_t unprivilegedUser = 65534;
constexpr gid_t unprivilegedGroup = 65534;

[[noreturn]] void fail(const std::string& what, const std::string& path) {
    throw std::runtime_error("cannot " + what + " " + path + ": " + std::strerror(errno));
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        fail("look at", path);
    }
    return status;
}

void writeAll(int descriptor, std::string_view bytes, const std::string& path) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0) {
            fail("write", path);
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

int openToWrite(const std::string& path) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        fail("make", path);
    }
    return descriptor;
}

// Makes every folder of a tree readable and writable for its owner again. Nothing throws, as this
// runs in a destructor; what cannot be opened up stays behind.
void openUp(const std::string& folder) {
    ::chmod(folder.c_str(), S_IRWXU);
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder, failure);
    while (!failure && entry != std::filesystem::directory_iterator()) {
        std::error_code ignored;
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
            openUp(entry->path().string());
        }
        entry.increment(failure);
    }
}

std::string folderForScratch() {
    // Read before any test thread exists.
    const char* folder = std::getenv("TMPDIR"); // NOLINT(concurrency-mt-unsafe)
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

} // namespace

ScratchFolder::ScratchFolder() : m_path(folderForScratch() + "/tomex-test-XXXXXX") {
    if (::mkdtemp(m_path.data()) == nullptr) {
        fail("make a folder like", m_path);
    }
    if (::chmod(m_path.c_str(), S_IRWXU | S_IRWXG | S_IRWXO) != 0) {
        fail("open up", m_path);
    }
}

ScratchFolder::~ScratchFolder() {
    openUp(m_path);
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchFolder::pathOf(std::string_view name) const {
    return m_path + "/" + std::string{name};
}

void ScratchFolder::write(std::string_view name, std::string_view bytes) const {
    const std::string path = pathOf(name);
    const int descriptor = openToWrite(path);
    writeAll(descriptor, bytes, path);
    if (::close(descriptor) != 0) {
        fail("close", path);
    }
}

void ScratchFolder::writeSparse(std::string_view name, uint64_t size, std::string_view head) const {
    const std::string path = pathOf(name);
    const int descriptor = openToWrite(path);
    writeAll(descriptor, head, path);
    if (::ftruncate(descriptor, static_cast<off_t>(size)) != 0 || ::close(descriptor) != 0) {
        fail("size", path);
    }
}

std::string ScratchFolder::read(std::string_view name) const {
    const std::string path = pathOf(name);
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        fail("open", path);
    }
    std::string bytes;
    bytes.resize(static_cast<size_t>(std::max<off_t>(statusOf(path).st_size, 0)) + 1);
    size_t filled = 0;
    for (;;) {
        const ssize_t count = ::read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (count < 0) {
            ::close(descriptor);
            fail("read", path);
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<size_t>(count);
        if (filled == bytes.size()) {
            bytes.resize(bytes.size() * 2);
        }
    }
    ::close(descriptor);
    bytes.resize(filled);
    return bytes;
}

void ScratchFolder::makeFolder(std::string_view name) const {
    std::filesystem::create_directories(pathOf(name));
}

void ScratchFolder::makeSymbolicLink(std::string_view name, std::string_view target) const {
    if (::symlink(std::string{target}.c_str(), pathOf(name).c_str()) != 0) {
        fail("make the link", pathOf(name));
    }
}

void ScratchFolder::remove(std::string_view name) const {
    if (std::filesystem::remove_all(pathOf(name)) == 0) {
        errno = ENOENT;
        fail("remove", pathOf(name));
    }
}

bool ScratchFolder::exists(std::string_view name) const {
    struct stat status {};
    return ::lstat(pathOf(name).c_str(), &status) == 0;
}

uint64_t ScratchFolder::size(std::string_view name) const {
    return static_cast<uint64_t>(statusOf(pathOf(name)).st_size);
}

void ScratchFolder::setTime(std::string_view name, int64_t seconds) const {
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(seconds);
    if (::utimensat(AT_FDCWD, pathOf(name).c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) {
        fail("date", pathOf(name));
    }
}

int64_t ScratchFolder::time(std::string_view name) const {
    return statusOf(pathOf(name)).st_mtim.tv_sec;
}

void ScratchFolder::setMode(std::string_view name, uint32_t mode) const {
    if (::chmod(pathOf(name).c_str(), mode) != 0) {
        fail("set the mode of", pathOf(name));
    }
}

uint32_t ScratchFolder::mode(std::string_view name) const {
    return statusOf(pathOf(name)).st_mode & 07777U;
}

uint64_t ScratchFolder::identity(std::string_view name) const {
    return statusOf(pathOf(name)).st_ino;
}

void ScratchFolder::giveToUnprivilegedUser() const {
    if (::geteuid() != 0) {
        return;
    }
    auto give = [](const std::string& path) {
        if (::lchown(path.c_str(), unprivilegedUser, unprivilegedGroup) != 0) {
            fail("give away", path);
        }
    };
    give(m_path);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path)) {
        give(entry.path().string());
    }
}

std::vector<std::string> ScratchFolder::entries(std::string_view folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(pathOf(folder))) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace testsupport
