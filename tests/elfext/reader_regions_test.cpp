// Which part of a file lies in which: segments, sections and headers, sections without bytes, and
// raw data.
#include "tests/elfext/reader_fixtures.h"

#include "elfext/interface/raw_data_block.h"
#include "tests/support/elf_fields.h"

#include <algorithm>

namespace elfext::test {
namespace {

using namespace testsupport;

class ReaderRegionsTest : public ReaderFormatTest {
protected:
    using Contained = std::vector<std::pair<FileRegion*, uint64_t>>;

    static Contained containedIn(FileRegion& region) {
        Contained list;
        for (uint32_t i = 0; i < region.getContainedCount(); ++i) {
            list.emplace_back(region.getContained(i).m_Region, region.getContained(i).m_Offset);
        }
        return list;
    }
    static std::vector<FileRegion*> containersOf(FileRegion& region) {
        std::vector<FileRegion*> list;
        for (uint32_t i = 0; i < region.getContainerCount(); ++i) {
            list.push_back(region.getContainer(i));
        }
        return list;
    }
    Segment& segment(uint32_t index) { return *module().getSegment(index); }
    bool contains(FileRegion& container, FileRegion& region) {
        const std::vector<FileRegion*> containers = containersOf(region);
        return std::find(containers.begin(), containers.end(), &container) != containers.end();
    }

    // Sections "a", "b", ... of these sizes, one behind the other.
    static ElfBuilder builderOf(ElfFormat format, uint16_t type, const std::vector<size_t>& sizes) {
        ElfBuilder builder(format, type);
        for (size_t i = 0; i < sizes.size(); ++i) {
            const std::string name(1, static_cast<char>('a' + i));
            builder.add({.name = name, .contents = std::string(sizes[i], name[0])});
        }
        return builder;
    }
};
INSTANTIATE_FORMATS(ReaderRegionsTest);

TEST_P(ReaderRegionsTest, RelocatableFileHasNoRelations) {
    ASSERT_TRUE(read(richElf(format())));
    for (size_t i = 0; i < module().getSectionCount(); ++i) {
        EXPECT_EQ(section(i).getContainedCount(), 0U);
        EXPECT_EQ(section(i).getContainerCount(), 0U);
    }
    EXPECT_EQ(module().getElfHeader().getContainerCount(), 0U);
    EXPECT_EQ(module().getRawDataBlocks().getSize(), 0U);
}

// Everything in the list order: segments, sections, the ELF header and the two tables.
TEST_P(ReaderRegionsTest, SegmentContainsItsParts) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {8, 16});
    builder.addSegment({.firstSection = 0, .lastSection = 2});
    builder.addSegment({.firstSection = 2, .lastSection = 2});
    const std::string file = builder.bytes();
    ASSERT_TRUE(read(file));
    const uint64_t first = placeOf(file, 1);
    const uint64_t second = placeOf(file, 2);
    EXPECT_EQ(segment(0).getFileOffset(), 0U);
    const Contained expected = {
        {&segment(1), second},
        {&section(1), first},
        {&section(2), second},
        {&module().getElfHeader(), 0},
        {&module().getProgramHeaderTable(), module().getProgramHeaderOffset()}};
    Contained actual = containedIn(segment(0));
    // Sections without bytes and raw data come behind.
    ASSERT_GE(actual.size(), expected.size());
    actual.resize(expected.size());
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(containersOf(section(2)), (std::vector<FileRegion*>{&segment(0), &segment(1)}));
    EXPECT_EQ(containersOf(section(1)), std::vector<FileRegion*>{&segment(0)});
    EXPECT_EQ(containersOf(module().getElfHeader()), std::vector<FileRegion*>{&segment(0)});
}

// The ELF header takes as many bytes as it says.
TEST_P(ReaderRegionsTest, SizeOfTheElfHeader) {
    for (const uint64_t size : {uint64_t{0}, elfHeaderSize(format())}) {
        ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {8});
        builder.addSegment({.firstSection = 0, .lastSection = 1});
        builder.header(HeaderField::HeaderSize, size);
        ASSERT_TRUE(read(builder.bytes()));
        EXPECT_EQ(module().getElfHeader().getContainerCount(), size != 0 ? 1U : 0U);
    }
}

