// Bump allocation, the lists of discarded blocks and the working states.
#include "alloclib/interface/region_general.h"

#include "alloclib/interface/region_stats.h"
#include "tests/alloclib/region_fixtures.h"

#include <cstring>

namespace alloclib::test {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

TEST_F(GeneralRegionTest, ObjectLiesInTheFirstBlock) {
    ASSERT_EQ(m_parent.allocs.size(), 1U);
    EXPECT_EQ(m_parent.allocs[0].size, 4096U);
    EXPECT_EQ(m_parent.allocs[0].align, 8U);
    EXPECT_EQ(reinterpret_cast<char*>(m_region), bytesAt(m_parent.allocs[0].block) + 16);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Fast);
    EXPECT_EQ(m_region->fastPathRoom(), m_region->workingBlockRoom());
}

TEST_F(GeneralRegionTest, FastPathBumpsByTheRoundedSize) {
    char* const first = bytesAt(allocate(*m_region, 1, 1));
    char* const second = bytesAt(allocate(*m_region, 9, 1));
    char* const third = bytesAt(allocate(*m_region, 16, 8));
    char* const fourth = bytesAt(allocate(*m_region, 0, 8));
    EXPECT_EQ(second - first, 8);
    EXPECT_EQ(third - second, 16);
    EXPECT_EQ(fourth - third, 16);
    EXPECT_EQ(bytesAt(allocate(*m_region, 8, 8)), fourth);
    EXPECT_EQ(m_parent.allocs.size(), 1U);
}

TEST_F(GeneralRegionTest, FastPathNeverLeavesNextEqualToLimit) {
    const uint64_t room = m_region->fastPathRoom();
    allocate(*m_region, room - 8, 8);
    EXPECT_EQ(m_region->fastPathRoom(), 8U);
    EXPECT_EQ(m_parent.allocs.size(), 1U);
    // The last eight bytes are never given out.
    allocate(*m_region, 8, 8);
    EXPECT_EQ(m_parent.allocs.size(), 2U);
}

TEST_F(GeneralRegionTest, BlockIsAlways8Aligned) {
    for (uint64_t size = 0; size < 300; ++size) {
        EXPECT_EQ(reinterpret_cast<uintptr_t>(allocate(*m_region, size, 1)) % 8, 0U);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(m_region->Alloc(size, 1, nullptr)) % 8, 0U);
    }
}

TEST_F(GeneralRegionTest, NewBlockHoldsTheRequestAnd3000BytesMore) {
    fillWorkingBlock();
    m_region->Alloc(1080, 8, nullptr); // 1080 + 3000 + 16 is one page
    EXPECT_EQ(m_parent.allocs.back().size, 4096U);
    EXPECT_EQ(m_region->workingBlockRoom(), 3000U);
    fillWorkingBlock();
    m_region->Alloc(1081, 8, nullptr);
    EXPECT_EQ(m_parent.allocs.back().size, 8192U);
    EXPECT_EQ(m_parent.allocs.back().align, 8U);
}

TEST_F(GeneralRegionTest, AllocOf10239BytesTakesTheBumpPath) {
    char* const block = bytesAt(m_region->Alloc(10239, 8, nullptr));
    EXPECT_EQ(m_parent.allocs.back().size, 16384U); // 10240 + 3000 + 16, in pages
    EXPECT_EQ(block, bytesAt(m_parent.allocs.back().block) + 16);
    EXPECT_EQ(m_region->workingBlockRoom(), 16384U - 16 - 10240);
}

TEST_F(GeneralRegionTest, AllocOf10240BytesBecomesALargeBlock) {
    const char* const next = RegionGeneralProbe::next(*m_region);
    char* const block = bytesAt(m_region->Alloc(10240, 8, "large"));
    EXPECT_EQ(m_parent.allocs.back().size, 12288U); // 10240 + 24, in pages
    EXPECT_EQ(m_parent.allocs.back().align, 8U);
    EXPECT_EQ(block, bytesAt(m_parent.allocs.back().block) + 24);
    EXPECT_EQ(RegionGeneralProbe::next(*m_region), next);
    m_region->Discard(block, 10240, 8);
    ASSERT_EQ(m_parent.discards.size(), 1U);
    EXPECT_EQ(m_parent.discards[0].size, 12288U);
    EXPECT_EQ(m_parent.discards[0].align, 8U);
}

