// Printing members to standard output.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class Print : public CommandCase {};

TEST_F(Print, BytesComeAsTheyAre) {
    std::string bytes;
    for (int i = 0; i < 512; ++i) {
        bytes += static_cast<char>(i);
    }
    folder.write("lib.a", ArchiveBuilder().add("a.o", bytes).add("b.o", "\nend").bytes());
    EXPECT_TRUE(ended(tomex({"-p", "lib.a"}), 0, bytes + "\nend", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "a.o"}), 0, bytes, ""));
}

TEST_F(Print, VerboseNamesEachMember) {
    library("lib.a", {"a.o", "b.o"});
    EXPECT_TRUE(ended(tomex({"-pv", "lib.a"}), 0, "\n<a.o>\n\na.o.\n<b.o>\n\nb.o.", ""));
}

TEST_F(Print, MembersComeInTheOrderOfTheWords) {
    library("lib.a", {"a.o", "b.o", "c.x"});
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "C.X", "dir/*.o", "a.o"}), 0, "c.x.a.o.b.o.a.o.", ""));
}

TEST_F(Print, AllMembersOfOneNameArePrinted) {
    folder.write("lib.a", ArchiveBuilder().add("x", "1").add("y", "2").add("X", "3").bytes());
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "x"}), 0, "13", ""));
}

TEST_F(Print, TablesAreNotPrinted) {
    folder.write("lib.a",
                 ArchiveBuilder().add(made("a-name-of-many-letters.o")).symbol("main", 0).bytes());
    EXPECT_TRUE(ended(tomex({"-p", "lib.a"}), 0, "a-name-of-many-letters.o.", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "*"}), 0, "a-name-of-many-letters.o.", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", ""}), 1, "", notPresent("Error", "")));
}

TEST_F(Print, AbsentMemberIsAnErrorAndTheOthersArePrinted) {
    library("lib.a", {"a.o"});
    EXPECT_TRUE(
        ended(tomex({"-p", "lib.a", "none", "a.o"}), 1, "a.o.", notPresent("Error", "none")));
}

TEST_F(Print, NothingInAnArchiveWithoutMembers) {
    folder.write("lib.a", "!<arch>\n");
    EXPECT_TRUE(ended(tomex({"-pv", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "*"}), 1, "", notPresent("Error", "*")));
}

TEST_F(Print, EmptyMemberPrintsNothing) {
    folder.write("lib.a", ArchiveBuilder().add("empty", "").add("full", "x").bytes());
    EXPECT_TRUE(ended(tomex({"-pv", "lib.a"}), 0, "\n<empty>\n\n\n<full>\n\nx", ""));
}

TEST_F(Print, LargeMemberIsPrintedWhole) {
    const std::string large(3000001, '\xff');
    folder.write("lib.a", ArchiveBuilder().add("large", large).add("b", "b").bytes());
    const CommandResult result = tomex({"-p", "lib.a"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output == large + "b");
}

TEST_F(Print, GoesIntoAFileAsItIs) {
    library("lib.a", {"a.o", "b.o"});
    Command command = testsupport::tomex(folder, {"-p", "lib.a", "b.o"});
    command.output = Stream::File;
    command.outputFile = folder.pathOf("out");
    EXPECT_EQ(testsupport::run(command).status, 0);
    EXPECT_EQ(folder.read("out"), "b.o.");
}

} // namespace
} // namespace commandtest
