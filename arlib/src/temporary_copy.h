// A temporary file that holds the contents of a member which are nowhere else on disk.
#pragma once

#include <cstdint>
#include <string>

namespace arlib {

class TemporaryCopy {
public:
    // Makes a file of a new name in the host's temporary folder, readable by its owner alone, and
    // fills it. False leaves errno, and no file.
    bool write(const void* bytes, uint32_t size);

    // True if it was the last step that failed.
    bool failedToClose() const { return m_FailedToClose; }

    // The file's name, null while none could be made.
    const char* nameOrNull() const { return m_Name.empty() ? nullptr : m_Name.c_str(); }

private:
    int createFile();

    std::string m_Name;
    bool m_FailedToClose = false;
};

} // namespace arlib
