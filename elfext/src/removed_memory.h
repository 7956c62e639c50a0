// The memory that sections take up, and what is left of it when they go.
//
// Tags of a dynamic section tell where something is in memory. They lead nowhere once it has been
// removed, unless something else lies there.
#pragma once

#include "elfext/interface/fast_array.h"
#include "elfext/interface/range.h"
#include "elfext/interface/section.h"

#include <vector>

namespace elfext {

// The memory of a section by addresses; empty for one that has no place of its own there.
Range memoryOf(const Section& section);

// What of the `removed` ranges none of these sections takes up: ascending, disjoint. `removed` is
// normalised on the way.
std::vector<Range> findFreeMemory(fast_array<Range>& removed, const fast_array<Section*>& sections);

} // namespace elfext
