// What sections hold, their names and their links.
#include "tests/elfext/reader_fixtures.h"

#include "elfext/src/contents_pass.h"
#include "elfext/src/read_state.h"
#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;

class ReaderContentsTest : public ReaderFormatTest {
protected:
    std::string bytesOf(const std::string& file, size_t index) {
        return file.substr(placeOf(file, index), section(index).getSize());
    }
};
INSTANTIATE_FORMATS(ReaderContentsTest);

// Also where sections are parts of segments, and in a file that is read in place.
TEST_P(ReaderContentsTest, AllSectionsOfARichFile) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_EXEC, elf::ET_DYN}) {
        const RichElf rich = richElf(format(), type);
        const std::string file = rich.bytes();
        ASSERT_TRUE(read(file));
        for (size_t i = 1; i < module().getSectionCount(); ++i) {
            const Section& made = section(i);
            EXPECT_EQ(made.getSize(), sectionField(file, i, SectionField::Size)) << i;
            EXPECT_EQ(made.getFileOffset(), placeOf(file, i)) << i;
            EXPECT_EQ(contentsOf(made), made.getType() == SHT_NOBITS ? "" : bytesOf(file, i)) << i;
        }
    }
    EXPECT_TRUE(reports().empty());
}

TEST_P(ReaderContentsTest, NobitsHasASizeAndNoContents) {
    ElfBuilder builder(format());
    builder.add({.name = ".bss",
                 .type = elf::SHT_NOBITS,
                 .noBitsSize = 0x40000000,
                 .raw = {{SectionField::Offset, 0x7FFFFFFF}}});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(section(1).getSize(), 0x40000000U);
    EXPECT_EQ(section(1).getContentsSize(), 0U);
    EXPECT_EQ(contentsOf(section(1)), "");
}

TEST_P(ReaderContentsTest, NullSectionIsNotRead) {
    ElfBuilder builder(format());
    builder.add({.name = "null",
                 .type = elf::SHT_NULL,
                 .raw = {{SectionField::Offset, 0x7000000}, {SectionField::Size, 0x7000000}}});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(section(1).getSize(), 0x7000000U);
    EXPECT_EQ(contentsOf(section(1)), "");
}

TEST_P(ReaderContentsTest, EmptySectionMayLieAnywhere) {
    ElfBuilder builder(format());
    builder.add({.name = ".empty", .raw = {{SectionField::Offset, 0x7000000}}});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(section(1).getSize(), 0U);
}

// Sums of offset and size that wrap do not lead back into the file.
TEST_P(ReaderContentsTest, OffsetsThatWrap) {
    const uint64_t top = format().is64 ? UINT64_MAX : UINT32_MAX;
    for (const uint64_t size : {uint64_t{2}, uint64_t{0x1000}, top}) {
        ElfBuilder builder(format());
        builder.add({.name = ".far",
                     .contents = "x",
                     .raw = {{SectionField::Offset, top}, {SectionField::Size, size}}});
        startModule();
        EXPECT_FALSE(read(builder.bytes()));
        EXPECT_EQ(reports(), Reports({{0, "I/O error writing file 'test.o': Unknown error -1"}}));
    }
}

TEST_P(ReaderContentsTest, SectionUpToTheLastByte) {
    RichElf rich = richElf(format());
    std::string file = rich.bytes();
    const uint64_t place = placeOf(file, rich.debugInfo);
    setSectionField(file, rich.debugInfo, SectionField::Size, file.size() - place);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(contentsOf(section(rich.debugInfo)), file.substr(place));
    setSectionField(file, rich.debugInfo, SectionField::Size, file.size() - place + 1);
    startModule();
    EXPECT_FALSE(read(file));
}

