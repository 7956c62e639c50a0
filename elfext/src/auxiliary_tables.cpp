// The tables of symbols, relocations and groups, and the debug overlay records.
#include "elfext/src/auxiliary_state.h"

#include "elfext/interface/relocation.h"
#include "elfext/interface/version_records.h"
#include "elfext/src/gnu_hash_table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace elfext {
namespace {

// Names of tables of relocations. A name of a section is cut so that that of its table has less
// than 1,024 bytes.
constexpr size_t tableNameSize = 1024;
constexpr const char* staticTableName = ".rel%s%.1018s";
constexpr const char* dynamicTableNames[2][2] = {{".rel.dyn", ".rela.dyn"},
                                                 {".rel.plt", ".rela.plt"}};

// Sections that calls between files go through.
constexpr const char* pltAndGotPrefixes[] = {".plt", ".got"};

// Numbers of buckets of a hash table, for tables of up to as many symbols.
constexpr uint32_t bucketCounts[] = {1,   3,   17,   37,   67,   97,   131,   197,
                                     263, 521, 1031, 2053, 4099, 8209, 16411, 32771};

bool isLocal(const Symbol* symbol) {
    return symbol->getBinding() == STB_LOCAL;
}

const ObjectModule::SymbolArray& symbolsOf(const AuxiliaryState& state,
                                           const SymbolTableSection& table) {
    return table.isDynamic() ? state.m_Module.getDynamicSymbols() : state.m_Module.getSymbols();
}

uint32_t indexOf(const Symbol* symbol) {
    if (symbol == nullptr) {
        return 0;
    }
    const ObjectModule& objectModule = *symbol->getObjectModule();
    return symbol->isDynamic() ? objectModule.getDynamicSymbolIndex(symbol)
                               : objectModule.getSymbolIndex(symbol);
}

// --- Symbols

// What stands in a file: unlike the address, it keeps the bit that tells a function's instruction
// set.
uint64_t storedValue(const Symbol& symbol) {
    switch (symbol.getCategory()) {
    case Symbol::Category_Absolute:
        return symbol.getAbsoluteValue();
    case Symbol::Category_Common:
        return symbol.getCommonValue();
    case Symbol::Category_Hosted:
        return symbol.getOffset() +
               (symbol.getObjectModule()->hasAddresses() ? symbol.getSection()->getAddress() : 0);
    default:
        return symbol.getUndefinedValue();
    }
}

// The section's number where it does not fit into the symbol itself; 0 where it does.
uint32_t extendedIndex(const Symbol& symbol) {
    const uint32_t index =
        symbol.getCategory() == Symbol::Category_Hosted ? symbol.getSection()->getIndex() : 0;
    return index >= SHN_LORESERVE ? index : 0;
}

uint16_t storedIndex(const Symbol& symbol) {
    switch (symbol.getCategory()) {
    case Symbol::Category_Absolute:
        return SHN_ABS;
    case Symbol::Category_Common:
        return SHN_COMMON;
    case Symbol::Category_Hosted:
        return extendedIndex(symbol) != 0 ? static_cast<uint16_t>(SHN_XINDEX)
                                          : static_cast<uint16_t>(symbol.getSection()->getIndex());
    default:
        return SHN_UNDEF;
    }
}

Elf64_Sym recordOf(const Symbol& symbol, const StringTableBuilder& texts) {
    Elf64_Sym record = {};
    record.st_name = texts.offsetOf(symbol.getName());
    record.st_info =
        static_cast<uint8_t>((symbol.getBinding() & 0xF) << 4 | (symbol.getType() & 0xF));
    record.st_other = static_cast<uint8_t>(symbol.getOtherBits() | (symbol.getVisibility() & 0x3));
    record.st_shndx = storedIndex(symbol);
    record.st_value = storedValue(symbol);
    record.st_size = symbol.getSize();
    return record;
}

void fillIndexTable(AuxiliaryState& state, SymbolTableSection& table, ShndxSection& extension) {
    RecordBytes bytes = state.makeBytes();
    bytes.word(0);
    for (const Symbol* const symbol : symbolsOf(state, table)) {
        bytes.word(extendedIndex(*symbol));
    }
    state.setTable(extension, bytes, state.m_Sizes.word);
    extension.setLink(&table);
}

// A table that is there keeps its number of buckets if that fits. In memory it always does: with
// more of them the table could reach into what follows it.
uint32_t bucketCountOf(const AuxiliaryState& state, const HashSection& hash, uint32_t entryCount) {
    const Buffer& old = hash.getLoadedContents();
    const uint64_t wordSize = state.m_Sizes.word;
    if (old.getSize() >= 2 * wordSize) {
        const uint32_t count = old.getUnalignedUint32(0);
        const uint32_t oldEntryCount = old.getUnalignedUint32(wordSize);
        if (count != 0 && old.getSize() == wordSize * (uint64_t{2} + count + oldEntryCount) &&
            (oldEntryCount == entryCount || state.isPlaced(hash))) {
            return count;
        }
    }
    const auto* const greater =
        std::upper_bound(std::begin(bucketCounts), std::end(bucketCounts), entryCount);
    return greater != std::begin(bucketCounts) ? greater[-1] : 1;
}

void fillHash(AuxiliaryState& state, SymbolTableSection& table, HashSection& hash) {
    const ObjectModule::SymbolArray& symbols = symbolsOf(state, table);
    const uint32_t entryCount = symbols.getSize() + 1;
    const uint32_t bucketCount = bucketCountOf(state, hash, entryCount);
    std::vector<uint32_t> buckets(bucketCount);
    std::vector<uint32_t> chains(entryCount);
    for (uint32_t i = 1; i < entryCount; ++i) {
        const char* const name = symbols[i - 1]->getName();
        uint32_t& head = buckets[getVersionHash(name != nullptr ? name : "") % bucketCount];
        chains[i] = head;
        head = i;
    }
    RecordBytes bytes = state.makeBytes();
    bytes.word(bucketCount);
    bytes.word(entryCount);
    for (const std::vector<uint32_t>* const words : {&buckets, &chains}) {
        for (const uint32_t word : *words) {
            bytes.word(word);
        }
    }
    state.setTable(hash, bytes, state.m_Sizes.word);
    hash.setLink(&table);
}

// --- Relocations

// The relocations of a section that go into tables of one kind, and those tables.
struct RelocationKind {
    std::vector<const Relocation*> relocations;
    std::vector<RelocationSection*> tables;
};

// Several tables of a kind get what was read from them; what comes from elsewhere goes into the
// last one.
void shareOut(const RelocationKind& kind, std::vector<RelocationShare>& shares) {
    if (kind.tables.empty()) {
        if (!kind.relocations.empty()) {
            shares.push_back({nullptr, kind.relocations});
        }
        return;
    }
    const size_t first = shares.size();
    std::unordered_map<uint16_t, size_t> shareOfTable;
    for (RelocationSection* const table : kind.tables) {
        if (table->getTableNumber() != 0) {
            shareOfTable.try_emplace(table->getTableNumber(), shares.size());
        }
        shares.push_back({table, {}});
    }
    if (shares.size() == first + 1) {
        shares.back().m_Relocations = kind.relocations;
        return;
    }
    for (const Relocation* const relocation : kind.relocations) {
        const auto share = shareOfTable.find(relocation->getTableNumber());
        const size_t number = share != shareOfTable.end() ? share->second : shares.size() - 1;
        shares[number].m_Relocations.push_back(relocation);
    }
}

void fillRelocationTable(AuxiliaryState& state, const RelocationShare& share, Section& target) {
    RelocationSection& table = *share.m_Table;
    const uint64_t entrySize = entrySizeOf(table);
    RecordBytes bytes = state.makeBytes();
    bytes.reserve(entrySize * share.m_Relocations.size());
    for (const Relocation* const relocation : share.m_Relocations) {
        Elf64_Rela record = {};
        record.r_offset = relocation->getOffset();
        record.symbol = indexOf(relocation->getTarget());
        record.type = uint32_t{relocation->getUpperType()} << 16 | relocation->getType();
        record.r_addend = relocation->hasAddend() ? relocation->getAddend() : 0;
        bytes.relocation(record, table.hasAddends());
    }
    state.setTable(table, bytes, entrySize);
    table.setInfo(target.getIndex());
    table.setLink(table.isDynamic() ? state.m_Dynsym : state.m_Symtab);
}

} // namespace

