// Symbols, relocations and groups.
#include "tests/elfext/reader_fixtures.h"

#include "elfext/interface/relocation.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;

class ReaderSymbolsTest : public ReaderFormatTest {
protected:
    const Symbol& symbol(uint32_t index) { return *module().getSymbol(index); }
    const Symbol& dynamicSymbol(uint32_t index) { return *module().getDynamicSymbol(index); }
};
INSTANTIATE_FORMATS(ReaderSymbolsTest);

TEST_P(ReaderSymbolsTest, SymbolsOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    ASSERT_EQ(module().getSymbolCount(), RichSymbol_Count - 1);
    EXPECT_EQ(namesOf(module().getSymbols()),
              Names({"rich.c", "(null)", "(null)", "local_data", "rich_function", "rich_data",
                     "rich_weak", "rich_bss", "rich_absolute", "rich_common", "rich_undefined",
                     "rich_signature", "rich_extended", "rich_debug"}));
    const Symbol& function = symbol(RichSymbol_Function);
    EXPECT_EQ(function.getCategory(), Symbol::Category_Hosted);
    EXPECT_EQ(function.getSection(), &section(rich.text));
    EXPECT_EQ(function.getOffset(), 0U);
    EXPECT_EQ(function.getSize(), 8U);
    EXPECT_EQ(function.getType(), STT_FUNC);
    EXPECT_EQ(function.getBinding(), STB_GLOBAL);
    EXPECT_FALSE(function.isDynamic());
    EXPECT_EQ(symbol(RichSymbol_LocalData).getBinding(), STB_LOCAL);
    EXPECT_EQ(symbol(RichSymbol_Weak).getBinding(), STB_WEAK);
    EXPECT_EQ(symbol(RichSymbol_Data).getOffset(), 4U);
    EXPECT_EQ(symbol(RichSymbol_Bss).getSection(), &section(rich.bss));
    EXPECT_EQ(symbol(RichSymbol_Absolute).getAbsoluteValue(), 0x77U);
    EXPECT_EQ(symbol(RichSymbol_Common).getCommonValue(), 8U);
    EXPECT_EQ(symbol(RichSymbol_Undefined).getCategory(), Symbol::Category_Undefined);
    EXPECT_EQ(symbol(RichSymbol_Extended).getSection(), &section(rich.data));
    EXPECT_EQ(symbol(RichSymbol_TextSection).getType(), STT_SECTION);
    EXPECT_EQ(namesOf(module().getAbsoluteSymbols()), Names({"rich.c", "rich_absolute"}));
    EXPECT_EQ(namesOf(module().getCommonSymbols()), Names({"rich_common"}));
    EXPECT_EQ(namesOf(module().getUndefinedSymbols()), Names({"rich_undefined"}));
    EXPECT_EQ(namesOf(section(rich.data).getHostedSymbols()),
              Names({"local_data", "rich_data", "rich_extended"}));
    EXPECT_TRUE(reports().empty());
}

TEST_P(ReaderSymbolsTest, DynamicSymbolsOfARichFile) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    EXPECT_EQ(namesOf(module().getDynamicSymbols()),
              Names({"dyn_function", "dyn_weak", "dyn_needed", "dyn_absolute"}));
    EXPECT_TRUE(dynamicSymbol(1).isDynamic());
    EXPECT_EQ(namesOf(module().getUndefinedDynamicSymbols()), Names({"dyn_needed"}));
    EXPECT_EQ(namesOf(module().getAbsoluteDynamicSymbols()), Names({"dyn_absolute"}));
    EXPECT_EQ(namesOf(section(rich.text).getHostedDynamicSymbols()),
              Names({"dyn_function", "dyn_weak"}));
}

// In a file with addresses a value is one; the offset counts from the section.
TEST_P(ReaderSymbolsTest, OffsetsInFilesWithAddresses) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_EXEC, elf::ET_DYN, elf::ET_CORE}) {
        ElfBuilder builder(format(), type);
        builder.add({.name = ".text", .contents = "12345678", .address = 0x1000});
        const size_t table =
            builder.addSymbols({{.name = "f", .section = 1, .type = elf::STT_FUNC}});
        std::string file = builder.bytes();
        setSymbolField(file, table, 1, SymbolField::Value, 0x1005);
        ASSERT_TRUE(read(file));
        const bool hasAddresses = type != elf::ET_REL;
        EXPECT_EQ(symbol(1).getOffset(), hasAddresses ? 5U : 0x1005U);
        EXPECT_EQ(symbol(1).getAbiValue(), 0x1004U);
    }
}

