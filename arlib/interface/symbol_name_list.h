// The names that one member defines, in the order in which the member lists them.
#pragma once

#include <cstdint>
#include <string_view>

#include "alloclib/interface/region.h"
#include "elfext/interface/fast_array.h"

namespace arlib {

class SymbolNameList {
public:
    explicit SymbolNameList(alloclib::Region* region) : m_Region(region), m_Names(region) {}

    // Appends a copy of the name, which lives as long as the region.
    void add(std::string_view name) {
        m_Names.add({alloclib::copyString(*m_Region, name), name.size()});
    }

    // Makes room for so many names in all.
    void reserve(uint32_t count) { m_Names.reserve(count); }

    // Forgets all names.
    void clear() { m_Names.clear(); }

    uint32_t getSize() const { return m_Names.getSize(); }
    // A NUL stands behind the text.
    std::string_view get(uint32_t index) const { return m_Names[index]; }

private:
    alloclib::Region* m_Region;
    elfext::fast_array<std::string_view> m_Names;
};

} // namespace arlib
