// Objects of the parser in the default region.
//
// Lists, list nodes and the like are made once while words are read and live until the region ends,
// so they are never given back one by one.
#pragma once

#include "alloclib/interface/default_region.h"
#include "alloclib/interface/region_general.h"

#include <new>
#include <utility>

namespace tabledrivenparser {

// Makes a T in the default region from `arguments`. The region keeps the memory until its own end;
// the destructor runs only if somebody calls it. Running out of memory ends the run in the region.
template <class T, class... Arguments>
T* makeInDefaultRegion(Arguments&&... arguments) {
    static_assert(alignof(T) <= 8, "the fast path of a region aligns to 8");
    void* block = alloclib::allocate(alloclib::defaultRegion(), sizeof(T), 8);
    return new (block) T(std::forward<Arguments>(arguments)...);
}

} // namespace tabledrivenparser
