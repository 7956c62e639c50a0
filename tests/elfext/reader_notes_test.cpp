// Debug overlays, notes that tell the segments of sections, and the properties of files.
#include "tests/elfext/reader_fixtures.h"

#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;

// --- Debug overlays

class DebugOverlayTest : public ReaderFormatTest {
protected:
    // Reads records of `entrySize` bytes. Section 1 is ".text", section 2 ".debug_info".
    bool readOverlay(const std::string& records, uint64_t entrySize) {
        ElfBuilder builder(format());
        builder.add({.name = ".text", .contents = "code"});
        builder.add({.name = ".debug_info", .contents = "info"});
        builder.add({.name = ".overlay",
                     .type = elf::SHT_QEL_DEBUGOVERLAY,
                     .contents = records,
                     .entrySize = entrySize});
        startModule(true);
        return read(builder.bytes());
    }
    ElfBytes bytes() const { return ElfBytes(format()); }
    uint64_t width() const { return format().is64 ? 8 : 4; }
    const fast_array<DebugOverlayRecord>& records() { return module().getDebugOverlayRecords(); }
};
INSTANTIATE_FORMATS(DebugOverlayTest);

TEST_P(DebugOverlayTest, RecordsOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    ASSERT_EQ(records().getSize(), 2U);
    EXPECT_EQ(records()[0].m_Id, 1U);
    EXPECT_EQ(records()[0].m_DebugSection, &section(rich.debugInfo));
    EXPECT_EQ(records()[0].m_Section, &section(rich.text));
    EXPECT_EQ(records()[1].m_Id, 2U);
    EXPECT_EQ(records()[1].m_DebugSection, &section(rich.debugLine));
    EXPECT_EQ(records()[1].m_Section, &section(rich.data));
}

TEST_P(DebugOverlayTest, NarrowIndexes) {
    const uint64_t top = format().is64 ? UINT64_MAX : UINT32_MAX;
    for (uint64_t rest = 4; rest < 8; ++rest) {
        const std::string record =
            bytes().address(top).half(2).half(1).raw(std::string(rest - 4, 'x')).bytes();
        ASSERT_TRUE(readOverlay(record + record, width() + rest));
        ASSERT_EQ(records().getSize(), 2U) << rest;
        EXPECT_EQ(records()[0].m_Id, top);
        EXPECT_EQ(records()[1].m_DebugSection, &section(2));
        EXPECT_EQ(records()[1].m_Section, &section(1));
    }
}

TEST_P(DebugOverlayTest, WideIndexes) {
    for (uint64_t rest = 8; rest < 20; rest += 3) {
        const std::string record =
            bytes().address(7).word(2).word(1).raw(std::string(rest - 8, 'x')).bytes();
        ASSERT_TRUE(readOverlay(record + record, width() + rest));
        ASSERT_EQ(records().getSize(), 2U) << rest;
        EXPECT_EQ(records()[1].m_Id, 7U);
    }
}

TEST_P(DebugOverlayTest, RecordSizesWithoutRoom) {
    const std::string record = bytes().address(7).word(2).word(1).bytes();
    for (uint64_t size = 0; size < width() + 4; ++size) {
        ASSERT_TRUE(readOverlay(record, size));
        EXPECT_EQ(records().getSize(), 0U) << size;
    }
    ASSERT_TRUE(readOverlay(record, UINT32_MAX));
    EXPECT_EQ(records().getSize(), 0U);
    EXPECT_TRUE(reports().empty());
}

TEST_P(DebugOverlayTest, RestBehindTheLastRecordIsLeftOut) {
    const std::string record = bytes().address(7).word(2).word(1).bytes();
    ASSERT_TRUE(readOverlay(record + record.substr(0, record.size() - 1), record.size()));
    EXPECT_EQ(records().getSize(), 1U);
}

