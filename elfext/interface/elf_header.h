// The ELF header as a region of the file: at offset 0, as long as `e_ehsize` says. As it stands for
// the file, it also keeps how long that was.
#pragma once

#include "elfext/interface/file_region.h"

#include <cstdint>

namespace elfext {

class ObjectModule;

class ELFHeader : public FileRegion {
public:
    // The header of `objectModule`, whose header size is always this region's. `region` is where
    // relations lie.
    ELFHeader(alloclib::Region* region, ObjectModule* objectModule)
        : FileRegion(region), m_ObjectModule(objectModule) {}

    bool getFileRange(uint64_t* offset, uint64_t* size) const override;
    void getFileConstraints(uint64_t* congruence, uint64_t* alignment) const override;
    // The header can only be at 0.
    void setFileOffset(uint64_t offset) override;
    void setAlignment(uint64_t alignment) override;
    DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) override;

    // How many bytes the whole file had, as of the last read or layout; 0 if there was none. Layout
    // lets the file become longer within limits, and leaves it as long as it was.
    uint64_t getSettledFileSize() const { return m_SettledFileSize; }
    void settleFileSize(uint64_t size) { m_SettledFileSize = size; }

    // There is no file any more, and no relation.
    void reset();

private:
    ObjectModule* m_ObjectModule;
    uint64_t m_SettledFileSize = 0;
};

} // namespace elfext
