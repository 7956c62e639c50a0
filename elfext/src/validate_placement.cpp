// The rules about where segments and sections lie, in the file and in memory.
//
// Places in the file count where they are known: a section that has outgrown its place has none
// until the file is laid out. None of the rules compares every part with every other; ranges are
// sorted, and each is held against the farthest end that came before it.
#include "elfext/src/validation_rules.h"

#include "elfext/interface/fast_array.h"

#include <algorithm>
#include <utility>

namespace elfext {
namespace {

// A stretch of the file or of memory, and the number of what takes it up.
struct Stretch {
    uint64_t start = 0;
    uint64_t end = 0; // at the end of the number range at most
    uint32_t number = 0;
};

Stretch makeStretch(uint64_t start, uint64_t size, uint32_t number) {
    return {start, size <= UINT64_MAX - start ? start + size : UINT64_MAX, number};
}

using Stretches = fast_array<Stretch>;

void sortByStart(Stretches& stretches) {
    std::stable_sort(
        stretches.begin(), stretches.end(),
        [](const Stretch& left, const Stretch& right) { return left.start < right.start; });
}

// Finds a stretch that holds another one as a whole.
class Cover {
public:
    explicit Cover(alloclib::Region* region) : m_Stretches(region) {}

    void add(const Stretch& stretch) { m_Stretches.add(stretch); }

    // To be called when all have been added: each gets the farthest end up to it.
    void settle() {
        sortByStart(m_Stretches);
        for (uint32_t i = 1; i < m_Stretches.getSize(); ++i) {
            if (m_Stretches[i - 1].end >= m_Stretches[i].end) {
                m_Stretches[i].end = m_Stretches[i - 1].end;
                m_Stretches[i].number = m_Stretches[i - 1].number;
            }
        }
    }

    // The number of one that holds `stretch`; null if none does.
    const uint32_t* find(const Stretch& stretch) const {
        const auto* const behind = std::upper_bound(
            m_Stretches.begin(), m_Stretches.end(), stretch.start,
            [](uint64_t start, const Stretch& other) { return start < other.start; });
        if (behind == m_Stretches.begin() || behind[-1].end < stretch.end) {
            return nullptr;
        }
        return &behind[-1].number;
    }

private:
    Stretches m_Stretches;
};

bool takesUpFile(const Section& section) {
    return section.getType() != SHT_NULL && section.getContentsSize() != 0 &&
           section.isFileOffsetKnown();
}

bool isAllocated(const Section& section) {
    return (section.getFlags() & SHF_ALLOC) != 0;
}

const Segment* firstOfType(const ObjectModule& objectModule, uint32_t type) {
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->getType() == type) {
            return segment;
        }
    }
    return nullptr;
}

// Two parts of the module are at odds.
using PairReport = bool (ErrorHandler::*)(ObjectModule*, uint32_t, uint32_t);

// Reports each stretch that overlaps one in front of it, once: with the one that reaches farthest.
bool checkOverlap(ObjectModule& objectModule, Stretches& stretches, PairReport report) {
    sortByStart(stretches);
    Stretch farthest;
    for (const Stretch& stretch : stretches) {
        if (stretch.start < farthest.end &&
            !askHandler(objectModule, report, std::min(farthest.number, stretch.number),
                        std::max(farthest.number, stretch.number))) {
            return false;
        }
        if (stretch.end > farthest.end) {
            farthest = stretch;
        }
    }
    return true;
}

// --- One segment of a type, in front of those that are loaded

bool checkSingle(ObjectModule& objectModule, uint32_t type, PairReport report) {
    const Segment* const first = firstOfType(objectModule, type);
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment != first && segment->getType() == type &&
            !askHandler(objectModule, report, first->getIndex(), segment->getIndex())) {
            return false;
        }
    }
    return true;
}

bool checkBeforeLoad(ObjectModule& objectModule, uint32_t type, PairReport report) {
    const Segment* const load = firstOfType(objectModule, PT_LOAD);
    if (load == nullptr) {
        return true;
    }
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->getType() == type && load->getIndex() < segment->getIndex() &&
            !askHandler(objectModule, report, load->getIndex(), segment->getIndex())) {
            return false;
        }
    }
    return true;
}

