// Whether the parts of a block have room beside each other.
//
// They keep their distances, since whoever loads the file knows where they are. So a table that has
// grown may reach over what follows it. Zeros that belong to nothing are room; all else is not.
#pragma once

#include <cstdint>
#include <span>

namespace elfext {

class LayoutParts;

// False, with a report, if a part of the block lies over another one, or over raw data that are not
// zeros. `segment` is the one that reports speak of.
bool checkBlockFits(LayoutParts& parts, std::span<const uint32_t> block, uint32_t segment);

} // namespace elfext
