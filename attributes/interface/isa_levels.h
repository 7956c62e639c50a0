// What a set of features says of the architecture: the levels of its instruction sets and of its
// floating point, and the architecture and profile that an object with them states.
#pragma once

#include "attributes/interface/full_attr.h"

#include <cstdint>

namespace attributes {

// The highest level of which all bits are there: 3 to 9, or 0.
uint32_t qelVersion(const IsaSet& isa);
// 1 to 5, or 0.
uint32_t finchVersion(const IsaSet& isa);
// 8 or 9, or 0.
uint32_t q64Version(const IsaSet& isa);

// The generation of floating point, 1 to 7; 0 where there is none, or bits that fit none.
uint32_t fpGeneration(const IsaSet& isa);

// The value of `Tag_CPU_arch` that the features amount to.
uint32_t archFromIsa(const IsaSet& isa);

// The value of `Tag_CPU_arch_profile`: 'A', 'M', 'R', 'S', or 0 for an architecture without
// profiles.
uint32_t profileFromIsa(const IsaSet& isa);

} // namespace attributes
