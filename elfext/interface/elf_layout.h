// Gives every part of a module its place in the file.
//
// What is related to a segment moves with it as one block: the sections in it, raw data, other
// segments, the header tables, and the ELF header if the segment covers it. Where such a block can
// start follows from the constraints of its parts; it stays where it is if it can, and is put to
// the first fitting place otherwise. Sections that are in no segment follow in their order, and the
// section header table comes last. The program header table stands behind the ELF header unless a
// segment holds it.
//
// Layout items of public interest are told in `data_structure.h`.
#pragma once

namespace elfext {

class ObjectModule;

// Lays the file out by the sizes that sections and tables have now, and enters all offsets, sizes
// and counts in the module. Constraints that exclude each other are reported to the module's error
// handler, as is a file that would be too large for its class; true from the handler lets the
// layout go on without the constraint. False if it ended there; offsets are then as they were.
bool layOutElfFile(ObjectModule* objectModule);

} // namespace elfext
