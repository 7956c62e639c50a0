// Debugging modes: regions that record every block, and regions that only pass on.
#include "alloclib/interface/region_general.h"

#include "alloclib/interface/region_stats.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_large_block.h"
#include "alloclib/src/region_malloc_free.h"
#include "tests/alloclib/region_fixtures.h"

namespace alloclib::test {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

class AccurateRegionTest : public GeneralRegionTest {
protected:
    void SetUp() override {
        setDebugMode(DebugMode_Accurate, nullptr);
        GeneralRegionTest::SetUp();
    }
};

TEST_F(AccurateRegionTest, FastPathIsClosed) {
    EXPECT_EQ(m_region->workingState(), 5U);
    EXPECT_EQ(m_region->fastPathRoom(), 0U);
    EXPECT_EQ(m_region->statistics()->accurate, 1U);
}

TEST_F(AccurateRegionTest, EveryBlockIsRecorded) {
    const RegionStats& stats = *m_region->statistics();
    const uint64_t before = stats.currentSize();
    void* const first = allocate(*m_region, 13, 1);
    EXPECT_EQ(stats.allocCount, 1U);
    EXPECT_EQ(stats.allocBytes, 13U);
    EXPECT_EQ(stats.paddingBytes, 3U);
    void* const second = m_region->Alloc(200, 8, "second");
    EXPECT_EQ(stats.allocCount, 2U);
    EXPECT_EQ(stats.currentSize(), before + 216);
    m_region->Discard(second, 200, 8);
    EXPECT_EQ(stats.discardCount, 1U);
    EXPECT_EQ(stats.currentSize(), before + 16);
    m_region->Discard(first, 13, 8); // makes the lists first: 128 bytes
    EXPECT_EQ(stats.discardCount, 2U);
    EXPECT_EQ(stats.currentSize(), before + 128);
    EXPECT_EQ(stats.maxSize, before + 216);
}

TEST_F(AccurateRegionTest, LargeBlocksAreRecordedAndTakenOff) {
    const RegionStats& stats = *m_region->statistics();
    const uint64_t before = stats.currentSize();
    void* const block = m_region->Alloc(10240, 8, nullptr);
    EXPECT_EQ(stats.allocBytes, 10240U);
    EXPECT_EQ(stats.paddingBytes, 2048U);
    m_region->Discard(block, 10240, 8);
    EXPECT_EQ(stats.currentSize(), before);
}

TEST_F(AccurateRegionTest, AbandonedRestIsFragmentation) {
    const RegionStats& stats = *m_region->statistics();
    fillWorkingBlock(64);
    const uint64_t overhead = stats.overheadBytes;
    m_region->Alloc(64, 8, nullptr);
    EXPECT_EQ(stats.fragmentationBytes, 64U);
    EXPECT_EQ(stats.overheadBytes, overhead + 16);
}

TEST_F(AccurateRegionTest, TurnsSlowAndBackKeepingAccurate) {
    discardFresh(120, 86);
    m_region->Alloc(200, 8, nullptr);
    EXPECT_EQ(m_region->workingState(), 6U);
    EXPECT_EQ(m_region->fastPathRoom(), 0U);
    const RegionStats& stats = *m_region->statistics();
    const uint32_t before = stats.allocCount;
    allocate(*m_region, 120, 8);
    EXPECT_EQ(stats.allocCount, before + 1);
    EXPECT_EQ(m_region->workingState(), 5U);
    EXPECT_EQ(m_region->fastPathRoom(), 0U);
}

TEST(GeneralRegionModes, FastRegionRecordsOnlyBlocksFromItsParent) {
    InitAlloclib();
    LoggingRegion parent;
    PushDefaultParent(&parent);
    RegionGeneral* const region = RegionGeneral::Create(0, "fast");
    const RegionStats& stats = *region->statistics();
    EXPECT_EQ(stats.accurate, 0U);
    EXPECT_EQ(stats.allocCount, 1U);
    EXPECT_EQ(stats.currentSize(), 4096U);
    region->Alloc(100, 8, nullptr);
    EXPECT_EQ(stats.allocCount, 1U);
    void* const large = region->Alloc(20000, 8, nullptr);
    EXPECT_EQ(stats.allocCount, 2U);
    EXPECT_EQ(stats.currentSize(), 4096U + 20480);
    region->Discard(large, 20000, 8);
    EXPECT_EQ(stats.currentSize(), 4096U);
    EXPECT_EQ(stats.discardCount, 1U);
    region->Alloc(4001, 8, nullptr);
    EXPECT_EQ(stats.currentSize(), 4096U + 8192);
    region->Destroy(true);
    FinishAlloclib();
}

class TransparentRegionTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        setDebugMode(DebugMode_Transparent, &m_factory);
    }

    LoggingRegion m_parent;
    FactoryRegion m_factory{&m_parent};
};

