#include "messages/interface/msg_lib_listener.h"

#include "messages/interface/diagnostic_control.h"
#include "messages/interface/message_session.h"
#include "messages/interface/report.h"
#include "tabledrivenparser/interface/parameters.h"

namespace messages {

namespace {

int32_t styleOf(uint64_t value) {
    switch (value) {
    case DiagnosticStyle_Qel:
        return 0;
    case DiagnosticStyle_Gnu:
        return 2;
    default:
        return 1;
    }
}

} // namespace

bool MsgLibListener::parameterSet(tabledrivenparser::Parameters& /*parameters*/, uint32_t parameter,
                                  uint64_t value) {
    if (parameter == m_Parameters.style) {
        setStyle(styleOf(value));
        return false;
    }
    const struct {
        uint32_t parameter;
        uint32_t severity;
    } targets[] = {
        {m_Parameters.suppress, Severity_Suppressed},
        {m_Parameters.error, Severity_Error},
        {m_Parameters.warning, Severity_FixedWarning},
        {m_Parameters.remark, Severity_Remark},
    };
    for (const auto& target : targets) {
        if (parameter == target.parameter) {
            return applyDiagnosticControl(target.severity, tabledrivenparser::textOfValue(value));
        }
    }
    return false;
}

} // namespace messages
