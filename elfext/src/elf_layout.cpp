#include "elfext/interface/elf_layout.h"

#include "alloclib/interface/region_general.h"
#include "elfext/interface/data_structure.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/src/dynamic_position.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/reporting.h"

#include <algorithm>
#include <cerrno>
#include <vector>

namespace elfext {
namespace {

// Where a file may end. More than any host can hold, and far from where numbers wrap.
constexpr uint64_t fileEndLimit64 = uint64_t{1} << 62;
constexpr uint64_t fileEndLimit32 = UINT32_MAX;

// A hostile file relates every part to every other. So much is spent on looking for relations: a
// step for each part that is looked at, and more for each relation, since it takes memory.
constexpr uint64_t stepLimit = uint64_t{1} << 28;
constexpr uint64_t stepsPerRelation = 64;

// Room that is left between parts so that they come to lie where they must, in bytes of all of the
// file. The largest pages of any system are not larger.
constexpr uint64_t paddingLimit = uint64_t{1} << 30;

constexpr uint32_t noSegment = UINT32_MAX;

// A part of the file. Its place is its block's start plus `offset`; offsets may be below 0, and
// are computed modulo 2 to the 64th.
struct Part {
    FileRegion* region = nullptr;
    DataStructure* item = nullptr; // null for raw data, which follow their segment
    uint64_t size = 0;
    uint32_t parent = 0; // towards the part that stands for the block
    uint64_t offset = 0; // from the parent
    uint64_t place = 0;  // in the file, once it is known
};

// What the start of a block must be: `residue` modulo `modulus`, a power of two.
struct Constraint {
    uint64_t modulus = 1;
    uint64_t residue = 0;

    bool admits(uint64_t start) const { return (start & (modulus - 1)) == residue; }
    // The first start from `start` on that is good.
    uint64_t next(uint64_t start) const { return start + ((residue - start) & (modulus - 1)); }
    bool agreesWith(const Constraint& other) const {
        return ((residue - other.residue) & (std::min(modulus, other.modulus) - 1)) == 0;
    }
};

struct Block {
    std::vector<uint32_t> parts; // in the order of the list of parts
    Constraint constraint;
    uint32_t segment = noSegment; // the one that reports speak of
    int64_t first = 0;            // where its bytes start and end, from its start on
    int64_t end = 0;
    bool hasBytes = false;
    bool hasHeader = false;
    bool isPlaceKnown = false;
    uint64_t knownStart = 0;
    uint64_t start = 0;
};

class ElfLayout {
public:
    ElfLayout(ObjectModule& objectModule, alloclib::Region* region)
        : m_Module(objectModule), m_Region(region), m_Sizes(recordSizes(objectModule.is64Bit())),
          m_PartNumbers(region) {}

    bool run() {
        settleTables();
        listParts();
        if (!relateParts()) {
            return false;
        }
        makeBlocks();
        if (!constrainBlocks() || !placeBlocks() || !placeRest()) {
            return false;
        }
        enterPlaces();
        return true;
    }

private:
    // --- Parts

    void settleTables() {
        m_Module.setElfHeaderSize(m_Sizes.elfHeader);
        SectionHeaderTable& sections = m_Module.getSectionHeaderTable();
        sections.setEntrySize(m_Sizes.sectionHeader);
        sections.setCount(m_Module.getSectionCount());
        ProgramHeaderTable& segments = m_Module.getProgramHeaderTable();
        segments.setEntrySize(m_Sizes.programHeader);
        segments.setCount(m_Module.getSegmentCount());
    }

    void listParts() {
        for (Segment* const segment : m_Module.getSegments()) {
            addPart(segment, true);
        }
        m_FirstSection = static_cast<uint32_t>(m_Parts.size());
        for (Section* const section : m_Module.getSections()) {
            addPart(section, true);
        }
        m_Header = addPart(&m_Module.getElfHeader(), true);
        m_SectionTable = addPart(&m_Module.getSectionHeaderTable(), true);
        m_SegmentTable = addPart(&m_Module.getProgramHeaderTable(), true);
        for (RawDataBlock* const block : m_Module.getRawDataBlocks()) {
            addPart(block, false);
        }
    }

    uint32_t addPart(FileRegion* region, bool hasItem) {
        Part part;
        part.region = region;
        part.parent = static_cast<uint32_t>(m_Parts.size());
        if (hasItem) {
            part.item = region->createDataStructure(m_Region, 0);
            part.size = part.item->getSize();
            if (part.item->getKind() == DataStructure::Kind_Section &&
                static_cast<SectionDataStructure*>(part.item)->getSection()->getType() ==
                    SHT_NULL) {
                part.size = 0;
            }
        } else {
            uint64_t offset = 0;
            region->getFileRange(&offset, &part.size);
        }
        m_PartNumbers.set(region, part.parent);
        m_Parts.push_back(part);
        return part.parent;
    }

