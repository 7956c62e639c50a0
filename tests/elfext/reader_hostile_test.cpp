// Files that ask for much with little, and files that are spoiled anywhere: each ends in a module
// or in a report, soon and without much memory.
#include "tests/elfext/reader_fixtures.h"

#include "tests/support/elf_fields.h"

#include <random>

namespace elfext::test {
namespace {

using namespace testsupport;

class ReaderHostileTest : public ReaderTest {
protected:
    static constexpr ElfFormat wide = {true, true};

    // A string table of one text of 0x80000 bytes, and "short" behind it.
    static size_t addLongText(ElfBuilder& builder) {
        return builder.add({.name = ".long",
                            .type = elf::SHT_STRTAB,
                            .contents = std::string(1, '\0') + std::string(0x80000 - 1, 'x') +
                                        '\0' + "short" + '\0'});
    }
    void expectOutOfMemory() {
        ASSERT_FALSE(reports().empty());
        EXPECT_EQ(reports().back(), (Report{0, "Out of memory"}));
        EXPECT_TRUE(module().isEmpty());
    }
    // Whatever comes out, the module and the handler agree on it.
    void expectSense(bool isRead) {
        if (isRead) {
            for (uint32_t i = 0; i < module().getSectionCount(); ++i) {
                section(i).getRelocations();
                section(i).getContainedCount();
            }
            module().getSymbolsSortedByAddress();
        } else {
            EXPECT_FALSE(reports().empty());
            EXPECT_TRUE(module().isEmpty());
        }
    }
};

// Every prefix of a file.
TEST_F(ReaderHostileTest, CutFiles) {
    for (const ElfFormat format : allElfFormats) {
        for (const uint16_t type : {elf::ET_REL, elf::ET_EXEC}) {
            const std::string file = richElf(format, type).bytes();
            for (size_t size = 0; size < file.size(); size += 7) {
                startModule();
                EXPECT_FALSE(read(file.substr(0, size)));
                expectSense(false);
            }
        }
    }
}

// Bytes all over a file, with each of some values.
TEST_F(ReaderHostileTest, SpoiledBytes) {
    const uint8_t values[] = {0, 1, 0x7F, 0x80, 0xFF};
    for (const ElfFormat format : allElfFormats) {
        const std::string file = richElf(format, elf::ET_EXEC).bytes();
        for (size_t at = 0; at < file.size(); at += 4) {
            std::string spoiled = file;
            spoiled[at + at / 4 % 4] = static_cast<char>(values[at / 4 % 5]);
            startModule();
            expectSense(read(spoiled));
        }
    }
}

// Numbers in random places, with a handler that goes on wherever that is possible.
TEST_F(ReaderHostileTest, RandomNumbers) {
    std::mt19937_64 random(20240501);
    platform::setCheckLevel("none");
    for (const ElfFormat format : allElfFormats) {
        const std::string file = richElf(format, elf::ET_EXEC).bytes();
        for (int round = 0; round < 1000; ++round) {
            std::string spoiled = file;
            for (uint64_t count = random() % 6; count > 0; --count) {
                const uint64_t value = random() >> random() % 64;
                const size_t width = size_t{1} << random() % 4;
                writeNumber(spoiled, random() % (file.size() - 8), width, format.littleEndian,
                            value);
            }
            startModule(true);
            expectSense(read(spoiled));
        }
    }
}

TEST_F(ReaderHostileTest, ManySymbolTablesOfOneStretch) {
    ElfBuilder builder(wide);
    const size_t strings = builder.addStringTable(".strtab");
    std::vector<BuiltElfSymbol> symbols(10000);
    const size_t table = builder.addSymbolTable(".symtab", elf::SHT_SYMTAB, strings, symbols);
    const size_t first = builder.sectionCount();
    for (int i = 0; i < 1000; ++i) {
        builder.add({.type = elf::SHT_SYMTAB, .link = strings});
    }
    std::string file = builder.bytes();
    for (size_t i = first; i < first + 1000; ++i) {
        setSectionField(file, i, SectionField::Offset, placeOf(file, table));
        setSectionField(file, i, SectionField::Size, sectionField(file, table, SectionField::Size));
    }
    EXPECT_FALSE(read(file));
    expectOutOfMemory();
}

TEST_F(ReaderHostileTest, ManyStringTablesOfOneStretch) {
    ElfBuilder builder(wide);
    const size_t data = builder.add({.name = ".data", .contents = std::string(0x40000, 'x')});
    for (int i = 0; i < 2000; ++i) {
        builder.add({.type = elf::SHT_STRTAB});
    }
    std::string file = builder.bytes();
    for (size_t i = data + 1; i <= data + 2000; ++i) {
        setSectionField(file, i, SectionField::Offset, placeOf(file, data));
        setSectionField(file, i, SectionField::Size, 0x40000);
    }
    platform::setCheckLevel("none");
    EXPECT_FALSE(readOn(file));
    expectOutOfMemory();
}

// From a stream each section's bytes are copied.
TEST_F(ReaderHostileTest, ManySectionsOfOneStretchOfAStream) {
    ElfBuilder builder(wide);
    const size_t data = builder.add({.name = ".data", .contents = std::string(0x120000, 'x')});
    for (int i = 0; i < 2000; ++i) {
        builder.add({});
    }
    std::string file = builder.bytes();
    for (size_t i = data + 1; i <= data + 2000; ++i) {
        setSectionField(file, i, SectionField::Offset, placeOf(file, data));
        setSectionField(file, i, SectionField::Size, 0x120000);
    }
    const ScratchFolder folder;
    folder.write("large", file);
    EXPECT_FALSE(readElfFile(folder.pathOf("large").c_str(), &module(), nullptr));
    expectOutOfMemory();
}

// Each pair of overlapping sections is reported as long as the handler wants it, but not forever.
TEST_F(ReaderHostileTest, ManySectionsThatOverlap) {
    ElfBuilder builder(wide);
    for (int i = 0; i < 30000; ++i) {
        builder.add({.contents = "x", .raw = {{SectionField::Offset, 64}}});
    }
    const std::string file = builder.bytes();
    EXPECT_FALSE(read(file));
    EXPECT_EQ(reports(), Reports({{1, "Sections #1 and #2 overlap in the file"}}));
    platform::setCheckLevel("none");
    EXPECT_FALSE(readOn(file));
    expectOutOfMemory();
}

TEST_F(ReaderHostileTest, ManySegmentsAndSections) {
    ElfBuilder builder(wide, elf::ET_EXEC);
    for (int i = 0; i < 30000; ++i) {
        builder.add({});
    }
    for (int i = 0; i < 30000; ++i) {
        builder.addSegment({.type = elf::PT_NOTE, .firstSection = 1, .lastSection = 1});
    }
    EXPECT_FALSE(read(builder.bytes()));
    expectOutOfMemory();
}

// Segments that all cover the same bytes are related by the million. Nobody writes that down.
TEST_F(ReaderHostileTest, ManySegmentsOfOneStretch) {
    ElfBuilder builder(wide, elf::ET_EXEC);
    builder.add({.name = ".text", .contents = "code"});
    for (int i = 0; i < 20000; ++i) {
        builder.addSegment({.firstSection = 1, .lastSection = 1});
    }
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSegmentCount(), 20000U);
    EXPECT_EQ(section(1).getContainerCount(), 20000U);
    EXPECT_EQ(module().getSegment(0)->getContainerCount(), 0U);
    EXPECT_EQ(module().getSegment(19999)->getContainerCount(), 19999U);
}

TEST_F(ReaderHostileTest, ManyRelocationTablesOfOneStretch) {
    ElfBuilder builder(wide);
    builder.add({.name = ".text", .contents = "code"});
    const size_t symbols = builder.addSymbols({{.name = "s", .section = 1}});
    const size_t table = builder.addRelocations(".rela", elf::SHT_RELA, 1, symbols,
                                                std::vector<BuiltElfRelocation>(10000));
    for (int i = 0; i < 1000; ++i) {
        builder.add({.type = elf::SHT_RELA, .link = symbols, .info = 1});
    }
    std::string file = builder.bytes();
    for (size_t i = table + 1; i <= table + 1000; ++i) {
        setSectionField(file, i, SectionField::Offset, placeOf(file, table));
        setSectionField(file, i, SectionField::Size, sectionField(file, table, SectionField::Size));
    }
    EXPECT_FALSE(read(file));
    expectOutOfMemory();
}

TEST_F(ReaderHostileTest, ManyMappingNotes) {
    ElfBytes notes(wide);
    for (int i = 0; i < 30000; ++i) {
        notes.word(4).word(0).word(0x40000000).text("QEL");
    }
    ElfBuilder builder(wide, elf::ET_EXEC);
    for (int i = 0; i < 30000; ++i) {
        builder.add({.flags = 0});
    }
    builder.add({.name = ".note", .type = elf::SHT_NOTE, .contents = notes.bytes()});
    EXPECT_FALSE(read(builder.bytes()));
    expectOutOfMemory();
}

// Each of them names a segment that is not there for each of the sections.
TEST_F(ReaderHostileTest, ManyMappingNotesToMissingSegments) {
    ElfBytes notes(wide);
    for (int i = 0; i < 3000; ++i) {
        notes.word(4).word(0).word(0x40000000).text("QEL");
    }
    ElfBuilder builder(wide, elf::ET_EXEC);
    for (int i = 0; i < 3000; ++i) {
        builder.add({.flags = elf::SHF_ALLOC});
    }
    builder.add({.name = ".note", .type = elf::SHT_NOTE, .contents = notes.bytes()});
    platform::setCheckLevel("none");
    EXPECT_FALSE(readOn(builder.bytes()));
    expectOutOfMemory();
}

// Names that share their bytes: each is the rest of one long text.
TEST_F(ReaderHostileTest, LongNamesThatShareTheirBytes) {
    ElfBuilder builder(wide);
    std::vector<BuiltElfSymbol> symbols(20000, reservedSymbol("s", elf::SHN_ABS));
    const size_t table = builder.addSymbols(symbols);
    const size_t strings = table - 1;
    builder.section(strings).contents =
        std::string(1, '\0') + std::string(0x80000, 'x') + "BuildAttributes$" + '\0';
    std::string file = builder.bytes();
    for (size_t i = 1; i <= symbols.size(); ++i) {
        setSymbolField(file, table, i, SymbolField::Name, i);
    }
    EXPECT_FALSE(read(file));
    expectOutOfMemory();
}

// The same without a marker: whoever lists the names would copy them.
TEST_F(ReaderHostileTest, LongSymbolNamesThatShareTheirBytes) {
    for (const uint32_t type : {elf::SHT_SYMTAB, elf::SHT_DYNSYM}) {
        ElfBuilder builder(wide);
        const size_t strings = addLongText(builder);
        const size_t table =
            builder.addSymbolTable(".symbols", type, strings, std::vector<BuiltElfSymbol>(20000));
        std::string file = builder.bytes();
        for (size_t i = 1; i <= 20000; ++i) {
            setSymbolField(file, table, i, SymbolField::Name, i);
        }
        startModule();
        EXPECT_FALSE(read(file));
        expectOutOfMemory();
    }
}

// Each group's signature is looked up.
TEST_F(ReaderHostileTest, ManyGroupsOfOneLongSignature) {
    ElfBuilder builder(wide);
    const size_t strings = addLongText(builder);
    const size_t table = builder.addSymbolTable(".symtab", elf::SHT_SYMTAB, strings, {{}});
    for (int i = 0; i < 10000; ++i) {
        builder.addGroup(".group", table, 1, elf::GRP_COMDAT, {});
    }
    std::string file = builder.bytes();
    setSymbolField(file, table, 1, SymbolField::Name, 1);
    EXPECT_FALSE(read(file));
    expectOutOfMemory();
}

// Signatures that all have one hash: each is looked for among all others.
TEST_F(ReaderHostileTest, ManyGroupsWhoseSignaturesHaveOneHash) {
    constexpr uint32_t count = 20000;
    ElfBuilder builder(wide);
    std::vector<BuiltElfSymbol> symbols;
    for (uint32_t i = 0; i < count; ++i) {
        std::string name;
        for (uint32_t bit = 1; bit < count; bit *= 2) {
            name += (i & bit) != 0 ? "Aa" : "BB";
        }
        symbols.push_back(reservedSymbol(name, elf::SHN_ABS));
    }
    EXPECT_EQ(Stringlett(symbols.front().name.c_str()).getHash(),
              Stringlett(symbols.back().name.c_str()).getHash());
    const size_t table = builder.addSymbols(symbols);
    for (uint32_t i = 1; i <= count; ++i) {
        builder.addGroup(".group", table, i, elf::GRP_COMDAT, {});
    }
    EXPECT_FALSE(read(builder.bytes()));
    expectOutOfMemory();
}

// As many with different ones are no burden.
TEST_F(ReaderHostileTest, ManyGroups) {
    constexpr uint32_t count = 20000;
    ElfBuilder builder(wide);
    std::vector<BuiltElfSymbol> symbols;
    for (uint32_t i = 0; i < count; ++i) {
        symbols.push_back(reservedSymbol("signature" + std::to_string(i), elf::SHN_ABS));
    }
    const size_t table = builder.addSymbols(symbols);
    for (uint32_t i = 1; i <= count; ++i) {
        builder.addGroup(".group", table, i, elf::GRP_COMDAT, {});
    }
    EXPECT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getGroupCount(), count);
}

