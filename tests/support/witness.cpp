#include "tests/support/witness.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <unistd.h>

namespace testsupport {

namespace {

bool isProgram(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<std::string> searchPath() {
    // Read before any test thread exists.
    const char* variable = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
    std::istringstream text(variable != nullptr ? variable : "/usr/bin:/bin");
    std::vector<std::string> folders;
    std::string folder;
    while (std::getline(text, folder, ':')) {
        folders.push_back(folder.empty() ? "." : folder);
    }
    return folders;
}

bool isVersion(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789.") == std::string_view::npos;
}

// The newest "NAME-VERSION" of a folder, by length and then by text: 9 before 14, 14 before 15.
std::optional<std::string> versionedTool(const std::string& folder, const std::string& name) {
    std::optional<std::string> best;
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::string leaf = entry->path().filename().string();
        if (leaf.starts_with(name + "-") && isVersion(leaf.substr(name.size() + 1)) &&
            isProgram(entry->path())) {
            const std::string path = entry->path().string();
            if (!best || std::pair(path.size(), path) > std::pair(best->size(), *best)) {
                best = path;
            }
        }
    }
    return best;
}

} // namespace

std::optional<std::string> findTool(const std::string& name) {
    for (const std::string& folder : searchPath()) {
        const std::filesystem::path path = std::filesystem::path(folder) / name;
        if (isProgram(path)) {
            return path.string();
        }
    }
    return std::nullopt;
}

Witness::Witness(const std::string& name) : m_name(name), m_path(findTool(name)) {
    for (const std::string& folder : searchPath()) {
        if (!m_path) {
            m_path = versionedTool(folder, name);
        }
    }
}

std::string Witness::absence() const {
    return m_name + " is not installed on this host, so its answer was not asked for";
}

CommandResult Witness::run(const ScratchFolder& folder, std::vector<std::string> arguments) const {
    return runTool(folder, m_path.value_or(m_name), std::move(arguments));
}

} // namespace testsupport