    bool isSegment(uint32_t part) const { return part < m_FirstSection; }
    Section* sectionOf(uint32_t part) const {
        return static_cast<SectionDataStructure*>(m_Parts[part].item)->getSection();
    }

    // --- Relations

    bool relateParts() {
        for (uint32_t i = 0; i < m_FirstSection; ++i) {
            FileRegion* const segment = m_Parts[i].region;
            if (!spendOn(*segment)) {
                return false;
            }
            for (uint32_t k = 0; k < segment->getContainedCount(); ++k) {
                const ContainedRegion contained = segment->getContained(k);
                if (!relate(i, contained.m_Region, contained.m_Offset)) {
                    return false;
                }
            }
            for (uint32_t k = 0; k < segment->getContainerCount(); ++k) {
                if (!relateToContainer(i, segment->getContainer(k))) {
                    return false;
                }
            }
        }
        return true;
    }

    bool spendOn(FileRegion& region) {
        m_Steps += m_Parts.size();
        if (m_Steps <= stepLimit) {
            m_Steps += stepsPerRelation *
                       (uint64_t{region.getContainedCount()} + region.getContainerCount());
        }
        return m_Steps <= stepLimit || reportFatal(m_Module, &ErrorHandler::outOfMemory);
    }

    // Segments that contain this one relate it themselves.
    bool relateToContainer(uint32_t segment, FileRegion* container) {
        const uint32_t* const number = m_PartNumbers.find(container);
        if (number == nullptr || isSegment(*number)) {
            return true;
        }
        if (!spendOn(*container)) {
            return false;
        }
        for (uint32_t i = 0; i < container->getContainedCount(); ++i) {
            const ContainedRegion contained = container->getContained(i);
            if (contained.m_Region == m_Parts[segment].region) {
                return relate(segment, container, 0 - contained.m_Offset);
            }
        }
        return true;
    }

    // Finds the part that stands for the block of a part, and the offset from there.
    uint32_t findRoot(uint32_t part, uint64_t& offset) {
        offset = 0;
        uint32_t root = part;
        while (m_Parts[root].parent != root) {
            offset += m_Parts[root].offset;
            root = m_Parts[root].parent;
        }
        for (uint64_t rest = offset; m_Parts[part].parent != root && part != root;) {
            const uint32_t next = m_Parts[part].parent;
            const uint64_t step = m_Parts[part].offset;
            m_Parts[part].parent = root;
            m_Parts[part].offset = rest;
            rest -= step;
            part = next;
        }
        return root;
    }

    // Puts `region` `offset` bytes behind the start of a segment. The earlier part stands for both,
    // so blocks are told by their first segment.
    bool relate(uint32_t segment, FileRegion* region, uint64_t offset) {
        const uint32_t* const number = m_PartNumbers.find(region);
        if (number == nullptr) {
            return true;
        }
        uint64_t segmentOffset = 0;
        uint64_t partOffset = 0;
        const uint32_t segmentRoot = findRoot(segment, segmentOffset);
        const uint32_t partRoot = findRoot(*number, partOffset);
        const uint64_t distance = segmentOffset + offset - partOffset; // between the roots
        if (segmentRoot == partRoot) {
            return distance == 0 || reportClash(segment, *number);
        }
        const bool segmentStands = segmentRoot < partRoot;
        Part& joining = m_Parts[segmentStands ? partRoot : segmentRoot];
        joining.parent = segmentStands ? segmentRoot : partRoot;
        joining.offset = segmentStands ? distance : 0 - distance;
        return true;
    }

    bool reportClash(uint32_t segment, uint32_t part) {
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
            return askHandler(m_Module, &ErrorHandler::segmentsAlignmentClash,
                              std::min(segment, part), std::max(segment, part));
        }
    }

    // --- Blocks

    void makeBlocks() {
        std::vector<uint32_t> blockOfRoot(m_Parts.size(), UINT32_MAX);
        m_IsInBlock.assign(m_Parts.size(), false);
        for (uint32_t i = 0; i < m_Parts.size(); ++i) {
            uint64_t offset = 0;
            const uint32_t root = findRoot(i, offset);
            if (!isSegment(root)) {
                continue;
            }
            if (blockOfRoot[root] == UINT32_MAX) {
                blockOfRoot[root] = static_cast<uint32_t>(m_Blocks.size());
                m_Blocks.emplace_back();
            }
            addToBlock(m_Blocks[blockOfRoot[root]], i, offset);
        }
    }

