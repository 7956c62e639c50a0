// The update of the auxiliary sections, step by step.
//
// A table that is in use stays the object that it is, since links, segments and the program itself
// may refer to it, and gets new contents. What is not in use any more is removed, what is missing
// is made. Then all texts are gathered, and when every text and every section has its place, the
// tables are filled.
#include "elfext/src/auxiliary_state.h"

#include "elfext/interface/relocation.h"
#include "elfext/src/dynamic_entries.h"
#include "elfext/src/memory_guard.h"
#include "elfext/src/removed_memory.h"
#include "elfext/src/table_needs.h"

#include <algorithm>
#include <cstring>

namespace elfext {

StringTableBuilder& AuxiliaryState::textsOf(StringTableSection* table) {
    for (TableTexts& texts : m_Texts) {
        if (texts.table == table) {
            return texts.builder;
        }
    }
    return m_Texts.emplace_back(table).builder;
}

void AuxiliaryState::setContents(Section& section, const void* bytes, uint64_t size) const {
    const bool isOtherSize = section.getContentsSize() != size;
    const uint64_t settled = section.getSettledContentsSize();
    section.setContents(size != 0 ? bytes : "", size);
    const uint64_t growth = size - std::min(size, settled);
    section.setUnsettled(growth);
    if (isOtherSize && !isPlaced(section)) {
        section.forgetFileOffset();
    }
}

namespace {

bool areSameText(const char* left, const char* right) {
    return std::strcmp(left != nullptr ? left : "", right != nullptr ? right : "") == 0;
}

template <typename Kind>
Kind* firstOf(const ObjectModule::SectionArray& sections) {
    return sections.getSize() != 0 ? static_cast<Kind*>(sections[0]) : nullptr;
}

// The attributes section that is made anew: one that nobody understood only if there is no other,
// and something to say.
BuildAttributesSection* findAttributesSection(ObjectModule& objectModule) {
    const ObjectModule::SectionArray& sections = objectModule.getBuildAttributesSections();
    for (Section* const section : sections) {
        auto* const attributes = static_cast<BuildAttributesSection*>(section);
        if (attributes->isUnderstood()) {
            return attributes;
        }
    }
    return needsAttributesSection(objectModule) ? firstOf<BuildAttributesSection>(sections)
                                                : nullptr;
}

} // namespace

class AuxiliaryUpdate {
public:
    AuxiliaryUpdate(ObjectModule& objectModule, alloclib::Region* region)
        : m_Module(objectModule), m_State(objectModule), m_Signatures(region) {}

    void run() {
        loadRelocations();
        findTables();
        settleDynamic(m_State, m_Module.m_SettledDynamic);
        removeStraySections(m_State);
        removeUnneededTables(m_State);
        findTables();
        m_State.m_RemovedMemory = findFreeMemory(m_Module.m_RemovedMemory, m_Module.m_Sections);
        makeTables();
        settleSignatures();
        putLocalsFirst(m_Module.m_Symbols);
        putLocalsFirst(m_Module.m_DynamicSymbols);
        if (updateGnuHash(m_State, m_Module.m_DynamicSymbols)) {
            m_Module.m_SymbolListsSorted = false;
        }
        numberSignatures();
        if (m_IsOrderOpen) {
            orderSections();
        }
        startTexts();
        addTexts();
        fill();
        m_Module.m_RemovedMemory.clear();
    }

private:
    // They are made of the tables that are about to be replaced.
    void loadRelocations() {
        for (Section* const section : m_Module.m_Sections) {
            section->getRelocations();
        }
    }

    // --- What is there

    // Asked again when some of the tables have gone.
    void findTables() {
        m_State.m_Symtab = firstOf<SymbolTableSection>(m_Module.m_SymtabSections);
        m_State.m_Dynsym = firstOf<SymbolTableSection>(m_Module.m_DynsymSections);
        m_State.m_Dynamic = firstOf<DynamicSection>(m_Module.m_DynamicSections);
        m_State.m_SectionNames = m_Module.getSectionNameTable();
        m_State.m_SymbolNames = linkedStrings(m_State.m_Symtab);
        m_State.m_DynamicNames = nullptr;
        m_State.m_GnuHash = nullptr;
        for (const Section* const user : {static_cast<const Section*>(m_State.m_Dynsym),
                                          static_cast<const Section*>(m_State.m_Dynamic),
                                          firstOf<const Section>(m_Module.m_PreemptionMapSections),
                                          firstOf<const Section>(m_Module.m_VerdefSections),
                                          firstOf<const Section>(m_Module.m_VerneedSections)}) {
            if (m_State.m_DynamicNames == nullptr) {
                m_State.m_DynamicNames = linkedStrings(user);
            }
        }
        for (Section* const section : m_Module.m_Sections) {
            const bool isOfSymbols =
                section->getType() == SHT_GNU_HASH && section->getLink() == m_State.m_Dynsym;
            if (isOfSymbols && m_State.m_Dynsym != nullptr && m_State.m_GnuHash == nullptr) {
                m_State.m_GnuHash = section;
            }
        }
        m_State.m_Attributes = findAttributesSection(m_Module);
    }

