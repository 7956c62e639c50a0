// The region that everyone allocates from: bump allocation in blocks of a few pages.
//
// An allocation moves `next` up in the working block; callers inline that through `allocate`.
// All that is not so simple goes through `AllocFull`, which the fast path is made to enter at
// least once in 10240 bytes:
//  - blocks below 128 bytes that are discarded wait in lists by size. Looking at them on each
//    allocation would cost more than it gains, so they are ignored until more than 10240 bytes
//    have gathered. Then the region turns slow: `limit` drops to `next`, which closes the fast
//    path, and requests are served from the lists until they are short again;
//  - discarded blocks from 128 to below 10240 bytes wait in one list, and are taken as working
//    blocks in place of new memory;
//  - requests of 10240 bytes and more are passed to the parent and returned to it on discard.
//
// The object itself lies in the first of its own blocks and goes with it.
#pragma once

#include "alloclib/interface/region.h"

#include <cstdint>

namespace alloclib {

struct FreeBigBlock;
struct RegionStats;

class RegionGeneral final : public Region {
public:
    // The working states. `State_Accurate` is added to the first two.
    enum State : uint32_t {
        State_Fast = 1,            // small lists short, fast path open
        State_Slow = 2,            // small lists long, they serve requests first
        State_SlowTransparent = 3, // everything goes to the parent
        State_Accurate = 4,        // every block is recorded, so the fast path is closed
    };

    enum Limit : uint32_t {
        Limit_SmallWaiting = 10240, // bytes in the small lists above which the region is slow
        Limit_Large = 10240,        // from this size on a request has a block of its own
        Limit_Small = 128,          // below this rounded size a block goes on a list by size
    };

    // Makes a region over the current default parent. `name` identifies it in statistics and
    // must outlive the library's run (a literal). `initialSize` is a hint in bytes that only
    // debugging regions look at.
    static RegionGeneral* Create(uint64_t initialSize, const char* name);

    // Destroys all general regions but `kept`, with all their memory, latest first. No destructor
    // of an object in them runs, and nobody may use them any more.
    static void DestroyOthers(const RegionGeneral& kept);

    // The full allocator. The block's address is a multiple of 8, and of `align` if that is
    // greater and `size` is below `Limit_Large`; alignments up to 2048 can always be served.
    static void* AllocFull(RegionGeneral* region, uint64_t size, uint64_t align,
                           const char* typeName);

    // The full discard. A null `block` is ignored.
    static void DiscardFull(RegionGeneral* region, void* block, uint64_t size, uint64_t extra);

    void* Alloc(uint64_t size, uint64_t align, const char* typeName) override {
        return AllocFull(this, size, align, typeName);
    }
    void Discard(void* block, uint64_t size, uint64_t extra) override {
        DiscardFull(this, block, size, extra);
    }
    void Destroy(bool freeMemory) override;

    // For statistics and tests: the working state, the bytes that wait in the small lists, the
    // bytes up to `limit`, the bytes up to the end of the working block. Statistics are null for
    // a transparent region.
    uint32_t workingState() const { return state; }
    uint32_t smallBytesWaiting() const { return freeSmallBytes; }
    uint64_t fastPathRoom() const { return static_cast<uint64_t>(limit - next); }
    uint64_t workingBlockRoom() const { return static_cast<uint64_t>(end - next); }
    const RegionStats* statistics() const { return stats; }

private:
    struct NormalBlock;
    struct LargeBlock;
    struct SmallFreeBlock;
    friend class RegionGeneralProbe; // tests bring about states that no call leads to

    RegionGeneral(Region& parentRegion, uint32_t initialState, RegionStats* regionStats);
    ~RegionGeneral() = default;
    static RegionGeneral* createWithBlocks(uint32_t initialState, uint64_t initialSize,
                                           const char* name);
    static RegionGeneral* createTransparent(uint64_t initialSize, const char* name);

    void* takeFromSmallLists(uint64_t size, uint64_t align, const char* typeName);
    void* bump(uint64_t size, uint64_t align, const char* typeName);
    void* takeLarge(uint64_t size, const char* typeName);
    void findWorkingArea(uint64_t size, uint64_t align);
    void discardSmall(void* block, uint64_t rounded);
    void discardBig(void* block, uint64_t rounded);
    void discardLarge(void* block, uint64_t size);
    void giveBackSkipped(void* block, uint64_t size);
    void SetBlockWorkingState();
    [[noreturn]] void failForState() const;
    void recordGiven(void* block, uint64_t size, uint64_t padding, const char* typeName);
    bool isAccurate() const { return (state & State_Accurate) != 0; }
    void destroyTransparent(bool freeMemory);
    void enter();
    void leave();
    static void discardBlocks(Region& owner, LargeBlock* large, NormalBlock* normal);

    RegionStats* stats;
    Region* parent;
    char* end = nullptr; // end of the working block, in which `next` and `limit` lie
    uint32_t state;
    NormalBlock* blocks = nullptr;     // latest first
    LargeBlock* largeBlocks = nullptr; // latest first
    FreeBigBlock* freeBig = nullptr;   // latest first, see free_big_list.h
    uint8_t ownsParent = 0;
    uint32_t freeSmallBytes = 0;
    SmallFreeBlock** freeSmall = nullptr; // 16 heads by size / 8, made on first need
    RegionGeneral* older = nullptr;       // the neighbours among all general regions
    RegionGeneral* newer = nullptr;
};

} // namespace alloclib