TEST_P(DebugOverlayTest, BadRecordsAreLeftOut) {
    const std::string overlay = " in debug overlay section #3 refers to section #";
    ASSERT_TRUE(readOverlay(bytes()
                                .address(0)
                                .word(1)
                                .word(2)
                                .address(1)
                                .word(2)
                                .word(5)
                                .address(2)
                                .word(2)
                                .word(4)
                                .address(3)
                                .word(99)
                                .word(99)
                                .address(4)
                                .word(2)
                                .word(0)
                                .bytes(),
                            width() + 8));
    EXPECT_EQ(reports(), Reports({{2, "Record #0" + overlay + "1 which is not a debug section"},
                                  {2, "Record #1" + overlay + "5 which is not a section"},
                                  {2, "Record #3" + overlay + "99 which is not a debug section"}}));
    ASSERT_EQ(records().getSize(), 2U);
    EXPECT_EQ(records()[0].m_Id, 2U);
    EXPECT_EQ(records()[1].m_Section, &section(0));
}

// --- Notes

class SegmentNotesTest : public ReaderFormatTest {
protected:
    ElfBytes bytes() const { return ElfBytes(format()); }

    ElfBytes note(std::string_view name, uint32_t nameSize, uint32_t type,
                  const std::vector<uint32_t>& words, uint32_t descriptionSize) const {
        ElfBytes result = bytes();
        result.word(nameSize).word(descriptionSize).word(type).raw(name).align(4);
        for (const uint32_t word : words) {
            result.word(word);
        }
        return result;
    }
    std::string mapping(const std::vector<uint32_t>& words) const {
        return note(std::string_view("QEL\0", 4), 4, 0x40000000, words,
                    static_cast<uint32_t>(4 * words.size()))
            .bytes();
    }

    // Reads a file with three sections that are loaded (1, 2 and 4), one that is not (3), two
    // segments and these notes in section 5.
    bool readNotes(const std::string& notes, bool goesOn = true) {
        ElfBuilder builder(format(), elf::ET_EXEC);
        for (const uint64_t flags : {2U, 3U, 0U, 6U}) {
            builder.add({.name = ".s", .flags = flags, .contents = "12345678"});
        }
        builder.add({.name = ".note", .type = elf::SHT_NOTE, .contents = notes});
        builder.addSegment({.firstSection = 1, .lastSection = 2});
        builder.addSegment({.firstSection = 4, .lastSection = 4});
        startModule(goesOn);
        return read(builder.bytes());
    }
    // The segments' numbers of sections 1, 2 and 4, -1 for none.
    std::vector<int> segments() {
        std::vector<int> numbers;
        for (const size_t index : {1U, 2U, 4U}) {
            const Segment* const segment = section(index).getSegment();
            numbers.push_back(segment != nullptr ? static_cast<int>(segment->getIndex()) : -1);
        }
        return numbers;
    }
    using Numbers = std::vector<int>;
    static Report badIndex(uint32_t mapped, uint32_t segment) {
        return {1, "Section/segment mapping in SHT_NOTE section #5 maps section #" +
                       std::to_string(mapped) + " to segment #" + std::to_string(segment) +
                       " which does not exist"};
    }
    static Report badCount(uint32_t count) {
        return {1, "Section/segment mapping in SHT_NOTE section #5 contains " +
                       std::to_string(count) + " entries, but there are 3 SHF_ALLOC sections"};
    }
};
INSTANTIATE_FORMATS(SegmentNotesTest);

TEST_P(SegmentNotesTest, NoteOfARichFile) {
    const RichElf rich = richElf(format(), elf::ET_EXEC);
    ASSERT_TRUE(read(rich));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(section(rich.text).getSegment(), module().getSegment(1));
    EXPECT_EQ(section(rich.bss).getSegment(), module().getSegment(2));
    EXPECT_EQ(section(rich.debugInfo).getSegment(), nullptr);
}

TEST_P(SegmentNotesTest, OneWordForEachLoadedSection) {
    ASSERT_TRUE(readNotes(mapping({0, 1, 1})));
    EXPECT_EQ(segments(), Numbers({0, 1, 1}));
    EXPECT_EQ(section(3).getSegment(), nullptr);
    EXPECT_TRUE(reports().empty());
}

TEST_P(SegmentNotesTest, WordsUsedUp) {
    ASSERT_TRUE(readNotes(mapping({1})));
    EXPECT_EQ(segments(), Numbers({1, 0, 0}));
    EXPECT_EQ(reports(), Reports({badCount(1)}));
    ASSERT_TRUE(readNotes(mapping({}) + std::string(4, '\0')));
    EXPECT_EQ(segments(), Numbers({0, 0, 0}));
    EXPECT_EQ(reports(), Reports({badCount(0)}));
}

