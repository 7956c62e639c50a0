// Removal of objects from a module, the one way for all of it.
//
// First every object is asked about, then whatever cannot stand without what goes is added, and
// only then are the lists cut. What stays must not refer to what has gone:
//  - a symbol of a section that goes is not defined here any more; one that no other file could
//    define, since it is local, goes with the section;
//  - a relocation against a symbol that goes stays where it is, without a symbol;
//  - a group loses members and its section, a member its group and the flag that tells of it;
//  - links, targets and notes that lead to what has gone lead nowhere, nor do tags of the dynamic
//    section, once it is made anew;
//  - raw bytes of a segment go with the segment, debug overlay records with either section.
#include "elfext/interface/prune_criteria.h"

#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/fast_hash_set.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/relocation.h"
#include "elfext/src/memory_guard.h"
#include "elfext/src/removed_memory.h"

namespace elfext {

class Pruner {
public:
    Pruner(ObjectModule& objectModule, PruneCriteria& criteria, alloclib::Region* region)
        : m_Module(objectModule), m_Criteria(criteria), m_Sections(region), m_Segments(region),
          m_Symbols(region), m_Relocations(region), m_Groups(region), m_NeededLibraries(region),
          m_LibrarySearchPaths(region), m_Preemptions(region), m_PreemptedDlls(region),
          m_RawDataBlocks(region), m_Signatures(region) {}

    void run() {
        ask();
        addWhatCannotStand();
        noteSignatures();
        noteAddresses();
        cutReferences();
        cutLists();
        numberAnew();
    }

private:
    template <typename Kind>
    using Doomed = fast_hash_set<const Kind*>;

    struct Signature {
        GroupSection* group;
        const Symbol* symbol;
    };

    // --- Questions

    void ask() {
        for (Section* const section : m_Module.m_Sections) {
            doomIf(m_Criteria.matchesSection(section), section, m_Sections);
            for (const Relocation* const relocation : section->getRelocations()) {
                doomIf(m_Criteria.matchesRelocation(relocation), relocation, m_Relocations);
            }
        }
        for (const auto* const list : {&m_Module.m_Symbols, &m_Module.m_DynamicSymbols}) {
            for (const Symbol* const symbol : *list) {
                doomIf(m_Criteria.matchesSymbol(symbol), symbol, m_Symbols);
            }
        }
        for (const Group* const group : m_Module.m_Groups) {
            doomIf(m_Criteria.matchesGroup(group), group, m_Groups);
        }
        for (const Segment* const segment : m_Module.m_Segments) {
            doomIf(m_Criteria.matchesSegment(segment), segment, m_Segments);
        }
        askAboutDynamicRecords();
    }

    void askAboutDynamicRecords() {
        for (const NeededLibrary* const library : m_Module.m_NeededLibraries) {
            doomIf(m_Criteria.matchesNeededLibrary(library), library, m_NeededLibraries);
        }
        for (const LibrarySearchPath* const path : m_Module.m_LibrarySearchPaths) {
            doomIf(m_Criteria.matchesLibrarySearchPath(path), path, m_LibrarySearchPaths);
        }
        for (const Preemption* const preemption : m_Module.m_Preemptions) {
            doomIf(m_Criteria.matchesPreemption(preemption), preemption, m_Preemptions);
        }
        for (const Preemption* const preemption : m_Module.m_Preemptions) {
            for (const PreemptedDll* const dll : preemption->m_PreemptedDlls) {
                doomIf(m_Criteria.matchesPreemptedDll(preemption, dll), dll, m_PreemptedDlls);
            }
        }
    }

    template <typename Kind>
    static void doomIf(bool matches, const Kind* object, Doomed<Kind>& doomed) {
        if (matches) {
            doomed.add(object);
        }
    }

    template <typename Kind>
    static bool goes(const Kind* object, const Doomed<Kind>& doomed) {
        return object != nullptr && doomed.getCount() != 0 && doomed.contains(object);
    }

    // --- Consequences

    void addWhatCannotStand() {
        for (Section* const section : m_Module.m_Sections) {
            if (goes(section, m_Sections)) {
                doomBoundSymbols(section->m_HostedSymbols);
                doomBoundSymbols(section->m_HostedDynamicSymbols);
            }
        }
        for (RawDataBlock* const block : m_Module.m_RawDataBlocks) {
            doomIf(isLeftAlone(*block), block, m_RawDataBlocks);
        }
    }

    void doomBoundSymbols(const fast_array<Symbol*>& symbols) {
        for (const Symbol* const symbol : symbols) {
            doomIf(symbol->getBinding() == STB_LOCAL || symbol->getType() == STT_SECTION, symbol,
                   m_Symbols);
        }
    }

    // True if the block was in segments, and all of them go.
    bool isLeftAlone(RawDataBlock& block) const {
        const uint32_t count = block.getContainerCount();
        for (uint32_t i = 0; i < count; ++i) {
            if (!goes(dynamic_cast<const Segment*>(block.getContainer(i)), m_Segments)) {
                return false;
            }
        }
        return count != 0;
    }

