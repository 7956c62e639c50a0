// A worker that does as it is told, up to dying in every way.
#include "platform/interface/worker_process.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::WorkAnswer;
using platform::WorkerProcess;
using platform::WorkLimits;

constexpr uint64_t mebibyte = 1024 * 1024;
constexpr WorkLimits amplyLimited{256 * mebibyte, 60};

int g_requests = 0; // in the worker

std::string say(std::string_view words) {
    std::fwrite(words.data(), 1, words.size(), stdout);
    std::fflush(stdout);
    std::fwrite(words.data(), 1, words.size(), stderr);
    return "said";
}

std::string dieSaying(std::string_view words) {
    say(words);
    std::abort();
}

std::string takeMemory(std::string_view bytes) {
    void* memory = ::mmap(nullptr, std::stoull(std::string(bytes)), PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory != MAP_FAILED ? "granted" : "denied";
}

std::string spin(std::string_view) {
    // Outside the program's sight, so that the circle is none that a compiler may leave out.
    static volatile bool isTired = false;
    while (!isTired) {
    }
    return "tired";
}

std::string handlerOf(std::string_view signalNumber) {
    struct sigaction action = {};
    ::sigaction(std::stoi(std::string(signalNumber)), nullptr, &action);
    return action.sa_handler == SIG_DFL   ? "usual"
           : action.sa_handler == SIG_IGN ? "ignored"
                                          : "handled";
}

std::string dieUnlessFirst(std::string_view) {
    return g_requests == 1 ? "first" : dieSaying("not the first\n");
}

using Deed = std::string (*)(std::string_view body);

const std::map<std::string, Deed, std::less<>> deeds = {
    {"echo", [](std::string_view body) { return std::string(body); }},
    {"process", [](std::string_view) { return std::to_string(::getpid()); }},
    {"say", say},
    {"die saying", dieSaying},
    {"die by signal",
     [](std::string_view body) {
         ::raise(std::stoi(std::string(body)));
         return std::string("alive");
     }},
    {"exit", [](std::string_view body) -> std::string { ::_exit(std::stoi(std::string(body))); }},
    {"throw",
     [](std::string_view body) -> std::string { throw std::runtime_error(std::string(body)); }},
    {"spin", spin},
    {"take memory", takeMemory},
    {"handler", handlerOf},
    {"die unless first", dieUnlessFirst},
};

std::string doDeed(std::string_view head, std::string_view body) {
    ++g_requests;
    return deeds.find(head)->second(body);
}

// The answer, or "dead: " and the last words.
std::string answerOf(WorkerProcess& worker, std::string_view deed, std::string_view body,
                     const WorkLimits& limits) {
    const WorkAnswer answer = worker.ask(deed, body, limits);
    return answer.isWhole ? answer.text : "dead: " + answer.text;
}

class WorkerProcessTest : public testing::Test {
protected:
    std::string ask(std::string_view deed, std::string_view body = "",
                    const WorkLimits& limits = amplyLimited) {
        return answerOf(worker, deed, body, limits);
    }

    WorkerProcess worker{doDeed};
};

// Has the usual handler of a signal again at the end.
class Handled {
public:
    Handled(int signalNumber, void (*handler)(int))
        : m_Number(signalNumber), m_Before(std::signal(signalNumber, handler)) {}
    ~Handled() { std::signal(m_Number, m_Before); }
    Handled(const Handled&) = delete;
    Handled& operator=(const Handled&) = delete;

private:
    int m_Number;
    void (*m_Before)(int);
};

TEST_F(WorkerProcessTest, AnswersRequestsOfAllSizes) {
    EXPECT_EQ(ask("echo"), "");
    EXPECT_EQ(ask("echo", "body"), "body");
    std::string large(20 * mebibyte, 'x');
    for (size_t i = 0; i < large.size(); i += 4093) {
        large[i] = static_cast<char>(i);
    }
    EXPECT_TRUE(ask("echo", large) == large);
}

TEST_F(WorkerProcessTest, IsOneOtherProcess) {
    const std::string process = ask("process");
    EXPECT_NE(process, std::to_string(::getpid()));
    EXPECT_EQ(ask("process"), process);
    WorkerProcess other(doDeed);
    EXPECT_NE(other.ask("process", "", amplyLimited).text, process);
}

TEST_F(WorkerProcessTest, IsGoneWithItsOwner) {
    pid_t process = 0;
    {
        WorkerProcess owned(doDeed);
        process = std::stoi(owned.ask("process", "", amplyLimited).text);
        EXPECT_EQ(::kill(process, 0), 0);
    }
    EXPECT_EQ(::kill(process, 0), -1);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to be waited for";
}

TEST_F(WorkerProcessTest, ItsWordsAreNotShown) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::string first = ask("say", "a word");
    const std::string second = ask("say", std::string(mebibyte, 'w'));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(first, "said");
    EXPECT_EQ(second, "said");
}

