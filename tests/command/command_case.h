// What the tests of the whole program share: a folder to work in, runs of the program in it, and
// comparisons of a whole run (status and both streams) with what it must be.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include "tests/support/archive_builder.h"
#include "tests/support/archive_parser.h"
#include "tests/support/command_runner.h"
#include "tests/support/scratch_folder.h"

namespace commandtest {

using testsupport::ArchiveBuilder;
using testsupport::ArchiveRules;
using testsupport::BuiltMember;
using testsupport::Command;
using testsupport::CommandResult;
using testsupport::ParsedArchive;
using testsupport::ScratchFolder;
using testsupport::Stream;

using Words = std::vector<std::string>;

// Whether a run ended by itself, with that status and exactly these outputs.
inline testing::AssertionResult ended(const CommandResult& result, int status,
                                      std::string_view output, std::string_view error) {
    if (result.exitedWith(status) && result.output == output && result.error == error) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << result << "expected status " << status << "\nexpected output:\n"
           << output << "\nexpected error:\n"
           << error;
}

// The line about the first added member that is no object.
inline std::string notElf(const std::string& member, const std::string& archive = "lib.a") {
    return "Warning: L6875W: Adding non-ELF object '" + member + "' to archive '" + archive + "'\n";
}

inline std::string creating(const std::string& archive = "lib.a") {
    return "Creating archive '" + archive + "'\n";
}

// "Error" or "Warning": the letter behind the number stays the same.
inline std::string notPresent(const std::string& severity, const std::string& word,
                              const std::string& archive = "lib.a") {
    return severity + ": L6831E: '" + word + "' not present in archive '" + archive + "'\n";
}

class CommandCase : public testing::Test {
protected:
    CommandResult tomex(Words words) const {
        return testsupport::runTomex(folder, std::move(words));
    }

    // A file of that date, readable by all.
    void file(const std::string& name, std::string_view bytes, int64_t date = 1000) const {
        folder.write(name, bytes);
        folder.setMode(name, 0644);
        folder.setTime(name, date);
    }

    // An archive as the program makes it, of members that hold their own name and a full stop.
    void library(const std::string& name, const Words& members) const {
        ArchiveBuilder builder;
        for (const std::string& member : members) {
            builder.add(made(member));
        }
        builder.symbolTableHeader().mode = 0;
        builder.nameTableHeader().mode = 0;
        folder.write(name, builder.withSymbolTable().bytes());
    }
    static BuiltMember made(const std::string& name) {
        return {
            .name = name, .contents = name + ".", .date = 500, .uid = 7, .gid = 8, .mode = 0600};
    }

    // The archive of that name, which must be right to the last byte.
    ParsedArchive archive(const std::string& name = "lib.a") const {
        ParsedArchive parsed = testsupport::parseArchive(folder.read(name));
        EXPECT_EQ(parsed.error, "") << name;
        return parsed;
    }
    Words names(const std::string& name = "lib.a") const { return archive(name).names(); }
    std::string contents(const std::string& member, const std::string& name = "lib.a") const {
        const ParsedArchive parsed = archive(name);
        const testsupport::ParsedMember* found = parsed.find(member);
        return found != nullptr ? found->contents : "there is no " + member;
    }

    // How ParsedArchive::summary() shows a member made of a file of this process' user.
    static std::string added(const std::string& name, int64_t date, size_t size,
                             const std::string& mode = "100644") {
        return name + " " + std::to_string(date) + " " + std::to_string(::getuid()) + " " +
               std::to_string(::getgid()) + " " + mode + " " + std::to_string(size);
    }
    // And one that library() made.
    static std::string kept(const std::string& name) {
        return name + " 500 7 8 600 " + std::to_string(name.size() + 1);
    }
    static std::string emptyTable() { return "/ 0 0 0 0 4"; }

    const ScratchFolder folder;
};

} // namespace commandtest
