// Pages out of chunks.
#include "alloclib/src/region_large_block.h"

#include "alloclib/interface/region_stats.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_malloc_free.h"
#include "tests/alloclib/region_fixtures.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace alloclib::test {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

constexpr uint64_t page = 4096;

// Memory that a test loses on purpose stays reachable for the leak checker through this.
void* volatile reachable = nullptr;

class LargeBlockRegionTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        m_region = RegionLargeBlock::Create("pages");
    }
    void TearDown() override {
        m_region->Destroy(true);
        LibraryTest::TearDown();
    }
    char* take(uint64_t pages) { return bytesAt(m_region->Alloc(pages * page, 8, nullptr)); }
    void giveBack(void* block, uint64_t pages) { m_region->Discard(block, pages * page, 8); }
    // Requests that the system region has served.
    static uint32_t systemAllocs() { return libraryState().systemRegion->statistics().allocCount; }

    RegionLargeBlock* m_region = nullptr;
};

TEST_F(LargeBlockRegionTest, PagesFollowEachOther) {
    char* const first = take(1);
    EXPECT_EQ(take(3), first + page);
    EXPECT_EQ(take(1), first + 4 * page);
    std::memset(first, 1, 5 * page);
}

TEST_F(LargeBlockRegionTest, RequestOf31PagesIsServedFromTheTable) {
    const uint32_t before = systemAllocs();
    take(0x1F000 / page);
    EXPECT_EQ(systemAllocs(), before);
}

TEST_F(LargeBlockRegionTest, RequestOf128KiBGoesToTheSystem) {
    const uint32_t before = systemAllocs();
    char* const block = take(0x20000 / page);
    EXPECT_EQ(systemAllocs(), before + 1);
    EXPECT_TRUE(m_region->pages().isFree(0));
    std::memset(block, 1, 0x20000);
    giveBack(block, 0x20000 / page);
    EXPECT_EQ(libraryState().systemRegion->statistics().discardBytes, uint64_t{0x20000});
}

TEST_F(LargeBlockRegionTest, FirstChunkIsThereFromTheStartTheOthersWhenNeeded) {
    const uint32_t before = systemAllocs();
    for (int i = 0; i < 256; ++i) {
        take(1);
    }
    EXPECT_EQ(systemAllocs(), before);
    take(1);
    EXPECT_EQ(systemAllocs(), before + 1);
}

TEST_F(LargeBlockRegionTest, RunNeverCrossesAChunk) {
    char* const start = take(31);
    for (int i = 1; i < 8; ++i) {
        take(31); // 248 of 256 pages
    }
    const uint32_t before = systemAllocs();
    take(9);
    EXPECT_EQ(systemAllocs(), before + 1); // a second chunk
    EXPECT_EQ(take(8), start + 248 * page);
}

TEST_F(LargeBlockRegionTest, OnlySinglePagesMoveTheSearchStart) {
    for (int i = 0; i < 4; ++i) {
        take(31);
    }
    EXPECT_EQ(m_region->searchStart(), 0);
    take(1); // page 124
    EXPECT_EQ(m_region->searchStart(), 3);
    take(31);
    EXPECT_EQ(m_region->searchStart(), 3);
}

TEST_F(LargeBlockRegionTest, DiscardLowersTheSearchStart) {
    char* const start = take(31);
    take(31);
    take(31);
    take(4);
    take(1);
    EXPECT_EQ(m_region->searchStart(), 3);
    giveBack(start + 70 * page, 1);
    EXPECT_EQ(m_region->searchStart(), 2);
    giveBack(start + 90 * page, 1);
    EXPECT_EQ(m_region->searchStart(), 2);
    giveBack(start + 10 * page, 2);
    EXPECT_EQ(m_region->searchStart(), 0);
    EXPECT_EQ(take(1), start + 10 * page);
    EXPECT_EQ(take(2), start + 98 * page);
    EXPECT_EQ(take(1), start + 11 * page);
    EXPECT_EQ(take(1), start + 70 * page);
}

TEST_F(LargeBlockRegionTest, FullTableIsExtended) {
    std::vector<char*> pages;
    pages.reserve(10240);
    for (int i = 0; i < 10240; ++i) {
        pages.push_back(take(1));
    }
    EXPECT_EQ(m_region->following(), nullptr);
    EXPECT_EQ(m_region->statistics()->overheadBytes, 0U);
    char* const beyond = take(1);
    ASSERT_NE(m_region->following(), nullptr);
    EXPECT_EQ(m_region->searchStart(), 321);
    EXPECT_EQ(m_region->following()->searchStart(), 0);
    EXPECT_EQ(m_region->statistics()->overheadBytes, sizeof(RegionLargeBlock));
    EXPECT_EQ(m_region->following()->statistics(), m_region->statistics());
    giveBack(beyond, 1);
    EXPECT_EQ(m_region->searchStart(), 321);
    EXPECT_EQ(take(1), beyond);
    giveBack(pages[10239], 1);
    EXPECT_EQ(m_region->searchStart(), 319);
    EXPECT_EQ(take(1), pages[10239]);
}

TEST_F(LargeBlockRegionTest, FailedRequestRetiresTheTableUntilADiscard) {
    // 39 chunks full, in the last one the odd pages free.
    char* chunk = nullptr;
    for (int i = 0; i < 40 * 256; ++i) {
        char* const taken = take(1);
        chunk = i == 39 * 256 ? taken : chunk;
    }
    for (uint64_t i = 1; i < 256; i += 2) {
        giveBack(chunk + i * page, 1);
    }
    char* const run = take(2);
    EXPECT_EQ(m_region->searchStart(), 321);
    EXPECT_EQ(take(1), run + 2 * page); // although there are free pages in the first table
    giveBack(chunk, 1);
    EXPECT_EQ(m_region->searchStart(), 312);
    EXPECT_EQ(take(2), chunk);
}

