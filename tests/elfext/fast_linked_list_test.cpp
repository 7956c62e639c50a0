// The list with its nodes in a region.
#include "elfext/interface/fast_linked_list.h"

#include "tests/elfext/container_fixtures.h"

#include <list>
#include <random>
#include <vector>

namespace elfext::test {
namespace {

using FastLinkedListTest = ContainerTest;
using FastLinkedListDeathTest = ContainerTest;

constexpr const char* file = "elfext/interface/fast_linked_list";

std::vector<int> contentsOf(fast_linked_list<int>& list) {
    std::vector<int> values;
    for (const int value : list) {
        values.push_back(value);
    }
    return values;
}

TEST_F(FastLinkedListTest, FreshListIsEmpty) {
    fast_linked_list<int> list(region());
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.getSize(), 0U);
    EXPECT_TRUE(fast_linked_list<int>::iterator(&list).isAtEnd());
}

TEST_F(FastLinkedListTest, AddsAtBothEnds) {
    fast_linked_list<int> list(region());
    list.add(2);
    list.add(3);
    list.addFirst(1);
    EXPECT_EQ(contentsOf(list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(list.getSize(), 3U);
}

TEST_F(FastLinkedListTest, RemoveAtTheFrontMiddleAndEnd) {
    fast_linked_list<int> list(region());
    for (int i = 0; i < 5; ++i) {
        list.add(i);
    }
    auto place = list.begin();
    place.remove();
    EXPECT_EQ(*place, 1);
    ++place;
    place.remove();
    EXPECT_EQ(*place, 3);
    ++place;
    place.remove();
    EXPECT_TRUE(place.isAtEnd());
    EXPECT_EQ(contentsOf(list), (std::vector<int>{1, 3}));
    list.add(9); // behind the new last one
    EXPECT_EQ(contentsOf(list), (std::vector<int>{1, 3, 9}));
}

TEST_F(FastLinkedListTest, InsertAtTheFrontMiddleAndEnd) {
    fast_linked_list<int> list(region());
    auto place = list.begin();
    place.insert(3);
    EXPECT_EQ(*place, 3);
    place.insert(1);
    EXPECT_EQ(*place, 1);
    ++place;
    place.insert(2);
    ++place;
    ++place;
    place.insert(4);
    list.add(5);
    EXPECT_EQ(contentsOf(list), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST_F(FastLinkedListTest, ElementsAreDestroyed) {
    {
        fast_linked_list<Counted> list(region());
        list.add(Counted(1));
        list.add(Counted(2));
        list.add(Counted(3));
        EXPECT_EQ(Counted::live, 3);
        list.begin().remove();
        EXPECT_EQ(Counted::live, 2);
        EXPECT_EQ(list.begin()->number(), 2U);
    }
    EXPECT_EQ(Counted::live, 0);
}

TEST_F(FastLinkedListTest, ClearedListCanBeUsedAgain) {
    fast_linked_list<int> list(region());
    list.add(1);
    list.clear();
    EXPECT_TRUE(list.isEmpty());
    list.add(2);
    EXPECT_EQ(contentsOf(list), (std::vector<int>{2}));
}

TEST_F(FastLinkedListTest, AgreesWithAList) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        std::minstd_rand engine(seed);
        const auto random = [&engine] { return static_cast<uint32_t>(engine()) >> 3; };
        fast_linked_list<int> list(region());
        std::list<int> expected;
        for (int step = 0; step < 500; ++step) {
            auto place = list.begin();
            auto at = expected.begin();
            for (size_t i = random() % (expected.size() + 1); i > 0; --i) {
                ++place;
                ++at;
            }
            switch (random() % 4) {
            case 0:
                list.add(step);
                expected.push_back(step);
                break;
            case 1:
                list.addFirst(step);
                expected.push_front(step);
                break;
            case 2:
                place.insert(step);
                expected.insert(at, step);
                break;
            default:
                if (at != expected.end()) {
                    place.remove();
                    expected.erase(at);
                }
                break;
            }
            ASSERT_EQ(contentsOf(list), std::vector<int>(expected.begin(), expected.end()))
                << "seed " << seed << " step " << step;
            ASSERT_EQ(list.getSize(), expected.size());
        }
    }
}

TEST_F(FastLinkedListDeathTest, Misuse) {
    fast_linked_list<int> list(region());
    auto place = list.begin();
    EXPECT_FAULT(fast_linked_list<int>(nullptr), file, "region != NULL");
    EXPECT_FAULT(fast_linked_list<int>::iterator(nullptr), file, "list != NULL");
    EXPECT_FAULT(++place, file, "m_Current != NULL");
    EXPECT_FAULT(*place = 1, file, "m_Current != NULL");
    EXPECT_FAULT(place.remove(), file, "m_Current != NULL");
}

} // namespace
} // namespace elfext::test
