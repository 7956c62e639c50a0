// The tree of free blocks. To the address sanitizer all of them are poisoned, so every function
// here that looks into one is exempt from its checks, and hands no field of one on by reference.
#include "alloclib/src/free_big_list.h"

#include "alloclib/interface/poison.h"

namespace alloclib {

namespace {

uint32_t rankOf(const void* block) {
    uint64_t bits = reinterpret_cast<uintptr_t>(block);
    bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
    return static_cast<uint32_t>(bits >> 32);
}

ALLOCLIB_READS_POISONED void updateGreatest(FreeBigBlock* block) {
    uint64_t greatest = block->size;
    if (block->earlier != nullptr && block->earlier->greatest > greatest) {
        greatest = block->earlier->greatest;
    }
    if (block->later != nullptr && block->later->greatest > greatest) {
        greatest = block->later->greatest;
    }
    block->greatest = greatest;
}

// One tree of two, of which all blocks of `later` come first in the list.
ALLOCLIB_READS_POISONED FreeBigBlock* merge(FreeBigBlock* later, FreeBigBlock* earlier) {
    if (later == nullptr || earlier == nullptr) {
        return later != nullptr ? later : earlier;
    }
    FreeBigBlock* const top = later->rank > earlier->rank ? later : earlier;
    if (top == later) {
        top->earlier = merge(top->earlier, earlier);
    } else {
        top->later = merge(later, top->later);
    }
    updateGreatest(top);
    return top;
}

} // namespace

ALLOCLIB_READS_POISONED void addFreeBig(FreeBigBlock*& list, void* block, uint32_t size) {
    const uint32_t rank = rankOf(block);
    FreeBigBlock** place = &list;
    while (*place != nullptr && (*place)->rank > rank) {
        FreeBigBlock* const above = *place;
        if (above->greatest < size) {
            above->greatest = size;
        }
        place = &above->later;
    }
    auto* const added = static_cast<FreeBigBlock*>(block);
    added->size = size;
    added->rank = rank;
    added->earlier = *place;
    added->later = nullptr;
    updateGreatest(added);
    *place = added;
}

ALLOCLIB_READS_POISONED FreeBigBlock* takeFreeBig(FreeBigBlock*& list, uint64_t size,
                                                  uint64_t align) {
    FreeBigBlock* const block = list;
    if (block == nullptr || block->greatest < size) {
        return nullptr;
    }
    if (FreeBigBlock* const later = takeFreeBig(block->later, size, align)) {
        updateGreatest(block);
        return later;
    }
    if (block->size >= size + alignmentGap(block, align)) {
        list = merge(block->later, block->earlier);
        return block;
    }
    FreeBigBlock* const earlier = takeFreeBig(block->earlier, size, align);
    if (earlier != nullptr) {
        updateGreatest(block);
    }
    return earlier;
}

ALLOCLIB_READS_POISONED uint32_t sizeOfFreeBig(const FreeBigBlock* block) {
    return block->size;
}

} // namespace alloclib