TEST_F(LargeBlockRegionTest, ThirdTableFollowsTheSecond) {
    for (int table = 0; table < 2; ++table) {
        for (int chunk = 0; chunk < 40; ++chunk) {
            for (int i = 0; i < 8; ++i) {
                take(31);
            }
        }
    }
    ASSERT_NE(m_region->following(), nullptr);
    EXPECT_EQ(m_region->following()->following(), nullptr);
    take(31);
    EXPECT_NE(m_region->following()->following(), nullptr);
    EXPECT_EQ(m_region->following()->searchStart(), 321);
}

TEST_F(LargeBlockRegionTest, StatisticsCountAllBlocksWithoutPadding) {
    const RegionStats& stats = *m_region->statistics();
    char* const small = take(2);
    char* const large = take(64);
    EXPECT_EQ(stats.allocCount, 2U);
    EXPECT_EQ(stats.allocBytes, 66 * page);
    EXPECT_EQ(stats.paddingBytes, 0U);
    giveBack(small, 2);
    giveBack(large, 64);
    EXPECT_EQ(stats.discardCount, 2U);
    EXPECT_EQ(stats.currentSize(), 0U);
    EXPECT_EQ(stats.maxSize, 66 * page);
    EXPECT_EQ(stats.id, 1U);
}

TEST_F(LargeBlockRegionTest, ScribbleOverwritesWhatIsDiscarded) {
    m_region->setScribble(true);
    unsigned char seen[3] = {};
    for (unsigned char& byte : seen) {
        char* const block = take(1);
        std::memset(block, 'x', page);
        giveBack(block, 1);
        ASSERT_EQ(take(1), block);
        byte = static_cast<unsigned char>(*block);
        EXPECT_TRUE(std::all_of(block, block + page, [&](char c) { return c == *block; }));
        giveBack(block, 1);
    }
    // A byte for each discard, in turn.
    EXPECT_EQ(static_cast<unsigned char>(seen[1] - seen[0]), 2);
    EXPECT_EQ(static_cast<unsigned char>(seen[2] - seen[1]), 2);
}

TEST_F(LargeBlockRegionTest, WithoutScribbleContentsStay) {
    char* const block = take(1);
    std::memset(block, 'x', page);
    giveBack(block, 1);
    ASSERT_EQ(take(1), block);
    EXPECT_EQ(block[0], 'x');
    EXPECT_EQ(block[page - 1], 'x');
}

TEST(LargeBlockRegion, DestroyReturnsAllTables) {
    InitAlloclib();
    RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
    for (int i = 0; i < 330; ++i) {
        region->Alloc(31 * page, 8, nullptr);
    }
    ASSERT_NE(region->following(), nullptr);
    region->Destroy(true);
    const RegionStats& system = libraryState().systemRegion->statistics();
    EXPECT_EQ(system.allocCount, system.discardCount + 1); // the dead record
    FinishAlloclib();
}

TEST(LargeBlockRegionDeathTest, DestroyWithoutFreeingKeepsTheChunks) {
    EXPECT_EXIT(
        {
            InitAlloclib();
            RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
            reachable = region->Alloc(page, 8, nullptr);
            region->Destroy(false);
            const RegionStats& system = libraryState().systemRegion->statistics();
            // The chunk and the dead record stay; the table itself has gone back.
            if (system.allocCount - system.discardCount == 2) {
                FinishAlloclib();
            }
        },
        ExitedWithCode(1),
        Eq("Internal alloclib error: RegionMallocFree cannot free memory on Destroy()\n"));
}

using LargeBlockRegionFixtureDeathTest = LargeBlockRegionTest;

TEST_F(LargeBlockRegionFixtureDeathTest, SizesThatAreNoPages) {
    for (const uint64_t size : {uint64_t{0}, uint64_t{1}, page - 1, page + 8, uint64_t{0x20001}}) {
        EXPECT_EXIT(m_region->Alloc(size, 8, nullptr), ExitedWithCode(1),
                    Eq("Internal alloclib error: Invalid allocation using RegionLargeBlock\n"));
        EXPECT_EXIT(m_region->Discard(m_region, size, 8), ExitedWithCode(1),
                    Eq("Internal alloclib error: Invalid discard using RegionLargeBlock\n"));
    }
}

TEST_F(LargeBlockRegionFixtureDeathTest, DiscardOfAForeignBlock) {
    char block[8];
    char text[128];
    std::snprintf(text, sizeof text,
                  "Internal alloclib error: RegionLargeBlock: discard of invalid pointer: %p\n\n",
                  static_cast<void*>(block));
    EXPECT_EXIT(m_region->Discard(block, page, 8), ExitedWithCode(1), Eq(std::string(text)));
}

TEST_F(LargeBlockRegionFixtureDeathTest, DiscardBehindTheLastPage) {
    char* last = nullptr;
    for (int i = 0; i < 10240; ++i) {
        last = take(1);
    }
    EXPECT_EXIT(m_region->Discard(last, 2 * page, 8), ExitedWithCode(1),
                Eq("Internal alloclib error: SetBits outside of bitmap\n"));
}

} // namespace
} // namespace alloclib::test
