// Makes the entries of the dynamic section.
//
// The model holds a part of what such a section can say. So the entries that are settled are gone
// over in order: those that the model speaks of are taken from it, those that tell places and sizes
// of tables from the tables, and all others stay. What the model holds beyond that follows at the
// end, and what is to be told of tables that an update has made. A new section tells everything.
#include "elfext/src/auxiliary_state.h"

#include "elfext/interface/dynamic_records.h"
#include "elfext/src/dynamic_entries.h"
#include "elfext/src/dynamic_position.h"
#include "elfext/src/dynamic_tags.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace elfext {
namespace {

// Tags that tell where something is in memory, and how much of it there is or how large its parts
// are, if they tell that. They go with what they tell of.
struct PlaceTags {
    uint32_t addressTag;
    uint32_t countTag;
    uint32_t formTag;
};
constexpr PlaceTags placeTags[] = {
    {DT_HASH, DT_NULL, DT_NULL},
    {DT_GNU_HASH, DT_NULL, DT_NULL},
    {DT_SYMTAB, DT_NULL, DT_SYMENT},
    {DT_STRTAB, DT_STRSZ, DT_NULL},
    {DT_VERSYM, DT_NULL, DT_NULL},
    {DT_VERDEF, DT_VERDEFNUM, DT_NULL},
    {DT_VERNEED, DT_VERNEEDNUM, DT_NULL},
    {DT_PLTGOT, DT_NULL, DT_NULL},
    {DT_RELR, DT_RELRSZ, DT_RELRENT},
    {DT_INIT, DT_NULL, DT_NULL},
    {DT_FINI, DT_NULL, DT_NULL},
    {DT_INIT_ARRAY, DT_INIT_ARRAYSZ, DT_NULL},
    {DT_FINI_ARRAY, DT_FINI_ARRAYSZ, DT_NULL},
    {DT_PREINIT_ARRAY, DT_PREINIT_ARRAYSZ, DT_NULL},
    {DT_QEL_PREEMPTMAP, DT_NULL, DT_NULL},
};

// Required by loaders: they take the numbers of symbols' versions for those of definitions and
// requirements, and look for all of them if there is any.
constexpr uint32_t versionTags[] = {DT_VERSYM, DT_VERDEF, DT_VERDEFNUM, DT_VERNEED, DT_VERNEEDNUM};

const Section* firstSection(const ObjectModule::SectionArray& sections) {
    return sections.getSize() != 0 ? sections[0] : nullptr;
}

class DynamicEntries {
public:
    explicit DynamicEntries(AuxiliaryState& state)
        : m_State(state), m_Module(state.m_Module), m_Settled(*state.m_Settled) {
        gatherTexts();
        gatherValues();
    }

    // All entries up to the one that ends the section.
    const std::vector<DynamicEntry>& make() {
        for (const DynamicEntry& entry : m_Settled.entries) {
            m_OldFlagTags |= flagOf(entry.tag);
            noteGone(entry);
        }
        if (m_Settled.isNew()) {
            noteGoneValues();
        }
        settleGone();
        for (const DynamicEntry& entry : m_Settled.entries) {
            keepEntry(entry);
        }
        m_KeptCount = m_Entries.size();
        addRest();
        return m_Entries;
    }

    // How many entries the section had, the ending ones included.
    uint64_t slotCount() const { return m_Settled.slotCount; }
    // True if they need one that ends them: a file that had none, and gets nothing more, has not
    // outgrown its place.
    bool needsEnd() const {
        return m_Settled.entries.size() < m_Settled.slotCount || m_Entries.size() != m_KeptCount;
    }

private:
    // --- What the model has

    void gatherTexts() {
        for (uint32_t i = 0; i < m_Module.getNeededLibraryCount(); ++i) {
            m_Texts[DT_NEEDED].push_back(m_Module.getNeededLibrary(i)->getName());
        }
        for (const uint32_t tag : {DT_SONAME, DT_RPATH, DT_RUNPATH}) {
            m_Texts[tag];
        }
        if (m_Module.getSoName() != nullptr) {
            m_Texts[DT_SONAME].push_back(m_Module.getSoName());
        }
        for (uint32_t i = 0; i < m_Module.getLibrarySearchPathCount(); ++i) {
            const LibrarySearchPath& path = *m_Module.getLibrarySearchPath(i);
            m_Texts[path.getTag()].push_back(path.getPath());
        }
        m_Texts[DT_NEEDED];
    }

