#include "elfext/src/layout_parts.h"

#include "elfext/src/reporting.h"

#include <algorithm>
#include <cerrno>

namespace elfext {
namespace {

// Where a file may end. More than any host can hold, and far from where numbers wrap.
constexpr uint64_t fileEndLimit64 = uint64_t{1} << 61;
constexpr uint64_t fileEndLimit32 = UINT32_MAX;

// A hostile file relates every part to every other, and each relation takes memory.
constexpr uint64_t relationLimit = uint64_t{1} << 22;

} // namespace

uint64_t LayoutParts::fileEndLimit() const {
    return m_Module.is64Bit() ? fileEndLimit64 : fileEndLimit32;
}

// --- The list

bool LayoutParts::list() {
    for (Segment* const segment : m_Module.getSegments()) {
        if (!add(segment, true)) {
            return false;
        }
    }
    m_FirstSection = count();
    for (Section* const section : m_Module.getSections()) {
        if (!add(section, true)) {
            return false;
        }
    }
    m_ElfHeader = count();
    if (!add(&m_Module.getElfHeader(), true) || !add(&m_Module.getSectionHeaderTable(), true) ||
        !add(&m_Module.getProgramHeaderTable(), true)) {
        return false;
    }
    for (RawDataBlock* const block : m_Module.getRawDataBlocks()) {
        if (!add(block, false)) {
            return false;
        }
    }
    for (uint32_t i = m_FirstSection; i < count(); ++i) {
        m_ContentsSize += m_Parts[i].size;
    }
    return true;
}

bool LayoutParts::add(FileRegion* region, bool hasItem) {
    LayoutPart part;
    part.region = region;
    part.parent = count();
    if (hasItem) {
        part.item = region->createDataStructure(m_Region, 0);
        part.size = part.item->getSize();
        if (part.item->getKind() == DataStructure::Kind_Section &&
            static_cast<SectionDataStructure*>(part.item)->getSection()->getType() == SHT_NULL) {
            part.size = 0;
        }
    } else {
        uint64_t offset = 0;
        region->getFileRange(&offset, &part.size);
    }
    m_Numbers.set(region, part.parent);
    m_Parts.push_back(part);
    return part.size <= fileEndLimit() || reportTooLarge();
}

// --- Blocks

bool LayoutParts::relate() {
    m_IsContainerDone.assign(m_Parts.size(), false);
    for (uint32_t i = 0; i < m_FirstSection; ++i) {
        if (!spendOn(*m_Parts[i].region) || !relateContained(i) || !relateContainers(i) ||
            !relateHeader(i)) {
            return false;
        }
    }
    return true;
}

bool LayoutParts::spendOn(FileRegion& region) {
    m_RelationsSeen += uint64_t{region.getContainedCount()} + region.getContainerCount();
    return m_RelationsSeen <= relationLimit || reportFatal(m_Module, &ErrorHandler::outOfMemory);
}

bool LayoutParts::relateContained(uint32_t segment) {
    FileRegion& region = *m_Parts[segment].region;
    for (uint32_t i = 0; i < region.getContainedCount(); ++i) {
        const ContainedRegion contained = region.getContained(i);
        const uint32_t* const part = m_Numbers.find(contained.m_Region);
        if (part == nullptr) {
            continue;
        }
        if (!fits(segment, *part, contained.m_Offset)) {
            reportClash(segment, *part);
            return false;
        }
        if (!join(segment, *part, contained.m_Offset)) {
            return false;
        }
    }
    return true;
}

// Segments that contain this one see to it themselves; anything else that does is looked at once,
// for all segments in it.
bool LayoutParts::relateContainers(uint32_t segment) {
    FileRegion& region = *m_Parts[segment].region;
    for (uint32_t i = 0; i < region.getContainerCount(); ++i) {
        const uint32_t* const part = m_Numbers.find(region.getContainer(i));
        if (part == nullptr || isSegment(*part) || m_IsContainerDone[*part]) {
            continue;
        }
        m_IsContainerDone[*part] = true;
        FileRegion& container = *m_Parts[*part].region;
        if (!spendOn(container)) {
            return false;
        }
        for (uint32_t k = 0; k < container.getContainedCount(); ++k) {
            const ContainedRegion contained = container.getContained(k);
            const uint32_t* const inner = m_Numbers.find(contained.m_Region);
            if (inner != nullptr && isSegment(*inner) &&
                !join(*inner, *part, 0 - contained.m_Offset)) {
                return false;
            }
        }
    }
    return true;
}

// What starts where the file does starts with the header, even if a file said that there is none.
bool LayoutParts::relateHeader(uint32_t segment) {
    uint64_t offset = 0;
    uint64_t size = 0;
    const bool isAtStart =
        m_Parts[segment].region->getFileRange(&offset, &size) && offset == 0 && size != 0;
    return !isAtStart || join(segment, m_ElfHeader, 0);
}

// True if the part lay so in a file, and reaches no farther beyond the segment than it did there.
bool LayoutParts::stoodSo(uint32_t segment, uint32_t part, uint64_t offset) const {
    const LayoutPart& outer = m_Parts[segment];
    const LayoutPart& inner = m_Parts[part];
    uint64_t places[2] = {};
    uint64_t size = 0;
    return outer.region->getFileRange(&places[0], &size) &&
           inner.region->getFileRange(&places[1], &size) && places[1] - places[0] == offset &&
           outer.region->getSettledSize() != 0 && outer.size >= outer.region->getSettledSize() &&
           inner.size <= inner.region->getSettledSize();
}

// A loader sees the bytes of the segments that it maps. What is loaded and has outgrown such a
// segment would be cut off in memory; what was too long in the file is as good as it was. (Other
// segments may well end inside of a section, such as those that tell which part of an image may be
// made read-only.)
bool LayoutParts::fits(uint32_t segment, uint32_t part, uint64_t offset) const {
    const bool isLoaded =
        part == segmentTable() || (isSection(part) && (section(part).getFlags() & SHF_ALLOC) != 0);
    if (!isLoaded || !this->segment(segment).isLoadable() || m_Parts[part].size == 0) {
        return true;
    }
    const uint64_t room = m_Parts[segment].size;
    return (offset <= room && m_Parts[part].size <= room - offset) ||
           stoodSo(segment, part, offset);
}

uint32_t LayoutParts::findRoot(uint32_t part, uint64_t& distance) {
    distance = 0;
    uint32_t root = part;
    while (m_Parts[root].parent != root) {
        distance += m_Parts[root].distance;
        root = m_Parts[root].parent;
    }
    // All parts on the way hang directly on the root from now on.
    for (uint64_t rest = distance; m_Parts[part].parent != root && part != root;) {
        const uint32_t next = m_Parts[part].parent;
        const uint64_t step = m_Parts[part].distance;
        m_Parts[part].parent = root;
        m_Parts[part].distance = rest;
        rest -= step;
        part = next;
    }
    return root;
}

// Puts a part `offset` bytes behind the start of a segment. The earlier of two roots stands for
// both, so a block's root is its first segment.
bool LayoutParts::join(uint32_t segment, uint32_t part, uint64_t offset) {
    uint64_t ofSegment = 0;
    uint64_t ofPart = 0;
    const uint32_t segmentRoot = findRoot(segment, ofSegment);
    const uint32_t partRoot = findRoot(part, ofPart);
    const uint64_t distance = ofSegment + offset - ofPart; // between the roots
    if (segmentRoot == partRoot) {
        return distance == 0 || reportClash(segment, part);
    }
    const bool segmentStands = segmentRoot < partRoot;
    LayoutPart& joining = m_Parts[segmentStands ? partRoot : segmentRoot];
    joining.parent = segmentStands ? segmentRoot : partRoot;
    joining.distance = segmentStands ? distance : 0 - distance;
    return true;
}

// --- Reports

bool LayoutParts::reportClash(uint32_t segment, uint32_t part) const {
    const DataStructure* const item = m_Parts[part].item;
    if (item == nullptr) {
        return true;
    }
    switch (item->getKind()) {
    case DataStructure::Kind_ElfHeader:
        return askHandler(m_Module, &ErrorHandler::segmentElfHeaderClash, segment);
    case DataStructure::Kind_SectionHeaderTable:
        return askHandler(m_Module, &ErrorHandler::segmentSectionHeaderClash, segment);
    case DataStructure::Kind_SegmentHeaderTable:
        return askHandler(m_Module, &ErrorHandler::segmentProgramHeaderClash, segment);
    case DataStructure::Kind_Section:
        return askHandler(m_Module, &ErrorHandler::segmentSectionAlignmentClash, segment,
                          part - m_FirstSection);
    default:
        return askHandler(m_Module, &ErrorHandler::segmentsAlignmentClash, std::min(segment, part),
                          std::max(segment, part));
    }
}

void LayoutParts::reportOverlap(uint32_t segment, uint32_t one, uint32_t two) const {
    if (isSection(one) && isSection(two)) {
        askHandler(m_Module, &ErrorHandler::sectionsOverlap, std::min(one, two) - m_FirstSection,
                   std::max(one, two) - m_FirstSection);
    } else {
        reportClash(segment, isSection(one) || isRawData(one) ? two : one);
    }
}

bool LayoutParts::reportTooLarge() const {
    return reportFatal(m_Module, &ErrorHandler::ioErrorWriting, m_Module.getFileName(), EFBIG);
}

} // namespace elfext