TEST_P(ReaderSymbolsTest, FieldsOfAnEntry) {
    ElfBuilder builder(format());
    builder.addSymbols({{.name = "s",
                         .section = elf::SHN_UNDEF,
                         .size = 0x12345678,
                         .binding = 13,
                         .type = 10,
                         .other = 0xFE}});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(symbol(1).getSize(), 0x12345678U);
    EXPECT_EQ(symbol(1).getType(), 10U);
    EXPECT_EQ(symbol(1).getBinding(), 13U);
    EXPECT_EQ(symbol(1).getVisibility(), 2U);
}

TEST_P(ReaderSymbolsTest, NamesThatAreBadStayNull) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSymbolField(file, rich.symbols, RichSymbol_Data, SymbolField::Name, 0xFFFFFF);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(symbol(RichSymbol_Data).getName(), nullptr);
    EXPECT_STREQ(symbol(RichSymbol_Weak).getName(), "rich_weak");
    // The last byte of the table is an empty name, which is one.
    setSymbolField(file, rich.symbols, RichSymbol_Data, SymbolField::Name,
                   sectionField(file, rich.strings, SectionField::Size) - 1);
    ASSERT_TRUE(readOn(file));
    EXPECT_STREQ(symbol(RichSymbol_Data).getName(), "");
    EXPECT_TRUE(reports().empty());
}

// Only four values are special. All others are section indexes, reserved ones too.
TEST_P(ReaderSymbolsTest, ReservedIndexesAreSectionIndexes) {
    ElfBuilder builder(format());
    for (int i = 1; i <= 0xFF02; ++i) {
        builder.add({});
    }
    const size_t table = builder.addSymbols({reservedSymbol("s", 0xFF00), {.name = "t"}});
    std::string file = builder.bytes();
    ASSERT_TRUE(read(file));
    EXPECT_EQ(symbol(1).getSection(), &section(0xFF00));
    setSymbolField(file, table, 1, SymbolField::Section, 0xFFF1);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(symbol(1).getCategory(), Symbol::Category_Absolute);
    setSymbolField(file, table, 1, SymbolField::Section, 0xFFF2);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(symbol(1).getCategory(), Symbol::Category_Common);
}

TEST_P(ReaderSymbolsTest, ExtendedIndexOfSection0) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setContentsNumber(file, rich.extension, 4 * RichSymbol_Extended, 4, 0);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(symbol(RichSymbol_Extended).getCategory(), Symbol::Category_Hosted);
    EXPECT_EQ(symbol(RichSymbol_Extended).getSection(), &section(0));
}

TEST_P(ReaderSymbolsTest, IndexBeyond16Bits) {
    ElfBuilder builder(format());
    for (int i = 1; i <= 0x10001; ++i) {
        builder.add({});
    }
    builder.addSymbols({{.name = "far", .section = 0x10001}});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(symbol(1).getSection(), &section(0x10001));
}

TEST_P(ReaderSymbolsTest, SectionSymbolsElsewhereAreKept) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    for (const uint32_t index : {RichSymbol_Absolute, RichSymbol_Common, RichSymbol_Undefined}) {
        setSymbolField(file, rich.symbols, index, SymbolField::Info, elf::STT_SECTION);
    }
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports().size(), 3U);
    EXPECT_EQ(module().getSymbolCount(), RichSymbol_Count - 1);
    EXPECT_EQ(symbol(RichSymbol_Absolute).getCategory(), Symbol::Category_Absolute);
}

