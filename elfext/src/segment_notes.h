// The notes in which the linker says which section went to which segment.
//
// A note section is a sequence of notes: three words (size of the name, size of the description,
// type), then the name and the description, each filled up to a multiple of four bytes. Those meant
// here have the name "QEL", and their description is a word for each section that is loaded, in the
// order of the sections: the number of its segment.
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/src/file_layout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

namespace elfext {

// A note at the front of the bytes of a section, which need not have room for all of it.
class FrontNote {
public:
    static constexpr uint64_t HeaderSize = 12;
    static constexpr uint64_t SmallestNotes = 17; // fewer bytes hold no note of the linker's
    static constexpr char LinkerName[] = "QEL";   // with its NUL

    // `notes` has at least SmallestNotes bytes.
    FrontNote(std::span<const uint8_t> notes, bool isLittleEndian)
        : m_Notes(notes), m_IsLittleEndian(isLittleEndian) {}

    bool isLinkers() const {
        return word(0) == sizeof LinkerName && word(8) == NT_QEL_SECTION_SEGMENTS &&
               std::memcmp(m_Notes.data() + HeaderSize, LinkerName, sizeof LinkerName) == 0;
    }

    // How many words the description is said to have.
    uint32_t wordCount() const { return word(4) / 4; }
    // A word of the description of a linker's note. Those that it does not have, or that the
    // section has no room for, count as 0.
    uint32_t descriptionWord(uint64_t index) const {
        const uint64_t offset = HeaderSize + sizeof LinkerName + 4 * index;
        return index < wordCount() && offset + 4 <= m_Notes.size() ? word(offset) : 0;
    }

    // True if the section has no room for all of it.
    bool isCut() const { return statedSize() > m_Notes.size(); }

    // The bytes of the note, and those behind it.
    std::span<const uint8_t> bytes() const { return m_Notes.first(size()); }
    std::span<const uint8_t> rest() const { return m_Notes.subspan(size()); }

private:
    uint32_t word(uint64_t offset) const {
        return assembleBytes<uint32_t>(m_Notes.data() + offset, m_IsLittleEndian);
    }
    static constexpr uint64_t align4(uint64_t size) { return (size + 3) & ~uint64_t{3}; }
    uint64_t statedSize() const { return align4(word(0)) + align4(word(4)) + HeaderSize; }
    size_t size() const {
        return static_cast<size_t>(std::min<uint64_t>(statedSize(), m_Notes.size()));
    }

    std::span<const uint8_t> m_Notes;
    bool m_IsLittleEndian;
};

} // namespace elfext
