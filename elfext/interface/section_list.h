// The sections that a query found.
#pragma once

#include "elfext/interface/inline_list.h"
#include "platform/interface/internal_check.h"

#include <cstdint>

namespace elfext {

class Section;

class SectionList : public inline_list<Section, 8> {
public:
    SectionList() = default;

    // The entry at `index`; null if none has been set since `setSize`.
    Section* operator[](uint32_t index) const {
        TOMEX_CHECK(index < m_Size);
        return entry(index);
    }

    // Neither sets nor adds a null entry. The entries stay their owner's.
    void set(uint32_t index, Section* section) {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
        setEntry(index, section);
    }
    void add(Section* section) {
        TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
        addEntry(section);
    }
};

} // namespace elfext
