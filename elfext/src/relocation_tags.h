// What a dynamic section says of the tables of relocations in memory.
//
// Three groups of tags tell the loader of a stretch of memory with relocations each: where it
// starts, how long it is, and for two of them how many of the relocations at its start only add the
// address that the file is loaded at. A stretch may consist of several tables, one behind the
// other. Tables shrink and go when relocations go. What is left between two of them is zero, which
// is a relocation that does nothing.
#pragma once

#include "elfext/interface/elf_constants.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace elfext {

class AuxiliaryState;
class RelocationSection;
struct DynamicEntry;

// The tags that tell of a stretch, DT_NULL for none. The form is the size of a relocation or, for
// calls between files, the address tag of the kind of relocations.
struct RelocationTagGroup {
    uint32_t address;
    uint32_t size;
    uint32_t form;
    uint32_t count;
};
inline constexpr RelocationTagGroup relocationTagGroups[] = {
    {DT_RELA, DT_RELASZ, DT_RELAENT, DT_RELACOUNT},
    {DT_REL, DT_RELSZ, DT_RELENT, DT_RELCOUNT},
    {DT_JMPREL, DT_PLTRELSZ, DT_PLTREL, DT_NULL},
};

class RelocationTags {
public:
    // Takes note of the tables that the tags among these entries tell of, before any of them
    // changes.
    void note(const AuxiliaryState& state, const std::vector<DynamicEntry>& entries);
    // Looks at them again, when all relocations have their tables. May be called at every update:
    // what counts is the difference to what was noted.
    void settle(const AuxiliaryState& state);

    // What is now the value of a tag that had `value`; nothing if the tag has to go.
    std::optional<uint64_t> valueOf(uint64_t tag, uint64_t value) const;

private:
    struct Table {
        RelocationSection* section;
        uint64_t size;
        uint32_t firstType; // that of its first relocation
    };
    struct Extent {
        uint64_t address = 0;
        uint64_t size = 0;
        uint64_t count = 0; // of relocations at its start
    };
    struct Stretch {
        size_t group = 0;           // of tags
        Extent noted;               // as the tags say
        uint64_t relativeCount = 0; // as the tables said
        std::vector<Table> tables;
        bool isCut = false; // a part of its memory has been removed
        // What the last look has shown.
        bool hasChanged = false;
        bool isGone = false;
        Extent present;

        bool contains(uint64_t place) const {
            return place == noted.address ||
                   (place > noted.address && place - noted.address < noted.size);
        }
    };

    static const Table* findFirst(const Stretch& stretch);
    static uint64_t countRelative(const Stretch& stretch);
    static void measure(Stretch& stretch);

    std::vector<Stretch> m_Stretches;
};

} // namespace elfext
