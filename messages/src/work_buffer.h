// A scratch buffer for one text at a time: static while texts are short, on the heap after the
// first long one.
//
// Nearly every run stays in the static part, so printing a listing allocates nothing. The heap
// part grows to twice its size, or to what is needed if that is more, and its contents are not
// kept: whoever grows it writes the text anew.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

namespace messages {

template <class Element>
class WorkBuffer {
public:
    static constexpr uint64_t staticCount = 10240;
    static constexpr uint64_t leastHeapCount = 1024;

    WorkBuffer() = default;
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;
    ~WorkBuffer() { std::free(m_Heap); }

    // The number of elements that there is room for now.
    uint64_t capacity() const { return m_Heap != nullptr ? m_HeapCount : staticCount; }

    Element* data() { return m_Heap != nullptr ? m_Heap : m_Static.data(); }

    // Room for `count` elements at `data()`; false if there is no memory, the old room then stays.
    bool require(uint64_t count) {
        if (count <= capacity()) {
            return true;
        }
        const uint64_t wanted = std::max({leastHeapCount, m_HeapCount * 2, count});
        if (wanted > UINT64_MAX / 2 / sizeof(Element)) {
            return false;
        }
        auto* larger = static_cast<Element*>(std::malloc(wanted * sizeof(Element)));
        if (larger == nullptr) {
            return false;
        }
        std::free(m_Heap);
        m_Heap = larger;
        m_HeapCount = wanted;
        return true;
    }

private:
    std::array<Element, staticCount> m_Static;
    Element* m_Heap = nullptr;
    uint64_t m_HeapCount = 0;
};

} // namespace messages
