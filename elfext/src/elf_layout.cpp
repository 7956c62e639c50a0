// Where the blocks and the parts outside of them come to lie.
#include "elfext/interface/elf_layout.h"

#include "elfext/src/dynamic_position.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/layout_fit.h"
#include "elfext/src/layout_parts.h"
#include "elfext/src/memory_guard.h"

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <vector>

namespace elfext {
namespace {

// Room that is left in front of blocks so that they come to lie where their addresses want them, in
// bytes of the whole file, beside what the file had. A block costs less than a page. The first
// number is good for eight of the largest pages that linkers align segments to unasked (2 MiB);
// files of more segments than that have contents to show for it.
constexpr uint64_t freePadding = uint64_t{16} << 20;
constexpr uint64_t paddingPerByte = 16;

constexpr uint32_t noSegment = UINT32_MAX;

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

    // Blocks are placed by this, ascending: those that had no place come last.
    std::tuple<bool, bool, uint64_t> rank() const {
        return {!hasHeader, !isPlaceKnown,
                isPlaceKnown ? knownStart + static_cast<uint64_t>(first) : 0};
    }
};

class ElfLayout {
public:
    ElfLayout(ObjectModule& objectModule, alloclib::Region* region)
        : m_Module(objectModule), m_Sizes(recordSizes(objectModule.is64Bit())),
          m_Parts(objectModule, region), m_Limit(m_Parts.fileEndLimit()) {}

    bool run() {
        settleTables();
        if (!m_Parts.list() || !m_Parts.relate() || !makeBlocks() || !constrainBlocks() ||
            !checkFits() || !placeBlocks() || !placeRest() || !checkSize()) {
            return false;
        }
        enterPlaces();
        return true;
    }

private:
    void settleTables() {
        m_Module.setElfHeaderSize(m_Sizes.elfHeader);
        SectionHeaderTable& sections = m_Module.getSectionHeaderTable();
        sections.setEntrySize(m_Sizes.sectionHeader);
        sections.setCount(m_Module.getSectionCount());
        ProgramHeaderTable& segments = m_Module.getProgramHeaderTable();
        segments.setEntrySize(m_Sizes.programHeader);
        segments.setCount(m_Module.getSegmentCount());
    }

    // --- Blocks

    bool makeBlocks() {
        std::vector<uint32_t> blockOfRoot(m_Parts.segmentCount(), UINT32_MAX);
        m_IsInBlock.assign(m_Parts.count(), false);
        for (uint32_t i = 0; i < m_Parts.count(); ++i) {
            uint64_t distance = 0;
            const uint32_t root = m_Parts.findRoot(i, distance);
            if (!m_Parts.isSegment(root)) {
                continue;
            }
            // Neither far in front of the root nor far behind it.
            if (distance + m_Limit > 2 * m_Limit) {
                return m_Parts.reportTooLarge();
            }
            if (blockOfRoot[root] == UINT32_MAX) {
                blockOfRoot[root] = static_cast<uint32_t>(m_Blocks.size());
                m_Blocks.emplace_back();
            }
            addToBlock(m_Blocks[blockOfRoot[root]], i, distance);
        }
        return true;
    }

    void addToBlock(Block& block, uint32_t number, uint64_t distance) {
        const LayoutPart& part = m_Parts[number];
        block.parts.push_back(number);
        m_IsInBlock[number] = true;
        if (number == m_Parts.elfHeader()) {
            block.hasHeader = true;
        }
        if (m_Parts.isSegment(number)) {
            if (block.segment == noSegment) {
                block.segment = number;
            }
            takePlace(block, part, distance);
        }
        if (part.size != 0) {
            const auto first = static_cast<int64_t>(distance);
            const auto end = static_cast<int64_t>(distance + part.size);
            block.first = block.hasBytes ? std::min(block.first, first) : first;
            block.end = block.hasBytes ? std::max(block.end, end) : end;
            block.hasBytes = true;
        }
    }

    // The first segment that has been in a file tells where its block was; others may be new.
    static void takePlace(Block& block, const LayoutPart& part, uint64_t distance) {
        uint64_t place = 0;
        uint64_t size = 0;
        if (!block.isPlaceKnown && part.region->getFileRange(&place, &size)) {
            block.isPlaceKnown = true;
            block.knownStart = place - distance;
        }
    }