// Of two with one start, the one that is listed earlier contains the other.
TEST_P(ReaderRegionsTest, EqualStarts) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {8});
    builder.addSegment({.type = elf::PT_NOTE, .firstSection = 1, .lastSection = 1});
    builder.addSegment({.firstSection = 1, .lastSection = 1});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(containersOf(segment(0)), std::vector<FileRegion*>());
    EXPECT_EQ(containersOf(segment(1)), std::vector<FileRegion*>{&segment(0)});
    EXPECT_EQ(containersOf(section(1)), (std::vector<FileRegion*>{&segment(0), &segment(1)}));
}

// The one that starts earlier contains the other also where that reaches further.
TEST_P(ReaderRegionsTest, PartsThatOverlapInPart) {
    ElfBuilder builder = builderOf(format(), elf::ET_REL, {16, 16});
    std::string file = builder.bytes();
    setSectionField(file, 2, SectionField::Offset, placeOf(file, 1) - 4);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(containedIn(section(2)), (Contained{{&section(1), 4}}));
    EXPECT_EQ(containersOf(section(1)), std::vector<FileRegion*>{&section(2)});
    EXPECT_EQ(reports(), Reports({{1, "Sections #1 and #2 overlap in the file"}}));
}

TEST_P(ReaderRegionsTest, TouchingPartsDoNotOverlap) {
    ASSERT_TRUE(read(builderOf(format(), elf::ET_REL, {16, 16}).bytes()));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(section(1).getContainedCount(), 0U);
}

// Those of the first section first.
TEST_P(ReaderRegionsTest, OrderOfOverlapReports) {
    std::string file = builderOf(format(), elf::ET_REL, {16, 16, 16, 16, 4}).bytes();
    const uint64_t place = placeOf(file, 1);
    setSectionField(file, 4, SectionField::Offset, place + 8);
    setSectionField(file, 3, SectionField::Offset, placeOf(file, 2) + 8);
    setSectionField(file, 2, SectionField::Offset, placeOf(file, 2) + 4);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports(), Reports({{1, "Sections #1 and #4 overlap in the file"},
                                  {1, "Sections #2 and #3 overlap in the file"},
                                  {1, "Sections #2 and #4 overlap in the file"}}));
}

// Two parts of a third one overlap it both, though not each other.
TEST_P(ReaderRegionsTest, PartsOfOneSection) {
    std::string file = builderOf(format(), elf::ET_REL, {32, 4, 4}).bytes();
    setSectionField(file, 2, SectionField::Offset, placeOf(file, 1) + 8);
    setSectionField(file, 3, SectionField::Offset, placeOf(file, 1) + 20);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports(), Reports({{1, "Sections #1 and #2 overlap in the file"},
                                  {1, "Sections #1 and #3 overlap in the file"}}));
    EXPECT_EQ(containersOf(section(3)), std::vector<FileRegion*>{&section(1)});
}

TEST_P(ReaderRegionsTest, AllPairsOfOneStretch) {
    std::string file = builderOf(format(), elf::ET_REL, {8, 8, 8}).bytes();
    for (const size_t index : {2U, 3U}) {
        setSectionField(file, index, SectionField::Offset, placeOf(file, 1));
    }
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports(), Reports({{1, "Sections #1 and #2 overlap in the file"},
                                  {1, "Sections #1 and #3 overlap in the file"},
                                  {1, "Sections #2 and #3 overlap in the file"}}));
    EXPECT_EQ(containedIn(section(1)), (Contained{{&section(2), 0}, {&section(3), 0}}));
}

// What takes no bytes of the file overlaps nothing.
TEST_P(ReaderRegionsTest, PartsWithoutBytes) {
    ElfBuilder builder = builderOf(format(), elf::ET_REL, {64});
    builder.add({.name = "bss", .type = elf::SHT_NOBITS, .noBitsSize = 64});
    builder.add({.name = "empty"});
    builder.add({.name = "null", .type = elf::SHT_NULL});
    std::string file = builder.bytes();
    for (const size_t index : {2U, 3U, 4U}) {
        setSectionField(file, index, SectionField::Offset, placeOf(file, 1) + 1);
    }
    setSectionField(file, 4, SectionField::Size, 10);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(section(1).getContainedCount(), 0U);
}

// Section 0 may count the sections in its size; it takes no bytes by that.
TEST_P(ReaderRegionsTest, CountInSection0) {
    const RichElf rich = richElf(format(), elf::ET_EXEC);
    std::string file = rich.bytes();
    setHeaderField(file, HeaderField::SectionHeaderCount, 0);
    setSectionField(file, 0, SectionField::Size, rich.names + 1);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(section(0).getContainerCount(), 0U);
    EXPECT_TRUE(reports().empty());
}

