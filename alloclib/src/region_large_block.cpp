// Pages out of chunks of 1 MiB.
#include "alloclib/src/region_large_block.h"

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/poison.h"
#include "alloclib/interface/region_stats.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_malloc_free.h"
#include "alloclib/src/stats_lists.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace alloclib {

namespace {

bool isWholePages(uint64_t size) {
    return size != 0 && size % RegionLargeBlock::PageSize == 0;
}

} // namespace

RegionLargeBlock* RegionLargeBlock::Create(const char* name) {
    LibraryState& state = libraryState();
    if (state.systemRegion == nullptr) {
        failInternally("Alloclib not initialised");
    }
    switch (state.debugMode) {
    case DebugMode_None:
    case DebugMode_Normal:
    case DebugMode_Accurate:
        break;
    case DebugMode_Transparent:
        return createTransparent(name);
    default:
        // The class bore this name once; whoever searches for the text knows it by that.
        failInternally("Unsupported debug mode in RegionFastOld::Create");
    }
    void* const memory = state.systemRegion->Alloc(sizeof(RegionLargeBlock), 8, "RegionLargeBlock");
    RegionStats* const stats = createStats(name, 0, true);
    auto* const region = new (memory) RegionLargeBlock(*state.systemRegion, stats);
    region->takeChunk(0);
    return region;
}

RegionLargeBlock* RegionLargeBlock::createTransparent(const char* name) {
    LibraryState& state = libraryState();
    Region* made = nullptr;
    if (state.debugFactory != nullptr) {
        made = static_cast<Region*>(state.debugFactory->Alloc(0, 8, name));
    }
    Region& base = made != nullptr ? *made : *state.systemRegion;
    void* const memory = base.Alloc(sizeof(RegionLargeBlock), 8, "RegionLargeBlock");
    auto* const region = new (memory) RegionLargeBlock(base, nullptr);
    region->transparent = 1;
    region->ownsParent = 1;
    return region;
}

void* RegionLargeBlock::Alloc(uint64_t size, uint64_t align, const char* typeName) {
    if (!isWholePages(size)) {
        failInternally("Invalid allocation using RegionLargeBlock");
    }
    if (transparent != 0) {
        return parent->Alloc(size, align, typeName);
    }
    void* const block = size >= ForwardedSize ? parent->Alloc(size, align, typeName)
                                              : takePages(static_cast<uint32_t>(size / PageSize));
    unpoison(block, size);
    stats->recordAlloc(block, size, 0, typeName);
    return block;
}

// Nearly all requests are for one page of the first table: that way is kept short.
void* RegionLargeBlock::takePages(uint32_t count) {
    if (count == 1) [[likely]] {
        const uint32_t page = pageBitmap.findPage(static_cast<uint32_t>(firstFreeWord));
        if (page != PageBitmap::NoRun) [[likely]] {
            firstFreeWord = static_cast<int32_t>(page / PageBitmap::WordBits);
            pageBitmap.clearBit(page);
            return pageAddress(page);
        }
    }
    return takeRun(count);
}

// A request that finds no run retires its table, however small later ones are, until a discard
// lowers its `firstFreeWord` again: scanning full tables over and over would cost more than the
// few pages that are left in them.
void* RegionLargeBlock::takeRun(uint32_t count) {
    RegionLargeBlock* table = this;
    uint32_t first = table->pageBitmap.findRun(static_cast<uint32_t>(firstFreeWord), count);
    while (first == PageBitmap::NoRun) {
        RegionLargeBlock& following = table->extension();
        table->firstFreeWord = FullTable;
        table = &following;
        first = table->pageBitmap.findRun(static_cast<uint32_t>(table->firstFreeWord), count);
    }
    if (count == 1) {
        table->firstFreeWord = static_cast<int32_t>(first / PageBitmap::WordBits);
    }
    table->pageBitmap.clearBits(first, count);
    return table->pageAddress(first);
}

// Where page number `page` lies; its chunk is taken if it is not there yet.
char* RegionLargeBlock::pageAddress(uint32_t page) {
    const uint32_t chunk = page / PageBitmap::PagesInChunk;
    if (chunks[chunk] == nullptr) [[unlikely]] {
        stats->recordExtension();
        takeChunk(chunk);
    }
    return chunks[chunk] + size_t{page % PageBitmap::PagesInChunk} * PageSize;
}

