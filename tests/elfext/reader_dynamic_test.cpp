// Dynamic sections: tags, preemption maps and symbol versions.
#include "tests/elfext/reader_fixtures.h"

#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/version_records.h"
#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;
using DynamicValue = ObjectModule::DynamicValue;

class ReaderDynamicTest : public ReaderFormatTest {
protected:
    // A file with one dynamic section of these tags. Its string table is section 1 and holds
    // "first" at 1, "second" at 7.
    ElfBuilder builderOf(const std::vector<BuiltDynamicTag>& tags) {
        ElfBuilder builder(format(), elf::ET_DYN);
        const size_t strings = builder.addStringTable(".dynstr");
        builder.addString(strings, "first");
        builder.addString(strings, "second");
        m_Dynamic = builder.addDynamic(strings, tags);
        return builder;
    }
    bool readTags(const std::vector<BuiltDynamicTag>& tags) {
        startModule();
        return read(builderOf(tags).bytes());
    }
    ElfBytes bytes() const { return ElfBytes(format()); }

    static constexpr uint64_t firstText = 1;
    static constexpr uint64_t secondText = 7;
    static constexpr uint64_t lastText = 13; // the zero byte at the table's end
    static constexpr uint64_t tableSize = 14;
    size_t m_Dynamic = 0;
};
INSTANTIATE_FORMATS(ReaderDynamicTest);

TEST_P(ReaderDynamicTest, DynamicSectionOfARichFile) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    ASSERT_EQ(module().getNeededLibraryCount(), 2U);
    EXPECT_STREQ(module().getNeededLibrary(0)->getName(), "libfirst.so");
    EXPECT_STREQ(module().getNeededLibrary(1)->getName(), "libsecond.so");
    EXPECT_STREQ(module().getSoName(), "librich.so.1");
    ASSERT_EQ(module().getLibrarySearchPathCount(), 2U);
    EXPECT_STREQ(module().getLibrarySearchPath(0)->getPath(), "/rpath");
    EXPECT_EQ(module().getLibrarySearchPath(0)->getTag(), DT_RPATH);
    EXPECT_STREQ(module().getLibrarySearchPath(1)->getPath(), "/runpath");
    EXPECT_EQ(module().getLibrarySearchPath(1)->getTag(), DT_RUNPATH);
    const uint64_t text = section(rich.text).getAddress();
    EXPECT_EQ(module().getInit(), DynamicValue(text));
    EXPECT_EQ(module().getFini(), DynamicValue(text + 4));
    EXPECT_EQ(module().getInitArray(), DynamicValue(text + 8));
    EXPECT_EQ(module().getInitArraySize(), DynamicValue(8));
    EXPECT_EQ(module().getDynamicFlags(), 1U | DF_SYMBOLIC | DF_TEXTREL | DF_BIND_NOW);
    EXPECT_NE(module().getProperties() & ModuleProperty_DebugTag, 0U);
}

TEST_P(ReaderDynamicTest, TagsWithAValue) {
    struct Row {
        uint32_t tag;
        const DynamicValue& (ObjectModule::*get)() const;
    };
    const Row rows[] = {
        {12, &ObjectModule::getInit},          {13, &ObjectModule::getFini},
        {25, &ObjectModule::getInitArray},     {26, &ObjectModule::getFiniArray},
        {27, &ObjectModule::getInitArraySize}, {28, &ObjectModule::getFiniArraySize},
        {32, &ObjectModule::getPreinitArray},  {33, &ObjectModule::getPreinitArraySize},
    };
    for (const Row& row : rows) {
        ASSERT_TRUE(readTags({{row.tag, 0x89ABCDEF}}));
        for (const Row& other : rows) {
            EXPECT_EQ((module().*other.get)(),
                      &other == &row ? DynamicValue(0x89ABCDEF) : DynamicValue())
                << row.tag << ' ' << other.tag;
        }
        ASSERT_TRUE(readTags({{row.tag, 0}}));
        EXPECT_EQ((module().*row.get)(), DynamicValue(0));
    }
}