    // True if there is an address to tell.
    bool hasPlace(const Section& section) const {
        return section.getAddress() != 0 || !m_State.isPlaced(section);
    }

    // Values that follow from tables. A new section has a place for each of them.
    void gatherValues() {
        const auto setAddress = [this](uint32_t tag, const Section* section) {
            if (section != nullptr && hasPlace(*section)) {
                m_Values[tag] = section->getAddress();
                if (section->isMadeByUpdate()) {
                    addToBeTold(tag);
                }
            }
        };
        const Section* const texts = m_State.dynamicSectionTexts();
        setAddress(DT_HASH,
                   m_State.m_Dynsym != nullptr ? m_State.m_Dynsym->getHashSection() : nullptr);
        setAddress(DT_GNU_HASH, m_State.m_GnuHash);
        setAddress(DT_SYMTAB, m_State.m_Dynsym);
        setAddress(DT_STRTAB, texts);
        m_Values[DT_STRSZ] = texts->getSize();
        m_Values[DT_SYMENT] = m_State.m_Sizes.symbol;
        if (hasVersions(m_Module)) {
            const Section* const definitions = firstSection(m_Module.getVerdefSections());
            const Section* const requirements = firstSection(m_Module.getVerneedSections());
            setAddress(DT_VERSYM, firstSection(m_Module.getVersymSections()));
            setAddress(DT_VERDEF, definitions);
            setAddress(DT_VERNEED, requirements);
            if (definitions != nullptr) {
                m_Values[DT_VERDEFNUM] = definitions->getInfo();
            }
            if (requirements != nullptr) {
                m_Values[DT_VERNEEDNUM] = requirements->getInfo();
            }
        }
        if (!isPreemptionMapFileOffset(m_Module)) {
            setAddress(DT_QEL_PREEMPTMAP, firstSection(m_Module.getPreemptionMapSections()));
        }
    }

    // With the tags that go with it.
    void addToBeTold(uint32_t addressTag) {
        for (const PlaceTags& tags : placeTags) {
            if (tags.addressTag == addressTag) {
                m_ToBeTold.insert({tags.addressTag, tags.countTag, tags.formTag});
            }
        }
    }

    static uint32_t flagOf(uint64_t tag) {
        const auto* const row =
            std::find_if(std::begin(flagTags), std::end(flagTags),
                         [tag](const FlagTag& flag) { return flag.tag == tag; });
        return row != std::end(flagTags) ? row->flag : 0;
    }
    static const ValueTag* valueTagOf(uint64_t tag) {
        const auto* const row =
            std::find_if(std::begin(valueTags), std::end(valueTags),
                         [tag](const ValueTag& value) { return value.tag == tag; });
        return row != std::end(valueTags) ? row : nullptr;
    }

    // --- Entries that are there

    void noteGone(const DynamicEntry& entry) {
        for (const PlaceTags& tags : placeTags) {
            if (tags.addressTag == entry.tag && leadsNowhere(entry)) {
                m_Gone.insert({tags.addressTag, tags.countTag, tags.formTag});
            }
        }
    }

    // A new section would tell of what went together with the old one.
    void noteGoneValues() {
        for (const ValueTag& row : valueTags) {
            const ObjectModule::DynamicValue& value = (m_Module.*row.get)();
            if (value.has_value()) {
                noteGone({row.tag, *value, nullptr});
            }
        }
    }