    void addToBlock(Block& block, uint32_t number, uint64_t offset) {
        const Part& part = m_Parts[number];
        block.parts.push_back(number);
        m_IsInBlock[number] = true;
        if (number == m_Header) {
            block.hasHeader = true;
        }
        if (isSegment(number) && block.segment == noSegment) {
            block.segment = number;
            uint64_t place = 0;
            uint64_t size = 0;
            block.isPlaceKnown = part.region->getFileRange(&place, &size);
            block.knownStart = place - offset;
        }
        if (part.size != 0) {
            const auto first = static_cast<int64_t>(offset);
            const auto end = static_cast<int64_t>(offset + part.size);
            block.first = block.hasBytes ? std::min(block.first, first) : first;
            block.end = block.hasBytes ? std::max(block.end, end) : end;
            block.hasBytes = true;
        }
    }

    // The constraint of a part as one of the start of its block. An alignment that is no power of
    // two binds as far as it goes.
    Constraint constraintOf(uint32_t number) {
        const DataStructure* const item = m_Parts[number].item;
        if (item == nullptr) {
            return {};
        }
        uint64_t offset = 0;
        findRoot(number, offset);
        const uint64_t alignment = item->getAlignment();
        const uint64_t modulus = std::max<uint64_t>(alignment & (0 - alignment), 1);
        return {modulus, (item->getCongruence() - offset) & (modulus - 1)};
    }

    bool constrainBlocks() {
        for (Block& block : m_Blocks) {
            for (const uint32_t number : block.parts) {
                if (!constrain(block, number)) {
                    return false;
                }
            }
            if (block.hasHeader && !pinToHeader(block)) {
                return false;
            }
        }
        return true;
    }

    bool constrain(Block& block, uint32_t number) {
        if (m_Parts[number].size == 0 && !isSegment(number)) {
            return true;
        }
        const Constraint constraint = constraintOf(number);
        if (!block.constraint.agreesWith(constraint)) {
            return reportClash(block.segment, number);
        }
        if (constraint.modulus > block.constraint.modulus) {
            block.constraint = constraint;
            if (isSegment(number)) {
                block.segment = number;
            }
        }
        return true;
    }

    // The header is at the start of the file and nowhere else.
    bool pinToHeader(Block& block) {
        uint64_t offset = 0;
        findRoot(m_Header, offset);
        block.start = 0 - offset;
        const bool isBelowFile = static_cast<int64_t>(block.start) + block.first < 0;
        if (isBelowFile || !block.constraint.admits(block.start)) {
            return reportClash(block.segment, m_Header) && !isBelowFile;
        }
        return true;
    }

    // --- Places

    bool placeBlocks() {
        m_End = m_IsInBlock[m_Header] ? 0 : m_Sizes.elfHeader;
        if (!m_IsInBlock[m_SegmentTable] && m_Parts[m_SegmentTable].size != 0 &&
            !m_IsInBlock[m_Header]) {
            placeBehind(m_SegmentTable);
        }
        std::vector<Block*> order;
        for (Block& block : m_Blocks) {
            order.push_back(&block);
        }
        std::stable_sort(order.begin(), order.end(), [](const Block* left, const Block* right) {
            if (left->hasHeader != right->hasHeader) {
                return left->hasHeader;
            }
            const uint64_t leftStart = left->isPlaceKnown ? left->knownStart : UINT64_MAX;
            const uint64_t rightStart = right->isPlaceKnown ? right->knownStart : UINT64_MAX;
            return leftStart + static_cast<uint64_t>(left->first) <
                   rightStart + static_cast<uint64_t>(right->first);
        });
        for (Block* const block : order) {
            if (!placeBlock(*block)) {
                return false;
            }
        }
        return true;
    }

    // A block without bytes takes no room and may lie anywhere.
    bool placeBlock(Block& block) {
        if (!block.hasHeader) {
            const auto first = static_cast<uint64_t>(block.hasBytes ? block.first : 0);
            const uint64_t room = block.hasBytes ? m_End : 0;
            const uint64_t knownFirst = block.knownStart + first;
            const bool stays = block.isPlaceKnown && block.constraint.admits(block.knownStart) &&
                               knownFirst >= room && knownFirst < m_Limit;
            block.start = stays ? block.knownStart : block.constraint.next(room - first);
            if (block.start + first < room || block.start + first > m_Limit) {
                return failTooLarge();
            }
            m_Padding += block.hasBytes && !stays ? block.start + first - m_End : 0;
            if (m_Padding > paddingLimit) {
                return failTooLarge();
            }
        }
        if (block.hasBytes) {
            const uint64_t end = block.start + static_cast<uint64_t>(block.end);
            if (end > m_Limit) {
                return failTooLarge();
            }
            m_End = std::max(m_End, end);
        }
        for (const uint32_t number : block.parts) {
            uint64_t offset = 0;
            findRoot(number, offset);
            m_Parts[number].place = block.start + offset;
        }
        return true;
    }

