// Where the parser tells step by step what it does, for whoever looks for the fault in a table.
#pragma once

namespace tabledrivenparser {

class TraceHook {
public:
    // Takes a piece of the trace: a NUL-ended text that brings its own line feeds and lives for the
    // call only.
    virtual void trace(const char* text) = 0;

protected:
    TraceHook() = default;
    TraceHook(const TraceHook&) = default;
    TraceHook& operator=(const TraceHook&) = default;
    ~TraceHook() = default;
};

} // namespace tabledrivenparser
