// Bump allocation with lists of discarded blocks.
//
// A discarded block carries its list's link in itself. To the address sanitizer such a block is
// poisoned, so the few functions that touch links are exempt from its checks. The headers of
// blocks in use stay unpoisoned: the leak checker follows the links in them.
#include "alloclib/interface/region_general.h"

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region_stats.h"
#include "alloclib/src/free_big_list.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_malloc_free.h"
#include "alloclib/src/stats_lists.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace alloclib {

// Heads every block that bump allocation works in.
struct alignas(16) RegionGeneral::NormalBlock {
    uint32_t size; // of the whole block, header included
    NormalBlock* next;
};

// Heads every block that serves a single large request.
struct alignas(8) RegionGeneral::LargeBlock {
    uint32_t size; // of the whole block, header included
    LargeBlock* next;
    LargeBlock* previous;
};

// The first word of a block on a small list.
struct RegionGeneral::SmallFreeBlock {
    SmallFreeBlock* next;
};

namespace {

enum Layout : uint64_t {
    Layout_NormalHeader = 16,
    Layout_LargeHeader = 24,
    Layout_Surplus = 3000,      // what a new working block holds beyond the request
    Layout_SmallLists = 16,     // list heads, by size / 8
    Layout_ParentAlignment = 8, // of every block asked of the parent
};

// `unit` is a power of two.
constexpr uint64_t roundUp(uint64_t size, uint64_t unit) {
    return (size + unit - 1) & ~(unit - 1);
}

constexpr uint64_t roundUp8(uint64_t size) {
    return roundUp(size, 8);
}

// Sizes of headers are 32 bits wide. Whatever would not fit, with header and rounding, is more
// than the region can deal out.
constexpr uint64_t greatestRequest = UINT32_MAX - uint64_t{0x2000};

template <typename Block>
ALLOCLIB_READS_POISONED Block readBlock(const Block* block) {
    return *block;
}

template <typename Block>
ALLOCLIB_READS_POISONED void writeBlock(void* place, const Block& block) {
    *static_cast<Block*>(place) = block;
}

} // namespace

// --- Creation and end

namespace {
constinit RegionGeneral* newestRegion = nullptr;
} // namespace

RegionGeneral::RegionGeneral(Region& parentRegion, uint32_t initialState, RegionStats* regionStats)
    : stats(regionStats), parent(&parentRegion), state(initialState) {
    enter();
}

void RegionGeneral::enter() {
    older = newestRegion;
    if (older != nullptr) {
        older->newer = this;
    }
    newestRegion = this;
}

void RegionGeneral::leave() {
    (newer == nullptr ? newestRegion : newer->older) = older;
    if (older != nullptr) {
        older->newer = newer;
    }
}

void RegionGeneral::DestroyOthers(const RegionGeneral& kept) {
    for (RegionGeneral* region = newestRegion; region != nullptr;) {
        RegionGeneral* const following = region->older;
        if (region != &kept) {
            region->Destroy(true);
        }
        region = following;
    }
}

RegionGeneral* RegionGeneral::Create(uint64_t initialSize, const char* name) {
    const LibraryState& library = libraryState();
    if (library.defaultParent == nullptr) {
        failInternally("Alloclib not initialised");
    }
    switch (library.debugMode) {
    case DebugMode_None:
    case DebugMode_Normal:
        return createWithBlocks(State_Fast, initialSize, name);
    case DebugMode_Accurate:
        return createWithBlocks(State_Fast | State_Accurate, initialSize, name);
    case DebugMode_Transparent:
        return createTransparent(initialSize, name);
    default:
        failInternally("Unsupported debug mode in RegionGeneral::Create");
    }
}