bool isPltOrGot(const Section& section) {
    const char* const name = section.getName();
    return name != nullptr &&
           std::any_of(std::begin(pltAndGotPrefixes), std::end(pltAndGotPrefixes),
                       [name](const char* prefix) {
                           return std::strncmp(name, prefix, std::strlen(prefix)) == 0;
                       });
}

void addSymbolTexts(AuxiliaryState& state) {
    const auto addNames = [&state](StringTableSection* table,
                                   const ObjectModule::SymbolArray& symbols) {
        if (table == nullptr) {
            return;
        }
        StringTableBuilder& texts = state.textsOf(table);
        for (const Symbol* const symbol : symbols) {
            texts.add(symbol->getName());
        }
    };
    addNames(state.m_Symtab != nullptr ? state.m_SymbolNames : nullptr,
             state.m_Module.getSymbols());
    addNames(state.m_Dynsym != nullptr ? state.m_DynamicNames : nullptr,
             state.m_Module.getDynamicSymbols());
}

void fillSymbolTable(AuxiliaryState& state, SymbolTableSection& table) {
    StringTableSection* const names =
        table.isDynamic() ? state.m_DynamicNames : state.m_SymbolNames;
    const StringTableBuilder& texts = state.textsOf(names);
    const ObjectModule::SymbolArray& symbols = symbolsOf(state, table);
    RecordBytes bytes = state.makeBytes();
    bytes.reserve((uint64_t{symbols.getSize()} + 1) * state.m_Sizes.symbol);
    bytes.symbol({});
    for (const Symbol* const symbol : symbols) {
        bytes.symbol(recordOf(*symbol, texts));
    }
    state.setTable(table, bytes, state.m_Sizes.symbol);
    table.setLink(names);
    table.setInfo(1 +
                  static_cast<uint32_t>(std::count_if(symbols.begin(), symbols.end(), isLocal)));
    if (table.getShndxSection() != nullptr) {
        fillIndexTable(state, table, *table.getShndxSection());
    }
    if (table.getHashSection() != nullptr) {
        fillHash(state, table, *table.getHashSection());
    }
}

