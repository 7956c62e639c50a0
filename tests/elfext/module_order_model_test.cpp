// Objects by index, indexes of objects, and moves.
#include "elfext/interface/dynamic_records.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using ModuleOrderTest = ModelTest;
using ModuleOrderDeathTest = ModelTest;

constexpr const char* lookup = "elfext/src/object_module_lookup";
constexpr const char* header = "elfext/interface/object_module";

TEST_F(ModuleOrderTest, SectionsMoveAndTheOthersMakeRoom) {
    Section* const a = makeSection("a");
    Section* const b = makeSection("b");
    Section* const c = makeSection("c");
    Section* const d = makeSection("d");
    const auto orderIs = [this](const std::vector<Section*>& order) {
        EXPECT_EQ(elementsOf(module().getSections()), order);
        for (uint32_t i = 0; i < order.size(); ++i) {
            EXPECT_EQ(module().getSectionIndex(order[i]), i);
            EXPECT_EQ(order[i]->getIndex(), i);
            EXPECT_EQ(module().getSection(i), order[i]);
        }
    };
    orderIs({a, b, c, d});
    module().setSectionIndex(a, 2);
    orderIs({b, c, a, d});
    module().setSectionIndex(d, 1);
    orderIs({b, d, c, a});
    module().setSectionIndex(c, 0);
    orderIs({c, b, d, a});
    module().setSectionIndex(c, 0);
    orderIs({c, b, d, a});
    module().setSectionIndex(c, 3);
    orderIs({b, d, a, c});
}

TEST_F(ModuleOrderTest, LinksFollowSectionsThatMove) {
    Section* const null = module().createNullSection(0);
    Section* const strings = module().createStringTableSection(".strtab");
    Section* const symbols = module().createSymbolTableSection(SHT_SYMTAB);
    symbols->setLink(strings);
    module().setSectionIndex(symbols, 0);
    EXPECT_EQ(symbols->getLink()->getIndex(), 2U);
    EXPECT_EQ(null->getIndex(), 1U);
    module().setSectionIndex(strings, 0);
    EXPECT_EQ(symbols->getLink()->getIndex(), 0U);
}

TEST_F(ModuleOrderDeathTest, SectionsThatAreNotThere) {
    ObjectModule other;
    Section* const foreign = other.createSection("x", 1, 0);
    Section* const own = makeSection();
    EXPECT_FAULT(module().getSection(1), header, "index < m_Sections.getSize()");
    EXPECT_FAULT(module().getSectionIndex(nullptr), lookup, "section != NULL");
    EXPECT_FAULT(module().getSectionIndex(foreign), lookup, "section->m_ObjectModule == this");
    EXPECT_FAULT(module().setSectionIndex(own, 1), lookup, "index < m_Sections.getSize()");
    module().clear();
    EXPECT_FAULT(module().getSectionIndex(own), lookup,
                 "m_Sections.contains(const_cast<Section*>(section))");
}

TEST_F(ModuleOrderTest, SymbolsCountFrom1) {
    Symbol* const a = module().createUndefinedSymbol(named("a"));
    Symbol* const b = module().createUndefinedSymbol(named("b"));
    Symbol* const c = module().createUndefinedSymbol(named("c"));
    EXPECT_EQ(module().getSymbol(1), a);
    EXPECT_EQ(module().getSymbolIndex(c), 3U);
    module().setSymbolIndex(c, 1);
    EXPECT_EQ(elementsOf(module().getSymbols()), (std::vector<Symbol*>{c, a, b}));
    EXPECT_EQ(module().getSymbolIndex(c), 1U);
    EXPECT_EQ(module().getSymbolIndex(b), 3U);
    module().setSymbolIndex(c, 3);
    EXPECT_EQ(module().getSymbol(3), c);
}

TEST_F(ModuleOrderTest, DynamicSymbolsCountFrom1Too) {
    Symbol* const a = module().createDynamicUndefinedSymbol(named("a"));
    Symbol* const b = module().createDynamicUndefinedSymbol(named("b"));
    EXPECT_EQ(module().getDynamicSymbol(1), a);
    EXPECT_EQ(module().getDynamicSymbolIndex(b), 2U);
    module().setDynamicSymbolIndex(b, 1);
    EXPECT_EQ(module().getDynamicSymbolIndex(a), 2U);
    EXPECT_EQ(module().getDynamicSymbol(1), b);
}