    // --- References

    // Groups name their symbols by number, and numbers are about to change.
    void noteSignatures() {
        for (Section* const section : m_Module.m_GroupSections) {
            auto* const group = static_cast<GroupSection*>(section);
            const uint32_t index = group->getSignatureSymbolIndex();
            if (index != 0 && index <= m_Module.m_Symbols.getSize()) {
                m_Signatures.add({group, m_Module.m_Symbols[index - 1]});
            }
        }
    }

    // A dynamic section may tell where in memory a section was, and so may what the module has read
    // of one.
    void noteAddresses() {
        for (const Section* const section : m_Module.m_Sections) {
            const Range memory = memoryOf(*section);
            if (memory.getSize() != 0 && goes(section, m_Sections)) {
                m_Module.m_RemovedMemory.add(memory);
            }
        }
    }

    void cutReferences() {
        cutSymbols(m_Module.m_Symbols);
        cutSymbols(m_Module.m_DynamicSymbols);
        for (Section* const section : m_Module.m_Sections) {
            if (goes(section, m_Sections)) {
                section->dropDeferredContents();
                section->detach();
            } else {
                cutSection(*section);
            }
        }
        for (Group* const group : m_Module.m_Groups) {
            goes(group, m_Groups) ? disband(*group) : cutGroup(*group);
        }
        for (Segment* const segment : m_Module.m_Segments) {
            if (goes(segment, m_Segments)) {
                segment->detach();
            }
        }
        for (RawDataBlock* const block : m_Module.m_RawDataBlocks) {
            if (goes(block, m_RawDataBlocks)) {
                block->detach();
            }
        }
        for (Preemption* const preemption : m_Module.m_Preemptions) {
            cut(preemption->m_PreemptedDlls, m_PreemptedDlls);
        }
        cutOverlayRecords();
    }

    void cutSymbols(const ObjectModule::SymbolArray& symbols) {
        for (Symbol* const symbol : symbols) {
            if (goes(symbol, m_Symbols)) {
                continue;
            }
            if (goes<Symbol>(symbol->m_LinkedSymbol, m_Symbols)) {
                symbol->m_LinkedSymbol = nullptr;
            }
            if (symbol->getCategory() == Symbol::Category_Hosted &&
                goes<Section>(symbol->getSection(), m_Sections)) {
                undefine(*symbol);
            }
        }
    }

    // The list of the section goes with the section, so the symbol need not be taken out of it.
    void undefine(Symbol& symbol) {
        symbol.m_Category = Symbol::Category_Undefined;
        symbol.m_Value.m_Number = 0;
        symbol.m_Offset = 0;
        symbol.m_SymbolVersionDefinition = nullptr;
        symbol.categoryList().add(&symbol);
    }

    void cutSection(Section& section) {
        if (goes<Section>(section.m_Link, m_Sections)) {
            section.m_Link = nullptr;
        }
        if (goes<Section>(section.m_InfoSection, m_Sections)) {
            section.m_InfoSection = nullptr;
        }
        if (goes<Segment>(section.m_Segment, m_Segments)) {
            section.m_Segment = nullptr;
        }
        cut(section.m_RelocationSections, m_Sections);
        cut(section.m_DynamicRelocationSections, m_Sections);
        cut(section.m_HostedSymbols, m_Symbols);
        cut(section.m_HostedDynamicSymbols, m_Symbols);
        section.m_HostedSymbolListsSorted = false;
        cut(section.m_Relocations, m_Relocations);
        section.m_RelocationsSorted = false;
        for (Relocation* const relocation : section.m_Relocations) {
            if (goes<Symbol>(relocation->getTarget(), m_Symbols)) {
                relocation->setTarget(nullptr);
            }
        }
        if (RelocationSection* const table = section.asRelocationSection();
            table != nullptr && goes<Section>(table->getTarget(), m_Sections)) {
            table->m_Target = nullptr;
        }
        if (section.getType() == SHT_SYMTAB || section.getType() == SHT_DYNSYM) {
            cutSymbolTable(static_cast<SymbolTableSection&>(section));
        }
    }

    void cutSymbolTable(SymbolTableSection& table) {
        if (goes<Section>(table.getShndxSection(), m_Sections)) {
            table.setShndxSection(nullptr);
        }
        if (goes<Section>(table.getHashSection(), m_Sections)) {
            table.setHashSection(nullptr);
        }
    }

    static void disband(Group& group) {
        for (Section* const member : group.m_Members) {
            member->m_Group = nullptr;
            member->m_Flags &= ~uint32_t{SHF_GROUP};
        }
        group.m_Members.clear();
    }

    void cutGroup(Group& group) {
        for (Section* const member : group.m_Members) {
            if (goes(member, m_Sections)) {
                member->m_Group = nullptr;
            }
        }
        cut(group.m_Members, m_Sections);
        if (goes<Section>(group.m_Section, m_Sections)) {
            group.m_Section = nullptr;
        }
    }