// Bytes that are no such table are left to whoever made them.
bool updateGnuHash(AuxiliaryState& state, ObjectModule::SymbolArray& symbols) {
    Section* const section = state.m_GnuHash;
    if (section == nullptr || section->hasExternalContents()) {
        return false;
    }
    const Buffer* const bytes = section->getContents();
    if (bytes == nullptr) {
        return false;
    }
    const std::optional<GnuHashTable> table =
        GnuHashTable::read({bytes->getData(), static_cast<size_t>(bytes->getSize())}, state.m_Is64,
                           state.m_IsLittleEndian);
    if (!table.has_value() || table->isOf(symbols)) {
        return false;
    }
    table->sort(symbols);
    const RecordBytes contents = table->make(symbols);
    state.setContents(*section, contents.data(), contents.size());
    return true;
}

std::vector<RelocationShare> shareRelocations(Section& target) {
    if (!target.hasRelocations() && target.getRelocationSections().getSize() == 0 &&
        target.getDynamicRelocationSections().getSize() == 0) {
        return {};
    }
    std::array<std::array<RelocationKind, 2>, 2> kinds; // [dynamic][with addends]
    for (const Relocation* const relocation : target.getRelocations()) {
        kinds[relocation->isDynamic()][relocation->hasAddend()].relocations.push_back(relocation);
    }
    for (const auto* const list :
         {&target.getRelocationSections(), &target.getDynamicRelocationSections()}) {
        for (Section* const section : *list) {
            RelocationSection* const table = section->asRelocationSection();
            kinds[table->isDynamic()][table->hasAddends()].tables.push_back(table);
        }
    }
    std::vector<RelocationShare> shares;
    for (const auto& ofLinkage : kinds) {
        for (const RelocationKind& kind : ofLinkage) {
            shareOut(kind, shares);
        }
    }
    return shares;
}

