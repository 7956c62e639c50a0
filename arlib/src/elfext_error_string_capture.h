// Keeps what the ELF reader says of a member, so that it can be told as the reason of one warning.
//
// Every report ends the read: a member is either read without a flaw or not at all, and so the
// first sentence is the only one.
#pragma once

#include <string>

#include "elfext/interface/error_handler.h"

namespace arlib {

class ElfextErrorStringCapture final : public elfext::ErrorHandler {
public:
    // `text` gets the sentences and must outlive the handler.
    explicit ElfextErrorStringCapture(std::string& text) : m_Text(text) {}

    bool report(elfext::ObjectModule*, elfext::Severity, const char* message) override {
        m_Text += message;
        return false;
    }

private:
    std::string& m_Text;
};

} // namespace arlib
