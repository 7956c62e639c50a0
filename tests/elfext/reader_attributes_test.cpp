// Build attributes of sections and of symbols' names, and which of them count.
#include "tests/elfext/reader_fixtures.h"

#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/decoration.h"
#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;
using attributes::BuildAttributes;

class ReaderAttributesTest : public ReaderFormatTest {
protected:
    ElfBytes bytes() const { return ElfBytes(format()); }

    // A section of attributes of the public vendor: `scopes` one behind the other.
    std::string attributesSection(std::string_view scopes) const {
        return "A" + bytes().word(10 + scopes.size()).text("qeabi").raw(scopes).bytes();
    }
    // Tag 6 with a number, for the file, section 1 or symbol 1.
    std::string scope(uint32_t kind, uint32_t number) const {
        std::string body = kind == 1 ? "" : std::string("\1\0", 2);
        body += '\6';
        body += static_cast<char>(number);
        return bytes().byte(kind).word(5 + body.size()).raw(body).bytes();
    }
    static uint32_t cpuArch(const ObjectWithBuildAttributes& object) {
        const BuildAttributes* const own = object.getOwnBuildAttributes();
        return own != nullptr ? own->getNumber(attributes::Tag_CPU_arch) : 0;
    }
    static std::string decorationOf(const ObjectWithBuildAttributes& object) {
        const BuildAttributes* const own = object.getOwnBuildAttributes();
        if (own == nullptr) {
            return "(none)";
        }
        char text[1000];
        attributes::printDecoration(own->fullAttr, text, sizeof text);
        return text;
    }
    // What an object that carries this text alone has.
    static std::string meaningOf(const char* text) {
        ObjectModule other;
        attributes::BuildAttributesCache& cache = *other.getBuildAttributesCache();
        other.setBuildAttributes(BuildAttributes(text, cache.getMemo(), cache));
        return decorationOf(other);
    }

    // A file with sections ".text" (1) and ".data" (2) and these symbols.
    ElfBuilder builderOf(const std::vector<BuiltElfSymbol>& symbols) const {
        ElfBuilder builder(format());
        builder.add({.name = ".text", .contents = "code"});
        builder.add({.name = ".data", .contents = "data"});
        builder.addSymbols(symbols);
        return builder;
    }
    static size_t addAttributes(ElfBuilder& builder, const std::string& contents) {
        return builder.add(
            {.name = ".QEL.attributes", .type = elf::SHT_QEL_ATTRIBUTES, .contents = contents});
    }
    const Symbol& symbol(uint32_t index) { return *module().getSymbol(index); }
};
INSTANTIATE_FORMATS(ReaderAttributesTest);

TEST_P(ReaderAttributesTest, SectionOfARichFile) {
    const RichElf rich = richElf(format());
    ASSERT_TRUE(read(rich));
    EXPECT_EQ(cpuArch(module()), 2U);
    EXPECT_EQ(cpuArch(section(1)), 2U);
    EXPECT_EQ(cpuArch(symbol(1)), 2U);
    EXPECT_FALSE(section(2).hasBuildAttributes());
    EXPECT_NE(module().findBuildAttributesBlock("qeabi"), nullptr);
    EXPECT_NE(module().findBuildAttributesBlock("QEL"), nullptr);
    EXPECT_EQ(module().getProperties() & 0x18, 0x10U);
}

TEST_P(ReaderAttributesTest, ScopesOfASection) {
    ElfBuilder builder = builderOf({{.name = "s", .section = 1}});
    addAttributes(builder, attributesSection(scope(3, 3) + scope(2, 4) + scope(1, 5)));
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(cpuArch(module()), 5U);
    EXPECT_EQ(cpuArch(section(1)), 4U);
    EXPECT_EQ(cpuArch(symbol(1)), 3U);
}

TEST_P(ReaderAttributesTest, SeveralSections) {
    ElfBuilder builder = builderOf({{.name = "s", .section = 1}});
    addAttributes(builder, attributesSection(scope(1, 5)));
    addAttributes(builder, attributesSection(scope(2, 4)));
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(cpuArch(module()), 5U);
    EXPECT_EQ(cpuArch(section(1)), 4U);
}

