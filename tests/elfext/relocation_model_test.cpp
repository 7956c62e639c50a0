// Relocations: their fields, how a section gets them, and queries by offset.
#include "elfext/interface/relocation.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using RelocationTest = ModelTest;
using RelocationDeathTest = ModelTest;

constexpr const char* source = "elfext/src/relocation";

TEST_F(RelocationTest, ARelocationWithoutAddend) {
    Section* const text = makeSection();
    Symbol* const symbol = module().createUndefinedSymbol(named("f"));
    const Relocation* const relocation = text->addRelocation(0x123456789A, 0xFFFF, symbol);
    EXPECT_EQ(relocation->getOffset(), 0x123456789AU);
    EXPECT_EQ(relocation->getType(), 0xFFFFU);
    EXPECT_EQ(relocation->getSection(), text);
    EXPECT_EQ(relocation->getTarget(), symbol);
    EXPECT_FALSE(relocation->isDynamic());
    EXPECT_FALSE(relocation->hasAddend());
    EXPECT_TRUE(text->hasRelocations());
    EXPECT_EQ(text->getRelocations().getSize(), 1U);
}

TEST_F(RelocationTest, ARelocationWithAddend) {
    Section* const text = makeSection();
    Relocation* const relocation = text->addRelocationWithAddend(4, 2, nullptr, 0xFFFFFFFFFFFFFFF0);
    EXPECT_TRUE(relocation->hasAddend());
    EXPECT_EQ(relocation->getAddend(), 0xFFFFFFFFFFFFFFF0U);
    relocation->setAddend(5);
    EXPECT_EQ(relocation->getAddend(), 5U);
    relocation->setHasAddend(false);
    EXPECT_FALSE(relocation->hasAddend());
    relocation->setHasAddend(true);
    EXPECT_EQ(relocation->getAddend(), 0U);
}

TEST_F(RelocationDeathTest, AddendsAreForTheFormThatHasThem) {
    Relocation* const relocation = makeSection()->addRelocation(0, 0, nullptr);
    EXPECT_FAULT(relocation->getAddend(), source, "m_HasAddend");
    EXPECT_FAULT(relocation->setAddend(1), source, "m_HasAddend");
}

TEST_F(RelocationTest, TheTargetDecidesWhatIsDynamic) {
    Section* const text = makeSection();
    Symbol* const dynamic = module().createDynamicUndefinedSymbol(named("d"));
    Symbol* const plain = module().createUndefinedSymbol(named("s"));
    Relocation* const relocation = text->addRelocation(0, 0, dynamic);
    EXPECT_TRUE(relocation->isDynamic());
    relocation->setTarget(plain);
    EXPECT_FALSE(relocation->isDynamic());
    relocation->setTarget(nullptr);
    EXPECT_FALSE(relocation->isDynamic());
    relocation->setIsDynamic(true);
    EXPECT_TRUE(relocation->isDynamic());
}

TEST_F(RelocationDeathTest, NobodyElseDecidesThat) {
    Relocation* const relocation =
        makeSection()->addRelocation(0, 0, module().createUndefinedSymbol(named("s")));
    EXPECT_FAULT(relocation->setIsDynamic(true), source, "m_Target == NULL");
}

TEST_F(RelocationDeathTest, NotesRefuseRelocations) {
    Section* const note = module().createSection(".note", SHT_NOTE, 0);
    EXPECT_FAULT(note->addRelocation(0, 0, nullptr), "elfext/src/section", "m_IsRelocatable");
    EXPECT_FAULT(note->addRelocationWithAddend(0, 0, nullptr, 0), "elfext/src/section",
                 "m_IsRelocatable");
    Section* const table = module().createStringTableSection("");
    EXPECT_FAULT(table->addRelocation(0, 0, nullptr), "elfext/src/section", "m_IsRelocatable");
}

TEST_F(RelocationTest, TheNullSectionTakesRelocations) {
    EXPECT_NE(module().createNullSection(0)->addRelocation(0, 0, nullptr), nullptr);
}

TEST_F(RelocationDeathTest, TargetsAreOfTheSameModule) {
    ObjectModule other;
    Symbol* const foreign = other.createUndefinedSymbol(named("f"));
    EXPECT_FAULT(makeSection()->addRelocation(0, 0, foreign), "elfext/src/section",
                 "target == NULL || target->getObjectModule() == m_ObjectModule");
}

