// What is to be removed from a module: the questions that `ObjectModule::prune` asks.
//
// A criteria object is asked about every object of a module, once each; true means that the object
// goes. The base class keeps everything. Objects are never null and are all still there while
// questions are asked, so an answer may look at the whole module, but must not change it.
#pragma once

#include "elfext/interface/hash_set.h"

#include <cstdint>

namespace elfext {

class Group;
class LibrarySearchPath;
class NeededLibrary;
class PreemptedDll;
class Preemption;
class Relocation;
class Section;
class Segment;
class Symbol;

class PruneCriteria {
public:
    PruneCriteria() = default;
    PruneCriteria(const PruneCriteria&) = delete;
    PruneCriteria& operator=(const PruneCriteria&) = delete;
    virtual ~PruneCriteria() = default;

    virtual bool matchesSection(const Section* section);
    virtual bool matchesSegment(const Segment* segment);
    virtual bool matchesSymbol(const Symbol* symbol);
    virtual bool matchesRelocation(const Relocation* relocation);
    virtual bool matchesGroup(const Group* group);
    virtual bool matchesNeededLibrary(const NeededLibrary* neededLibrary);
    virtual bool matchesLibrarySearchPath(const LibrarySearchPath* librarySearchPath);
    virtual bool matchesPreemption(const Preemption* preemption);
    virtual bool matchesPreemptedDll(const Preemption* preemption,
                                     const PreemptedDll* preemptedDll);
};

// Matches the objects that it has been told of. They stay their module's.
class ManualPruneCriteria : public PruneCriteria {
public:
    void addSection(const Section* section);
    void addSegment(const Segment* segment);
    void addSymbol(const Symbol* symbol);
    void addRelocation(const Relocation* relocation);
    void addGroup(const Group* group);
    void addNeededLibrary(const NeededLibrary* neededLibrary);
    void addLibrarySearchPath(const LibrarySearchPath* librarySearchPath);
    void addPreemption(const Preemption* preemption);
    void addPreemptedDll(const PreemptedDll* preemptedDll);

    bool matchesSection(const Section* section) override;
    bool matchesSegment(const Segment* segment) override;
    bool matchesSymbol(const Symbol* symbol) override;
    bool matchesRelocation(const Relocation* relocation) override;
    bool matchesGroup(const Group* group) override;
    bool matchesNeededLibrary(const NeededLibrary* neededLibrary) override;
    bool matchesLibrarySearchPath(const LibrarySearchPath* librarySearchPath) override;
    bool matchesPreemption(const Preemption* preemption) override;
    bool matchesPreemptedDll(const Preemption* preemption,
                             const PreemptedDll* preemptedDll) override;

private:
    hash_set<const Section*> m_Sections;
    hash_set<const Segment*> m_Segments;
    hash_set<const Symbol*> m_Symbols;
    hash_set<const Relocation*> m_Relocations;
    hash_set<const Group*> m_Groups;
    hash_set<const NeededLibrary*> m_NeededLibraries;
    hash_set<const LibrarySearchPath*> m_LibrarySearchPaths;
    hash_set<const Preemption*> m_Preemptions;
    hash_set<const PreemptedDll*> m_PreemptedDlls;
};

// Matches the sections of one type.
class SectionTypePruneCriteria : public PruneCriteria {
public:
    // `sectionType` is an SHT_ number.
    explicit SectionTypePruneCriteria(uint32_t sectionType) : m_SectionType(sectionType) {}

    bool matchesSection(const Section* section) override;

private:
    uint32_t m_SectionType;
};

// Matches whatever others do not match. Mind that this holds for all kinds of objects: the negation
// of criteria about sections alone matches everything that is no section.
class NotPruneCriteria : public PruneCriteria {
public:
    // `subcriteria` is not null. It must outlive this object, or belongs to it from now on.
    NotPruneCriteria(PruneCriteria* subcriteria, bool ownsSubcriteria);
    ~NotPruneCriteria() override;
    NotPruneCriteria(const NotPruneCriteria&) = delete;
    NotPruneCriteria& operator=(const NotPruneCriteria&) = delete;

    bool matchesSection(const Section* section) override;
    bool matchesSegment(const Segment* segment) override;
    bool matchesSymbol(const Symbol* symbol) override;
    bool matchesRelocation(const Relocation* relocation) override;
    bool matchesGroup(const Group* group) override;
    bool matchesNeededLibrary(const NeededLibrary* neededLibrary) override;
    bool matchesLibrarySearchPath(const LibrarySearchPath* librarySearchPath) override;
    bool matchesPreemption(const Preemption* preemption) override;
    bool matchesPreemptedDll(const Preemption* preemption,
                             const PreemptedDll* preemptedDll) override;

private:
    PruneCriteria* m_Subcriteria;
    bool m_OwnsSubcriteria;
};

} // namespace elfext
