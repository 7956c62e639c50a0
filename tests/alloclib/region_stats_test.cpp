// Recording, tracing and the report.
#include "alloclib/interface/region_stats.h"

#include "alloclib/interface/default_region.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_large_block.h"
#include "alloclib/src/region_malloc_free.h"
#include "alloclib/src/stats_lists.h"
#include "tests/alloclib/region_fixtures.h"

#include <cstdio>
#include <functional>

namespace alloclib::test {
namespace {

RegionStats named(int32_t traceLevel) {
    RegionStats stats;
    stats.id = 7;
    stats.name = "some region";
    stats.traceLevel = traceLevel;
    return stats;
}

std::string traced(int32_t level, const std::function<void(RegionStats&)>& event) {
    RegionStats stats = named(level);
    testing::internal::CaptureStderr();
    event(stats);
    return testing::internal::GetCapturedStderr();
}

TEST(RegionStats, CurrentSizeIsTheSumOfItsParts) {
    RegionStats stats = named(0);
    stats.recordAlloc(&stats, 100, 4, nullptr);
    stats.recordOverheadIncrease(30);
    stats.recordFragmentationIncrease(20);
    EXPECT_EQ(stats.currentSize(), 154U);
    stats.recordDiscard(&stats, 50, 2);
    stats.recordOverheadDecrease(10);
    stats.recordFragmentationDecrease(5);
    EXPECT_EQ(stats.currentSize(), 87U);
    stats.finalAdjust = 7;
    EXPECT_EQ(stats.currentSize(), 80U);
}

TEST(RegionStats, MaximumIsThePeak) {
    RegionStats stats = named(0);
    stats.recordAlloc(&stats, 100, 0, nullptr);
    stats.recordDiscard(&stats, 90, 0);
    EXPECT_EQ(stats.maxSize, 100U);
    stats.recordOverheadIncrease(89);
    EXPECT_EQ(stats.maxSize, 100U);
    stats.recordFragmentationIncrease(2);
    EXPECT_EQ(stats.maxSize, 101U);
    stats.recordAlloc(&stats, 1, 1, nullptr);
    EXPECT_EQ(stats.maxSize, 103U);
}

struct TraceRow {
    int32_t level; // from which on the line appears
    std::function<void(RegionStats&)> event;
    std::string line;
};

TEST(RegionStats, TraceLines) {
    char address = 0;
    char pointer[32];
    std::snprintf(pointer, sizeof pointer, "%p", static_cast<void*>(&address));
    const std::string at = pointer;
    const TraceRow rows[] = {
        {1, [](RegionStats& stats) { stats.recordCreation(55); },
         "(some region:7) New region (55) initial_size. Tracing is INACCURATE\n"},
        {1, [](RegionStats& stats) { stats.recordExtension(); },
         "(some region:7) region extended\n"},
        {2, [&](RegionStats& stats) { stats.recordAlloc(&address, 10, 6, "T"); },
         "(some region:7) Allocation at (" + at + ") (10) bytes (6) padding (T) type\n"},
        {2, [&](RegionStats& stats) { stats.recordAlloc(&address, 10, 6, nullptr); },
         "(some region:7) Allocation at (" + at + ") (10) bytes (6) padding (unknown) type\n"},
        {2, [&](RegionStats& stats) { stats.recordDiscard(&address, 10, 6); },
         "(some region:7) Discarded block at (" + at + ") (10) bytes (6) padding\n"},
        {3, [](RegionStats& stats) { stats.recordOverheadIncrease(11); },
         "(some region:7) overhead increased (11) bytes \n"},
        {3, [](RegionStats& stats) { stats.recordOverheadDecrease(12); },
         "(some region:7) overhead decreased (12) bytes \n"},
        {3, [](RegionStats& stats) { stats.recordFragmentationIncrease(13); },
         "(some region:7) fragmentation increased (13) bytes\n"},
        {3, [](RegionStats& stats) { stats.recordFragmentationDecrease(14); },
         "(some region:7) fragmentation decreased (14) bytes \n"},
        {1,
         [](RegionStats& stats) {
             stats.allocCount = 3;
             stats.allocBytes = 40;
             stats.maxSize = uint64_t{5} << 32;
             stats.recordDestruction();
         },
         "(some region:7) Destroyed region with final size (40) after (3) allocs. Maximum size "
         "was (21474836480). Tracing was INACCURATE\n"},
    };
    for (const TraceRow& row : rows) {
        for (int32_t level = 0; level <= 4; ++level) {
            EXPECT_EQ(traced(level, row.event), level >= row.level ? row.line : "");
        }
    }
}

TEST(RegionStats, TraceOfAnAccurateRegion) {
    EXPECT_EQ(traced(1,
                     [](RegionStats& stats) {
                         stats.accurate = 1;
                         stats.recordCreation(0);
                         stats.recordDestruction();
                     }),
              "(some region:7) New region (0) initial_size. Tracing is ACCURATE\n"
              "(some region:7) Destroyed region with final size (0) after (0) allocs. Maximum "
              "size was (0). Tracing was ACCURATE\n");
}

TEST(RegionStats, TraceOfAWholeRun) {
    setTraceLevel(1);
    testing::internal::CaptureStderr();
    InitAlloclib();
    RegionLargeBlock* const pages = RegionLargeBlock::Create("all memory");
    PushDefaultParent(pages);
    RegionGeneral* const region = RegionGeneral::Create(64, "tomex memory");
    region->Alloc(9000, 8, nullptr);
    region->Destroy(true);
    pages->Destroy(true);
    FinishAlloclib();
    const std::string trace = testing::internal::GetCapturedStderr();
    const size_t systemEnd = trace.find("(System region:0) Destroyed");
    ASSERT_NE(systemEnd, std::string::npos);
    EXPECT_EQ(trace.substr(0, systemEnd),
              "(System region:0) New region (0) initial_size. Tracing is ACCURATE\n"
              "(all memory:1) New region (0) initial_size. Tracing is ACCURATE\n"
              "(tomex memory:2) New region (64) initial_size. Tracing is INACCURATE\n"
              "(tomex memory:2) region extended\n"
              "(tomex memory:2) Destroyed region with final size (13112) after (2) allocs. "
              "Maximum size was (16384). Tracing was INACCURATE\n"
              "(all memory:1) Destroyed region with final size (0) after (2) allocs. Maximum "
              "size was (16384). Tracing was ACCURATE\n");
    EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 7);
}

class StatsListTest : public LibraryTest {
protected:
    static void liveAndDie(const char* name, uint64_t size) {
        RegionStats* const stats = createStats(name, 0, false);
        stats->recordAlloc(stats, size, 0, nullptr);
        closeStats(stats);
    }
    static std::string report(bool flagLive) {
        std::FILE* const stream = std::tmpfile();
        printStatsReport(stream, flagLive);
        std::rewind(stream);
        std::string text;
        for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) {
            text += static_cast<char>(c);
        }
        std::fclose(stream);
        return text;
    }
};

