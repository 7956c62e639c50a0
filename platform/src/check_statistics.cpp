#include "platform/interface/check_statistics.h"

#include "alloclib/interface/region_general.h"
#include "platform/src/check_output.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace platform {

namespace {

constexpr uint32_t temperatureCount = 2;
constexpr uint32_t levelCount = 5;
constexpr const char* temperatureNames[temperatureCount] = {"cold", "hot"};
constexpr const char* levelNames[levelCount] = {"none", "low", "medium", "high", "extravagant"};

// One check site, a node of a binary tree that is ordered by all its fields but the count.
struct SiteRecord {
    const char* file;
    uint32_t line;
    uint32_t temperature;
    uint32_t level;
    uint64_t count = 0;
    SiteRecord* less = nullptr;
    SiteRecord* greater = nullptr;
    SiteRecord* next = nullptr; // in the order in which the sites were first passed
};

struct Statistics {
    alloclib::RegionGeneral* region = nullptr; // null while nothing is collected
    SiteRecord* root = nullptr;
    SiteRecord* first = nullptr;
    SiteRecord* last = nullptr;
    uint64_t siteCount = 0;
};

constinit Statistics g_statistics;

int compareNumbers(uint32_t left, uint32_t right) {
    return left < right ? -1 : static_cast<int>(left > right);
}

// Sites of one header are seen through several addresses of its name, so names compare as text.
int compareSites(const SiteRecord& left, const SiteRecord& right) {
    if (const int order = compareNumbers(left.line, right.line); order != 0) {
        return order;
    }
    if (const int order = compareNumbers(left.temperature, right.temperature); order != 0) {
        return order;
    }
    if (const int order = compareNumbers(left.level, right.level); order != 0) {
        return order;
    }
    return std::strcmp(left.file, right.file);
}

SiteRecord& findOrAdd(const SiteRecord& wanted) {
    SiteRecord** link = &g_statistics.root;
    while (*link != nullptr) {
        const int order = compareSites(wanted, **link);
        if (order == 0) {
            return **link;
        }
        link = order < 0 ? &(*link)->less : &(*link)->greater;
    }
    void* block = g_statistics.region->Alloc(sizeof(SiteRecord), alignof(SiteRecord), "check site");
    auto* record = new (block) SiteRecord(wanted);
    *link = record;
    if (g_statistics.last != nullptr) {
        g_statistics.last->next = record;
    } else {
        g_statistics.first = record;
    }
    g_statistics.last = record;
    ++g_statistics.siteCount;
    return *record;
}

// All records, the most frequent first; equally frequent ones stay in the order of their start.
SiteRecord** sortedRecords() {
    auto** records = static_cast<SiteRecord**>(g_statistics.region->Alloc(
        g_statistics.siteCount * sizeof(void*), alignof(void*), "check sites"));
    uint64_t at = 0;
    for (SiteRecord* record = g_statistics.first; record != nullptr; record = record->next) {
        records[at++] = record;
    }
    std::stable_sort(records, records + at, [](const SiteRecord* left, const SiteRecord* right) {
        return left->count > right->count;
    });
    return records;
}

void printTotals() {
    uint64_t totals[temperatureCount][levelCount] = {};
    for (const SiteRecord* record = g_statistics.first; record != nullptr; record = record->next) {
        totals[record->temperature][record->level] += record->count;
    }
    printCheckText("\nTotals:\n");
    for (uint32_t temperature = 0; temperature < temperatureCount; ++temperature) {
        for (uint32_t level = 0; level < levelCount; ++level) {
            printCheckText("%s %s: %llu\n", temperatureNames[temperature], levelNames[level],
                           static_cast<unsigned long long>(totals[temperature][level]));
        }
    }
}

} // namespace

void startCheckStatistics() {
    if (g_statistics.region != nullptr) {
        g_statistics.region->Destroy(true);
    }
    g_statistics = Statistics{};
    g_statistics.region = alloclib::RegionGeneral::Create(0, "Checking stats");
    printCheckText("Collecting checking statistics\n");
}

void finishCheckStatistics() {
    if (g_statistics.region == nullptr) {
        return;
    }
    printCheckText("Finished checking statistics\n");
    if (g_statistics.siteCount != 0) {
        SiteRecord** records = sortedRecords();
        for (uint64_t i = 0; i < g_statistics.siteCount; ++i) {
            const SiteRecord& record = *records[i];
            printCheckText("%s %d (%s %s): %llu\n", record.file, static_cast<int>(record.line),
                           temperatureNames[record.temperature], levelNames[record.level],
                           static_cast<unsigned long long>(record.count));
        }
    }
    printTotals();
    g_statistics.region->Destroy(true);
    g_statistics = Statistics{};
}

void recordCheck(const char* file, uint32_t line, uint32_t temperature, uint32_t level) {
    if (g_statistics.region == nullptr || temperature >= temperatureCount || level >= levelCount) {
        return;
    }
    const SiteRecord wanted{.file = file, .line = line, .temperature = temperature, .level = level};
    ++findOrAdd(wanted).count;
}

} // namespace platform