    // True if what the entry tells of has been removed, and the program has stated no other place.
    bool leadsNowhere(const DynamicEntry& entry) const {
        if (entry.tag == DT_QEL_PREEMPTMAP && isPreemptionMapFileOffset(m_Module)) {
            return false; // what memory the file's bytes went to, nobody knows any more
        }
        if (const ValueTag* const row = valueTagOf(entry.tag); row != nullptr) {
            const ObjectModule::DynamicValue& value = (m_Module.*row->get)();
            if (!value.has_value() || !isSameValue(entry, *value)) {
                return false;
            }
        } else if (m_Values.count(static_cast<uint32_t>(entry.tag)) != 0) {
            return false;
        }
        return m_State.wasRemoved(entry.value, 1);
    }

    // What the module holds of it goes too, or the next update would tell of it again: what has
    // been removed does not come back.
    void settleGone() {
        const bool areVersionsGone =
            std::any_of(std::begin(versionTags), std::end(versionTags),
                        [this](uint32_t tag) { return m_Gone.count(tag) != 0; });
        if (areVersionsGone) {
            m_Gone.insert(std::begin(versionTags), std::end(versionTags));
        }
        for (const ValueTag& row : valueTags) {
            if (m_Gone.count(row.tag) != 0) {
                (m_Module.*row.set)(std::nullopt);
            }
        }
        const auto isGone = [this](const DynamicEntry& entry) {
            return m_Gone.count(static_cast<uint32_t>(entry.tag)) != 0;
        };
        std::vector<DynamicEntry>& entries = m_Settled.entries;
        entries.erase(std::remove_if(entries.begin(), entries.end(), isGone), entries.end());
    }

    void keepEntry(const DynamicEntry& entry) {
        const auto tag = static_cast<uint32_t>(entry.tag);
        if (const auto texts = m_Texts.find(tag); texts != m_Texts.end()) {
            takeText(tag, texts->second);
        } else if (const ValueTag* const value = valueTagOf(tag); value != nullptr) {
            keepValue(entry, (m_Module.*value->get)());
        } else if (const uint32_t flag = flagOf(tag); flag != 0) {
            if ((m_Module.getDynamicFlags() & flag) != 0) {
                m_Entries.push_back(entry);
            }
        } else if (tag == DT_FLAGS) {
            keepFlags(entry);
        } else if (const auto place = m_Values.find(tag); place != m_Values.end()) {
            m_Entries.push_back({entry.tag, place->second, nullptr});
        } else if (const std::optional<uint64_t> kept =
                       m_Settled.relocationTags.valueOf(tag, entry.value);
                   kept.has_value()) {
            m_Entries.push_back({entry.tag, *kept, nullptr});
        }
        m_Seen[tag] = true;
    }

    void takeText(uint32_t tag, const std::vector<const char*>& texts) {
        size_t& taken = m_TextsTaken[tag];
        if (taken < texts.size()) {
            m_Entries.push_back({tag, 0, texts[taken++]});
        }
    }

    // The model holds 32 bits of a value that was read.
    static bool isSameValue(const DynamicEntry& entry, uint64_t value) {
        return static_cast<uint32_t>(entry.value) == value;
    }

    void keepValue(const DynamicEntry& entry, const ObjectModule::DynamicValue& value) {
        if (value.has_value()) {
            const bool isSame = isSameValue(entry, *value);
            m_Entries.push_back({entry.tag, isSame ? entry.value : *value, nullptr});
        }
    }

    // Bits that have a tag of their own here stay out of it, unless they were in it.
    void keepFlags(const DynamicEntry& entry) {
        const uint32_t elsewhere = m_OldFlagTags & ~static_cast<uint32_t>(entry.value);
        m_Entries.push_back({entry.tag, m_Module.getDynamicFlags() & ~elsewhere, nullptr});
    }

    // --- What follows

