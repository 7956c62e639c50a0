// Failures of the host while members are extracted or printed. The archive that is read must never
// suffer.
#include "tests/command/fault_case.h"

#include <cerrno>

#include <sys/stat.h>

namespace commandtest {
namespace {

std::string cannotWrite(const std::string& member, int error) {
    return "Error: L6843E: Writing file '" + member + "' : " + std::strerror(error) + "\n";
}

class FileFailureExtract : public FaultCase {
protected:
    void SetUp() override {
        setScene();
        folder.remove("a.o");
        folder.remove("c.o");
    }
    void expectArchive() const { EXPECT_TRUE(folder.read("lib.a") == oldBytes()); }
    CommandResult extract(const std::vector<std::string>& rules) const {
        return with(rules, {"-xv", "lib.a"});
    }
    CommandResult unprivileged() const {
        Command command = testsupport::tomex(folder, {"-x", "lib.a", "a.o", "large"});
        command.unprivileged = true;
        return testsupport::run(command);
    }
    static constexpr char allLines[] = "x - a.o\nx - b-is-a-long-name.o\nx - large\n";
};

TEST_F(FileFailureExtract, FullDiskRemovesTheFileAndGoesOn) {
    EXPECT_TRUE(
        ended(extract({"@write:path=a.o:errno=ENOSPC"}), 1, allLines, cannotWrite("a.o", ENOSPC)));
    EXPECT_EQ(folder.entries(), (Words{"b-is-a-long-name.o", "large", "lib.a"}));
    EXPECT_TRUE(folder.read("large") == large('l'));
    expectArchive();
}

TEST_F(FileFailureExtract, FullDiskInALargeMember) {
    EXPECT_TRUE(ended(
        extract({"@write:path=large:nth=1:short=7000", "@write:path=large:nth=2+:errno=ENOSPC"}), 1,
        allLines, cannotWrite("large", ENOSPC)));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "b-is-a-long-name.o", "lib.a"}));
    expectArchive();
}

TEST_F(FileFailureExtract, FileMayNotGrowSoLarge) {
    Command command = testsupport::tomex(folder, {"-x", "lib.a"});
    command.fileSizeLimit = 50000;
    EXPECT_TRUE(ended(testsupport::run(command), 1, "", cannotWrite("large", EFBIG)));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "b-is-a-long-name.o", "lib.a"}));
}

TEST_F(FileFailureExtract, FailedCloseRemovesTheFile) {
    EXPECT_TRUE(
        ended(extract({"@close:path=a.o:errno=EIO"}), 1, allLines, cannotWrite("a.o", EIO)));
    EXPECT_FALSE(folder.exists("a.o"));
    expectArchive();
}

TEST_F(FileFailureExtract, FolderCannotBeWritten) {
    folder.giveToUnprivilegedUser();
    folder.setMode(".", 0555);
    EXPECT_TRUE(
        ended(unprivileged(), 1, "", cannotWrite("a.o", EACCES) + cannotWrite("large", EACCES)));
    EXPECT_EQ(folder.entries(), Words{"lib.a"});
}

TEST_F(FileFailureExtract, ExistingFileCannotBeWritten) {
    file("a.o", "mine");
    folder.giveToUnprivilegedUser();
    folder.setMode("a.o", 0444);
    EXPECT_TRUE(ended(unprivileged(), 1, "", cannotWrite("a.o", EACCES)));
    EXPECT_EQ(folder.read("a.o"), "mine");
    EXPECT_TRUE(folder.read("large") == large('l'));
}

TEST_F(FileFailureExtract, FolderOfThatName) {
    folder.write("a.o/file", "mine");
    EXPECT_TRUE(ended(tomex({"-xv", "lib.a"}), 1, "x - b-is-a-long-name.o\nx - large\n",
                      cannotWrite("a.o", EISDIR)));
    EXPECT_EQ(folder.read("a.o/file"), "mine");
}

TEST_F(FileFailureExtract, PipeOfThatNameIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(folder.pathOf("a.o").c_str(), 0666), 0);
    Command command = testsupport::tomex(folder, {"-x", "lib.a"});
    command.watchdog = std::chrono::seconds(20);
    const CommandResult result = testsupport::run(command);
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6843E: Writing file 'a.o' : ")) << result;
    EXPECT_TRUE(folder.read("large") == large('l'));
}

TEST_F(FileFailureExtract, MemberNamedLikeTheArchiveDoesNotOverwriteIt) {
    library("lib.a", {"a.o", "lib.a", "b.o"});
    const std::string before = folder.read("lib.a");
    folder.makeSymbolicLink("b.o", "lib.a");
    const CommandResult result = tomex({"-xv", "lib.a"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6843E: Writing file 'lib.a' : ")) << result;
    EXPECT_NE(result.error.find("Error: L6843E: Writing file 'b.o' : "), std::string::npos)
        << result;
    EXPECT_EQ(result.output, "x - a.o\n");
    EXPECT_EQ(folder.read("lib.a"), before);
    EXPECT_EQ(folder.read("a.o"), "a.o.");
}

TEST_F(FileFailureExtract, OtherNameOfTheArchiveDoesNotOverwriteIt) {
    library("lib.a", {"other.a"});
    ASSERT_EQ(::link(folder.pathOf("lib.a").c_str(), folder.pathOf("other.a").c_str()), 0);
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(tomex({"-x", "./lib.a"}).exitedWith(1));
    EXPECT_EQ(folder.read("lib.a"), before);
    EXPECT_EQ(folder.read("other.a"), before);
}

TEST_F(FileFailureExtract, ContentsThatCannotBeReadLeaveAnEmptyFile) {
    for (const char* member : {"a.o", "large"}) {
        SetUp();
        Command logged = testsupport::tomex(folder, {"-x", "lib.a", member});
        logged.faultLog = folder.pathOf("log");
        EXPECT_TRUE(testsupport::run(logged).exitedWith(0));
        const Calls calls = testsupport::readFaultLog(logged.faultLog);
        SetUp();
        const std::string rule = atCallAfter(calls, "open", member, "open", "lib.a");
        EXPECT_TRUE(
            ended(with({rule + ":errno=EACCES"}, {"-x", "lib.a", member}), 1, "", reading(EACCES)));
        EXPECT_EQ(folder.size(member), 0U);
        expectArchive();
    }
}

TEST_F(FileFailureExtract, ArchiveThatShrinksMeanwhile) {
    const CommandResult result = extract({"@open:path=large:truncate=lib.a,1000"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file 'lib.a' : ")) << result;
    EXPECT_EQ(result.output, allLines);
    EXPECT_EQ(folder.size("large"), 0U);
    EXPECT_EQ(folder.read("a.o"), "a.o.");
}

TEST_F(FileFailureExtract, PrintedMemberThatCannotBeReadIsAnError) {
    const Words words = {"-pv", "lib.a", "a.o", "large"};
    const std::string rule = atCallAfter(callsOf(words), "access", "lib.a", "write", "stdout");
    const CommandResult result = with({rule + ":truncate=lib.a,1000"}, words);
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file 'lib.a' : ")) << result;
    EXPECT_TRUE(result.output.ends_with("\n<large>\n\n")) << result;
}

} // namespace
} // namespace commandtest