    // The constraint of a part as one of the start of its block. An alignment that is no power of
    // two binds as far as it goes.
    Constraint constraintOf(uint32_t number) {
        const DataStructure* const item = m_Parts[number].item;
        if (item == nullptr) {
            return {};
        }
        uint64_t distance = 0;
        m_Parts.findRoot(number, distance);
        const uint64_t alignment = item->getAlignment();
        const uint64_t modulus = std::max<uint64_t>(alignment & (0 - alignment), 1);
        return {modulus, (item->getCongruence() - distance) & (modulus - 1)};
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
        if (m_Parts[number].size == 0 && !m_Parts.isSegment(number)) {
            return true;
        }
        const Constraint constraint = constraintOf(number);
        if (!block.constraint.agreesWith(constraint)) {
            return m_Parts.reportClash(block.segment, number);
        }
        if (constraint.modulus > block.constraint.modulus) {
            block.constraint = constraint;
            if (m_Parts.isSegment(number)) {
                block.segment = number;
            }
        }
        return true;
    }

    // The header is at the start of the file and nowhere else.
    bool pinToHeader(Block& block) {
        uint64_t distance = 0;
        m_Parts.findRoot(m_Parts.elfHeader(), distance);
        block.start = 0 - distance;
        const bool isBelowFile = static_cast<int64_t>(block.start) + block.first < 0;
        if (isBelowFile || !block.constraint.admits(block.start)) {
            return m_Parts.reportClash(block.segment, m_Parts.elfHeader()) && !isBelowFile;
        }
        return true;
    }

    bool checkFits() {
        return std::all_of(m_Blocks.begin(), m_Blocks.end(), [this](const Block& block) {
            return checkBlockFits(m_Parts, block.parts, block.segment);
        });
    }

    // --- Places

    bool placeBlocks() {
        const uint32_t table = m_Parts.segmentTable();
        const bool isHeaderInBlock = m_IsInBlock[m_Parts.elfHeader()];
        m_End = isHeaderInBlock ? 0 : m_Sizes.elfHeader;
        if (!m_IsInBlock[table] && m_Parts[table].size != 0 && !isHeaderInBlock &&
            !placeBehind(table)) {
            return false;
        }
        std::vector<Block*> order;
        for (Block& block : m_Blocks) {
            order.push_back(&block);
        }
        std::stable_sort(order.begin(), order.end(), [](const Block* left, const Block* right) {
            return left->rank() < right->rank();
        });
        return std::all_of(order.begin(), order.end(),
                           [this](Block* block) { return placeBlock(*block); });
    }

    // A block without bytes takes no room and may lie anywhere.
    bool placeBlock(Block& block) {
        if (!block.hasHeader && !findStart(block)) {
            return false;
        }
        if (block.hasBytes) {
            const uint64_t end = block.start + static_cast<uint64_t>(block.end);
            if (end > m_Limit) {
                return m_Parts.reportTooLarge();
            }
            m_End = std::max(m_End, end);
        }
        for (const uint32_t number : block.parts) {
            uint64_t distance = 0;
            m_Parts.findRoot(number, distance);
            m_Parts[number].place = block.start + distance;
        }
        return true;
    }

    bool findStart(Block& block) {
        const auto first = static_cast<uint64_t>(block.hasBytes ? block.first : 0);
        const uint64_t room = block.hasBytes ? m_End : 0;
        const uint64_t knownFirst = block.knownStart + first;
        const bool stays = block.isPlaceKnown && block.constraint.admits(block.knownStart) &&
                           knownFirst >= room && knownFirst < m_Limit;
        block.start = stays ? block.knownStart : block.constraint.next(room - first);
        return (block.start + first >= room && block.start + first <= m_Limit) ||
               m_Parts.reportTooLarge();
    }

    // What no segment holds.
    bool placeRest() {
        const uint32_t table = m_Parts.segmentTable();
        if (m_Parts[table].size != 0 && !m_IsInBlock[table] && m_IsInBlock[m_Parts.elfHeader()] &&
            !placeBehind(table)) {
            return false;
        }
        for (uint32_t i = m_Parts.firstSection(); i < m_Parts.elfHeader(); ++i) {
            if (!m_IsInBlock[i] && !placeSection(i)) {
                return false;
            }
        }
        for (uint32_t i = m_Parts.firstRawData(); i < m_Parts.count(); ++i) {
            if (!m_IsInBlock[i] && !placeBehind(i)) {
                return false;
            }
        }
        const uint32_t sections = m_Parts.sectionTable();
        return m_IsInBlock[sections] || m_Parts[sections].size == 0 || placeBehind(sections);
    }

