// The two tables in front of the members: when they are made, dropped and made anew, and what they
// hold. Members that are no objects define no names, so the symbol table holds its count alone.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

const std::string fifteen = "fifteen-chars.o"; // the longest name that fits a header
const std::string sixteen = "sixteen--chars.o";

class SymbolTable : public CommandCase {
protected:
    void SetUp() override {
        ASSERT_EQ(fifteen.size(), 15U);
        ASSERT_EQ(sixteen.size(), 16U);
    }
};

TEST_F(SymbolTable, NameOfFifteenCharactersStandsInTheHeader) {
    file(fifteen, "x");
    EXPECT_EQ(tomex({"-r", "lib.a", fifteen}).status, 0);
    EXPECT_EQ(archive().members.at(1).header.substr(0, 16), fifteen + "/");
    EXPECT_EQ(archive().table("//"), nullptr);
}

TEST_F(SymbolTable, NameOfSixteenCharactersStandsInTheTable) {
    file(sixteen, "x");
    EXPECT_EQ(tomex({"-r", "lib.a", sixteen}).status, 0);
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "// 0 0 0 0 18", added(sixteen, 1000, 1)}));
    EXPECT_EQ(archive().table("//")->contents, sixteen + "/\n");
    EXPECT_EQ(archive().members.at(2).header.substr(0, 16), testsupport::padded("/0", 16));
}

TEST_F(SymbolTable, LongNamesStandInTheOrderOfTheMembers) {
    for (const std::string& name :
         Words{sixteen, "short", "seventeen-chars.o", std::string(200, 'n')}) {
        file(name, "x");
    }
    EXPECT_EQ(
        tomex({"-r", "lib.a", "seventeen-chars.o", "short", std::string(200, 'n'), sixteen}).status,
        0);
    const ParsedArchive parsed = archive();
    EXPECT_EQ(parsed.table("//")->contents,
              "seventeen-chars.o/\n" + std::string(200, 'n') + "/\n" + sixteen + "/\n");
    EXPECT_EQ(parsed.members.at(2).header.substr(0, 3), "/0 ");
    EXPECT_EQ(parsed.members.at(4).header.substr(0, 4), "/19 ");
    EXPECT_EQ(parsed.members.at(5).header.substr(0, 5), "/221 ");
}

TEST_F(SymbolTable, OddTableIsPaddedLikeAnyMember) {
    file("seventeen-chars.o", "x");
    EXPECT_EQ(tomex({"-r", "lib.a", "seventeen-chars.o"}).status, 0);
    const ParsedArchive parsed = archive();
    EXPECT_EQ(parsed.table("//")->size, 19U);
    EXPECT_EQ(parsed.members.at(2).headerOffset, 8U + 64 + 60 + 20);
}

TEST_F(SymbolTable, HeadersOfTheTablesHoldZerosNotBlanks) {
    file(sixteen, "x");
    EXPECT_EQ(tomex({"-r", "lib.a", sixteen}).status, 0);
    EXPECT_EQ(archive().table("/")->header, testsupport::headerText("/", 0, 0, 0, 0, 4));
    EXPECT_EQ(archive().table("//")->header, testsupport::headerText("//", 0, 0, 0, 0, 18));
}

TEST_F(SymbolTable, TablesReadWithOtherHeadersAreWrittenWithZeros) {
    ArchiveBuilder builder;
    builder.add(made(sixteen)).withSymbolTable();
    builder.symbolTableHeader() = {.date = 5, .uid = 6, .gid = 7, .mode = 0777};
    builder.nameTableHeader().rawDate = testsupport::padded("", 12);
    builder.nameTableHeader().rawMode = testsupport::padded("", 8);
    folder.write("lib.a", builder.bytes());
    EXPECT_EQ(tomex({"-s", "lib.a"}).status, 0);
    EXPECT_EQ(archive().table("/")->header, testsupport::headerText("/", 0, 0, 0, 0, 4));
    // Nothing has touched the names, so their table stays as it was read: blank fields are zeros.
    EXPECT_EQ(archive().table("//")->header, testsupport::headerText("//", 0, 0, 0, 0, 18));
}

TEST_F(SymbolTable, EveryWritingRunMakesIt) {
    for (const Words& words : std::vector<Words>{
             {"-d", "lib.a", "b.o"}, {"-m", "lib.a", "a.o"}, {"-r", "lib.a"}, {"-s", "lib.a"}}) {
        folder.write("lib.a", ArchiveBuilder().add(made("a.o")).add(made("b.o")).bytes());
        EXPECT_EQ(tomex(words).status, 0);
        ASSERT_NE(archive().table("/"), nullptr);
        EXPECT_EQ(archive().table("/")->contents, std::string(4, '\0'));
    }
}

