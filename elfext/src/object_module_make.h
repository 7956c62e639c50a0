// How a module makes its objects: in its object region, never to be destroyed one by one.
#pragma once

#include "elfext/interface/object_module.h"

#include <new>

namespace elfext {

template <typename Kind, typename... Arguments>
Kind* ObjectModule::make(const Arguments&... arguments) {
    static_assert(alignof(Kind) <= 8, "blocks of a region are 8-aligned");
    return new (alloclib::allocate(*getObjectRegion(), sizeof(Kind), 8)) Kind(arguments...);
}

// Every change of what the model consists of passes here.
inline void ObjectModule::changeStructure() {
    TOMEX_CHECK(!m_IndexesFrozen);
    markChanged();
}

} // namespace elfext
