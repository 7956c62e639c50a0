// Which of the four words of access a region addresses.
#pragma once

#include "attributes/interface/access_strings.h"
#include "attributes/src/decoration_tables.h"

namespace attributes {

// Takes each word that `region` addresses, keeps of it what is in `keep`, and adds `add`. Loads are
// the low halves of the masks. Stores, the high halves, change in any case.
inline void changeAccess(AccessWords& access, uint32_t region, uint32_t keep, uint32_t add) {
    constexpr uint32_t addressing[] = {region_bit::CODE, region_bit::READ_ONLY,
                                       region_bit::READ_ONLY | region_bit::DATA};
    for (uint32_t word = 0; word < 3; ++word) {
        if ((region & addressing[word]) != 0) {
            access[word] = static_cast<uint16_t>((access[word] & keep) | add);
        }
    }
    access[3] = static_cast<uint16_t>((access[3] & (keep >> 16)) | (add >> 16));
}

} // namespace attributes