    // --- What is missing

    void makeTables() {
        makeDynamicTables();
        makeRelocationTables();
        for (Group* const group : m_Module.m_Groups) {
            if (group->getSection() == nullptr) {
                group->setSection(made(m_Module.createGroupSection(group->getName())));
            }
        }
        if (m_Module.m_DebugOverlayRecords.getSize() != 0 &&
            m_Module.m_DebugOverlaySections.getSize() == 0) {
            made(m_Module.createDebugOverlaySection());
        }
        if (m_State.m_Attributes == nullptr && needsAttributesSection(m_Module)) {
            m_State.m_Attributes = made(m_Module.createBuildAttributesSection());
        }
        makeStaticSymbols();
        makeSectionNames();
        setServices();
    }

    template <typename Kind>
    Kind* made(Kind* section) {
        section->setIsMadeByUpdate(true);
        section->setAlignment(m_State.m_Sizes.address);
        m_IsOrderOpen = true;
        return section;
    }
    template <typename Kind>
    Kind* madeForLoading(Kind* section) {
        section->setFlags(section->getFlags() | SHF_ALLOC);
        return made(section);
    }

    void makeStaticSymbols() {
        if (m_State.m_Symtab == nullptr && needsStaticSymbols(m_Module)) {
            m_State.m_Symtab = made(m_Module.createSymbolTableSection(SHT_SYMTAB, ".symtab"));
            TOMEX_CHECK_TEXT(m_Module.m_SymtabSections.getSize() == 1,
                             "m_SymtabSections.getSize() == 1");
        }
        if (m_State.m_Symtab != nullptr && m_State.m_SymbolNames == nullptr) {
            m_State.m_SymbolNames = made(m_Module.createStringTableSection(".strtab"));
            m_State.m_SymbolNames->setAlignment(1);
        }
        makeIndexTable(m_State.m_Symtab, m_Module.m_Symbols);
    }

    void makeIndexTable(SymbolTableSection* table, const ObjectModule::SymbolArray& symbols) {
        if (table == nullptr || table->getShndxSection() != nullptr ||
            m_Module.getSectionCount() < SHN_LORESERVE) {
            return;
        }
        const bool isNeeded = std::any_of(symbols.begin(), symbols.end(), [](const Symbol* symbol) {
            return symbol->getCategory() == Symbol::Category_Hosted;
        });
        if (isNeeded) {
            table->setShndxSection(made(m_Module.createShndxSection()));
        }
    }

    void makeSectionNames() {
        const bool isNeeded =
            std::any_of(m_Module.m_Sections.begin(), m_Module.m_Sections.end(),
                        [](const Section* section) { return section->getName() != nullptr; });
        if (m_State.m_SectionNames == nullptr && isNeeded) {
            m_State.m_SectionNames = made(m_Module.createStringTableSection(".shstrtab"));
            m_State.m_SectionNames->setAlignment(1);
        }
    }

    void makeDynamicTables() {
        if (m_State.m_Dynsym == nullptr && needsDynamicSymbols(m_Module)) {
            m_State.m_Dynsym =
                madeForLoading(m_Module.createSymbolTableSection(SHT_DYNSYM, ".dynsym"));
            m_State.m_Dynsym->setHashSection(madeForLoading(m_Module.createHashSection()));
        }
        if (m_State.m_Dynamic == nullptr && needsDynamicSection(m_Module)) {
            m_State.m_Dynamic = madeForLoading(m_Module.createDynamicSection());
            m_State.m_Dynamic->setFlags(SHF_ALLOC | SHF_WRITE);
            settleDynamic(m_State, m_Module.m_SettledDynamic);
        }
        if (m_Module.m_Preemptions.getSize() != 0 &&
            m_Module.m_PreemptionMapSections.getSize() == 0 && tellsPreemptionMap(m_State)) {
            madeForLoading(m_Module.createPreemptionMapSection());
        }
        makeVersionTables();
        const bool needsNames = m_State.m_Dynsym != nullptr || m_State.m_Dynamic != nullptr ||
                                m_Module.m_PreemptionMapSections.getSize() != 0 ||
                                hasVersions(m_Module);
        if (m_State.m_DynamicNames == nullptr && needsNames) {
            m_State.m_DynamicNames = madeForLoading(m_Module.createStringTableSection(".dynstr"));
            m_State.m_DynamicNames->setAlignment(1);
        }
        makeIndexTable(m_State.m_Dynsym, m_Module.m_DynamicSymbols);
    }

