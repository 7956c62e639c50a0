#include "elfext/src/code_stretches.h"

#include "elfext/interface/object_module.h"
#include "elfext/interface/sizes_statistics.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace elfext {
namespace {

// Data that is no literal, although it stands in a section of code.
constexpr char realDataName[] = "$d.realdata";

enum class Bucket { LiteralPools, Code, Data };

// Where another kind of bytes begins.
struct Mark {
    uint64_t offset;
    Bucket bucket;
};

Bucket bucketOf(const char* mappingName) {
    if (mappingName[1] != 'd') {
        return Bucket::Code;
    }
    return std::strcmp(mappingName, realDataName) == 0 ? Bucket::Data : Bucket::LiteralPools;
}

// Of several marks at one place the last one of the symbol table counts.
void sortMarks(std::vector<Mark>& marks) {
    const auto standsBefore = [](const Mark& left, const Mark& right) {
        return left.offset < right.offset;
    };
    if (!std::is_sorted(marks.begin(), marks.end(), standsBefore)) {
        std::stable_sort(marks.begin(), marks.end(), standsBefore);
    }
}

// Of the symbols only these are sorted: a section's own sorted lists come all four or not at all.
std::vector<Mark> marksOf(const Section& section) {
    std::vector<Mark> marks;
    for (const Symbol* const symbol : section.getHostedSymbols()) {
        if (symbol->getKind() == SymbolKind_Mapping) {
            marks.push_back({symbol->getOffset(), bucketOf(symbol->getName())});
        }
    }
    sortMarks(marks);
    return marks;
}

void addStretch(const Section& section, Bucket bucket, uint64_t size, SizeStatistics& statistics) {
    switch (bucket) {
    case Bucket::LiteralPools:
        statistics.m_LiteralPools += size;
        break;
    case Bucket::Code:
        statistics.m_Code += size;
        break;
    case Bucket::Data:
        if ((section.getFlags() & SHF_WRITE) != 0) {
            statistics.m_RwDataUncompressed += size;
            statistics.m_RwDataCompressed += size;
        } else {
            statistics.m_RoData += size;
        }
        break;
    }
}

} // namespace

void addCodeStretches(const Section& section, SizeStatistics& statistics) {
    const uint64_t end = section.getSize();
    uint64_t start = 0;
    Bucket bucket = Bucket::LiteralPools;
    for (const Mark& mark : marksOf(section)) {
        if (mark.offset >= end) {
            break;
        }
        addStretch(section, bucket, mark.offset - start, statistics);
        start = mark.offset;
        bucket = mark.bucket;
    }
    addStretch(section, bucket, end - start, statistics);
}

} // namespace elfext
