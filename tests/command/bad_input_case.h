// What tests of damaged archives share: the lines that tell a flaw, and the two ways that a run on
// a flawed archive can go.
//
// A flaw that ends the reading is an error: every action ends with status 1 and that one line, and
// whatever the action was, the file stays as it is, down to its number in the file system. A flaw
// that is forgiven is a warning: the run goes on with a neutral value in the place of the bad one,
// and a library that is then written has that value in it and no flaw any more. Users can make an
// error of the warning, and then nothing is written.
#pragma once

#include "tests/command/command_case.h"

#include <algorithm>
#include <functional>

namespace commandtest {

using testsupport::padded;

// The line of a flaw that ends the reading.
inline std::string failed(const std::string& flaw) {
    return "Error: L6829E: 'lib.a': malformed archive: " + flaw + "\n";
}

// The line of a flaw that is forgiven; the code stays the same when it is made an error.
inline std::string warned(const std::string& flaw, const std::string& severity = "Warning") {
    return severity + ": L6974W: 'lib.a': malformed archive: " + flaw + "\n";
}

inline std::string warnedAll(const Words& flaws, const std::string& severity = "Warning") {
    std::string lines;
    for (const std::string& flaw : flaws) {
        lines += warned(flaw, severity);
    }
    return lines;
}

inline std::string unreadable(const std::string& why = "Input/output error",
                              const std::string& archive = "lib.a") {
    return "Error: L6835E: Reading file '" + archive + "' : " + why + "\n";
}

// How most flaws of a header begin.
inline std::string headerAt(uint64_t offset) {
    return "Archive member header starting at offset " + std::to_string(offset);
}

// One line a name, as the listing has them.
inline std::string listed(const Words& names) {
    std::string lines;
    for (const std::string& name : names) {
        lines += name + "\n";
    }
    return lines;
}

class BadInputCase : public CommandCase {
protected:
    // No action gets past this archive, and none changes anything.
    void refused(const std::string& bytes, const std::string& error) const {
        file("new.o", "new");
        folder.write("lib.a", bytes);
        const std::vector<Words> actions = {{"-tv", "lib.a"},         {"-p", "lib.a"},
                                            {"-x", "lib.a"},          {"-s", "lib.a"},
                                            {"-r", "lib.a", "new.o"}, {"-d", "lib.a", "*"}};
        for (const Words& action : actions) {
            untouched(bytes, [&] { EXPECT_TRUE(ended(tomex(action), 1, "", error)); });
        }
    }

    // The flaws are told, in that order, and the run goes on; once written, they are gone. Gives
    // the archive as it is when a member has been added, which rebuilds both tables: behind them it
    // has `summary` and then that member.
    ParsedArchive forgiven(const std::string& bytes, const Words& flaws, const Words& names,
                           const Words& summary) const {
        folder.write("lib.a", bytes);
        untouched(bytes, [&] {
            EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, listed(names), warnedAll(flaws)));
            if (!flaws.empty()) {
                EXPECT_TRUE(ended(tomex({"--diag_error=L6974", "-s", "lib.a"}), 1, "",
                                  warnedAll(flaws, "Error")));
            }
        });
        EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "", warnedAll(flaws)));
        EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, listed(names), ""));
        file("new.o", "new");
        EXPECT_TRUE(ended(tomex({"-r", "lib.a", "new.o"}), 0, "", notElf("new.o")));
        ParsedArchive written = archive();
        Words expected = tablesOf(names);
        expected.insert(expected.end(), summary.begin(), summary.end());
        expected.push_back(added("new.o", 1000, 3));
        EXPECT_EQ(written.summary(), expected);
        return written;
    }

    // Does it, and sees that the archive and the folder are as before.
    void untouched(const std::string& bytes, const std::function<void()>& run) const {
        const Words entries = folder.entries();
        const uint64_t identity = folder.identity("lib.a");
        run();
        EXPECT_EQ(folder.entries(), entries);
        EXPECT_EQ(folder.identity("lib.a"), identity);
        EXPECT_TRUE(folder.read("lib.a") == bytes) << "lib.a has changed";
    }

private:
    static Words tablesOf(const Words& names) {
        size_t size = 0;
        for (const std::string& name : names) {
            size += name.size() > testsupport::longestShortName ? name.size() + 2 : 0;
        }
        Words tables = {emptyTable()};
        if (size > 0) {
            tables.push_back("// 0 0 0 0 " + std::to_string(size));
        }
        return tables;
    }
};

} // namespace commandtest
