// What the sections and segments of files come to, kind by kind.
#include "elfext/interface/sizes_statistics.h"

#include "elfext/interface/quick_sizes.h"
#include "tests/elfext/reader_fixtures.h"

#include <cstdio>
#include <memory>

namespace elfext::test {
namespace {

using namespace testsupport;

constexpr uint64_t W = elf::SHF_WRITE;
constexpr uint64_t A = elf::SHF_ALLOC;
constexpr uint64_t X = elf::SHF_EXECINSTR;

class SizesStatisticsTest : public ReaderFormatTest {
protected:
    // Those of a file, which must be readable.
    SizeStatistics sizesOf(const ElfBuilder& builder) {
        startModule();
        EXPECT_TRUE(read(builder.bytes()));
        EXPECT_EQ(reports(), Reports{});
        const SizeStatistics sizes = computeSizeStatistics(module());
        expectSameWithoutModule(builder, sizes);
        return sizes;
    }
    // The other way to measure, which takes only some files, says the same.
    static void expectSameWithoutModule(const ElfBuilder& builder, const SizeStatistics& expected) {
        const std::string bytes = builder.bytes();
        SizeStatistics sizes;
        if (QuickSizes().measure(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(),
                                 sizes)) {
            EXPECT_EQ(sizes, expected);
        }
    }
    // Those of a relocatable file with one section.
    SizeStatistics sizesOf(BuiltSection section) {
        ElfBuilder builder(format());
        builder.add(std::move(section));
        return sizesOf(builder);
    }
    static BuiltSection sectionOf(uint64_t flags, size_t size = 10,
                                  uint32_t type = elf::SHT_PROGBITS,
                                  const std::string& name = "section") {
        return {.name = name,
                .type = type,
                .flags = flags,
                .contents = std::string(type == elf::SHT_NOBITS ? 0 : size, 'c'),
                .noBitsSize = size};
    }
};
INSTANTIATE_FORMATS(SizesStatisticsTest);

TEST_P(SizesStatisticsTest, SectionsByFlagsAndType) {
    struct Case {
        uint64_t flags;
        uint32_t type;
        SizeStatistics expected;
    };
    const Case cases[] = {
        {0, elf::SHT_PROGBITS, {}},
        {W, elf::SHT_PROGBITS, {}},
        {X, elf::SHT_PROGBITS, {}},
        {X | W, elf::SHT_NOBITS, {}},
        {A, elf::SHT_PROGBITS, {.m_RoData = 10}},
        {A, elf::SHT_NOTE, {.m_RoData = 10}},
        {A, elf::SHT_QEL_EXIDX, {.m_RoData = 10}},
        {A | W, elf::SHT_PROGBITS, {.m_RwDataUncompressed = 10, .m_RwDataCompressed = 10}},
        {A | W, elf::SHT_INIT_ARRAY, {.m_RwDataUncompressed = 10, .m_RwDataCompressed = 10}},
        {A | X, elf::SHT_PROGBITS, {.m_LiteralPools = 10}},
        {A | X | W, elf::SHT_PROGBITS, {.m_LiteralPools = 10}},
        {A, elf::SHT_NOBITS, {.m_ZiData = 10}},
        {A | W, elf::SHT_NOBITS, {.m_ZiData = 10}},
        {A | X, elf::SHT_NOBITS, {.m_ZiData = 10}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(sizesOf(sectionOf(each.flags, 10, each.type)), each.expected)
            << each.flags << " " << each.type;
    }
}

// Also tables that the library keeps up itself count by their flags.
TEST_P(SizesStatisticsTest, SectionsWithAClassOfTheirOwn) {
    ElfBuilder builder(format());
    const size_t strings = builder.addStringTable(".dynstr");
    builder.section(strings).flags = A;
    builder.section(strings).contents = std::string(7, '\0');
    EXPECT_EQ(sizesOf(builder), SizeStatistics{.m_RoData = 7});
}

TEST_P(SizesStatisticsTest, DebugSectionsByName) {
    const std::pair<const char*, uint64_t> cases[] = {
        {".debug", 10},     {".debug_info", 10}, {".debugging", 10}, {".line", 10},
        {".linear", 10},    {"C$$fpmap", 10},    {"C$$fpmap2", 0},   {".rela.debug_info", 0},
        {".DEBUG_INFO", 0}, {".comment", 0},     {"debug", 0},       {".lin", 0},
    };
    for (const auto& [name, size] : cases) {
        EXPECT_EQ(sizesOf(sectionOf(0, 10, elf::SHT_PROGBITS, name)),
                  SizeStatistics{.m_DebugInfo = size})
            << name;
        EXPECT_EQ(sizesOf(sectionOf(0, 10, elf::SHT_NOBITS, name)),
                  SizeStatistics{.m_DebugInfo = size})
            << name;
        // What is loaded is for nobody's debugger.
        EXPECT_EQ(sizesOf(sectionOf(A, 10, elf::SHT_PROGBITS, name)),
                  SizeStatistics{.m_RoData = 10})
            << name;
    }
}

TEST_P(SizesStatisticsTest, SectionWithoutAName) {
    ElfBuilder builder(format());
    builder.add(sectionOf(0));
    builder.withoutSectionNames();
    EXPECT_EQ(sizesOf(builder), SizeStatistics{});
}

TEST_P(SizesStatisticsTest, ModuleOfNothing) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.withoutSectionNames()
        .header(HeaderField::SectionHeaderOffset, 0)
        .header(HeaderField::SectionHeaderCount, 0);
    EXPECT_EQ(sizesOf(builder), SizeStatistics{});
}

// --- Code sections

class CodeStretchesTest : public SizesStatisticsTest {
protected:
    struct Mark {
        const char* name;
        uint64_t offset;
    };
    // A code section of 100 bytes with these symbols.
    SizeStatistics split(const std::vector<Mark>& marks, uint64_t flags = A | X,
                         uint16_t type = elf::ET_REL) {
        ElfBuilder builder(format(), type);
        BuiltSection text = sectionOf(flags, 100);
        const bool isImage = type != elf::ET_REL;
        text.address = isImage ? 0x8000 : 0;
        const auto section = static_cast<uint32_t>(builder.add(std::move(text)));
        std::vector<BuiltElfSymbol> symbols;
        for (const Mark& mark : marks) {
            symbols.push_back({.name = mark.name,
                               .section = section,
                               .value = mark.offset + (isImage ? 0x8000 : 0),
                               .binding = elf::STB_LOCAL});
        }
        builder.addSymbols(symbols);
        return sizesOf(builder);
    }
};
INSTANTIATE_FORMATS(CodeStretchesTest);

TEST_P(CodeStretchesTest, NoMappingSymbolsAtAllIsAllLiteralPools) {
    EXPECT_EQ(split({}), SizeStatistics{.m_LiteralPools = 100});
    EXPECT_EQ(split({{"function", 0}, {"$b", 10}, {"$f.a", 20}, {"$p", 30}, {"$vx", 40}}),
              SizeStatistics{.m_LiteralPools = 100});
    EXPECT_EQ(split({{"$ab", 0}, {"$code", 0}, {"$", 0}, {"a$a", 0}}),
              SizeStatistics{.m_LiteralPools = 100});
}

TEST_P(CodeStretchesTest, CodeIsWhatEachFormStarts) {
    for (const char* name : {"$a", "$t", "$x", "$a.1", "$t.x", "$x.data", "$a."}) {
        EXPECT_EQ(split({{name, 0}}), SizeStatistics{.m_Code = 100}) << name;
    }
    for (const char* name : {"$d", "$d.1", "$d.realdata2", "$d.real", "$d."}) {
        EXPECT_EQ(split({{"$a", 0}, {name, 40}}),
                  (SizeStatistics{.m_Code = 40, .m_LiteralPools = 60}))
            << name;
    }
}

TEST_P(CodeStretchesTest, BytesInFrontOfTheFirstMarkAreLiterals) {
    EXPECT_EQ(split({{"$t", 30}, {"$d", 50}, {"$a.again", 60}}),
              (SizeStatistics{.m_Code = 60, .m_LiteralPools = 40}));
}

// In whatever order the symbol table has them.
TEST_P(CodeStretchesTest, MarksNeedNotBeSorted) {
    EXPECT_EQ(split({{"$a.again", 60}, {"$d", 50}, {"$t", 30}}),
              (SizeStatistics{.m_Code = 60, .m_LiteralPools = 40}));
}

TEST_P(CodeStretchesTest, OfSeveralMarksAtOnePlaceTheLastCounts) {
    EXPECT_EQ(split({{"$a", 0}, {"$d", 0}}), SizeStatistics{.m_LiteralPools = 100});
    EXPECT_EQ(split({{"$d", 0}, {"$a", 0}}), SizeStatistics{.m_Code = 100});
    EXPECT_EQ(split({{"$a", 50}, {"$d.realdata", 20}, {"$x", 20}, {"$d", 50}}),
              (SizeStatistics{.m_Code = 30, .m_LiteralPools = 70}));
}

TEST_P(CodeStretchesTest, RealData) {
    const std::vector<Mark> marks = {{"$a", 0}, {"$d.realdata", 40}, {"$t", 90}};
    EXPECT_EQ(split(marks), (SizeStatistics{.m_Code = 50, .m_RoData = 50}));
    EXPECT_EQ(split(marks, A | X | W),
              (SizeStatistics{.m_Code = 50, .m_RwDataUncompressed = 50, .m_RwDataCompressed = 50}));
}

TEST_P(CodeStretchesTest, MarksAtTheEndAndBehindIt) {
    EXPECT_EQ(split({{"$a", 0}, {"$d", 100}}), SizeStatistics{.m_Code = 100});
    EXPECT_EQ(split({{"$a", 0}, {"$d", 101}}), SizeStatistics{.m_Code = 100});
    EXPECT_EQ(split({{"$a", 0}, {"$d", 0xFFFFFFF0}}), SizeStatistics{.m_Code = 100});
    EXPECT_EQ(split({{"$a", 99}}), (SizeStatistics{.m_Code = 1, .m_LiteralPools = 99}));
}

// In an image symbols have addresses; one in front of its section counts from far behind it.
TEST_P(CodeStretchesTest, MarksOfImages) {
    for (const uint16_t type : {elf::ET_EXEC, elf::ET_DYN}) {
        EXPECT_EQ(split({{"$a", 10}, {"$d", 30}}, A | X, type),
                  (SizeStatistics{.m_Code = 20, .m_LiteralPools = 80}));
        EXPECT_EQ(split({{"$a", 0}, {"$d", uint64_t{0} - 1}}, A | X, type),
                  SizeStatistics{.m_Code = 100});
    }
}

TEST_P(CodeStretchesTest, SymbolsElsewhereAreNoMarks) {
    ElfBuilder builder(format());
    builder.add(sectionOf(A | X, 100));
    const auto other = static_cast<uint32_t>(builder.add(sectionOf(A | X, 50)));
    builder.addSymbols({{.name = "$a", .section = other}, reservedSymbol("$a", elf::SHN_ABS)});
    EXPECT_EQ(sizesOf(builder), (SizeStatistics{.m_Code = 50, .m_LiteralPools = 100}));
}

// Only static symbols are marks.
TEST_P(CodeStretchesTest, DynamicSymbolsAreNoMarks) {
    ElfBuilder builder(format(), elf::ET_DYN);
    const auto text = static_cast<uint32_t>(builder.add(sectionOf(A | X, 100)));
    const size_t strings = builder.addStringTable("strings");
    builder.addSymbolTable("dynamic", elf::SHT_DYNSYM, strings, {{.name = "$a", .section = text}});
    EXPECT_EQ(sizesOf(builder), SizeStatistics{.m_LiteralPools = 100});
}

TEST_P(CodeStretchesTest, EmptySection) {
    ElfBuilder builder(format());
    const auto text = static_cast<uint32_t>(builder.add(sectionOf(A | X, 0)));
    builder.addSymbols({{.name = "$a", .section = text}});
    EXPECT_EQ(sizesOf(builder), SizeStatistics{});
}

TEST_P(CodeStretchesTest, NamesAreNotNeeded) {
    ElfBuilder builder(format());
    const auto text = static_cast<uint32_t>(builder.add(sectionOf(A | X, 100)));
    builder.addSymbols({{.name = "", .section = text}});
    EXPECT_EQ(sizesOf(builder), SizeStatistics{.m_LiteralPools = 100});
}

// As many marks as one likes, on a thousand places.
TEST_P(CodeStretchesTest, ManyMarks) {
    ElfBuilder builder(format());
    const auto text = static_cast<uint32_t>(builder.add(sectionOf(A | X, 1000)));
    std::vector<BuiltElfSymbol> symbols;
    for (uint64_t i = 0; i < 3000; ++i) {
        symbols.push_back({.name = i / 1000 == 1 ? "$d"
                                   : i % 2 == 0  ? "$a"
                                                 : "$d.realdata",
                           .section = text,
                           .value = (i * 7) % 1000});
    }
    builder.addSymbols(symbols);
    // The last thousand decide: each place has one of them.
    uint64_t code = 0;
    for (uint64_t i = 2000; i < 3000; ++i) {
        code += i % 2 == 0 ? 1U : 0U;
    }
    EXPECT_EQ(sizesOf(builder), (SizeStatistics{.m_Code = code, .m_RoData = 1000 - code}));
}

// --- Segments alone

class SegmentsAloneTest : public SizesStatisticsTest {
protected:
    // A file without section headers. Its segments are all the same stretch of 24 bytes.
    SizeStatistics sizesOfSegments(const std::vector<BuiltSegment>& segments) {
        ElfBuilder builder(format(), elf::ET_EXEC);
        builder.add({.name = "", .flags = A, .contents = std::string(24, 'c')});
        builder.withoutSectionNames()
            .header(HeaderField::SectionHeaderOffset, 0)
            .header(HeaderField::SectionHeaderCount, 0);
        for (const BuiltSegment& segment : segments) {
            builder.addSegment(segment);
        }
        return sizesOf(builder);
    }
    static BuiltSegment segmentOf(uint32_t flags, uint64_t memorySize = 124,
                                  uint32_t type = elf::PT_LOAD) {
        return {.type = type,
                .flags = flags,
                .firstSection = 1,
                .lastSection = 1,
                .raw = {{SegmentField::MemorySize, memorySize}}};
    }
};
INSTANTIATE_FORMATS(SegmentsAloneTest);

TEST_P(SegmentsAloneTest, ByTheirFlags) {
    const SizeStatistics code{.m_Code = 24, .m_ZiData = 100};
    const SizeStatistics data{
        .m_RwDataUncompressed = 24, .m_RwDataCompressed = 24, .m_ZiData = 100};
    const SizeStatistics constants{.m_RoData = 24, .m_ZiData = 100};
    const SizeStatistics nothing;
    // Execute 1, write 2, read 4.
    const SizeStatistics expected[] = {nothing, code, nothing, code, constants, code, data, code};
    for (uint32_t flags = 0; flags < 8; ++flags) {
        EXPECT_EQ(sizesOfSegments({segmentOf(flags)}), expected[flags]) << flags;
        EXPECT_EQ(sizesOfSegments({segmentOf(flags | 0xF0000000)}), expected[flags]) << flags;
    }
}

// A segment with flags 2 (write only) counts for nothing, its zeros neither.
TEST_P(SegmentsAloneTest, WriteOnly) {
    EXPECT_EQ(sizesOfSegments({segmentOf(PF_W), segmentOf(PF_R, 24)}),
              SizeStatistics{.m_RoData = 24});
}

TEST_P(SegmentsAloneTest, OnlyThoseThatAreLoaded) {
    for (const uint32_t type : {0U, 2U, 3U, 4U, 5U, 6U, 7U, 0x70000001U}) {
        EXPECT_EQ(sizesOfSegments({segmentOf(PF_X, 124, type)}), SizeStatistics{}) << type;
    }
}

TEST_P(SegmentsAloneTest, AllOfThem) {
    EXPECT_EQ(sizesOfSegments({segmentOf(PF_R | PF_X), segmentOf(PF_R | PF_W), segmentOf(PF_R),
                               segmentOf(PF_R, 24)}),
              (SizeStatistics{.m_Code = 24,
                              .m_RwDataUncompressed = 24,
                              .m_RwDataCompressed = 24,
                              .m_RoData = 48,
                              .m_ZiData = 300}));
}

// Less memory than file: the difference wraps around.
TEST_P(SegmentsAloneTest, LessMemoryThanFile) {
    EXPECT_EQ(sizesOfSegments({segmentOf(PF_X, 20)}),
              (SizeStatistics{.m_Code = 24, .m_ZiData = uint64_t{0} - 4}));
}

// As soon as there is a section, segments are not measured.
TEST_P(SegmentsAloneTest, NotBesideSections) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.add(sectionOf(A | W, 24));
    builder.addSegment(segmentOf(PF_X));
    EXPECT_EQ(sizesOf(builder),
              (SizeStatistics{.m_RwDataUncompressed = 24, .m_RwDataCompressed = 24}));
}

// --- Sums and print

TEST(SizeStatisticsSums, FieldByField) {
    SizeStatistics sum{1, 2, 3, 4, 5, 6, 7, 8};
    sum += {10, 20, 30, 40, 50, 60, 70, UINT64_MAX};
    EXPECT_EQ(sum, (SizeStatistics{11, 22, 33, 44, 55, 66, 77, 7}));
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string printed(const SizeStatistics& statistics) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::tmpfile());
    printSizeStatistics(file.get(), statistics);
    std::string text(static_cast<size_t>(std::ftell(file.get())), '\0');
    std::rewind(file.get());
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), file.get()), text.size());
    return text;
}

