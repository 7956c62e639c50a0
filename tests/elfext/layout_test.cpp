// Where the parts of a file come to lie.
#include "elfext/interface/elf_layout.h"

#include "elfext/interface/raw_data_block.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {
namespace {

class LayoutTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        module().setErrorHandler(&m_Handler);
        module().setType(ET_EXEC);
    }

    Section* sized(uint64_t size, uint32_t type = SHT_PROGBITS, uint64_t alignment = 1) {
        Section* const section = module().createSection(".part", type, SHF_ALLOC);
        section->setSize(size);
        section->setAlignment(alignment);
        return section;
    }
    Segment* segmentOf(uint64_t address, uint64_t size, uint64_t alignment) {
        return module().createSegment({.m_Type = PT_LOAD,
                                       .m_VirtualAddress = address,
                                       .m_PhysicalAddress = 0,
                                       .m_MemorySize = size,
                                       .m_FileSize = size,
                                       .m_Flags = PF_R,
                                       .m_Alignment = alignment});
    }
    bool layOut() { return layOutElfFile(&module()); }
    Names sentences() const {
        Names texts;
        for (const Report& report : m_Handler.m_Reports) {
            EXPECT_EQ(report.severity, uint32_t{Severity_Error});
            texts.push_back(report.message);
        }
        return texts;
    }
    // Both answers to the only clash that there is.
    void expectClash(const std::string& parts) {
        const std::string text = parts + " have alignment constraints which cannot both be "
                                         "satisfied given their relative offset";
        EXPECT_FALSE(layOut());
        EXPECT_EQ(sentences(), Names{text});
        m_Handler.m_GoesOn = true;
        EXPECT_TRUE(layOut());
        EXPECT_EQ(sentences(), (Names{text, text}));
    }

    static constexpr uint64_t header = 52;
    RecordingHandler m_Handler;
};

TEST_F(LayoutTest, SectionsFollowTheHeaderInOrder) {
    module().createNullSection(0);
    Section* const one = sized(3);
    Section* const two = sized(5);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(one->getFileOffset(), header);
    EXPECT_EQ(two->getFileOffset(), header + 3);
    EXPECT_EQ(module().getSection(0)->getFileOffset(), 0U);
    EXPECT_EQ(module().getSectionHeaderOffset(), 60U);
    EXPECT_EQ(module().getSectionHeaderCount(), 3U);
    EXPECT_EQ(module().getSectionHeaderSize(), 40U);
    EXPECT_EQ(module().getElfHeaderSize(), 52U);
    EXPECT_EQ(module().getProgramHeaderOffset(), 0U);
}

TEST_F(LayoutTest, AlignmentInTheFileIsAtMostAWord) {
    struct Row {
        uint64_t alignment;
        uint64_t offset;
    };
    for (const Row row : {Row{0, 53}, Row{1, 53}, Row{2, 54}, Row{4, 56}, Row{64, 56}}) {
        module().clear();
        sized(1);
        Section* const section = sized(1, SHT_PROGBITS, row.alignment);
        ASSERT_TRUE(layOut());
        EXPECT_EQ(section->getFileOffset(), row.offset) << row.alignment;
    }
}

TEST_F(LayoutTest, TablesOfRecordsAreAlignedToAWord) {
    sized(1);
    Section* const tables[] = {module().createSymbolTableSection(SHT_SYMTAB, ".symtab"),
                               module().createSymbolTableSection(SHT_DYNSYM, ".dynsym"),
                               module().createRelocationSection(".rel", SHT_REL, 0),
                               module().createRelocationSection(".rela", SHT_RELA, 0),
                               module().createGroupSection(".group"),
                               module().createShndxSection()};
    for (Section* const table : tables) {
        table->setSize(1);
        table->setAlignment(1);
    }
    ASSERT_TRUE(layOut());
    uint64_t offset = header;
    for (const Section* const table : tables) {
        offset += 4;
        EXPECT_EQ(table->getFileOffset(), offset) << table->getName();
    }
}

