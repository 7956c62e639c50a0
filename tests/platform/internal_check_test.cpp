#include "platform/interface/internal_check.h"

#include "platform/interface/tool_identity.h"
#include "tests/platform/check_site.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

using platform::checkEnabled;
using platform::faultFingerprint;
using platform::faultHash;
using platform::normalisedFault;
using platform::setCheckLevel;

std::string g_printed;

void printToText(const char* format, va_list arguments) {
    char text[1024];
    std::vsnprintf(text, sizeof(text), format, arguments);
    g_printed += text;
}

constexpr platform::CheckOutput textOutput{[] { g_printed += "fault: "; }, printToText,
                                           [] { g_printed += "<flush>"; }};

class InternalCheckTest : public testing::Test {
protected:
    InternalCheckTest() { g_printed.clear(); }
    ~InternalCheckTest() override {
        setCheckLevel("low");
        platform::setCheckOutput(nullptr);
        platform::setCheckExit(nullptr);
    }

    // What the option prints, and the level that it leaves.
    std::string levelAfter(const char* text) {
        g_printed.clear();
        platform::setCheckOutput(&textOutput);
        setCheckLevel(text);
        return std::to_string(platform::checkLevel) + " " + g_printed;
    }
};
using InternalCheckDeathTest = InternalCheckTest;

TEST_F(InternalCheckTest, RunsTheFirstTwoLevelsAtMost) {
    for (const char* level : {"low", "medium", "high", "extravagant"}) {
        setCheckLevel(level);
        EXPECT_TRUE(checkEnabled(0)) << level;
        EXPECT_TRUE(checkEnabled(1)) << level;
        for (uint32_t above = 2; above < 6; ++above) {
            EXPECT_FALSE(checkEnabled(above)) << level;
        }
    }
    setCheckLevel("none");
    EXPECT_TRUE(checkEnabled(0));
    EXPECT_FALSE(checkEnabled(1));
    EXPECT_FALSE(checkEnabled(2));
}

TEST_F(InternalCheckTest, SetsEachLevelByItsName) {
    EXPECT_EQ(levelAfter("none"), "0 ");
    EXPECT_EQ(levelAfter("low"), "1 ");
    EXPECT_EQ(levelAfter("medium"), "2 ");
    EXPECT_EQ(levelAfter("high"), "3 ");
    EXPECT_EQ(levelAfter("extravagant"), "4 ");
}

TEST_F(InternalCheckTest, ShowsTheLevelsInForce) {
    const std::string lines[] = {
        "COLD LOW checks enabled\n",
        "COLD MEDIUM checks enabled\n",
        "COLD HIGH checks enabled\n",
        "COLD EXTRAVAGANT checks enabled\n",
    };
    const std::string hot = "HOT LOW checks enabled\n";
    EXPECT_EQ(levelAfter("show,none"), "0 ");
    EXPECT_EQ(levelAfter("show,low"), "1 " + lines[0] + hot);
    EXPECT_EQ(levelAfter("show,medium"), "2 " + lines[0] + lines[1] + hot);
    EXPECT_EQ(levelAfter("show,high"), "3 " + lines[0] + lines[1] + lines[2] + hot);
    EXPECT_EQ(levelAfter("show"), "3 " + lines[0] + lines[1] + lines[2] + hot);
    EXPECT_EQ(levelAfter("show,extravagant"),
              "4 " + lines[0] + lines[1] + lines[2] + lines[3] + hot);
}

TEST_F(InternalCheckTest, SetsNoneAndPrintsNothingForShowWithNothingBehindIt) {
    setCheckLevel("high");
    EXPECT_EQ(levelAfter("show,"), "0 ");
}

TEST_F(InternalCheckTest, IgnoresAnyOtherText) {
    setCheckLevel("medium");
    for (const char* text : {"foo", "", "lowx", "lo", "LOW", " low", "low ", "show,foo",
                             "show,lowx", "showx", "show,show", "show,,low", "2"}) {
        EXPECT_EQ(levelAfter(text), "2 ") << text;
    }
    EXPECT_EQ(levelAfter(nullptr), "2 ");
}

