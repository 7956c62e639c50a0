// The parser's observer: whoever wants to see a parameter's value at the moment it is read.
//
// A listener is asked once for each value, before the value is stored; for a parameter that
// collects several values, once per element. Options whose effect cannot wait for the end of the
// command line (how diagnostics look, which language they speak) act here.
#pragma once

#include <cstdint>

namespace tabledrivenparser {

struct Parameters;

class Listener {
public:
    // Called with the index of the parameter and the value about to be stored: a number, a truth
    // value, or the address of a NUL-ended text, by the parameter's type. The text lives at least
    // as long as the parser. True means that the listener has taken the value and that it is not
    // to be stored; false leaves the storing to the parser.
    virtual bool parameterSet(Parameters& parameters, uint32_t parameter, uint64_t value) = 0;

protected:
    Listener() = default;
    Listener(const Listener&) = default;
    Listener& operator=(const Listener&) = default;
    ~Listener() = default;
};

} // namespace tabledrivenparser