TEST_F(LayoutTest, SectionsWithoutBytesTakeNoRoom) {
    sized(1);
    Section* const bss = sized(0x1000, SHT_NOBITS, 16);
    Section* const next = sized(1);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(bss->getFileOffset(), 53U);
    EXPECT_EQ(next->getFileOffset(), 53U);
}

TEST_F(LayoutTest, TheProgramHeadersFollowTheHeader) {
    Section* const section = sized(4);
    segmentOf(0, 4, 1)->addContained(section, 0);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(module().getProgramHeaderOffset(), header);
    EXPECT_EQ(module().getProgramHeaderCount(), 1U);
    EXPECT_EQ(module().getProgramHeaderSize(), 32U);
    EXPECT_EQ(section->getFileOffset(), header + 32);
}

TEST_F(LayoutTest, AWideFileHasWideHeaders) {
    module().setClass(ELFCLASS64);
    module().createNullSection(0);
    segmentOf(0, 0, 1);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(module().getElfHeaderSize(), 64U);
    EXPECT_EQ(module().getProgramHeaderOffset(), 64U);
    EXPECT_EQ(module().getSectionHeaderOffset(), 120U);
    EXPECT_EQ(module().getSectionHeaderSize(), 64U);
    EXPECT_EQ(module().getProgramHeaderSize(), 56U);
}

TEST_F(LayoutTest, ASegmentIsCongruentToItsAddress) {
    Segment* const one = segmentOf(0x1234, 0x10, 0x1000);
    Segment* const two = segmentOf(0x3000, 0x10, 0x1000);
    Section* const section = sized(0x10);
    one->addContained(section, 0);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(one->getFileOffset(), 0x234U);
    EXPECT_EQ(section->getFileOffset(), 0x234U);
    EXPECT_EQ(two->getFileOffset(), 0x1000U);
}

TEST_F(LayoutTest, WhatASegmentHoldsMovesWithIt) {
    Segment* const outer = segmentOf(0x100, 0x40, 0x100);
    Segment* const inner = segmentOf(0x110, 0x10, 4);
    Section* const section = sized(8);
    RawDataBlock* const raw = module().createRawDataBlock(4);
    outer->addContained(inner, 0x10);
    inner->addContained(section, 4);
    outer->addContained(raw, 0x20);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(outer->getFileOffset(), 0x100U);
    EXPECT_EQ(inner->getFileOffset(), 0x110U);
    EXPECT_EQ(section->getFileOffset(), 0x114U);
    uint64_t offset = 0;
    uint64_t size = 0;
    EXPECT_TRUE(raw->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0x120U);
}

// Two segments that share a section are one block, though neither holds the other.
TEST_F(LayoutTest, SegmentsThatShareASectionMoveTogether) {
    Segment* const one = segmentOf(0x100, 0x20, 0x100);
    Segment* const two = segmentOf(0x118, 0x20, 8);
    Section* const shared = sized(8);
    one->addContained(shared, 0x18);
    two->addContained(shared, 0);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(two->getFileOffset(), one->getFileOffset() + 0x18);
}

TEST_F(LayoutTest, ASegmentThatHoldsTheHeaderStartsTheFile) {
    Segment* const segment = segmentOf(0x10000, 0x100, 0x1000);
    segment->addContained(&module().getElfHeader(), 0);
    segment->addContained(&module().getProgramHeaderTable(), header);
    Section* const section = sized(0x10);
    segment->addContained(section, 0xF0);
    Section* const rest = sized(1);
    rest->setFlags(0);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(segment->getFileOffset(), 0U);
    EXPECT_EQ(module().getProgramHeaderOffset(), header);
    EXPECT_EQ(section->getFileOffset(), 0xF0U);
    EXPECT_EQ(rest->getFileOffset(), 0x100U);
}