TEST_P(SegmentNotesTest, WordsLeftOver) {
    ASSERT_TRUE(readNotes(mapping({1, 0, 1, 7})));
    EXPECT_EQ(segments(), Numbers({1, 0, 1}));
    EXPECT_EQ(reports(), Reports({badCount(4)}));
    EXPECT_FALSE(readNotes(mapping({1, 0, 1, 7}), false));
    EXPECT_TRUE(module().isEmpty());
}

TEST_P(SegmentNotesTest, SegmentsThatAreNotThere) {
    ASSERT_TRUE(readNotes(mapping({2, 1, 0xFFFFFFFF})));
    EXPECT_EQ(segments(), Numbers({-1, 1, -1}));
    EXPECT_EQ(reports(), Reports({badIndex(1, 2), badIndex(4, 0xFFFFFFFF)}));
    EXPECT_FALSE(readNotes(mapping({2, 1, 0xFFFFFFFF}), false));
    EXPECT_EQ(reports(), Reports({badIndex(1, 2)}));
    EXPECT_TRUE(module().isEmpty());
}

TEST_P(SegmentNotesTest, OtherNotesArePassedOver) {
    const std::string_view name("QEL\0", 4);
    const std::string others[] = {
        note(name, 4, 0x40000001, {1, 1, 1}, 12).bytes(),
        note(std::string_view("QEM\0", 4), 4, 0x40000000, {1, 1, 1}, 12).bytes(),
        note(std::string_view("QELX", 4), 4, 0x40000000, {1, 1, 1}, 12).bytes(),
        note(std::string_view("QEL\0", 4), 3, 0x40000000, {1, 1, 1}, 12).bytes(),
        note(std::string_view("QEL\0\0", 5), 5, 0x40000000, {1, 1, 1}, 12).bytes(),
        note("", 0, 0x40000000, {}, 0).bytes(),
        // Sizes that are no multiples of 4 are filled up.
        note("ABCDE", 5, 1, {1}, 3).bytes(),
    };
    for (const std::string& other : others) {
        ASSERT_TRUE(readNotes(other + mapping({1, 1, 0})));
        EXPECT_EQ(segments(), Numbers({1, 1, 0}));
        EXPECT_TRUE(reports().empty());
        ASSERT_TRUE(readNotes(other + other));
        EXPECT_EQ(segments(), Numbers({-1, -1, -1}));
    }
}

TEST_P(SegmentNotesTest, LaterNoteWins) {
    ASSERT_TRUE(readNotes(mapping({0, 0, 0}) + mapping({1, 0, 1})));
    EXPECT_EQ(segments(), Numbers({1, 0, 1}));
}

// The loop ends when fewer than 17 bytes remain.
TEST_P(SegmentNotesTest, ShortRests) {
    const std::string empty = mapping({});
    ASSERT_EQ(empty.size(), 16U);
    ASSERT_TRUE(readNotes(empty));
    EXPECT_EQ(segments(), Numbers({-1, -1, -1}));
    ASSERT_TRUE(readNotes(empty + "x"));
    EXPECT_EQ(segments(), Numbers({0, 0, 0}));
    for (size_t size = 0; size <= 16; ++size) {
        ASSERT_TRUE(readNotes(mapping({1, 1, 1}).substr(0, size)));
        EXPECT_EQ(segments(), Numbers({-1, -1, -1})) << size;
    }
}

// A description may claim more than the section holds: what is not there counts as 0.
TEST_P(SegmentNotesTest, DescriptionsBeyondTheSection) {
    const std::string_view name("QEL\0", 4);
    for (const uint32_t size : {0xFFFFFFFFU, 0xFFFFFFFCU, 0x7FFFFFFFU}) {
        ASSERT_TRUE(readNotes(note(name, 4, 0x40000000, {1, 1}, size).bytes()));
        EXPECT_EQ(segments(), Numbers({1, 1, 0}));
        EXPECT_EQ(reports(), Reports({badCount(size / 4)}));
    }
    ASSERT_TRUE(readNotes(note(name, 4, 0x40000000, {1, 1}, 12).bytes() + "abc"));
    EXPECT_EQ(segments(), Numbers({1, 1, 0}));
    EXPECT_TRUE(reports().empty());
    ASSERT_TRUE(readNotes(note(name, 0xFFFFFFFF, 0x40000000, {1, 1}, 0xFFFFFFFF).bytes()));
    EXPECT_EQ(segments(), Numbers({-1, -1, -1}));
}

