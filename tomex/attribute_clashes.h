// What in a set of build attributes cannot coexist, for users who ask with -v why an object does
// not fit a library.
#pragma once

#include "attributes/interface/full_attr.h"

namespace tomex {

// Prints a line for each pair of things that clash in the set; nothing for a set without a clash.
void listAttributeClashes(const attributes::FullAttr& attributes);

} // namespace tomex
