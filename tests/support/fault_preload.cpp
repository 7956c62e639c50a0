// A library that stands between a program and its host's file calls, and makes chosen ones fail.
//
// Loaded ahead of the host's library (LD_PRELOAD), it offers functions of the same names. Each asks
// the rules of TOMEX_FAULTS (one a line or with ";" between them; their form is told in
// fault_rules.h) what shall happen to this call and else passes it on. With TOMEX_FAULT_LOG each
// call is noted in that file first: its number, its name, its path, its second path, tabs between.
// So a test can run a program once, see which calls it makes, and then let each of them fail in
// turn. A wrong rule ends the program at its start with status 125.
//
// This file holds what all calls share; the functions themselves are in fault_name_calls.cpp (those
// that work on names) and fault_data_calls.cpp (those that move data).
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/support/fault_wrapper.h"

namespace testsupport {

namespace {

constexpr size_t maximumRules = 64;
constexpr size_t maximumPath = 1024;
constexpr int maximumDescriptor = 1024;

FaultRule* g_rules = nullptr; // an array; null until the library has started
size_t g_ruleCount = 0;
const char* g_log = nullptr;
std::atomic<uint64_t> g_calls = 0;
// The path that each descriptor was opened with; empty where that is not known.
char g_paths[maximumDescriptor][maximumPath];

void complain(const std::string& text) {
    ::syscall(SYS_write, STDERR_FILENO, text.data(), text.size());
    ::_exit(125);
}

void addRule(const std::string& text) {
    if (g_ruleCount == maximumRules) {
        complain("fault rules: too many\n");
    }
    if (const std::optional<std::string> flaw = g_rules[g_ruleCount].parse(text)) {
        complain("fault rules: " + *flaw + " in \"" + text + "\"\n");
    }
    ++g_ruleCount;
}

__attribute__((constructor)) void start() {
    nameDescriptor(STDIN_FILENO, "stdin");
    nameDescriptor(STDOUT_FILENO, "stdout");
    nameDescriptor(STDERR_FILENO, "stderr");
    const char* log = std::getenv("TOMEX_FAULT_LOG");
    g_log = log != nullptr && *log != '\0' ? ::strdup(log) : nullptr;
    const char* text = std::getenv("TOMEX_FAULTS");
    g_rules = new FaultRule[maximumRules];
    const std::string rules = text != nullptr ? text : "";
    size_t position = 0;
    while (position < rules.size()) {
        const size_t end = std::min(rules.find_first_of(";\n", position), rules.size());
        if (end != position) {
            addRule(rules.substr(position, end - position));
        }
        position = end + 1;
    }
}

// A line is put together in a buffer and written at once.
void note(const char* call, const char* path, const char* secondPath) {
    const uint64_t number = ++g_calls;
    if (g_log == nullptr) {
        return;
    }
    char line[2 * maximumPath + 128];
    int length = std::snprintf(
        line, sizeof line, "%llu\t%s\t%.1000s\t%.1000s\n", static_cast<unsigned long long>(number),
        call, path != nullptr ? path : "", secondPath != nullptr ? secondPath : "");
    const long log =
        ::syscall(SYS_openat, AT_FDCWD, g_log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (log >= 0) {
        ::syscall(SYS_write, log, line, static_cast<size_t>(length));
        ::syscall(SYS_close, log);
    }
}

// The path of a descriptor: as it was opened, or where the host says that it leads.
class DescriptorPath {
public:
    explicit DescriptorPath(int descriptor) {
        if (descriptor >= 0 && descriptor < maximumDescriptor && g_paths[descriptor][0] != '\0') {
            m_path = g_paths[descriptor];
            return;
        }
        const int before = errno;
        char link[64];
        std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
        const long length =
            ::syscall(SYS_readlinkat, AT_FDCWD, link, m_buffer, sizeof m_buffer - 1);
        m_buffer[length > 0 ? length : 0] = '\0';
        errno = before;
    }
    DescriptorPath(const DescriptorPath&) = delete;
    DescriptorPath& operator=(const DescriptorPath&) = delete;
    operator const char*() const { return m_path != nullptr ? m_path : m_buffer; }

private:
    const char* m_path = nullptr;
    char m_buffer[maximumPath];
};

} // namespace

void nameDescriptor(int descriptor, const char* path) {
    if (descriptor >= 0 && descriptor < maximumDescriptor) {
        std::strncpy(g_paths[descriptor], path, maximumPath - 1);
    }
}

FaultVerdict meet(const char* call, const char* path, const char* secondPath) {
    FaultVerdict verdict;
    if (g_rules == nullptr) {
        return verdict;
    }
    const int before = errno;
    note(call, path, secondPath);
    for (size_t i = 0; i < g_ruleCount; ++i) {
        if (g_rules[i].applies(call, path, secondPath)) {
            g_rules[i].act(verdict);
        }
    }
    errno = before;
    return verdict;
}

FaultVerdict meetDescriptor(const char* call, int descriptor) {
    return meet(call, DescriptorPath(descriptor));
}

FaultVerdict meetStream(const char* call, FILE* stream) {
    return stream != nullptr ? meetDescriptor(call, ::fileno(stream)) : meet(call, "");
}

FaultVerdict meetTwo(const char* call, int from, int to) {
    return meet(call, DescriptorPath(from), DescriptorPath(to));
}

FaultVerdict meetAt(const char* call, int folder, const char* path) {
    return path != nullptr && *path != '\0' ? meet(call, path) : meetDescriptor(call, folder);
}

} // namespace testsupport