// Ends that wrap count as the end of all numbers.
TEST_P(ReaderRegionsTest, SegmentThatWraps) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {8});
    const uint64_t top = format().is64 ? UINT64_MAX : UINT32_MAX;
    builder.addSegment({.type = elf::PT_NOTE,
                        .firstSection = 1,
                        .lastSection = 1,
                        .raw = {{SegmentField::Offset, top - 8}, {SegmentField::FileSize, top}}});
    EXPECT_FALSE(read(builder.bytes()));
    EXPECT_EQ(reports(), Reports({{0, "I/O error writing file 'test.o': Unknown error -1"}}));
}

// --- Sections without bytes

struct EmptySection {
    uint64_t offset;
    uint64_t address;
    uint64_t size; // of SHT_NOBITS, 0 for an empty plain section
};

struct EmptySegment {
    uint32_t type;
    uint64_t offset;
    uint64_t fileSize;
    uint64_t address;
    uint64_t memorySize;
};

constexpr uint32_t plainType = 0x6474E551; // never loaded

// Reads segments over a file of 0x1000 bytes with one section without bytes, and gives the number
// of the segment that the section has joined, -1 for none.
class EmptySectionTest : public ReaderRegionsTest {
protected:
    int segmentOf(const EmptySection& empty, const std::vector<EmptySegment>& segments) {
        ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {0x1000});
        builder.add({.name = "empty",
                     .type = empty.size != 0 ? elf::SHT_NOBITS : elf::SHT_PROGBITS,
                     .raw = {{SectionField::Offset, empty.offset},
                             {SectionField::Address, empty.address},
                             {SectionField::Size, empty.size}}});
        for (const EmptySegment& row : segments) {
            builder.addSegment({.type = row.type,
                                .firstSection = 1,
                                .lastSection = 1,
                                .raw = {{SegmentField::Offset, row.offset},
                                        {SegmentField::FileSize, row.fileSize},
                                        {SegmentField::VirtualAddress, row.address},
                                        {SegmentField::MemorySize, row.memorySize}}});
        }
        EXPECT_TRUE(read(builder.bytes()));
        const std::vector<FileRegion*> containers = containersOf(section(2));
        EXPECT_LE(containers.size(), 1U);
        if (containers.empty()) {
            return -1;
        }
        const Contained contained = containedIn(*containers[0]);
        FileRegion* const region = &section(2);
        const auto place = std::find_if(contained.begin(), contained.end(),
                                        [=](const auto& entry) { return entry.first == region; });
        EXPECT_NE(place, contained.end());
        const auto& chosen = static_cast<const Segment&>(*containers[0]);
        EXPECT_EQ(place->second, empty.offset - chosen.getFileOffset());
        return static_cast<int>(chosen.getIndex());
    }
};
INSTANTIATE_FORMATS(EmptySectionTest);

TEST_P(EmptySectionTest, LoadableSegmentTakesWhatItsFileRangeHolds) {
    const EmptySegment load = {elf::PT_LOAD, 0x200, 0x100, 0x8000, 0x180};
    EXPECT_EQ(segmentOf({0x200, 0, 0}, {load}), 0);
    EXPECT_EQ(segmentOf({0x2FF, 0, 0}, {load}), 0);
    EXPECT_EQ(segmentOf({0x300, 0, 0}, {load}), 0);
    EXPECT_EQ(segmentOf({0x1FF, 0, 0}, {load}), -1);
    EXPECT_EQ(segmentOf({0x301, 0, 0}, {load}), -1);
    EXPECT_EQ(segmentOf({0x300, 0, 0x180}, {load}), 0);
    EXPECT_EQ(segmentOf({0x300, 0, 0x181}, {load}), -1);
}

TEST_P(EmptySectionTest, OtherSegmentTakesWhatFollowsItsBytes) {
    const EmptySegment other = {plainType, 0x200, 0x100, 0x8000, 0x180};
    EXPECT_EQ(segmentOf({0x300, 0, 0}, {other}), 0);
    EXPECT_EQ(segmentOf({0x300, 0, 0x80}, {other}), 0);
    EXPECT_EQ(segmentOf({0x300, 0, 0x81}, {other}), -1);
    EXPECT_EQ(segmentOf({0x200, 0, 0}, {other}), -1);
    EXPECT_EQ(segmentOf({0x2FF, 0, 0}, {other}), -1);
    EXPECT_EQ(segmentOf({0x300, 0, 0}, {{plainType, 0x200, 0x100, 0, 0xFF}}), -1);
}

