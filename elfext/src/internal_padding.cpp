#include "elfext/src/internal_padding.h"

#include "elfext/interface/array.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/range.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/sizes_statistics.h"

#include <algorithm>

namespace elfext {
namespace {

using RangeArray = array<Range>;

// What has no size or no place in the file takes up nothing of it. A file's numbers may reach
// beyond the last offset that there is.
void addRange(const FileRegion& region, RangeArray& ranges) {
    uint64_t offset = 0;
    uint64_t size = 0;
    if (region.getFileRange(&offset, &size) && size != 0) {
        ranges.add(Range(offset, size <= UINT64_MAX - offset ? offset + size : UINT64_MAX));
    }
}

void listSegments(const ObjectModule& objectModule, RangeArray& ranges) {
    for (const Segment* const segment : objectModule.getSegments()) {
        addRange(*segment, ranges);
    }
    normaliseRanges(ranges);
}

void listContents(ObjectModule& objectModule, RangeArray& ranges) {
    for (const Section* const section : objectModule.getSections()) {
        addRange(*section, ranges);
    }
    for (const RawDataBlock* const block : objectModule.getRawDataBlocks()) {
        addRange(*block, ranges);
    }
    addRange(objectModule.getElfHeader(), ranges);
    addRange(objectModule.getSectionHeaderTable(), ranges);
    addRange(objectModule.getProgramHeaderTable(), ranges);
    normaliseRanges(ranges);
}

// Both lists are normalised. One walk over each: contents that reach beyond the end of a segment
// are used up with it, and do not count for the next one. (Required: the sums that users keep were
// counted so.)
uint64_t countGaps(const RangeArray& segments, const RangeArray& contents) {
    uint64_t sum = 0;
    uint32_t cursor = 0;
    for (const Range& segment : segments) {
        uint64_t position = segment.getStart();
        for (; cursor < contents.getSize(); ++cursor) {
            const Range& content = contents[cursor];
            const uint64_t cut = std::min(content.getStart(), segment.getEnd());
            if (cut > position) {
                sum += cut - position;
            }
            if (cut == segment.getEnd()) {
                break;
            }
            position = std::max(position, content.getEnd());
        }
    }
    return sum;
}

} // namespace

void addRawData(const ObjectModule& objectModule, SizeStatistics& statistics) {
    for (const RawDataBlock* const block : objectModule.getRawDataBlocks()) {
        uint64_t& sum =
            block->isZero(0, block->getSize()) ? statistics.m_InternalPadding : statistics.m_RoData;
        sum += block->getSize();
    }
}

uint64_t countUncoveredBytes(ObjectModule& objectModule) {
    RangeArray segments;
    listSegments(objectModule, segments);
    if (segments.getSize() == 0) {
        return 0;
    }
    RangeArray contents;
    listContents(objectModule, contents);
    return countGaps(segments, contents);
}

} // namespace elfext
