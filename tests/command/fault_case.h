// A scene that can be set up again and again, and runs in it that meet failures.
//
// The scene is an archive of small members and a large one, and two files to insert: one that
// replaces a member, and a large new one. The program is deterministic, so the calls of one run, in
// their order, tell at which call of the next run something has to happen.
#pragma once

#include "tests/command/command_case.h"

#include <cstring>

namespace commandtest {

using testsupport::LoggedCall;
using Calls = std::vector<LoggedCall>;

class FaultCase : public CommandCase {
protected:
    static constexpr size_t largeSize = 100001; // bodies of this size go from file to file

    static std::string large(char letter) { return std::string(largeSize, letter); }

    // The scene as it was before all runs; whatever else lies in the folder is removed.
    void setScene() const {
        for (const std::string& entry : folder.entries()) {
            folder.remove(entry);
        }
        folder.write("lib.a", oldBytes());
        file("a.o", "new a");
        file("c.o", large('c'));
    }
    static std::string oldBytes() {
        ArchiveBuilder builder;
        builder.add(made("a.o")).add(made("b-is-a-long-name.o"));
        builder.add({.name = "large", .contents = large('l'), .date = 5, .mode = 0644});
        return builder.withSymbolTable().bytes();
    }
    static Words rebuild() { return {"-r", "lib.a", "a.o", "c.o"}; }

    CommandResult with(const std::vector<std::string>& rules,
                       const Words& words = rebuild()) const {
        Command command = testsupport::tomex(folder, words);
        command.faults = rules;
        return testsupport::run(command);
    }

    // All calls of a run in the scene, which is set again afterwards.
    Calls callsOf(const Words& words = rebuild(),
                  const std::vector<std::string>& rules = {}) const {
        Command command = testsupport::tomex(folder, words);
        command.faults = rules;
        const ScratchFolder elsewhere;
        command.faultLog = elsewhere.pathOf("log");
        EXPECT_TRUE(testsupport::run(command).exitedWith(0));
        setScene();
        return testsupport::readFaultLog(command.faultLog);
    }

    static bool isCall(const LoggedCall& call, std::string_view name, std::string_view path) {
        return call.call.find(name) != std::string::npos && call.path.ends_with(path);
    }
    // A rule for the first such call that follows the first one of the other kind. Names are parts
    // of a call's name, so that "read" stands for all forms of reading.
    static std::string atCallAfter(const Calls& calls, std::string_view earlierName,
                                   std::string_view earlierPath, std::string_view name,
                                   std::string_view path) {
        bool isAfter = false;
        for (const LoggedCall& call : calls) {
            if (isAfter && isCall(call, name, path)) {
                return atCall(call);
            }
            isAfter = isAfter || isCall(call, earlierName, earlierPath);
        }
        ADD_FAILURE() << "no " << name << " of " << path << " after " << earlierName << " of "
                      << earlierPath;
        return "*";
    }
    static std::string atCall(const LoggedCall& call) {
        return "*:nth=" + std::to_string(call.number);
    }

    // The files of the scene and nothing else, the archive as it was.
    void expectOldScene() const {
        EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a"}));
        EXPECT_TRUE(folder.read("lib.a") == oldBytes());
    }

    // What every rebuild of the scene says before it writes.
    static std::string rebuilt(const std::string& furtherLines) {
        return notElf("a.o") + furtherLines;
    }
    static std::string failure(const std::string& what, int error) {
        return "Error: " + what + " file 'lib.a' : " + std::strerror(error) + "\n";
    }
    static std::string writing(int error) { return failure("L6830E: Writing", error); }
    static std::string reading(int error) { return failure("L6835E: Reading", error); }
};

} // namespace commandtest
