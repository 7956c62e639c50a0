// Which regions contain which, and the regions of the headers.
#include "elfext/interface/data_structure.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using FileRegionTest = ModelTest;
using FileRegionDeathTest = ModelTest;

std::vector<ContainedRegion> containedIn(FileRegion& region) {
    std::vector<ContainedRegion> contained;
    for (uint32_t i = 0; i < region.getContainedCount(); ++i) {
        contained.push_back(region.getContained(i));
    }
    return contained;
}

std::vector<FileRegion*> containersOf(FileRegion& region) {
    std::vector<FileRegion*> containers;
    for (uint32_t i = 0; i < region.getContainerCount(); ++i) {
        containers.push_back(region.getContainer(i));
    }
    return containers;
}

TEST_F(FileRegionTest, ContainerAndContainedKnowEachOther) {
    Segment* const segment = module().createSegment(SegmentFields());
    Section* const one = makeSection();
    Section* const two = makeSection();
    EXPECT_EQ(segment->getContainedCount(), 0U);
    EXPECT_EQ(one->getContainerCount(), 0U);
    segment->addContained(one, 16);
    segment->addContained(two, 4);
    two->addContained(one, 12);
    EXPECT_EQ(containedIn(*segment), (std::vector<ContainedRegion>{{one, 16}, {two, 4}}));
    EXPECT_EQ(containersOf(*one), (std::vector<FileRegion*>{segment, two}));
    EXPECT_EQ(containersOf(*two), std::vector<FileRegion*>{segment});
    EXPECT_EQ(containersOf(*segment), std::vector<FileRegion*>{});
    segment->forgetLinks();
    EXPECT_EQ(segment->getContainedCount(), 0U);
}

TEST_F(FileRegionDeathTest, NothingContainsItself) {
    Section* const section = makeSection();
    EXPECT_FAULT(section->addContained(section, 0), "elfext/src/file_region", "contained != this");
    EXPECT_FAULT(section->addContained(nullptr, 0), "elfext/src/file_region", "contained != NULL");
    EXPECT_FAULT(section->getContained(0), "elfext/interface/fast_array", "index < m_Used");
}

// Says that one region is 8 bytes into another.
class PairLinker final : public FileRegionLinker {
public:
    PairLinker(FileRegion* container, FileRegion* contained)
        : m_Container(container), m_Contained(contained) {}
    void findLinks(FileRegion& region, fast_array<ContainedRegion>& contained,
                   fast_array<FileRegion*>& containers) override {
        ++calls;
        if (&region == m_Container) {
            contained.add({m_Contained, 8});
        }
        if (&region == m_Contained) {
            containers.add(m_Container);
        }
    }
    uint32_t calls = 0;

private:
    FileRegion* m_Container;
    FileRegion* m_Contained;
};

TEST_F(FileRegionTest, WhatALinkerFindsComesFirst) {
    Segment* const segment = module().createSegment(SegmentFields());
    Section* const one = makeSection();
    Section* const two = makeSection();
    PairLinker linker(segment, one);
    segment->setLinker(&linker);
    one->setLinker(&linker);
    segment->addContained(two, 4);
    two->addContained(one, 0);
    EXPECT_EQ(linker.calls, 0U);
    EXPECT_EQ(containedIn(*segment), (std::vector<ContainedRegion>{{one, 8}, {two, 4}}));
    EXPECT_EQ(linker.calls, 1U);
    EXPECT_EQ(containersOf(*one), (std::vector<FileRegion*>{segment, two}));
    EXPECT_EQ(containersOf(*segment), std::vector<FileRegion*>{});
    EXPECT_EQ(linker.calls, 2U);
}

TEST_F(FileRegionTest, ForgottenLinksAreNotLookedFor) {
    Section* const one = makeSection();
    PairLinker linker(one, nullptr);
    one->setLinker(&linker);
    one->forgetLinks();
    EXPECT_EQ(one->getContainedCount(), 0U);
    EXPECT_EQ(linker.calls, 0U);
}

// --- Headers

TEST_F(FileRegionTest, TheElfHeaderIsAtTheStart) {
    module().setElfHeaderSize(64);
    ELFHeader& header = module().getElfHeader();
    uint64_t offset = 1;
    uint64_t size = 0;
    EXPECT_TRUE(header.getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0U);
    EXPECT_EQ(size, 64U);
    header.setAlignment(16);
    uint64_t congruence = 1;
    uint64_t alignment = 0;
    header.getFileConstraints(&congruence, &alignment);
    EXPECT_EQ(congruence, 0U);
    EXPECT_EQ(alignment, 1U);
    header.setFileOffset(0);
    EXPECT_EQ(header.getDataStore(), nullptr);
    const DataStructure* const item = header.createDataStructure(region(), 0);
    EXPECT_EQ(item->getKind(), DataStructure::Kind_ElfHeader);
    EXPECT_EQ(item->getSize(), 64U);
    EXPECT_EQ(item->getFileRegion(), &header);
}

TEST_F(FileRegionDeathTest, TheElfHeaderIsNowhereElse) {
    EXPECT_FAULT(module().getElfHeader().setFileOffset(1), "elfext/src/elf_header", "offset == 0");
}

TEST_F(FileRegionTest, TablesAreAsLongAsTheirEntries) {
    const auto test = [](ELFHeaderTable& table, DataStructure::Kind kind) {
        EXPECT_EQ(table.getEntrySize(), 0U);
        EXPECT_EQ(table.getCount(), 0U);
        table.setEntrySize(56);
        table.setCount(0x10000000);
        uint64_t offset = 1;
        uint64_t size = 0;
        EXPECT_FALSE(table.getFileRange(&offset, &size));
        EXPECT_EQ(offset, 0U);
        EXPECT_EQ(size, 0x380000000U);
        table.setFileOffset(0x123456789A);
        EXPECT_TRUE(table.getFileRange(&offset, &size));
        EXPECT_EQ(offset, 0x123456789AU);
        uint64_t congruence = 1;
        uint64_t alignment = 0;
        table.getFileConstraints(&congruence, &alignment);
        EXPECT_EQ(congruence, 0U);
        EXPECT_EQ(alignment, 4U);
        table.setAlignment(8);
        table.getFileConstraints(&congruence, &alignment);
        EXPECT_EQ(alignment, 8U);
        EXPECT_EQ(table.createDataStructure(region(), 0)->getKind(), kind);
        table.reset();
        table.getFileConstraints(&congruence, &alignment);
        EXPECT_EQ(alignment, 4U);
        EXPECT_FALSE(table.getFileRange(&offset, &size));
        EXPECT_EQ(size, 0U);
    };
    test(module().getSectionHeaderTable(), DataStructure::Kind_SectionHeaderTable);
    test(module().getProgramHeaderTable(), DataStructure::Kind_SegmentHeaderTable);
}

TEST_F(FileRegionDeathTest, ATablesAlignmentIsAPowerOfTwo) {
    EXPECT_FAULT(module().getSectionHeaderTable().setAlignment(6), "elfext/src/elf_header_table",
                 "(alignment & ~(alignment & (0 - alignment))) == 0");
}

TEST_F(FileRegionTest, LayoutItemsAreNumbered) {
    EXPECT_EQ(DataStructure::Kind_ElfHeader, 0U);
    EXPECT_EQ(DataStructure::Kind_SectionHeaderTable, 1U);
    EXPECT_EQ(DataStructure::Kind_SegmentHeaderTable, 2U);
    EXPECT_EQ(DataStructure::Kind_Section, 3U);
}

} // namespace
} // namespace elfext::test
