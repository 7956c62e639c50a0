// What the address sanitizer sees of regions. Without it there is nothing to poison, and the one
// test here is that the marks do no harm.
#include "alloclib/interface/default_region.h"
#include "alloclib/interface/poison.h"
#include "alloclib/src/region_large_block.h"
#include "tests/alloclib/region_fixtures.h"

#include <cstring>

namespace alloclib::test {
namespace {

TEST(RegionPoison, BlocksCanBeUsedInFull) {
    startAllocators();
    for (const uint64_t size : {uint64_t{1}, uint64_t{7}, uint64_t{8}, uint64_t{100},
                                uint64_t{10239}, uint64_t{10240}, uint64_t{200000}}) {
        for (int round = 0; round < 3; ++round) {
            char* const block = bytesAt(allocate(defaultRegion(), size, 1));
            std::memset(block, 1, size);
            EXPECT_EQ(block[size - 1], 1);
            defaultRegion().Discard(block, size, 1);
        }
    }
    finishAllocators();
}

#ifdef ALLOCLIB_POISONS

bool isPoisoned(const void* address) {
    return __asan_address_is_poisoned(address) != 0;
}

class PoisonTest : public testing::Test {
protected:
    void SetUp() override { startAllocators(); }
    void TearDown() override { finishAllocators(); }
};

TEST_F(PoisonTest, NothingBehindABlockMayBeTouched) {
    for (uint64_t size = 1; size <= 10240; size = size * 3 / 2 + 1) {
        char* const fast = bytesAt(allocate(defaultRegion(), size, 1));
        EXPECT_FALSE(isPoisoned(fast + size - 1)) << size;
        EXPECT_TRUE(isPoisoned(fast + size)) << size;
        char* const full = bytesAt(defaultRegion().Alloc(size, 32, nullptr));
        EXPECT_FALSE(isPoisoned(full + size - 1)) << size;
        EXPECT_TRUE(isPoisoned(full + size)) << size;
    }
    char* const large = bytesAt(defaultRegion().Alloc(20000, 8, nullptr));
    EXPECT_FALSE(isPoisoned(large + 19999));
    EXPECT_TRUE(isPoisoned(large + 20000));
}

TEST_F(PoisonTest, DiscardedBlocksMayNotBeTouched) {
    for (const uint64_t size : {uint64_t{8}, uint64_t{120}, uint64_t{128}, uint64_t{5000}}) {
        char* const block = bytesAt(allocate(defaultRegion(), size, 8));
        defaultRegion().Discard(block, size, 8);
        for (uint64_t i = 0; i < size; ++i) {
            ASSERT_TRUE(isPoisoned(block + i)) << size << " at " << i;
        }
    }
}

TEST_F(PoisonTest, BlocksFromTheListsAreOpenedToTheirSizeOnly) {
    std::vector<char*> blocks;
    for (int i = 0; i < 90; ++i) {
        blocks.push_back(bytesAt(allocate(defaultRegion(), 120, 8)));
    }
    for (char* const block : blocks) {
        defaultRegion().Discard(block, 120, 8);
    }
    defaultRegion().Alloc(200, 8, nullptr);
    char* const block = bytesAt(allocate(defaultRegion(), 113, 1));
    EXPECT_EQ(block, blocks.back());
    EXPECT_FALSE(isPoisoned(block));
    EXPECT_FALSE(isPoisoned(block + 112));
    EXPECT_TRUE(isPoisoned(block + 113));
}

TEST_F(PoisonTest, BlocksThatBecomeAWorkingAreaAreOpenedPieceByPiece) {
    char* const area = bytesAt(allocate(defaultRegion(), 3000, 8));
    defaultRegion().Discard(area, 3000, 8);
    while (defaultRegion().workingBlockRoom() > 1000) {
        defaultRegion().Alloc(800, 8, nullptr);
    }
    char* const block = bytesAt(defaultRegion().Alloc(1001, 64, nullptr));
    ASSERT_GE(block, area);
    ASSERT_LT(block, area + 3000);
    for (const char* byte = area; byte != area + 3000; ++byte) {
        ASSERT_EQ(isPoisoned(byte), byte < block || byte >= block + 1001) << byte - area;
    }
}

TEST_F(PoisonTest, PagesAreOpenWhileTheyAreHandedOut) {
    RegionLargeBlock* const pages = RegionLargeBlock::Create("pages");
    char* const one = bytesAt(pages->Alloc(4096, 8, nullptr));
    char* const two = bytesAt(pages->Alloc(8192, 8, nullptr));
    ASSERT_EQ(two, one + 4096);
    EXPECT_FALSE(isPoisoned(one));
    EXPECT_FALSE(isPoisoned(two + 8191));
    EXPECT_TRUE(isPoisoned(two + 8192)); // never handed out
    pages->Discard(one, 4096, 8);
    EXPECT_TRUE(isPoisoned(one));
    EXPECT_TRUE(isPoisoned(one + 4095));
    EXPECT_FALSE(isPoisoned(two));
    pages->Discard(two, 8192, 8);
    EXPECT_TRUE(isPoisoned(two + 8191));
    EXPECT_EQ(pages->Alloc(4096, 8, nullptr), one);
    EXPECT_FALSE(isPoisoned(one + 4095));
    EXPECT_TRUE(isPoisoned(one + 4096));
    pages->Destroy(true);
}

using RegionPoisonDeathTest = PoisonTest;

TEST_F(RegionPoisonDeathTest, OverrunInsideARegionIsFound) {
    char* volatile block = bytesAt(allocate(defaultRegion(), 13, 1));
    EXPECT_DEATH(block[13] = 'x', "use-after-poison");
}

TEST_F(RegionPoisonDeathTest, UseAfterDiscardIsFound) {
    char* volatile block = bytesAt(allocate(defaultRegion(), 64, 8));
    defaultRegion().Discard(block, 64, 8);
    EXPECT_DEATH(block[20] = 'x', "use-after-poison");
}

#endif

} // namespace
} // namespace alloclib::test
