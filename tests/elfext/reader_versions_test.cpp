// Symbol versions.
#include "tests/elfext/reader_dynamic_fixtures.h"

#include "elfext/interface/version_records.h"
#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;

class VersionsTest : public ReaderDynamicTest {
protected:
    const Symbol& symbol(uint32_t index) { return *module().getDynamicSymbol(index); }

    static std::string definitionName(const Symbol& symbol) {
        const SymbolVersionDefinition* const definition = symbol.getSymbolVersionDefinition();
        return definition == nullptr
                   ? "(none)"
                   : definition->getDefinedVersionIdentifier(0)->getVersionString();
    }
    static std::string requirementName(const Symbol& symbol) {
        const SymbolVersionRequirement* const requirement = symbol.getSymbolVersionRequirement();
        return requirement == nullptr
                   ? "(none)"
                   : requirement->getRequiredVersionIdentifier().getVersionString();
    }
    bool hasVersions() {
        for (uint32_t i = 1; i <= module().getDynamicSymbolCount(); ++i) {
            if (symbol(i).getSymbolVersionDefinition() != nullptr ||
                symbol(i).getSymbolVersionRequirement() != nullptr) {
                return true;
            }
        }
        return module().getFileVersionDefinition() != nullptr;
    }
    // Takes a tag out of the dynamic section by making it one that nobody knows.
    void dropTag(std::string& file, const RichElf& rich, uint32_t tag) {
        const size_t entry = dynamicEntrySize(format());
        const size_t width = entry / 2;
        for (size_t at = placeOf(file, rich.dynamic);; at += entry) {
            const uint64_t present = readNumber(file, at, width, format().littleEndian);
            ASSERT_NE(present, 0U);
            if (present == tag) {
                writeNumber(file, at, width, format().littleEndian, 0x60000000);
                return;
            }
        }
    }
};
INSTANTIATE_FORMATS(VersionsTest);

TEST_P(VersionsTest, VersionsOfARichFile) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_DYN}) {
        ASSERT_TRUE(read(richElf(format(), type)));
        const FileVersionDefinition* const file = module().getFileVersionDefinition();
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getIndex(), 1);
        ASSERT_EQ(file->getDefinedVersionIdentifierCount(), 1U);
        EXPECT_STREQ(file->getDefinedVersionIdentifier(0)->getVersionString(), "librich.so");
        EXPECT_EQ(definitionName(symbol(1)), "RICH_2");
        const SymbolVersionDefinition& definition = *symbol(1).getSymbolVersionDefinition();
        EXPECT_EQ(definition.getIndex(), 2);
        ASSERT_EQ(definition.getDefinedVersionIdentifierCount(), 2U);
        EXPECT_STREQ(definition.getDefinedVersionIdentifier(1)->getVersionString(), "librich.so");
        EXPECT_EQ(definitionName(symbol(2)), "(none)");
        EXPECT_EQ(requirementName(symbol(3)), "NEEDED_1");
        EXPECT_STREQ(symbol(3).getSymbolVersionRequirement()->getLibraryName(), "libneeded.so");
        EXPECT_EQ(symbol(3).getSymbolVersionRequirement()->getIndex(), 3);
        EXPECT_EQ(definitionName(symbol(3)), "(none)");
        EXPECT_EQ(requirementName(symbol(4)), "(none)");
    }
    EXPECT_TRUE(reports().empty());
}

// Of several versions of one number the first one is meant. Number 1 stands for none.
TEST_P(VersionsTest, FirstVersionOfANumberCounts) {
    ElfBuilder builder = builderOf({{DT_VERDEFNUM, 3}, {DT_VERNEEDNUM, 2}});
    // The last section of each type is the one that counts.
    for (const uint32_t type : {elf::SHT_GNU_verdef, elf::SHT_GNU_verneed, elf::SHT_GNU_versym}) {
        builder.add({.name = ".empty", .type = type, .link = 1});
    }
    builder.addSymbolTable(".dynsym", elf::SHT_DYNSYM, 1, {reservedSymbol("other", elf::SHN_ABS)});
    ElfBytes definitions = bytes();
    ElfBytes requirements = bytes();
    definitions.half(1).half(0).half(1).half(1).word(0).word(20).word(28);
    definitions.word(secondText).word(0);
    for (const bool isLast : {false, true}) {
        const uint32_t name = isLast ? secondText : firstText;
        definitions.half(1).half(0).half(0x8002).half(1).word(0).word(20).word(isLast ? 0 : 28);
        definitions.word(name).word(0);
        requirements.half(1).half(1).word(firstText).word(16).word(isLast ? 0 : 32);
        requirements.word(0).half(2).half(0x8003).word(name).word(0);
    }
    builder.add(
        {.name = ".d", .type = elf::SHT_GNU_verdef, .contents = definitions.bytes(), .link = 1});
    builder.add(
        {.name = ".r", .type = elf::SHT_GNU_verneed, .contents = requirements.bytes(), .link = 1});
    const size_t symbols = builder.addSymbolTable(
        ".dynsym", elf::SHT_DYNSYM, 1,
        {reservedSymbol("a", elf::SHN_ABS), {.name = "b"}, reservedSymbol("c", elf::SHN_ABS)});
    builder.add({.name = ".v",
                 .type = elf::SHT_GNU_versym,
                 .contents = bytes().half(0).half(2).half(3).half(1).bytes(),
                 .link = symbols});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(definitionName(symbol(2)), "first");
    EXPECT_EQ(requirementName(symbol(3)), "first");
    EXPECT_EQ(symbol(3).getSymbolVersionRequirement()->getFlags(), 2);
    EXPECT_EQ(definitionName(symbol(4)), "(none)");
    EXPECT_EQ(requirementName(symbol(4)), "(none)");
}