TEST_F(StatsListTest, EndedRegionsOfOneNameAreSummedUp) {
    liveAndDie("temporary", 100);
    liveAndDie("other", 1);
    liveAndDie("temporary", 300);
    liveAndDie("temporary", 200);
    const RegionStats* const other = libraryState().deadStats;
    ASSERT_NE(other, nullptr);
    EXPECT_STREQ(other->name, "other");
    const RegionStats* const sum = other->next;
    ASSERT_NE(sum, nullptr);
    EXPECT_EQ(sum->next, nullptr);
    EXPECT_EQ(sum->uses, 3U);
    EXPECT_EQ(sum->allocCount, 3U);
    EXPECT_EQ(sum->allocBytes, 600U);
    EXPECT_EQ(sum->maxSize, 300U);
    EXPECT_EQ(sum->destroyed, 1U);
    EXPECT_EQ(sum->id, 1U);
}

TEST_F(StatsListTest, MergeLevelZeroKeepsThemApart) {
    setStatsMergeLevel(0);
    liveAndDie("temporary", 100);
    liveAndDie("temporary", 300);
    const RegionStats* const last = libraryState().deadStats;
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->id, 2U);
    ASSERT_NE(last->next, nullptr);
    EXPECT_EQ(last->next->uses, 1U);
}

TEST_F(StatsListTest, NumbersOfDeadRegionsAreNotGivenAgain) {
    liveAndDie("a", 1);
    liveAndDie("a", 1);
    RegionStats* const stats = createStats("b", 0, false);
    EXPECT_EQ(stats->id, 3U);
    closeStats(stats);
}

TEST_F(StatsListTest, ReportListsTheDeadByNumberAndThenTheLive) {
    liveAndDie("first", 1000);
    RegionStats* const live = createStats("alive", 0, true);
    RegionStats* const pages = createStats("a name that is longer than its column", 0, false);
    liveAndDie("second", 50);
    liveAndDie("third", 6);
    liveAndDie("first", 24);
    live->recordAlloc(live, 75, 25, nullptr);
    live->recordFragmentationIncrease(10);
    const std::string heading =
        "\nNum,RegionName,          FinalSz, MaxSz,   NAllocs, NFrees,  Al,Frag,  Uses, Ac\n";
    const std::string dead =
        " 1, first,               1024,    1000,    2,       0,       0, 0,     2,    n\n"
        " 4, second,              50,      50,      1,       0,       0, 0,     1,    n\n"
        " 5, third,               6,       6,       1,       0,       0, 0,     1,    n\n";
    const std::string longRow =
        " 3, a name that is longer than its column,0,0,0,    0,       0, 0,     1,    n\n";
    const std::string liveRow =
        " 2, alive,               110,     110,     1,       0,       12,5,     1,    Y\n";
    const RegionStats& system = libraryState().systemRegion->statistics();
    const std::string text = report(false);
    const std::string error =
        "ERROR: Following region was not destroyed before program termination!\n";
    const size_t systemRow = text.find(" 0, System region,");
    ASSERT_NE(systemRow, std::string::npos);
    EXPECT_EQ(text.substr(0, systemRow), heading + dead + longRow + liveRow);
    EXPECT_NE(text.find(std::to_string(system.currentSize()) + ","), std::string::npos);
    const std::string flagged = report(true);
    EXPECT_EQ(flagged.substr(0, flagged.find(" 0, System region,")),
              heading + dead + error + longRow + error + liveRow);
    closeStats(pages);
    closeStats(live);
}

TEST_F(StatsListTest, RegionOfNumberOneIsNotFlagged) {
    RegionStats* const live = createStats("all memory", 0, true);
    EXPECT_EQ(report(true).find("ERROR"), std::string::npos);
    closeStats(live);
}

using StatsListDeathTest = StatsListTest;

TEST_F(StatsListDeathTest, BrokenLinks) {
    const char* const text = "Internal alloclib error: RegionStats list is inconsistent\n";
    RegionStats* const first = createStats("first", 0, false);
    RegionStats* const second = createStats("second", 0, false);
    EXPECT_EXIT(
        {
            first->previous = nullptr;
            closeStats(first);
        },
        testing::ExitedWithCode(1), testing::Eq(text));
    EXPECT_EXIT(
        {
            first->previous = first;
            closeStats(second);
        },
        testing::ExitedWithCode(1), testing::Eq(text));
    closeStats(first);
    closeStats(second);
}

} // namespace
} // namespace alloclib::test
