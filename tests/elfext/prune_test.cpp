// Removing objects: the criteria, the questions, and what becomes of those that stay.
#include "elfext/interface/prune_criteria.h"

#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/relocation.h"
#include "elfext/src/stray_section_criteria.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {
namespace {

using elfext_src_object_module_yuk::DeleteShndxSectionPruneCriteria;
using elfext_src_object_module_yuk::DeleteStrtabSectionPruneCriteria;

// A module with one of everything.
class PruneTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        null = module().createNullSection(0);
        text = makeSection();
        data = makeSection(".data");
        relocation = text->addRelocation(4, 1, nullptr);
        symbol = module().createHostedSymbol(named("function"), text, 0);
        dynamicSymbol = module().createDynamicUndefinedSymbol(named("printf"));
        group = module().createGroup(".group", "signature", GRP_COMDAT);
        segment = module().createSegment({.m_Type = PT_LOAD});
        library = module().addNeededLibrary("libc.so");
        path = module().addLibrarySearchPath("/lib", DT_RPATH);
        preemption = module().addPreemption("malloc", "libmalloc.so");
        dll = preemption->addPreemptedDll("libc.so");
    }

    Section* null = nullptr;
    Section* text = nullptr;
    Section* data = nullptr;
    Relocation* relocation = nullptr;
    Symbol* symbol = nullptr;
    Symbol* dynamicSymbol = nullptr;
    Group* group = nullptr;
    Segment* segment = nullptr;
    NeededLibrary* library = nullptr;
    LibrarySearchPath* path = nullptr;
    Preemption* preemption = nullptr;
    PreemptedDll* dll = nullptr;
};

using PruneDeathTest = PruneTest;

// What each question is answered with, one letter a kind.
std::string answers(PruneCriteria& criteria, const Section* section, const Segment* segment,
                    const Symbol* symbol, const Relocation* relocation, const Group* group,
                    const NeededLibrary* library, const LibrarySearchPath* path,
                    const Preemption* preemption, const PreemptedDll* dll) {
    std::string yes;
    yes += criteria.matchesSection(section) ? "S" : "";
    yes += criteria.matchesSegment(segment) ? "P" : "";
    yes += criteria.matchesSymbol(symbol) ? "Y" : "";
    yes += criteria.matchesRelocation(relocation) ? "R" : "";
    yes += criteria.matchesGroup(group) ? "G" : "";
    yes += criteria.matchesNeededLibrary(library) ? "N" : "";
    yes += criteria.matchesLibrarySearchPath(path) ? "L" : "";
    yes += criteria.matchesPreemption(preemption) ? "E" : "";
    yes += criteria.matchesPreemptedDll(preemption, dll) ? "D" : "";
    return yes;
}

#define ANSWERS(criteria)                                                                          \
    answers(criteria, text, segment, symbol, relocation, group, library, path, preemption, dll)

TEST_F(PruneTest, TheBaseKeepsEverything) {
    PruneCriteria criteria;
    EXPECT_EQ(ANSWERS(criteria), "");
    module().prune(criteria);
    EXPECT_EQ(module().getSectionCount(), 3U);
    EXPECT_EQ(text->getRelocations().getSize(), 1U);
    EXPECT_EQ(preemption->getPreemptedDllCount(), 1U);
}

TEST_F(PruneTest, ManualCriteriaMatchWhatTheyWereTold) {
    ManualPruneCriteria criteria;
    EXPECT_EQ(ANSWERS(criteria), "");
    criteria.addSection(text);
    EXPECT_EQ(ANSWERS(criteria), "S");
    criteria.addSegment(segment);
    EXPECT_EQ(ANSWERS(criteria), "SP");
    criteria.addSymbol(symbol);
    EXPECT_EQ(ANSWERS(criteria), "SPY");
    criteria.addRelocation(relocation);
    EXPECT_EQ(ANSWERS(criteria), "SPYR");
    criteria.addGroup(group);
    EXPECT_EQ(ANSWERS(criteria), "SPYRG");
    criteria.addNeededLibrary(library);
    EXPECT_EQ(ANSWERS(criteria), "SPYRGN");
    criteria.addLibrarySearchPath(path);
    EXPECT_EQ(ANSWERS(criteria), "SPYRGNL");
    criteria.addPreemption(preemption);
    EXPECT_EQ(ANSWERS(criteria), "SPYRGNLE");
    criteria.addPreemptedDll(dll);
    EXPECT_EQ(ANSWERS(criteria), "SPYRGNLED");
    EXPECT_FALSE(criteria.matchesSection(data));
}

