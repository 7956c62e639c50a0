// Results of range queries.
#include "elfext/interface/inline_list.h"

#include "elfext/interface/relocation_list.h"
#include "elfext/interface/section_list.h"
#include "elfext/interface/symbol_list.h"
#include "tests/elfext/container_fixtures.h"

#include <vector>

namespace elfext::test {
namespace {

// The lists never look at their entries, so any address will do.
template <typename Entry>
Entry* entryNumber(uint32_t number) {
    static char place[4096];
    return reinterpret_cast<Entry*>(place + number);
}

template <typename TestedList, typename TestedEntry, uint32_t InlineEntries>
struct ListKind {
    using List = TestedList;
    using Entry = TestedEntry;
    static constexpr uint32_t inlineEntries = InlineEntries;
};

struct SymbolKind : ListKind<SymbolList, Symbol, 7> {
    static constexpr const char* file = "elfext/interface/symbol_list";
    static constexpr const char* notNull = "symbol != NULL";
};
struct SectionKind : ListKind<SectionList, Section, 8> {
    static constexpr const char* file = "elfext/interface/section_list";
    static constexpr const char* notNull = "section != NULL";
};
struct RelocationKind : ListKind<RelocationList, Relocation, 1> {
    static constexpr const char* file = "elfext/interface/relocation_list";
    static constexpr const char* notNull = "relocation != NULL";
};

template <typename Tested>
class InlineListTest : public testing::Test {};
using Kinds = testing::Types<SymbolKind, SectionKind, RelocationKind>;
TYPED_TEST_SUITE(InlineListTest, Kinds);
template <typename Tested>
using InlineListDeathTest = InlineListTest<Tested>;
TYPED_TEST_SUITE(InlineListDeathTest, Kinds);

TYPED_TEST(InlineListTest, HoldsTheFirstEntriesItself) {
    EXPECT_GE(sizeof(typename TypeParam::List), TypeParam::inlineEntries * sizeof(void*));
    EXPECT_LE(sizeof(typename TypeParam::List), (TypeParam::inlineEntries + 4) * sizeof(void*));
}

TYPED_TEST(InlineListTest, FreshListIsEmpty) {
    const typename TypeParam::List list;
    EXPECT_EQ(list.getSize(), 0U);
}

TYPED_TEST(InlineListTest, EntriesAreReadAsAdded) {
    using Entry = typename TypeParam::Entry;
    typename TypeParam::List list;
    for (uint32_t i = 0; i < 50; ++i) {
        list.add(entryNumber<Entry>(i));
        ASSERT_EQ(list.getSize(), i + 1);
        for (uint32_t j = 0; j <= i; ++j) {
            ASSERT_EQ(list[j], entryNumber<Entry>(j));
        }
    }
}

TYPED_TEST(InlineListTest, EntriesAreReadAsSetForAnySize) {
    using Entry = typename TypeParam::Entry;
    typename TypeParam::List list;
    for (const uint32_t size : {0U, 1U, 2U, 7U, 8U, 9U, 30U, 3U, 29U, 31U}) {
        list.setSize(size);
        EXPECT_EQ(list.getSize(), size);
        for (uint32_t i = 0; i < size; ++i) {
            EXPECT_EQ(list[i], nullptr);
        }
        for (uint32_t i = 0; i < size; ++i) {
            list.set(i, entryNumber<Entry>(i + size));
        }
        for (uint32_t i = 0; i < size; ++i) {
            EXPECT_EQ(list[i], entryNumber<Entry>(i + size));
        }
    }
}

TYPED_TEST(InlineListTest, CanBeAddedToAfterASize) {
    using Entry = typename TypeParam::Entry;
    typename TypeParam::List list;
    list.setSize(12);
    for (uint32_t i = 0; i < 12; ++i) {
        list.set(i, entryNumber<Entry>(i));
    }
    list.add(entryNumber<Entry>(12));
    list.add(entryNumber<Entry>(13));
    for (uint32_t i = 0; i < 14; ++i) {
        EXPECT_EQ(list[i], entryNumber<Entry>(i));
    }
    list.clear();
    EXPECT_EQ(list.getSize(), 0U);
    list.add(entryNumber<Entry>(5));
    EXPECT_EQ(list[0], entryNumber<Entry>(5));
}

TYPED_TEST(InlineListDeathTest, Misuse) {
    using Entry = typename TypeParam::Entry;
    typename TypeParam::List list;
    list.setSize(10);
    const volatile uint32_t behind = 10; // not for the compiler to see
    EXPECT_FAULT(list[behind], TypeParam::file, "index < m_Size");
    EXPECT_FAULT(list.set(behind, entryNumber<Entry>(0)), TypeParam::file, "index < m_Size");
    EXPECT_FAULT(list.set(behind - 1, nullptr), TypeParam::file, TypeParam::notNull);
    EXPECT_FAULT(list.add(nullptr), TypeParam::file, TypeParam::notNull);
}

} // namespace
} // namespace elfext::test
