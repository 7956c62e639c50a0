// Validation: all rules in their order, and those about sections, groups, relocations and symbols.
#include "elfext/src/validation_rules.h"

#include "elfext/interface/relocation.h"
#include "elfext/src/auxiliary_state.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/memory_guard.h"

#include <algorithm>

namespace elfext {
namespace {

// --- The null section

bool checkAnySection(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return objectModule.getSectionCount() != 0 ||
           askHandler(objectModule, &ErrorHandler::sectionHeaderTableEmpty);
}

// In a file of very many sections the null section's size and link hold what does not fit into the
// ELF header.
bool hasNullDetails(const Section& section) {
    const ObjectModule& objectModule = *section.getObjectModule();
    const bool isExtended = objectModule.getSectionCount() >= SHN_LORESERVE;
    const bool isSizeNull = section.getSize() == 0 ||
                            (isExtended && section.getSize() == objectModule.getSectionCount());
    return isSizeNull && (section.getLink() == nullptr || isExtended) &&
           section.getName() == nullptr && section.getFlags() == 0 &&
           section.getUpperFlags() == 0 && section.getAddress() == 0 && section.getInfo() == 0 &&
           section.getAlignment() == 0 && section.getEntrySize() == 0 &&
           section.getFileOffset() == 0;
}

bool checkFirstSection(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    if (objectModule.getSectionCount() == 0) {
        return true;
    }
    const Section& first = *objectModule.getSection(0);
    if (first.getType() != SHT_NULL) {
        return askHandler(objectModule, &ErrorHandler::firstSectionNotNull, first.getType());
    }
    return hasNullDetails(first) || askHandler(objectModule, &ErrorHandler::nullSectionNotNull, 0U);
}

// --- Auxiliary sections

bool checkAuxiliarySections(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    for (const Section* const section : objectModule.getSections()) {
        if (!section->isAuxiliary()) {
            continue;
        }
        const bool hasSymbol = section->getHostedSymbols().getSize() != 0 ||
                               section->getHostedDynamicSymbols().getSize() != 0;
        if (hasSymbol && !askHandler(objectModule, &ErrorHandler::auxiliarySectionHasSymbol,
                                     section->getIndex())) {
            return false;
        }
        if (section->hasRelocations() &&
            !askHandler(objectModule, &ErrorHandler::auxiliarySectionHasRelocation,
                        section->getIndex())) {
            return false;
        }
    }
    return true;
}

bool checkProgramHeaders(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return objectModule.getType() != ET_REL || objectModule.getSegmentCount() == 0 ||
           askHandler(objectModule, &ErrorHandler::programHeadersInRelocatable);
}

// --- Index tables of exceptions

bool isCode(const Section* section) {
    return section != nullptr && section->getType() == SHT_PROGBITS &&
           (section->getFlags() & SHF_ALLOC) != 0 && (section->getFlags() & SHF_EXECINSTR) != 0;
}

bool checkExidx(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    for (const Section* const section : objectModule.getSections()) {
        if (section->getType() != SHT_QEL_EXIDX) {
            continue;
        }
        const bool lacksAlloc = (section->getFlags() & SHF_ALLOC) == 0;
        const bool lacksLinkOrder = (section->getFlags() & SHF_LINK_ORDER) == 0;
        if ((lacksAlloc || lacksLinkOrder) &&
            !askHandler(objectModule, &ErrorHandler::exidxFlagsBad, section->getIndex(), lacksAlloc,
                        lacksLinkOrder)) {
            return false;
        }
        if (!isCode(section->getLink()) &&
            !askHandler(objectModule, &ErrorHandler::exidxLinkBad, section->getIndex())) {
            return false;
        }
    }
    return true;
}

// --- Groups

bool checkMembers(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    for (const Section* const section : objectModule.getSections()) {
        const bool hasFlag = (section->getFlags() & SHF_GROUP) != 0;
        const Group* const group = section->getGroup();
        if (hasFlag && group == nullptr &&
            !askHandler(objectModule, &ErrorHandler::groupFlagWithoutGroup, section->getIndex())) {
            return false;
        }
        if (!hasFlag && group != nullptr && group->getSection() != nullptr &&
            !askHandler(objectModule, &ErrorHandler::groupMemberWithoutFlag, section->getIndex(),
                        group->getSection()->getIndex())) {
            return false;
        }
    }
    return true;
}

// Calls `check` with each relocation of the module, its number in its table, and the table, until
// it is false.
template <typename Check>
bool forEachRelocation(ObjectModule& objectModule, Check check) {
    for (Section* const target : objectModule.getSections()) {
        if (!target->hasRelocations()) {
            continue;
        }
        for (const RelocationShare& share : shareRelocations(*target)) {
            uint64_t number = 0;
            for (const Relocation* const relocation : share.m_Relocations) {
                const uint32_t table = share.m_Table != nullptr ? share.m_Table->getIndex() : 0;
                if (!check(*relocation, number++, table)) {
                    return false;
                }
            }
        }
    }
    return true;
}

// The section of another group whose local symbol a relocation in a group names; otherwise null.
const Section* foreignSection(const Relocation& relocation) {
    const Symbol* const symbol = relocation.getTarget();
    if (symbol == nullptr || symbol->getBinding() != STB_LOCAL ||
        symbol->getCategory() != Symbol::Category_Hosted) {
        return nullptr;
    }
    const Group* const own = relocation.getSection()->getGroup();
    const Group* const other = symbol->getSection()->getGroup();
    return own != nullptr && other != nullptr && own != other ? symbol->getSection() : nullptr;
}

bool checkGroupBounds(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return forEachRelocation(
        objectModule, [&](const Relocation& relocation, uint64_t number, uint32_t table) {
            const Section* const foreign = foreignSection(relocation);
            return foreign == nullptr ||
                   askHandler(objectModule, &ErrorHandler::relocationCrossesGroup, number, table,
                              foreign->getIndex(), relocation.getSection()->getIndex());
        });
}

bool checkRelocationTargets(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return forEachRelocation(
        objectModule, [&](const Relocation& relocation, uint64_t number, uint32_t table) {
            const Section* const target = relocation.getSection();
            return target->isRelocatable() ||
                   askHandler(objectModule, &ErrorHandler::relocationTargetNotRelocatable, number,
                              table, target->getIndex());
        });
}

// --- Symbols

uint32_t numberOf(const Symbol& symbol) {
    const ObjectModule& objectModule = *symbol.getObjectModule();
    return symbol.isDynamic() ? objectModule.getDynamicSymbolIndex(&symbol)
                              : objectModule.getSymbolIndex(&symbol);
}

uint32_t tableOf(const Symbol& symbol) {
    const ObjectModule& objectModule = *symbol.getObjectModule();
    const ObjectModule::SectionArray& tables =
        symbol.isDynamic() ? objectModule.getDynsymSections() : objectModule.getSymtabSections();
    return tables.getSize() != 0 ? tables[0]->getIndex() : 0;
}

// The symbol of a section as a whole may have the size of the section, one of a part of it no
// more.
bool checkSectionSymbol(ObjectModule& objectModule, const Symbol& symbol) {
    if (symbol.getCategory() != Symbol::Category_Hosted) {
        return askHandler(objectModule, &ErrorHandler::sectionSymbolNotInSection, numberOf(symbol),
                          symbol.isDynamic(), tableOf(symbol));
    }
    const Section& section = *symbol.getSection();
    if (symbol.getOffset() == 0) {
        return symbol.getSize() == 0 || symbol.getSize() == section.getSize() ||
               askHandler(objectModule, &ErrorHandler::sectionSymbolSizeBad, numberOf(symbol),
                          section.getIndex(), symbol.getSize(), section.getSize());
    }
    return symbol.getSize() <= section.getSize() ||
           askHandler(objectModule, &ErrorHandler::sectionSymbolSizeTooBig, numberOf(symbol),
                      section.getIndex(), symbol.getSize(), section.getSize());
}

template <typename Check>
bool forEachSymbol(ObjectModule& objectModule, Check check) {
    for (const auto* const list : {&objectModule.getSymbols(), &objectModule.getDynamicSymbols()}) {
        for (const Symbol* const symbol : *list) {
            if (!check(*symbol)) {
                return false;
            }
        }
    }
    return true;
}

bool checkSectionSymbols(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return forEachSymbol(objectModule, [&](const Symbol& symbol) {
        return symbol.getType() != STT_SECTION || checkSectionSymbol(objectModule, symbol);
    });
}

bool checkLocalSymbols(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    return forEachSymbol(objectModule, [&](const Symbol& symbol) {
        return symbol.getBinding() != STB_LOCAL ||
               symbol.getCategory() != Symbol::Category_Undefined ||
               askHandler(objectModule, &ErrorHandler::localSymbolUndefined, numberOf(symbol),
                          symbol.isDynamic());
    });
}

// The order is that in which users get to see the sentences.
constexpr ValidationRule rules[] = {
    checkAnySection,        checkFirstSection,     checkAuxiliarySections, checkProgramHeaders,
    checkSegmentOrder,      checkSectionOverlap,   checkSingleSegments,    checkExidx,
    checkMembers,           checkGroupBounds,      checkRelocationTargets, checkSectionSymbols,
    checkLocalSymbols,      checkEntrySizes,       checkSectionLengths,    checkPltRelocations,
    checkDoubleRelocations, checkLoadableSegments, checkSegmentOverlap,    checkSegmentCongruence,
    checkSectionAddresses,  checkMappedHeaders,    checkLoadableSections,  checkOtherSections,
};

// --- The form of tables

struct TableForm {
    uint32_t type;
    uint32_t RecordSizes::*entrySize;
};
constexpr TableForm tableForms[] = {
    {SHT_SYMTAB, &RecordSizes::symbol},   {SHT_DYNSYM, &RecordSizes::symbol},
    {SHT_REL, &RecordSizes::rel},         {SHT_RELA, &RecordSizes::rela},
    {SHT_GROUP, &RecordSizes::word},      {SHT_SYMTAB_SHNDX, &RecordSizes::word},
    {SHT_HASH, &RecordSizes::word},       {SHT_DYNAMIC, &RecordSizes::dynamicEntry},
    {SHT_GNU_versym, &RecordSizes::half},
};

// 0 for types whose entries may have any size.
uint32_t entrySizeOf(const Section& section) {
    for (const TableForm& form : tableForms) {
        if (form.type == section.getType()) {
            return recordSizes(section.getObjectModule()->is64Bit()).*form.entrySize;
        }
    }
    return 0;
}

} // namespace

bool checkEntrySizes(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    for (const Section* const section : objectModule.getSections()) {
        const uint32_t expected = entrySizeOf(*section);
        if (expected != 0 && section->getEntrySize() != expected &&
            !askHandler(objectModule, &ErrorHandler::entrySizeBad, section->getIndex(),
                        section->getEntrySize(), expected)) {
            return false;
        }
    }
    return true;
}

bool checkSectionLengths(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    for (const Section* const section : objectModule.getSections()) {
        const uint32_t fixed = entrySizeOf(*section);
        const uint64_t entrySize = fixed != 0 ? fixed : section->getEntrySize();
        if (section->getType() != SHT_NULL && entrySize != 0 &&
            section->getSize() % entrySize != 0 &&
            !askHandler(objectModule, &ErrorHandler::sectionLengthBad, section->getIndex(),
                        section->getSize(), entrySize)) {
            return false;
        }
    }
    return true;
}

// A system's loader goes over these relocations in one form.
bool checkPltRelocations(ObjectModule& objectModule, alloclib::Region* /*region*/) {
    bool hasForm[2] = {false, false};
    for (Section* const section : objectModule.getSections()) {
        if (!isPltOrGot(*section)) {
            continue;
        }
        for (const Relocation* const relocation : section->getRelocations()) {
            if (relocation->isDynamic()) {
                hasForm[relocation->hasAddend()] = true;
            }
        }
    }
    return !(hasForm[0] && hasForm[1]) ||
           askHandler(objectModule, &ErrorHandler::pltRelocationsMixed);
}

// Each offset is reported once.
bool checkDoubleRelocations(ObjectModule& objectModule, alloclib::Region* region) {
    for (Section* const section : objectModule.getSections()) {
        fast_array<uint64_t> offsets[2] = {fast_array<uint64_t>(region),
                                           fast_array<uint64_t>(region)};
        for (const Relocation* const relocation : section->getRelocations()) {
            offsets[relocation->isDynamic()].add(relocation->getOffset());
        }
        for (const bool isDynamic : {true, false}) {
            fast_array<uint64_t>& list = offsets[isDynamic];
            std::sort(list.begin(), list.end());
            for (uint32_t i = 1; i < list.getSize(); ++i) {
                const bool isSecond = list[i] == list[i - 1] && (i < 2 || list[i] != list[i - 2]);
                if (isSecond && !askHandler(objectModule,
                                            isDynamic ? &ErrorHandler::multipleDynamicRelocations
                                                      : &ErrorHandler::multipleStaticRelocations,
                                            list[i], section->getIndex())) {
                    return false;
                }
            }
        }
    }
    return true;
}

bool ObjectModule::validate() {
    return reportExhaustion(*this, [this] {
        if (!updateAuxiliarySections()) {
            return false;
        }
        const ScratchRegion region(1024, "Validate region");
        return std::all_of(
            std::begin(rules), std::end(rules),
            [this, &region](ValidationRule rule) { return rule(*this, region.get()); });
    });
}

} // namespace elfext