RegionGeneral* RegionGeneral::createWithBlocks(uint32_t initialState, uint64_t initialSize,
                                               const char* name) {
    static_assert(sizeof(NormalBlock) == Layout_NormalHeader);
    static_assert(sizeof(LargeBlock) <= Layout_LargeHeader);
    Region& source = *libraryState().defaultParent;
    const uint64_t objectSize = roundUp8(sizeof(RegionGeneral));
    const uint64_t blockSize =
        roundUp(objectSize + Layout_Surplus + Layout_NormalHeader, source.Granule());
    const bool accurate = (initialState & State_Accurate) != 0;
    RegionStats* const regionStats = createStats(name, initialSize, accurate);
    char* const memory =
        static_cast<char*>(source.Alloc(blockSize, Layout_ParentAlignment, "RegionGeneral"));
    auto* const header =
        new (memory) NormalBlock{.size = static_cast<uint32_t>(blockSize), .next = nullptr};
    auto* const region =
        new (memory + Layout_NormalHeader) RegionGeneral(source, initialState, regionStats);
    region->blocks = header;
    region->next = memory + Layout_NormalHeader + objectSize;
    region->end = memory + blockSize;
    poison(region->next, region->workingBlockRoom());
    if (accurate) {
        regionStats->recordOverheadIncrease(Layout_NormalHeader + objectSize);
    } else {
        regionStats->recordAlloc(memory, objectSize, blockSize - objectSize, "RegionGeneral");
    }
    region->SetBlockWorkingState();
    return region;
}

// A region that only passes on, to a parent of its own that a debugging aid makes for it.
RegionGeneral* RegionGeneral::createTransparent(uint64_t initialSize, const char* name) {
    Region* const factory = libraryState().debugFactory;
    Region* const made =
        factory != nullptr ? static_cast<Region*>(factory->Alloc(initialSize, 8, name)) : nullptr;
    if (made == nullptr) {
        failInternally("Unsupported debug mode in RegionGeneral::Create");
    }
    void* const memory = made->Alloc(sizeof(RegionGeneral), 8, "RegionGeneral");
    auto* const region = new (memory) RegionGeneral(*made, State_SlowTransparent, nullptr);
    region->ownsParent = 1;
    return region;
}

void RegionGeneral::Destroy(bool freeMemory) {
    leave();
    if (state == State_SlowTransparent) {
        destroyTransparent(freeMemory);
        return;
    }
    PrepareStats();
    if (!isAccurate()) {
        // Blocks are recorded whole, so what is left of the last one has never been used.
        stats->finalAdjust += workingBlockRoom();
    }
    closeStats(stats);
    if (freeMemory) {
        discardBlocks(*parent, largeBlocks, blocks);
    }
}

void RegionGeneral::destroyTransparent(bool freeMemory) {
    Region& owner = *parent;
    const bool ownsIt = ownsParent != 0;
    owner.Discard(this, sizeof(RegionGeneral), 8);
    if (ownsIt) {
        owner.Destroy(freeMemory);
    }
}

// The last normal block holds the region's object, which nothing touches from here on.
void RegionGeneral::discardBlocks(Region& owner, LargeBlock* large, NormalBlock* normal) {
    while (large != nullptr) {
        LargeBlock* const following = large->next;
        const uint32_t size = large->size;
        unpoison(large, size);
        owner.Discard(large, size, Layout_ParentAlignment);
        large = following;
    }
    while (normal != nullptr) {
        NormalBlock* const following = normal->next;
        const uint32_t size = normal->size;
        unpoison(normal, size);
        owner.Discard(normal, size, Layout_ParentAlignment);
        normal = following;
    }
}

// --- The working state

// On the way of every full allocation, hence the flaws apart.
void RegionGeneral::SetBlockWorkingState() {
    const uint32_t accurate = state & State_Accurate;
    const uint32_t mode = state & ~uint32_t{State_Accurate};
    if (mode != State_Fast && mode != State_Slow) [[unlikely]] {
        failForState();
    }
    state = (freeSmallBytes <= Limit_SmallWaiting ? State_Fast : State_Slow) | accurate;
    if (next > end) [[unlikely]] {
        failInternally("allocation went beyond the end of the working block");
    }
    if (state != State_Fast) [[unlikely]] {
        limit = next;
    } else {
        limit = next + std::min<uint64_t>(workingBlockRoom(), FastPathBytes);
    }
}

