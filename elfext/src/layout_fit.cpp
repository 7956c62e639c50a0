#include "elfext/src/layout_fit.h"

#include "elfext/src/layout_parts.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace elfext {
namespace {

// What a part takes up, counted from its block's start.
struct Stretch {
    int64_t start = 0;
    int64_t end = 0;
    uint32_t part = 0;

    bool operator<(const Stretch& other) const {
        return std::tie(start, part) < std::tie(other.start, other.part);
    }
};

class BlockFit {
public:
    BlockFit(LayoutParts& parts, uint32_t segment) : m_Parts(parts), m_Segment(segment) {}

    bool run(std::span<const uint32_t> block) {
        list(block);
        return checkContents() && checkRawData();
    }

private:
    void list(std::span<const uint32_t> block) {
        for (const uint32_t part : block) {
            if (m_Parts[part].size == 0 || m_Parts.isSegment(part)) {
                continue;
            }
            uint64_t distance = 0;
            m_Parts.findRoot(part, distance);
            const auto start = static_cast<int64_t>(distance);
            const auto end = start + static_cast<int64_t>(m_Parts[part].size);
            (m_Parts.isRawData(part) ? m_RawData : m_Contents).push_back({start, end, part});
        }
        std::sort(m_Contents.begin(), m_Contents.end());
        std::sort(m_RawData.begin(), m_RawData.end());
    }

    bool checkContents() const {
        for (size_t i = 1; i < m_Contents.size(); ++i) {
            if (m_Contents[i].start < m_Contents[i - 1].end) {
                m_Parts.reportOverlap(m_Segment, m_Contents[i - 1].part, m_Contents[i].part);
                return false;
            }
        }
        return true;
    }

    // Contents are known not to overlap each other by now; neither do raw data.
    bool checkRawData() const {
        auto content = m_Contents.begin();
        for (const Stretch& raw : m_RawData) {
            while (content != m_Contents.end() && content->end <= raw.start) {
                ++content;
            }
            for (auto over = content; over != m_Contents.end() && over->start < raw.end; ++over) {
                if (!isFree(raw, *over)) {
                    m_Parts.reportOverlap(m_Segment, raw.part, over->part);
                    return false;
                }
            }
        }
        return true;
    }

    // True if what a part takes of raw data are zeros. The header is always made anew, so where a
    // file said that it was shorter, the rest of it is not lost.
    bool isFree(const Stretch& raw, const Stretch& over) const {
        if (over.part == m_Parts.elfHeader()) {
            return true;
        }
        const int64_t start = std::max(raw.start, over.start);
        const int64_t end = std::min(raw.end, over.end);
        return m_Parts.rawData(raw.part).isZero(static_cast<uint64_t>(start - raw.start),
                                                static_cast<uint64_t>(end - start));
    }

    LayoutParts& m_Parts;
    const uint32_t m_Segment;
    std::vector<Stretch> m_Contents;
    std::vector<Stretch> m_RawData;
};

} // namespace

bool checkBlockFits(LayoutParts& parts, std::span<const uint32_t> block, uint32_t segment) {
    return BlockFit(parts, segment).run(block);
}

} // namespace elfext
