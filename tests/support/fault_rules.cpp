// Parsing happens once, at the program's start; matching compares texts. The acts go to the kernel
// directly, as the host's functions of that name are wrapped by the library that this belongs to.
#include "tests/support/fault_rules.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace testsupport {

namespace {

struct CallGroup {
    std::string_view name;
    std::string_view calls; // with a blank before and behind each
};

// What a test author means by "every write" and the like.
constexpr CallGroup callGroups[] = {
    {"@open", " open openat creat fopen freopen mkstemp "},
    {"@read", " read pread readv preadv fread fgets fgetc "},
    {"@write",
     " write pwrite writev pwritev fwrite fputs fputc fflush copy_file_range sendfile splice "},
    {"@size", " ftruncate fallocate posix_fallocate "},
    {"@close", " close fclose "},
    {"@rename", " rename renameat renameat2 link linkat "},
    {"@remove", " unlink unlinkat remove "},
    {"@look", " stat lstat fstat fstatat statx access faccessat "},
    {"@folder", " opendir readdir "},
};

bool callMatches(std::string_view rule, std::string_view call) {
    if (rule == "*" || rule == call) {
        return true;
    }
    for (const CallGroup& group : callGroups) {
        if (rule == group.name) {
            size_t at = group.calls.find(call);
            while (at != std::string_view::npos) {
                if (group.calls[at - 1] == ' ' && group.calls[at + call.size()] == ' ') {
                    return true;
                }
                at = group.calls.find(call, at + 1);
            }
        }
    }
    return false;
}

std::optional<uint64_t> number(std::string_view text) {
    if (text.empty() || text.size() > 18 ||
        text.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (const char digit : text) {
        value = value * 10 + static_cast<uint64_t>(digit - '0');
    }
    return value;
}

// The number from 1 to 255 that the host gives that name, or the number itself.
std::optional<int> named(std::string_view text, const char* (*nameOf)(int)) {
    if (const std::optional<uint64_t> value = number(text)) {
        return static_cast<int>(*value);
    }
    for (int i = 1; i < 256; ++i) {
        const char* name = nameOf(i);
        if (name != nullptr && text == name) {
            return i;
        }
    }
    return std::nullopt;
}

const char* errorName(int number) {
    return ::strerrorname_np(number);
}

const char* signalName(int number) {
    return number < NSIG ? ::sigabbrev_np(number) : nullptr;
}

bool splitPair(std::string_view text, std::string& first, std::string& second) {
    const size_t comma = text.find(',');
    if (comma == std::string_view::npos || comma == 0 || comma + 1 == text.size()) {
        return false;
    }
    first = text.substr(0, comma);
    second = text.substr(comma + 1);
    return true;
}

} // namespace

std::optional<std::string> FaultRule::parse(std::string_view text) {
    const size_t end = text.find(':');
    m_call = text.substr(0, end);
    bool known = m_call == "*" || (!m_call.empty() && m_call[0] != '@');
    for (const CallGroup& group : callGroups) {
        known = known || m_call == group.name;
    }
    if (!known) {
        return "no such call \"" + m_call + "\"";
    }
    size_t position = end;
    while (position != std::string_view::npos) {
        const size_t start = position + 1;
        position = text.find(':', start);
        const size_t length = position == std::string_view::npos ? position : position - start;
        if (std::optional<std::string> flaw = parsePart(text.substr(start, length))) {
            return flaw;
        }
    }
    return std::nullopt;
}

std::optional<std::string> FaultRule::parsePart(std::string_view part) {
    const size_t equals = part.find('=');
    const std::string_view key = part.substr(0, equals);
    const std::string_view value =
        equals == std::string_view::npos ? std::string_view{} : part.substr(equals + 1);
    bool good = !value.empty();
    if (part == "abort") {
        m_signal = SIGKILL;
        good = true;
    } else if (key == "path") {
        m_path = value;
        m_pathIsPattern = value.find_first_of("*?[") != std::string_view::npos;
    } else if (key == "nth") {
        return parseTimes(value);
    } else if (key == "delete") {
        m_deleted = value;
    } else if (key == "replace") {
        good = splitPair(value, m_replaced, m_replacement);
    } else if (key == "truncate") {
        std::string size;
        good = splitPair(value, m_truncated, size) && number(size);
        m_truncatedSize = number(size).value_or(0);
    } else if (key == "signal") {
        const std::optional<int> found = named(value, signalName);
        m_signal = found.value_or(0);
        good = found.has_value();
    } else if (key == "errno") {
        m_errorNumber = named(value, errorName);
        good = m_errorNumber.has_value();
    } else if (key == "short") {
        m_limit = number(value);
        good = m_limit.has_value();
    } else {
        good = false;
    }
    return good ? std::nullopt : std::optional<std::string>("\"" + std::string{part} + "\"");
}

std::optional<std::string> FaultRule::parseTimes(std::string_view times) {
    if (times == "*") {
        return std::nullopt;
    }
    const bool open = times.ends_with('+');
    const std::optional<uint64_t> first = number(times.substr(0, times.size() - (open ? 1 : 0)));
    if (!first || *first == 0) {
        return "\"nth=" + std::string{times} + "\"";
    }
    m_first = *first;
    m_last = open ? UINT64_MAX : *first;
    return std::nullopt;
}

bool FaultRule::applies(const char* call, const char* path, const char* secondPath) {
    const auto pathMatches = [this](const char* candidate) {
        if (candidate == nullptr) {
            return false;
        }
        return m_pathIsPattern ? ::fnmatch(m_path.c_str(), candidate, 0) == 0
                               : std::string_view{candidate}.ends_with(m_path);
    };
    if (!callMatches(m_call, call) ||
        !(m_path.empty() || pathMatches(path) || pathMatches(secondPath))) {
        return false;
    }
    const uint64_t time = ++m_seen;
    return m_first <= time && time <= m_last;
}

void FaultRule::act(FaultVerdict& verdict) const {
    if (!m_deleted.empty()) {
        ::syscall(SYS_unlinkat, AT_FDCWD, m_deleted.c_str(), 0);
    }
    if (!m_replaced.empty()) {
        ::syscall(SYS_renameat2, AT_FDCWD, m_replacement.c_str(), AT_FDCWD, m_replaced.c_str(), 0);
    }
    if (!m_truncated.empty()) {
        ::syscall(SYS_truncate, m_truncated.c_str(), m_truncatedSize);
    }
    if (m_signal != 0) {
        ::syscall(SYS_kill, ::getpid(), m_signal);
    }
    if (!verdict.errorNumber) {
        verdict.errorNumber = m_errorNumber;
    }
    if (!verdict.limit) {
        verdict.limit = m_limit;
    }
}

} // namespace testsupport
