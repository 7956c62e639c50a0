// The lists that collect values: LinkedList, StrList, OwnedMemory.

#include "tests/tabledrivenparser/parser_fixture.h"

#include <cstring>

namespace tabledrivenparser {

namespace {

class ListTest : public ::testing::Test {
protected:
    void SetUp() override { alloclib::startAllocators(); }
    void TearDown() override { alloclib::finishAllocators(); }
};

using LinkedListTest = ListTest;
using StrListTest = ListTest;
using OwnedMemoryTest = ListTest;

template <class T>
std::vector<T> elements(const LinkedList<T>& list) {
    return {list.begin(), list.end()};
}

Texts texts(const StrList& list) {
    return {list.begin(), list.end()};
}

void fill(StrList& list, std::initializer_list<const char*> values) {
    for (const char* value : values) {
        list.append(value);
    }
}

// A list that was changed must still take elements at its true end.
void expectTailHolds(StrList& list, Texts expected) {
    list.append("tail");
    expected.emplace_back("tail");
    EXPECT_EQ(texts(list), expected);
    EXPECT_EQ(list.lastNode()->next, nullptr);
}

} // namespace

TEST_F(LinkedListTest, NewListIsEmptyWithNullTail) {
    LinkedList<int> list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.lastNode(), nullptr);
    EXPECT_EQ(list.firstNode(), nullptr);
    EXPECT_EQ(list.count(), 0U);
    EXPECT_TRUE(list.begin() == list.end());
}

TEST_F(LinkedListTest, FirstElementUsesTheEmbeddedNode) {
    LinkedList<int> list;
    list.append(7);
    EXPECT_EQ(list.firstNode(), list.lastNode());
    const auto* start = reinterpret_cast<const char*>(&list);
    const auto* node = reinterpret_cast<const char*>(list.firstNode());
    EXPECT_GE(node, start);
    EXPECT_LT(node, start + sizeof list);
    EXPECT_EQ(elements(list), std::vector<int>{7});
}

TEST_F(LinkedListTest, ConstructorMayTakeAFirstValue) {
    LinkedList<int64_t> list(int64_t{-5});
    EXPECT_EQ(elements(list), std::vector<int64_t>{-5});
    EXPECT_EQ(list.firstNode(), list.lastNode());
}

TEST_F(LinkedListTest, FurtherElementsKeepTheirOrder) {
    LinkedList<int> list;
    for (int value = 0; value < 50000; ++value) {
        list.append(value);
    }
    EXPECT_EQ(list.count(), 50000U);
    int expected = 0;
    for (int value : list) {
        ASSERT_EQ(value, expected++);
    }
    EXPECT_EQ(list.lastNode()->value, 49999);
    EXPECT_EQ(list.lastNode()->next, nullptr);
}

TEST_F(LinkedListTest, ClearingEmptiesAndTheListTakesElementsAgain) {
    LinkedList<int> list;
    list.append(1);
    list.append(2);
    list.clear();
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.lastNode(), nullptr);
    list.append(3);
    EXPECT_EQ(elements(list), std::vector<int>{3});
    EXPECT_EQ(list.firstNode()->next, nullptr);
}

TEST_F(LinkedListTest, HoldsPointersOfEveryKindInUse) {
    MatchString match;
    LinkedList<const MatchString*> matches(&match);
    EXPECT_EQ(*matches.begin(), &match);
    LinkedList<void*> blocks(static_cast<void*>(&match));
    EXPECT_EQ(*blocks.begin(), &match);
}

TEST_F(LinkedListTest, DestructorIsVirtual) {
    static_assert(std::has_virtual_destructor_v<LinkedList<int>>);
    static_assert(std::has_virtual_destructor_v<Parser>);
    static_assert(std::is_base_of_v<OwnedMemory, Parser>);
    static_assert(std::is_base_of_v<LinkedList<const char*>, StrList>);
    StrList list("x");
    LinkedList<const char*>& base = list;
    base.clear();
    EXPECT_TRUE(list.empty());
}

TEST_F(StrListTest, IndexOfFoldsCaseAndGivesTheFirstHit) {
    StrList list;
    fill(list, {"zero", "One", "ONE"});
    EXPECT_EQ(list.indexOf("one"), 1U);
    EXPECT_EQ(list.indexOf("ZERO"), 0U);
    EXPECT_EQ(list.indexOf("on"), 0xFFFFFFFFU);
    EXPECT_EQ(list.indexOf("ones"), 0xFFFFFFFFU);
    EXPECT_TRUE(list.contains("oNe"));
    EXPECT_FALSE(list.contains("two"));
}

