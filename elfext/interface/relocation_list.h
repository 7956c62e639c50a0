// The relocations that a query found.
#pragma once

#include "elfext/interface/inline_list.h"
#include "platform/interface/internal_check.h"

#include <cstdint>

namespace elfext {

class Relocation;

class RelocationList : public inline_list<Relocation, 1> {
public:
    RelocationList() = default;

    // The entry at `index`; null if none has been set since `setSize`.
    Relocation* operator[](uint32_t index) const {
        TOMEX_CHECK(index < m_Size);
        return entry(index);
    }

    // Neither sets nor adds a null entry. The entries stay their owner's.
    void set(uint32_t index, Relocation* relocation) {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(relocation != nullptr, "relocation != NULL");
        setEntry(index, relocation);
    }
    void add(Relocation* relocation) {
        TOMEX_CHECK_TEXT(relocation != nullptr, "relocation != NULL");
        addEntry(relocation);
    }
};

} // namespace elfext