TEST_F(SymbolTable, OptionLeavesItOutAndKeepsTheNames) {
    library("lib.a", {"a.o", sixteen});
    EXPECT_TRUE(ended(tomex({"-r", "-n", "lib.a"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), (Words{"// 0 0 0 0 18", kept("a.o"), kept(sixteen)}));
    for (const Words& words : std::vector<Words>{{"-s", "-n", "lib.a"}, {"-n", "-s", "lib.a"}}) {
        library("lib.a", {"a.o"});
        EXPECT_TRUE(ended(tomex(words), 0, "", ""));
        EXPECT_EQ(archive().summary(), Words{kept("a.o")});
    }
}

TEST_F(SymbolTable, TableOfObjectsMadeElsewhereIsRead) {
    folder.write("lib.a", ArchiveBuilder()
                              .add(made("a.o"))
                              .add(made(sixteen))
                              .symbol("main", 0)
                              .symbol("helper", 1)
                              .symbol("main", 1)
                              .bytes());
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "a.o\n" + sixteen + "\n", ""));
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(SymbolTable, TableOfObjectsMadeElsewhereIsMadeAnew) {
    folder.write("lib.a", ArchiveBuilder()
                              .add(made("a.o"))
                              .add(made(sixteen))
                              .symbol("main", 0)
                              .symbol("helper", 1)
                              .bytes());
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", "a.o"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), "// 0 0 0 0 18", kept(sixteen)}));
}

TEST_F(SymbolTable, TableWithZerosBehindItsNamesIsRead) {
    ArchiveBuilder builder;
    builder.add(made("a.o")).symbol("main", 0);
    const std::string table = builder.symbolTableContents() + std::string(5, '\0');
    folder.write("lib.a", ArchiveBuilder().add(made("a.o")).rawSymbolTable(table).bytes());
    // The table grows by five bytes and a padding byte, so its own offsets are off; none is used.
    const CommandResult result = tomex({"-t", "lib.a"});
    EXPECT_EQ(result.output, "a.o\n") << result;
    EXPECT_EQ(result.error.find("unexpected data"), std::string::npos) << result;
}

TEST_F(SymbolTable, NameTableFollowsReplacedAndMovedMembers) {
    library("lib.a", {sixteen, "another-long-name.o"});
    file(sixteen, "new");
    file("one-more-long-name.o", "more");
    EXPECT_EQ(tomex({"-r", "-b", "another*", "lib.a", sixteen, "one-more-long-name.o"}).status, 0);
    EXPECT_EQ(archive().table("//")->contents,
              sixteen + "/\none-more-long-name.o/\nanother-long-name.o/\n");
    EXPECT_EQ(contents("another-long-name.o"), "another-long-name.o.");
}

TEST_F(SymbolTable, TablesThatStandBehindEachOtherAreReadInEitherOrder) {
    const std::string names = sixteen + "/\n";
    const std::string symbols(4, '\0');
    const std::string member = testsupport::headerText("/0", 500, 7, 8, 0600, 17) + sixteen + ".\n";
    // The symbol table counts only in front; behind the names it is a member without a name.
    folder.write("lib.a", "!<arch>\n" + testsupport::headerText("//", 0, 0, 0, 0, 18) + names +
                              testsupport::headerText("/", 0, 0, 0, 0, 4) + symbols + member);
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "\n" + sixteen + "\n", ""));
    EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "", ""));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), "// 0 0 0 0 18", " 0 0 0 0 4", kept(sixteen)}));
}

TEST_F(SymbolTable, RunThatChangesNothingGivesTheSameBytes) {
    library("lib.a", {"a.o", sixteen, "b.o"});
    EXPECT_EQ(tomex({"-s", "lib.a"}).status, 0);
    const std::string before = folder.read("lib.a");
    for (const Words& words : std::vector<Words>{{"-s", "lib.a"},
                                                 {"-d", "lib.a"},
                                                 {"-m", "lib.a"},
                                                 {"-r", "lib.a"},
                                                 {"-ts", "lib.a"}}) {
        EXPECT_EQ(tomex(words).status, 0);
        EXPECT_EQ(folder.read("lib.a"), before);
    }
}

} // namespace
} // namespace commandtest
