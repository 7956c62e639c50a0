// What files say that the library has no use for, and what of it comes back.
#include "elfext/interface/prune_criteria.h"
#include "elfext/interface/relocation.h"
#include "tests/elfext/round_trip_fixtures.h"

namespace elfext::test {
namespace {

namespace elf = testsupport::elf;

using testsupport::BuiltElfSymbol;
using testsupport::ElfBuilder;
using testsupport::HeaderField;
using testsupport::SectionField;

class WriterFieldsTest : public ReaderFormatTest {};

INSTANTIATE_FORMATS(WriterFieldsTest);

TEST_P(WriterFieldsTest, AllFlagsOfASectionComeBack) {
    const uint64_t flags = format().is64 ? 0x8765432100000002 : 0x80000002;
    ElfBuilder builder(format());
    const size_t plain = builder.add({.name = "plain", .flags = flags});
    const size_t symbols = builder.addSymbols({});
    builder.section(symbols).flags = flags;
    const RoundTrip result = roundTrip(builder.bytes());
    EXPECT_EQ(result.difference, "");
    EXPECT_EQ(sectionField(result.bytes, plain, SectionField::Flags), flags);
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(section(plain).getFlags(), static_cast<uint32_t>(flags));
    EXPECT_EQ(section(plain).getUpperFlags(), static_cast<uint32_t>(flags >> 32));
    section(plain).setFlags(1);
    section(plain).setUpperFlags(0);
    EXPECT_EQ(sectionField(writtenBytes(module()), plain, SectionField::Flags), 1U);
}

TEST_P(WriterFieldsTest, AllBitsBesideTheVisibilityComeBack) {
    ElfBuilder builder(format());
    BuiltElfSymbol symbol = testsupport::reservedSymbol("s", elf::SHN_ABS, 1);
    symbol.other = 0xA6;
    builder.addSymbols({symbol});
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(module().getSymbol(1)->getVisibility(), 2U);
    EXPECT_EQ(module().getSymbol(1)->getOtherBits(), 0xA4U);
    const std::string bytes = writtenBytes(module());
    ASSERT_TRUE(read(bytes));
    EXPECT_EQ(module().getSymbol(1)->getVisibility(), 2U);
    EXPECT_EQ(module().getSymbol(1)->getOtherBits(), 0xA4U);
    module().getSymbol(1)->setOtherBits(0xFF);
    EXPECT_EQ(module().getSymbol(1)->getOtherBits(), 0xFCU);
    ASSERT_TRUE(read(writtenBytes(module())));
    EXPECT_EQ(module().getSymbol(1)->getVisibility(), 2U);
    EXPECT_EQ(module().getSymbol(1)->getOtherBits(), 0xFCU);
}

TEST_P(WriterFieldsTest, ASymbolIsMadeWithItsOtherBits) {
    SymbolFields fields;
    fields.m_Name = "s";
    fields.m_Visibility = STV_HIDDEN;
    fields.m_OtherBits = 0x13;
    EXPECT_EQ(module().createAbsoluteSymbol(fields, 0)->getOtherBits(), 0x10U);
}

// A program that takes the address of a library's function tells its stub there.
TEST_P(WriterFieldsTest, ValuesOfUndefinedSymbolsComeBack) {
    ElfBuilder builder(format(), elf::ET_EXEC);
    builder.addSymbols({testsupport::reservedSymbol("stub", elf::SHN_UNDEF, 0x12340),
                        testsupport::reservedSymbol("plain", elf::SHN_UNDEF)});
    ASSERT_TRUE(read(builder.bytes()));
    ASSERT_TRUE(read(writtenBytes(module())));
    Symbol& stub = *module().getSymbol(1);
    EXPECT_EQ(stub.getUndefinedValue(), 0x12340U);
    EXPECT_EQ(stub.getAddress(), 0U);
    EXPECT_EQ(stub.getAbiValue(), 0U);
    EXPECT_EQ(module().getSymbol(2)->getUndefinedValue(), 0U);
    stub.makeAbsolute(7);
    stub.makeUndefined();
    EXPECT_EQ(stub.getUndefinedValue(), 0U);
    stub.setUndefinedValue(8);
    ASSERT_TRUE(read(writtenBytes(module())));
    EXPECT_EQ(module().getSymbol(1)->getUndefinedValue(), 8U);
}

TEST_P(WriterFieldsTest, AllBitsOfARelocationsTypeComeBack) {
    const uint32_t type = format().is64 ? 0x87654321 : 0xA7;
    ElfBuilder builder(format());
    const size_t text = builder.add({.name = ".text", .contents = std::string(16, 't')});
    const size_t symbols = builder.addSymbols({testsupport::reservedSymbol("s", elf::SHN_UNDEF)});
    builder.addRelocations(".rela.text", elf::SHT_RELA, text, symbols,
                           {{.offset = 4, .symbol = 1, .type = type, .addend = 3}});
    const auto typeOf = [this, text] {
        const Relocation& relocation = *section(text).getRelocations()[0];
        return uint32_t{relocation.getUpperType()} << 16 | relocation.getType();
    };
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(typeOf(), type);
    ASSERT_TRUE(read(writtenBytes(module())));
    EXPECT_EQ(typeOf(), type);
    section(text).getRelocations()[0]->setType(5);
    ASSERT_TRUE(read(writtenBytes(module())));
    EXPECT_EQ(typeOf(), 5U);
}

// --- Very many sections

class WriterManySectionsTest : public ReaderTest {
protected:
    static constexpr uint32_t many = SHN_LORESERVE + 10;