    void makeVersionTables() {
        const bool hasDefinitions = m_Module.getFileVersionDefinition() != nullptr ||
                                    m_Module.getFirstSymbolVersionDefinition() != nullptr;
        if (hasDefinitions && m_Module.m_VerdefSections.getSize() == 0) {
            madeForLoading(m_Module.createVerdefSection());
        }
        if (m_Module.getFirstSymbolVersionRequirement() != nullptr &&
            m_Module.m_VerneedSections.getSize() == 0) {
            madeForLoading(m_Module.createVerneedSection());
        }
        if (hasVersions(m_Module) && m_State.m_Dynsym != nullptr &&
            m_Module.m_VersymSections.getSize() == 0) {
            madeForLoading(m_Module.createVersymSection());
        }
    }

    void makeRelocationTables() {
        const uint32_t count = m_Module.getSectionCount(); // the new ones are not relocated
        for (uint32_t i = 0; i < count; ++i) {
            Section& target = *m_Module.getSection(i);
            for (const RelocationShare& share : shareRelocations(target)) {
                if (share.m_Table == nullptr) {
                    const Relocation& first = *share.m_Relocations.front();
                    made(
                        makeRelocationTable(m_State, target, first.isDynamic(), first.hasAddend()));
                }
            }
        }
    }

    // The null section is made where there is none.
    void orderSections() {
        const uint32_t count = m_Module.getSectionCount();
        m_Module.imposeSectionOrder();
        if (m_Module.getSectionCount() != count) {
            m_Module.getSection(0)->setIsMadeByUpdate(true);
        }
    }

    // --- Symbols

    // Finds the symbol that tells the name of each group, or makes one.
    void settleSignatures() {
        for (Group* const group : m_Module.m_Groups) {
            const auto* const section = static_cast<GroupSection*>(group->getSection());
            const uint32_t index = section->getSignatureSymbolIndex();
            Symbol* symbol = index != 0 && index <= m_Module.m_Symbols.getSize()
                                 ? m_Module.m_Symbols[index - 1]
                                 : nullptr;
            if (symbol == nullptr || !areSameText(symbol->getName(), group->getSignature())) {
                symbol = findSignature(group->getSignature());
            }
            group->getSection()->setName(group->getName()); // before texts are gathered
            m_Signatures.add(symbol);
        }
        // Made last: each new symbol puts the sorted lists out of date.
        for (uint32_t i = 0; i < m_Signatures.getSize(); ++i) {
            if (m_Signatures[i] == nullptr) {
                m_Signatures[i] = createSignature(m_Module.m_Groups[i]->getSignature());
            }
        }
    }

    Symbol* findSignature(const char* signature) {
        SymbolList found;
        m_Module.findSymbols(signature, found);
        return found.getSize() != 0 ? found[0] : nullptr;
    }

    Symbol* createSignature(const char* signature) {
        SymbolFields fields;
        fields.m_Name = signature;
        fields.m_Binding = STB_LOCAL;
        return m_Module.createAbsoluteSymbol(fields, 0);
    }

    void numberSignatures() {
        for (uint32_t i = 0; i < m_Module.m_Groups.getSize(); ++i) {
            static_cast<GroupSection*>(m_Module.m_Groups[i]->getSection())
                ->setSignatureSymbolIndex(m_Module.getSymbolIndex(m_Signatures[i]));
        }
    }

    // Required by the format: a symbol table tells where its global symbols start.
    void putLocalsFirst(ObjectModule::SymbolArray& symbols) {
        const auto isLocal = [](const Symbol* symbol) { return symbol->getBinding() == STB_LOCAL; };
        if (!std::is_partitioned(symbols.begin(), symbols.end(), isLocal)) {
            std::stable_partition(symbols.begin(), symbols.end(), isLocal);
            m_Module.m_SymbolListsSorted = false;
        }
    }

    // --- Contents

    // A table whose offsets others know keeps its bytes. Nobody knows those that layout refused.
    void startTexts() {
        for (StringTableSection* const table :
             {m_State.m_SectionNames, m_State.m_SymbolNames, m_State.m_DynamicNames,
              linkedStrings(m_State.m_Dynamic)}) {
            if (table != nullptr) {
                m_State.textsOf(table);
            }
        }
        for (auto& [table, builder] : m_State.m_Texts) {
            if (m_State.isPlaced(*table) || hasOtherUsers(table)) {
                const Buffer& bytes = std::as_const(*table).getLoadedContents();
                builder.keep(
                    {bytes.getData(), static_cast<size_t>(table->getSettledContentsSize())});
            }
        }
    }

