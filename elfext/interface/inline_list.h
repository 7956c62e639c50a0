// A list of pointers whose first few entries need no allocation.
//
// Most queries have one or two hits. So the first `InlineEntries` of a list lie in the list itself,
// and only the rest on the heap. The lists that users see (`SymbolList` and its like) add the
// checks to this.
#pragma once

#include "alloclib/interface/alloclib.h"
#include "elfext/interface/array_growth.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace elfext {

template <typename Entry, uint32_t InlineEntries>
class inline_list {
public:
    inline_list(const inline_list&) = delete;
    inline_list& operator=(const inline_list&) = delete;

    uint32_t getSize() const { return m_Size; }

    // Makes the list `size` entries long, all of them null. A heap block that is large enough is
    // kept.
    void setSize(uint32_t size) {
        m_InlineUsed = std::min(size, InlineEntries);
        m_RestUsed = size - m_InlineUsed;
        m_Size = size;
        if (m_RestUsed > m_RestAllocated) {
            delete[] m_Rest;
            m_Rest = takeBlock(m_RestUsed);
            m_RestAllocated = m_RestUsed;
        }
        std::fill_n(m_Inline, m_InlineUsed, nullptr);
        std::fill_n(m_Rest, m_RestUsed, nullptr);
    }

    void clear() { setSize(0); }

protected:
    inline_list() = default;
    ~inline_list() { delete[] m_Rest; }

    Entry* entry(uint32_t index) const {
        return isInline(index) ? m_Inline[index] : m_Rest[index - m_InlineUsed];
    }

    void setEntry(uint32_t index, Entry* value) {
        (isInline(index) ? m_Inline[index] : m_Rest[index - m_InlineUsed]) = value;
    }

    void addEntry(Entry* value) {
        if (m_InlineUsed < InlineEntries) {
            m_Inline[m_InlineUsed++] = value;
        } else {
            if (m_RestUsed == m_RestAllocated) {
                growRest();
            }
            m_Rest[m_RestUsed++] = value;
        }
        ++m_Size;
    }

    uint32_t m_Size = 0; // all entries

private:
    // The second test says nothing new, but it tells a compiler that unrolls a loop over a list
    // that the entry is inside.
    bool isInline(uint32_t index) const { return index < m_InlineUsed && index < InlineEntries; }

    static Entry** takeBlock(uint32_t count) {
        const uint32_t bytes = blockBytes(count, sizeof(Entry*));
        Entry** const block = new (std::nothrow) Entry*[count];
        if (block == nullptr) {
            alloclib::endOutOfMemory(bytes);
        }
        return block;
    }

    void growRest() {
        const uint32_t newAllocated = grownCapacity(m_RestAllocated, m_RestAllocated + 1);
        requireGrowth(m_RestAllocated, newAllocated);
        Entry** const block = takeBlock(newAllocated);
        std::copy_n(m_Rest, m_RestUsed, block);
        delete[] m_Rest;
        m_Rest = block;
        m_RestAllocated = newAllocated;
    }

    uint32_t m_InlineUsed = 0;    // entries here
    uint32_t m_RestAllocated = 0; // entries that the heap block can hold
    uint32_t m_RestUsed = 0;      // entries there
    Entry* m_Inline[InlineEntries] = {};
    Entry** m_Rest = nullptr;
};

} // namespace elfext
