// Forms of access to memory: the defaults of each architecture, and strings such as
// "code+rodata:+UL41-L11/2" that change them.
#pragma once

#include <cstdint>

namespace attributes {

// The four words of `FullAttr::access`: loads of code, of read-only data, of data; stores.
using AccessWords = uint16_t[4];

// Applies `text` (not null) to the words. It begins with the names of regions, joined by "+" and
// ended by an optional ":" ("code", "text", "rodata", "ro", "rw", "data", "all", in any case; all
// of them when there is none). Items follow: "+" or "-", a form ("UL41"), and optionally "/" with a
// number, which is skipped. The forms behind "-" are taken out of the regions' words before those
// behind "+" go in; stores always belong to the last word. The walk ends at the first place that
// holds no item.
void applyAccessString(AccessWords& access, const char* text);

// Whether objects of a `Tag_CPU_arch` may access memory without alignment by default.
constexpr bool allowsUnalignedAccess(uint32_t arch) {
    return (arch >= 6 && arch <= 17) || (arch >= 21 && arch <= 23);
}

// The forms that an object may use by default: by its `Tag_CPU_arch`.
void defaultAccess(uint32_t arch, AccessWords& access);

// The same by name: null stands for an architecture in the middle, "v6" for those that access
// memory without alignment, "Finch" for the compact instruction set, any other for the oldest.
void defaultAccessByName(const char* name, AccessWords& access);

} // namespace attributes
