// A growable array whose block lies in a region.
//
// The array never outlives its region, and hands each block that it no longer needs back to it.
// A region wants a block's size back with the block, so the block ends in a word with the address
// of its start:
//
//     [count, 8 bytes] element 0 ... element m_Allocated - 1 [up to a multiple of 8] [start]
//
// The count, of the elements that are constructed, is there only for types with a destructor.
// Apart from the region this is `array`.
#pragma once

#include "alloclib/interface/region.h"
#include "elfext/interface/array_growth.h"
#include "platform/interface/internal_check.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

namespace elfext {

template <typename T>
class fast_array {
public:
    // An empty array with room for one element. `region` is not null and must outlive the array.
    explicit fast_array(alloclib::Region* region) : fast_array(region, 0) {}

    // `size` elements, value-initialised.
    fast_array(alloclib::Region* region, uint32_t size)
        : m_Region(checkedRegion(region)), m_Allocated(size == 0 ? 1 : size), m_Used(size),
          m_Array(takeBlock(m_Region, m_Allocated)) {
        std::fill_n(m_Array, m_Used, T());
    }

    // A copy in the same region.
    fast_array(const fast_array& other)
        : m_Region(other.m_Region), m_Allocated(other.m_Used == 0 ? 1 : other.m_Used),
          m_Used(other.m_Used), m_Array(takeBlock(m_Region, m_Allocated)) {
        std::copy_n(other.m_Array, m_Used, m_Array);
    }

    // Takes the elements over; the array stays in its own region.
    fast_array& operator=(const fast_array& other) {
        if (this != &other) {
            m_Used = 0;
            reserve(other.m_Used);
            std::copy_n(other.m_Array, other.m_Used, m_Array);
            m_Used = other.m_Used;
        }
        return *this;
    }

    ~fast_array() { returnBlock(m_Region, {m_Array, m_Allocated}); }

    // Exchanges all, the regions too.
    void swap(fast_array& other) noexcept {
        std::swap(m_Region, other.m_Region);
        std::swap(m_Allocated, other.m_Allocated);
        std::swap(m_Used, other.m_Used);
        std::swap(m_Array, other.m_Array);
    }

    alloclib::Region* getRegion() const { return m_Region; }
    uint32_t getSize() const { return m_Used; }
    // The elements that fit without growing.
    uint32_t getCapacity() const { return m_Allocated; }

    T& operator[](uint32_t index) {
        TOMEX_CHECK(index < m_Used);
        return m_Array[index];
    }
    const T& operator[](uint32_t index) const {
        TOMEX_CHECK(index < m_Used);
        return m_Array[index];
    }

    T* begin() { return m_Array; }
    T* end() { return m_Array + m_Used; }
    const T* begin() const { return m_Array; }
    const T* end() const { return m_Array + m_Used; }

    // Appends `value`, which may be an element of this array.
    void add(const T& value) {
        if (m_Used < m_Allocated) [[likely]] {
            m_Array[m_Used++] = value;
            return;
        }
        T copy(value);
        grow(m_Allocated + 1);
        m_Array[m_Used++] = std::move(copy);
    }

    // Puts `value` before the element at `index`, or behind the last.
    void insert(uint32_t index, const T& value) {
        TOMEX_CHECK(index <= m_Used);
        T copy(value);
        if (m_Used == m_Allocated) {
            grow(m_Allocated + 1);
        }
        for (uint32_t i = m_Used; i > index; --i) {
            m_Array[i] = m_Array[i - 1];
        }
        m_Array[index] = std::move(copy);
        ++m_Used;
    }

    // Takes the element at `index` out; later ones move down.
    void remove(uint32_t index) {
        TOMEX_CHECK(index < m_Used);
        for (uint32_t i = index + 1; i < m_Used; ++i) {
            m_Array[i - 1] = m_Array[i];
        }
        --m_Used;
    }

    // Takes the first element equal to `value` out, if there is one.
    void removeValue(const T& value) {
        for (uint32_t i = 0; i < m_Used; ++i) {
            if (m_Array[i] == value) {
                remove(i);
                return;
            }
        }
    }