TEST_F(RelocationTest, AFileMayRelocateAnything) {
    Section* const note = module().createSection(".note", SHT_NOTE, 0);
    Symbol* const symbol = module().createUndefinedSymbol(named("f"));
    note->reserveRelocations(10);
    EXPECT_GE(note->getRelocations().getCapacity(), 10U);
    note->addRelocationAsRead({.m_Offset = 1,
                               .m_Addend = 9,
                               .m_Target = symbol,
                               .m_Type = 3,
                               .m_HasAddend = true,
                               .m_IsDynamic = true});
    note->addRelocationAsRead({.m_Offset = 2, .m_Addend = 9, .m_IsDynamic = true});
    const auto& relocations = note->getRelocations();
    ASSERT_EQ(relocations.getSize(), 2U);
    EXPECT_EQ(relocations[0]->getAddend(), 9U);
    EXPECT_EQ(relocations[0]->getType(), 3U);
    EXPECT_FALSE(relocations[0]->isDynamic());
    EXPECT_FALSE(relocations[1]->hasAddend());
    EXPECT_TRUE(relocations[1]->isDynamic());
}

std::vector<uint64_t> offsetsOf(const RelocationList& list) {
    std::vector<uint64_t> offsets;
    for (uint32_t i = 0; i < list.getSize(); ++i) {
        offsets.push_back(list[i]->getOffset());
    }
    return offsets;
}

using Offsets = std::vector<uint64_t>;

TEST_F(RelocationTest, RangesAreInclusiveAndSorted) {
    Section* const text = makeSection();
    for (const uint64_t offset : {30U, 10U, 20U, 10U}) {
        text->addRelocation(offset, 0, nullptr);
    }
    RelocationList list;
    text->getRelocations(10, 20, list);
    EXPECT_EQ(offsetsOf(list), (Offsets{10, 10, 20}));
    EXPECT_EQ(list[0], text->getRelocations()[1]);
    EXPECT_EQ(list[1], text->getRelocations()[3]);
    text->getRelocations(11, 19, list);
    EXPECT_EQ(list.getSize(), 0U);
    text->getRelocations(20, 10, list);
    EXPECT_EQ(list.getSize(), 0U);
    text->getRelocations(0, UINT64_MAX, list);
    EXPECT_EQ(offsetsOf(list), (Offsets{10, 10, 20, 30}));
}

TEST_F(RelocationTest, TheSortedListFollowsChanges) {
    Section* const text = makeSection();
    Relocation* const first = text->addRelocation(1, 0, nullptr);
    Relocation* const second = text->addRelocation(2, 0, nullptr);
    EXPECT_EQ(elementsOf(text->getRelocationsSortedByOffset()),
              (std::vector<Relocation*>{first, second}));
    first->setOffset(3);
    EXPECT_EQ(elementsOf(text->getRelocationsSortedByOffset()),
              (std::vector<Relocation*>{second, first}));
    Relocation* const third = text->addRelocation(0, 0, nullptr);
    EXPECT_EQ(elementsOf(text->getRelocationsSortedByOffset()),
              (std::vector<Relocation*>{third, second, first}));
    EXPECT_EQ(elementsOf(text->getRelocations()), (std::vector<Relocation*>{first, second, third}));
}

// Adds two relocations to whoever asks, and counts how often that is.
class CountingLoader final : public RelocationLoader {
public:
    void loadRelocations(Section& section) override {
        ++calls;
        section.addRelocationAsRead({.m_Offset = 7});
        section.addRelocationAsRead({.m_Offset = 3});
    }
    uint32_t calls = 0;
};

TEST_F(RelocationTest, RelocationsOfAFileAreMadeWhenTheyAreAskedFor) {
    CountingLoader loader;
    Section* const text = makeSection();
    text->setRelocationLoader(&loader);
    EXPECT_TRUE(text->hasRelocations());
    EXPECT_EQ(loader.calls, 0U);
    module().setAuxiliarySectionsUpToDate(true);
    EXPECT_EQ(text->getRelocations().getSize(), 2U);
    EXPECT_TRUE(module().areAuxiliarySectionsUpToDate());
    text->getRelocations();
    EXPECT_EQ(loader.calls, 1U);
    EXPECT_EQ(text->getRelocationsSortedByOffset()[0]->getOffset(), 3U);
}

TEST_F(RelocationTest, AQueryAndAnAdditionAskForThemToo) {
    CountingLoader loader;
    Section* const text = makeSection();
    text->setRelocationLoader(&loader);
    RelocationList list;
    text->getRelocations(0, 10, list);
    EXPECT_EQ(offsetsOf(list), (Offsets{3, 7}));
    Section* const data = makeSection(".data");
    data->setRelocationLoader(&loader);
    data->addRelocation(1, 0, nullptr);
    EXPECT_EQ(data->getRelocations()[0]->getOffset(), 7U);
    EXPECT_EQ(data->getRelocations()[2]->getOffset(), 1U);
    EXPECT_EQ(loader.calls, 2U);
}

} // namespace
} // namespace elfext::test
