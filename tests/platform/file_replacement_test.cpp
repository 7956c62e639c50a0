// Files that take the place of others, and those that cannot.
#include "platform/interface/file_replacement.h"

#include <cerrno>
#include <csignal>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/interface/temporary_file_guard.h"
#include "tests/support/scratch_folder.h"

namespace platform {
namespace {

using Names = std::vector<std::string>;

// The permissions of new files, for the time of a test.
class Mask {
public:
    explicit Mask(mode_t mask) : m_Before(::umask(mask)) {}
    ~Mask() { ::umask(m_Before); }
    Mask(const Mask&) = delete;
    Mask& operator=(const Mask&) = delete;

private:
    mode_t m_Before;
};

// The greatest size of files that this process may make. Beyond it writes fail with EFBIG.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t size) : m_Handler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_Before);
        const rlimit limit = {size, m_Before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_Before);
        std::signal(SIGXFSZ, m_Handler);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

private:
    sighandler_t m_Handler;
    rlimit m_Before = {};
};

class FileReplacement : public testing::Test {
protected:
    int replace(const char* name, const std::string& bytes, bool isExecutable = false) const {
        return replaceFile(m_Folder.pathOf(name).c_str(), bytes.data(), bytes.size(), isExecutable);
    }
    testsupport::ScratchFolder m_Folder;
};

using FileReplacementDeathTest = FileReplacement;

TEST_F(FileReplacement, AFileIsMade) {
    EXPECT_EQ(replace("a", "new"), 0);
    EXPECT_EQ(m_Folder.read("a"), "new");
    EXPECT_EQ(replace("empty", ""), 0);
    EXPECT_EQ(m_Folder.size("empty"), 0U);
    EXPECT_EQ(m_Folder.entries(), (Names{"a", "empty"}));
}

TEST_F(FileReplacement, AFileIsReplacedByAnother) {
    m_Folder.write("a", std::string(1000000, 'o'));
    const uint64_t before = m_Folder.identity("a");
    EXPECT_EQ(replace("a", std::string(600000, 'n')), 0);
    EXPECT_NE(m_Folder.identity("a"), before);
    EXPECT_EQ(m_Folder.read("a"), std::string(600000, 'n'));
    EXPECT_EQ(m_Folder.entries(), Names{"a"});
}

// The new file stands beside it, under a name that fits.
TEST_F(FileReplacement, NamesOfAnyLengthThatTheHostTakes) {
    for (const size_t length : {size_t{253}, size_t{254}, size_t{255}}) {
        const std::string name(length, 'n');
        m_Folder.write(name, "old");
        EXPECT_EQ(replace(name.c_str(), "new"), 0) << length;
        EXPECT_EQ(m_Folder.read(name), "new") << length;
        EXPECT_EQ(m_Folder.entries(), Names{name});
        m_Folder.remove(name);
    }
    EXPECT_EQ(replace(std::string(256, 'n').c_str(), "new"), ENAMETOOLONG);
    EXPECT_EQ(m_Folder.entries(), Names{});
}

// Before it has its contents, and whatever this process may give to others.
TEST_F(FileReplacement, ANewFileOfThesePermissionsIsGuarded) {
    const Mask mask(022);
    const std::string path = m_Folder.pathOf("private");
    const int descriptor = createGuardedFile(path.c_str(), 0600);
    ASSERT_GE(descriptor, 0);
    ::close(descriptor);
    EXPECT_EQ(m_Folder.mode("private"), 0600U);
    EXPECT_TRUE(removeGuardedFile());
    const int other = createGuardedFile(path.c_str());
    ASSERT_GE(other, 0);
    ::close(other);
    EXPECT_EQ(m_Folder.mode("private"), 0644U);
    EXPECT_TRUE(removeGuardedFile());
}

// Who has it open goes on reading the old one.
TEST_F(FileReplacement, TheOldFileStaysWithItsReaders) {
    m_Folder.write("a", "old");
    const int descriptor = ::open(m_Folder.pathOf("a").c_str(), O_RDONLY);
    EXPECT_EQ(replace("a", "new"), 0);
    char bytes[4] = {};
    EXPECT_EQ(::read(descriptor, bytes, sizeof bytes), 3);
    EXPECT_STREQ(bytes, "old");
    ::close(descriptor);
}

TEST_F(FileReplacement, NamesBesideItThatAreTakenAreLeftAlone) {
    m_Folder.write("a.0", "zero");
    m_Folder.makeSymbolicLink("a.1", "nowhere");
    EXPECT_EQ(replace("a", "new"), 0);
    EXPECT_EQ(m_Folder.read("a.0"), "zero");
    EXPECT_EQ(m_Folder.entries(), (Names{"a", "a.0", "a.1"}));
}

// --- Permissions

TEST_F(FileReplacement, NewFilesHaveTheDefaultPermissions) {
    const Mask mask(0027);
    EXPECT_EQ(replace("plain", ""), 0);
    EXPECT_EQ(m_Folder.mode("plain"), 0640U);
    EXPECT_EQ(replace("program", "", true), 0);
    EXPECT_EQ(m_Folder.mode("program"), 0750U);
}

TEST_F(FileReplacement, APermissionStays) {
    struct Row {
        uint32_t old;
        uint32_t plain;
        uint32_t program;
    };
    for (const Row& row : {Row{0600, 0600, 0700}, Row{0755, 0755, 0755}, Row{0664, 0664, 0775},
                           Row{0200, 0200, 0200}, Row{06755, 0755, 0755}}) {
        m_Folder.write("a", "old");
        m_Folder.setMode("a", row.old);
        EXPECT_EQ(replace("a", "new"), 0);
        EXPECT_EQ(m_Folder.mode("a"), row.plain) << std::oct << row.old;
        m_Folder.setMode("a", row.old);
        EXPECT_EQ(replace("a", "new", true), 0);
        EXPECT_EQ(m_Folder.mode("a"), row.program) << std::oct << row.old;
        m_Folder.remove("a");
    }
}

// --- Links and what is no plain file

TEST_F(FileReplacement, ALinkStaysALink) {
    m_Folder.write("folder/a", "old");
    m_Folder.makeSymbolicLink("link", "folder/a");
    EXPECT_EQ(replace("link", "new"), 0);
    EXPECT_EQ(m_Folder.read("folder/a"), "new");
    EXPECT_EQ(m_Folder.entries("folder"), Names{"a"});
    struct stat status = {};
    ::lstat(m_Folder.pathOf("link").c_str(), &status);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_F(FileReplacement, ALinkThatLeadsNowhereIsReplaced) {
    m_Folder.makeSymbolicLink("link", "nowhere");
    EXPECT_EQ(replace("link", "new"), 0);
    EXPECT_EQ(m_Folder.read("link"), "new");
    EXPECT_EQ(m_Folder.entries(), Names{"link"});
}

TEST_F(FileReplacement, APipeIsWrittenTo) {
    const std::string path = m_Folder.pathOf("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(replace("pipe", "through", true), 0);
    char bytes[16] = {};
    EXPECT_EQ(::read(reader, bytes, sizeof bytes), 7);
    EXPECT_STREQ(bytes, "through");
    ::close(reader);
    EXPECT_EQ(m_Folder.mode("pipe"), 0600U);
    EXPECT_EQ(m_Folder.entries(), Names{"pipe"});
}

TEST_F(FileReplacement, AFolderIsNoFile) {
    m_Folder.makeFolder("a");
    EXPECT_EQ(replace("a", "new"), EISDIR);
    EXPECT_EQ(m_Folder.entries(), Names{"a"});
}

// --- Failures: the old file is whole, and nothing is left beside it.

TEST_F(FileReplacement, AFolderThatIsNotThere) {
    EXPECT_EQ(replace("missing/a", "new"), ENOENT);
    m_Folder.write("file", "old");
    EXPECT_EQ(replace("file/a", "new"), ENOTDIR);
    EXPECT_EQ(m_Folder.entries(), Names{"file"});
}

TEST_F(FileReplacement, AFullDisk) {
    m_Folder.write("a", "precious");
    for (const size_t size : {size_t{5000}, size_t{1} << 20}) {
        const SizeLimit limit(4096);
        EXPECT_EQ(replace("a", std::string(size, 'n')), EFBIG) << size;
        EXPECT_EQ(replace("b", std::string(size, 'n')), EFBIG) << size;
    }
    EXPECT_EQ(m_Folder.read("a"), "precious");
    EXPECT_EQ(m_Folder.entries(), Names{"a"});
    EXPECT_EQ(replace("a", "new"), 0);
}

// The signal that the limit sends otherwise ends the process in the middle of the write.
TEST_F(FileReplacementDeathTest, AnInterruptedWriteLeavesTheOldFile) {
    m_Folder.write("a", "precious");
    const auto write = [this] {
        const rlimit core = {0, 0};
        ::setrlimit(RLIMIT_CORE, &core);
        const SizeLimit limit(4096);
        std::signal(SIGXFSZ, SIG_DFL);
        replace("a", std::string(100000, 'n'));
    };
    EXPECT_EXIT(write(), testing::KilledBySignal(SIGXFSZ), "");
    EXPECT_EQ(m_Folder.read("a"), "precious");
}

// The superuser may write everything, so another one tries; and that no fault of this library can
// harm the host's devices.
class FileReplacementUserDeathTest : public FileReplacementDeathTest {
protected:
    void expect(const char* name, int error) {
        m_Folder.giveToUnprivilegedUser();
        const auto attempt = [this, name, error] {
            struct stat status = {};
            ::stat(m_Folder.path().c_str(), &status);
            if (::geteuid() == 0 && (status.st_uid == 0 || ::setuid(status.st_uid) != 0)) {
                std::_Exit(2);
            }
            std::_Exit(replace(name, "new") == error ? 0 : 1);
        };
        EXPECT_EXIT(attempt(), testing::ExitedWithCode(0), "");
    }
};

TEST_F(FileReplacementUserDeathTest, ADeviceIsWrittenTo) {
    m_Folder.makeSymbolicLink("full", "/dev/full");
    m_Folder.makeSymbolicLink("null", "/dev/null");
    expect("full", ENOSPC);
    expect("null", 0);
    EXPECT_EQ(m_Folder.entries(), (Names{"full", "null"}));
}

TEST_F(FileReplacementUserDeathTest, AFileThatMayNotBeWritten) {
    m_Folder.write("a", "old");
    m_Folder.setMode("a", 0444);
    expect("a", EACCES);
    EXPECT_EQ(m_Folder.read("a"), "old");
    EXPECT_EQ(m_Folder.entries(), Names{"a"});
}

TEST_F(FileReplacementUserDeathTest, AFolderThatMayNotBeWritten) {
    m_Folder.write("folder/a", "old");
    m_Folder.setMode("folder", 0555);
    expect("folder/a", EACCES);
    expect("folder/b", EACCES);
    EXPECT_EQ(m_Folder.read("folder/a"), "old");
    EXPECT_EQ(m_Folder.entries("folder"), Names{"a"});
}

} // namespace
} // namespace platform
