// The creators of everything but symbols.
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/version_records.h"
#include "elfext/src/object_module_make.h"

#include <cstring>

namespace elfext {

// --- Sections

template <typename Kind, typename... Arguments>
Kind* ObjectModule::makeSection(const Arguments&... arguments) {
    changeStructure();
    Kind* const section = make<Kind>(this, arguments...);
    section->m_Index = m_Sections.getSize();
    m_Sections.add(section);
    if (SectionArray* const list = listOfType(section->getType()); list != nullptr) {
        list->add(section);
    }
    return section;
}

// The list of the sections of a type, or null for types that have none.
ObjectModule::SectionArray* ObjectModule::listOfType(uint32_t sectionType) {
    struct Row {
        uint32_t m_Type;
        SectionArray ObjectModule::*m_List;
    };
    static constexpr Row rows[] = {
        {SHT_STRTAB, &ObjectModule::m_StringTableSections},
        {SHT_SYMTAB, &ObjectModule::m_SymtabSections},
        {SHT_DYNSYM, &ObjectModule::m_DynsymSections},
        {SHT_GROUP, &ObjectModule::m_GroupSections},
        {SHT_HASH, &ObjectModule::m_HashSections},
        {SHT_SYMTAB_SHNDX, &ObjectModule::m_ShndxSections},
        {SHT_QEL_PREEMPTMAP, &ObjectModule::m_PreemptionMapSections},
        {SHT_GNU_verdef, &ObjectModule::m_VerdefSections},
        {SHT_GNU_verneed, &ObjectModule::m_VerneedSections},
        {SHT_GNU_versym, &ObjectModule::m_VersymSections},
        {SHT_DYNAMIC, &ObjectModule::m_DynamicSections},
        {SHT_QEL_DEBUGOVERLAY, &ObjectModule::m_DebugOverlaySections},
        {SHT_QEL_ATTRIBUTES, &ObjectModule::m_BuildAttributesSections},
    };
    for (const Row& row : rows) {
        if (row.m_Type == sectionType) {
            return &(this->*row.m_List);
        }
    }
    return nullptr;
}

NullSection* ObjectModule::createNullSection(uint32_t flags) {
    return makeSection<NullSection>(flags);
}

StringTableSection* ObjectModule::createStringTableSection(const char* name) {
    return makeSection<StringTableSection>(name);
}

SymbolTableSection* ObjectModule::createSymbolTableSection(uint32_t type, const char* name) {
    return makeSection<SymbolTableSection>(name, type);
}

RelocationSection* ObjectModule::createRelocationSection(const char* name, uint32_t type,
                                                         uint32_t flags) {
    return makeSection<RelocationSection>(name, type, flags);
}

GroupSection* ObjectModule::createGroupSection(const char* name) {
    return makeSection<GroupSection>(name);
}

ShndxSection* ObjectModule::createShndxSection(const char* name) {
    return makeSection<ShndxSection>(name);
}

HashSection* ObjectModule::createHashSection(const char* name) {
    return makeSection<HashSection>(name);
}

PreemptionMapSection* ObjectModule::createPreemptionMapSection(const char* name) {
    return makeSection<PreemptionMapSection>(name);
}

VerdefSection* ObjectModule::createVerdefSection(const char* name) {
    return makeSection<VerdefSection>(name);
}

VerneedSection* ObjectModule::createVerneedSection(const char* name) {
    return makeSection<VerneedSection>(name);
}

VersymSection* ObjectModule::createVersymSection(const char* name) {
    return makeSection<VersymSection>(name);
}

DynamicSection* ObjectModule::createDynamicSection(const char* name) {
    return makeSection<DynamicSection>(name);
}

BuildAttributesSection* ObjectModule::createBuildAttributesSection(const char* name) {
    return makeSection<BuildAttributesSection>(name);
}

DebugOverlaySection* ObjectModule::createDebugOverlaySection(const char* name) {
    return makeSection<DebugOverlaySection>(name);
}

Section* ObjectModule::createSection(const char* name, uint32_t type, uint32_t flags) {
    TOMEX_CHECK(type != SHT_NULL && type != SHT_SYMTAB && type != SHT_STRTAB && type != SHT_RELA &&
                type != SHT_REL && type != SHT_DYNSYM && type != SHT_GROUP &&
                type != SHT_SYMTAB_SHNDX && type != SHT_HASH && type != SHT_DYNAMIC &&
                type != SHT_GNU_verdef && type != SHT_GNU_verneed && type != SHT_GNU_versym &&
                type != SHT_QEL_PREEMPTMAP && type != SHT_QEL_ATTRIBUTES &&
                type != SHT_QEL_DEBUGOVERLAY);
    return makeSection<Section>(false, type != SHT_NOTE, name, type, flags);
}

Section* ObjectModule::createSection(const char* name, uint32_t type, uint32_t flags,
                                     Group* group) {
    TOMEX_CHECK_TEXT(group != nullptr, "group != NULL");
    Section* const section = createSection(name, type, flags | SHF_GROUP);
    group->addMember(section);
    return section;
}

Section* ObjectModule::createCommentSection(const char* one, const char* two, const char* three) {
    TOMEX_CHECK_TEXT(one != nullptr, "one != NULL");
    TOMEX_CHECK_TEXT(two != nullptr, "two != NULL");
    TOMEX_CHECK_TEXT(three != nullptr, "three != NULL");
    const uint64_t oneSize = std::strlen(one) + uint64_t{1};
    const uint64_t twoSize = std::strlen(two);
    const uint64_t threeSize = std::strlen(three) + uint64_t{1};
    Section* const section = createSection(".comment", SHT_PROGBITS, 0);
    section->setSize(oneSize + twoSize + 1 + threeSize);
    Buffer& contents = section->getLoadedContents();
    contents.setSize(section->getSize());
    contents.writeBytes(0, one, oneSize);
    contents.writeBytes(oneSize, two, twoSize);
    contents.writeBytes(oneSize + twoSize, " ", 1);
    contents.writeBytes(oneSize + twoSize + 1, three, threeSize);
    return section;
}

// --- Groups

Group* ObjectModule::createGroup(const char* name, const char* signature, uint32_t flags) {
    changeStructure();
    Group* const group = make<Group>(this, name, signature, flags);
    group->m_Index = m_Groups.getSize();
    m_Groups.add(group);
    forgetGroupNames();
    if (group->isComdat()) {
        enterComdatGroup(group);
    }
    return group;
}

// The first group of a name stands for it. Few ask, so the table is made for those who do, and
// dropped by every change.
Group* ObjectModule::findGroup(const char* name) {
    if (m_MapNamesToGroups.getCount() == 0) {
        for (Group* const group : m_Groups) {
            const Stringlett key(group->getName());
            if (!m_MapNamesToGroups.containsKey(key)) {
                m_MapNamesToGroups.set(key, group);
            }
        }
    }
    Group* const* const place = m_MapNamesToGroups.find(Stringlett(name));
    return place != nullptr ? *place : nullptr;
}

void ObjectModule::forgetGroupNames() {
    if (m_MapNamesToGroups.getCount() != 0) {
        m_MapNamesToGroups.clear();
    }
}

// The first group with a signature stands for it.
void ObjectModule::enterComdatGroup(Group* group) {
    const Stringlett signature(group->getSignature());
    if (!m_MapSignaturesToComdatGroups.containsKey(signature)) {
        m_MapSignaturesToComdatGroups.set(signature, group);
    }
}

void ObjectModule::leaveComdatGroup(Group* group) {
    if (findComdatGroup(group->getSignature()) == group) {
        m_MapSignaturesToComdatGroups.remove(Stringlett(group->getSignature()));
    }
}

Group* ObjectModule::findComdatGroup(const char* signature) const {
    Group* const* const place = m_MapSignaturesToComdatGroups.find(Stringlett(signature));
    return place != nullptr ? *place : nullptr;
}

Group* ObjectModule::getOrCreateComdatGroup(const char* signature) {
    TOMEX_CHECK_TEXT(signature != nullptr, "signature != NULL");
    Group* const group = findComdatGroup(signature);
    return group != nullptr ? group : createGroup(signature, signature, GRP_COMDAT);
}

// --- Segments, raw data, overlays

Segment* ObjectModule::createSegment(const SegmentFields& fields) {
    // The names in this condition appear in the fault's text.
    [[maybe_unused]] const uint64_t alignment = fields.m_Alignment;
    TOMEX_CHECK_TEXT((alignment & ~(alignment & (0 - alignment))) == 0,
                     "(alignment & ~(alignment & (0-alignment))) == 0");
    return createSegmentAsRead(fields);
}

Segment* ObjectModule::createSegmentAsRead(const SegmentFields& fields) {
    changeStructure();
    Segment* const segment = make<Segment>(this, fields);
    segment->m_Index = m_Segments.getSize();
    m_Segments.add(segment);
    return segment;
}

RawDataBlock* ObjectModule::createRawDataBlock(uint64_t size) {
    changeStructure();
    RawDataBlock* const block = make<RawDataBlock>(this, size);
    m_RawDataBlocks.add(block);
    return block;
}

void ObjectModule::addDebugOverlayRecord(const DebugOverlayRecord& record) {
    m_DebugOverlayRecords.add(record);
    markChanged();
}

// --- Dynamic records

NeededLibrary* ObjectModule::addNeededLibrary(const char* name) {
    changeStructure();
    NeededLibrary* const library = make<NeededLibrary>(this, name);
    m_NeededLibraries.add(library);
    return library;
}

LibrarySearchPath* ObjectModule::addLibrarySearchPath(const char* path, uint32_t tag) {
    changeStructure();
    LibrarySearchPath* const searchPath = make<LibrarySearchPath>(this, path, tag);
    m_LibrarySearchPaths.add(searchPath);
    return searchPath;
}

Preemption* ObjectModule::addPreemption(const char* symbolName, const char* preemptingDllName) {
    changeStructure();
    Preemption* const preemption = make<Preemption>(this, symbolName, preemptingDllName);
    m_Preemptions.add(preemption);
    return preemption;
}

FileVersionDefinition* ObjectModule::createFileVersionDefinition(uint16_t index, uint16_t flags) {
    changeStructure();
    m_FileVersionDefinition = make<FileVersionDefinition>(this, index, flags);
    return m_FileVersionDefinition;
}

template <typename Kind>
Kind* ObjectModule::append(Chain<Kind>& chain, Kind* object) {
    (chain.m_Last != nullptr ? chain.m_Last->m_Next : chain.m_First) = object;
    chain.m_Last = object;
    return object;
}

SymbolVersionDefinition* ObjectModule::createSymbolVersionDefinition(uint16_t index,
                                                                     uint16_t flags) {
    changeStructure();
    return append(m_VersionDefinitions, make<SymbolVersionDefinition>(this, index, flags));
}

SymbolVersionRequirement* ObjectModule::createSymbolVersionRequirement(uint16_t index,
                                                                       uint16_t flags,
                                                                       const char* libraryName,
                                                                       const char* versionString) {
    changeStructure();
    return append(m_VersionRequirements,
                  make<SymbolVersionRequirement>(this, index, flags, libraryName, versionString));
}

} // namespace elfext
