#include "tests/support/host_libraries.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <string_view>

namespace testsupport {

namespace {

bool isArchive(const std::filesystem::path& path) {
    constexpr std::string_view magic = "!<arch>\n";
    std::ifstream file(path, std::ios::binary);
    std::string start(magic.size(), '\0');
    return file.read(start.data(), static_cast<std::streamsize>(start.size())) && start == magic;
}

} // namespace

std::vector<std::string> librariesBelow(const std::vector<std::string>& folders) {
    namespace fs = std::filesystem;
    std::set<std::string> found;
    for (const std::string& folder : folders) {
        std::error_code failure;
        fs::recursive_directory_iterator entry(
            folder, fs::directory_options::skip_permission_denied, failure);
        for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
            std::error_code ignored;
            if (entry->path().extension() == ".a" && entry->is_regular_file(ignored) &&
                isArchive(entry->path())) {
                const fs::path real = fs::canonical(entry->path(), ignored);
                if (!real.empty()) {
                    found.insert(real.string());
                }
            }
        }
    }
    return {found.begin(), found.end()};
}

std::vector<std::string> hostLibraries() {
    return librariesBelow({"/lib", "/lib64", "/usr/lib", "/usr/lib64", "/usr/local/lib"});
}

} // namespace testsupport
