// The table of contents: names, or with -v a line of columns, of all members or of those that the
// words on the command line choose.
//
// A word is a pattern for the last part of a path: `*` and `?` are special, case doesn't matter,
// and folders in front of it are ignored. Each word gives all its members, in the archive's order.
#include "tests/command/real_input_case.h"

namespace commandtest {
namespace {

class Listing : public CommandCase {
protected:
    void archiveOf(const Words& members) const {
        ArchiveBuilder builder;
        for (const std::string& member : members) {
            builder.add(made(member));
        }
        folder.write("lib.a", builder.bytes());
    }
    void lists(const Words& words, const std::string& output) const {
        Words arguments = {"-t", "lib.a"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        EXPECT_TRUE(ended(tomex(arguments), 0, output, ""));
    }
    void listsNothing(const std::string& word) const {
        EXPECT_TRUE(ended(tomex({"-t", "lib.a", word}), 1, "", notPresent("Error", word)));
    }
    // The only member's line.
    std::string details(const BuiltMember& member, const std::string& zone = "UTC") const {
        folder.write("lib.a", ArchiveBuilder().add(member).bytes());
        Command command = testsupport::tomex(folder, {"-tv", "lib.a"});
        command.environment["TZ"] = zone;
        const CommandResult result = testsupport::run(command);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        EXPECT_EQ(result.error, "");
        return result.output;
    }
    std::string timeOf(uint64_t date, const std::string& zone = "UTC") const {
        const std::string line = details({.name = "a.o", .date = date}, zone);
        const std::string before = "rw-r--r--     0/     0      0 ";
        const std::string behind = " a.o (offset      8)\n";
        EXPECT_TRUE(line.starts_with(before) && line.ends_with(behind)) << line;
        return line.substr(before.size(), line.size() - before.size() - behind.size());
    }
};

// --- all members ---------------------------------------------------------------------------------

TEST_F(Listing, NamesInTheArchivesOrder) {
    archiveOf({"z.o", "a.o", "a_long_name_of_a_member.o", "M.o"});
    lists({}, "z.o\na.o\na_long_name_of_a_member.o\nM.o\n");
}

TEST_F(Listing, EqualNamesAllAppear) {
    archiveOf({"a.o", "b.o", "a.o", "A.O", "a.o"});
    lists({}, "a.o\nb.o\na.o\nA.O\na.o\n");
}

TEST_F(Listing, Columns) {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = "abc", .date = 951827696, .uid = 1000, .gid = 50})
        .add({.name = "a_long_name_of_a_member.o", .contents = "12", .date = 0, .mode = 0100755});
    folder.write("lib.a", builder.bytes());
    const std::string expected =
        "rw-r--r--  1000/    50      3 Feb 29 12:34 2000 a.o (offset     96)\n"
        "rwxr-xr-x     0/     0      2 Jan 01 00:00 1970 a_long_name_of_a_member.o (offset    "
        "160)\n";
    for (const Words& words : std::vector<Words>{{"-tv", "lib.a"},
                                                 {"-vt", "lib.a"},
                                                 {"-t", "-v", "lib.a"},
                                                 {"-v", "lib.a", "-t"},
                                                 {"-tv", "lib.a", "*"}}) {
        EXPECT_TRUE(ended(tomex(words), 0, expected, ""));
    }
}

TEST_F(Listing, SymbolTableAndNamesAreNotListed) {
    folder.write("lib.a",
                 ArchiveBuilder().withSymbolTable().add("a_long_name_of_a_member.o", "").bytes());
    lists({}, "a_long_name_of_a_member.o\n");
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a"}), 0,
                      "rw-r--r--     0/     0      0 Jan 01 00:00 1970 a_long_name_of_a_member.o "
                      "(offset    160)\n",
                      ""));
}

