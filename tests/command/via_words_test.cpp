// --via: words of files as part of the command line.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class ViaWords : public CommandCase {
protected:
    ViaWords() {
        library("lib.a", {"a.o", "b.o", "c.o"});
        file("a.o", "new");
    }
    void via(const std::string& bytes, const std::string& name = "w.via") const {
        folder.write(name, bytes);
    }
};

TEST_F(ViaWords, StandWhereTheFileIsNamed) {
    via("lib.a\n'c.o' \"a.o\"\n");
    EXPECT_TRUE(ended(tomex({"-t", "--via", "w.via"}), 0, "c.o\na.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--via=w.via", "b.o", "-t"}), 0, "c.o\na.o\nb.o\n", ""));
    via("-t\n");
    EXPECT_TRUE(ended(tomex({"lib.a", "--via", "w.via", "c.o"}), 0, "c.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--via", "w.via", "none.a", "lib.a"}), 1, "",
                      "Error: L6832E: Archive 'none.a' not found : No such file or directory\n"));
}

TEST_F(ViaWords, OldSpellingWarns) {
    via("-t lib.a");
    EXPECT_TRUE(ended(tomex({"-via", "w.via"}), 0, "a.o\nb.o\nc.o\n",
                      "Warning: L3910W: Old syntax, please use '--via'.\n"));
    EXPECT_TRUE(ended(tomex({"--vi.", "w.via"}), 0, "a.o\nb.o\nc.o\n", ""));
}

TEST_F(ViaWords, EmptyFilesAreSilentlyAccepted) {
    for (const char* bytes : {"", "\n \t\r\n", "# -x\n; -d\n"}) {
        via(bytes);
        EXPECT_TRUE(ended(tomex({"--via", "w.via", "-t", "lib.a", "a.o"}), 0, "a.o\n", ""));
    }
}

TEST_F(ViaWords, NoWordsInAFileIsLikeNoWords) {
    via("");
    EXPECT_TRUE(ended(tomex({"--via", "w.via"}), 1, tomex({}).output,
                      "Error: L6838E: No archive specified\n"));
}

TEST_F(ViaWords, NamesWithBlanks) {
    file("my file.o", "x");
    via("-rc \"my lib.a\" my\" \"file.o");
    EXPECT_TRUE(ended(tomex({"--via", "w.via"}), 0, "", notElf("my file.o", "my lib.a")));
    EXPECT_EQ(names("my lib.a"), Words{"my file.o"});
}

TEST_F(ViaWords, WildcardsOfTheFileAreExpanded) {
    file("x1.o", "1");
    file("x2.o", "2");
    via("-rc new.a x?.o\n");
    EXPECT_EQ(tomex({"--via", "w.via"}).status, 0);
    EXPECT_EQ(names("new.a"), (Words{"x1.o", "x2.o"}));
}

TEST_F(ViaWords, CommentsAndLineEndsOfAllHosts) {
    via("# list it\r\n-t # really\r\nlib.a\r\n  a.o ; no more\r\n");
    EXPECT_TRUE(ended(tomex({"--via", "w.via"}), 0, "a.o\n", ""));
}

TEST_F(ViaWords, ArgumentsOfOptions) {
    via("--diag_style\nide --normalise=5 -b b.o");
    EXPECT_TRUE(ended(tomex({"--via", "w.via", "-r", "lib.a", "no.o"}), 1, "",
                      "tomex : error L6833:  File 'no.o' does not exist\n"));
    via("--normalise=5 -b b.o");
    EXPECT_TRUE(
        ended(tomex({"--via", "w.via", "-rv", "lib.a", "a.o"}), 0, "r - a.o\n", notElf("a.o")));
    EXPECT_EQ(archive().summary().at(1), "a.o 5 0 0 100644 3");
}

TEST_F(ViaWords, LaterOptionOverrules) {
    via("--normalise=5");
    EXPECT_EQ(tomex({"--normalise=6", "--via", "w.via", "-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(archive().summary().at(1), "a.o 5 0 0 100644 3");
    EXPECT_EQ(tomex({"--via", "w.via", "--normalise=6", "-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(archive().summary().at(1), "a.o 6 0 0 100644 3");
}

TEST_F(ViaWords, EndOfOptionsHoldsBehindTheFile) {
    file("-v", "x");
    via("-r -- lib.a\n");
    EXPECT_TRUE(ended(tomex({"--via", "w.via", "-v"}), 0, "", notElf("-v")));
    EXPECT_EQ(names().back(), "-v");
}

TEST_F(ViaWords, FilesNameFiles) {
    via("lib.a", "archive.via");
    via("--via archive.via --via 'members .via'", "all.via");
    via("a.o c.o", "members .via");
    EXPECT_TRUE(ended(tomex({"-t", "--via", "all.via"}), 0, "a.o\nc.o\n", ""));
}

TEST_F(ViaWords, NineNestedFilesWork) {
    for (int level = 1; level < 9; ++level) {
        via("--via " + std::to_string(level + 1), std::to_string(level));
    }
    via("-t lib.a", "9");
    EXPECT_TRUE(ended(tomex({"--via", "1"}), 0, "a.o\nb.o\nc.o\n", ""));
}

TEST_F(ViaWords, CommaInAFileNameIsACharacterLikeAnyOther) {
    via("-t lib.a a.o", "one,two");
    EXPECT_TRUE(ended(tomex({"--via=one,two"}), 0, "a.o\n", ""));
}

TEST_F(ViaWords, FileIsReadFromAPipe) {
    Command command = testsupport::tomex(folder, {"--via", "/dev/stdin", "lib.a"});
    command.input = "-t\nb.o"; // the archive is the first of the words
    EXPECT_TRUE(ended(testsupport::run(command), 1, "",
                      "Error: L6832E: Archive 'b.o' not found : No such file or directory\n"));
    command.input = "-t\n";
    EXPECT_TRUE(ended(testsupport::run(command), 0, "a.o\nb.o\nc.o\n", ""));
}

TEST_F(ViaWords, FiftyThousandNames) {
    ArchiveBuilder builder;
    std::string words = "-t lib.a\n";
    std::string list;
    for (int index = 0; index < 50000; ++index) {
        const std::string name = "m" + std::to_string(index) + ".o";
        builder.add(name, "x");
        words += name + "\n";
        list += name + "\n";
    }
    folder.write("lib.a", builder.bytes());
    via(words);
    EXPECT_TRUE(ended(tomex({"--via", "w.via"}), 0, list, ""));
}

} // namespace
} // namespace commandtest
