// The name field of a header, in all forms but the long name's: a name ended by a slash, the two
// tables, and what is neither.
//
// The table's forms count only where a table can stand: "/" as the first member, "//" as the first
// or second, and once. Elsewhere they are members without a name.
#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

using namespace std::string_literals;

struct NameCase {
    std::string name;
    std::string field; // blanks follow up to 16 characters
    std::string read = {};
};

void PrintTo(const NameCase& name, std::ostream* stream) {
    *stream << testing::PrintToString(name.field);
}

std::string caseName(const testing::TestParamInfo<NameCase>& info) {
    return info.param.name;
}

BuiltMember member(const std::string& field) {
    BuiltMember built = {.contents = "abc",
                         .date = 1,
                         .uid = 2,
                         .gid = 3,
                         .mode = 0644,
                         .rawName = padded(field, 16)};
    return built;
}

// The field in a member that is neither first nor second.
class NameField : public BadInputCase, public testing::WithParamInterface<NameCase> {
protected:
    void read(const Words& flaws) const {
        const Words names = {"first.o", "second.o", GetParam().read, "last.o"};
        const std::string third = GetParam().read + " 1 2 3 644 3";
        forgiven(
            bytes(), flaws, names,
            {"first.o 0 0 0 100644 1", "second.o 0 0 0 100644 1", third, "last.o 0 0 0 100644 1"});
    }
    static std::string bytes() {
        return ArchiveBuilder()
            .add("first.o", "1")
            .add("second.o", "2")
            .add(member(GetParam().field))
            .add("last.o", "4")
            .bytes();
    }
    static constexpr uint64_t offset = 8 + 62 + 62;
};

// --- good names ----------------------------------------------------------------------------------

using GoodName = NameField;

TEST_P(GoodName, IsRead) {
    read({});
}

INSTANTIATE_TEST_SUITE_P(
    Forms, GoodName,
    testing::Values(NameCase{"Plain", "a.o/", "a.o"}, NameCase{"OneCharacter", "a/", "a"},
                    NameCase{"Longest", "fifteen_letters/", "fifteen_letters"},
                    NameCase{"BlankInside", "a b.o/", "a b.o"},
                    NameCase{"LeadingBlank", " a.o/", " a.o"},
                    NameCase{"TrailingBlank", "a.o /", "a.o "}, NameCase{"OnlyBlank", " /", " "},
                    NameCase{"Digits", "123/", "123"}, NameCase{"Dot", "./", "."},
                    NameCase{"SymbolTableElsewhere", "/", ""},
                    NameCase{"NameTableElsewhere", "//", ""}),
    caseName);

// --- names without a slash -----------------------------------------------------------------------

using NoSlash = NameField;

TEST_P(NoSlash, IsAMemberWithoutAName) {
    read({headerAt(offset) + " has no '/' character in its name field"});
}

INSTANTIATE_TEST_SUITE_P(Forms, NoSlash,
                         testing::Values(NameCase{"Plain", "a.o"}, NameCase{"Blank", ""},
                                         NameCase{"Longest", "sixteen_letters_"},
                                         NameCase{"Backslash", "a.o\\"},
                                         NameCase{"AllNul", std::string(16, '\0')},
                                         NameCase{"SortedSymbols", "__.SYMDEF SORTED"}),
                         caseName);

// --- something behind the slash ------------------------------------------------------------------

using TrailingName = NameField;

TEST_P(TrailingName, IsAMemberWithoutAName) {
    read({headerAt(offset) +
          " has a trailing non-space character after the '/' character in its name field"});
}

INSTANTIATE_TEST_SUITE_P(
    Forms, TrailingName,
    testing::Values(NameCase{"Letter", "a.o/x"}, NameCase{"LetterInLastPlace", "a.o/           x"},
                    NameCase{"TwoSlashes", "a.o//"}, NameCase{"Folder", "a/b/"},
                    NameCase{"Nul", "a.o/\0"s}, NameCase{"Tab", "a.o/\t"},
                    NameCase{"SlashAndLetter", "/x"}, NameCase{"SlashAndMinus", "/-1"},
                    NameCase{"SlashAndBlank", "/ 0"}, NameCase{"ThreeSlashes", "///"},
                    NameCase{"NameTableAndMore", "//             x"},
                    NameCase{"LargeSymbolTable", "/SYM64/"},
                    NameCase{"NameBeforeContents", "#1/20"}),
    caseName);

// --- where the tables can stand ------------------------------------------------------------------

