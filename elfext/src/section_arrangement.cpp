// The order of sections that linkers expect.
//
// The format wants the null section first, and a group in front of its members. The rest is custom:
// relocations stand behind what they relocate, symbols and names last.
#include "elfext/interface/object_module.h"
#include "elfext/src/memory_guard.h"

namespace elfext {
namespace {

enum Rank : uint32_t { Rank_Null, Rank_Group, Rank_Other, Rank_Symbols, Rank_Count };

bool isStaticTable(const Section& section) {
    const RelocationSection* const table = section.asRelocationSection();
    return table != nullptr && !table->isDynamic() && (table->getFlags() & SHF_ALLOC) == 0;
}

Rank rankOf(const Section& section) {
    switch (section.getType()) {
    case SHT_NULL:
        return section.getIndex() == 0 ? Rank_Null : Rank_Other;
    case SHT_GROUP:
        return Rank_Group;
    case SHT_SYMTAB:
    case SHT_SYMTAB_SHNDX:
        return Rank_Symbols;
    case SHT_STRTAB: {
        const auto& table = static_cast<const StringTableSection&>(section);
        const bool isOfSymbols = table.servesSymbols() || table.servesSectionNames();
        return isOfSymbols && (table.getFlags() & SHF_ALLOC) == 0 ? Rank_Symbols : Rank_Other;
    }
    default:
        return Rank_Other;
    }
}

// Appends a section and the tables of its relocations, unless their target is one itself: then the
// table is listed where it stands.
void appendWithTables(ObjectModule::SectionArray& order, Section* section) {
    order.add(section);
    if (isStaticTable(*section)) {
        return;
    }
    for (Section* const table : section->getRelocationSections()) {
        if (isStaticTable(*table)) {
            order.add(table);
        }
    }
}

// True if the section is listed together with its target.
bool followsTarget(const Section& section) {
    if (!isStaticTable(section)) {
        return false;
    }
    const Section* const target = section.asRelocationSection()->getTarget();
    return target != nullptr && !isStaticTable(*target);
}

} // namespace

// A null section that is there is taken, wherever it stands.
void ObjectModule::imposeSectionOrder() {
    TOMEX_CHECK(!m_IndexesFrozen);
    if (m_Sections.getSize() == 0) {
        return;
    }
    uint32_t null = 0;
    while (null < m_Sections.getSize() && m_Sections[null]->getType() != SHT_NULL) {
        ++null;
    }
    setSectionIndex(null < m_Sections.getSize() ? m_Sections[null] : createNullSection(0), 0);
    const ScratchRegion region(1024, "imposeSectionOrder() temp region");
    SectionArray order(region.get());
    for (uint32_t rank = 0; rank < Rank_Count; ++rank) {
        for (Section* const section : m_Sections) {
            if (rankOf(*section) == rank && !followsTarget(*section)) {
                appendWithTables(order, section);
            }
        }
    }
    m_Sections = order;
    for (uint32_t i = 0; i < m_Sections.getSize(); ++i) {
        m_Sections[i]->m_Index = i;
    }
}

} // namespace elfext
