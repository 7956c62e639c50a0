// Which files replace a member: by date under -u and --new_files_only, and what --normalise writes.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

// Members made by library() are of second 500.
class InsertUpdate : public CommandCase {
protected:
    InsertUpdate() { library("lib.a", {"a.o", "b.o"}); }

    testing::AssertionResult replaced(const Words& options) const { return ran(options, true); }
    testing::AssertionResult skipped(const Words& options) const { return ran(options, false); }

    static constexpr int64_t memberDate = 500;

private:
    testing::AssertionResult ran(Words words, bool isReplaced) const {
        library("lib.a", {"a.o", "b.o"});
        words.insert(words.end(), {"-rv", "lib.a", "a.o"});
        testing::AssertionResult result =
            ended(tomex(words), 0, isReplaced ? "r - a.o\n" : "", notElf("a.o"));
        const std::string expected = isReplaced ? added("a.o", folder.time("a.o"), 3) : kept("a.o");
        if (result && archive().summary()[1] != expected) {
            result = testing::AssertionFailure() << "the member is " << archive().summary()[1];
        }
        return result;
    }
};

TEST_F(InsertUpdate, EveryFileReplacesWithoutTheOptions) {
    for (const int64_t date : {memberDate - 1, memberDate, memberDate + 1}) {
        file("a.o", "new", date);
        EXPECT_TRUE(replaced({})) << date;
    }
}

TEST_F(InsertUpdate, NoOlderFileReplacesUnderUpdate) {
    file("a.o", "new", memberDate - 1);
    EXPECT_TRUE(skipped({"-u"}));
    file("a.o", "new", memberDate);
    EXPECT_TRUE(replaced({"-u"}));
    file("a.o", "new", memberDate + 1);
    EXPECT_TRUE(replaced({"-u"}));
}

TEST_F(InsertUpdate, OnlyNewerFileReplacesUnderNewFilesOnly) {
    for (const Words& options : std::vector<Words>{
             {"--new_files_only"}, {"-u", "--new_files_only"}, {"--new_files_only", "-u"}}) {
        file("a.o", "new", memberDate - 1);
        EXPECT_TRUE(skipped(options));
        file("a.o", "new", memberDate);
        EXPECT_TRUE(skipped(options));
        file("a.o", "new", memberDate + 1);
        EXPECT_TRUE(replaced(options));
    }
}

TEST_F(InsertUpdate, DateZeroOfAFileAlwaysReplaces) {
    file("a.o", "new", 0);
    EXPECT_TRUE(replaced({"-u"}));
    EXPECT_TRUE(replaced({"--new_files_only"}));
}

TEST_F(InsertUpdate, NewMembersAreAddedWhateverTheirDate) {
    file("c.o", "new", 1);
    EXPECT_TRUE(ended(tomex({"-ruv", "lib.a", "c.o"}), 0, "a - c.o\n", notElf("c.o")));
    file("d.o", "new", 1);
    EXPECT_TRUE(
        ended(tomex({"--new_files_only", "-rv", "lib.a", "d.o"}), 0, "a - d.o\n", notElf("d.o")));
    EXPECT_EQ(names(), (Words{"a.o", "b.o", "c.o", "d.o"}));
}

TEST_F(InsertUpdate, SkippedMemberCanBeReplacedLaterInTheRun) {
    file("a.o", "old", memberDate - 1);
    file("sub/a.o", "new", memberDate + 1);
    EXPECT_TRUE(ended(tomex({"-ruv", "lib.a", "a.o", "sub/a.o"}), 0, "r - a.o\n", notElf("a.o")));
    EXPECT_EQ(names(), (Words{"a.o", "b.o"}));
    EXPECT_EQ(contents("a.o"), "new");
}

TEST_F(InsertUpdate, EachFileIsWeighedAgainstItsOwnMember) {
    file("a.o", "new", memberDate - 1);
    file("b.o", "new", memberDate + 1);
    EXPECT_TRUE(ended(tomex({"-ruv", "lib.a", "a.o", "b.o"}), 0, "r - b.o\n", notElf("a.o")));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o"), added("b.o", 501, 3)}));
}

TEST_F(InsertUpdate, UpdateMattersToInsertAlone) {
    EXPECT_TRUE(ended(tomex({"-tu", "lib.a"}), 0, "a.o\nb.o\n", ""));
    EXPECT_TRUE(ended(tomex({"-dvu", "lib.a", "b.o"}), 0, "d - b.o\n", ""));
}

TEST_F(InsertUpdate, NormaliseSetsAllHeaderFieldsOfAddedFiles) {
    file("x.o", "abc", 77);
    folder.setMode("x.o", 0755);
    EXPECT_TRUE(ended(tomex({"--normalise=1000000000", "-rv", "lib.a", "x.o"}), 0, "a - x.o\n",
                      notElf("x.o")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("a.o"), kept("b.o"), "x.o 1000000000 0 0 100644 3"}));
}

TEST_F(InsertUpdate, NormaliseSetsAllHeaderFieldsOfReplacedFiles) {
    file("a.o", "abc", 77);
    EXPECT_EQ(tomex({"--normalise=1", "-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "a.o 1 0 0 100644 3", kept("b.o")}));
}

TEST_F(InsertUpdate, NormaliseLeavesSkippedMembersAlone) {
    file("a.o", "abc", memberDate - 1);
    EXPECT_EQ(tomex({"--normalise=1", "-ru", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o"), kept("b.o")}));
}

TEST_F(InsertUpdate, NormaliseKeepsThePosition) {
    file("x.o", "abc", 77);
    EXPECT_EQ(tomex({"--normalise=1", "-r", "-a", "a.o", "lib.a", "x.o"}).status, 0);
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), kept("a.o"), "x.o 1 0 0 100644 3", kept("b.o")}));
}

TEST_F(InsertUpdate, UpdateComparesTheFilesOwnDateNotTheNormalisedOne) {
    file("a.o", "abc", memberDate - 1);
    EXPECT_TRUE(ended(tomex({"--normalise=100000", "-ruv", "lib.a", "a.o"}), 0, "", notElf("a.o")));
    EXPECT_EQ(contents("a.o"), "a.o.");
}

TEST_F(InsertUpdate, DateBeforeTheEpochCannotBeAdded) {
    file("x.o", "abc", -5);
    const CommandResult result = tomex({"-r", "lib.a", "x.o"});
    EXPECT_EQ(result.status, 1) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file 'lib.a' : ")) << result;
    EXPECT_EQ(names(), (Words{"a.o", "b.o"}));
}

} // namespace
} // namespace commandtest
