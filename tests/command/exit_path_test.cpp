// The way out of the process: in which order what was brought up goes down, from wherever it is
// taken.
#include "tomex/exit_path.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/default_region.h"
#include "alloclib/interface/region_general.h"
#include "arlib/interface/archive.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/message_session.h"
#include "messages/interface/report.h"

namespace tomex {
namespace {

// Leaves by `leave` as the program does, with the regions' ends told on standard error. A text that
// is printed before stays in front of them, since the messages are closed first.
[[noreturn]] void runAndLeave(const std::function<void()>& leave) {
    alloclib::setTraceLevel(1);
    alloclib::startAllocators();
    messages::initMessages();
    messages::setExitHandler(exitProgram);
    leave();
    std::fputs("came back\n", stderr);
    std::_Exit(77);
}

// Matches the lines about the regions that end, in this order, with nothing behind the last.
auto ends(const std::vector<std::string>& names) {
    std::string expression;
    for (const std::string& name : names) {
        expression += ".*\\(" + name + ":[0-9]+\\) Destroyed region[^\n]*\n";
    }
    return testing::ContainsRegex(expression + "$");
}

const std::vector<std::string> chain{"tomex memory", "all memory", "System region"};

std::vector<std::string> beforeTheChain(std::vector<std::string> names) {
    names.insert(names.end(), chain.begin(), chain.end());
    return names;
}

const std::string objects = "arlib::Archive::ObjectRegion";
const std::string containers = "arlib::Archive::ContainerRegion";

TEST(ExitPathDeathTest, EndOfARun) {
    EXPECT_EXIT(runAndLeave([] { exitProgram(0); }), testing::ExitedWithCode(0), ends(chain));
    EXPECT_EXIT(runAndLeave([] { exitProgram(1); }), testing::ExitedWithCode(1), ends(chain));
}

TEST(ExitPathDeathTest, ArchiveThatHasGoneIsNotEndedAgain) {
    EXPECT_EXIT(runAndLeave([] {
                    {
                        arlib::Archive archive;
                        const ArchiveInUse inUse(archive);
                    }
                    exitProgram(0);
                }),
                testing::ExitedWithCode(0), ends(beforeTheChain({containers, objects})));
}

TEST(ExitPathDeathTest, FromTheDepthOfARunWithArchivesAndScratchMemory) {
    EXPECT_EXIT(runAndLeave([] {
                    arlib::Archive outer;
                    const ArchiveInUse outerInUse(outer);
                    outer.addMember("member.o", 0, 0, 0, 0644);
                    arlib::Archive inner;
                    const ArchiveInUse innerInUse(inner);
                    inner.addMember("member.o", 0, 0, 0, 0644);
                    alloclib::RegionGeneral::Create(1024, "scratch")->Alloc(200000, 8, nullptr);
                    exitProgram(1);
                }),
                testing::ExitedWithCode(1),
                ends(beforeTheChain({containers, objects, containers, objects, "scratch"})));
}

TEST(ExitPathDeathTest, FatalReportInTheDepthOfARun) {
    EXPECT_EXIT(runAndLeave([] {
                    arlib::Archive archive;
                    const ArchiveInUse inUse(archive);
                    messages::report(messages::Severity_Fatal, messages::MessageKey_OutOfMemory);
                }),
                testing::ExitedWithCode(1), ends(beforeTheChain({containers, objects})));
}

TEST(ExitPathDeathTest, FailedCheckInTheDepthOfARun) {
    EXPECT_EXIT(runAndLeave([] {
                    arlib::Archive archive;
                    const ArchiveInUse inUse(archive);
                    archive.addMember(nullptr, 0, 0, 0, 0644);
                }),
                testing::ExitedWithCode(1), ends(beforeTheChain({containers, objects})));
}

} // namespace
} // namespace tomex
