// Internal checks as users meet them: the option that chooses their level, and places that are the
// same whatever folder the program was built in.
#include "tests/command/command_case.h"
#include "tests/support/whole_file.h"

namespace commandtest {
namespace {

class InternalChecks : public CommandCase {
protected:
    InternalChecks() { library("lib.a", {"a.o"}); }
};

const std::string low = "COLD LOW checks enabled\n";
const std::string hot = "HOT LOW checks enabled\n";

TEST_F(InternalChecks, LevelIsTakenLastAndShownOnStandardError) {
    EXPECT_TRUE(ended(tomex({"--db_check=show", "-t", "lib.a", "no.o"}), 1, "",
                      low + hot + notPresent("Error", "no.o")));
    EXPECT_TRUE(ended(tomex({"--db_check", "show,medium", "-tt", "lib.a"}), 0, "a.o\n",
                      "Warning: L3920W: Option '-t' repeated in concatenated options '-tt'.\n" +
                          low + "COLD MEDIUM checks enabled\n" + hot));
    EXPECT_TRUE(ended(tomex({"--db_check=show", "--diag_style=ide", "-t", "lib.a"}), 0, "a.o\n",
                      low + hot));
}

TEST_F(InternalChecks, LastLevelWins) {
    EXPECT_TRUE(ended(tomex({"--db_check=show,high", "--db_check=show,none", "-t", "lib.a"}), 0,
                      "a.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--db_check=show,none", "--db_check=show", "-t", "lib.a"}), 0, "a.o\n",
                      low + hot));
}

TEST_F(InternalChecks, LevelIsNotReachedBehindTheVersionNumber) {
    EXPECT_TRUE(ended(tomex({"--db_check=show", "--version_number"}), 0,
                      tomex({"--version_number"}).output, ""));
}

// A fault's fingerprint is taken of its place, so no place may name the folder of the sources. (The
// sanitizers keep places of their own in the program, which do.)
TEST_F(InternalChecks, PlacesDoNotNameTheFolderOfTheSources) {
    const std::string bytes = testsupport::wholeFile(testsupport::tomexProgram());
    EXPECT_NE(bytes.find("arlib/interface/archive_member"), std::string::npos);
    for (const char* room : {"alloclib", "platform", "tabledrivenparser", "messages", "elfext",
                             "attributes", "arlib", "tomex"}) {
        const std::string place = std::string(TOMEX_SOURCE_FOLDER "/") + room + "/";
        EXPECT_TRUE(testsupport::sanitizedBuild || bytes.find(place) == std::string::npos) << place;
    }
}

} // namespace
} // namespace commandtest