TEST_F(ModuleOrderDeathTest, Symbol0DoesNotExist) {
    Symbol* const symbol = module().createUndefinedSymbol(named("a"));
    Symbol* const dynamic = module().createDynamicUndefinedSymbol(named("d"));
    const std::string condition = "index != 0 && index <= m_Symbols.getSize()";
    const std::string dynamicCondition = "index != 0 && index <= m_DynamicSymbols.getSize()";
    EXPECT_FAULT(module().getSymbol(0), lookup, condition);
    EXPECT_FAULT(module().getSymbol(2), lookup, condition);
    EXPECT_FAULT(module().setSymbolIndex(symbol, 0), lookup, condition);
    EXPECT_FAULT(module().setSymbolIndex(symbol, 2), lookup, condition);
    EXPECT_FAULT(module().getDynamicSymbol(0), lookup, dynamicCondition);
    EXPECT_FAULT(module().getDynamicSymbol(2), lookup, dynamicCondition);
    EXPECT_FAULT(module().setDynamicSymbolIndex(dynamic, 0), lookup, dynamicCondition);
}

TEST_F(ModuleOrderDeathTest, SymbolsThatAreNotThere) {
    ObjectModule other;
    Symbol* const foreign = other.createUndefinedSymbol(named("a"));
    Symbol* const foreignDynamic = other.createDynamicUndefinedSymbol(named("a"));
    Symbol* const symbol = module().createUndefinedSymbol(named("a"));
    Symbol* const dynamic = module().createDynamicUndefinedSymbol(named("d"));
    const std::string sameModule = "symbol->getObjectModule() == this";
    EXPECT_FAULT(module().getSymbolIndex(dynamic), lookup, "!symbol->isDynamic()");
    EXPECT_FAULT(module().getDynamicSymbolIndex(symbol), lookup, "symbol->isDynamic()");
    EXPECT_FAULT(module().getSymbolIndex(foreign), lookup, sameModule);
    EXPECT_FAULT(module().getDynamicSymbolIndex(foreignDynamic), lookup, sameModule);
    EXPECT_FAULT(module().getSymbolIndex(nullptr), lookup, "symbol != NULL");
    EXPECT_FAULT(module().getDynamicSymbolIndex(nullptr), lookup, "symbol != NULL");
    module().clear();
    EXPECT_FAULT(module().getSymbolIndex(symbol), lookup,
                 "m_Symbols.contains(const_cast<Symbol*>(symbol))");
    EXPECT_FAULT(module().getDynamicSymbolIndex(dynamic), lookup,
                 "m_DynamicSymbols.contains(const_cast<Symbol*>(symbol))");
}

TEST_F(ModuleOrderTest, GroupsAndSegmentsMove) {
    Group* const g = module().createGroup("g", "g", 0);
    Group* const h = module().createGroup("h", "h", 0);
    EXPECT_EQ(module().getGroupIndex(h), 1U);
    module().setGroupIndex(h, 0);
    EXPECT_EQ(h->getIndex(), 0U);
    EXPECT_EQ(g->getIndex(), 1U);
    EXPECT_EQ(module().getGroup(1), g);
    Segment* const s = module().createSegment(SegmentFields());
    Segment* const t = module().createSegment(SegmentFields());
    EXPECT_EQ(module().getSegmentIndex(t), 1U);
    module().setSegmentIndex(s, 1);
    EXPECT_EQ(s->getIndex(), 1U);
    EXPECT_EQ(t->getIndex(), 0U);
    EXPECT_EQ(module().getSegment(0), t);
    EXPECT_EQ(module().getSegmentCount(), 2U);
    EXPECT_EQ(elementsOf(module().getSegments()), (std::vector<Segment*>{t, s}));
}