// Tables are read entry by entry: behind the last whole entry there are zeros, and what the file
// holds there does not matter.
TEST_P(ReaderContentsTest, TablesWithARemainder) {
    ElfBuilder builder(format());
    const size_t strings = builder.addStringTable(".strtab");
    const std::string filler(symbolSize(format()), '\0');
    const size_t table = builder.add(
        {.name = ".symtab", .type = elf::SHT_SYMTAB, .contents = filler + "rest", .link = strings});
    const size_t plain = builder.add({.name = ".plain", .contents = "rest"});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(contentsOf(section(table)), filler + std::string(4, '\0'));
    EXPECT_EQ(contentsOf(section(plain)), "rest");
    EXPECT_EQ(section(table).getSize(), filler.size() + 4);
}

TEST_P(ReaderContentsTest, AllKindsOfTablesWithARemainder) {
    const RichElf plain = richElf(format());
    for (const size_t RichElf::*table :
         {&RichElf::symbols, &RichElf::dynamicSymbols, &RichElf::textRelocations,
          &RichElf::dataRelocations, &RichElf::group, &RichElf::extension}) {
        RichElf rich = plain;
        std::string& contents = rich.builder.section(rich.*table).contents;
        const std::string whole = contents;
        contents += "xyz";
        ASSERT_TRUE(read(rich.bytes()));
        EXPECT_EQ(contentsOf(section(rich.*table)), whole + std::string(3, '\0')) << rich.*table;
    }
    // What is no table of entries is taken as it stands.
    for (const size_t RichElf::*other : {&RichElf::hash, &RichElf::dynamic, &RichElf::note}) {
        RichElf rich = plain;
        std::string& contents = rich.builder.section(rich.*other).contents;
        contents += "xyz";
        ASSERT_TRUE(read(rich.bytes()));
        EXPECT_EQ(contentsOf(section(rich.*other)), contents) << rich.*other;
    }
}

TEST_P(ReaderContentsTest, TableWhoseRemainderIsBehindTheFile) {
    ElfBuilder builder(format());
    const size_t strings = builder.addStringTable(".strtab");
    const size_t table = builder.add({.name = ".symtab", .type = elf::SHT_SYMTAB, .link = strings});
    std::string file = builder.bytes();
    setSectionField(file, table, SectionField::Offset, file.size() - symbolSize(format()));
    setSectionField(file, table, SectionField::Size, symbolSize(format()) + 7);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(contentsOf(section(table)),
              file.substr(file.size() - symbolSize(format())) + std::string(7, '\0'));
    // Less than one entry is read from nowhere.
    setSectionField(file, table, SectionField::Offset, 0x7000000);
    setSectionField(file, table, SectionField::Size, 7);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(contentsOf(section(table)), std::string(7, '\0'));
}

// A part of a segment's image is copied as it stands.
TEST_P(ReaderContentsTest, TableWithARemainderInASegment) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    const size_t strings = builder.addStringTable(".strtab");
    const std::string filler(symbolSize(format()), '\0');
    const size_t table = builder.add(
        {.name = ".symtab", .type = elf::SHT_SYMTAB, .contents = filler + "rest", .link = strings});
    builder.addSegment({.firstSection = strings, .lastSection = table});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(contentsOf(section(table)), filler + "rest");
}

// The image may be no longer than the table, and only what is loaded has one.
TEST_P(ReaderContentsTest, TableThatIsAWholeSegment) {
    for (const uint32_t type : {elf::PT_LOAD, elf::PT_NOTE}) {
        ElfBuilder builder(format(), elf::ET_EXEC);
        const size_t strings = builder.addStringTable(".strtab");
        const std::string filler(symbolSize(format()), '\0');
        const size_t table = builder.add({.name = ".symtab",
                                          .type = elf::SHT_SYMTAB,
                                          .contents = filler + "rest",
                                          .link = strings});
        builder.addSegment({.type = type, .firstSection = table, .lastSection = table});
        ASSERT_TRUE(read(builder.bytes()));
        EXPECT_EQ(contentsOf(section(table)),
                  filler + (type == elf::PT_LOAD ? "rest" : std::string(4, '\0')));
    }
}

