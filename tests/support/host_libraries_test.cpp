#include "tests/support/host_libraries.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/archive_builder.h"
#include "tests/support/scratch_folder.h"

namespace testsupport {
namespace {

TEST(HostLibraries, FindsArchivesOnceAndNothingElse) {
    const ScratchFolder folder;
    folder.write("deep/er/libx.a", ArchiveBuilder().add("a", "1").bytes());
    folder.write("liba.a", "!<arch>\n");
    folder.write("libscript.a", "INPUT(liba.a)\n");
    folder.write("libshort.a", "!<arch>");
    folder.write("libthin.a", "!<thin>\n");
    folder.write("liby.so", "!<arch>\n");
    folder.makeFolder("folder.a");
    folder.makeSymbolicLink("libagain.a", "liba.a");
    folder.makeSymbolicLink("libgone.a", "nothing");
    const std::vector<std::string> found = librariesBelow({folder.path(), folder.path() + "/deep"});
    EXPECT_EQ(found,
              (std::vector<std::string>{folder.pathOf("deep/er/libx.a"), folder.pathOf("liba.a")}));
}

TEST(HostLibraries, FoldersThatAreNotThereHoldNothing) {
    EXPECT_TRUE(librariesBelow({"/no such folder"}).empty());
}

TEST(HostLibraries, ThisHostsCompilerBroughtSome) {
    const std::vector<std::string> found = hostLibraries();
    EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const std::string& path) {
        return path.ends_with("/libgcc.a") || path.ends_with("/libc.a") ||
               path.find("/libclang_rt") != std::string::npos;
    }));
}

} // namespace
} // namespace testsupport