TEST_F(ModuleOrderDeathTest, GroupsAndSegmentsThatAreNotThere) {
    ObjectModule other;
    Group* const group = other.createGroup("g", "g", 0);
    Segment* const segment = other.createSegment(SegmentFields());
    EXPECT_FAULT(module().getGroup(0), lookup, "index < m_Groups.getSize()");
    EXPECT_FAULT(module().getGroupIndex(nullptr), lookup, "group != NULL");
    EXPECT_FAULT(module().getGroupIndex(group), lookup, "group->m_ObjectModule == this");
    EXPECT_FAULT(other.setGroupIndex(group, 1), lookup, "index < m_Groups.getSize()");
    EXPECT_FAULT(module().getSegment(0), lookup, "index < m_Segments.getSize()");
    EXPECT_FAULT(module().getSegmentIndex(nullptr), lookup, "segment != NULL");
    EXPECT_FAULT(module().getSegmentIndex(segment), lookup, "segment->m_ObjectModule == this");
    EXPECT_FAULT(other.setSegmentIndex(segment, 1), lookup, "index < m_Segments.getSize()");
}

TEST_F(ModuleOrderTest, DynamicRecordsMove) {
    NeededLibrary* const l = module().addNeededLibrary("l");
    NeededLibrary* const m = module().addNeededLibrary("m");
    module().setNeededLibraryIndex(m, 0);
    EXPECT_EQ(module().getNeededLibrary(0), m);
    EXPECT_EQ(module().getNeededLibraryIndex(l), 1U);
    LibrarySearchPath* const p = module().addLibrarySearchPath("p", DT_RPATH);
    LibrarySearchPath* const q = module().addLibrarySearchPath("q", DT_RUNPATH);
    module().setLibrarySearchPathIndex(p, 1);
    EXPECT_EQ(module().getLibrarySearchPath(0), q);
    EXPECT_EQ(module().getLibrarySearchPathIndex(p), 1U);
    Preemption* const r = module().addPreemption("r", "d");
    Preemption* const s = module().addPreemption("s", "d");
    module().setPreemptionIndex(s, 0);
    EXPECT_EQ(module().getPreemption(1), r);
    EXPECT_EQ(module().getPreemptionIndex(s), 0U);
}

TEST_F(ModuleOrderDeathTest, DynamicRecordsThatAreNotThere) {
    ObjectModule other;
    NeededLibrary* const library = other.addNeededLibrary("l");
    LibrarySearchPath* const path = other.addLibrarySearchPath("p", DT_RPATH);
    Preemption* const preemption = other.addPreemption("s", "d");
    EXPECT_FAULT(module().getNeededLibrary(0), lookup, "index < m_NeededLibraries.getSize()");
    EXPECT_FAULT(module().getNeededLibraryIndex(nullptr), lookup, "neededLibrary != NULL");
    EXPECT_FAULT(module().getNeededLibraryIndex(library), lookup,
                 "neededLibrary->getObjectModule() == this");
    EXPECT_FAULT(module().getLibrarySearchPath(0), lookup,
                 "index < m_LibrarySearchPaths.getSize()");
    EXPECT_FAULT(module().getLibrarySearchPathIndex(nullptr), lookup, "librarySearchPath != NULL");
    EXPECT_FAULT(module().getLibrarySearchPathIndex(path), lookup,
                 "librarySearchPath->getObjectModule() == this");
    EXPECT_FAULT(module().getPreemption(0), lookup, "index < m_Preemptions.getSize()");
    EXPECT_FAULT(module().getPreemptionIndex(nullptr), lookup, "preemption != NULL");
    EXPECT_FAULT(module().getPreemptionIndex(preemption), lookup,
                 "preemption->getObjectModule() == this");
    EXPECT_FAULT(other.setPreemptionIndex(preemption, 1), lookup,
                 "index < m_Preemptions.getSize()");
}

TEST_F(ModuleOrderTest, IndexesOfManySectionsInAnyOrder) {
    constexpr uint32_t count = 5000;
    module().reserveSections(count);
    for (uint32_t i = 0; i < count; ++i) {
        makeSection(nullptr);
    }
    module().setSectionIndex(module().getSection(count - 1), 0);
    for (uint32_t i = count; i-- > 0;) {
        ASSERT_EQ(module().getSectionIndex(module().getSection(i)), i);
    }
}

} // namespace
} // namespace elfext::test