TEST(SizeStatisticsPrint, EightLinesBetweenTwo) {
    EXPECT_EQ(printed({1, 22, 333, 4444, 55555, 666666, 7777777, 4294967295}),
              "==========================================\n"
              "Code                    :          1 bytes\n"
              "Literal pools           :         22 bytes\n"
              "RW data (uncompressed)  :        333 bytes\n"
              "RW data (compressed)    :       4444 bytes\n"
              "RO data                 :      55555 bytes\n"
              "ZI data                 :     666666 bytes\n"
              "Debug info              :    7777777 bytes\n"
              "Internal padding        : 4294967295 bytes\n"
              "==========================================\n");
}

TEST(SizeStatisticsPrint, LowHalvesOfTheFields) {
    const std::string text = printed({.m_Code = 0x100000005, .m_ZiData = UINT64_MAX - 1});
    EXPECT_NE(text.find("Code                    :          5 bytes\n"), std::string::npos) << text;
    EXPECT_NE(text.find("ZI data                 : 4294967294 bytes\n"), std::string::npos) << text;
}

TEST(SizeStatisticsPrint, NoStreamIsAFault) {
    EXPECT_FAULT(printSizeStatistics(nullptr, {}), "elfext/src/sizes_statistics_print",
                 "f != NULL");
}

} // namespace
} // namespace elfext::test
