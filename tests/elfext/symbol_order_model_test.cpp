// Sorted lists of symbols, range queries, and symbols by name.
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

class SymbolOrderTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        m_Text = makeSection();
    }
    Symbol* add(const char* name, uint64_t offset) {
        return module().createHostedSymbol(named(name), m_Text, offset);
    }
    Names range(uint64_t from, uint64_t to, uint32_t kinds = SymbolKind_All) {
        SymbolList list;
        m_Text->getHostedSymbols(from, to, kinds, list);
        return namesOf(list);
    }
    static std::string nameOf(const Symbol* symbol) {
        return symbol != nullptr ? symbol->getName() : "none";
    }
    Section* m_Text = nullptr;
};

TEST_F(SymbolOrderTest, ByNameWithNoNameFirstAndBytesUnsigned) {
    for (const char* const name : {"b", "\xC3", "", "a", "ab", "B"}) {
        module().createUndefinedSymbol(named(name));
    }
    module().createUndefinedSymbol(named(nullptr));
    EXPECT_EQ(namesOf(module().getSymbolsSortedByName()),
              (Names{"(null)", "", "B", "a", "ab", "b", "\xC3"}));
    EXPECT_EQ(module().getDynamicSymbolsSortedByName().getSize(), 0U);
}

TEST_F(SymbolOrderTest, ByAddressWithTiesInTheOrderOfTheTable) {
    m_Text->setAddress(10);
    add("c", 5);
    module().createAbsoluteSymbol(named("b"), 15);
    add("a", 5);
    module().createUndefinedSymbol(named("u"));
    module().createCommonSymbol(named("common"), 99);
    module().createAbsoluteSymbol(named("z"), UINT64_MAX);
    EXPECT_EQ(namesOf(module().getSymbolsSortedByAddress()),
              (Names{"u", "common", "c", "b", "a", "z"}));
}

TEST_F(SymbolOrderTest, DynamicSymbolsAreSortedApart) {
    module().createDynamicAbsoluteSymbol(named("b"), 1);
    module().createDynamicAbsoluteSymbol(named("a"), 2);
    module().createAbsoluteSymbol(named("c"), 0);
    EXPECT_EQ(namesOf(module().getDynamicSymbolsSortedByName()), (Names{"a", "b"}));
    EXPECT_EQ(namesOf(module().getDynamicSymbolsSortedByAddress()), (Names{"b", "a"}));
    EXPECT_EQ(namesOf(module().getSymbolsSortedByName()), Names{"c"});
}

TEST_F(SymbolOrderTest, ChangesOfNameCategoryAndPlaceOutdateTheLists) {
    Symbol* const symbol = add("b", 1);
    add("a", 2);
    const auto outdates = [this](auto&& action) {
        module().getSymbolsSortedByName();
        EXPECT_TRUE(module().areSymbolListsSorted());
        action();
        return !module().areSymbolListsSorted();
    };
    EXPECT_TRUE(outdates([&] { symbol->setName("c"); }));
    EXPECT_EQ(namesOf(module().getSymbolsSortedByName()), (Names{"a", "c"}));
    EXPECT_TRUE(outdates([&] { symbol->setOffset(3); }));
    EXPECT_EQ(namesOf(module().getSymbolsSortedByAddress()), (Names{"a", "c"}));
    EXPECT_TRUE(outdates([&] { symbol->makeAbsolute(0); }));
    EXPECT_EQ(namesOf(module().getSymbolsSortedByAddress()), (Names{"c", "a"}));
    EXPECT_TRUE(outdates([&] { symbol->setAbsoluteValue(9); }));
    EXPECT_TRUE(outdates([&] { m_Text->setAddress(100); }));
    EXPECT_EQ(namesOf(module().getSymbolsSortedByAddress()), (Names{"c", "a"}));
    EXPECT_TRUE(outdates([&] { module().createUndefinedSymbol(named("u")); }));
    EXPECT_TRUE(outdates([&] { module().setSymbolIndex(symbol, 2); }));
    EXPECT_FALSE(outdates([&] { symbol->setSize(5); }));
}

// Dynamic symbols have addresses by their sections, too.
TEST_F(SymbolOrderTest, DynamicSymbolsMoveWithTheirSection) {
    Section* const other = makeSection(".other");
    other->setAddress(50);
    module().createDynamicHostedSymbol(named("moving"), other, 0);
    module().createDynamicAbsoluteSymbol(named("fixed"), 100);
    EXPECT_EQ(namesOf(module().getDynamicSymbolsSortedByAddress()), (Names{"moving", "fixed"}));
    other->setAddress(200);
    EXPECT_EQ(namesOf(module().getDynamicSymbolsSortedByAddress()), (Names{"fixed", "moving"}));
}

