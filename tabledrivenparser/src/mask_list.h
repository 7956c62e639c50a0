// Lists of masks, by which tables tie rows and limits to variants of a program.
#pragma once

#include <cstdint>

namespace tabledrivenparser {

// Whether each of `masks` (ended by 0; null means none) shares a bit with `active`.
constexpr bool masksPass(const uint32_t* masks, uint32_t active) {
    if (masks == nullptr) {
        return true;
    }
    for (; *masks != 0; ++masks) {
        if ((*masks & active) == 0) {
            return false;
        }
    }
    return true;
}

} // namespace tabledrivenparser
