// Contents of members: in memory, on disk, and on their way between both.

#include <cerrno>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "arlib/interface/contents_location.h"
#include "platform/interface/output_file.h"
#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

class Contents : public ArlibTest {
protected:
    void SetUp() override {
        ArlibTest::SetUp();
        const char* before = std::getenv("TMPDIR");
        hadTemporaryFolder = before != nullptr;
        temporaryFolderBefore = hadTemporaryFolder ? before : "";
        folder.makeFolder("tmp");
        ::setenv("TMPDIR", pathOf("tmp").c_str(), 1);
    }
    void TearDown() override {
        if (hadTemporaryFolder) {
            ::setenv("TMPDIR", temporaryFolderBefore.c_str(), 1);
        } else {
            ::unsetenv("TMPDIR");
        }
        ArlibTest::TearDown();
    }

    bool hadTemporaryFolder = false;
    std::string temporaryFolderBefore;
};

TEST_F(Contents, ReleasedBytesGoToATemporaryFileAndComeBack) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = add(archive, "a", "some bytes");
    ASSERT_TRUE(member->releaseContents());
    EXPECT_EQ(member->getContents(), nullptr);
    ASSERT_EQ(folder.entries("tmp").size(), 1U);
    const std::string name = folder.entries("tmp")[0];
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "p%x-", static_cast<unsigned>(::getpid()));
    EXPECT_TRUE(name.starts_with(prefix)) << name;
    EXPECT_EQ(folder.mode("tmp/" + name) & 0777U, 0600U);
    EXPECT_TRUE(member->getLocation()->deletesFile());
    EXPECT_EQ(contentsOf(member), "some bytes");
    ASSERT_TRUE(member->dropLocation());
    EXPECT_EQ(folder.entries("tmp").size(), 0U);
}

TEST_F(Contents, TemporaryFileGoesWithTheMember) {
    {
        arlib::Archive archive;
        ASSERT_TRUE(add(archive, "a", "bytes")->releaseContents());
        EXPECT_EQ(folder.entries("tmp").size(), 1U);
    }
    EXPECT_EQ(folder.entries("tmp").size(), 0U);
}

TEST_F(Contents, TemporaryFileThatCannotBeMade) {
    ::setenv("TMPDIR", pathOf("missing").c_str(), 1);
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = add(archive, "a", "bytes");
    EXPECT_FALSE(member->releaseContents());
    EXPECT_EQ(handler.reports, Names{"0: I/O error writing file: No such file or directory"});
    EXPECT_EQ(contentsOf(member), "bytes") << "the bytes are not lost";
}

TEST_F(Contents, LostTemporaryFileIsReportedWhenDropped) {
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = add(archive, "a", "bytes");
    ASSERT_TRUE(member->ensureLocation());
    const std::string name = member->getLocation()->getFileName();
    ASSERT_EQ(::unlink(name.c_str()), 0);
    EXPECT_FALSE(member->dropLocation());
    EXPECT_EQ(handler.reports,
              Names{"0: I/O error deleting file '" + name + "': No such file or directory"});
}

TEST_F(Contents, SetContentsCopiesAndMarks) {
    testsupport::ArchiveBuilder builder;
    folder.write("lib.a", builder.add("a.o", "old").bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    arlib::ArchiveMember* member = archive.getMembers()[0];
    ASSERT_TRUE(member->setContents("changed", 7));
    EXPECT_EQ(contentsOf(member), "changed");
    EXPECT_EQ(member->getSize(), 7U);
    EXPECT_TRUE(member->isChanged());
    EXPECT_EQ(member->getLocation(), nullptr);
    EXPECT_FALSE(archive.areMemberOffsetsUpToDate());
    EXPECT_FALSE(archive.isSymbolTableUpToDate());
    EXPECT_FALSE(archive.isFileNameTableUpToDate());
}

TEST_F(Contents, ClearedContentsAreOnlyInMemory) {
    testsupport::ArchiveBuilder builder;
    folder.write("lib.a", builder.add("a.o", "old").bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    arlib::ArchiveMember* member = archive.getMembers()[0];
    ASSERT_TRUE(member->clearContents());
    EXPECT_EQ(member->getType(), nullptr);
    EXPECT_EQ(member->getLocation(), nullptr);
    member->recomputeType();
    EXPECT_EQ(member->getType(), arlib::getUnknownType());
    EXPECT_EQ(contentsOf(member), "old");
}

TEST_F(Contents, OfAFileThatShrankAreAReadFailure) {
    folder.write("x", "12345");
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = archive.addMemberFromFile(pathOf("x").c_str());
    folder.write("x", "12");
    EXPECT_FALSE(member->ensureContents());
    EXPECT_EQ(member->getContents(), nullptr);
    EXPECT_EQ(handler.reports,
              Names{"0: I/O error reading file '" + pathOf("x") + "': Input/output error"});
}

TEST_F(Contents, OfAFileThatVanishedAreAReadFailure) {
    folder.write("x", "12345");
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = archive.addMemberFromFile(pathOf("x").c_str());
    folder.remove("x");
    EXPECT_FALSE(member->ensureContents());
    EXPECT_EQ(handler.reports,
              Names{"0: I/O error reading file '" + pathOf("x") + "': No such file or directory"});
}

// Offsets mean nothing in another file: taking bytes from there would make a damaged archive.
TEST_F(Contents, OfAnArchiveThatWasReplacedAreRefused) {
    testsupport::ArchiveBuilder builder;
    folder.write("lib.a", builder.add("a.o", "old").bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    folder.remove("lib.a");
    folder.write("lib.a", testsupport::ArchiveBuilder().add("b.o", "other").bytes());
    EXPECT_FALSE(archive.getMembers()[0]->ensureContents());
    EXPECT_EQ(handler.reports,
              Names{"0: I/O error reading file '" + pathOf("lib.a") + "': Stale file handle"});
}

TEST_F(Contents, ManyArchivesAreReadInTurnsWithFewOpenFiles) {
    constexpr size_t archives = 40;
    arlib::Archive all;
    all.setErrorHandler(&handler);
    for (size_t i = 0; i < archives; ++i) {
        const std::string name = "lib" + std::to_string(i) + ".a";
        folder.write(name, testsupport::ArchiveBuilder()
                               .add("x.o", "x" + std::to_string(i))
                               .add("y.o", "y" + std::to_string(i))
                               .bytes());
        arlib::Archive one;
        ASSERT_TRUE(read(name, one));
        for (const arlib::ArchiveMember* member : one.getMembers()) {
            ASSERT_NE(all.addMemberFromFileRegion(member->getName(), *member), nullptr);
        }
    }
    for (const uint32_t part : {0U, 1U}) {
        for (uint32_t i = 0; i < archives; ++i) {
            EXPECT_EQ(contentsOf(all.getMembers()[2 * i + part]),
                      (part == 0 ? "x" : "y") + std::to_string(i));
        }
    }
}

TEST_F(Contents, GrowByHalfAndOne) {
    arlib::MemberContents contents;
    ASSERT_TRUE(contents.resize(10));
    std::fill_n(contents.bytes(), 10, uint8_t{7});
    ASSERT_TRUE(contents.resize(11));
    EXPECT_EQ(contents.size(), 11U);
    EXPECT_EQ(contents.bytes()[9], 7);
    ASSERT_TRUE(contents.resize(2));
    EXPECT_EQ(contents.size(), 2U);
}

} // namespace
} // namespace arlibtest