    bool hasOtherUsers(const StringTableSection* table) const {
        const Section* const users[] = {m_State.m_Symtab, m_State.m_Dynsym, m_State.m_Dynamic};
        return std::any_of(m_Module.m_Sections.begin(), m_Module.m_Sections.end(),
                           [&users, table](const Section* section) {
                               return section->getLink() == table &&
                                      std::find(std::begin(users), std::end(users), section) ==
                                          std::end(users);
                           });
    }

    void setServices() {
        for (Section* const section : m_Module.m_StringTableSections) {
            auto* const table = static_cast<StringTableSection*>(section);
            table->setServesSectionNames(false);
            table->setServesSymbols(false);
            table->setServesDynamicSymbols(false);
            table->setServesDynamicSection(false);
        }
        if (m_State.m_SectionNames != nullptr) {
            m_State.m_SectionNames->setServesSectionNames(true);
        }
        if (m_State.m_Symtab != nullptr && m_State.m_SymbolNames != nullptr) {
            m_State.m_SymbolNames->setServesSymbols(true);
        }
        if (m_State.m_Dynsym != nullptr && m_State.m_DynamicNames != nullptr) {
            m_State.m_DynamicNames->setServesDynamicSymbols(true);
        }
        StringTableSection* const ofDynamic = m_State.dynamicSectionTexts();
        if (m_State.m_Dynamic != nullptr && ofDynamic != nullptr) {
            ofDynamic->setServesDynamicSection(true);
        }
    }

    void addTexts() {
        if (m_State.m_SectionNames != nullptr) {
            StringTableBuilder& names = m_State.textsOf(m_State.m_SectionNames);
            for (const Section* const section : m_Module.m_Sections) {
                names.add(section->getName());
            }
        }
        addSymbolTexts(m_State);
        addVersionTexts(m_State);
        addDynamicTexts(m_State);
    }

    void fill() {
        for (auto& [table, builder] : m_State.m_Texts) {
            builder.build();
            m_State.setContents(*table, builder.bytes().data(), builder.bytes().size());
        }
        nameSections();
        for (SymbolTableSection* const table : {m_State.m_Symtab, m_State.m_Dynsym}) {
            if (table != nullptr) {
                fillSymbolTable(m_State, *table);
            }
        }
        fillRelocations(m_State);
        fillGroups(m_State);
        fillDebugOverlay(m_State);
        fillSegmentNotes(m_State);
        fillBuildAttributes(m_State);
        fillVersions(m_State);
        fillPreemptionMap(m_State);
        fillDynamic(m_State);
        settleNullSection();
    }

    // In a file of very many sections the null section tells their number and that of the names'
    // table, which do not fit into the ELF header. What a file said there follows the sections.
    void settleNullSection() {
        const uint32_t count = m_Module.getSectionCount();
        Section* const first = count != 0 ? m_Module.getSection(0) : nullptr;
        if (first == nullptr || first->getType() != SHT_NULL ||
            m_Module.getSectionHeaderCount() != 0 || first->getSize() < SHN_LORESERVE) {
            return;
        }
        Section* const names = m_State.m_SectionNames;
        first->setSize(count >= SHN_LORESERVE ? count : 0);
        first->setLink(names != nullptr && names->getIndex() >= SHN_LORESERVE ? names : nullptr);
    }

    void nameSections() {
        if (m_State.m_SectionNames != nullptr) {
            const StringTableBuilder& names = m_State.textsOf(m_State.m_SectionNames);
            for (Section* const section : m_Module.m_Sections) {
                section->setNameOffset(names.offsetOf(section->getName()));
            }
        }
    }

    ObjectModule& m_Module;
    AuxiliaryState m_State;
    fast_array<Symbol*> m_Signatures; // by group
    bool m_IsOrderOpen = false;       // a section has been made
};

bool ObjectModule::updateAuxiliarySections() {
    TOMEX_CHECK(!m_IndexesFrozen);
    if (!m_AuxiliarySectionsUpToDate) {
        const ScratchRegion region(1024, "updateAuxiliarySections() region");
        m_AuxiliarySectionsUpToDate = reportExhaustion(*this, [this, &region] {
            AuxiliaryUpdate(*this, region.get()).run();
            return true;
        });
    }
    return m_AuxiliarySectionsUpToDate;
}

} // namespace elfext
