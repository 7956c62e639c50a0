// From parsed slots to the state of the command, and the listener that acts while parsing.
#pragma once

#include "messages/interface/locale_listener.h"
#include "messages/interface/msg_lib_listener.h"
#include "tabledrivenparser/interface/listener.h"
#include "tabledrivenparser/interface/parser.h"

namespace tomex {

// The parser's listener: passes the options that control diagnostics and their language on to the
// message library as they are read.
class TomexListener final : public tabledrivenparser::Listener {
public:
    TomexListener();

    bool parameterSet(tabledrivenparser::Parameters& parameters, uint32_t parameter,
                      uint64_t value) override;

private:
    messages::LocaleListener m_LocaleListener;
    messages::MsgLibListener m_MsgLibListener;
};

// Reads the slots in their fixed order and fills commandState(): the outcome does not depend on
// the order of the command line. `toolName` is the name under which the program was called.
// --version_number ends the process here.
void processOptions(tabledrivenparser::Parser& parser, const char* toolName);

} // namespace tomex
