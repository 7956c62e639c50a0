// The stretches of the file that something takes up, in the order in which the library lists
// them: segments, sections, the ELF header, the section header table, the program header table.
//
// A part has a size in the file. Sections without bytes there have none; neither has the null
// section, whose size field may count the sections. A relocatable file's program headers are no
// part of it.
#pragma once

#include <cstdint>
#include <span>

namespace elfext {

class FileRegion;
class ReadState;

struct FilePart {
    FileRegion* m_Region = nullptr;
    uint64_t m_Start = 0;
    uint64_t m_End = 0; // at the end of the number range at most

    uint64_t size() const { return m_End - m_Start; }
    bool overlaps(const FilePart& other) const {
        return m_Start < other.m_End && other.m_Start < m_End && size() != 0 && other.size() != 0;
    }
};

// All parts. They lie in the region of the read. The segments come first, the sections next.
std::span<FilePart> listFileParts(ReadState& state);

// True if any two parts overlap. `parts` must not be empty; the order does not matter.
bool anyOverlap(ReadState& state, std::span<const FilePart> parts);

// Marks each part that overlaps any other in `marks`, which is as long as `parts` and all false.
void markOverlaps(ReadState& state, std::span<const FilePart> parts, std::span<bool> marks);

} // namespace elfext
