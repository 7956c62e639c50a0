// What a region has given out and taken back, for traces and the report.
//
// Recording is plain addition, cheap enough to be always on. A record outlives its region: when
// the region ends, the record moves from the list of live ones to that of the dead.
#pragma once

#include <algorithm>
#include <cstdint>

namespace alloclib {

struct RegionStats {
    uint32_t id = 0; // in order of creation; 0 is the system region's
    int32_t traceLevel = 0;
    uint8_t destroyed = 0;
    uint8_t accurate = 0; // every single block is recorded
    RegionStats* next = nullptr;
    RegionStats* previous = nullptr;
    const char* name = nullptr;
    uint32_t uses = 1; // regions summed up here
    uint32_t allocCount = 0;
    uint64_t allocBytes = 0;
    uint64_t paddingBytes = 0;
    uint32_t discardCount = 0;
    uint64_t discardBytes = 0;  // with the padding that came back
    uint64_t overheadBytes = 0; // the region's own tables and headers
    uint64_t finalAdjust = 0;   // recorded as given out, but unused when the region ended
    uint64_t fragmentationBytes = 0;
    uint64_t maxSize = 0;

    // Bytes that the region occupies now.
    uint64_t currentSize() const {
        return allocBytes + paddingBytes + overheadBytes + fragmentationBytes - discardBytes -
               finalAdjust;
    }

    // One call for each event; all sizes are in bytes. `typeName` may be null.
    void recordCreation(uint64_t initialSize) const;
    void recordExtension() const {
        if (traceLevel >= TraceLevel_Life) [[unlikely]] {
            traceExtension();
        }
    }
    void recordAlloc(void* block, uint64_t size, uint64_t padding, const char* typeName) {
        allocCount++;
        allocBytes += size;
        paddingBytes += padding;
        raiseMaximum();
        if (traceLevel >= TraceLevel_Blocks) [[unlikely]] {
            traceAlloc(block, size, padding, typeName);
        }
    }
    void recordDiscard(const void* block, uint64_t size, uint64_t padding) {
        discardCount++;
        discardBytes += size + padding;
        if (traceLevel >= TraceLevel_Blocks) [[unlikely]] {
            traceDiscard(block, size, padding);
        }
    }
    void recordOverheadIncrease(uint64_t size);
    void recordOverheadDecrease(uint64_t size);
    void recordFragmentationIncrease(uint64_t size);
    void recordFragmentationDecrease(uint64_t size);
    void recordDestruction() const;

private:
    // Trace levels from which on the lines appear.
    enum TraceLevel : int32_t {
        TraceLevel_Life = 1,
        TraceLevel_Blocks = 2,
        TraceLevel_Overhead = 3,
    };

    void raiseMaximum() { maxSize = std::max(maxSize, currentSize()); }
    void traceExtension() const;
    void traceAlloc(const void* block, uint64_t size, uint64_t padding, const char* typeName) const;
    void traceDiscard(const void* block, uint64_t size, uint64_t padding) const;
    void traceSize(const char* format, uint64_t size) const;
};

} // namespace alloclib