uint64_t tableSize(const ObjectModule& objectModule) {
    return uint64_t{objectModule.getSegmentCount()} *
           recordSizes(objectModule.is64Bit()).programHeader;
}

bool checkPhdrSizes(ObjectModule& objectModule) {
    const uint64_t size = tableSize(objectModule);
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->getType() == PT_PHDR && segment->getFileSize() < size &&
            !askHandler(objectModule, &ErrorHandler::phdrTooSmall, segment->getIndex(),
                        segment->getFileSize(), size)) {
            return false;
        }
    }
    return true;
}

} // namespace

// Each is held against the highest one in front of it in the file. Those at one place of the file
// stand in their order of memory, so that none of them hides a breach of another or is one itself.
bool checkSegmentOrder(ObjectModule& objectModule, alloclib::Region* region) {
    fast_array<const Segment*> segments(region);
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->isLoadable() && segment->isFileOffsetKnown()) {
            segments.add(segment);
        }
    }
    std::stable_sort(segments.begin(), segments.end(),
                     [](const Segment* left, const Segment* right) {
                         return std::pair(left->getFileOffset(), left->getVirtualAddress()) <
                                std::pair(right->getFileOffset(), right->getVirtualAddress());
                     });
    const Segment* highest = nullptr;
    for (const Segment* const segment : segments) {
        if (highest == nullptr || segment->getVirtualAddress() >= highest->getVirtualAddress()) {
            highest = segment;
        } else if (!askHandler(objectModule, &ErrorHandler::segmentsOutOfOrder, highest->getIndex(),
                               segment->getIndex())) {
            return false;
        }
    }
    return true;
}

bool checkSectionOverlap(ObjectModule& objectModule, alloclib::Region* region) {
    Stretches stretches(region);
    for (const Section* const section : objectModule.getSections()) {
        if (takesUpFile(*section)) {
            stretches.add(makeStretch(section->getFileOffset(), section->getContentsSize(),
                                      section->getIndex()));
        }
    }
    return checkOverlap(objectModule, stretches, &ErrorHandler::sectionsOverlap);
}

bool checkSingleSegments(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return checkSingle(objectModule, PT_INTERP, &ErrorHandler::duplicateInterp) &&
           checkSingle(objectModule, PT_PHDR, &ErrorHandler::duplicatePhdr) &&
           checkBeforeLoad(objectModule, PT_INTERP, &ErrorHandler::loadBeforeInterp) &&
           checkBeforeLoad(objectModule, PT_PHDR, &ErrorHandler::loadBeforePhdr) &&
           checkPhdrSizes(objectModule);
}

bool checkLoadableSegments(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    const bool isProgram = objectModule.getType() == ET_EXEC || objectModule.getType() == ET_DYN;
    return !isProgram || firstOfType(objectModule, PT_LOAD) != nullptr ||
           askHandler(objectModule, &ErrorHandler::noLoadableSegments);
}

// Other loadable segments tell of parts of those that are loaded, so that only these must not
// overlap.
bool checkSegmentOverlap(ObjectModule& objectModule, alloclib::Region* region) {
    Stretches stretches(region);
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->getType() == PT_LOAD && segment->getMemorySize() != 0) {
            stretches.add(makeStretch(segment->getVirtualAddress(), segment->getMemorySize(),
                                      segment->getIndex()));
        }
    }
    return checkOverlap(objectModule, stretches, &ErrorHandler::segmentsOverlap);
}

bool checkSegmentCongruence(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    for (const Segment* const segment : objectModule.getSegments()) {
        const uint64_t alignment = segment->getAlignment();
        if (segment->isLoadable() && segment->isFileOffsetKnown() && alignment > 1 &&
            segment->getVirtualAddress() % alignment != segment->getFileOffset() % alignment &&
            !askHandler(objectModule, &ErrorHandler::segmentNotCongruent, segment->getIndex(),
                        segment->getVirtualAddress(), segment->getFileOffset(), alignment)) {
            return false;
        }
    }
    return true;
}

