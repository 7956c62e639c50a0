// The main function of all test programs: GoogleTest's, with a watch on how the process ends.
//
// One process runs a whole suite. A test that calls exit(0), or has it called, would take the rest
// of its suite along, and that would look like success.

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include <gtest/gtest.h>

namespace {

// Children of the process that tests fork may end as they like.
pid_t watched = 0;

void failBeforeAllTestsRan() {
    if (watched != getpid() || testing::internal::InDeathTestChild()) {
        return;
    }
    const testing::TestInfo* const running = testing::UnitTest::GetInstance()->current_test_info();
    std::printf("[  FAILED  ] %s.%s ended the process\n",
                running == nullptr ? "" : running->test_suite_name(),
                running == nullptr ? "" : running->name());
    std::fflush(stdout);
    _exit(1);
}

} // namespace

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    watched = getpid();
    std::atexit(failBeforeAllTestsRan);
    const int status = RUN_ALL_TESTS();
    watched = 0;
    return status;
}
