// Objects by index, indexes of objects, and moving objects to other indexes.
//
// An object remembers where it stood last. If it does not stand there any more, all of its kind
// learn their places anew: so asking for all indexes after a change costs one walk.
#include "alloclib/interface/region_general.h"
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/object_module.h"
#include "elfext/src/object_module_make.h"

namespace elfext {

template <typename Kind>
uint32_t ObjectModule::indexOf(const fast_array<Kind*>& list, const Kind* object) const {
    const auto isThere = [&list, object](uint32_t index) {
        return index < list.getSize() && list[index] == object;
    };
    if constexpr (requires { &Kind::m_Index; }) {
        if (!isThere(object->m_Index)) {
            for (uint32_t i = 0; i < list.getSize(); ++i) {
                list[i]->m_Index = i;
            }
        }
        return isThere(object->m_Index) ? object->m_Index : list.getSize();
    } else {
        uint32_t index = 0;
        while (index < list.getSize() && !isThere(index)) {
            ++index;
        }
        return index;
    }
}

template <typename Kind>
void ObjectModule::move(fast_array<Kind*>& list, uint32_t from, uint32_t to) {
    Kind* const moved = list[from];
    for (; from < to; ++from) {
        list[from] = list[from + 1];
    }
    for (; from > to; --from) {
        list[from] = list[from - 1];
    }
    list[to] = moved;
}

// --- Sections

uint32_t ObjectModule::getSectionIndex(const Section* section) const {
    TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
    TOMEX_CHECK(section->m_ObjectModule == this);
    const uint32_t index = indexOf(m_Sections, section);
    TOMEX_CHECK_TEXT(index < m_Sections.getSize(),
                     "m_Sections.contains(const_cast<Section*>(section))");
    return index;
}

StringTableSection* ObjectModule::getSectionNameTable() const {
    for (Section* const section : m_StringTableSections) {
        auto* const table = static_cast<StringTableSection*>(section);
        if (table->servesSectionNames()) {
            return table;
        }
    }
    return nullptr;
}

void ObjectModule::setSectionIndex(Section* section, uint32_t index) {
    TOMEX_CHECK(index < m_Sections.getSize());
    changeStructure();
    const uint32_t from = getSectionIndex(section);
    if (index == 0) {
        moveToFront(from);
    } else {
        move(m_Sections, from, index);
    }
}

// Links are numbered by the indexes of sections, and number 0 stands for no link: so here indexes
// are not left to be found out later.
void ObjectModule::moveToFront(uint32_t from) {
    alloclib::Region* const region =
        alloclib::RegionGeneral::Create(1024, "setSectionIndex() temp region");
    {
        const uint32_t count = m_Sections.getSize();
        fast_array<uint32_t> newIndexes(region, count);
        for (uint32_t i = 0; i < count; ++i) {
            newIndexes[i] = i < from ? i + 1 : i;
        }
        newIndexes[from] = 0;
        SectionArray oldSections(region);
        oldSections = m_Sections;
        for (uint32_t i = 0; i < count; ++i) {
            m_Sections[newIndexes[i]] = oldSections[i];
            oldSections[i]->m_Index = newIndexes[i];
        }
    }
    region->Destroy(true);
}

// --- Symbols, which count from 1

Symbol* ObjectModule::getSymbol(uint32_t index) const {
    TOMEX_CHECK(index != 0 && index <= m_Symbols.getSize());
    return m_Symbols[index - 1];
}

Symbol* ObjectModule::getDynamicSymbol(uint32_t index) const {
    TOMEX_CHECK(index != 0 && index <= m_DynamicSymbols.getSize());
    return m_DynamicSymbols[index - 1];
}

uint32_t ObjectModule::getSymbolIndex(const Symbol* symbol) const {
    TOMEX_CHECK_TEXT(symbol != nullptr, "symbol != NULL");
    TOMEX_CHECK(!symbol->isDynamic());
    TOMEX_CHECK(symbol->getObjectModule() == this);
    const uint32_t index = indexOf(m_Symbols, symbol);
    TOMEX_CHECK_TEXT(index < m_Symbols.getSize(),
                     "m_Symbols.contains(const_cast<Symbol*>(symbol))");
    return index + 1;
}

uint32_t ObjectModule::getDynamicSymbolIndex(const Symbol* symbol) const {
    TOMEX_CHECK_TEXT(symbol != nullptr, "symbol != NULL");
    TOMEX_CHECK(symbol->isDynamic());
    TOMEX_CHECK(symbol->getObjectModule() == this);
    const uint32_t index = indexOf(m_DynamicSymbols, symbol);
    TOMEX_CHECK_TEXT(index < m_DynamicSymbols.getSize(),
                     "m_DynamicSymbols.contains(const_cast<Symbol*>(symbol))");
    return index + 1;
}

// Ties of sorted lists stand in the order of the table, so that they must be sorted anew.
void ObjectModule::setSymbolIndex(Symbol* symbol, uint32_t index) {
    TOMEX_CHECK(index != 0 && index <= m_Symbols.getSize());
    changeStructure();
    m_SymbolListsSorted = false;
    move(m_Symbols, getSymbolIndex(symbol) - 1, index - 1);
}

void ObjectModule::setDynamicSymbolIndex(Symbol* symbol, uint32_t index) {
    TOMEX_CHECK(index != 0 && index <= m_DynamicSymbols.getSize());
    changeStructure();
    m_SymbolListsSorted = false;
    move(m_DynamicSymbols, getDynamicSymbolIndex(symbol) - 1, index - 1);
}

// --- Groups

Group* ObjectModule::getGroup(uint32_t index) const {
    TOMEX_CHECK(index < m_Groups.getSize());
    return m_Groups[index];
}

uint32_t ObjectModule::getGroupIndex(const Group* group) const {
    TOMEX_CHECK_TEXT(group != nullptr, "group != NULL");
    TOMEX_CHECK(group->m_ObjectModule == this);
    const uint32_t index = indexOf(m_Groups, group);
    TOMEX_CHECK_TEXT(index < m_Groups.getSize(), "m_Groups.contains(const_cast<Group*>(group))");
    return index;
}

void ObjectModule::setGroupIndex(Group* group, uint32_t index) {
    TOMEX_CHECK(index < m_Groups.getSize());
    changeStructure();
    forgetGroupNames();
    move(m_Groups, getGroupIndex(group), index);
}

// --- Segments

Segment* ObjectModule::getSegment(uint32_t index) const {
    TOMEX_CHECK(index < m_Segments.getSize());
    return m_Segments[index];
}

uint32_t ObjectModule::getSegmentIndex(const Segment* segment) const {
    TOMEX_CHECK_TEXT(segment != nullptr, "segment != NULL");
    TOMEX_CHECK(segment->m_ObjectModule == this);
    const uint32_t index = indexOf(m_Segments, segment);
    TOMEX_CHECK_TEXT(index < m_Segments.getSize(),
                     "m_Segments.contains(const_cast<Segment*>(segment))");
    return index;
}

void ObjectModule::setSegmentIndex(Segment* segment, uint32_t index) {
    TOMEX_CHECK(index < m_Segments.getSize());
    changeStructure();
    move(m_Segments, getSegmentIndex(segment), index);
}

// --- Dynamic records

NeededLibrary* ObjectModule::getNeededLibrary(uint32_t index) const {
    TOMEX_CHECK(index < m_NeededLibraries.getSize());
    return m_NeededLibraries[index];
}

uint32_t ObjectModule::getNeededLibraryIndex(const NeededLibrary* neededLibrary) const {
    TOMEX_CHECK_TEXT(neededLibrary != nullptr, "neededLibrary != NULL");
    TOMEX_CHECK(neededLibrary->getObjectModule() == this);
    const uint32_t index = indexOf(m_NeededLibraries, neededLibrary);
    TOMEX_CHECK_TEXT(index < m_NeededLibraries.getSize(),
                     "m_NeededLibraries.contains(const_cast<NeededLibrary*>(neededLibrary))");
    return index;
}

void ObjectModule::setNeededLibraryIndex(NeededLibrary* neededLibrary, uint32_t index) {
    TOMEX_CHECK(index < m_NeededLibraries.getSize());
    changeStructure();
    move(m_NeededLibraries, getNeededLibraryIndex(neededLibrary), index);
}

LibrarySearchPath* ObjectModule::getLibrarySearchPath(uint32_t index) const {
    TOMEX_CHECK(index < m_LibrarySearchPaths.getSize());
    return m_LibrarySearchPaths[index];
}

uint32_t ObjectModule::getLibrarySearchPathIndex(const LibrarySearchPath* librarySearchPath) const {
    TOMEX_CHECK_TEXT(librarySearchPath != nullptr, "librarySearchPath != NULL");
    TOMEX_CHECK(librarySearchPath->getObjectModule() == this);
    const uint32_t index = indexOf(m_LibrarySearchPaths, librarySearchPath);
    TOMEX_CHECK_TEXT(
        index < m_LibrarySearchPaths.getSize(),
        "m_LibrarySearchPaths.contains(const_cast<LibrarySearchPath*>(librarySearchPath))");
    return index;
}

void ObjectModule::setLibrarySearchPathIndex(LibrarySearchPath* librarySearchPath, uint32_t index) {
    TOMEX_CHECK(index < m_LibrarySearchPaths.getSize());
    changeStructure();
    move(m_LibrarySearchPaths, getLibrarySearchPathIndex(librarySearchPath), index);
}

Preemption* ObjectModule::getPreemption(uint32_t index) const {
    TOMEX_CHECK(index < m_Preemptions.getSize());
    return m_Preemptions[index];
}

uint32_t ObjectModule::getPreemptionIndex(const Preemption* preemption) const {
    TOMEX_CHECK_TEXT(preemption != nullptr, "preemption != NULL");
    TOMEX_CHECK(preemption->getObjectModule() == this);
    const uint32_t index = indexOf(m_Preemptions, preemption);
    TOMEX_CHECK_TEXT(index < m_Preemptions.getSize(),
                     "m_Preemptions.contains(const_cast<Preemption*>(preemption))");
    return index;
}

void ObjectModule::setPreemptionIndex(Preemption* preemption, uint32_t index) {
    TOMEX_CHECK(index < m_Preemptions.getSize());
    changeStructure();
    move(m_Preemptions, getPreemptionIndex(preemption), index);
}

} // namespace elfext
