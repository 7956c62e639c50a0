// Several builds of one module in a library: what stands in the symbol table, and what users are
// told.
#include "tests/command/variant_case.h"
#include "tests/elfext/attribute_section_builder.h"

namespace commandtest {
namespace {

const std::string noBase =
    "Warning: L6874W: Minor variants of archive member 'a.o' include no base variant\n";
const std::string severalBases =
    "Warning: L6876W: Minor variants of archive member 'a.o' include multiple base variants\n";
const std::string suffixE = "$$BuildAttributes$$QEL_ISAv3$E$IEEE1";
const std::string suffixP = "$$BuildAttributes$$QEL_ISAv3$P$IEEE1";

class VariantsTable : public VariantCase {};

TEST_F(VariantsTable, OneWithAnExtraFeatureIsDecorated) {
    object("a.o", {"f", "g"}, {"$QEL_ISAv5$IEEE1"});
    object("b.o", {"f", "g"}, {"$QEL_ISAv5$E$IEEE1"});
    const Words decorated = {"f" + suffixE + " in b.o", "g" + suffixE + " in b.o"};
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), (Words{"f in a.o", "g in a.o", decorated[0], decorated[1]}));
    runs({"-m", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), (Words{decorated[0], decorated[1], "f in a.o", "g in a.o"}));
    runs({"-d", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), (Words{"f in b.o", "g in b.o"})) << "alone it needs no decoration";
}

TEST_F(VariantsTable, OppositeFeaturesLeaveNoBase) {
    object("a.o", {"f"}, {"$QEL_ISAv5$E$IEEE1"});
    object("b.o", {"f"}, {"$QEL_ISAv5$P$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o"}, noBase);
    EXPECT_EQ(symbols(), (Words{"f" + suffixE + " in a.o", "f" + suffixP + " in b.o"}));
    runs({"-s", "lib.a"}, noBase);
    runs({"-s", "-n", "lib.a"}, "");
}

TEST_F(VariantsTable, OneFileUnderTwoNamesHasSeveralBases) {
    object("a.o", {"f"}, {"$E$IEEE1"});
    object("b.o", {"f"}, {"$E$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o"}, severalBases);
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f in b.o"}));
}

TEST_F(VariantsTable, TwoThatDifferAlikeFromAThird) {
    object("a.o", {"f"}, {"$IEEE1"});
    object("b.o", {"f"}, {"$E$IEEE1"});
    object("c.o", {"f"}, {"$E$IEEE1"});
    const std::string suffix = "$$BuildAttributes$$E$IEEE1";
    const std::string warning = "Warning: L6880W: Minor variants of archive member 'b.o' include "
                                "identical variants with attribute suffix '" +
                                suffix + "'\n";
    runs({"-rc", "lib.a", "a.o", "b.o", "c.o"}, warning);
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f" + suffix + " in b.o", "f" + suffix + " in c.o"}));
    EXPECT_TRUE(ended(tomex({"-v", "-s", "lib.a"}), 0, "",
                      warning + " * b.o [0] : b.o\n * b.o [1] : c.o\n"));
}

TEST_F(VariantsTable, AttributesWithoutATokenAreReported) {
    object("a.o", {"f"}, {"$QEL_ISAv7$IEEE1"});
    object("b.o", {"f"}, {"$QEL_ISAv7$A_PROFILE$IEEE1"});
    const std::string warning =
        "Warning: L6877W: Attribute difference of archive member 'b.o' in minor variant group "
        "beginning with 'a.o' includes attribute(s) with no symbol decoration representation\n";
    runs({"-rc", "lib.a", "a.o", "b.o"}, warning);
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f$$BuildAttributes$$QEL_ISAv3$IEEE1 in b.o"}));
    EXPECT_TRUE(
        ended(tomex({"-sv", "lib.a"}), 0, "", warning + " * a.o [0] : a.o\n * a.o [1] : b.o\n"));
}

