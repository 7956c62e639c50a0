// Reads the notes in which the linker says which section went to which segment.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"
#include "elfext/src/segment_notes.h"

namespace elfext {
namespace {

class SegmentNotesReader {
public:
    SegmentNotesReader(ReadState& state, uint32_t section)
        : m_State(state), m_Section(section), m_Notes(state.contents(section)) {}

    bool run() {
        if (!m_State.spendBytes(m_Notes.size())) {
            return false;
        }
        while (m_Notes.size() >= FrontNote::SmallestNotes) {
            const FrontNote note(m_Notes, m_State.m_IsLittleEndian);
            if (note.isLinkers() && !mapSections(note)) {
                return false;
            }
            m_Notes = note.rest();
        }
        return true;
    }

private:
    bool mapSections(const FrontNote& note) {
        ObjectModule& objectModule = m_State.m_Module;
        if (!m_State.spendSteps(m_State.sectionCount())) {
            return false;
        }
        uint64_t allocCount = 0;
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            if ((m_State.m_SectionHeaders[i].sh_flags & SHF_ALLOC) == 0) {
                continue;
            }
            const uint32_t segment = note.descriptionWord(allocCount++);
            if (segment < m_State.segmentCount()) {
                objectModule.getSection(i)->setSegment(objectModule.getSegment(segment));
            } else if (!m_State.spendSteps(ReadState::StepsPerReport) ||
                       !askHandler(objectModule, &ErrorHandler::noteSegmentIndexBad, m_Section, i,
                                   segment)) {
                return false;
            }
        }
        return allocCount == note.wordCount() ||
               askHandler(objectModule, &ErrorHandler::noteEntryCountBad, m_Section,
                          note.wordCount(), allocCount);
    }

    ReadState& m_State;
    const uint32_t m_Section;
    std::span<const uint8_t> m_Notes; // what is left of them
};

} // namespace

bool readSegmentNotes(ReadState& state) {
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const bool isNotes = state.m_SectionHeaders[i].sh_type == SHT_NOTE;
        if (isNotes && !state.m_IsBadSection[i] && !SegmentNotesReader(state, i).run()) {
            return false;
        }
    }
    return true;
}

} // namespace elfext