// After a corrupted section nothing is left of what was there before, and no further one is read.
TEST_P(ReaderAttributesTest, CorruptedSectionDropsEverything) {
    ElfBuilder builder = builderOf({{.name = "s", .section = 1}});
    addAttributes(builder, attributesSection(scope(1, 5) + scope(2, 4) + scope(3, 3)));
    const size_t bad = addAttributes(builder, attributesSection(scope(1, 6) + scope(9, 1)));
    addAttributes(builder, attributesSection(scope(2, 2)));
    addAttributes(builder, "B");
    ASSERT_TRUE(readOn(builder.bytes()));
    EXPECT_EQ(reports(), Reports({{1, "Build attributes in section #" + std::to_string(bad) +
                                          " are corrupted"}}));
    EXPECT_FALSE(module().hasBuildAttributes());
    EXPECT_FALSE(section(1).hasBuildAttributes());
    EXPECT_FALSE(symbol(1).hasBuildAttributes());
    EXPECT_NE(module().getProperties() & 0x10, 0U);
}

TEST_P(ReaderAttributesTest, EmptySectionIsCorrupted) {
    ElfBuilder builder = builderOf({});
    addAttributes(builder, "");
    EXPECT_FALSE(read(builder.bytes()));
    EXPECT_EQ(reports().size(), 1U);
}

// A section that was found bad before, here for its link, is seen but not read.
TEST_P(ReaderAttributesTest, ABadSectionIsPassedOver) {
    ElfBuilder builder = builderOf({});
    const size_t bad = addAttributes(builder, attributesSection(scope(1, 5)));
    std::string file = builder.bytes();
    setSectionField(file, bad, SectionField::Link, 1000);
    ASSERT_TRUE(readOn(file));
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_FALSE(module().hasBuildAttributes());
    EXPECT_NE(module().getProperties() & 0x10, 0U);
}

// --- Symbols

TEST_P(ReaderAttributesTest, MarkerOfTheModule) {
    ASSERT_TRUE(
        read(builderOf({reservedSymbol("BuildAttributes$$QEL_ISAv5$E", elf::SHN_ABS)}).bytes()));
    EXPECT_EQ(decorationOf(module()), meaningOf("$QEL_ISAv5$E"));
    EXPECT_FALSE(section(1).hasBuildAttributes());
    EXPECT_FALSE(symbol(1).hasBuildAttributes());
}

TEST_P(ReaderAttributesTest, MarkerOfASection) {
    ASSERT_TRUE(read(builderOf({{.name = "BuildAttributes$$QEL_ISAv4", .section = 2}}).bytes()));
    EXPECT_EQ(decorationOf(section(2)), meaningOf("$QEL_ISAv4"));
    EXPECT_FALSE(module().hasBuildAttributes());
}

// The symbols of exactly the name in front of the marker, all of them.
TEST_P(ReaderAttributesTest, DecoratedSymbols) {
    ASSERT_TRUE(read(builderOf({{.name = "f", .section = 1, .binding = elf::STB_LOCAL},
                                {.name = "ff", .section = 1},
                                reservedSymbol("f$$BuildAttributes$$QEL_ISAv4", elf::SHN_ABS),
                                {.name = "f", .section = 2}})
                         .bytes()));
    EXPECT_EQ(decorationOf(symbol(1)), meaningOf("$QEL_ISAv4"));
    EXPECT_FALSE(symbol(2).hasBuildAttributes());
    EXPECT_FALSE(symbol(3).hasBuildAttributes());
    EXPECT_EQ(decorationOf(symbol(4)), meaningOf("$QEL_ISAv4"));
    EXPECT_FALSE(module().hasBuildAttributes());
}