TEST_F(PruneDeathTest, ManualCriteriaWantObjects) {
    ManualPruneCriteria criteria;
    const char* const file = "elfext/src/prune_criteria";
    EXPECT_FAULT(criteria.addSection(nullptr), file, "section != NULL");
    EXPECT_FAULT(criteria.addSegment(nullptr), file, "segment != NULL");
    EXPECT_FAULT(criteria.addSymbol(nullptr), file, "symbol != NULL");
    EXPECT_FAULT(criteria.addRelocation(nullptr), file, "relocation != NULL");
    EXPECT_FAULT(criteria.addGroup(nullptr), file, "group != NULL");
    EXPECT_FAULT(criteria.addNeededLibrary(nullptr), file, "neededLibrary != NULL");
    EXPECT_FAULT(criteria.addLibrarySearchPath(nullptr), file, "librarySearchPath != NULL");
    EXPECT_FAULT(criteria.addPreemption(nullptr), file, "preemption != NULL");
    EXPECT_FAULT(criteria.addPreemptedDll(nullptr), file, "preemptedDll != NULL");
}

TEST_F(PruneTest, ASectionTypeMatchesItsSectionsAlone) {
    SectionTypePruneCriteria criteria(SHT_PROGBITS);
    EXPECT_EQ(ANSWERS(criteria), "S");
    EXPECT_FALSE(criteria.matchesSection(null));
}

TEST_F(PruneTest, NotNegatesEveryAnswer) {
    PruneCriteria nothing;
    NotPruneCriteria everything(&nothing, false);
    EXPECT_EQ(ANSWERS(everything), "SPYRGNLED");
    NotPruneCriteria nothingAgain(&everything, false);
    EXPECT_EQ(ANSWERS(nothingAgain), "");
}

TEST_F(PruneDeathTest, NotWantsCriteria) {
    EXPECT_FAULT(NotPruneCriteria(nullptr, false), "elfext/src/prune_criteria",
                 "subcriteria != NULL");
}

class CountedCriteria : public PruneCriteria {
public:
    CountedCriteria() { ++live; }
    ~CountedCriteria() override { --live; }
    static inline int live = 0;
};

TEST_F(PruneTest, NotEndsTheCriteriaThatItOwns) {
    { const NotPruneCriteria owner(new CountedCriteria, true); }
    EXPECT_EQ(CountedCriteria::live, 0);
    CountedCriteria mine;
    { const NotPruneCriteria borrower(&mine, false); }
    EXPECT_EQ(CountedCriteria::live, 1);
}

TEST_F(PruneTest, StrayStringTablesAreThoseThatAreNotInUse) {
    const Section* const names = module().createStringTableSection("names");
    const Section* const symbols = module().createStringTableSection("symbols");
    const Section* const dynamic = module().createStringTableSection("dynamic");
    const Section* const stray = module().createStringTableSection("stray");
    DeleteStrtabSectionPruneCriteria criteria(names, symbols, dynamic);
    EXPECT_EQ(ANSWERS(criteria), "");
    EXPECT_FALSE(criteria.matchesSection(names));
    EXPECT_FALSE(criteria.matchesSection(symbols));
    EXPECT_FALSE(criteria.matchesSection(dynamic));
    EXPECT_TRUE(criteria.matchesSection(stray));
}

TEST_F(PruneTest, StrayIndexTablesAreThoseThatAreNotInUse) {
    const Section* const first = module().createShndxSection();
    const Section* const second = module().createShndxSection();
    const Section* const stray = module().createShndxSection();
    DeleteShndxSectionPruneCriteria criteria(first, second);
    EXPECT_EQ(ANSWERS(criteria), "");
    EXPECT_FALSE(criteria.matchesSection(first));
    EXPECT_FALSE(criteria.matchesSection(second));
    EXPECT_TRUE(criteria.matchesSection(stray));
}

