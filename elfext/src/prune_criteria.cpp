// The answers of the criteria.
#include "elfext/interface/prune_criteria.h"

#include "elfext/interface/section.h"

namespace elfext {

// --- Nothing

bool PruneCriteria::matchesSection(const Section* /*section*/) {
    return false;
}

bool PruneCriteria::matchesSegment(const Segment* /*segment*/) {
    return false;
}

bool PruneCriteria::matchesSymbol(const Symbol* /*symbol*/) {
    return false;
}

bool PruneCriteria::matchesRelocation(const Relocation* /*relocation*/) {
    return false;
}

bool PruneCriteria::matchesGroup(const Group* /*group*/) {
    return false;
}

bool PruneCriteria::matchesNeededLibrary(const NeededLibrary* /*neededLibrary*/) {
    return false;
}

bool PruneCriteria::matchesLibrarySearchPath(const LibrarySearchPath* /*librarySearchPath*/) {
    return false;
}

bool PruneCriteria::matchesPreemption(const Preemption* /*preemption*/) {
    return false;
}

bool PruneCriteria::matchesPreemptedDll(const Preemption* /*preemption*/,
                                        const PreemptedDll* /*preemptedDll*/) {
    return false;
}

// --- What has been named

void ManualPruneCriteria::addSection(const Section* section) {
    TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
    m_Sections.add(section);
}

void ManualPruneCriteria::addSegment(const Segment* segment) {
    TOMEX_CHECK_TEXT(segment != nullptr, "segment != NULL");
    m_Segments.add(segment);
}

void ManualPruneCriteria::addSymbol(const Symbol* symbol) {
    TOMEX_CHECK_TEXT(symbol != nullptr, "symbol != NULL");
    m_Symbols.add(symbol);
}

void ManualPruneCriteria::addRelocation(const Relocation* relocation) {
    TOMEX_CHECK_TEXT(relocation != nullptr, "relocation != NULL");
    m_Relocations.add(relocation);
}

void ManualPruneCriteria::addGroup(const Group* group) {
    TOMEX_CHECK_TEXT(group != nullptr, "group != NULL");
    m_Groups.add(group);
}

void ManualPruneCriteria::addNeededLibrary(const NeededLibrary* neededLibrary) {
    TOMEX_CHECK_TEXT(neededLibrary != nullptr, "neededLibrary != NULL");
    m_NeededLibraries.add(neededLibrary);
}

void ManualPruneCriteria::addLibrarySearchPath(const LibrarySearchPath* librarySearchPath) {
    TOMEX_CHECK_TEXT(librarySearchPath != nullptr, "librarySearchPath != NULL");
    m_LibrarySearchPaths.add(librarySearchPath);
}

void ManualPruneCriteria::addPreemption(const Preemption* preemption) {
    TOMEX_CHECK_TEXT(preemption != nullptr, "preemption != NULL");
    m_Preemptions.add(preemption);
}

void ManualPruneCriteria::addPreemptedDll(const PreemptedDll* preemptedDll) {
    TOMEX_CHECK_TEXT(preemptedDll != nullptr, "preemptedDll != NULL");
    m_PreemptedDlls.add(preemptedDll);
}

bool ManualPruneCriteria::matchesSection(const Section* section) {
    return m_Sections.contains(section);
}

bool ManualPruneCriteria::matchesSegment(const Segment* segment) {
    return m_Segments.contains(segment);
}

bool ManualPruneCriteria::matchesSymbol(const Symbol* symbol) {
    return m_Symbols.contains(symbol);
}

bool ManualPruneCriteria::matchesRelocation(const Relocation* relocation) {
    return m_Relocations.contains(relocation);
}

bool ManualPruneCriteria::matchesGroup(const Group* group) {
    return m_Groups.contains(group);
}

bool ManualPruneCriteria::matchesNeededLibrary(const NeededLibrary* neededLibrary) {
    return m_NeededLibraries.contains(neededLibrary);
}

bool ManualPruneCriteria::matchesLibrarySearchPath(const LibrarySearchPath* librarySearchPath) {
    return m_LibrarySearchPaths.contains(librarySearchPath);
}

bool ManualPruneCriteria::matchesPreemption(const Preemption* preemption) {
    return m_Preemptions.contains(preemption);
}

bool ManualPruneCriteria::matchesPreemptedDll(const Preemption* /*preemption*/,
                                              const PreemptedDll* preemptedDll) {
    return m_PreemptedDlls.contains(preemptedDll);
}

// --- One type of sections

bool SectionTypePruneCriteria::matchesSection(const Section* section) {
    return section->getType() == m_SectionType;
}

// --- The opposite

NotPruneCriteria::NotPruneCriteria(PruneCriteria* subcriteria, bool ownsSubcriteria)
    : m_Subcriteria(subcriteria), m_OwnsSubcriteria(ownsSubcriteria) {
    TOMEX_CHECK_TEXT(subcriteria != nullptr, "subcriteria != NULL");
}

NotPruneCriteria::~NotPruneCriteria() {
    if (m_OwnsSubcriteria) {
        delete m_Subcriteria;
    }
}

bool NotPruneCriteria::matchesSection(const Section* section) {
    return !m_Subcriteria->matchesSection(section);
}

bool NotPruneCriteria::matchesSegment(const Segment* segment) {
    return !m_Subcriteria->matchesSegment(segment);
}

bool NotPruneCriteria::matchesSymbol(const Symbol* symbol) {
    return !m_Subcriteria->matchesSymbol(symbol);
}

bool NotPruneCriteria::matchesRelocation(const Relocation* relocation) {
    return !m_Subcriteria->matchesRelocation(relocation);
}

bool NotPruneCriteria::matchesGroup(const Group* group) {
    return !m_Subcriteria->matchesGroup(group);
}

bool NotPruneCriteria::matchesNeededLibrary(const NeededLibrary* neededLibrary) {
    return !m_Subcriteria->matchesNeededLibrary(neededLibrary);
}

bool NotPruneCriteria::matchesLibrarySearchPath(const LibrarySearchPath* librarySearchPath) {
    return !m_Subcriteria->matchesLibrarySearchPath(librarySearchPath);
}

bool NotPruneCriteria::matchesPreemption(const Preemption* preemption) {
    return !m_Subcriteria->matchesPreemption(preemption);
}

bool NotPruneCriteria::matchesPreemptedDll(const Preemption* preemption,
                                           const PreemptedDll* preemptedDll) {
    return !m_Subcriteria->matchesPreemptedDll(preemption, preemptedDll);
}

} // namespace elfext
