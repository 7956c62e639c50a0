// A growable array on the general heap.
//
// Sizes and indexes are 32 bits wide. The block is an element array of the heap, so every element
// up to the capacity is constructed, and destroyed with the block. `fast_array` is the same in a
// region. Misuse is an internal fault, lack of memory ends the process.
#pragma once

#include "alloclib/interface/alloclib.h"
#include "elfext/interface/array_growth.h"
#include "platform/interface/internal_check.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace elfext {

template <typename T>
class array {
public:
    // An empty array with room for one element.
    array() : array(0) {}

    // `size` elements, value-initialised.
    explicit array(uint32_t size)
        : m_Allocated(size == 0 ? 1 : size), m_Used(size), m_Array(takeBlock(m_Allocated)) {
        std::fill_n(m_Array, m_Used, T());
    }

    array(const array& other)
        : m_Allocated(other.m_Used == 0 ? 1 : other.m_Used), m_Used(other.m_Used),
          m_Array(takeBlock(m_Allocated)) {
        std::copy_n(other.m_Array, m_Used, m_Array);
    }

    array& operator=(const array& other) {
        if (this != &other) {
            array copy(other);
            swap(copy);
        }
        return *this;
    }

    ~array() { delete[] m_Array; }

    void swap(array& other) noexcept {
        std::swap(m_Allocated, other.m_Allocated);
        std::swap(m_Used, other.m_Used);
        std::swap(m_Array, other.m_Array);
    }

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

    bool operator==(const array& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }

private:
    static T* takeBlock(uint32_t count) {
        const uint32_t bytes = blockBytes(count, sizeof(T));
        T* const block = new (std::nothrow) T[count];
        if (block == nullptr) {
            alloclib::endOutOfMemory(bytes);
        }
        return block;
    }

    void grow(uint32_t requiredAllocation) {
        TOMEX_CHECK(requiredAllocation > m_Allocated);
        const uint32_t newAllocated = grownCapacity(m_Allocated, requiredAllocation);
        TOMEX_CHECK(newAllocated > m_Allocated);
        requireGrowth(m_Allocated, newAllocated);
        T* const block = takeBlock(newAllocated);
        std::copy_n(m_Array, m_Used, block);
        delete[] m_Array;
        m_Array = block;
        m_Allocated = newAllocated;
    }

    uint32_t m_Allocated;
    uint32_t m_Used;
    T* m_Array;
};

} // namespace elfext
