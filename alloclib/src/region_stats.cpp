// Recording and tracing of what regions do.
#include "alloclib/interface/region_stats.h"

#include <cstdio>

namespace alloclib {

namespace {

const char* accuracyPrefix(const RegionStats& stats) {
    return stats.accurate != 0 ? "" : "IN";
}

// Lines show 32 bits of a size.
unsigned shown(uint64_t size) {
    return static_cast<unsigned>(size);
}

} // namespace

void RegionStats::traceSize(const char* format, uint64_t size) const {
    if (traceLevel >= TraceLevel_Overhead) {
        std::fprintf(stderr, format, name, static_cast<int>(id), shown(size));
    }
}

void RegionStats::recordCreation(uint64_t initialSize) const {
    if (traceLevel >= TraceLevel_Life) {
        std::fprintf(stderr, "(%s:%d) New region (%u) initial_size. Tracing is %sACCURATE\n", name,
                     static_cast<int>(id), shown(initialSize), accuracyPrefix(*this));
    }
}

void RegionStats::traceExtension() const {
    std::fprintf(stderr, "(%s:%d) region extended\n", name, static_cast<int>(id));
}

void RegionStats::traceAlloc(const void* block, uint64_t size, uint64_t padding,
                             const char* typeName) const {
    std::fprintf(stderr, "(%s:%d) Allocation at (%p) (%u) bytes (%u) padding (%s) type\n", name,
                 static_cast<int>(id), block, shown(size), shown(padding),
                 typeName != nullptr ? typeName : "unknown");
}

void RegionStats::traceDiscard(const void* block, uint64_t size, uint64_t padding) const {
    std::fprintf(stderr, "(%s:%d) Discarded block at (%p) (%u) bytes (%u) padding\n", name,
                 static_cast<int>(id), block, shown(size), shown(padding));
}

void RegionStats::recordOverheadIncrease(uint64_t size) {
    overheadBytes += size;
    raiseMaximum();
    traceSize("(%s:%d) overhead increased (%u) bytes \n", size);
}

void RegionStats::recordOverheadDecrease(uint64_t size) {
    overheadBytes -= size;
    traceSize("(%s:%d) overhead decreased (%u) bytes \n", size);
}

void RegionStats::recordFragmentationIncrease(uint64_t size) {
    fragmentationBytes += size;
    raiseMaximum();
    traceSize("(%s:%d) fragmentation increased (%u) bytes\n", size);
}

void RegionStats::recordFragmentationDecrease(uint64_t size) {
    fragmentationBytes -= size;
    traceSize("(%s:%d) fragmentation decreased (%u) bytes \n", size);
}

void RegionStats::recordDestruction() const {
    if (traceLevel >= TraceLevel_Life) {
        std::fprintf(stderr,
                     "(%s:%d) Destroyed region with final size (%llu) after (%u) allocs. Maximum "
                     "size was (%llu). Tracing was %sACCURATE\n",
                     name, static_cast<int>(id), static_cast<unsigned long long>(currentSize()),
                     allocCount, static_cast<unsigned long long>(maxSize), accuracyPrefix(*this));
    }
}

} // namespace alloclib
