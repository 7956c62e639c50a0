// The two regions of a module.
#include "elfext/interface/object_module_base.h"

#include "alloclib/interface/region_general.h"
#include "attributes/interface/build_attributes_cache.h"

#include <memory>

namespace elfext {

namespace {

constexpr uint64_t blockSize = 1024;

} // namespace

ObjectModuleBase::ObjectModuleBase()
    : m_ObjectRegion(
          alloclib::RegionGeneral::Create(blockSize, "elfext::ObjectModule::ObjectRegion")),
      m_ContainerRegion(
          alloclib::RegionGeneral::Create(blockSize, "elfext::ObjectModule::ContainerRegion")),
      m_BuildAttributesCache(
          new (alloclib::allocate(*m_ObjectRegion, sizeof(attributes::BuildAttributesCache), 8))
              attributes::BuildAttributesCache(m_ObjectRegion)) {
}

// The cache's records hold memory of the heap; everything else goes with the regions.
ObjectModuleBase::~ObjectModuleBase() {
    std::destroy_at(m_BuildAttributesCache);
    m_ContainerRegion->Destroy(true);
    m_ObjectRegion->Destroy(true);
}

} // namespace elfext
