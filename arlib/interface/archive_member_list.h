// The members that a query found. The entries stay their archive's.
#pragma once

#include <cstdint>

#include "elfext/interface/inline_list.h"
#include "platform/interface/internal_check.h"

namespace arlib {

class ArchiveMember;

class ArchiveMemberList : public elfext::inline_list<ArchiveMember, 3> {
public:
    ArchiveMember* get(uint32_t index) const {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(entry(index) != nullptr, "member != NULL");
        return entry(index);
    }
    void set(uint32_t index, ArchiveMember* member) {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(member != nullptr, "member != NULL");
        setEntry(index, member);
    }
};

} // namespace arlib
