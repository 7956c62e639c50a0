// Failures of the host while the archive is written: what is said, and what lies on disk then.
#include "tests/command/fault_case.h"

#include <cerrno>
#include <cstdio>

#include <sys/mount.h>

namespace commandtest {
namespace {

class FileFailureWrite : public FaultCase {
protected:
    void SetUp() override { setScene(); }

    CommandResult unprivileged(Words words) const {
        folder.giveToUnprivilegedUser();
        Command command = testsupport::tomex(folder, std::move(words));
        command.unprivileged = true;
        return testsupport::run(command);
    }
    // The whole new archive lies there, and nothing else.
    void expectNewScene() const {
        EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a"}));
        EXPECT_EQ(names(), (Words{"a.o", "b-is-a-long-name.o", "large", "c.o"}));
        EXPECT_EQ(contents("a.o"), "new a");
        EXPECT_TRUE(contents("c.o") == large('c'));
        EXPECT_TRUE(contents("large") == large('l'));
    }
};

constexpr char readOnly[] = "Error: L6979E: Output file 'lib.a' is read-only\n";

TEST_F(FileFailureWrite, ArchiveThatBecomesReadOnlyMeanwhile) {
    EXPECT_TRUE(ended(with({"access:path=lib.a:nth=2:errno=EACCES"}), 1, "", rebuilt(readOnly)));
    expectOldScene();
}

TEST_F(FileFailureWrite, ReadOnlyArchiveIsNotCreatedAnew) {
    folder.setMode("lib.a", 0444);
    EXPECT_TRUE(ended(unprivileged({"--create", "lib.a", "a.o"}), 1, "", rebuilt(readOnly)));
    expectOldScene();
}

TEST_F(FileFailureWrite, TemporaryFileCannotBeOpened) {
    for (const int error : {EACCES, ENOSPC, EROFS, EMFILE, ENAMETOOLONG}) {
        EXPECT_TRUE(ended(with({"@open:path=lib.a.0:errno=" + std::to_string(error)}), 1, "",
                          rebuilt(writing(error))));
        expectOldScene();
    }
}

TEST_F(FileFailureWrite, FolderCannotBeWritten) {
    folder.giveToUnprivilegedUser();
    folder.setMode(".", 0555);
    for (const Words& words : std::vector<Words>{{"-d", "lib.a", "a.o"}, {"-s", "lib.a"}}) {
        EXPECT_TRUE(ended(unprivileged(words), 1, "", writing(EACCES)));
        expectOldScene();
    }
    EXPECT_TRUE(ended(unprivileged({"-r", "new.a", "a.o"}), 1, "",
                      notElf("a.o", "new.a") + creating("new.a") +
                          "Error: L6830E: Writing file 'new.a' : Permission denied\n"));
    expectOldScene();
}

TEST_F(FileFailureWrite, FolderOfANewArchiveIsNotThere) {
    EXPECT_TRUE(
        ended(tomex({"-r", "none/new.a", "a.o"}), 1, "",
              notElf("a.o", "none/new.a") + creating("none/new.a") +
                  "Error: L6830E: Writing file 'none/new.a' : No such file or directory\n"));
    expectOldScene();
}

TEST_F(FileFailureWrite, FirstBytesCannotBeWritten) {
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
        EXPECT_TRUE(ended(with({"@write:path=lib.a.0:errno=" + std::to_string(error)}), 1, "",
                          rebuilt(writing(error))));
        expectOldScene();
    }
}

TEST_F(FileFailureWrite, LaterBytesCannotBeWritten) {
    EXPECT_TRUE(
        ended(with({"@write:path=lib.a.0:nth=2+:errno=ENOSPC"}), 1, "", rebuilt(writing(ENOSPC))));
    expectOldScene();
}

TEST_F(FileFailureWrite, FileMayNotGrowSoLarge) {
    for (const uint64_t limit : {4U, 8U, 70U, 130U, 60000U, 150000U}) {
        Command command = testsupport::tomex(folder, rebuild());
        command.fileSizeLimit = limit;
        EXPECT_TRUE(ended(testsupport::run(command), 1, "", rebuilt(writing(EFBIG)))) << limit;
        expectOldScene();
    }
}

TEST_F(FileFailureWrite, ShortWritesAreGoneOnWith) {
    EXPECT_TRUE(
        ended(with({"write:path=lib.a.0:nth=1:short=3", "copy_file_range:nth=*:short=70000"}), 0,
              "", rebuilt("")));
    expectNewScene();
}

TEST_F(FileFailureWrite, InterruptedCallsAreMadeAgain) {
    EXPECT_TRUE(ended(with({"write:path=lib.a.0:nth=1:errno=EINTR", "read:nth=1:errno=EINTR",
                            "pread:nth=1:errno=EINTR", "open:path=a.o:nth=1:errno=EINTR"}),
                      0, "", rebuilt("")));
    expectNewScene();
}

TEST_F(FileFailureWrite, HostThatCopiesNoFilesGetsTheBytesWritten) {
    for (const char* error : {"EXDEV", "EINVAL", "ENOSYS", "EOPNOTSUPP", "EPERM"}) {
        setScene();
        EXPECT_TRUE(
            ended(with({std::string("copy_file_range:errno=") + error}), 0, "", rebuilt("")));
        expectNewScene();
    }
}

TEST_F(FileFailureWrite, WriteThatTakesNothingIsAFailure) {
    EXPECT_TRUE(ended(with({"write:path=lib.a.0:short=0"}), 1, "", rebuilt(writing(EIO))));
    expectOldScene();
}

TEST_F(FileFailureWrite, TemporaryFileThatCannotBeClosedStays) {
    EXPECT_TRUE(ended(with({"@close:path=lib.a.0:errno=EIO"}), 1, "",
                      rebuilt(failure("L6977E: Closing", EIO))));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a", "lib.a.0"}));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
    EXPECT_EQ(names("lib.a.0"), (Words{"a.o", "b-is-a-long-name.o", "large", "c.o"}));
}

TEST_F(FileFailureWrite, TemporaryFileThatCannotBeRemovedIsToldOf) {
    EXPECT_TRUE(ended(with({"write:path=lib.a.0:errno=ENOSPC", "@remove:path=lib.a.0:errno=EPERM"}),
                      1, "", rebuilt(writing(ENOSPC) + failure("L6978E: Deleting", EPERM))));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a", "lib.a.0"}));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
}

TEST_F(FileFailureWrite, HostThatDoesNotReplaceByRenaming) {
    EXPECT_TRUE(ended(with({"@rename:path=lib.a.0:nth=1:errno=EEXIST"}), 0, "", rebuilt("")));
    expectNewScene();
}

TEST_F(FileFailureWrite, TargetThatCannotBeRemoved) {
    EXPECT_TRUE(ended(with({"@rename:path=lib.a.0:errno=EEXIST", "@remove:path=lib.a:errno=EPERM"}),
                      1, "", rebuilt(failure("L6978E: Deleting", EPERM))));
    expectOldScene();
}

TEST_F(FileFailureWrite, TemporaryFileThatCannotBeRenamed) {
    EXPECT_TRUE(ended(with({"@rename:path=lib.a.0:errno=EPERM"}), 1, "", rebuilt(writing(EPERM))));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o"})); // the target had been removed by then
}

TEST_F(FileFailureWrite, NewArchiveThatCannotBeRenamed) {
    EXPECT_TRUE(ended(with({"@rename:errno=EPERM"}, {"-r", "new.a", "a.o"}), 1, "",
                      notElf("a.o", "new.a") + creating("new.a") +
                          "Error: L6830E: Writing file 'new.a' : Operation not permitted\n"));
    expectOldScene();
}

TEST_F(FileFailureWrite, FolderIsNotReplaced) {
    folder.write("full/file", "kept");
    folder.makeFolder("bare");
    for (const std::string name : {"full", "bare"}) {
        EXPECT_TRUE(ended(tomex({"--create", name, "a.o"}), 1, "",
                          notElf("a.o", name) + "Error: L6978E: Deleting file '" + name +
                              "' : Is a directory\n"));
    }
    EXPECT_EQ(folder.entries(), (Words{"a.o", "bare", "c.o", "full", "lib.a"}));
    EXPECT_EQ(folder.read("full/file"), "kept");
}

TEST_F(FileFailureWrite, TemporaryFileStandsBesideTheArchive) {
    folder.write("sub/lib.a", oldBytes());
    const CommandResult result =
        with({"@open:path=sub/lib.a.0:errno=EROFS"}, {"-s", folder.pathOf("sub/lib.a")});
    EXPECT_TRUE(ended(result, 1, "",
                      "Error: L6830E: Writing file '" + folder.pathOf("sub/lib.a") +
                          "' : Read-only file system\n"));
}

TEST_F(FileFailureWrite, OtherNamesOfTheArchiveKeepTheOldOne) {
    ASSERT_EQ(::rename(folder.pathOf("lib.a").c_str(), folder.pathOf("real.a").c_str()), 0);
    folder.makeSymbolicLink("lib.a", "real.a");
    EXPECT_TRUE(ended(tomex(rebuild()), 0, "", rebuilt("")));
    EXPECT_EQ(names().size(), 4U);
    EXPECT_TRUE(folder.read("real.a") == oldBytes());
}

TEST_F(FileFailureWrite, TakenTemporaryNamesAreLeftAlone) {
    folder.write("lib.a.0", "mine");
    folder.write("lib.a.1", "mine too");
    folder.makeSymbolicLink("lib.a.2", "nowhere");
    folder.makeFolder("lib.a.3");
    EXPECT_TRUE(ended(with({"@rename:path=lib.a.4:nth=1:errno=EEXIST"}), 0, "", rebuilt("")));
    EXPECT_EQ(folder.entries(),
              (Words{"a.o", "c.o", "lib.a", "lib.a.0", "lib.a.1", "lib.a.2", "lib.a.3"}));
    EXPECT_EQ(folder.read("lib.a.0") + folder.read("lib.a.1"), "minemine too");
    EXPECT_FALSE(folder.exists("nowhere"));
    EXPECT_EQ(names().size(), 4U);
}

TEST_F(FileFailureWrite, FourthNameIsUsedWhenThreeAreTaken) {
    for (const char* name : {"lib.a.0", "lib.a.1", "lib.a.2"}) {
        folder.write(name, "mine");
    }
    EXPECT_TRUE(ended(with({"@open:path=lib.a.3:errno=EROFS"}), 1, "", rebuilt(writing(EROFS))));
}

TEST_F(FileFailureWrite, RivalThatTakesTheNameFirstKeepsIt) {
    folder.write("rival", "the rival's");
    EXPECT_TRUE(
        ended(with({"@open:path=lib.a.0:nth=1:replace=lib.a.0,rival"}), 0, "", rebuilt("")));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a", "lib.a.0"}));
    EXPECT_EQ(folder.read("lib.a.0"), "the rival's");
    EXPECT_EQ(names().size(), 4U);
}

TEST_F(FileFailureWrite, NextRunWorksAfterAFailedOne) {
    EXPECT_EQ(with({"@write:path=lib.a.0:errno=ENOSPC"}).status, 1);
    EXPECT_TRUE(ended(tomex(rebuild()), 0, "", rebuilt("")));
    expectNewScene();
}

// A file system of that size in a folder, while this lives.
class SmallFileSystem {
public:
    SmallFileSystem(const std::string& folder, const char* size) : m_Folder(folder) {
        const std::string options = std::string("size=") + size;
        m_Mounted = ::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
    }
    ~SmallFileSystem() {
        if (m_Mounted) {
            ::umount(m_Folder.c_str());
        }
    }
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    bool mounted() const { return m_Mounted; }

private:
    std::string m_Folder;
    bool m_Mounted = false;
};

TEST_F(FileFailureWrite, DiskThatIsReallyFull) {
    folder.makeFolder("disk");
    const SmallFileSystem disk(folder.pathOf("disk"), "160k");
    if (!disk.mounted()) {
        GTEST_SKIP() << "this process may not mount a small file system";
    }
    folder.write("disk/lib.a", oldBytes());
    const std::string full = "Error: L6830E: Writing file 'disk/lib.a' : No space left on device\n";
    EXPECT_TRUE(ended(tomex({"-s", "disk/lib.a"}), 1, "", full));
    EXPECT_TRUE(ended(tomex({"-r", "disk/lib.a", "a.o", "c.o"}), 1, "",
                      notElf("a.o", "disk/lib.a") + full));
    EXPECT_EQ(folder.entries("disk"), Words{"lib.a"});
    EXPECT_TRUE(folder.read("disk/lib.a") == oldBytes());
    // What frees enough room works even so.
    EXPECT_TRUE(ended(tomex({"-d", "disk/lib.a", "large"}), 0, "", ""));
    EXPECT_EQ(names("disk/lib.a"), (Words{"a.o", "b-is-a-long-name.o"}));
}

} // namespace
} // namespace commandtest
