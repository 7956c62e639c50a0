// The first half of a run: all that a program needs to start, and the child process that becomes
// it.
//
// Everything that may allocate is done before the fork. What goes wrong after it is told to the
// parent through a pipe that closes by itself when the program starts.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "tests/support/command_runner.h"

namespace testsupport {

// A descriptor that closes itself.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    int get() const { return m_number; }
    bool open() const { return m_number >= 0; }
    void close() {
        if (open()) {
            ::close(std::exchange(m_number, -1));
        }
    }

private:
    int m_number = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

// Everything that the child needs.
struct Preparation {
    std::string programPath;
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
    std::vector<char*> argumentPointers; // into the texts above, null-ended
    std::vector<char*> environmentPointers;
    Descriptor program; // open only for a run as another user
    Descriptor preload; // the same
    Descriptor input;
    Pipe output;
    Pipe error;
    Pipe failure; // carries errno and the step that failed, if the program cannot be started
    Descriptor folderWatch;
};

struct StartFailure {
    int errorNumber;
    char step[64];
};

// Throws std::runtime_error if the host denies it.
Preparation prepare(const Command& command);

// To be called in the child. Ends it with a StartFailure in the pipe if the program cannot start.
[[noreturn]] void becomeProgram(const Command& command, const Preparation& ready);

// Throws with the host's text for errno.
[[noreturn]] void failSetUp(const char* what);

std::string joined(const std::vector<std::string>& texts, char separator);

} // namespace testsupport
