#include "platform/interface/internal_check.h"

#include "platform/interface/tool_identity.h"
#include "platform/src/check_output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace platform {

// Checks run from the first instruction on; the user's option comes later.
uint32_t checkLevel = CheckLevel_Low;

namespace {

constexpr std::string_view assertionPrefix = "Assertion failed: ";
constexpr std::string_view buildFolder = "work";

// The output of a program that has no message library.
void printToStandardError(const char* format, va_list arguments) {
    std::vfprintf(stderr, format, arguments);
}

void beginPlainFault() {
    std::fputs("Internal fault: ", stderr);
}

void flushStandardError() {
    std::fflush(stderr);
}

constexpr CheckOutput plainOutput{beginPlainFault, printToStandardError, flushStandardError};

const CheckOutput* g_output = &plainOutput;
void (*g_exitProgram)(int status) = nullptr;

[[noreturn]] void leave() {
    if (g_exitProgram != nullptr) {
        g_exitProgram(EXIT_FAILURE);
    }
    std::exit(EXIT_FAILURE);
}

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

// True if a folder "work" begins behind the separator at `at`.
bool isBuildFolder(std::string_view text, uint64_t at) {
    const uint64_t end = at + 1 + buildFolder.size();
    return isSeparator(text[at]) && text.substr(at + 1, buildFolder.size()) == buildFolder &&
           end < text.size() && isSeparator(text[end]);
}

// A fault's format without the place of the build: a head that stays, and the rest.
struct FaultText {
    std::string_view head;
    std::string_view tail;
};

FaultText withoutBuildFolder(std::string_view text) {
    const uint64_t line = text.find(" line ");
    if (text.starts_with(assertionPrefix) && line != std::string_view::npos) {
        for (uint64_t at = line; at-- > assertionPrefix.size();) {
            if (isBuildFolder(text, at)) {
                return {assertionPrefix, text.substr(at + 1)};
            }
        }
    }
    return {text, {}};
}

// Goes on with the hash of what stands before `text`, which is 0 for nothing.
uint32_t hashOn(uint32_t hash, std::string_view text) {
    for (const char c : text) {
        if (c == '\n' || c == '\0') {
            break;
        }
        const auto value = static_cast<signed char>(c == '\\' ? '/' : c);
        hash = (hash * 31 + static_cast<uint32_t>(int32_t{value})) & 0xFFFFFFU;
    }
    return hash;
}

} // namespace

void printCheckText(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    g_output->print(format, arguments);
    va_end(arguments);
}

void setCheckOutput(const CheckOutput* output) {
    g_output = output != nullptr ? output : &plainOutput;
}

void setCheckExit(void (*exitProgram)(int status)) {
    g_exitProgram = exitProgram;
}

void setCheckLevel(const char* text) {
    if (text == nullptr) {
        return;
    }
    std::string_view rest = text;
    if (rest == "show") {
        showChecks();
        return;
    }
    constexpr std::string_view showPrefix = "show,";
    const bool show = rest.starts_with(showPrefix);
    if (show) {
        rest.remove_prefix(showPrefix.size());
    }
    constexpr const char* names[] = {"none", "low", "medium", "high", "extravagant"};
    uint32_t level = CheckLevel_None;
    // Nothing behind "show," stands for the first level: required by scripts that write it so.
    if (!show || !rest.empty()) {
        while (level <= CheckLevel_Extravagant && rest != names[level]) {
            ++level;
        }
    }
    if (level > CheckLevel_Extravagant) {
        return;
    }
    checkLevel = level;
    if (show) {
        showChecks();
    }
}

void showChecks() {
    constexpr struct {
        uint32_t level;
        const char* text;
    } lines[] = {
        {CheckLevel_Low, "COLD LOW checks enabled\n"},
        {CheckLevel_Medium, "COLD MEDIUM checks enabled\n"},
        {CheckLevel_High, "COLD HIGH checks enabled\n"},
        {CheckLevel_Extravagant, "COLD EXTRAVAGANT checks enabled\n"},
        {CheckLevel_Low, "HOT LOW checks enabled\n"},
    };
    for (const auto& line : lines) {
        if (checkLevel >= line.level) {
            printCheckText("%s", line.text);
        }
    }
}

void assertionFailed(const char* format, ...) {
    const char* version = versionNumberText();
    g_output->beginFault();
    printCheckText("[0x%06x:%s] ", faultFingerprint(format), version);
    va_list arguments;
    va_start(arguments, format);
    g_output->print(format, arguments);
    va_end(arguments);
    printCheckText("\n");
    g_output->flush();
    leave();
}

void checkFailed(const char* file, uint32_t line, const char* condition) {
    char format[512];
    const char* extension = std::strrchr(file, '.');
    const char* end = extension != nullptr ? extension : file + std::strlen(file);
    const char* const limit = format + sizeof(format) - 32; // leaves room for what follows
    char* to = std::copy(assertionPrefix.begin(), assertionPrefix.end(), format);
    for (const char* from = file; from != end && to < limit; ++from) {
        *to++ = *from;
        if (*from == '%') {
            *to++ = '%'; // part of a folder's name, not a conversion
        }
    }
    std::snprintf(to, static_cast<uint64_t>(format + sizeof(format) - to), " line %u (%%s)", line);
    assertionFailed(format, condition);
}

std::string normalisedFault(const char* format) {
    const FaultText text = withoutBuildFolder(format);
    return std::string(text.head).append(text.tail);
}

uint32_t faultFingerprint(const char* format) {
    const FaultText text = withoutBuildFolder(format);
    return hashOn(hashOn(0, text.head), text.tail);
}

uint32_t faultHash(const char* text) {
    return hashOn(0, text);
}

} // namespace platform
