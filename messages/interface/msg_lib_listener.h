// The parser's listener for the options that control diagnostics. They act as soon as they are
// read, in the order of the command line.
#pragma once

#include "tabledrivenparser/interface/listener.h"

#include <cstdint>

namespace messages {

// The numbers of the parameters in the tool's option table.
struct DiagnosticParameters {
    uint32_t style;    // diag_style
    uint32_t suppress; // diag_suppress
    uint32_t error;    // diag_error
    uint32_t warning;  // diag_warning
    uint32_t remark;   // diag_remark
};

// Values of the enumeration behind `diag_style`, in the order of its rows.
enum DiagnosticStyle : uint32_t {
    DiagnosticStyle_List = 0,
    DiagnosticStyle_Qel = 1,
    DiagnosticStyle_Ide = 2,
    DiagnosticStyle_DevStudio = 3,
    DiagnosticStyle_Gnu = 4,
};

class MsgLibListener final : public tabledrivenparser::Listener {
public:
    explicit MsgLibListener(const DiagnosticParameters& parameters) : m_Parameters(parameters) {}

    // `value` is a row's value of `diag_style`, or the address of one element of a list. True if
    // an element was refused and is not to be stored; false also for parameters of others.
    bool parameterSet(tabledrivenparser::Parameters& parameters, uint32_t parameter,
                      uint64_t value) override;

private:
    DiagnosticParameters m_Parameters;
};

} // namespace messages
