// Objects whose counts, sizes and links are far from what any compiler makes.
//
// Whatever a header claims, the program ends, soon and in a small multiple of the file's own
// memory: with the names of the object or with a warning about it. Every run here has a limit of
// memory that a believed count would break at once.
#include "tests/command/bad_input_case.h"
#include "tests/support/rich_elf.h"

namespace commandtest {
namespace {

using testsupport::BuiltElfSymbol;
using testsupport::BuiltSection;
using testsupport::BuiltSegment;
using testsupport::ElfBuilder;
using testsupport::ElfFormat;
using testsupport::HeaderField;
using testsupport::RichElf;
using testsupport::SectionField;
using testsupport::SegmentField;

using namespace testsupport::elf;

class ObjectLimits : public CommandCase, public testing::WithParamInterface<ElfFormat> {
protected:
    // Room for the program itself and for some copies of the object.
    static constexpr uint64_t roomBesideObject = 48U << 20U;
    static constexpr uint64_t roomPerByte = 12;

    CommandResult create(const std::string& bytes) const {
        file("a.o", bytes);
        testsupport::Command command = testsupport::tomex(folder, {"-rc", "lib.a", "a.o"});
        if (!testsupport::sanitizedBuild) {
            command.memoryLimit = roomBesideObject + roomPerByte * bytes.size();
        }
        return testsupport::run(command);
    }
    // The object is sound and defines these names.
    void lists(const std::string& bytes, const Words& expected) const {
        EXPECT_TRUE(ended(create(bytes), 0, "", ""));
        Words found;
        for (const testsupport::ParsedSymbol& symbol : archive().symbols) {
            found.push_back(symbol.name);
        }
        EXPECT_TRUE(found == expected) << found.size() << " names, not " << expected.size();
        folder.remove("lib.a");
    }
    void refuses(const std::string& bytes, const std::string& sentence) const {
        EXPECT_TRUE(ended(
            create(bytes), 0, "",
            warned("Unable to read symbols defined in archive member #0 'a.o': " + sentence)));
        EXPECT_TRUE(contents("a.o") == bytes);
        EXPECT_TRUE(archive().symbols.empty());
        folder.remove("lib.a");
    }

    ElfFormat format() const { return GetParam(); }
    // The greatest number that an address or size of the class holds.
    uint64_t greatest() const { return format().is64 ? UINT64_MAX : UINT32_MAX; }
    RichElf rich(uint16_t type = ET_REL) const { return testsupport::richElf(format(), type); }
    std::string withHeader(HeaderField field, uint64_t value, uint16_t type = ET_REL) const {
        std::string bytes = rich(type).bytes();
        setHeaderField(bytes, field, value);
        return bytes;
    }
    static std::string withSection(const RichElf& object, size_t section, SectionField field,
                                   uint64_t value) {
        std::string bytes = object.bytes();
        setSectionField(bytes, section, field, value);
        return bytes;
    }

