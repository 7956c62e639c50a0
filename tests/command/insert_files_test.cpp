// Inserting plain files: new members, replaced ones, where they land, what is said.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class InsertFiles : public CommandCase {};

TEST_F(InsertFiles, NewArchiveByteForByte) {
    file("a.o", "abc", 1000);
    file("b.o", "four", 2000);
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "a.o", "b.o"}), 0, "", notElf("a.o") + creating()));
    const std::string expected =
        std::string("!<arch>\n") + testsupport::headerText("/", 0, 0, 0, 0, 4) +
        std::string(4, '\0') +
        testsupport::headerText("a.o/", 1000, ::getuid(), ::getgid(), 0100644, 3) + "abc\n" +
        testsupport::headerText("b.o/", 2000, ::getuid(), ::getgid(), 0100644, 4) + "four";
    EXPECT_EQ(folder.read("lib.a"), expected);
    EXPECT_EQ(folder.entries(), (Words{"a.o", "b.o", "lib.a"}));
}

TEST_F(InsertFiles, SameInputGivesSameBytes) {
    file("a.o", "abc");
    tomex({"-r", "one.a", "a.o"});
    tomex({"-r", "two.a", "a.o"});
    EXPECT_EQ(folder.read("one.a"), folder.read("two.a"));
}

TEST_F(InsertFiles, CreateWarningCanBeLeftOut) {
    file("a.o", "abc");
    for (const Words& words : std::vector<Words>{
             {"-rc", "lib.a", "a.o"}, {"-r", "-c", "lib.a", "a.o"}, {"--create", "lib.a", "a.o"}}) {
        EXPECT_TRUE(ended(tomex(words), 0, "", notElf("a.o")));
        folder.remove("lib.a");
    }
    EXPECT_TRUE(ended(tomex({"-q", "lib.a", "a.o"}), 0, "", notElf("a.o") + creating()));
    EXPECT_TRUE(ended(tomex({"-q", "lib.a", "a.o"}), 0, "", notElf("a.o")));
}

TEST_F(InsertFiles, MemberTakesDateAndModeOfTheFile) {
    file("a.o", "abc", 1234567890);
    folder.setMode("a.o", 04751);
    tomex({"-r", "lib.a", "a.o"});
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), added("a.o", 1234567890, 3, "104751")}));
}

TEST_F(InsertFiles, MemberOfALinkIsTheFileThatItLeadsTo) {
    file("target", "abc", 77);
    folder.makeSymbolicLink("link.o", "target");
    tomex({"-r", "lib.a", "link.o"});
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), added("link.o", 77, 3)}));
}

TEST_F(InsertFiles, NewMembersGoToTheEndInTheOrderGiven) {
    library("lib.a", {"x.o"});
    file("b.o", "b");
    file("a.o", "a");
    EXPECT_TRUE(
        ended(tomex({"-rv", "lib.a", "b.o", "a.o"}), 0, "a - b.o\na - a.o\n", notElf("b.o")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("x.o"), added("b.o", 1000, 1), added("a.o", 1000, 1)}));
    EXPECT_EQ(contents("x.o"), "x.o.");
}

TEST_F(InsertFiles, ReplacedMemberStaysInItsPlace) {
    library("lib.a", {"a.o", "b.o", "c.o"});
    file("b.o", "longer than before", 5);
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "b.o"}), 0, "r - b.o\n", notElf("b.o")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("a.o"), added("b.o", 5, 18), kept("c.o")}));
    EXPECT_EQ(contents("b.o"), "longer than before");
}

TEST_F(InsertFiles, FolderOfTheFileIsNoPartOfTheName) {
    library("lib.a", {"a.o"});
    file("sub/a.o", "new");
    file("sub/b.o", "b");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "sub/a.o", "sub//b.o", folder.pathOf("sub/b.o")}), 0,
                      "r - a.o\na - b.o\na - b.o\n", notElf("a.o")));
    EXPECT_EQ(names(), (Words{"a.o", "b.o", "b.o"}));
}

