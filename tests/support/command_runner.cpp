// One run is: prepare, fork, let the child become the program (program_start.h), follow it through
// one poll loop until it has ended or its time is over, collect.
//
// The end of the program is a descriptor like its output is (pidfd), so nothing here waits for a
// fixed time, and a program that leaves a child behind with an open pipe holds up nobody.
#include "tests/support/command_runner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/program_start.h"

namespace testsupport {

namespace {

using Clock = std::chrono::steady_clock;

// Takes what a pipe holds; closes it at its end.
void drain(Descriptor& source, std::string& target) {
    std::array<char, 65536> buffer;
    while (source.open()) {
        const ssize_t count = ::read(source.get(), buffer.data(), buffer.size());
        if (count > 0) {
            target.append(buffer.data(), static_cast<size_t>(count));
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else if (count < 0 && errno == EAGAIN) {
            return;
        } else {
            source.close();
        }
    }
}

// Whether a file of that name has appeared since the last look.
bool hasAppeared(const Descriptor& watch, const std::string& name) {
    alignas(inotify_event) std::array<char, 65536> buffer;
    bool found = false;
    for (;;) {
        const ssize_t count = ::read(watch.get(), buffer.data(), buffer.size());
        if (count <= 0) {
            return found;
        }
        size_t position = 0;
        while (position < static_cast<size_t>(count)) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + position, sizeof event);
            const char* text = buffer.data() + position + sizeof event;
            found = found || (event.len > 0 && name == text);
            position += sizeof event + event.len;
        }
    }
}

int millisecondsUntil(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left + 1, 0, INT_MAX));
}

// Follows the child until it has ended. It is not reaped here.
void follow(pid_t child, const Command& command, Preparation& ready, CommandResult& result) {
    // By number, as not every host has a function for it that C++ can link to.
    const Descriptor end(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    if (!end.open()) {
        ::kill(-child, SIGKILL);
        failSetUp("watch the program");
    }
    const auto deadline = Clock::now() + command.watchdog;
    for (;;) {
        std::array<pollfd, 4> sources = {{{end.get(), POLLIN, 0},
                                          {ready.output.readEnd.get(), POLLIN, 0},
                                          {ready.error.readEnd.get(), POLLIN, 0},
                                          {ready.folderWatch.get(), POLLIN, 0}}};
        const int count = ::poll(sources.data(), sources.size(),
                                 result.timedOut ? -1 : millisecondsUntil(deadline));
        if (count == 0) {
            result.timedOut = true;
            ::kill(-child, SIGKILL);
            continue;
        }
        drain(ready.output.readEnd, result.output);
        drain(ready.error.readEnd, result.error);
        if (ready.folderWatch.open() && !result.signalSent &&
            hasAppeared(ready.folderWatch, command.signalOnFile->file)) {
            result.signalSent = ::kill(child, command.signalOnFile->signal) == 0;
        }
        if (count > 0 && sources[0].revents != 0) {
            return;
        }
    }
}

void collect(pid_t child, CommandResult& result) {
    int status = 0;
    rusage usage = {};
    while (::wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    // What the program has left behind in its group goes with it.
    ::kill(-child, SIGKILL);
    if (WIFEXITED(status)) {
        result.status = WEXITSTATUS(status);
    } else {
        result.signal = WTERMSIG(status);
    }
    result.peakMemory = static_cast<uint64_t>(usage.ru_maxrss) * 1024;
}

uint64_t ownSize() {
    std::ifstream statistics("/proc/self/statm");
    uint64_t total = 0;
    uint64_t resident = 0;
    statistics >> total >> resident;
    return resident * static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
}

std::string quoted(const std::string& text) {
    std::string line;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            line += "\\n\n  ";
        } else if (byte < 0x20 || byte > 0x7E) {
            char number[8] = {};
            std::snprintf(number, sizeof number, "\\x%02x", byte);
            line += number;
        } else {
            line += character;
        }
        if (line.size() > 4000) {
            return line + "... (" + std::to_string(text.size()) + " bytes)";
        }
    }
    return line;
}

} // namespace

CommandResult run(const Command& command) {
    Preparation ready = prepare(command);
    CommandResult result;
    result.commandLine = joined(ready.arguments, ' ');
    result.peakFloor = ownSize();
    const pid_t child = ::fork();
    if (child < 0) {
        failSetUp("fork");
    }
    if (child == 0) {
        becomeProgram(command, ready);
    }
    ::setpgid(child, child); // also here, lest it be signalled before it came to do so itself
    ready.output.writeEnd.close();
    ready.error.writeEnd.close();
    ready.failure.writeEnd.close();
    StartFailure failure = {};
    const bool started =
        ::read(ready.failure.readEnd.get(), &failure, sizeof failure) != sizeof failure;
    follow(child, command, ready, result);
    collect(child, result);
    if (!started) {
        result.startFailure = std::string{"cannot "} + failure.step + " (" + ready.programPath +
                              "): " + std::strerror(failure.errorNumber);
        result.status = -1;
    }
    return result;
}

std::string CommandResult::describe() const {
    std::ostringstream text;
    text << "command: " << commandLine << "\n";
    if (!startFailure.empty()) {
        text << startFailure << "\n";
    } else if (timedOut) {
        text << "killed by the watchdog\n";
    } else if (signal != 0) {
        text << "ended by signal " << signal << " (" << ::sigabbrev_np(signal) << ")\n";
    } else {
        text << "status: " << status
             << (status == sanitizerStatus ? " (perhaps a sanitizer's)" : "") << "\n";
    }
    text << "standard output:\n  " << quoted(output) << "\nstandard error:\n  " << quoted(error)
         << "\n";
    return text.str();
}

std::ostream& operator<<(std::ostream& stream, const CommandResult& result) {
    return stream << result.describe();
}

std::string tomexProgram() {
    return TOMEX_PROGRAM;
}

Command tomex(const ScratchFolder& folder, std::vector<std::string> arguments) {
    Command command = tool(folder, tomexProgram(), std::move(arguments));
    command.argumentZero = "tomex";
    return command;
}

CommandResult runTomex(const ScratchFolder& folder, std::vector<std::string> arguments) {
    return run(tomex(folder, std::move(arguments)));
}

Command tool(const ScratchFolder& folder, std::string program, std::vector<std::string> arguments) {
    Command command;
    command.program = std::move(program);
    command.arguments = std::move(arguments);
    command.folder = folder.path();
    return command;
}

CommandResult runTool(const ScratchFolder& folder, std::string program,
                      std::vector<std::string> arguments) {
    return run(tool(folder, std::move(program), std::move(arguments)));
}

std::vector<LoggedCall> readFaultLog(const std::string& file) {
    std::ifstream log(file);
    if (!log) {
        throw std::runtime_error("there is no fault log " + file);
    }
    std::vector<LoggedCall> calls;
    std::string line;
    while (std::getline(log, line)) {
        std::istringstream parts(line);
        LoggedCall call;
        std::string number;
        std::getline(parts, number, '\t');
        std::getline(parts, call.call, '\t');
        std::getline(parts, call.path, '\t');
        std::getline(parts, call.secondPath, '\t');
        call.number = std::strtoull(number.c_str(), nullptr, 10);
        if (call.number == 0 || call.call.empty()) {
            throw std::runtime_error(std::string(file).append(" is no fault log: ").append(line));
        }
        calls.push_back(std::move(call));
    }
    return calls;
}

} // namespace testsupport