TEST_F(LayoutTest, ASegmentStaysWhereItCan) {
    Segment* const segment = segmentOf(0x5000, 0x10, 0x1000);
    segment->setFileOffset(0x3000);
    Segment* const free = segmentOf(0x7000, 0x10, 0x1000);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(segment->getFileOffset(), 0x3000U);
    EXPECT_EQ(free->getFileOffset(), 0x4000U);
    segment->setFileOffset(0x3004); // not where it may lie
    ASSERT_TRUE(layOut());
    EXPECT_EQ(segment->getFileOffset(), 0x1000U);
}

// Also where its first bytes lie behind its start.
TEST_F(LayoutTest, ANewBlockComesBehindThoseThatHaveAPlace) {
    for (const uint64_t distance : {uint64_t{0}, uint64_t{16}}) {
        module().clear();
        module().setType(ET_EXEC);
        Segment* const known = segmentOf(0x5000, 0x10, 0x1000);
        known->setFileOffset(0x1000);
        Segment* const added = segmentOf(0x100000, 0, 1);
        Section* const section = sized(0x4000);
        section->setFlags(0); // so it may be longer than the segment
        added->addContained(section, distance);
        ASSERT_TRUE(layOut());
        EXPECT_EQ(known->getFileOffset(), 0x1000U) << distance;
        EXPECT_EQ(section->getFileOffset(), 0x1010U) << distance;
    }
}

TEST_F(LayoutTest, SectionsWithoutBytesStayInAFileWithSegments) {
    sized(0x10);
    Section* const bss = sized(0x100, SHT_NOBITS);
    bss->setFileOffset(0x2000);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(bss->getFileOffset(), header + 0x10);
    bss->setFileOffset(0x2000);
    segmentOf(0x1000, 0x10, 1);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(bss->getFileOffset(), 0x2000U);
}

TEST_F(LayoutTest, AnAlignmentThatIsNoPowerOfTwoBindsAsFarAsItGoes) {
    Segment* const segment = module().createSegmentAsRead({.m_Type = PT_LOAD,
                                                           .m_VirtualAddress = 4,
                                                           .m_PhysicalAddress = 0,
                                                           .m_MemorySize = 1,
                                                           .m_FileSize = 1,
                                                           .m_Flags = 0,
                                                           .m_Alignment = 24});
    ASSERT_TRUE(layOut());
    EXPECT_EQ(segment->getFileOffset() % 8, 4U);
}

// --- Clashes

TEST_F(LayoutTest, SegmentsClash) {
    segmentOf(0x1000, 0x100, 0x1000)->addContained(segmentOf(0x2000, 0x10, 0x100), 0x10);
    expectClash("Segment #0 and segment #1");
}

TEST_F(LayoutTest, ASegmentAndASectionClash) {
    module().createNullSection(0);
    segmentOf(0x1000, 0x100, 0x1000)->addContained(sized(4, SHT_PROGBITS, 4), 2);
    expectClash("Segment #0 and section #1");
}

TEST_F(LayoutTest, ASegmentAndTheProgramHeadersClash) {
    segmentOf(0x1000, 0x100, 0x1000)->addContained(&module().getProgramHeaderTable(), 2);
    expectClash("Segment #0 and program header table");
}

TEST_F(LayoutTest, ASegmentAndTheSectionHeadersClash) {
    module().createNullSection(0);
    segmentOf(0x1000, 0x100, 0x1000)->addContained(&module().getSectionHeaderTable(), 2);
    expectClash("Segment #0 and section header table");
}

TEST_F(LayoutTest, ASegmentAndTheElfHeaderClash) {
    segmentOf(0x1010, 0x100, 0x1000)->addContained(&module().getElfHeader(), 0);
    expectClash("Segment #0 and ELF header");
}

TEST_F(LayoutTest, TwoSectionsInOneSegmentClash) {
    Segment* const segment = segmentOf(0x1000, 0x100, 1);
    segment->addContained(sized(4, SHT_PROGBITS, 4), 0);
    segment->addContained(sized(4, SHT_PROGBITS, 4), 6);
    expectClash("Segment #0 and section #1");
}

