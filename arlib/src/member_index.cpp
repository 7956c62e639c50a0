#include "arlib/src/member_index.h"

#include <new>
#include <string>

#include "arlib/src/name_hash.h"
#include "platform/interface/letter_case.h"

namespace arlib {
namespace {

std::string folded(const char* name) {
    std::string result(name);
    for (char& c : result) {
        c = platform::foldCase(c);
    }
    return result;
}

} // namespace

MemberIndex::MemberIndex(alloclib::Region* region)
    : m_Region(region), m_Entries(region, &nameHash) {
}

NameEntry* MemberIndex::find(const char* name) const {
    const std::string key = folded(name);
    NameEntry* const* entry = m_Entries.find(elfext::Stringlett(key.c_str()));
    return entry == nullptr ? nullptr : *entry;
}

void MemberIndex::add(ArchiveMember* member) {
    NameEntry* entry = find(member->getName());
    if (entry == nullptr) {
        const std::string key = folded(member->getName());
        entry = new (m_Region->Alloc(sizeof(NameEntry), alignof(NameEntry), "arlib::NameEntry"))
            NameEntry();
        m_Entries.set(elfext::Stringlett(alloclib::copyString(*m_Region, key)), entry);
    }
    member->m_NameEntry = entry;
    link(member, entry->last);
    if (entry->firstUnchanged == nullptr) {
        entry->firstUnchanged = member;
    }
}

void MemberIndex::link(ArchiveMember* member, ArchiveMember* predecessor) {
    NameEntry& entry = *member->m_NameEntry;
    ArchiveMember* next = predecessor == nullptr ? entry.first : predecessor->m_NextOfName;
    member->m_PreviousOfName = predecessor;
    member->m_NextOfName = next;
    (predecessor == nullptr ? entry.first : predecessor->m_NextOfName) = member;
    (next == nullptr ? entry.last : next->m_PreviousOfName) = member;
}

void MemberIndex::moveBehind(ArchiveMember* member, ArchiveMember* predecessor) {
    NameEntry& entry = *member->m_NameEntry;
    remove(member);
    member->m_NameEntry = &entry;
    link(member, predecessor);
    entry.firstUnchanged = entry.first;
}

void MemberIndex::remove(ArchiveMember* member) {
    NameEntry& entry = *member->m_NameEntry;
    ArchiveMember* next = member->m_NextOfName;
    ArchiveMember* previous = member->m_PreviousOfName;
    (previous == nullptr ? entry.first : previous->m_NextOfName) = next;
    (next == nullptr ? entry.last : next->m_PreviousOfName) = previous;
    if (entry.firstUnchanged == member) {
        entry.firstUnchanged = next;
    }
    member->m_NameEntry = nullptr;
}

ArchiveMember* MemberIndex::firstUnchanged(NameEntry& entry) {
    ArchiveMember* member = entry.firstUnchanged;
    while (member != nullptr && (member->isChanged() || member->isAuxiliary())) {
        member = member->m_NextOfName;
    }
    entry.firstUnchanged = member;
    return member;
}

} // namespace arlib