TEST_F(Listing, EachBitOfTheMode) {
    const std::string all = "rwxrwxrwx";
    for (unsigned bit = 0; bit < 9; ++bit) {
        std::string expected = "---------";
        expected[8 - bit] = all[8 - bit];
        EXPECT_EQ(details({.name = "a.o", .mode = 1ULL << bit}).substr(0, 9), expected) << bit;
        std::string without = all;
        without[8 - bit] = '-';
        EXPECT_EQ(details({.name = "a.o", .mode = 0777U & ~(1ULL << bit)}).substr(0, 9), without);
    }
}

TEST_F(Listing, OtherBitsOfTheModeAreNotShown) {
    EXPECT_EQ(details({.name = "a.o", .mode = 0}).substr(0, 10), "---------"
                                                                 " ");
    EXPECT_EQ(details({.name = "a.o", .mode = 077777000}).substr(0, 10), "---------"
                                                                         " ");
    EXPECT_EQ(details({.name = "a.o", .mode = 0104644}).substr(0, 10), "rw-r--r--"
                                                                       " ");
    EXPECT_EQ(details({.name = "a.o", .mode = 0777777}).substr(0, 10), "rwxrwxrwx"
                                                                       " ");
}

TEST_F(Listing, NumbersThatFillTheirColumns) {
    EXPECT_EQ(details({.name = "a.o", .uid = 999999, .gid = 999999}),
              "rw-r--r--999999/999999      0 Jan 01 00:00 1970 a.o (offset      8)\n");
    EXPECT_EQ(details({.name = "a.o", .uid = 1, .gid = 123456}),
              "rw-r--r--     1/123456      0 Jan 01 00:00 1970 a.o (offset      8)\n");
}

TEST_F(Listing, NumbersThatAreWiderThanTheirColumns) {
    const std::string head = std::string{testsupport::archiveMagic} +
                             testsupport::headerText("large.o/", 0, 65534, 999999, 0644, 12345678);
    folder.writeSparse("lib.a", 68 + 12345678, head);
    const std::string large =
        "rw-r--r-- 65534/99999912345678 Jan 01 00:00 1970 large.o (offset      8)\n";
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a"}), 0, large, ""));
    folder.write("small.a", ArchiveBuilder().add("small.o", "1").bytes());
    EXPECT_TRUE(tomex({"-r", "lib.a", "small.a"}).exitedWith(0));
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a", "small.o"}), 0,
                      "rw-r--r--     0/     0      1 Jan 01 00:00 1970 small.o (offset 12345810)\n",
                      ""));
}

// --- time ----------------------------------------------------------------------------------------

TEST_F(Listing, EveryMonth) {
    const Words months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (size_t month = 0; month < months.size(); ++month) {
        // The 15th, or close to it, at noon, in a year of 365 days.
        const uint64_t date = (month * 30 + month * 5 / 11 + 15) * 86400 + 43200;
        EXPECT_EQ(timeOf(date), timeText(date));
        EXPECT_EQ(timeOf(date).substr(0, 3), months[month]);
    }
}

TEST_F(Listing, EdgesOfTime) {
    EXPECT_EQ(timeOf(0), "Jan 01 00:00 1970");
    EXPECT_EQ(timeOf(59), "Jan 01 00:00 1970");
    EXPECT_EQ(timeOf(60), "Jan 01 00:01 1970");
    EXPECT_EQ(timeOf(86399), "Jan 01 23:59 1970");
    EXPECT_EQ(timeOf(946684799), "Dec 31 23:59 1999");
    EXPECT_EQ(timeOf(951782400), "Feb 29 00:00 2000");
    EXPECT_EQ(timeOf(2147483647), "Jan 19 03:14 2038");
    EXPECT_EQ(timeOf(2147483648), "Jan 19 03:14 2038");
    EXPECT_EQ(timeOf(4294967295), "Feb 07 06:28 2106");
}

TEST_F(Listing, TimeIsLocal) {
    EXPECT_EQ(timeOf(0, "EST5"), "Dec 31 19:00 1969");
    EXPECT_EQ(timeOf(0, "<+0530>-5:30"), "Jan 01 05:30 1970");
    EXPECT_EQ(timeOf(946684799, "<+14>-14"), "Jan 01 13:59 2000");
    // Half a year in one time, half in the other.
    EXPECT_EQ(timeOf(1484481600, "CET-1CEST,M3.5.0,M10.5.0/3"), "Jan 15 13:00 2017");
    EXPECT_EQ(timeOf(1500120000, "CET-1CEST,M3.5.0,M10.5.0/3"), "Jul 15 14:00 2017");
}

