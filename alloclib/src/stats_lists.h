// The lists of statistics: one of live regions, one of ended regions.
#pragma once

#include <cstdint>

namespace alloclib {

struct RegionStats;

// Makes the record of a new region and enters it in the live list. The record comes from the
// system region, or from `memory` for the system region itself. `name` is kept, not copied.
RegionStats* createStats(const char* name, uint64_t initialSize, bool accurate,
                         void* memory = nullptr);

// Moves the record of an ended region to the dead list, or adds it to the dead record of an
// earlier region of that name where the merge level allows.
void closeStats(RegionStats* stats);

// Takes a dead record off its list without freeing it.
void takeOffDeadStats(RegionStats* stats);

// Frees all dead records. A live one other than the system region's is an error.
void freeAllStats();

} // namespace alloclib
