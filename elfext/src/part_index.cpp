#include "elfext/src/part_index.h"

#include "elfext/src/read_state.h"

#include <algorithm>
#include <functional>

namespace elfext {

PartIndex::PartIndex(alloclib::Region& region, std::span<const FilePart> parts)
    : m_Parts(parts), m_ByRegion(ReadState::takeTable<uint32_t>(region, parts.size())),
      m_ByStart(ReadState::takeTable<uint32_t>(region, parts.size())),
      m_Ends(ReadState::takeTable<uint64_t>(region, parts.size())) {
    uint32_t count = 0;
    for (uint32_t i = 0; i < parts.size(); ++i) {
        m_ByRegion[i] = i;
        if (parts[i].size() != 0) {
            m_ByStart[count++] = i;
        }
    }
    m_ByStart = m_ByStart.first(count);
    std::sort(m_ByRegion.begin(), m_ByRegion.end(), [parts](uint32_t left, uint32_t right) {
        return std::less<>()(parts[left].m_Region, parts[right].m_Region);
    });
    std::sort(m_ByStart.begin(), m_ByStart.end(), [parts](uint32_t left, uint32_t right) {
        return parts[left].m_Start < parts[right].m_Start;
    });
    settleEnds(0, count);
}

uint64_t PartIndex::settleEnds(uint32_t low, uint32_t high) {
    if (low == high) {
        return 0;
    }
    const uint32_t middle = low + (high - low) / 2;
    m_Ends[middle] = std::max(
        {m_Parts[m_ByStart[middle]].m_End, settleEnds(low, middle), settleEnds(middle + 1, high)});
    return m_Ends[middle];
}

uint32_t PartIndex::find(const FileRegion* fileRegion) const {
    const auto place =
        std::lower_bound(m_ByRegion.begin(), m_ByRegion.end(), fileRegion,
                         [this](uint32_t part, const FileRegion* sought) {
                             return std::less<const FileRegion*>()(m_Parts[part].m_Region, sought);
                         });
    return place != m_ByRegion.end() && m_Parts[*place].m_Region == fileRegion
               ? *place
               : static_cast<uint32_t>(m_Parts.size());
}

void PartIndex::findOverlaps(const FilePart& part, fast_array<uint32_t>& found) const {
    if (part.size() == 0) {
        return;
    }
    const uint32_t first = found.getSize();
    gather(0, static_cast<uint32_t>(m_ByStart.size()), part, found);
    std::sort(found.begin() + first, found.end());
}

void PartIndex::gather(uint32_t low, uint32_t high, const FilePart& part,
                       fast_array<uint32_t>& found) const {
    while (low != high) {
        const uint32_t middle = low + (high - low) / 2;
        if (m_Ends[middle] <= part.m_Start) {
            return;
        }
        gather(low, middle, part, found);
        const uint32_t number = m_ByStart[middle];
        if (m_Parts[number].m_Start >= part.m_End) {
            return;
        }
        if (m_Parts[number].m_End > part.m_Start) {
            found.add(number);
        }
        low = middle + 1;
    }
}

} // namespace elfext