// The table behind this one, made if there is none. All tables share one set of statistics.
RegionLargeBlock& RegionLargeBlock::extension() {
    if (nextTable == nullptr) {
        void* const memory = parent->Alloc(sizeof(RegionLargeBlock), 8, "RegionLargeBlock");
        nextTable = new (memory) RegionLargeBlock(*parent, stats);
        stats->recordExtension();
        stats->recordOverheadIncrease(sizeof(RegionLargeBlock));
        nextTable->takeChunk(0);
    }
    return *nextTable;
}

void RegionLargeBlock::takeChunk(uint32_t number) {
    chunks[number] = static_cast<char*>(parent->Alloc(ChunkSize, 8, "chunk"));
    poison(chunks[number], ChunkSize);
}

void RegionLargeBlock::Discard(void* block, uint64_t size, uint64_t extra) {
    if (!isWholePages(size)) {
        failInternally("Invalid discard using RegionLargeBlock");
    }
    if (transparent != 0) {
        parent->Discard(block, size, extra);
        return;
    }
    if (scribble != 0) {
        static uint8_t scribbleByte = 0;
        std::memset(block, scribbleByte++, static_cast<size_t>(size));
    }
    if (size >= ForwardedSize) {
        parent->Discard(block, size, extra);
    } else {
        returnPages(block, size);
    }
    stats->recordDiscard(block, size, 0);
}

void RegionLargeBlock::returnPages(void* block, uint64_t size) {
    const auto address = reinterpret_cast<uintptr_t>(block);
    if (!lastTable->holds(lastChunk, address) && !findChunk(address, lastTable, lastChunk)) {
        failInternally("RegionLargeBlock: discard of invalid pointer: %p\n", block);
    }
    RegionLargeBlock& table = *lastTable;
    const auto start = reinterpret_cast<uintptr_t>(table.chunks[lastChunk]);
    const auto pageInChunk = static_cast<uint32_t>((address - start) / PageSize);
    const uint32_t first = lastChunk * PageBitmap::PagesInChunk + pageInChunk;
    if (size == PageSize) [[likely]] {
        table.pageBitmap.setBit(first);
    } else {
        table.pageBitmap.setBits(first, size / PageSize);
    }
    const auto word = static_cast<int32_t>(first / PageBitmap::WordBits);
    table.firstFreeWord = std::min(table.firstFreeWord, word);
    poison(block, size);
}

// Walks the tables for the chunk that holds `address`. False leaves both results alone.
bool RegionLargeBlock::findChunk(uintptr_t address, RegionLargeBlock*& table, uint32_t& number) {
    for (RegionLargeBlock* walked = this; walked != nullptr; walked = walked->nextTable) {
        for (uint32_t chunk = 0; chunk < PageBitmap::Chunks; ++chunk) {
            if (walked->holds(chunk, address)) {
                table = walked;
                number = chunk;
                return true;
            }
        }
    }
    return false;
}

void RegionLargeBlock::Destroy(bool freeMemory) {
    if (transparent != 0) {
        destroyTransparent(freeMemory);
        return;
    }
    PrepareStats();
    closeStats(stats);
    Region& owner = *parent;
    RegionLargeBlock* table = this;
    while (table != nullptr) {
        RegionLargeBlock* const following = table->nextTable;
        for (char* const chunk : table->chunks) {
            if (freeMemory && chunk != nullptr) {
                owner.Discard(chunk, ChunkSize, 8);
            }
        }
        owner.Discard(table, sizeof(RegionLargeBlock), 8);
        table = following;
    }
}

void RegionLargeBlock::destroyTransparent(bool freeMemory) {
    Region& owner = *parent;
    const bool ownsIt = ownsParent != 0;
    owner.Discard(this, sizeof(RegionLargeBlock), 8);
    // The system region, which stands in when the factory makes none, ends with the library.
    if (ownsIt && &owner != libraryState().systemRegion) {
        owner.Destroy(freeMemory);
    }
}

} // namespace alloclib
