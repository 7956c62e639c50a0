// The reporter that the tool hands to the command-line parser: passes its messages on to the
// message library's own road.
#pragma once

#include "tabledrivenparser/interface/reporter.h"

namespace messages {

class ParseReporter final : public tabledrivenparser::Reporter {
public:
    // Reports as `reportParseMessage` does: a fatal message ends the process.
    void reportParseMessage(uint32_t severity, uint32_t key, ...) override;
};

} // namespace messages
