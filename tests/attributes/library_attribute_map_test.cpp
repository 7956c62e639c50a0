// The library attribute map: its rows and where they come from, patterns, and what a name gives.
#include "attributes/interface/library_attribute_map.h"

#include <string>
#include <vector>

#include "tests/attributes/decoration_text.h"
#include "tests/attributes/record_fixtures.h"
#include "tests/support/scratch_folder.h"

namespace attributes::test {
namespace {

class LibraryMap : public RecordTest {
protected:
    using Rows = std::vector<std::string>;
    // "pattern decoration alias", with the decoration as it is printed.
    static Rows rowsOf(const LibraryAttributeMap& map) {
        Rows rows;
        for (uint32_t i = 0; i < map.getCount(); ++i) {
            const LibraryAttributeRow& row = map.getRow(i);
            rows.push_back(std::string(row.pattern) + " " + printed(row.attributes) + " " +
                           (row.alias != nullptr ? row.alias : "-"));
        }
        return rows;
    }
    Rows rowsOfLine(std::string line) {
        LibraryAttributeMap map(region());
        parseMapRow(map, line.data());
        return rowsOf(map);
    }
    Rows rowsOfFile(const std::string& text) {
        folder.write("map", text);
        LibraryAttributeMap map(region());
        loadLibraryAttributeMap(map, folder.pathOf("map").c_str());
        return rowsOf(map);
    }
    Rows rowsOfName(const std::string& name) {
        LibraryAttributeMap map(region());
        loadLibraryAttributeMap(map, name.c_str());
        return rowsOf(map);
    }
    // What the built-in rows give a library of that name.
    FullAttr builtIn(const char* name) {
        LibraryAttributeMap map(region());
        addBuiltInRows(map);
        FullAttr result;
        attributesForName(map, name, result);
        return result;
    }

