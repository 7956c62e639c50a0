// File queries, reading at an offset, and the buffered output.

#include <cerrno>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/interface/file_query.h"
#include "platform/interface/input_file.h"
#include "platform/interface/output_file.h"
#include "tests/support/scratch_folder.h"

namespace platform {
namespace {

class Files : public testing::Test {
protected:
    std::string pathOf(const char* name) const { return m_Folder.pathOf(name); }
    int openForWriting(const char* name) const {
        return ::open(pathOf(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    }
    testsupport::ScratchFolder m_Folder;
    uint8_t m_Buffer[64] = {};
};

TEST_F(Files, KindTellsFileFolderAndNothing) {
    m_Folder.write("file", "12345");
    m_Folder.makeFolder("folder");
    EXPECT_EQ(fileKind(pathOf("file").c_str()), FileKind_File);
    EXPECT_EQ(fileKind(pathOf("folder").c_str()), FileKind_Directory);
    EXPECT_EQ(fileKind(pathOf("nothing").c_str()), FileKind_None);
    EXPECT_EQ(fileKind("C:"), FileKind_None);
    EXPECT_EQ(fileSize(pathOf("file").c_str()), 5U);
    EXPECT_EQ(fileSize(pathOf("nothing").c_str()), UINT64_MAX);
}

TEST_F(Files, StatusHoldsWhatAMemberNeeds) {
    m_Folder.write("file", "12345");
    m_Folder.setTime("file", 1000000000);
    m_Folder.setMode("file", 0640);
    const FileStatus status = queryFile(pathOf("file").c_str());
    EXPECT_EQ(status.size, 5);
    EXPECT_EQ(status.date, 1000000000);
    EXPECT_EQ(status.mode, 0100640U);
    EXPECT_EQ(status.uid, static_cast<int64_t>(::geteuid()));
    EXPECT_TRUE(status.isRegular);
}

TEST_F(Files, PipeIsNoRegularFile) {
    ASSERT_EQ(::mkfifo(pathOf("pipe").c_str(), 0600), 0);
    const FileStatus status = queryFile(pathOf("pipe").c_str());
    EXPECT_EQ(status.kind, FileKind_File);
    EXPECT_FALSE(status.isRegular);
    EXPECT_EQ(fileSize("/dev/null"), 0U);
}

TEST_F(Files, SameStateMeansSameFileUnchanged) {
    m_Folder.write("file", "12345");
    const FileStatus before = queryFile(pathOf("file").c_str());
    EXPECT_TRUE(queryFile(pathOf("file").c_str()).isSameState(before));
    m_Folder.write("file", "123456");
    EXPECT_FALSE(queryFile(pathOf("file").c_str()).isSameState(before));
    EXPECT_TRUE(queryFile(pathOf("file").c_str()).isSameFile(before));
    EXPECT_FALSE(FileStatus().isSameFile(FileStatus()));
}

TEST_F(Files, ProbeGivesStatusAndHead) {
    m_Folder.write("long", std::string(100, 'x'));
    m_Folder.write("short", "abc");
    const FileProbe longProbe = probeFile(pathOf("long").c_str(), m_Buffer);
    EXPECT_TRUE(longProbe.exists);
    EXPECT_EQ(longProbe.head.size(), sizeof m_Buffer);
    EXPECT_EQ(longProbe.status.size, 100);
    const FileProbe shortProbe = probeFile(pathOf("short").c_str(), m_Buffer);
    EXPECT_EQ(std::string(shortProbe.head.begin(), shortProbe.head.end()), "abc");
}

TEST_F(Files, ProbeOfWhatCannotBeRead) {
    EXPECT_FALSE(probeFile(pathOf("nothing").c_str(), m_Buffer).exists);
    m_Folder.makeFolder("folder");
    const FileProbe probe = probeFile(pathOf("folder").c_str(), m_Buffer);
    EXPECT_TRUE(probe.exists);
    EXPECT_EQ(probe.error, EISDIR);
    EXPECT_TRUE(probe.head.empty());
}

TEST_F(Files, ProbeOfAPipeDoesNotWaitForAWriter) {
    ASSERT_EQ(::mkfifo(pathOf("pipe").c_str(), 0600), 0);
    const FileProbe probe = probeFile(pathOf("pipe").c_str(), m_Buffer);
    EXPECT_TRUE(probe.exists);
    EXPECT_EQ(probe.error, ESPIPE);
}

TEST_F(Files, ReadAtTellsTheEndFromAFailure) {
    m_Folder.write("file", "12345");
    InputFile file;
    ASSERT_TRUE(file.open(pathOf("file").c_str()));
    char buffer[8] = {};
    EXPECT_EQ(file.readAt(buffer, 8, 3), 2);
    EXPECT_STREQ(buffer, "45");
    EXPECT_EQ(file.readAt(buffer, 8, 100), 0);
    InputFile folder;
    ASSERT_TRUE(folder.open(m_Folder.path().c_str()));
    EXPECT_EQ(folder.readAt(buffer, 8, 0), -1);
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(Files, OutputGathersSmallPiecesAndPassesLargeOnes) {
    std::string expected;
    OutputFile output;
    output.adopt(openForWriting("out"));
    for (int i = 0; i < 1000; ++i) {
        const std::string piece(static_cast<size_t>(i), static_cast<char>('a' + i % 26));
        ASSERT_TRUE(output.write(piece.data(), piece.size()));
        expected += piece;
    }
    const std::string large(3 << 20, 'L');
    ASSERT_TRUE(output.write(large.data(), large.size()));
    expected += large;
    ASSERT_TRUE(output.write("end", 3));
    expected += "end";
    ASSERT_TRUE(output.close());
    EXPECT_EQ(output.bytesWritten(), expected.size());
    EXPECT_TRUE(m_Folder.read("out") == expected);
}

class CopySizes : public Files, public testing::WithParamInterface<size_t> {};

TEST_P(CopySizes, ArriveWhole) {
    std::string body(GetParam(), '\0');
    for (size_t i = 0; i < body.size(); ++i) {
        body[i] = static_cast<char>(i * 7 + i / 251);
    }
    m_Folder.write("in", "head" + body + "tail");
    InputFile input;
    ASSERT_TRUE(input.open(pathOf("in").c_str()));
    OutputFile output;
    output.adopt(openForWriting("out"));
    ASSERT_TRUE(output.write("before", 6));
    ASSERT_EQ(output.copyFrom(input, 4, body.size()), CopyOutcome::Done);
    ASSERT_TRUE(output.write("after", 5));
    ASSERT_TRUE(output.close());
    EXPECT_TRUE(m_Folder.read("out") == "before" + body + "after");
}

INSTANTIATE_TEST_SUITE_P(Around, CopySizes,
                         testing::Values(0, 1, (64 << 10) - 1, 64 << 10, (256 << 10) - 6,
                                         (256 << 10) + 1, 5 << 20));

TEST_F(Files, CopyTellsAnInputThatEndsEarly) {
    for (const size_t size : {size_t{10}, size_t{1} << 20}) {
        m_Folder.write("in", std::string(size, 'x'));
        InputFile input;
        ASSERT_TRUE(input.open(pathOf("in").c_str()));
        OutputFile output;
        output.adopt(openForWriting("out"));
        EXPECT_EQ(output.copyFrom(input, 0, size + 1), CopyOutcome::InputFailed);
        EXPECT_EQ(output.error(), EIO);
    }
}

TEST_F(Files, CopyTellsAFullDisk) {
    m_Folder.write("in", std::string(1 << 20, 'x'));
    InputFile input;
    ASSERT_TRUE(input.open(pathOf("in").c_str()));
    OutputFile output;
    output.adopt(::open("/dev/full", O_WRONLY));
    EXPECT_EQ(output.copyFrom(input, 0, 1 << 20), CopyOutcome::OutputFailed);
    EXPECT_EQ(output.error(), ENOSPC);
    EXPECT_FALSE(output.write("x", 1)) << "the first failure stays";
    EXPECT_FALSE(output.close());
}

TEST_F(Files, FailureOfTheBufferShowsAtTheLatestOnClosing) {
    OutputFile output;
    output.adopt(::open("/dev/full", O_WRONLY));
    EXPECT_TRUE(output.write("x", 1));
    EXPECT_FALSE(output.flush());
    EXPECT_EQ(output.error(), ENOSPC);
    EXPECT_EQ(output.bytesWritten(), 0U);
    EXPECT_FALSE(output.close());
}

TEST_F(Files, OverwriteEmptiesAFileButNotTheProtectedOne) {
    m_Folder.write("old", "old contents");
    m_Folder.write("precious", "precious");
    ASSERT_EQ(::link(pathOf("precious").c_str(), pathOf("alias").c_str()), 0);
    const FileStatus precious = queryFile(pathOf("precious").c_str());
    OutputFile output;
    ASSERT_TRUE(output.overwrite(pathOf("old").c_str(), precious));
    ASSERT_TRUE(output.close());
    EXPECT_EQ(m_Folder.read("old"), "");
    EXPECT_FALSE(output.overwrite(pathOf("alias").c_str(), precious));
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(m_Folder.read("precious"), "precious");
}

TEST_F(Files, CreateNewSparesWhatIsThere) {
    m_Folder.write("old", "old contents");
    m_Folder.makeSymbolicLink("dangling", "elsewhere");
    OutputFile output;
    EXPECT_FALSE(output.createNew(pathOf("old").c_str()));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_FALSE(output.createNew(pathOf("dangling").c_str()));
    EXPECT_EQ(errno, EEXIST);
    ASSERT_TRUE(output.createNew(pathOf("new").c_str()));
    ASSERT_TRUE(output.write("x", 1));
    ASSERT_TRUE(output.close());
    EXPECT_EQ(m_Folder.read("new"), "x");
    EXPECT_EQ(m_Folder.read("old"), "old contents");
}

TEST_F(Files, DiscardAllLeavesAnEmptyFile) {
    OutputFile output;
    output.adopt(openForWriting("out"));
    ASSERT_TRUE(output.write("some", 4));
    ASSERT_TRUE(output.flush());
    ASSERT_TRUE(output.write("more", 4));
    output.discardAll();
    ASSERT_TRUE(output.close());
    EXPECT_EQ(m_Folder.read("out"), "");
}

} // namespace
} // namespace platform