TEST_P(ReaderDynamicTest, TagsThatAreFlags) {
    struct Row {
        BuiltDynamicTag tag;
        uint32_t flags;
    };
    const Row rows[] = {
        {{16, 0}, 2}, {{22, 0}, 4}, {{24, 0}, 8}, {{30, 0x80000001}, 0x80000001}, {{30, 0}, 0},
    };
    for (const Row& row : rows) {
        ASSERT_TRUE(readTags({row.tag}));
        EXPECT_EQ(module().getDynamicFlags(), row.flags);
        EXPECT_TRUE(module().hasDynamicFlags());
    }
    ASSERT_TRUE(readTags({{30, 0x10}, {16}, {30, 0x21}}));
    EXPECT_EQ(module().getDynamicFlags(), 0x33U);
    ASSERT_TRUE(readTags({{1, 1}}));
    EXPECT_FALSE(module().hasDynamicFlags());
}

TEST_P(ReaderDynamicTest, OnlyTheLow32BitsCount) {
    if (!format().is64) {
        return;
    }
    ASSERT_TRUE(readTags({{0xABCD00000000 + 12, 0x1234500000678}, {0xFF00000000 + 1, 7}}));
    EXPECT_EQ(module().getInit(), DynamicValue(0x678));
    EXPECT_EQ(module().getNeededLibraryCount(), 1U);
}

TEST_P(ReaderDynamicTest, TextsOutsideOfTheTableAreLeftOut) {
    for (const uint64_t value : {uint64_t{0}, tableSize, uint64_t{0xFFFFFFFF}}) {
        ASSERT_TRUE(readTags({{1, value}, {14, value}, {15, value}, {29, value}}));
        EXPECT_EQ(module().getNeededLibraryCount(), 0U);
        EXPECT_EQ(module().getLibrarySearchPathCount(), 0U);
        EXPECT_EQ(module().getSoName(), nullptr);
        EXPECT_TRUE(reports().empty());
    }
    ASSERT_TRUE(readTags({{1, lastText}, {14, secondText}, {1, firstText}}));
    ASSERT_EQ(module().getNeededLibraryCount(), 2U);
    EXPECT_STREQ(module().getNeededLibrary(0)->getName(), "");
    EXPECT_STREQ(module().getNeededLibrary(1)->getName(), "first");
    EXPECT_STREQ(module().getSoName(), "second");
}

TEST_P(ReaderDynamicTest, NoTextsWithoutATable) {
    std::string file = builderOf({{1, firstText}, {14, firstText}, {12, 5}}).bytes();
    setSectionField(file, m_Dynamic, SectionField::Link, 0);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getNeededLibraryCount(), 0U);
    EXPECT_EQ(module().getSoName(), nullptr);
    EXPECT_EQ(module().getInit(), DynamicValue(5));
}

TEST_P(ReaderDynamicTest, NullTagEndsTheScan) {
    ASSERT_TRUE(readTags({{12, 1}, {0, 0}, {13, 2}}));
    EXPECT_EQ(module().getInit(), DynamicValue(1));
    EXPECT_EQ(module().getFini(), DynamicValue());
}

TEST_P(ReaderDynamicTest, SectionWithoutANullTag) {
    std::string file = builderOf({{12, 1}, {13, 2}, {25, 3}}).bytes();
    const uint64_t entry = dynamicEntrySize(format());
    for (const uint64_t size : {entry * 2, entry * 3 - 1}) {
        setSectionField(file, m_Dynamic, SectionField::Size, size);
        ASSERT_TRUE(read(file));
        EXPECT_EQ(module().getFini(), DynamicValue(2));
        EXPECT_EQ(module().getInitArray(), DynamicValue());
    }
    setSectionField(file, m_Dynamic, SectionField::Size, 0);
    ASSERT_TRUE(read(file));
    EXPECT_EQ(module().getInit(), DynamicValue());
}

