#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace testsupport {
namespace {

using Texts = std::vector<std::string>;

bool there(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

TEST(ScratchFolder, EachHasItsOwnName) {
    const ScratchFolder first;
    const ScratchFolder second;
    EXPECT_NE(first.path(), second.path());
    EXPECT_TRUE(there(first.path()));
}

TEST(ScratchFolder, KeepsBytesExactly) {
    const ScratchFolder folder;
    const std::string bytes("a\0b\r\n\xFF", 6);
    folder.write("x", bytes);
    EXPECT_EQ(folder.read("x"), bytes);
    EXPECT_EQ(folder.size("x"), 6U);
    folder.write("x", "");
    EXPECT_EQ(folder.read("x"), "");
}

TEST(ScratchFolder, ListsSortedNames) {
    const ScratchFolder folder;
    folder.write("b", "");
    folder.write("a/inner", "");
    folder.makeSymbolicLink("c", "nowhere");
    EXPECT_EQ(folder.entries(), (Texts{"a", "b", "c"}));
    EXPECT_EQ(folder.entries("a"), (Texts{"inner"}));
    EXPECT_TRUE(folder.exists("c"));
    folder.remove("a");
    EXPECT_FALSE(folder.exists("a"));
    EXPECT_THROW(folder.remove("a"), std::runtime_error);
    EXPECT_THROW(folder.read("a"), std::runtime_error);
}

TEST(ScratchFolder, SetsTimesAndModes) {
    const ScratchFolder folder;
    folder.write("x", "");
    folder.setTime("x", 1000000000);
    folder.setMode("x", 0604);
    EXPECT_EQ(folder.time("x"), 1000000000);
    EXPECT_EQ(folder.mode("x"), 0604U);
}

TEST(ScratchFolder, IdentityFollowsTheFileNotTheName) {
    const ScratchFolder folder;
    folder.write("x", "1");
    folder.write("y", "1");
    const uint64_t before = folder.identity("x");
    EXPECT_NE(before, folder.identity("y"));
    folder.write("x", "2");
    EXPECT_EQ(folder.identity("x"), before);
}

TEST(ScratchFolder, SparseFilesHaveTheirSizeAndHead) {
    const ScratchFolder folder;
    folder.writeSparse("big", 5000000000U, "head");
    EXPECT_EQ(folder.size("big"), 5000000000U);
    struct stat status {};
    ASSERT_EQ(::stat(folder.pathOf("big").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks * 512, 1 << 20);
    folder.writeSparse("small", 6, "head");
    EXPECT_EQ(folder.read("small"), std::string("head\0\0", 6));
}

TEST(ScratchFolder, GoesAwayWithWhatIsInItWhateverThePermissions) {
    std::string path;
    {
        const ScratchFolder folder;
        path = folder.path();
        folder.write("a/b/c", "");
        folder.setMode("a/b", 0);
        folder.setMode("a", 0555);
        folder.setMode(".", 0555);
    }
    EXPECT_FALSE(there(path));
}

} // namespace
} // namespace testsupport
