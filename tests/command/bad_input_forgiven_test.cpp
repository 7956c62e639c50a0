// How a run goes on once a flaw is forgiven: every action works on what could be read, and what is
// written has no flaw left. And how users decide otherwise, by the number of the warning.
#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

// Three members; the second has a date that is none and a name that is none, and its padding is
// bad.
class BadInputForgiven : public BadInputCase {
protected:
    BadInputForgiven() {
        BuiltMember flawed = {.contents = "second", .uid = 5, .gid = 6, .mode = 0600};
        flawed.contents += "!"; // odd, for the padding
        flawed.rawName = padded("no slash", 16);
        flawed.rawDate = padded("yesterday", 12);
        flawed.rawPadding = "P";
        ArchiveBuilder builder;
        builder.add(made("first.o")).add(flawed).add(made("third.o"));
        bytes = builder.bytes();
        offset = builder.offsetOf(1);
        flaws = {headerAt(offset) + " contains invalid date string 'yesterday   '",
                 headerAt(offset) + " has no '/' character in its name field",
                 "Padding byte at offset " + std::to_string(offset + 67) +
                     " has value 80 and not 0x0A as it should be"};
        warnings = warnedAll(flaws);
        folder.write("lib.a", bytes);
        file("new.o", "new");
    }

    std::string bytes;
    uint64_t offset = 0;
    Words flaws;
    std::string warnings;
    const std::string second = " 0 5 6 600 7";
};

TEST_F(BadInputForgiven, List) {
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a"}), 0,
                      "rw-------     7/     8      8 Jan 01 00:08 1970 first.o (offset      8)\n"
                      "rw-------     5/     6      7 Jan 01 00:00 1970  (offset     76)\n"
                      "rw-------     7/     8      8 Jan 01 00:08 1970 third.o (offset    144)\n",
                      warnings));
}

TEST_F(BadInputForgiven, Print) {
    EXPECT_TRUE(ended(tomex({"-p", "lib.a"}), 0, "first.o.second!third.o.", warnings));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "third.o"}), 0, "third.o.", warnings));
}

TEST_F(BadInputForgiven, Extract) {
    EXPECT_TRUE(ended(tomex({"-x", "lib.a", "third.o"}), 0, "", warnings));
    EXPECT_EQ(folder.read("third.o"), "third.o.");
    EXPECT_EQ(folder.read("lib.a"), bytes);
}

TEST_F(BadInputForgiven, Insert) {
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "new.o"}), 0, "", warnings + notElf("new.o")));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("first.o"), second, kept("third.o"),
                                          added("new.o", 1000, 3)}));
}

TEST_F(BadInputForgiven, Replace) {
    file("third.o", "third, new");
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "third.o"}), 0, "", warnings + notElf("third.o")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("first.o"), second, added("third.o", 1000, 10)}));
}

TEST_F(BadInputForgiven, Delete) {
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", "first.o"}), 0, "", warnings));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), second, kept("third.o")}));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "\nthird.o\n", ""));
}

TEST_F(BadInputForgiven, DeleteTheFlawedMember) {
    // It has no name, and an empty word is the pattern for that.
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", ""}), 0, "", warnings));
    EXPECT_EQ(names(), (Words{"first.o", "third.o"}));
}

TEST_F(BadInputForgiven, Move) {
    EXPECT_TRUE(ended(tomex({"-m", "lib.a", "first.o"}), 0, "", warnings));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), second, kept("third.o"), kept("first.o")}));
}

TEST_F(BadInputForgiven, DropTheSymbolTable) {
    EXPECT_TRUE(ended(tomex({"-sn", "lib.a"}), 0, "", warnings));
    EXPECT_EQ(archive().summary(), (Words{kept("first.o"), second, kept("third.o")}));
}

// --- users' choice -------------------------------------------------------------------------------