TEST_F(LayoutTest, PlacesThatContradictEachOtherClash) {
    Segment* const segment = segmentOf(0x1000, 0x100, 1);
    Section* const section = sized(4);
    segment->addContained(section, 0);
    segment->addContained(section, 8);
    expectClash("Segment #0 and section #0");
}

TEST_F(LayoutTest, AFailedLayoutChangesNothing) {
    Section* const section = sized(4, SHT_PROGBITS, 4);
    section->setFileOffset(7);
    segmentOf(0x1000, 0x100, 0x1000)->addContained(section, 2);
    EXPECT_FALSE(layOut());
    EXPECT_EQ(section->getFileOffset(), 7U);
}

// --- Growth

// A segment with two sections side by side, and what is free behind them.
class LayoutGrowthTest : public LayoutTest {
protected:
    void SetUp() override {
        LayoutTest::SetUp();
        module().createNullSection(0);
        m_Segment = segmentOf(0x1000, 0x100, 0x1000);
        m_One = sized(0x20);
        m_Two = sized(0x20);
        m_Segment->addContained(m_One, 0x40);
        m_Segment->addContained(m_Two, 0x60);
        ASSERT_TRUE(layOut());
        m_Place = m_Two->getFileOffset();
        m_Handler.m_GoesOn = true; // nobody can let bytes be lost
    }
    // One report, and nothing has moved.
    void expectNoRoom(const std::string& report, uint32_t severity = Severity_Error) {
        EXPECT_FALSE(layOut());
        EXPECT_EQ(m_Handler.m_Reports, (Reports{{severity, report}}));
        EXPECT_EQ(m_Two->getFileOffset(), m_Place);
        module().setErrorHandler(nullptr);
        EXPECT_FALSE(layOut());
    }
    void expectRoom() {
        EXPECT_TRUE(layOut());
        EXPECT_EQ(m_Handler.m_Reports, Reports());
        EXPECT_EQ(m_Two->getFileOffset(), m_Place);
    }
    RawDataBlock* addRawData(uint64_t offset, uint64_t size) {
        RawDataBlock* const block = module().createRawDataBlock(size);
        m_Segment->addContained(block, offset);
        return block;
    }
    static std::string clashOf(const std::string& parts) {
        return parts + " have alignment constraints which cannot both be satisfied given their "
                       "relative offset";
    }

    Segment* m_Segment = nullptr;
    Section* m_One = nullptr;
    Section* m_Two = nullptr;
    uint64_t m_Place = 0;
};

TEST_F(LayoutGrowthTest, TheNextSectionIsInTheWay) {
    m_One->setSize(0x21);
    expectNoRoom("Sections #1 and #2 overlap in the file", Severity_Warning);
}

TEST_F(LayoutGrowthTest, TheReportNamesTheSectionsInOrder) {
    m_Segment->addContained(sized(4), 0x3D); // section 3, in front of section 1
    expectNoRoom("Sections #1 and #3 overlap in the file", Severity_Warning);
}

TEST_F(LayoutGrowthTest, WhatShrinksLeavesRoom) {
    m_One->setSize(4);
    expectRoom();
    m_One->setSize(0x20);
    expectRoom();
}

TEST_F(LayoutGrowthTest, SectionsWithoutBytesAreInNobodysWay) {
    m_Segment->addContained(sized(0x1000, SHT_NOBITS), 0x50);
    m_Segment->addContained(sized(0), 0x50);
    expectRoom();
}

TEST_F(LayoutGrowthTest, TheRestOfTheSegmentIsFree) {
    m_Two->setSize(0xA0);
    expectRoom();
}

TEST_F(LayoutGrowthTest, TheSegmentEnds) {
    m_Two->setSize(0xA1);
    expectNoRoom(clashOf("Segment #0 and section #2"));
}

TEST_F(LayoutGrowthTest, ASegmentThatGrowsWithItHasRoom) {
    m_Two->setSize(0xA1);
    m_Segment->setFileSize(0x101);
    expectRoom();
}

