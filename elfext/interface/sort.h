// The stable sort, the only one that is used where the order can be seen.
#pragma once

#include <cstddef>

namespace elfext {

// Compares the elements that its first two arguments point to: negative, zero or positive as the
// first sorts before the second, with it or behind it. The last argument is the caller's own.
using CompareProc = int (*)(const void* left, const void* right, void* context);

// Sorts `count` elements of `width` bytes each at `base`; elements that compare equal keep their
// order. `base` and `compareProc` are not null, `width` is not 0. Takes as much memory again from
// the heap while it runs.
void mergeSort(void* base, size_t count, size_t width, CompareProc compareProc, void* context);

} // namespace elfext
