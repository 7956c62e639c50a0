// Where the writer puts a file, and what goes wrong there.
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "elfext/src/write_buffer.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/round_trip_fixtures.h"

namespace elfext::test {
namespace {

class WriterTest : public ReaderTest {
protected:
    void makeObject() {
        module().setType(ET_REL);
        module().createNullSection(0);
        m_Text = module().createSection(".text", SHT_PROGBITS, SHF_ALLOC);
        m_Text->setContents("code", 4);
    }
    Section* m_Text = nullptr;
    testsupport::ScratchFolder m_Folder;
};

using WriterDeathTest = WriterTest;

TEST_F(WriterTest, TheThreeWaysGiveTheSameBytes) {
    makeObject();
    const std::string bytes = writtenBytes(module());
    EXPECT_EQ(bytes.substr(0, 4), "\x7F"
                                  "ELF");
    ASSERT_TRUE(writeElfFile(m_Folder.pathOf("a.o").c_str(), &module()));
    EXPECT_EQ(m_Folder.read("a.o"), bytes);
    std::FILE* const file = std::fopen(m_Folder.pathOf("b.o").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("head", file);
    EXPECT_TRUE(writeElfFile(file, &module()));
    std::fclose(file);
    EXPECT_EQ(m_Folder.read("b.o"), "head" + bytes);
    EXPECT_EQ(reports(), Reports());
}

TEST_F(WriterTest, AFileThatIsThereIsReplaced) {
    makeObject();
    m_Folder.write("a.o", std::string(100000, 'x'));
    ASSERT_TRUE(writeElfFile(m_Folder.pathOf("a.o").c_str(), &module()));
    EXPECT_EQ(m_Folder.read("a.o"), writtenBytes(module()));
}

TEST_F(WriterTest, ASectionWithoutItsContentsIsZero) {
    makeObject();
    m_Text->setSize(8);
    const std::string bytes = writtenBytes(module());
    EXPECT_EQ(bytes.substr(52, 8), std::string("code\0\0\0\0", 8));
}

TEST_F(WriterTest, ContentsHeldElsewhereAreFetched) {
    makeObject();
    const auto fetch = [](void* context, uint64_t offset, void* destination,
                          uint64_t /*count*/) -> uint64_t {
        *static_cast<char*>(destination) = static_cast<const char*>(context)[offset];
        return 1;
    };
    char text[] = "fetched";
    m_Text->setExternalContents(fetch, text, 7);
    EXPECT_EQ(writtenBytes(module()).substr(52, 7), "fetched");
}

class DeferEverything : public DeferredContentsSelector {
public:
    bool shouldDefer(uint32_t /*sectionType*/, uint64_t /*sectionSize*/) override { return true; }
};

TEST_F(WriterTest, AModuleMayBeWrittenOverItsOwnFile) {
    makeObject();
    m_Text->setContents(std::string(2 << 20, 'c').data(), 2 << 20);
    const std::string path = m_Folder.pathOf("a.o");
    ASSERT_TRUE(writeElfFile(path.c_str(), &module()));
    const std::string bytes = m_Folder.read("a.o");
    DeferEverything selector;
    startModule();
    ASSERT_TRUE(readElfFile(path.c_str(), &module(), &selector));
    ASSERT_TRUE(section(1).isContentsDeferred());
    ASSERT_TRUE(writeElfFile(path.c_str(), &module()));
    EXPECT_EQ(m_Folder.read("a.o"), bytes);
    EXPECT_FALSE(module().hasDeferredContents());
}

TEST_F(WriterTest, DeferredContentsThatAreGoneAreReported) {
    makeObject();
    m_Text->setContents(std::string(2 << 20, 'c').data(), 2 << 20);
    const std::string path = m_Folder.pathOf("a.o");
    ASSERT_TRUE(writeElfFile(path.c_str(), &module()));
    DeferEverything selector;
    startModule();
    ASSERT_TRUE(readElfFile(path.c_str(), &module(), &selector));
    m_Folder.write("a.o", "");
    EXPECT_EQ(writtenBytes(module()), "");
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(WriterTest, AFileThatCannotBeMadeIsReported) {
    makeObject();
    const std::string path = m_Folder.pathOf("missing/a.o");
    EXPECT_FALSE(writeElfFile(path.c_str(), &module()));
    EXPECT_EQ(reports(), (Reports{{Severity_Fatal, "I/O error writing file '" + path +
                                                       "': " + std::strerror(ENOENT)}}));
}

// The file that is there stays whole, and nothing is left beside it.
TEST_F(WriterTest, AFullDiskLeavesTheOldFile) {
    makeObject();
    m_Text->setContents(std::string(100000, 'c').data(), 100000);
    m_Folder.write("a.o", "precious");
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit = {4096, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool isWritten = writeElfFile(m_Folder.pathOf("a.o").c_str(), &module());
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(reports(),
              (Reports{{Severity_Fatal, "I/O error writing file '" + m_Folder.pathOf("a.o") +
                                            "': " + std::strerror(EFBIG)}}));
    EXPECT_EQ(m_Folder.read("a.o"), "precious");
    EXPECT_EQ(m_Folder.entries(), std::vector<std::string>{"a.o"});
    EXPECT_TRUE(writeElfFile(m_Folder.pathOf("a.o").c_str(), &module()));
}

TEST_F(WriterTest, APipeIsWrittenToAndStays) {
    makeObject();
    const std::string path = m_Folder.pathOf("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_TRUE(writeElfFile(path.c_str(), &module()));
    std::string bytes(4096, '\0');
    const ssize_t count = ::read(reader, bytes.data(), bytes.size());
    ::close(reader);
    bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
    EXPECT_EQ(bytes, writtenBytes(module()));
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    EXPECT_EQ(m_Folder.entries(), std::vector<std::string>{"pipe"});
}

TEST_F(WriterTest, AFolderIsNoFileToWrite) {
    makeObject();
    EXPECT_FALSE(writeElfFile(m_Folder.path().c_str(), &module()));
    EXPECT_EQ(reports(), (Reports{{Severity_Fatal, "I/O error writing file '" + m_Folder.path() +
                                                       "': " + std::strerror(EISDIR)}}));
}

TEST_F(WriterTest, ProgramsAndLibrariesMayBeExecuted) {
    const mode_t before = ::umask(0022);
    makeObject();
    for (const uint32_t type : {ET_REL, ET_EXEC, ET_DYN, ET_CORE}) {
        const std::string name = "file" + std::to_string(type);
        module().setType(type);
        EXPECT_TRUE(writeElfFile(m_Folder.pathOf(name).c_str(), &module()));
        EXPECT_EQ(m_Folder.mode(name), type == ET_EXEC || type == ET_DYN ? 0755U : 0644U);
    }
    ::umask(before);
}

TEST_F(WriterTest, AFullDeviceIsReported) {
    makeObject();
    std::FILE* const full = std::fopen("/dev/full", "wb");
    ASSERT_NE(full, nullptr);
    EXPECT_FALSE(writeElfFile(full, &module()));
    std::fclose(full);
    EXPECT_EQ(reports(), (Reports{{Severity_Fatal, std::string("I/O error writing file: ") +
                                                       std::strerror(ENOSPC)}}));
}

TEST_F(WriterTest, AClashEndsTheWrite) {
    makeObject();
    module()
        .createSegment({.m_Type = PT_LOAD, .m_VirtualAddress = 0x10, .m_Alignment = 0x1000})
        ->addContained(&module().getElfHeader(), 0);
    EXPECT_EQ(writtenBytes(module()), "");
    EXPECT_EQ(reports().size(), 1U);
    startModule();
    makeObject();
    EXPECT_NE(writtenBytes(module()), ""); // the next write is free
}

TEST_F(WriterTest, TooManySegmentsAreNotWritten) {
    makeObject();
    for (uint32_t i = 0; i < 0xFFFF; ++i) {
        module().createSegment(SegmentFields());
    }
    EXPECT_EQ(writtenBytes(module()), "");
    EXPECT_EQ(reports(), (Reports{{Severity_Fatal, std::string("I/O error writing file: ") +
                                                       std::strerror(EFBIG)}}));
}

// --- The image

TEST_F(WriterTest, AnImageThatNobodyTakesIsDropped) {
    {
        const OpenOutput output(4);
        EXPECT_TRUE(output.isOpen());
    }
    OpenOutput output(4);
    ASSERT_TRUE(output.isOpen()); // so the first is closed
    lowlevel::writePlace(0, 4);
    uint64_t size = 0;
    EXPECT_NE(output.take(size), nullptr);
    EXPECT_EQ(size, 4U);
    EXPECT_FALSE(output.isOpen());
    EXPECT_FALSE(OpenOutput(UINT64_MAX).isOpen());
}

TEST_F(WriterTest, TheImageGrowsAndIsZeroInBetween) {
    ASSERT_TRUE(lowlevel::openWriteBuffer(2));
    std::memcpy(lowlevel::writePlace(1, 3), "abc", 3);
    std::memcpy(lowlevel::writePlace(100, 1), "z", 1);
    lowlevel::writePlace(8, 2);
    uint64_t size = 0;
    const auto bytes = lowlevel::takeWriteBuffer(size);
    ASSERT_EQ(size, 101U);
    EXPECT_EQ(std::string(bytes.get(), bytes.get() + 101),
              std::string(1, '\0') + "abc" + std::string(96, '\0') + "z");
}

TEST_F(WriterTest, APlaceThatWrapsIsNone) {
    ASSERT_TRUE(lowlevel::openWriteBuffer(0));
    EXPECT_EQ(lowlevel::writePlace(UINT64_MAX, 2), nullptr);
    EXPECT_EQ(lowlevel::writePlace(UINT64_MAX - 4, 2), nullptr);
    lowlevel::dropWriteBuffer();
}

TEST_F(WriterDeathTest, ThereIsOneImageAtATime) {
    const char* const file = "elfext/src/write_buffer";
    EXPECT_FAULT(lowlevel::writePlace(0, 1), file, "elfg_writebuffer != NULL");
    EXPECT_FAULT(lowlevel::dropWriteBuffer(), file, "elfg_writebuffer != NULL");
    ASSERT_TRUE(lowlevel::openWriteBuffer(1));
    EXPECT_FAULT(lowlevel::openWriteBuffer(1), file, "elfg_writebuffer == NULL");
    lowlevel::dropWriteBuffer();
}

} // namespace
} // namespace elfext::test