TEST_F(LayoutGrowthTest, SectionsThatAreNotLoadedMayReachBeyondTheSegment) {
    m_Two->setFlags(0);
    m_Two->setSize(0xA1);
    expectRoom();
}

TEST_F(LayoutGrowthTest, SegmentsThatAreNotMappedMayEndInASection) {
    constexpr uint32_t readOnlyAfterStart = 0x6474E552;
    Segment* const part = segmentOf(0x1060, 0x10, 1);
    part->setType(readOnlyAfterStart);
    m_Segment->addContained(part, 0x60);
    part->addContained(m_Two, 0);
    expectRoom();
    // As nothing has grown, it does not matter what it is called.
    part->setType(PT_DYNAMIC);
    expectRoom();
    m_Two->setSize(0x21);
    expectNoRoom(clashOf("Segment #1 and section #2"));
}

TEST_F(LayoutGrowthTest, ANewSegmentHoldsAllOfWhatIsLoaded) {
    Segment* const part = segmentOf(0x1060, 0x10, 1);
    m_Segment->addContained(part, 0x60);
    part->addContained(m_Two, 0);
    expectNoRoom(clashOf("Segment #1 and section #2"));
}

TEST_F(LayoutGrowthTest, ASegmentDoesNotShrinkIntoASection) {
    m_Segment->setFileSize(0x7F);
    expectNoRoom(clashOf("Segment #0 and section #2"));
}

TEST_F(LayoutGrowthTest, WhatIsPutElsewhereHasToFitThere) {
    Segment* const part = segmentOf(0x1060, 0x10, 1);
    part->setType(PT_NULL);
    m_Segment->addContained(part, 0x60);
    expectRoom();
    part->setType(PT_LOAD);
    part->addContained(m_Two, 0x8);
    expectNoRoom(clashOf("Segment #1 and section #2"));
}

TEST_F(LayoutGrowthTest, ZerosThatBelongToNothingAreFree) {
    RawDataBlock* const block = addRawData(0x80, 0x40);
    m_Two->setSize(0x60);
    expectRoom();
    m_Two->setSize(0x61); // reaches beyond the block
    expectRoom();
    const uint8_t byte = 1;
    block->write(0x3F, &byte, 1);
    m_Two->setSize(0x5F);
    expectRoom();
    m_Two->setSize(0x60);
    expectNoRoom(clashOf("Segment #0 and section #2"));
}

TEST_F(LayoutGrowthTest, RawDataInFrontIsInNobodysWay) {
    addRawData(0x3F, 1)->getContents().getData()[0] = 1;
    expectRoom();
}

TEST_F(LayoutGrowthTest, RawDataWithinASectionAreLost) {
    addRawData(0x44, 8)->getContents().getData()[7] = 1;
    expectNoRoom(clashOf("Segment #0 and section #1"));
}

TEST_F(LayoutGrowthTest, TheProgramHeadersGrowIntoASection) {
    m_Segment->addContained(&module().getProgramHeaderTable(), 0x20);
    expectRoom();
    segmentOf(0, 0, 1);
    expectNoRoom(clashOf("Segment #0 and program header table"));
}

TEST_F(LayoutGrowthTest, TheProgramHeadersOutgrowTheirSegment) {
    Segment* const table = segmentOf(0x1080, 64, 4);
    table->setType(PT_PHDR);
    m_Segment->addContained(table, 0x80);
    table->addContained(&module().getProgramHeaderTable(), 0);
    m_Segment->addContained(&module().getProgramHeaderTable(), 0x80);
    expectRoom();
    segmentOf(0, 0, 1);
    expectNoRoom(clashOf("Segment #1 and program header table"));
}

TEST_F(LayoutGrowthTest, TheSectionHeadersGrowIntoASection) {
    m_Segment->addContained(&module().getSectionHeaderTable(), 0x80);
    m_Segment->addContained(sized(4), 0xF8);
    expectNoRoom(clashOf("Segment #0 and section header table"));
}

