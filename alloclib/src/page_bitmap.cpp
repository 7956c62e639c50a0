// Search and marking in the bitmap of free pages.
#include "alloclib/src/page_bitmap.h"

#include "alloclib/src/library_state.h"

#include <algorithm>
#include <bit>

namespace alloclib {

PageBitmap::PageBitmap() {
    std::fill_n(m_words, Words, UINT32_MAX);
}

uint32_t PageBitmap::findRun(uint32_t firstWord, uint32_t count) const {
    uint32_t run = 0;
    for (uint32_t word = firstWord; word < Words; ++word) {
        if (word % WordsInChunk == 0) {
            run = 0;
        }
        const uint32_t bits = m_words[word];
        for (uint32_t bit = 0; bit < WordBits;) {
            const uint32_t rest = bits >> bit;
            const auto used = static_cast<uint32_t>(std::countr_zero(rest));
            if (used > 0) {
                run = 0;
                bit += used; // to the next free page, or behind the word
                continue;
            }
            const auto free = static_cast<uint32_t>(std::countr_one(rest));
            if (run + free >= count) {
                return word * WordBits + bit - run;
            }
            run += free;
            bit += free;
        }
    }
    return NoRun;
}

template <typename Operation>
void PageBitmap::forEachWord(uint32_t first, uint64_t count, Operation operation) {
    constexpr uint64_t pages = uint64_t{Words} * WordBits;
    if (first > pages || count > pages - first) {
        failInternally("SetBits outside of bitmap");
    }
    uint32_t page = first;
    auto left = static_cast<uint32_t>(count);
    while (left > 0) {
        const uint32_t bit = page % WordBits;
        const uint32_t here = std::min<uint32_t>(left, WordBits - bit);
        const uint32_t mask = (UINT32_MAX >> (WordBits - here)) << bit;
        operation(m_words[page / WordBits], mask);
        page += here;
        left -= here;
    }
}

void PageBitmap::setBits(uint32_t first, uint64_t count) {
    forEachWord(first, count, [](uint32_t& word, uint32_t mask) { word |= mask; });
}

void PageBitmap::clearBits(uint32_t first, uint64_t count) {
    forEachWord(first, count, [](uint32_t& word, uint32_t mask) { word &= ~mask; });
}

} // namespace alloclib