TEST_F(GeneralRegionTest, LargeBlockIgnoresGreaterAlignments) {
    char* const block = bytesAt(m_region->Alloc(20000, 64, nullptr));
    EXPECT_EQ(block, bytesAt(m_parent.allocs.back().block) + 24);
}

TEST_F(GeneralRegionTest, LargeBlocksAreUnlinkedFromAnyPlace) {
    std::vector<void*> blocks;
    blocks.reserve(5);
    for (int i = 0; i < 5; ++i) {
        blocks.push_back(m_region->Alloc(20000, 8, nullptr));
    }
    for (const size_t i : {size_t{2}, size_t{4}, size_t{0}}) { // middle, front, back of the list
        m_region->Discard(blocks[i], 20000, 8);
        EXPECT_EQ(m_parent.discards.back().block, bytesAt(blocks[i]) - 24);
    }
    EXPECT_EQ(m_parent.liveBlocks(), 3U);
    m_region->Discard(blocks[1], 20000, 8);
    m_region->Discard(blocks[3], 20000, 8);
    EXPECT_EQ(m_parent.liveBlocks(), 1U);
    m_region->Alloc(20000, 8, nullptr);
}

TEST_F(GeneralRegionTest, DestroyReturnsLargeBlocksFirstAndTheObjectLast) {
    auto* const region = RegionGeneral::Create(0, "short-lived");
    void* const firstBlock = m_parent.allocs.back().block;
    region->Alloc(20000, 8, nullptr);
    void* const firstLarge = m_parent.allocs.back().block;
    region->Alloc(9000, 8, nullptr);
    void* const secondBlock = m_parent.allocs.back().block;
    region->Alloc(30000, 8, nullptr);
    void* const secondLarge = m_parent.allocs.back().block;
    region->Destroy(true);
    using Request = LoggingRegion::Request;
    const std::vector<Request> expected = {
        Request{secondLarge, 32768, 8, ""}, Request{firstLarge, 20480, 8, ""},
        Request{secondBlock, 12288, 8, ""}, Request{firstBlock, 4096, 8, ""}};
    EXPECT_EQ(m_parent.discards, expected);
}

TEST_F(GeneralRegionTest, DestroyWithoutFreeingReturnsNothing) {
    auto* const region = RegionGeneral::Create(0, "kept");
    region->Alloc(20000, 8, nullptr);
    region->Destroy(false);
    EXPECT_TRUE(m_parent.discards.empty());
    for (size_t i = 1; i < m_parent.allocs.size(); ++i) {
        m_parent.Discard(m_parent.allocs[i].block, m_parent.allocs[i].size, 8);
    }
}

TEST_F(GeneralRegionTest, SmallListsAreMadeWithTheFirstSmallDiscard) {
    void* const block = allocate(*m_region, 24, 8);
    const char* const before = RegionGeneralProbe::next(*m_region);
    m_region->Discard(block, 24, 8);
    EXPECT_EQ(RegionGeneralProbe::next(*m_region), before + 128);
    m_region->Discard(allocate(*m_region, 40, 8), 40, 8);
    EXPECT_EQ(RegionGeneralProbe::next(*m_region), before + 128 + 40);
    EXPECT_EQ(m_region->smallBytesWaiting(), 64U);
}

TEST_F(GeneralRegionTest, DiscardOfNothingDoesNothing) {
    void* const block = allocate(*m_region, 8, 8);
    const char* const before = RegionGeneralProbe::next(*m_region);
    m_region->Discard(block, 0, 8);
    m_region->Discard(nullptr, 100, 8);
    EXPECT_EQ(RegionGeneralProbe::next(*m_region), before);
    EXPECT_EQ(m_region->smallBytesWaiting(), 0U);
}

