// Segments: their fields, which are loadable, their image; raw data blocks.
#include "elfext/interface/data_structure.h"
#include "elfext/interface/raw_data_block.h"
#include "tests/elfext/model_fixtures.h"

#include <algorithm>

namespace elfext::test {
namespace {

using SegmentTest = ModelTest;
using SegmentDeathTest = ModelTest;

constexpr SegmentFields everyField = {.m_Type = 1,
                                      .m_VirtualAddress = 0x10000000123,
                                      .m_PhysicalAddress = 0x20000000000,
                                      .m_MemorySize = 0x300000000,
                                      .m_FileSize = 0x200000000,
                                      .m_Flags = 5,
                                      .m_Alignment = 0x100};

TEST_F(SegmentTest, HoldsWhatItIsMadeOf) {
    const Segment* const segment = module().createSegment(everyField);
    EXPECT_EQ(segment->getType(), 1U);
    EXPECT_EQ(segment->getVirtualAddress(), 0x10000000123U);
    EXPECT_EQ(segment->getPhysicalAddress(), 0x20000000000U);
    EXPECT_EQ(segment->getMemorySize(), 0x300000000U);
    EXPECT_EQ(segment->getFileSize(), 0x200000000U);
    EXPECT_EQ(segment->getFlags(), 5U);
    EXPECT_EQ(segment->getAlignment(), 0x100U);
    EXPECT_EQ(segment->getObjectModule(), &module());
    EXPECT_EQ(segment->getIndex(), 0U);
    EXPECT_FALSE(segment->isFileOffsetKnown());
}

TEST_F(SegmentTest, HoldsWhatIsSet) {
    Segment* const segment = module().createSegment(SegmentFields());
    segment->setType(7);
    segment->setVirtualAddress(1);
    segment->setPhysicalAddress(2);
    segment->setMemorySize(3);
    segment->setFileSize(4);
    segment->setFlags(6);
    segment->setAlignment(0x4000);
    EXPECT_EQ(segment->getType(), 7U);
    EXPECT_EQ(segment->getVirtualAddress(), 1U);
    EXPECT_EQ(segment->getPhysicalAddress(), 2U);
    EXPECT_EQ(segment->getMemorySize(), 3U);
    EXPECT_EQ(segment->getFileSize(), 4U);
    EXPECT_EQ(segment->getFlags(), 6U);
    EXPECT_EQ(segment->getAlignment(), 0x4000U);
}

TEST_F(SegmentTest, PlaceAndConstraintsInTheFile) {
    Segment* const segment = module().createSegment(everyField);
    uint64_t offset = 1;
    uint64_t size = 0;
    EXPECT_FALSE(segment->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0U);
    EXPECT_EQ(size, 0x200000000U);
    segment->setFileOffset(0x5000000023);
    EXPECT_TRUE(segment->isFileOffsetKnown());
    EXPECT_TRUE(segment->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0x5000000023U);
    EXPECT_EQ(segment->getFileOffset(), offset);
    uint64_t congruence = 0;
    uint64_t alignment = 0;
    segment->getFileConstraints(&congruence, &alignment);
    EXPECT_EQ(congruence, 0x23U);
    EXPECT_EQ(alignment, 0x100U);
    EXPECT_EQ(segment->getDataStore(), nullptr);
    DataStructure* const item = segment->createDataStructure(region(), 16);
    EXPECT_EQ(item->getKind(), DataStructure::Kind_Segment);
    EXPECT_EQ(static_cast<SegmentDataStructure*>(item)->getSegment(), segment);
    EXPECT_EQ(item->getCongruence(), 0x23U);
    EXPECT_EQ(item->getAlignment(), 0x100U);
    EXPECT_EQ(item->getSize(), 0x200000000U);
}

TEST_F(SegmentDeathTest, AlignmentsArePowersOfTwo) {
    Segment* const segment = module().createSegment(SegmentFields());
    const std::string condition = "(alignment & ~(alignment & (0-alignment))) == 0";
    EXPECT_FAULT(segment->setAlignment(12), "elfext/src/segment", condition);
    EXPECT_FAULT(module().createSegment({.m_Alignment = 3}), "elfext/src/object_module_creation",
                 condition);
    EXPECT_EQ(module().createSegmentAsRead({.m_Alignment = 3})->getAlignment(), 3U);
}

TEST_F(SegmentTest, LoadableTypes) {
    struct Row {
        uint32_t type;
        bool isLoadable;
        bool isLoadableInOwnAbi;
    };
    const Row rows[] = {
        {0, false, false},        {1, true, true},
        {2, true, false},         {3, true, false},
        {4, true, true},          {5, false, false},
        {6, true, true},          {7, true, true},
        {8, false, false},        {0x70000000, false, false},
        {0x70000001, true, true}, {0x6474E551, false, false},
    };
    for (const Row& row : rows) {
        Segment* const segment = module().createSegment({.m_Type = row.type});
        for (const uint32_t osAbi : {0U, 63U, 65U}) {
            module().setOsAbi(osAbi);
            EXPECT_EQ(segment->isLoadable(), row.isLoadable) << row.type;
        }
        module().setOsAbi(64);
        EXPECT_EQ(segment->isLoadable(), row.isLoadableInOwnAbi) << row.type;
    }
}

TEST_F(SegmentTest, TheImageIsMadeOfTheContainedRegions) {
    Segment* const segment = module().createSegment({.m_FileSize = 16});
    Section* const one = makeSection();
    one->setContents("abcd", 4);
    Section* const two = makeSection();
    two->setContents("efgh", 4);
    Section* const bss = module().createSection(".bss", SHT_NOBITS, 3);
    bss->setSize(100);
    Section* const empty = makeSection();
    RawDataBlock* const raw = module().createRawDataBlock(2);
    raw->write(0, "xy", 2);
    segment->addContained(two, 6);
    segment->addContained(one, 1);
    segment->addContained(bss, 0);
    segment->addContained(empty, 16);
    segment->addContained(raw, 12);
    segment->addContained(&module().getSectionHeaderTable(), 0);
    std::string image(16, '#');
    segment->getContents(image.data(), image.size());
    EXPECT_EQ(image, std::string("\0abcd\0efgh\0\0xy\0\0", 16));
}

TEST_F(SegmentTest, TheImageEndsWithTheOutput) {
    Segment* const segment = module().createSegment({.m_FileSize = 16});
    Section* const one = makeSection();
    one->setContents("abcd", 4);
    segment->addContained(one, 2);
    segment->addContained(one, UINT64_MAX - 1);
    std::string image(5, '#');
    segment->getContents(image.data(), 4);
    EXPECT_EQ(image, std::string("\0\0ab#", 5));
    segment->getContents(image.data(), 2);
    EXPECT_EQ(image, std::string("\0\0ab#", 5));
    segment->getContents(nullptr, 0);
}

TEST_F(SegmentTest, RegionsInOneAnothersPlaceAreCopiedInOrder) {
    Segment* const segment = module().createSegment({.m_FileSize = 4});
    Section* const one = makeSection();
    one->setContents("abcd", 4);
    Section* const two = makeSection();
    two->setContents("XY", 2);
    segment->addContained(one, 0);
    segment->addContained(two, 1);
    std::string image(4, '#');
    segment->getContents(image.data(), 4);
    EXPECT_EQ(image, "aXYd");
}

// --- Raw data

using RawDataTest = ModelTest;
using RawDataDeathTest = ModelTest;

TEST_F(RawDataTest, ABlockIsZerosUntilItIsFilled) {
    RawDataBlock* const block = module().createRawDataBlock(4);
    EXPECT_EQ(block->getSize(), 4U);
    EXPECT_EQ(block->getDataSize(), 4U);
    EXPECT_EQ(block->getObjectModule(), &module());
    EXPECT_TRUE(block->isWritable());
    EXPECT_EQ(block->getDataStore(), static_cast<DataStore*>(block));
    uint8_t bytes[3] = {1, 1, 1};
    block->read(1, bytes, 3);
    EXPECT_TRUE(std::all_of(bytes, bytes + 3, [](uint8_t byte) { return byte == 0; }));
    block->write(2, "x", 1);
    block->read(1, bytes, 3);
    EXPECT_EQ(bytes[1], 'x');
    EXPECT_EQ(block->getContents().getSize(), 4U);
    EXPECT_EQ(module().getRawDataBlocks()[0], block);
}

TEST_F(RawDataTest, ABlockCanReferToBytesElsewhere) {
    const uint8_t bytes[2] = {5, 6};
    RawDataBlock* const block = module().createRawDataBlock(2);
    block->borrowContents(bytes);
    EXPECT_EQ(block->getContents().getUint8(1), 6U);
    EXPECT_TRUE(block->getContents().isBorrowed());
    block->write(0, "x", 1);
    EXPECT_EQ(bytes[0], 5U);
}

TEST_F(RawDataTest, ZerosAreTold) {
    RawDataBlock* const block = module().createRawDataBlock(10000);
    EXPECT_TRUE(block->isZero(0, 10000)); // nothing has been filled in
    block->write(9000, "x", 1);
    EXPECT_FALSE(block->isZero(0, 10000));
    EXPECT_FALSE(block->isZero(9000, 1));
    EXPECT_TRUE(block->isZero(0, 9000));
    EXPECT_TRUE(block->isZero(9001, 999));
    EXPECT_TRUE(block->isZero(9000, 0));
    EXPECT_TRUE(block->isZero(10000, 0));
}

TEST_F(RawDataTest, PlaceInTheFile) {
    RawDataBlock* const block = module().createRawDataBlock(4);
    uint64_t offset = 1;
    uint64_t size = 0;
    EXPECT_FALSE(block->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0U);
    block->setFileOffset(100);
    EXPECT_TRUE(block->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 100U);
    EXPECT_EQ(size, 4U);
    block->setAlignment(16);
    uint64_t congruence = 1;
    uint64_t alignment = 0;
    block->getFileConstraints(&congruence, &alignment);
    EXPECT_EQ(congruence, 0U);
    EXPECT_EQ(alignment, 1U);
}

TEST_F(RawDataDeathTest, LayoutDoesNotAskABlock) {
    RawDataBlock* const block = module().createRawDataBlock(4);
    EXPECT_FAULT(block->createDataStructure(region(), 0), "elfext/src/raw_data_block",
                 "!\"We shouldn't be here\"");
    uint8_t bytes[8];
    EXPECT_FAULT(block->read(5, bytes, 0), "elfext/src/raw_data_block", "offset <= m_Size");
    EXPECT_FAULT(block->read(1, bytes, 4), "elfext/src/raw_data_block", "count <= m_Size - offset");
}

} // namespace
} // namespace elfext::test
