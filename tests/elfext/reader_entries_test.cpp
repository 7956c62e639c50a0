// The ways into a read: named files, streams and memory, as a whole and in part, and what becomes
// of files and memory afterwards.
#include "tests/elfext/reader_fixtures.h"

#include "elfext/interface/deferred_contents.h"
#include "tests/support/elf_fields.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>

namespace elfext::test {
namespace {

using namespace testsupport;

// Defers what it is told to, and notes what it was asked.
class TestSelector : public DeferredContentsSelector {
public:
    explicit TestSelector(bool answer) : m_Answer(answer) {}
    bool shouldDefer(uint32_t sectionType, uint64_t sectionSize) override {
        m_Asked.emplace_back(sectionType, sectionSize);
        return m_Answer;
    }
    bool m_Answer;
    std::vector<std::pair<uint32_t, uint64_t>> m_Asked;
};

// A descriptor's file is open as long as its flags can be asked for.
size_t openFileCount() {
    size_t count = 0;
    for (int i = 0; i < 256; ++i) {
        count += fcntl(i, F_GETFD) >= 0 ? 1U : 0U;
    }
    return count;
}

class ReaderEntriesTest : public ReaderTest {
protected:
    void SetUp() override {
        ReaderTest::SetUp();
        m_OpenFiles = openFileCount();
    }

    const char* write(const std::string& bytes) {
        m_Folder.write("file.o", bytes);
        m_Name = m_Folder.pathOf("file.o");
        return m_Name.c_str();
    }
    std::FILE* openFile() { return std::fopen(m_Name.c_str(), "rb"); }

    // More than 1 MiB: a rich file with large data.
    static RichElf largeFile(uint64_t dataSize = 0x100000) {
        RichElf rich = richElf();
        std::string contents(dataSize, 'D');
        contents.back() = 'E';
        rich.builder.section(rich.data).contents = contents;
        return rich;
    }

    // A file of exactly `size` bytes.
    static RichElf fileOfSize(uint64_t size) {
        RichElf rich = largeFile(0x1000);
        const uint64_t rest = size - rich.bytes().size();
        rich.builder.section(rich.data).contents.resize(0x1000 + rest, 'D');
        // Room that the alignment of the headers has taken.
        while (rich.bytes().size() > size) {
            std::string& contents = rich.builder.section(rich.data).contents;
            contents.resize(contents.size() - 8);
        }
        return rich;
    }

    void expectRich(const RichElf& rich) {
        EXPECT_TRUE(reports().empty());
        EXPECT_EQ(module().getSectionCount(), rich.names + 1);
        EXPECT_EQ(module().getSymbolCount(), RichSymbol_Count - 1);
        EXPECT_STREQ(section(rich.text).getName(), ".text");
        EXPECT_STREQ(module().getSymbol(RichSymbol_Function)->getName(), "rich_function");
        EXPECT_EQ(contentsOf(section(rich.text)),
                  rich.builder.bytes().substr(section(rich.text).getFileOffset(), 36));
    }

    void expectFilesClosed() { EXPECT_EQ(openFileCount(), m_OpenFiles); }