    void cutOverlayRecords() {
        fast_array<DebugOverlayRecord>& records = m_Module.m_DebugOverlayRecords;
        uint32_t kept = 0;
        for (uint32_t i = 0; i < records.getSize(); ++i) {
            if (!goes<Section>(records[i].m_DebugSection, m_Sections) &&
                !goes<Section>(records[i].m_Section, m_Sections)) {
                records[kept++] = records[i];
            }
        }
        records.setSize(kept);
    }

    // --- Lists

    // What stays keeps its order.
    template <typename Kind>
    static void cut(fast_array<Kind*>& list, const Doomed<std::remove_const_t<Kind>>& doomed) {
        if (doomed.getCount() == 0) {
            return;
        }
        uint32_t kept = 0;
        for (uint32_t i = 0; i < list.getSize(); ++i) {
            if (!doomed.contains(list[i])) {
                list[kept++] = list[i];
            }
        }
        list.setSize(kept);
    }

    void cutLists() {
        for (auto* const list :
             {&m_Module.m_Sections, &m_Module.m_StringTableSections, &m_Module.m_SymtabSections,
              &m_Module.m_DynsymSections, &m_Module.m_GroupSections, &m_Module.m_HashSections,
              &m_Module.m_ShndxSections, &m_Module.m_PreemptionMapSections,
              &m_Module.m_VerdefSections, &m_Module.m_VerneedSections, &m_Module.m_VersymSections,
              &m_Module.m_DynamicSections, &m_Module.m_DebugOverlaySections,
              &m_Module.m_BuildAttributesSections}) {
            cut(*list, m_Sections);
        }
        for (auto* const list :
             {&m_Module.m_Symbols, &m_Module.m_DynamicSymbols, &m_Module.m_AbsoluteSymbols,
              &m_Module.m_CommonSymbols, &m_Module.m_UndefinedSymbols,
              &m_Module.m_AbsoluteDynamicSymbols, &m_Module.m_CommonDynamicSymbols,
              &m_Module.m_UndefinedDynamicSymbols}) {
            cut(*list, m_Symbols);
        }
        cut(m_Module.m_Groups, m_Groups);
        cut(m_Module.m_Segments, m_Segments);
        cut(m_Module.m_NeededLibraries, m_NeededLibraries);
        cut(m_Module.m_LibrarySearchPaths, m_LibrarySearchPaths);
        cut(m_Module.m_Preemptions, m_Preemptions);
        cut(m_Module.m_RawDataBlocks, m_RawDataBlocks);
        m_Module.m_SymbolListsSorted = false;
    }

    // --- Numbers and tables of what stays

    void numberAnew() {
        number(m_Module.m_Sections);
        number(m_Module.m_Symbols);
        number(m_Module.m_DynamicSymbols);
        number(m_Module.m_Groups);
        number(m_Module.m_Segments);
        for (const auto& [group, symbol] : m_Signatures) {
            const bool isThere = !goes<Symbol>(symbol, m_Symbols);
            group->setSignatureSymbolIndex(isThere ? symbol->m_Index + 1 : 0);
        }
        m_Module.forgetGroupNames();
        m_Module.m_MapSignaturesToComdatGroups.clear();
        for (Group* const group : m_Module.m_Groups) {
            if (group->isComdat()) {
                m_Module.enterComdatGroup(group);
            }
        }
        dropDetached(m_Module.m_Sections);
        dropDetached(m_Module.m_Segments);
        dropDetached(m_Module.m_RawDataBlocks);
        m_Module.m_ElfHeader.dropDetached();
        m_Module.m_SectionHeaderTable.dropDetached();
        m_Module.m_ProgramHeaderTable.dropDetached();
        m_Module.markChanged();
    }

    template <typename Kind>
    static void number(const fast_array<Kind*>& list) {
        for (uint32_t i = 0; i < list.getSize(); ++i) {
            list[i]->m_Index = i;
        }
    }

    template <typename Kind>
    static void dropDetached(const fast_array<Kind*>& list) {
        for (FileRegion* const region : list) {
            region->dropDetached();
        }
    }

    ObjectModule& m_Module;
    PruneCriteria& m_Criteria;
    Doomed<Section> m_Sections;
    Doomed<Segment> m_Segments;
    Doomed<Symbol> m_Symbols;
    Doomed<Relocation> m_Relocations;
    Doomed<Group> m_Groups;
    Doomed<NeededLibrary> m_NeededLibraries;
    Doomed<LibrarySearchPath> m_LibrarySearchPaths;
    Doomed<Preemption> m_Preemptions;
    Doomed<PreemptedDll> m_PreemptedDlls;
    Doomed<RawDataBlock> m_RawDataBlocks;
    fast_array<Signature> m_Signatures;
};

// All of its memory is of regions, so it cannot end half-way.
void ObjectModule::prune(PruneCriteria& criteria) {
    TOMEX_CHECK(!m_IndexesFrozen);
    const ScratchRegion region(1024, "Prune region");
    Pruner(*this, criteria, region.get()).run();
}

} // namespace elfext