// --- Questions

// Notes each question, and answers as it is told.
class AskedCriteria : public PruneCriteria {
public:
    explicit AskedCriteria(bool answer = false) : m_Answer(answer) {}

    bool matchesSection(const Section* object) override { return note("section", object); }
    bool matchesSegment(const Segment* object) override { return note("segment", object); }
    bool matchesSymbol(const Symbol* object) override { return note("symbol", object); }
    bool matchesRelocation(const Relocation* object) override { return note("relocation", object); }
    bool matchesGroup(const Group* object) override { return note("group", object); }
    bool matchesNeededLibrary(const NeededLibrary* object) override {
        return note("library", object);
    }
    bool matchesLibrarySearchPath(const LibrarySearchPath* object) override {
        return note("path", object);
    }
    bool matchesPreemption(const Preemption* object) override { return note("preemption", object); }
    bool matchesPreemptedDll(const Preemption* /*of*/, const PreemptedDll* object) override {
        return note("dll", object);
    }

    using Questions = std::vector<std::pair<std::string, const void*>>;
    Questions m_Questions;

private:
    bool note(const char* kind, const void* object) {
        m_Questions.emplace_back(kind, object);
        return m_Answer;
    }
    bool m_Answer;
};

TEST_F(PruneTest, EachObjectIsAskedAboutOnceInOrder) {
    for (const bool answer : {false, true}) {
        AskedCriteria criteria(answer);
        module().prune(criteria);
        EXPECT_EQ(criteria.m_Questions, (AskedCriteria::Questions{{"section", null},
                                                                  {"section", text},
                                                                  {"relocation", relocation},
                                                                  {"section", data},
                                                                  {"symbol", symbol},
                                                                  {"symbol", dynamicSymbol},
                                                                  {"group", group},
                                                                  {"segment", segment},
                                                                  {"library", library},
                                                                  {"path", path},
                                                                  {"preemption", preemption},
                                                                  {"dll", dll}}));
    }
    EXPECT_TRUE(module().isEmpty());
    EXPECT_EQ(module().getSegmentCount(), 0U);
}

// Looks at the whole module at each question.
class LookingCriteria : public PruneCriteria {
public:
    explicit LookingCriteria(const ObjectModule& objectModule) : m_Module(objectModule) {}
    bool matchesSection(const Section* /*section*/) override { return allThere(); }
    bool matchesSymbol(const Symbol* /*symbol*/) override { return allThere(); }
    bool matchesPreemptedDll(const Preemption* /*of*/, const PreemptedDll* /*dll*/) override {
        return allThere();
    }

private:
    bool allThere() const {
        EXPECT_EQ(m_Module.getSectionCount(), 3U);
        EXPECT_EQ(m_Module.getSymbolCount(), 1U);
        return true;
    }
    const ObjectModule& m_Module;
};

TEST_F(PruneTest, NothingGoesBeforeTheLastAnswer) {
    LookingCriteria criteria(module());
    module().prune(criteria);
    EXPECT_EQ(module().getSectionCount(), 0U);
    EXPECT_EQ(module().getSymbolCount(), 0U);
    EXPECT_EQ(preemption->getPreemptedDllCount(), 0U);
}

TEST_F(PruneDeathTest, FrozenIndexesForbidIt) {
    PruneCriteria criteria;
    module().setIndexesFrozen(true);
    EXPECT_FAULT(module().prune(criteria), "elfext/src/prune", "!m_IndexesFrozen");
    EXPECT_FAULT(module().clear(), "elfext/src/object_module", "!m_IndexesFrozen");
}

TEST_F(PruneTest, TheAuxiliarySectionsAreStaleAfterwards) {
    PruneCriteria criteria;
    module().setAuxiliarySectionsUpToDate(true);
    module().prune(criteria);
    EXPECT_FALSE(module().areAuxiliarySectionsUpToDate());
}

// --- What stays

