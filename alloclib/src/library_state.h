// The region library's state, all in one place.
//
// The library is single-threaded and so is its state; nothing here is locked.
#pragma once

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region.h"

#include <cstdint>
#include <cstdlib>

namespace alloclib {

class RegionMallocFree;
struct RegionStats;

// One default parent that was set aside by a later one.
struct ParentNode {
    Region* parent;
    ParentNode* below;
};

struct LibraryState {
    void (*internalError)(const char* format, ...);
    void (*outOfMemory)(uint32_t size, uint32_t systemSize);
    Region* defaultParent;
    RegionMallocFree* systemRegion;
    uint32_t debugMode;
    Region* debugFactory;
    ParentNode* parentStack;

    uint32_t nextStatsId;
    int32_t traceLevel;
    RegionStats* liveStats; // latest first
    RegionStats* deadStats; // latest first
    uint32_t statsMergeLevel;
};

LibraryState& libraryState();

// Reports misuse of the library and ends the process.
template <typename... Arguments>
[[noreturn]] void failInternally(const char* format, Arguments... arguments) {
    libraryState().internalError(format, arguments...);
    std::abort(); // an error function that returns leaves nothing to go on with
}

} // namespace alloclib
