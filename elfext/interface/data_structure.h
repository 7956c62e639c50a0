// What the layout of a file places: one item for each header, table, section and segment.
//
// The items are made by the file regions themselves (`FileRegion::createDataStructure`), live in
// the region that layout works in, and keep what layout asks for, so that it walks one uniform
// list.
#pragma once

#include "elfext/interface/elf_header.h"
#include "elfext/interface/elf_header_table.h"
#include "elfext/interface/section.h"
#include "elfext/interface/segment.h"

#include <cstdint>

namespace elfext {

class DataStructure {
public:
    enum Kind : uint32_t {
        Kind_ElfHeader = 0,
        Kind_SectionHeaderTable = 1,
        Kind_SegmentHeaderTable = 2,
        Kind_Section = 3,
        Kind_Segment = 4,
    };

    DataStructure(const DataStructure&) = delete;
    DataStructure& operator=(const DataStructure&) = delete;
    virtual ~DataStructure() = default;

    Kind getKind() const { return m_Kind; }
    // The region that the item stands for.
    FileRegion* getFileRegion() const { return m_FileRegion; }
    // Where the item is to lie: in the file, or in the item that contains it.
    uint64_t getOffset() const { return m_Offset; }
    // In bytes of the file.
    uint64_t getSize() const { return m_Size; }
    // The file offset must be `getCongruence()` modulo `getAlignment()`.
    uint64_t getCongruence() const { return m_Congruence; }
    uint64_t getAlignment() const { return m_Alignment; }

protected:
    DataStructure(Kind kind, FileRegion* fileRegion, uint64_t offset)
        : m_Kind(kind), m_FileRegion(fileRegion), m_Offset(offset) {
        uint64_t offsetInFile = 0;
        fileRegion->getFileRange(&offsetInFile, &m_Size);
        fileRegion->getFileConstraints(&m_Congruence, &m_Alignment);
    }

private:
    Kind m_Kind;
    FileRegion* m_FileRegion;
    uint64_t m_Offset;
    uint64_t m_Size = 0;
    uint64_t m_Congruence = 0;
    uint64_t m_Alignment = 1;
};

class ElfHeaderDataStructure : public DataStructure {
public:
    ElfHeaderDataStructure(ELFHeader* header, uint64_t offset)
        : DataStructure(Kind_ElfHeader, header, offset) {}
};

class SectionHeaderTableDataStructure : public DataStructure {
public:
    SectionHeaderTableDataStructure(SectionHeaderTable* table, uint64_t offset)
        : DataStructure(Kind_SectionHeaderTable, table, offset) {}
};

class SegmentHeaderTableDataStructure : public DataStructure {
public:
    SegmentHeaderTableDataStructure(ProgramHeaderTable* table, uint64_t offset)
        : DataStructure(Kind_SegmentHeaderTable, table, offset) {}
};

class SectionDataStructure : public DataStructure {
public:
    SectionDataStructure(Section* section, uint64_t offset)
        : DataStructure(Kind_Section, section, offset), m_Section(section) {}

    Section* getSection() const { return m_Section; }

private:
    Section* m_Section;
};

class SegmentDataStructure : public DataStructure {
public:
    SegmentDataStructure(Segment* segment, uint64_t offset)
        : DataStructure(Kind_Segment, segment, offset), m_Segment(segment) {}

    Segment* getSegment() const { return m_Segment; }

private:
    Segment* m_Segment;
};

} // namespace elfext
