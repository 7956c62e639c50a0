#include "platform/interface/worker_process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {
namespace {

struct RequestHead {
    uint64_t headSize;
    uint64_t bodySize;
    WorkLimits limits;
};

// --- both ends

bool sendAll(int socket, const void* data, size_t size) {
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = ::send(socket, bytes, size, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes += count;
        size -= static_cast<size_t>(count);
    }
    return true;
}

// What has come, at most `size` bytes; 0 at the end of the connection.
size_t receiveSome(int socket, char* data, size_t size) {
    ssize_t count = 0;
    do {
        count = ::recv(socket, data, size, 0);
    } while (count < 0 && errno == EINTR);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

bool receiveAll(int socket, void* data, size_t size) {
    auto* bytes = static_cast<char*>(data);
    while (size > 0) {
        const size_t count = receiveSome(socket, bytes, size);
        if (count == 0) {
            return false;
        }
        bytes += count;
        size -= count;
    }
    return true;
}

// --- the worker's end

// The caller's handlers are about the caller's affairs, such as a file that it has half written.
void forgetSignalHandlers() {
    for (int signalNumber = 1; signalNumber < NSIG; ++signalNumber) {
        struct sigaction present = {};
        if (::sigaction(signalNumber, nullptr, &present) == 0 &&
            (present.sa_handler != SIG_IGN || signalNumber == SIGXCPU)) {
            struct sigaction usual = {};
            usual.sa_handler = SIG_DFL;
            ::sigaction(signalNumber, &usual, nullptr);
        }
    }
}

void setSoftLimit(int resource, rlim_t value) {
    struct rlimit limit = {};
    // The type of the first argument is the host's own affair.
    if (::getrlimit(static_cast<decltype(RLIMIT_AS)>(resource), &limit) == 0) {
        limit.rlim_cur = std::min(value, limit.rlim_max);
        ::setrlimit(static_cast<decltype(RLIMIT_AS)>(resource), &limit);
    }
}

// Bytes of address space in use; 0 if the host does not say.
uint64_t addressSpaceInUse() {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr) {
        return 0;
    }
    char line[64] = {};
    const bool isRead = std::fgets(line, sizeof line, file) != nullptr;
    std::fclose(file);
    return isRead
               ? std::strtoull(line, nullptr, 10) * static_cast<uint64_t>(::sysconf(_SC_PAGESIZE))
               : 0;
}

void applyLimits(const WorkLimits& limits) {
    struct rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    // Begun seconds of both kinds count as whole ones.
    setSoftLimit(RLIMIT_CPU, static_cast<rlim_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                                 2 + limits.seconds);
    setSoftLimit(RLIMIT_AS, RLIM_INFINITY);
    if (const uint64_t used = addressSpaceInUse(); used > 0) {
        setSoftLimit(RLIMIT_AS, used + limits.memory);
    }
}

// Serves until the caller is gone. Whatever escapes from the work ends the worker.
[[noreturn]] void serve(int socket, WorkerProcess::Work work) noexcept {
    RequestHead request = {};
    while (receiveAll(socket, &request, sizeof request)) {
        std::string head(request.headSize, '\0');
        std::string body(request.bodySize, '\0');
        if (!receiveAll(socket, head.data(), head.size()) ||
            !receiveAll(socket, body.data(), body.size())) {
            break;
        }
        applyLimits(request.limits);
        const std::string answer = work(head, body);
        const uint64_t size = answer.size();
        if (!sendAll(socket, &size, sizeof size) || !sendAll(socket, answer.data(), size)) {
            break;
        }
    }
    // Not by the usual way: files and objects of the copy are the caller's.
    ::_exit(0);
}

[[noreturn]] void becomeWorker(int socket, int words, WorkerProcess::Work work) {
    forgetSignalHandlers();
    setSoftLimit(RLIMIT_CORE, 0);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(words, STDOUT_FILENO);
    ::dup2(words, STDERR_FILENO);
    serve(socket, work);
}

// --- the caller's end

// Of both ends of a connection, made so that they do not take the standard streams' places, which a
// caller may have closed.
class Ends {
public:
    Ends() = default;
    Ends(const Ends&) = delete;
    Ends& operator=(const Ends&) = delete;
    ~Ends() {
        const int error = errno;
        for (const int end : m_Ends) {
            if (end >= 0) {
                ::close(end);
            }
        }
        errno = error;
    }

