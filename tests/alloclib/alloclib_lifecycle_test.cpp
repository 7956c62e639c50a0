// Start and end of the library, default parents, and how misuse ends the process.
#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/default_region.h"
#include "alloclib/interface/poison.h"
#include "alloclib/interface/region_stats.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_large_block.h"
#include "alloclib/src/region_malloc_free.h"
#include "tests/alloclib/region_fixtures.h"

#include <cstring>
#include <sstream>

#ifdef ALLOCLIB_POISONS
// A heap that is asked for too much gives null here as it does without the sanitizer.
extern "C" const char* __asan_default_options();
const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
#endif

namespace alloclib::test {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

// Memory that a test loses on purpose stays reachable for the leak checker through this.
void* volatile reachable = nullptr;

TEST(AlloclibLifecycle, InitMakesTheSystemRegionTheDefaultParent) {
    InitAlloclib();
    const LibraryState& state = libraryState();
    EXPECT_EQ(state.defaultParent, state.systemRegion);
    EXPECT_EQ(state.systemRegion->statistics().id, 0U);
    EXPECT_STREQ(state.systemRegion->statistics().name, "System region");
    FinishAlloclib();
    EXPECT_EQ(state.defaultParent, nullptr);
    EXPECT_EQ(state.systemRegion, nullptr);
    EXPECT_EQ(state.liveStats, nullptr);
    EXPECT_EQ(state.deadStats, nullptr);
}

TEST(AlloclibLifecycle, InitForgetsTheDebugFactory) {
    FactoryRegion factory(nullptr);
    setDebugMode(DebugMode_None, &factory);
    InitAlloclib();
    EXPECT_EQ(libraryState().debugFactory, nullptr);
    FinishAlloclib();
}

TEST(AlloclibLifecycle, CanRunAgainAfterItsEnd) {
    for (int run = 0; run < 3; ++run) {
        startAllocators();
        EXPECT_STREQ(copyString(defaultRegion(), "again"), "again");
        finishAllocators();
    }
}

TEST(AlloclibLifecycle, StartNumbersTheChainFromTheBottom) {
    startAllocators();
    const LibraryState& state = libraryState();
    const RegionStats* const top = defaultRegion().statistics();
    EXPECT_EQ(top->id, 2U);
    EXPECT_STREQ(top->name, "tomex memory");
    EXPECT_EQ(defaultRegion().workingState(), RegionGeneral::State_Fast);
    ASSERT_NE(top->next, nullptr);
    EXPECT_EQ(top->next->id, 1U);
    EXPECT_STREQ(top->next->name, "all memory");
    ASSERT_NE(top->next->next, nullptr);
    EXPECT_EQ(top->next->next->id, 0U);
    EXPECT_EQ(state.nextStatsId, 3U);
    EXPECT_NE(state.defaultParent, state.systemRegion);
    finishAllocators();
}

TEST(AlloclibLifecycle, FinishGoesBackToTheStartValues) {
    setTraceLevel(0);
    InitAlloclib();
    setTraceLevel(5);
    setStatsMergeLevel(7);
    FinishAlloclib();
    EXPECT_EQ(libraryState().traceLevel, 0);
    EXPECT_EQ(libraryState().statsMergeLevel, 1U);
    EXPECT_EQ(libraryState().nextStatsId, 0U);
}

TEST(AlloclibLifecycle, FinishPopsWhatIsLeftOnTheStack) {
    InitAlloclib();
    LoggingRegion first;
    LoggingRegion second;
    PushDefaultParent(&first);
    PushDefaultParent(&second);
    EXPECT_EQ(libraryState().defaultParent, &second);
    FinishAlloclib();
    EXPECT_EQ(libraryState().parentStack, nullptr);
}

TEST(AlloclibLifecycle, PopGoesBackOneParent) {
    InitAlloclib();
    LoggingRegion first;
    LoggingRegion second;
    PushDefaultParent(&first);
    PushDefaultParent(&second);
    PopDefaultParent();
    EXPECT_EQ(libraryState().defaultParent, &first);
    PopDefaultParent();
    EXPECT_EQ(libraryState().defaultParent, libraryState().systemRegion);
    FinishAlloclib();
}

TEST(AlloclibLifecycle, NewRegionsTakeFromTheDefaultParent) {
    InitAlloclib();
    LoggingRegion parent;
    PushDefaultParent(&parent);
    RegionGeneral* const region = RegionGeneral::Create(0, "on top");
    EXPECT_EQ(parent.allocs.size(), 1U);
    region->Destroy(true);
    FinishAlloclib();
}

TEST(AlloclibLifecycle, EveryRegionHasAGranuleOf4096) {
    InitAlloclib();
    RegionLargeBlock* const pages = RegionLargeBlock::Create("pages");
    PushDefaultParent(pages);
    RegionGeneral* const general = RegionGeneral::Create(0, "general");
    for (Region* const region : {static_cast<Region*>(libraryState().systemRegion),
                                 static_cast<Region*>(pages), static_cast<Region*>(general)}) {
        EXPECT_EQ(region->Granule(), 4096U);
        region->PrepareStats();
    }
    general->Destroy(true);
    pages->Destroy(true);
    FinishAlloclib();
}

// The names in the lines about destroyed regions, in their order.
std::vector<std::string> namesOfDestroyed(const std::string& trace) {
    std::vector<std::string> names;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Destroyed region") != std::string::npos) {
            names.push_back(line.substr(1, line.find(':') - 1));
        }
    }
    return names;
}