TEST_F(PruneTest, WhatStaysKeepsItsOrderAndIsNumberedAnew) {
    Section* const bss = module().createSection(".bss", SHT_NOBITS, SHF_ALLOC);
    ManualPruneCriteria criteria;
    criteria.addSection(text);
    module().prune(criteria);
    EXPECT_EQ(elementsOf(module().getSections()), (std::vector<Section*>{null, data, bss}));
    EXPECT_EQ(data->getIndex(), 1U);
    EXPECT_EQ(bss->getIndex(), 2U);
}

TEST_F(PruneTest, SpecialSectionsLeaveTheirListsToo) {
    Section* const strings = module().createStringTableSection(".strtab");
    Section* const others = module().createStringTableSection(".others");
    ManualPruneCriteria criteria;
    criteria.addSection(strings);
    module().prune(criteria);
    EXPECT_EQ(elementsOf(module().getStringTableSections()), std::vector<Section*>{others});
}

TEST_F(PruneTest, LinksToARemovedSectionLeadNowhere) {
    auto* const symbols = module().createSymbolTableSection(SHT_SYMTAB, ".symtab");
    auto* const extension = module().createShndxSection();
    auto* const hash = module().createHashSection();
    auto* const table = module().createRelocationSection(".rel.text", SHT_REL, 0);
    symbols->setShndxSection(extension);
    symbols->setHashSection(hash);
    symbols->setLink(data);
    table->setTarget(text, false);
    auto* const second = module().createRelocationSection(".rel.data", SHT_REL, 0);
    second->setTarget(data, false);
    ManualPruneCriteria criteria;
    for (const Section* const section :
         std::initializer_list<const Section*>{data, extension, hash, table}) {
        criteria.addSection(section);
    }
    module().prune(criteria);
    EXPECT_EQ(symbols->getLink(), nullptr);
    EXPECT_EQ(symbols->getShndxSection(), nullptr);
    EXPECT_EQ(symbols->getHashSection(), nullptr);
    EXPECT_EQ(second->getTarget(), nullptr);
    EXPECT_EQ(text->getRelocationSections().getSize(), 0U);
    EXPECT_EQ(text->getRelocations().getSize(), 1U);
}

TEST_F(PruneTest, GlobalSymbolsOfARemovedSectionBecomeUndefined) {
    Symbol* const other = module().createHostedSymbol(named("other"), data, 8);
    ManualPruneCriteria criteria;
    criteria.addSection(text);
    module().prune(criteria);
    EXPECT_EQ(symbol->getCategory(), Symbol::Category_Undefined);
    EXPECT_EQ(elementsOf(module().getUndefinedSymbols()), std::vector<Symbol*>{symbol});
    EXPECT_EQ(elementsOf(module().getSymbols()), (std::vector<Symbol*>{symbol, other}));
    symbol->makeHosted(data, 4); // it stands in its new list properly
    EXPECT_EQ(module().getUndefinedSymbols().getSize(), 0U);
}

TEST_F(PruneTest, LocalSymbolsOfARemovedSectionGoWithIt) {
    SymbolFields fields = named("local");
    fields.m_Binding = STB_LOCAL;
    module().createHostedSymbol(fields, text, 0);
    module().createHostedSymbol(named(nullptr, STT_SECTION), text, 0);
    module().createDynamicHostedSymbol(named("shown"), text, 0);
    ManualPruneCriteria criteria;
    criteria.addSection(text);
    module().prune(criteria);
    EXPECT_EQ(namesOf(module().getSymbols()), Names{"function"});
    EXPECT_EQ(namesOf(module().getDynamicSymbols()), (Names{"printf", "shown"}));
    EXPECT_EQ(namesOf(module().getUndefinedDynamicSymbols()), (Names{"printf", "shown"}));
}

TEST_F(PruneTest, RelocationsLoseTheSymbolThatGoes) {
    Relocation* const named = data->addRelocation(0, 2, symbol);
    symbol->setLinkedSymbol(nullptr);
    Symbol* const other = module().createUndefinedSymbol(this->named("other"));
    other->setLinkedSymbol(symbol);
    ManualPruneCriteria criteria;
    criteria.addSymbol(symbol);
    module().prune(criteria);
    EXPECT_EQ(named->getTarget(), nullptr);
    EXPECT_EQ(elementsOf(data->getRelocations()), std::vector<Relocation*>{named});
    EXPECT_EQ(other->getLinkedSymbol(), nullptr);
    EXPECT_EQ(text->getHostedSymbols().getSize(), 0U);
    EXPECT_EQ(namesOf(module().getSymbolsSortedByName()), Names{"other"});
    EXPECT_EQ(other->getObjectModule()->getSymbolIndex(other), 1U);
}