    void addRest() {
        for (const uint32_t tag : {DT_NEEDED, DT_SONAME, DT_RPATH, DT_RUNPATH}) {
            const std::vector<const char*>& texts = m_Texts[tag];
            while (m_TextsTaken[tag] < texts.size()) {
                takeText(tag, texts);
            }
        }
        for (const ValueTag& row : valueTags) {
            const ObjectModule::DynamicValue& value = (m_Module.*row.get)();
            if (value.has_value() && !m_Seen[row.tag]) {
                m_Entries.push_back({row.tag, *value, nullptr});
            }
        }
        addFlags();
        for (const auto& [tag, value] : m_Values) {
            const bool isToBeTold =
                m_Settled.isNew() || tag == DT_QEL_PREEMPTMAP || m_ToBeTold.count(tag) != 0;
            if (isToBeTold && !m_Seen[tag]) {
                m_Entries.push_back({tag, value, nullptr});
            }
        }
        if (isPreemptionMapFileOffset(m_Module) && !m_Seen[DT_QEL_PREEMPTMAP] &&
            firstSection(m_Module.getPreemptionMapSections()) != nullptr) {
            m_Entries.push_back({DT_QEL_PREEMPTMAP, 0, nullptr}); // layout knows better
        }
        addRelocationTables();
    }

    void addFlags() {
        const uint32_t missing = m_Module.getDynamicFlags() & ~m_OldFlagTags;
        if (!m_Seen[DT_FLAGS] &&
            (missing != 0 || (m_Module.hasDynamicFlags() && m_Settled.isNew()))) {
            m_Entries.push_back({DT_FLAGS, missing, nullptr});
        }
    }

    // The first table of each kind: only one can be told of.
    void addRelocationTables() {
        std::map<uint32_t, const RelocationSection*> tables; // by the tag of the address
        for (const Section* const section : m_Module.getSections()) {
            const RelocationSection* const table = section->asRelocationSection();
            if (table != nullptr && table->isDynamic() &&
                (m_Settled.isNew() || (table->isMadeByUpdate() && hasPlace(*table)))) {
                const bool isPlt = table->getTarget() != nullptr && isPltOrGot(*table->getTarget());
                const uint32_t tag = isPlt ? DT_JMPREL : table->hasAddends() ? DT_RELA : DT_REL;
                tables.try_emplace(tag, table);
            }
        }
        for (const RelocationTagGroup& tags : relocationTagGroups) {
            const auto place = tables.find(tags.address);
            if (place == tables.end() || m_Seen[tags.address]) {
                continue;
            }
            const RelocationSection& table = *place->second;
            const uint64_t form = tags.address == DT_JMPREL
                                      ? uint64_t{table.hasAddends() ? DT_RELA : DT_REL}
                                      : entrySizeOf(table);
            m_Entries.push_back({tags.address, table.getAddress(), nullptr});
            m_Entries.push_back({tags.size, table.getSize(), nullptr});
            m_Entries.push_back({tags.form, form, nullptr});
        }
    }

    AuxiliaryState& m_State;
    ObjectModule& m_Module;
    SettledDynamicSection& m_Settled;
    size_t m_KeptCount = 0; // of the entries that are there
    std::vector<DynamicEntry> m_Entries;
    std::map<uint32_t, std::vector<const char*>> m_Texts;
    std::map<uint32_t, size_t> m_TextsTaken;
    std::map<uint32_t, uint64_t> m_Values;
    std::map<uint32_t, bool> m_Seen;
    std::set<uint32_t> m_ToBeTold; // tags of tables that an update has made
    std::set<uint32_t> m_Gone;     // tags of what has been removed
    uint32_t m_OldFlagTags = 0;    // the flags that have entries of their own
};

} // namespace

bool isPreemptionMapFileOffset(const ObjectModule& objectModule) {
    return objectModule.getMachine() == EM_QEL && objectModule.getOsAbi() == ELFOSABI_QEL;
}

bool hasDynamicRecords(const ObjectModule& objectModule) {
    const bool hasValue = std::any_of(
        std::begin(valueTags), std::end(valueTags),
        [&objectModule](const ValueTag& row) { return (objectModule.*row.get)().has_value(); });
    return hasValue || objectModule.hasDynamicFlags() || objectModule.getSoName() != nullptr ||
           objectModule.getNeededLibraryCount() != 0 ||
           objectModule.getLibrarySearchPathCount() != 0 || objectModule.getPreemptionCount() != 0;
}

