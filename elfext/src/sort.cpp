// A top-down merge sort between two arrays that swap roles at each level.
//
// Both arrays begin as copies of the input. To sort `dst`, the halves of `scratch` are sorted
// first (with `dst` as their scratch) and then merged into `dst`, so nothing is copied back.
#include "elfext/interface/sort.h"

#include "alloclib/interface/alloclib.h"
#include "platform/interface/internal_check.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace elfext {

namespace {

// An element's width: known to the compiler for the usual one of a pointer, so that an element is
// copied by a move.
struct PointerWidth {
    static constexpr size_t width() { return sizeof(void*); }
};

struct AnyWidth {
    size_t m_Width;
    size_t width() const { return m_Width; }
};

template <typename Width>
class Sorter {
public:
    Sorter(Width width, CompareProc compareProc, void* context)
        : m_Width(width), m_CompareProc(compareProc), m_Context(context) {}

    // Sorts the `n` elements at `dst`, of which `scratch` holds a copy.
    void sort(char* dst, size_t n, char* scratch) const {
        if (n < 2) {
            return;
        }
        if (n == 2) { // half of all steps: no halves to sort
            mergeTwo(dst, scratch);
            return;
        }
        const size_t h = n / 2;
        const size_t leftBytes = h * m_Width.width();
        sort(scratch, h, dst);
        sort(scratch + leftBytes, n - h, dst + leftBytes);
        merge(dst, scratch, scratch + leftBytes, scratch + n * m_Width.width());
    }

private:
    // Merges two single elements.
    void mergeTwo(char* dst, const char* scratch) const {
        const size_t width = m_Width.width();
        const char* const right = scratch + width;
        const bool inOrder = m_CompareProc(scratch, right, m_Context) < 1;
        std::memcpy(dst, inOrder ? scratch : right, width);
        std::memcpy(dst + width, inOrder ? right : scratch, width);
    }

    // Merges the sorted halves from `left` to `right` and from `right` to `end` into `dst`.
    void merge(char* dst, const char* left, const char* right, const char* end) const {
        const size_t width = m_Width.width();
        const char* const leftEnd = right;
        while (left != leftEnd && right != end) {
            // Without a branch on the result, which no predictor could guess.
            const size_t fromLeft = m_CompareProc(left, right, m_Context) < 1 ? width : 0;
            std::memcpy(dst, fromLeft != 0 ? left : right, width);
            left += fromLeft;
            right += width - fromLeft;
            dst += width;
        }
        const auto leftRest = static_cast<size_t>(leftEnd - left);
        std::memcpy(dst, left, leftRest);
        std::memcpy(dst + leftRest, right, static_cast<size_t>(end - right));
    }

    [[no_unique_address]] Width m_Width;
    CompareProc m_CompareProc;
    void* m_Context;
};

} // namespace

void mergeSort(void* base, size_t count, size_t width, CompareProc compareProc, void* context) {
    TOMEX_CHECK_TEXT(base != nullptr, "base != NULL");
    TOMEX_CHECK(width != 0);
    TOMEX_CHECK_TEXT(compareProc != nullptr, "compareProc != NULL");
    if (count < 2 || width == 0) {
        return;
    }
    if (count > SIZE_MAX / width) {
        alloclib::endOutOfMemory(SIZE_MAX);
    }
    const size_t bytes = count * width;
    const std::unique_ptr<char[]> scratch(new (std::nothrow) char[bytes]);
    if (scratch == nullptr) {
        alloclib::endOutOfMemory(bytes);
    }
    std::memcpy(scratch.get(), base, bytes);
    char* const data = static_cast<char*>(base);
    if (width == sizeof(void*)) {
        Sorter(PointerWidth(), compareProc, context).sort(data, count, scratch.get());
    } else {
        Sorter(AnyWidth{width}, compareProc, context).sort(data, count, scratch.get());
    }
}

} // namespace elfext
