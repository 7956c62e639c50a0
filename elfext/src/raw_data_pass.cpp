// Finds the bytes of segments that belong to no section and no header, and keeps them as blocks
// of raw data.
//
// All starts and ends of parts of the file are gone over in order. Wherever a segment is open and
// nothing else is, the stretch up to the next start or end is a block of the best open segment.
#include "elfext/src/reader_passes.h"

#include "elfext/interface/raw_data_block.h"
#include "elfext/src/contents_pass.h"
#include "elfext/src/file_parts.h"
#include "elfext/src/read_state.h"

#include <algorithm>
#include <array>
#include <set>
#include <tuple>
#include <vector>

namespace elfext {
namespace {

struct Event {
    uint64_t addr;
    uint64_t end; // of the part
    uint32_t id;  // even for segments, odd for all else
    bool opens;

    bool operator<(const Event& other) const {
        return std::tuple(addr, end, id, !opens) <
               std::tuple(other.addr, other.end, other.id, !other.opens);
    }
};

class RawDataPass {
public:
    explicit RawDataPass(ReadState& state) : m_State(state) {}

    bool run() {
        gatherEvents();
        for (size_t i = 0; i < m_Events.size(); ++i) {
            if (i > 0 && !coverStretch(m_Events[i - 1].addr, m_Events[i].addr)) {
                return false;
            }
            apply(m_Events[i]);
        }
        return true;
    }

private:
    // How good a segment is as the owner of a stretch; the first set that is not empty is taken.
    enum Rank : uint32_t { Rank_Fetched, Rank_Load, Rank_Other, Rank_Count };

    void gatherEvents() {
        const std::span<const FilePart> parts = listFileParts(m_State);
        for (uint32_t i = 0; i < parts.size(); ++i) {
            const FilePart& part = parts[i];
            if (part.size() == 0) {
                continue;
            }
            const uint32_t segmentCount = m_State.segmentCount();
            const uint32_t id = i < segmentCount ? 2 * i : 2 * (i - segmentCount) + 1;
            m_Events.push_back({part.m_Start, part.m_End, id, true});
            m_Events.push_back({part.m_End, part.m_End, id, false});
        }
        std::sort(m_Events.begin(), m_Events.end());
    }

    Rank rankOf(uint32_t segment) const {
        if (m_State.m_IsSegmentFetched[segment]) {
            return Rank_Fetched;
        }
        return m_State.m_ProgramHeaders[segment].p_type == PT_LOAD ? Rank_Load : Rank_Other;
    }

    void apply(const Event& event) {
        if (event.id % 2 != 0) {
            m_OpenOthers += event.opens ? 1 : -1;
            return;
        }
        const uint32_t segment = event.id / 2;
        std::set<uint32_t>& open = m_OpenSegments[rankOf(segment)];
        if (event.opens) {
            open.insert(segment);
        } else {
            open.erase(segment);
        }
    }

    bool coverStretch(uint64_t start, uint64_t end) {
        if (start == end || m_OpenOthers != 0) {
            return true;
        }
        const auto best = std::find_if(m_OpenSegments.begin(), m_OpenSegments.end(),
                                       [](const auto& open) { return !open.empty(); });
        return best == m_OpenSegments.end() || makeBlock(*best->begin(), start, end - start);
    }

    bool makeBlock(uint32_t segment, uint64_t start, uint64_t size) {
        const Rank rank = rankOf(segment);
        if (rank != Rank_Fetched) {
            if (!fetchSegment(m_State, segment)) {
                return false;
            }
            m_OpenSegments[rank].erase(segment);
            m_OpenSegments[Rank_Fetched].insert(segment);
        }
        ObjectModule& objectModule = m_State.m_Module;
        RawDataBlock* const block = objectModule.createRawDataBlock(size);
        block->setFileOffset(start);
        const uint64_t offset = start - m_State.m_ProgramHeaders[segment].p_offset;
        objectModule.getSegment(segment)->addContained(block, offset);
        return fill(*block, start);
    }

    bool fill(RawDataBlock& block, uint64_t start) {
        const uint8_t* const place = lowlevel::bufferBytes(start);
        if (place != nullptr) {
            block.borrowContents(place);
            return true;
        }
        const LowLevelStatus status =
            lowlevel::readBytes(block.getContents().getData(), start, block.getSize());
        return status == LowLevelStatus_Good || reportStatus(m_State.m_Module, status);
    }

    ReadState& m_State;
    std::vector<Event> m_Events;
    std::array<std::set<uint32_t>, Rank_Count> m_OpenSegments;
    int64_t m_OpenOthers = 0;
};

} // namespace

bool readRawData(ReadState& state) {
    return state.segmentCount() == 0 || RawDataPass(state).run();
}

} // namespace elfext