TEST_F(InsertFiles, ReplacedMemberKeepsItsSpelling) {
    library("lib.a", {"foo.o", "Bar.O"});
    file("FOO.O", "new foo");
    file("bar.o", "new bar");
    file("NEW.o", "n");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "FOO.O", "bar.o", "NEW.o"}), 0,
                      "r - foo.o\nr - Bar.O\na - NEW.o\n", notElf("foo.o")));
    EXPECT_EQ(names(), (Words{"foo.o", "Bar.O", "NEW.o"}));
    EXPECT_EQ(contents("foo.o"), "new foo");
    EXPECT_EQ(contents("Bar.O"), "new bar");
}

TEST_F(InsertFiles, NameIsReplacedOnceInARun) {
    library("lib.a", {"x.o", "y.o"});
    file("a/x.o", "first");
    file("b/x.o", "second");
    EXPECT_TRUE(
        ended(tomex({"-rv", "lib.a", "a/x.o", "b/x.o"}), 0, "r - x.o\na - x.o\n", notElf("x.o")));
    EXPECT_EQ(names(), (Words{"x.o", "y.o", "x.o"}));
    EXPECT_EQ(contents("x.o"), "first");
    EXPECT_EQ(archive().members.back().contents, "second");
}

TEST_F(InsertFiles, MembersOfOneNameAreReplacedOneAfterTheOther) {
    folder.write("lib.a", ArchiveBuilder().add("x.o", "1").add("X.O", "2").add("x.o", "3").bytes());
    file("x.o", "a");
    file("s/x.o", "b");
    EXPECT_TRUE(
        ended(tomex({"-rv", "lib.a", "x.o", "s/x.o"}), 0, "r - x.o\nr - X.O\n", notElf("x.o")));
    const auto members = archive().plainMembers();
    ASSERT_EQ(members.size(), 3U);
    EXPECT_EQ(members[0].contents + members[1].contents + members[2].contents, "ab3");
    EXPECT_EQ(members[1].name, "X.O");
}

TEST_F(InsertFiles, SameFileTwiceIsTwoMembers) {
    file("a.o", "abc");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "a.o", "a.o", "A*.o", "a.o"}), 1,
                      "a - a.o\na - a.o\na - a.o\n",
                      notElf("a.o") + "Error: L6833E: File 'A*.o' does not exist\n"));
    EXPECT_TRUE(
        ended(tomex({"-rvc", "lib.a", "a.o", "a.o"}), 0, "a - a.o\na - a.o\n", notElf("a.o")));
    EXPECT_EQ(names(), (Words{"a.o", "a.o"}));
}

TEST_F(InsertFiles, BeforePutsFilesInTheOrderGiven) {
    library("lib.a", {"x", "pos", "z"});
    file("a.o", "a");
    file("b.o", "b");
    EXPECT_EQ(tomex({"-r", "-b", "pos", "lib.a", "a.o", "b.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x", "a.o", "b.o", "pos", "z"}));
}

TEST_F(InsertFiles, AfterPutsFilesInTheOrderGiven) {
    library("lib.a", {"x", "pos", "z"});
    file("a.o", "a");
    file("b.o", "b");
    EXPECT_EQ(tomex({"-r", "-a", "pos", "lib.a", "a.o", "b.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x", "pos", "a.o", "b.o", "z"}));
    file("c.o", "c");
    EXPECT_EQ(tomex({"-r", "-a", "z", "lib.a", "c.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x", "pos", "a.o", "b.o", "z", "c.o"}));
}

TEST_F(InsertFiles, ReplacedMembersStayAndDoNotAdvanceThePosition) {
    library("lib.a", {"a.o", "pos", "c.o"});
    for (const char* name : {"n1", "a.o", "n2", "c.o", "n3"}) {
        file(name, "new");
    }
    EXPECT_EQ(tomex({"-r", "-b", "pos", "lib.a", "n1", "a.o", "n2", "c.o", "n3"}).status, 0);
    EXPECT_EQ(names(), (Words{"a.o", "n1", "n2", "n3", "pos", "c.o"}));
}

