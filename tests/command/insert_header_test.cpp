// Header fields and names that are unusual: numbers wider than their fields, names that are no
// plain text.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class InsertHeader : public CommandCase {
protected:
    void own(const std::string& name, uid_t user, gid_t group) const {
        ASSERT_EQ(::chown(folder.pathOf(name).c_str(), user, group), 0);
    }
    void SetUp() override { file("a.o", "abc"); }

    // Only the superuser can give files away.
    static bool mayGiveAway() { return ::geteuid() == 0; }
    std::string headerField(size_t offset, size_t width) const {
        return archive().plainMembers().at(0).header.substr(offset, width);
    }
};

TEST_F(InsertHeader, OwnersNumbersAreTaken) {
    if (!mayGiveAway()) {
        GTEST_SKIP() << "only the superuser can give files away";
    }
    own("a.o", 1234, 999999);
    EXPECT_EQ(tomex({"-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "a.o 1000 1234 999999 100644 3"}));
}

TEST_F(InsertHeader, NumberWiderThanItsFieldIsCutOnTheRight) {
    if (!mayGiveAway()) {
        GTEST_SKIP() << "only the superuser can give files away";
    }
    own("a.o", 1234567, 87654321);
    EXPECT_EQ(tomex({"-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(headerField(28, 6), "123456");
    EXPECT_EQ(headerField(34, 6), "876543");
    EXPECT_EQ(headerField(40, 8), "100644  ");
    EXPECT_EQ(contents("a.o"), "abc");
}

TEST_F(InsertHeader, OwnerBeyondSignedNumbersCannotBeAdded) {
    if (!mayGiveAway()) {
        GTEST_SKIP() << "only the superuser can give files away";
    }
    own("a.o", 0x80000000U, 1);
    const CommandResult result = tomex({"-r", "lib.a", "a.o"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file 'lib.a' : ")) << result;
    EXPECT_FALSE(folder.exists("lib.a"));
}

TEST_F(InsertHeader, DateBeyond32BitsIsCut) {
    folder.setTime("a.o", 5000000000);
    EXPECT_EQ(tomex({"-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(headerField(16, 12),
              testsupport::padded(std::to_string(5000000000 % (1LL << 32)), 12));
}

TEST_F(InsertHeader, LatestDateOf32BitsIsKept) {
    folder.setTime("a.o", 4294967295);
    EXPECT_EQ(tomex({"-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(headerField(16, 12), "4294967295  ");
}

TEST_F(InsertHeader, HeaderOfAKeptMemberIsWrittenAsItWasRead) {
    folder.write("lib.a", ArchiveBuilder()
                              .add({.name = "x",
                                    .contents = "1",
                                    .date = 4294967295,
                                    .uid = 999999,
                                    .gid = 999999,
                                    .mode = 07777777})
                              .bytes());
    EXPECT_EQ(tomex({"-r", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), "x 4294967295 999999 999999 7777777 1", added("a.o", 1000, 3)}));
}

TEST_F(InsertHeader, NamesAreShownAsTextWhateverTheyHold) {
    for (const auto& [name, shown] :
         std::vector<std::pair<std::string, std::string>>{{"%s%n.o", "%s%n.o"},
                                                          {"a b'.o", "a b'.o"},
                                                          {"\x1b[1m", "\\033[1m"},
                                                          {"a\r", "a\\015"},
                                                          {"a\tb", "a\tb"},
                                                          {"\x7f", "\\177"}}) {
        file(name, "x");
        EXPECT_TRUE(ended(tomex({"-rvc", "lib.a", name}), 0, "a - " + shown + "\n", notElf(shown)));
        EXPECT_EQ(names(), Words{name});
        folder.remove("lib.a");
    }
}

TEST_F(InsertHeader, NamesBeyondAsciiAreKeptAndShownInTheUsersCharacterSet) {
    const std::string name = "\xc3\xa9.o";
    file(name, "x");
    Command command = testsupport::tomex(folder, {"-rvc", "lib.a", name});
    command.environment["LC_ALL"] = "C.UTF-8";
    EXPECT_TRUE(ended(testsupport::run(command), 0, "a - " + name + "\n", notElf(name)));
    EXPECT_EQ(names(), Words{name});
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "?.o\n", "")); // plain ASCII lacks the letter
    folder.remove(name);
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_EQ(folder.read(name), "x");
}

TEST_F(InsertHeader, NameWithABlankOrOddEndIsRead) {
    for (const char* name : {" x", "x ", "a b", ".", "..."}) {
        library("lib.a", {name});
        file("a.o", "abc");
        EXPECT_EQ(tomex({"-r", "lib.a", "a.o"}).status, 0);
        EXPECT_EQ(names(), (Words{name, "a.o"}));
    }
}

} // namespace
} // namespace commandtest
