// Finds the members of a name without walking the archive.
//
// Names count without regard to case. Each folded name has one entry, and the members of that name
// are linked behind it in the archive's order. The index follows members as they come, go and
// move; it costs nothing until the first look-up.
#pragma once

#include <cstdint>

#include "arlib/interface/archive_member.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/stringlett.h"

namespace arlib {

// The members of one folded name.
struct NameEntry {
    ArchiveMember* first = nullptr;
    ArchiveMember* last = nullptr;
    // No member before this one is unchanged: members change, but never change back.
    ArchiveMember* firstUnchanged = nullptr;
};

class MemberIndex {
public:
    // Both regions outlive the index; names and entries stay in them.
    explicit MemberIndex(alloclib::Region* region);

    void add(ArchiveMember* member);
    static void remove(ArchiveMember* member);

    // Puts a member behind one of the same name, or in front of all if predecessor is null.
    static void moveBehind(ArchiveMember* member, ArchiveMember* predecessor);

    // True if both have the same name.
    static bool areNamesakes(const ArchiveMember* left, const ArchiveMember* right) {
        return left->m_NameEntry == right->m_NameEntry;
    }
    static bool hasNamesakes(const ArchiveMember* member) {
        return member->m_NextOfName != nullptr || member->m_PreviousOfName != nullptr;
    }

    // The entry of a name, or null if no member ever had it.
    NameEntry* find(const char* name) const;

    static ArchiveMember* nextOfName(const ArchiveMember* member) { return member->m_NextOfName; }

    // The first member of the entry that stands as it was read, or null.
    static ArchiveMember* firstUnchanged(NameEntry& entry);

private:
    static void link(ArchiveMember* member, ArchiveMember* predecessor);

    alloclib::Region* m_Region;
    elfext::fast_hash_table<elfext::Stringlett, NameEntry*> m_Entries;
};

} // namespace arlib
