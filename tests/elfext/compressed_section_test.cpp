// Region tables of images whose data the linker has compressed: sound ones in every form, and such
// as a hostile file may hold.
#include "elfext/interface/sizes_statistics.h"
#include "tests/elfext/compressed_image.h"

namespace elfext::test {
namespace {

using namespace testsupport;

using Image = CompressedImage;

INSTANTIATE_FORMATS(CompressedSectionTest);

TEST_P(CompressedSectionTest, TheTable) {
    Image image;
    image.entries.resize(3);
    const CompressedSectionExtractor extractor = extractorOf(image);
    EXPECT_EQ(extractor.getRegionTableSection(), &section(1));
    EXPECT_EQ(extractor.getRegionTableOffset(), tableOffset);
    EXPECT_EQ(extractor.getRegionTableAddress(), tableAddress);
    EXPECT_EQ(extractor.getCompressionState(), 2U);
    EXPECT_EQ(extractor.getRegionTableEntryCount(), 3U);
    EXPECT_EQ(extractor.getDecompressorId(), unknownDecompressor);
}

TEST_P(CompressedSectionTest, ThreeWordsWithoutTheSecondRuntime) {
    Image image;
    image.entries.resize(3);
    image.fourWords.name = "__scatterload";
    const CompressedSectionExtractor extractor = extractorOf(image);
    EXPECT_EQ(extractor.getCompressionState(), 1U);
    EXPECT_EQ(extractor.getRegionTableEntryCount(), 4U);
    EXPECT_EQ(uncompressed(image), std::nullopt);
    // Two of the name are as good as none.
    image.fourWords.name = "__scatterload_rt2";
    image.others.push_back(image.fourWords);
    EXPECT_EQ(extractorOf(image).getCompressionState(), 1U);
    EXPECT_EQ(uncompressed(image), std::nullopt);
}

TEST_P(CompressedSectionTest, WithoutALimitTheTableEndsWithItsSection) {
    Image image;
    image.entries.resize(2);
    image.hasLimit = false;
    EXPECT_EQ(extractorOf(image).getRegionTableEntryCount(), 2U);
    EXPECT_EQ(uncompressed(image), 100U);
    image.others.push_back(
        {.name = "Region$$Table$$Limit", .section = 1, .value = tableAddress + 4 * word()});
    EXPECT_EQ(extractorOf(image).getRegionTableEntryCount(), 1U);
    image.others.push_back(image.others.back());
    EXPECT_EQ(extractorOf(image).getRegionTableEntryCount(), 2U);
}

TEST_P(CompressedSectionTest, AnEntryThatIsNotWhole) {
    Image image;
    image.entries.resize(2);
    image.limitAddress = tableAddress + 8 * word() - 1;
    EXPECT_EQ(extractorOf(image).getRegionTableEntryCount(), 1U);
    image.limitAddress = tableAddress + 4 * word() - 1;
    EXPECT_EQ(extractorOf(image).getRegionTableEntryCount(), 0U);
    EXPECT_EQ(uncompressed(image), std::nullopt);
}

TEST_P(CompressedSectionTest, NoTable) {
    const auto isWithout = [this](const Image& image) {
        const CompressedSectionExtractor extractor = extractorOf(image);
        EXPECT_EQ(extractor.getRegionTableSection(), nullptr);
        EXPECT_EQ(extractor.getRegionTableOffset(), UINT64_MAX);
        EXPECT_EQ(extractor.getCompressionState(), 1U);
        EXPECT_EQ(extractor.getRegionTableEntryCount(), 0U);
        EXPECT_EQ(uncompressed(image), std::nullopt);
    };
    Image unnamed;
    unnamed.base.name = "Region$$Table$$Bas";
    isWithout(unnamed);
    Image twice;
    twice.others.push_back(twice.base);
    isWithout(twice);
    Image absolute;
    absolute.base = reservedSymbol("Region$$Table$$Base", elf::SHN_ABS, tableAddress);
    isWithout(absolute);
    Image undefined;
    undefined.base = reservedSymbol("Region$$Table$$Base", elf::SHN_UNDEF);
    isWithout(undefined);
    Image empty;
    empty.text.type = elf::SHT_NOBITS;
    isWithout(empty);
    Image relocatable;
    relocatable.type = elf::ET_REL;
    isWithout(relocatable);
}

TEST_P(CompressedSectionTest, EveryTypeOfImage) {
    for (const uint16_t type : {elf::ET_EXEC, elf::ET_DYN, elf::ET_CORE}) {
        Image image;
        image.type = type;
        EXPECT_EQ(uncompressed(image), 100U) << type;
    }
}

// Bit 0 of a function's address is no part of it.
TEST_P(CompressedSectionTest, SymbolsThatAreFunctions) {
    Image image;
    image.base.type = elf::STT_FUNC;
    image.base.value |= 1;
    image.others[0].type = elf::STT_FUNC;
    image.others[0].value |= 1;
    EXPECT_EQ(extractorOf(image).getRegionTableAddress(), tableAddress);
    EXPECT_EQ(uncompressed(image), 100U);
}

TEST_P(CompressedSectionTest, SizesAreWithoutTheirBitZero) {
    EXPECT_EQ(uncompressedBy({.size = 101}), 100U);
    EXPECT_EQ(uncompressedBy({.size = 0}), 0U);
    EXPECT_EQ(uncompressedBy({.size = 1}), 0U);
    EXPECT_EQ(uncompressedBy({.size = UINT64_MAX}), cut(UINT64_MAX - 1));
}

TEST_P(CompressedSectionTest, RelativeAddresses) {
    EXPECT_EQ(uncompressedBy({.address = (dataAddress - tableAddress) | 1}), 100U);
    EXPECT_EQ(uncompressedBy({.address = dataAddress | 1}), std::nullopt);
    // In front of the table: the sum is as wide as the class.
    Image image;
    image.data.address = 0x1000;
    image.entries = {{.address = cut(0x1000 - tableAddress) | 1}};
    EXPECT_EQ(uncompressed(image), 100U);
}

TEST_P(CompressedSectionTest, RelativeHandlers) {
    // Counted back from the table, and with bit 0 subtracted as well.
    EXPECT_EQ(uncompressedBy({.handler = tableAddress - decompressAddress - 1}), 100U);
    EXPECT_EQ(uncompressedBy({.handler = tableAddress - decompressAddress + 1}), std::nullopt);
    // Behind the table.
    Image image;
    image.entries = {{.handler = cut(tableAddress - (tableAddress + 2 * word()) - 1)}};
    image.others[0].value = tableAddress + 2 * word();
    EXPECT_EQ(uncompressed(image), 100U);
}

// With bit 1 an entry is only for data that can be written.
TEST_P(CompressedSectionTest, OnlyForWritableSections) {
    Image image;
    image.entries = {{.address = dataAddress | 2}};
    EXPECT_EQ(uncompressed(image), 100U);
    image.data.type = elf::SHT_INIT_ARRAY;
    EXPECT_EQ(uncompressed(image), std::nullopt);
    image.data.type = elf::SHT_PROGBITS;
    image.data.flags = elf::SHF_ALLOC;
    EXPECT_EQ(uncompressed(image), std::nullopt);
    image.entries = {{.address = dataAddress}};
    EXPECT_EQ(uncompressed(image), 100U);
    image.data.flags = elf::SHF_WRITE; // not loaded
    EXPECT_EQ(uncompressed(image), std::nullopt);
}

TEST_P(CompressedSectionTest, BothBitsOfAnAddress) {
    EXPECT_EQ(uncompressedBy({.address = (dataAddress - tableAddress) | 3}), 100U);
}

TEST_P(CompressedSectionTest, HandlersByName) {
    const auto with = [this](const BuiltElfSymbol& symbol) {
        Image image;
        image.others = {symbol};
        return uncompressed(image);
    };
    EXPECT_EQ(with({.name = "__decompress$$rt2veneer", .section = 1, .value = decompressAddress}),
              100U);
    EXPECT_EQ(with({.name = "__decompress1", .section = 1, .value = decompressAddress}),
              std::nullopt);
    EXPECT_EQ(with({.name = "__scatterload_copy", .section = 1, .value = decompressAddress}),
              std::nullopt);
    EXPECT_EQ(with({.name = "__decompress", .section = 1, .value = decompressAddress + 2}),
              std::nullopt);
    // In another section than the table's, though at the address, or in none.
    EXPECT_EQ(with({.name = "__decompress", .section = 2, .value = decompressAddress}),
              std::nullopt);
    EXPECT_EQ(with(reservedSymbol("__decompress", elf::SHN_ABS, decompressAddress)), std::nullopt);
}

TEST_P(CompressedSectionTest, TheFirstEntryThatFitsDecides) {
    Image image;
    image.entries = {{.size = 10, .handler = textAddress},     // copies
                     {.address = dataAddress + 4, .size = 20}, // elsewhere
                     {.address = dataAddress | 2, .size = 30}, // only writable
                     {.size = 40},
                     {.address = dataAddress | 2, .size = 50},
                     {.size = 60}};
    EXPECT_EQ(uncompressed(image), 30U);
    image.data.type = elf::SHT_INIT_ARRAY;
    EXPECT_EQ(uncompressed(image), 40U);
    image.data.address = dataAddress + 4;
    EXPECT_EQ(uncompressed(image), 20U);
    image.data.address = dataAddress + 8;
    EXPECT_EQ(uncompressed(image), std::nullopt);
    image.data.type = elf::SHT_PROGBITS;
    image.data.address = dataAddress;
    std::swap(image.entries[2], image.entries[3]);
    EXPECT_EQ(uncompressed(image), 40U);
}

// The table may stand at any address.
TEST_P(CompressedSectionTest, TableThatIsNotAligned) {
    Image image;
    image.text.address = textAddress + 1;
    image.base.value = tableAddress + 1;
    image.limitAddress = tableAddress + 1 + 4 * word();
    image.others[0].value = decompressAddress;
    EXPECT_EQ(uncompressed(image), 100U);
}

// --- What it comes to

TEST_P(CompressedSectionTest, Sizes) {
    const SizeStatistics expected{.m_LiteralPools = tableOffset + 4 * word(),
                                  .m_RwDataUncompressed = 100,
                                  .m_RwDataCompressed = dataSize};
    extractorOf(Image());
    EXPECT_EQ(computeSizeStatistics(module()), expected);
    Image plain;
    plain.entries = {{.handler = textAddress}};
    extractorOf(plain);
    SizeStatistics uncompressedSizes = expected;
    uncompressedSizes.m_RwDataUncompressed = dataSize;
    EXPECT_EQ(computeSizeStatistics(module()), uncompressedSizes);
    // Only read-write data are asked for.
    Image constants;
    constants.data.flags = elf::SHF_ALLOC;
    extractorOf(constants);
    EXPECT_EQ(computeSizeStatistics(module()).m_RoData, dataSize);
    EXPECT_EQ(computeSizeStatistics(module()).m_RwDataUncompressed, 0U);
}

// --- The variant

TEST_P(CompressedSectionTest, TheVariantStandsBesideTheDecompressor) {
    for (int32_t id = 0; id < decompressorCount; ++id) {
        Image image;
        image.others.push_back(
            {.name = decompressorSymbol(id), .section = 1, .value = decompressAddress});
        EXPECT_EQ(extractorOf(image).getDecompressorId(), id);
        image.others.back().value += 4;
        EXPECT_EQ(extractorOf(image).getDecompressorId(), unknownDecompressor);
        image.others.back() =
            reservedSymbol(decompressorSymbol(id), elf::SHN_ABS, decompressAddress);
        EXPECT_EQ(extractorOf(image).getDecompressorId(), id);
        image.others.back() = reservedSymbol(decompressorSymbol(id), elf::SHN_UNDEF);
        EXPECT_EQ(extractorOf(image).getDecompressorId(), unknownDecompressor);
    }
}

TEST_P(CompressedSectionTest, NoVariantWithoutOneDecompressor) {
    Image image;
    image.others.push_back({.name = "__decompress2", .section = 1, .value = decompressAddress});
    EXPECT_EQ(extractorOf(image).getDecompressorId(), 2);
    Image twice = image;
    twice.others.push_back(image.others[0]);
    EXPECT_EQ(extractorOf(twice).getDecompressorId(), unknownDecompressor);
    Image absolute = image;
    absolute.others[0] = reservedSymbol("__decompress", elf::SHN_ABS, decompressAddress);
    EXPECT_EQ(extractorOf(absolute).getDecompressorId(), unknownDecompressor);
    Image empty = image;
    empty.text.type = elf::SHT_NOBITS;
    EXPECT_EQ(extractorOf(empty).getDecompressorId(), unknownDecompressor);
}

// A function's odd value and a plain symbol's even one are the same address; its own odd one is
// another.
TEST_P(CompressedSectionTest, VariantsOfFunctions) {
    Image image;
    image.others[0].type = elf::STT_FUNC;
    image.others[0].value |= 1;
    image.others.push_back({.name = "__decompress1", .section = 1, .value = decompressAddress});
    EXPECT_EQ(extractorOf(image).getDecompressorId(), 1);
    image.others[1].value |= 1;
    EXPECT_EQ(extractorOf(image).getDecompressorId(), unknownDecompressor);
    image.others[1].type = elf::STT_FUNC;
    EXPECT_EQ(extractorOf(image).getDecompressorId(), 1);
}

// --- Hostile tables: nothing is compressed, and nothing happens.

TEST_P(CompressedSectionTest, TablesThatPointAnywhere) {
    const auto isNotCompressed = [this](const Image& image) {
        EXPECT_EQ(extractorOf(image).getRegionTableEntryCount(), 0U);
        EXPECT_EQ(uncompressed(image), std::nullopt);
        EXPECT_EQ(computeSizeStatistics(module()).m_RwDataUncompressed, dataSize);
    };
    for (const uint64_t address : {uint64_t{0}, textAddress - 1, tableAddress + 0x1000,
                                   cut(UINT64_MAX), cut(UINT64_MAX) / 2}) {
        Image image;
        image.base.value = address;
        isNotCompressed(image);
        image.hasLimit = false;
        isNotCompressed(image);
    }
    for (const uint64_t address : {uint64_t{1}, tableAddress - 1, tableAddress + 5 * 8 + 1,
                                   cut(UINT64_MAX), cut(UINT64_MAX) / 2}) {
        Image image;
        image.limitAddress = address;
        isNotCompressed(image);
    }
}

TEST_P(CompressedSectionTest, LimitElsewhere) {
    Image image;
    image.hasLimit = false;
    image.others.push_back(
        reservedSymbol("Region$$Table$$Limit", elf::SHN_ABS, tableAddress + 4 * word()));
    EXPECT_EQ(uncompressed(image), 100U);
    image.others.back() = reservedSymbol("Region$$Table$$Limit", elf::SHN_UNDEF);
    EXPECT_EQ(uncompressed(image), std::nullopt);
    image.others.back() = reservedSymbol("Region$$Table$$Limit", elf::SHN_COMMON, 16);
    EXPECT_EQ(uncompressed(image), std::nullopt);
}

// A table of the largest numbers that there are.
TEST_P(CompressedSectionTest, EntriesOfLargestNumbers) {
    for (const uint64_t number : {UINT64_MAX, UINT64_MAX - 1, UINT64_MAX - 2, UINT64_MAX - 3}) {
        Image image;
        image.entries.assign(5, {number, number, number, number});
        EXPECT_EQ(uncompressed(image), std::nullopt);
    }
}

// The table in a section without contents of its own.
TEST_P(CompressedSectionTest, TableInTheNullSection) {
    Image image;
    ElfBuilder builder = image.builder(format());
    std::string file = builder.bytes();
    setSectionField(file, 1, SectionField::Type, elf::SHT_NULL);
    startModule();
    ASSERT_TRUE(read(file));
    uint64_t size = 0;
    EXPECT_FALSE(CompressedSectionExtractor(&module()).findUncompressedSize(section(2), size));
}

// As many entries as sections, all of one address: each is looked at once, so this ends.
TEST_P(CompressedSectionTest, ManyEntriesAndSections) {
    constexpr size_t count = 20000;
    Image image;
    image.entries.assign(count, {.address = dataAddress | 2});
    image.entries.push_back({.handler = textAddress});
    ElfBuilder builder = image.builder(format());
    for (size_t i = 0; i < count; ++i) {
        builder.add({.name = "more",
                     .type = elf::SHT_INIT_ARRAY,
                     .flags = elf::SHF_ALLOC | elf::SHF_WRITE,
                     .contents = "1",
                     .address = dataAddress});
    }
    extractorOf(builder);
    const SizeStatistics statistics = computeSizeStatistics(module());
    EXPECT_EQ(statistics.m_RwDataUncompressed, 100 + count);
    EXPECT_EQ(statistics.m_RwDataCompressed, dataSize + count);
}

TEST_P(CompressedSectionTest, ManySymbolsOfTheNames) {
    Image image;
    for (int i = 0; i < 20000; ++i) {
        image.others.push_back({.name = "__decompress", .section = 1, .value = decompressAddress});
        image.others.push_back(
            {.name = "__decompress2", .section = 1, .value = decompressAddress + 4});
    }
    image.entries.assign(20000, {.address = dataAddress + 4});
    EXPECT_EQ(uncompressed(image), std::nullopt);
    EXPECT_EQ(extractorOf(image).getDecompressorId(), unknownDecompressor);
}

} // namespace
} // namespace elfext::test
