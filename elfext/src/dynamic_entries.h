// The entries of the dynamic section, tags with their values, that an update starts from.
//
// Layout may refuse what an update has made, and the program may then take its changes back. So an
// update does not start from the entries that the last one has made, but from those that were read,
// laid out or set by the program, together with what they told of relocations then.
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/src/relocation_tags.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace elfext {

class AuxiliaryState;
class DynamicSection;

struct DynamicEntry {
    uint64_t tag = DT_NULL;
    uint64_t value = 0;
    const char* text = nullptr; // its place is the value, if there is one
};

struct SettledDynamicSection {
    const DynamicSection* section = nullptr;
    // All up to the one that ends the section, without those whose memory has been removed since.
    std::vector<DynamicEntry> entries;
    uint64_t slotCount = 0; // of entries that there is room for, the ending ones included
    RelocationTags relocationTags;

    // True for a section that has yet to tell everything.
    bool isNew() const { return slotCount == 0; }
};

// Makes `settled` that of the dynamic section in use, and `state.m_Settled` with it: what there is
// now, if that is not an update's. To be called before any table of relocations changes.
void settleDynamic(AuxiliaryState& state, std::unique_ptr<SettledDynamicSection>& settled);

} // namespace elfext
