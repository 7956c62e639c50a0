// The report of the symbol table: names, members, places, decorations.
#include "tests/command/command_case.h"

#include <fcntl.h>

#include "tests/support/elf_builder.h"

namespace commandtest {
namespace {

using testsupport::ElfBuilder;

std::string symbolLine(const std::string& name, const std::string& member, uint64_t offset) {
    const std::string place = std::to_string(offset);
    return testsupport::padded(name, 20) + " from " + testsupport::padded(member, 10) +
           " at offset " + std::string(place.size() < 6 ? 6 - place.size() : 0, ' ') + place + "\n";
}

class SymbolReport : public CommandCase {
protected:
    void prints(const std::string& expected) const {
        folder.write("lib.a", m_Library.bytes());
        EXPECT_TRUE(ended(tomex({"--zs", "lib.a"}), 0, expected, ""));
        EXPECT_TRUE(folder.read("lib.a") == m_Library.bytes());
    }
    // What stands for a symbol of this name in the report of a table that has just this one.
    std::string shown(const std::string& name) const {
        ArchiveBuilder library;
        library.add("a.o", "x").symbol(name, 0);
        folder.write("shown.a", library.bytes());
        const CommandResult result = tomex({"--zs", "shown.a"});
        EXPECT_TRUE(result.exitedWith(0)) << result;
        return result.output.substr(0, result.output.find(" from a.o"));
    }

    ArchiveBuilder m_Library;
};

TEST_F(SymbolReport, LinesInTheOrderOfTheTable) {
    m_Library.add("z.o", "zz").add("a.o", "a").add("a_name_too_long_for_a_header.o", "b");
    m_Library.symbol("zeta", 0).symbol("alpha", 1).symbol("a_name_of_twenty_six_chars", 2);
    m_Library.symbol("beta", 0).symbol("zeta", 1);
    prints("zeta                 from z.o        at offset    232\n"
           "alpha                from a.o        at offset    294\n"
           "a_name_of_twenty_six_chars from a_name_too_long_for_a_header.o at offset    356\n"
           "beta                 from z.o        at offset    232\n"
           "zeta                 from a.o        at offset    294\n");
}

TEST_F(SymbolReport, OfAnEmptyTable) {
    m_Library.add("a.o", "a").withSymbolTable();
    prints("");
}

TEST_F(SymbolReport, OfATableMadeHere) {
    ElfBuilder object;
    object.add({.name = ".text", .contents = "code"});
    object.addSymbols({{.name = "first", .section = 1},
                       {.name = "local", .section = 1, .binding = testsupport::elf::STB_LOCAL},
                       {.name = "second", .section = 1, .value = 2}});
    file("a.o", object.bytes());
    EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "a.o"}), 0, "", ""));
    const uint64_t offset = archive().find("a.o")->headerOffset;
    EXPECT_TRUE(ended(tomex({"--zs", "lib.a"}), 0,
                      symbolLine("first", "a.o", offset) + symbolLine("second", "a.o", offset),
                      ""));
}

TEST_F(SymbolReport, WithoutATable) {
    file("a.o", "x");
    EXPECT_EQ(tomex({"-rcn", "lib.a", "a.o"}).status, 0);
    const std::string bytes = folder.read("lib.a");
    EXPECT_TRUE(
        ended(tomex({"--zs", "lib.a"}), 0, "", "Archive 'lib.a' does not have a symbol table\n"));
    EXPECT_TRUE(folder.read("lib.a") == bytes);
    EXPECT_TRUE(ended(tomex({"--diag_style=gnu", "--zs", "lib.a"}), 0, "",
                      "Archive 'lib.a' does not have a symbol table\n"));
    EXPECT_TRUE(ended(tomex({"--diag_suppress=6872", "--zs", "lib.a"}), 0, "",
                      "Archive 'lib.a' does not have a symbol table\n"));
}

