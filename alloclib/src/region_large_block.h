// The middle of the chain: pages of 4096 bytes out of chunks of 1 MiB.
//
// A table keeps account of 10240 pages in up to 40 chunks, which are taken from the parent when
// first needed. When a table cannot serve a request, a further table behind it does. Requests of
// 128 KiB and more do not go through tables at all but to the parent.
#pragma once

#include "alloclib/interface/region.h"
#include "alloclib/src/page_bitmap.h"

#include <cstdint>

namespace alloclib {

struct RegionStats;

class RegionLargeBlock final : public Region {
public:
    enum Size : uint32_t {
        PageSize = 4096,
        ChunkSize = 0x100000,
        ForwardedSize = 0x20000, // from here on requests go to the parent
    };

    // Makes a region over the system region. `name` identifies it in statistics and is kept, not
    // copied.
    static RegionLargeBlock* Create(const char* name);

    // `size` is a multiple of the page, `align` at most 8. Blocks that were forwarded to the
    // parent must be discarded by the caller: `Destroy` does not know them.
    void* Alloc(uint64_t size, uint64_t align, const char* typeName) override;
    void Discard(void* block, uint64_t size, uint64_t extra) override;
    void Destroy(bool freeMemory) override;

    // From now on discarded blocks are overwritten, so that use after discard shows up.
    void setScribble(bool on) { scribble = on ? 1 : 0; }

    // For statistics and tests. Statistics are null for a transparent region.
    const RegionStats* statistics() const { return stats; }
    const RegionLargeBlock* following() const { return nextTable; }
    const PageBitmap& pages() const { return pageBitmap; }
    int32_t searchStart() const { return firstFreeWord; }

private:
    static constexpr int32_t FullTable = 321; // `firstFreeWord` of a table not worth searching

    RegionLargeBlock(Region& parentRegion, RegionStats* regionStats)
        : stats(regionStats), parent(&parentRegion) {}
    ~RegionLargeBlock() = default;
    static RegionLargeBlock* createTransparent(const char* name);

    void* takePages(uint32_t count);
    void* takeRun(uint32_t count);
    char* pageAddress(uint32_t page);
    RegionLargeBlock& extension();
    void takeChunk(uint32_t number);
    void returnPages(void* block, uint64_t size);
    bool findChunk(uintptr_t address, RegionLargeBlock*& table, uint32_t& number);
    bool holds(uint32_t number, uintptr_t address) const {
        const auto start = reinterpret_cast<uintptr_t>(chunks[number]);
        return start != 0 && address >= start && address - start < ChunkSize;
    }
    void destroyTransparent(bool freeMemory);

    RegionStats* stats;
    Region* parent;
    PageBitmap pageBitmap;
    char* chunks[PageBitmap::Chunks] = {}; // null until needed
    int32_t firstFreeWord = 0;             // the search starts here
    RegionLargeBlock* nextTable = nullptr;
    uint8_t transparent = 0;
    uint8_t ownsParent = 0;
    uint8_t scribble = 0;
    // Where the last discarded pages lay, in the first table only: the next ones are near.
    RegionLargeBlock* lastTable = this;
    uint32_t lastChunk = 0;
};

} // namespace alloclib