// --- String tables

TEST_P(ReaderContentsTest, StringTablesAreMended) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_EXEC}) {
        const RichElf rich = richElf(format(), type);
        const std::string good = rich.bytes();
        for (const size_t table : {rich.strings, rich.dynamicStrings, rich.names}) {
            const size_t place = placeOf(good, table);
            const size_t size = sectionField(good, table, SectionField::Size);
            std::string file = good;
            file[place] = 'x';
            file[place + size - 1] = 'y';
            ASSERT_TRUE(readOn(file));
            EXPECT_EQ(reports().size(), 1U);
            EXPECT_EQ(contentsOf(section(table)), good.substr(place, size));
            EXPECT_TRUE(section(table).isAuxiliary());
            EXPECT_STREQ(module().getSymbol(RichSymbol_Data)->getName(), "rich_data");
            EXPECT_STREQ(section(rich.text).getName(), ".text");
        }
    }
}

// The file's own bytes stay as they are, so other sections there do not change.
TEST_P(ReaderContentsTest, MendingDoesNotReachTheFile) {
    ElfBuilder builder(format());
    const size_t table = builder.add({.name = ".str", .type = elf::SHT_STRTAB, .contents = "abc"});
    const size_t other = builder.add({.name = ".data", .contents = "123"});
    std::string file = builder.bytes();
    setSectionField(file, other, SectionField::Offset, placeOf(file, table));
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(contentsOf(section(table)), std::string("\0b\0", 3));
    EXPECT_EQ(contentsOf(section(other)), "abc");
}

TEST_P(ReaderContentsTest, StringTableOfOneByte) {
    ElfBuilder builder(format());
    const size_t table = builder.add({.name = ".s", .type = elf::SHT_STRTAB, .contents = "a"});
    ASSERT_TRUE(readOn(builder.bytes()));
    EXPECT_EQ(reports(), Reports({{2, "String table section #1 starts and ends with a non-zero "
                                      "byte value"}}));
    EXPECT_EQ(contentsOf(section(table)), std::string(1, '\0'));
}

TEST_P(ReaderContentsTest, EmptyStringTableIsNotChecked) {
    ElfBuilder builder(format());
    builder.add({.name = ".s", .type = elf::SHT_STRTAB});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(section(1).getSize(), 0U);
}

// The check itself knows empty tables, too: they get one zero byte.
TEST_P(ReaderContentsTest, CheckOfAnEmptyStringTable) {
    for (const bool goesOn : {false, true}) {
        startModule(goesOn);
        module().createNullSection(0);
        Section* const table = module().createStringTableSection(".s");
        ReadState state(module(), *region(), {}, 100, nullptr);
        EXPECT_EQ(checkStringTable(state, 1), goesOn);
        EXPECT_EQ(reports(), Reports({{0, "String table section #1 is completely empty"}}));
        EXPECT_EQ(contentsOf(*table), goesOn ? std::string(1, '\0') : "");
    }
}

// --- Names

TEST_P(ReaderContentsTest, NamesOfSections) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    EXPECT_EQ(section(0).getName(), nullptr);
    EXPECT_STREQ(section(rich.text).getName(), ".text");
    EXPECT_STREQ(section(rich.attributes).getName(), ".QEL.attributes");
    EXPECT_STREQ(section(rich.names).getName(), ".shstrtab");
    const auto& names = static_cast<const StringTableSection&>(section(rich.names));
    EXPECT_TRUE(names.servesSectionNames());
    EXPECT_FALSE(names.servesSymbols());
    EXPECT_FALSE(names.servesDynamicSymbols());
    EXPECT_FALSE(names.servesDynamicSection());
}

