#include "elfext/src/removed_memory.h"

#include "elfext/interface/elf_constants.h"

#include <algorithm>

namespace elfext {

namespace {

// What threads start with in place of zeros of their own has no place besides.
Range memoryOf(const Section& section, uint64_t size) {
    const bool isOfThreads = section.getType() == SHT_NOBITS && (section.getFlags() & SHF_TLS) != 0;
    const uint64_t start = section.getAddress();
    if ((section.getFlags() & SHF_ALLOC) == 0 || start == 0 || isOfThreads) {
        return {};
    }
    return {start, start + std::min(size, UINT64_MAX - start)};
}

// Layout may refuse the rest, which would reach into what follows the section.
uint64_t settledSizeOf(const Section& section) {
    const uint64_t size = section.getSize();
    return size - std::min(size, section.getUnsettledGrowth());
}

} // namespace

Range memoryOf(const Section& section) {
    return memoryOf(section, section.getSize());
}

std::vector<Range> findFreeMemory(fast_array<Range>& removed,
                                  const fast_array<Section*>& sections) {
    std::vector<Range> free;
    if (removed.getSize() == 0) {
        return free;
    }
    normaliseRanges(removed);
    std::vector<Range> taken;
    for (const Section* const section : sections) {
        const Range memory = memoryOf(*section, settledSizeOf(*section));
        if (memory.getSize() != 0) {
            taken.push_back(memory);
        }
    }
    std::sort(taken.begin(), taken.end(), [](const Range& left, const Range& right) {
        return left.getStart() < right.getStart();
    });
    auto next = taken.begin();
    uint64_t start = 0; // what is in front of it has been looked at
    for (const Range& range : removed) {
        start = std::max(start, range.getStart());
        for (; next != taken.end() && next->getStart() < range.getEnd(); ++next) {
            if (next->getStart() > start) {
                free.emplace_back(start, next->getStart());
            }
            start = std::max(start, next->getEnd());
        }
        if (start < range.getEnd()) {
            free.emplace_back(start, range.getEnd());
        }
    }
    return free;
}

} // namespace elfext
