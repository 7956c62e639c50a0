// Parts of segments that have changed their size: whether they still have room.
#include "elfext/interface/prune_criteria.h"
#include "tests/elfext/layout_fixtures.h"

namespace elfext::test {
namespace {

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

// --- What was longer than its segment, and is still

// In the file, a section and a table that the segments around them cut off.
class LayoutOfCutPartsTest : public LayoutGrowthTest {
protected:
    void SetUp() override {
        LayoutGrowthTest::SetUp();
        m_Segment->setFileSize(0x200);
        m_Table = segmentOf(0x1080, 64, 4);
        m_Extra[0] = segmentOf(0, 0, 1);
        m_Extra[1] = segmentOf(0, 0, 1);
        m_Segment->addContained(m_Table, 0x80);
        m_Table->addContained(&module().getProgramHeaderTable(), 0);
        m_Last = sized(0x20);
        m_Segment->addContained(m_Last, 0x1F0);
        m_Last->setFlags(0);
        m_Table->setType(PT_NULL);
        ASSERT_TRUE(layOut()); // as the parts are not loaded
        m_Last->setFlags(SHF_ALLOC);
        m_Table->setType(PT_PHDR);
        expectRoom(); // as they were so in the file
    }
    bool removeExtra(size_t number) {
        ManualPruneCriteria criteria;
        criteria.addSegment(m_Extra[number]);
        module().prune(criteria);
        return layOut();
    }
    std::string sectionClash() const {
        return clashOf("Segment #0 and section #" + std::to_string(m_Last->getIndex()));
    }

    Segment* m_Table = nullptr;
    Segment* m_Extra[2] = {};
    Section* m_Last = nullptr;
};

TEST_F(LayoutOfCutPartsTest, ASectionMayShrink) {
    for (const uint64_t size : {0x1FU, 0x18U, 0x11U, 0x10U, 1U, 0U}) {
        m_Last->setSize(size);
        expectRoom();
    }
}

TEST_F(LayoutOfCutPartsTest, ASectionThatHasShrunkDoesNotGrowAgain) {
    m_Last->setSize(0x18);
    expectRoom();
    m_Last->setSize(0x19);
    expectNoRoom(sectionClash());
}

TEST_F(LayoutOfCutPartsTest, ASectionDoesNotGrow) {
    m_Last->setSize(0x21);
    expectNoRoom(sectionClash());
}

// Wherever somebody says that it lies.
TEST_F(LayoutOfCutPartsTest, ASegmentThatHadNoBytesHoldsAllOfASection) {
    m_Extra[0]->setFileOffset(m_Last->getFileOffset());
    m_Extra[0]->setFileSize(0x18);
    m_Segment->addContained(m_Extra[0], 0x1F0);
    m_Extra[0]->addContained(m_Last, 0);
    EXPECT_FALSE(layOut());
    EXPECT_EQ(sentences(),
              Names{clashOf("Segment #2 and section #" + std::to_string(m_Last->getIndex()))});
    m_Extra[0]->setFileSize(0x20);
    EXPECT_TRUE(layOut());
}

TEST_F(LayoutOfCutPartsTest, TheSegmentMayGrow) {
    for (const uint64_t size : {0x201U, 0x20FU, 0x210U, 0x211U}) {
        m_Segment->setFileSize(size);
        expectRoom();
    }
}

TEST_F(LayoutOfCutPartsTest, TheSegmentDoesNotShrink) {
    m_Last->setSize(0x18);
    m_Segment->setFileSize(0x1FF);
    expectNoRoom(sectionClash());
}

TEST_F(LayoutOfCutPartsTest, TheProgramHeadersMayBecomeFewer) {
    EXPECT_TRUE(removeExtra(0));
    EXPECT_TRUE(removeExtra(1));
    EXPECT_EQ(m_Handler.m_Reports, Reports());
    segmentOf(0, 0, 1);
    expectNoRoom(clashOf("Segment #1 and program header table"));
}

} // namespace
} // namespace elfext::test