TEST_F(InsertFiles, PositionIsAPatternAndItsFirstMatchCounts) {
    library("lib.a", {"x1", "y1", "y2"});
    file("a.o", "a");
    EXPECT_EQ(tomex({"-r", "-a", "dir/Y?", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x1", "y1", "a.o", "y2"}));
    // Stars also match the nameless symbol table in front; the tables stay in front.
    file("b.o", "b");
    EXPECT_EQ(tomex({"-r", "-a", "*", "lib.a", "b.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"b.o", "x1", "y1", "a.o", "y2"}));
    file("c.o", "c");
    EXPECT_EQ(tomex({"-r", "-b", "**", "lib.a", "c.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"c.o", "b.o", "x1", "y1", "a.o", "y2"}));
}

TEST_F(InsertFiles, EmptyPositionIsThatOfTheNamelessTables) {
    library("lib.a", {"x1"});
    file("a.o", "a");
    EXPECT_EQ(tomex({"-r", "-b", "", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"a.o", "x1"}));
    EXPECT_EQ(tomex({"-n", "-s", "lib.a"}).status, 0);
    EXPECT_TRUE(ended(tomex({"-r", "-b", "", "lib.a", "a.o"}), 1, "",
                      "Error: L6841E: Position '' not found\n"));
}

TEST_F(InsertFiles, FileNamedLikeATemporaryFileCanBeInserted) {
    file("lib.a.0", "mine");
    EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "lib.a.0"}), 0, "", notElf("lib.a.0")));
    EXPECT_EQ(contents("lib.a.0"), "mine");
    EXPECT_EQ(folder.entries(), (Words{"lib.a", "lib.a.0"}));
    EXPECT_EQ(folder.read("lib.a.0"), "mine");
}

TEST_F(InsertFiles, WarningAboutOtherThanObjectsIsGivenOnce) {
    file("a.o", "a");
    file("b.o", "b");
    library("other.a", {"c.o"});
    EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "other.a", "a.o", "b.o"}), 0, "", notElf("c.o")));
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "b.o", "a.o"}), 0, "", notElf("b.o")));
}

TEST_F(InsertFiles, EmptyFileIsAMember) {
    file("empty", "", 9);
    EXPECT_TRUE(
        ended(tomex({"-rv", "lib.a", "empty"}), 0, "a - empty\n", notElf("empty") + creating()));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), added("empty", 9, 0)}));
}

TEST_F(InsertFiles, NoFilesRewriteAnArchiveThatIsThere) {
    folder.write("lib.a", ArchiveBuilder().add(made("a.o")).symbol("old", 0).bytes());
    EXPECT_TRUE(ended(tomex({"-r", "lib.a"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o")}));
}

TEST_F(InsertFiles, CreateDoesNotReadTheOldFile) {
    file("a.o", "abc");
    folder.write("lib.a", "!<arch>\nrubbish");
    EXPECT_TRUE(ended(tomex({"--create", "lib.a", "a.o"}), 0, "", notElf("a.o")));
    EXPECT_EQ(names(), Words{"a.o"});
    library("lib.a", {"x.o", "y.o"});
    EXPECT_TRUE(ended(tomex({"--create", "-v", "lib.a", "a.o"}), 0, "a - a.o\n", notElf("a.o")));
    EXPECT_EQ(names(), Words{"a.o"});
}

TEST_F(InsertFiles, CreateHasNoMembersForAPosition) {
    library("lib.a", {"x.o"});
    file("a.o", "abc");
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"--create", "-a", "x.o", "lib.a", "a.o"}), 1, "",
                      "Error: L6841E: Position 'x.o' not found\n"));
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(InsertFiles, CreateWithAMissingFileKeepsTheOldArchive) {
    library("lib.a", {"x.o"});
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"--create", "lib.a", "none"}), 1, "",
                      "Error: L6833E: File 'none' does not exist\n"));
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(InsertFiles, NewArchiveHasDefaultPermissions) {
    file("a.o", "abc");
    library("lib.a", {"x.o"});
    folder.setMode("lib.a", 0600);
    Command command = testsupport::tomex(folder, {"-r", "lib.a", "a.o"});
    command.fileCreationMask = 027;
    EXPECT_EQ(testsupport::run(command).status, 0);
    EXPECT_EQ(folder.mode("lib.a"), 0640U);
}

TEST_F(InsertFiles, MemberNamedLikeTheArchive) {
    file("sub/lib.a", "no archive");
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "sub/lib.a"}), 0, "", notElf("lib.a") + creating()));
    EXPECT_EQ(contents("lib.a"), "no archive");
}

} // namespace
} // namespace commandtest