TEST_F(StrListTest, IndexContainingFindsASubstringOfAnyCase) {
    StrList list;
    fill(list, {"alpha", "beta", "ALPHABET"});
    EXPECT_EQ(list.indexContaining("ET"), 1U);
    EXPECT_EQ(list.indexContaining("habet"), 2U);
    EXPECT_EQ(list.indexContaining("alphas"), 0xFFFFFFFFU);
    EXPECT_EQ(list.indexContaining(""), 0U);
}

TEST_F(StrListTest, LookUpsInAnEmptyListFindNothing) {
    StrList list;
    EXPECT_EQ(list.indexOf(""), StrList::notFound);
    EXPECT_EQ(list.indexContaining(""), StrList::notFound);
    EXPECT_FALSE(list.removeEqual("x"));
    EXPECT_FALSE(list.removeStartingWith(""));
    expectTailHolds(list, {});
}

TEST_F(StrListTest, NullElementsAreNeverFound) {
    StrList list;
    list.append(nullptr);
    list.append("x");
    EXPECT_EQ(list.indexOf("x"), 1U);
    EXPECT_EQ(list.indexContaining(""), 1U);
    EXPECT_TRUE(list.removeStartingWith(""));
    EXPECT_EQ(list.count(), 1U);
    EXPECT_EQ(list.firstNode()->value, nullptr);
}

TEST_F(StrListTest, RemoveEqualTakesEveryEqualValue) {
    StrList list;
    fill(list, {"x", "a", "x", "b", "x", "x"});
    EXPECT_TRUE(list.removeEqual("x"));
    EXPECT_EQ(texts(list), (Texts{"a", "b"}));
    EXPECT_FALSE(list.removeEqual("x"));
    expectTailHolds(list, {"a", "b"});
}

TEST_F(StrListTest, RemoveEqualMindsCase) {
    StrList list;
    fill(list, {"x", "X"});
    EXPECT_TRUE(list.removeEqual("X"));
    expectTailHolds(list, {"x"});
}

TEST_F(StrListTest, RemovingTheLastElementMovesTheTail) {
    StrList list;
    fill(list, {"a", "b"});
    EXPECT_TRUE(list.removeEqual("b"));
    EXPECT_EQ(list.firstNode(), list.lastNode());
    expectTailHolds(list, {"a"});
}

TEST_F(StrListTest, RemovingTheEmbeddedFirstElementKeepsTheOthers) {
    StrList list;
    fill(list, {"a", "b", "c"});
    EXPECT_TRUE(list.removeEqual("a"));
    expectTailHolds(list, {"b", "c"});
}

TEST_F(StrListTest, RemovingAllLeavesAnEmptyList) {
    StrList list;
    fill(list, {"a", "a"});
    EXPECT_TRUE(list.removeEqual("a"));
    EXPECT_TRUE(list.empty());
    expectTailHolds(list, {});
}

TEST_F(StrListTest, RemoveStartingWithTakesEveryValueWithThatStart) {
    StrList list;
    fill(list, {"--x=1", "--y", "--x", "--X", "-"});
    EXPECT_TRUE(list.removeStartingWith("--x"));
    EXPECT_EQ(texts(list), (Texts{"--y", "--X", "-"}));
    EXPECT_FALSE(list.removeStartingWith("--yy"));
    expectTailHolds(list, {"--y", "--X", "-"});
}

TEST_F(OwnedMemoryTest, CopyStringCopiesAndRecordsTheBlock) {
    OwnedMemory memory;
    char source[] = "some text";
    char* copy = memory.copyString(source);
    source[0] = 'S';
    EXPECT_STREQ(copy, "some text");
    EXPECT_EQ(elements(static_cast<LinkedList<void*>&>(memory)), std::vector<void*>{copy});
}

TEST_F(OwnedMemoryTest, CopyBytesCopiesRawData) {
    OwnedMemory memory;
    const uint64_t data[] = {1, 0, 3};
    void* copy = memory.copyBytes(data, sizeof data);
    EXPECT_EQ(std::memcmp(copy, data, sizeof data), 0);
    EXPECT_NE(copy, static_cast<const void*>(data));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(copy) % 8, 0U);
    EXPECT_EQ(memory.count(), 1U);
}

TEST_F(OwnedMemoryTest, NullGivesNullAndRecordsNothing) {
    OwnedMemory memory;
    EXPECT_EQ(memory.copyString(nullptr), nullptr);
    EXPECT_EQ(memory.copyBytes(nullptr, 8), nullptr);
    EXPECT_TRUE(memory.empty());
}

TEST_F(OwnedMemoryTest, CopiesOutliveTheRecord) {
    char* copy = nullptr;
    {
        OwnedMemory memory;
        copy = memory.copyString("kept by the region");
    }
    EXPECT_STREQ(copy, "kept by the region");
}

} // namespace tabledrivenparser
