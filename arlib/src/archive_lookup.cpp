// How an archive finds its members by name, and its symbols.

#include <cstring>

#include "arlib/interface/archive.h"
#include "arlib/interface/symbol.h"
#include "arlib/src/member_index.h"
#include "elfext/interface/sort.h"

namespace arlib {

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

bool Archive::hasNamesakes(const ArchiveMember* member) {
    memberIndex();
    return MemberIndex::hasNamesakes(member);
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

ArchiveMember* Archive::findFirstMember(const char* name) {
    const NameEntry* entry = memberIndex().find(name);
    ArchiveMember* member = entry == nullptr ? nullptr : entry->first;
    while (member != nullptr && member->isAuxiliary()) {
        member = MemberIndex::nextOfName(member);
    }
    return member;
}

ArchiveMember* Archive::findUnchangedMember(const char* name) {
    NameEntry* entry = memberIndex().find(name);
    return entry == nullptr ? nullptr : MemberIndex::firstUnchanged(*entry);
}

namespace {

int compareByName(const void* left, const void* right, void*) {
    const auto* leftSymbol = *static_cast<const Symbol* const*>(left);
    const auto* rightSymbol = *static_cast<const Symbol* const*>(right);
    return std::strcmp(leftSymbol->getName(), rightSymbol->getName());
}

void fillSorted(const elfext::fast_array<Symbol*>& symbols, elfext::fast_array<Symbol*>& sorted) {
    sorted = symbols;
    if (sorted.getSize() > 1) {
        elfext::mergeSort(&sorted[0], sorted.getSize(), sizeof(Symbol*), compareByName, nullptr);
    }
}

} // namespace

// Sorting waits for the first who asks: most runs never look a symbol up.
void Archive::sortSymbols() {
    loadSymbols();
    if (m_SortedSymbolsUpToDate) {
        return;
    }
    fillSorted(m_Symbols, m_SortedSymbols);
    for (ArchiveMember* member : m_ArchiveMembers) {
        if (MemberSymbols* lists = member->m_SymbolLists) {
            fillSorted(lists->m_Symbols, lists->m_SortedSymbols);
        }
    }
    m_SortedSymbolsUpToDate = true;
}

void Archive::findSymbols(const char* name, SymbolList& result) {
    sortSymbols();
    const auto comparedTo = [this](uint32_t index, const char* wanted) {
        return std::strcmp(m_SortedSymbols[index]->getName(), wanted);
    };
    uint32_t first = 0;
    uint32_t high = m_SortedSymbols.getSize();
    while (first < high) {
        const uint32_t middle = first + (high - first) / 2;
        if (comparedTo(middle, name) < 0) {
            first = middle + 1;
        } else {
            high = middle;
        }
    }
    uint32_t end = first;
    while (end < m_SortedSymbols.getSize() && comparedTo(end, name) == 0) {
        ++end;
    }
    result.setSize(end - first);
    for (uint32_t i = first; i < end; ++i) {
        result.set(i - first, m_SortedSymbols[i]);
    }
}

} // namespace arlib
