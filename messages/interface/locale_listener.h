// The parser's listener for `message_locale`: the language changes as soon as the option is read,
// so that what is reported of later options is in it already.
#pragma once

#include "messages/interface/message_locale.h"
#include "tabledrivenparser/interface/listener.h"

namespace messages {

class LocaleListener final : public tabledrivenparser::Listener {
public:
    // `report` (may be null) is told of a name that selects nothing; see `setMessageLocale`.
    explicit LocaleListener(FatalReporter report) : m_Report(report) {}

    // `value` is the address of the name. Always false: the parser keeps the text as well.
    bool parameterSet(tabledrivenparser::Parameters& parameters, uint32_t parameter,
                      uint64_t value) override;

private:
    FatalReporter m_Report;
};

} // namespace messages