TEST_F(VariantsTable, GroupIsListedWithV) {
    object("a.o", {"f"}, {"$E$IEEE1"});
    object("b.o", {"f"}, {"$P$IEEE1"});
    object("c.o", {"f"}, {"$J$IEEE1"});
    EXPECT_TRUE(ended(tomex({"-rcv", "lib.a", "a.o", "b.o", "c.o"}), 0,
                      "a - a.o\na - b.o\na - c.o\n",
                      noBase + " * a.o [0] : a.o\n * a.o [1] : b.o\n * a.o [2] : c.o\n"));
    object("b.o", {"f"}, {"$E$IEEE1"});
    object("c.o", {"f"}, {"$E$P$IEEE1"});
    EXPECT_TRUE(ended(tomex({"-rcv", "lib.a", "a.o", "b.o", "c.o"}), 0,
                      "r - a.o\nr - b.o\nr - c.o\n",
                      severalBases + " * a.o [0] : a.o\n * a.o [1] : b.o\n"))
        << "the bases alone";
}

TEST_F(VariantsTable, OrderOfNamesDoesNotCount) {
    object("a.o", {"f", "g", "f"}, {"$IEEE1"});
    object("b.o", {"g", "f", "f"}, {"$N$IEEE1"});
    object("c.o", {"g", "g", "f"}, {"$N$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o", "c.o"});
    const std::string suffix = "$$BuildAttributes$$N$IEEE1 in b.o";
    EXPECT_EQ(symbols(), (Words{"f in a.o", "g in a.o", "f in a.o", "g" + suffix, "f" + suffix,
                                "f" + suffix, "g in c.o", "g in c.o", "f in c.o"}));
}

TEST_F(VariantsTable, CaseOfNamesDoesCount) {
    object("a.o", {"name"}, {"$IEEE1"});
    object("b.o", {"Name"}, {"$N$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), (Words{"name in a.o", "Name in b.o"}));
}

TEST_F(VariantsTable, WithoutGroupsThereAreNoDecorations) {
    object("a.o", {"f", "g"}, {"$E$IEEE1"});
    object("b.o", {"f", "h"}, {"$P$IEEE1"});
    object("c.o", {"f"}, {"$J$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o", "c.o"});
    EXPECT_EQ(symbols(), (Words{"f in a.o", "g in a.o", "f in b.o", "h in b.o", "f in c.o"}));
}

TEST_F(VariantsTable, SeveralMarkersAreMerged) {
    object("a.o", {"f"}, {"$QEL_ISAv5$IEEE1"});
    object("b.o", {"f"}, {"$QEL_ISAv5$IEEE1", "$E$IEEE1", "$IEEE1$STKCKD", "$IEEE1$~STKCKD"});
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f" + suffixE + "$STKCKD$~STKCKD in b.o"}));
}

// More text than is kept on the way: the member is read once more for it.
TEST_F(VariantsTable, ManyMarkersAreMergedToo) {
    Words many(3000, "$QEL_ISAv5$IEEE1$THIS_WORD_SAYS_NOTHING");
    many.emplace_back("$E$IEEE1");
    object("a.o", {"f"}, {"$QEL_ISAv5$IEEE1"});
    object("b.o", {"f"}, many);
    object("c.o", {"f"}, {"$QEL_ISAv5$P$IEEE1$" + std::string(100000, 'x')});
    runs({"-rc", "lib.a", "a.o", "b.o", "c.o"});
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f" + suffixE + " in b.o", "f" + suffixP + " in c.o"}));
}

TEST_F(VariantsTable, WhoStatesNothingHasTheDefaultModel) {
    object("a.o", {"f"}, {});
    object("b.o", {"f"}, {"$E$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o"}, noBase);
    EXPECT_EQ(symbols(), (Words{"f$$BuildAttributes$$IEEE1$IEEEF in a.o",
                                "f$$BuildAttributes$$E$IEEE1 in b.o"}));
    object("b.o", {"f"}, {"$E"});
    runs({"-r", "lib.a", "b.o"});
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f$$BuildAttributes$$E$IEEE1 in b.o"}));
}

TEST_F(VariantsTable, MarkersOfNamesAreNoMarkersOfObjects) {
    object("a.o", {"f", "f$$BuildAttributes$$E"}, {"$IEEE1"});
    object("b.o", {"f", "f$$BuildAttributes$$E"}, {"$N$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o"});
    const std::string suffix = "$$BuildAttributes$$N$IEEE1 in b.o";
    EXPECT_EQ(symbols(), (Words{"f in a.o", "f$$BuildAttributes$$E in a.o", "f" + suffix,
                                "f$$BuildAttributes$$E" + suffix}));
}

TEST_F(VariantsTable, SectionsSpeakOnRequest) {
    using namespace elfext::test;
    const AttributeSectionBuilder section(true);
    const auto attributes = [&section](const std::string& more) {
        // A 32-bit architecture, its two instruction sets, and more.
        return AttributeSectionBuilder::section(section.subsection(
            "qeabi",
            section.file(number(6, 10) + number(7, 'A') + number(8, 1) + number(9, 2) + more)));
    };
    file("a.o", variantObject({"f"}, {"$E$IEEE1"}, attributes("")));
    file("b.o", variantObject({"f"}, {"$IEEE1"}, attributes(number(10, 3))));
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), (Words{"f$$BuildAttributes$$E$IEEE1 in a.o", "f in b.o"}));
    runs({"--qeabi_buildattr", "-s", "lib.a"});
    const Words fromSections = symbols();
    ASSERT_EQ(fromSections.size(), 2U);
    EXPECT_EQ(fromSections[0], "f in a.o");
    EXPECT_TRUE(fromSections[1].starts_with("f$$BuildAttributes$$QEL_ISAv3$ZLTv3"))
        << fromSections[1];
    runs({"--qeabi_buildattr", "--no_qeabi_buildattr", "-s", "lib.a"});
    EXPECT_EQ(symbols(), (Words{"f$$BuildAttributes$$E$IEEE1 in a.o", "f in b.o"}));
}

