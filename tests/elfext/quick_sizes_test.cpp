// Files that are measured without a module: which they are, and that the sizes are the module's.
#include "elfext/interface/quick_sizes.h"

#include "tests/elfext/attribute_section_builder.h"
#include "tests/elfext/reader_fixtures.h"
#include "tests/support/host_libraries.h"
#include "tests/support/retarget.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

namespace elfext::test {
namespace {

using namespace testsupport;

constexpr uint64_t W = elf::SHF_WRITE;
constexpr uint64_t A = elf::SHF_ALLOC;
constexpr uint64_t X = elf::SHF_EXECINSTR;

// In a block of just their size, so that a sanitizer sees a look beyond them.
std::optional<SizeStatistics> quickSizesOf(const std::string& bytes, QuickSizes& quickSizes) {
    const auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    SizeStatistics sizes;
    return quickSizes.measure(copy.get(), bytes.size(), sizes) ? std::optional(sizes)
                                                               : std::nullopt;
}

class QuickSizesTest : public ReaderFormatTest {
protected:
    using Spoil = std::function<void(std::string& bytes)>;

    std::optional<SizeStatistics> quick(const std::string& bytes) {
        return quickSizesOf(bytes, m_QuickSizes);
    }
    // By way of a module; none for a file that cannot be read without a report.
    std::optional<SizeStatistics> slow(const std::string& bytes) {
        startModule();
        return read(bytes) ? std::optional(computeSizeStatistics(module())) : std::nullopt;
    }

    // A file that is quick to measure, and of which both ways say the same.
    void expectQuick(const std::string& bytes) {
        ASSERT_TRUE(quick(bytes));
        EXPECT_EQ(quick(bytes), slow(bytes));
    }
    void expectQuick(const ElfBuilder& builder) { expectQuick(builder.bytes()); }
    void expectNotQuick(const std::string& bytes) { EXPECT_FALSE(quick(bytes)); }
    void expectNotQuick(const ElfBuilder& builder) { expectNotQuick(builder.bytes()); }

    // Whatever has been done to a file, a quick answer is that of the module.
    void expectNoLie(const std::string& bytes) {
        const std::optional<SizeStatistics> sizes = quick(bytes);
        if (sizes) {
            EXPECT_EQ(sizes, slow(bytes));
        }
    }

    static BuiltSection sectionOf(const std::string& name, uint64_t flags, size_t size,
                                  uint32_t type = elf::SHT_PROGBITS) {
        return {.name = name,
                .type = type,
                .flags = flags,
                .contents = std::string(type == elf::SHT_NOBITS ? 0 : size, 'c'),
                .noBitsSize = size};
    }

    // What compilers make: all that is plain is in it.
    struct PlainFile {
        explicit PlainFile(ElfFormat format) : builder(format) {
            text = builder.add(sectionOf(".text", A | X, 40));
            data = builder.add(sectionOf(".data", A | W, 24));
            builder.add(sectionOf(".bss", A | W, 100, elf::SHT_NOBITS));
            builder.add(sectionOf(".rodata", A, 12));
            grouped = builder.add(sectionOf(".text.f", A | X | elf::SHF_GROUP, 8));
            builder.add(sectionOf(".debug_info", 0, 30));
            builder.add(sectionOf(".comment", 0, 16));
            note = builder.addNotes(
                ".note", {{.name = "GNU", .type = 5, .description = std::string(16, 'n')}});
            builder.add(sectionOf(".init_array", A | W, 8, elf::SHT_INIT_ARRAY));
            const auto code = static_cast<uint32_t>(text);
            symbols = builder.addSymbols(
                {{.name = "file.c",
                  .section = elf::SHN_ABS,
                  .reserved = true,
                  .binding = elf::STB_LOCAL,
                  .type = elf::STT_FILE},
                 {.name = "", .section = code, .binding = elf::STB_LOCAL, .type = elf::STT_SECTION},
                 {.name = "$a", .section = code, .binding = elf::STB_LOCAL},
                 {.name = "$d", .section = code, .value = 32, .binding = elf::STB_LOCAL},
                 {.name = "main", .section = code, .type = elf::STT_FUNC},
                 {.name = "common", .section = elf::SHN_COMMON, .reserved = true, .value = 4},
                 {.name = "printf"},
                 {.name = "f", .section = static_cast<uint32_t>(grouped)}});
            textRelocations = builder.addRelocations(".rela.text", elf::SHT_RELA, text, symbols,
                                                     {{.offset = 4, .symbol = 7, .type = 2}});
            dataRelocations = builder.addRelocations(".rel.data", elf::SHT_REL, data, symbols,
                                                     {{.offset = 0, .symbol = 8, .type = 2}});
            group = builder.addGroup(".group", symbols, 8, elf::GRP_COMDAT,
                                     {static_cast<uint32_t>(grouped)});
        }