TEST_F(ReaderHostileTest, ManyTagsOfLongTexts) {
    for (const uint32_t tag : {DT_NEEDED, DT_SONAME, DT_RPATH, DT_RUNPATH}) {
        ElfBuilder builder(wide);
        const size_t strings = addLongText(builder);
        std::vector<BuiltDynamicTag> tags;
        for (uint64_t i = 1; i <= 10000; ++i) {
            tags.push_back({tag, i});
        }
        builder.addDynamic(strings, tags);
        startModule();
        EXPECT_FALSE(read(builder.bytes())) << tag;
        expectOutOfMemory();
    }
}

// Tags that are no texts do not count what stands at their value.
TEST_F(ReaderHostileTest, ManyTagsOfNumbers) {
    ElfBuilder builder(wide);
    builder.addDynamic(addLongText(builder), std::vector<BuiltDynamicTag>(10000, {DT_INIT, 1}));
    EXPECT_TRUE(read(builder.bytes()));
}

// Each version's name is hashed, and a required one's library is kept with it.
TEST_F(ReaderHostileTest, ManyVersionsOfLongNames) {
    constexpr uint32_t count = 10000;
    for (const bool required : {false, true}) {
        for (const bool longLibrary : {false, true}) {
            ElfBuilder builder(wide, elf::ET_DYN);
            const size_t strings = addLongText(builder);
            ElfBytes records(wide);
            if (required) {
                records.half(1).half(count).word(longLibrary ? 1 : 0x80001).word(16).word(0);
            } else {
                records.half(1).half(0).half(2).half(count).word(0).word(20).word(0);
            }
            for (uint32_t i = 1; i <= count; ++i) {
                const uint32_t name = longLibrary && required ? 0x80001 : i;
                const uint32_t next = required ? 16 : 8;
                if (required) {
                    records.word(0).half(0).half(2);
                }
                records.word(name).word(i < count ? next : 0);
            }
            builder.addDynamic(strings, {{required ? DT_VERNEEDNUM : DT_VERDEFNUM, 1}});
            builder.add({.name = ".records",
                         .type = required ? elf::SHT_GNU_verneed : elf::SHT_GNU_verdef,
                         .contents = records.bytes(),
                         .link = strings});
            const size_t symbols = builder.addSymbolTable(".dynsym", elf::SHT_DYNSYM, strings, {});
            builder.add({.name = ".versym",
                         .type = elf::SHT_GNU_versym,
                         .contents = std::string(2, '\0'),
                         .link = symbols});
            startModule();
            EXPECT_FALSE(read(builder.bytes())) << required << longLibrary;
            expectOutOfMemory();
            EXPECT_EQ(reports().size(), 1U);
        }
    }
}