TEST_P(EmptySectionTest, LaterLoadableSegmentNeedsTheAddress) {
    const EmptySegment first = {elf::PT_LOAD, 0x200, 0x100, 0x8000, 0x100};
    const EmptySegment second = {elf::PT_LOAD, 0x300, 0x100, 0x9000, 0x100};
    // Where the addresses say nothing, the first one stays.
    EXPECT_EQ(segmentOf({0x300, 0, 0}, {first, second}), 0);
    EXPECT_EQ(segmentOf({0x300, 0x9000, 0x10}, {first, second}), 1);
    EXPECT_EQ(segmentOf({0x300, 0x8010, 0x10}, {first, second}), 0);
    // Inside of both: the first one stays.
    EXPECT_EQ(
        segmentOf({0x300, 0x8010, 0x10}, {first, {elf::PT_LOAD, 0x300, 0x100, 0x8000, 0x100}}), 0);
    // An end that just fits, and one that does not.
    EXPECT_EQ(segmentOf({0x300, 0x90F0, 0x10}, {first, second}), 1);
    EXPECT_EQ(segmentOf({0x300, 0x90F1, 0x10}, {first, second}), 0);
}

TEST_P(EmptySectionTest, OtherSegmentEndsTheSearch) {
    const EmptySegment load = {elf::PT_LOAD, 0x200, 0x100, 0x8000, 0x100};
    const EmptySegment other = {plainType, 0x280, 0x80, 0x8080, 0x80};
    const EmptySegment better = {elf::PT_LOAD, 0x300, 0x100, 0x9000, 0x100};
    EXPECT_EQ(segmentOf({0x300, 0x9000, 0}, {load, other, better}), 1);
    EXPECT_EQ(segmentOf({0x300, 0x9000, 0}, {load, better, other}), 2);
    EXPECT_EQ(segmentOf({0x2F0, 0x9000, 0}, {load, other}), 0);
}

TEST_P(EmptySectionTest, SegmentsOfOtherKindsThatAreLoadable) {
    // These hold sections anywhere in their range; one that is not loaded only at its end.
    for (const uint32_t type :
         {PT_LOAD, PT_DYNAMIC, PT_INTERP, PT_NOTE, PT_PHDR, PT_TLS, PT_QEL_EXIDX}) {
        EXPECT_EQ(segmentOf({0x280, 0, 0}, {{type, 0x200, 0x100, 0x8000, 0x100}}), 0) << type;
    }
    EXPECT_EQ(segmentOf({0x280, 0, 0}, {{PT_SHLIB, 0x200, 0x100, 0x8000, 0x100}}), -1);
}

TEST_P(EmptySectionTest, SegmentsThatWrap) {
    const uint64_t top = format().is64 ? UINT64_MAX : UINT32_MAX;
    EXPECT_EQ(segmentOf({0x280, top - 4, 0x10}, {{elf::PT_LOAD, 0x200, 0x100, top - 8, top}}), 0);
    EXPECT_EQ(segmentOf({top, 0, 0x10}, {{elf::PT_LOAD, 0x200, 0x100, 0, top}}), -1);
}

// --- Raw data

class RawDataTest : public ReaderRegionsTest {
protected:
    struct Block {
        uint64_t offset;
        uint64_t size;
        bool operator==(const Block& other) const = default;
        friend void PrintTo(const Block& block, std::ostream* stream) {
            *stream << block.offset << '+' << block.size;
        }
    };

    std::vector<Block> blocks() {
        std::vector<Block> list;
        for (RawDataBlock* const block : module().getRawDataBlocks()) {
            uint64_t offset = 0;
            uint64_t size = 0;
            EXPECT_TRUE(block->getFileRange(&offset, &size));
            EXPECT_EQ(size, block->getSize());
            EXPECT_EQ(block->getContents().getSize(), size);
            list.push_back({offset, size});
        }
        return list;
    }

    // A file whose bytes from 0x200 on are covered by segments alone: 0x300 bytes that no section
    // claims, each with its own low bits.
    std::string fileOf(const std::vector<EmptySegment>& segments) {
        ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {0x600});
        for (const EmptySegment& row : segments) {
            builder.addSegment({.type = row.type,
                                .firstSection = 1,
                                .lastSection = 1,
                                .raw = {{SegmentField::Offset, row.offset},
                                        {SegmentField::FileSize, row.fileSize},
                                        {SegmentField::MemorySize, row.memorySize}}});
        }
        std::string file = builder.bytes();
        setSectionField(file, 1, SectionField::Size, 0);
        for (uint64_t i = 0x200; i < 0x500; ++i) {
            file[i] = static_cast<char>(i);
        }
        return file;
    }

    FileRegion* containerOf(uint32_t block) {
        const std::vector<FileRegion*> containers =
            containersOf(*module().getRawDataBlocks()[block]);
        EXPECT_EQ(containers.size(), 1U);
        return containers.empty() ? nullptr : containers[0];
    }
};
INSTANTIATE_FORMATS(RawDataTest);