// --- words ---------------------------------------------------------------------------------------

TEST_F(Listing, WordsGiveTheirMembersInTheWordsOrder) {
    archiveOf({"a.o", "b.o", "c.o", "a.o"});
    lists({"c.o", "a.o"}, "c.o\na.o\na.o\n");
    lists({"b.o", "b.o"}, "b.o\nb.o\n");
    lists({"?.o", "b*"}, "a.o\nb.o\nc.o\na.o\nb.o\n");
}

TEST_F(Listing, Stars) {
    archiveOf({"a.o", "ab.o", "abc", "b.oo"});
    lists({"*"}, "a.o\nab.o\nabc\nb.oo\n");
    lists({"***"}, "a.o\nab.o\nabc\nb.oo\n");
    lists({"a*"}, "a.o\nab.o\nabc\n");
    lists({"*.o"}, "a.o\nab.o\n");
    lists({"*.o*"}, "a.o\nab.o\nb.oo\n");
    lists({"**a***b**"}, "ab.o\nabc\n");
    lists({"a*.o"}, "a.o\nab.o\n");
    lists({"a.o*"}, "a.o\n");
    lists({"*a.o"}, "a.o\n");
    listsNothing("*c.o");
    listsNothing("*.o?*?");
}

TEST_F(Listing, QuestionMarks) {
    archiveOf({"a.o", "ab.o", "abc.o"});
    lists({"?.o"}, "a.o\n");
    lists({"a??o"}, "ab.o\n");
    lists({"?????"}, "abc.o\n");
    lists({"*??.o"}, "ab.o\nabc.o\n");
    lists({"?*?.o"}, "ab.o\nabc.o\n");
    listsNothing("a.o?");
    listsNothing("?a.o");
    listsNothing("??????");
}

TEST_F(Listing, CaseDoesNotMatter) {
    archiveOf({"mixed.O", "MIXED.o", "other.o"});
    lists({"mixed.o"}, "mixed.O\nMIXED.o\n");
    lists({"MIXED.O"}, "mixed.O\nMIXED.o\n");
    lists({"m*D.?"}, "mixed.O\nMIXED.o\n");
}

TEST_F(Listing, OnlyLettersHaveCase) {
    archiveOf({"[.o", "@.o", "^.o"});
    lists({"[.o"}, "[.o\n");
    listsNothing("{.o");
    listsNothing("`.o");
    listsNothing("~.o");
}

TEST_F(Listing, OtherCharactersAreNotSpecial) {
    archiveOf({"a.o", "b.o", "[ab].o", "*.o", "a,b.o"});
    lists({"[ab].o"}, "[ab].o\n");
    lists({"a,b.o"}, "a,b.o\n");
    lists({"?.o"}, "a.o\nb.o\n*.o\n");
    listsNothing("{a,b}.o");
}

TEST_F(Listing, FoldersInWordsAreIgnored) {
    archiveOf({"x.o", "y.o"});
    for (const char* word : {"dir/x.o", "/x.o", "./x.o", "../../x.o", "no/such/folder/X.O", "//x.o",
                             "*/x.o", "y.o/x.o", "dir/x.?"}) {
        lists({word}, "x.o\n");
    }
    listsNothing("dir/z.o");
    listsNothing("x.o/");
    listsNothing("dir/");
    listsNothing("/");
    listsNothing("dir\\x.o");
}

TEST_F(Listing, EmptyWordIsOfMembersWithoutAName) {
    archiveOf({"x.o", "y.o"});
    listsNothing("");
    archiveOf({"x.o", "", "y.o", ""});
    lists({""}, "\n\n");
    lists({"dir/"}, "\n\n");
    lists({"*"}, "x.o\n\ny.o\n\n");
    lists({"?*"}, "x.o\ny.o\n");
}

