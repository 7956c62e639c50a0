// Stretches of a file, and lists of them.
#include "elfext/interface/range.h"

#include "elfext/interface/array.h"
#include "elfext/interface/fast_array.h"
#include "tests/elfext/container_fixtures.h"

#include <random>
#include <vector>

namespace elfext::test {
namespace {

using RangeTest = ContainerTest;
using RangeDeathTest = ContainerTest;

using Ranges = std::vector<Range>;

Ranges normalised(const Ranges& ranges) {
    array<Range> list;
    for (const Range& range : ranges) {
        list.add(range);
    }
    normaliseRanges(list);
    return {list.begin(), list.end()};
}

TEST_F(RangeTest, KnowsItsEndsAndSize) {
    const Range range(UINT64_MAX - 5, UINT64_MAX);
    EXPECT_EQ(range.getStart(), UINT64_MAX - 5);
    EXPECT_EQ(range.getEnd(), UINT64_MAX);
    EXPECT_EQ(range.getSize(), 5U);
    EXPECT_EQ(Range(), Range(0, 0));
}

TEST_F(RangeDeathTest, StartBehindTheEnd) {
    EXPECT_FAULT(Range(5, 4), "elfext/interface/range", "start <= end");
}

TEST_F(RangeTest, EmptyListStaysEmpty) {
    EXPECT_EQ(normalised({}), Ranges{});
}

TEST_F(RangeTest, RangesAreSortedByStart) {
    EXPECT_EQ(normalised({{30, 40}, {10, 11}, {0, 5}}), (Ranges{{0, 5}, {10, 11}, {30, 40}}));
}

TEST_F(RangeTest, RangesThatTouchAreJoined) {
    EXPECT_EQ(normalised({{5, 9}, {0, 5}}), (Ranges{{0, 9}}));
    EXPECT_EQ(normalised({{6, 9}, {0, 5}}), (Ranges{{0, 5}, {6, 9}}));
}

TEST_F(RangeTest, LargerEndIsKept) {
    EXPECT_EQ(normalised({{0, 100}, {10, 20}, {50, 101}, {101, 101}}), (Ranges{{0, 101}}));
    EXPECT_EQ(normalised({{0, UINT64_MAX}, {1, 2}}), (Ranges{{0, UINT64_MAX}}));
}

TEST_F(RangeTest, ListShrinksInPlace) {
    fast_array<Range> list(region());
    for (uint64_t i = 0; i < 10; ++i) {
        list.add(Range(i, i + 1));
    }
    const Range* const block = list.begin();
    normaliseRanges(list);
    ASSERT_EQ(list.getSize(), 1U);
    EXPECT_EQ(list[0], Range(0, 10));
    EXPECT_EQ(list.begin(), block);
}

TEST_F(RangeTest, CoversTheSameOffsets) {
    for (uint32_t seed = 1; seed <= 200; ++seed) {
        std::minstd_rand random(seed);
        Ranges ranges;
        std::vector<bool> covered(300);
        for (auto left = random() % 40; left > 0; --left) {
            const uint64_t start = random() % 250;
            const uint64_t end = start + random() % 20;
            ranges.emplace_back(start, end);
            std::fill(covered.begin() + static_cast<int>(start),
                      covered.begin() + static_cast<int>(end), true);
        }
        std::vector<bool> coveredAfter(300);
        const Ranges result = normalised(ranges);
        for (size_t i = 0; i < result.size(); ++i) {
            ASSERT_TRUE(i == 0 || result[i].getStart() > result[i - 1].getEnd());
            std::fill(coveredAfter.begin() + static_cast<int>(result[i].getStart()),
                      coveredAfter.begin() + static_cast<int>(result[i].getEnd()), true);
        }
        ASSERT_EQ(covered, coveredAfter) << seed;
    }
}

} // namespace
} // namespace elfext::test
