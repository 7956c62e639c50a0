// Tables and sets, on the heap and in a region: one set of tests for both.
#include "elfext/interface/fast_hash_set.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/hash_set.h"
#include "elfext/interface/hash_table.h"
#include "tests/elfext/container_fixtures.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace elfext::test {
namespace {

struct HeapKind {
    template <typename Key, typename Value>
    using Table = hash_table<Key, Value>;
    template <typename Key>
    using Set = hash_set<Key>;
    static constexpr const char* tableFile = "elfext/interface/hash_table";
    static constexpr const char* setFile = "elfext/interface/hash_set";

    template <typename Container, typename... Arguments>
    static Container make(Arguments... arguments) {
        return Container(arguments...);
    }
};

struct FastKind {
    template <typename Key, typename Value>
    using Table = fast_hash_table<Key, Value>;
    template <typename Key>
    using Set = fast_hash_set<Key>;
    static constexpr const char* tableFile = "elfext/interface/fast_hash_table";
    static constexpr const char* setFile = "elfext/interface/fast_hash_set";

    template <typename Container, typename... Arguments>
    static Container make(Arguments... arguments) {
        return Container(&alloclib::defaultRegion(), arguments...);
    }
};

template <typename Tested>
class HashTest : public ContainerTest {};
using Kinds = testing::Types<HeapKind, FastKind>;
TYPED_TEST_SUITE(HashTest, Kinds);
template <typename Tested>
using HashDeathTest = HashTest<Tested>;
TYPED_TEST_SUITE(HashDeathTest, Kinds);

// A fresh container of the tested kind.
template <typename Tested, typename Key, typename Value, typename... Arguments>
auto makeTable(Arguments... arguments) {
    return Tested::template make<typename Tested::template Table<Key, Value>>(arguments...);
}
template <typename Tested, typename Key, typename... Arguments>
auto makeSet(Arguments... arguments) {
    return Tested::template make<typename Tested::template Set<Key>>(arguments...);
}

uint32_t sameBucket(const uint32_t* /*key*/) {
    return 0;
}

TYPED_TEST(HashTest, FreshTableIsEmptyWith17Buckets) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    EXPECT_EQ(table.getCount(), 0U);
    EXPECT_EQ(table.getTableSize(), 17U);
    EXPECT_FALSE(table.containsKey(0));
    EXPECT_EQ(table.begin(), table.end());
}

TYPED_TEST(HashTest, TableFindsWhatWasSet) {
    auto table = makeTable<TypeParam, Stringlett, int>();
    table.set("one", 1);
    table.set("two", 2);
    EXPECT_EQ(table.get("one"), 1);
    EXPECT_EQ(table.get("two"), 2);
    EXPECT_TRUE(table.containsKey("one"));
    EXPECT_FALSE(table.containsKey("three"));
    EXPECT_FALSE(table.containsKey(nullptr));
    table.set(nullptr, 3);
    table.set("", 4);
    EXPECT_EQ(table.get(nullptr), 3);
    EXPECT_EQ(table.get(""), 4);
    EXPECT_EQ(table.getCount(), 4U);
}

TYPED_TEST(HashTest, SetOfAPresentKeyReplacesItsValue) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    table.set(5, 1);
    table.set(5, 2);
    EXPECT_EQ(table.getCount(), 1U);
    EXPECT_EQ(table.get(5), 2U);
}

TYPED_TEST(HashTest, FindGivesThePlaceOfTheValue) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    EXPECT_EQ(table.find(1), nullptr);
    table.set(1, 10);
    uint32_t* const value = table.find(1);
    ASSERT_NE(value, nullptr);
    *value = 11;
    for (uint32_t key = 2; key < 1000; ++key) {
        table.set(key, key);
    }
    EXPECT_EQ(table.find(1), value);
    const auto& constant = table;
    EXPECT_EQ(*constant.find(1), 11U);
    EXPECT_EQ(constant.find(1000), nullptr);
}

TYPED_TEST(HashTest, Table13EntriesGrowsOnTheNextInsertion) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    for (uint32_t key = 0; key < 13; ++key) {
        table.set(key, key);
        EXPECT_EQ(table.getTableSize(), 17U);
    }
    table.set(13, 13);
    EXPECT_EQ(table.getTableSize(), 26U);
}

TYPED_TEST(HashTest, TableGrowsAlsoIfTheInsertionOnlyReplaces) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    for (uint32_t key = 0; key < 13; ++key) {
        table.set(key, key);
    }
    table.set(0, 99);
    EXPECT_EQ(table.getTableSize(), 26U);
    EXPECT_EQ(table.getCount(), 13U);
    EXPECT_EQ(table.get(0), 99U);
}

TYPED_TEST(HashTest, SetGrowsAlsoIfTheKeyIsThere) {
    auto set = makeSet<TypeParam, uint32_t>();
    for (uint32_t key = 0; key < 13; ++key) {
        EXPECT_TRUE(set.add(key));
    }
    EXPECT_FALSE(set.add(12));
    EXPECT_EQ(set.getTableSize(), 26U);
    EXPECT_EQ(set.getCount(), 13U);
}

