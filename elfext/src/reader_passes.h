// The passes of a read, in the order in which they run. Each takes what the passes before it
// found. False ends the read; what is wrong has been reported then.
#pragma once

namespace elfext {

class ReadState;

// Headers: the ELF header, section headers and program headers, and the module's own fields.
bool readHeaders(ReadState& state);
// Sections, without names, links and contents.
bool createSections(ReadState& state);
// What the sections hold, or a record of where it lies.
bool readContents(ReadState& state);
bool readSectionNames(ReadState& state);
// What `sh_link` and `sh_info` refer to.
bool readLinks(ReadState& state);
bool readSymbols(ReadState& state);
// Checks all relocations; they are made when somebody asks for them.
bool readRelocations(ReadState& state);
bool readGroups(ReadState& state);
bool createSegments(ReadState& state);
// Which part of the file lies in which.
bool readFileRegions(ReadState& state);
// Where sections without bytes in the file belong.
bool attachEmptySections(ReadState& state);
// What is in segments but in nothing else.
bool readRawData(ReadState& state);
bool readDynamicSections(ReadState& state);
bool readDebugOverlays(ReadState& state);
// Notes of the linker that tell the segments of sections.
bool readSegmentNotes(ReadState& state);
bool readBuildAttributes(ReadState& state);
// What is told of the file as a whole.
bool computeProperties(ReadState& state);

} // namespace elfext
