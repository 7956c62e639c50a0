// Where the parts of an object module lie.
//
// Objects and their strings are in one region, the lists that point to them in another, so that
// lists can grow and be freed without disturbing objects. Nothing is freed singly: both regions
// are released when the module ends. The build attributes of everything in the module are shared
// through one cache.
#pragma once

#include "alloclib/interface/region.h"

namespace attributes {
class BuildAttributesCache;
}

namespace elfext {

class ObjectModuleBase {
public:
    ObjectModuleBase(const ObjectModuleBase&) = delete;
    ObjectModuleBase& operator=(const ObjectModuleBase&) = delete;

    alloclib::Region* getObjectRegion() const { return m_ObjectRegion; }
    alloclib::Region* getContainerRegion() const { return m_ContainerRegion; }
    // Never null.
    attributes::BuildAttributesCache* getBuildAttributesCache() const {
        return m_BuildAttributesCache;
    }

protected:
    ObjectModuleBase();
    ~ObjectModuleBase();

private:
    alloclib::Region* m_ObjectRegion;
    alloclib::Region* m_ContainerRegion;
    attributes::BuildAttributesCache* m_BuildAttributesCache; // in the object region
};

} // namespace elfext
