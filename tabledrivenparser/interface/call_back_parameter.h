// Parameters whose value is a program's own business.
//
// Instead of storing a value, an option of a CALL_BACK parameter calls an object of the program.
// The parameter's value is the address of a holder of that object.
#pragma once

#include "tabledrivenparser/interface/option_table.h"

#include <cstdint>

namespace tabledrivenparser {

class Parser;
struct TextBuffer;

class CallBackParameter {
public:
    // Called for each use of one of the parameter's rows. `dashes` and `text` are those of the
    // word; `argument` is the argument: for a row that requires one the joined text or the next
    // word, for a row where it is optional the joined text or, failing that, the next word on
    // offer, otherwise null. All texts live for the call only.
    //
    // The result is the number of words used: 1 for the option's own, 2 for the next one too, 0 for
    // failure. A row that requires an argument must give 2, which counts as 1 where the argument
    // was joined; so must a row with an optional argument that was offered the next word. A row
    // without argument must give 1. Any other answer is a failure.
    virtual uint32_t invoke(Parser& parser, const OptionRow& row, uint32_t dashes, const char* text,
                            const char* argument) = 0;
    // Writes the options that bring about the present state into `buffer`. `row` is the row to
    // show them by.
    virtual void describe(Parser& parser, const OptionRow* row, TextBuffer& buffer) = 0;
    // Goes back to the state before the first call.
    virtual void reset() = 0;

protected:
    CallBackParameter() = default;
    CallBackParameter(const CallBackParameter&) = default;
    CallBackParameter& operator=(const CallBackParameter&) = default;
    ~CallBackParameter() = default;
};

struct CallBackHolder {
    CallBackParameter* callBack = nullptr;
};

} // namespace tabledrivenparser