TEST_F(InternalCheckTest, HashesByThirtyOneInTwentyFourBits) {
    EXPECT_EQ(faultHash(""), 0U);
    EXPECT_EQ(faultHash("a"), 97U);
    EXPECT_EQ(faultHash("ab"), 97U * 31 + 98);
    uint32_t expected = 0;
    for (const char c : std::string("a long text that overflows")) {
        expected = (expected * 31 + static_cast<uint32_t>(c)) & 0xFFFFFF;
    }
    EXPECT_EQ(faultHash("a long text that overflows"), expected);
}

TEST_F(InternalCheckTest, HashesASignedCharacter) {
    EXPECT_EQ(faultHash("\xFF"), 0xFFFFFFU);
    EXPECT_EQ(faultHash("b\x80"), (98U * 31 - 128) & 0xFFFFFF);
}

TEST_F(InternalCheckTest, HashesUpToALineFeed) {
    EXPECT_EQ(faultHash("text\nmore"), faultHash("text"));
    EXPECT_EQ(faultFingerprint("text\nmore"), faultHash("text"));
}

TEST_F(InternalCheckTest, HashesBothSeparatorsAlike) {
    EXPECT_EQ(faultHash("a\\b"), faultHash("a/b"));
}

// A place below a folder of the name that builds stand in.
std::string inBuild(const std::string& before, const std::string& behind) {
    return before + "/" + "work" + "/" + behind;
}

TEST_F(InternalCheckTest, DropsTheFolderOfTheBuild) {
    const std::string fault = inBuild("Assertion failed: /home/x", "arlib/src/a line 3 (%s)");
    EXPECT_EQ(normalisedFault(fault.c_str()), "Assertion failed: work/arlib/src/a line 3 (%s)");
    EXPECT_EQ(normalisedFault("Assertion failed: C:\\x\\work\\arlib\\src\\a line 3 (%s)"),
              "Assertion failed: work\\arlib\\src\\a line 3 (%s)");
    EXPECT_EQ(faultFingerprint(fault.c_str()),
              faultFingerprint("Assertion failed: C:\\y\\work\\arlib\\src\\a line 3 (%s)"));
}

TEST_F(InternalCheckTest, TakesTheBuildFolderNearestToTheLine) {
    const std::string twice = inBuild(inBuild("Assertion failed: ", "x"), "a line 3 (%s)");
    EXPECT_EQ(normalisedFault(twice.c_str()), "Assertion failed: work/a line 3 (%s)");
    const std::string inText = inBuild("(", "b line 4)");
    const std::string behindToo = inBuild("Assertion failed: /x", "a line 3 " + inText);
    EXPECT_EQ(normalisedFault(behindToo.c_str()), "Assertion failed: work/a line 3 " + inText);
}

TEST_F(InternalCheckTest, KeepsTextsWithoutABuildFolder) {
    const std::string otherFault = inBuild("Fault in /x", "a line 3");
    for (const char* text :
         {"Assertion failed: arlib/interface/symbol line 3 (%s)", "Assertion failed: no place",
          "Assertion failed: work/a line 3 (%s)", "Assertion failed: /works/a line 3 (%s)",
          "Assertion failed: /x/work line 3 (%s)", otherFault.c_str(), ""}) {
        EXPECT_EQ(normalisedFault(text), text);
        EXPECT_EQ(faultFingerprint(text), faultHash(text));
    }
}

TEST_F(InternalCheckDeathTest, PrintsTheFaultWithItsFingerprintAndVersion) {
    char expected[160];
    std::snprintf(expected, sizeof(expected), "^Internal fault: \\[0x%06x:%s\\] number 3 of x\n$",
                  faultFingerprint("number %d of %s"), platform::versionNumberText());
    EXPECT_EXIT(platform::assertionFailed("number %d of %s", 3, "x"), testing::ExitedWithCode(1),
                expected);
}

TEST_F(InternalCheckDeathTest, GivesTheSameFingerprintForAllArguments) {
    char expected[32];
    std::snprintf(expected, sizeof(expected), "0x%06x", faultHash("%s failed"));
    EXPECT_EXIT(platform::assertionFailed("%s failed", "a"), testing::ExitedWithCode(1), expected);
    EXPECT_EXIT(platform::assertionFailed("%s failed", "b"), testing::ExitedWithCode(1), expected);
}

