#include "sorting.h"

void shell_sort(int *values, size_t count) {
    for (size_t gap = count / 2; gap > 0; gap /= 2) {
        for (size_t i = gap; i < count; ++i) {
            const int value = values[i];
            size_t hole = i;
            while (hole >= gap && values[hole - gap] > value) {
                values[hole] = values[hole - gap];
                hole -= gap;
            }
            values[hole] = value;
        }
    }
}