// Only in front of all members is it the table.
TEST_F(SymbolReport, OfATableBehindTheMembers) {
    m_Library.add("a.o", "aa").symbol("alpha", 0);
    const std::string built = m_Library.bytes();
    const size_t memberStart = m_Library.offsetOf(0);
    folder.write("lib.a",
                 built.substr(0, 8) + built.substr(memberStart) + built.substr(8, memberStart - 8));
    const CommandResult result = tomex({"--zs", "lib.a"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.ends_with("Archive 'lib.a' does not have a symbol table\n")) << result;
}

// The offset is printed as a signed number. (Required: users' scripts know it so.) The file is
// sparse, and takes no room on disk.
TEST_F(SymbolReport, OfAMemberBehindTwoGibibytes) {
    constexpr uint64_t largeSize = 2300000000;
    constexpr uint32_t place = 2300000150;
    const std::string head =
        ArchiveBuilder()
            .rawSymbolTable(testsupport::bigEndian32(2) + testsupport::bigEndian32(90) +
                            testsupport::bigEndian32(place) + std::string("near\0far1\0", 10))
            .add({.name = "large.o", .rawSize = std::to_string(largeSize)})
            .bytes();
    ASSERT_EQ(head.size() + largeSize, place);
    const std::string member = ArchiveBuilder().add("small.o", "xx").bytes().substr(8);
    folder.writeSparse("lib.a", place + member.size(), head);
    const int file = ::open(folder.pathOf("lib.a").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    EXPECT_EQ(::pwrite(file, member.data(), member.size(), off_t{place}),
              static_cast<ssize_t>(member.size()));
    EXPECT_EQ(::close(file), 0);
    EXPECT_TRUE(ended(tomex({"--zs", "lib.a"}), 0,
                      "near                 from large.o    at offset     90\n"
                      "far1                 from small.o    at offset -1994967146\n",
                      ""));
}

// --- Decorations: the attributes are read, and said again.

TEST_F(SymbolReport, DecorationsThatAreWrittenSoHereToo) {
    for (const char* decoration :
         {"$QEL_ISAv7$IEEE1", "$FCH_ISAv2$QEL_ISAv5$E$P$PE$IEEE1$~STKCKD$REQ8"}) {
        const std::string name = std::string("f$$BuildAttributes$") + decoration;
        EXPECT_EQ(shown(name), testsupport::padded(name, 20));
    }
}

TEST_F(SymbolReport, DecorationsThatAreNot) {
    // Without a meaning; in another order; said twice.
    EXPECT_EQ(shown("f$$BuildAttributes$$NO_SUCH_TOKEN"), shown("f$$BuildAttributes$"));
    EXPECT_EQ(shown("f$$BuildAttributes$$REQ8$QEL_ISAv7"),
              shown("f$$BuildAttributes$$QEL_ISAv7$REQ8"));
    EXPECT_EQ(shown("f$$BuildAttributes$$REQ8$REQ8"), shown("f$$BuildAttributes$$REQ8"));
    EXPECT_NE(shown("f$$BuildAttributes$$REQ8"), shown("f$$BuildAttributes$"));
    EXPECT_TRUE(shown("f$$BuildAttributes$").starts_with("f$$BuildAttributes$"));
}

// Symbols of one decoration mostly stand together, and it is read once for all of them; so what
// stands between must not take it over, nor what follows keep anything of it.
TEST_F(SymbolReport, DecorationsInTurn) {
    m_Library.add("a.o", "aa").add("b.o", "bb");
    m_Library.symbol("f$$BuildAttributes$$QEL_ISAv7$IEEE1", 0)
        .symbol("g$$BuildAttributes$$IEEE1$IEEEF$REQ8", 1)
        .symbol("plain", 0)
        .symbol("h$$BuildAttributes$$QEL_ISAv7$IEEE1", 1)
        .symbol("k$$BuildAttributes$$IEEE1$IEEEF", 0)
        .symbol("l$$BuildAttributes$$IEEE1$IEEEF", 1)
        .symbol("m", 0)
        .symbol("n$$BuildAttributes$$IEEE1$IEEEF", 0)
        .symbol("o$$BuildAttributes$$IEEE1", 1);
    ASSERT_EQ(m_Library.offsetOf(0), 348U);
    ASSERT_EQ(m_Library.offsetOf(1), 410U);
    prints("f$$BuildAttributes$$QEL_ISAv7$IEEE1 from a.o        at offset    348\n"
           "g$$BuildAttributes$$IEEE1$IEEEF$REQ8 from b.o        at offset    410\n"
           "plain                from a.o        at offset    348\n"
           "h$$BuildAttributes$$QEL_ISAv7$IEEE1 from b.o        at offset    410\n"
           "k$$BuildAttributes$$IEEE1$IEEEF from a.o        at offset    348\n"
           "l$$BuildAttributes$$IEEE1$IEEEF from b.o        at offset    410\n"
           "m                    from a.o        at offset    348\n"
           "n$$BuildAttributes$$IEEE1$IEEEF from a.o        at offset    348\n"
           "o$$BuildAttributes$$IEEE1 from b.o        at offset    410\n");
}

// One buffer serves all names, long behind short and short behind long.
TEST_F(SymbolReport, DecoratedNamesOfEveryLength) {
    m_Library.add("a.o", "x");
    const std::string decoration = "$$BuildAttributes$$QEL_ISAv7$IEEE1";
    const size_t lengths[] = {1, 500, 3, 5000, 5001, 2};
    for (const size_t length : lengths) {
        m_Library.symbol(std::string(length, 'n') + decoration, 0);
    }
    m_Library.symbol("plain", 0).symbol(decoration, 0);
    std::string expected;
    for (const size_t length : lengths) {
        expected += symbolLine(std::string(length, 'n') + decoration, "a.o", m_Library.offsetOf(0));
    }
    prints(expected + symbolLine("plain", "a.o", m_Library.offsetOf(0)) +
           symbolLine(decoration, "a.o", m_Library.offsetOf(0)));
}

TEST_F(SymbolReport, ControlCharactersInNames) {
    m_Library.add("a.o", "x").symbol("a\x1B[2Jb", 0).symbol("100%s%n", 0);
    const uint64_t offset = m_Library.offsetOf(0);
    const std::string line = symbolLine("a\x1B[2Jb", "a.o", offset);
    prints("a\\033" + line.substr(2) + symbolLine("100%s%n", "a.o", offset));
}

// --- Hostile tables

TEST_F(SymbolReport, OfBrokenTables) {
    const std::string count = testsupport::bigEndian32(1);
    const std::string place = testsupport::bigEndian32(90);
    for (const std::string& table :
         {std::string("abc"), testsupport::bigEndian32(0xFFFFFFFF), count, count + place,
          count + place + "name",
          testsupport::bigEndian32(2) + place + place + std::string("a\0", 2)}) {
        ArchiveBuilder library;
        library.add("a.o", "x").rawSymbolTable(table);
        folder.write("lib.a", library.bytes());
        const CommandResult result = tomex({"--zs", "lib.a"});
        EXPECT_TRUE(result.exitedWith(1)) << result;
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.error, "");
    }
}

// An entry for what is no member is told of and left out.
TEST_F(SymbolReport, OfEntriesForNothing) {
    ArchiveBuilder library;
    library.add("a.o", "x").symbol("alpha", 0).symbol("beta", 0).symbol("gamma", 0);
    std::string bytes = library.bytes();
    const size_t second = 8 + 60 + 4 + 4;
    bytes.replace(second, 4, testsupport::bigEndian32(1));
    folder.write("lib.a", bytes);
    const CommandResult result = tomex({"--zs", "lib.a"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.output, symbolLine("alpha", "a.o", library.offsetOf(0)) +
                                 symbolLine("gamma", "a.o", library.offsetOf(0)));
    EXPECT_NE(result.error.find("'beta'"), std::string::npos) << result;
}

TEST_F(SymbolReport, ManySymbols) {
    const std::string members[] = {"a.o", "b.o"};
    m_Library.add(members[0], "x").add(members[1], "y");
    constexpr size_t count = 2000;
    for (size_t i = 0; i < count; ++i) {
        m_Library.symbol("symbol_number_" + std::to_string(i), i % 2);
    }
    const uint64_t offsets[] = {m_Library.offsetOf(0), m_Library.offsetOf(1)};
    std::string expected;
    for (size_t i = 0; i < count; ++i) {
        expected +=
            symbolLine("symbol_number_" + std::to_string(i), members[i % 2], offsets[i % 2]);
    }
    prints(expected);
}

} // namespace
} // namespace commandtest