TEST_F(BadInputForgiven, RaisedToAnErrorNothingIsDone) {
    const std::string errors = warnedAll(flaws, "Error");
    for (const std::string name : {"L6974", "6974", "l6974", "L6974W", "warning"}) {
        for (const Words& action : std::vector<Words>{{"-r", "lib.a", "new.o"},
                                                      {"-d", "lib.a", "first.o"},
                                                      {"-m", "lib.a", "first.o"},
                                                      {"-s", "lib.a"},
                                                      {"-sn", "lib.a"},
                                                      {"-t", "lib.a"},
                                                      {"-x", "lib.a"},
                                                      {"-p", "lib.a"}}) {
            Words words = action;
            words.insert(words.begin(), "--diag_error=" + name);
            untouched(bytes, [&] { EXPECT_TRUE(ended(tomex(words), 1, "", errors)); });
        }
    }
}

TEST_F(BadInputForgiven, SuppressedItIsForgivenInSilence) {
    EXPECT_TRUE(
        ended(tomex({"--diag_suppress=L6974", "-t", "lib.a"}), 0, "first.o\n\nthird.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--diag_suppress=L6974", "-s", "lib.a"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("first.o"), second, kept("third.o")}));
}

TEST_F(BadInputForgiven, LoweredToARemarkItHasNoCode) {
    std::string remarks;
    for (const std::string& flaw : flaws) {
        remarks += "'lib.a': malformed archive: " + flaw + "\n";
    }
    EXPECT_TRUE(
        ended(tomex({"--diag_remark=L6974", "-t", "lib.a"}), 0, "first.o\n\nthird.o\n", remarks));
}

TEST_F(BadInputForgiven, AnErrorStaysOne) {
    folder.write("lib.a", bytes.substr(0, offset + 30));
    const std::string error =
        failed("End of file in the middle of archive member header starting at offset " +
               std::to_string(offset));
    for (const std::string option :
         {"--diag_suppress=L6829", "--diag_warning=L6829", "--diag_remark=L6829",
          "--diag_suppress=error", "--diag_warning=error"}) {
        EXPECT_TRUE(ended(tomex({option, "-t", "lib.a"}), 1, "", error)) << option;
    }
}

TEST_F(BadInputForgiven, InTheOtherStyles) {
    const std::string text = "'lib.a': malformed archive: " + flaws[0] + "\n";
    const CommandResult gnu = tomex({"--diag_style=gnu", "-t", "lib.a"});
    EXPECT_TRUE(gnu.error.starts_with("Warning: L6974W: " + text)) << gnu;
    for (const std::string style : {"ide", "devstudio"}) {
        const CommandResult result = tomex({"--diag_style=" + style, "-t", "lib.a"});
        EXPECT_TRUE(result.error.starts_with("tomex : warning L6974:  " + text)) << result;
    }
}

// The archive's name stands in the line as the user gave it.
TEST_F(BadInputForgiven, ArchiveNamedWithItsFolder) {
    folder.write("sub/lib.a", ArchiveBuilder().add({.rawName = padded("x", 16)}).bytes());
    EXPECT_TRUE(ended(tomex({"-t", "./sub/lib.a"}), 0, "\n",
                      "Warning: L6974W: './sub/lib.a': malformed archive: " + headerAt(8) +
                          " has no '/' character in its name field\n"));
}

// Whether a file to insert is an archive is asked in silence, with nobody there to forgive a flaw.
// So a flawed archive is a plain file.
TEST_F(BadInputForgiven, AsAFileToInsertItIsAPlainFile) {
    folder.write("other.a", bytes);
    folder.setTime("other.a", 1000);
    folder.setMode("other.a", 0644);
    library("lib.a", {"a.o"});
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "other.a"}), 0, "", notElf("other.a")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("a.o"), added("other.a", 1000, bytes.size())}));
    EXPECT_EQ(contents("other.a"), bytes);
}

} // namespace
} // namespace commandtest
