// How the command prints its report lines. Diagnostics go through messages::report.
#pragma once

#include <cstdint>

#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "tomex/command_state.h"

namespace tomex {

// Prints the text of a key on the standard output, with no prefix.
template <class... Arguments>
void reportPlain(uint32_t key, Arguments... arguments) {
    messages::printMessageToStandardOutput(key, arguments...);
}

// The same, only with -v.
template <class... Arguments>
void reportIfVerbose(uint32_t key, Arguments... arguments) {
    if (commandState().verbose) {
        reportPlain(key, arguments...);
    }
}

// Prints a text that is in no catalogue, as a remark, ended by a newline.
template <class... Arguments>
void reportText(const char* format, Arguments... arguments) {
    messages::reportText(messages::Severity_Remark, nullptr, format, arguments...);
}

} // namespace tomex
