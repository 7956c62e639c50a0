// A region that ends with its owner, whichever way the owner's scope is left.
#pragma once

#include <cstdint>

#include "alloclib/interface/region_general.h"

namespace arlib {

class OwnedRegion {
public:
    // initialSize and name as for RegionGeneral::Create.
    OwnedRegion(uint64_t initialSize, const char* name)
        : m_Region(alloclib::RegionGeneral::Create(initialSize, name)) {}
    ~OwnedRegion() { m_Region->Destroy(true); }
    OwnedRegion(const OwnedRegion&) = delete;
    OwnedRegion& operator=(const OwnedRegion&) = delete;

    alloclib::Region* get() const { return m_Region; }

private:
    alloclib::Region* m_Region;
};

} // namespace arlib