// --- Properties

class PropertiesTest : public ReaderFormatTest {
protected:
    uint32_t propertiesOf(const std::string& file) {
        EXPECT_TRUE(readOn(file));
        return module().getProperties();
    }
    ElfBuilder image() const {
        ElfBuilder builder(format(), elf::ET_EXEC);
        builder.add({.name = ".text", .contents = "code"});
        return builder;
    }
};
INSTANTIATE_FORMATS(PropertiesTest);

constexpr uint32_t fromFile = 0x200;

TEST_P(PropertiesTest, EveryFile) {
    EXPECT_EQ(propertiesOf(ElfBuilder(format()).bytes()), fromFile);
    EXPECT_FALSE(module().areAuxiliarySectionsUpToDate());
}

TEST_P(PropertiesTest, HeadersInTheFirstLoadedSegment) {
    const std::string base = [this] {
        ElfBuilder builder = image();
        builder.addSegment({.type = elf::PT_NOTE,
                            .raw = {{SegmentField::Offset, 0}, {SegmentField::FileSize, 8}}});
        builder.addSegment({.alignment = 1});
        builder.addSegment({.alignment = 1});
        return builder.bytes();
    }();
    const auto with = [&](uint64_t offset, uint64_t size) {
        std::string file = base;
        setSegmentField(file, 1, SegmentField::Offset, offset);
        setSegmentField(file, 1, SegmentField::FileSize, size);
        // Another loaded segment that holds everything does not count.
        setSegmentField(file, 2, SegmentField::Offset, 0);
        setSegmentField(file, 2, SegmentField::FileSize, base.size());
        return propertiesOf(file) & 0x7;
    };
    const uint64_t header = elfHeaderSize(format());
    const uint64_t programs = headerField(base, HeaderField::ProgramHeaderOffset);
    const uint64_t programsSize = 3 * programHeaderSize(format());
    const uint64_t sections = headerField(base, HeaderField::SectionHeaderOffset);
    const uint64_t sectionsSize = 3 * sectionHeaderSize(format());
    EXPECT_EQ(with(0, base.size()), 0x7U);
    EXPECT_EQ(with(0, header), 0x1U);
    EXPECT_EQ(with(0, header - 1), 0x0U);
    EXPECT_EQ(with(1, header), 0x0U);
    EXPECT_EQ(with(sections, sectionsSize), 0x2U);
    EXPECT_EQ(with(sections, sectionsSize - 1), 0x0U);
    EXPECT_EQ(with(sections + 1, sectionsSize - 1), 0x0U);
    EXPECT_EQ(with(programs, programsSize), 0x4U);
    EXPECT_EQ(with(programs, programsSize - 1), 0x0U);
    EXPECT_EQ(with(programs + 1, programsSize - 1), 0x0U);
}

TEST_P(PropertiesTest, NoLoadedSegment) {
    ElfBuilder builder = image();
    builder.addSegment({.type = elf::PT_NOTE, .alignment = 0});
    EXPECT_EQ(propertiesOf(builder.bytes()), fromFile);
}

TEST_P(PropertiesTest, NoSectionHeaders) {
    ElfBuilder builder = image();
    builder.addSegment({.type = elf::PT_NOTE, .alignment = 0});
    builder.header(HeaderField::SectionHeaderOffset, 0).header(HeaderField::NameTableIndex, 0);
    EXPECT_EQ(propertiesOf(builder.bytes()), fromFile | 0x100);
    // Only files with segments have this property.
    ElfBuilder plain = image();
    plain.header(HeaderField::SectionHeaderOffset, 0).header(HeaderField::NameTableIndex, 0);
    EXPECT_EQ(propertiesOf(plain.bytes()), fromFile);
}