TEST_P(ReaderDynamicTest, OtherTagsAreIgnored) {
    ASSERT_TRUE(readTags({{2, 1},
                          {3, 1},
                          {23, 1},
                          {31, 1},
                          {34, 1},
                          {0x60000000, 1},
                          {0x70000000, 1},
                          {0x7FFFFFFF, 1},
                          {0xFFFFFFFF, 1}}));
    EXPECT_EQ(module().getNeededLibraryCount(), 0U);
    EXPECT_FALSE(module().hasDynamicFlags());
    EXPECT_TRUE(reports().empty());
}

TEST_P(ReaderDynamicTest, SeveralDynamicSections) {
    ElfBuilder builder = builderOf({{1, firstText}});
    builder.addDynamic(1, {{1, secondText}});
    ASSERT_TRUE(read(builder.bytes()));
    ASSERT_EQ(module().getNeededLibraryCount(), 2U);
    EXPECT_STREQ(module().getNeededLibrary(1)->getName(), "second");
}

// --- Preemption maps

class PreemptionTest : public ReaderDynamicTest {
protected:
    // Reads a map as the contents of a section whose address and place the tag names, `start` bytes
    // into it.
    bool readMap(const std::string& map, uint64_t start = 0) {
        ElfBuilder builder = builderOf({{0x70000002, 0x5000 + start}});
        builder.add(
            {.name = ".map", .type = elf::SHT_QEL_PREEMPTMAP, .contents = map, .address = 0x5000});
        startModule();
        return read(builder.bytes());
    }
    uint32_t count() { return module().getPreemptionCount(); }
};
INSTANTIATE_FORMATS(PreemptionTest);

TEST_P(PreemptionTest, MapOfARichFile) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_DYN}) {
        ASSERT_TRUE(read(richElf(format(), type)));
        ASSERT_EQ(count(), 2U);
        const Preemption& first = *module().getPreemption(0);
        EXPECT_STREQ(first.getSymbolName(), "preempted_symbol");
        EXPECT_STREQ(first.getPreemptingDllName(), "preempting.dll");
        ASSERT_EQ(first.getPreemptedDllCount(), 1U);
        EXPECT_STREQ(first.getPreemptedDll(0)->getName(), "preempted.dll");
        const Preemption& second = *module().getPreemption(1);
        EXPECT_STREQ(second.getSymbolName(), "");
        EXPECT_EQ(second.getPreemptedDllCount(), 2U);
    }
}

TEST_P(PreemptionTest, CountOf0EndsTheMap) {
    ASSERT_TRUE(readMap(bytes()
                            .word(1)
                            .word(firstText)
                            .word(secondText)
                            .word(firstText)
                            .word(0)
                            .word(1)
                            .word(firstText)
                            .word(secondText)
                            .word(firstText)
                            .bytes()));
    ASSERT_EQ(count(), 1U);
    EXPECT_STREQ(module().getPreemption(0)->getPreemptingDllName(), "second");
}

TEST_P(PreemptionTest, RecordsThatDoNotFitEndTheMap) {
    const std::string record =
        bytes().word(1).word(firstText).word(secondText).word(firstText).bytes();
    for (size_t rest = 0; rest < 16; ++rest) {
        ASSERT_TRUE(readMap(record + record.substr(0, rest)));
        EXPECT_EQ(count(), 1U) << rest;
    }
    ASSERT_TRUE(readMap(record + record));
    EXPECT_EQ(count(), 2U);
    ASSERT_TRUE(readMap(bytes().word(0xFFFFFFFF).word(0).word(0).word(0).bytes()));
    EXPECT_EQ(count(), 0U);
    EXPECT_TRUE(reports().empty());
}

TEST_P(PreemptionTest, NamesOutsideOfTheTableEndTheMap) {
    const std::string good =
        bytes().word(1).word(firstText).word(secondText).word(firstText).bytes();
    for (int bad = 0; bad < 3; ++bad) {
        ElfBytes record = bytes();
        record.word(1);
        for (int i = 0; i < 3; ++i) {
            record.word(i == bad ? tableSize : firstText);
        }
        ASSERT_TRUE(readMap(good + record.bytes() + good));
        EXPECT_EQ(count(), 1U) << bad;
        EXPECT_TRUE(reports().empty());
    }
}

