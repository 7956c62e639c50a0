// Marks for the address sanitizer.
//
// To the sanitizer a region's memory is one big live block, in which it would see no overrun.
// So regions mark every byte that is not handed out, discarded blocks included, as poisoned, and
// clear the mark when they hand a byte out. In builds without the sanitizer all of this is empty.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#define ALLOCLIB_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ALLOCLIB_POISONS 1
#endif
#endif

#ifdef ALLOCLIB_POISONS
#include <sanitizer/asan_interface.h>
// On functions that read and write the allocator's own words inside discarded blocks.
#define ALLOCLIB_READS_POISONED __attribute__((no_sanitize_address, noinline))
#else
#define ALLOCLIB_READS_POISONED
#endif

namespace alloclib {

// Forbids access to `size` bytes at `block` (8-aligned) until they are unpoisoned.
inline void poison([[maybe_unused]] const void* block, [[maybe_unused]] uint64_t size) {
#ifdef ALLOCLIB_POISONS
    __asan_poison_memory_region(block, static_cast<size_t>(size));
#endif
}

// Allows access to `size` bytes at `block` (8-aligned), and to no byte behind them.
inline void unpoison([[maybe_unused]] const void* block, [[maybe_unused]] uint64_t size) {
#ifdef ALLOCLIB_POISONS
    __asan_unpoison_memory_region(block, static_cast<size_t>(size));
#endif
}

} // namespace alloclib
