#include "elfext/src/code_stretches.h"

#include "elfext/interface/object_module.h"
#include "elfext/interface/sizes_statistics.h"

#include <algorithm>

namespace elfext {
namespace {

// Data that is no literal, although it stands in a section of code.
constexpr std::string_view realDataName = "$d.realdata";

// Of several marks at one place the last one of the symbol table counts.
void sortMarks(std::vector<CodeMark>& marks) {
    const auto standsBefore = [](const CodeMark& left, const CodeMark& right) {
        return left.offset < right.offset;
    };
    if (!std::is_sorted(marks.begin(), marks.end(), standsBefore)) {
        std::stable_sort(marks.begin(), marks.end(), standsBefore);
    }
}

// Of the symbols only these are sorted: a section's own sorted lists come all four or not at all.
std::vector<CodeMark> marksOf(const Section& section) {
    std::vector<CodeMark> marks;
    for (const Symbol* const symbol : section.getHostedSymbols()) {
        if (symbol->getKind() == SymbolKind_Mapping) {
            marks.push_back({symbol->getOffset(), codeBucketOf(symbol->getName())});
        }
    }
    return marks;
}

void addStretch(CodeBucket bucket, bool isWritable, uint64_t size, SizeStatistics& statistics) {
    switch (bucket) {
    case CodeBucket::LiteralPools:
        statistics.m_LiteralPools += size;
        break;
    case CodeBucket::Code:
        statistics.m_Code += size;
        break;
    case CodeBucket::Data:
        if (isWritable) {
            statistics.m_RwDataUncompressed += size;
            statistics.m_RwDataCompressed += size;
        } else {
            statistics.m_RoData += size;
        }
        break;
    }
}

} // namespace

CodeBucket codeBucketOf(std::string_view mappingName) {
    if (mappingName[1] != 'd') {
        return CodeBucket::Code;
    }
    return mappingName == realDataName ? CodeBucket::Data : CodeBucket::LiteralPools;
}

void addCodeStretches(uint64_t size, bool isWritable, std::vector<CodeMark>& marks,
                      SizeStatistics& statistics) {
    sortMarks(marks);
    uint64_t start = 0;
    CodeBucket bucket = CodeBucket::LiteralPools;
    for (const CodeMark& mark : marks) {
        if (mark.offset >= size) {
            break;
        }
        addStretch(bucket, isWritable, mark.offset - start, statistics);
        start = mark.offset;
        bucket = mark.bucket;
    }
    addStretch(bucket, isWritable, size - start, statistics);
}

void addCodeStretches(const Section& section, SizeStatistics& statistics) {
    std::vector<CodeMark> marks = marksOf(section);
    addCodeStretches(section.getSize(), (section.getFlags() & SHF_WRITE) != 0, marks, statistics);
}

} // namespace elfext
