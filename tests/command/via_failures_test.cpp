// Via files that cannot be had or make no sense: each with its line, and nothing done.
#include "tests/command/fault_case.h"

namespace commandtest {
namespace {

class ViaFailures : public FaultCase {
protected:
    ViaFailures() { setScene(); }

    static std::string fatal(const std::string& text) { return "Fatal error: " + text + "\n"; }

    // Runs a rebuild of the scene with a via file of these bytes in front. It must fail with that
    // line alone and leave the scene as it was.
    void fails(std::string_view bytes, const std::string& line) const {
        folder.write("w.via", bytes);
        EXPECT_TRUE(ended(tomex({"-r", "lib.a", "--via", "w.via", "a.o", "c.o"}), 1, "", line));
        folder.remove("w.via");
        expectOldScene();
    }
    static std::string malformed() { return fatal("L3906U: Malformed via file 'w.via'."); }
    static std::string tooLong() {
        return fatal("L3907U: Via file 'w.via' command too long for buffer.");
    }
    static std::string binary() {
        return fatal("L3918U: '\\0' character found in via file 'w.via' - possible binary file.  "
                     "Aborting via file parse.");
    }
};

TEST_F(ViaFailures, NoSuchFile) {
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "--via", "dir/none.via"}), 1, "",
                      fatal("L3904U: Could not open via file 'dir/none.via'.")));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "--via="}), 1, "",
                      fatal("L3904U: Could not open via file ''.")));
    fails("--via other.via", fatal("L3904U: Could not open via file 'other.via'."));
}

TEST_F(ViaFailures, FileThatMayNotBeRead) {
    folder.write("w.via", "-t");
    folder.setMode("w.via", 0);
    folder.giveToUnprivilegedUser();
    Command command = testsupport::tomex(folder, {"--via", "w.via", "lib.a"});
    command.unprivileged = true;
    EXPECT_TRUE(
        ended(testsupport::run(command), 1, "", fatal("L3904U: Could not open via file 'w.via'.")));
}

TEST_F(ViaFailures, Folder) {
    folder.makeFolder("w.via");
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "--via", "w.via"}), 1, "",
                      fatal("L3905U: Error when reading from via file 'w.via'.")));
}

TEST_F(ViaFailures, OpenQuotesAndParentheses) {
    for (const char* bytes :
         {"\"a", "a.o 'b\nc'", "(a.o\n", "--diag_error=\"6875\\\"", "x#\"\n\"", "\"a#b\"\n"}) {
        fails(bytes, malformed());
    }
}

TEST_F(ViaFailures, WordTooLong) {
    fails(std::string(1024, 'x'), tooLong());
    fails(std::string(1000, 'x') + "\n" + std::string(23, 'y'), tooLong());
    fails("a.o\n" + std::string(1020, ' '), tooLong());
    // The longest that passes is a name like any other.
    const std::string longest(1023, 'x');
    folder.write("w.via", longest);
    EXPECT_TRUE(
        ended(tomex({"-t", "lib.a", "--via", "w.via"}), 1, "", notPresent("Error", longest)));
}

TEST_F(ViaFailures, BinaryFile) {
    using namespace std::string_literals;
    fails("a.o\0"s, binary());
    fails("# \0\na.o"s, binary());
    EXPECT_TRUE(ended(tomex({"-t", "--via", "lib.a"}), 1, "",
                      fatal("L3918U: '\\0' character found in via file 'lib.a' - possible binary "
                            "file.  Aborting via file parse.")));
}

TEST_F(ViaFailures, FaultIsFoundOneWordAhead) {
    // The option in front of the faulty word has not warned yet, the one before that has.
    fails("-N -R \"", "Warning: L3910W: Old syntax, please use '-n'.\n" + malformed());
    fails("--none \"", malformed());
    fails("--none x \"", fatal("L3900U: Unrecognized option '--none'."));
}

