// Lists, merging and the report of region statistics.
#include "alloclib/src/stats_lists.h"

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region_stats.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_malloc_free.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace alloclib {

namespace {

void link(RegionStats*& head, RegionStats* stats) {
    stats->previous = nullptr;
    stats->next = head;
    if (head != nullptr) {
        head->previous = stats;
    }
    head = stats;
}

void unlink(RegionStats*& head, RegionStats* stats) {
    const bool frontHolds =
        stats->previous == nullptr ? head == stats : stats->previous->next == stats;
    const bool backHolds = stats->next == nullptr || stats->next->previous == stats;
    if (!frontHolds || !backHolds) {
        failInternally("RegionStats list is inconsistent");
    }
    (stats->previous == nullptr ? head : stats->previous->next) = stats->next;
    if (stats->next != nullptr) {
        stats->next->previous = stats->previous;
    }
    stats->next = nullptr;
    stats->previous = nullptr;
}

void discardStats(RegionStats* stats) {
    libraryState().systemRegion->Discard(stats, sizeof(RegionStats), alignof(RegionStats));
}

RegionStats* findDead(const char* name) {
    RegionStats* stats = libraryState().deadStats;
    while (stats != nullptr && std::strcmp(stats->name, name) != 0) {
        stats = stats->next;
    }
    return stats;
}

void mergeInto(RegionStats& sum, const RegionStats& part) {
    sum.uses += part.uses;
    sum.allocCount += part.allocCount;
    sum.allocBytes += part.allocBytes;
    sum.paddingBytes += part.paddingBytes;
    sum.discardCount += part.discardCount;
    sum.discardBytes += part.discardBytes;
    sum.overheadBytes += part.overheadBytes;
    sum.finalAdjust += part.finalAdjust;
    sum.fragmentationBytes += part.fragmentationBytes;
    sum.maxSize = std::max(sum.maxSize, part.maxSize);
}

// Sorts a list by id, neighbour by neighbour: it is short, and nearly sorted after one report.
void bubbleSortById(RegionStats*& head) {
    bool swapped = true;
    while (swapped) {
        swapped = false;
        for (RegionStats* stats = head; stats != nullptr && stats->next != nullptr;) {
            RegionStats* const following = stats->next;
            if (stats->id <= following->id) {
                stats = following;
                continue;
            }
            RegionStats* const before = stats->previous;
            unlink(head, stats);
            stats->previous = following;
            stats->next = following->next;
            if (following->next != nullptr) {
                following->next->previous = stats;
            }
            following->next = stats;
            following->previous = before;
            swapped = true;
        }
    }
}

// The first columns of the report's fields, as its heading has them.
enum Column : size_t {
    Column_FinalSize = 25,
    Column_MaxSize = 34,
    Column_AllocCount = 43,
    Column_DiscardCount = 52,
    Column_Padding = 61,
    Column_Fragmentation = 64,
    Column_Uses = 71,
    Column_Accurate = 77,
};

void addNumber(std::string& row, Column column, uint64_t number) {
    row.resize(std::max<size_t>(row.size(), column), ' ');
    row += std::to_string(number) + ',';
}

uint64_t percentOf(uint64_t part, uint64_t whole) {
    return whole == 0 ? 0 : part / (whole / 100 + 1);
}

void printRow(std::FILE* stream, const RegionStats& stats) {
    char front[16];
    std::snprintf(front, sizeof front, "%2d, ", static_cast<int>(stats.id));
    std::string row = front;
    row += stats.name;
    row += ',';
    const uint64_t taken = stats.allocBytes + stats.paddingBytes;
    addNumber(row, Column_FinalSize, stats.currentSize());
    addNumber(row, Column_MaxSize, stats.maxSize);
    addNumber(row, Column_AllocCount, stats.allocCount);
    addNumber(row, Column_DiscardCount, stats.discardCount);
    addNumber(row, Column_Padding, percentOf(stats.paddingBytes, taken));
    addNumber(row, Column_Fragmentation, percentOf(stats.fragmentationBytes, taken));
    addNumber(row, Column_Uses, stats.uses);
    row.resize(std::max<size_t>(row.size(), Column_Accurate), ' ');
    row += stats.accurate != 0 ? "Y\n" : "n\n";
    std::fputs(row.c_str(), stream);
}

} // namespace

RegionStats* createStats(const char* name, uint64_t initialSize, bool accurate, void* memory) {
    LibraryState& state = libraryState();
    if (memory == nullptr) {
        memory =
            state.systemRegion->Alloc(sizeof(RegionStats), alignof(RegionStats), "RegionStats");
    }
    auto* const stats = new (memory) RegionStats;
    stats->id = state.nextStatsId++;
    stats->traceLevel = state.traceLevel;
    stats->accurate = accurate ? 1 : 0;
    stats->name = name;
    link(state.liveStats, stats);
    stats->recordCreation(initialSize);
    return stats;
}

void closeStats(RegionStats* stats) {
    LibraryState& state = libraryState();
    stats->recordDestruction();
    unlink(state.liveStats, stats);
    stats->destroyed = 1;
    RegionStats* const earlier = state.statsMergeLevel >= 1 ? findDead(stats->name) : nullptr;
    if (earlier == nullptr || stats->id == 0) {
        link(state.deadStats, stats);
        return;
    }
    mergeInto(*earlier, *stats);
    discardStats(stats);
}

void takeOffDeadStats(RegionStats* stats) {
    unlink(libraryState().deadStats, stats);
}

void freeAllStats() {
    LibraryState& state = libraryState();
    for (const RegionStats* stats = state.liveStats; stats != nullptr; stats = stats->next) {
        if (stats->id != 0) {
            failInternally("FreeAllStats called with live region");
        }
    }
    while (state.deadStats != nullptr) {
        RegionStats* const stats = state.deadStats;
        unlink(state.deadStats, stats);
        discardStats(stats);
    }
}

void printStatsReport(std::FILE* stream, bool flagLive) {
    LibraryState& state = libraryState();
    std::fputs(
        "\nNum,RegionName,          FinalSz, MaxSz,   NAllocs, NFrees,  Al,Frag,  Uses, Ac\n",
        stream);
    bubbleSortById(state.deadStats);
    for (const RegionStats* stats = state.deadStats; stats != nullptr; stats = stats->next) {
        printRow(stream, *stats);
    }
    for (const RegionStats* stats = state.liveStats; stats != nullptr; stats = stats->next) {
        if (flagLive && stats->id > 1) {
            std::fputs("ERROR: Following region was not destroyed before program termination!\n",
                       stream);
        }
        printRow(stream, *stats);
    }
}

} // namespace alloclib