TEST_F(PruneTest, RelocationsGoByThemselves) {
    Relocation* const second = text->addRelocation(8, 2, nullptr);
    ManualPruneCriteria criteria;
    criteria.addRelocation(relocation);
    module().prune(criteria);
    EXPECT_EQ(elementsOf(text->getRelocations()), std::vector<Relocation*>{second});
    EXPECT_EQ(elementsOf(text->getRelocationsSortedByOffset()), std::vector<Relocation*>{second});
}

TEST_F(PruneTest, ARemovedGroupLetsItsMembersGo) {
    group->addMember(text);
    text->setFlags(text->getFlags() | SHF_GROUP);
    Group* const later = module().createGroup(".group", "signature", GRP_COMDAT);
    ManualPruneCriteria criteria;
    criteria.addGroup(group);
    module().prune(criteria);
    EXPECT_EQ(text->getGroup(), nullptr);
    EXPECT_EQ(text->getFlags(), uint32_t{SHF_ALLOC});
    EXPECT_EQ(module().findComdatGroup("signature"), later);
    EXPECT_EQ(later->getIndex(), 0U);
}

TEST_F(PruneTest, ARemovedMemberLeavesItsGroup) {
    Section* const groupSection = module().createGroupSection(".group");
    group->setSection(groupSection);
    group->addMember(text);
    group->addMember(data);
    ManualPruneCriteria criteria;
    criteria.addSection(text);
    criteria.addSection(groupSection);
    module().prune(criteria);
    EXPECT_EQ(elementsOf(group->getMembers()), std::vector<Section*>{data});
    EXPECT_EQ(group->getSection(), nullptr);
}

TEST_F(PruneTest, AGroupSectionFollowsTheNumberOfItsSymbol) {
    module().createUndefinedSymbol(named("signature"));
    auto* const section = module().createGroupSection(".group");
    group->setSection(section);
    section->setSignatureSymbolIndex(2);
    ManualPruneCriteria criteria;
    criteria.addSymbol(symbol);
    module().prune(criteria);
    EXPECT_EQ(section->getSignatureSymbolIndex(), 1U);
    ManualPruneCriteria all;
    all.addSymbol(module().getSymbol(1));
    module().prune(all);
    EXPECT_EQ(section->getSignatureSymbolIndex(), 0U);
}

TEST_F(PruneTest, RawDataAndNotesFollowTheirSegment) {
    RawDataBlock* const block = module().createRawDataBlock(16);
    RawDataBlock* const free = module().createRawDataBlock(8);
    segment->addContained(block, 0);
    segment->addContained(text, 16);
    text->setSegment(segment);
    ManualPruneCriteria criteria;
    criteria.addSegment(segment);
    module().prune(criteria);
    EXPECT_EQ(elementsOf(module().getRawDataBlocks()), std::vector<RawDataBlock*>{free});
    EXPECT_EQ(text->getSegment(), nullptr);
    EXPECT_EQ(text->getContainerCount(), 0U);
}

TEST_F(PruneTest, ASegmentForgetsARemovedSection) {
    segment->addContained(text, 0);
    segment->addContained(data, 16);
    ManualPruneCriteria criteria;
    criteria.addSection(text);
    module().prune(criteria);
    ASSERT_EQ(segment->getContainedCount(), 1U);
    EXPECT_EQ(segment->getContained(0).m_Region, data);
}

TEST_F(PruneTest, OverlayRecordsGoWithEitherSection) {
    Section* const debug = makeSection(".debug_info");
    module().addDebugOverlayRecord({1, debug, text});
    module().addDebugOverlayRecord({2, debug, data});
    ManualPruneCriteria criteria;
    criteria.addSection(text);
    module().prune(criteria);
    ASSERT_EQ(module().getDebugOverlayRecords().getSize(), 1U);
    EXPECT_EQ(module().getDebugOverlayRecords()[0].m_Id, 2U);
}

