#include "platform/interface/file_replacement.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/interface/file_query.h"
#include "platform/interface/output_file.h"
#include "platform/interface/system_path.h"
#include "platform/interface/temporary_file_guard.h"

namespace platform {
namespace {

constexpr mode_t permissionBits = 0777; // and none of those that lend somebody's rights
constexpr mode_t readBits = 0444;
constexpr mode_t defaultPermissions = 0666;

// Stands for a name that has no room for a number behind it.
constexpr const char* shortName = "tomex";

// Removes the guarded file unless it has taken its place.
class GuardedFile {
public:
    GuardedFile() = default;
    GuardedFile(const GuardedFile&) = delete;
    GuardedFile& operator=(const GuardedFile&) = delete;
    ~GuardedFile() {
        if (m_IsMade) {
            removeGuardedFile();
        }
    }

    // A descriptor for writing, or -1 with errno set. Nobody may read the file who may not read the
    // old one.
    int make(const std::string& target, const FileStatus& old) {
        const mode_t permissions =
            old.kind != FileKind_None ? old.mode & permissionBits : defaultPermissions;
        const int descriptor = makeNumbered(target, permissions);
        if (descriptor >= 0 || errno != ENAMETOOLONG) {
            return descriptor;
        }
        const size_t folderEnd = target.rfind('/') + 1; // 0 if there is no folder
        return makeNumbered(target.substr(0, folderEnd) + shortName, permissions);
    }

    // Those of the old file, if there is one. False leaves errno.
    bool setPermissions(const FileStatus& old, bool isExecutable) {
        errno = 0;
        const FileStatus status = queryFile(m_Name.c_str());
        if (status.kind == FileKind_None) {
            return false;
        }
        const mode_t present = status.mode & permissionBits;
        mode_t wanted = old.kind != FileKind_None ? old.mode & permissionBits : present;
        if (isExecutable) {
            wanted |= (wanted & readBits) >> 2;
        }
        return wanted == present || ::chmod(m_Name.c_str(), wanted) == 0;
    }

    // False leaves errno.
    bool takePlaceOf(const char* target) {
        m_IsMade = !renameGuardedFile(target);
        return !m_IsMade;
    }

private:
    int makeNumbered(const std::string& stem, mode_t permissions) {
        for (uint32_t number = 0;; ++number) {
            m_Name = stem + "." + std::to_string(number);
            const int descriptor = createGuardedFile(m_Name.c_str(), permissions);
            m_IsMade = descriptor >= 0;
            if (m_IsMade || errno != EEXIST) {
                return descriptor;
            }
        }
    }

    std::string m_Name;
    bool m_IsMade = false;
};

int writeAll(int descriptor, const void* bytes, uint64_t size) {
    OutputFile output;
    output.adopt(descriptor);
    output.write(bytes, static_cast<size_t>(size));
    output.close();
    return output.error();
}

int writeThrough(const char* name, const void* bytes, uint64_t size) {
    errno = 0;
    const int descriptor = ::open(longSystemPath(name).get(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    return descriptor >= 0 ? writeAll(descriptor, bytes, size) : errno;
}

int replacePlainFile(const char* target, const FileStatus& old, const void* bytes, uint64_t size,
                     bool isExecutable) {
    errno = 0;
    if (old.kind != FileKind_None && !isWritable(target)) {
        return errno;
    }
    GuardedFile file;
    const int descriptor = file.make(target, old);
    if (descriptor < 0) {
        return errno;
    }
    int error = writeAll(descriptor, bytes, size);
    if (error == 0 && (!file.setPermissions(old, isExecutable) || !file.takePlaceOf(target))) {
        error = errno;
    }
    return error;
}

} // namespace

int replaceFile(const char* name, const void* bytes, uint64_t size, bool isExecutable) {
    const FileStatus old = queryFile(name);
    if (old.kind == FileKind_None) {
        return isAbsent(name) ? replacePlainFile(name, old, bytes, size, isExecutable) : errno;
    }
    if (!old.isRegular) {
        return writeThrough(name, bytes, size);
    }
    // The file itself, and not a link to it, gets a new one beside it.
    errno = 0;
    const std::unique_ptr<char, decltype(&std::free)> target(
        ::realpath(longSystemPath(name).get(), nullptr), &std::free);
    return target != nullptr ? replacePlainFile(target.get(), old, bytes, size, isExecutable)
                             : errno;
}

} // namespace platform
