// Which pages of a table are free: one bit a page, set while the page is free.
//
// A table has 40 chunks of 256 pages, eight words of the bitmap each. A run of pages lies in one
// chunk always, since chunks do not lie side by side in memory.
#pragma once

#include <bit>
#include <cstdint>

namespace alloclib {

class PageBitmap {
public:
    enum Shape : uint32_t {
        WordBits = 32,
        WordsInChunk = 8,
        PagesInChunk = WordsInChunk * WordBits,
        Chunks = 40,
        Words = Chunks * WordsInChunk,
    };
    static constexpr uint32_t NoRun = UINT32_MAX;

    // All pages free.
    PageBitmap();

    // The number of the first page of the first run of `count` (at least 1) free pages in one
    // chunk, looked for from word `firstWord` on. `NoRun` if there is none.
    uint32_t findRun(uint32_t firstWord, uint32_t count) const;

    // `findRun` for a single page, which is what nearly every request is for.
    uint32_t findPage(uint32_t firstWord) const {
        for (uint32_t word = firstWord; word < Words; ++word) {
            if (m_words[word] != 0) {
                return word * WordBits + static_cast<uint32_t>(std::countr_zero(m_words[word]));
            }
        }
        return NoRun;
    }

    // Marks `count` pages from number `first` on as free, or as in use. Beyond the bitmap's end
    // it is an internal error.
    void setBits(uint32_t first, uint64_t count);
    void clearBits(uint32_t first, uint64_t count);

    // The same for the single `page`, which is one of the bitmap's.
    void setBit(uint32_t page) { m_words[page / WordBits] |= uint32_t{1} << page % WordBits; }
    void clearBit(uint32_t page) { m_words[page / WordBits] &= ~(uint32_t{1} << page % WordBits); }

    bool isFree(uint32_t page) const {
        return (m_words[page / WordBits] >> (page % WordBits) & 1U) != 0;
    }

private:
    template <typename Operation>
    void forEachWord(uint32_t first, uint64_t count, Operation operation);

    uint32_t m_words[Words];
};

} // namespace alloclib
