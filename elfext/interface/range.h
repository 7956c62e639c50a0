// A stretch of a file, from one 64-bit offset up to but not including another.
#pragma once

#include "platform/interface/internal_check.h"

#include <algorithm>
#include <cstdint>

namespace elfext {

class Range {
public:
    // The empty range at offset 0.
    constexpr Range() = default;

    Range(uint64_t startOffset, uint64_t endOffset) : start(startOffset), end(endOffset) {
        TOMEX_CHECK(start <= end);
    }

    uint64_t getStart() const { return start; }
    uint64_t getEnd() const { return end; }
    uint64_t getSize() const { return end - start; }

    bool operator==(const Range& other) const = default;

private:
    uint64_t start = 0;
    uint64_t end = 0;
};

// Sorts the ranges in `ranges` (an `array` or `fast_array`) by start and joins those that overlap
// or touch. The list shrinks in place.
template <typename RangeArray>
void normaliseRanges(RangeArray& ranges) {
    if (ranges.getSize() == 0) {
        return;
    }
    Range* const first = &ranges[0];
    std::sort(first, first + ranges.getSize(), [](const Range& left, const Range& right) {
        return left.getStart() < right.getStart();
    });
    Range* last = first;
    for (Range* range = first + 1; range != first + ranges.getSize(); ++range) {
        if (range->getStart() > last->getEnd()) {
            *++last = *range;
        } else {
            *last = Range(last->getStart(), std::max(last->getEnd(), range->getEnd()));
        }
    }
    ranges.setSize(static_cast<uint32_t>(last - first) + 1);
}

} // namespace elfext