TEST_F(Listing, DotsBelongToTheName) {
    archiveOf({".o", "a.b.o", "a", "a."});
    lists({".o"}, ".o\n");
    lists({"a.b.o"}, "a.b.o\n");
    lists({"a"}, "a\n");
    lists({"a."}, "a.\n");
    lists({"*.o"}, ".o\na.b.o\n");
    lists({"*."}, "a.\n");
}

TEST_F(Listing, WordsAreNotExpandedFromTheFolder) {
    archiveOf({"a.o", "b.o"});
    file("c.o", "c");
    lists({"*.o"}, "a.o\nb.o\n");
    listsNothing("c.?");
}

TEST_F(Listing, WordsThatMatchNothing) {
    archiveOf({"a.o"});
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "x.o", "a.o", "dir/y.*"}), 1, "a.o\n",
                      notPresent("Error", "x.o") + notPresent("Error", "dir/y.*")));
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a", "x.o"}), 1, "", notPresent("Error", "x.o")));
}

TEST_F(Listing, AfterFiftyWordsThatMatchNothingTheRunEnds) {
    archiveOf({"a.o"});
    Words words = {"-t", "lib.a"};
    std::string errors;
    for (int i = 0; i < 60; ++i) {
        words.push_back("x" + std::to_string(i));
        errors += i < 50 ? notPresent("Error", words.back()) : "";
    }
    words.push_back("a.o");
    EXPECT_TRUE(ended(tomex(words), 1, "", errors));
}

// --- names that are too long to compare whole ----------------------------------------------------

// Of a name and of a word the first 1029 bytes count: required for the scripts that have grown
// around it.
TEST_F(Listing, NamesAreComparedUpToALimit) {
    const std::string limit(1029, 'n');
    archiveOf({limit, limit + "x", limit + "yy", std::string(1028, 'n')});
    const std::string three = limit + "\n" + limit + "x\n" + limit + "yy\n";
    lists({limit}, three);
    lists({limit + "z"}, three);
    lists({"folder/" + limit + "z"}, three);
    lists({std::string(1028, 'N') + "?"}, three);
    lists({std::string(1028, 'n')}, std::string(1028, 'n') + "\n");
    lists({std::string(1029, '?')}, three);
    lists({"*n"}, three + std::string(1028, 'n') + "\n");
    listsNothing("*x");
    listsNothing(std::string(1027, 'n'));
}

TEST_F(Listing, LastByteWithinTheLimitCounts) {
    const std::string start(1028, 'n');
    archiveOf({start + "a", start + "b"});
    lists({start + "a"}, start + "a\n");
    lists({"*b"}, start + "b\n");
    lists({start + "bcd"}, start + "b\n");
    listsNothing(start + "c");
}

TEST_F(Listing, VeryLongNamesArePrintedWhole) {
    const std::string name(30000, 'n');
    archiveOf({name, "a.o"});
    lists({}, name + "\na.o\n");
}

// Trying every way to spread many stars over a long name would last forever.
TEST_F(Listing, ManyStarsEndInTime) {
    archiveOf({std::string(1000, 'a')});
    std::string word;
    for (int i = 0; i < 30; ++i) {
        word += "*a";
    }
    lists({word}, std::string(1000, 'a') + "\n");
    listsNothing(word + "*b");
}

// --- characters beyond ASCII ---------------------------------------------------------------------

TEST_F(Listing, CharactersGoOutInTheUsersCharacterSet) {
    archiveOf({"\xc3\xa4\xe2\x82\xac.o"});
    for (const auto& [locale, printed] : std::vector<std::pair<std::string, std::string>>{
             {"C.UTF-8", "\xc3\xa4\xe2\x82\xac.o\n"}, {"C", "??.o\n"}}) {
        Command command = testsupport::tomex(folder, {"-t", "lib.a"});
        command.environment["LC_ALL"] = locale;
        EXPECT_TRUE(ended(testsupport::run(command), 0, printed, "")) << locale;
    }
}

} // namespace
} // namespace commandtest
