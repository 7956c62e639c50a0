// Where texts go: switching, closing, order, and what happens when nothing can be written.

#include "captured_stream.h"
#include "messages/interface/byte_output.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `act` in a process of its own, whose standard output and error both go to one file, or
// where `prepare` sends them. Gives the exit status (128 and the signal for a killed process) and
// what was written.
struct ChildResult {
    int status;
    std::string output;
};

ChildResult runChild(const std::function<void()>& prepare, const std::function<int()>& act) {
    std::FILE* file = std::tmpfile();
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::fileno(file), STDOUT_FILENO);
        ::dup2(::fileno(file), STDERR_FILENO);
        prepare();
        const int status = act();
        messages::closeMessages();
        std::_Exit(messages::finalStatus(status));
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ChildResult result{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), {}};
    std::rewind(file);
    for (int c = std::getc(file); c != EOF; c = std::getc(file)) {
        result.output += static_cast<char>(c);
    }
    std::fclose(file);
    return result;
}

void listMembers(int count) {
    for (int i = 0; i < count; ++i) {
        messages::printMessageToStandardOutput(messages::MessageKey_ListName, "member.o");
    }
}

class MessageStreamsTest : public MessagesTest {};

TEST_F(MessageStreamsTest, SendsMessagesToStandardErrorAtFirst) {
    m_Switch.reset();
    EXPECT_EQ(messages::currentStream(), stderr);
    testing::internal::CaptureStderr();
    messages::printText("message\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "message\n");
}

TEST_F(MessageStreamsTest, SwitchesForTheLifeOfTheObject) {
    CapturedStream other;
    {
        const messages::StreamSwitch inner(other.stream());
        EXPECT_EQ(messages::currentStream(), other.stream());
        messages::printText("inner");
    }
    messages::printText("outer");
    EXPECT_EQ(messages::currentStream(), m_Output.stream());
    EXPECT_EQ(other.take(), "inner");
    EXPECT_EQ(output(), "outer");
}

TEST_F(MessageStreamsTest, SwitchesToTheStreamsAsTheyWereAtTheStart) {
    const ChildResult result = runChild([] {},
                                        [] {
                                            messages::initMessages();
                                            const int null = ::open("/dev/null", O_WRONLY);
                                            ::dup2(null, STDOUT_FILENO);
                                            ::dup2(null, STDERR_FILENO);
                                            messages::printText("nowhere\n");
                                            {
                                                const messages::SavedOutSwitch out;
                                                messages::printText("out\n");
                                            }
                                            {
                                                const messages::SavedErrSwitch err;
                                                messages::printText("err\n");
                                            }
                                            messages::printText("nowhere\n");
                                            return 0;
                                        });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "out\nerr\n");
}

TEST_F(MessageStreamsTest, PrintsToTheStandardOutputAndBack) {
    testing::internal::CaptureStdout();
    messages::printMessageToStandardOutput(messages::MessageKey_ListName, "a.o");
    messages::printText("message");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a.o\n");
    EXPECT_EQ(output(), "message");
}

TEST_F(MessageStreamsTest, KeepsTheOrderOfBothStreamsInOnePlace) {
    const ChildResult result = runChild(
        [] {},
        [] {
            messages::initMessages();
            listMembers(2);
            messages::report(messages::Severity_Error, messages::MessageKey_NoArchiveSpecified);
            listMembers(1);
            messages::printText("plain");
            messages::printMessageToStandardOutput(messages::MessageKey_SummaryError);
            messages::printText("\n");
            {
                const messages::StreamSwitch out(stdout);
                messages::printText("usage\n");
            }
            messages::report(messages::Severity_Warning, messages::MessageKey_NoArchiveSpecified);
            listMembers(1);
            return 0;
        });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "member.o\nmember.o\n"
                             "Error: L6838E: No archive specified\n"
                             "member.o\nplainerror\nusage\n"
                             "Warning: L6838E: No archive specified\n"
                             "member.o\n");
}