// Definitions that share their names would have far more of them together than there is room for.
// The walk ends where records side by side would.
TEST_P(VersionsTest, DefinitionsThatShareTheirNames) {
    constexpr uint32_t count = 100;
    constexpr uint32_t recordSize = 20;
    ElfBuilder builder = builderOf({{DT_VERDEFNUM, count}});
    ElfBytes records = bytes();
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t names = (count - i) * recordSize;
        records.half(1).half(0).half(2 + i).half(count).word(0).word(names).word(recordSize);
    }
    for (uint32_t i = 0; i < count; ++i) {
        records.word(firstText).word(8);
    }
    builder.add(
        {.name = ".d", .type = elf::SHT_GNU_verdef, .contents = records.bytes(), .link = 1});
    const size_t symbols = builder.addSymbolTable(
        ".dynsym", elf::SHT_DYNSYM, 1,
        {reservedSymbol("a", elf::SHN_ABS), reservedSymbol("b", elf::SHN_ABS)});
    builder.add({.name = ".v",
                 .type = elf::SHT_GNU_versym,
                 .contents = bytes().half(0).half(2).half(50).bytes(),
                 .link = symbols});
    ASSERT_TRUE(read(builder.bytes()));
    ASSERT_NE(symbol(1).getSymbolVersionDefinition(), nullptr);
    EXPECT_EQ(symbol(1).getSymbolVersionDefinition()->getDefinedVersionIdentifierCount(), count);
    EXPECT_EQ(symbol(2).getSymbolVersionDefinition(), nullptr);
}

// Bit 15 only hides a symbol.
TEST_P(VersionsTest, HiddenSymbols) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setContentsNumber(file, rich.versym, 2, 2, 0x8002);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(definitionName(symbol(1)), "RICH_2");
}

TEST_P(VersionsTest, NumbersWithoutAVersion) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setContentsNumber(file, rich.versym, 2, 2, 77);
    // What is not defined here has no definition.
    setContentsNumber(file, rich.versym, 6, 2, 2);
    // What is defined as a copy of another library's has a requirement.
    setContentsNumber(file, rich.versym, 4, 2, 3);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(definitionName(symbol(1)), "(none)");
    EXPECT_EQ(definitionName(symbol(3)), "(none)");
    EXPECT_EQ(requirementName(symbol(3)), "(none)");
    EXPECT_EQ(requirementName(symbol(2)), "NEEDED_1");
}

// Tags and sections must agree, otherwise nothing is read and nothing said.
TEST_P(VersionsTest, TagsWithoutSectionsAndSectionsWithoutTags) {
    const RichElf rich = richElf(format());
    for (const uint32_t tag : {0x6FFFFFFDU, 0x6FFFFFFFU}) {
        std::string file = rich.bytes();
        dropTag(file, rich, tag);
        ASSERT_TRUE(read(file));
        EXPECT_FALSE(hasVersions());
    }
    for (const size_t index : {rich.verdef, rich.verneed, rich.versym}) {
        std::string file = rich.bytes();
        setSectionField(file, index, SectionField::Type, elf::SHT_PROGBITS);
        ASSERT_TRUE(read(file));
        EXPECT_FALSE(hasVersions());
    }
    EXPECT_TRUE(reports().empty());
}

TEST_P(VersionsTest, BothAbsent) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    dropTag(file, rich, 0x6FFFFFFF);
    setSectionField(file, rich.verneed, SectionField::Type, elf::SHT_PROGBITS);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(definitionName(symbol(1)), "RICH_2");
    EXPECT_EQ(requirementName(symbol(3)), "(none)");
}

TEST_P(VersionsTest, VersymOfAnotherLength) {
    const RichElf rich = richElf(format());
    for (const uint64_t size : {8U, 12U, 0U}) {
        std::string file = rich.bytes();
        setSectionField(file, rich.versym, SectionField::Size, size);
        ASSERT_TRUE(readOn(file));
        EXPECT_FALSE(hasVersions()) << size;
    }
}

