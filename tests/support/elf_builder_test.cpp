#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/elf_builder.h"
#include "tests/support/rich_elf.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/witness.h"

namespace testsupport {
namespace {

class ElfBuilderTest : public testing::TestWithParam<ElfFormat> {};

INSTANTIATE_TEST_SUITE_P(Formats, ElfBuilderTest, testing::ValuesIn(allElfFormats));

// What an independent reader says of a file; it must have no complaint.
std::string readBack(const std::string& bytes, std::vector<std::string> arguments) {
    static const Witness reader("readelf");
    if (!reader.present()) {
        ADD_FAILURE() << reader.absence();
        return {};
    }
    const ScratchFolder folder;
    folder.write("file.o", bytes);
    arguments.emplace_back("-W");
    arguments.emplace_back("file.o");
    const CommandResult result = reader.run(folder, arguments);
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.error, "") << result;
    return result.output;
}

bool holds(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

TEST_P(ElfBuilderTest, EmptyObjectHasNullSectionAndNames) {
    const std::string bytes = ElfBuilder(GetParam()).bytes();
    EXPECT_EQ(headerField(bytes, HeaderField::SectionHeaderCount), 2U);
    EXPECT_EQ(headerField(bytes, HeaderField::NameTableIndex), 1U);
    EXPECT_EQ(sectionField(bytes, 0, SectionField::Type), elf::SHT_NULL);
    EXPECT_EQ(sectionField(bytes, 1, SectionField::Type), elf::SHT_STRTAB);
    EXPECT_EQ(headerField(bytes, HeaderField::Machine), GetParam().is64 ? 183U : 40U);
    EXPECT_TRUE(holds(readBack(bytes, {"-S"}), ".shstrtab"));
}

TEST_P(ElfBuilderTest, RichObjectReadsBack) {
    const RichElf rich = richElf(GetParam());
    const std::string sections = readBack(rich.bytes(), {"-h", "-S", "-g"});
    for (const char* name : {".text", ".bss", ".dynsym", ".gnu.version_r", ".preemption", ".note",
                             ".symtab_shndx", ".QEL.attributes", "`.group' [rich_signature]"}) {
        EXPECT_TRUE(holds(sections, name)) << name << "\n" << sections;
    }
    const std::string symbols = readBack(rich.bytes(), {"-s"});
    for (const std::string& name : richNames(true)) {
        EXPECT_TRUE(holds(symbols, " " + name + "\n")) << name << "\n" << symbols;
    }
}

TEST_P(ElfBuilderTest, RichImageReadsBack) {
    const std::string all = readBack(richElf(GetParam(), elf::ET_DYN).bytes(), {"-lSsrdVnI"});
    for (const char* text :
         {"LOAD", "PHDR", "Shared library: [libsecond.so]", "Library soname: [librich.so.1]",
          "Name: RICH_2", "Name: NEEDED_1", "3 (NEEDED_1)", "RICH", "0x40000000"}) {
        EXPECT_TRUE(holds(all, text)) << text << "\n" << all;
    }
}

TEST_P(ElfBuilderTest, RichIndexesNameTheirSections) {
    const RichElf rich = richElf(GetParam());
    const std::string bytes = rich.bytes();
    const std::pair<size_t, uint64_t> types[] = {
        {rich.text, elf::SHT_PROGBITS},
        {rich.bss, elf::SHT_NOBITS},
        {rich.dynamicStrings, elf::SHT_STRTAB},
        {rich.dynamicSymbols, elf::SHT_DYNSYM},
        {rich.hash, elf::SHT_HASH},
        {rich.versym, elf::SHT_GNU_versym},
        {rich.verdef, elf::SHT_GNU_verdef},
        {rich.verneed, elf::SHT_GNU_verneed},
        {rich.dynamic, elf::SHT_DYNAMIC},
        {rich.preemptionMap, elf::SHT_QEL_PREEMPTMAP},
        {rich.note, elf::SHT_NOTE},
        {rich.debugOverlay, elf::SHT_QEL_DEBUGOVERLAY},
        {rich.strings, elf::SHT_STRTAB},
        {rich.symbols, elf::SHT_SYMTAB},
        {rich.extension, elf::SHT_SYMTAB_SHNDX},
        {rich.group, elf::SHT_GROUP},
        {rich.textRelocations, elf::SHT_REL},
        {rich.dataRelocations, elf::SHT_RELA},
        {rich.attributes, elf::SHT_QEL_ATTRIBUTES},
        {rich.names, elf::SHT_STRTAB},
    };
    for (const auto& [index, type] : types) {
        EXPECT_EQ(sectionField(bytes, index, SectionField::Type), type) << index;
    }
    EXPECT_EQ(headerField(bytes, HeaderField::NameTableIndex), rich.names);
}

TEST_P(ElfBuilderTest, EveryHeaderFieldCanBeReplaced) {
    for (auto field = HeaderField::Class; field <= HeaderField::NameTableIndex;
         field = static_cast<HeaderField>(static_cast<int>(field) + 1)) {
        ElfBuilder builder(GetParam());
        const std::string right = builder.bytes();
        const FieldPlace place = placeOf(field, GetParam());
        const std::string wrong = builder.header(field, 0x7B).bytes();
        ASSERT_EQ(wrong.size(), right.size());
        EXPECT_EQ(readNumber(wrong, place.offset, place.width, GetParam().littleEndian), 0x7BU);
        EXPECT_EQ(wrong.substr(0, place.offset), right.substr(0, place.offset));
        EXPECT_EQ(wrong.substr(place.offset + place.width),
                  right.substr(place.offset + place.width));
    }
}

TEST_P(ElfBuilderTest, EverySectionAndSegmentFieldCanBeReplaced) {
    for (auto field = SectionField::Name; field <= SectionField::EntrySize;
         field = static_cast<SectionField>(static_cast<int>(field) + 1)) {
        RichElf rich = richElf(GetParam());
        rich.builder.section(rich.data).raw[field] = 0x7B;
        EXPECT_EQ(sectionField(rich.bytes(), rich.data, field), 0x7BU);
    }
    for (auto field = SegmentField::Type; field <= SegmentField::Alignment;
         field = static_cast<SegmentField>(static_cast<int>(field) + 1)) {
        RichElf rich = richElf(GetParam(), elf::ET_EXEC);
        rich.builder.segment(2).raw[field] = 0x7B;
        EXPECT_EQ(segmentField(rich.bytes(), 2, field), 0x7BU);
    }
}

TEST_P(ElfBuilderTest, FieldsOfFinishedFileCanBeSpoiled) {
    const RichElf rich = richElf(GetParam(), elf::ET_DYN);
    const std::string right = rich.bytes();
    std::string file = right;
    setHeaderField(file, HeaderField::Flags, 5);
    setSegmentField(file, 1, SegmentField::PhysicalAddress, 6);
    setSymbolField(file, rich.symbols, RichSymbol_Data, SymbolField::Size, 7);
    setRelocationField(file, rich.dataRelocations, 1, RelocationField::Addend, 8);
    setSectionField(file, rich.data, SectionField::EntrySize, 9);
    EXPECT_EQ(headerField(file, HeaderField::Flags), 5U);
    EXPECT_EQ(segmentField(file, 1, SegmentField::PhysicalAddress), 6U);
    EXPECT_EQ(sectionField(file, rich.data, SectionField::EntrySize), 9U);
    EXPECT_EQ(file.size(), right.size());
    EXPECT_TRUE(holds(readBack(file, {"-s"}), "     7 OBJECT  GLOBAL DEFAULT"));
    EXPECT_TRUE(holds(readBack(file, {"-r"}), ".text + 8"));
}

TEST_P(ElfBuilderTest, ManySectionsTakeTheExtendedForms) {
    ElfBuilder builder(GetParam());
    constexpr uint32_t count = 65'300;
    for (uint32_t i = 1; i < count; ++i) {
        builder.add({.name = "s"});
    }
    builder.addSymbols({{.name = "low", .section = 5}, {.name = "high", .section = count - 1}});
    const std::string bytes = builder.bytes();
    EXPECT_EQ(headerField(bytes, HeaderField::SectionHeaderCount), 0U);
    EXPECT_EQ(headerField(bytes, HeaderField::NameTableIndex), elf::SHN_XINDEX);
    EXPECT_EQ(sectionField(bytes, 0, SectionField::Size), count + 4U);
    EXPECT_EQ(sectionField(bytes, 0, SectionField::Link), count + 3U);
    const std::string symbols = readBack(bytes, {"-s"});
    EXPECT_TRUE(holds(symbols, "    5 low")) << symbols;
    EXPECT_TRUE(holds(symbols, " 65299 high")) << symbols;
}

TEST(ElfBuilderTest, SymbolsOfMappedSectionsCountFromTheirSection) {
    ElfBuilder builder({}, elf::ET_EXEC);
    const size_t text = builder.add({.contents = "code", .mapped = true});
    const size_t table =
        builder.addSymbols({{.name = "f", .section = static_cast<uint32_t>(text), .value = 2}});
    const ElfLayout layout = builder.layout();
    const uint64_t value = readNumber(
        builder.bytes(),
        layout.sections[table].offset + 24 + placeOf(SymbolField::Value, {}).offset, 8, true);
    EXPECT_EQ(value, imageBase + layout.sections[text].offset + 2);
}

TEST(ElfBuilderTest, NumbersOutsideTheBytesAreRefused) {
    std::string bytes(8, '\0');
    EXPECT_THROW(readNumber(bytes, 5, 4, true), std::out_of_range);
    EXPECT_THROW(writeNumber(bytes, ~uint64_t{0}, 2, true, 1), std::out_of_range);
    writeNumber(bytes, 4, 4, false, 0x01020304);
    EXPECT_EQ(bytes, std::string(4, '\0') + "\1\2\3\4");
    EXPECT_EQ(readNumber(bytes, 4, 4, true), 0x04030201U);
}

} // namespace
} // namespace testsupport