TEST_F(TransparentRegionTest, FactoryMakesTheParentFromSizeAndName) {
    RegionGeneral* const region = RegionGeneral::Create(777, "see-through");
    ASSERT_EQ(m_factory.asked.size(), 1U);
    EXPECT_EQ(m_factory.asked[0].initialSize, 777U);
    EXPECT_EQ(m_factory.asked[0].name, "see-through");
    EXPECT_EQ(region->workingState(), RegionGeneral::State_SlowTransparent);
    EXPECT_EQ(region->statistics(), nullptr);
    ASSERT_EQ(m_parent.allocs.size(), 1U);
    EXPECT_EQ(m_parent.allocs[0].block, region);
    EXPECT_EQ(m_parent.allocs[0].size, sizeof(RegionGeneral));
    region->Destroy(true);
}

TEST_F(TransparentRegionTest, EverythingGoesToTheParent) {
    RegionGeneral* const region = RegionGeneral::Create(0, "see-through");
    EXPECT_EQ(RegionGeneralProbe::next(*region), nullptr);
    EXPECT_EQ(RegionGeneralProbe::limit(*region), nullptr);
    void* const small = allocate(*region, 24, 8);
    EXPECT_EQ(m_parent.allocs.back(), (LoggingRegion::Request{small, 24, 8, "null"}));
    void* const large = region->Alloc(50000, 64, "large");
    EXPECT_EQ(m_parent.allocs.back(), (LoggingRegion::Request{large, 50000, 64, "large"}));
    region->Discard(large, 50000, 64);
    EXPECT_EQ(m_parent.discards.back(), (LoggingRegion::Request{large, 50000, 64, ""}));
    region->Discard(small, 24, 8);
    EXPECT_EQ(m_parent.discards.back(), (LoggingRegion::Request{small, 24, 8, ""}));
    region->Destroy(true);
    EXPECT_EQ(m_parent.liveBlocks(), 0U);
}

TEST_F(TransparentRegionTest, DestroyEndsTheOwnedParentToo) {
    RegionGeneral::Create(0, "one")->Destroy(true);
    EXPECT_EQ(m_parent.destroyed, "freed;");
    RegionGeneral::Create(0, "two")->Destroy(false);
    EXPECT_EQ(m_parent.destroyed, "freed;kept;");
    EXPECT_EQ(m_parent.liveBlocks(), 0U);
}

TEST_F(TransparentRegionTest, PagesGoToTheFactorysRegion) {
    RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
    ASSERT_EQ(m_factory.asked.size(), 1U);
    EXPECT_EQ(m_factory.asked[0].name, "pages");
    EXPECT_EQ(region->statistics(), nullptr);
    void* const block = region->Alloc(4096, 8, "page");
    EXPECT_EQ(m_parent.allocs.back(), (LoggingRegion::Request{block, 4096, 8, "page"}));
    region->Discard(block, 4096, 8);
    EXPECT_EQ(m_parent.discards.back(), (LoggingRegion::Request{block, 4096, 8, ""}));
    region->Destroy(true);
    EXPECT_EQ(m_parent.destroyed, "freed;");
}

TEST_F(TransparentRegionTest, PagesGoToTheSystemIfTheFactoryMakesNone) {
    FactoryRegion empty(nullptr);
    for (FactoryRegion* const factory : {&empty, static_cast<FactoryRegion*>(nullptr)}) {
        setDebugMode(DebugMode_Transparent, factory);
        RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
        const RegionStats& system = libraryState().systemRegion->statistics();
        const uint32_t before = system.allocCount;
        void* const block = region->Alloc(4096, 8, nullptr);
        EXPECT_EQ(system.allocCount, before + 1);
        region->Discard(block, 4096, 8);
        // The system region is not the region's to end.
        region->Destroy(true);
        EXPECT_EQ(system.destroyed, 0U);
    }
}

TEST_F(TransparentRegionTest, SizesOfPagesAreStillChecked) {
    RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
    EXPECT_EXIT(region->Alloc(100, 8, nullptr), ExitedWithCode(1),
                Eq("Internal alloclib error: Invalid allocation using RegionLargeBlock\n"));
    region->Destroy(true);
}

using RegionModesDeathTest = LibraryTest;

TEST_F(RegionModesDeathTest, UnsupportedModes) {
    const char* const general =
        "Internal alloclib error: Unsupported debug mode in RegionGeneral::Create\n";
    const char* const pages =
        "Internal alloclib error: Unsupported debug mode in RegionFastOld::Create\n";
    for (const uint32_t mode : {4U, 5U, UINT32_MAX}) {
        setDebugMode(mode, nullptr);
        EXPECT_EXIT(RegionGeneral::Create(0, "x"), ExitedWithCode(1), Eq(general));
        EXPECT_EXIT(RegionLargeBlock::Create("x"), ExitedWithCode(1), Eq(pages));
    }
    // A transparent general region needs something to see through to.
    setDebugMode(DebugMode_Transparent, nullptr);
    EXPECT_EXIT(RegionGeneral::Create(0, "x"), ExitedWithCode(1), Eq(general));
}

TEST_F(RegionModesDeathTest, ModesZeroAndOneAreNormal) {
    for (const uint32_t mode : {0U, 1U}) {
        setDebugMode(mode, nullptr);
        RegionLargeBlock* const pages = RegionLargeBlock::Create("pages");
        RegionGeneral* const region = RegionGeneral::Create(0, "normal");
        EXPECT_EQ(region->workingState(), RegionGeneral::State_Fast);
        region->Destroy(true);
        pages->Destroy(true);
    }
}

} // namespace
} // namespace alloclib::test
