// What a section of the file holds.
#pragma once

#include <cstdint>

namespace elfext {

class ReadState;
struct Elf64_Phdr;
struct Elf64_Shdr;

// True if the section's bytes lie wholly in the segment's part of the file.
bool liesInFileImage(const Elf64_Shdr& section, const Elf64_Phdr& segment);

// Makes sure that all bytes of a segment are there, once a segment.
bool fetchSegment(ReadState& state, uint32_t segment);

// A string table must begin and end with a zero byte, so that every text in it ends. One that does
// not is reported, and mended if the read may go on; an empty one gets its zero byte.
bool checkStringTable(ReadState& state, uint32_t section);

} // namespace elfext
