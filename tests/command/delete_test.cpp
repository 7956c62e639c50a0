// Deleting members.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class Delete : public CommandCase {
protected:
    Delete() { library("lib.a", {"a.o", "b.o", "c.x", "d.o"}); }
};

TEST_F(Delete, NamedMembersGo) {
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", "b.o", "d.o"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o"), kept("c.x")}));
    EXPECT_EQ(contents("c.x"), "c.x.");
}

TEST_F(Delete, LastMatchGoesFirst) {
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", "*.o", "c.?"}), 0,
                      "d - d.o\nd - b.o\nd - a.o\nd - c.x\n", ""));
    EXPECT_EQ(archive().summary(), Words{emptyTable()});
}

TEST_F(Delete, CaseAndFolderOfTheWordDoNotMatter) {
    EXPECT_TRUE(
        ended(tomex({"-dv", "lib.a", "A.O", "some/folder/B.*"}), 0, "d - a.o\nd - b.o\n", ""));
    EXPECT_EQ(names(), (Words{"c.x", "d.o"}));
}

TEST_F(Delete, AllMembersOfOneNameGo) {
    folder.write("lib.a", ArchiveBuilder().add("x.o", "1").add("y", "2").add("X.O", "3").bytes());
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", "x.o"}), 0, "d - X.O\nd - x.o\n", ""));
    EXPECT_EQ(names(), Words{"y"});
}

TEST_F(Delete, AbsentMemberIsAWarningAndTheRestIsWritten) {
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", "none.o", "a.o", "x*"}), 0, "d - a.o\n",
                      notPresent("Warning", "none.o") + notPresent("Warning", "x*")));
    EXPECT_EQ(names(), (Words{"b.o", "c.x", "d.o"}));
}

TEST_F(Delete, AbsentMemberRaisedToAnErrorWritesNothing) {
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"--diag_error=6831", "-dv", "lib.a", "none.o", "a.o"}), 1, "d - a.o\n",
                      notPresent("Error", "none.o")));
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(Delete, ArchiveIsRewrittenEvenIfNothingWasDeleted) {
    folder.write("lib.a", ArchiveBuilder().add(made("a.o")).symbol("old", 0).bytes());
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", "none.o"}), 0, "", notPresent("Warning", "none.o")));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o")}));
    const uint64_t identity = folder.identity("lib.a");
    EXPECT_TRUE(ended(tomex({"-d", "lib.a"}), 0, "", ""));
    EXPECT_NE(folder.identity("lib.a"), identity);
}

TEST_F(Delete, WordGivenTwiceIsAbsentTheSecondTime) {
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", "a.o", "*.o", "A.o"}), 0,
                      "d - a.o\nd - d.o\nd - b.o\n", notPresent("Warning", "A.o")));
    EXPECT_EQ(names(), Words{"c.x"});
}

TEST_F(Delete, StarsMatchTheNamelessTablesToo) {
    folder.write("lib.a", ArchiveBuilder()
                              .add(made("a.o"))
                              .add(made("a-name-of-many-letters.o"))
                              .withSymbolTable()
                              .bytes());
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", "*"}), 0,
                      "d - a-name-of-many-letters.o\nd - a.o\nd - \nd - \n", ""));
    EXPECT_EQ(archive().summary(), Words{emptyTable()});
}

TEST_F(Delete, TablesThatWereDeletedAreMadeAnew) {
    folder.write("lib.a", ArchiveBuilder()
                              .add(made("a.o"))
                              .add(made("a-name-of-many-letters.o"))
                              .symbol("old", 0)
                              .bytes());
    // The empty word matches what has no name.
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", ""}), 0, "d - \nd - \n", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "// 0 0 0 0 26", kept("a.o"),
                                          kept("a-name-of-many-letters.o")}));
}

TEST_F(Delete, QuestionMarksDoNotMatchTheTables) {
    EXPECT_TRUE(
        ended(tomex({"-dv", "lib.a", "?*"}), 0, "d - d.o\nd - c.x\nd - b.o\nd - a.o\n", ""));
}

TEST_F(Delete, WithoutTableNothingButTheMagicIsLeft) {
    EXPECT_TRUE(ended(tomex({"-dn", "lib.a", "*"}), 0, "", ""));
    EXPECT_EQ(folder.read("lib.a"), "!<arch>\n");
    EXPECT_TRUE(ended(tomex({"-dn", "lib.a", "*"}), 0, "", notPresent("Warning", "*")));
    EXPECT_EQ(folder.read("lib.a"), "!<arch>\n");
}

TEST_F(Delete, LastLongNameTakesTheNameTableWithIt) {
    library("lib.a", {"a.o", "a-name-of-many-letters.o", "another-name-of-many.o"});
    EXPECT_EQ(tomex({"-d", "lib.a", "a-name-of-many-letters.o"}).status, 0);
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), "// 0 0 0 0 24", kept("a.o"), kept("another-name-of-many.o")}));
    EXPECT_EQ(tomex({"-d", "lib.a", "another*"}).status, 0);
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o")}));
}

TEST_F(Delete, PositionMustBeThereButDoesNothing) {
    EXPECT_TRUE(ended(tomex({"-dv", "-a", "b.o", "lib.a", "c.x"}), 0, "d - c.x\n", ""));
    EXPECT_EQ(names(), (Words{"a.o", "b.o", "d.o"}));
}

} // namespace
} // namespace commandtest
