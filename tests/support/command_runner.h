// Runs a program as a user would and tells everything that it did.
//
// The program gets its own working folder, a fixed locale and time zone, and its own process
// group. Its output is collected while it runs; when it does not end by itself, a watchdog kills it
// and the result says so. A run can be made to meet what programs meet in the wild: a full disk, a
// closed pipe, an unprivileged user, little memory, a signal in the middle, or a host call that
// fails (see fault_preload.cpp for the rules).
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace testsupport {

// Whether this build, and so the program under test, runs under the address sanitizer. Memory
// limits cannot be used then, and peak memory says nothing.
#if defined(__SANITIZE_ADDRESS__) || defined(TOMEX_PROGRAM_IS_SANITIZED)
inline constexpr bool sanitizedBuild = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool sanitizedBuild = true;
#else
inline constexpr bool sanitizedBuild = false;
#endif
#else
inline constexpr bool sanitizedBuild = false;
#endif

// The status of a sanitized program that met an error of its own: told apart from the program's
// own statuses, which are 0 and 1.
inline constexpr int sanitizerStatus = 99;

enum class Stream {
    Capture,    // into the result
    File,       // into the file named beside it, which is opened for writing and not cut
    ClosedPipe, // into a pipe that nobody reads any more
    Closed,     // the descriptor is not open at all
    Discard,    // to nowhere
};

// Sends `signal` as soon as a file of that name appears in the working folder.
struct SignalOnFile {
    int signal = SIGTERM;
    std::string file = {}; // a name without a folder
};

struct Command {
    std::string program = {}; // a path, or a name that is looked up on PATH
    std::vector<std::string> arguments = {};
    std::optional<std::string> argumentZero = std::nullopt; // `program` if not set
    std::string folder = {};                                // this process' own if empty
    std::string input = {};                                 // standard input; empty is end of file
    bool inputClosed = false;                               // descriptor 0 is not open at all

    Stream output = Stream::Capture;
    std::string outputFile = {};
    Stream error = Stream::Capture;
    std::string errorFile = {};

    // Added to this process' environment; an empty optional takes a variable away. TZ=UTC and
    // LC_ALL=C are set unless they stand here.
    std::map<std::string, std::optional<std::string>> environment = {};

    // As user and group 65534, without further groups, if this process is the superuser's. The
    // scratch folder's files stay the superuser's: see ScratchFolder::giveToUnprivilegedUser.
    bool unprivileged = false;
    std::optional<uint64_t> fileSizeLimit = std::nullopt; // bytes; SIGXFSZ is ignored
    std::optional<uint64_t> memoryLimit = std::nullopt;   // bytes of address space
    std::optional<uint32_t> openFilesLimit = std::nullopt;
    std::optional<uint32_t> fileCreationMask = std::nullopt;
    std::vector<int> ignoredSignals = {};

    // Rules of the fault library, one each, and the file for its log of calls ("" for none).
    std::vector<std::string> faults = {};
    std::string faultLog = {};

    std::optional<SignalOnFile> signalOnFile = std::nullopt;
    std::chrono::seconds watchdog = std::chrono::seconds{60};
};

struct CommandResult {
    int status = -1;          // exit status, or -1 if a signal ended it or it could not be started
    int signal = 0;           // the signal that ended it
    bool timedOut = false;    // killed by the watchdog
    bool signalSent = false;  // SignalOnFile has come true
    std::string startFailure; // why it could not be started, else empty
    std::string output;
    std::string error;
    std::string commandLine; // for people to read
    // Largest resident size in bytes. A process inherits the size of the one that it was forked
    // from, so this never falls below `peakFloor`, this process' own size at the start.
    uint64_t peakMemory = 0;
    uint64_t peakFloor = 0;

    // It ended by itself with that status.
    bool exitedWith(int expected) const {
        return startFailure.empty() && !timedOut && signal == 0 && status == expected;
    }
    // Everything, for a failure message.
    std::string describe() const;
};

std::ostream& operator<<(std::ostream& stream, const CommandResult& result);

CommandResult run(const Command& command);

// The built program, to be run in `folder`. It is called "tomex".
Command tomex(const ScratchFolder& folder, std::vector<std::string> arguments);
CommandResult runTomex(const ScratchFolder& folder, std::vector<std::string> arguments);
// Any other program in `folder`.
Command tool(const ScratchFolder& folder, std::string program, std::vector<std::string> arguments);
CommandResult runTool(const ScratchFolder& folder, std::string program,
                      std::vector<std::string> arguments);

// The path of the built program.
std::string tomexProgram();

// One line of the fault library's log.
struct LoggedCall {
    uint64_t number = 0; // counted from 1 over all wrapped calls of the run
    std::string call;    // the name that rules know it by
    std::string path;    // of a call with two paths the first
    std::string secondPath;
};

// Reads a log. Throws std::runtime_error if it is not there or not a log.
std::vector<LoggedCall> readFaultLog(const std::string& file);

} // namespace testsupport
