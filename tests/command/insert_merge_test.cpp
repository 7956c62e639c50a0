// Inserting archives: their members are merged one by one.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class InsertMerge : public CommandCase {
protected:
    // A member of other.a with a header unlike that of library().
    static BuiltMember other(const std::string& name, uint64_t date = 900,
                             const std::string& contents = "other") {
        return {
            .name = name, .contents = contents, .date = date, .uid = 21, .gid = 22, .mode = 0644};
    }
    static std::string merged(const std::string& name, int64_t date = 900, size_t size = 5) {
        return name + " " + std::to_string(date) + " 21 22 644 " + std::to_string(size);
    }
    void otherLibrary(const std::vector<BuiltMember>& members,
                      const std::string& name = "other.a") const {
        ArchiveBuilder builder;
        for (const BuiltMember& member : members) {
            builder.add(member);
        }
        folder.write(name, builder.withSymbolTable().bytes());
    }
};

TEST_F(InsertMerge, MembersKeepTheirHeaders) {
    otherLibrary({other("x.o"), other("a-name-of-many-letters.o", 901, "odd")});
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "other.a"}), 0,
                      "a - x.o\na - a-name-of-many-letters.o\n", notElf("x.o") + creating()));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "// 0 0 0 0 26", merged("x.o"),
                                          merged("a-name-of-many-letters.o", 901, 3)}));
    EXPECT_EQ(contents("a-name-of-many-letters.o"), "odd");
}

TEST_F(InsertMerge, PresentMembersAreReplacedAndOthersAdded) {
    library("lib.a", {"a.o", "b.o", "c.o"});
    otherLibrary({other("new.o"), other("B.O"), other("c.o")});
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "other.a"}), 0, "a - new.o\nr - b.o\nr - c.o\n",
                      notElf("new.o")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("a.o"), merged("b.o"), merged("c.o"), merged("new.o")}));
    EXPECT_EQ(contents("b.o"), "other");
}

TEST_F(InsertMerge, NormaliseDoesNotApply) {
    library("lib.a", {"a.o"});
    otherLibrary({other("a.o"), other("b.o")});
    EXPECT_EQ(tomex({"--normalise=1", "-r", "lib.a", "other.a"}).status, 0);
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), merged("a.o"), merged("b.o")}));
}

TEST_F(InsertMerge, UpdateKeepsContentsButTakesTheOlderHeader) {
    library("lib.a", {"a.o", "b.o"});
    otherLibrary({other("a.o", 499)});
    EXPECT_TRUE(ended(tomex({"-ruv", "lib.a", "other.a"}), 0, "", notElf("a.o")));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), merged("a.o", 499, 4), kept("b.o")}));
    EXPECT_EQ(contents("a.o"), "a.o.");
}

TEST_F(InsertMerge, UpdateReplacesByMembersOfTheSameOrALaterDate) {
    library("lib.a", {"a.o", "b.o"});
    otherLibrary({other("a.o", 500), other("b.o", 501)});
    EXPECT_TRUE(ended(tomex({"-ruv", "lib.a", "other.a"}), 0, "r - a.o\nr - b.o\n", notElf("a.o")));
    EXPECT_EQ(contents("a.o") + contents("b.o"), "otherother");
}

TEST_F(InsertMerge, NewFilesOnlyReplacesByMembersOfALaterDate) {
    library("lib.a", {"a.o", "b.o"});
    otherLibrary({other("a.o", 500), other("b.o", 501)});
    EXPECT_TRUE(ended(tomex({"--new_files_only", "-rv", "lib.a", "other.a"}), 0, "r - b.o\n",
                      notElf("a.o")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), merged("a.o", 500, 4), merged("b.o", 501)}));
}

TEST_F(InsertMerge, KeptMemberIsWeighedWithItsNewDateAfterwards) {
    library("lib.a", {"a.o"});
    otherLibrary({other("a.o", 400, "first")}, "one.a");
    otherLibrary({other("a.o", 450, "second")}, "two.a");
    EXPECT_TRUE(ended(tomex({"-ruv", "lib.a", "one.a", "two.a"}), 0, "r - a.o\n", notElf("a.o")));
    EXPECT_EQ(contents("a.o"), "second");
}

TEST_F(InsertMerge, MembersOfOneNameReplaceOnceAndAreAddedThen) {
    library("lib.a", {"x.o", "y.o"});
    otherLibrary({other("x.o", 1, "one"), other("x.o", 2, "two"), other("x.o", 3, "three")});
    EXPECT_TRUE(
        ended(tomex({"-rv", "lib.a", "other.a"}), 0, "r - x.o\na - x.o\na - x.o\n", notElf("x.o")));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), merged("x.o", 1, 3), kept("y.o"),
                                          merged("x.o", 2, 3), merged("x.o", 3, 5)}));
}

TEST_F(InsertMerge, PositionTakesNewMembersInOrder) {
    library("lib.a", {"a.o", "pos", "c.o"});
    otherLibrary({other("n1"), other("c.o"), other("n2"), other("a.o")});
    file("n3", "n");
    EXPECT_EQ(tomex({"-r", "-b", "pos", "lib.a", "other.a", "n3"}).status, 0);
    EXPECT_EQ(names(), (Words{"a.o", "n1", "n2", "n3", "pos", "c.o"}));
    library("lib.a", {"a.o", "pos", "c.o"});
    EXPECT_EQ(tomex({"-r", "-a", "pos", "lib.a", "n3", "other.a"}).status, 0);
    EXPECT_EQ(names(), (Words{"a.o", "pos", "n3", "n1", "n2", "c.o"}));
}