TEST_F(InternalCheckDeathTest, PrintsThroughTheOutputAndLeavesThroughTheExitHandedIn) {
    platform::setCheckOutput(&textOutput);
    platform::setCheckExit([](int status) {
        std::fputs(g_printed.c_str(), stderr);
        std::_Exit(status + 40);
    });
    EXPECT_EXIT(platform::assertionFailed("bad %s", "thing"), testing::ExitedWithCode(41),
                "^fault: \\[0x[0-9a-f]{6}:[0-9]+\\] bad thing\n<flush>$");
}

TEST_F(InternalCheckDeathTest, ReportsTheConditionOfAFailedCheck) {
    const int used = 3;
    EXPECT_EXIT(TOMEX_CHECK(used < 3), testing::ExitedWithCode(1),
                "\\] Assertion failed: tests/platform/internal_check_test line [0-9]+ \\(used < "
                "3\\)\n$");
    EXPECT_EXIT(TOMEX_CHECK_TEXT(used < 3, "region != NULL"), testing::ExitedWithCode(1),
                "\\] Assertion failed: tests/platform/internal_check_test line [0-9]+ \\(region "
                "!= NULL\\)\n$");
}

TEST_F(InternalCheckDeathTest, TakesTheFingerprintOfThePlace) {
    char expected[128];
    std::snprintf(expected, sizeof(expected),
                  "0x%06x:.*Assertion failed: arlib/interface/symbol line 12 \\(100%%\\)\n$",
                  faultHash("Assertion failed: arlib/interface/symbol line 12 (%s)"));
    EXPECT_EXIT(platform::checkFailed("arlib/interface/symbol.h", 12, "100%"),
                testing::ExitedWithCode(1), expected);
}

// Numbers that users quote: the same from every build, in every folder, on every host.
TEST_F(InternalCheckTest, KeepsItsFingerprints) {
    EXPECT_EQ(faultFingerprint("Assertion failed: arlib/interface/symbol line 12 (%s)"), 0xAB929CU);
    const std::string inFolder = inBuild("Assertion failed: /home/x", "arlib/src/a line 3 (%s)");
    for (const char* text :
         {inFolder.c_str(), "Assertion failed: C:\\work\\arlib\\src\\a line 3 (%s)",
          "Assertion failed: work/arlib/src/a line 3 (%s)"}) {
        EXPECT_EQ(faultFingerprint(text), 0xD7F9AAU) << text;
    }
    EXPECT_EQ(faultFingerprint("Messages: unexpected diagnostic style %d"), 0x4541CAU);
    EXPECT_EQ(faultFingerprint("Messages: Bad severity number %d\n"), 0x89CFE0U);
}

TEST_F(InternalCheckDeathTest, NamesAHeaderFromItsRoomOn) {
    EXPECT_EXIT(checkInHeader(1), testing::ExitedWithCode(1),
                "\\] Assertion failed: tests/platform/check_site line 7 \\(value == 0\\)\n$");
}

TEST_F(InternalCheckDeathTest, TakesOddSourcePaths) {
    EXPECT_EXIT(platform::checkFailed("a%sb/c", 12, "x"), testing::ExitedWithCode(1),
                "Assertion failed: a%sb/c line 12 \\(x\\)\n$");
    const std::string path(2000, '%');
    EXPECT_EXIT(platform::checkFailed(path.c_str(), 12, "x"), testing::ExitedWithCode(1),
                "Assertion failed: %+ line 12 \\(x\\)\n$");
}

TEST_F(InternalCheckTest, PassesAConditionThatHolds) {
    int evaluated = 0;
    TOMEX_CHECK(++evaluated == 1);
    EXPECT_EQ(evaluated, 1);
}

TEST_F(InternalCheckTest, SkipsChecksThatAreSwitchedOff) {
    setCheckLevel("none");
    int evaluated = 0;
    TOMEX_CHECK(++evaluated == 7);
    EXPECT_EQ(evaluated, 0);
}

} // namespace
