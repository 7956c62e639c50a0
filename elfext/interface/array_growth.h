// How the arrays grow: by half of what they have, plus one.
//
// Capacities run 1, 2, 4, 7, 11, 17, 26, 40. Everything is counted in 32 bits; a block whose size
// in bytes would not fit is more than any allocator here gives.
#pragma once

#include "alloclib/interface/alloclib.h"

#include <algorithm>
#include <cstdint>

namespace elfext {

// The capacity that follows `allocated` when at least `required` elements must fit.
inline uint32_t grownCapacity(uint32_t allocated, uint32_t required) {
    const uint32_t grown = (allocated * 3 >> 1) + 1;
    return std::max(grown, required);
}

// The bytes of a block of `count` elements of `width` bytes, 0xFFFFFFFF where that overflows
// 32 bits.
inline uint32_t saturatedBytes(uint32_t count, uint64_t width) {
    const uint64_t bytes = count * width;
    return static_cast<uint32_t>(std::min<uint64_t>(bytes, UINT32_MAX));
}

// The same, but a size that overflows ends the process as any lack of memory does: the block
// would be shorter than its elements.
inline uint32_t blockBytes(uint32_t count, uint64_t width) {
    const uint32_t bytes = saturatedBytes(count, width);
    if (bytes == UINT32_MAX) [[unlikely]] {
        alloclib::endOutOfMemory(bytes);
    }
    return bytes;
}

// Ends the process where a capacity did not rise, so that an array whose checks are switched off
// does not run over its block either.
inline void requireGrowth(uint32_t allocated, uint32_t newAllocated) {
    if (newAllocated <= allocated) [[unlikely]] {
        alloclib::endOutOfMemory(UINT32_MAX);
    }
}

} // namespace elfext
