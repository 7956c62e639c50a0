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

// Destroys the general regions that are still there, for the way out from the depth of a run leaves
// their owners behind; then both regions, and ends the library. All blocks of all regions are gone
// then. Last act of a run.
void finishAllocators();

} // namespace alloclib
