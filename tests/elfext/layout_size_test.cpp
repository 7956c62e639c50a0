// How large a file may become.
#include "tests/elfext/layout_fixtures.h"
#include "tests/elfext/round_trip_fixtures.h"

namespace elfext::test {
namespace {

namespace elf = testsupport::elf;

constexpr uint64_t megabyte = uint64_t{1} << 20;
constexpr const char* tooLarge = "I/O error writing file: File too large";

TEST_F(LayoutTest, ANarrowFileEndsBeforeFourGigabytes) {
    module().setFileName("big.elf");
    sized(0xFFFFFF00);
    EXPECT_TRUE(layOut());
    sized(0x1000);
    EXPECT_FALSE(layOut());
    ASSERT_EQ(m_Handler.m_Reports.size(), 1U);
    EXPECT_EQ(m_Handler.m_Reports[0].message, "I/O error writing file 'big.elf': File too large");
    module().setClass(ELFCLASS64);
    EXPECT_TRUE(layOut());
}

TEST_F(LayoutTest, PlacesDoNotWrap) {
    module().setClass(ELFCLASS64);
    sized(UINT64_MAX);
    EXPECT_FALSE(layOut());
    module().clear();
    segmentOf(uint64_t{1} << 62, 0x10, uint64_t{1} << 63);
    EXPECT_FALSE(layOut());
}

// The room between parts is written, too. A small file may have as much of it as eight large pages
// cost; a large one more, by its contents.
TEST_F(LayoutTest, PaddingHasALimit) {
    module().setClass(ELFCLASS64);
    constexpr uint64_t largePage = 2 << 20;
    for (int i = 0; i < 8; ++i) {
        segmentOf(0, 0x10, largePage);
    }
    ASSERT_TRUE(layOut());
    EXPECT_EQ(module().getSegment(7)->getFileOffset(), 8 * largePage);
    module().clear();
    segmentOf(0x40, 4, uint64_t{1} << 30);
    EXPECT_FALSE(layOut());
    ASSERT_EQ(m_Handler.m_Reports.size(), 1U);
    EXPECT_EQ(m_Handler.m_Reports[0].message, "I/O error writing file: File too large");
    module().clear();
    sized(uint64_t{64} << 20)->setFlags(0);
    Segment* const segment = segmentOf(0x40, 4, uint64_t{1} << 30);
    EXPECT_TRUE(layOut());
    EXPECT_EQ(segment->getFileOffset(), (uint64_t{1} << 30) + 0x40);
}

TEST_F(LayoutTest, SegmentsOfNothingHaveALimit) {
    module().setClass(ELFCLASS64);
    Segment* const segment = segmentOf(0, uint64_t{1} << 33, 1);
    EXPECT_FALSE(layOut());
    ASSERT_EQ(m_Handler.m_Reports.size(), 1U);
    EXPECT_EQ(m_Handler.m_Reports[0].message, "I/O error writing file: File too large");
    segment->setFileSize(uint64_t{16} << 20);
    EXPECT_TRUE(layOut());
}

TEST_F(LayoutTest, DistancesHaveALimit) {
    module().setClass(ELFCLASS64);
    Segment* const segment = segmentOf(0, 0x10, 1);
    segment->addContained(sized(4), uint64_t{1} << 62);
    module().getSection(0)->setFlags(0);
    EXPECT_FALSE(layOut());
    ASSERT_EQ(m_Handler.m_Reports.size(), 1U);
    EXPECT_EQ(m_Handler.m_Reports[0].message, "I/O error writing file: File too large");
}

// Beside what the file had, that is, so a module that is laid out again and again can become as
// long as it likes. What has been refused is nothing that the file had.
TEST_F(LayoutTest, TheLimitIsOneOfGrowth) {
    module().setClass(ELFCLASS64);
    Segment* const segment = segmentOf(0, 0, 1);
    for (const uint64_t end : {16 * megabyte, 32 * megabyte, 48 * megabyte}) {
        segment->setFileSize(end + 17 * megabyte);
        EXPECT_FALSE(layOut()) << end;
        EXPECT_FALSE(layOut()) << end;
        segment->setFileSize(end - 120); // behind the two headers
        EXPECT_TRUE(layOut()) << end;
        EXPECT_TRUE(layOut()) << end;
    }
    EXPECT_EQ(segment->getFileOffset(), 120U);
}

TEST_F(LayoutTest, AClearedModuleHasHadNoFile) {
    module().setClass(ELFCLASS64);
    segmentOf(0, 16 * megabyte, 1);
    ASSERT_TRUE(layOut());
    module().clear();
    segmentOf(0, 32 * megabyte, 1);
    EXPECT_FALSE(layOut());
    ASSERT_EQ(m_Handler.m_Reports.size(), 1U);
    EXPECT_EQ(m_Handler.m_Reports[0].message, tooLarge);
}

// --- Files that were read

// A library for hosts with very large pages. Each segment starts at a page of the file, as it does
// in memory, so that nearly all of the file is padding.
class LayoutOfLargePagesTest : public ReaderTest {
protected:
    static constexpr uint64_t page = 8 * megabyte;
    static constexpr uint32_t count = 3;