// Without dynamic symbols the definitions alone are read.
TEST_P(VersionsTest, NoDynamicSymbols) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    setSectionField(file, rich.dynamicSymbols, SectionField::Type, elf::SHT_PROGBITS);
    setSectionField(file, rich.hash, SectionField::Type, elf::SHT_PROGBITS);
    setSectionField(file, rich.dynamicRelocations, SectionField::Type, elf::SHT_PROGBITS);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getDynamicSymbolCount(), 0U);
    EXPECT_NE(module().getFileVersionDefinition(), nullptr);
}

TEST_P(VersionsTest, CountsFromTheTags) {
    RichElf rich = richElf(format());
    std::string file = rich.bytes();
    const size_t entry = dynamicEntrySize(format());
    const auto setCount = [&](uint32_t tag, uint64_t count) {
        for (size_t at = placeOf(file, rich.dynamic);; at += entry) {
            if (readNumber(file, at, entry / 2, format().littleEndian) == tag) {
                writeNumber(file, at + entry / 2, entry / 2, format().littleEndian, count);
                return;
            }
        }
    };
    setCount(0x6FFFFFFD, 1);
    setCount(0x6FFFFFFF, 0);
    ASSERT_TRUE(read(file));
    EXPECT_NE(module().getFileVersionDefinition(), nullptr);
    EXPECT_EQ(definitionName(symbol(1)), "(none)");
    EXPECT_EQ(requirementName(symbol(3)), "(none)");
    // More than there are do no harm.
    setCount(0x6FFFFFFD, 0xFFFFFFFF);
    setCount(0x6FFFFFFF, 0xFFFFFFFF);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(definitionName(symbol(1)), "RICH_2");
    EXPECT_EQ(requirementName(symbol(3)), "NEEDED_1");
}

// The first tag of a kind counts.
TEST_P(VersionsTest, RepeatedCountTags) {
    const RichElf rich = richElf(format());
    std::string file = rich.bytes();
    const size_t width = dynamicEntrySize(format()) / 2;
    const auto setTag = [&](uint64_t tag, uint64_t newTag, uint64_t value) {
        size_t at = placeOf(file, rich.dynamic);
        while (readNumber(file, at, width, format().littleEndian) != tag) {
            at += 2 * width;
        }
        writeNumber(file, at, width, format().littleEndian, newTag);
        writeNumber(file, at + width, width, format().littleEndian, value);
    };
    // In front of the two counts of the file stand one record of definitions, and none required.
    setTag(DT_NEEDED, DT_VERDEFNUM, 1);
    setTag(DT_NEEDED, DT_VERNEEDNUM, 0);
    ASSERT_TRUE(read(file));
    EXPECT_NE(module().getFileVersionDefinition(), nullptr);
    EXPECT_EQ(definitionName(symbol(1)), "(none)");
    EXPECT_EQ(requirementName(symbol(3)), "(none)");
}

TEST_P(VersionsTest, RecordsThatLeaveTheSection) {
    const RichElf rich = richElf(format());
    struct Row {
        size_t section;
        uint64_t offset; // of a word of 32 bits
    };
    // vd_aux, vd_next, vda_name, vda_next; vn_file, vn_aux, vn_next, vna_name, vna_next.
    const Row rows[] = {{rich.verdef, 12},  {rich.verdef, 16}, {rich.verdef, 20},
                        {rich.verdef, 24},  {rich.verdef, 40}, {rich.verdef, 52},
                        {rich.verneed, 4},  {rich.verneed, 8}, {rich.verneed, 12},
                        {rich.verneed, 24}, {rich.verneed, 28}};
    for (const Row& row : rows) {
        for (const uint64_t value : {1U, 3U, 0x7FU, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            std::string file = rich.bytes();
            setContentsNumber(file, row.section, row.offset, 4, value);
            // Endless counts, so that only the offsets end a chain.
            setContentsNumber(file, rich.verdef, 6, 2, 0xFFFF);
            setContentsNumber(file, rich.verneed, 2, 2, 0xFFFF);
            EXPECT_TRUE(read(file)) << row.section << ' ' << row.offset << ' ' << value;
        }
    }
    EXPECT_TRUE(reports().empty());
}

TEST_P(VersionsTest, ShortSections) {
    const RichElf rich = richElf(format());
    for (uint64_t size = 0; size < 64; ++size) {
        std::string file = rich.bytes();
        setSectionField(file, rich.verdef, SectionField::Size, size);
        setSectionField(file, rich.verneed, SectionField::Size, std::min<uint64_t>(size, 32));
        EXPECT_TRUE(read(file)) << size;
    }
}

} // namespace
} // namespace elfext::test
