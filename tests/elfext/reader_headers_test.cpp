// The ELF header, the header tables, and the sections and segments that are made of them.
#include "tests/elfext/reader_fixtures.h"

#include "tests/support/elf_fields.h"

#include <array>

namespace elfext::test {
namespace {

using namespace testsupport;

class ReaderHeadersTest : public ReaderFormatTest {
protected:
    // In how many regions the three headers lie.
    using ElfHeaderCounts = std::array<uint32_t, 3>;
    ElfHeaderCounts countsOfHeaders() {
        return {module().getElfHeader().getContainerCount(),
                module().getSectionHeaderTable().getContainerCount(),
                module().getProgramHeaderTable().getContainerCount()};
    }
};
INSTANTIATE_FORMATS(ReaderHeadersTest);

TEST_P(ReaderHeadersTest, HeaderFields) {
    ElfBuilder builder(format(), elf::ET_DYN);
    builder.header(HeaderField::OsAbi, 64)
        .header(HeaderField::AbiVersion, 3)
        .header(HeaderField::IdentVersion, 7)
        .header(HeaderField::Entry, 0x8001)
        .header(HeaderField::Flags, 0x80000123)
        .header(HeaderField::HeaderSize, 99)
        .header(HeaderField::SectionHeaderSize, 11)
        .header(HeaderField::ProgramHeaderSize, 12);
    builder.add({.name = ".text", .contents = "code"});
    builder.addSegment({.firstSection = 1, .lastSection = 1});
    const std::string file = builder.bytes();
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getMachine(), format().is64 ? 183U : 40U);
    EXPECT_EQ(module().getClass(), format().is64 ? 2U : 1U);
    EXPECT_EQ(module().getEndianness(), format().littleEndian ? 1U : 2U);
    EXPECT_EQ(module().isLittleEndian(), format().littleEndian);
    EXPECT_EQ(module().getOsAbi(), 64U);
    EXPECT_EQ(module().getAbiVersion(), 3);
    EXPECT_EQ(module().getType(), 3U);
    EXPECT_EQ(module().getEntryPoint(), 0x8001U);
    EXPECT_EQ(module().getFlags(), 0x80000123U);
    EXPECT_EQ(module().getIdentVersion(), 7U);
    EXPECT_EQ(module().getVersion(), 1U);
    // Entry sizes are kept, but not used.
    EXPECT_EQ(module().getElfHeaderSize(), 99U);
    EXPECT_EQ(module().getSectionHeaderSize(), 11U);
    EXPECT_EQ(module().getProgramHeaderSize(), 12U);
    EXPECT_EQ(module().getSectionHeaderOffset(),
              headerField(file, HeaderField::SectionHeaderOffset));
    EXPECT_EQ(module().getProgramHeaderOffset(),
              headerField(file, HeaderField::ProgramHeaderOffset));
    EXPECT_EQ(module().getSectionHeaderCount(), 3);
    EXPECT_EQ(module().getProgramHeaderCount(), 1);
    EXPECT_EQ(module().getSectionCount(), 3U);
    EXPECT_EQ(module().getSegmentCount(), 1U);
}

TEST_P(ReaderHeadersTest, HeaderRegions) {
    const RichElf rich = richElf(format(), elf::ET_EXEC);
    ASSERT_TRUE(read(rich));
    uint64_t offset = 1;
    uint64_t size = 0;
    EXPECT_TRUE(module().getElfHeader().getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0U);
    EXPECT_EQ(size, elfHeaderSize(format()));
    EXPECT_TRUE(module().getSectionHeaderTable().getFileRange(&offset, &size));
    EXPECT_EQ(offset, module().getSectionHeaderOffset());
    EXPECT_EQ(size, sectionHeaderSize(format()) * (rich.names + 1));
    EXPECT_TRUE(module().getProgramHeaderTable().getFileRange(&offset, &size));
    EXPECT_EQ(offset, module().getProgramHeaderOffset());
    EXPECT_EQ(size, programHeaderSize(format()) * 5);
}

// Neither the sizes of entries that the header states make the regions, nor counts without a table.
TEST_P(ReaderHeadersTest, HeaderRegionsAreWhatIsRead) {
    const RichElf rich = richElf(format(), elf::ET_EXEC);
    std::string file = rich.bytes();
    setHeaderField(file, HeaderField::SectionHeaderSize, 99);
    setHeaderField(file, HeaderField::ProgramHeaderSize, 98);
    ASSERT_TRUE(read(file));
    uint64_t offset = 0;
    uint64_t size = 0;
    EXPECT_TRUE(module().getSectionHeaderTable().getFileRange(&offset, &size));
    EXPECT_EQ(size, sectionHeaderSize(format()) * (rich.names + 1));
    EXPECT_TRUE(module().getProgramHeaderTable().getFileRange(&offset, &size));
    EXPECT_EQ(size, programHeaderSize(format()) * 5);
    setHeaderField(file, HeaderField::ProgramHeaderOffset, 0);
    setHeaderField(file, HeaderField::ProgramHeaderCount, 0xFFFF);
    ASSERT_TRUE(readOn(file));
    EXPECT_TRUE(module().getProgramHeaderTable().getFileRange(&offset, &size));
    EXPECT_EQ(size, 0U);
}

// What one read has found out of the headers does not reach the next one.
TEST_P(ReaderHeadersTest, HeaderRegionsOfASecondRead) {
    const RichElf rich = richElf(format(), elf::ET_EXEC);
    ElfHeaderCounts first;
    ASSERT_TRUE(read(rich));
    first = countsOfHeaders();
    ASSERT_TRUE(read(rich));
    EXPECT_EQ(countsOfHeaders(), first);
    EXPECT_FALSE(read("nothing"));
    EXPECT_EQ(countsOfHeaders(), ElfHeaderCounts());
    uint64_t offset = 0;
    uint64_t size = 0;
    EXPECT_FALSE(module().getProgramHeaderTable().getFileRange(&offset, &size));
    EXPECT_FALSE(module().getSectionHeaderTable().getFileRange(&offset, &size));
}

// Segments alone do not count as contents, but go with them.
TEST_P(ReaderHeadersTest, SegmentsOfAFailedRead) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.addSegment({.type = elf::PT_NOTE, .alignment = 0});
    builder.header(HeaderField::SectionHeaderOffset, 0).header(HeaderField::NameTableIndex, 0);
    ASSERT_TRUE(read(builder.bytes()));
    ASSERT_EQ(module().getSegmentCount(), 1U);
    EXPECT_TRUE(module().isEmpty());
    EXPECT_FALSE(read("nothing"));
    EXPECT_EQ(module().getSegmentCount(), 0U);
}

