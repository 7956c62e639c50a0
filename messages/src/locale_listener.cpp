#include "messages/interface/locale_listener.h"

#include "tabledrivenparser/interface/parameters.h"

namespace messages {

bool LocaleListener::parameterSet(tabledrivenparser::Parameters& /*parameters*/,
                                  uint32_t /*parameter*/, uint64_t value) {
    setMessageLocale(tabledrivenparser::textOfValue(value), m_Report);
    return false;
}

} // namespace messages
