#include "tests/support/program_start.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "tests/support/witness.h"

namespace testsupport {

namespace {

constexpr uid_t unprivilegedUser = 65534;
constexpr gid_t unprivilegedGroup = 65534;

Pipe makePipe() {
    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        failSetUp("make a pipe");
    }
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

bool startsAsAnotherUser(const Command& command) {
    return command.unprivileged && ::geteuid() == 0;
}

// --- environment ---------------------------------------------------------------------------------

using Environment = std::map<std::string, std::string>;

Environment ownEnvironment() {
    Environment variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const size_t equals = text.find('=');
        variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
    return variables;
}

void addFaults(const Command& command, const std::string& preload, Environment& variables) {
    if (command.faults.empty() && command.faultLog.empty()) {
        return;
    }
    variables["LD_PRELOAD"] = preload;
    variables["TOMEX_FAULTS"] = joined(command.faults, '\n');
    if (!command.faultLog.empty()) {
        variables["TOMEX_FAULT_LOG"] = command.faultLog;
    }
}

// An error that a sanitizer finds must not look like a failure that the program reports itself.
// The fault library comes before the sanitizer's, which the latter would refuse.
void addSanitizerOptions(Environment& variables) {
    const std::string status = std::string("exitcode=") + std::to_string(sanitizerStatus);
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        std::string& options = variables[name];
        options += options.empty() ? "" : ":";
        options += status;
    }
    variables["ASAN_OPTIONS"] += ":verify_asan_link_order=0";
}

std::vector<std::string> environmentFor(const Command& command, const std::string& preload) {
    Environment variables = ownEnvironment();
    variables["TZ"] = "UTC";
    variables["LC_ALL"] = "C";
    if (sanitizedBuild) {
        addSanitizerOptions(variables);
    }
    addFaults(command, preload, variables);
    for (const auto& [name, value] : command.environment) {
        if (value) {
            variables[name] = *value;
        } else {
            variables.erase(name);
        }
    }
    std::vector<std::string> entries;
    for (const auto& [name, value] : variables) {
        entries.push_back(name);
        entries.back().append("=").append(value);
    }
    return entries;
}

// --- preparation ---------------------------------------------------------------------------------

Descriptor inputDescriptor(const std::string& bytes) {
    if (bytes.empty()) {
        return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
    Descriptor file(::memfd_create("input", MFD_CLOEXEC));
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file.get(), bytes.data() + written, bytes.size() - written);
        if (count <= 0) {
            failSetUp("write the standard input");
        }
        written += static_cast<size_t>(count);
    }
    ::lseek(file.get(), 0, SEEK_SET);
    return file;
}

Pipe outputPipe(Stream stream) {
    if (stream != Stream::Capture && stream != Stream::ClosedPipe) {
        return Pipe();
    }
    Pipe pipe = makePipe();
    if (stream == Stream::ClosedPipe) {
        pipe.readEnd.close();
    } else {
        ::fcntl(pipe.readEnd.get(), F_SETFL, O_NONBLOCK);
    }
    return pipe;
}

