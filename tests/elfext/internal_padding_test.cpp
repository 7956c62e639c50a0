// What segments hold outside of sections: in files, and in models that no file would give.
#include "elfext/src/internal_padding.h"

#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/sizes_statistics.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {
namespace {

using namespace testsupport;

// --- In files

class RawDataSizesTest : public ReaderFormatTest {
protected:
    static constexpr size_t gap = 9000; // more than two chunks

    // An image of a 16-byte section, a gap of `gap` bytes filled by `fill`, and another section.
    // One segment covers all of it.
    std::string imageWithGap(const std::function<void(std::string& bytes)>& fill) {
        ElfBuilder builder(format(), elf::ET_EXEC);
        builder.add({.name = "a", .flags = elf::SHF_ALLOC, .contents = std::string(16, 'a')});
        builder.add({.name = "gap", .contents = std::string(gap, '\0')});
        builder.add({.name = "b", .flags = elf::SHF_ALLOC, .contents = std::string(16, 'b')});
        builder.addSegment({.firstSection = 1, .lastSection = 3});
        std::string file = builder.bytes();
        std::string bytes(gap, '\0');
        fill(bytes);
        file.replace(placeOf(file, 2), gap, bytes);
        // From now on nobody knows what is between the two others.
        setSectionField(file, 2, SectionField::Type, elf::SHT_NOBITS);
        setSectionField(file, 2, SectionField::Size, 0);
        return file;
    }
    SizeStatistics sizesOf(const std::string& file) {
        startModule();
        EXPECT_TRUE(read(file));
        return computeSizeStatistics(module());
    }
};
INSTANTIATE_FORMATS(RawDataSizesTest);

TEST_P(RawDataSizesTest, AllZerosIsPadding) {
    EXPECT_EQ(sizesOf(imageWithGap([](std::string&) {})),
              (SizeStatistics{.m_RoData = 32, .m_InternalPadding = gap}));
}

// Wherever it stands: first, last, at the edges of the chunks in which the block is looked at.
TEST_P(RawDataSizesTest, OneByteMakesItData) {
    for (const size_t place :
         {size_t{0}, size_t{1}, size_t{4095}, size_t{4096}, size_t{8191}, size_t{8192}, gap - 1}) {
        EXPECT_EQ(sizesOf(imageWithGap([place](std::string& bytes) { bytes[place] = '\1'; })),
                  SizeStatistics{.m_RoData = 32 + gap})
            << place;
    }
}

// Bytes behind the last section that the segment has too.
TEST_P(RawDataSizesTest, BehindTheLastSection) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.add({.name = "a", .flags = elf::SHF_ALLOC, .contents = std::string(16, 'a')});
    builder.add({.name = "b", .contents = std::string(8, '\0')});
    builder.addSegment({.firstSection = 1, .lastSection = 2});
    std::string file = builder.bytes();
    setSectionField(file, 2, SectionField::Type, elf::SHT_NOBITS);
    EXPECT_EQ(sizesOf(file), (SizeStatistics{.m_RoData = 16, .m_InternalPadding = 8}));
}

// Headers are neither padding nor data.
TEST_P(RawDataSizesTest, SegmentFromTheStartOfTheFile) {
    ElfBuilder builder(format(), elf::ET_DYN);
    builder.add({.name = "a", .flags = elf::SHF_ALLOC, .contents = std::string(16, 'a')});
    builder.addSegment({.firstSection = 0, .lastSection = 1});
    EXPECT_EQ(sizesOf(builder.bytes()), SizeStatistics{.m_RoData = 16});
}

// A relocatable file knows no table of program headers: the segment's bytes there are data.
TEST_P(RawDataSizesTest, SegmentsOfRelocatableFiles) {
    ElfBuilder builder(format(), elf::ET_REL);
    builder.add({.name = "a", .flags = elf::SHF_ALLOC, .contents = std::string(16, 'a')});
    builder.addSegment({.firstSection = 0, .lastSection = 1});
    EXPECT_EQ(sizesOf(builder.bytes()),
              SizeStatistics{.m_RoData = 16 + programHeaderSize(format())});
}

// --- In models

class UncoveredBytesTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        module().setElfHeaderSize(0);
    }
    void addSegment(uint64_t offset, uint64_t size, uint32_t type = PT_LOAD) {
        module().createSegment({.m_Type = type, .m_FileSize = size})->setFileOffset(offset);
    }
    Section* addSection(uint64_t offset, uint64_t size, uint32_t type = SHT_PROGBITS) {
        Section* const section = module().createSection("s", type, 0);
        section->setFileOffset(offset);
        section->setSize(size);
        return section;
    }
    uint64_t uncovered() { return countUncoveredBytes(module()); }
};

TEST_F(UncoveredBytesTest, NothingAtAll) {
    EXPECT_EQ(uncovered(), 0U);
    addSection(100, 50);
    EXPECT_EQ(uncovered(), 0U);
}

TEST_F(UncoveredBytesTest, NothingFollows) {
    addSegment(100, 50);
    EXPECT_EQ(uncovered(), 0U);
    addSection(100, 20);
    EXPECT_EQ(uncovered(), 0U);
}

