#include "tests/support/whole_file.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace testsupport {

// In one step: character by character, the host's libraries take a minute in a sanitized build.
std::string wholeFile(const std::string& path) {
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    if (failure) {
        return {};
    }
    std::string bytes(static_cast<size_t>(size), '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(file.gcount()));
    return bytes;
}

} // namespace testsupport
