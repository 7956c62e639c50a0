// How often each check site is passed: a tool for the developers of this program.
//
// Sites report only in sources that are compiled with TOMEX_CHECK_STATISTICS defined; the program
// itself neither does so nor starts the collecting.
#pragma once

#include <cstdint>

namespace platform {

// What a site costs: checks in inner loops are hot.
enum CheckTemperature : uint32_t {
    CheckTemperature_Cold = 0,
    CheckTemperature_Hot = 1,
};

// Begins to collect, from nothing, and says so.
void startCheckStatistics();

// Ends the collecting and prints what was collected, the most frequent site first, with a sum for
// each temperature and level. Does nothing if nothing was started.
void finishCheckStatistics();

// Counts one pass of a site. `file` must stay valid while statistics are collected; `level` is 0
// to 4. Does nothing while none are collected.
void recordCheck(const char* file, uint32_t line, uint32_t temperature, uint32_t level);

} // namespace platform
