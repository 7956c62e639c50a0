// Contents of compressed sections as they are in memory, and the routines that unpack them.
#include "tests/elfext/compressed_image.h"

namespace elfext::test {
namespace {

using namespace testsupport;

using Image = CompressedImage;

TEST(DecompressorsTest, Rows) {
    const std::pair<const char*, const char*> rows[] = {
        {"__decompress0", "Run-length encoding"},
        {"__decompress1", "Run-length encoding, with LZ77 on small repeats"},
        {"__decompress2", "Complex LZ77 compression"},
    };
    for (int32_t id = 0; id < decompressorCount; ++id) {
        EXPECT_STREQ(decompressorSymbol(id), rows[id].first);
        EXPECT_STREQ(decompressorDescription(id), rows[id].second);
        EXPECT_EQ(decompressorOfSymbol(rows[id].first), id);
        EXPECT_EQ(findDecompressor(id), nullptr);
    }
    EXPECT_EQ(decompressorOfSymbol("__decompress"), unknownDecompressor);
    EXPECT_EQ(decompressorOfSymbol("__decompress3"), unknownDecompressor);
    EXPECT_EQ(decompressorOfSymbol(nullptr), unknownDecompressor);
    EXPECT_EQ(findDecompressor(unknownDecompressor), nullptr);
    EXPECT_EQ(findDecompressor(decompressorCount), nullptr);
}

class CompressedContentsTest : public CompressedSectionTest {
protected:
    void TearDown() override {
        registerDecompressor(1, nullptr);
        CompressedSectionTest::TearDown();
    }

    // An image whose data are for variant 1.
    static Image variantOne() {
        Image image;
        image.entries = {{.size = 14}};
        image.others.push_back({.name = "__decompress1", .section = 1, .value = decompressAddress});
        return image;
    }
    // Section 2 as the extractor gives it, in a place of 20 bytes.
    std::string contentsGiven(const Image& image) {
        const CompressedSectionExtractor extractor = extractorOf(image);
        std::string place(20, '?');
        EXPECT_TRUE(extractor.getContents(&section(2), reinterpret_cast<uint8_t*>(place.data())));
        return place;
    }

    template <uint32_t Result>
    static uint32_t repeat(const uint8_t* source, uint64_t sourceSize, uint8_t* destination,
                           uint64_t destinationSize) {
        for (uint64_t i = 0; i < destinationSize; ++i) {
            destination[i] = i < sourceSize ? source[i] : uint8_t{'+'};
        }
        return Result;
    }
};
INSTANTIATE_FORMATS(CompressedContentsTest);

TEST_P(CompressedContentsTest, OfAPlainSection) {
    Image image;
    image.entries.clear();
    EXPECT_EQ(contentsGiven(image), "dddddddddd??????????");
    image.data.type = elf::SHT_NOBITS;
    image.data.noBitsSize = 5;
    image.data.contents.clear();
    EXPECT_EQ(contentsGiven(image), std::string(5, '\0') + "???????????????");
}

TEST_P(CompressedContentsTest, WithoutARoutine) {
    EXPECT_EQ(contentsGiven(variantOne()), "dddddddddd" + std::string(4, '\0') + "??????");
    Image small = variantOne();
    small.entries = {{.size = 4}};
    EXPECT_EQ(contentsGiven(small), "dddd????????????????");
    Image none = variantOne();
    none.entries = {{.size = 0}};
    EXPECT_EQ(contentsGiven(none), "????????????????????");
}

TEST_P(CompressedContentsTest, ByTheRoutineOfTheVariant) {
    registerDecompressor(1, repeat<0>);
    EXPECT_EQ(contentsGiven(variantOne()), "dddddddddd++++??????");
    registerDecompressor(1, repeat<2>);
    EXPECT_EQ(contentsGiven(variantOne()), "dddddddddd++++??????");
    // Of a section that is not compressed the routine knows nothing.
    Image plain = variantOne();
    plain.entries = {{.handler = textAddress}};
    EXPECT_EQ(contentsGiven(plain), "dddddddddd??????????");
    Image empty = variantOne();
    empty.data.contents.clear();
    EXPECT_EQ(contentsGiven(empty), "++++++++++++++??????");
}

TEST_P(CompressedContentsTest, ByARoutineThatFails) {
    const Decompressor failing[] = {repeat<1>, repeat<3>, repeat<4>, repeat<0x80000000>};
    for (const Decompressor routine : failing) {
        registerDecompressor(1, routine);
        EXPECT_EQ(contentsGiven(variantOne()), "dddddddddd" + std::string(4, '\0') + "??????");
    }
}

TEST_P(CompressedContentsTest, OfAnotherVariant) {
    registerDecompressor(1, repeat<0>);
    Image image = variantOne();
    image.others[1].name = "__decompress0";
    EXPECT_EQ(contentsGiven(image), "dddddddddd" + std::string(4, '\0') + "??????");
}

TEST_P(CompressedContentsTest, NobodyCanHaveSoMuch) {
    Image image;
    image.data.type = elf::SHT_NOBITS;
    const CompressedSectionExtractor extractor = extractorOf(image);
    uint8_t byte = 0;
    section(2).setSize(uint64_t{UINT32_MAX} + 1);
    module().getSection(2)->setAddress(0);
    EXPECT_FAULT(extractor.getContents(&section(2), &byte),
                 "elfext/src/compressed_section_extractor", "section->getSize() <= UINT32_MAX");
    if (format().is64) {
        image.entries = {{.size = uint64_t{1} << 32}};
        const CompressedSectionExtractor large = extractorOf(image);
        EXPECT_FAULT(large.getContents(&section(2), &byte),
                     "elfext/src/compressed_section_extractor", "uncompressedSize <= UINT32_MAX");
    }
}

TEST(CompressedSectionFault, NeedsAModule) {
    EXPECT_FAULT(CompressedSectionExtractor(nullptr), "elfext/src/compressed_section_extractor",
                 "objectModule != NULL");
}

} // namespace
} // namespace elfext::test