void RegionGeneral::failForState() const {
    switch (state) {
    case State_SlowTransparent:
        failInternally("SLOW_TRANSPARENT occurred in SetBlockWorkingState");
    case 0:
    case State_Accurate:
        failInternally("Unknown flags in SetBlockWorkingState");
    default:
        failInternally("Invalid flags in SetBlockWorkingState");
    }
}

// --- Allocation

void* RegionGeneral::AllocFull(RegionGeneral* region, uint64_t size, uint64_t align,
                               const char* typeName) {
    const uint32_t state = region->state;
    if (state == State_Fast && size < Limit_Large) [[likely]] {
        return region->bump(size, align, typeName);
    }
    if (state == State_SlowTransparent) {
        return region->parent->Alloc(size, align, typeName);
    }
    if (size > greatestRequest) {
        endOutOfMemory(size);
    }
    switch (state) {
    case State_Fast:
    case State_Fast | State_Accurate:
        return region->bump(size, align, typeName);
    case State_Slow:
    case State_Slow | State_Accurate:
        if (void* const block = region->takeFromSmallLists(size, align, typeName)) {
            return block;
        }
        return region->bump(size, align, typeName);
    default:
        failInternally("Unknown flags state in RegionGeneral::AllocFull");
    }
}

// Serves a request from the list of its size; null if that is empty. For a greater alignment a
// block is taken that holds the request wherever its aligned address falls; what lies before
// that address is given back, what lies behind the request is not.
void* RegionGeneral::takeFromSmallLists(uint64_t size, uint64_t align, const char* typeName) {
    const uint64_t need = roundUp8(size) + (align > 8 ? align - 8 : 0);
    if (need < 8 || need >= Limit_Small || freeSmall == nullptr) {
        return nullptr;
    }
    SmallFreeBlock*& head = freeSmall[need / 8];
    if (head == nullptr) {
        return nullptr;
    }
    auto* const popped = reinterpret_cast<char*>(head);
    head = readBlock(head).next;
    freeSmallBytes -= static_cast<uint32_t>(need);
    const uint64_t gap = alignmentGap(popped, align);
    if (gap != 0) {
        giveBackSkipped(popped, gap);
    }
    char* const block = popped + gap;
    unpoison(block, size);
    SetBlockWorkingState();
    recordGiven(block, size, need - gap - size, typeName);
    return block;
}

// Bytes that alignment skipped. (Exactly 128 of them are given up.)
void RegionGeneral::giveBackSkipped(void* block, uint64_t size) {
    if (size < Limit_Small) {
        discardSmall(block, size);
    } else if (size > Limit_Small) {
        discardBig(block, size);
    }
}

void* RegionGeneral::bump(uint64_t size, uint64_t align, const char* typeName) {
    if (size >= Limit_Large) {
        return takeLarge(size, typeName);
    }
    const uint64_t rounded = roundUp8(size);
    uint64_t gap = alignmentGap(next, align);
    if (workingBlockRoom() <= rounded + gap) {
        findWorkingArea(size, align);
        gap = alignmentGap(next, align);
        if (workingBlockRoom() < rounded + gap) {
            failInternally("allocation went beyond the end of the working block");
        }
    }
    char* const block = next + gap;
    next = block + rounded;
    SetBlockWorkingState();
    unpoison(block, size);
    recordGiven(block, size, gap + rounded - size, typeName);
    return block;
}

