// Output that nobody gets: the run ends as it would, but with status 1, and says what the standard
// output lost while somebody can still be told.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class LostOutput : public CommandCase {
protected:
    LostOutput() {
        ArchiveBuilder builder;
        builder.add(made("a.o")).add({.name = "large", .contents = std::string(100000, 'l')});
        folder.write("lib.a", builder.bytes());
    }

    // Each way in which a run prints something that it was asked for.
    static std::vector<Words> printingRuns() {
        return {{"-t", "lib.a"},
                {"-tv", "lib.a"},
                {"-p", "lib.a", "a.o"},
                {"-p", "lib.a", "large"},
                {"-p", "lib.a"},
                {"-pv", "lib.a", "large"},
                {"-xv", "lib.a"},
                {"--help"},
                {"--vsn"},
                {"--version_number"},
                {}};
    }

    CommandResult printing(const Words& words, Stream output) const {
        Command command = testsupport::tomex(folder, words);
        command.output = output;
        command.outputFile = "/dev/full";
        return testsupport::run(command);
    }
    CommandResult complaining(const Words& words, Stream error) const {
        Command command = testsupport::tomex(folder, words);
        command.error = error;
        command.errorFile = "/dev/full";
        return testsupport::run(command);
    }
    static std::string lost(const std::string& reason) {
        return "Error: L6830E: Writing file 'stdout' : " + reason + "\n";
    }
    static constexpr Stream lossy[] = {Stream::File, Stream::ClosedPipe, Stream::Closed};
};

TEST_F(LostOutput, FullDiskIsTold) {
    for (const Words& words : printingRuns()) {
        EXPECT_TRUE(ended(printing(words, Stream::File), 1, "", lost("No space left on device")));
    }
}

TEST_F(LostOutput, ClosedStandardOutputIsTold) {
    for (const Words& words : printingRuns()) {
        EXPECT_TRUE(ended(printing(words, Stream::Closed), 1, "", lost("Bad file descriptor")));
    }
}

TEST_F(LostOutput, ReaderThatHasGoneIsNotTold) {
    for (const Words& words : printingRuns()) {
        EXPECT_TRUE(ended(printing(words, Stream::ClosedPipe), 1, "", ""));
    }
}

TEST_F(LostOutput, LineComesBehindAllOthersAndInTheStyleInForce) {
    Command command =
        testsupport::tomex(folder, {"--diag_style=ide", "-t", "lib.a", "no.o", "a.o"});
    command.output = Stream::File;
    command.outputFile = "/dev/full";
    EXPECT_TRUE(ended(testsupport::run(command), 1, "",
                      "tomex : error L6831:  'no.o' not present in archive 'lib.a'\n"
                      "tomex : error L6830:  Writing file 'stdout' : No space left on device\n"));
}

TEST_F(LostOutput, RunThatPrintsNothingLosesNothing) {
    file("b.o", "b");
    for (const Stream stream : lossy) {
        EXPECT_TRUE(ended(printing({"-s", "lib.a"}, stream), 0, "", ""));
        EXPECT_TRUE(ended(printing({"-r", "lib.a", "b.o"}, stream), 0, "", notElf("b.o")));
        EXPECT_TRUE(ended(complaining({"-t", "lib.a", "a.o"}, stream), 0, "a.o\n", ""));
        EXPECT_TRUE(ended(complaining({"--version_number"}, stream), 0,
                          tomex({"--version_number"}).output, ""));
    }
}

TEST_F(LostOutput, LostListingOfAnEditDoesNotStopTheEdit) {
    for (const Stream stream : lossy) {
        library("lib.a", {"a.o", "b.o"});
        EXPECT_EQ(printing({"-dv", "lib.a", "a.o"}, stream).status, 1);
        EXPECT_EQ(names(), Words{"b.o"});
    }
}

TEST_F(LostOutput, LostDiagnosticsShowInTheStatus) {
    for (const Stream stream : lossy) {
        EXPECT_TRUE(ended(complaining({"-t", "lib.a", "no.o", "a.o"}, stream), 1, "a.o\n", ""));
        EXPECT_TRUE(ended(complaining({"--foo"}, stream), 1, "", ""));
    }
}

TEST_F(LostOutput, LostWarningOfAnEditDoesNotStopTheEdit) {
    for (const Stream stream : lossy) {
        library("lib.a", {"a.o", "b.o"});
        EXPECT_TRUE(ended(complaining({"-d", "lib.a", "a.o", "no.o"}, stream), 1, "", ""));
        EXPECT_EQ(names(), Words{"b.o"});
    }
}

TEST_F(LostOutput, SilencedWarningIsNotLost) {
    for (const Stream stream : lossy) {
        EXPECT_TRUE(
            ended(complaining({"--diag_suppress=6831", "-d", "lib.a", "no.o"}, stream), 0, "", ""));
    }
}

TEST_F(LostOutput, BothStreamsCanBeLost) {
    for (const Stream stream : lossy) {
        Command command = testsupport::tomex(folder, {"-t", "lib.a", "no.o", "a.o"});
        command.output = stream;
        command.error = stream;
        command.outputFile = "/dev/full";
        command.errorFile = "/dev/full";
        EXPECT_TRUE(ended(testsupport::run(command), 1, "", ""));
    }
}

// Whoever closes a stream must not find an archive under its number.
TEST_F(LostOutput, ClosedStreamsDoNotReachTheArchive) {
    library("lib.a", {"a.o", "b.o"});
    file("c.o", "c");
    Command command = testsupport::tomex(folder, {"-rv", "lib.a", "c.o", "no.o"});
    command.inputClosed = true;
    command.output = Stream::Closed;
    command.error = Stream::Closed;
    EXPECT_EQ(testsupport::run(command).status, 1);
    EXPECT_EQ(names(), (Words{"a.o", "b.o"}));
    command.arguments = {"-rv", "lib.a", "c.o"};
    EXPECT_EQ(testsupport::run(command).status, 1);
    EXPECT_EQ(names(), (Words{"a.o", "b.o", "c.o"}));
}

} // namespace
} // namespace commandtest