TEST_P(RawDataTest, SegmentWithoutSections) {
    const std::string file = fileOf({{elf::PT_LOAD, 0x200, 0x100, 0, 0x100}});
    ASSERT_TRUE(read(file));
    EXPECT_EQ(blocks(), (std::vector<Block>{{0x200, 0x100}}));
    EXPECT_EQ(containerOf(0), &segment(0));
    RawDataBlock& block = *module().getRawDataBlocks()[0];
    for (uint64_t i = 0; i < 0x100; ++i) {
        ASSERT_EQ(block.getContents().getUint8(i), i);
    }
    const Contained contained = containedIn(segment(0));
    ASSERT_FALSE(contained.empty());
    EXPECT_EQ(contained.back().first, &block);
    EXPECT_EQ(contained.back().second, 0U);
}

TEST_P(RawDataTest, GapsBetweenSections) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {0x10, 0x20, 0x30, 0x40});
    builder.addSegment({.firstSection = 1, .lastSection = 4});
    std::string file = builder.bytes();
    // The second and the fourth section are sections no more, and the third begins later.
    setSectionField(file, 2, SectionField::Size, 0);
    setSectionField(file, 4, SectionField::Type, elf::SHT_NOBITS);
    const uint64_t second = placeOf(file, 2);
    const uint64_t third = placeOf(file, 3);
    const uint64_t fourth = placeOf(file, 4);
    setSectionField(file, 3, SectionField::Offset, third + 8);
    setSectionField(file, 3, SectionField::Size, 0x10);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(blocks(), (std::vector<Block>{{second, third + 8 - second},
                                            {third + 0x18, fourth + 0x40 - third - 0x18}}));
    EXPECT_EQ(module().getRawDataBlocks()[0]->getContents().getUint8(0), 'b');
    EXPECT_EQ(module().getRawDataBlocks()[1]->getContents().getUint8(0x18), 'd');
}

// Headers are other regions, too.
TEST_P(RawDataTest, HeadersAreNoRawData) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {0x10});
    builder.addSegment({.firstSection = 0, .lastSection = 1});
    std::string file = builder.bytes();
    setSegmentField(file, 0, SegmentField::FileSize, file.size());
    ASSERT_TRUE(read(file));
    for (const Block& block : blocks()) {
        EXPECT_GE(block.offset, elfHeaderSize(format()) + programHeaderSize(format()));
        EXPECT_LT(block.size, 8U) << "only what aligns the parts";
    }
}

// The program headers of a relocatable file are no region: nothing contains them, and what a
// segment holds of them is raw data.
TEST_P(RawDataTest, ProgramHeadersOfARelocatableFile) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_DYN}) {
        ElfBuilder builder = builderOf(format(), type, {0x10});
        builder.addSegment({.firstSection = 0, .lastSection = 1});
        const std::string file = builder.bytes();
        ASSERT_TRUE(read(file));
        const Block headers = {elfHeaderSize(format()), programHeaderSize(format())};
        const std::vector<Block> found = blocks();
        const bool isRaw =
            !found.empty() && found[0].offset == headers.offset && found[0].size >= headers.size;
        EXPECT_EQ(isRaw, type == elf::ET_REL);
        EXPECT_EQ(module().getProgramHeaderTable().getContainerCount(), isRaw ? 0U : 1U);
    }
}

// Each start or end of a segment ends a stretch.
TEST_P(RawDataTest, SegmentsThatOverlap) {
    ASSERT_TRUE(read(
        fileOf({{elf::PT_LOAD, 0x200, 0x100, 0, 0x100}, {elf::PT_LOAD, 0x280, 0x100, 0, 0x100}})));
    EXPECT_EQ(blocks(), (std::vector<Block>{{0x200, 0x80}, {0x280, 0x80}, {0x300, 0x80}}));
    EXPECT_EQ(containerOf(0), &segment(0));
    EXPECT_EQ(containerOf(1), &segment(0));
    EXPECT_EQ(containerOf(2), &segment(1));
    EXPECT_EQ(module().getRawDataBlocks()[2]->getContents().getUint8(0), 0x00);
    EXPECT_EQ(module().getRawDataBlocks()[2]->getContents().getUint8(0x7F), 0x7F);
}