TEST_F(UncoveredBytesTest, SomethingFollows) {
    addSegment(100, 50);
    addSection(110, 20);
    EXPECT_EQ(uncovered(), 10U);
    addSection(140, 5);
    EXPECT_EQ(uncovered(), 20U);
    addSection(1000, 1);
    EXPECT_EQ(uncovered(), 25U);
}

// What follows may lie behind the segment, as long as it is something.
TEST_F(UncoveredBytesTest, OnlyOutside) {
    addSegment(100, 50);
    addSection(150, 1);
    EXPECT_EQ(uncovered(), 50U);
}

TEST_F(UncoveredBytesTest, PartsInFrontOfTheSegment) {
    addSection(0, 10);
    addSection(20, 10);
    addSegment(100, 50);
    EXPECT_EQ(uncovered(), 0U);
    addSection(120, 10);
    EXPECT_EQ(uncovered(), 20U);
}

TEST_F(UncoveredBytesTest, PartsThatReachIntoTheSegment) {
    addSection(90, 20);
    addSegment(100, 50);
    addSection(130, 100);
    EXPECT_EQ(uncovered(), 20U);
}

// Segments may overlap or touch, and so may parts.
TEST_F(UncoveredBytesTest, AllAreJoined) {
    addSegment(120, 30);
    addSegment(100, 40, PT_NOTE);
    addSegment(150, 10);
    addSection(115, 10);
    addSection(110, 10);
    addSection(125, 5);
    addSection(155, 5);
    EXPECT_EQ(uncovered(), 10U + 25U);
}

TEST_F(UncoveredBytesTest, EachSegmentByItself) {
    addSegment(100, 10);
    addSegment(200, 10);
    addSection(105, 2);
    addSection(205, 5);
    EXPECT_EQ(uncovered(), 5U + 3U + 5U);
}

// A part that reaches from one segment into the next is used up with the first.
TEST_F(UncoveredBytesTest, PartsThatReachIntoTheNextSegment) {
    addSegment(0, 10);
    addSegment(20, 10);
    addSection(5, 20);
    addSection(28, 2);
    EXPECT_EQ(uncovered(), 5U + 8U);
}

// One that begins at a segment's end is still there for the next.
TEST_F(UncoveredBytesTest, PartsBetweenSegments) {
    addSegment(0, 10);
    addSegment(20, 10);
    addSection(10, 15);
    addSection(29, 1);
    EXPECT_EQ(uncovered(), 10U + 4U);
}

TEST_F(UncoveredBytesTest, WhatTakesNoBytes) {
    addSegment(100, 50);
    addSegment(300, 0);
    addSection(120, 0);
    addSection(130, 10, SHT_NOBITS);
    module().createRawDataBlock(0)->setFileOffset(140);
    EXPECT_EQ(uncovered(), 0U);
}

TEST_F(UncoveredBytesTest, EveryKindOfPart) {
    addSegment(0, 1000);
    module().setElfHeaderSize(52);
    EXPECT_EQ(uncovered(), 0U);
    module().createRawDataBlock(10)->setFileOffset(60);
    EXPECT_EQ(uncovered(), 8U);
    module().getSectionHeaderTable().setEntrySize(40);
    module().getSectionHeaderTable().setCount(2);
    EXPECT_EQ(uncovered(), 8U);
    module().getSectionHeaderTable().setFileOffset(100);
    EXPECT_EQ(uncovered(), 8U + 30U);
    module().getProgramHeaderTable().setEntrySize(32);
    module().getProgramHeaderTable().setCount(1);
    module().getProgramHeaderTable().setFileOffset(200);
    EXPECT_EQ(uncovered(), 8U + 30U + 20U);
    addSection(999, 1);
    EXPECT_EQ(uncovered(), 8U + 30U + 20U + 767U);
}

// Numbers that reach beyond the end of all files.
TEST_F(UncoveredBytesTest, EndlessParts) {
    addSegment(UINT64_MAX - 10, UINT64_MAX);
    addSegment(100, 50);
    addSection(UINT64_MAX - 5, 100);
    EXPECT_EQ(uncovered(), 50U + 5U);
}

TEST_F(UncoveredBytesTest, BlocksOfAModel) {
    module().createRawDataBlock(10);
    module().createRawDataBlock(5)->write(4, "x", 1);
    SizeStatistics statistics;
    addRawData(module(), statistics);
    EXPECT_EQ(statistics, (SizeStatistics{.m_RoData = 5, .m_InternalPadding = 10}));
}

// The whole measure of a model: bytes between its sections.
TEST_F(UncoveredBytesTest, AreAddedToThePadding) {
    addSegment(100, 50);
    addSection(100, 10)->setFlags(SHF_ALLOC);
    addSection(140, 10)->setFlags(SHF_ALLOC);
    module().createRawDataBlock(5)->setFileOffset(115);
    EXPECT_EQ(computeSizeStatistics(module()),
              (SizeStatistics{.m_RoData = 20, .m_InternalPadding = 5 + 25}));
}

} // namespace
} // namespace elfext::test
