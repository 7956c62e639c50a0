// Gives every part of a module its place in the file.
//
// What is related to a segment moves with it as one block: the sections in it, raw data, other
// segments, the header tables, and the ELF header if the segment covers it. Where such a block can
// start follows from the constraints of its parts; it stays where it is if it can, whatever new
// segment is put over its parts, and is put to the first fitting place otherwise. Sections that are
// in no segment follow in their order, and the section header table comes last.
//
// The program header table stands behind the ELF header. Where a segment holds the table, the two
// stay together; where one holds the ELF header alone, the table follows behind all blocks.
//
// Within a block all distances stay as they are, since those who load the file know them. A part
// that has grown has the zeros behind it that belong to nothing, up to the end of each segment that
// a loader maps it with; beyond that it does not fit. Where a file had it reach beyond such a
// segment, it may do so as far as it did.
//
// Layout items of public interest are told in `data_structure.h`.
#pragma once

namespace elfext {

class ObjectModule;

// Lays the file out by the sizes that sections and tables have now, and enters all offsets, sizes
// and counts in the module. False if it could not be done; offsets are then as they were. What is
// wrong is reported to the module's error handler:
//  - constraints that exclude each other (`segmentSectionAlignmentClash` and its like). True from
//    the handler lets the layout go on without the constraint.
//  - A part of a block that does not fit, as another part of the block or bytes that mean something
//    lie there (`sectionsOverlap` of two sections), or as it has outgrown a segment that it is
//    loaded with. That ends the layout whatever the handler says: bytes would be lost.
//  - A section without a place yet that is to be loaded and that no segment holds
//    (`loadableSectionOutsideSegment`), such as a table that a loaded image did not have, or zeros
//    (SHT_NOBITS): nothing can lead to it in memory. True lets it lie behind the segments.
//  - A file that would be too large for its class, or all but empty: to the length that the file
//    had when it was read or laid out last, there may come the contents and, for segments to lie
//    where their addresses want them, 16 MiB and sixteen times the contents of free bytes
//    (`ioErrorWriting` with EFBIG, as for 65,535 segments or more).
//  - Memory that has run out (`outOfMemory`), which more than some four million relations between
//    parts count as.
bool layOutElfFile(ObjectModule* objectModule);

} // namespace elfext
