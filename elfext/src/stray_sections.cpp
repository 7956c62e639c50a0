// Removes the auxiliary sections that an update has no use for: second tables of a kind where one
// is in use, tables of what is gone, string tables that nothing refers to any more, and what an
// update has made for something that has been taken back. The rest of the module stays as it is, so
// they go by a prune like any other.
#include "elfext/src/auxiliary_state.h"

#include "elfext/src/stray_section_criteria.h"
#include "elfext/src/table_needs.h"

#include <algorithm>
#include <vector>

namespace elfext {

using elfext_src_object_module_yuk::DeleteShndxSectionPruneCriteria;
using elfext_src_object_module_yuk::DeleteStrtabSectionPruneCriteria;

namespace {

class StraySections {
public:
    explicit StraySections(const AuxiliaryState& state)
        : m_State(state), m_Module(state.m_Module) {}

    void remove() {
        addTwins();
        addTwinsOfVersions();
        addHashSections();
        addAttributesSections();
        addGroupSections();
        addRelocationTables();
        addIndexTables();
        addStringTables(); // asks which of those above go
        if (m_HasAny) {
            m_Module.prune(m_Strays);
        }
    }

private:
    void add(const Section* section) {
        m_Strays.addSection(section);
        m_HasAny = true;
    }

    // The first table of a kind is the one in use.
    void addTwins() {
        for (const auto* const list : {&m_Module.getSymtabSections(), &m_Module.getDynsymSections(),
                                       &m_Module.getDebugOverlaySections()}) {
            for (uint32_t i = 1; i < list->getSize(); ++i) {
                add((*list)[i]);
            }
        }
    }

    // Of several sections the reader takes the last one.
    void addTwinsOfVersions() {
        if (!hasVersions(m_Module)) {
            return;
        }
        for (const auto* const list :
             {&m_Module.getVerdefSections(), &m_Module.getVerneedSections(),
              &m_Module.getVersymSections()}) {
            for (uint32_t i = 0; i + 1 < list->getSize(); ++i) {
                add((*list)[i]);
            }
        }
    }

    // Those that no table of symbols in use has.
    void addHashSections() {
        const HashSection* const inUse =
            m_State.m_Dynsym != nullptr ? m_State.m_Dynsym->getHashSection() : nullptr;
        for (const Section* const section : m_Module.getHashSections()) {
            if (section != inUse) {
                add(section);
            }
        }
    }

    // Their statements are in the model, so the one in use will hold them. Sections that nobody
    // understood stay, unless one of them makes way for what the program states.
    void addAttributesSections() {
        const bool isUsedAnew =
            m_State.m_Attributes != nullptr && !m_State.m_Attributes->isUnderstood();
        for (const Section* const section : m_Module.getBuildAttributesSections()) {
            if (section != m_State.m_Attributes &&
                (isUsedAnew ||
                 static_cast<const BuildAttributesSection*>(section)->isUnderstood())) {
                add(section);
            }
        }
    }

    // Those that no group stands behind.
    void addGroupSections() {
        std::vector<const Section*> ofGroups;
        for (uint32_t i = 0; i < m_Module.getGroupCount(); ++i) {
            ofGroups.push_back(m_Module.getGroup(i)->getSection());
        }
        std::sort(ofGroups.begin(), ofGroups.end());
        for (const Section* const section : m_Module.getGroupSections()) {
            if (!std::binary_search(ofGroups.begin(), ofGroups.end(), section)) {
                add(section);
            }
        }
    }

    // Those without a target, and those whose relocations are all gone. A table that never had any
    // stays.
    void addRelocationTables() {
        for (Section* const section : m_Module.getSections()) {
            const RelocationSection* const table = section->asRelocationSection();
            if (table != nullptr && table->getTarget() == nullptr) {
                add(table);
            }
            for (const RelocationShare& share : shareRelocations(*section)) {
                if (share.m_Relocations.empty() && share.m_Table->getContentsSize() != 0) {
                    add(share.m_Table);
                }
            }
        }
    }

    void addIndexTables() {
        const auto tableOf = [](const SymbolTableSection* symbols) {
            return symbols != nullptr ? symbols->getShndxSection() : nullptr;
        };
        DeleteShndxSectionPruneCriteria criteria(tableOf(m_State.m_Symtab),
                                                 tableOf(m_State.m_Dynsym));
        for (const Section* const section : m_Module.getShndxSections()) {
            if (criteria.matchesSection(section)) {
                add(section);
            }
        }
    }

