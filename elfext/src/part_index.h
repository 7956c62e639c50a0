// Finds those parts of a file that overlap a given one, without a look at the others.
//
// The parts lie in a tree by where they start, and each node knows the farthest end below it: a
// branch that ends in front of what is sought, or starts behind it, is left out. The tree is an
// array in order of starts; the middle of a range is the root of what the range holds.
#pragma once

#include "elfext/interface/fast_array.h"
#include "elfext/src/file_parts.h"

#include <cstdint>
#include <span>

namespace elfext {

class PartIndex {
public:
    // `parts` must stay as they are for as long as the index is used. Its tables lie in `region`.
    PartIndex(alloclib::Region& region, std::span<const FilePart> parts);

    // The number of a region's part, or that of parts if there is none.
    uint32_t find(const FileRegion* fileRegion) const;
    // Appends the numbers of all parts that overlap `part`, itself among them, in their order.
    void findOverlaps(const FilePart& part, fast_array<uint32_t>& found) const;

private:
    uint64_t settleEnds(uint32_t low, uint32_t high);
    void gather(uint32_t low, uint32_t high, const FilePart& part,
                fast_array<uint32_t>& found) const;

    std::span<const FilePart> m_Parts;
    std::span<uint32_t> m_ByRegion;
    std::span<uint32_t> m_ByStart; // those that have a size
    std::span<uint64_t> m_Ends;    // the farthest end below each node
};

} // namespace elfext