TEST_F(MessageStreamsTest, PrintsBytesAsTheyAreBehindWhatWasPrinted) {
    const ChildResult result =
        runChild([] {},
                 [] {
                     messages::initMessages();
                     listMembers(1);
                     const bool isWritten = messages::printBytesToStandardOutput("\x1B\0\xFF", 3);
                     listMembers(1);
                     return isWritten ? 0 : 9;
                 });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, std::string("member.o\n\x1B\0\xFFmember.o\n", 21));
}

TEST_F(MessageStreamsTest, WritesAListingInLargePieces) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const ChildResult result = runChild(
        [&ends] {
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[0]);
            ::fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
        },
        [&ends] {
            messages::initMessages();
            listMembers(100);
            // Nothing has left the process yet.
            ::close(ends[1]);
            return 0;
        });
    ::close(ends[1]);
    EXPECT_EQ(result.status, 0);
    char bytes[2048];
    EXPECT_EQ(::read(ends[0], bytes, sizeof(bytes)), 900);
    EXPECT_EQ(::read(ends[0], bytes, sizeof(bytes)), 0);
    ::close(ends[0]);
}

TEST_F(MessageStreamsTest, KnowsOutputThatAFullDiskLost) {
    const auto sendToFullDisk = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    for (const int lines : {1, 100000}) {
        const ChildResult result = runChild(sendToFullDisk, [lines] {
            messages::initMessages();
            listMembers(lines);
            return 0;
        });
        EXPECT_EQ(result.status, 1) << lines;
    }
    EXPECT_EQ(runChild(sendToFullDisk,
                       [] {
                           messages::initMessages();
                           return 0;
                       })
                  .status,
              0);
}

const char lostLine[] = "Error: L6830E: Writing file 'stdout' : No space left on device\n";

TEST_F(MessageStreamsTest, TellsOnStandardErrorWhatTheStandardOutputLost) {
    const auto sendToFullDisk = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    for (const int lines : {1, 100000}) {
        const ChildResult result = runChild(sendToFullDisk, [lines] {
            messages::initMessages();
            listMembers(lines);
            return 0;
        });
        EXPECT_EQ(result.status, 1) << lines;
        EXPECT_EQ(result.output, lostLine);
    }
    const ChildResult switched = runChild(sendToFullDisk, [] {
        messages::initMessages();
        const messages::SavedOutSwitch out;
        messages::printText("usage\n");
        return 0;
    });
    EXPECT_EQ(switched.status, 1);
    EXPECT_EQ(switched.output, lostLine);
}

TEST_F(MessageStreamsTest, TellsOnceWhatTheStandardOutputLost) {
    const ChildResult result =
        runChild([] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); },
                 [] {
                     messages::initMessages();
                     messages::noteLostOutput(ENOSPC);
                     messages::noteLostOutput(EIO);
                     return messages::finalStatus(0) == 1 && messages::finalStatus(7) == 1 ? 1 : 9;
                 });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, lostLine);
}

// The line is a report like any other: in the style in force, and the last one that the limit on
// errors lets through or the first that it does not.
TEST_F(MessageStreamsTest, TellsOfLostOutputAsOfAnyError) {
    const auto lose = [](uint32_t errorsBefore) {
        return runChild([] {},
                        [errorsBefore] {
                            messages::initMessages();
                            messages::setExitHandler([](int status) {
                                messages::closeMessages();
                                std::_Exit(messages::finalStatus(status) + 40);
                            });
                            messages::setStyle(1);
                            for (uint32_t i = 0; i < errorsBefore; ++i) {
                                messages::libReport(messages::Severity_Error, nullptr,
                                                    messages::MessageKey_NoArchiveSpecified);
                            }
                            messages::noteLostOutput(ENOSPC);
                            messages::printText("end\n");
                            return 0;
                        });
    };
    const std::string line =
        "tomex : error L6830:  Writing file 'stdout' : No space left on device\n";
    const ChildResult inTime = lose(49);
    EXPECT_EQ(inTime.status, 1);
    EXPECT_TRUE(inTime.output.ends_with("end\n" + line)) << inTime.output;
    const ChildResult tooLate = lose(50);
    EXPECT_EQ(tooLate.status, 41);
    EXPECT_TRUE(tooLate.output.ends_with("end\n")) << tooLate.output;
}