TYPED_TEST(HashTest, BucketsGrowByHalfPlusOne) {
    auto set = makeSet<TypeParam, uint32_t>();
    std::vector<uint32_t> sizes{set.getTableSize()};
    for (uint32_t key = 0; key < 300; ++key) {
        const uint32_t before = set.getTableSize();
        const bool full = uint64_t{set.getCount()} * 4 > uint64_t{before} * 3;
        set.add(key);
        EXPECT_EQ(set.getTableSize() != before, full) << key;
        if (set.getTableSize() != before) {
            sizes.push_back(set.getTableSize());
        }
    }
    EXPECT_EQ(sizes, (std::vector<uint32_t>{17, 26, 40, 61, 92, 139, 209, 314, 472}));
}

template <typename Container>
std::vector<uint32_t> keysInOrder(const Container& container) {
    std::vector<uint32_t> keys;
    for (const auto& node : container) {
        keys.push_back(node.key);
    }
    return keys;
}

TYPED_TEST(HashTest, IterationGoesOverBucketsAndChainsFromTheHead) {
    auto set = makeSet<TypeParam, uint32_t>();
    for (const uint32_t key : {16U, 3U, 20U, 0U, 37U, 17U}) { // 3, 20, 37 and 0, 17 share buckets
        set.add(key);
    }
    EXPECT_EQ(keysInOrder(set), (std::vector<uint32_t>{17, 0, 37, 20, 3, 16}));
}

TYPED_TEST(HashTest, GrowthPushesNodesOnTheirNewChainsFromTheHead) {
    auto set = makeSet<TypeParam, uint32_t>();
    // All in bucket 0 of 17 and, where a multiple of 26, of 26.
    for (uint32_t i = 0; i < 13; ++i) {
        set.add(i * 17 * 26);
    }
    std::vector<uint32_t> before = keysInOrder(set);
    EXPECT_EQ(before.front(), 12U * 17 * 26);
    set.add(1);
    // Emptied from the head and pushed on the head: the chain is reversed.
    std::reverse(before.begin(), before.end());
    before.push_back(1);
    EXPECT_EQ(keysInOrder(set), before);
}

TYPED_TEST(HashTest, ReplacedValueStaysInItsPlace) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    table.set(3, 0);
    table.set(20, 0);
    table.set(37, 0);
    table.set(3, 1);
    EXPECT_EQ(keysInOrder(table), (std::vector<uint32_t>{37, 20, 3}));
}