// Tables of static relocations belong to the group of their target.
RelocationSection* makeRelocationTable(AuxiliaryState& state, Section& target, bool isDynamic,
                                       bool hasAddends) {
    const uint32_t sectionType = hasAddends ? SHT_RELA : SHT_REL;
    TOMEX_CHECK(sectionType == SHT_REL || sectionType == SHT_RELA);
    char name[tableNameSize];
    if (isDynamic) {
        std::snprintf(name, sizeof name, "%s", dynamicTableNames[isPltOrGot(target)][hasAddends]);
    } else {
        std::snprintf(name, sizeof name, staticTableName, hasAddends ? "a" : "",
                      target.getName() != nullptr ? target.getName() : "");
    }
    RelocationSection* const table = state.m_Module.createRelocationSection(
        name, sectionType, isDynamic ? SHF_ALLOC : SHF_INFO_LINK);
    table->setTarget(&target, isDynamic);
    if (Group* const group = target.getGroup(); group != nullptr && !isDynamic) {
        table->setFlags(table->getFlags() | SHF_GROUP);
        group->addMember(table);
    }
    return table;
}

void fillRelocations(AuxiliaryState& state) {
    for (Section* const target : state.m_Module.getSections()) {
        if (!target->hasRelocations() && target->getRelocationSections().getSize() == 0 &&
            target->getDynamicRelocationSections().getSize() == 0) {
            continue;
        }
        for (const RelocationShare& share : shareRelocations(*target)) {
            fillRelocationTable(state, share, *target);
        }
    }
}

void fillGroups(AuxiliaryState& state) {
    for (uint32_t i = 0; i < state.m_Module.getGroupCount(); ++i) {
        const Group* const group = state.m_Module.getGroup(i);
        auto* const section = static_cast<GroupSection*>(group->getSection());
        RecordBytes bytes = state.makeBytes();
        bytes.word(group->getFlags());
        for (const Section* const member : group->getMembers()) {
            bytes.word(member->getIndex());
        }
        state.setTable(*section, bytes, state.m_Sizes.word);
        section->setLink(state.m_Symtab);
        section->setInfo(section->getSignatureSymbolIndex());
    }
}

// Records of a section with 16-bit numbers stay so for as long as all numbers fit.
void fillDebugOverlay(AuxiliaryState& state) {
    if (state.m_Module.getDebugOverlaySections().getSize() == 0) {
        return;
    }
    Section& section = *state.m_Module.getDebugOverlaySections()[0];
    const uint64_t narrowSize = state.m_Sizes.address + uint64_t{4};
    const bool isNarrow =
        section.getEntrySize() == narrowSize && state.m_Module.getSectionCount() <= UINT16_MAX + 1U;
    RecordBytes bytes = state.makeBytes();
    for (const DebugOverlayRecord& record : state.m_Module.getDebugOverlayRecords()) {
        bytes.address(record.m_Id);
        for (const Section* const about : {record.m_DebugSection, record.m_Section}) {
            const uint32_t index = about != nullptr ? about->getIndex() : 0;
            if (isNarrow) {
                bytes.half(static_cast<uint16_t>(index));
            } else {
                bytes.word(index);
            }
        }
    }
    state.setTable(section, bytes, isNarrow ? narrowSize : state.m_Sizes.address + uint64_t{8});
}

} // namespace elfext
