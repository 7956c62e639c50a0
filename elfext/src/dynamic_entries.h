// The entries of the dynamic section as it stands: tags with their values.
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/src/auxiliary_state.h"

#include <cstdint>
#include <vector>

namespace elfext {

struct DynamicEntry {
    uint64_t tag = DT_NULL;
    uint64_t value = 0;
    const char* text = nullptr; // its place is the value, if there is one
};

// All up to the one that ends the section, which is there. `slotCount` gets how many there is room
// for, the ending ones included.
std::vector<DynamicEntry> readDynamicEntries(const AuxiliaryState& state, uint64_t& slotCount);

} // namespace elfext