TEST_P(ReaderAttributesTest, NamesThatAreNoMarkers) {
    // A marker behind a name counts only where the symbol is absolute, and only behind "$$".
    ASSERT_TRUE(read(builderOf({{.name = "f", .section = 1},
                                {.name = "f$$BuildAttributes$$QEL_ISAv4", .section = 1},
                                {.name = "f$$BuildAttributes$$QEL_ISAv5"},
                                reservedSymbol("f$BuildAttributes$$QEL_ISAv4", elf::SHN_ABS),
                                reservedSymbol("fBuildAttributes$$QEL_ISAv4", elf::SHN_ABS),
                                reservedSymbol("BuildAttributes$$E", elf::SHN_COMMON),
                                {.name = "BuildAttributes$$E"},
                                reservedSymbol("BuildAttributes", elf::SHN_ABS)})
                         .bytes()));
    EXPECT_FALSE(module().hasBuildAttributes());
    for (uint32_t i = 1; i <= module().getSymbolCount(); ++i) {
        EXPECT_FALSE(symbol(i).hasBuildAttributes()) << i;
    }
    EXPECT_EQ(module().getProperties() & 0x8, 0U);
    EXPECT_TRUE(reports().empty());
}

// Required of any input: no name stands in the way of another.
TEST_P(ReaderAttributesTest, OddNames) {
    ASSERT_TRUE(read(
        builderOf({reservedSymbol("$$BuildAttributes$$E", elf::SHN_ABS),
                   reservedSymbol("$$$BuildAttributes$$E", elf::SHN_ABS),
                   reservedSymbol("gone$$BuildAttributes$$E", elf::SHN_ABS),
                   reservedSymbol("aBuildAttributes$b$$BuildAttributes$$QEL_ISAv4", elf::SHN_ABS),
                   {.name = "aBuildAttributes$b", .section = 1},
                   {.name = "$", .section = 1},
                   {.section = 1}})
            .bytes()));
    EXPECT_FALSE(module().hasBuildAttributes());
    EXPECT_EQ(decorationOf(symbol(5)), meaningOf("$QEL_ISAv4"));
    EXPECT_EQ(decorationOf(symbol(6)), meaningOf("$E"));
    EXPECT_FALSE(symbol(7).hasBuildAttributes());
}

TEST_P(ReaderAttributesTest, DynamicSymbolsDoNotCount) {
    ElfBuilder builder(format());
    const size_t strings = builder.addStringTable(".dynstr");
    builder.addSymbolTable(".dynsym", elf::SHT_DYNSYM, strings,
                           {reservedSymbol("BuildAttributes$$E", elf::SHN_ABS)});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_FALSE(module().hasBuildAttributes());
}

// The section wins where it says something of the module.
TEST_P(ReaderAttributesTest, SectionBeforeSymbols) {
    ElfBuilder builder = builderOf({reservedSymbol("BuildAttributes$$QEL_ISAv8", elf::SHN_ABS),
                                    {.name = "BuildAttributes$$QEL_ISAv8", .section = 1}});
    addAttributes(builder, attributesSection(scope(1, 5)));
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(cpuArch(module()), 5U);
    EXPECT_FALSE(section(1).hasBuildAttributes());
    EXPECT_EQ(module().getProperties() & 0x18, 0x18U);
}

// A section that says nothing of the module gives way to the symbols, with all that it said.
TEST_P(ReaderAttributesTest, SymbolsInPlaceOfASectionWithoutTheModule) {
    ElfBuilder builder = builderOf({reservedSymbol("BuildAttributes$$QEL_ISAv5", elf::SHN_ABS)});
    addAttributes(builder, attributesSection(scope(2, 4)));
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(decorationOf(module()), meaningOf("$QEL_ISAv5"));
    EXPECT_FALSE(section(1).hasBuildAttributes());
}

TEST_P(ReaderAttributesTest, SymbolsAfterACorruptedSection) {
    ElfBuilder builder = builderOf({reservedSymbol("BuildAttributes$$QEL_ISAv5", elf::SHN_ABS)});
    addAttributes(builder, attributesSection(scope(1, 4)));
    addAttributes(builder, "broken");
    ASSERT_TRUE(readOn(builder.bytes()));
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_EQ(decorationOf(module()), meaningOf("$QEL_ISAv5"));
}

