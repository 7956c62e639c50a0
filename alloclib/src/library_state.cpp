// Start, end and default parents of the library, and its two ways to give up.
#include "alloclib/src/library_state.h"

#include "alloclib/interface/quiet_exhaustion.h"
#include "alloclib/interface/region_stats.h"
#include "alloclib/src/region_malloc_free.h"
#include "alloclib/src/stats_lists.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <new>

namespace alloclib {

namespace {

// Both functions write directly and leave at once: the message library and the tool's exit path
// stand on the very memory that has failed here.

void writeInternalError(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "Internal alloclib error: %s\n", text);
    std::exit(1);
}

void writeOutOfMemory(uint32_t size, uint32_t systemSize) {
    std::fprintf(stderr,
                 "Out of memory. Allocation of %lu bytes failed, system size is %lu bytes\n",
                 static_cast<unsigned long>(size), static_cast<unsigned long>(systemSize));
    std::exit(1);
}

uint32_t cutTo32Bits(uint64_t size) {
    return static_cast<uint32_t>(std::min<uint64_t>(size, UINT32_MAX));
}

// The error functions are there from the first, so that use before `InitAlloclib` is reported.
constinit LibraryState theState = {
    .internalError = writeInternalError,
    .outOfMemory = writeOutOfMemory,
    .defaultParent = nullptr,
    .systemRegion = nullptr,
    .debugMode = DebugMode_None,
    .debugFactory = nullptr,
    .parentStack = nullptr,
    .nextStatsId = 0,
    .traceLevel = 0,
    .liveStats = nullptr,
    .deadStats = nullptr,
    .statsMergeLevel = 1,
};

} // namespace

LibraryState& libraryState() {
    return theState;
}

void InitAlloclib() {
    theState.internalError = writeInternalError;
    theState.outOfMemory = writeOutOfMemory;
    if (theState.defaultParent != nullptr) {
        failInternally("Alloclib cannot be initialised more than once");
    }
    theState.debugFactory = nullptr;
    theState.systemRegion = RegionMallocFree::Create("System region");
    theState.defaultParent = theState.systemRegion;
}

void FinishAlloclib() {
    if (theState.defaultParent == nullptr) {
        failInternally("Alloclib not initialised");
    }
    while (theState.parentStack != nullptr) {
        PopDefaultParent();
    }
    theState.defaultParent = nullptr;
    freeAllStats();
    theState.nextStatsId = 0;
    theState.traceLevel = 0;
    theState.statsMergeLevel = 1;
    theState.systemRegion->Destroy(true);
    theState.systemRegion = nullptr;
}

void PushDefaultParent(Region* region) {
    if (theState.defaultParent == nullptr) {
        failInternally("Alloclib not initialised");
    }
    void* const memory =
        theState.systemRegion->Alloc(sizeof(ParentNode), alignof(ParentNode), "ParentNode");
    theState.parentStack = new (memory) ParentNode{theState.defaultParent, theState.parentStack};
    theState.defaultParent = region;
}

void PopDefaultParent() {
    ParentNode* const node = theState.parentStack;
    if (node == nullptr) {
        failInternally("No Default Parent to pop from stack");
    }
    theState.defaultParent = node->parent;
    theState.parentStack = node->below;
    theState.systemRegion->Discard(node, sizeof(ParentNode), alignof(ParentNode));
}

void endOutOfMemory(uint64_t size) {
    if (QuietExhaustion::isActive()) {
        throw std::bad_alloc();
    }
    uint64_t systemSize = 0;
    if (theState.systemRegion != nullptr) {
        theState.systemRegion->PrepareStats();
        systemSize = theState.systemRegion->statistics().currentSize();
    }
    theState.outOfMemory(cutTo32Bits(size), cutTo32Bits(systemSize));
    std::abort(); // an error function that returns leaves nothing to go on with
}

void setDebugMode(uint32_t mode, Region* factory) {
    theState.debugMode = mode;
    theState.debugFactory = factory;
}

void setTraceLevel(int32_t level) {
    theState.traceLevel = level;
}

void setStatsMergeLevel(uint32_t level) {
    theState.statsMergeLevel = level;
}

} // namespace alloclib