    void makeSections(uint32_t first, uint32_t count) {
        for (uint32_t i = first; i < count; ++i) {
            module().createSection("a", SHT_PROGBITS, 0);
        }
    }
    void pruneTo(uint32_t count) {
        ManualPruneCriteria criteria;
        for (const Section* const section : module().getSections()) {
            if (section->getType() == SHT_PROGBITS && section->getIndex() >= count) {
                criteria.addSection(section);
            }
        }
        module().prune(criteria);
    }
    // Writes the module and reads it again.
    std::string again() {
        const std::string bytes = writtenBytes(module());
        EXPECT_EQ(reports(), Reports());
        startModule();
        EXPECT_TRUE(read(bytes));
        return bytes;
    }
    void expectExtended(const std::string& bytes) {
        EXPECT_EQ(headerField(bytes, HeaderField::SectionHeaderCount), 0U);
        EXPECT_EQ(sectionField(bytes, 0, SectionField::Size), module().getSectionCount());
        const uint32_t names = module().getSectionNameTable()->getIndex();
        const bool isFar = names >= SHN_LORESERVE;
        EXPECT_EQ(headerField(bytes, HeaderField::NameTableIndex), isFar ? SHN_XINDEX : names);
        EXPECT_EQ(sectionField(bytes, 0, SectionField::Link), isFar ? names : 0);
    }
    void expectPlain(const std::string& bytes) {
        EXPECT_EQ(headerField(bytes, HeaderField::SectionHeaderCount), module().getSectionCount());
        EXPECT_EQ(headerField(bytes, HeaderField::NameTableIndex),
                  module().getSectionNameTable()->getIndex());
        EXPECT_EQ(sectionField(bytes, 0, SectionField::Size), 0U);
        EXPECT_EQ(sectionField(bytes, 0, SectionField::Link), 0U);
        EXPECT_EQ(sectionField(bytes, 0, SectionField::Info), 0U);
    }
};

TEST_F(WriterManySectionsTest, FewerSectionsAreCountedInTheHeaderAgain) {
    module().setType(ET_REL);
    module().createNullSection(0);
    makeSections(1, many);
    expectExtended(again());
    EXPECT_EQ(section(0).getSize(), module().getSectionCount());
    EXPECT_EQ(section(0).getLink(), module().getSectionNameTable());
    // As many as before but a few.
    pruneTo(many - 3);
    EXPECT_TRUE(module().validate());
    expectExtended(again());
    // Far fewer.
    pruneTo(10);
    EXPECT_TRUE(module().validate());
    EXPECT_EQ(section(0).getSize(), 0U);
    EXPECT_EQ(section(0).getLink(), nullptr);
    EXPECT_EQ(reports(), Reports());
    expectPlain(again());
    // And the way back.
    makeSections(10, many);
    EXPECT_TRUE(module().validate());
    expectExtended(again());
    EXPECT_EQ(roundTrip(writtenBytes(module())).difference, "");
}

// What a small file says there by mistake is none of this.
TEST_F(WriterManySectionsTest, ASmallFilesNullSectionIsLeftAlone) {
    ElfBuilder builder;
    builder.section(0).raw = {{SectionField::Size, 0x12345}};
    ASSERT_TRUE(read(builder.bytes()));
    EXPECT_EQ(sectionField(again(), 0, SectionField::Size), 0x12345U);
    EXPECT_FALSE(module().validate());
}

TEST_F(WriterManySectionsTest, WithoutANullSectionTheirNumberHasNoPlace) {
    startModule(true);
    module().setType(ET_REL);
    for (uint32_t i = 0; i < SHN_LORESERVE; ++i) {
        module().createSection(nullptr, SHT_PROGBITS, 0);
    }
    EXPECT_EQ(writtenBytes(module()), "");
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_NE(reports()[0].message.find("SHT_NULL"), std::string::npos) << reports()[0].message;
}

} // namespace
} // namespace elfext::test
