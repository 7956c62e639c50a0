// What every wrapper of the fault library is made of.
//
// A wrapper has a C++ name of its own and gets the host's name as an assembler label: so it need
// not repeat every attribute of the host's declaration. It may run in a signal handler and so
// neither allocates nor locks.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>

#include <dlfcn.h>
#include <sys/types.h>

#include "tests/support/fault_rules.h"

static_assert(sizeof(off_t) == 8, "both forms of each call are one here");

namespace testsupport {

// Notes a call and gives what shall happen to it; errno is as before. The path is that of the
// descriptor or stream where the call has one.
FaultVerdict meet(const char* call, const char* path, const char* secondPath = nullptr);
FaultVerdict meetDescriptor(const char* call, int descriptor);
FaultVerdict meetStream(const char* call, FILE* stream);
FaultVerdict meetTwo(const char* call, int from, int to);
// For a path in a folder, where no path means the folder's descriptor itself.
FaultVerdict meetAt(const char* call, int folder, const char* path);

// Remembers what a descriptor was opened with ("" for nothing). errno is as before.
void nameDescriptor(int descriptor, const char* path);

// The rest of the way of a call that failed by a rule: -1 or what stands for it.
template <typename Result>
Result failed(const FaultVerdict& verdict, Result result) {
    errno = *verdict.errorNumber;
    return result;
}

// What the host has under that name. Looked up at the start, as a signal handler should not.
template <typename Function>
Function hostFunction(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

// For a call that comes even before this library has started.
template <typename Function>
Function hostFunction(Function& known, const char* name) {
    if (known == nullptr) {
        known = hostFunction<Function>(name);
    }
    return known;
}

} // namespace testsupport

// Starts the wrapper of a host function. The arguments are types and names, which cannot stand in
// parentheses. NOLINTBEGIN(bugprone-macro-parentheses)
#define WRAPPER(result, name, parameters)                                                          \
    extern "C" __attribute__((visibility("default")))                                              \
    result wrapped_##name parameters __asm__(#name);                                               \
    namespace {                                                                                    \
    result(*real_##name) parameters = hostFunction<result(*) parameters>(#name);                   \
    }                                                                                              \
    extern "C" result wrapped_##name parameters

// NOLINTEND(bugprone-macro-parentheses)

// Gives a wrapper a second name under which programs may call the same function.
#define ALSO_CALLED(other, name)                                                                   \
    extern "C"                                                                                     \
        __attribute__((visibility("default"))) decltype(wrapped_##name) wrapped_##other __asm__(   \
            #other) __attribute__((alias(#name)));

// The host's own function, within its wrapper and elsewhere.
#define HOST(name) hostFunction(real_##name, #name)