TEST_F(ViaFailures, MissingArgumentAtTheEndOfAFile) {
    fails("-v --normalise", fatal("L3901U: Missing argument for option 'normalise'."));
    fails("--via", fatal("L3901U: Missing argument for option 'via'."));
    folder.write("inner.via", "-b");
    folder.write("w.via", "--via inner.via a.o");
    EXPECT_TRUE(ended(tomex({"-r", "--via", "w.via", "lib.a"}), 1, "",
                      fatal("L3901U: Missing argument for option 'b'.")));
}

TEST_F(ViaFailures, WrongWordsOfAFileAreReportedAsThoseOfTheCommandLine) {
    fails("--none", fatal("L3900U: Unrecognized option '--none'."));
    fails("--normalise=x", fatal("L3903U: Argument 'x' not permitted for option 'normalise'."));
    fails("-vb x", fatal("L3917U: Concatenated options cannot have arguments: -b x"));
    fails("--verbose", fatal("L3900U: Unrecognized option '--verbose'."));
}

TEST_F(ViaFailures, TenthNestedFile) {
    for (int level = 1; level <= 9; ++level) {
        folder.write(std::to_string(level) + ".via", "--via " + std::to_string(level + 1) + ".via");
    }
    folder.write("10.via", "-t");
    EXPECT_TRUE(
        ended(tomex({"lib.a", "--via", "1.via"}), 1, "",
              fatal("L3902U: Recursive via file inclusion depth of 10 reached in file '10.via'.")));
    folder.write("w.via", "--via w.via");
    EXPECT_TRUE(
        ended(tomex({"-r", "lib.a", "--via", "w.via"}), 1, "",
              fatal("L3902U: Recursive via file inclusion depth of 10 reached in file 'w.via'.")));
}

TEST_F(ViaFailures, FileThatCannotBeClosedWarnsAndTheRunGoesOn) {
    folder.write("w.via", "lib.a a.o");
    EXPECT_TRUE(ended(with({"fclose:path=w.via:errno=EIO"}, {"-t", "--via", "w.via"}), 0, "a.o\n",
                      "Warning: L3913W: Could not close via file 'w.via'.\n"));
    EXPECT_TRUE(
        ended(with({"fclose:path=w.via:errno=EIO"}, {"--diag_error=3913", "-t", "--via", "w.via"}),
              1, "", "Error: L3913W: Could not close via file 'w.via'.\n"));
}

TEST_F(ViaFailures, FileThatTheHostFailsToOpen) {
    folder.write("w.via", "-t lib.a");
    EXPECT_TRUE(ended(with({"fopen:path=w.via:errno=EMFILE"}, {"--via", "w.via"}), 1, "",
                      fatal("L3904U: Could not open via file 'w.via'.")));
}

TEST_F(ViaFailures, FileThatTheHostFailsToRead) {
    // At the first character, inside the first stretch, behind it, and at the very end. The words
    // in front of the fault have been read then, and nothing is done with them.
    std::string words = "-r lib.a a.o\n";
    for (int line = 0; line < 100; ++line) {
        words += "c.o none" + std::to_string(line) + "\n";
    }
    const auto failsAt = [&](size_t character) {
        folder.write("w.via", words);
        EXPECT_TRUE(ended(with({"fgetc:path=w.via:nth=" + std::to_string(character) + ":errno=EIO"},
                               {"--via", "w.via"}),
                          1, "", fatal("L3905U: Error when reading from via file 'w.via'.")));
        folder.remove("w.via");
        expectOldScene();
    };
    for (const size_t character : {size_t{1}, size_t{1024}, size_t{1025}, words.size() + 1}) {
        failsAt(character);
    }
}

TEST_F(ViaFailures, NameIsShownSafely) {
    EXPECT_TRUE(ended(tomex({"--via", "%s\x1b[1m"}), 1, "",
                      fatal("L3904U: Could not open via file '%s\\033[1m'.")));
}

} // namespace
} // namespace commandtest
