#include "tests/support/witness.h"

#include <gtest/gtest.h>

namespace testsupport {
namespace {

TEST(Witness, FindsAProgramOfTheHost) {
    const Witness shell("sh");
    ASSERT_TRUE(shell.present());
    const ScratchFolder folder;
    EXPECT_EQ(shell.run(folder, {"-c", "echo here"}).output, "here\n");
}

TEST(Witness, SaysThatAToolIsAbsent) {
    const Witness none("no-such-tool");
    EXPECT_FALSE(none.present());
    EXPECT_EQ(none.absence(),
              "no-such-tool is not installed on this host, so its answer was not asked for");
    EXPECT_FALSE(findTool("no-such-tool").has_value());
}

// With a search path of one folder, so that only what stands in it can be found.
class WitnessPath : public ::testing::Test {
protected:
    void SetUp() override {
        m_before = ::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
        ::setenv("PATH", m_folder.path().c_str(), 1);
    }
    void TearDown() override { ::setenv("PATH", m_before.c_str(), 1); }

    void makeProgram(const char* name, uint32_t mode = 0755) {
        m_folder.write(name, "#!/bin/sh\n");
        m_folder.setMode(name, mode);
    }

    ScratchFolder m_folder;
    std::string m_before;
};

TEST_F(WitnessPath, TakesTheNewestVersionWhereThePlainNameIsAbsent) {
    makeProgram("look-9");
    makeProgram("look-14");
    makeProgram("look-15", 0644);
    makeProgram("look-extra");
    EXPECT_EQ(Witness("look").path(), m_folder.pathOf("look-14"));
    makeProgram("look");
    EXPECT_EQ(Witness("look").path(), m_folder.pathOf("look"));
}

TEST_F(WitnessPath, FoldersAreNoPrograms) {
    m_folder.makeFolder("look");
    EXPECT_FALSE(Witness("look").present());
}

} // namespace
} // namespace testsupport
