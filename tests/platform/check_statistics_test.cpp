#define TOMEX_CHECK_STATISTICS
#include "platform/interface/check_statistics.h"

#include "alloclib/interface/default_region.h"
#include "platform/interface/internal_check.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace {

using platform::CheckTemperature_Cold;
using platform::CheckTemperature_Hot;
using platform::recordCheck;

std::string g_statistics;

void printToText(const char* format, va_list arguments) {
    char text[1024];
    std::vsnprintf(text, sizeof(text), format, arguments);
    g_statistics += text;
}

constexpr platform::CheckOutput textOutput{[] {}, printToText, [] {}};

class CheckStatisticsTest : public testing::Test {
protected:
    CheckStatisticsTest() {
        alloclib::startAllocators();
        g_statistics.clear();
        platform::setCheckOutput(&textOutput);
    }
    ~CheckStatisticsTest() override {
        platform::setCheckOutput(nullptr);
        alloclib::finishAllocators();
    }
};

std::string totals(int coldLow, int coldHigh, int hotLow) {
    const std::string low = std::to_string(coldLow);
    return "\nTotals:\ncold none: 0\ncold low: " + low +
           "\ncold medium: 0\ncold high: " + std::to_string(coldHigh) +
           "\ncold extravagant: 0\nhot none: 0\nhot low: " + std::to_string(hotLow) +
           "\nhot medium: 0\nhot high: 0\nhot extravagant: 0\n";
}

TEST_F(CheckStatisticsTest, ListsTheMostFrequentSitesFirstAndSumsThem) {
    platform::startCheckStatistics();
    EXPECT_EQ(g_statistics, "Collecting checking statistics\n");
    g_statistics.clear();
    recordCheck("a.cpp", 10, CheckTemperature_Cold, 1);
    for (int i = 0; i < 3; ++i) {
        recordCheck("a.cpp", 5, CheckTemperature_Hot, 1);
    }
    for (int i = 0; i < 2; ++i) {
        recordCheck("b.cpp", 10, CheckTemperature_Cold, 3);
        recordCheck("b.cpp", 20, CheckTemperature_Cold, 1);
    }
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics, "Finished checking statistics\n"
                            "a.cpp 5 (hot low): 3\n"
                            "b.cpp 10 (cold high): 2\n"
                            "b.cpp 20 (cold low): 2\n"
                            "a.cpp 10 (cold low): 1\n" +
                                totals(3, 2, 3));
}

TEST_F(CheckStatisticsTest, TellsSitesApartByEachOfTheirParts) {
    platform::startCheckStatistics();
    g_statistics.clear();
    recordCheck("a.cpp", 1, CheckTemperature_Cold, 1);
    recordCheck("b.cpp", 1, CheckTemperature_Cold, 1);
    recordCheck("a.cpp", 2, CheckTemperature_Cold, 1);
    recordCheck("a.cpp", 1, CheckTemperature_Hot, 1);
    recordCheck("a.cpp", 1, CheckTemperature_Cold, 3);
    const char sameName[] = "a.cpp";
    recordCheck(sameName, 1, CheckTemperature_Cold, 1);
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics, "Finished checking statistics\n"
                            "a.cpp 1 (cold low): 2\n"
                            "b.cpp 1 (cold low): 1\n"
                            "a.cpp 2 (cold low): 1\n"
                            "a.cpp 1 (hot low): 1\n"
                            "a.cpp 1 (cold high): 1\n" +
                                totals(4, 1, 1));
}

TEST_F(CheckStatisticsTest, CountsThePassesOfCheckSites) {
    platform::startCheckStatistics();
    g_statistics.clear();
    for (int i = 0; i < 4; ++i) {
        TOMEX_CHECK(i < 4);
    }
    platform::finishCheckStatistics();
    EXPECT_NE(g_statistics.find("check_statistics_test.cpp "), std::string::npos);
    EXPECT_NE(g_statistics.find(" (cold low): 4\n"), std::string::npos);
}

TEST_F(CheckStatisticsTest, PrintsEmptySumsWithoutSites) {
    platform::startCheckStatistics();
    g_statistics.clear();
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics, "Finished checking statistics\n" + totals(0, 0, 0));
}

TEST_F(CheckStatisticsTest, BeginsFromNothingEachTime) {
    platform::startCheckStatistics();
    recordCheck("a.cpp", 1, CheckTemperature_Cold, 1);
    platform::startCheckStatistics();
    g_statistics.clear();
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics, "Finished checking statistics\n" + totals(0, 0, 0));
}

TEST_F(CheckStatisticsTest, CollectsNothingUnlessStarted) {
    recordCheck("a.cpp", 1, CheckTemperature_Cold, 1);
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics, "");
}

TEST_F(CheckStatisticsTest, IgnoresLevelsAndTemperaturesThatDoNotExist) {
    platform::startCheckStatistics();
    g_statistics.clear();
    recordCheck("a.cpp", 1, 2, 1);
    recordCheck("a.cpp", 1, CheckTemperature_Cold, 5);
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics, "Finished checking statistics\n" + totals(0, 0, 0));
}

TEST_F(CheckStatisticsTest, HoldsManySites) {
    platform::startCheckStatistics();
    g_statistics.clear();
    for (uint32_t line = 1; line <= 3000; ++line) {
        recordCheck("a.cpp", line, CheckTemperature_Cold, 1);
    }
    recordCheck("a.cpp", 2999, CheckTemperature_Cold, 1);
    platform::finishCheckStatistics();
    EXPECT_EQ(g_statistics.find("Finished checking statistics\na.cpp 2999 (cold low): 2\n"
                                "a.cpp 1 (cold low): 1\na.cpp 2 (cold low): 1\n"),
              0U);
    EXPECT_NE(g_statistics.find(totals(3001, 0, 0)), std::string::npos);
}

} // namespace