TEST(AlloclibLifecycle, RegionsLeftBehindEndBeforeTheChainLatestFirst) {
    setTraceLevel(1);
    testing::internal::CaptureStderr();
    startAllocators();
    RegionGeneral* const first = RegionGeneral::Create(0, "first");
    RegionGeneral* const second = RegionGeneral::Create(0, "second");
    RegionGeneral* const third = RegionGeneral::Create(0, "third");
    RegionGeneral* const fourth = RegionGeneral::Create(0, "fourth");
    for (Region* const region : {first, second, third, fourth}) {
        std::memset(region->Alloc(20000, 8, nullptr), 1, 20000);
        std::memset(region->Alloc(200000, 8, nullptr), 1, 200000);
    }
    second->Destroy(true);
    fourth->Destroy(true);
    RegionGeneral::Create(0, "fifth");
    finishAllocators();
    EXPECT_EQ(namesOfDestroyed(testing::internal::GetCapturedStderr()),
              (std::vector<std::string>{"second", "fourth", "fifth", "third", "first",
                                        "tomex memory", "all memory", "System region"}));
    // None of them is remembered by the next run.
    setTraceLevel(1);
    testing::internal::CaptureStderr();
    startAllocators();
    RegionGeneral::Create(0, "sixth");
    finishAllocators();
    EXPECT_EQ(namesOfDestroyed(testing::internal::GetCapturedStderr()),
              (std::vector<std::string>{"sixth", "tomex memory", "all memory", "System region"}));
}

TEST(AlloclibLifecycle, CopyStringEndsInANul) {
    startAllocators();
    char* const copy = copyString(defaultRegion(), std::string_view("abcdef", 3));
    EXPECT_STREQ(copy, "abc");
    EXPECT_STREQ(copyString(defaultRegion(), {}), "");
    const std::string longText(30000, 'x');
    EXPECT_EQ(copyString(defaultRegion(), longText), longText);
    finishAllocators();
}

// Every misuse, with the whole of what it writes.

TEST(AlloclibDeathTest, SecondInitIsAnInternalError) {
    EXPECT_EXIT(
        {
            InitAlloclib();
            InitAlloclib();
        },
        ExitedWithCode(1),
        Eq("Internal alloclib error: Alloclib cannot be initialised more than once\n"));
}

TEST(AlloclibDeathTest, FinishWithoutInit) {
    EXPECT_EXIT(FinishAlloclib(), ExitedWithCode(1),
                Eq("Internal alloclib error: Alloclib not initialised\n"));
}

