// Formatting under the "C" rules for characters, whatever locale the host program is in: widths
// and precisions of texts then count bytes, and no byte of a file name is an invalid character.
#pragma once

#include <clocale>
#include <cstdlib>
#include <cstring>

namespace messages {

// Switches `LC_CTYPE` to "C" for its life; costs one query where it is "C" anyway.
class CTypeGuard {
public:
    CTypeGuard() {
        const char* name = std::setlocale(LC_CTYPE, nullptr);
        if (name != nullptr && std::strcmp(name, "C") != 0) {
            m_Previous = ::strdup(name);
            std::setlocale(LC_CTYPE, "C");
        }
    }
    ~CTypeGuard() {
        if (m_Previous != nullptr) {
            std::setlocale(LC_CTYPE, m_Previous);
            std::free(m_Previous);
        }
    }
    CTypeGuard(const CTypeGuard&) = delete;
    CTypeGuard& operator=(const CTypeGuard&) = delete;

private:
    char* m_Previous = nullptr;
};

} // namespace messages