TEST_F(SymbolOrderTest, DynamicTiesFollowTheTableAfterAMove) {
    Symbol* const first = module().createDynamicAbsoluteSymbol(named("a"), 1);
    Symbol* const second = module().createDynamicAbsoluteSymbol(named("a"), 1);
    EXPECT_EQ(elementsOf(module().getDynamicSymbolsSortedByName()),
              (std::vector<Symbol*>{first, second}));
    module().setDynamicSymbolIndex(second, 1);
    EXPECT_EQ(elementsOf(module().getDynamicSymbolsSortedByName()),
              (std::vector<Symbol*>{second, first}));
}

TEST_F(SymbolOrderTest, TiesFollowTheTableAfterAMove) {
    Symbol* const first = module().createAbsoluteSymbol(named("a"), 1);
    Symbol* const second = module().createAbsoluteSymbol(named("a"), 1);
    EXPECT_EQ(elementsOf(module().getSymbolsSortedByName()), (std::vector<Symbol*>{first, second}));
    module().setSymbolIndex(second, 1);
    EXPECT_EQ(elementsOf(module().getSymbolsSortedByName()), (std::vector<Symbol*>{second, first}));
}

TEST_F(SymbolOrderTest, AllSymbolsOfANameAreFound) {
    for (uint32_t i = 0; i < 20; ++i) {
        add("twin", i);
        add(("other" + std::to_string(i)).c_str(), i);
    }
    add(nullptr, 0);
    SymbolList found;
    module().findSymbols("twin", found);
    ASSERT_EQ(found.getSize(), 20U);
    for (uint32_t i = 0; i < 20; ++i) {
        EXPECT_EQ(found[i]->getOffset(), i);
    }
    module().findSymbols("other7", found);
    EXPECT_EQ(namesOf(found), Names{"other7"});
    module().findSymbols("", found);
    EXPECT_EQ(found.getSize(), 0U);
    module().findSymbols(nullptr, found);
    EXPECT_EQ(namesOf(found), Names{"(null)"});
    module().findSymbols("zzz", found);
    EXPECT_EQ(found.getSize(), 0U);
    module().findDynamicSymbols("twin", found);
    EXPECT_EQ(found.getSize(), 0U);
    Symbol* const dynamic = module().createDynamicUndefinedSymbol(named("twin"));
    module().findDynamicSymbols("twin", found);
    EXPECT_EQ(elementsOf(found), std::vector<Symbol*>{dynamic});
}

TEST_F(SymbolOrderTest, RangesAreInclusiveAtBothEnds) {
    add("d", 30);
    add("b", 10);
    add("c", 20);
    add("b2", 10);
    EXPECT_EQ(range(10, 20), (Names{"b", "b2", "c"}));
    EXPECT_EQ(range(0, 9), Names{});
    EXPECT_EQ(range(11, 19), Names{});
    EXPECT_EQ(range(30, 30), Names{"d"});
    EXPECT_EQ(range(31, UINT64_MAX), Names{});
    EXPECT_EQ(range(20, 10), Names{});
    EXPECT_EQ(range(0, UINT64_MAX), (Names{"b", "b2", "c", "d"}));
}

TEST_F(SymbolOrderTest, RangesAreFilteredByKind) {
    add("$a", 0);
    add("f", 0);
    add("$b", 4);
    add("$d.x", 8);
    add("g", 8);
    EXPECT_EQ(range(0, 8, 1), (Names{"f", "g"}));
    EXPECT_EQ(range(0, 8, 2), (Names{"$a", "$d.x"}));
    EXPECT_EQ(range(0, 8, 4), Names{"$b"});
    EXPECT_EQ(range(0, 8, 6), (Names{"$a", "$b", "$d.x"}));
    EXPECT_EQ(range(0, 8, 0), Names{});
    EXPECT_EQ(range(4, 4, 1), Names{});
}

TEST_F(SymbolOrderTest, AnEarlierResultIsReplaced) {
    add("a", 0);
    SymbolList list;
    m_Text->getHostedSymbols(0, 0, SymbolKind_All, list);
    m_Text->getHostedSymbols(0, 0, SymbolKind_All, list);
    EXPECT_EQ(list.getSize(), 1U);
    m_Text->getHostedSymbols(1, 1, SymbolKind_All, list);
    EXPECT_EQ(list.getSize(), 0U);
}