TEST_F(PruneTest, DynamicRecordsGoByThemselves) {
    ManualPruneCriteria criteria;
    criteria.addPreemptedDll(dll);
    criteria.addNeededLibrary(library);
    criteria.addLibrarySearchPath(path);
    module().prune(criteria);
    EXPECT_EQ(preemption->getPreemptedDllCount(), 0U);
    EXPECT_EQ(module().getNeededLibraryCount(), 0U);
    EXPECT_EQ(module().getLibrarySearchPathCount(), 0U);
    EXPECT_EQ(module().getPreemptionCount(), 1U);
}

TEST_F(PruneTest, TheNegationOfASectionTypeLeavesOnlySuchSections) {
    SectionTypePruneCriteria programs(SHT_PROGBITS);
    NotPruneCriteria criteria(&programs, false);
    module().prune(criteria);
    EXPECT_EQ(elementsOf(module().getSections()), (std::vector<Section*>{text, data}));
    EXPECT_EQ(module().getSymbolCount() + module().getDynamicSymbolCount() +
                  module().getGroupCount() + module().getSegmentCount() +
                  module().getNeededLibraryCount() + module().getLibrarySearchPathCount() +
                  module().getPreemptionCount() + text->getRelocations().getSize(),
              0U);
}

// --- Clearing

TEST_F(PruneTest, ClearingAnEmptyModuleDoesNothing) {
    ObjectModule empty;
    empty.setAuxiliarySectionsUpToDate(true);
    empty.clear();
    EXPECT_TRUE(empty.areAuxiliarySectionsUpToDate());
}

TEST_F(PruneTest, ClearingRemovesEverything) {
    module().createRawDataBlock(8);
    module().setSoName("lib.so");
    module().setProperties(7);
    module().clear();
    EXPECT_TRUE(module().isEmpty());
    EXPECT_EQ(module().getSegmentCount(), 0U);
    EXPECT_EQ(module().getUndefinedDynamicSymbols().getSize(), 0U);
    EXPECT_EQ(module().getSoName(), nullptr);
    EXPECT_EQ(module().getProperties(), 0U);
    EXPECT_EQ(module().findComdatGroup("signature"), nullptr);
    EXPECT_EQ(module().getSymbolsSortedByName().getSize(), 0U);
}

class PruneReadTest : public ReaderTest {
protected:
    static bool holds(Segment& segment, const Section& section) {
        for (uint32_t i = 0; i < segment.getContainedCount(); ++i) {
            if (segment.getContained(i).m_Region == &section) {
                return true;
            }
        }
        return false;
    }
};

// The relations that the reader leaves to be found are found without what has gone.
TEST_F(PruneReadTest, SectionsOfAReadFileLeaveTheirSegments) {
    const testsupport::RichElf rich = testsupport::richElf({}, testsupport::elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    uint32_t holder = 0;
    while (!holds(*module().getSegment(holder), section(rich.data))) {
        ++holder;
    }
    for (const bool isAskedBefore : {false, true}) {
        startModule();
        ASSERT_TRUE(read(rich));
        Segment& segment = *module().getSegment(holder);
        if (isAskedBefore) {
            EXPECT_TRUE(holds(segment, section(rich.data)));
        }
        Section* const data = &section(rich.data);
        ManualPruneCriteria criteria;
        criteria.addSection(data);
        module().prune(criteria);
        EXPECT_FALSE(holds(segment, *data)) << isAskedBefore;
        EXPECT_NE(segment.getContainedCount(), 0U);
    }
}

TEST_F(PruneReadTest, ReadRelocationsAreAskedAbout) {
    const testsupport::RichElf rich = testsupport::richElf();
    ASSERT_TRUE(read(rich));
    AskedCriteria criteria;
    module().prune(criteria);
    EXPECT_EQ(std::count_if(criteria.m_Questions.begin(), criteria.m_Questions.end(),
                            [](const auto& question) { return question.first == "relocation"; }),
              static_cast<long>(section(rich.text).getRelocations().getSize() +
                                section(rich.data).getRelocations().getSize() +
                                section(rich.debugInfo).getRelocations().getSize()));
}

} // namespace
} // namespace elfext::test
