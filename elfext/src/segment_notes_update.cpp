// Writes anew the notes in which the linker says which section went to which segment, where they do
// not say what the module says. Notes of others stay, and so does a note that is right, or one that
// its section cuts off: made whole it would not fit into an image, now or ever again. One note
// says it all, so of those that are not right only the first is written anew, if there is no right
// one in front of it, and the others go: a file of many small notes must not grow by a map for
// each.
#include "elfext/src/auxiliary_state.h"

#include "elfext/src/segment_notes.h"

namespace elfext {
namespace {

constexpr uint32_t noSegment = UINT32_MAX;

// For each loaded section the number of its segment.
std::vector<uint32_t> mapSections(const ObjectModule& objectModule) {
    std::vector<uint32_t> map;
    for (const Section* const section : objectModule.getSections()) {
        if ((section->getFlags() & SHF_ALLOC) != 0) {
            map.push_back(section->getSegment() != nullptr ? section->getSegment()->getIndex()
                                                           : noSegment);
        }
    }
    return map;
}

// Any number that no segment has tells of no segment.
bool saysTheSame(const FrontNote& note, const std::vector<uint32_t>& map, uint32_t segmentCount) {
    if (note.wordCount() != map.size()) {
        return false;
    }
    for (size_t i = 0; i < map.size(); ++i) {
        const uint32_t word = note.descriptionWord(i);
        if (map[i] == noSegment ? word < segmentCount : word != map[i]) {
            return false;
        }
    }
    return true;
}

void addNote(RecordBytes& bytes, const std::vector<uint32_t>& map) {
    bytes.word(sizeof FrontNote::LinkerName);
    bytes.word(static_cast<uint32_t>(map.size() * 4));
    bytes.word(NT_QEL_SECTION_SEGMENTS);
    bytes.text(FrontNote::LinkerName);
    for (const uint32_t segment : map) {
        bytes.word(segment);
    }
}

// `isTold` says whether a note has said it already.
void fillNotes(AuxiliaryState& state, Section& section, const std::vector<uint32_t>& map,
               bool& isTold) {
    const Buffer& contents = std::as_const(section).getLoadedContents();
    std::span<const uint8_t> notes(contents.getData(), static_cast<size_t>(contents.getSize()));
    RecordBytes bytes = state.makeBytes();
    bool isStale = false;
    while (notes.size() >= FrontNote::SmallestNotes) {
        const FrontNote note(notes, state.m_IsLittleEndian);
        const bool isRight = !note.isLinkers() || note.isCut() ||
                             saysTheSame(note, map, state.m_Module.getSegmentCount());
        if (isRight) {
            bytes.raw(note.bytes().data(), note.bytes().size());
        } else if (!isTold) {
            addNote(bytes, map);
        }
        isStale = isStale || !isRight;
        isTold = isTold || note.isLinkers();
        notes = note.rest();
    }
    if (isStale) {
        bytes.raw(notes.data(), notes.size());
        state.setContents(section, bytes.data(), bytes.size());
    }
}

} // namespace

// Contents that are not here were not read for notes either.
void fillSegmentNotes(AuxiliaryState& state) {
    const std::vector<uint32_t> map = mapSections(state.m_Module);
    bool isTold = false;
    for (Section* const section : state.m_Module.getSections()) {
        if (section->getType() == SHT_NOTE && !section->isContentsDeferred() &&
            !section->hasExternalContents()) {
            fillNotes(state, *section, map, isTold);
        }
    }
}

} // namespace elfext