TEST_F(MessageStreamsTest, KeepsTheStatusOfARunThatLostNothing) {
    EXPECT_EQ(messages::finalStatus(0), 0);
    EXPECT_EQ(messages::finalStatus(7), 7);
}

TEST_F(MessageStreamsTest, KnowsWhatTheStandardErrorLost) {
    const ChildResult result = runChild(
        [] { ::dup2(::open("/dev/full", O_WRONLY), STDERR_FILENO); },
        [] {
            messages::initMessages();
            messages::report(messages::Severity_Warning, messages::MessageKey_NoArchiveSpecified);
            listMembers(1);
            return 0;
        });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "member.o\n");
}

TEST_F(MessageStreamsTest, KnowsOutputThatNobodyReads) {
    for (const int lines : {1, 100000}) {
        const ChildResult result = runChild(
            [] {
                int ends[2];
                if (::pipe(ends) == 0) {
                    ::dup2(ends[1], STDOUT_FILENO);
                    ::close(ends[1]);
                    ::close(ends[0]);
                }
                std::signal(SIGPIPE, SIG_DFL);
            },
            [lines] {
                messages::initMessages();
                listMembers(lines);
                return 0;
            });
        EXPECT_EQ(result.status, 1) << lines;
        EXPECT_EQ(result.output, ""); // whoever closed the pipe knows
    }
}

TEST_F(MessageStreamsTest, KnowsOutputToStreamsThatWereClosedAtTheStart) {
    const ChildResult result = runChild([] { ::close(STDOUT_FILENO); },
                                        [] {
                                            messages::initMessages();
                                            // The number of the closed stream is not given to a
                                            // file.
                                            const int file = ::open("/dev/null", O_WRONLY);
                                            const bool apart = file > STDERR_FILENO;
                                            listMembers(1);
                                            return apart ? 0 : 9;
                                        });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "Error: L6830E: Writing file 'stdout' : Bad file descriptor\n");
    const ChildResult silent = runChild(
        [] {
            ::close(STDIN_FILENO);
            ::close(STDOUT_FILENO);
            ::close(STDERR_FILENO);
        },
        [] {
            messages::initMessages();
            return ::open("/dev/null", O_WRONLY) > STDERR_FILENO ? 0 : 9;
        });
    EXPECT_EQ(silent.status, 0);
}

TEST_F(MessageStreamsTest, FlushesStandardStreamsAndClosesOthers) {
    const ChildResult result = runChild([] {},
                                        [] {
                                            messages::initMessages();
                                            listMembers(1);
                                            const messages::SavedOutSwitch out;
                                            messages::printText("saved\n");
                                            messages::closeMessages();
                                            // The current stream was closed and is not used any
                                            // more.
                                            const bool back = messages::currentStream() == stderr;
                                            messages::printText("late\n");
                                            messages::closeMessages();
                                            return back ? 0 : 9;
                                        });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "member.o\nsaved\nlate\n");
}

TEST_F(MessageStreamsTest, LeavesTheProgramUnharmedIfStreamsCannotBeDuplicated) {
    const ChildResult result = runChild([] {},
                                        [] {
                                            messages::initMessages();
                                            messages::closeMessages();
                                            const messages::SavedErrSwitch err;
                                            messages::printText("err\n");
                                            return messages::currentStream() == stderr ? 0 : 9;
                                        });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "err\n");
}

} // namespace
