// The two growable arrays: one set of tests for both.
#include "elfext/interface/array.h"
#include "elfext/interface/fast_array.h"
#include "tests/elfext/container_fixtures.h"

#include <random>
#include <type_traits>
#include <vector>

namespace elfext::test {
namespace {

// Makes either kind of array, so that tests need not know which.
template <template <typename> typename Array>
struct Kind {
    template <typename T>
    using Type = Array<T>;

    template <typename T, typename... Arguments>
    static Array<T> make(Arguments... arguments) {
        if constexpr (std::is_same_v<Array<T>, fast_array<T>>) {
            return Array<T>(&alloclib::defaultRegion(), arguments...);
        } else {
            return Array<T>(arguments...);
        }
    }
    static std::string file() {
        return std::is_same_v<Array<int>, fast_array<int>> ? "elfext/interface/fast_array"
                                                           : "elfext/interface/array";
    }
};

template <typename Tested>
class ArrayTest : public ContainerTest {};
using Kinds = testing::Types<Kind<array>, Kind<fast_array>>;
TYPED_TEST_SUITE(ArrayTest, Kinds);
template <typename Tested>
using ArrayDeathTest = ArrayTest<Tested>;
TYPED_TEST_SUITE(ArrayDeathTest, Kinds);

template <typename Array>
std::vector<uint32_t> contentsOf(const Array& numbers) {
    return {numbers.begin(), numbers.end()};
}
using Numbers = std::vector<uint32_t>;

TYPED_TEST(ArrayTest, FreshOneHasRoomForOneElement) {
    const auto numbers = TypeParam::template make<uint32_t>();
    EXPECT_EQ(numbers.getSize(), 0U);
    EXPECT_EQ(numbers.getCapacity(), 1U);
}

TYPED_TEST(ArrayTest, FirstElementNeedsNoGrowthTheSecondGrowsTo2) {
    auto numbers = TypeParam::template make<uint32_t>();
    numbers.add(1);
    EXPECT_EQ(numbers.getCapacity(), 1U);
    numbers.add(2);
    EXPECT_EQ(numbers.getCapacity(), 2U);
}

TYPED_TEST(ArrayTest, CapacitiesGrowByHalfPlusOne) {
    auto numbers = TypeParam::template make<uint32_t>();
    Numbers capacities;
    for (uint32_t i = 0; i < 100; ++i) {
        numbers.add(i);
        if (capacities.empty() || capacities.back() != numbers.getCapacity()) {
            capacities.push_back(numbers.getCapacity());
        }
    }
    EXPECT_EQ(capacities, (Numbers{1, 2, 4, 7, 11, 17, 26, 40, 61, 92, 139}));
}

TYPED_TEST(ArrayTest, ConstructionWithASize) {
    const auto none = TypeParam::template make<uint32_t>(0U);
    EXPECT_EQ(none.getSize(), 0U);
    EXPECT_EQ(none.getCapacity(), 1U);
    const auto five = TypeParam::template make<uint32_t>(5U);
    EXPECT_EQ(five.getSize(), 5U);
    EXPECT_EQ(five.getCapacity(), 5U);
    EXPECT_EQ(contentsOf(five), Numbers(5, 0));
}

TYPED_TEST(ArrayTest, ReserveTakesTheLargerOfRequestAndGrowth) {
    auto numbers = TypeParam::template make<uint32_t>(10U);
    numbers.reserve(10);
    EXPECT_EQ(numbers.getCapacity(), 10U);
    numbers.reserve(11);
    EXPECT_EQ(numbers.getCapacity(), 16U);
    numbers.reserve(16);
    EXPECT_EQ(numbers.getCapacity(), 16U);
    numbers.reserve(100);
    EXPECT_EQ(numbers.getCapacity(), 100U);
    numbers.reserve(1);
    EXPECT_EQ(numbers.getCapacity(), 100U);
    EXPECT_EQ(numbers.getSize(), 10U);
}

TYPED_TEST(ArrayTest, InsertShiftsLaterElementsUp) {
    auto numbers = TypeParam::template make<uint32_t>();
    numbers.insert(0, 1);
    numbers.insert(1, 4);
    numbers.insert(1, 2);
    numbers.insert(2, 3);
    numbers.insert(0, 0);
    EXPECT_EQ(contentsOf(numbers), (Numbers{0, 1, 2, 3, 4}));
    EXPECT_EQ(numbers.getCapacity(), 7U);
}

TYPED_TEST(ArrayTest, RemoveShiftsLaterElementsDown) {
    auto numbers = TypeParam::template make<uint32_t>();
    for (uint32_t i = 0; i < 5; ++i) {
        numbers.add(i);
    }
    numbers.remove(4);
    numbers.remove(0);
    numbers.remove(1);
    EXPECT_EQ(contentsOf(numbers), (Numbers{1, 3}));
    EXPECT_EQ(numbers.getCapacity(), 7U);
}

TYPED_TEST(ArrayTest, RemoveValueTakesTheFirstEqualOne) {
    auto numbers = TypeParam::template make<uint32_t>();
    for (const uint32_t number : {5U, 7U, 5U, 9U}) {
        numbers.add(number);
    }
    numbers.removeValue(5);
    EXPECT_EQ(contentsOf(numbers), (Numbers{7, 5, 9}));
    numbers.removeValue(6);
    EXPECT_EQ(contentsOf(numbers), (Numbers{7, 5, 9}));
}

TYPED_TEST(ArrayTest, ContainsScansAll) {
    auto numbers = TypeParam::template make<uint32_t>();
    EXPECT_FALSE(numbers.contains(0));
    numbers.add(3);
    numbers.add(4);
    EXPECT_TRUE(numbers.contains(4));
    numbers.remove(1);
    EXPECT_FALSE(numbers.contains(4));
}

TYPED_TEST(ArrayTest, SetSizeFillsWithZeros) {
    auto numbers = TypeParam::template make<uint32_t>();
    numbers.add(9);
    numbers.add(9);
    numbers.setSize(1);
    numbers.setSize(3);
    EXPECT_EQ(contentsOf(numbers), (Numbers{9, 0, 0}));
    numbers.clear();
    EXPECT_EQ(numbers.getSize(), 0U);
}

TYPED_TEST(ArrayTest, ElementOfTheArrayItselfCanBeAdded) {
    auto numbers = TypeParam::template make<Counted>();
    numbers.add(Counted(1));
    for (int i = 0; i < 20; ++i) {
        numbers.add(numbers[0]);
        numbers.insert(0, numbers[numbers.getSize() - 1]);
    }
    EXPECT_EQ(numbers.getSize(), 41U);
    for (const Counted& number : numbers) {
        EXPECT_EQ(number.number(), 1U);
    }
}

TYPED_TEST(ArrayTest, AllElementsUpToTheCapacityLive) {
    {
        auto numbers = TypeParam::template make<Counted>();
        EXPECT_EQ(Counted::live, 1);
        for (uint32_t i = 0; i < 5; ++i) {
            numbers.add(Counted(i));
        }
        EXPECT_EQ(Counted::live, 7);
        numbers.remove(0);
        EXPECT_EQ(Counted::live, 7);
        for (uint32_t i = 0; i < 4; ++i) {
            EXPECT_EQ(numbers[i].number(), i + 1);
        }
    }
    EXPECT_EQ(Counted::live, 0);
}

TYPED_TEST(ArrayTest, CopiesAreApart) {
    auto numbers = TypeParam::template make<Counted>();
    numbers.add(Counted(1));
    numbers.add(Counted(2));
    auto copy = numbers;
    EXPECT_TRUE(copy == numbers);
    copy[0] = Counted(9);
    EXPECT_FALSE(copy == numbers);
    EXPECT_EQ(numbers[0].number(), 1U);
    copy.add(Counted(3));
    numbers = copy;
    EXPECT_TRUE(copy == numbers);
    const auto& self = numbers;
    numbers = self;
    EXPECT_TRUE(copy == numbers);
}

TYPED_TEST(ArrayTest, SwapExchangesAll) {
    auto first = TypeParam::template make<uint32_t>(2U);
    auto second = TypeParam::template make<uint32_t>(7U);
    first.swap(second);
    EXPECT_EQ(first.getSize(), 7U);
    EXPECT_EQ(second.getSize(), 2U);
}

TYPED_TEST(ArrayDeathTest, IndexBehindTheEnd) {
    auto numbers = TypeParam::template make<uint32_t>(3U);
    const auto& constant = numbers;
    const volatile uint32_t behind = 3; // not for the compiler to see
    EXPECT_FAULT(numbers[behind] = 1, TypeParam::file(), "index < m_Used");
    EXPECT_FAULT(static_cast<void>(constant[UINT32_MAX]), TypeParam::file(), "index < m_Used");
    EXPECT_FAULT(numbers.remove(behind), TypeParam::file(), "index < m_Used");
    EXPECT_FAULT(numbers.insert(behind + 1, 0), TypeParam::file(), "index <= m_Used");
}

TYPED_TEST(ArrayDeathTest, BlockThatNoAllocatorGives) {
    const auto outOfMemory =
        testing::ContainsRegex("^Out of memory\\. Allocation of 4294967295 bytes failed, system "
                               "size is [0-9]+ bytes\n$");
    auto numbers = TypeParam::template make<uint64_t>();
    EXPECT_EXIT(numbers.reserve(0x20000000), testing::ExitedWithCode(1), outOfMemory);
    EXPECT_EXIT(numbers.setSize(UINT32_MAX), testing::ExitedWithCode(1), outOfMemory);
    EXPECT_EXIT(TypeParam::template make<uint64_t>(UINT32_MAX), testing::ExitedWithCode(1),
                outOfMemory);
    EXPECT_EXIT(TypeParam::template make<uint8_t>(UINT32_MAX), testing::ExitedWithCode(1),
                outOfMemory);
}

TYPED_TEST(ArrayTest, AgreesWithAVector) {
    for (uint32_t seed = 1; seed <= 30; ++seed) {
        std::minstd_rand engine(seed);
        const auto random = [&engine] { return static_cast<uint32_t>(engine()) >> 3; };
        auto numbers = TypeParam::template make<Counted>();
        Numbers expected;
        for (int step = 0; step < 1000; ++step) {
            const uint32_t value = random() % 50;
            const auto size = static_cast<uint32_t>(expected.size());
            const uint32_t place = random() % (size + 1);
            const auto at = expected.begin() + place;
            switch (random() % 10) {
            case 0:
            case 1:
            case 2:
            case 3:
                numbers.add(Counted(value));
                expected.push_back(value);
                break;
            case 4:
            case 5:
                numbers.insert(place, Counted(value));
                expected.insert(at, value);
                break;
            case 6:
                if (place < size) {
                    numbers.remove(place);
                    expected.erase(at);
                }
                break;
            case 7:
                numbers.removeValue(Counted(value));
                if (const auto found = std::find(expected.begin(), expected.end(), value);
                    found != expected.end()) {
                    expected.erase(found);
                }
                break;
            case 8:
                ASSERT_EQ(numbers.contains(Counted(value)),
                          std::find(expected.begin(), expected.end(), value) != expected.end());
                break;
            default:
                if (random() % 20 == 0) {
                    numbers.setSize(place);
                    expected.resize(place);
                } else {
                    numbers.reserve(place);
                }
                break;
            }
            ASSERT_EQ(numbers.getSize(), expected.size()) << "seed " << seed << " step " << step;
            for (uint32_t i = 0; i < numbers.getSize(); ++i) {
                ASSERT_EQ(numbers[i].number(), expected[i]) << "seed " << seed << " step " << step;
            }
        }
    }
    EXPECT_EQ(Counted::live, 0);
}

// --- What only the array in a region has

using FastArrayTest = ContainerTest;
using FastArrayDeathTest = ContainerTest;

TEST_F(FastArrayDeathTest, NullRegion) {
    alloclib::Region* volatile none = nullptr; // not for the compiler to see
    EXPECT_FAULT(fast_array<int>{none}, "elfext/interface/fast_array", "region != NULL");
    EXPECT_FAULT((fast_array<int>{none, 5}), "elfext/interface/fast_array", "region != NULL");
}

// Sizes of blocks are seen by a region that notes them.
class NotingRegion final : public alloclib::Region {
public:
    void* Alloc(uint64_t size, uint64_t align, const char* /*typeName*/) override {
        taken.push_back(size);
        m_blocks.push_back(::operator new(size));
        EXPECT_EQ(align, 8U);
        return m_blocks.back();
    }
    void Discard(void* block, uint64_t size, uint64_t extra) override {
        EXPECT_EQ(extra, 8U);
        returned.push_back(size);
        const auto found = std::find(m_blocks.begin(), m_blocks.end(), block);
        ASSERT_NE(found, m_blocks.end());
        m_blocks.erase(found);
        ::operator delete(block);
    }
    void Destroy(bool /*freeMemory*/) override {}

