#include "sorting.h"

int is_sorted(const int *values, size_t count) {
    for (size_t i = 1; i < count; ++i) {
        if (values[i - 1] > values[i]) {
            return 0;
        }
    }
    return 1;
}