Descriptor watchOf(const Command& command) {
    if (!command.signalOnFile) {
        return Descriptor();
    }
    Descriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    const char* folder = command.folder.empty() ? "." : command.folder.c_str();
    if (::inotify_add_watch(watch.get(), folder, IN_CREATE | IN_MOVED_TO) < 0) {
        failSetUp("watch the folder");
    }
    return watch;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

// --- the child -----------------------------------------------------------------------------------

[[noreturn]] void giveUp(const Preparation& ready, const char* step) {
    StartFailure failure = {errno, {}};
    std::strncpy(failure.step, step, sizeof failure.step - 1);
    [[maybe_unused]] const ssize_t written =
        ::write(ready.failure.writeEnd.get(), &failure, sizeof failure);
    ::_exit(127);
}

void connectStream(const Preparation& ready, Stream stream, const Pipe& pipe,
                   const std::string& file, int target) {
    int source = -1;
    switch (stream) {
    case Stream::Capture:
    case Stream::ClosedPipe:
        source = pipe.writeEnd.get();
        break;
    case Stream::File:
        source = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        break;
    case Stream::Discard:
        source = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        break;
    case Stream::Closed:
        ::close(target);
        return;
    }
    if (source < 0 || ::dup2(source, target) < 0) {
        giveUp(ready, "connect an output stream");
    }
}

void limit(const Preparation& ready, int resource, uint64_t value) {
    const rlimit limits = {value, value};
    if (::setrlimit(static_cast<__rlimit_resource>(resource), &limits) != 0) {
        giveUp(ready, "set a limit");
    }
}

void setSignals(const Command& command) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGALRM}) {
        std::signal(number, SIG_DFL);
    }
    for (const int number : command.ignoredSignals) {
        std::signal(number, SIG_IGN);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void setLimits(const Command& command, const Preparation& ready) {
    limit(ready, RLIMIT_CORE, 0);
    if (command.fileSizeLimit) {
        std::signal(SIGXFSZ, SIG_IGN);
        limit(ready, RLIMIT_FSIZE, *command.fileSizeLimit);
    }
    if (command.memoryLimit) {
        limit(ready, RLIMIT_AS, *command.memoryLimit);
    }
    if (command.openFilesLimit) {
        limit(ready, RLIMIT_NOFILE, *command.openFilesLimit);
    }
    if (command.fileCreationMask) {
        ::umask(*command.fileCreationMask);
    }
}

} // namespace

void failSetUp(const char* what) {
    throw std::runtime_error(std::string{"cannot "} + what + ": " + std::strerror(errno));
}

std::string joined(const std::vector<std::string>& texts, char separator) {
    std::string all;
    for (const std::string& text : texts) {
        if (!all.empty()) {
            all += separator;
        }
        all += text;
    }
    return all;
}

Preparation prepare(const Command& command) {
    Preparation ready;
    ready.programPath = command.program.find('/') != std::string::npos
                            ? command.program
                            : findTool(command.program).value_or(command.program);
    ready.arguments.push_back(command.argumentZero.value_or(command.program));
    ready.arguments.insert(ready.arguments.end(), command.arguments.begin(),
                           command.arguments.end());
    std::string preload = TOMEX_FAULT_PRELOAD;
    if (startsAsAnotherUser(command)) {
        // The other user may not be let into the folders that these lie in; an open descriptor
        // needs no way to the file.
        ready.program = Descriptor(::open(ready.programPath.c_str(), O_RDONLY | O_CLOEXEC));
        ready.preload = Descriptor(::open(preload.c_str(), O_RDONLY));
        preload = std::string("/proc/self/fd/") + std::to_string(ready.preload.get());
    }
    ready.environment = environmentFor(command, preload);
    ready.argumentPointers = pointersTo(ready.arguments);
    ready.environmentPointers = pointersTo(ready.environment);
    ready.input = inputDescriptor(command.input);
    ready.output = outputPipe(command.output);
    ready.error = outputPipe(command.error);
    ready.failure = makePipe();
    ready.folderWatch = watchOf(command);
    return ready;
}

void becomeProgram(const Command& command, const Preparation& ready) {
    ::setpgid(0, 0);
    if (!command.folder.empty() && ::chdir(command.folder.c_str()) != 0) {
        giveUp(ready, "enter the folder");
    }
    setSignals(command);
    ::dup2(ready.input.get(), STDIN_FILENO);
    if (command.inputClosed) {
        ::close(STDIN_FILENO);
    }
    connectStream(ready, command.output, ready.output, command.outputFile, STDOUT_FILENO);
    connectStream(ready, command.error, ready.error, command.errorFile, STDERR_FILENO);
    setLimits(command, ready);
    if (startsAsAnotherUser(command)) {
        if (::setgroups(0, nullptr) != 0 ||
            ::setresgid(unprivilegedGroup, unprivilegedGroup, unprivilegedGroup) != 0 ||
            ::setresuid(unprivilegedUser, unprivilegedUser, unprivilegedUser) != 0) {
            giveUp(ready, "become the unprivileged user");
        }
        ::fexecve(ready.program.get(), ready.argumentPointers.data(),
                  ready.environmentPointers.data());
    } else {
        ::execve(ready.programPath.c_str(), ready.argumentPointers.data(),
                 ready.environmentPointers.data());
    }
    giveUp(ready, "start the program");
}

} // namespace testsupport