    // What no segment holds.
    bool placeRest() {
        if (m_Parts[m_SegmentTable].size != 0 && !m_IsInBlock[m_SegmentTable] &&
            m_IsInBlock[m_Header]) {
            placeBehind(m_SegmentTable);
        }
        for (uint32_t i = m_FirstSection; i < m_Header; ++i) {
            if (!m_IsInBlock[i] && !placeSection(i)) {
                return false;
            }
        }
        for (uint32_t i = m_SegmentTable + 1; i < m_Parts.size(); ++i) {
            if (!m_IsInBlock[i] && !placeBehind(i)) {
                return false;
            }
        }
        return m_IsInBlock[m_SectionTable] || m_Parts[m_SectionTable].size == 0 ||
               placeBehind(m_SectionTable);
    }

    // A section without bytes belongs to the segment at whose end it is said to lie, so in a file
    // with segments it stays where it is.
    bool placeSection(uint32_t number) {
        Part& part = m_Parts[number];
        const Section& section = *sectionOf(number);
        if (section.getType() == SHT_NULL) {
            return true;
        }
        if (part.size == 0 && section.isFileOffsetKnown() && m_FirstSection != 0) {
            part.place = section.getFileOffset();
            return true;
        }
        return placeBehind(number);
    }

    bool placeBehind(uint32_t number) {
        Part& part = m_Parts[number];
        part.place = constraintOf(number).next(m_End);
        if (part.place > m_Limit || part.size > m_Limit - part.place) {
            return failTooLarge();
        }
        if (part.size != 0) {
            m_End = part.place + part.size;
        }
        return true;
    }

    bool failTooLarge() {
        return reportFatal(m_Module, &ErrorHandler::ioErrorWriting, m_Module.getFileName(), EFBIG);
    }

    // --- The outcome

    void enterPlaces() {
        for (Part& part : m_Parts) {
            if (part.item != nullptr) {
                part.item->setOffset(part.place);
            }
            part.region->setFileOffset(part.place);
        }
        m_Module.setSectionHeaderOffset(m_Parts[m_SectionTable].place);
        m_Module.setSectionHeaderSize(m_Sizes.sectionHeader);
        m_Module.setSectionHeaderCount(m_Module.getSectionCount() < SHN_LORESERVE
                                           ? static_cast<uint16_t>(m_Module.getSectionCount())
                                           : uint16_t{0});
        m_Module.setProgramHeaderOffset(m_Parts[m_SegmentTable].place);
        m_Module.setProgramHeaderSize(m_Sizes.programHeader);
        m_Module.setProgramHeaderCount(static_cast<uint16_t>(m_Module.getSegmentCount()));
    }

    ObjectModule& m_Module;
    alloclib::Region* m_Region;
    const RecordSizes& m_Sizes;
    const uint64_t m_Limit = m_Module.is64Bit() ? fileEndLimit64 : fileEndLimit32;
    std::vector<Part> m_Parts; // segments, sections, the three headers, raw data
    fast_hash_table<FileRegion*, uint32_t> m_PartNumbers;
    uint32_t m_FirstSection = 0;
    uint32_t m_Header = 0;
    uint32_t m_SectionTable = 0;
    uint32_t m_SegmentTable = 0;
    std::vector<bool> m_IsInBlock;
    std::vector<Block> m_Blocks;
    uint64_t m_End = 0;     // of what has been placed
    uint64_t m_Padding = 0; // in front of blocks that have been moved
    uint64_t m_Steps = 0;
};

} // namespace

bool layOutElfFile(ObjectModule* objectModule) {
    TOMEX_CHECK_TEXT(objectModule != nullptr, "objectModule != NULL");
    if (objectModule->getSegmentCount() >= SHN_XINDEX) {
        return reportFatal(*objectModule, &ErrorHandler::ioErrorWriting,
                           objectModule->getFileName(), EFBIG);
    }
    alloclib::Region* const region = alloclib::RegionGeneral::Create(1024, "File layout region");
    bool isGood = false;
    { isGood = ElfLayout(*objectModule, region).run(); }
    region->Destroy(true);
    if (isGood) {
        settlePreemptionMapOffset(*objectModule);
    }
    return isGood;
}

} // namespace elfext
