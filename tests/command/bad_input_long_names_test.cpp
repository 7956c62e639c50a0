// Long names: "/" and the place of the name in the name table. The index must be a number that
// fits its field, lie inside the table and not on the line feed that ends an entry; there must be a
// table; and the table is nothing to rely on either.
#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

using namespace std::string_literals;

// Two names of 22 characters: entries at 0 and 24, ends ("/" and line feed) at 22 and 46.
const std::string firstName = "long_member_name_one.o";
const std::string secondName = "long_member_name_two.o";

class BadInputLongName : public BadInputCase {
protected:
    // One member with that name field behind a table of those contents.
    static std::string bytes(const std::string& field,
                             const std::string& table = firstName + "/\n" + secondName + "/\n") {
        BuiltMember member = {.contents = "abc",
                              .date = 1,
                              .uid = 2,
                              .gid = 3,
                              .mode = 0644,
                              .rawName = padded(field, 16)};
        return ArchiveBuilder().rawNameTable(table).add(member).bytes();
    }
    void named(const std::string& archive, const std::string& name, const Words& flaws = {}) const {
        forgiven(archive, flaws, {name}, {name + " 1 2 3 644 3"});
    }
    static constexpr uint64_t offset = 8 + 60 + 48;
    static std::string invalid(const std::string& text) {
        return headerAt(offset) + " contains invalid long-name index '" + text + "'";
    }
    static std::string outOfRange(const std::string& index, uint64_t tableSize = 48) {
        return headerAt(8 + 60 + tableSize + tableSize % 2) +
               " contains out-of-range long-name index " + index + " (the long-name table is " +
               std::to_string(tableSize) + " bytes long)";
    }
};

// --- the index -----------------------------------------------------------------------------------

TEST_F(BadInputLongName, IndexOfAnEntry) {
    named(bytes("/0"), firstName);
    named(bytes("/24"), secondName);
    named(bytes("/000000000000024"), secondName);
}

TEST_F(BadInputLongName, IndexIntoTheMiddleOfAName) {
    named(bytes("/3"), "g_member_name_one.o");
    named(bytes("/45"), "o");
}

TEST_F(BadInputLongName, IndexOfTheSlashThatEndsAName) {
    named(bytes("/22"), "");
    named(bytes("/46"), "");
}

TEST_F(BadInputLongName, IndexOfTheLineFeedThatEndsAName) {
    named(bytes("/23"), "", {outOfRange("23")});
    named(bytes("/47"), "", {outOfRange("47")});
}

TEST_F(BadInputLongName, IndexBehindTheTable) {
    named(bytes("/48"), "", {outOfRange("48")});
    named(bytes("/49"), "", {outOfRange("49")});
    named(bytes("/4294967295"), "", {outOfRange("4294967295")});
}

struct IndexCase {
    std::string name;
    std::string text; // behind the slash
    std::string printed;
};

void PrintTo(const IndexCase& index, std::ostream* stream) {
    *stream << index.text;
}

class BadIndex : public BadInputLongName, public testing::WithParamInterface<IndexCase> {};

TEST_P(BadIndex, IsAMemberWithoutAName) {
    named(bytes("/" + GetParam().text), "", {invalid(padded(GetParam().printed, 15))});
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BadIndex,
    testing::Values(IndexCase{"TrailingLetter", "1x", "1x"},
                    IndexCase{"LetterInLastPlace", "0             x", "0             x"},
                    IndexCase{"BlankInside", "1 2", "1 2"}, IndexCase{"Slash", "0/", "0/"},
                    IndexCase{"Hexadecimal", "0x0", "0x0"},
                    IndexCase{"WithAnOffset", "24:0", "24:0"},
                    IndexCase{"TooLargeByOne", "4294967296", "4294967296"},
                    IndexCase{"TooLarge", "999999999999999", "999999999999999"}),
    [](const testing::TestParamInfo<IndexCase>& index) { return index.param.name; });