TEST_P(ReaderContentsTest, NameTableFromSection0) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setHeaderField(file, HeaderField::NameTableIndex, 0xFFFF);
    setSectionField(file, 0, SectionField::Link, rich.names);
    ASSERT_TRUE(read(file));
    EXPECT_STREQ(section(rich.text).getName(), ".text");
    EXPECT_EQ(section(0).getLink(), &section(rich.names));
}

TEST_P(ReaderContentsTest, FileWithoutNames) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    builder.withoutSectionNames();
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSectionCount(), 2U);
    for (size_t i = 0; i < module().getSectionCount(); ++i) {
        EXPECT_EQ(section(i).getName(), nullptr);
    }
}

// A name without a table is reported once.
TEST_P(ReaderContentsTest, NamesWithoutATable) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    builder.add({.name = ".data", .contents = "data"});
    builder.header(HeaderField::NameTableIndex, 0);
    ASSERT_TRUE(readOn(builder.bytes()));
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_EQ(section(1).getName(), nullptr);
}

// A bad name costs only that name.
TEST_P(ReaderContentsTest, BadNamesAreEachReported) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.text, SectionField::Name, 0xFFFFFFFF);
    setSectionField(file, rich.data, SectionField::Name, 0xFFFFFFFE);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports().size(), 2U);
    EXPECT_EQ(section(rich.text).getName(), nullptr);
    EXPECT_EQ(section(rich.data).getName(), nullptr);
    EXPECT_STREQ(section(rich.bss).getName(), ".bss");
}

TEST_P(ReaderContentsTest, NameAtTheLastByteIsEmpty) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.text, SectionField::Name,
                    sectionField(file, rich.names, SectionField::Size) - 1);
    ASSERT_TRUE(read(file));
    EXPECT_STREQ(section(rich.text).getName(), "");
}

// --- Links

TEST_P(ReaderContentsTest, LinksOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    const auto link = [this](size_t index) { return section(index).getLink(); };
    EXPECT_EQ(link(rich.symbols), &section(rich.strings));
    EXPECT_EQ(link(rich.dynamicSymbols), &section(rich.dynamicStrings));
    EXPECT_EQ(link(rich.textRelocations), &section(rich.symbols));
    EXPECT_EQ(link(rich.dynamicRelocations), &section(rich.dynamicSymbols));
    EXPECT_EQ(link(rich.hash), &section(rich.dynamicSymbols));
    EXPECT_EQ(link(rich.dynamic), &section(rich.dynamicStrings));
    EXPECT_EQ(link(rich.group), &section(rich.symbols));
    EXPECT_EQ(link(rich.extension), &section(rich.symbols));
    EXPECT_EQ(link(rich.preemptionMap), &section(rich.dynamicStrings));
    EXPECT_EQ(link(rich.exidx), &section(rich.text));
    EXPECT_EQ(link(rich.verdef), &section(rich.dynamicStrings));
    EXPECT_EQ(link(rich.versym), &section(rich.dynamicSymbols));
    EXPECT_EQ(link(rich.text), nullptr);

    const auto& symbols = static_cast<const SymbolTableSection&>(section(rich.symbols));
    EXPECT_EQ(symbols.getShndxSection(), &section(rich.extension));
    EXPECT_EQ(symbols.getHashSection(), nullptr);
    const auto& dynamic = static_cast<const SymbolTableSection&>(section(rich.dynamicSymbols));
    EXPECT_EQ(dynamic.getShndxSection(), nullptr);
    EXPECT_EQ(dynamic.getHashSection(), &section(rich.hash));
    EXPECT_EQ(static_cast<const GroupSection&>(section(rich.group)).getSignatureSymbolIndex(),
              RichSymbol_Signature);

    const auto& strings = static_cast<const StringTableSection&>(section(rich.strings));
    EXPECT_TRUE(strings.servesSymbols());
    EXPECT_FALSE(strings.servesDynamicSymbols());
    EXPECT_FALSE(strings.servesDynamicSection());
    const auto& dynamicStrings =
        static_cast<const StringTableSection&>(section(rich.dynamicStrings));
    EXPECT_FALSE(dynamicStrings.servesSymbols());
    EXPECT_TRUE(dynamicStrings.servesDynamicSymbols());
    EXPECT_TRUE(dynamicStrings.servesDynamicSection());
    EXPECT_FALSE(dynamicStrings.servesSectionNames());
}

