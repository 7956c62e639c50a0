// Files that are no archives at all, or no files.
#include "tests/command/bad_input_case.h"

#include <sys/stat.h>

namespace commandtest {
namespace {

using namespace std::string_literals;

std::string noArchive(const std::string& archive = "lib.a") {
    return "Error: L6826E: '" + archive + "' not in archive format\n";
}

class BadInputFile : public BadInputCase {};

TEST_F(BadInputFile, Empty) {
    refused("", unreadable());
}

TEST_F(BadInputFile, ShorterThanTheMagic) {
    for (const char* bytes : {"!", "!<arch>", "x", "1234567"}) {
        refused(bytes, unreadable());
    }
}

TEST_F(BadInputFile, MagicOnlyIsAnArchiveWithoutMembers) {
    forgiven(std::string{testsupport::archiveMagic}, {}, {}, {});
    folder.write("lib.a", testsupport::archiveMagic);
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "*"}), 1, "", notPresent("Error", "*")));
    EXPECT_EQ(folder.read("lib.a"), testsupport::archiveMagic);
}

TEST_F(BadInputFile, WrongMagic) {
    const std::string members = ArchiveBuilder().add("a.o", "abc").bytes().substr(8);
    for (const std::string& magic :
         {"!<thin>\n"s, "!<arch>\r"s, "!<ARCH>\n"s, "?<arch>\n"s, "!<arch> "s,
          "\x7f"s + "ELF\2\1\1\1", std::string(8, '\0'), "<bigaf>\n"s, "\n!<arch>"s}) {
        refused(magic + members, noArchive());
        folder.write("lib.a", magic);
        EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 1, "", noArchive()));
    }
}

TEST_F(BadInputFile, Text) {
    refused("INPUT(libother.a)\n", noArchive());
}

TEST_F(BadInputFile, OneByteBehindTheMagic) {
    refused(std::string{testsupport::archiveMagic} + "\n",
            failed("End of file in the middle of archive member header starting at offset 8"));
}

TEST_F(BadInputFile, ZerosBehindTheMagic) {
    refused(std::string{testsupport::archiveMagic} + std::string(60, '\0'),
            failed(headerAt(8) + " contains incorrect archive-member magic number"));
}

TEST_F(BadInputFile, DamagedBehindGoodMembers) {
    refused(ArchiveBuilder().add("a.o", "abc").bytes() + std::string(200, '#'),
            failed(headerAt(72) + " contains incorrect archive-member magic number"));
}

// --- what is no file -----------------------------------------------------------------------------

class BadInputNoFile : public BadInputCase {
protected:
    BadInputNoFile() { file("new.o", "new"); }
    // Every action on it ends with one line about reading it.
    void unreadableByAll(const std::string& why) const {
        const Words entries = folder.entries();
        for (const Words& action : std::vector<Words>{{"-t", "lib.a"},
                                                      {"-p", "lib.a"},
                                                      {"-x", "lib.a"},
                                                      {"-r", "lib.a", "new.o"},
                                                      {"-d", "lib.a", "a.o"},
                                                      {"-s", "lib.a"}}) {
            const CommandResult result = tomex(action);
            EXPECT_TRUE(result.exitedWith(1)) << result;
            EXPECT_EQ(result.output, "");
            EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file 'lib.a' : " + why))
                << result;
            EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result;
            EXPECT_EQ(folder.entries(), entries);
        }
    }
};

TEST_F(BadInputNoFile, Folder) {
    folder.write("lib.a/inside.o", "abc");
    unreadableByAll("Is a directory\n");
    EXPECT_EQ(folder.read("lib.a/inside.o"), "abc");
}

// Nobody writes into it, so waiting for its bytes would last forever.
TEST_F(BadInputNoFile, NamedPipe) {
    ASSERT_EQ(::mkfifo(folder.pathOf("lib.a").c_str(), 0644), 0);
    unreadableByAll("");
    EXPECT_TRUE(folder.exists("lib.a"));
}

TEST_F(BadInputNoFile, NoPermissionToRead) {
    folder.write("lib.a", ArchiveBuilder().add("a.o", "abc").bytes());
    folder.setMode("lib.a", 0);
    folder.giveToUnprivilegedUser();
    Command command = testsupport::tomex(folder, {"-t", "lib.a"});
    command.unprivileged = true;
    EXPECT_TRUE(ended(testsupport::run(command), 1, "", unreadable("Permission denied")));
}

TEST_F(BadInputNoFile, Devices) {
    EXPECT_TRUE(
        ended(tomex({"-t", "/dev/null"}), 1, "", unreadable("Input/output error", "/dev/null")));
    EXPECT_TRUE(ended(tomex({"-t", "/dev/zero"}), 1, "", noArchive("/dev/zero")));
}

TEST_F(BadInputNoFile, LinkToNothing) {
    folder.makeSymbolicLink("lib.a", "nothing");
    folder.makeSymbolicLink("loop.a", "loop.a");
    for (const std::string name : {"lib.a", "loop.a", "not_there.a", "new.o/lib.a"}) {
        EXPECT_TRUE(
            ended(tomex({"-t", name}), 1, "",
                  "Error: L6832E: Archive '" + name + "' not found : No such file or directory\n"));
    }
}

TEST_F(BadInputNoFile, LinkToAnArchive) {
    library("real.a", {"a.o"});
    folder.makeSymbolicLink("lib.a", "real.a");
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "a.o\n", ""));
}

TEST_F(BadInputNoFile, NameThatIsTooLong) {
    const std::string name(5000, 'l');
    EXPECT_TRUE(
        ended(tomex({"-t", name}), 1, "",
              "Error: L6832E: Archive '" + name + "' not found : No such file or directory\n"));
}

} // namespace
} // namespace commandtest