TEST_P(ReaderSymbolsTest, TablesWithoutEntries) {
    ElfBuilder builder(format());
    const size_t strings = builder.addStringTable(".strtab");
    builder.add({.name = ".symtab", .type = elf::SHT_SYMTAB, .link = strings});
    builder.add({.name = ".dynsym",
                 .type = elf::SHT_DYNSYM,
                 .contents = std::string(symbolSize(format()), '\0'),
                 .link = strings});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSymbolCount(), 0U);
    EXPECT_EQ(module().getDynamicSymbolCount(), 0U);
}

TEST_P(ReaderSymbolsTest, SeveralTables) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    builder.addSymbols({{.name = "a", .section = 1}, {.name = "b", .section = 1}});
    const size_t strings = builder.addStringTable(".strtab2");
    const size_t second =
        builder.addSymbolTable(".symtab2", elf::SHT_SYMTAB, strings, {{.name = "c", .section = 1}});
    builder.addRelocations(".rel.text", elf::SHT_REL, 1, second, {{.offset = 2, .symbol = 1}});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(namesOf(module().getSymbols()), Names({"a", "b", "c"}));
    ASSERT_EQ(section(1).getRelocations().getSize(), 1U);
    EXPECT_EQ(section(1).getRelocations()[0]->getTarget(), &symbol(3));
}

TEST_P(ReaderSymbolsTest, EntriesSizeIsNotTakenFromTheHeader) {
    const RichElf rich = richElf(format());
    for (const uint64_t size : {0U, 1U, 7U}) {
        std::string file = rich.bytes();
        for (const size_t table :
             {rich.symbols, rich.textRelocations, rich.dynamic, rich.extension, rich.group}) {
            setSectionField(file, table, SectionField::EntrySize, size);
        }
        ASSERT_TRUE(read(file));
        EXPECT_EQ(module().getSymbolCount(), RichSymbol_Count - 1);
        EXPECT_EQ(section(rich.text).getRelocations().getSize(), 2U);
        EXPECT_EQ(module().getNeededLibraryCount(), 2U);
    }
}

TEST_P(ReaderSymbolsTest, SortedNames) {
    ASSERT_TRUE(read(richElf(format())));
    const Names names = namesOf(module().getSymbolsSortedByName());
    EXPECT_EQ(names.front(), "(null)");
    EXPECT_EQ(names.back(), "rich_weak");
    SymbolList found;
    module().findSymbols("rich_data", found);
    ASSERT_EQ(found.getSize(), 1U);
    EXPECT_EQ(found[0], &symbol(RichSymbol_Data));
}

// --- Relocations

TEST_P(ReaderSymbolsTest, RelocationsOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    EXPECT_TRUE(section(rich.text).hasRelocations());
    const auto& text = section(rich.text).getRelocations();
    ASSERT_EQ(text.getSize(), 2U);
    EXPECT_EQ(text[0]->getOffset(), 4U);
    EXPECT_EQ(text[0]->getType(), 2);
    EXPECT_EQ(text[0]->getTarget(), &symbol(RichSymbol_Data));
    EXPECT_EQ(text[0]->getSection(), &section(rich.text));
    EXPECT_FALSE(text[0]->hasAddend());
    EXPECT_FALSE(text[0]->isDynamic());
    EXPECT_EQ(text[1]->getTarget(), &symbol(RichSymbol_Undefined));
    // Those of the static table come first, as its section does.
    const auto& data = section(rich.data).getRelocations();
    ASSERT_EQ(data.getSize(), 4U);
    EXPECT_TRUE(data[0]->hasAddend());
    EXPECT_EQ(data[0]->getAddend(), 12U);
    EXPECT_EQ(data[1]->getTarget(), &symbol(RichSymbol_TextSection));
    EXPECT_EQ(data[2]->getTarget(), &dynamicSymbol(3));
    EXPECT_TRUE(data[2]->isDynamic());
    EXPECT_EQ(data[3]->getTarget(), nullptr);
    EXPECT_TRUE(data[3]->isDynamic());
    EXPECT_TRUE(section(rich.data).isRelocatable());
}