// A map that was found in a section of another type stays where it is.
bool tellsPreemptionMap(AuxiliaryState& state) {
    if (state.m_Dynamic == nullptr) {
        return false;
    }
    const bool isAddress = !isPreemptionMapFileOffset(state.m_Module);
    const std::vector<DynamicEntry>& entries = state.m_Settled->entries;
    return std::none_of(entries.begin(), entries.end(),
                        [&state, isAddress](const DynamicEntry& entry) {
                            return entry.tag == DT_QEL_PREEMPTMAP &&
                                   !(isAddress && state.wasRemoved(entry.value, 1));
                        });
}

void addDynamicTexts(AuxiliaryState& state) {
    const ObjectModule& objectModule = state.m_Module;
    if (state.m_Dynamic != nullptr) {
        StringTableBuilder& texts = state.textsOf(state.dynamicSectionTexts());
        for (uint32_t i = 0; i < objectModule.getNeededLibraryCount(); ++i) {
            texts.add(objectModule.getNeededLibrary(i)->getName());
        }
        for (uint32_t i = 0; i < objectModule.getLibrarySearchPathCount(); ++i) {
            texts.add(objectModule.getLibrarySearchPath(i)->getPath());
        }
        texts.add(objectModule.getSoName());
    }
    if (objectModule.getPreemptionMapSections().getSize() != 0) {
        StringTableBuilder& texts = state.textsOf(state.m_DynamicNames);
        for (uint32_t i = 0; i < objectModule.getPreemptionCount(); ++i) {
            const Preemption& preemption = *objectModule.getPreemption(i);
            texts.add(preemption.getSymbolName());
            texts.add(preemption.getPreemptingDllName());
            for (uint32_t k = 0; k < preemption.getPreemptedDllCount(); ++k) {
                texts.add(preemption.getPreemptedDll(k)->getName());
            }
        }
    }
}

// Of several dynamic sections nobody can tell which holds what, so they stay as they are.
void fillDynamic(AuxiliaryState& state) {
    if (state.m_Dynamic == nullptr || state.m_Module.getDynamicSections().getSize() != 1) {
        return;
    }
    StringTableSection* const table = state.dynamicSectionTexts();
    const StringTableBuilder& texts = state.textsOf(table);
    state.m_Settled->relocationTags.settle(state);
    DynamicEntries entries(state);
    RecordBytes bytes = state.makeBytes();
    for (const DynamicEntry& entry : entries.make()) {
        bytes.address(entry.tag);
        bytes.address(entry.text != nullptr ? texts.offsetOf(entry.text) : entry.value);
    }
    const uint64_t entrySize = state.m_Sizes.dynamicEntry;
    const uint64_t endSize = entries.needsEnd() || bytes.size() == 0 ? entrySize : 0;
    bytes.resize(std::max(bytes.size() + endSize, entries.slotCount() * entrySize));
    state.setTable(*state.m_Dynamic, bytes, entrySize);
    state.m_Dynamic->setLink(table);
}

// The contents change, the model does not.
void settlePreemptionMapOffset(ObjectModule& objectModule) {
    const ObjectModule::SectionArray& maps = objectModule.getPreemptionMapSections();
    const ObjectModule::SectionArray& sections = objectModule.getDynamicSections();
    if (!isPreemptionMapFileOffset(objectModule) || maps.getSize() == 0 ||
        sections.getSize() != 1) {
        return;
    }
    const bool is64 = objectModule.is64Bit();
    Buffer& bytes = sections[0]->getLoadedContents();
    const uint64_t entrySize = recordSizes(is64).dynamicEntry;
    const uint64_t offset = maps[0]->getFileOffset();
    withLayout(is64, objectModule.isLittleEndian(), [&](auto layout) {
        for (uint64_t place = 0; entrySize <= bytes.getSize() - place; place += entrySize) {
            const uint64_t tag = layout.address(std::as_const(bytes).getData() + place);
            if (tag == DT_NULL) {
                return;
            }
            if (tag == DT_QEL_PREEMPTMAP) {
                RecordBytes value(is64, objectModule.isLittleEndian());
                value.address(offset);
                bytes.writeBytes(place + layout.sizes.address, value.data(), value.size());
            }
        }
    });
}

} // namespace elfext
