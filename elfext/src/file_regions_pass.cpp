// Tells which region of the file lies in which, and reports sections that overlap.
//
// Of two regions that overlap, the one that starts earlier contains the other; if both start at
// the same place, the one that is listed earlier does. A linker stays with the module and finds
// the relations of a region when somebody asks: in a hostile file they may be as many as the
// square of the number of regions.
#include "elfext/src/reader_passes.h"

#include "elfext/src/file_parts.h"
#include "elfext/src/read_state.h"

#include <algorithm>
#include <new>

namespace elfext {
namespace {

// Finds relations by the places that the file said regions have. Lies in the module's container
// region, with the list of parts.
class ReadRegionLinker : public FileRegionLinker {
public:
    explicit ReadRegionLinker(std::span<const FilePart> parts) : m_Parts(parts) {}

    void findLinks(FileRegion& region, fast_array<ContainedRegion>& contained,
                   fast_array<FileRegion*>& containers) override {
        const auto self =
            std::find_if(m_Parts.begin(), m_Parts.end(),
                         [&region](const FilePart& part) { return part.m_Region == &region; });
        if (self == m_Parts.end()) {
            return;
        }
        for (auto other = m_Parts.begin(); other != m_Parts.end(); ++other) {
            if (other == self || other->m_Region->isDetached() || !other->overlaps(*self)) {
                continue;
            }
            const bool isContainer =
                self->m_Start < other->m_Start || (self->m_Start == other->m_Start && self < other);
            if (isContainer) {
                contained.add({other->m_Region, other->m_Start - self->m_Start});
            } else {
                containers.add(other->m_Region);
            }
        }
    }

private:
    std::span<const FilePart> m_Parts;
};

void attachLinker(ReadState& state, std::span<const FilePart> parts) {
    alloclib::Region& region = *state.m_Module.getContainerRegion();
    const std::span<FilePart> kept = ReadState::takeTable<FilePart>(region, parts.size());
    std::copy(parts.begin(), parts.end(), kept.begin());
    void* const place =
        alloclib::allocate(region, sizeof(ReadRegionLinker), alignof(ReadRegionLinker));
    auto* const linker = new (place) ReadRegionLinker(kept);
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