TEST_F(GeneralRegionTest, BlockOf120IsTheLargestSmallOne) {
    void* const small = allocate(*m_region, 120, 8);
    void* const big = allocate(*m_region, 121, 8); // 128 rounded
    m_region->Discard(small, 120, 8);
    EXPECT_EQ(m_region->smallBytesWaiting(), 120U);
    m_region->Discard(big, 121, 8);
    EXPECT_EQ(m_region->smallBytesWaiting(), 120U);
    // It serves as the next working block.
    fillWorkingBlock();
    EXPECT_EQ(m_region->Alloc(8, 8, nullptr), big);
    EXPECT_EQ(m_region->workingBlockRoom(), 120U);
    EXPECT_EQ(m_parent.allocs.size(), 1U);
}

TEST_F(GeneralRegionTest, DiscardedBlocksWaitWhileTheListsAreShort) {
    void* const block = allocate(*m_region, 64, 8);
    m_region->Discard(block, 64, 8);
    EXPECT_NE(allocate(*m_region, 64, 8), block);
    EXPECT_NE(m_region->Alloc(64, 8, nullptr), block);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Fast);
}

TEST_F(GeneralRegionTest, ExactlyTheLimitWaitingStaysFast) {
    discardFresh(120, 85);
    discardFresh(40, 1);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10240U);
    m_region->Alloc(200, 8, nullptr);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Fast);
    EXPECT_NE(m_region->fastPathRoom(), 0U);
}

TEST_F(GeneralRegionTest, MoreThan10240BytesWaitingTurnTheRegionSlowAtTheNextFullAlloc) {
    discardFresh(120, 85);
    discardFresh(48, 1);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10248U);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Fast);
    m_region->Alloc(120, 8, nullptr); // still from the working block
    EXPECT_EQ(m_region->smallBytesWaiting(), 10248U);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Slow);
    EXPECT_EQ(m_region->fastPathRoom(), 0U);
    EXPECT_EQ(RegionGeneralProbe::limit(*m_region), RegionGeneralProbe::next(*m_region));
}

TEST_F(GeneralRegionTest, SlowRegionServesTheListsUntilTheyAreShort) {
    std::vector<void*> blocks;
    blocks.reserve(87);
    for (int i = 0; i < 87; ++i) {
        blocks.push_back(allocate(*m_region, 120, 8));
    }
    for (void* const block : blocks) {
        m_region->Discard(block, 120, 8);
    }
    EXPECT_EQ(m_region->smallBytesWaiting(), 10440U);
    m_region->Alloc(200, 8, nullptr);
    // Latest first, one size to a list.
    EXPECT_EQ(allocate(*m_region, 117, 1), blocks[86]);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10320U);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Slow);
    void* const other = allocate(*m_region, 112, 8); // that list is empty
    EXPECT_EQ(std::find(blocks.begin(), blocks.end(), other), blocks.end());
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Slow);
    EXPECT_EQ(allocate(*m_region, 120, 8), blocks[85]);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10200U);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Fast);
    EXPECT_NE(m_region->fastPathRoom(), 0U);
    void* const fresh = allocate(*m_region, 120, 8);
    EXPECT_EQ(std::find(blocks.begin(), blocks.end(), fresh), blocks.end());
}

// A slow region with two blocks of 32 bytes waiting, one of them not 16-aligned, latest.
class SlowAlignedTest : public GeneralRegionTest {
protected:
    void SetUp() override {
        GeneralRegionTest::SetUp();
        discardFresh(120, 86);
        m_region->Alloc(200, 8, nullptr);
        ASSERT_EQ(m_region->workingState(), RegionGeneral::State_Slow);
        ASSERT_EQ(m_region->smallBytesWaiting(), 10320U);
    }
    // A fresh block of 32 bytes at an address of 8 modulo 16, or of 0.
    void* freshBlock(uint64_t modulo16) {
        while ((reinterpret_cast<uintptr_t>(RegionGeneralProbe::next(*m_region)) & 15) !=
               modulo16) {
            m_region->Alloc(136, 8, nullptr);
        }
        return m_region->Alloc(32, 8, nullptr);
    }
};

