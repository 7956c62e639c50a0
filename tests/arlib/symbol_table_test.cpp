// The symbol table as it is read: symbols, their members, and the flaws of the table.

#include <string>

#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

using testsupport::ArchiveBuilder;
using testsupport::bigEndian32;

class SymbolTable : public ArlibTest {
protected:
    bool readBytes(const std::string& bytes, arlib::Archive& archive) {
        folder.write("lib.a", bytes);
        return read("lib.a", archive);
    }
};

Names symbolsOf(arlib::Archive& archive) {
    Names names;
    for (const arlib::Symbol* symbol : archive.getSymbols()) {
        names.push_back(std::string(symbol->getName()) + (symbol->hasBuildAttributes() ? "+" : "") +
                        " in " + symbol->getDefiningMember()->getName());
    }
    return names;
}

TEST_F(SymbolTable, GivesSymbolsInTableOrder) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").add("b.o", "22").symbol("z", 1).symbol("a", 0).symbol("z", 0);
    arlib::Archive archive;
    ASSERT_TRUE(readBytes(builder.bytes(), archive));
    EXPECT_EQ(symbolsOf(archive), (Names{"z in b.o", "a in a.o", "z in a.o"}));
    EXPECT_EQ(archive.getMembers()[1]->getSymbols().getSize(), 2U);
    EXPECT_STREQ(archive.getMembers()[1]->getSortedSymbols()[1]->getName(), "z");
    EXPECT_EQ(archive.getSymbolIndex(archive.getSymbols()[2]), 2U);
    EXPECT_EQ(archive.getSymbolIndex(nullptr), 0x80000000U);
}

TEST_F(SymbolTable, DecorationIsCutOff) {
    ArchiveBuilder builder;
    builder.add("a.o", "1")
        .symbol("f$$BuildAttributes$FAST", 0)
        .symbol("f$$BuildAttributes$", 0)
        .symbol("g$$Build", 0)
        .symbol("h$$BuildAttributes$1$$BuildAttributes$2", 0);
    arlib::Archive archive;
    ASSERT_TRUE(readBytes(builder.bytes(), archive));
    EXPECT_EQ(symbolsOf(archive),
              (Names{"f+ in a.o", "f+ in a.o", "g$$Build in a.o", "h+ in a.o"}));
}

TEST_F(SymbolTable, FindIsExactAndKeepsTableOrder) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").add("b.o", "2");
    builder.symbol("f", 1).symbol("F", 0).symbol("f", 0).symbol("ff", 0);
    arlib::Archive archive;
    ASSERT_TRUE(readBytes(builder.bytes(), archive));
    arlib::SymbolList found;
    archive.findSymbols("f", found);
    ASSERT_EQ(found.getSize(), 2U);
    EXPECT_EQ(found.get(0), archive.getSymbols()[0]);
    EXPECT_EQ(found.get(1), archive.getSymbols()[2]);
    archive.findSymbols("g", found);
    EXPECT_EQ(found.getSize(), 0U);
}

TEST_F(SymbolTable, SymbolsGoWithTheirMember) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").add("b.o", "2").symbol("x", 0).symbol("y", 1).symbol("z", 0);
    arlib::Archive archive;
    ASSERT_TRUE(readBytes(builder.bytes(), archive));
    archive.deleteMember(archive.getMembers()[1]);
    EXPECT_EQ(symbolsOf(archive), Names{"y in b.o"});
    arlib::SymbolList found;
    archive.findSymbols("x", found);
    EXPECT_EQ(found.getSize(), 0U);
}

// Symbols are made when they are asked for; what happens to members and table before must not
// show in them.
TEST_F(SymbolTable, SymbolsAreThoseThatWereReadHoweverLateTheyAreAsked) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").add("b.o", "2").add("c.o", "3");
    builder.symbol("x", 0).symbol("y", 1).symbol("z", 2);
    arlib::Archive archive;
    ASSERT_TRUE(readBytes(builder.bytes(), archive));
    arlib::ArchiveMember* b = archive.getMembers()[2];
    archive.moveMember(archive.getMembers()[3], 1);
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    archive.deleteMember(b);
    archive.setSymbolTableMode(arlib::SymbolTableMode_None);
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    EXPECT_EQ(archive.getSymbolTable(), nullptr);
    EXPECT_EQ(symbolsOf(archive), (Names{"x in a.o", "z in c.o"}));
}