    // The same for a pipe, whose end 0 is the one to read from.
    bool makeSocket() { return ::socketpair(AF_UNIX, SOCK_STREAM, 0, m_Ends) == 0 && moveAway(); }
    bool makePipe() { return ::pipe(m_Ends) == 0 && moveAway(); }
    int get(size_t index) const { return m_Ends[index]; }
    int take(size_t index) { return std::exchange(m_Ends[index], -1); }

private:
    bool moveAway() {
        for (int& end : m_Ends) {
            const int moved = ::fcntl(end, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            if (moved < 0) {
                return false;
            }
            ::close(std::exchange(end, moved));
        }
        return true;
    }

    int m_Ends[2] = {-1, -1};
};

// The last line with anything in it.
std::string lastLine(const std::string& text) {
    const size_t end = text.find_last_not_of("\r\n");
    if (end == std::string::npos) {
        return {};
    }
    const size_t before = text.find_last_of("\r\n", end);
    const size_t start = before == std::string::npos ? 0 : before + 1;
    return text.substr(start, end + 1 - start);
}

} // namespace

bool WorkerProcess::start() {
    Ends connection;
    Ends words;
    if (!connection.makeSocket() || !words.makePipe()) {
        return false;
    }
    ::fcntl(words.get(0), F_SETFL, O_NONBLOCK);
    m_Process = ::fork();
    if (m_Process == 0) {
        ::close(connection.take(0));
        ::close(words.take(0));
        becomeWorker(connection.get(1), words.get(1), m_Work);
    }
    if (m_Process < 0) {
        m_Process = 0;
        return false;
    }
    m_Socket = connection.take(0);
    m_Words = words.take(0);
    m_Spoken.clear();
    return true;
}

WorkAnswer WorkerProcess::ask(std::string_view head, std::string_view body,
                              const WorkLimits& limits) {
    const bool hasServed = isRunning();
    WorkAnswer answer = askOnce(head, body, limits);
    if (!answer.isWhole && hasServed) {
        answer = askOnce(head, body, limits);
    }
    return answer;
}

WorkAnswer WorkerProcess::askOnce(std::string_view head, std::string_view body,
                                  const WorkLimits& limits) {
    if (!isRunning() && !start()) {
        return {false, std::strerror(errno)};
    }
    const RequestHead request = {head.size(), body.size(), limits};
    WorkAnswer answer;
    answer.isWhole = sendAll(m_Socket, &request, sizeof request) &&
                     sendAll(m_Socket, head.data(), head.size()) &&
                     sendAll(m_Socket, body.data(), body.size()) && receiveAnswer(answer.text);
    if (answer.isWhole) {
        // All that was said before the answer was sent lies in the pipe. It was about this request.
        takeWords();
        m_Spoken.clear();
    } else {
        answer.text = bury();
    }
    return answer;
}

// Takes what the worker says meanwhile, so that it never waits for a reader.
bool WorkerProcess::receiveAnswer(std::string& answer) {
    std::string received;
    uint64_t size = std::numeric_limits<uint64_t>::max();
    int words = m_Words;
    while (received.size() < sizeof size || received.size() - sizeof size < size) {
        struct pollfd sources[] = {{m_Socket, POLLIN, 0}, {words, POLLIN, 0}};
        if (::poll(sources, 2, -1) < 0 && errno != EINTR) {
            return false;
        }
        if ((sources[1].revents & POLLIN) != 0) {
            takeWords();
        } else if (sources[1].revents != 0) {
            words = -1; // it has closed its standard streams: nothing more will come
        }
        if (sources[0].revents == 0) {
            continue;
        }
        char bytes[16384];
        const size_t count = receiveSome(m_Socket, bytes, sizeof bytes);
        if (count == 0) {
            return false;
        }
        received.append(bytes, count);
        if (received.size() >= sizeof size) {
            std::memcpy(&size, received.data(), sizeof size);
        }
    }
    answer = received.substr(sizeof size);
    return true;
}

void WorkerProcess::takeWords() {
    constexpr size_t wanted = 4096;
    char bytes[wanted];
    ssize_t count = 0;
    while ((count = ::read(m_Words, bytes, sizeof bytes)) > 0 || (count < 0 && errno == EINTR)) {
        m_Spoken.append(bytes, static_cast<size_t>(std::max<ssize_t>(count, 0)));
        if (m_Spoken.size() > wanted) {
            m_Spoken.erase(0, m_Spoken.size() - wanted);
        }
    }
}

// Ends an idle worker, which goes as soon as nobody is there to ask it.
void WorkerProcess::stop() {
    if (isRunning()) {
        bury();
    }
}

// Sees the worker out and gives its last words. It need not be dead yet, but has nothing more to
// do.
std::string WorkerProcess::bury() {
    ::close(std::exchange(m_Socket, -1));
    const pid_t process = std::exchange(m_Process, 0);
    // For one that is already on its way out this changes nothing.
    ::kill(process, SIGKILL);
    int status = 0;
    pid_t ended = 0;
    do {
        ended = ::waitpid(process, &status, 0);
    } while (ended < 0 && errno == EINTR);
    takeWords();
    ::close(std::exchange(m_Words, -1));
    std::string words = lastLine(m_Spoken);
    if (words.empty()) {
        // A process that does not care for its children's ends is not told how they ended.
        words = ended == process && WIFSIGNALED(status) ? ::strsignal(WTERMSIG(status))
                                                        : std::strerror(EIO);
    }
    return words;
}

} // namespace platform
