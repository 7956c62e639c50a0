// The parts of a file that layout places, and which of them keep their distances.
//
// Parts that are related to one segment lie at settled distances from it, and so do those of
// another segment that shares a part with it: all of them are one block. A block is a tree of
// parts, each knowing how far it lies behind its parent; the first segment is the root and stands
// for the block.
//
// Distances may be below 0 and are computed modulo 2 to the 64th.
#pragma once

#include "elfext/interface/data_structure.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/raw_data_block.h"

#include <cstdint>
#include <vector>

namespace elfext {

struct LayoutPart {
    FileRegion* region = nullptr;
    DataStructure* item = nullptr; // null for raw data, which follow their segment
    uint64_t size = 0;             // in the file
    uint32_t parent = 0;           // towards the root; a root is its own
    uint64_t distance = 0;         // from the parent
    uint64_t place = 0;            // in the file, once it is known
};

class LayoutParts {
public:
    // The items lie in `region`.
    LayoutParts(ObjectModule& objectModule, alloclib::Region* region)
        : m_Module(objectModule), m_Region(region), m_Numbers(region) {}

    // Lists all parts with the sizes that they have now. False, with a report, if one of them is
    // too large for any file of this class.
    bool list();
    // Makes blocks of them. False if the error handler ended it.
    bool relate();

    // Segments come first, then sections, the three headers, and raw data.
    uint32_t count() const { return static_cast<uint32_t>(m_Parts.size()); }
    LayoutPart& operator[](uint32_t part) { return m_Parts[part]; }
    const LayoutPart& operator[](uint32_t part) const { return m_Parts[part]; }
    uint32_t segmentCount() const { return m_FirstSection; }
    uint32_t firstSection() const { return m_FirstSection; }
    uint32_t elfHeader() const { return m_ElfHeader; } // behind the last section
    uint32_t sectionTable() const { return m_ElfHeader + 1; }
    uint32_t segmentTable() const { return m_ElfHeader + 2; }
    uint32_t firstRawData() const { return m_ElfHeader + 3; }

    bool isSegment(uint32_t part) const { return part < m_FirstSection; }
    bool isSection(uint32_t part) const { return part >= m_FirstSection && part < m_ElfHeader; }
    bool isRawData(uint32_t part) const { return part >= firstRawData(); }
    Segment& segment(uint32_t part) const {
        return *static_cast<SegmentDataStructure*>(m_Parts[part].item)->getSegment();
    }
    Section& section(uint32_t part) const {
        return *static_cast<SectionDataStructure*>(m_Parts[part].item)->getSection();
    }
    RawDataBlock& rawData(uint32_t part) const {
        return *static_cast<RawDataBlock*>(m_Parts[part].region);
    }

    // The root of a part, and how far behind it the part lies.
    uint32_t findRoot(uint32_t part, uint64_t& distance);

    // How many bytes all parts but the segments have together, which are made of them.
    uint64_t contentsSize() const { return m_ContentsSize; }
    // Where a file of this class has to end.
    uint64_t fileEndLimit() const;

    // Reports that a part of a block cannot lie where it should, and gives the handler's answer.
    // `segment` is one of the block's.
    bool reportClash(uint32_t segment, uint32_t part) const;
    // Reports two parts of a block that lie over each other. Only one of them can be raw data.
    void reportOverlap(uint32_t segment, uint32_t one, uint32_t two) const;
    // Always false.
    bool reportTooLarge() const;

private:
    bool add(FileRegion* region, bool hasItem);
    bool spendOn(FileRegion& region);
    bool relateContained(uint32_t segment);
    bool relateContainers(uint32_t segment);
    bool relateHeader(uint32_t segment);
    bool stoodSo(uint32_t segment, uint32_t part, uint64_t offset) const;
    bool fits(uint32_t segment, uint32_t part, uint64_t offset) const;
    bool join(uint32_t segment, uint32_t part, uint64_t offset);

    ObjectModule& m_Module;
    alloclib::Region* m_Region;
    std::vector<LayoutPart> m_Parts;
    fast_hash_table<FileRegion*, uint32_t> m_Numbers;
    uint32_t m_FirstSection = 0;
    uint32_t m_ElfHeader = 0;
    uint64_t m_ContentsSize = 0;
    uint64_t m_RelationsSeen = 0;
    std::vector<bool> m_IsContainerDone;
};

} // namespace elfext
