// Tells code from the data between it.
//
// Compilers put constants between functions, in reach of the instructions that load them. Mapping
// symbols say where such a stretch begins and where code goes on: "$d" starts data; "$a", "$t" and
// "$x" start instructions of one set or another; each may have a "." and any text behind it.
#pragma once

namespace elfext {

class Section;
struct SizeStatistics;

// Adds the bytes of a section that holds code, each to the sum of what it is. Bytes in front of the
// first mapping symbol are literals, so those of a section without any are.
void addCodeStretches(const Section& section, SizeStatistics& statistics);

} // namespace elfext
