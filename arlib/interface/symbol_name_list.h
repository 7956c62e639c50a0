// The names that one member defines, in the order in which the member lists them.
//
// Who lists them sees the member's marker symbols on the way, those that state how it was built.
// What they state is kept beside the names, so that nobody has to read the member once more for it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "alloclib/interface/region.h"
#include "arlib/interface/marker_texts.h"
#include "elfext/interface/fast_array.h"

namespace arlib {

// Names behind each of which a NUL stands.
using SymbolNames = std::span<const std::string_view>;

class SymbolNameList {
public:
    explicit SymbolNameList(alloclib::Region* region)
        : m_Region(region), m_Names(region), m_Markers(region) {}

    // Appends a copy of the name, which lives as long as the region.
    void add(std::string_view name) {
        m_Names.add({alloclib::copyString(*m_Region, name), name.size()});
    }

    // Makes room for so many names in all.
    void reserve(uint32_t count) { m_Names.reserve(count); }

    // Forgets all names, and all about markers. The texts of names stay as long as the region.
    void clear() {
        m_Names.clear();
        m_Markers.clear();
    }

    uint32_t getSize() const { return m_Names.getSize(); }
    // A NUL stands behind the text.
    std::string_view get(uint32_t index) const { return m_Names[index]; }
    // All of them, until the next change.
    SymbolNames getNames() const { return {m_Names.begin(), m_Names.end()}; }

    MarkerTexts& getMarkers() { return m_Markers; }
    const MarkerTexts& getMarkers() const { return m_Markers; }

private:
    alloclib::Region* m_Region;
    elfext::fast_array<std::string_view> m_Names;
    MarkerTexts m_Markers;
};

} // namespace arlib
