// Extracting members into the current folder.
#include "tests/command/command_case.h"

#include <ctime>

#include <sys/stat.h>

namespace commandtest {
namespace {

std::string cannotWrite(const std::string& member, const std::string& reason) {
    return "Error: L6843E: Writing file '" + member + "' : " + reason + "\n";
}

class Extract : public CommandCase {};

TEST_F(Extract, AllMembersButTheTables) {
    folder.write("lib.a", ArchiveBuilder()
                              .add("a.o", "a")
                              .add("a-name-of-many-letters.o", std::string("b\0\n", 3))
                              .symbol("main", 0)
                              .bytes());
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_EQ(folder.entries(), (Words{"a-name-of-many-letters.o", "a.o", "lib.a"}));
    EXPECT_EQ(folder.read("a.o"), "a");
    EXPECT_EQ(folder.read("a-name-of-many-letters.o"), std::string("b\0\n", 3));
}

TEST_F(Extract, NamedMembersWithVerboseLines) {
    library("lib.a", {"a.o", "b.o", "c.x"});
    EXPECT_TRUE(ended(tomex({"-xv", "lib.a", "C.X", "dir/b.*"}), 0, "x - c.x\nx - b.o\n", ""));
    EXPECT_EQ(folder.entries(), (Words{"b.o", "c.x", "lib.a"}));
}

TEST_F(Extract, AbsentMemberIsAnErrorAndTheOthersAreExtracted) {
    library("lib.a", {"a.o"});
    EXPECT_TRUE(
        ended(tomex({"-x", "lib.a", "none.o", "a.o"}), 1, "", notPresent("Error", "none.o")));
    EXPECT_EQ(folder.read("a.o"), "a.o.");
}

TEST_F(Extract, LaterMemberOfOneNameOverwrites) {
    folder.write("lib.a",
                 ArchiveBuilder().add("x", "long text").add("X", "2").add("x", "3").bytes());
    EXPECT_TRUE(ended(tomex({"-xv", "lib.a", "x"}), 0, "x - x\nx - X\nx - x\n", ""));
    EXPECT_EQ(folder.read("x"), "3");
    EXPECT_EQ(folder.read("X"), "2");
}

TEST_F(Extract, ExistingFileIsOverwritten) {
    library("lib.a", {"a.o"});
    file("a.o", "a text that is much longer than the member");
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_EQ(folder.read("a.o"), "a.o.");
}

TEST_F(Extract, OptionKeepsExistingFiles) {
    library("lib.a", {"a.o", "b.o", "c.o"});
    file("b.o", "mine");
    folder.makeFolder("c.o");
    EXPECT_TRUE(ended(tomex({"-xvC", "lib.a"}), 1, "x - a.o\n",
                      "Error: L6836E: 'b.o' already exists, so will not be extracted\n"
                      "Error: L6836E: 'c.o' already exists, so will not be extracted\n"));
    EXPECT_EQ(folder.read("a.o"), "a.o.");
    EXPECT_EQ(folder.read("b.o"), "mine");
}

TEST_F(Extract, OptionKeepsTheFirstMemberOfOneName) {
    folder.write("lib.a", ArchiveBuilder().add("x", "1").add("x", "2").bytes());
    EXPECT_TRUE(ended(tomex({"-x", "-C", "lib.a"}), 1, "",
                      "Error: L6836E: 'x' already exists, so will not be extracted\n"));
    EXPECT_EQ(folder.read("x"), "1");
}

TEST_F(Extract, FileHasDefaultModeAndThePresentTime) {
    folder.write("lib.a", ArchiveBuilder()
                              .add({.name = "a.o",
                                    .contents = "a",
                                    .date = 1000,
                                    .uid = 12,
                                    .gid = 13,
                                    .mode = 0104711})
                              .bytes());
    const std::time_t before = std::time(nullptr);
    Command command = testsupport::tomex(folder, {"-x", "lib.a"});
    command.fileCreationMask = 026;
    EXPECT_EQ(testsupport::run(command).status, 0);
    EXPECT_EQ(folder.mode("a.o"), 0640U);
    EXPECT_GE(folder.time("a.o"), before - 1); // file times may be taken from a coarser clock
    struct stat status {};
    ASSERT_EQ(::stat(folder.pathOf("a.o").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, ::getuid());
}

TEST_F(Extract, EmptyMemberIsAnEmptyFile) {
    folder.write("lib.a", ArchiveBuilder().add("a", "").add("b", "").bytes());
    file("b", "full");
    EXPECT_TRUE(ended(tomex({"-xv", "lib.a"}), 0, "x - a\nx - b\n", ""));
    EXPECT_EQ(folder.size("a"), 0U);
    EXPECT_EQ(folder.size("b"), 0U);
}

TEST_F(Extract, LargeMemberIsWrittenWhole) {
    std::string large(1000003, 'x');
    for (size_t i = 0; i < large.size(); ++i) {
        large[i] = static_cast<char>(i * i % 253);
    }
    folder.write("lib.a", ArchiveBuilder().add("large", large).add("b", "b").bytes());
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(folder.read("large") == large);
    EXPECT_EQ(folder.read("b"), "b");
}

TEST_F(Extract, NameThatTheHostTakesIsUsedWhole) {
    const std::string name(255, 'n');
    library("lib.a", {name});
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_EQ(folder.read(name), name + ".");
}

TEST_F(Extract, NameThatTheHostDoesNotTakeCannotBeWritten) {
    for (const size_t length : {256U, 260U}) {
        const std::string name(length, 'n');
        library("lib.a", {name});
        EXPECT_TRUE(ended(tomex({"-xv", "lib.a"}), 1, "", cannotWrite(name, "File name too long")));
    }
}

TEST_F(Extract, NameOf261CharactersIsTooLong) {
    const std::string name(261, 'n');
    library("lib.a", {name, "b"});
    EXPECT_TRUE(ended(tomex({"-xv", "lib.a"}), 1, "x - b\n",
                      "Error: L6842E: Filename '" + name + "' too long for file system\n"));
    EXPECT_EQ(folder.read("b"), "b.");
}

TEST_F(Extract, TruncatedNameHas260Characters) {
    for (const size_t length : {260U, 261U, 700U}) {
        const std::string name = std::string(258, 'n') + "XY" + std::string(length - 260, 'z');
        library("lib.a", {name});
        Command command = testsupport::tomex(folder, {"-xT", "lib.a"});
        command.faultLog = folder.pathOf("log");
        EXPECT_TRUE(
            ended(testsupport::run(command), 1, "", cannotWrite(name, "File name too long")));
        Words opened;
        for (const auto& call : testsupport::readFaultLog(folder.pathOf("log"))) {
            if (call.path.find("nnn") != std::string::npos) {
                opened.push_back(call.path);
            }
        }
        ASSERT_FALSE(opened.empty());
        for (const std::string& path : opened) {
            EXPECT_TRUE(path.ends_with(name.substr(0, 260)));
        }
        folder.remove("log");
    }
}

TEST_F(Extract, NamesThatMeanFoldersCannotBeWritten) {
    library("lib.a", {".", "..", "a.o"});
    EXPECT_TRUE(ended(tomex({"-xv", "lib.a"}), 1, "x - a.o\n",
                      cannotWrite(".", "Is a directory") + cannotWrite("..", "Is a directory")));
}

TEST_F(Extract, MemberWithoutNameCannotBeWritten) {
    ArchiveBuilder builder;
    builder.add("a", "1").add(
        {.name = "x", .contents = "2", .rawName = testsupport::padded("/", 16)});
    folder.write("lib.a", builder.bytes());
    EXPECT_TRUE(
        ended(tomex({"-xv", "lib.a"}), 1, "x - a\n", cannotWrite("", "No such file or directory")));
}

} // namespace
} // namespace commandtest
