// Start and end of the region library, and its settings.
//
// The library keeps the system region at the bottom of the chain, and a stack of default parents
// from which new regions take their memory. Misuse of the library and exhausted memory end the
// process with status 1 and one line on standard error, written directly: everything else in the
// tool stands on this, so nothing else can be relied on to report it.
#pragma once

#include <cstdint>
#include <cstdio>

namespace alloclib {

class Region;

// Makes the system region, which becomes the default parent. Once a run, before all else here.
void InitAlloclib();

// Takes the default parents off, frees the statistics and ends the system region. All other
// regions must have been destroyed.
void FinishAlloclib();

// `region` becomes the parent of the general regions that are created from now on.
void PushDefaultParent(Region* region);

// Goes back to the default parent before the last `PushDefaultParent`.
void PopDefaultParent();

// Ends the process with the text of exhausted memory; `size` is how many bytes were asked for. In a
// thread that has a QuietExhaustion it throws std::bad_alloc.
[[noreturn]] void endOutOfMemory(uint64_t size);

// Aids for finding faults; the tool itself uses none of them.

enum DebugMode : uint32_t {
    DebugMode_None = 0,
    DebugMode_Normal = 1,
    DebugMode_Accurate = 2,    // general regions record every block
    DebugMode_Transparent = 3, // regions pass everything to a parent that `factory` makes
};

// Sets how regions are created from now on. In transparent mode `factory->Alloc(initialSize, 8,
// name)` must return a new `Region*`, or null where none is wanted; `factory` stays the
// caller's. `InitAlloclib` forgets the factory.
void setDebugMode(uint32_t mode, Region* factory);

// Regions created from now on trace on standard error: 1 their life, 2 also blocks, 3 also
// overhead and fragmentation. 0 is none. `FinishAlloclib` goes back to 0.
void setTraceLevel(int32_t level);

// At level 1 (the start value) and above, statistics of ended regions with equal names are summed
// up in one row; at 0 each keeps its own.
void setStatsMergeLevel(uint32_t level);

// Writes a table of all regions, ended and live, to `stream`. With `flagLive` each live one but
// the lowest two is marked as an error.
void printStatsReport(std::FILE* stream, bool flagLive);

} // namespace alloclib
