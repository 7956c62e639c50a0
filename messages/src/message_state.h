// The state of the message library: one record, since the settings of a run are global by design.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

namespace messages {

constexpr uint32_t severityCount = 7;
constexpr uint32_t numberedSeverities = 10000;
constexpr uint32_t defaultErrorLimit = 50;

struct MessageState {
    // What a severity becomes by a setting for its whole class.
    std::array<int32_t, severityCount> severityMap{0, 1, 2, 3, 4, 5, 6};
    // What the user set for a key's number; 0 is no setting. The table stands by itself, as it is
    // large and zero in nearly every run.
    std::array<uint32_t, numberedSeverities>* numberSeverity;
    bool numberSeverityDirty = false;
    char toolLetter = 'L';
    const char* toolName = "tomex";
    int32_t style = 0;
    // By severity, from 1 on.
    std::array<uint32_t, severityCount - 1> counts{};
    uint32_t errorLimit = defaultErrorLimit;
    void (*limitHandler)() = nullptr;
    std::FILE* stream = nullptr;
    std::FILE* savedOut = nullptr;
    std::FILE* savedErr = nullptr;
    uint32_t column = 0;

    void (*exitHandler)(int status) = nullptr;
    bool outputLost = false;
    // The host's number for the first failure of the standard output; 0 while there is none, and
    // once it has been reported.
    int standardOutputError = 0;
    bool standardOutputIsTerminal = false;
};

MessageState& messageState();

// Leaves the process through the exit handler.
[[noreturn]] void leaveProgram(int status);

} // namespace messages