// A second text for the same target is laid over the first.
TEST_P(ReaderAttributesTest, SeveralMarkersOfOneTarget) {
    const auto both = [this](const std::string& first, const std::string& second) {
        EXPECT_TRUE(read(builderOf({reservedSymbol("BuildAttributes$" + first, elf::SHN_ABS),
                                    reservedSymbol("BuildAttributes$" + second, elf::SHN_ABS, 1)})
                             .bytes()));
    };
    const auto archOf = [](const char* text) {
        ObjectModule other;
        attributes::BuildAttributesCache& cache = *other.getBuildAttributesCache();
        return BuildAttributes(text, cache.getMemo(), cache).getNumber(attributes::Tag_CPU_arch);
    };
    ASSERT_NE(archOf("$QEL_ISAv5"), archOf("$QEL_ISAv7"));
    both("$QEL_ISAv5$BTI", "$QEL_ISAv7");
    EXPECT_EQ(cpuArch(module()), archOf("$QEL_ISAv7"));
    EXPECT_EQ(module().getOwnBuildAttributes()->getNumber(attributes::Tag_BTI_use), 1U);
    // Where the second text leaves nothing of the first one open, the first one stays.
    const auto goals = [this] {
        return module().getOwnBuildAttributes()->getNumber(attributes::Tag_ABI_optimization_goals);
    };
    startModule();
    both("$QEL_ISAv7", "$QEL_ISAv7$OTIME");
    EXPECT_EQ(goals(), 0U);
    startModule();
    both("$QEL_ISAv7$OTIME", "$QEL_ISAv7");
    EXPECT_EQ(goals(), 2U);
    EXPECT_TRUE(reports().empty());
}

// Records belong to the module, not to the file that was read into it: a second file meets those
// of the first, with what equality leaves out. Whoever does not want that takes a module for each
// file.
TEST_P(ReaderAttributesTest, RecordsOutliveTheFile) {
    const auto readMarker = [this](const char* text) {
        EXPECT_TRUE(
            read(builderOf({reservedSymbol(std::string("BuildAttributes$") + text, elf::SHN_ABS)})
                     .bytes()));
        return module().getOwnBuildAttributes();
    };
    const BuildAttributes* const first = readMarker("$QEL_ISAv7$BTI");
    EXPECT_EQ(first->getNumber(attributes::Tag_BTI_use), 1U);
    const BuildAttributes* const other = readMarker("$QEL_ISAv5");
    EXPECT_NE(other, first);
    EXPECT_EQ(first->getNumber(attributes::Tag_BTI_use), 1U);
    EXPECT_EQ(readMarker("$QEL_ISAv7"), first);
    EXPECT_EQ(module().getBuildAttributesCache()->getRecordCount(), 2U);
    startModule();
    EXPECT_FALSE(readMarker("$QEL_ISAv7")->isPresent(attributes::Tag_BTI_use));
}

// --- Hostile files

using HostileAttributesTest = ReaderTest;

// The text is read once, however many symbols it decorates.
TEST_F(HostileAttributesTest, ALongDecorationOfManySymbols) {
    constexpr uint32_t count = 100000;
    ElfBuilder builder;
    builder.add({.name = ".text", .contents = "code"});
    std::vector<BuiltElfSymbol> symbols(count, {.name = "f", .section = 1});
    symbols.push_back(
        reservedSymbol("f$$BuildAttributes$$" + std::string(4U << 20, 'x'), elf::SHN_ABS));
    builder.addSymbols(symbols);
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_TRUE(module().getSymbol(1)->hasBuildAttributes());
    EXPECT_TRUE(module().getSymbol(count)->hasBuildAttributes());
}

// Names are searched for a marker once, however many symbol tables share them.
TEST_F(HostileAttributesTest, ManySymbolTablesWithTheSameNames) {
    ElfBuilder builder;
    const size_t strings = builder.add({.name = ".strtab",
                                        .type = elf::SHT_STRTAB,
                                        .contents = '\0' + std::string(4U << 20, 'B') + '\0'});
    for (uint32_t i = 0; i < 20000; ++i) {
        builder.addSymbolTable(".s", elf::SHT_SYMTAB, strings, {});
    }
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSymtabSections().getSize(), 20000U);
}

} // namespace
} // namespace elfext::test