        ElfBuilder builder;
        size_t text = 0;
        size_t data = 0;
        size_t grouped = 0;
        size_t note = 0;
        size_t symbols = 0;
        size_t textRelocations = 0;
        size_t dataRelocations = 0;
        size_t group = 0;
    };

private:
    QuickSizes m_QuickSizes;
};
INSTANTIATE_FORMATS(QuickSizesTest);

TEST_P(QuickSizesTest, PlainObject) {
    const std::string bytes = PlainFile(format()).builder.bytes();
    expectQuick(bytes);
    EXPECT_EQ(quick(bytes), (SizeStatistics{.m_Code = 32,
                                            .m_LiteralPools = 16,
                                            .m_RwDataUncompressed = 32,
                                            .m_RwDataCompressed = 32,
                                            .m_RoData = 12,
                                            .m_ZiData = 100,
                                            .m_DebugInfo = 30}));
}

TEST_P(QuickSizesTest, OneMeasurerForManyFiles) {
    const std::string plain = PlainFile(format()).builder.bytes();
    ElfBuilder other(format());
    other.add(sectionOf(".text", A | X, 7));
    const std::optional<SizeStatistics> first = quick(plain);
    EXPECT_EQ(quick(other.bytes()), SizeStatistics{.m_LiteralPools = 7});
    expectNotQuick(plain.substr(0, 100));
    EXPECT_EQ(quick(plain), first);
}

// Also from one section of code to the next.
TEST_P(QuickSizesTest, MappingSymbolsInAnyOrder) {
    ElfBuilder builder(format());
    const auto first = static_cast<uint32_t>(builder.add(sectionOf("a", A | X, 50)));
    const auto second = static_cast<uint32_t>(builder.add(sectionOf("b", A | X | W, 70)));
    const auto data = static_cast<uint32_t>(builder.add(sectionOf("c", A | W, 9)));
    builder.addSymbols({{.name = "$d", .section = second, .value = 60},
                        {.name = "$d.realdata", .section = second, .value = 20},
                        {.name = "$a", .section = first, .value = 10},
                        {.name = "$d.realdata", .section = first, .value = 45},
                        {.name = "$t.longer than any name that matters", .section = second},
                        {.name = "$d.realdata but longer", .section = first, .value = 30},
                        {.name = "$x", .section = data},
                        {.name = "$a", .section = elf::SHN_ABS, .reserved = true},
                        {.name = "$b", .section = first},
                        {.name = "$"},
                        {.name = "$a"}});
    expectQuick(builder);
    EXPECT_EQ(quick(builder.bytes()), (SizeStatistics{.m_Code = 40,
                                                      .m_LiteralPools = 35,
                                                      .m_RwDataUncompressed = 49,
                                                      .m_RwDataCompressed = 49,
                                                      .m_RoData = 5}));
}

// Object files list a table of relocations beside its section, and have it behind all else.
TEST_P(QuickSizesTest, SectionsNeedNotStandInTheirOrder) {
    PlainFile file(format());
    std::string bytes = file.builder.bytes();
    const auto offsetOf = [&](size_t section) {
        return sectionField(bytes, section, SectionField::Offset);
    };
    const uint64_t first = offsetOf(file.text);
    const uint64_t second = offsetOf(file.grouped);
    setSectionField(bytes, file.text, SectionField::Size, 8);
    expectQuick(bytes);
    setSectionField(bytes, file.text, SectionField::Offset, second);
    expectNotQuick(bytes);
    setSectionField(bytes, file.grouped, SectionField::Offset, first);
    expectQuick(bytes);
}

// --- What is not plain

TEST_P(QuickSizesTest, OtherKindsOfFile) {
    for (const uint16_t type : {elf::ET_EXEC, elf::ET_DYN, elf::ET_CORE}) {
        ElfBuilder builder(format(), type);
        builder.add(sectionOf(".text", A | X, 7));
        expectNotQuick(builder);
    }
    PlainFile withSegment(format());
    withSegment.builder.addSegment({.firstSection = 1, .lastSection = 2});
    expectNotQuick(withSegment.builder);
    ElfBuilder nameless(format());
    nameless.add(sectionOf(".text", A | X, 7));
    nameless.withoutSectionNames();
    expectNotQuick(nameless);
}

TEST_P(QuickSizesTest, HeadersOfAnotherKind) {
    const std::pair<HeaderField, uint64_t> cases[] = {
        {HeaderField::Type, 0},
        {HeaderField::Machine, 62},
        {HeaderField::Version, 2},
        {HeaderField::SectionHeaderOffset, 0},
        {HeaderField::SectionHeaderOffset, 0xFFFFFFF0},
        {HeaderField::SectionHeaderCount, 0},
        {HeaderField::SectionHeaderCount, 0xFE00},
        {HeaderField::NameTableIndex, 0},
        {HeaderField::NameTableIndex, 0xFFFF},
        {HeaderField::NameTableIndex, 1},
        {HeaderField::ProgramHeaderOffset, 64},
    };
    for (const auto& [field, value] : cases) {
        PlainFile file(format());
        file.builder.header(field, value);
        expectNotQuick(file.builder);
    }
    const std::string bytes = PlainFile(format()).builder.bytes();
    for (const size_t place : std::initializer_list<size_t>{0, 3, 4, 5}) {
        std::string spoilt = bytes;
        spoilt[place] = '\x11';
        expectNotQuick(spoilt);
    }
    for (const size_t length : {size_t{1}, size_t{15}, size_t{51}, bytes.size() - 1}) {
        expectNotQuick(bytes.substr(0, length));
    }
}

TEST_P(QuickSizesTest, SectionsOfOtherTypes) {
    for (const uint32_t type :
         {elf::SHT_NULL, elf::SHT_HASH, elf::SHT_DYNAMIC, elf::SHT_DYNSYM, elf::SHT_SYMTAB_SHNDX,
          elf::SHT_GNU_verdef, elf::SHT_GNU_verneed, elf::SHT_GNU_versym, elf::SHT_QEL_PREEMPTMAP,
          elf::SHT_QEL_DEBUGOVERLAY}) {
        PlainFile file(format());
        file.builder.section(file.data).type = type;
        expectNotQuick(file.builder);
    }
}

// The name of such a section is asked for.
TEST_P(QuickSizesTest, SectionOfTheEntryPoint) {
    PlainFile file(format());
    file.builder.section(file.text).flags |= SHF_ENTRYSECT;
    expectNotQuick(file.builder);
}

TEST_P(QuickSizesTest, SpoiltSectionHeaders) {
    const PlainFile file(format());
    const std::string bytes = file.builder.bytes();
    struct Case {
        size_t section;
        SectionField field;
        uint64_t value;
    };
    const size_t strings = file.symbols - 1;
    const Case cases[] = {
        {0, SectionField::Type, elf::SHT_PROGBITS},
        {file.text, SectionField::Name, 100000},
        {file.text, SectionField::Link, 1000},
        {file.text, SectionField::Size, 100000},
        {file.text, SectionField::Offset, 100000},
        {file.text, SectionField::Offset, 66}, // over the next section
        {file.symbols, SectionField::Link, file.text},
        {file.symbols, SectionField::Size, 25},
        {file.textRelocations, SectionField::Link, file.text},
        {file.textRelocations, SectionField::Info, 1000},
        {file.textRelocations, SectionField::Size, 5},
        {file.dataRelocations, SectionField::Link, 0},
        {file.group, SectionField::Link, 0},
        {file.group, SectionField::Info, 0},
        {file.group, SectionField::Info, 9},
        {file.group, SectionField::Size, 7},
        {strings, SectionField::Size, 0},
        {strings, SectionField::Size, 3},
        {strings, SectionField::Offset, 1},
    };
    for (const Case& each : cases) {
        std::string spoilt = bytes;
        setSectionField(spoilt, each.section, each.field, each.value);
        EXPECT_FALSE(quick(spoilt)) << each.section << ' ' << each.value;
        expectNoLie(spoilt);
    }
}

TEST_P(QuickSizesTest, SpoiltEntries) {
    const auto spoilt = [](const auto& change) {
        PlainFile file(format());
        change(file);
        return file.builder.bytes();
    };
    const auto withSymbol = [&](const BuiltElfSymbol& symbol) {
        ElfBuilder builder(format());
        builder.add(sectionOf(".text", A | X, 7));
        builder.addSymbols({symbol});
        return builder.bytes();
    };
    expectNotQuick(withSymbol({.name = "s", .type = elf::STT_SECTION}));
    expectNotQuick(withSymbol({.name = "s", .section = 100, .reserved = true}));
    expectNotQuick(withSymbol({.name = "s", .section = 0xFF05, .reserved = true}));
    expectNotQuick(withSymbol({.name = "s", .section = 0xFFFF, .reserved = true}));
    expectQuick(withSymbol({.name = "s", .section = 1}));

    expectNotQuick(spoilt([](PlainFile& file) {
        file.builder.addRelocations(".rel.x", elf::SHT_REL, file.text, file.symbols,
                                    {{.offset = 0, .symbol = 9, .type = 1}});
    }));
    expectNotQuick(spoilt([](PlainFile& file) {
        file.builder.addGroup("twice", file.symbols, 5, 0, {static_cast<uint32_t>(file.grouped)});
    }));
    expectNotQuick(spoilt(
        [](PlainFile& file) { file.builder.addGroup("beyond", file.symbols, 5, 0, {1000}); }));
    expectNotQuick(spoilt([](PlainFile& file) {
        file.builder.addNotes(".note.q", {{.name = "QEL", .type = 0x40000000, .description = ""}});
    }));
    // One table of symbols is plain; more are for the reader.
    expectNotQuick(spoilt([](PlainFile& file) { file.builder.addSymbols({}); }));
}

TEST_P(QuickSizesTest, LinksToOtherSectionsThatAreAsLongAsTheSymbols) {
    for (const size_t PlainFile::*user :
         {&PlainFile::textRelocations, &PlainFile::dataRelocations, &PlainFile::group}) {
        PlainFile file(format());
        const size_t other = file.builder.add(sectionOf(".other", 0, 400));
        std::string bytes = file.builder.bytes();
        expectQuick(bytes);
        setSectionField(bytes, file.*user, SectionField::Link, other);
        expectNotQuick(bytes);
        EXPECT_FALSE(slow(bytes));
    }
}

// A reader that looks for the attributes of each name gives up on such a file, which is no flaw of
// the file's.
TEST_P(QuickSizesTest, NamesThatTakeMoreSearchesThanAReaderGrantsThem) {
    ElfBuilder builder(format());
    builder.add(sectionOf(".text", A | X, 40));
    std::vector<BuiltElfSymbol> symbols(300, {.name = "f", .section = 1});
    symbols.insert(symbols.end(), 300,
                   {.name = "f$$BuildAttributes$$REQ8", .section = elf::SHN_ABS, .reserved = true});
    builder.addSymbols(symbols);
    const std::string bytes = builder.bytes();
    EXPECT_FALSE(slow(bytes));
    EXPECT_EQ(quick(bytes), SizeStatistics{.m_LiteralPools = 40});
}

// Each of them is looked at, so together they must not be longer than the file.
TEST_P(QuickSizesTest, VeryManySectionsOverTheSameBytes) {
    for (const uint32_t type : {elf::SHT_NOTE, elf::SHT_PROGBITS}) {
        ElfBuilder builder(format());
        const size_t first = builder.add(sectionOf("first", 0, 5000, type));
        for (int i = 0; i < 60000; ++i) {
            builder.add(sectionOf("", 0, 0, type));
        }
        std::string bytes = builder.bytes();
        const uint64_t offset = sectionField(bytes, first, SectionField::Offset);
        for (size_t i = first + 1; i < first + 60001; ++i) {
            setSectionField(bytes, i, SectionField::Offset, offset);
            setSectionField(bytes, i, SectionField::Size, 5000);
        }
        expectNotQuick(bytes);
    }
}

// The numbers of absolute and common symbols are those of sections, too.
TEST_P(QuickSizesTest, MappingSymbolsOfNoSectionAmongVeryManySections) {
    ElfBuilder builder(format());
    for (int i = 1; i < 0xFFF4; ++i) {
        builder.add(sectionOf("", A | X, i >= 0xFFF0 ? 8 : 0));
    }
    builder.addSymbols({{.name = "$a", .section = elf::SHN_ABS, .reserved = true},
                        {.name = "$a", .section = elf::SHN_COMMON, .reserved = true}});
    std::string bytes = builder.bytes();
    // The builder counts so many sections where they do not fit; here they do.
    setHeaderField(bytes, HeaderField::SectionHeaderCount, 0xFFF7);
    setHeaderField(bytes, HeaderField::NameTableIndex, 0xFFF6);
    setSectionField(bytes, 0, SectionField::Size, 0);
    setSectionField(bytes, 0, SectionField::Link, 0);
    expectQuick(bytes);
}

// --- Attributes

TEST_P(QuickSizesTest, AttributesOfTheFile) {
    const AttributeSectionBuilder build(format().littleEndian);
    const auto withAttributes = [&](const std::string& contents) {
        PlainFile file(format());
        file.builder.add(
            {.name = ".QEL.attributes", .type = elf::SHT_QEL_ATTRIBUTES, .contents = contents});
        return file.builder.bytes();
    };
    const std::string good = build.file(number(6, 10) + text(5, "QEL-9"));
    const std::string none = number(6, 1);
    const auto sound = [&](const std::string& vendor, const std::string& scopes) {
        return withAttributes("A" + build.subsection(vendor, scopes));
    };
    expectQuick(sound("qeabi", good));
    expectQuick(sound("QEL", build.file(number(4, 1))));
    expectQuick(sound("other", build.file("anything")));
    expectQuick(withAttributes("A"));
    expectNotQuick(withAttributes(""));
    expectNotQuick(withAttributes("B" + build.subsection("qeabi", good)));
    expectNotQuick(sound("qeabi", build.file("\x06")));
    expectNotQuick(sound("QEL", build.file("\x04")));
    // Attributes of sections and symbols may be bad because of what they are about.
    expectNotQuick(sound("qeabi", build.sections({1}, none)));
    expectNotQuick(sound("qeabi", build.symbols({1}, none)));
    // What two of them come to is for the reader.
    PlainFile two(format());
    for (int i = 0; i < 2; ++i) {
        two.builder.add(
            {.name = ".QEL.attributes", .type = elf::SHT_QEL_ATTRIBUTES, .contents = "A"});
    }
    expectNotQuick(two.builder);
    // The most that is looked at, and a byte more.
    const auto ofSize = [&](size_t size) {
        const std::string frame = "A" + build.subsection("x", build.file(""));
        return sound("x", build.file(std::string(size - frame.size(), 'x')));
    };
    expectQuick(ofSize(1024));
    expectNotQuick(ofSize(1025));
}

// --- Any bytes

// Each byte of a file, one after the other, made others.
TEST_P(QuickSizesTest, NoByteMakesItLie) {
    const std::string bytes = PlainFile(format()).builder.bytes();
    size_t quickCount = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        for (const int change : {0x01, 0x02, 0x08, 0x40, 0x80, 0xFF}) {
            std::string spoilt = bytes;
            spoilt[i] = static_cast<char>(spoilt[i] ^ change);
            quickCount += quick(spoilt) ? size_t{1} : size_t{0};
            expectNoLie(spoilt);
        }
    }
    EXPECT_GT(quickCount, bytes.size()); // contents may be anything
}

TEST_P(QuickSizesTest, NoWordMakesItLie) {
    const std::string bytes = PlainFile(format()).builder.bytes();
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
        for (const uint32_t value :
             {0U, 1U, 2U, 3U, 8U, 17U, 0x7FU, 0xFFFFU, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
            std::string spoilt = bytes;
            writeNumber(spoilt, i, 4, format().littleEndian, value);
            expectNoLie(spoilt);
        }
    }
}

TEST_P(QuickSizesTest, NoCutMakesItLie) {
    const std::string bytes = PlainFile(format()).builder.bytes();
    for (size_t size = 1; size < bytes.size(); ++size) {
        expectNotQuick(bytes.substr(0, size));
    }
}

// --- Real files

constexpr size_t everyOnly = 20; // of the objects: all of them would take a minute

TEST(QuickSizesOfRealFiles, SameAsTheModules) {
    alloclib::startAllocators();
    size_t objects = 0;
    size_t quickCount = 0;
    size_t seen = 0;
    QuickSizes quickSizes;
    for (const std::string& library : hostLibraries()) {
        std::string bytes(std::filesystem::file_size(library), '\0');
        std::ifstream(library, std::ios::binary)
            .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        forEachMember(bytes, [&](std::string& archive, uint64_t offset, uint64_t size) {
            if (seen++ % everyOnly != 0) {
                return;
            }
            std::string member = archive.substr(offset, size);
            if (!retargetElf(member)) {
                return;
            }
            ++objects;
            const std::optional<SizeStatistics> sizes = quickSizesOf(member, quickSizes);
            ObjectModule module;
            const bool isRead =
                readElfBuffer("member", reinterpret_cast<const uint8_t*>(member.data()),
                              member.size(), &module, nullptr);
            if (sizes) {
                ++quickCount;
                EXPECT_TRUE(isRead) << library << " at " << offset;
                EXPECT_EQ(*sizes, computeSizeStatistics(module)) << library << " at " << offset;
            }
        });
    }
    alloclib::finishAllocators();
    // Nearly all real objects are plain.
    EXPECT_GE(quickCount, objects - objects / 20);
}

} // namespace
} // namespace elfext::test
