// The runner, with a program that does what it is told.
#include "tests/support/command_runner.h"

#include <gtest/gtest.h>

#include <sstream>

#include <unistd.h>

namespace testsupport {
namespace {

Command probe(const ScratchFolder& folder, std::vector<std::string> actions) {
    return tool(folder, TOMEX_HOST_CALL_PROBE, std::move(actions));
}

TEST(CommandRunner, GivesStatusAndBothStreams) {
    const ScratchFolder folder;
    const CommandResult result = run(probe(folder, {"echo:out", "echo-error:err", "exit:7"}));
    EXPECT_TRUE(result.exitedWith(7)) << result;
    EXPECT_FALSE(result.exitedWith(0));
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.error, "err\n");
}

TEST(CommandRunner, GivesTheSignalThatEndedIt) {
    const ScratchFolder folder;
    const CommandResult result = run(probe(folder, {"raise:15"}));
    EXPECT_EQ(result.signal, SIGTERM);
    EXPECT_EQ(result.status, -1);
    EXPECT_FALSE(result.timedOut);
    EXPECT_FALSE(result.exitedWith(-1));
}

TEST(CommandRunner, RunsInTheFolder) {
    const ScratchFolder folder;
    EXPECT_TRUE(run(probe(folder, {"write:made:12"})).exitedWith(0));
    EXPECT_EQ(folder.read("made"), "12");
}

TEST(CommandRunner, LooksProgramsUpOnPath) {
    const ScratchFolder folder;
    EXPECT_EQ(runTool(folder, "sh", {"-c", "echo \"$0\""}).output, "sh\n");
}

TEST(CommandRunner, ArgumentZeroIsFree) {
    const ScratchFolder folder;
    Command command = tool(folder, "sh", {"-c", "cat /proc/$$/cmdline | tr '\\0' ' '; :"});
    command.argumentZero = "another-name";
    EXPECT_TRUE(run(command).output.starts_with("another-name -c "));
}

TEST(CommandRunner, SaysWhyAProgramCannotStart) {
    const ScratchFolder folder;
    const CommandResult absent = runTool(folder, "./absent", {});
    EXPECT_EQ(absent.startFailure,
              "cannot start the program (./absent): No such file or directory");
    EXPECT_FALSE(absent.exitedWith(127));
    folder.write("text", "");
    EXPECT_EQ(runTool(folder, "./text", {}).startFailure,
              "cannot start the program (./text): Permission denied");
    Command command = probe(folder, {});
    command.folder = folder.pathOf("absent");
    EXPECT_NE(run(command).startFailure.find("cannot enter the folder"), std::string::npos);
}

TEST(CommandRunner, LocaleAndTimeZoneAreFixed) {
    const ScratchFolder folder;
    const CommandResult result = run(probe(folder, {"variable:TZ", "variable:LC_ALL"}));
    EXPECT_EQ(result.output, "UTC\nC\n");
}

TEST(CommandRunner, EnvironmentCanBeAddedAndTakenAway) {
    const ScratchFolder folder;
    Command command = probe(folder, {"variable:TZ", "variable:LC_ALL", "variable:MADE_UP"});
    command.environment = {{"TZ", "EST5"}, {"LC_ALL", std::nullopt}, {"MADE_UP", "x"}};
    EXPECT_EQ(run(command).output, "EST5\n(unset)\nx\n");
}

TEST(CommandRunner, FeedsTheStandardInput) {
    const ScratchFolder folder;
    Command command = probe(folder, {"input"});
    command.input = "typed";
    EXPECT_EQ(run(command).output, "input typed\n");
    command.input = "";
    EXPECT_EQ(run(command).output, "input \n");
    command.inputClosed = true;
    EXPECT_EQ(run(command).output, "input closed\n");
}

TEST(CommandRunner, LargeOutputComesWhole) {
    const ScratchFolder folder;
    const CommandResult result =
        runTool(folder, "sh", {"-c", "head -c 3000000 /dev/zero; head -c 2000000 /dev/zero >&2"});
    EXPECT_EQ(result.output.size(), 3000000U);
    EXPECT_EQ(result.error.size(), 2000000U);
}

TEST(CommandRunner, OutputCanGoToAFile) {
    const ScratchFolder folder;
    Command command = probe(folder, {"echo:text"});
    command.output = Stream::File;
    command.outputFile = "log";
    EXPECT_EQ(run(command).output, "");
    EXPECT_EQ(folder.read("log"), "text\n");
}

TEST(CommandRunner, OutputCanMeetAFullDisk) {
    const ScratchFolder folder;
    Command command = tool(folder, "sh", {"-c", "echo text; echo $? >&2"});
    command.output = Stream::File;
    command.outputFile = "/dev/full";
    const CommandResult result = run(command);
    EXPECT_TRUE(result.error.ends_with("1\n")) << result;
}

TEST(CommandRunner, OutputCanBeAPipeThatNobodyReads) {
    const ScratchFolder folder;
    Command command = probe(folder, {"echo:text"});
    command.output = Stream::ClosedPipe;
    EXPECT_EQ(run(command).signal, SIGPIPE);
    command.ignoredSignals = {SIGPIPE};
    EXPECT_TRUE(run(command).exitedWith(0));
}

TEST(CommandRunner, OutputCanBeClosed) {
    const ScratchFolder folder;
    Command command = tool(folder, "sh", {"-c", "readlink /proc/$$/fd/1 || echo none >&2"});
    command.output = Stream::Closed;
    EXPECT_TRUE(run(command).error.ends_with("none\n"));
    command.output = Stream::Discard;
    EXPECT_EQ(run(command).error, "");
}

TEST(CommandRunner, WatchdogKillsWhatDoesNotEnd) {
    const ScratchFolder folder;
    Command command = probe(folder, {"echo:started", "wait"});
    command.watchdog = std::chrono::seconds{0};
    const CommandResult result = run(command);
    EXPECT_TRUE(result.timedOut);
    EXPECT_EQ(result.signal, SIGKILL);
    EXPECT_NE(result.describe().find("killed by the watchdog"), std::string::npos);
}

TEST(CommandRunner, ChildrenLeftBehindHoldUpNobody) {
    const ScratchFolder folder;
    const CommandResult result = runTool(folder, "sh", {"-c", "tail -f /dev/null & echo done"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.output, "done\n");
}

TEST(CommandRunner, SignalIsSentWhenTheFileAppears) {
    const ScratchFolder folder;
    Command command = probe(folder, {"guard", "write:guarded:x", "wait"});
    command.signalOnFile = SignalOnFile{SIGTERM, "guarded"};
    const CommandResult result = run(command);
    EXPECT_TRUE(result.signalSent);
    EXPECT_TRUE(result.exitedWith(3)) << result;
    EXPECT_FALSE(folder.exists("guarded"));
    Command other = probe(folder, {"guard", "write:other:x"});
    other.signalOnFile = SignalOnFile{SIGTERM, "guarded"};
    const CommandResult otherResult = run(other);
    EXPECT_FALSE(otherResult.signalSent);
    EXPECT_TRUE(otherResult.exitedWith(0)) << otherResult;
}

TEST(CommandRunner, FilesCanBeLimitedInSize) {
    const ScratchFolder folder;
    Command command = probe(folder, {"write:x:12345678", "write:y:123"});
    command.fileSizeLimit = 5;
    EXPECT_EQ(run(command).output, "open ok\nwrite 5\nclose ok\nopen ok\nwrite 3\nclose ok\n");
    command.fileSizeLimit = 0;
    command.arguments = {"write:x:12345678"};
    EXPECT_EQ(run(command).output, "open ok\nwrite EFBIG\nclose ok\n");
}

TEST(CommandRunner, FilesAndMaskCanBeLimited) {
    const ScratchFolder folder;
    Command command = probe(folder, {"write:x:1"});
    command.fileCreationMask = 0077;
    EXPECT_TRUE(run(command).exitedWith(0));
    EXPECT_EQ(folder.mode("x"), 0600U);
    command.openFilesLimit = 3;
    const CommandResult result = run(tool(folder, "sh", {"-c", "ulimit -n"}));
    EXPECT_NE(result.output, "3\n");
    command.program = "sh";
    command.arguments = {"-c", "ulimit -n"};
    command.openFilesLimit = 20;
    EXPECT_EQ(run(command).output, "20\n");
}

TEST(CommandRunner, PeakMemoryIsMeasured) {
    const ScratchFolder folder;
    const CommandResult result = run(probe(folder, {"memory:200"}));
    EXPECT_EQ(result.output, "memory 1\n");
    EXPECT_GE(result.peakMemory, uint64_t{200} << 20);
    EXPECT_GT(result.peakFloor, 0U);
    if (!sanitizedBuild) {
        EXPECT_LT(result.peakMemory, uint64_t{300} << 20);
        EXPECT_LT(run(probe(folder, {})).peakMemory, uint64_t{100} << 20);
    }
}

TEST(CommandRunner, MemoryCanBeLimited) {
    // A shell stands in for the probe, which a sanitizer would give an address space of terabytes.
    const ScratchFolder folder;
    Command command = tool(folder, "sh", {"-c", "ulimit -v"});
    command.memoryLimit = uint64_t{512} << 20;
    EXPECT_EQ(run(command).output, "524288\n");
}

TEST(CommandRunner, CanBecomeAnUnprivilegedUser) {
    const ScratchFolder folder;
    folder.makeFolder("closed");
    folder.setMode("closed", 0755);
    Command command = probe(folder, {"user", "write:closed/x:1", "write:x:1"});
    command.unprivileged = true;
    const CommandResult result = run(command);
    if (::geteuid() == 0) {
        EXPECT_EQ(result.output, "65534 65534\nopen EACCES\nopen ok\nwrite 1\nclose ok\n")
            << result;
        folder.giveToUnprivilegedUser();
        EXPECT_NE(run(command).output.find("65534 65534\nopen ok"), std::string::npos);
    } else {
        EXPECT_NE(result.output.find("write 1\nclose ok\nopen ok"), std::string::npos);
    }
}

TEST(CommandRunner, AnUnprivilegedRunNeedsNoWayToTheProgram) {
    const ScratchFolder folder;
    const ScratchFolder elsewhere;
    std::ostringstream copy;
    EXPECT_TRUE(
        runTool(folder, "cp", {TOMEX_HOST_CALL_PROBE, elsewhere.pathOf("p")}).exitedWith(0));
    elsewhere.setMode(".", 0700);
    Command command = tool(folder, elsewhere.pathOf("p"), {"echo:there"});
    command.unprivileged = true;
    EXPECT_EQ(run(command).output, "there\n");
}

TEST(CommandRunner, SanitizerErrorsHaveAStatusOfTheirOwn) {
    const ScratchFolder folder;
    const CommandResult result = run(probe(folder, {"overrun"}));
    if (sanitizedBuild) {
        EXPECT_EQ(result.status, sanitizerStatus) << result;
        EXPECT_NE(result.error.find("AddressSanitizer"), std::string::npos);
    } else {
        EXPECT_EQ(result.error, "");
    }
}

TEST(CommandRunner, DescribesARunForPeople) {
    const ScratchFolder folder;
    const std::string text =
        run(tool(folder, "sh", {"-c", "printf 'a\\n\\001'; exit 4"})).describe();
    EXPECT_EQ(text, "command: sh -c printf 'a\\n\\001'; exit 4\nstatus: 4\n"
                    "standard output:\n  a\\n\n  \\x01\nstandard error:\n  \n");
}

TEST(CommandRunner, KnowsTheProgramUnderTest) {
    EXPECT_EQ(::access(tomexProgram().c_str(), X_OK), 0);
    const ScratchFolder folder;
    const Command command = tomex(folder, {"-t", "lib.a"});
    EXPECT_EQ(command.argumentZero, "tomex");
    EXPECT_EQ(command.program, tomexProgram());
}

} // namespace
} // namespace testsupport