TEST_F(ReaderHostileTest, PreemptionsOfLongNames) {
    ElfBuilder builder(wide);
    const size_t strings = addLongText(builder);
    ElfBytes map(wide);
    map.word(10000).word(1).word(1);
    for (uint32_t i = 1; i <= 10000; ++i) {
        map.word(i);
    }
    builder.addDynamic(strings, {{DT_QEL_PREEMPTMAP, 0x5000000}});
    builder.add({.name = ".map", .contents = map.bytes(), .address = 0x5000000});
    EXPECT_FALSE(read(builder.bytes()));
    expectOutOfMemory();
}

// From a stream the names of sections are copied, too.
TEST_F(ReaderHostileTest, LongSectionNamesOfAStream) {
    ElfBuilder builder(wide);
    builder.add({.name = ".data", .contents = std::string(0x100000, 'x')});
    for (int i = 0; i < 10000; ++i) {
        builder.add({});
    }
    const size_t strings = addLongText(builder);
    std::string file = builder.bytes();
    setHeaderField(file, HeaderField::NameTableIndex, strings);
    for (size_t i = 1; i <= 10001; ++i) {
        setSectionField(file, i, SectionField::Name, i);
    }
    const ScratchFolder folder;
    folder.write("large", file);
    EXPECT_FALSE(readElfFile(folder.pathOf("large").c_str(), &module(), nullptr));
    expectOutOfMemory();
    // In memory they stay where they are.
    startModule();
    EXPECT_TRUE(read(file));
}