// Abandons the working block with whatever is left in it, and finds another.
void RegionGeneral::findWorkingArea(uint64_t size, uint64_t align) {
    if (isAccurate() && workingBlockRoom() != 0) {
        stats->recordFragmentationIncrease(workingBlockRoom());
    }
    const uint64_t rounded = roundUp8(size);
    if (FreeBigBlock* const free = takeFreeBig(freeBig, rounded, align)) {
        next = reinterpret_cast<char*>(free);
        end = next + sizeOfFreeBig(free);
        return;
    }
    const uint64_t blockSize =
        roundUp(rounded + Layout_Surplus + Layout_NormalHeader, parent->Granule());
    stats->recordExtension();
    char* const memory =
        static_cast<char*>(parent->Alloc(blockSize, Layout_ParentAlignment, "block"));
    blocks = new (memory) NormalBlock{.size = static_cast<uint32_t>(blockSize), .next = blocks};
    next = memory + Layout_NormalHeader;
    end = memory + blockSize;
    poison(next, workingBlockRoom());
    if (isAccurate()) {
        stats->recordOverheadIncrease(Layout_NormalHeader);
    } else {
        stats->recordAlloc(memory, size, blockSize - size, "block");
    }
}

void* RegionGeneral::takeLarge(uint64_t size, const char* typeName) {
    const uint64_t blockSize = roundUp(size + Layout_LargeHeader, parent->Granule());
    char* const memory =
        static_cast<char*>(parent->Alloc(blockSize, Layout_ParentAlignment, typeName));
    auto* const header = new (memory) LargeBlock{
        .size = static_cast<uint32_t>(blockSize), .next = largeBlocks, .previous = nullptr};
    if (largeBlocks != nullptr) {
        largeBlocks->previous = header;
    }
    largeBlocks = header;
    char* const block = memory + Layout_LargeHeader;
    poison(block, blockSize - Layout_LargeHeader);
    unpoison(block, size);
    stats->recordAlloc(block, size, blockSize - size, typeName);
    return block;
}

void RegionGeneral::recordGiven(void* block, uint64_t size, uint64_t padding,
                                const char* typeName) {
    if (isAccurate()) {
        stats->recordAlloc(block, size, padding, typeName);
    }
}

// --- Discard

void RegionGeneral::DiscardFull(RegionGeneral* region, void* block, uint64_t size, uint64_t extra) {
    switch (region->state) {
    case State_SlowTransparent:
        region->parent->Discard(block, size, extra);
        return;
    case State_Fast:
    case State_Fast | State_Accurate:
    case State_Slow:
    case State_Slow | State_Accurate:
        break;
    default:
        failInternally("Unknown flags state in RegionGeneral::DiscardFull");
    }
    if (block == nullptr || size == 0) {
        return;
    }
    if (size >= Limit_Large) {
        region->discardLarge(block, size);
        return;
    }
    const uint64_t rounded = roundUp8(size);
    if (rounded < Limit_Small) {
        region->discardSmall(block, rounded);
    } else {
        region->discardBig(block, rounded);
    }
    if (region->isAccurate()) {
        region->stats->recordDiscard(block, size, rounded - size);
    }
}

void RegionGeneral::discardSmall(void* block, uint64_t rounded) {
    if (freeSmall == nullptr) {
        constexpr uint64_t headsSize = Layout_SmallLists * sizeof(void*);
        void* const heads = allocate(*this, headsSize, 8);
        std::memset(heads, 0, headsSize);
        freeSmall = static_cast<SmallFreeBlock**>(heads);
    }
    SmallFreeBlock*& head = freeSmall[rounded / 8];
    writeBlock(block, SmallFreeBlock{head});
    head = static_cast<SmallFreeBlock*>(block);
    freeSmallBytes += static_cast<uint32_t>(rounded);
    poison(block, rounded);
}

void RegionGeneral::discardBig(void* block, uint64_t rounded) {
    addFreeBig(freeBig, block, static_cast<uint32_t>(rounded));
    poison(block, rounded);
}

void RegionGeneral::discardLarge(void* block, uint64_t size) {
    auto* const header =
        reinterpret_cast<LargeBlock*>(static_cast<char*>(block) - Layout_LargeHeader);
    (header->previous == nullptr ? largeBlocks : header->previous->next) = header->next;
    if (header->next != nullptr) {
        header->next->previous = header->previous;
    }
    const uint32_t blockSize = header->size;
    stats->recordDiscard(block, size, blockSize - size);
    unpoison(header, blockSize);
    parent->Discard(header, blockSize, Layout_ParentAlignment);
}

} // namespace alloclib
