#include "arlib/src/member_index.h"

#include <new>
#include <string>

#include "arlib/interface/archive.h"
#include "platform/interface/wildcard.h"

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

MemberIndex::MemberIndex(alloclib::Region* region) : m_Region(region), m_Entries(region) {
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
    while (member != nullptr && member->isChanged()) {
        member = member->m_NextOfName;
    }
    entry.firstUnchanged = member;
    return member;
}

// Look-up by name, the archive's side.

MemberIndex& Archive::memberIndex() {
    if (!m_MemberIndex) {
        m_MemberIndex = std::make_unique<MemberIndex>(m_ContainerRegion.get());
        for (ArchiveMember* member : m_ArchiveMembers) {
            m_MemberIndex->add(member);
        }
    }
    return *m_MemberIndex;
}

void Archive::addToIndex(ArchiveMember* member) {
    if (m_MemberIndex) {
        m_MemberIndex->add(member);
    }
}

void Archive::removeFromIndex(ArchiveMember* member) {
    if (m_MemberIndex) {
        m_MemberIndex->remove(member);
    }
}

void Archive::reorderInIndex(ArchiveMember* member, uint32_t newIndex) {
    if (!m_MemberIndex || !MemberIndex::hasNamesakes(member)) {
        return;
    }
    ArchiveMember* predecessor = nullptr;
    for (uint32_t i = newIndex; i-- > 0 && predecessor == nullptr;) {
        if (MemberIndex::areNamesakes(m_ArchiveMembers[i], member)) {
            predecessor = m_ArchiveMembers[i];
        }
    }
    MemberIndex::moveBehind(member, predecessor);
}

void Archive::findMembers(const char* name, ArchiveMemberList& result) {
    const NameEntry* entry = memberIndex().find(name);
    uint32_t count = 0;
    for (ArchiveMember* member = entry == nullptr ? nullptr : entry->first; member != nullptr;
         member = MemberIndex::nextOfName(member)) {
        ++count;
    }
    result.setSize(count);
    ArchiveMember* member = entry == nullptr ? nullptr : entry->first;
    for (uint32_t i = 0; i < count; ++i) {
        result.set(i, member);
        member = MemberIndex::nextOfName(member);
    }
}

ArchiveMember* Archive::findUnchangedMember(const char* name) {
    NameEntry* entry = memberIndex().find(name);
    return entry == nullptr ? nullptr : MemberIndex::firstUnchanged(*entry);
}

} // namespace arlib
