#include "attributes/interface/library_attribute_map.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

#include "attributes/interface/attribute_algebra.h"
#include "attributes/src/text_match.h"
#include "platform/interface/wildcard.h"

namespace attributes {
namespace {

// What the forms of access start from: a word loaded or stored at a word's place, a byte anywhere.
constexpr uint16_t PlainAccess[] = {0x0010, 0x0210, 0x0210, 0x0210};

// What names one build of a family stands behind this.
constexpr char BuildSeparator = '_';

std::string_view familyOf(const char* alias) {
    const std::string_view text(alias);
    return text.substr(0, text.find(BuildSeparator));
}

} // namespace

void LibraryAttributeMap::addRow(const char* pattern, const FullAttr& attributes,
                                 const char* alias) {
    if (m_Count == getCapacity()) {
        void* memory = alloclib::allocate(*m_Region, sizeof(LibraryAttributeRow) * GrowthStep,
                                          alignof(LibraryAttributeRow));
        auto* block = static_cast<LibraryAttributeRow*>(memory);
        std::uninitialized_default_construct_n(block, GrowthStep);
        m_Blocks.add(block);
    }
    LibraryAttributeRow& row = m_Blocks[m_Count / GrowthStep][m_Count % GrowthStep];
    row.pattern = alloclib::copyString(*m_Region, pattern);
    row.attributes = attributes;
    row.alias = alias != nullptr ? alloclib::copyString(*m_Region, alias) : nullptr;
    ++m_Count;
}

bool matchPattern(const char* pattern, const char* name) {
    return platform::wildcardMatch(pattern, name);
}

void attributesForName(const LibraryAttributeMap& map, const char* path, FullAttr& out) {
    const char* backslash = std::strrchr(path, '\\');
    const char* name = backslash != nullptr ? backslash : path;
    out = FullAttr();
    std::copy_n(PlainAccess, std::size(PlainAccess), out.access);
    for (uint32_t i = 0; i < map.getCount(); ++i) {
        const LibraryAttributeRow& row = map.getRow(i);
        if (matchPattern(row.pattern, name)) {
            combine(out, out, row.attributes);
        }
    }
}

const char* aliasForName(const LibraryAttributeMap& map, const char* name) {
    for (uint32_t i = 0; i < map.getCount(); ++i) {
        const LibraryAttributeRow& row = map.getRow(i);
        if (row.alias != nullptr && matchPattern(row.pattern, name)) {
            return row.alias;
        }
    }
    return name;
}

bool sameLibraryFamily(const LibraryAttributeMap& map, const char* a, const char* b) {
    return equalsIgnoringCase(familyOf(aliasForName(map, a)), familyOf(aliasForName(map, b)));
}

} // namespace attributes
