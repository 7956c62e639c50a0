// Reads the notes in which the linker says which section went to which segment.
//
// A note section is a sequence of notes: three words (size of the name, size of the description,
// type), then the name and the description, each filled up to a multiple of four bytes. The notes
// looked for have the name "QEL" and a word for each section that is loaded.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

#include <algorithm>
#include <cstring>

namespace elfext {
namespace {

constexpr uint64_t noteHeaderSize = 12;
constexpr uint64_t smallestNotes = 17; // fewer bytes hold no note of ours
constexpr char linkerName[] = "QEL";   // with its NUL

constexpr uint64_t align4(uint64_t size) {
    return (size + 3) & ~uint64_t{3};
}

class SegmentNotesReader {
public:
    SegmentNotesReader(ReadState& state, uint32_t section)
        : m_State(state), m_Section(section), m_Notes(state.contents(section)) {}

    bool run() {
        if (!m_State.spendBytes(m_Notes.size())) {
            return false;
        }
        while (m_Notes.size() >= smallestNotes) {
            const uint32_t nameSize = word(0);
            const uint32_t descriptionSize = word(4);
            if (nameSize == sizeof linkerName && word(8) == NT_QEL_SECTION_SEGMENTS &&
                std::memcmp(m_Notes.data() + noteHeaderSize, linkerName, sizeof linkerName) == 0 &&
                !mapSections(descriptionSize / 4)) {
                return false;
            }
            const uint64_t size = align4(nameSize) + align4(descriptionSize) + noteHeaderSize;
            m_Notes =
                m_Notes.subspan(static_cast<size_t>(std::min<uint64_t>(size, m_Notes.size())));
        }
        return true;
    }

private:
    uint32_t word(uint64_t offset) const {
        return assembleBytes<uint32_t>(m_Notes.data() + offset, m_State.m_IsLittleEndian);
    }

    // A word of the description. Those that it does not have, or that the section has no room
    // for, count as 0.
    uint32_t descriptionWord(uint64_t index, uint32_t count) const {
        const uint64_t offset = noteHeaderSize + sizeof linkerName + 4 * index;
        return index < count && offset + 4 <= m_Notes.size() ? word(offset) : 0;
    }

    bool mapSections(uint32_t entryCount) {
        ObjectModule& objectModule = m_State.m_Module;
        if (!m_State.spendSteps(m_State.sectionCount())) {
            return false;
        }
        uint64_t allocCount = 0;
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            if ((m_State.m_SectionHeaders[i].sh_flags & SHF_ALLOC) == 0) {
                continue;
            }
            const uint32_t segment = descriptionWord(allocCount++, entryCount);
            if (segment < m_State.segmentCount()) {
                objectModule.getSection(i)->setSegment(objectModule.getSegment(segment));
            } else if (!m_State.spendSteps(ReadState::StepsPerReport) ||
                       !askHandler(objectModule, &ErrorHandler::noteSegmentIndexBad, m_Section, i,
                                   segment)) {
                return false;
            }
        }
        return allocCount == entryCount ||
               askHandler(objectModule, &ErrorHandler::noteEntryCountBad, m_Section, entryCount,
                          allocCount);
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
