// The discarded blocks of middle size that wait to become working blocks: a list, latest first,
// that is searched for the first block that holds a request.
//
// The latest that fits must be the one taken, but a walk would not do: whoever discards many blocks
// and then asks for greater ones would walk over all of them each time. So the list is kept as a
// tree. In order it is the list; each block also knows the greatest size below itself, so that
// whole branches without a fit are left out. A number made from its address tells which block
// stands above which, and that keeps the tree about as deep as the logarithm of the list's length.
//
// The links lie in the blocks themselves, behind the size in the first word.
#pragma once

#include <cstdint>

namespace alloclib {

struct FreeBigBlock {
    uint32_t size;
    uint32_t rank;         // no block stands above one of a higher rank
    FreeBigBlock* earlier; // those discarded before this one
    FreeBigBlock* later;   // those discarded after it
    uint64_t greatest;     // size in this branch, this block's own included
};

// Bytes to skip from `address`, which is 8-aligned, to the next multiple of `align`.
inline uint64_t alignmentGap(const void* address, uint64_t align) {
    if (align <= 8) {
        return 0;
    }
    const uint64_t past = reinterpret_cast<uintptr_t>(address) & (align - 1);
    return past == 0 ? 0 : align - past;
}

// Puts the `size` bytes at `block`, at least 128, in front of the list.
void addFreeBig(FreeBigBlock*& list, void* block, uint32_t size);

// Takes the first block of the list that holds `size` bytes behind the gap to a multiple of
// `align`. Null if there is none.
FreeBigBlock* takeFreeBig(FreeBigBlock*& list, uint64_t size, uint64_t align);

// The size of a block that was taken.
uint32_t sizeOfFreeBig(const FreeBigBlock* block);

} // namespace alloclib
