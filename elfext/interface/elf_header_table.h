// The section header table and the program header table as regions of the file.
#pragma once

#include "elfext/interface/file_region.h"

#include <cstdint>

namespace elfext {

class ELFHeaderTable : public FileRegion {
public:
    bool getFileRange(uint64_t* offset, uint64_t* size) const override;
    void getFileConstraints(uint64_t* congruence, uint64_t* alignment) const override;
    void setFileOffset(uint64_t offset) override;
    // A power of two or 0; 4 from construction.
    void setAlignment(uint64_t alignment) override;

    // The size in the file is the product of these; both 0 from construction.
    uint64_t getEntrySize() const { return m_EntrySize; }
    void setEntrySize(uint64_t entrySize) { m_EntrySize = entrySize; }
    uint64_t getCount() const { return m_Count; }
    void setCount(uint64_t count) { m_Count = count; }

    // Back to a table of no entries and without a place in the file.
    void reset();

protected:
    explicit ELFHeaderTable(alloclib::Region* region) : FileRegion(region) {}

private:
    static constexpr uint64_t DefaultAlignment = 4;

    uint64_t m_EntrySize = 0;
    uint64_t m_Count = 0;
    uint64_t m_Alignment = DefaultAlignment;
    uint64_t m_FileOffset = 0;
    bool m_FileOffsetKnown = false;
};

class SectionHeaderTable : public ELFHeaderTable {
public:
    explicit SectionHeaderTable(alloclib::Region* region) : ELFHeaderTable(region) {}
    DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) override;
};

class ProgramHeaderTable : public ELFHeaderTable {
public:
    explicit ProgramHeaderTable(alloclib::Region* region) : ELFHeaderTable(region) {}
    DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) override;
};

} // namespace elfext
