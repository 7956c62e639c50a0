// The table of sizes and the list of entry points, on libraries made for it.
#include "tests/command/report_case.h"

namespace commandtest {
namespace {

using testsupport::ElfBuilder;
using testsupport::ElfFormat;
using testsupport::HeaderField;
using testsupport::SectionField;

using namespace testsupport::elf;

const std::string noEntries = "No ENTRY points found.\n";

std::string entryLine(const std::string& offset, const std::string& section,
                      const std::string& member) {
    return "ENTRY at offset " + offset + " in section " + section + " of " + member + "\n";
}

// An object with an entry point in each of the sections of these names.
ElfBuilder objectWithEntries(uint64_t entryPoint, const Words& sections, ElfFormat format = {}) {
    ElfBuilder builder(format);
    for (const std::string& name : sections) {
        builder.add({.name = name,
                     .flags = SHF_ALLOC | SHF_EXECINSTR | entrySectionFlag,
                     .contents = "code"});
    }
    builder.header(HeaderField::Entry, entryPoint);
    return builder;
}

// An image with a table of regions that has its second section unpacked to 4096 bytes, still
// without the symbols by which the table is found.
ElfBuilder compressedSections(ElfFormat format) {
    ElfBuilder image(format, ET_EXEC);
    testsupport::ElfBytes table(format);
    table.address(0x9000).address(0x20000).address(4096).address(0x8000);
    image.add({.name = "ER_RO",
               .flags = SHF_ALLOC | SHF_EXECINSTR,
               .contents = std::string(16, 'c') + table.bytes(),
               .address = 0x8000});
    image.add({.name = "ER_RW",
               .flags = SHF_ALLOC | SHF_WRITE,
               .contents = "packed",
               .address = 0x20000});
    return image;
}
void addTableSymbols(ElfBuilder& image) {
    image.addSymbols({{.name = "__decompress", .section = 1, .value = 0x8000},
                      {.name = "__scatterload_rt2", .section = 1, .value = 0x8008},
                      {.name = "Region$$Table$$Base", .section = 1, .value = 0x8010}});
}

class SizesReport : public CommandCase {
protected:
    // Writes a library of these members, and runs a report on it that prints this and changes
    // nothing.
    void prints(const std::string& option, const std::string& expected) const {
        folder.write("lib.a", m_Library.bytes());
        EXPECT_TRUE(ended(tomex({option, "lib.a"}), 0, expected, "")) << option;
        EXPECT_TRUE(folder.read("lib.a") == m_Library.bytes());
        EXPECT_EQ(folder.entries(), Words{"lib.a"});
    }
    void add(const std::string& name, const ElfBuilder& builder) {
        m_Library.add(name, builder.bytes());
    }
    // Reports on any prefix of an object and any single byte of it changed: the run ends with
    // status 0 and has this row for the sound member beside them.
    void survivesCutsAndFlips(const std::string& sound, const Columns& columns) {
        for (size_t length = 0; length < sound.size(); ++length) {
            m_Library.add("cut.o", sound.substr(0, length));
        }
        for (size_t place = 4; place < sound.size(); ++place) {
            for (const char value : {'\0', '\x7F', '\xFF'}) {
                std::string spoilt = sound;
                spoilt[place] = value;
                m_Library.add("flip.o", spoilt);
            }
        }
        m_Library.add("sound.o", sound);
        folder.write("lib.a", m_Library.bytes());
        for (const char* option : {"--sizes", "--zt"}) {
            const CommandResult result = tomex({option, "lib.a"});
            EXPECT_TRUE(result.exitedWith(0)) << result.error;
            EXPECT_EQ(result.error, "");
            EXPECT_NE(result.output.find(sizesRow(columns, "sound.o")), std::string::npos);
            EXPECT_NE(result.output.find(sizesRow(columns, "flip.o")), std::string::npos);
            EXPECT_EQ(result.output.find("cut.o"), std::string::npos);
        }
    }

