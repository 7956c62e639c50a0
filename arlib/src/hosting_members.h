// The members that define symbols, with their names: what a new symbol table is made of.
//
// An archive may have a hundred thousand of them, most with a few names. So they have no growing
// lists of their own: all members are asked with one and the same list, and what it held is kept in
// a block of just that size. All of it lives in the region of the table's making.
#pragma once

#include <cstdint>

#include "arlib/interface/symbol_name_list.h"
#include "elfext/interface/fast_array.h"

namespace arlib {

class Archive;
class ArchiveMember;

struct HostingMember {
    ArchiveMember* member = nullptr;
    SymbolNames names;
    uint64_t fingerprint = 0;                   // of the names, whatever their order
    const MarkerTexts::Text* markers = nullptr; // what its markers state
    bool knowsMarkers = false;                  // that they are all there are
};

class HostingMembers {
public:
    explicit HostingMembers(alloclib::Region* scratch) : m_Members(scratch) {}

    // Lists those of an archive, in its order. A member whose symbols cannot be read is reported
    // and is none; if the handler says to stop, those found so far are taken.
    void collect(Archive& archive);

    // Appends a member. The list is not kept, but its region must be this one's, or outlive it.
    void add(ArchiveMember* member, const SymbolNameList& list, uint64_t fingerprint);

    uint32_t getSize() const { return m_Members.getSize(); }
    const HostingMember& get(uint32_t index) const { return m_Members[index]; }
    // The names of the member of that index; they live as long as the region.
    SymbolNames namesOf(uint32_t index) const { return m_Members[index].names; }

private:
    elfext::fast_array<HostingMember> m_Members;
};

} // namespace arlib