TEST_F(SlowAlignedTest, AlignmentOf16GivesTheSkippedBytesBack) {
    char* const block = bytesAt(freshBlock(8));
    m_region->Discard(block, 32, 8);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10352U);
    EXPECT_EQ(m_region->Alloc(24, 16, nullptr), block + 8);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10328U); // 32 taken, 8 given back
    EXPECT_EQ(m_region->Alloc(8, 8, nullptr), block);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10320U);
}

TEST_F(SlowAlignedTest, AlignmentOf16LosesTheTail) {
    char* const block = bytesAt(freshBlock(0));
    m_region->Discard(block, 32, 8);
    EXPECT_EQ(m_region->Alloc(24, 16, nullptr), block);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10320U); // all 32 gone
    EXPECT_NE(m_region->Alloc(8, 8, nullptr), block + 24);
}

TEST_F(SlowAlignedTest, TooLargeANeedGoesToTheWorkingBlock) {
    void* const waiting = freshBlock(0);
    m_region->Discard(waiting, 32, 8);
    const auto address = reinterpret_cast<uintptr_t>(m_region->Alloc(32, 128, nullptr));
    EXPECT_EQ(address % 128, 0U);
    EXPECT_NE(address, reinterpret_cast<uintptr_t>(waiting));
    EXPECT_EQ(m_region->smallBytesWaiting(), 10352U);
}

TEST_F(SlowAlignedTest, AllocOfNothingGoesToTheWorkingBlock) {
    EXPECT_EQ(m_region->Alloc(0, 8, nullptr), RegionGeneralProbe::next(*m_region));
    EXPECT_EQ(m_region->smallBytesWaiting(), 10320U);
}

TEST_F(SlowAlignedTest, LargeRequestsPassTheListsBy) {
    m_region->Alloc(20000, 8, nullptr);
    EXPECT_EQ(m_region->smallBytesWaiting(), 10320U);
    EXPECT_EQ(m_region->workingState(), RegionGeneral::State_Slow);
}

TEST_F(GeneralRegionTest, SkippedBytesGoOnTheListOfTheirSize) {
    void* const small = allocate(*m_region, 120, 8);
    void* const lost = allocate(*m_region, 128, 8);
    void* const big = allocate(*m_region, 136, 8);
    RegionGeneralProbe::giveBackSkipped(*m_region, small, 120);
    EXPECT_EQ(m_region->smallBytesWaiting(), 120U);
    RegionGeneralProbe::giveBackSkipped(*m_region, lost, 128);
    RegionGeneralProbe::giveBackSkipped(*m_region, big, 136);
    EXPECT_EQ(m_region->smallBytesWaiting(), 120U);
    fillWorkingBlock();
    EXPECT_EQ(m_region->Alloc(128, 8, nullptr), big);
    m_region->Alloc(128, 8, nullptr); // the one of 128 bytes is on no list
    EXPECT_EQ(m_parent.allocs.size(), 2U);
}

