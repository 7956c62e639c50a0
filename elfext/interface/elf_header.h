// The ELF header as a region of the file: at offset 0, as long as `e_ehsize` says.
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

private:
    ObjectModule* m_ObjectModule;
};

} // namespace elfext
