// Runs that are stopped from outside at every point: by a signal that asks the program to end, or
// by one that gives it no chance.
#include "tests/command/fault_case.h"

#include <csignal>

namespace commandtest {
namespace {

class Interruption : public FaultCase {
protected:
    void SetUp() override {
        setScene();
        m_calls = callsOf();
        ASSERT_TRUE(tomex(rebuild()).exitedWith(0));
        m_newBytes = folder.read("lib.a");
        setScene();
    }
    // 0 for the old archive, 1 for the new one; anything else is a failure.
    int archiveState() const {
        const std::string bytes = folder.exists("lib.a") ? folder.read("lib.a") : "";
        EXPECT_TRUE(bytes == oldBytes() || bytes == m_newBytes);
        return bytes == m_newBytes ? 1 : 0;
    }
    // Interrupts the run at every call of it, and looks at what that leaves.
    void interruptEverywhere(int number) {
        int seen[2] = {0, 0};
        for (const LoggedCall& call : m_calls) {
            SCOPED_TRACE(call.call + " of " + call.path);
            setScene();
            const CommandResult result = with({atCall(call) + ":signal=" + std::to_string(number)});
            EXPECT_EQ(result.signal, number) << result;
            ++seen[archiveState()];
            EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a"}));
        }
        EXPECT_GT(seen[0], 0);
        EXPECT_GT(seen[1], 0);
    }

    Calls m_calls;
    std::string m_newBytes;
};

TEST_F(Interruption, InterruptTakesTheTemporaryFileWithIt) {
    interruptEverywhere(SIGINT);
}

TEST_F(Interruption, TerminationTakesTheTemporaryFileWithIt) {
    interruptEverywhere(SIGTERM);
}

TEST_F(Interruption, LostTerminalTakesTheTemporaryFileWithIt) {
    interruptEverywhere(SIGHUP);
}

TEST_F(Interruption, KillLeavesTheOldArchiveOrTheNewOne) {
    int seen[2] = {0, 0};
    int leftOver = 0;
    for (const LoggedCall& call : m_calls) {
        SCOPED_TRACE(call.call + " of " + call.path);
        setScene();
        const CommandResult result = with({atCall(call) + ":abort"});
        EXPECT_EQ(result.signal, SIGKILL) << result;
        ++seen[archiveState()];
        // The next run works whatever the killed one left.
        leftOver += folder.exists("lib.a.0") ? 1 : 0;
        EXPECT_TRUE(ended(tomex(rebuild()), 0, "", rebuilt("")));
        EXPECT_EQ(archiveState(), 1);
    }
    EXPECT_GT(seen[0], 0);
    EXPECT_GT(seen[1], 0);
    EXPECT_GT(leftOver, 0);
}

TEST_F(Interruption, IgnoredSignalsStayIgnored) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        setScene();
        Command command = testsupport::tomex(folder, rebuild());
        command.ignoredSignals = {number};
        command.faults = {"@open:path=lib.a.0:nth=1:signal=" + std::to_string(number),
                          "@write:path=lib.a.0:nth=1:signal=" + std::to_string(number)};
        EXPECT_TRUE(ended(testsupport::run(command), 0, "", rebuilt("")));
        EXPECT_EQ(archiveState(), 1);
    }
}

TEST_F(Interruption, NewArchiveIsThereWholeOrNotAtAll) {
    const Words words = {"-r", "new.a", "a.o", "c.o"};
    const Calls calls = callsOf(words);
    ASSERT_TRUE(tomex(words).exitedWith(0));
    const std::string whole = folder.read("new.a");
    for (const LoggedCall& call : calls) {
        SCOPED_TRACE(call.call + " of " + call.path);
        setScene();
        const CommandResult result = with({atCall(call) + ":signal=TERM"}, words);
        EXPECT_EQ(result.signal, SIGTERM) << result;
        EXPECT_TRUE(!folder.exists("new.a") || folder.read("new.a") == whole);
        EXPECT_FALSE(folder.exists("new.a.0"));
    }
}

TEST_F(Interruption, TakenTemporaryNamesAreNotRemoved) {
    folder.write("lib.a.0", "mine");
    const CommandResult result = with({"@write:path=lib.a.1:nth=1:signal=INT"});
    EXPECT_EQ(result.signal, SIGINT) << result;
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a", "lib.a.0"}));
    EXPECT_EQ(folder.read("lib.a.0"), "mine");
    EXPECT_EQ(archiveState(), 0);
}

TEST_F(Interruption, SignalBetweenRemovingAndRenamingLeavesTheNewArchiveSomewhere) {
    // Where a host does not replace by renaming there is a moment without an archive.
    const CommandResult result =
        with({"@rename:path=lib.a.0:nth=1:errno=EEXIST", "@remove:path=lib.a:nth=1:signal=TERM"});
    EXPECT_EQ(result.signal, SIGTERM) << result;
    ASSERT_TRUE(folder.exists("lib.a"));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes() || folder.read("lib.a") == m_newBytes);
    EXPECT_FALSE(folder.exists("lib.a.0"));
}

TEST_F(Interruption, ExtractingRunDiesOfTheSignalAndLeavesTheArchive) {
    const Words words = {"-x", "lib.a", "large"};
    for (const LoggedCall& call : callsOf(words)) {
        SCOPED_TRACE(call.call + " of " + call.path);
        setScene();
        EXPECT_EQ(with({atCall(call) + ":signal=TERM"}, words).signal, SIGTERM);
        EXPECT_EQ(archiveState(), 0);
    }
}

} // namespace
} // namespace commandtest