// A map in contents that stay in the file is fetched for each tag that leads to it. The fetch that
// passes the limit ends the read, as its report says.
TEST_F(ReaderHostileTest, ManyMapsInDeferredContents) {
    ElfBuilder builder(wide);
    const size_t strings = builder.addStringTable(".dynstr");
    builder.addDynamic(strings, std::vector<BuiltDynamicTag>(100, {DT_QEL_PREEMPTMAP, 0x5000000}));
    builder.add({.name = ".map", .contents = std::string(0x180000, '\0'), .address = 0x5000000});
    const ScratchFolder folder;
    folder.write("large", builder.bytes());
    BySizeDeferredContentsSelector selector(0x1000);
    EXPECT_FALSE(readElfFile(folder.pathOf("large").c_str(), &module(), &selector));
    expectOutOfMemory();
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(ReaderHostileTest, ManyPreemptionTags) {
    ElfBuilder builder(wide);
    const size_t strings = builder.addStringTable(".dynstr");
    ElfBytes map(wide);
    map.word(10000).word(0).word(0);
    for (int i = 0; i < 10000; ++i) {
        map.word(0);
    }
    builder.addDynamic(strings, std::vector<BuiltDynamicTag>(20000, {0x70000002, 0x5000000}));
    builder.add({.name = ".map", .contents = map.bytes(), .address = 0x5000000});
    EXPECT_FALSE(read(builder.bytes()));
    expectOutOfMemory();
}

// What is large but sound stays far from the limits.
TEST_F(ReaderHostileTest, ManySectionsSideBySide) {
    ElfBuilder builder(wide, elf::ET_EXEC);
    std::vector<BuiltElfSymbol> symbols;
    for (uint32_t i = 1; i <= 20000; ++i) {
        builder.add({.contents = "12345678"});
        symbols.push_back({.name = "symbol", .section = i});
    }
    builder.addSymbols(symbols);
    builder.addSegment({.firstSection = 1, .lastSection = 20000});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSymbolCount(), 20000U);
    EXPECT_EQ(section(20000).getContainerCount(), 1U);
}

} // namespace
} // namespace elfext::test