TEST_P(PropertiesTest, IncongruentSegments) {
    const auto with = [this](uint64_t address, uint64_t offset, uint64_t alignment) {
        ElfBuilder builder = image();
        builder.addSegment({.type = elf::PT_NOTE, .alignment = 0});
        builder.addSegment({.type = elf::PT_NOTE,
                            .raw = {{SegmentField::Offset, offset},
                                    {SegmentField::FileSize, 0},
                                    {SegmentField::VirtualAddress, address},
                                    {SegmentField::Alignment, alignment}}});
        return propertiesOf(builder.bytes()) & 0x20000000;
    };
    EXPECT_EQ(with(0x1004, 0x2004, 0x1000), 0U);
    EXPECT_NE(with(0x1004, 0x2008, 0x1000), 0U);
    EXPECT_EQ(with(0x1004, 0x2008, 4), 0U);
    EXPECT_EQ(with(0x1004, 0x2009, 1), 0U);
    EXPECT_EQ(with(0x1004, 0x2009, 0), 0U);
    EXPECT_NE(with(4, 6, 3), 0U);
    EXPECT_EQ(with(4, 7, 3), 0U);
}

TEST_P(PropertiesTest, DynamicTags) {
    for (const bool withSegments : {false, true}) {
        ElfBuilder builder = image();
        const size_t strings = builder.addStringTable(".dynstr");
        builder.addDynamic(strings, {{21, 0}, {0x70000001, 0}});
        if (withSegments) {
            builder.addSegment({.type = elf::PT_NOTE, .alignment = 0});
        }
        EXPECT_EQ(propertiesOf(builder.bytes()), withSegments ? fromFile | 0x60 : fromFile);
    }
}

TEST_P(PropertiesTest, AuxiliarySectionsThatProgramsUse) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    const size_t table = builder.addSymbols({{.name = "s", .section = 1}});
    builder.addRelocations(".rel", elf::SHT_REL, 1, table, {{.offset = 0, .symbol = 1}});
    const std::string file = builder.bytes();
    EXPECT_EQ(propertiesOf(file), fromFile);
    std::string withSymbol = file;
    setSymbolField(withSymbol, table, 1, SymbolField::Section, table);
    EXPECT_EQ(propertiesOf(withSymbol), fromFile | 0x40000000);
    std::string withRelocations = file;
    setSectionField(withRelocations, table + 1, SectionField::Info, table);
    EXPECT_EQ(propertiesOf(withRelocations), fromFile | 0x80000000);
    // Relocations that have been left out do not count.
    setRelocationField(withRelocations, table + 1, 0, RelocationField::Info,
                       uint64_t{50} << (format().is64 ? 32 : 8));
    EXPECT_EQ(propertiesOf(withRelocations), fromFile);
}

TEST_P(PropertiesTest, AuxiliarySectionOfADynamicSymbol) {
    ElfBuilder builder(format());
    const size_t strings = builder.addStringTable(".dynstr");
    builder.addSymbolTable(".dynsym", elf::SHT_DYNSYM, strings,
                           {{.name = "s", .section = static_cast<uint32_t>(strings)}});
    EXPECT_EQ(propertiesOf(builder.bytes()), fromFile | 0x40000000);
    module().setAuxiliarySectionsUpToDate(true);
    EXPECT_EQ(propertiesOf(builder.bytes()), fromFile | 0x40000000);
    EXPECT_FALSE(module().areAuxiliarySectionsUpToDate());
}

TEST_P(PropertiesTest, AttributesSectionAndSymbols) {
    ElfBuilder builder(format());
    builder.add({.name = ".QEL.attributes", .type = elf::SHT_QEL_ATTRIBUTES, .contents = "A"});
    EXPECT_EQ(propertiesOf(builder.bytes()), fromFile | 0x10);
    builder.addSymbols({reservedSymbol("BuildAttributes$$QEL_ISAv5", elf::SHN_ABS)});
    EXPECT_EQ(propertiesOf(builder.bytes()), fromFile | 0x18);
    ElfBuilder symbols(format());
    symbols.addSymbols({reservedSymbol("f$$BuildAttributes$$E", elf::SHN_ABS)});
    EXPECT_EQ(propertiesOf(symbols.bytes()), fromFile | 0x8);
}

} // namespace
} // namespace elfext::test