TEST_F(SymbolOrderTest, RangesOfDynamicSymbols) {
    add("s", 4);
    module().createDynamicHostedSymbol(named("d"), m_Text, 4);
    SymbolList list;
    m_Text->getHostedDynamicSymbols(0, 8, SymbolKind_All, list);
    EXPECT_EQ(namesOf(list), Names{"d"});
    EXPECT_EQ(range(0, 8), Names{"s"});
    EXPECT_EQ(nameOf(m_Text->findFirstHostedDynamicSymbolFrom(0, 7)), "d");
    EXPECT_EQ(nameOf(m_Text->findLastHostedDynamicSymbolBefore(5, 7)), "d");
    EXPECT_EQ(nameOf(m_Text->findLastHostedDynamicSymbolBefore(4, 7)), "none");
}

TEST_F(SymbolOrderTest, NeighboursAreFoundPastRejectedSymbols) {
    add("$a", 0);
    add("f", 2);
    add("g", 4);
    add("$d", 6);
    EXPECT_EQ(nameOf(m_Text->findFirstHostedSymbolFrom(0, 7)), "$a");
    EXPECT_EQ(nameOf(m_Text->findFirstHostedSymbolFrom(1, 7)), "f");
    EXPECT_EQ(nameOf(m_Text->findFirstHostedSymbolFrom(1, 2)), "$d");
    EXPECT_EQ(nameOf(m_Text->findFirstHostedSymbolFrom(6, 2)), "$d");
    EXPECT_EQ(nameOf(m_Text->findFirstHostedSymbolFrom(7, 7)), "none");
    EXPECT_EQ(nameOf(m_Text->findFirstHostedSymbolFrom(5, 1)), "none");
    EXPECT_EQ(nameOf(m_Text->findLastHostedSymbolBefore(6, 7)), "g");
    EXPECT_EQ(nameOf(m_Text->findLastHostedSymbolBefore(6, 2)), "$a");
    EXPECT_EQ(nameOf(m_Text->findLastHostedSymbolBefore(UINT64_MAX, 7)), "$d");
    EXPECT_EQ(nameOf(m_Text->findLastHostedSymbolBefore(0, 7)), "none");
    EXPECT_EQ(nameOf(m_Text->findLastHostedSymbolBefore(2, 1)), "none");
}

TEST_F(SymbolOrderTest, ASectionsListsAreSortedAnewAfterAChange) {
    Symbol* const symbol = add("b", 4);
    add("a", 8);
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByOffset()), (Names{"b", "a"}));
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByName()), (Names{"a", "b"}));
    symbol->setOffset(12);
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByOffset()), (Names{"a", "b"}));
    symbol->setName("0");
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByName()), (Names{"0", "a"}));
    symbol->makeUndefined();
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByName()), Names{"a"});
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByOffset()), Names{"a"});
    symbol->makeHosted(m_Text, 0);
    EXPECT_EQ(namesOf(m_Text->getHostedSymbolsSortedByOffset()), (Names{"0", "a"}));
    module().createDynamicHostedSymbol(named("y"), m_Text, 1);
    module().createDynamicHostedSymbol(named("x"), m_Text, 2);
    EXPECT_EQ(namesOf(m_Text->getHostedDynamicSymbolsSortedByOffset()), (Names{"y", "x"}));
    EXPECT_EQ(namesOf(m_Text->getHostedDynamicSymbolsSortedByName()), (Names{"x", "y"}));
}

TEST_F(SymbolOrderTest, ReservedSymbolsAreMadeLikeOthers) {
    module().reserveSymbols(200, false);
    EXPECT_GE(module().getSymbols().getCapacity(), 200U);
    for (uint32_t i = 0; i < 210; ++i) {
        EXPECT_EQ(module().getSymbolIndex(add("s", 210 - i)), i + 1);
    }
    EXPECT_EQ(module().getSymbolCount(), 210U);
    EXPECT_EQ(m_Text->getHostedSymbolsSortedByOffset()[0]->getOffset(), 1U);
    module().reserveSymbols(10, true);
    EXPECT_GE(module().getDynamicSymbols().getCapacity(), 10U);
}

} // namespace
} // namespace elfext::test
