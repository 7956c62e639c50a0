// The system heap as a region.
#include "alloclib/src/region_malloc_free.h"

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region_stats.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/stats_lists.h"

#include <cstdlib>
#include <new>

namespace alloclib {

namespace {

void* heapBlock(uint64_t size) {
    void* const block = size <= SIZE_MAX ? std::malloc(static_cast<size_t>(size)) : nullptr;
    if (block == nullptr) {
        endOutOfMemory(size);
    }
    return block;
}

} // namespace

RegionMallocFree* RegionMallocFree::Create(const char* name) {
    // Statistics come from the system region, but its own cannot: they are made before it.
    const bool first = libraryState().nextStatsId == 0;
    void* const statsMemory = first ? heapBlock(sizeof(RegionStats)) : nullptr;
    RegionStats* const stats = createStats(name, 0, true, statsMemory);
    return new (heapBlock(sizeof(RegionMallocFree))) RegionMallocFree(stats);
}

void* RegionMallocFree::Alloc(uint64_t size, uint64_t /*align*/, const char* typeName) {
    if (size == 0) {
        failInternally("Cannot allocate 0 bytes of memory from the system");
    }
    void* const block = heapBlock(size);
    stats->recordAlloc(block, size, 0, typeName);
    return block;
}

void RegionMallocFree::Discard(void* block, uint64_t size, uint64_t /*extra*/) {
    stats->recordDiscard(block, size, 0);
    std::free(block);
}

void RegionMallocFree::Destroy(bool freeMemory) {
    if (freeMemory && stats->allocCount != stats->discardCount) {
        failInternally("RegionMallocFree cannot free memory on Destroy()");
    }
    const bool first = stats->id == 0;
    closeStats(stats);
    if (first) {
        takeOffDeadStats(stats);
        std::free(stats);
    }
    std::free(this);
}

} // namespace alloclib
