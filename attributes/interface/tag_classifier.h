// What kind of value a tag of the vendor "qeabi" has, known or not: a reader can step over tags
// that it has never heard of. The rule is part of the public format of build attributes.
#pragma once

#include <cstdint>

namespace attributes {

class BuildAttributesTagClassifier {
public:
    // A number: 6 to 31, and any even tag outside 0 to 32.
    static constexpr bool isQeabiNumericTag(int32_t tag) {
        return isLegacy(tag) ? tag >= 6 && tag <= 31 : (tag & 1) == 0;
    }
    // A text: 4, 5, and any odd tag outside 0 to 32.
    static constexpr bool isQeabiStringTag(int32_t tag) {
        return isLegacy(tag) ? tag == 4 || tag == 5 : (tag & 1) != 0;
    }
    // A number and a text: 32 alone.
    static constexpr bool isQeabiNumericAndStringTag(int32_t tag) { return tag == 32; }

private:
    static constexpr bool isLegacy(int32_t tag) { return tag >= 0 && tag <= 32; }
};

} // namespace attributes
