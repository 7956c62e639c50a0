// The names of the file name table, shared by all members that refer to it.
//
// A member refers to an offset in the table, and its name runs from there to the end of that entry.
// Any number of members may refer to any places, so names are not copied one by one: one copy of
// the table serves all, with its entries' ends made NULs, and memory stays in proportion to the
// file.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "alloclib/interface/region.h"

namespace arlib {

class LongNames {
public:
    // Copies the table into the region.
    LongNames(std::string_view table, alloclib::Region* region);

    // The name at an offset inside the table, without folders. It is NUL-terminated and lives as
    // long as the region.
    std::string_view nameAt(uint32_t offset) const;

private:
    // A stretch of the table in which all names end at the same place.
    struct Stretch {
        uint32_t end = 0;       // where its names end
        uint32_t leafStart = 0; // behind its last "/" or "\"; 0 if it has none
    };

    const char* m_Text;
    std::vector<Stretch> m_Stretches;
};

} // namespace arlib