// In a relocatable file addresses mean nothing yet.
bool checkSectionAddresses(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    if (!objectModule.hasAddresses()) {
        return true;
    }
    for (const Section* const section : objectModule.getSections()) {
        const uint64_t alignment = section->getAlignment();
        if (isAllocated(*section) && alignment > 1 && section->getAddress() % alignment != 0 &&
            !askHandler(objectModule, &ErrorHandler::sectionAddressNotAligned, section->getIndex(),
                        section->getAddress(), alignment)) {
            return false;
        }
    }
    return true;
}

// A PT_PHDR segment promises that the headers are in memory. They are mapped by the first loaded
// segment, in the bytes that it has in front of all sections.
bool checkMappedHeaders(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    const Segment* const load = firstOfType(objectModule, PT_LOAD);
    if (load == nullptr || firstOfType(objectModule, PT_PHDR) == nullptr ||
        !load->isFileOffsetKnown()) {
        return true;
    }
    uint64_t end = load->getFileSize();
    for (const Section* const section : objectModule.getSections()) {
        if (takesUpFile(*section) && section->getFileOffset() >= load->getFileOffset()) {
            end = std::min(end, section->getFileOffset() - load->getFileOffset());
        }
    }
    const uint64_t unmapped = load->getFileOffset() == 0 ? end : 0;
    const uint64_t needed = recordSizes(objectModule.is64Bit()).elfHeader + tableSize(objectModule);
    return unmapped >= needed || askHandler(objectModule, &ErrorHandler::headersNotMapped,
                                            load->getIndex(), unmapped, needed);
}

namespace {

// Whether the bytes of a section are those that the segment around it has in memory. A section that
// has no place yet gets one there only if a part of the file holds it. The place of zeros says
// nothing, as the file does not have them.
bool isLoadedWith(Section& section, const Segment& segment) {
    if (section.getSize() != 0 && !section.isFileOffsetKnown()) {
        return section.getContainerCount() != 0;
    }
    return section.getContentsSize() == 0 || !segment.isFileOffsetKnown() ||
           section.getFileOffset() - segment.getFileOffset() ==
               section.getAddress() - segment.getVirtualAddress();
}

} // namespace

bool checkLoadableSections(ObjectModule& objectModule, alloclib::Region* region) {
    if (objectModule.getSegmentCount() == 0) {
        return true;
    }
    Cover cover(region);
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->isLoadable()) {
            cover.add(makeStretch(segment->getVirtualAddress(), segment->getMemorySize(),
                                  segment->getIndex()));
        }
    }
    cover.settle();
    for (Section* const section : objectModule.getSections()) {
        if (!isAllocated(*section) || section->getType() == SHT_NULL) {
            continue;
        }
        const uint32_t* const segment =
            cover.find(makeStretch(section->getAddress(), section->getSize(), 0));
        const bool isLoaded =
            segment != nullptr && isLoadedWith(*section, *objectModule.getSegment(*segment));
        if (!isLoaded && !askHandler(objectModule, &ErrorHandler::loadableSectionOutsideSegment,
                                     section->getIndex())) {
            return false;
        }
    }
    return true;
}

bool checkOtherSections(ObjectModule& objectModule, alloclib::Region* region) {
    Cover cover(region);
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->getType() == PT_LOAD && segment->isFileOffsetKnown()) {
            cover.add(
                makeStretch(segment->getFileOffset(), segment->getFileSize(), segment->getIndex()));
        }
    }
    cover.settle();
    for (const Section* const section : objectModule.getSections()) {
        if (isAllocated(*section) || !takesUpFile(*section)) {
            continue;
        }
        const uint32_t* const segment =
            cover.find(makeStretch(section->getFileOffset(), section->getContentsSize(), 0));
        if (segment != nullptr &&
            !askHandler(objectModule, &ErrorHandler::nonLoadableSectionInSegment,
                        section->getIndex(), *segment)) {
            return false;
        }
    }
    return true;
}

} // namespace elfext