    testsupport::ScratchFolder folder;
};

const std::vector<std::string> builtInRows = {
    "*_a* $QEL_ISAv4$IEEE1 -",
    "*_t* $QEL_ISAv4$S$FCH_ISAv1$IEEE1 -",
    "*_w* $IEEE1 -",
    "*_?f* $FLAv3$ME$IEEE1 -",
    "*_?v* $ZLTv1$PE$IEEE1 -",
    "*_??p* $PE$IEEE1 -",
    "*_??m* $ME$IEEE1 -",
    "*_???s* $IEEE1$STKCKD -",
    "*_???u* $IEEE1$~STKCKD -",
    "*_????e* $IEEE1$RWPI -",
    "*_????n* $IEEE1$~SHL -",
    "g_* $IEEE1$IEEEX fz",
    "f_* $IEEE1$IEEEF fz",
    "fj_* $IEEE1$IEEEJ fz",
};

TEST_F(LibraryMap, BuiltInRows) {
    LibraryAttributeMap map(region());
    addBuiltInRows(map);
    ASSERT_EQ(map.getCount(), BuiltInRowCount);
    Rows expected = builtInRows;
    // The second token holds several features, which print in the order of the table.
    expected[1] = "*_t* " + printed(parsed("$IEEE1$FINCH_ISAv1")) + " -";
    EXPECT_EQ(rowsOf(map), expected);
    EXPECT_EQ(map.getRow(1).attributes.isa, (IsaSet{0x200043, 0}));
    EXPECT_EQ(map.getRow(2).attributes, parsed("$IEEE1"));
}

TEST_F(LibraryMap, LineIsUpToThreeFields) {
    EXPECT_EQ(rowsOfLine("lib* $E$IEEE1"), Rows{"lib* $E$IEEE1 -"});
    EXPECT_EQ(rowsOfLine("lib* $E$IEEE1 other"), Rows{"lib* $E$IEEE1 other"});
    EXPECT_EQ(rowsOfLine("lib*\t \v\f$E$IEEE1\r\t other  ignored too\n"),
              Rows{"lib* $E$IEEE1 other"});
    EXPECT_EQ(rowsOfLine("lib* $E$IEEE1 \n"), Rows{"lib* $E$IEEE1 -"});
    EXPECT_EQ(rowsOfLine("lib* $E$IEEE1\r\n"), Rows{"lib* $E$IEEE1 -"});
    EXPECT_EQ(rowsOfLine("lib*#x $E #alias"), Rows{"lib*#x $E$IEEE1$IEEEF #alias"});
}

TEST_F(LibraryMap, CommentsAndIncompleteLinesAreNothing) {
    for (const char* line : {"", "\n", "#", "# lib* $E", "#lib* $E", " lib* $E", "\tlib* $E",
                             "lib*", "lib*\n", "lib*  \n", "\r\n", "  \n"}) {
        EXPECT_EQ(rowsOfLine(line), Rows()) << line;
    }
}

TEST_F(LibraryMap, BadDecorationsGiveWhatTheyCan) {
    EXPECT_EQ(rowsOfLine("a E"), Rows{"a $IEEE1$IEEEF -"});
    EXPECT_EQ(rowsOfLine("a $NOTHING$E"), Rows{"a $E$IEEE1$IEEEF -"});
    EXPECT_EQ(rowsOfLine("a $$$"), Rows{"a $IEEE1$IEEEF -"});
}

TEST_F(LibraryMap, GrowsByBlocks) {
    LibraryAttributeMap map(region());
    EXPECT_EQ(map.getCount(), 0U);
    EXPECT_EQ(map.getCapacity(), 0U);
    for (uint32_t i = 0; i < 100; ++i) {
        map.addRow(("p" + std::to_string(i)).c_str(), parsed("$E"), nullptr);
        EXPECT_EQ(map.getCount(), i + 1);
        EXPECT_EQ(map.getCapacity(), (i / 32 + 1) * 32);
    }
    for (uint32_t i = 0; i < 100; ++i) {
        EXPECT_EQ(map.getRow(i).pattern, "p" + std::to_string(i));
    }
}

TEST_F(LibraryMap, TextsAreCopies) {
    LibraryAttributeMap map(region());
    std::string line = "lib* $E alias";
    parseMapRow(map, line.data());
    line.assign(line.size(), 'x');
    EXPECT_EQ(rowsOf(map), Rows{"lib* $E$IEEE1$IEEEF alias"});
}

TEST_F(LibraryMap, FileIsReadLineByLine) {
    EXPECT_EQ(rowsOfFile("# the map\nb* $E$IEEE1\n\na* $P$IEEE1 x\n  c* $J\nlast $N$IEEE1"),
              (Rows{"b* $E$IEEE1 -", "a* $P$IEEE1 x", "last $N$IEEE1 -"}));
    EXPECT_EQ(rowsOfFile(""), Rows()) << "an empty map is a map";
    EXPECT_EQ(rowsOfFile("#\n"), Rows());
    Rows many;
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "p" + std::to_string(i) + " $IEEE1\n";
        many.push_back("p" + std::to_string(i) + " $IEEE1 -");
    }
    EXPECT_EQ(rowsOfFile(text), many);
}

TEST_F(LibraryMap, LongLinesAreReadInPieces) {
    const std::string decoration = " $E$IEEE1";
    // The whole line in one piece: 4095 characters.
    const std::string whole = std::string(4095 - decoration.size(), 'a') + decoration;
    EXPECT_EQ(rowsOfFile(whole + "\nb $IEEE1\n"), (Rows{whole + " -", "b $IEEE1 -"}));
    // One more: its last character is a line of its own, and nothing without a second field.
    EXPECT_EQ(rowsOfFile(whole + "1\nb $IEEE1\n"), (Rows{whole + " -", "b $IEEE1 -"}));
    // The next piece begins with white space, with a comment, with a row.
    const std::string first(4095, 'a');
    EXPECT_EQ(rowsOfFile(first + " $E\nb $IEEE1\n"), Rows{"b $IEEE1 -"});
    EXPECT_EQ(rowsOfFile(first + "# $E\nb $IEEE1\n"), Rows{"b $IEEE1 -"});
    EXPECT_EQ(rowsOfFile(first + "c $E$IEEE1\nb $IEEE1\n"), (Rows{"c $E$IEEE1 -", "b $IEEE1 -"}));
    const std::string comment = "#" + std::string(4094, ' ');
    EXPECT_EQ(rowsOfFile(comment + "c $E$IEEE1\n"), Rows{"c $E$IEEE1 -"}) << "a comment's rest";
}

TEST_F(LibraryMap, LineEndsAtAZeroByte) {
    using namespace std::string_literals;
    EXPECT_EQ(rowsOfFile("a $E\0$P x\nb $IEEE1\n"s), (Rows{"a $E$IEEE1$IEEEF -", "b $IEEE1 -"}));
}

TEST_F(LibraryMap, WhatCannotBeReadGivesTheBuiltInRows) {
    LibraryAttributeMap map(region());
    addBuiltInRows(map);
    const Rows expected = rowsOf(map);
    EXPECT_EQ(rowsOfName(folder.pathOf("missing")), expected);
    EXPECT_EQ(rowsOfName(""), expected);
    EXPECT_EQ(rowsOfName(folder.path()), expected) << "a folder";
}

TEST_F(LibraryMap, Patterns) {
    const struct {
        const char* pattern;
        const char* name;
        bool matches;
    } rows[] = {
        {"", "", true},
        {"", "a", false},
        {"a", "", false},
        {"abc", "abc", true},
        {"abc", "ABC", true},
        {"ABC", "abc", true},
        {"abc", "abcd", false},
        {"abcd", "abc", false},
        {"*", "", true},
        {"*", "anything", true},
        {"**", "", true},
        {"***", "x", true},
        {"?", "x", true},
        {"?", "", false},
        {"a?", "a", false},
        {"a?", "ab", true},
        {"?*", "", false},
        {"?*", "x", true},
        {"*?", "", false},
        {"*?", "x", true},
        {"*a", "banana", true},
        {"*an*an*", "banana", true},
        {"*an*an*an*", "banana", false},
        {"*_a*", "c_a.l", true},
        {"*_a*", "c_4.l", false},
        {"*_a*", "dir/c_a.l", true},
        {"g_*", "g_4.l", true},
        {"g_*", "dir/g_4.l", false},
        {"*_??p*", "c_a_p.l", true},
        {"*_??p*", "c_ap.l", false},
        {"a*b*c", "aXbYc", true},
        {"a*b*c", "aXbYcZ", false},
        {"**a**", "a", true},
        {"*.l", "a.l.l", true},
        {"?*?", "ab", true},
        {"?*?", "a", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(matchPattern(row.pattern, row.name), row.matches)
            << row.pattern << " and " << row.name;
    }
    std::string stars;
    for (int i = 0; i < 1000; ++i) {
        stars += "*a";
    }
    EXPECT_FALSE(matchPattern((stars + "b").c_str(), std::string(4000, 'a').c_str()))
        << "in a moment";
}

TEST_F(LibraryMap, NameStartsFromPlainAccess) {
    LibraryAttributeMap map(region());
    FullAttr expected;
    expected.access[0] = 0x0010;
    expected.access[1] = expected.access[2] = expected.access[3] = 0x0210;
    FullAttr result = parsed("$E$IW$REQ8$EABIv2");
    result.targetClass = 7;
    attributesForName(map, "c_a.l", result);
    EXPECT_EQ(result, expected) << "an empty map";
    EXPECT_EQ(builtIn("plain.l"), expected) << "no row matches";
}

TEST_F(LibraryMap, MatchingRowsAreMerged) {
    EXPECT_EQ(builtIn("c_a.l").isa, (IsaSet{0x3, 0}));
    EXPECT_EQ(builtIn("c_a.l").options, 0U);
    EXPECT_EQ(builtIn("C_A.L").isa, (IsaSet{0x3, 0})) << "case does not count";
    EXPECT_EQ(builtIn("c_4.l").isa, IsaSet{});
    EXPECT_EQ(builtIn("dir/c_4.l").isa, IsaSet{});
    EXPECT_EQ(builtIn("dir/c_a.l").isa, (IsaSet{0x3, 0}));
    // Letters in five places: features, unit, doubles, stack and position.
    const FullAttr all = builtIn("c_tvpse.l");
    EXPECT_EQ(all.options, 0x14U);
    EXPECT_EQ(all.isa, parsed("$FINCH_ISAv1$ZLTv1$PE").isa);
    // Rows that clash are merged all the same.
    EXPECT_EQ(builtIn("c_a_s.l_a__u").options & 0x30, 0x20U);
    EXPECT_EQ(builtIn("c_a__s_a__u.l").options & 0x30, 0x30U);
    EXPECT_EQ(builtIn("c_a.l").abiVersion, 0U);
}

TEST_F(LibraryMap, NameIsWhatStandsFromTheLastBackslashOn) {
    EXPECT_EQ(builtIn("g_4.l").options, 0x700000U);
    EXPECT_EQ(builtIn("f_4.l").options, 0x300000U);
    EXPECT_EQ(builtIn("fj_4.l").options, 0x100000U);
    EXPECT_EQ(builtIn("dir\\g_4.l").options, 0U) << "the backslash is part of the name";
    EXPECT_EQ(builtIn("\\g_4.l").options, 0U);
    EXPECT_EQ(builtIn("dir/g_4.l").options, 0U) << "a slash is nothing special";
    EXPECT_EQ(builtIn("dir_a\\c_4.l").isa, IsaSet{}) << "what stands before it does not count";
    EXPECT_EQ(builtIn("dir_a/c_4.l").isa, (IsaSet{0x3, 0})) << "what stands before a slash does";
    EXPECT_EQ(builtIn("dir\\sub\\c_a.l").isa, (IsaSet{0x3, 0}));
    LibraryAttributeMap map(region());
    std::string line = "\\g_* $IEEE1$IW";
    parseMapRow(map, line.data());
    FullAttr result;
    attributesForName(map, "dir\\g_4.l", result);
    EXPECT_EQ(result.options, 1U);
}

TEST_F(LibraryMap, AliasIsThatOfTheFirstRowThatHasOne) {
    LibraryAttributeMap map(region());
    for (std::string line : {"*x* $E", "g_* $E one", "*_4* $E two", "g_* $E three"}) {
        parseMapRow(map, line.data());
    }
    EXPECT_STREQ(aliasForName(map, "g_4x"), "one");
    EXPECT_STREQ(aliasForName(map, "h_4x"), "two");
    const char* name = "plain";
    EXPECT_EQ(aliasForName(map, name), name) << "the name itself";
}

TEST_F(LibraryMap, FamilyIsTheAliasUpToItsFirstUnderscore) {
    LibraryAttributeMap map(region());
    addBuiltInRows(map);
    EXPECT_TRUE(sameLibraryFamily(map, "g_4.l", "f_5.l")) << "both are fz";
    EXPECT_TRUE(sameLibraryFamily(map, "g_4.l", "FZ_a.l"));
    EXPECT_TRUE(sameLibraryFamily(map, "fz", "fj_x"));
    EXPECT_FALSE(sameLibraryFamily(map, "g_4.l", "fzz_4.l")) << "lengths count";
    EXPECT_FALSE(sameLibraryFamily(map, "g_4.l", "h_4.l"));
    EXPECT_TRUE(sameLibraryFamily(map, "c_a.l", "C_tvp.l"));
    EXPECT_TRUE(sameLibraryFamily(map, "c_a_b.l", "c_t.l")) << "the first one counts";
    EXPECT_FALSE(sameLibraryFamily(map, "c.l", "c_a.l"));
    EXPECT_TRUE(sameLibraryFamily(map, "_a", "_b"));
    EXPECT_TRUE(sameLibraryFamily(map, "", ""));
}

} // namespace
} // namespace attributes::test
