// Short forms for tests about decorations.
#pragma once

#include "attributes/interface/decoration.h"

#include <string>

namespace attributes::test {

// The decoration of a value, measured and then printed.
inline std::string printed(const FullAttr& value) {
    const uint64_t length = printDecoration(value, nullptr, 0);
    std::string text(length + 1, '\xEE');
    const uint64_t written = printDecoration(value, text.data(), text.size());
    // A length that differs from the first one shows as a text of the wrong size.
    text.resize(written);
    return text;
}

inline FullAttr parsed(const std::string& text) {
    FullAttr value;
    parseDecoration(value, text.c_str());
    return value;
}

} // namespace attributes::test
