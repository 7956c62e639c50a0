// Dynamic sections: tags and preemption maps.
#include "tests/elfext/reader_dynamic_fixtures.h"

#include "elfext/interface/dynamic_records.h"
#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;
using DynamicValue = ObjectModule::DynamicValue;

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

} // namespace
} // namespace elfext::test
