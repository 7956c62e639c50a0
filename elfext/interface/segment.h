// One segment: what a program header tells a loader to bring into memory.
#pragma once

#include "elfext/interface/file_region.h"

#include <cstdint>

namespace elfext {

class ObjectModule;

// The fields of a program header but for the file offset.
struct SegmentFields {
    uint32_t m_Type = 0;
    uint64_t m_VirtualAddress = 0;
    uint64_t m_PhysicalAddress = 0;
    uint64_t m_MemorySize = 0;
    uint64_t m_FileSize = 0;
    uint32_t m_Flags = 0;
    uint64_t m_Alignment = 0;
};

class Segment : public FileRegion {
public:
    // Segments are made by their module, in its object region.
    Segment(ObjectModule* objectModule, const SegmentFields& fields);

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    // Where the segment stands in its module, from 0.
    uint32_t getIndex() const;
    uint32_t getType() const { return m_Type; }
    void setType(uint32_t type);
    uint64_t getVirtualAddress() const { return m_VirtualAddress; }
    void setVirtualAddress(uint64_t address);
    uint64_t getPhysicalAddress() const { return m_PhysicalAddress; }
    void setPhysicalAddress(uint64_t address);
    uint64_t getMemorySize() const { return m_MemorySize; }
    void setMemorySize(uint64_t size);
    uint64_t getFileSize() const { return m_FileSize; }
    void setFileSize(uint64_t size);
    uint32_t getFlags() const { return m_Flags; }
    void setFlags(uint32_t flags);
    uint64_t getAlignment() const { return m_Alignment; }
    uint64_t getFileOffset() const { return m_FileOffset; }
    bool isFileOffsetKnown() const { return m_FileOffsetKnown; }

    // True if a loader of this module's ABI maps the segment.
    bool isLoadable() const;

    // Puts the first `size` bytes of the segment's image to `output`: zeros, with the bytes of the
    // contained regions at their places. What lies behind `size` is left out. No contained
    // section may have deferred contents.
    void getContents(void* output, uint64_t size);

    bool getFileRange(uint64_t* offset, uint64_t* size) const override;
    void getFileConstraints(uint64_t* congruence, uint64_t* alignment) const override;
    void setFileOffset(uint64_t offset) override;
    void setAlignment(uint64_t alignment) override;
    DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) override;

private:
    friend class ObjectModule;
    friend class Pruner;

    void markChanged();

    uint32_t m_Type;
    uint32_t m_Flags;
    uint64_t m_VirtualAddress;
    uint64_t m_PhysicalAddress;
    uint64_t m_MemorySize;
    uint64_t m_FileSize;
    uint64_t m_Alignment;
    uint64_t m_FileOffset = 0;
    bool m_FileOffsetKnown = false;
    mutable uint32_t m_Index = 0;
    ObjectModule* m_ObjectModule;
};

} // namespace elfext