    std::vector<uint64_t> taken;
    std::vector<uint64_t> returned;

private:
    std::vector<void*> m_blocks;
};

TEST_F(FastArrayTest, BlockIsTheElementsRoundedAndAWord) {
    NotingRegion noting;
    {
        fast_array<uint8_t> bytes(&noting, 13);
        fast_array<uint64_t> words(&noting, 3);
        fast_array<uint8_t> none(&noting);
    }
    EXPECT_EQ(noting.taken, (std::vector<uint64_t>{24, 32, 16}));
    EXPECT_EQ(noting.returned, (std::vector<uint64_t>{16, 32, 24}));
}

TEST_F(FastArrayTest, BlockOfElementsWithADestructorBeginsWithACount) {
    NotingRegion noting;
    {
        fast_array<Counted> elements(&noting, 3);
        uint64_t count = 0;
        std::memcpy(&count, reinterpret_cast<const char*>(elements.begin()) - 8, sizeof count);
        EXPECT_EQ(count, 3U);
    }
    EXPECT_EQ(noting.taken, (std::vector<uint64_t>{8 + 3 * sizeof(Counted) + 8}));
    EXPECT_EQ(noting.returned, noting.taken);
}

TEST_F(FastArrayTest, LastWordIsTheBlocksStart) {
    const fast_array<uint8_t> bytes(region(), 13);
    const uint8_t* start = nullptr;
    std::memcpy(&start, bytes.begin() + 16, sizeof start);
    EXPECT_EQ(start, bytes.begin());
}

TEST_F(FastArrayTest, OldBlocksGoBackWholeWhenItGrows) {
    NotingRegion noting;
    {
        fast_array<uint32_t> numbers(&noting);
        for (uint32_t i = 0; i < 12; ++i) {
            numbers.add(i);
        }
        EXPECT_EQ(noting.taken, (std::vector<uint64_t>{16, 16, 24, 40, 56, 80}));
        EXPECT_EQ(noting.returned, (std::vector<uint64_t>{16, 16, 24, 40, 56}));
    }
    EXPECT_EQ(noting.returned, noting.taken);
}

TEST_F(FastArrayTest, AssignmentStaysInItsOwnRegion) {
    alloclib::RegionGeneral* const other = alloclib::RegionGeneral::Create(0, "other");
    fast_array<uint32_t> kept(region());
    {
        fast_array<uint32_t> source(other);
        for (uint32_t i = 0; i < 1000; ++i) {
            source.add(i);
        }
        const fast_array<uint32_t> copy(source);
        EXPECT_EQ(copy.getRegion(), other);
        kept = source;
        EXPECT_EQ(kept.getRegion(), region());
    }
    other->Destroy(true);
    EXPECT_EQ(kept.getSize(), 1000U);
    EXPECT_EQ(kept[999], 999U);
}

TEST(ArrayGrowth, BytesOfABlockSaturate) {
    EXPECT_EQ(saturatedBytes(3, 8), 24U);
    EXPECT_EQ(saturatedBytes(0x1FFFFFFF, 8), 0xFFFFFFF8U);
    EXPECT_EQ(saturatedBytes(0x20000000, 8), 0xFFFFFFFFU);
    EXPECT_EQ(saturatedBytes(UINT32_MAX, 1), UINT32_MAX);
    EXPECT_EQ(saturatedBytes(UINT32_MAX, UINT32_MAX), UINT32_MAX);
}

TEST(ArrayGrowth, CapacityIsComputedIn32Bits) {
    EXPECT_EQ(grownCapacity(1, 2), 2U);
    EXPECT_EQ(grownCapacity(40, 41), 61U);
    EXPECT_EQ(grownCapacity(40, 100), 100U);
    // 3 * 0x60000000 wraps to 0x20000000.
    EXPECT_EQ(grownCapacity(0x60000000, 0x60000001), 0x60000001U);
}

TEST(ArrayGrowthDeathTest, CapacityThatDoesNotRise) {
    EXPECT_EXIT(requireGrowth(UINT32_MAX, 0), testing::ExitedWithCode(1),
                testing::ContainsRegex("^Out of memory\\. "));
    requireGrowth(1, 2);
}

} // namespace
} // namespace elfext::test