    ArchiveBuilder m_Library;
};

TEST_F(SizesReport, OfAnEmptyArchive) {
    prints("--sizes", emptySizes());
    prints("--entries", noEntries);
    prints("--zt", emptySizes() + noEntries);
}

TEST_F(SizesReport, NoElfMembers) {
    m_Library.add("a.txt", "text").add("empty", "").withSymbolTable();
    m_Library.add("a_name_that_is_too_long.txt", "\x7F"
                                                 "ELF");
    prints("--sizes", emptySizes());
    prints("--entries", noEntries);
}

TEST_F(SizesReport, RowsInTheOrderOfTheMembers) {
    add("z.o", objectOfSizes({1, 2, 3, 4, 5}));
    m_Library.add("notes.txt", "text");
    add("a_name_that_is_too_long_for_a_header.o", objectOfSizes({10, 0, 30, 0, 50}));
    add("a.o", objectOfSizes({0, 200, 0, 400, 0}));
    add("z.o", objectOfSizes({1000, 2000, 3000, 4000, 5000}));
    add("none.o", ElfBuilder());
    const std::string table =
        "\n"
        "      Code    RO Data    RW Data    ZI Data      Debug   Object Name\n"
        "         1          2          3          4          5   z.o\n"
        "        10          0         30          0         50   "
        "a_name_that_is_too_long_for_a_header.o\n"
        "         0        200          0        400          0   a.o\n"
        "      1000       2000       3000       4000       5000   z.o\n"
        "         0          0          0          0          0   none.o\n"
        "      1011       2202       3033       4404       5055   TOTAL\n"
        "\n";
    prints("--sizes", table);
    prints("--zt", table + noEntries);
    prints("--entries", noEntries);
}

TEST_F(SizesReport, EveryFormat) {
    std::string rows;
    for (const ElfFormat format : testsupport::allElfFormats) {
        const std::string name = testsupport::describe(format) + ".o";
        add(name, objectOfSizes({11, 22, 33, 44, 55}, format));
        rows += sizesRow({11, 22, 33, 44, 55}, name);
    }
    prints("--sizes", sizesHeading + rows + totalRow({44, 88, 132, 176, 220}));
}

// Which fields of the statistics make up a column.
TEST_F(SizesReport, ColumnsOfTwoKinds) {
    ElfBuilder object;
    const auto text = static_cast<uint32_t>(object.add(
        {.name = ".text", .flags = SHF_ALLOC | SHF_EXECINSTR, .contents = std::string(100, 'c')}));
    object.addSymbols({{.name = "$a", .section = text, .value = 0},
                       {.name = "$d", .section = text, .value = 60},
                       {.name = "$d.realdata", .section = text, .value = 70}});
    add("mapped.o", object);
    ElfBuilder image({}, ET_EXEC);
    image.add({.name = "ER_RO", .flags = SHF_ALLOC, .contents = std::string(16, 'c')});
    image.add({.name = "gap", .contents = std::string(48, '\0')});
    image.add({.name = "ER_RW", .flags = SHF_ALLOC | SHF_WRITE, .contents = std::string(8, 'd')});
    image.addSegment({.firstSection = 1, .lastSection = 3});
    std::string bytes = image.bytes();
    setSectionField(bytes, 2, SectionField::Type, SHT_NOBITS);
    m_Library.add("padded.axf", bytes);
    prints("--sizes", sizesHeading + sizesRow({70, 30, 0, 0, 0}, "mapped.o") +
                          sizesRow({0, 64, 8, 0, 0}, "padded.axf") + totalRow({70, 94, 8, 0, 0}));
}

// An image whose data are compressed shows them as large as they are in memory.
TEST_F(SizesReport, CompressedImages) {
    std::string rows;
    for (const ElfFormat format : testsupport::allElfFormats) {
        ElfBuilder image = compressedSections(format);
        addTableSymbols(image);
        const std::string name = testsupport::describe(format) + ".axf";
        add(name, image);
        rows += sizesRow({format.is64 ? 48U : 32U, 0, 4096, 0, 0}, name);
    }
    prints("--sizes", sizesHeading + rows + totalRow({2 * 48 + 2 * 32, 0, 4 * 4096, 0, 0}));
}

TEST_F(SizesReport, SumsAndColumnsAreCutTo32Bits) {
    ElfBuilder large = objectOfSizes({});
    large.section(4).noBitsSize = 0x100000007; // .bss
    add("large.o", large);
    add("larger.o", objectOfSizes({0, 0, 0, 0xFFFFFFFF, 0}));
    prints("--sizes", sizesHeading + sizesRow({0, 0, 0, 7, 0}, "large.o") +
                          sizesRow({0, 0, 0, 0xFFFFFFFF, 0}, "larger.o") +
                          totalRow({0, 0, 0, 6, 0}));
}

// An image without section headers is measured by its segments.
TEST_F(SizesReport, SegmentsAlone) {
    ElfBuilder image({}, ET_EXEC);
    image.add({.name = "", .contents = std::string(24, 'c')});
    image.withoutSectionNames()
        .header(HeaderField::SectionHeaderOffset, 0)
        .header(HeaderField::SectionHeaderCount, 0);
    for (const uint32_t flags : {5U, 6U, 4U, 2U}) {
        image.addSegment({.flags = flags,
                          .firstSection = 1,
                          .lastSection = 1,
                          .raw = {{testsupport::SegmentField::MemorySize, 30}}});
    }
    add("image.axf", image);
    prints("--sizes", sizesHeading + sizesRow({24, 24, 24, 18, 0}, "image.axf") +
                          totalRow({24, 24, 24, 18, 0}));
}

// What cannot be read is passed over without a word.
TEST_F(SizesReport, BrokenObjects) {
    const std::string sound = objectOfSizes({1, 2, 3, 4, 5}).bytes();
    add("first.o", objectOfSizes({1, 2, 3, 4, 5}));
    m_Library.add("cut.o", sound.substr(0, sound.size() - 1));
    m_Library.add("header.o", sound.substr(0, 64));
    std::string foreign = sound;
    setHeaderField(foreign, HeaderField::Machine, 50);
    m_Library.add("foreign.o", foreign);
    for (const uint64_t size : {sound.size() + 1, size_t{0x80000000}, SIZE_MAX}) {
        std::string beyond = sound;
        setSectionField(beyond, 3, SectionField::Size, size);
        m_Library.add("beyond.o", beyond);
        beyond = sound;
        setSectionField(beyond, 3, SectionField::Offset, size);
        m_Library.add("beyond.o", beyond);
    }
    add("last.o", objectOfSizes({10, 20, 30, 40, 50}));
    prints("--sizes", sizesHeading + sizesRow({1, 2, 3, 4, 5}, "first.o") +
                          sizesRow({10, 20, 30, 40, 50}, "last.o") +
                          totalRow({11, 22, 33, 44, 55}));
    prints("--entries", noEntries);
}

TEST_F(SizesReport, EveryCutAndManyFlips) {
    ElfBuilder object = objectOfSizes({4, 4, 4, 4, 4});
    object.addSymbols({{.name = "$a", .section = 1}, {.name = "__decompress", .section = 1}});
    survivesCutsAndFlips(object.bytes(), {4, 4, 4, 4, 4});
}

// The same with an image, whose table of regions is read and whose segment has a gap.
TEST_F(SizesReport, EveryCutAndManyFlipsOfAnImage) {
    ElfBuilder image = compressedSections({});
    image.add({.name = "gap", .contents = std::string(20, '\0')});
    image.add({.name = "ER_MORE", .flags = SHF_ALLOC, .contents = "more", .address = 0x30000});
    image.addSegment({.firstSection = 1, .lastSection = 4});
    addTableSymbols(image);
    std::string bytes = image.bytes();
    setSectionField(bytes, 3, SectionField::Type, SHT_NOBITS);
    survivesCutsAndFlips(bytes, {48, 24, 4096, 0, 0});
}

// Words behind the archive choose nothing.
TEST_F(SizesReport, AllMembersWhateverTheWords) {
    add("a.o", objectOfSizes({1, 0, 0, 0, 0}));
    add("b.o", objectOfSizes({2, 0, 0, 0, 0}));
    folder.write("lib.a", m_Library.bytes());
    const std::string table = sizesHeading + sizesRow({1, 0, 0, 0, 0}, "a.o") +
                              sizesRow({2, 0, 0, 0, 0}, "b.o") + totalRow({3, 0, 0, 0, 0});
    EXPECT_TRUE(ended(tomex({"--sizes", "lib.a", "b.o"}), 0, table, ""));
    EXPECT_TRUE(ended(tomex({"--zt", "lib.a", "none.o"}), 0, table + noEntries, ""));
}

TEST_F(SizesReport, ControlCharactersInNames) {
    add("a\tb\x1B[2J.o", objectOfSizes({1, 0, 0, 0, 0}));
    prints("--sizes",
           sizesHeading + sizesRow({1, 0, 0, 0, 0}, "a\tb\\033[2J.o") + totalRow({1, 0, 0, 0, 0}));
}

TEST_F(SizesReport, OfAMissingArchive) {
    for (const char* option : {"--sizes", "--entries", "--zt", "--zs"}) {
        EXPECT_TRUE(ended(tomex({option, "none.a"}), 1, "",
                          "Error: L6832E: Archive 'none.a' not found : No such file or "
                          "directory\n"));
        EXPECT_EQ(folder.entries(), Words{});
    }
}

// Where nothing may be written a report does no less.
TEST_F(SizesReport, OfAReadOnlyArchive) {
    add("a.o", objectOfSizes({1, 2, 3, 4, 5}));
    folder.write("lib.a", m_Library.bytes());
    folder.setMode("lib.a", 0444);
    folder.giveToUnprivilegedUser();
    Command command = testsupport::tomex(folder, {"--sizes", "lib.a"});
    command.unprivileged = true;
    EXPECT_TRUE(ended(testsupport::run(command), 0,
                      sizesHeading + sizesRow({1, 2, 3, 4, 5}, "a.o") + totalRow({1, 2, 3, 4, 5}),
                      ""));
}

// A report beside an option that writes: the library gets its table, and the report is of what was
// there before.
TEST_F(SizesReport, WithANewSymbolTable) {
    file("a.o", objectOfSizes({1, 2, 3, 4, 5}).bytes());
    EXPECT_TRUE(ended(tomex({"-rcn", "lib.a", "a.o"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-s", "--sizes", "lib.a"}), 0,
                      sizesHeading + sizesRow({1, 2, 3, 4, 5}, "a.o") + totalRow({1, 2, 3, 4, 5}),
                      ""));
    EXPECT_NE(archive().table("/"), nullptr);
    EXPECT_TRUE(ended(tomex({"-rcn", "other.a", "a.o"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-s", "--zs", "other.a"}), 0, "",
                      "Archive 'other.a' does not have a symbol table\n"));
    EXPECT_NE(archive("other.a").table("/"), nullptr);
}

// --- Entry points

TEST_F(SizesReport, EntryPoints) {
    add("z.o", objectWithEntries(8, {"second", "first"}));
    add("sizes.o", objectOfSizes({1, 2, 3, 4, 5}));
    for (const ElfFormat format : testsupport::allElfFormats) {
        add(testsupport::describe(format) + ".o", objectWithEntries(0x12345678, {"!!!"}, format));
    }
    std::string lines = entryLine("8", "second", "z.o") + entryLine("8", "first", "z.o");
    std::string rows = sizesRow({8, 0, 0, 0, 0}, "z.o") + sizesRow({1, 2, 3, 4, 5}, "sizes.o");
    for (const ElfFormat format : testsupport::allElfFormats) {
        const std::string name = testsupport::describe(format) + ".o";
        lines += entryLine("305419896", "!!!", name);
        rows += sizesRow({4, 0, 0, 0, 0}, name);
    }
    prints("--entries", lines);
    prints("--zt", sizesHeading + rows + totalRow({25, 2, 3, 4, 5}) + lines);
    prints("--sizes", sizesHeading + rows + totalRow({25, 2, 3, 4, 5}));
}

TEST_F(SizesReport, WhichSectionsHaveEntryPoints) {
    struct Case {
        uint32_t type;
        uint64_t flags;
        bool counts;
    };
    const Case cases[] = {
        {SHT_PROGBITS, SHF_ALLOC | entrySectionFlag, true},
        {SHT_PROGBITS, SHF_ALLOC | SHF_WRITE | entrySectionFlag | 0x20000000, true},
        {SHT_PROGBITS, entrySectionFlag, false},
        {SHT_PROGBITS, SHF_ALLOC, false},
        {SHT_PROGBITS, SHF_ALLOC | 0x20000000, false},
        {SHT_NOBITS, SHF_ALLOC | entrySectionFlag, false},
        {SHT_INIT_ARRAY, SHF_ALLOC | entrySectionFlag, false},
    };
    std::string lines;
    for (const Case& each : cases) {
        const std::string member = "a" + std::to_string(&each - cases) + ".o";
        ElfBuilder object;
        object.add({.name = "s",
                    .type = each.type,
                    .flags = each.flags,
                    .contents = each.type == SHT_NOBITS ? "" : "code"});
        add(member, object);
        lines += each.counts ? entryLine("0", "s", member) : "";
    }
    prints("--entries", lines);
}

// The low half of the entry point, as a signed number.
TEST_F(SizesReport, OffsetsOfEntryPoints) {
    add("a.o", objectWithEntries(0x7FFFFFFF, {"s"}));
    add("b.o", objectWithEntries(0xFFFFFFFF, {"s"}));
    add("c.o", objectWithEntries(0x123400000010, {"s"}));
    add("d.o", objectWithEntries(0x80000000, {"s"}, {false, false}));
    prints("--entries", entryLine("2147483647", "s", "a.o") + entryLine("-1", "s", "b.o") +
                            entryLine("16", "s", "c.o") + entryLine("-2147483648", "s", "d.o"));
}

TEST_F(SizesReport, EntryPointInASectionWithoutAName) {
    add("a.o", objectWithEntries(4, {"x"}).withoutSectionNames());
    prints("--entries", entryLine("4", "", "a.o"));
}

// Names that are the ends of one another, and some twice: each is shown as it is.
TEST_F(SizesReport, EntryPointsInSectionsThatShareANameTable) {
    ElfBuilder object = objectWithEntries(4, {"abcdef", "xyz", "a", "b", "c", "d", "e", "f"});
    std::string bytes = object.bytes();
    const uint64_t start = sectionField(bytes, 1, SectionField::Name);
    const size_t ends[] = {5, 0, 3, 6, 3, 1};
    std::string lines = entryLine("4", "abcdef", "a.o") + entryLine("4", "xyz", "a.o");
    for (size_t i = 0; i < std::size(ends); ++i) {
        setSectionField(bytes, 3 + i, SectionField::Name, start + ends[i]);
        lines += entryLine("4", std::string("abcdef").substr(ends[i]), "a.o");
    }
    m_Library.add("a.o", bytes);
    prints("--entries", lines);
}

// A thousand sections with names of a hundred thousand letters, all out of one text. All of them
// are printed, but they are not all in memory.
TEST_F(SizesReport, EntryPointsWithNamesThatTakeMoreThanTheFile) {
    constexpr size_t count = 1000;
    ElfBuilder object = objectWithEntries(4, Words(count, "x"));
    object.section(1).name = std::string(100000, 'n');
    std::string bytes = object.bytes();
    const uint64_t start = sectionField(bytes, 1, SectionField::Name);
    for (size_t i = 1; i < count; ++i) {
        setSectionField(bytes, 1 + i, SectionField::Name, start + count - i);
    }
    m_Library.add("a.o", bytes);
    folder.write("lib.a", m_Library.bytes());
    Command command = testsupport::tomex(folder, {"--entries", "lib.a"});
    if (!testsupport::sanitizedBuild) { // which takes terabytes of addresses
        command.memoryLimit = uint64_t{64} << 20;
    }
    command.output = Stream::Discard;
    EXPECT_TRUE(ended(testsupport::run(command), 0, "", ""));
}

// Sums without it would be wrong.
TEST_F(SizesReport, AMemberThatMemoryDoesNotHoldEndsTheReport) {
    const std::string image = ElfBuilder({}, ET_EXEC).bytes();
    constexpr uint64_t size = uint64_t{256} << 20;
    const std::string head = std::string(testsupport::archiveMagic) +
                             testsupport::headerText("image/", 0, 0, 0, 0644, size) + image;
    folder.writeSparse("lib.a", head.size() - image.size() + size, head);
    Command command = testsupport::tomex(folder, {"--sizes", "lib.a"});
    if (testsupport::sanitizedBuild) { // takes terabytes of addresses, so there is enough memory
        EXPECT_TRUE(testsupport::run(command).exitedWith(0));
        return;
    }
    command.memoryLimit = size / 2;
    const CommandResult result = testsupport::run(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "Fatal error: L6800U: Out of memory\n");
    EXPECT_EQ(result.output.find("TOTAL"), std::string::npos);
}

// They are kept until the table is printed, from however many members.
TEST_F(SizesReport, ManyEntryPoints) {
    std::string lines;
    std::string rows;
    for (int i = 0; i < 300; ++i) {
        const std::string number = std::to_string(i);
        add("member_with_a_number_" + number,
            objectWithEntries(static_cast<uint64_t>(i), {"section_" + number}));
        lines += entryLine(number, "section_" + number, "member_with_a_number_" + number);
        rows += sizesRow({4, 0, 0, 0, 0}, "member_with_a_number_" + number);
    }
    prints("--entries", lines);
    prints("--zt", sizesHeading + rows + totalRow({1200, 0, 0, 0, 0}) + lines);
}

// In Japanese the parts of the line stand in another order.
TEST_F(SizesReport, EntryPointsInAnotherLanguage) {
    add("a.o", objectWithEntries(8, {"sect"}));
    folder.write("lib.a", m_Library.bytes());
    const CommandResult result = tomex({"--message_locale=ja_JP.65001", "--entries", "lib.a"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_TRUE(result.output.starts_with("a.o ")) << result;
    EXPECT_LT(result.output.find("sect"), result.output.find("8")) << result;
}

} // namespace
} // namespace commandtest
