// What shall happen at which of a program's host calls.
//
// A rule is a text of parts with ":" between them. The first part says which calls it is for: a
// call's name without decorations ("write" is also the 64-bit and the checked form), a group
// ("@write", see the groups in fault_rules.cpp) or "*" for every wrapped call. Then follow, in any
// order:
//   path=TEXT           only calls on a path that ends in TEXT, or, if TEXT has one of "*?[", that
//                       matches it as a whole. For a call on a descriptor it is the path that the
//                       descriptor was opened with; standard streams are "stdin", "stdout",
//                       "stderr".
//   nth=3  nth=3+  nth=*   the third matching call, the third and all later ones, every one (as
//                       without nth)
// and what happens there; several things may:
//   delete=FILE         FILE is removed
//   replace=FILE,OTHER  OTHER takes FILE's place
//   truncate=FILE,SIZE  FILE is cut or grown to SIZE bytes
//   signal=TERM         the program gets that signal
//   abort               the program is killed on the spot
//   errno=ENOSPC        the call is not made and fails so; a number will do, too. Closing closes
//                       and fails then, as hosts do it.
//   short=5             the call moves at most 5 bytes (or, 0, finds the end)
// A call at which nothing of the last two happens is made as usual.
//
// Nothing here allocates or locks after parsing, so that a call may come from a signal handler.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

// What a wrapper has to do with its call.
struct FaultVerdict {
    std::optional<int> errorNumber; // fail with it
    std::optional<size_t> limit;    // move at most so many bytes

    size_t cut(size_t size) const { return limit && *limit < size ? *limit : size; }
};

class FaultRule {
public:
    // Parses a rule. A wrong one gives what is wrong with it.
    std::optional<std::string> parse(std::string_view text);

    // Whether this is a call for the rule, and the time for it. Counts. Paths may be null.
    bool applies(const char* call, const char* path, const char* secondPath);
    // Does the things that happen beside the call, and adds to what happens to the call itself.
    void act(FaultVerdict& verdict) const;

private:
    std::optional<std::string> parsePart(std::string_view part);
    std::optional<std::string> parseTimes(std::string_view times);

    std::string m_call;
    std::string m_path;
    bool m_pathIsPattern = false;
    uint64_t m_first = 1;
    uint64_t m_last = UINT64_MAX;
    std::atomic<uint64_t> m_seen = 0;

    std::string m_deleted;
    std::string m_replaced;
    std::string m_replacement;
    std::string m_truncated;
    uint64_t m_truncatedSize = 0;
    int m_signal = 0;
    std::optional<int> m_errorNumber;
    std::optional<size_t> m_limit;
};

} // namespace testsupport
