// Tells which region of the file lies in which, and reports sections that overlap.
//
// Of two regions that overlap, the one that starts earlier contains the other; if both start at
// the same place, the one that is listed earlier does. A linker stays with the module and finds
// the relations of a region when somebody asks: in a hostile file they may be as many as the
// square of the number of regions.
#include "elfext/src/reader_passes.h"

#include "elfext/src/file_parts.h"
#include "elfext/src/part_index.h"
#include "elfext/src/read_state.h"

#include <algorithm>
#include <new>

namespace elfext {
namespace {

// Finds relations by the places that the file said regions have. Lies in the module's container
// region, with the list of parts. The index is made when it is asked for first: who only reads
// symbols never asks.
class ReadRegionLinker : public FileRegionLinker {
public:
    ReadRegionLinker(alloclib::Region& region, std::span<const FilePart> parts)
        : m_Region(region), m_Parts(parts), m_Found(&region) {}

    void findLinks(FileRegion& region, fast_array<ContainedRegion>& contained,
                   fast_array<FileRegion*>& containers) override {
        if (m_Index == nullptr) {
            void* const place = alloclib::allocate(m_Region, sizeof(PartIndex), alignof(PartIndex));
            m_Index = new (place) PartIndex(m_Region, m_Parts);
        }
        const uint32_t self = m_Index->find(&region);
        if (self == m_Parts.size()) {
            return;
        }
        m_Found.clear();
        m_Index->findOverlaps(m_Parts[self], m_Found);
        for (const uint32_t other : m_Found) {
            const FilePart& part = m_Parts[other];
            if (other == self || part.m_Region->isDetached()) {
                continue;
            }
            const uint64_t start = m_Parts[self].m_Start;
            if (start < part.m_Start || (start == part.m_Start && self < other)) {
                contained.add({part.m_Region, part.m_Start - start});
            } else {
                containers.add(part.m_Region);
            }
        }
    }

private:
    alloclib::Region& m_Region;
    std::span<const FilePart> m_Parts;
    PartIndex* m_Index = nullptr;
    fast_array<uint32_t> m_Found; // of one search
};

void attachLinker(ReadState& state, std::span<const FilePart> parts) {
    alloclib::Region& region = *state.m_Module.getContainerRegion();
    const std::span<FilePart> kept = ReadState::takeTable<FilePart>(region, parts.size());
    std::copy(parts.begin(), parts.end(), kept.begin());
    void* const place =
        alloclib::allocate(region, sizeof(ReadRegionLinker), alignof(ReadRegionLinker));
    auto* const linker = new (place) ReadRegionLinker(region, kept);
    for (const FilePart& part : kept) {
        part.m_Region->setLinker(linker);
    }
}

// Reports each pair of sections that overlap, those of the first section first.
bool reportOverlaps(ReadState& state, std::span<const FilePart> sections) {
    const std::span<bool> marks = state.takeTable<bool>(sections.size());
    markOverlaps(state, sections, marks);
    for (uint32_t i = 0; i < sections.size(); ++i) {
        if (!marks[i]) {
            continue;
        }
        if (!state.spendSteps(sections.size() - i)) {
            return false;
        }
        for (uint32_t j = i + 1; j < sections.size(); ++j) {
            if (marks[j] && sections[i].overlaps(sections[j]) &&
                !(state.spendSteps(ReadState::StepsPerReport) &&
                  askHandler(state.m_Module, &ErrorHandler::sectionsOverlap, i, j))) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

bool readFileRegions(ReadState& state) {
    ObjectModule& objectModule = state.m_Module;
    if (state.sectionCount() != 0) {
        objectModule.getSectionHeaderTable().setFileOffset(state.m_ElfHeader.e_shoff);
    }
    if (state.m_ElfHeader.e_type != ET_REL) {
        objectModule.getProgramHeaderTable().setFileOffset(state.m_ElfHeader.e_phoff);
    }
    const std::span<const FilePart> parts = listFileParts(state);
    if (!anyOverlap(state, parts)) {
        return true;
    }
    attachLinker(state, parts);
    return reportOverlaps(state, parts.subspan(state.segmentCount(), state.sectionCount()));
}

} // namespace elfext
