// What an object's marker symbols state together. A marker is a symbol without a place of its own
// whose name is "BuildAttributes$" and a decoration; compilers write one into objects that have no
// attributes section.
#pragma once

#include <cstring>

#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/decoration.h"

namespace arlib {

class MarkerAttributes {
public:
    // `result` gets the attributes of the first marker, and all further ones merged in.
    explicit MarkerAttributes(attributes::FullAttr& result) : m_Result(result) {}

    // The decoration in a marker's name, null for the name of another symbol or none.
    static const char* decorationOf(const char* name) {
        const bool isMarker = name != nullptr && std::strncmp(name, attributes::MarkerText,
                                                              attributes::MarkerLength) == 0;
        return isMarker ? name + attributes::MarkerLength : nullptr;
    }

    // Markers that clash are merged all the same: what the object asks for is all of it.
    void add(const char* decoration) {
        attributes::FullAttr stated;
        attributes::parseDecoration(stated, decoration);
        if (m_IsFound) {
            attributes::combine(m_Result, m_Result, stated);
        } else {
            m_Result = stated;
        }
        m_IsFound = true;
    }

    bool isFound() const { return m_IsFound; }

private:
    attributes::FullAttr& m_Result;
    bool m_IsFound = false;
};

} // namespace arlib