    const std::string endedEarly = "I/O error writing file 'a.o': Unknown error -1";
};

std::string formatName(const testing::TestParamInfo<ElfFormat>& info) {
    return std::string(info.param.is64 ? "Wide" : "Narrow") +
           (info.param.littleEndian ? "Little" : "Big");
}

INSTANTIATE_TEST_SUITE_P(All, ObjectLimits, testing::ValuesIn(testsupport::allElfFormats),
                         formatName);

TEST_P(ObjectLimits, SectionCountOfTheExtendedForm) {
    for (const uint64_t count : {uint64_t{0x10000}, uint64_t{0x7FFFFFFF}, uint64_t{0xFFFFFFFF},
                                 greatest() / 64 + 1, greatest() / 40 + 1, greatest()}) {
        std::string bytes = withHeader(HeaderField::SectionHeaderCount, 0);
        setSectionField(bytes, 0, SectionField::Size, count);
        refuses(bytes, endedEarly);
    }
}

TEST_P(ObjectLimits, HeaderTablesNearTheGreatestOffset) {
    for (const uint64_t back : {0U, 39U, 63U, 64U, 4096U}) {
        refuses(withHeader(HeaderField::SectionHeaderOffset, greatest() - back), endedEarly);
        refuses(withHeader(HeaderField::ProgramHeaderOffset, greatest() - back, ET_DYN),
                endedEarly);
    }
}

TEST_P(ObjectLimits, GreatestProgramHeaderCount) {
    refuses(withHeader(HeaderField::ProgramHeaderCount, 0xFFFF, ET_DYN), endedEarly);
}

TEST_P(ObjectLimits, SizesAndOffsetsThatWrap) {
    for (const size_t RichElf::*section :
         {&RichElf::strings, &RichElf::symbols, &RichElf::group, &RichElf::textRelocations,
          &RichElf::dynamic, &RichElf::note, &RichElf::attributes, &RichElf::verdef}) {
        const RichElf object = rich();
        for (const uint64_t value : {greatest(), greatest() - 7, greatest() / 2 + 1}) {
            const CommandResult bySize =
                create(withSection(object, object.*section, SectionField::Size, value));
            EXPECT_EQ(bySize.status, 0) << bySize;
            EXPECT_TRUE(bySize.error.find("Unable to read symbols") != std::string::npos) << bySize;
            const CommandResult byOffset =
                create(withSection(object, object.*section, SectionField::Offset, value));
            EXPECT_EQ(byOffset.status, 0) << byOffset;
            EXPECT_TRUE(byOffset.error.find("Unable to read symbols") != std::string::npos)
                << byOffset;
        }
    }
}

TEST_P(ObjectLimits, SectionWithoutBytesMayClaimAnySize) {
    const RichElf object = rich();
    lists(withSection(object, object.bss, SectionField::Size, greatest()),
          testsupport::richNames());
    lists(withSection(object, object.bss, SectionField::Size, greatest() / 2 + 1),
          testsupport::richNames());
}

TEST_P(ObjectLimits, EntrySizesOfZero) {
    const RichElf object = rich();
    std::string bytes = object.bytes();
    for (size_t section = 1; section <= object.names; ++section) {
        setSectionField(bytes, section, SectionField::EntrySize, 0);
    }
    lists(bytes, testsupport::richNames());
    for (size_t section = 1; section <= object.names; ++section) {
        setSectionField(bytes, section, SectionField::EntrySize, greatest());
    }
    lists(bytes, testsupport::richNames());
}

TEST_P(ObjectLimits, HeaderEntrySizesAreNotUsed) {
    for (const uint64_t size : {0U, 1U, 0xFFFFU}) {
        std::string bytes = withHeader(HeaderField::SectionHeaderSize, size, ET_DYN);
        setHeaderField(bytes, HeaderField::ProgramHeaderSize, size);
        setHeaderField(bytes, HeaderField::HeaderSize, 0);
        const CommandResult result = create(bytes);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        folder.remove("lib.a");
    }
}

TEST_P(ObjectLimits, LinkToItself) {
    const RichElf object = rich();
    lists(withSection(object, object.data, SectionField::Link, object.data),
          testsupport::richNames());
    lists(withSection(object, object.textRelocations, SectionField::Info, object.textRelocations),
          testsupport::richNames());
}

TEST_P(ObjectLimits, GroupsOfGroups) {
    RichElf object = rich();
    const auto next = static_cast<uint32_t>(object.builder.sectionCount());
    constexpr uint32_t length = 100;
    for (uint32_t i = 0; i < length; ++i) {
        // Each holds the next one, and the last one itself.
        const uint32_t member = next + std::min(i + 1, length - 1);
        object.builder.addGroup(".group", object.symbols, testsupport::RichSymbol_Function,
                                GRP_COMDAT, {i + 1 < length ? member : 0});
    }
    lists(object.bytes(), testsupport::richNames());
    const size_t itself =
        object.builder.addGroup(".group", object.symbols, testsupport::RichSymbol_Function, 0,
                                {static_cast<uint32_t>(object.builder.sectionCount())});
    EXPECT_EQ(itself, next + length);
    lists(object.bytes(), testsupport::richNames());
}

TEST_P(ObjectLimits, NotesThatClaimMoreThanThereIs) {
    for (const uint32_t claim : {0xFFFFFFFFU, 0xFFFFFFFDU, 0x7FFFFFFFU, 0x80000000U, 100U}) {
        for (const size_t field : {0U, 4U}) {
            RichElf object = rich(ET_DYN);
            std::string& note = object.builder.section(object.note).contents;
            testsupport::writeNumber(note, field, 4, format().littleEndian, claim);
            const CommandResult result = create(object.bytes());
            EXPECT_TRUE(result.exitedWith(0)) << result;
            folder.remove("lib.a");
        }
    }
}

TEST_P(ObjectLimits, VersionRecordsThatLeadNowhere) {
    for (const size_t RichElf::*section : {&RichElf::verdef, &RichElf::verneed}) {
        for (size_t word = 0; word < 7; ++word) {
            for (const uint32_t value : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFFCU}) {
                RichElf object = rich(ET_DYN);
                std::string& records = object.builder.section(object.*section).contents;
                testsupport::writeNumber(records, word * 4, 4, format().littleEndian, value);
                const CommandResult result = create(object.bytes());
                EXPECT_TRUE(result.exitedWith(0)) << result;
                folder.remove("lib.a");
            }
        }
    }
}

TEST_P(ObjectLimits, VersionCountsOfBillions) {
    for (const uint64_t tag : {DT_VERDEFNUM, DT_VERNEEDNUM}) {
        for (const uint64_t count : {uint64_t{0xFFFFFFFF}, greatest()}) {
            RichElf object = rich(ET_DYN);
            std::string bytes = object.bytes();
            const uint64_t start = sectionField(bytes, object.dynamic, SectionField::Offset);
            const uint64_t end = start + sectionField(bytes, object.dynamic, SectionField::Size);
            const size_t width = format().is64 ? 8 : 4;
            for (uint64_t entry = start; entry < end; entry += 2 * width) {
                if (testsupport::readNumber(bytes, entry, width, format().littleEndian) == tag) {
                    testsupport::writeNumber(bytes, entry + width, width, format().littleEndian,
                                             count);
                }
            }
            // Each record is followed by itself.
            for (const size_t section : {object.verdef, object.verneed}) {
                const uint64_t records = sectionField(bytes, section, SectionField::Offset);
                testsupport::writeNumber(bytes, records + (section == object.verdef ? 16 : 12), 4,
                                         format().littleEndian, 0);
            }
            const CommandResult result = create(bytes);
            EXPECT_TRUE(result.exitedWith(0)) << result;
            folder.remove("lib.a");
        }
    }
}

TEST_P(ObjectLimits, PreemptionMapThatClaimsBillions) {
    for (const uint32_t count : {0xFFFFFFFFU, 0x3FFFFFFFU, 0x40000000U, 100U}) {
        RichElf object = rich(ET_DYN);
        std::string& map = object.builder.section(object.preemptionMap).contents;
        testsupport::writeNumber(map, 0, 4, format().littleEndian, count);
        lists(object.bytes(), testsupport::richNames());
    }
}

TEST_P(ObjectLimits, MoreSectionsThanTheHeaderCounts) {
    ElfBuilder builder(format());
    constexpr uint32_t count = 70'000;
    std::vector<BuiltElfSymbol> symbols;
    Words expected;
    for (uint32_t i = 1; i < count; ++i) {
        builder.add({.name = "s"});
        if (i % 7 == 0 || i > 65'270) {
            symbols.push_back({.name = "in" + std::to_string(i), .section = i});
            expected.push_back(symbols.back().name);
        }
    }
    builder.addSymbols(symbols);
    lists(builder.bytes(), expected);
}

// One number below the extended forms and the first one that needs them.
TEST_P(ObjectLimits, SectionCountsAroundTheExtendedForm) {
    for (const uint32_t count : {65'276U, 65'277U, 65'278U}) {
        ElfBuilder builder(format());
        for (uint32_t i = 1; i < count; ++i) {
            builder.add({.name = "s"});
        }
        builder.addSymbols({{.name = "low", .section = 1}, {.name = "high", .section = count - 1}});
        const std::string bytes = builder.bytes();
        // With two tables for the symbols and one for the names.
        const bool isExtended = count + 3 >= SHN_LORESERVE;
        EXPECT_EQ(headerField(bytes, HeaderField::SectionHeaderCount), isExtended ? 0 : count + 3);
        lists(bytes, {"low", "high"});
    }
}

TEST_P(ObjectLimits, ManySymbols) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    std::vector<BuiltElfSymbol> symbols;
    Words expected;
    for (int i = 0; i < 200'000; ++i) {
        symbols.push_back({.name = "s" + std::to_string(i), .section = 1});
        expected.push_back(symbols.back().name);
    }
    builder.addSymbols(symbols);
    lists(builder.bytes(), expected);
}

// Names that share their bytes would fill a symbol table many times as long as the object.
TEST_P(ObjectLimits, LongNamesThatShareTheirBytes) {
    ElfBuilder builder(format());
    builder.add({.name = ".text", .contents = "code"});
    const size_t table =
        builder.addSymbols(std::vector<BuiltElfSymbol>(20'000, {.name = "s", .section = 1}));
    builder.section(table - 1).contents =
        std::string(1, '\0') + std::string(500'000, 'x') + std::string(1, '\0');
    std::string bytes = builder.bytes();
    for (size_t i = 1; i <= 20'000; ++i) {
        setSymbolField(bytes, table, i, testsupport::SymbolField::Name, i);
    }
    refuses(bytes, "Out of memory");
}

// Segments that all hold the same bytes, or each other like the shells of an onion.
TEST_P(ObjectLimits, ManySegmentsOverTheSameBytes) {
    for (const bool nested : {false, true}) {
        ElfBuilder builder(format(), ET_DYN);
        constexpr uint32_t count = 60'000;
        const size_t text = builder.add({.name = ".text",
                                         .flags = SHF_ALLOC,
                                         .contents = std::string(2 * count, 'c'),
                                         .mapped = true});
        builder.addSymbols({{.name = "name", .section = static_cast<uint32_t>(text)}});
        for (uint32_t i = 0; i < count; ++i) {
            builder.addSegment({.firstSection = text, .lastSection = text});
        }
        if (nested) {
            const uint64_t offset = builder.layout().sections[text].offset;
            for (uint32_t i = 0; i < count; ++i) {
                builder.segment(i).raw = {{SegmentField::Offset, offset + i},
                                          {SegmentField::FileSize, 2 * (count - i)},
                                          {SegmentField::MemorySize, 2 * (count - i)}};
            }
        }
        lists(builder.bytes(), {"name"});
    }
}

// Each of the sections may belong to each of the segments. There is a limit to how long that is
// looked into.
TEST_P(ObjectLimits, ManyEmptySectionsAmongManySegments) {
    ElfBuilder builder(format(), ET_DYN);
    constexpr uint32_t count = 30'000;
    const auto text = static_cast<uint32_t>(
        builder.add({.name = ".text", .contents = std::string(count, 'c'), .mapped = true}));
    for (uint32_t i = 0; i < count; ++i) {
        builder.add({.name = "b", .type = SHT_NOBITS, .flags = SHF_ALLOC, .mapped = true});
    }
    builder.addSymbols({{.name = "name", .section = text}});
    for (uint32_t i = 0; i < count; ++i) {
        builder.addSegment({.firstSection = text, .lastSection = text});
    }
    const CommandResult result = create(builder.bytes());
    EXPECT_TRUE(result.exitedWith(0)) << result;
    const bool isRead = result.error.empty();
    EXPECT_TRUE(isRead || result.error.find("': Out of memory\n") != std::string::npos) << result;
    EXPECT_EQ(archive().symbols.size(), isRead ? 1U : 0U);
}

} // namespace
} // namespace commandtest