TEST_P(ReaderSymbolsTest, RelocationWithoutASymbolInAStaticTable) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    const size_t table = builder.addSymbols({{.name = "a", .section = 1}});
    builder.addRelocations(".rel.text", elf::SHT_REL, 1, table, {{.offset = 1, .symbol = 0}});
    ASSERT_TRUE(read(builder.bytes()));
    ASSERT_EQ(section(1).getRelocations().getSize(), 1U);
    EXPECT_EQ(section(1).getRelocations()[0]->getTarget(), nullptr);
    EXPECT_FALSE(section(1).getRelocations()[0]->isDynamic());
}

// The type is kept in 16 bits.
TEST_P(ReaderSymbolsTest, RelocationTypes) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setRelocationField(file, rich.textRelocations, 0, RelocationField::Info,
                       format().is64 ? uint64_t{RichSymbol_Weak} << 32 | 0x89ABCDEF
                                     : RichSymbol_Weak << 8 | 0xFF);
    ASSERT_TRUE(read(file));
    const Relocation& relocation = *section(rich.text).getRelocations()[0];
    EXPECT_EQ(relocation.getTarget(), &symbol(RichSymbol_Weak));
    EXPECT_EQ(relocation.getType(), format().is64 ? 0xCDEF : 0xFF);
}

// Entries whose symbol is not there are left out, each with a report.
TEST_P(ReaderSymbolsTest, BadRelocationsAreLeftOut) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    const auto spoil = [&](size_t table, size_t entry, uint32_t symbolIndex) {
        setRelocationField(file, table, entry, RelocationField::Info,
                           uint64_t{symbolIndex} << (format().is64 ? 32 : 8));
    };
    spoil(rich.dataRelocations, 0, RichSymbol_Count);
    spoil(rich.textRelocations, 0, 0xFFFFFF);
    spoil(rich.textRelocations, 1, 0xFFFFFE);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports().size(), 3U);
    EXPECT_FALSE(section(rich.text).hasRelocations());
    EXPECT_EQ(section(rich.text).getRelocations().getSize(), 0U);
    const auto& data = section(rich.data).getRelocations();
    ASSERT_EQ(data.getSize(), 3U);
    EXPECT_EQ(data[0]->getTarget(), &symbol(RichSymbol_TextSection));
}

// Any section can be the target, also those that a program could not relocate.
TEST_P(ReaderSymbolsTest, RelocationsOfAnySection) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    for (const size_t target : {rich.strings, rich.note, size_t{0}, rich.textRelocations}) {
        setSectionField(file, rich.textRelocations, SectionField::Info, target);
        ASSERT_TRUE(read(file));
        const bool isRelocatable = section(target).isRelocatable();
        EXPECT_EQ(section(target).getRelocations().getSize(), 2U);
        EXPECT_EQ(section(target).isRelocatable(), isRelocatable);
    }
}

TEST_P(ReaderSymbolsTest, RelocationsByOffset) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    const size_t table = builder.addSymbols({{.name = "a", .section = 1}});
    builder.addRelocations(".rel.text", elf::SHT_REL, 1, table,
                           {{.offset = 9, .symbol = 1},
                            {.offset = 3, .symbol = 1, .type = 5},
                            {.offset = 3, .symbol = 1, .type = 6}});
    ASSERT_TRUE(read(builder.bytes()));
    const auto& sorted = section(1).getRelocationsSortedByOffset();
    ASSERT_EQ(sorted.getSize(), 3U);
    EXPECT_EQ(sorted[0]->getType(), 5);
    EXPECT_EQ(sorted[1]->getType(), 6);
    EXPECT_EQ(sorted[2]->getOffset(), 9U);
}

// --- Groups

TEST_P(ReaderSymbolsTest, GroupOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    ASSERT_EQ(module().getGroupCount(), 1U);
    const Group& group = *module().getGroup(0);
    EXPECT_STREQ(group.getName(), ".group");
    EXPECT_STREQ(group.getSignature(), "rich_signature");
    EXPECT_EQ(group.getFlags(), GRP_COMDAT);
    EXPECT_EQ(group.getSection(), &section(rich.group));
    ASSERT_EQ(group.getMembers().getSize(), 1U);
    EXPECT_EQ(group.getMembers()[0], &section(rich.groupedText));
    EXPECT_EQ(section(rich.groupedText).getGroup(), &group);
    EXPECT_EQ(module().findComdatGroup("rich_signature"), &group);
}

