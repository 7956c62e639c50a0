// The library attribute map: what a library's file name promises of the objects in it.
//
// The tool chain's own libraries carry their build in their names, in letters behind an
// underscore: "c_t.l" holds objects for the compact instruction set. A map has a row for each such
// rule, a line of text in its file:
//
//     # pattern  decoration      alias
//     *_t*       $IEEE1$FINCH_ISAv1
//     fj_*       $IEEE1$IEEEJ    fz
//
// The attributes of all rows whose pattern matches a name, together, are those of the library. In
// a pattern "*" stands for any run of characters and "?" for any one. The alias is how a family of
// libraries is called whatever its build; linkers ask for it.
#pragma once

#include <cstdint>
#include <cstdio>

#include "alloclib/interface/region.h"
#include "attributes/interface/full_attr.h"
#include "elfext/interface/fast_array.h"
#include "platform/interface/internal_check.h"

namespace attributes {

// The texts live as long as their map's region.
struct LibraryAttributeRow {
    const char* pattern = nullptr; // never empty
    FullAttr attributes;           // of the row's decoration
    const char* alias = nullptr;   // null if the row has none
};

class LibraryAttributeMap {
public:
    // Rows are added in blocks of so many.
    static constexpr uint32_t GrowthStep = 32;

    // An empty map. `region` is not null, holds all of the map, and must outlive it.
    explicit LibraryAttributeMap(alloclib::Region* region)
        : m_Region(checkedRegion(region)), m_Blocks(region) {}

    // How many rows there are, and how many find room without another block.
    uint32_t getCount() const { return m_Count; }
    uint32_t getCapacity() const { return m_Blocks.getSize() * GrowthStep; }

    const LibraryAttributeRow& getRow(uint32_t index) const {
        TOMEX_CHECK(index < m_Count);
        return m_Blocks[index / GrowthStep][index % GrowthStep];
    }

    // Appends a row with copies of the texts. `alias` may be null.
    void addRow(const char* pattern, const FullAttr& attributes, const char* alias);

private:
    static alloclib::Region* checkedRegion(alloclib::Region* region) {
        TOMEX_CHECK_TEXT(region != nullptr, "region != NULL");
        return region;
    }

    alloclib::Region* m_Region;
    elfext::fast_array<LibraryAttributeRow*> m_Blocks;
    uint32_t m_Count = 0;
};

// Adds the row that a line states: up to three fields between white space, the rest of it is
// nothing. Comments, lines that begin with white space and lines without a decoration add none.
// `line` ends in a NUL, is not null, and is cut into its fields.
void parseMapRow(LibraryAttributeMap& map, char* line);

// The longest line in bytes, without its end. A longer one is read in pieces, each a line itself.
inline constexpr uint32_t LongestMapLine = 4095;

// Adds the rows of a map file that is open for reading. False if nothing could be read of it.
bool readMapRows(LibraryAttributeMap& map, std::FILE* file);

// Adds the rows for the tool chain's own libraries.
void addBuiltInRows(LibraryAttributeMap& map);
inline constexpr uint32_t BuiltInRowCount = 14;

// Adds the rows of the file of that name, or the built-in ones if it cannot be read. That is not
// reported: required, since users' scripts name a map that not every host has.
void loadLibraryAttributeMap(LibraryAttributeMap& map, const char* fileName);

// True if the whole name matches the pattern. Letters are compared folded.
bool matchPattern(const char* pattern, const char* name);

// What the name of a library's file promises: all zero but for the forms of access that every
// object may use, together with the attributes of all rows that match. Only what stands before
// the path's last backslash is put aside, and not the backslash: required, so a row whose pattern
// begins with a letter is for libraries that are named without such a folder.
void attributesForName(const LibraryAttributeMap& map, const char* path, FullAttr& out);

// The alias of the first row that has one and matches, else the name itself; the map's or the
// caller's text.
const char* aliasForName(const LibraryAttributeMap& map, const char* name);

// True if the aliases of two names agree up to their first "_". Case of letters does not count.
bool sameLibraryFamily(const LibraryAttributeMap& map, const char* a, const char* b);

} // namespace attributes