TEST_F(GeneralRegionTest, FirstBigBlockThatFitsBecomesTheWorkingBlock) {
    char* const first = bytesAt(m_region->Alloc(200, 8, nullptr));
    char* const second = bytesAt(m_region->Alloc(2000, 8, nullptr));
    char* const third = bytesAt(m_region->Alloc(304, 8, nullptr));
    char* const fourth = bytesAt(m_region->Alloc(1000, 8, nullptr));
    for (const auto& [block, size] :
         {std::pair(first, 200), std::pair(second, 2000), std::pair(third, 304)}) {
        m_region->Discard(block, static_cast<uint64_t>(size), 8);
    }
    m_region->Discard(fourth, 1000, 8); // the list reads 1000, 304, 2000, 200
    fillWorkingBlock();
    EXPECT_EQ(m_region->Alloc(1001, 8, nullptr), second);
    EXPECT_EQ(m_region->workingBlockRoom(), 2000U - 1008);
    EXPECT_EQ(m_region->fastPathRoom(), 2000U - 1008);
    EXPECT_EQ(m_region->Alloc(992, 8, nullptr), fourth); // 992 left are not more than 992
    EXPECT_EQ(m_region->workingBlockRoom(), 8U);
    EXPECT_EQ(m_region->Alloc(304, 8, nullptr), third); // exactly
    EXPECT_EQ(m_region->workingBlockRoom(), 0U);
    const size_t requests = m_parent.allocs.size();
    m_region->Alloc(208, 8, nullptr); // 200 do not hold it
    EXPECT_EQ(m_parent.allocs.size(), requests + 1);
    fillWorkingBlock();
    EXPECT_EQ(m_region->Alloc(200, 8, nullptr), first);
    EXPECT_EQ(m_parent.allocs.size(), requests + 1);
}

TEST_F(GeneralRegionTest, BigBlockMustHoldItsOwnAlignmentGap) {
    allocate(*m_region, 8, 8);
    while ((reinterpret_cast<uintptr_t>(RegionGeneralProbe::next(*m_region)) & 63) != 8) {
        allocate(*m_region, 8, 8);
    }
    char* const block = bytesAt(m_region->Alloc(256, 8, nullptr)); // 56 bytes before 64-aligned
    m_region->Discard(block, 256, 8);
    fillWorkingBlock();
    m_region->Alloc(208, 64, nullptr);
    EXPECT_EQ(m_parent.allocs.size(), 2U);
    fillWorkingBlock();
    EXPECT_EQ(m_region->Alloc(200, 64, nullptr), block + 56);
    EXPECT_EQ(m_parent.allocs.size(), 2U);
}

TEST_F(GeneralRegionTest, BigBlocksOf10239BytesAreKept) {
    char* const block = bytesAt(m_region->Alloc(10239, 8, nullptr));
    m_region->Discard(block, 10239, 8);
    EXPECT_TRUE(m_parent.discards.empty());
    fillWorkingBlock();
    EXPECT_EQ(m_region->Alloc(9000, 8, nullptr), block);
    EXPECT_EQ(m_region->workingBlockRoom(), 1240U);
}

TEST_F(GeneralRegionTest, AlignmentsUpTo2048AreServedAtAnyPlace) {
    for (uint64_t align = 16; align <= 2048; align *= 2) {
        for (uint64_t shift = 8; shift <= 128; shift += 8) {
            m_region->Alloc(shift, 8, nullptr);
            const auto address = reinterpret_cast<uintptr_t>(m_region->Alloc(24, align, nullptr));
            EXPECT_EQ(address % align, 0U) << align;
        }
    }
}

TEST(GeneralRegionOverCoarseParent, FastPathCoversAtMost10240Bytes) {
    InitAlloclib();
    LoggingRegion parent(0x10000);
    PushDefaultParent(&parent);
    RegionGeneral* const region = RegionGeneral::Create(0, "coarse");
    EXPECT_EQ(parent.allocs[0].size, 0x10000U);
    EXPECT_EQ(region->fastPathRoom(), 10240U);
    for (int i = 0; i < 10; ++i) {
        allocate(*region, 1016, 8);
    }
    EXPECT_EQ(region->fastPathRoom(), 80U);
    allocate(*region, 80, 8); // the full allocator, from the same block
    EXPECT_EQ(region->fastPathRoom(), 10240U);
    EXPECT_EQ(parent.allocs.size(), 1U);
    // At 10240 bytes left the limit is the end; at eight more it is not yet.
    region->Alloc(region->workingBlockRoom() % 10240, 8, nullptr);
    while (region->workingBlockRoom() > 20480) {
        region->Alloc(5120, 8, nullptr);
    }
    region->Alloc(region->workingBlockRoom() - 10248, 8, nullptr);
    EXPECT_EQ(region->fastPathRoom(), 10240U);
    EXPECT_EQ(region->workingBlockRoom(), 10248U);
    region->Alloc(8, 8, nullptr);
    EXPECT_EQ(region->fastPathRoom(), 10240U);
    region->Alloc(8, 8, nullptr);
    EXPECT_EQ(region->fastPathRoom(), 10232U);
    EXPECT_EQ(region->workingBlockRoom(), 10232U);
    region->Destroy(true);
    FinishAlloclib();
}

