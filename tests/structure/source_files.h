// The project's own source files, for the tests that walk them.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace structure {

struct SourceLine {
    std::string file; // from the project's root on
    int number = 0;
    std::string text;
};

// All lines of the .h and .cpp files below a folder of the project.
inline std::vector<SourceLine> linesBelow(const std::string& folder) {
    const std::filesystem::path root = TOMEX_SOURCE_FOLDER;
    std::vector<SourceLine> lines;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
        const std::string extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") {
            continue;
        }
        std::ifstream stream(entry.path());
        SourceLine line{entry.path().lexically_relative(root).generic_string(), 0, ""};
        while (std::getline(stream, line.text)) {
            ++line.number;
            lines.push_back(line);
        }
    }
    return lines;
}

} // namespace structure
