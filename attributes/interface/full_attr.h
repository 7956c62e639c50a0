// The build attributes of an object in the one compact form on which all comparing, merging and
// printing of attributes works: which instructions it uses, how it reaches code and data, and what
// it asks of the objects that it is linked with.
#pragma once

#include <cstdint>

namespace attributes {

// A set of features, 128 bits.
struct IsaSet {
    uint64_t low = 0;
    uint64_t high = 0;

    bool operator==(const IsaSet&) const = default;
};

// A plain value, copied by assignment. All zero means "nothing known".
struct FullAttr {
    IsaSet isa;
    uint32_t targetClass = 0;  // class code of the target that it was derived from
    uint32_t targetKind = 0;   // what that target is: architecture, processor, floating-point unit
    uint16_t access[4] = {};   // loads of code, of read-only data, of data; stores
    uint64_t options = 0;      // build options
    uint64_t requirements = 0; // bit 0: needs 8-byte alignment; bit 1: preserves it
    uint64_t abiVersion = 0;   // 0 unknown

    bool operator==(const FullAttr&) const = default;
};

} // namespace attributes
