// A stretch of a segment's bytes in the file that belongs to no section and no header: padding,
// or data that nothing describes.
#pragma once

#include "elfext/interface/buffer.h"
#include "elfext/interface/data_store.h"
#include "elfext/interface/file_region.h"

#include <cstdint>

namespace elfext {

class ObjectModule;

class RawDataBlock : public FileRegion, public DataStore {
public:
    // Blocks are made by their module, in its object region. The bytes are 0 until they are
    // filled in.
    RawDataBlock(ObjectModule* objectModule, uint64_t size);

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    // In bytes.
    uint64_t getSize() const { return m_Size; }
    // The bytes, as many as the size.
    Buffer& getContents();
    // From now on they are those at `bytes`, which must stay there; see Buffer::setBorrowedData.
    void borrowContents(const uint8_t* bytes);
    // True if `count` bytes from `offset` on, which lie in the block, are all 0.
    bool isZero(uint64_t offset, uint64_t count) const;

    bool getFileRange(uint64_t* offset, uint64_t* size) const override;
    void getFileConstraints(uint64_t* congruence, uint64_t* alignment) const override;
    void setFileOffset(uint64_t offset) override;
    void setAlignment(uint64_t alignment) override;
    DataStore* getDataStore() override { return this; }
    // Blocks follow their segment, so layout never asks one for an item: an internal fault.
    DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) override;

    void read(uint64_t offset, void* buffer, uint64_t count) const override;
    void write(uint64_t offset, const void* buffer, uint64_t count) override;
    uint64_t getDataSize() const override { return m_Size; }

private:
    ObjectModule* m_ObjectModule;
    uint64_t m_Size;
    Buffer m_Contents; // in the container region; empty while all bytes are 0
    uint64_t m_FileOffset = 0;
    bool m_FileOffsetKnown = false;
};

} // namespace elfext