TEST_P(ReaderHeadersTest, RelocatableFileHasNoProgramHeaderRegion) {
    ASSERT_TRUE(read(richElf(format())));
    uint64_t offset = 0;
    uint64_t size = 0;
    EXPECT_FALSE(module().getProgramHeaderTable().getFileRange(&offset, &size));
    EXPECT_TRUE(module().getSectionHeaderTable().getFileRange(&offset, &size));
}

TEST_P(ReaderHeadersTest, MachinesThatAreKnown) {
    for (const uint32_t machine : {40U, 183U, 184U}) {
        ElfBuilder builder(format());
        builder.header(HeaderField::Machine, machine);
        EXPECT_TRUE(read(builder.bytes())) << machine;
        EXPECT_EQ(module().getMachine(), machine);
    }
    EXPECT_TRUE(reports().empty());
}

TEST_P(ReaderHeadersTest, TypesThatAreKnown) {
    for (uint16_t type = 1; type <= 4; ++type) {
        EXPECT_TRUE(read(ElfBuilder(format(), type).bytes())) << type;
        EXPECT_EQ(module().getType(), type);
    }
}

// Without section headers there are no sections, whatever the counts say.
TEST_P(ReaderHeadersTest, NoSectionHeaders) {
    ElfBuilder builder(format());
    builder.header(HeaderField::SectionHeaderOffset, 0);
    builder.header(HeaderField::SectionHeaderCount, 0xFFFF);
    builder.header(HeaderField::NameTableIndex, 0);
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSectionCount(), 0U);
    EXPECT_TRUE(module().isEmpty());
    EXPECT_EQ(module().getSectionHeaderCount(), 0xFFFF);
}

TEST_P(ReaderHeadersTest, NoProgramHeaders) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.header(HeaderField::ProgramHeaderOffset, 0);
    builder.header(HeaderField::ProgramHeaderCount, 0xFFFF);
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSegmentCount(), 0U);
}

// A count of 0 sends to the size field of section 0.
TEST_P(ReaderHeadersTest, SectionCountFromSection0) {
    RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setHeaderField(file, HeaderField::SectionHeaderCount, 0);
    setSectionField(file, 0, SectionField::Size, rich.names + 1);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getSectionCount(), rich.names + 1);
    EXPECT_EQ(module().getSectionHeaderCount(), 0);
    EXPECT_EQ(section(0).getSize(), rich.names + 1);
    EXPECT_EQ(section(0).getType(), 0U);
}

