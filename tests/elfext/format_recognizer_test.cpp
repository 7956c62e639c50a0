// What counts as an ELF file.
#include "elfext/interface/format_recognizer.h"

#include "tests/elfext/container_fixtures.h"
#include "tests/support/rich_elf.h"
#include "tests/support/scratch_folder.h"

#include <memory>

namespace elfext::test {
namespace {

using namespace testsupport;

class FormatRecognizerTest : public ContainerTest {
protected:
    std::string write(const std::string& bytes) {
        m_Folder.write("file", bytes);
        return m_Folder.pathOf("file");
    }

    ScratchFolder m_Folder;
};

bool isElf(const std::string& bytes) {
    return isElfFile(bytes.data(), bytes.size());
}

TEST_F(FormatRecognizerTest, EachFormat) {
    for (const ElfFormat format : allElfFormats) {
        const std::string file = richElf(format).bytes();
        EXPECT_TRUE(isElf(file)) << describe(format);
        EXPECT_TRUE(isElfFile(write(file).c_str(), 0, file.size())) << describe(format);
    }
}

TEST_F(FormatRecognizerTest, ShortImages) {
    const std::string narrow = richElf({false, true}).bytes();
    const std::string wide = richElf({true, true}).bytes();
    EXPECT_FALSE(isElf(""));
    EXPECT_FALSE(isElfFile(nullptr, 0));
    EXPECT_FALSE(isElf(narrow.substr(0, 15)));
    EXPECT_FALSE(isElf(narrow.substr(0, 16)));
    EXPECT_FALSE(isElf(narrow.substr(0, 51)));
    EXPECT_TRUE(isElf(narrow.substr(0, 52)));
    EXPECT_FALSE(isElf(wide.substr(0, 63)));
    EXPECT_TRUE(isElf(wide.substr(0, 64)));
}

TEST_F(FormatRecognizerTest, Anything64BytesLongWith2InByte4) {
    std::string bytes(64, 'x');
    EXPECT_FALSE(isElf(bytes));
    bytes[4] = 2;
    EXPECT_TRUE(isElf(bytes));
}

TEST_F(FormatRecognizerTest, WrongMagicAndClass) {
    std::string bytes = richElf({false, true}).bytes();
    bytes[4] = 3;
    EXPECT_FALSE(isElf(bytes));
    bytes[4] = 1;
    bytes[1] = 'e';
    EXPECT_FALSE(isElf(bytes));
}

TEST_F(FormatRecognizerTest, StretchOfAFile) {
    const std::string file = richElf().bytes();
    const std::string name = write("filler" + file + "behind");
    EXPECT_TRUE(isElfFile(name.c_str(), 6, file.size()));
    EXPECT_TRUE(isElfFile(name.c_str(), 6, 64));
    EXPECT_FALSE(isElfFile(name.c_str(), 6, 63));
    EXPECT_FALSE(isElfFile(name.c_str(), 6, 0));
    EXPECT_TRUE(isElfFile(name.c_str(), 6, file.size() + 6));
}

TEST_F(FormatRecognizerTest, StretchThatIsNotAllThere) {
    const std::string file = richElf().bytes();
    const std::string name = write(file);
    EXPECT_TRUE(isElfFile(name.c_str(), 0, file.size()));
    EXPECT_FALSE(isElfFile(name.c_str(), 0, file.size() + 1));
    EXPECT_FALSE(isElfFile(name.c_str(), file.size(), 64));
    EXPECT_FALSE(isElfFile(name.c_str(), UINT64_MAX, 64));
    EXPECT_FALSE(isElfFile(name.c_str(), 0, UINT64_MAX));
    EXPECT_FALSE(isElfFile(name.c_str(), INT64_MAX, 64));
}

TEST_F(FormatRecognizerTest, FileThatCannotBeRead) {
    EXPECT_FALSE(isElfFile(m_Folder.pathOf("absent").c_str(), 0, 64));
    EXPECT_FALSE(isElfFile(m_Folder.path().c_str(), 0, 64));
}

TEST_F(FormatRecognizerTest, StreamKeepsItsPosition) {
    for (const bool good : {true, false}) {
        const std::string name = write(good ? richElf().bytes() : std::string(100, 'x'));
        std::FILE* const stream = std::fopen(name.c_str(), "rb");
        ASSERT_NE(stream, nullptr);
        std::fseek(stream, 17, SEEK_SET);
        EXPECT_EQ(isElfFile(stream), good);
        EXPECT_EQ(std::ftell(stream), 17);
        std::fclose(stream);
    }
}

TEST_F(FormatRecognizerTest, StreamWithoutAPosition) {
    std::FILE* const pipe = popen("true", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_FALSE(isElfFile(pipe));
    pclose(pipe);
}

} // namespace
} // namespace elfext::test