TEST_P(RawDataTest, LoadOutranksTheRest) {
    ASSERT_TRUE(read(
        fileOf({{plainType, 0x200, 0x100, 0, 0x100}, {elf::PT_LOAD, 0x200, 0x100, 0, 0x100}})));
    EXPECT_EQ(blocks(), (std::vector<Block>{{0x200, 0x100}}));
    EXPECT_EQ(containerOf(0), &segment(1));
}

// One whose bytes have been fetched before outranks all others.
TEST_P(RawDataTest, FetchedSegmentOutranksLoad) {
    ASSERT_TRUE(read(
        fileOf({{plainType, 0x200, 0x180, 0, 0x180}, {elf::PT_LOAD, 0x300, 0x100, 0, 0x100}})));
    EXPECT_EQ(blocks(), (std::vector<Block>{{0x200, 0x100}, {0x300, 0x80}, {0x380, 0x80}}));
    EXPECT_EQ(containerOf(0), &segment(0));
    EXPECT_EQ(containerOf(1), &segment(0));
    EXPECT_EQ(containerOf(2), &segment(1));
}

TEST_P(RawDataTest, SegmentFetchedForASectionOutranks) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {0x400, 0x10});
    builder.addSegment({.firstSection = 1, .lastSection = 1});
    builder.addSegment({.firstSection = 1, .lastSection = 2});
    std::string file = builder.bytes();
    setSectionField(file, 1, SectionField::Size, 0);
    ASSERT_TRUE(read(file));
    // Section 2 lies in segment 1 alone, which is fetched for it.
    ASSERT_EQ(blocks().size(), 1U);
    EXPECT_EQ(containerOf(0), &segment(1));
}

TEST_P(RawDataTest, SegmentsOfNoBytes) {
    ASSERT_TRUE(read(fileOf({{elf::PT_LOAD, 0x200, 0, 0, 0x100}})));
    EXPECT_TRUE(blocks().empty());
}

// Of a file in memory nothing is copied.
TEST_P(RawDataTest, BlocksReferToTheFileInMemory) {
    const std::string file = fileOf({{elf::PT_LOAD, 0x200, 0x100, 0, 0x100}});
    startModule();
    ASSERT_TRUE(readElfBuffer(testFileName, reinterpret_cast<const uint8_t*>(file.data()),
                              file.size(), &module(), nullptr));
    ASSERT_EQ(module().getRawDataBlocks().getSize(), 1U);
    const Buffer& contents = module().getRawDataBlocks()[0]->getContents();
    EXPECT_EQ(reinterpret_cast<const char*>(contents.getData()), file.data() + 0x200);
    EXPECT_EQ(contents.getSize(), 0x100U);
}

// In a file that is read in place blocks are read from it.
TEST_P(RawDataTest, LargeFile) {
    ElfBuilder builder = builderOf(format(), elf::ET_EXEC, {0x180000});
    builder.addSegment({.firstSection = 1, .lastSection = 1});
    std::string file = builder.bytes();
    file[placeOf(file, 1) + 0x17FFFF] = 'z';
    setSectionField(file, 1, SectionField::Size, 0);
    const ScratchFolder folder;
    folder.write("large", file);
    ASSERT_TRUE(readElfFile(folder.pathOf("large").c_str(), &module(), nullptr));
    ASSERT_EQ(blocks().size(), 1U);
    RawDataBlock& block = *module().getRawDataBlocks()[0];
    EXPECT_EQ(block.getSize(), 0x180000U);
    EXPECT_EQ(block.getContents().getUint8(0), 'a');
    EXPECT_EQ(block.getContents().getUint8(0x17FFFF), 'z');
}

// A segment's image is made of all that it contains.
TEST_P(RawDataTest, ImageOfASegment) {
    const RichElf rich = richElf(format(), elf::ET_EXEC);
    const std::string file = rich.bytes();
    ASSERT_TRUE(read(file));
    Segment& load = segment(2);
    std::string image(load.getMemorySize(), '?');
    load.getContents(image.data(), image.size());
    const std::string bytes = file.substr(load.getFileOffset(), load.getFileSize());
    EXPECT_EQ(image.substr(0, bytes.size()), bytes);
    EXPECT_EQ(image.substr(bytes.size()), std::string(image.size() - bytes.size(), '\0'));
}

} // namespace
} // namespace elfext::test
