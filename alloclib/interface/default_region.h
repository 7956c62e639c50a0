// The two regions of the whole run, and the order in which the chain comes up and goes down.
//
// "all memory" deals out pages; "tomex memory", the default region, lies on top of it and holds
// the command's strings, lists and the parser's data until the process ends.
#pragma once

#include "alloclib/interface/region_general.h"

namespace alloclib {

namespace detail {
extern RegionGeneral* currentDefaultRegion;
} // namespace detail

// The default region. Valid between `startAllocators` and `finishAllocators`.
inline RegionGeneral& defaultRegion() {
    return *detail::currentDefaultRegion;
}

// Brings the library up and makes both regions. First act of a run.
void startAllocators();

// Destroys both regions and ends the library. All blocks of all regions are gone then; every
// other region must have been destroyed before. Last act of a run.
void finishAllocators();

} // namespace alloclib
