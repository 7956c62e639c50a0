// A small sorting library, the material of the demonstration.
#ifndef SORTING_H
#define SORTING_H

#include <stddef.h>

void insertion_sort(int* values, size_t count);
void shell_sort(int* values, size_t count);
void heap_sort(int* values, size_t count);
int is_sorted(const int* values, size_t count);

#endif