TEST_F(WorkerProcessTest, ItsLastWordsTellWhyItDied) {
    EXPECT_EQ(ask("die saying", "so it is"), "dead: so it isso it is");
    EXPECT_EQ(ask("die saying", "first\nlast\n\n"), "dead: last");
    EXPECT_EQ(ask("die saying", std::string(mebibyte, '\n') + "end"), "dead: end");
    EXPECT_EQ(ask("say", "of one request"), "said");
    EXPECT_EQ(ask("die by signal", std::to_string(SIGKILL)),
              std::string("dead: ") + ::strsignal(SIGKILL))
        << "not words of an earlier request";
}

TEST_F(WorkerProcessTest, OrElseTheHostTellsIt) {
    for (const int signalNumber : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGTERM, SIGKILL}) {
        EXPECT_EQ(ask("die by signal", std::to_string(signalNumber)),
                  std::string("dead: ") + ::strsignal(signalNumber));
    }
    EXPECT_EQ(ask("exit", "0"), std::string("dead: ") + std::strerror(EIO));
    EXPECT_EQ(ask("exit", "3"), std::string("dead: ") + std::strerror(EIO));
    EXPECT_EQ(ask("echo", "works again"), "works again");
}

TEST_F(WorkerProcessTest, ExceptionsEndIt) {
    const std::string answer = ask("throw", "thrown on purpose");
    EXPECT_NE(answer.find("dead: "), std::string::npos);
    EXPECT_NE(answer.find("thrown on purpose"), std::string::npos) << answer;
}

TEST_F(WorkerProcessTest, DeathDoesNotDependOnWhatWasBefore) {
    EXPECT_EQ(ask("die unless first"), "first");
    const std::string process = ask("process");
    EXPECT_EQ(ask("die unless first"), "first") << "a new worker has tried";
    EXPECT_NE(ask("process"), process);
    EXPECT_EQ(ask("die saying", "always\n"), "dead: always");
}

TEST_F(WorkerProcessTest, ThatNeverComesBackIsStopped) {
    // Also for a caller that would not be stopped itself.
    const Handled ignored(SIGXCPU, SIG_IGN);
    EXPECT_EQ(ask("spin", "", {256 * mebibyte, 0}), std::string("dead: ") + ::strsignal(SIGXCPU));
}

TEST_F(WorkerProcessTest, MemoryIsLimitedForEachRequest) {
    const std::string amount = std::to_string(200 * mebibyte);
    EXPECT_EQ(ask("take memory", amount, {100 * mebibyte, 60}), "denied");
    EXPECT_EQ(ask("take memory", amount, {300 * mebibyte, 60}), "granted");
    EXPECT_EQ(ask("take memory", amount, {300 * mebibyte, 60}), "granted")
        << "beside what it has already";
    EXPECT_EQ(ask("take memory", amount, {100 * mebibyte, 60}), "denied");
}

TEST_F(WorkerProcessTest, HandlersStayBehind) {
    const Handled handled(SIGTERM, [](int) {});
    const Handled ignored(SIGINT, SIG_IGN);
    EXPECT_EQ(ask("handler", std::to_string(SIGTERM)), "usual");
    EXPECT_EQ(ask("handler", std::to_string(SIGINT)), "ignored");
    EXPECT_EQ(ask("handler", std::to_string(SIGSEGV)), "usual");
}

TEST_F(WorkerProcessTest, ServesWhoeverIgnoresItsChildren) {
    const Handled ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(ask("echo", "body"), "body");
    EXPECT_EQ(ask("die saying", "words\n"), "dead: words");
    EXPECT_EQ(ask("die by signal", std::to_string(SIGKILL)),
              std::string("dead: ") + std::strerror(EIO));
}

TEST_F(WorkerProcessTest, ServesWhoeverHasClosedItsStreams) {
    int kept[3];
    std::fflush(nullptr);
    for (int i = 0; i < 3; ++i) {
        kept[i] = ::fcntl(i, F_DUPFD_CLOEXEC, 10);
        ::close(i);
    }
    const std::string echoed = ask("echo", "body");
    const std::string said = ask("say", "word");
    const std::string died = ask("die saying", "last\n");
    const int lowest = ::open("/dev/null", O_RDONLY);
    for (int i = 0; i < 3; ++i) {
        ::dup2(kept[i], i);
        ::close(kept[i]);
    }
    EXPECT_EQ(echoed, "body");
    EXPECT_EQ(said, "said");
    EXPECT_EQ(died, "dead: last");
    EXPECT_EQ(lowest, 0) << "the places are still free";
}

TEST_F(WorkerProcessTest, ThatCannotStartSaysWhy) {
    struct rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const int next = ::dup(STDERR_FILENO);
    ::close(next);
    // No member of the fixture is used without descriptors: the sanitizer's look at one needs some.
    WorkerProcess& started = worker;
    for (const int room : {0, 1, 2, 3}) {
        struct rlimit few = before;
        few.rlim_cur = static_cast<rlim_t>(next + room);
        ::setrlimit(RLIMIT_NOFILE, &few);
        const std::string answer = answerOf(started, "echo", "body", amplyLimited);
        ::setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_EQ(answer, std::string("dead: ") + std::strerror(EMFILE)) << room;
    }
    EXPECT_EQ(::dup(STDERR_FILENO), next) << "nothing was left open";
    ::close(next);
    EXPECT_EQ(ask("echo", "body"), "body");
}

} // namespace
