// A source of memory blocks.
//
// Nearly everything that the tool builds is released in bulk, so memory comes from regions: a
// region hands out blocks and takes all of them back at once when it is destroyed. The classes
// behind this interface form a chain, each taking what it deals out from its parent: bump
// allocation on top, pages below it, the system heap at the bottom.
//
// Most blocks are small, and taking one is an inlined bump of a pointer: `allocate` below, two
// loads, a compare and a store. A region that has memory at hand keeps `next` and `limit` for
// that; in the others both are null, and every request reaches `Alloc`.
//
// There is no locking: a region belongs to one thread.
#pragma once

#include "alloclib/interface/poison.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace alloclib {

class Region {
public:
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;

    // Gives a block of `size` bytes whose address is a multiple of `align` (a power of two) as
    // far as the class at hand honours alignments; see there. `typeName` names what the block is
    // for in traces and may be null. The block stays the region's property. Never returns null:
    // running out of memory ends the process.
    virtual void* Alloc(uint64_t size, uint64_t align, const char* typeName) = 0;

    // Gives `block` back for reuse. `size` must be the size that `Alloc` was asked for, since
    // small blocks have no header to remember it. `extra` is the block's alignment, for the
    // parent that may get it back. Discarding is an optimisation: a caller may skip it and leave
    // the block to `Destroy`.
    virtual void Discard(void* block, uint64_t size, uint64_t extra) = 0;

    // Ends the region, and this object with it. With `freeMemory` all of its memory goes back to
    // the parent; without, it is lost to the parent.
    virtual void Destroy(bool freeMemory) = 0;

    // Called before the region's statistics are read, for classes that gather them lazily. None
    // does.
    virtual void PrepareStats() {}

    // The unit, in bytes, that sizes asked of this region by a child are rounded up to: a power of
    // two.
    virtual uint64_t Granule() const { return 4096; }

protected:
    Region() = default;
    ~Region() = default;

    friend void* allocate(Region& region, uint64_t size, uint64_t align);

    // The fast path covers at most this many bytes between two calls of `Alloc`, so that `limit`
    // minus `next` can be computed in 32 bits.
    static constexpr uint64_t FastPathBytes = 10240;

    char* next = nullptr;  // next free byte, always a multiple of 8
    char* limit = nullptr; // the fast path stays below this
};

// The fast path. Gives a block of `size` bytes, 8-aligned if the region is a general one; `align`
// is at most 8 (1 for text, 8 for structures). Nothing may be assumed of where the block lies in
// relation to others. Greater alignments need `Alloc`.
inline void* allocate(Region& region, uint64_t size, uint64_t align) {
    const uint64_t rounded = (size + 7) & ~uint64_t{7};
    const auto room = static_cast<uint32_t>(region.limit - region.next);
    // The first test keeps sizes out whose rounding wraps; it vanishes for constant sizes.
    if (size <= Region::FastPathBytes && room > rounded) [[likely]] {
        char* const block = region.next;
        region.next = block + rounded;
        unpoison(block, size);
        return block;
    }
    return region.Alloc(size, align, nullptr);
}

// Copies `text` into the region, followed by a NUL. The copy lives as long as the region.
inline char* copyString(Region& region, std::string_view text) {
    char* const copy = static_cast<char*>(allocate(region, text.size() + uint64_t{1}, 1));
    if (!text.empty()) {
        std::memcpy(copy, text.data(), text.size());
    }
    copy[text.size()] = '\0';
    return copy;
}

} // namespace alloclib
