#include "sorting.h"

static void sink(int *values, size_t parent, size_t count) {
    for (size_t child = 2 * parent + 1; child < count; child = 2 * parent + 1) {
        if (child + 1 < count && values[child + 1] > values[child]) {
            ++child;
        }
        if (values[parent] >= values[child]) {
            return;
        }
        const int value = values[parent];
        values[parent] = values[child];
        values[child] = value;
        parent = child;
    }
}

void heap_sort(int *values, size_t count) {
    for (size_t i = count / 2; i-- > 0;) {
        sink(values, i, count);
    }
    for (size_t end = count; end-- > 1;) {
        const int largest = values[0];
        values[0] = values[end];
        values[end] = largest;
        sink(values, 0, end);
    }
}