TEST_F(SymbolTable, SymbolsOutliveTheirTable) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").symbol("x", 0);
    arlib::Archive archive;
    ASSERT_TRUE(readBytes(builder.bytes(), archive));
    archive.deleteMember(archive.getSymbolTable());
    EXPECT_EQ(symbolsOf(archive), Names{"x in a.o"});
}

TEST_F(SymbolTable, TrailingZerosAreNothing) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").rawSymbolTable(bigEndian32(0) + std::string(5, '\0'));
    arlib::Archive archive;
    EXPECT_TRUE(readBytes(builder.bytes(), archive));
    EXPECT_EQ(handler.reports, Names{});
}

TEST_F(SymbolTable, FlawsThatNothingForgives) {
    handler.goesOn = true;
    struct Flaw {
        std::string table;
        std::string report;
    };
    const Flaw flaws[] = {
        {"", "0: Archive symbol table is 0 bytes long, but should contain at least a 4-byte symbol "
             "count"},
        {"123", "0: Archive symbol table is 3 bytes long, but should contain at least a 4-byte "
                "symbol count"},
        {bigEndian32(2) + bigEndian32(8),
         "0: Archive symbol table is 8 bytes long, but claims to contain 2 symbols so it should be "
         "at least 12 bytes long"},
        {bigEndian32(0xFFFFFFFF),
         "0: Archive symbol table is 4 bytes long, but claims to contain 4294967295 symbols so it "
         "should be at least 17179869184 bytes long"},
        {bigEndian32(1) + bigEndian32(8) + "name",
         "0: Archive symbol table ends in the middle of the name of symbol #0 (out of 1)"},
        {bigEndian32(1) + bigEndian32(8),
         "0: Archive symbol table ends in the middle of the name of symbol #0 (out of 1)"},
    };
    for (const Flaw& flaw : flaws) {
        handler.reports.clear();
        arlib::Archive archive;
        EXPECT_FALSE(readBytes(ArchiveBuilder().add("a.o", "1").rawSymbolTable(flaw.table).bytes(),
                               archive));
        EXPECT_EQ(handler.reports, Names{flaw.report});
        EXPECT_EQ(archive.getMembers().getSize(), 0U) << "no half-read archive remains";
    }
}

TEST_F(SymbolTable, FlawsThatMayBeForgiven) {
    ArchiveBuilder builder;
    builder.add("a.o", "1");
    // Table: count, three entries, three names, a stray byte: 4 + 12 + 6 + 1 bytes.
    const auto tableWith = [](uint32_t member) {
        return bigEndian32(3) + bigEndian32(9) + bigEndian32(8) + bigEndian32(member) +
               std::string("x\0y\0z\0?", 7);
    };
    builder.rawSymbolTable(tableWith(0));
    const auto member = static_cast<uint32_t>(builder.offsetOf(0));
    builder.rawSymbolTable(tableWith(member));
    arlib::Archive refused;
    EXPECT_FALSE(readBytes(builder.bytes(), refused));
    EXPECT_EQ(handler.reports.size(), 1U);
    handler.reports.clear();
    handler.goesOn = true;
    arlib::Archive archive;
    EXPECT_TRUE(readBytes(builder.bytes(), archive));
    EXPECT_EQ(handler.reports,
              (Names{"2: Archive symbol table says symbol #0 'x' is defined in the archive member "
                     "starting at offset 9 but no archive member starts there",
                     "2: Archive symbol table says symbol #1 'y' is defined in the archive member "
                     "starting at offset 8, but that member is not an object file",
                     "1: Archive symbol table contains unexpected data at offset 22, after all the "
                     "expected data has finished at offset 22"}));
    EXPECT_EQ(symbolsOf(archive), Names{"z in a.o"});
}

TEST_F(SymbolTable, WithoutHandlerNothingIsForgiven) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").rawSymbolTable(bigEndian32(0) + "?");
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    EXPECT_FALSE(arlib::ArchiveFileReader().readFile(pathOf("lib.a").c_str(), archive));
    EXPECT_EQ(archive.getMembers().getSize(), 0U);
}

} // namespace
} // namespace arlibtest