TEST_P(ReaderHeadersTest, SectionCountOf0InBothPlaces) {
    RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setHeaderField(file, HeaderField::SectionHeaderCount, 0);
    setHeaderField(file, HeaderField::NameTableIndex, 0);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getSectionCount(), 0U);
}

// No memory is taken for sections that cannot be there.
TEST_P(ReaderHeadersTest, EndlessSectionCount) {
    for (const uint64_t count :
         {uint64_t{0x1000000}, uint64_t{0xFFFFFFFF}, uint64_t{0x100000000}, UINT64_MAX}) {
        std::string file = richElf(format()).bytes();
        setHeaderField(file, HeaderField::SectionHeaderCount, 0);
        setSectionField(file, 0, SectionField::Size, count);
        startModule();
        const bool isCut = !format().is64 && count == 0x100000000;
        EXPECT_FALSE(read(file));
        if (!isCut) {
            EXPECT_EQ(reports(),
                      Reports({{0, "I/O error writing file 'test.o': Unknown error -1"}}));
        }
    }
}

TEST_P(ReaderHeadersTest, ManySections) {
    ElfBuilder builder(format());
    for (int i = 0; i < 0xFF10; ++i) {
        builder.add({.contents = "x"});
    }
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSectionCount(), 0xFF12U);
    EXPECT_EQ(module().getSectionHeaderCount(), 0);
    EXPECT_STREQ(section(0xFF11).getName(), ".shstrtab");
}

// Each type makes its own class of section.
TEST_P(ReaderHeadersTest, SectionTypes) {
    struct Row {
        uint32_t type;
        bool isAuxiliary;
        bool isRelocatable;
        const fast_array<Section*>& (ObjectModule::*list)() const;
    };
    const Row rows[] = {
        {SHT_NULL, true, true, nullptr},
        {SHT_PROGBITS, false, true, nullptr},
        {SHT_STRTAB, true, false, &ObjectModule::getStringTableSections},
        {SHT_NOTE, false, false, nullptr},
        {SHT_NOBITS, false, true, nullptr},
        {SHT_SHLIB, false, true, nullptr},
        {SHT_INIT_ARRAY, false, true, nullptr},
        {SHT_GNU_verdef, true, false, &ObjectModule::getVerdefSections},
        {SHT_GNU_verneed, true, false, &ObjectModule::getVerneedSections},
        {SHT_GNU_versym, true, false, &ObjectModule::getVersymSections},
        {SHT_QEL_EXIDX, false, true, nullptr},
        {SHT_QEL_PREEMPTMAP, true, false, &ObjectModule::getPreemptionMapSections},
        {SHT_QEL_DEBUGOVERLAY, true, false, &ObjectModule::getDebugOverlaySections},
        {0x12345678, false, true, nullptr},
        {0xFFFFFFFF, false, true, nullptr},
    };
    ElfBuilder builder(format());
    for (const Row& row : rows) {
        builder.add({.name = "s",
                     .type = row.type,
                     .flags = 0x10000037,
                     .info = 5,
                     .alignment = 8,
                     .entrySize = 3,
                     .raw = {{SectionField::Address, 0x4000}, {SectionField::Size, 0}}});
    }
    ASSERT_TRUE(read(builder.bytes()));
    uint32_t index = 0;
    for (const Row& row : rows) {
        const Section& made = section(++index);
        SCOPED_TRACE(row.type);
        EXPECT_EQ(made.getType(), row.type);
        EXPECT_EQ(made.isAuxiliary(), row.isAuxiliary);
        EXPECT_EQ(made.isRelocatable(), row.isRelocatable);
        EXPECT_EQ(made.getFlags(), 0x10000037U);
        EXPECT_EQ(made.getInfo(), 5U);
        EXPECT_EQ(made.getAddress(), 0x4000U);
        EXPECT_EQ(made.getAlignment(), 8U);
        EXPECT_EQ(made.getEntrySize(), 3U);
        EXPECT_TRUE(made.isFileOffsetKnown());
        EXPECT_EQ(made.getIndex(), index);
        if (row.list != nullptr) {
            const fast_array<Section*>& list = (module().*row.list)();
            EXPECT_TRUE(list.contains(module().getSection(index)));
        }
    }
}