    // Linear: for checks, not for look-ups.
    bool contains(const T& value) const { return std::find(begin(), end(), value) != end(); }

    // Makes room for `count` elements in all.
    void reserve(uint32_t count) {
        if (count > m_Allocated) {
            grow(count);
        }
    }

    // Cuts the array, or fills it up with value-initialised elements.
    void setSize(uint32_t size) {
        reserve(size);
        if (size > m_Used) {
            std::fill(m_Array + m_Used, m_Array + size, T());
        }
        m_Used = size;
    }

    // Forgets all elements; the capacity stays.
    void clear() { m_Used = 0; }

    bool operator==(const fast_array& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }

private:
    static_assert(alignof(T) <= 8, "blocks of a region are 8-aligned");

    static constexpr uint64_t WordSize = 8;
    static constexpr uint64_t CountSize = std::is_trivially_destructible_v<T> ? 0 : WordSize;

    static alloclib::Region* checkedRegion(alloclib::Region* region) {
        TOMEX_CHECK_TEXT(region != nullptr, "region != NULL");
        return region;
    }

    // From the block's start to the word that holds the address of that start.
    static uint64_t startWordOffset(uint32_t count) {
        return (CountSize + blockBytes(count, sizeof(T)) + 7) & ~uint64_t{7};
    }

    // A block and what it holds, as values: the functions that get them do not see the array
    // itself, so that the compiler can keep the fields of one that is being filled in registers.
    struct Block {
        T* array;
        uint32_t allocated;
    };

    static T* takeBlock(alloclib::Region* region, uint32_t count) {
        const uint64_t wordOffset = startWordOffset(count);
        char* const start =
            static_cast<char*>(alloclib::allocate(*region, wordOffset + WordSize, 8));
        std::memcpy(start + wordOffset, &start, sizeof start);
        if constexpr (CountSize != 0) {
            const uint64_t elements = count;
            std::memcpy(start, &elements, sizeof elements);
        }
        T* const block = reinterpret_cast<T*>(start + CountSize);
        std::uninitialized_default_construct_n(block, count);
        return block;
    }

    static void returnBlock(alloclib::Region* region, Block block) {
        char* const elements = reinterpret_cast<char*>(block.array);
        char* const startWord = elements - CountSize + startWordOffset(block.allocated);
        char* start = nullptr;
        std::memcpy(&start, startWord, sizeof start);
        if constexpr (CountSize != 0) {
            uint64_t count = 0;
            std::memcpy(&count, start, sizeof count);
            std::destroy_n(block.array, count);
        }
        const auto size = static_cast<uint64_t>(startWord - start) + WordSize;
        region->Discard(start, size, 8);
    }

    // A larger block with the first `used` elements of `block`, which goes back.
    static Block grown(alloclib::Region* region, Block block, uint32_t used,
                       uint32_t requiredAllocation) {
        TOMEX_CHECK_TEXT(region != nullptr, "m_Region != NULL");
        TOMEX_CHECK_TEXT(requiredAllocation > block.allocated, "requiredAllocation > m_Allocated");
        const uint32_t newAllocated = grownCapacity(block.allocated, requiredAllocation);
        TOMEX_CHECK_TEXT(newAllocated > block.allocated, "newAllocated > m_Allocated");
        requireGrowth(block.allocated, newAllocated);
        T* const newArray = takeBlock(region, newAllocated);
        std::copy_n(block.array, used, newArray);
        returnBlock(region, block);
        return {newArray, newAllocated};
    }

    void grow(uint32_t requiredAllocation) {
        const Block block = grown(m_Region, {m_Array, m_Allocated}, m_Used, requiredAllocation);
        m_Array = block.array;
        m_Allocated = block.allocated;
    }

    alloclib::Region* m_Region;
    uint32_t m_Allocated;
    uint32_t m_Used;
    T* m_Array;
};

} // namespace elfext
