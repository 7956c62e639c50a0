// Tells code from the data between it.
//
// Compilers put constants between functions, in reach of the instructions that load them. Mapping
// symbols say where such a stretch begins and where code goes on: "$d" starts data; "$a", "$t" and
// "$x" start instructions of one set or another; each may have a "." and any text behind it.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace elfext {

class Section;
struct SizeStatistics;

// What the bytes of a stretch are.
enum class CodeBucket : uint8_t { LiteralPools, Code, Data };

// Where another kind of bytes begins, in bytes from the start of the section.
struct CodeMark {
    uint64_t offset;
    CodeBucket bucket;
};

// What begins at a mapping symbol of this name.
CodeBucket codeBucketOf(std::string_view mappingName);

// Adds the `size` bytes of a section that holds code, each to the sum of what it is. The marks are
// its mapping symbols in the order of the symbol table; they get sorted. Bytes in front of the
// first one are literals, so those of a section without any are.
void addCodeStretches(uint64_t size, bool isWritable, std::vector<CodeMark>& marks,
                      SizeStatistics& statistics);
void addCodeStretches(const Section& section, SizeStatistics& statistics);

} // namespace elfext