    void SetUp() override {
        ReaderTest::SetUp();
        testsupport::ElfBuilder builder({true, true}, elf::ET_DYN);
        for (uint32_t i = 1; i <= count; ++i) {
            builder.add({.name = ".part",
                         .flags = elf::SHF_ALLOC,
                         .contents = "contents",
                         .address = i * page,
                         .alignment = page});
            builder.addSegment({.firstSection = i,
                                .lastSection = i,
                                .alignment = page,
                                .raw = {{testsupport::SegmentField::VirtualAddress, i * page},
                                        {testsupport::SegmentField::PhysicalAddress, i * page}}});
        }
        ASSERT_TRUE(read(builder.bytes()));
        ASSERT_EQ(module().getSegment(count - 1)->getFileOffset(), count * page);
    }
    bool layOut() { return layOutElfFile(&module()); }
    // That they are `moved` bytes behind where they were.
    void expectPlaces(uint64_t moved) {
        for (uint32_t i = 1; i <= count; ++i) {
            EXPECT_EQ(section(i).getFileOffset(), i * page + (i > 1 ? moved : 0)) << i;
        }
    }
};

TEST_F(LayoutOfLargePagesTest, TheirPaddingStays) {
    EXPECT_TRUE(layOut());
    EXPECT_TRUE(layOut());
    expectPlaces(0);
    EXPECT_EQ(reports(), Reports());
}

TEST_F(LayoutOfLargePagesTest, TheyMayGrow) {
    Section* const added = module().createSection(".more", SHT_PROGBITS, 0);
    added->setContents("more", 4);
    EXPECT_TRUE(layOut());
    expectPlaces(0);
    EXPECT_GT(added->getFileOffset(), count * page);
    EXPECT_EQ(reports(), Reports());
}

TEST_F(LayoutOfLargePagesTest, TheirSegmentsMayMove) {
    module().getSegment(0)->setFileSize(page + 1);
    EXPECT_TRUE(layOut());
    expectPlaces(page);
    EXPECT_EQ(reports(), Reports());
}

TEST_F(LayoutOfLargePagesTest, TheyMayNotBecomeAllButEmpty) {
    const std::string first = writtenBytes(module());
    ASSERT_GT(first.size(), count * page);
    const uint64_t size = module().getSegment(0)->getFileSize();
    module().getSegment(0)->setFileSize(4 * page);
    EXPECT_FALSE(layOut());
    expectPlaces(0);
    module().getSegment(0)->setFileSize(size);
    EXPECT_TRUE(writtenBytes(module()) == first);
    EXPECT_EQ(reports(),
              (Reports{{Severity_Fatal, "I/O error writing file 'test.o': File too large"}}));
}

TEST_F(LayoutOfLargePagesTest, WhatIsReadNextHasALengthOfItsOwn) {
    ASSERT_TRUE(layOut());
    testsupport::ElfBuilder builder({true, true}, elf::ET_DYN);
    builder.add({.name = ".part", .flags = elf::SHF_ALLOC, .contents = "c", .mapped = true});
    builder.addSegment({.firstSection = 0, .lastSection = 1});
    ASSERT_TRUE(read(builder.bytes()));
    module().getSegment(0)->setFileSize(2 * page);
    EXPECT_TRUE(layOut());
    EXPECT_EQ(reports(), Reports());
    ASSERT_TRUE(read(builder.bytes()));
    module().getSegment(0)->setFileSize(count * page);
    EXPECT_FALSE(layOut());
}

} // namespace
} // namespace elfext::test
