// What tests with real archives share: the host's own libraries, a choice of them where every byte
// is looked at several times, and the other archivers that say what is in them.
#pragma once

#include "tests/command/command_case.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>

#include "tests/support/host_libraries.h"
#include "tests/support/whole_file.h"
#include "tests/support/witness_presence.h"

namespace commandtest {

using testsupport::ParsedMember;
using testsupport::present;
using testsupport::wholeFile;
using testsupport::Witness;

// At most `count` of the host's libraries below 8 MiB, of all sizes from the largest on.
inline std::vector<std::string> someHostLibraries(size_t count) {
    std::vector<std::pair<uint64_t, std::string>> bySize;
    for (const std::string& path : testsupport::hostLibraries()) {
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        const auto size = static_cast<uint64_t>(file.tellg());
        if (size < 8U << 20U) {
            bySize.emplace_back(size, path);
        }
    }
    std::sort(bySize.rbegin(), bySize.rend());
    const size_t step = (bySize.size() + count - 1) / count;
    std::vector<std::string> chosen;
    for (size_t i = 0; i < bySize.size(); i += step) {
        chosen.push_back(bySize[i].second);
    }
    return chosen;
}

inline std::string modeText(uint64_t mode) {
    std::string text = "rwxrwxrwx";
    for (size_t i = 0; i < text.size(); ++i) {
        if ((mode >> (8 - i) & 1U) == 0) {
            text[i] = '-';
        }
    }
    return text;
}

// As strftime has it, in UTC.
inline std::string timeText(uint64_t date, const char* format = "%b %d %H:%M %Y") {
    const auto time = static_cast<std::time_t>(date);
    std::tm parts = {};
    ::gmtime_r(&time, &parts);
    std::string text(64, '\0');
    text.resize(std::strftime(text.data(), text.size(), format, &parts));
    return text;
}

// `number` in at least `width` columns, on the right.
inline std::string right(uint64_t number, size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(digits.size() < width ? width - digits.size() : 0, ' ') + digits;
}

// A line of the detailed listing.
inline std::string detailedLine(const ParsedMember& member) {
    return modeText(member.mode) + right(member.uid, 6) + "/" + right(member.gid, 6) +
           right(member.size, 7) + " " + timeText(member.date) + " " + member.name + " (offset " +
           right(member.headerOffset, 6) + ")\n";
}

// The same member as `ar tv` shows it.
inline std::string arDetailedLine(const ParsedMember& member) {
    return modeText(member.mode) + " " + std::to_string(member.uid) + "/" +
           std::to_string(member.gid) + " " + right(member.size, 6) + " " +
           timeText(member.date, "%b %e %H:%M %Y") + " " + member.name + "\n";
}

class RealInputCase : public CommandCase {
protected:
    const Witness ar{"ar"};
    const Witness llvmAr{"llvm-ar"};

    // What a witness prints, which must succeed.
    std::string says(const Witness& witness, const Words& arguments) const {
        const CommandResult result = witness.run(folder, arguments);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        return result.output;
    }
    // What the program prints, which must succeed; without a word on standard error.
    std::string prints(Words words) const {
        const CommandResult result = tomex(std::move(words));
        EXPECT_TRUE(result.exitedWith(0)) << result.commandLine << "\n" << result.error;
        EXPECT_EQ(result.error, "") << result.commandLine;
        return result.output;
    }

    static std::string listing(const ParsedArchive& parsed) {
        std::string lines;
        for (const std::string& name : parsed.names()) {
            lines += name + "\n";
        }
        return lines;
    }
    static std::string allContents(const ParsedArchive& parsed) {
        std::string bytes;
        for (const ParsedMember& member : parsed.members) {
            bytes += member.auxiliary ? "" : member.contents;
        }
        return bytes;
    }
    // What a folder holds after everything is extracted: of equal names the last.
    static std::map<std::string, std::string> filesOf(const ParsedArchive& parsed) {
        std::map<std::string, std::string> files;
        for (const ParsedMember& member : parsed.members) {
            if (!member.auxiliary) {
                files[member.name] = member.contents;
            }
        }
        return files;
    }
};

} // namespace commandtest
