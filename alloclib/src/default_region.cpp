// The two regions of the whole run.
#include "alloclib/interface/default_region.h"

#include "alloclib/interface/alloclib.h"
#include "alloclib/src/region_large_block.h"

namespace alloclib {

namespace detail {
constinit RegionGeneral* currentDefaultRegion = nullptr;
} // namespace detail

namespace {
constinit RegionLargeBlock* allMemory = nullptr;
} // namespace

void startAllocators() {
    InitAlloclib();
    allMemory = RegionLargeBlock::Create("all memory");
    PushDefaultParent(allMemory);
    detail::currentDefaultRegion = RegionGeneral::Create(0, "tomex memory");
}

void finishAllocators() {
    RegionGeneral::DestroyOthers(*detail::currentDefaultRegion);
    detail::currentDefaultRegion->Destroy(true);
    detail::currentDefaultRegion = nullptr;
    PopDefaultParent();
    allMemory->Destroy(true);
    allMemory = nullptr;
    FinishAlloclib();
}

} // namespace alloclib
