// The bottom of the chain: the system heap as a region.
//
// Alignments are ignored, `malloc` gives enough for everyone above. Each block is recorded, and
// at the end every block must have come back: the heap itself cannot be released in bulk.
#pragma once

#include "alloclib/interface/region.h"

namespace alloclib {

struct RegionStats;

class RegionMallocFree final : public Region {
public:
    // Makes a region whose statistics bear `name` (kept, not copied). The object and the first
    // record of statistics come from the heap directly.
    static RegionMallocFree* Create(const char* name);

    void* Alloc(uint64_t size, uint64_t align, const char* typeName) override;
    void Discard(void* block, uint64_t size, uint64_t extra) override;
    void Destroy(bool freeMemory) override;

    const RegionStats& statistics() const { return *stats; }

private:
    explicit RegionMallocFree(RegionStats* regionStats) : stats(regionStats) {}
    ~RegionMallocFree() = default;

    RegionStats* stats;
};

} // namespace alloclib