    // A string table goes only if it was in use, and if nothing that stays refers to it: programs
    // have string tables of their own.
    void addStringTables() {
        DeleteStrtabSectionPruneCriteria criteria(m_State.m_SectionNames, m_State.m_SymbolNames,
                                                  m_State.m_DynamicNames);
        std::vector<const Section*> linked;
        for (const Section* const section : m_Module.getSections()) {
            if (!m_Strays.matchesSection(section)) {
                linked.push_back(section->getLink());
            }
        }
        std::sort(linked.begin(), linked.end());
        for (const Section* const section : m_Module.getStringTableSections()) {
            const auto* const table = static_cast<const StringTableSection*>(section);
            const bool wasInUse = table->servesSectionNames() || table->servesSymbols() ||
                                  table->servesDynamicSymbols() || table->servesDynamicSection();
            if (wasInUse && criteria.matchesSection(table) && !m_State.isPlaced(*table) &&
                !std::binary_search(linked.begin(), linked.end(), table)) {
                add(table);
            }
        }
    }

    const AuxiliaryState& m_State;
    ObjectModule& m_Module;
    ManualPruneCriteria m_Strays;
    bool m_HasAny = false;
};

// What is needed of the types of tables that are made when they are. Others go with these, or for
// reasons told above.
struct TableNeed {
    uint32_t type;
    bool (*isThere)(ObjectModule& objectModule);
};
constexpr TableNeed tableNeeds[] = {
    {SHT_SYMTAB, needsStaticSymbols},
    {SHT_DYNSYM, needsDynamicSymbols},
    {SHT_HASH, needsDynamicSymbols},
    {SHT_DYNAMIC, needsDynamicSection},
    {SHT_QEL_ATTRIBUTES, needsAttributesSection},
    {SHT_QEL_PREEMPTMAP,
     [](ObjectModule& objectModule) { return objectModule.getPreemptionCount() != 0; }},
    {SHT_QEL_DEBUGOVERLAY,
     [](ObjectModule& objectModule) {
         return objectModule.getDebugOverlayRecords().getSize() != 0;
     }},
};

class UnneededTables {
public:
    explicit UnneededTables(ObjectModule& objectModule) : m_Module(objectModule) {}

    void remove() {
        const bool hasAny =
            std::any_of(m_Module.getSections().begin(), m_Module.getSections().end(), isTheUpdates);
        if (hasAny) {
            addTables();
            addStringTables();
            addNameTable();
            addNullSection();
        }
        if (m_HasAny) {
            m_Module.prune(m_Unneeded);
        }
    }

private:
    // One that the program has placed is the program's.
    static bool isTheUpdates(Section* section) {
        return section->isMadeByUpdate() && section->getAddress() == 0 &&
               section->getContainerCount() == 0;
    }
    void add(const Section* section) {
        m_Unneeded.addSection(section);
        m_HasAny = true;
    }
    bool stays(const Section* section) { return !m_Unneeded.matchesSection(section); }

    void addTables() {
        for (const TableNeed& need : tableNeeds) {
            const bool isNeeded = need.isThere(m_Module);
            for (Section* const section : m_Module.getSections()) {
                if (!isNeeded && section->getType() == need.type && isTheUpdates(section)) {
                    add(section);
                }
            }
        }
    }

    void addStringTables() {
        std::vector<const Section*> linked;
        for (const Section* const section : m_Module.getSections()) {
            if (stays(section)) {
                linked.push_back(section->getLink());
            }
        }
        std::sort(linked.begin(), linked.end());
        for (Section* const table : m_Module.getStringTableSections()) {
            if (isTheUpdates(table) && table != m_Module.getSectionNameTable() &&
                !std::binary_search(linked.begin(), linked.end(), table)) {
                add(table);
            }
        }
    }

    // The names of sections are needed for other sections.
    void addNameTable() {
        Section* const names = m_Module.getSectionNameTable();
        const auto hasName = [this, names](const Section* section) {
            return section != names && section->getName() != nullptr && stays(section);
        };
        if (names != nullptr && isTheUpdates(names) &&
            std::none_of(m_Module.getSections().begin(), m_Module.getSections().end(), hasName)) {
            add(names);
        }
    }

    void addNullSection() {
        Section* const first = m_Module.getSection(0);
        if (first->getType() == SHT_NULL && isTheUpdates(first) &&
            std::none_of(m_Module.getSections().begin() + 1, m_Module.getSections().end(),
                         [this](const Section* section) { return stays(section); })) {
            add(first);
        }
    }

    ObjectModule& m_Module;
    ManualPruneCriteria m_Unneeded;
    bool m_HasAny = false;
};

} // namespace

void removeStraySections(AuxiliaryState& state) {
    StraySections(state).remove();
}

void removeUnneededTables(AuxiliaryState& state) {
    UnneededTables(state.m_Module).remove();
}

} // namespace elfext