TEST_F(BadInputLongName, IndexWithANulIsShownUpToIt) {
    named(bytes("/0\0"s), "", {invalid("0")});
    named(bytes("/"s + "24" + std::string(13, '\0')), "", {invalid("24")});
}

// --- the table -----------------------------------------------------------------------------------

TEST_F(BadInputLongName, NoTable) {
    const std::string flaw = " contains an index into the long name table, but this archive has no "
                             "long name table";
    ArchiveBuilder builder;
    builder.add({.name = firstName, .contents = "abc"}).add("a.o", "1").withoutNameTable();
    forgiven(builder.bytes(), {headerAt(8) + flaw}, {"", "a.o"},
             {" 0 0 0 100644 3", "a.o 0 0 0 100644 1"});
    // Without a table it doesn't matter what the index is.
    BuiltMember member = {.contents = "abc", .rawName = padded("/1x", 16)};
    forgiven(ArchiveBuilder().add(member).bytes(), {headerAt(8) + flaw}, {""}, {" 0 0 0 100644 3"});
}

TEST_F(BadInputLongName, EmptyTable) {
    BuiltMember member = {.contents = "abc",
                          .date = 1,
                          .uid = 2,
                          .gid = 3,
                          .mode = 0644,
                          .rawName = padded("/0", 16)};
    BuiltMember table = {.rawName = padded("//", 16)};
    named(ArchiveBuilder().add(table).add(member).bytes(), "", {outOfRange("0", 0)});
}

TEST_F(BadInputLongName, TableWithoutAnEndOfTheLastName) {
    // The name goes on to the table's end, and not a byte further: behind it stands a header.
    named(bytes("/0", "no_end_of_this_name.o"), "no_end_of_this_name.o");
    named(bytes("/0", "no_end_of_this_name."), "no_end_of_this_name.");
    named(bytes("/24", firstName + "/\nand_none_here_at_all"), "and_none_here_at_all");
}

TEST_F(BadInputLongName, TableThatEndsInASlash) {
    // The slash alone ends no name; what stands before it is a folder, which is never kept.
    folder.write("lib.a", bytes("/0", "half_an_end_of_the_name/"));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "\n", ""));
}

TEST_F(BadInputLongName, TableOfOneByte) {
    named(bytes("/0", "x"), "x");
    named(bytes("/0", "\n"), "\n");
    named(bytes("/1", "x"), "", {outOfRange("1", 1)});
}

TEST_F(BadInputLongName, EntryThatIsOnlyAnEnd) {
    named(bytes("/0", "/\n"), "");
    named(bytes("/1", "/\n"), "", {outOfRange("1", 2)});
}

TEST_F(BadInputLongName, ShortNameInTheTable) {
    named(bytes("/0", "short.o/\n"), "short.o");
    named(bytes("/9", "short.o/\nx/\n"), "x");
}

TEST_F(BadInputLongName, LineFeedWithoutASlashIsPartOfTheName) {
    named(bytes("/0", "two lines\nof one name.o/\n"), "two lines\nof one name.o");
}

TEST_F(BadInputLongName, NameEndsAtItsFirstNul) {
    named(bytes("/0", "a_name_with_a_nul\0inside.o/\n"s), "a_name_with_a_nul");
    named(bytes("/0", std::string(40, '\0')), "");
    named(bytes("/0", "no_end_but_a_nul.o\0\0\0\0"s), "no_end_but_a_nul.o");
}

TEST_F(BadInputLongName, VeryLongName) {
    const std::string name = std::string(20000, 'n') + ".o";
    named(bytes("/0", name + "/\n"), name);
}

TEST_F(BadInputLongName, ManyMembersMayShareOneName) {
    ArchiveBuilder builder;
    builder.rawNameTable(firstName + "/\n");
    Words names;
    Words summary;
    for (int i = 0; i < 50; ++i) {
        BuiltMember member = {.contents = "abc", .rawName = padded("/0", 16)};
        builder.add(member);
        names.push_back(firstName);
        summary.push_back(firstName + " 0 0 0 100644 3");
    }
    forgiven(builder.bytes(), {}, names, summary);
}

} // namespace
} // namespace commandtest
