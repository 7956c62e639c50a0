// What the steps of an update of the auxiliary sections share: the module, the tables in use and
// the string tables that are being made.
#pragma once

#include "elfext/interface/object_module.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/record_bytes.h"
#include "elfext/src/string_table_builder.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

namespace elfext {

// The part of a section's relocations that goes into one table.
struct RelocationShare {
    RelocationSection* m_Table = nullptr;
    std::vector<const Relocation*> m_Relocations;
};

// A string table and its new contents.
struct TableTexts {
    explicit TableTexts(StringTableSection* stringTable) : table(stringTable) {}

    StringTableSection* table;
    StringTableBuilder builder;
};

// The string table that a section, which may be null, is linked to; null if that is none.
inline StringTableSection* linkedStrings(const Section* section) {
    Section* const link = section != nullptr ? section->getLink() : nullptr;
    return link != nullptr && link->getType() == SHT_STRTAB ? static_cast<StringTableSection*>(link)
                                                            : nullptr;
}

struct SettledDynamicSection;

class AuxiliaryState {
public:
    explicit AuxiliaryState(ObjectModule& objectModule)
        : m_Module(objectModule), m_Is64(objectModule.is64Bit()),
          m_IsLittleEndian(objectModule.isLittleEndian()), m_Sizes(recordSizes(m_Is64)) {}
    AuxiliaryState(const AuxiliaryState&) = delete;
    AuxiliaryState& operator=(const AuxiliaryState&) = delete;

    ObjectModule& m_Module;
    const bool m_Is64;
    const bool m_IsLittleEndian;
    const RecordSizes& m_Sizes;

    // The tables in use; null for none.
    SymbolTableSection* m_Symtab = nullptr;
    SymbolTableSection* m_Dynsym = nullptr;
    StringTableSection* m_SectionNames = nullptr;
    StringTableSection* m_SymbolNames = nullptr;
    StringTableSection* m_DynamicNames = nullptr; // of symbols, versions and preemptions
    DynamicSection* m_Dynamic = nullptr;
    Section* m_GnuHash = nullptr;
    BuildAttributesSection* m_Attributes = nullptr;
    SettledDynamicSection* m_Settled = nullptr; // of m_Dynamic, and null with it
    std::vector<Range> m_RemovedMemory;         // where no section is any more, ascending, disjoint

    RecordBytes makeBytes() const { return {m_Is64, m_IsLittleEndian}; }

    // True for a section with a settled place in memory: others refer to its addresses.
    bool isPlaced(const Section& section) const {
        return (section.getFlags() & SHF_ALLOC) != 0 && m_Module.getSegmentCount() != 0;
    }

    // True if a section has been removed that took up any of these `size` bytes of memory, and none
    // has taken its place.
    bool wasRemoved(uint64_t address, uint64_t size) const {
        const auto next = std::upper_bound(
            m_RemovedMemory.begin(), m_RemovedMemory.end(), address,
            [](uint64_t place, const Range& removed) { return place < removed.getEnd(); });
        return next != m_RemovedMemory.end() &&
               (next->getStart() <= address || next->getStart() - address < size);
    }

    // The texts of the dynamic section, which need not be those of the dynamic symbols.
    StringTableSection* dynamicSectionTexts() const {
        StringTableSection* const linked = linkedStrings(m_Dynamic);
        return linked != nullptr ? linked : m_DynamicNames;
    }

    // The builder of a string table; made when it is asked for first.
    StringTableBuilder& textsOf(StringTableSection* table);

    // Gives a section new contents. A section of another size has lost its place in the file,
    // unless it is a part of a segment.
    void setContents(Section& section, const void* bytes, uint64_t size) const;
    void setTable(Section& section, const RecordBytes& bytes, uint64_t entrySize) const {
        setContents(section, bytes.data(), bytes.size());
        section.setEntrySize(entrySize);
    }

    std::deque<TableTexts> m_Texts; // references into it stay good
};

// The size of a relocation in a table.
inline uint64_t entrySizeOf(const RelocationSection& table) {
    const RecordSizes& sizes = recordSizes(table.getObjectModule()->is64Bit());
    return table.hasAddends() ? sizes.rela : sizes.rel;
}

// True if a relocation of this section belongs to those of calls between files.
bool isPltOrGot(const Section& section);

// Removes the auxiliary sections that are not in use, once the tables in use are known.
void removeStraySections(AuxiliaryState& state);
// Removes the tables that an earlier update has made and that nothing needs any more. Those in use
// have to be found again.
void removeUnneededTables(AuxiliaryState& state);

// --- The steps. Texts are added before any table is filled, and all tables are filled at the end.

// The relocations of `target` by table, those of each table in order. A share without a table is
// one that needs one.
std::vector<RelocationShare> shareRelocations(Section& target);
// `dynamic` and `hasAddends` are of the relocations of a share.
RelocationSection* makeRelocationTable(AuxiliaryState& state, Section& target, bool isDynamic,
                                       bool hasAddends);

void addSymbolTexts(AuxiliaryState& state);
void fillSymbolTable(AuxiliaryState& state, SymbolTableSection& table);
void fillRelocations(AuxiliaryState& state);
void fillGroups(AuxiliaryState& state);
void fillDebugOverlay(AuxiliaryState& state);

// Brings the second hash table of the dynamic symbols up to date, unless it is, which takes an
// order of `symbols` that it can tell of. True if they have another order now.
bool updateGnuHash(AuxiliaryState& state, ObjectModule::SymbolArray& symbols);

void fillSegmentNotes(AuxiliaryState& state);

// True if the module holds versions, so that its version sections are made anew; others stay as
// they were read.
bool hasVersions(const ObjectModule& objectModule);
void addVersionTexts(AuxiliaryState& state);
void fillVersions(AuxiliaryState& state);

// True if there is anything that a dynamic section tells.
bool hasDynamicRecords(const ObjectModule& objectModule);
// True if there is a dynamic section, and it tells of no preemption map that may still be there.
bool tellsPreemptionMap(AuxiliaryState& state);
void addDynamicTexts(AuxiliaryState& state);
void fillPreemptionMap(AuxiliaryState& state);
void fillDynamic(AuxiliaryState& state);

// True if parts of the module have attributes that only an attributes section can tell.
bool needsAttributesSection(ObjectModule& objectModule);
void fillBuildAttributes(AuxiliaryState& state);

} // namespace elfext