    // A section without bytes belongs to the segment at whose end it is said to lie, so in a file
    // with segments it stays where it is.
    bool placeSection(uint32_t number) {
        LayoutPart& part = m_Parts[number];
        const Section& section = m_Parts.section(number);
        if (section.getType() == SHT_NULL) {
            return true;
        }
        if (part.size == 0 && section.isFileOffsetKnown() && m_Parts.segmentCount() != 0) {
            part.place = section.getFileOffset();
            return true;
        }
        return reportIfNew(section) && placeBehind(number);
    }

    // A section that is to be in memory, also one of zeros that no file has bytes of, and that no
    // file has had outside of all segments before.
    bool reportIfNew(const Section& section) const {
        const bool isLoaded = (section.getFlags() & SHF_ALLOC) != 0 && section.getSize() != 0 &&
                              m_Parts.segmentCount() != 0;
        return !isLoaded || section.isFileOffsetKnown() ||
               askHandler(m_Module, &ErrorHandler::loadableSectionOutsideSegment,
                          section.getIndex());
    }

    bool placeBehind(uint32_t number) {
        LayoutPart& part = m_Parts[number];
        part.place = constraintOf(number).next(m_End);
        if (part.place > m_Limit || part.size > m_Limit - part.place) {
            return m_Parts.reportTooLarge();
        }
        if (part.size != 0) {
            m_End = part.place + part.size;
        }
        return true;
    }

    // --- The outcome

    // A segment may claim any number of bytes that nothing in it has, and its address may want a
    // place far away. What the file had of both may stay.
    bool checkSize() const {
        const uint64_t free = m_Module.getElfHeader().getSettledFileSize() + freePadding;
        const uint64_t excess = m_End > free ? m_End - free : 0;
        return excess / (paddingPerByte + 1) <= m_Parts.contentsSize() || m_Parts.reportTooLarge();
    }

    void enterPlaces() {
        for (uint32_t i = 0; i < m_Parts.count(); ++i) {
            m_Parts[i].region->setFileOffset(m_Parts[i].place);
            m_Parts[i].region->settleSize();
        }
        m_Module.getElfHeader().settleFileSize(m_End);
        m_Module.setSectionHeaderOffset(m_Parts[m_Parts.sectionTable()].place);
        m_Module.setSectionHeaderSize(m_Sizes.sectionHeader);
        m_Module.setSectionHeaderCount(m_Module.getSectionCount() < SHN_LORESERVE
                                           ? static_cast<uint16_t>(m_Module.getSectionCount())
                                           : uint16_t{0});
        m_Module.setProgramHeaderOffset(m_Parts[m_Parts.segmentTable()].place);
        m_Module.setProgramHeaderSize(m_Sizes.programHeader);
        m_Module.setProgramHeaderCount(static_cast<uint16_t>(m_Module.getSegmentCount()));
    }

    ObjectModule& m_Module;
    const RecordSizes& m_Sizes;
    LayoutParts m_Parts;
    const uint64_t m_Limit;
    std::vector<bool> m_IsInBlock;
    std::vector<Block> m_Blocks;
    uint64_t m_End = 0; // of what has been placed
};

} // namespace

bool layOutElfFile(ObjectModule* objectModule) {
    TOMEX_CHECK_TEXT(objectModule != nullptr, "objectModule != NULL");
    if (objectModule->getSegmentCount() >= SHN_XINDEX) {
        return reportFatal(*objectModule, &ErrorHandler::ioErrorWriting,
                           objectModule->getFileName(), EFBIG);
    }
    return reportExhaustion(*objectModule, [objectModule] {
        const ScratchRegion region(1024, "File layout region");
        if (!ElfLayout(*objectModule, region.get()).run()) {
            return false;
        }
        settlePreemptionMapOffset(*objectModule);
        return true;
    });
}

} // namespace elfext
