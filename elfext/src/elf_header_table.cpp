// Place and size of the two tables of headers.
#include "elfext/interface/elf_header_table.h"

#include "elfext/interface/data_structure.h"

namespace elfext {

bool ELFHeaderTable::getFileRange(uint64_t* offset, uint64_t* size) const {
    *offset = m_FileOffset;
    *size = m_EntrySize * m_Count;
    return m_FileOffsetKnown;
}

void ELFHeaderTable::getFileConstraints(uint64_t* congruence, uint64_t* alignment) const {
    *congruence = 0;
    *alignment = m_Alignment;
}

void ELFHeaderTable::setFileOffset(uint64_t offset) {
    m_FileOffset = offset;
    m_FileOffsetKnown = true;
}

void ELFHeaderTable::setAlignment(uint64_t alignment) {
    TOMEX_CHECK((alignment & ~(alignment & (0 - alignment))) == 0);
    m_Alignment = alignment;
}

void ELFHeaderTable::reset() {
    m_EntrySize = 0;
    m_Count = 0;
    m_Alignment = DefaultAlignment;
    m_FileOffset = 0;
    m_FileOffsetKnown = false;
    forgetLinks();
}

DataStructure* SectionHeaderTable::createDataStructure(alloclib::Region* region, uint64_t offset) {
    void* const memory = alloclib::allocate(*region, sizeof(SectionHeaderTableDataStructure), 8);
    return new (memory) SectionHeaderTableDataStructure(this, offset);
}

DataStructure* ProgramHeaderTable::createDataStructure(alloclib::Region* region, uint64_t offset) {
    void* const memory = alloclib::allocate(*region, sizeof(SegmentHeaderTableDataStructure), 8);
    return new (memory) SegmentHeaderTableDataStructure(this, offset);
}

} // namespace elfext