TYPED_TEST(HashTest, OwnHashFunctionIsUsed) {
    auto set = makeSet<TypeParam, uint32_t>(&sameBucket);
    for (uint32_t key = 0; key < 10; ++key) {
        set.add(key);
    }
    EXPECT_EQ(keysInOrder(set), (std::vector<uint32_t>{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
    EXPECT_TRUE(set.contains(4));
    EXPECT_FALSE(set.contains(10));
}

TYPED_TEST(HashTest, RemoveTakesOneKeyOut) {
    auto set = makeSet<TypeParam, uint32_t>(&sameBucket);
    for (uint32_t key = 0; key < 4; ++key) {
        set.add(key);
    }
    EXPECT_TRUE(set.remove(2));
    EXPECT_TRUE(set.remove(3));
    EXPECT_TRUE(set.remove(0));
    EXPECT_FALSE(set.remove(0));
    EXPECT_EQ(keysInOrder(set), (std::vector<uint32_t>{1}));
    EXPECT_EQ(set.getCount(), 1U);
}

TYPED_TEST(HashTest, ClearTakesAllOutAndKeepsTheBuckets) {
    auto table = makeTable<TypeParam, uint32_t, Counted>();
    for (uint32_t key = 0; key < 100; ++key) {
        table.set(key, Counted(key));
    }
    const uint32_t buckets = table.getTableSize();
    table.clear();
    EXPECT_EQ(table.getCount(), 0U);
    EXPECT_EQ(table.getTableSize(), buckets);
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(table.begin(), table.end());
    table.set(1, Counted(5));
    EXPECT_EQ(table.get(1).number(), 5U);
}

TYPED_TEST(HashTest, ValuesAreDestroyedWithTheTable) {
    {
        auto table = makeTable<TypeParam, uint32_t, Counted>();
        for (uint32_t key = 0; key < 100; ++key) {
            table.set(key, Counted(key));
        }
        EXPECT_EQ(Counted::live, 100);
        table.remove(50);
        EXPECT_EQ(Counted::live, 99);
    }
    EXPECT_EQ(Counted::live, 0);
}

TYPED_TEST(HashTest, ByteArraysCanBeKeys) {
    auto table = makeTable<TypeParam, array<uint8_t>, int>();
    array<uint8_t> key;
    table.set(key, 1);
    key.add(0);
    table.set(key, 2); // the same hash
    EXPECT_EQ(table.get(key), 2);
    EXPECT_EQ(table.get(array<uint8_t>()), 1);
}

TYPED_TEST(HashDeathTest, GetOfAnAbsentKey) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    table.set(1, 7);
    EXPECT_FAULT(table.get(2), TypeParam::tableFile, "false");
}

TYPED_TEST(HashDeathTest, NullHashFunction) {
    using Table = typename TypeParam::template Table<uint32_t, int>;
    using Set = typename TypeParam::template Set<uint32_t>;
    const typename Table::HashFunction none = nullptr;
    EXPECT_FAULT(TypeParam::template make<Table>(none), TypeParam::tableFile,
                 "hashFunction != NULL");
    EXPECT_FAULT(TypeParam::template make<Set>(none), TypeParam::setFile, "hashFunction != NULL");
}

TYPED_TEST(HashTest, WithoutChecksAnAbsentKeyHasAZeroValue) {
    auto table = makeTable<TypeParam, uint32_t, uint32_t>();
    auto pointers = makeTable<TypeParam, uint32_t, const char*>();
    table.set(1, 7);
    platform::setCheckLevel("none");
    EXPECT_EQ(table.get(2), 0U);
    EXPECT_EQ(pointers.get(2), nullptr);
}

TYPED_TEST(HashTest, AgreesWithAnUnorderedMap) {
    for (uint32_t seed = 1; seed <= 30; ++seed) {
        std::minstd_rand engine(seed);
        const auto random = [&engine] { return static_cast<uint32_t>(engine()) >> 3; };
        auto table = makeTable<TypeParam, uint64_t, uint32_t>();
        auto set = makeSet<TypeParam, uint64_t>();
        std::unordered_map<uint64_t, uint32_t> expected;
        for (int step = 0; step < 3000; ++step) {
            const uint64_t key = uint64_t{random() % 700} << random() % 40;
            const uint32_t value = random();
            if (random() % 4 == 0) {
                const bool was = expected.erase(key) != 0;
                ASSERT_EQ(table.remove(key), was);
                ASSERT_EQ(set.remove(key), was);
            } else {
                table.set(key, value);
                ASSERT_EQ(set.add(key), !expected.contains(key));
                expected[key] = value;
            }
            ASSERT_EQ(table.getCount(), expected.size()) << "seed " << seed << " step " << step;
        }
        size_t seen = 0;
        for (const auto& node : table) {
            ASSERT_EQ(expected.at(node.key), node.value);
            ++seen;
        }
        EXPECT_EQ(seen, expected.size());
        for (const auto& [key, value] : expected) {
            ASSERT_EQ(table.get(key), value);
            ASSERT_TRUE(set.contains(key));
        }
    }
}

using FastHashDeathTest = ContainerTest;

TEST_F(FastHashDeathTest, NullRegion) {
    EXPECT_FAULT((fast_hash_table<uint32_t, int>(nullptr)), "elfext/interface/fast_hash_table",
                 "region != NULL");
    EXPECT_FAULT(fast_hash_set<uint32_t>(nullptr), "elfext/interface/fast_hash_set",
                 "region != NULL");
}

using HashFunctionTest = ContainerTest;

template <typename Key>
uint32_t hashOf(const Key& key) {
    return KeyHash<Key>::hash(&key);
}

TEST_F(HashFunctionTest, NumbersAreTheirOwnHash) {
    EXPECT_EQ(hashOf(uint16_t{0xFFFF}), 0xFFFFU);
    EXPECT_EQ(hashOf(uint32_t{0xFFFFFFFF}), 0xFFFFFFFFU);
}

TEST_F(HashFunctionTest, HalvesOfA64BitNumberAreCombined) {
    EXPECT_EQ(hashOf(uint64_t{0x1234567800000000}), 0x12345678U);
    EXPECT_EQ(hashOf(uint64_t{0x12345678FFFFFFFF}), 0xEDCBA987U);
    EXPECT_EQ(hashOf(uint64_t{0xABCDABCDABCDABCD}), 0U);
}

TEST_F(HashFunctionTest, PointerIsItsLow32BitsShiftedBy4) {
    for (const uint64_t address : {uint64_t{0x1234567887654321}, uint64_t{0xFFFFFFFF}}) {
        const auto number = static_cast<uintptr_t>(address);
        const char* pointer = nullptr;
        std::memcpy(&pointer, &number, sizeof pointer);
        EXPECT_EQ(hashOf(pointer), (address & 0xFFFFFFFF) >> 4);
    }
}

TEST_F(HashFunctionTest, NamesUseTheStoredHash) {
    EXPECT_EQ(hashOf(Stringlett("ab")), 97U * 31 + 98);
    EXPECT_EQ(hashOf(NumberedStringlett("ab", 1)), (97U * 31 + 98) ^ 1U);
}

TEST_F(HashFunctionTest, ByteArraysHashAsTexts) {
    array<uint8_t> plain;
    fast_array<uint8_t> fast(region());
    EXPECT_EQ(hashOf(plain), 0U);
    for (const uint8_t byte : std::vector<uint8_t>{0, 255, 1, 0}) {
        plain.add(byte);
        fast.add(byte);
    }
    const uint32_t expected = (255U * 31 + 1) * 31;
    EXPECT_EQ(hashOf(plain), expected);
    EXPECT_EQ(hashOf(fast), expected);
}

} // namespace
} // namespace elfext::test
