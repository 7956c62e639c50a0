#include "elfext/src/relocation_loader.h"

#include "elfext/src/file_layout.h"

#include <algorithm>

namespace elfext {
namespace {

// Entries with a symbol that is not there have been reported when the file was read.
template <typename Layout>
void loadTable(Section& section, const RelocationTable& table) {
    const bool hasAddends = table.m_Section->hasAddends();
    const uint64_t entrySize = hasAddends ? Layout::sizes.rela : Layout::sizes.rel;
    const Buffer& contents =
        const_cast<const RelocationSection*>(table.m_Section)->getLoadedContents();
    const uint64_t count = contents.getSize() / entrySize;
    section.reserveRelocations(static_cast<uint32_t>(count));
    for (uint64_t i = 0; i < count; ++i) {
        const Elf64_Rela entry = Layout::relocation(contents.getData() + i * entrySize, hasAddends);
        if (entry.symbol >= table.m_Symbols.m_Count) {
            continue;
        }
        Section::RelocationAsRead relocation;
        relocation.m_Offset = entry.r_offset;
        relocation.m_Addend = entry.r_addend;
        relocation.m_Target = table.m_Symbols.m_Symbols[entry.symbol];
        relocation.m_TableNumber = table.m_Section->getTableNumber();
        relocation.m_Type = static_cast<uint16_t>(entry.type);
        relocation.m_UpperType = static_cast<uint16_t>(entry.type >> 16);
        relocation.m_HasAddend = hasAddends;
        relocation.m_IsDynamic = entry.symbol == 0 && table.m_Section->isDynamic();
        section.addRelocationAsRead(relocation);
    }
}

} // namespace

void TargetRelocationLoader::addTable(RelocationTable* table) {
    (m_Last != nullptr ? m_Last->m_Next : m_First) = table;
    m_Last = table;
    m_Count = std::min<uint32_t>(m_Count + 1, UINT16_MAX);
    table->m_Section->setTableNumber(static_cast<uint16_t>(m_Count));
}

void TargetRelocationLoader::loadRelocations(Section& section) {
    withLayout(m_Is64, m_IsLittleEndian, [&](auto layout) {
        for (const RelocationTable* table = m_First; table != nullptr; table = table->m_Next) {
            loadTable<decltype(layout)>(section, *table);
        }
    });
}

} // namespace elfext
