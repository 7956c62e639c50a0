// A folder of a test's own, gone with the test.
//
// Its name is unique, anybody may enter and write it (so that a program under test can run as
// another user), and it is removed at the end together with everything in it, also where a test
// took permissions away. All names are relative to the folder. A failure to set up throws
// std::runtime_error, which the test framework reports.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return m_path; }
    std::string pathOf(std::string_view name) const;

    // Makes or overwrites a file; folders on the way are made.
    void write(std::string_view name, std::string_view bytes) const;
    std::string read(std::string_view name) const;
    // A file of `size` bytes of zero that takes no room on disk. `head`, if given, is written at
    // its start.
    void writeSparse(std::string_view name, uint64_t size, std::string_view head = {}) const;
    void makeFolder(std::string_view name) const;
    // Makes `name` a symbolic link whose text is `target`.
    void makeSymbolicLink(std::string_view name, std::string_view target) const;
    void remove(std::string_view name) const;

    // Whether anything of that name is there, a dangling link included.
    bool exists(std::string_view name) const;
    uint64_t size(std::string_view name) const;
    // Seconds since 1970.
    void setTime(std::string_view name, int64_t seconds) const;
    int64_t time(std::string_view name) const;
    // Permission bits; "." is the folder itself.
    void setMode(std::string_view name, uint32_t mode) const;
    uint32_t mode(std::string_view name) const;
    // The file's own number: another one as soon as another file has taken its name.
    uint64_t identity(std::string_view name) const;

    // Makes the unprivileged user the owner of the folder and of all in it, if this process may.
    void giveToUnprivilegedUser() const;

    // Names in a folder, sorted, without "." and "..".
    std::vector<std::string> entries(std::string_view folder = ".") const;

private:
    std::string m_path;
};

} // namespace testsupport