// Sizes that no header can hold, however their rounding would wrap.
TEST_F(GeneralRegionTest, GiganticRequestsAreOutOfMemory) {
    const uint64_t sizes[] = {UINT64_MAX,        UINT64_MAX - 7,    UINT64_MAX - 6,
                              uint64_t{1} << 63, uint64_t{1} << 32, UINT32_MAX};
    for (const uint64_t size : sizes) {
        EXPECT_EXIT(
            allocate(*m_region, size, 8), ExitedWithCode(1),
            testing::ContainsRegex("^Out of memory\\. Allocation of 4294967295 bytes failed, "
                                   "system size is [0-9]+ bytes\n$"))
            << size;
    }
}

using GeneralRegionDeathTest = GeneralRegionTest;

void useInState(RegionGeneral& region, uint32_t state) {
    RegionGeneralProbe::setState(region, state);
    RegionGeneralProbe::setBlockWorkingState(region);
}

TEST_F(GeneralRegionDeathTest, AlignmentThatNoBlockHolds) {
    const char* const text =
        "Internal alloclib error: allocation went beyond the end of the working block\n";
    EXPECT_EXIT(m_region->Alloc(8, 4096, nullptr), ExitedWithCode(1), Eq(text));
    EXPECT_EXIT(m_region->Alloc(8, uint64_t{1} << 63, nullptr), ExitedWithCode(1), Eq(text));
}

TEST_F(GeneralRegionDeathTest, NextBehindTheEnd) {
    EXPECT_EXIT(
        {
            RegionGeneralProbe::setNextBehindEnd(*m_region);
            RegionGeneralProbe::setBlockWorkingState(*m_region);
        },
        ExitedWithCode(1),
        Eq("Internal alloclib error: allocation went beyond the end of the working block\n"));
}

TEST_F(GeneralRegionDeathTest, StatesThatDoNotExist) {
    EXPECT_EXIT(useInState(*m_region, 3), ExitedWithCode(1),
                Eq("Internal alloclib error: SLOW_TRANSPARENT occurred in "
                   "SetBlockWorkingState\n"));
    for (const uint32_t state : {0U, 4U}) {
        EXPECT_EXIT(useInState(*m_region, state), ExitedWithCode(1),
                    Eq("Internal alloclib error: Unknown flags in SetBlockWorkingState\n"));
    }
    for (const uint32_t state : {7U, 8U, 9U, UINT32_MAX}) {
        EXPECT_EXIT(useInState(*m_region, state), ExitedWithCode(1),
                    Eq("Internal alloclib error: Invalid flags in SetBlockWorkingState\n"));
    }
    for (const uint32_t state : {0U, 4U, 7U, 8U}) {
        RegionGeneralProbe::setState(*m_region, state);
        EXPECT_EXIT(m_region->Alloc(8, 8, nullptr), ExitedWithCode(1),
                    Eq("Internal alloclib error: Unknown flags state in "
                       "RegionGeneral::AllocFull\n"));
        EXPECT_EXIT(m_region->Discard(m_region, 8, 8), ExitedWithCode(1),
                    Eq("Internal alloclib error: Unknown flags state in "
                       "RegionGeneral::DiscardFull\n"));
        RegionGeneralProbe::setState(*m_region, RegionGeneral::State_Fast);
    }
}

} // namespace
} // namespace alloclib::test