class BadInputTablePlace : public BadInputCase {
protected:
    const std::string longName = "a_rather_long_name.o";
    const std::string table = longName + "/\n";

    static BuiltMember table2(const std::string& field, const std::string& contents) {
        BuiltMember built = {.contents = contents, .rawName = padded(field, 16)};
        return built;
    }
    BuiltMember nameTable() const { return table2("//", table); }
    static BuiltMember symbolTable() { return table2("/", std::string(4, '\0')); }
    static BuiltMember longNamed() { return member("/0"); }
    static std::string noTable(uint64_t offset) {
        return headerAt(offset) + " contains an index into the long name table, but this archive "
                                  "has no long name table";
    }
};

TEST_F(BadInputTablePlace, NameTableFirst) {
    forgiven(ArchiveBuilder().add(nameTable()).add(longNamed()).bytes(), {}, {longName},
             {longName + " 1 2 3 644 3"});
}

TEST_F(BadInputTablePlace, NameTableBehindAPlainMember) {
    forgiven(ArchiveBuilder().add("a.o", "1").add(nameTable()).add(longNamed()).bytes(), {},
             {"a.o", longName}, {"a.o 0 0 0 100644 1", longName + " 1 2 3 644 3"});
}

TEST_F(BadInputTablePlace, NameTableThirdIsAMember) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").add("b.o", "2").add(nameTable()).add(longNamed());
    const ParsedArchive written =
        forgiven(builder.bytes(), {noTable(builder.offsetOf(3))}, {"a.o", "b.o", "", ""},
                 {"a.o 0 0 0 100644 1", "b.o 0 0 0 100644 1", " 0 0 0 100644 22", " 1 2 3 644 3"});
    ASSERT_EQ(written.members.size(), 6U);
    EXPECT_EQ(written.members[3].contents, table);
}

TEST_F(BadInputTablePlace, NameTableBehindBothTablesIsAMember) {
    ArchiveBuilder builder;
    builder.add(symbolTable()).add(nameTable()).add(table2("//", "other/\n")).add(longNamed());
    forgiven(builder.bytes(), {}, {"", longName}, {" 0 0 0 100644 7", longName + " 1 2 3 644 3"});
}

TEST_F(BadInputTablePlace, SecondNameTableInSecondPlaceIsAMember) {
    ArchiveBuilder builder;
    builder.add(nameTable()).add(table2("//", "other/\n")).add(longNamed());
    forgiven(builder.bytes(), {}, {"", longName}, {" 0 0 0 100644 7", longName + " 1 2 3 644 3"});
}

TEST_F(BadInputTablePlace, LongNameBeforeTheTableHasNone) {
    ArchiveBuilder builder;
    builder.add(longNamed()).add(nameTable()).add(longNamed());
    forgiven(builder.bytes(), {noTable(8)}, {"", longName},
             {" 1 2 3 644 3", longName + " 1 2 3 644 3"});
}

TEST_F(BadInputTablePlace, SymbolTableSecondIsAMember) {
    const std::string wrong = "no symbol table at all";
    ArchiveBuilder builder;
    builder.add(nameTable()).add(table2("/", wrong)).add(longNamed());
    const ParsedArchive written = forgiven(builder.bytes(), {}, {"", longName},
                                           {" 0 0 0 100644 22", longName + " 1 2 3 644 3"});
    ASSERT_EQ(written.members.size(), 5U);
    EXPECT_EQ(written.members[2].contents, wrong);
}

TEST_F(BadInputTablePlace, SecondSymbolTableIsAMember) {
    ArchiveBuilder builder;
    builder.add(symbolTable()).add(symbolTable()).add(nameTable()).add("a.o", "1");
    forgiven(builder.bytes(), {}, {"", "", "a.o"},
             {" 0 0 0 100644 4", " 0 0 0 100644 22", "a.o 0 0 0 100644 1"});
}

TEST_F(BadInputTablePlace, TablesAreNotListedPrintedOrExtracted) {
    ArchiveBuilder builder;
    builder.add(symbolTable()).add(nameTable());
    folder.write("lib.a", builder.bytes());
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "*"}), 1, "", notPresent("Error", "*")));
    EXPECT_EQ(folder.entries(), Words{"lib.a"});
}

TEST_F(BadInputTablePlace, NameEndsAtItsFirstNul) {
    folder.write("lib.a", ArchiveBuilder().add(member("a\0b.o/"s)).add("c.o", "1").bytes());
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "a\nc.o\n", ""));
}

} // namespace
} // namespace commandtest
