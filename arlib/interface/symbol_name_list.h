// The names that one member defines, in the order in which the member lists them.
//
// Who lists them sees the member's marker symbols on the way, those that state how it was built.
// What they state is kept beside the names, so that nobody has to read the member once more for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
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

    // Forgets all names, and all about markers.
    void clear() {
        m_Names.clear();
        m_Markers = {};
        m_MarkerBytes = 0;
        m_KnowsMarkers = false;
    }

    uint32_t getSize() const { return m_Names.getSize(); }
    // A NUL stands behind the text.
    std::string_view get(uint32_t index) const { return m_Names[index]; }

    // The text of a marker symbol behind "BuildAttributes$", in the order of the symbols.
    struct Marker {
        const char* decoration;
        const Marker* next;
    };

    // Says that from here on markers are kept: at most so many bytes of text, since names in a
    // file may overlap and so be longer together than the file. With more, none is.
    static constexpr size_t MostMarkerBytes = size_t{64} << 10;
    void startMarkers() { m_KnowsMarkers = true; }
    // Appends a copy of a marker's text, which ends in a NUL.
    void addMarker(const char* decoration) {
        if (!m_KnowsMarkers) {
            return;
        }
        const size_t length = strnlen(decoration, MostMarkerBytes);
        m_MarkerBytes += length + 1;
        if (m_MarkerBytes > MostMarkerBytes) {
            m_Markers = {};
            m_KnowsMarkers = false;
            return;
        }
        void* memory = alloclib::allocate(*m_Region, sizeof(Marker), alignof(Marker));
        auto* marker =
            new (memory) Marker{alloclib::copyString(*m_Region, {decoration, length}), nullptr};
        (m_Markers.last != nullptr ? m_Markers.last->next : m_Markers.first) = marker;
        m_Markers.last = marker;
    }
    // True if getMarkers tells of all that there are.
    bool knowsMarkers() const { return m_KnowsMarkers; }
    // The first marker, or null.
    const Marker* getMarkers() const { return m_Markers.first; }

private:
    struct MarkerChain {
        const Marker* first = nullptr;
        Marker* last = nullptr;
    };

    alloclib::Region* m_Region;
    elfext::fast_array<std::string_view> m_Names;
    MarkerChain m_Markers;
    size_t m_MarkerBytes = 0;
    bool m_KnowsMarkers = false;
};

} // namespace arlib
