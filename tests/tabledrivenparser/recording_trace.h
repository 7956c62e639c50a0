// A trace hook that writes down what it is told.
#pragma once

#include "tabledrivenparser/interface/trace_hook.h"

#include <string>
#include <vector>

namespace tabledrivenparser {

class RecordingTrace final : public TraceHook {
public:
    void trace(const char* text) override { pieces.emplace_back(text); }

    std::vector<std::string> pieces;
};

} // namespace tabledrivenparser
