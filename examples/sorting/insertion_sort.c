#include "sorting.h"

void insertion_sort(int *values, size_t count) {
    for (size_t i = 1; i < count; ++i) {
        const int value = values[i];
        size_t hole = i;
        while (hole > 0 && values[hole - 1] > value) {
            values[hole] = values[hole - 1];
            --hole;
        }
        values[hole] = value;
    }
}