TEST_P(ReaderSymbolsTest, GroupsOfOneSignature) {
    RichElf rich = richElf(format());
    rich.builder.addGroup(".group2", rich.symbols, RichSymbol_Signature, GRP_COMDAT,
                          {static_cast<uint32_t>(rich.data)});
    ASSERT_TRUE(read(rich.bytes()));
    ASSERT_EQ(module().getGroupCount(), 2U);
    EXPECT_EQ(module().findComdatGroup("rich_signature"), module().getGroup(0));
    EXPECT_EQ(section(rich.data).getGroup(), module().getGroup(1));
}

// The null symbol as the signature yields no group and no word.
TEST_P(ReaderSymbolsTest, GroupWithoutASignatureSymbol) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.group, SectionField::Info, 0);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getGroupCount(), 0U);
    EXPECT_EQ(section(rich.groupedText).getGroup(), nullptr);
}

TEST_P(ReaderSymbolsTest, GroupWhoseSignatureHasNoName) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.group, SectionField::Info, RichSymbol_TextSection);
    ASSERT_TRUE(read(file));
    ASSERT_EQ(module().getGroupCount(), 1U);
    EXPECT_STREQ(module().getGroup(0)->getSignature(), "");
}

TEST_P(ReaderSymbolsTest, GroupMembers) {
    ElfBuilder builder(format());
    for (int i = 0; i < 3; ++i) {
        builder.add({.name = ".text", .contents = "code"});
    }
    const size_t table = builder.addSymbols({{.name = "sig", .section = 1}});
    // The null section is passed over, a missing one and one that is there twice are reported.
    const size_t group = builder.addGroup(".group", table, 1, 0x80000001, {3, 0, 77, 1, 3});
    ASSERT_TRUE(readOn(builder.bytes()));
    const std::string number = std::to_string(group);
    EXPECT_EQ(reports(), Reports({{2, "Group section #" + number +
                                          " refers to member section #77 but the "
                                          "last section is #" +
                                          std::to_string(group + 1)},
                                  {2, "Section #3 belongs to group section #" + number +
                                          " and also to group section #" + number}}));
    const Group& made = *module().getGroup(0);
    EXPECT_EQ(made.getFlags(), 0x80000001U);
    ASSERT_EQ(made.getMembers().getSize(), 2U);
    EXPECT_EQ(made.getMembers()[0], &section(3));
    EXPECT_EQ(made.getMembers()[1], &section(1));
}

// A member keeps its first group.
TEST_P(ReaderSymbolsTest, SectionOfTwoGroups) {
    RichElf rich = richElf(format());
    rich.builder.addGroup(".group2", rich.symbols, RichSymbol_Signature, 0,
                          {static_cast<uint32_t>(rich.groupedText)});
    ASSERT_TRUE(readOn(rich.bytes()));
    EXPECT_EQ(section(rich.groupedText).getGroup(), module().getGroup(0));
    EXPECT_EQ(module().getGroup(1)->getMembers().getSize(), 0U);
}

// Section 0 that is no null section is a member like any other.
TEST_P(ReaderSymbolsTest, GroupWithSection0) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, 0, SectionField::Type, elf::SHT_PROGBITS);
    setContentsNumber(file, rich.group, 4, 4, 0);
    ASSERT_TRUE(read(file));
    ASSERT_EQ(module().getGroup(0)->getMembers().getSize(), 1U);
    EXPECT_EQ(module().getGroup(0)->getMembers()[0], &section(0));
}

TEST_P(ReaderSymbolsTest, ShortGroups) {
    for (const uint64_t size : {0U, 3U, 4U, 7U}) {
        const RichElf rich = richElf(format());
        std::string file = rich.bytes();
        setSectionField(file, rich.group, SectionField::Size, size);
        ASSERT_TRUE(read(file));
        ASSERT_EQ(module().getGroupCount(), 1U);
        EXPECT_EQ(module().getGroup(0)->getFlags(), size < 4 ? 0U : GRP_COMDAT);
        EXPECT_EQ(module().getGroup(0)->getMembers().getSize(), 0U);
    }
}

} // namespace
} // namespace elfext::test
