// What the marker symbols of one member state, as their texts have it: those behind
// "BuildAttributes$", in the order of the symbols.
//
// Names in a file may overlap and so be longer together than the file. So the texts that are kept
// are bounded, and where there are more of them, none is: whoever needs them must look again.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>

#include "alloclib/interface/region.h"

namespace arlib {

class MarkerTexts {
public:
    // A text, which ends in a NUL, and the one behind it or null. Both live as long as the region.
    struct Text {
        const char* decoration;
        const Text* next;
    };

    // Bytes that are kept at most, each text's NUL included.
    static constexpr size_t MostBytes = size_t{64} << 10;

    explicit MarkerTexts(alloclib::Region* region) : m_Region(region) {}

    // Says that all markers of the member are going to be added: without that, none is known.
    void start() { m_IsKnown = true; }

    // Appends a copy of a text, which ends in a NUL.
    void add(const char* decoration) {
        if (!m_IsKnown) {
            return;
        }
        const size_t length = strnlen(decoration, MostBytes);
        m_Bytes += length + 1;
        if (m_Bytes > MostBytes) {
            clear();
            return;
        }
        void* memory = alloclib::allocate(*m_Region, sizeof(Text), alignof(Text));
        auto* text =
            new (memory) Text{alloclib::copyString(*m_Region, {decoration, length}), nullptr};
        (m_Last != nullptr ? m_Last->next : m_First) = text;
        m_Last = text;
    }

    // Begins anew, with nothing known. Texts that somebody refers to stay.
    void clear() {
        m_First = nullptr;
        m_Last = nullptr;
        m_Bytes = 0;
        m_IsKnown = false;
    }

    // True if getFirst tells of all that there are.
    bool isKnown() const { return m_IsKnown; }
    // The first text, or null.
    const Text* getFirst() const { return m_First; }

private:
    alloclib::Region* m_Region;
    const Text* m_First = nullptr;
    Text* m_Last = nullptr;
    size_t m_Bytes = 0;
    bool m_IsKnown = false;
};

} // namespace arlib