TEST_P(ReaderContentsTest, RelocationSectionsAndTheirTargets) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    const auto& text = static_cast<const RelocationSection&>(section(rich.textRelocations));
    EXPECT_EQ(text.getTarget(), &section(rich.text));
    EXPECT_FALSE(text.isDynamic());
    EXPECT_FALSE(text.hasAddends());
    const auto& dynamic = static_cast<const RelocationSection&>(section(rich.dynamicRelocations));
    EXPECT_EQ(dynamic.getTarget(), &section(rich.data));
    EXPECT_TRUE(dynamic.isDynamic());
    EXPECT_TRUE(dynamic.hasAddends());
    const Section& data = section(rich.data);
    ASSERT_EQ(data.getRelocationSections().getSize(), 1U);
    EXPECT_EQ(data.getRelocationSections()[0], &section(rich.dataRelocations));
    ASSERT_EQ(data.getDynamicRelocationSections().getSize(), 1U);
    EXPECT_EQ(data.getDynamicRelocationSections()[0], &section(rich.dynamicRelocations));
}

TEST_P(ReaderContentsTest, LinksThatMayBeZero) {
    const RichElf rich = richElf(format());
    for (const size_t index : {rich.dynamic, rich.preemptionMap}) {
        std::string file = rich.bytes();
        setSectionField(file, index, SectionField::Link, 0);
        ASSERT_TRUE(read(file));
        EXPECT_EQ(section(index).getLink(), nullptr);
    }
    EXPECT_TRUE(reports().empty());
}

TEST_P(ReaderContentsTest, SectionThatLinksToItself) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.text, SectionField::Link, rich.text);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(section(rich.text).getLink(), &section(rich.text));
    setSectionField(file, rich.symbols, SectionField::Link, rich.symbols);
    EXPECT_FALSE(read(file));
    EXPECT_EQ(reports().size(), 1U);
}

// A group whose link is out of range is met by both loops over the links, if both may go on.
TEST_P(ReaderContentsTest, GroupLinkOutOfRange) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.group, SectionField::Link, 200);
    const std::string number = std::to_string(rich.group);
    const std::string last = std::to_string(rich.names);
    const Report first = {2, "Group section #" + number +
                                 " refers to symbol table section #200 but the last section is #" +
                                 last};
    const Report second = {0, "Link field of section #" + number +
                                  " refers to target section #200 but the last section is #" +
                                  last};
    EXPECT_FALSE(read(file));
    EXPECT_EQ(reports(), Reports({first}));
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports(), Reports({first, second}));
    EXPECT_EQ(module().getGroupCount(), 0U);
    EXPECT_EQ(section(rich.groupedText).getGroup(), nullptr);
}

// What is left out by later passes after a bad reference.
TEST_P(ReaderContentsTest, BadSectionsAreLeftOut) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.textRelocations, SectionField::Info, 200);
    setSectionField(file, rich.group, SectionField::Link, rich.dynamicSymbols);
    setSectionField(file, rich.debugOverlay, SectionField::Link, 200);
    setSectionField(file, rich.attributes, SectionField::Link, 200);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports().size(), 4U);
    EXPECT_EQ(section(rich.text).getRelocations().getSize(), 0U);
    EXPECT_EQ(section(rich.data).getRelocations().getSize(), 4U);
    EXPECT_EQ(module().getGroupCount(), 0U);
    EXPECT_EQ(module().getDebugOverlayRecords().getSize(), 0U);
    EXPECT_FALSE(module().hasBuildAttributes());
}

} // namespace
} // namespace elfext::test