TEST(AlloclibDeathTest, UseWithoutInit) {
    const char* const text = "Internal alloclib error: Alloclib not initialised\n";
    EXPECT_EXIT(RegionGeneral::Create(0, "early"), ExitedWithCode(1), Eq(text));
    EXPECT_EXIT(RegionLargeBlock::Create("early"), ExitedWithCode(1), Eq(text));
    EXPECT_EXIT(PushDefaultParent(nullptr), ExitedWithCode(1), Eq(text));
}

TEST(AlloclibDeathTest, PopWithNothingPushedIsAnInternalError) {
    EXPECT_EXIT(
        {
            InitAlloclib();
            PopDefaultParent();
        },
        ExitedWithCode(1), Eq("Internal alloclib error: No Default Parent to pop from stack\n"));
}

TEST(AlloclibDeathTest, FinishWithALiveRegion) {
    EXPECT_EXIT(
        {
            InitAlloclib();
            reachable = RegionGeneral::Create(0, "left over");
            FinishAlloclib();
        },
        ExitedWithCode(1), Eq("Internal alloclib error: FreeAllStats called with live region\n"));
}

TEST(AlloclibDeathTest, FinishWithMemoryThatDidNotComeBack) {
    EXPECT_EXIT(
        {
            InitAlloclib();
            RegionGeneral* const region = RegionGeneral::Create(0, "kept");
            reachable = region->Alloc(8, 8, nullptr);
            region->Destroy(false);
            FinishAlloclib();
        },
        ExitedWithCode(1),
        Eq("Internal alloclib error: RegionMallocFree cannot free memory on Destroy()\n"));
}

TEST(AlloclibDeathTest, SystemAllocationOfNothing) {
    EXPECT_EXIT(
        {
            InitAlloclib();
            libraryState().systemRegion->Alloc(0, 8, nullptr);
        },
        ExitedWithCode(1),
        Eq("Internal alloclib error: Cannot allocate 0 bytes of memory from the system\n"));
}

TEST(AlloclibDeathTest, OutOfMemoryNamesTheSystemRegionsSize) {
    InitAlloclib();
    void* const block = libraryState().systemRegion->Alloc(1000, 8, nullptr);
    const auto exhaust = [](uint64_t size) {
        libraryState().systemRegion->Alloc(size, 8, nullptr);
    };
    // What does not fit the 32 bits of the report is shown as the greatest number.
    // (The sanitizer has a line of its own before it.)
    EXPECT_EXIT(exhaust(uint64_t{1} << 62), ExitedWithCode(1),
                testing::ContainsRegex("Out of memory\\. Allocation of 4294967295 bytes failed, "
                                       "system size is 1000 bytes\n$"));
    libraryState().systemRegion->Discard(block, 1000, 8);
    EXPECT_EXIT(endOutOfMemory(77), ExitedWithCode(1),
                Eq("Out of memory. Allocation of 77 bytes failed, system size is 0 bytes\n"));
    FinishAlloclib();
    EXPECT_EXIT(endOutOfMemory(77), ExitedWithCode(1),
                Eq("Out of memory. Allocation of 77 bytes failed, system size is 0 bytes\n"));
}

TEST(SystemRegion, GivesMemoryAndRecordsIt) {
    InitAlloclib();
    RegionMallocFree& system = *libraryState().systemRegion;
    void* const block = system.Alloc(123, 1024, "bytes");
    std::memset(block, 7, 123);
    EXPECT_EQ(system.statistics().allocCount, 1U);
    EXPECT_EQ(system.statistics().currentSize(), 123U);
    system.Discard(block, 123, 1024);
    EXPECT_EQ(system.statistics().discardCount, 1U);
    EXPECT_EQ(system.statistics().currentSize(), 0U);
    EXPECT_EQ(system.statistics().maxSize, 123U);
    FinishAlloclib();
}

} // namespace
} // namespace alloclib::test