TEST_P(ReaderHeadersTest, SpecialSectionsOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    const auto only = [](const fast_array<Section*>& list) {
        return list.getSize() == 1 ? list[0]->getIndex() : UINT32_MAX;
    };
    EXPECT_EQ(only(module().getSymtabSections()), rich.symbols);
    EXPECT_EQ(only(module().getDynsymSections()), rich.dynamicSymbols);
    EXPECT_EQ(only(module().getGroupSections()), rich.group);
    EXPECT_EQ(only(module().getHashSections()), rich.hash);
    EXPECT_EQ(only(module().getShndxSections()), rich.extension);
    EXPECT_EQ(only(module().getPreemptionMapSections()), rich.preemptionMap);
    EXPECT_EQ(only(module().getVerdefSections()), rich.verdef);
    EXPECT_EQ(only(module().getVerneedSections()), rich.verneed);
    EXPECT_EQ(only(module().getVersymSections()), rich.versym);
    EXPECT_EQ(only(module().getDynamicSections()), rich.dynamic);
    EXPECT_EQ(only(module().getDebugOverlaySections()), rich.debugOverlay);
    EXPECT_EQ(only(module().getBuildAttributesSections()), rich.attributes);
    EXPECT_EQ(module().getStringTableSections().getSize(), 3U);
    EXPECT_NE(section(rich.textRelocations).asRelocationSection(), nullptr);
    EXPECT_EQ(section(rich.text).asRelocationSection(), nullptr);
    // Their flags are as in the file.
    EXPECT_EQ(section(rich.dynamicSymbols).getFlags(), SHF_ALLOC);
    EXPECT_EQ(section(rich.dynamicSymbols).getEntrySize(), symbolSize(format()));
}

// An alignment that is no power of two is kept as it is.
TEST_P(ReaderHeadersTest, OddAlignments) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.add({.name = ".odd", .contents = "x", .raw = {{SectionField::Alignment, 3}}});
    builder.addSegment({.firstSection = 1, .lastSection = 1, .alignment = 7});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(section(1).getAlignment(), 3U);
    EXPECT_EQ(module().getSegment(0)->getAlignment(), 7U);
}

TEST_P(ReaderHeadersTest, SegmentFields) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.add({.name = ".text", .contents = "12345678"});
    builder.addSegment({.type = 0x6474E551,
                        .flags = 7,
                        .firstSection = 1,
                        .lastSection = 1,
                        .alignment = 16,
                        .raw = {{SegmentField::VirtualAddress, 0x10010},
                                {SegmentField::PhysicalAddress, 0x20020},
                                {SegmentField::MemorySize, 0x30}}});
    const std::string file = builder.bytes();
    ASSERT_TRUE(read(file));
    const Segment& segment = *module().getSegment(0);
    EXPECT_EQ(segment.getType(), 0x6474E551U);
    EXPECT_EQ(segment.getFlags(), 7U);
    EXPECT_EQ(segment.getVirtualAddress(), 0x10010U);
    EXPECT_EQ(segment.getPhysicalAddress(), 0x20020U);
    EXPECT_EQ(segment.getMemorySize(), 0x30U);
    EXPECT_EQ(segment.getFileSize(), 8U);
    EXPECT_EQ(segment.getAlignment(), 16U);
    EXPECT_TRUE(segment.isFileOffsetKnown());
    EXPECT_EQ(segment.getFileOffset(), segmentField(file, 0, SegmentField::Offset));
}

// An input with class 2 is taken without a look at its magic, so a wrong one fails elsewhere.
TEST_F(ReaderTest, WideFileWithoutMagic) {
    std::string file = richElf().bytes();
    file.replace(0, 4, "oops");
    EXPECT_TRUE(read(file));
    std::string text(64, '.');
    text[4] = 2;
    EXPECT_FALSE(read(text));
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_EQ(reports()[0].message,
              "ELF file has unrecognised type code 11822 (we handle types 1-4)");
}

// With an order that is neither, the header is taken for big-endian: its type is judged first.
TEST_F(ReaderTest, LittleEndianFileWithAWrongOrder) {
    std::string file = richElf().bytes();
    file[5] = 0;
    EXPECT_FALSE(read(file));
    EXPECT_EQ(reports(),
              Reports({{0, "ELF file has unrecognised type code 256 (we handle types 1-4)"}}));
}

TEST_F(ReaderTest, SecondForm) {
    ElfBuilder builder({false, true});
    builder.add({.name = ".words", .contents = ElfBytes({false, true}).word(2).word(8).bytes()});
    builder.add({.name = ".text", .contents = "code"});
    std::string file = builder.bytes();
    ASSERT_EQ(placeOf(file, 1), 52U);
    file.replace(0, 4, "\xF7ORC");
    setHeaderField(file, HeaderField::Machine, 999);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getMachine(), 40U);
    EXPECT_STREQ(section(2).getName(), ".text");
}

} // namespace
} // namespace elfext::test