TEST_F(InsertMerge, ArchiveIsKnownByItsContentsNotItsName) {
    otherLibrary({other("x.o")}, "sub/plain.o");
    EXPECT_TRUE(ended(tomex({"-rvc", "lib.a", "sub/plain.o"}), 0, "a - x.o\n", notElf("x.o")));
    EXPECT_EQ(names(), Words{"x.o"});
}

TEST_F(InsertMerge, EmptyArchiveAddsNothing) {
    folder.write("empty.a", "!<arch>\n");
    otherLibrary({}, "tables.a");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "empty.a", "tables.a"}), 0, "", creating()));
    EXPECT_EQ(archive().summary(), Words{emptyTable()});
    library("lib.a", {"a.o"});
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "empty.a"}), 0, "", ""));
    EXPECT_EQ(names(), Words{"a.o"});
}

TEST_F(InsertMerge, TablesOfTheOtherArchiveAreLeftBehind) {
    folder.write("other.a", ArchiveBuilder()
                                .add(other("a-name-of-many-letters.o"))
                                .add(other("x.o"))
                                .symbol("main", 1)
                                .bytes());
    library("lib.a", {"a.o"});
    EXPECT_EQ(tomex({"-r", "lib.a", "other.a"}).status, 0);
    EXPECT_EQ(names(), (Words{"a.o", "a-name-of-many-letters.o", "x.o"}));
    EXPECT_TRUE(archive().symbols.empty());
}

TEST_F(InsertMerge, DamagedArchiveIsAMemberLikeOthers) {
    const std::string good = ArchiveBuilder().add(other("x.o")).bytes();
    ArchiveBuilder badDate;
    badDate.add({.name = "x.o", .contents = "1", .rawDate = "yesterday   "});
    ArchiveBuilder badTable;
    badTable.add(other("x.o")).rawSymbolTable("12");
    ArchiveBuilder badPadding;
    badPadding.add({.name = "x.o", .contents = "1", .rawPadding = "!"});
    const std::vector<std::string> damaged = {
        good.substr(0, good.size() - 1), // the padding byte is gone
        good + "!",
        good.substr(0, 40),
        badDate.bytes(),
        badTable.bytes(),
        badPadding.bytes(),
        "!<arch>\r" + good.substr(8),
        "!<thin>\n" + good.substr(8),
        "!<arch>",
    };
    for (const std::string& bytes : damaged) {
        file("other.a", bytes, 33);
        EXPECT_TRUE(
            ended(tomex({"-rvc", "lib.a", "other.a"}), 0, "a - other.a\n", notElf("other.a")));
        EXPECT_EQ(archive().summary(), (Words{emptyTable(), added("other.a", 33, bytes.size())}));
        EXPECT_EQ(contents("other.a"), bytes);
        folder.remove("lib.a");
    }
}

TEST_F(InsertMerge, DamagedArchiveReplacesAndIsNormalisedLikeOtherFiles) {
    library("lib.a", {"other.a", "x.o"});
    folder.write("other.a", "!<arch>\n?");
    EXPECT_TRUE(ended(tomex({"--normalise=3", "-rv", "lib.a", "other.a"}), 0, "r - other.a\n",
                      notElf("other.a")));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "other.a 3 0 0 100644 9", kept("x.o")}));
}

TEST_F(InsertMerge, ArchiveMergedIntoItselfStaysTheSame) {
    library("lib.a", {"a.o", "b.o", "a.o", "a-name-of-many-letters.o"});
    EXPECT_EQ(tomex({"-s", "lib.a"}).status, 0);
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "lib.a"}), 0,
                      "r - a.o\nr - b.o\nr - a.o\nr - a-name-of-many-letters.o\n", notElf("a.o")));
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(InsertMerge, ArchiveCreatedOfItselfStaysTheSame) {
    library("lib.a", {"a.o", "b.o", "a.o"});
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"--create", "-v", "lib.a", "./lib.a"}), 0,
                      "a - a.o\na - b.o\na - a.o\n", notElf("a.o")));
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(InsertMerge, MembersAndFilesOfOneNameMeet) {
    library("lib.a", {"x.o"});
    otherLibrary({other("x.o", 900, "merged")});
    file("x.o", "file");
    EXPECT_TRUE(
        ended(tomex({"-rv", "lib.a", "other.a", "x.o"}), 0, "r - x.o\na - x.o\n", notElf("x.o")));
    const auto members = archive().plainMembers();
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(members[0].contents, "merged");
    EXPECT_EQ(members[1].contents, "file");
}

TEST_F(InsertMerge, LargeMembersTravelWhole) {
    std::string large(300001, 'x');
    for (size_t i = 0; i < large.size(); ++i) {
        large[i] = static_cast<char>(i % 251);
    }
    otherLibrary({other("small"), other("large", 900, large), other("last")});
    library("lib.a", {"a.o"});
    EXPECT_EQ(tomex({"-r", "-b", "a.o", "lib.a", "other.a"}).status, 0);
    EXPECT_EQ(names(), (Words{"small", "large", "last", "a.o"}));
    EXPECT_EQ(contents("large"), large);
    EXPECT_EQ(contents("last"), "other");
}

TEST_F(InsertMerge, NamelessMemberDoesNoHarm) {
    ArchiveBuilder nameless;
    nameless.add({.name = "x.o", .contents = "no name", .rawName = testsupport::padded("/", 16)});
    folder.write("other.a", ArchiveBuilder(nameless).withSymbolTable().bytes());
    library("lib.a", {"a.o"});
    EXPECT_EQ(tomex({"-r", "lib.a", "other.a"}).status, 0);
    EXPECT_EQ(contents("a.o"), "a.o.");
    EXPECT_EQ(archive().names().front(), "a.o");
}

} // namespace
} // namespace commandtest
