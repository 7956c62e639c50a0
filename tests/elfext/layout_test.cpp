// Where the parts of a file come to lie.
#include "tests/elfext/layout_fixtures.h"

namespace elfext::test {
namespace {

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

// What counts is where a block's first bytes lie, not where its first segment is said to start.
TEST_F(LayoutTest, BlocksThatCanStayDoNotPushEachOther) {
    Segment* const early = segmentOf(0x3000, 0, 0x1000);
    early->setFileOffset(0x3000);
    Section* const section = sized(0x10);
    section->setFlags(0); // so it may be longer than the segment
    early->addContained(section, 0x2000);
    Segment* const between = segmentOf(0x4000, 0x10, 0x1000);
    between->setFileOffset(0x4000);
    ASSERT_TRUE(layOut());
    EXPECT_EQ(early->getFileOffset(), 0x3000U);
    EXPECT_EQ(section->getFileOffset(), 0x5000U);
    EXPECT_EQ(between->getFileOffset(), 0x4000U);
}

// Wherever the new one starts, and whatever its number is.
TEST_F(LayoutTest, ANewSegmentDoesNotMoveWhatItIsPutOver) {
    struct Row {
        uint32_t number;
        uint64_t inKnown; // where the section lies
        uint64_t inAdded;
    };
    for (const Row row : {Row{0, 0, 0}, Row{0, 8, 0}, Row{0, 0, 8}, Row{1, 8, 0}, Row{1, 0, 8}}) {
        module().clear();
        module().setType(ET_EXEC);
        Segment* const known = segmentOf(0x5000, 0x20, 0x1000);
        known->setFileOffset(0x3000);
        Section* const section = sized(0x10);
        known->addContained(section, row.inKnown);
        Segment* const added = segmentOf(0x5000 + row.inKnown - row.inAdded, 0x20, 1);
        added->addContained(section, row.inAdded);
        module().setSegmentIndex(added, row.number);
        ASSERT_TRUE(layOut());
        EXPECT_EQ(known->getFileOffset(), 0x3000U);
        EXPECT_EQ(section->getFileOffset(), 0x3000 + row.inKnown);
        EXPECT_EQ(added->getFileOffset(), 0x3000 + row.inKnown - row.inAdded);
    }
}

// Of two that say different things, the first one counts.
TEST_F(LayoutTest, ASegmentTellsWhereTheOthersOfItsBlockLie) {
    Segment* const one = segmentOf(0x5000, 0x10, 0x1000);
    Segment* const two = segmentOf(0x5000, 0x10, 0x1000);
    Section* const shared = sized(0x10);
    one->addContained(shared, 0);
    two->addContained(shared, 0);
    one->setFileOffset(0x3000);
    two->setFileOffset(0x7000);
    ASSERT_TRUE(layOut());
    for (const FileRegion* const part :
         {static_cast<FileRegion*>(one), static_cast<FileRegion*>(two),
          static_cast<FileRegion*>(shared)}) {
        uint64_t offset = 0;
        uint64_t size = 0;
        EXPECT_TRUE(part->getFileRange(&offset, &size));
        EXPECT_EQ(offset, 0x3000U);
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

// --- Sections that no segment holds

TEST_F(LayoutTest, NewZerosThatAreLoadedNeedASegment) {
    const Reports outside = {
        {Severity_Warning, "Loadable section #1 is not contained in a loadable segment"}};
    module().createNullSection(0);
    Segment* const segment = segmentOf(0x1000, 0x10, 1);
    Section* const zeros = sized(0x100, SHT_NOBITS);
    EXPECT_FALSE(layOut());
    EXPECT_EQ(m_Handler.m_Reports, outside);
    segment->addContained(zeros, 0x10);
    EXPECT_TRUE(layOut());
    EXPECT_EQ(zeros->getFileOffset(), segment->getFileOffset() + 0x10);
    EXPECT_EQ(m_Handler.m_Reports, outside);
}

TEST_F(LayoutTest, ZerosOfAFileAreLeftWhereTheyAre) {
    segmentOf(0x1000, 0x10, 1);
    sized(0x100, SHT_NOBITS)->setFileOffset(0x2000);
    EXPECT_TRUE(layOut());
    EXPECT_EQ(m_Handler.m_Reports, Reports());
}

TEST_F(LayoutTest, SectionsThatTakeNoMemoryNeedNoSegment) {
    segmentOf(0x1000, 0x10, 1);
    sized(0);
    sized(0, SHT_NOBITS);
    sized(0x100, SHT_NOBITS)->setFlags(SHF_WRITE);
    EXPECT_TRUE(layOut());
    EXPECT_EQ(m_Handler.m_Reports, Reports());
}

TEST_F(LayoutTest, WithoutSegmentsNothingIsOutside) {
    sized(0x100);
    sized(0x100, SHT_NOBITS);
    EXPECT_TRUE(layOut());
    EXPECT_EQ(m_Handler.m_Reports, Reports());
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

// --- Limits

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