TEST_F(LayoutGrowthTest, TheElfHeaderIsInTheWay) {
    m_Segment->addContained(&module().getElfHeader(), 0);
    m_Segment->addContained(sized(4), header - 1);
    expectNoRoom(clashOf("Segment #0 and ELF header"));
}

// Blocks have no distances that anybody knows, so the next one moves.
TEST_F(LayoutGrowthTest, TheNextBlockMoves) {
    Segment* const next = segmentOf(0x2000, 0x10, 0x1000);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(next->getFileOffset(), 0x2000U);
    m_Segment->setFileSize(0x1010);
    m_Two->setSize(0xFA8);
    expectRoom();
    EXPECT_EQ(next->getFileOffset(), 0x3000U);
}

// --- Limits

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

// Every segment holds every section.
TEST_F(LayoutTest, TooManyRelationsAreOutOfMemory) {
    std::vector<Section*> sections;
    for (int i = 0; i < 2100; ++i) {
        sections.push_back(sized(1));
    }
    for (int i = 0; i < 2100; ++i) {
        Segment* const segment = segmentOf(0, 1, 1);
        for (Section* const section : sections) {
            segment->addContained(section, 0);
        }
    }
    EXPECT_FALSE(layOut());
    EXPECT_EQ(m_Handler.m_Reports, (Reports{{Severity_Fatal, "Out of memory"}}));
}

// In each of these, a look at every part for each of them would be hundreds of millions.
constexpr uint32_t veryMany = 20000;

TEST_F(LayoutTest, VeryManySegmentsWithASectionEach) {
    for (uint32_t i = 0; i < veryMany; ++i) {
        segmentOf(0, 4, 4)->addContained(sized(4, SHT_PROGBITS, 4), 0);
    }
    ASSERT_TRUE(layOut());
    for (uint32_t i = 0; i < veryMany; ++i) {
        ASSERT_EQ(module().getSection(i)->getFileOffset(), header + 32 * veryMany + 4 * i);
    }
}

TEST_F(LayoutTest, VeryManySegmentsInASection) {
    Section* const section = sized(veryMany);
    for (uint32_t i = 0; i < veryMany; ++i) {
        section->addContained(segmentOf(i, 1, 1), i);
    }
    ASSERT_TRUE(layOut());
    for (uint32_t i = 0; i < veryMany; ++i) {
        ASSERT_EQ(module().getSegment(i)->getFileOffset(), section->getFileOffset() + i);
    }
}

using LayoutOfFileTest = ReaderTest;

// Here the reader finds out what lies where.
TEST_F(LayoutOfFileTest, VeryManySegmentsInOne) {
    testsupport::ElfBuilder builder({true, true}, testsupport::elf::ET_EXEC);
    for (uint32_t i = 0; i < veryMany; ++i) {
        builder.add({.flags = SHF_ALLOC, .contents = "abcd", .mapped = true, .alignment = 4});
    }
    builder.addSegment({.firstSection = 1, .lastSection = veryMany, .alignment = 4});
    for (uint32_t i = 1; i <= veryMany; ++i) {
        builder.addSegment({.type = PT_NOTE, .firstSection = i, .lastSection = i, .alignment = 4});
    }
    ASSERT_TRUE(read(builder.bytes()));
    std::vector<uint64_t> places;
    for (const Section* const section : module().getSections()) {
        places.push_back(section->getFileOffset());
    }
    EXPECT_TRUE(layOutElfFile(&module()));
    EXPECT_EQ(reports(), Reports());
    for (uint32_t i = 1; i <= veryMany; ++i) {
        ASSERT_EQ(section(i).getFileOffset(), places[i]);
        ASSERT_EQ(section(i).getContainerCount(), 2U);
    }
}

TEST_F(LayoutTest, WithoutAHandlerAClashIsAFailure) {
    module().setErrorHandler(nullptr);
    segmentOf(0x1010, 0x100, 0x1000)->addContained(&module().getElfHeader(), 0);
    EXPECT_FALSE(layOut());
}

} // namespace
} // namespace elfext::test