TEST_P(PreemptionTest, MapStartsWhereTheTagSays) {
    const std::string record =
        bytes().word(1).word(0).word(0).word(0).word(1).word(firstText).word(0).word(0).bytes();
    ASSERT_TRUE(readMap(record, 16));
    ASSERT_EQ(count(), 1U);
    EXPECT_STREQ(module().getPreemption(0)->getSymbolName(), "first");
    ASSERT_TRUE(readMap(record, record.size()));
    EXPECT_EQ(count(), 0U);
    ASSERT_TRUE(readMap(record, record.size() - 1));
    EXPECT_EQ(count(), 0U);
}

// In the processor's own ABI on a 32-bit machine the position is a file offset.
TEST_P(PreemptionTest, FileOffsets) {
    const std::string record = bytes().word(1).word(firstText).word(0).word(0).bytes();
    for (const uint32_t machine : {40U, 183U, 184U}) {
        for (const uint32_t osAbi : {0U, 64U}) {
            ElfBuilder builder = builderOf({{0x70000002, 0}});
            // What is not in the file is at no file offset, and section 0 is no section.
            builder.add({.name = ".bss",
                         .type = elf::SHT_NOBITS,
                         .raw = {{SectionField::Size, 0x1000}, {SectionField::Offset, 0}}});
            const size_t map = builder.add({.name = ".map", .contents = record, .address = 0x5000});
            builder.header(HeaderField::Machine, machine).header(HeaderField::OsAbi, osAbi);
            std::string file = builder.bytes();
            const size_t entry = placeOf(file, m_Dynamic) + dynamicEntrySize(format()) / 2;
            writeNumber(file, entry, 4, format().littleEndian, 0);
            const size_t low = entry + (format().is64 && !format().littleEndian ? 4 : 0);
            const auto setPosition = [&](uint64_t value) {
                writeNumber(file, low, 4, format().littleEndian, value);
            };
            const bool isOffset = machine == 40 && osAbi == 64;
            setPosition(placeOf(file, map));
            ASSERT_TRUE(read(file));
            EXPECT_EQ(count(), isOffset ? 1U : 0U) << machine << ' ' << osAbi;
            setPosition(0x5000);
            setSectionField(file, 0, SectionField::Size, 0x100000);
            ASSERT_TRUE(read(file));
            EXPECT_EQ(count(), isOffset ? 0U : 1U) << machine << ' ' << osAbi;
        }
    }
}

TEST_P(PreemptionTest, PositionInNoSectionOrInOneWithoutBytes) {
    ASSERT_TRUE(readTags({{0x70000002, 0x77777777}}));
    EXPECT_EQ(count(), 0U);
    ElfBuilder builder = builderOf({{0x70000002, 0x5000}});
    builder.add({.name = ".bss", .type = elf::SHT_NOBITS, .noBitsSize = 64, .address = 0x5000});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(count(), 0U);
}

// The map may lie in a section whose contents are left in the file.
TEST_P(PreemptionTest, MapInDeferredContents) {
    ElfBuilder builder = builderOf({{0x70000002, 0x5000}});
    const size_t map =
        builder.add({.name = ".map",
                     .contents = bytes().word(1).word(firstText).word(0).word(0).bytes(),
                     .address = 0x5000});
    builder.add({.name = ".large", .contents = std::string(0x100000, 'x'), .address = 0x900000});
    const ScratchFolder folder;
    folder.write("large", builder.bytes());
    BySizeDeferredContentsSelector selector(0);
    ASSERT_TRUE(readElfFile(folder.pathOf("large").c_str(), &module(), &selector));
    EXPECT_TRUE(section(map).isContentsDeferred());
    ASSERT_EQ(count(), 1U);
    EXPECT_STREQ(module().getPreemption(0)->getSymbolName(), "first");
}

// --- Versions

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