    ScratchFolder m_Folder;
    std::string m_Name;
    size_t m_OpenFiles = 0;
};
using ReaderEntriesDeathTest = ReaderEntriesTest;

TEST_F(ReaderEntriesTest, NamedFile) {
    const RichElf rich = richElf();
    ASSERT_TRUE(readElfFile(write(rich.bytes()), &module(), nullptr));
    expectRich(rich);
    EXPECT_EQ(module().getFileName(), m_Name);
    EXPECT_EQ(module().getReadBuffer(), nullptr);
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, StretchOfANamedFile) {
    const RichElf rich = richElf();
    const std::string bytes = rich.bytes();
    ASSERT_TRUE(
        readElfFile(write("prefix" + bytes + "suffix"), 6, bytes.size(), &module(), nullptr));
    expectRich(rich);
    EXPECT_EQ(module().getFileName(), m_Name);
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, Buffer) {
    const RichElf rich = richElf();
    const std::string bytes = rich.bytes();
    const auto* const image = reinterpret_cast<const uint8_t*>(bytes.data());
    ASSERT_TRUE(readElfBuffer("a(b)", image, bytes.size(), &module(), nullptr));
    expectRich(rich);
    EXPECT_STREQ(module().getFileName(), "a(b)");
    EXPECT_EQ(module().getReadBuffer(), image);
    EXPECT_TRUE(module().isContentsInReadBuffer());
}

// Names and contents refer into the caller's bytes.
TEST_F(ReaderEntriesTest, BufferIsNotCopied) {
    const RichElf rich = richElf();
    const std::string bytes = rich.bytes();
    ASSERT_TRUE(readElfBuffer("a", reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(),
                              &module(), nullptr));
    const auto isInside = [&bytes](const void* address) {
        const auto* const place = static_cast<const char*>(address);
        return place >= bytes.data() && place < bytes.data() + bytes.size();
    };
    EXPECT_TRUE(isInside(section(rich.text).getName()));
    EXPECT_TRUE(isInside(module().getSymbol(RichSymbol_Function)->getName()));
    const Section& text = section(rich.text);
    EXPECT_TRUE(isInside(text.getLoadedContents().getData()));
}

TEST_F(ReaderEntriesTest, OwnedImage) {
    const RichElf rich = richElf();
    const std::string bytes = rich.bytes();
    auto image = std::make_unique<uint8_t[]>(bytes.size());
    std::memcpy(image.get(), bytes.data(), bytes.size());
    ASSERT_TRUE(readElfImage("owned.o", std::move(image), bytes.size(), &module()));
    expectRich(rich);
    EXPECT_STREQ(module().getFileName(), "owned.o");
}

TEST_F(ReaderEntriesTest, Stream) {
    const RichElf rich = richElf();
    write(rich.bytes());
    std::FILE* const stream = openFile();
    module().setFileName("kept name");
    ASSERT_TRUE(readElfFile(stream, &module(), nullptr));
    expectRich(rich);
    EXPECT_STREQ(module().getFileName(), "kept name");
    EXPECT_EQ(std::fclose(stream), 0);
}

TEST_F(ReaderEntriesTest, StretchOfAStream) {
    const RichElf rich = richElf();
    const std::string bytes = rich.bytes();
    write("prefix" + bytes + "suffix");
    std::FILE* const stream = openFile();
    ASSERT_TRUE(readElfFile(stream, 6, bytes.size(), &module(), nullptr));
    EXPECT_EQ(std::fclose(stream), 0);
    expectRich(rich);
    EXPECT_EQ(module().getFileName(), nullptr);
}

TEST_F(ReaderEntriesTest, FileThatIsNotThere) {
    EXPECT_FALSE(readElfFile("/nonexistent/file.o", &module(), nullptr));
    EXPECT_FALSE(readElfFile("/nonexistent/file.o", 0, 10, &module(), nullptr));
    const std::string sentence =
        std::string("I/O error reading file '/nonexistent/file.o': ") + std::strerror(ENOENT);
    EXPECT_EQ(reports(), Reports({{0, sentence}, {0, sentence}}));
    EXPECT_TRUE(module().isEmpty());
}

TEST_F(ReaderEntriesTest, FileThatCannotBeRead) {
    const std::string name = m_Folder.path();
    EXPECT_FALSE(readElfFile(name.c_str(), &module(), nullptr));
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_EQ(reports()[0].message.find("I/O error reading file '" + name + "'"), 0U);
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, StreamWithoutASize) {
    std::FILE* const pipe = popen("true", "r");
    EXPECT_FALSE(readElfFile(pipe, &module(), nullptr));
    EXPECT_FALSE(readElfFile(pipe, 0, 64, &module(), nullptr));
    const std::string sentence = std::string("I/O error reading file: ") + std::strerror(ESPIPE);
    EXPECT_EQ(reports(), Reports({{0, sentence}, {0, sentence}}));
    pclose(pipe);
}

TEST_F(ReaderEntriesTest, StretchThatIsNotAllThere) {
    const std::string bytes = richElf().bytes();
    const char* const name = write(bytes);
    EXPECT_FALSE(readElfFile(name, 1, bytes.size(), &module(), nullptr));
    EXPECT_FALSE(readElfFile(name, 0, UINT64_MAX, &module(), nullptr));
    EXPECT_FALSE(readElfFile(name, UINT64_MAX, 2, &module(), nullptr));
    const std::string sentence = "I/O error reading file '" + m_Name + "'";
    EXPECT_EQ(reports(), Reports({{0, sentence}, {0, sentence}, {0, sentence}}));
    EXPECT_TRUE(module().isEmpty());
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, EmptyFileAndEmptyStretch) {
    EXPECT_FALSE(readElfFile(write(""), &module(), nullptr));
    EXPECT_FALSE(readElfFile(m_Name.c_str(), 0, 0, &module(), nullptr));
    const std::string sentence = "I/O error writing file '" + m_Name + "': Unknown error -1";
    EXPECT_EQ(reports(), Reports({{0, sentence}, {0, sentence}}));
}

TEST_F(ReaderEntriesTest, ModuleIsReusable) {
    const RichElf rich = richElf({false, false}, elf::ET_EXEC);
    ASSERT_TRUE(read(rich));
    EXPECT_EQ(module().getSegmentCount(), 5U);
    const RichElf second = richElf();
    ASSERT_TRUE(readElfFile(write(second.bytes()), &module(), nullptr));
    expectRich(second);
    EXPECT_EQ(module().getSegmentCount(), 0U);
    EXPECT_TRUE(module().is64Bit());
    EXPECT_EQ(module().getReadBuffer(), nullptr);
    EXPECT_FALSE(read("not ELF, but long enough to be looked at, as it has 52 bytes"));
    EXPECT_TRUE(module().isEmpty());
    ASSERT_TRUE(read(rich));
    EXPECT_EQ(module().getSegmentCount(), 5U);
}

// --- Contents that stay in the file

TEST_F(ReaderEntriesTest, LargeFileIsReadInPlace) {
    const RichElf rich = largeFile();
    ASSERT_TRUE(readElfFile(write(rich.bytes()), &module(), nullptr));
    expectRich(rich);
    EXPECT_FALSE(module().hasDeferredContents());
    EXPECT_EQ(contentsOf(section(rich.data)),
              rich.builder.bytes().substr(section(rich.data).getFileOffset(), 0x100000));
    EXPECT_EQ(module().getReferenceCountedFile(), nullptr);
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, LargeFilesDeferContents) {
    const RichElf rich = largeFile();
    BySizeDeferredContentsSelector selector(0xFFFFF);
    ASSERT_TRUE(readElfFile(write(rich.bytes()), &module(), &selector));
    expectRich(rich);
    EXPECT_TRUE(module().hasDeferredContents());
    Section& data = section(rich.data);
    EXPECT_TRUE(data.isContentsDeferred());
    EXPECT_EQ(data.getSize(), 0x100000U);
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
    EXPECT_EQ(module().getReferenceCountedFile()->getReferenceCount(), 1U);
    const Elf64_Shdr& header = data.getDeferredContents()->getSectionHeader();
    EXPECT_EQ(header.sh_offset, data.getFileOffset());
    EXPECT_EQ(header.sh_size, 0x100000U);
    EXPECT_EQ(header.sh_flags, data.getFlags());

    Buffer* const contents = data.getContents();
    ASSERT_NE(contents, nullptr);
    EXPECT_EQ(contents->getSize(), 0x100000U);
    EXPECT_EQ(contents->getUint8(0), 'D');
    EXPECT_EQ(contents->getUint8(0xFFFFF), 'E');
    EXPECT_FALSE(data.isContentsDeferred());
    EXPECT_FALSE(module().hasDeferredContents());
    expectFilesClosed();
    EXPECT_EQ(data.getContents(), contents);
}

TEST_F(ReaderEntriesTest, FileClosesWithTheLastOfItsSections) {
    const RichElf rich = largeFile();
    BySizeDeferredContentsSelector selector(0);
    ASSERT_TRUE(readElfFile(write(rich.bytes()), &module(), &selector));
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
    std::vector<size_t> deferred;
    for (size_t i = 0; i < module().getSectionCount(); ++i) {
        if (section(i).isContentsDeferred()) {
            deferred.push_back(i);
        }
    }
    // Those that the reader looks into are read.
    EXPECT_EQ(deferred, std::vector<size_t>({rich.text, rich.exidx, rich.initArray, rich.data,
                                             rich.groupedText, rich.debugInfo, rich.debugLine}));
    EXPECT_EQ(module().getReferenceCountedFile()->getReferenceCount(), deferred.size());
    const std::string bytes = rich.bytes();
    for (const size_t index : deferred) {
        EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
        ASSERT_NE(section(index).getContents(), nullptr);
        EXPECT_EQ(contentsOf(section(index)),
                  bytes.substr(section(index).getFileOffset(), section(index).getSize()));
    }
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, FileClosesWithTheModule) {
    BySizeDeferredContentsSelector selector(0);
    ASSERT_TRUE(readElfFile(write(largeFile().bytes()), &module(), &selector));
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
    startModule();
    expectFilesClosed();
    ASSERT_TRUE(readElfFile(m_Name.c_str(), &module(), &selector));
    module().clear();
    expectFilesClosed();
    ASSERT_TRUE(readElfFile(m_Name.c_str(), &module(), &selector));
    ASSERT_TRUE(readElfFile(m_Name.c_str(), &module(), &selector));
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
}

TEST_F(ReaderEntriesTest, FileClosesWhenALaterPassFails) {
    RichElf rich = largeFile();
    rich.builder.section(rich.exidx).link = 200;
    BySizeDeferredContentsSelector selector(0);
    EXPECT_FALSE(readElfFile(write(rich.bytes()), &module(), &selector));
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_TRUE(module().isEmpty());
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, CallersStreamStaysOpen) {
    const RichElf rich = largeFile();
    write(rich.bytes());
    std::FILE* const stream = openFile();
    BySizeDeferredContentsSelector selector(0xFFFFF);
    ASSERT_TRUE(readElfFile(stream, &module(), &selector));
    EXPECT_TRUE(section(rich.data).isContentsDeferred());
    ASSERT_NE(section(rich.data).getContents(), nullptr);
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
    ASSERT_TRUE(readElfFile(stream, &module(), &selector));
    module().clear();
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
    // Also if the read fails after it has begun to leave contents in the stream.
    std::string bytes = rich.bytes();
    setSectionField(bytes, rich.exidx, SectionField::Link, 200);
    m_Folder.write("file.o", bytes);
    EXPECT_FALSE(readElfFile(stream, &module(), &selector));
    EXPECT_EQ(std::fclose(stream), 0);
    expectFilesClosed();
}

TEST_F(ReaderEntriesTest, SmallFilesAndStretchesDoNotDefer) {
    TestSelector selector(true);
    const RichElf rich = richElf();
    const std::string bytes = rich.bytes();
    ASSERT_TRUE(readElfFile(write(bytes), &module(), &selector));
    EXPECT_FALSE(module().hasDeferredContents());
    const std::string large = largeFile().bytes();
    write(large);
    ASSERT_TRUE(readElfFile(m_Name.c_str(), 0, large.size(), &module(), &selector));
    EXPECT_FALSE(module().hasDeferredContents());
    std::FILE* const stream = openFile();
    ASSERT_TRUE(readElfFile(stream, 0, large.size(), &module(), &selector));
    EXPECT_FALSE(module().hasDeferredContents());
    std::fclose(stream);
    ASSERT_TRUE(readElfBuffer("name", reinterpret_cast<const uint8_t*>(large.data()), large.size(),
                              &module(), &selector));
    EXPECT_FALSE(module().hasDeferredContents());
    EXPECT_TRUE(selector.m_Asked.empty());
    expectFilesClosed();
}

// The selector is asked for sections with contents that are not the reader's own business.
TEST_F(ReaderEntriesTest, SelectorIsAskedForOtherSectionsOnly) {
    TestSelector selector(false);
    const RichElf rich = largeFile();
    ASSERT_TRUE(readElfFile(write(rich.bytes()), &module(), &selector));
    const std::vector<std::pair<uint32_t, uint64_t>> expected = {
        {elf::SHT_PROGBITS, 36},       {elf::SHT_QEL_EXIDX, 8}, {elf::SHT_INIT_ARRAY, 8},
        {elf::SHT_PROGBITS, 0x100000}, {elf::SHT_PROGBITS, 8},  {elf::SHT_PROGBITS, 24},
        {elf::SHT_PROGBITS, 24}};
    EXPECT_EQ(selector.m_Asked, expected);
    EXPECT_FALSE(module().hasDeferredContents());
}

TEST_F(ReaderEntriesTest, BySizeSelectorDefersWhatIsLarger) {
    BySizeDeferredContentsSelector selector(100);
    EXPECT_FALSE(selector.shouldDefer(elf::SHT_PROGBITS, 0));
    EXPECT_FALSE(selector.shouldDefer(elf::SHT_PROGBITS, 100));
    EXPECT_TRUE(selector.shouldDefer(elf::SHT_PROGBITS, 101));
    BySizeDeferredContentsSelector all(0);
    EXPECT_TRUE(all.shouldDefer(elf::SHT_PROGBITS, 1));
}

// The largest file that is read as a whole has 1 MiB; from one byte more on contents are deferred.
TEST_F(ReaderEntriesTest, SizeLimitOfWholeReads) {
    BySizeDeferredContentsSelector selector(0);
    const std::string fitting = fileOfSize(0x100000).bytes();
    ASSERT_EQ(fitting.size(), 0x100000U);
    ASSERT_TRUE(readElfFile(write(fitting), &module(), &selector));
    EXPECT_FALSE(module().hasDeferredContents());
    ASSERT_TRUE(readElfFile(write(fitting + 'x'), &module(), &selector));
    EXPECT_TRUE(module().hasDeferredContents());
}

TEST_F(ReaderEntriesTest, FileThatGotShorterSinceItWasRead) {
    const RichElf rich = largeFile();
    BySizeDeferredContentsSelector selector(0);
    ASSERT_TRUE(readElfFile(write(rich.bytes()), &module(), &selector));
    m_Folder.write("file.o", "short");
    EXPECT_EQ(section(rich.data).getContents(), nullptr);
    const std::string tail = " file '" + m_Name + "': Unknown error -1";
    EXPECT_EQ(reports(), Reports({{0, "I/O error writing" + tail}}));
    expectFilesClosed();
    EXPECT_TRUE(section(rich.data).isContentsDeferred());
    // The file is closed for all of its sections.
    EXPECT_EQ(section(rich.text).getContents(), nullptr);
    EXPECT_EQ(reports().back(), (Report{0, "I/O error reading" + tail}));
}

// The same where the caller opened the stream: the module lets go of it, and the caller closes it.
TEST_F(ReaderEntriesTest, CallersStreamThatGotShorterIsStillTheCallers) {
    const RichElf rich = largeFile();
    write(rich.bytes());
    std::FILE* const stream = openFile();
    BySizeDeferredContentsSelector selector(0);
    ASSERT_TRUE(readElfFile(stream, &module(), &selector));
    m_Folder.write("file.o", "short");
    EXPECT_EQ(section(rich.data).getContents(), nullptr);
    EXPECT_EQ(reports(), Reports({{0, "I/O error writing file: Unknown error -1"}}));
    EXPECT_EQ(section(rich.text).getContents(), nullptr);
    EXPECT_EQ(reports().back(), (Report{0, "I/O error reading file: Unknown error -1"}));
    startModule();
    EXPECT_EQ(openFileCount(), m_OpenFiles + 1);
    EXPECT_EQ(std::fclose(stream), 0);
    expectFilesClosed();
}

TEST_F(ReaderEntriesDeathTest, Preconditions) {
    EXPECT_FAULT(readElfFile(static_cast<const char*>(nullptr), &module(), nullptr),
                 "elfext/src/elf_object_module_reader", "fileName != NULL");
    EXPECT_FAULT(readElfFile(static_cast<const char*>(nullptr), 0, 0, &module(), nullptr),
                 "elfext/src/elf_object_module_reader", "fileName != NULL");
    EXPECT_FAULT(readElfFile(static_cast<std::FILE*>(nullptr), &module(), nullptr),
                 "elfext/src/elf_object_module_reader", "elfFile != NULL");
    EXPECT_FAULT(readElfFile(static_cast<std::FILE*>(nullptr), 0, 0, &module(), nullptr),
                 "elfext/src/elf_object_module_reader", "elfFile != NULL");
    const uint8_t byte = 0;
    EXPECT_FAULT(readElfBuffer(nullptr, &byte, 1, &module(), nullptr),
                 "elfext/src/elf_object_module_reader", "fileName != NULL && readBuffer != NULL");
    EXPECT_FAULT(readElfBuffer("name", nullptr, 1, &module(), nullptr),
                 "elfext/src/elf_object_module_reader", "fileName != NULL && readBuffer != NULL");
}

TEST_F(ReaderEntriesDeathTest, HandlerThatGoesOnAfterAnIoError) {
    handler().m_GoesOn = true;
    EXPECT_FAULT(readElfFile("/nonexistent", &module(), nullptr), "elfext/src/reporting",
                 "!err_response");
}

TEST_F(ReaderEntriesDeathTest, NoChangeOfNameOrOrderWhileContentsAreDeferred) {
    BySizeDeferredContentsSelector selector(0);
    ASSERT_TRUE(readElfFile(write(largeFile().bytes()), &module(), &selector));
    EXPECT_FAULT(module().setFileName("x"), "elfext/src/object_module", "!hasDeferredContents()");
    EXPECT_FAULT(module().setEndianness(2), "elfext/src/object_module", "!hasDeferredContents()");
}

} // namespace
} // namespace elfext::test
