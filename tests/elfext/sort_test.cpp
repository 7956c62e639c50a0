// The stable sort.
#include "elfext/interface/sort.h"

#include "tests/elfext/container_fixtures.h"

#include <algorithm>
#include <random>
#include <vector>

namespace elfext::test {
namespace {

constexpr size_t pointerSize = sizeof(void*);

// Elements are pointers to records that compare by key; the serial number tells ties apart.
struct Record {
    uint32_t key;
    uint32_t serial;
};

int compareRecords(const void* left, const void* right, void* context) {
    if (context != nullptr) {
        ++*static_cast<uint64_t*>(context);
    }
    const uint32_t leftKey = (*static_cast<const Record* const*>(left))->key;
    const uint32_t rightKey = (*static_cast<const Record* const*>(right))->key;
    return leftKey < rightKey ? -1 : leftKey > rightKey ? 1 : 0;
}

std::vector<Record> recordsWithKeys(const std::vector<uint32_t>& keys) {
    std::vector<Record> records;
    records.reserve(keys.size());
    for (const uint32_t key : keys) {
        records.push_back({key, static_cast<uint32_t>(records.size())});
    }
    return records;
}

std::vector<Record*> pointersTo(std::vector<Record>& records) {
    std::vector<Record*> pointers;
    pointers.reserve(records.size());
    for (Record& record : records) {
        pointers.push_back(&record);
    }
    return pointers;
}

void sortPointers(std::vector<Record*>& pointers, uint64_t* comparisons = nullptr) {
    mergeSort(pointers.data(), pointers.size(), pointerSize, compareRecords, comparisons);
}

TEST(MergeSort, FewerThanTwoElementsAreLeftAlone) {
    uint64_t comparisons = 0;
    Record record{1, 0};
    std::vector<Record*> one{&record};
    sortPointers(one, &comparisons);
    EXPECT_EQ(one[0], &record);
    Record* none = nullptr;
    mergeSort(&none, 0, pointerSize, compareRecords, &comparisons);
    EXPECT_EQ(comparisons, 0U);
}

TEST(MergeSort, TwoEqualElementsStayInPlace) {
    std::vector<Record> records = recordsWithKeys({5, 5});
    std::vector<Record*> pointers = pointersTo(records);
    uint64_t comparisons = 0;
    sortPointers(pointers, &comparisons);
    EXPECT_EQ(pointers[0], &records[0]);
    EXPECT_EQ(pointers[1], &records[1]);
    EXPECT_EQ(comparisons, 1U);
}

TEST(MergeSort, LeftHalfIsTheSmaller) {
    // Three elements: {0} and {1, 2}; the right half is sorted first by one comparison.
    std::vector<Record> records = recordsWithKeys({1, 2, 3});
    std::vector<Record*> pointers = pointersTo(records);
    static std::vector<std::pair<uint32_t, uint32_t>> compared;
    compared.clear();
    mergeSort(
        pointers.data(), 3, pointerSize,
        [](const void* left, const void* right, void* context) {
            compared.emplace_back((*static_cast<const Record* const*>(left))->serial,
                                  (*static_cast<const Record* const*>(right))->serial);
            return compareRecords(left, right, context);
        },
        nullptr);
    EXPECT_EQ(compared, (std::vector<std::pair<uint32_t, uint32_t>>{{1, 2}, {0, 1}}));
}

TEST(MergeSort, AnyResultBelowOneTakesTheLeft) {
    std::vector<Record> records = recordsWithKeys({2, 1});
    std::vector<Record*> pointers = pointersTo(records);
    const auto answer = [](const void*, const void*, void* context) {
        return *static_cast<int*>(context);
    };
    for (int result : {-2147483647 - 1, -1, 0}) {
        mergeSort(pointers.data(), 2, pointerSize, answer, &result);
        EXPECT_EQ(pointers[0], &records[0]);
    }
    for (int result : {1, 2147483647}) {
        mergeSort(pointers.data(), 2, pointerSize, answer, &result);
        EXPECT_EQ(pointers[0], &records[result == 1 ? 1U : 0U]);
    }
}

TEST(MergeSort, AgreesWithTheLibrarysStableSort) {
    for (uint32_t seed = 1; seed <= 300; ++seed) {
        std::minstd_rand random(seed);
        std::vector<uint32_t> keys(seed < 200 ? random() % 40 + 1 : random() % 5000 + 1);
        const auto spread = random() % 100 + 1;
        for (uint32_t& key : keys) {
            key = static_cast<uint32_t>(random() % spread);
        }
        std::vector<Record> records = recordsWithKeys(keys);
        std::vector<Record*> pointers = pointersTo(records);
        std::vector<Record*> expected = pointers;
        sortPointers(pointers);
        std::stable_sort(
            expected.begin(), expected.end(),
            [](const Record* left, const Record* right) { return left->key < right->key; });
        ASSERT_EQ(pointers, expected) << seed;
    }
}

TEST(MergeSort, NeedsNoMoreThanNLogNComparisons) {
    std::vector<uint32_t> keys(1U << 15);
    std::minstd_rand random(1);
    for (uint32_t& key : keys) {
        key = static_cast<uint32_t>(random());
    }
    std::vector<Record> records = recordsWithKeys(keys);
    std::vector<Record*> pointers = pointersTo(records);
    uint64_t comparisons = 0;
    sortPointers(pointers, &comparisons);
    EXPECT_LE(comparisons, 15ULL << 15);
}

TEST(MergeSort, ElementsMayHaveAnyWidth) {
    for (const size_t width : {size_t{1}, size_t{3}, size_t{24}}) {
        std::minstd_rand random(7);
        std::vector<unsigned char> bytes(width * 500);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random() >> 8);
        }
        std::vector<std::vector<unsigned char>> expected;
        for (size_t i = 0; i < bytes.size(); i += width) {
            expected.emplace_back(bytes.begin() + static_cast<int>(i),
                                  bytes.begin() + static_cast<int>(i + width));
        }
        std::stable_sort(expected.begin(), expected.end(),
                         [](const auto& left, const auto& right) { return left[0] < right[0]; });
        mergeSort(
            bytes.data(), 500, width,
            [](const void* left, const void* right, void*) {
                return *static_cast<const unsigned char*>(left) -
                       *static_cast<const unsigned char*>(right);
            },
            nullptr);
        for (size_t i = 0; i < 500; ++i) {
            ASSERT_TRUE(std::equal(expected[i].begin(), expected[i].end(),
                                   bytes.begin() + static_cast<int>(i * width)));
        }
    }
}

TEST(MergeSortDeathTest, Misuse) {
    Record* elements[2] = {};
    EXPECT_FAULT(mergeSort(nullptr, 2, 8, compareRecords, nullptr), "elfext/src/sort",
                 "base != NULL");
    EXPECT_FAULT(mergeSort(elements, 2, 0, compareRecords, nullptr), "elfext/src/sort",
                 "width != 0");
    EXPECT_FAULT(mergeSort(elements, 2, 8, nullptr, nullptr), "elfext/src/sort",
                 "compareProc != NULL");
}

TEST(MergeSortDeathTest, MoreThanMemoryHolds) {
    Record* elements[2] = {};
    EXPECT_EXIT(mergeSort(elements, SIZE_MAX / 4, 8, compareRecords, nullptr),
                testing::ExitedWithCode(1),
                testing::Eq("Out of memory. Allocation of 4294967295 bytes failed, system size is "
                            "0 bytes\n"));
}

} // namespace
} // namespace elfext::test