TEST_F(VariantsTable, UniqueNamesAreThoseOutsideOfGroups) {
    object("a.o", {"f"}, {"$IEEE1"});
    object("b.o", {"f"}, {"$E$IEEE1"});
    object("c.o", {"f", "g"}, {});
    object("d.o", {"g"}, {});
    runs({"-rc", "--unique_symbols", "lib.a", "a.o", "b.o", "c.o", "d.o"});
    EXPECT_EQ(symbols(),
              (Words{"f in a.o", "f$$BuildAttributes$$E$IEEE1 in b.o", "f in c.o", "g in c.o"}));
}

TEST_F(VariantsTable, WarningsCanBeErrorsAndTheLibraryIsWritten) {
    object("a.o", {"f"}, {"$E$IEEE1"});
    object("b.o", {"f"}, {"$P$IEEE1"});
    runs({"--diag_error=6874", "-rc", "lib.a", "a.o", "b.o"},
         "Error: L6874W: Minor variants of archive member 'a.o' include no base variant\n", 1);
    EXPECT_EQ(symbols().size(), 2U) << "the warning came while it was being written";
    runs({"--diag_suppress=6874", "-s", "lib.a"});
    runs({"--diag_suppress=warning", "-s", "lib.a"});
}

TEST_F(VariantsTable, ReadingRunsLookForNoGroups) {
    object("a.o", {"f"}, {"$E$IEEE1"});
    object("b.o", {"f"}, {"$P$IEEE1"});
    runs({"-rc", "lib.a", "a.o", "b.o"}, noBase);
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "a.o\nb.o\n", ""));
    runs({"-x", "lib.a"});
}

TEST_F(VariantsTable, OfMembersThatCannotBeReadThereAreNone) {
    object("a.o", {"f"}, {"$IEEE1"});
    file("b.o", variantObject({"f"}, {"$E$IEEE1"}).substr(0, 100));
    file("c.txt", "f");
    const CommandResult result = tomex({"-rc", "lib.a", "a.o", "b.o", "c.txt"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(symbols(), Words{"f in a.o"});
}

} // namespace
} // namespace commandtest
