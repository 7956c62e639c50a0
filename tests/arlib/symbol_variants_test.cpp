// Which variant of a symbol a linker takes.

#include "tests/arlib/variant_fixture.h"

namespace arlibtest {
namespace {

class SymbolVariants : public ArlibTest {
protected:
    // A library whose table lists these names, one a member.
    void list(const Names& names) {
        archive.reset();
        testsupport::ArchiveBuilder builder;
        for (size_t i = 0; i < names.size(); ++i) {
            builder.add(std::to_string(i) + ".o", "x");
        }
        for (size_t i = 0; i < names.size(); ++i) {
            builder.symbol(names[i], i);
        }
        folder.write("lib.a", builder.bytes());
        archive = std::make_unique<arlib::Archive>();
        ASSERT_TRUE(read("lib.a", *archive));
    }

    // The members of the symbols that are chosen for a requester, "no" if there are none.
    std::string chosen(const char* name, const char* requester) {
        attributes::FullAttr wanted;
        attributes::parseDecoration(wanted, requester);
        arlib::SymbolList result;
        result.setSize(2); // what was in it before does not stay
        const bool isFound = archive->selectSymbolVariants(name, wanted, result);
        std::string text;
        for (uint32_t i = 0; i < result.getSize(); ++i) {
            EXPECT_STREQ(result.get(i)->getName(), name);
            text += std::string(i != 0 ? " " : "") + result.get(i)->getDefiningMember()->getName();
        }
        EXPECT_EQ(isFound, !text.empty());
        return isFound ? text : "no";
    }

    void TearDown() override {
        archive.reset();
        ArlibTest::TearDown();
    }

    std::unique_ptr<arlib::Archive> archive;
};

const std::string mark = "f$$BuildAttributes$";

TEST_F(SymbolVariants, UnknownNameHasNone) {
    list({"f", "g"});
    EXPECT_EQ(chosen("h", ""), "no");
    EXPECT_EQ(chosen("F", ""), "no");
}

TEST_F(SymbolVariants, PlainSymbolsAreAllTaken) {
    list({"f", "g", "f"});
    EXPECT_EQ(chosen("f", "$QEL_ISAv9$E$IEEE1"), "0.o 2.o");
    EXPECT_EQ(chosen("f", ""), "0.o 2.o");
}

TEST_F(SymbolVariants, TheMostSpecificUsableOneWins) {
    list({mark + "$QEL_ISAv3$E$IEEE1", "f", mark + "$QEL_ISAv3$E$P$IEEE1",
          mark + "$QEL_ISAv3$IEEE1"});
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$IEEE1"), "3.o");
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$E$IEEE1"), "0.o");
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$E$P$IEEE1"), "2.o");
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$P$IEEE1"), "3.o");
}

TEST_F(SymbolVariants, NothingUsableMeansThePlainOnes) {
    list({"f", mark + "$QEL_ISAv3$E$IEEE1", "f"});
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$IEEE1"), "0.o 2.o");
    list({mark + "$QEL_ISAv3$E$IEEE1", mark + "$QEL_ISAv3$P$IEEE1"});
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$IEEE1"), "no") << "and there are none";
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$P$IEEE1"), "1.o");
}

// A plain symbol counts as what no text says, and that has the default model of floating point.
TEST_F(SymbolVariants, PlainSymbolIsUsableForWhoHasTheDefaultModel) {
    list({"f", mark + "$IEEE1"});
    EXPECT_EQ(chosen("f", "$IEEE1"), "1.o");
    EXPECT_EQ(chosen("f", ""), "0.o") << "beyond the other by the model";
    list({mark + "$IEEE1", "f"});
    EXPECT_EQ(chosen("f", ""), "1.o") << "in any order";
    EXPECT_EQ(chosen("f", "$IEEE1"), "0.o");
}

TEST_F(SymbolVariants, WhatAllHaveNeedsNoRequester) {
    list({mark + "$QEL_ISAv5$E$IEEE1$IW", mark + "$QEL_ISAv5$E$N$IEEE1$IW"});
    EXPECT_EQ(chosen("f", "$IEEE1"), "0.o") << "both have E and IW, so it is taken for granted";
    EXPECT_EQ(chosen("f", "$N$IEEE1"), "1.o");
    list({mark + "$E$IEEE1"});
    EXPECT_EQ(chosen("f", "$IEEE1"), "0.o") << "one alone is always usable";
}

TEST_F(SymbolVariants, AccessAndOptionsCountToo) {
    list({mark + "$IEEE1", mark + "$A:L22$IEEE1", mark + "$S22$IEEE1", mark + "$IEEE1$ROPI"});
    EXPECT_EQ(chosen("f", "$IEEE1"), "0.o");
    EXPECT_EQ(chosen("f", "$A:L22$IEEE1"), "1.o");
    EXPECT_EQ(chosen("f", "$X:L22$IEEE1"), "0.o") << "in code alone";
    EXPECT_EQ(chosen("f", "$S22$IEEE1"), "2.o");
    EXPECT_EQ(chosen("f", "$IEEE1$ROPI"), "3.o");
    EXPECT_EQ(chosen("f", "$A:L22$S22$IEEE1$ROPI"), "1.o") << "the first of those that cross";
}

TEST_F(SymbolVariants, RequirementsDoNotCount) {
    list({mark + "$IEEE1", mark + "$E$IEEE1$REQ8$PRES8$EABIv2"});
    EXPECT_EQ(chosen("f", "$E$IEEE1"), "1.o");
    EXPECT_EQ(chosen("f", "$IEEE1$REQ8"), "0.o");
}

TEST_F(SymbolVariants, EqualOnesAreAllTakenInTableOrder) {
    list({mark + "$E$IEEE1$REQ8", "f", mark + "$IEEE1", mark + "$E$IEEE1"});
    EXPECT_EQ(chosen("f", "$E$IEEE1"), "0.o 3.o");
    EXPECT_EQ(chosen("f", "$IEEE1"), "2.o");
    EXPECT_EQ(chosen("f", ""), "1.o");
    list({"f", mark});
    EXPECT_EQ(chosen("f", ""), "0.o 1.o") << "an empty decoration says what none says";
    EXPECT_EQ(chosen("f", "$IEEE1"), "0.o 1.o") << "and all have it";
}

TEST_F(SymbolVariants, FeaturesThatTellNoVariantsApartDoNotCount) {
    // A made-up name cannot state such a feature; a requester of another tool may have one.
    list({mark + "$IEEE1", mark + "$E$IEEE1"});
    attributes::FullAttr wanted;
    attributes::parseDecoration(wanted, "$IEEE1");
    wanted.isa.high |= 0x400;
    arlib::SymbolList result;
    ASSERT_TRUE(archive->selectSymbolVariants("f", wanted, result));
    EXPECT_STREQ(result.get(0)->getDefiningMember()->getName(), "0.o");
}

// From members to a linker's choice, through a file.
TEST_F(SymbolVariants, OfALibraryThatWasBuiltHere) {
    {
        arlib::Archive made;
        VariantHandler variantHandler;
        made.setErrorHandler(&variantHandler);
        const Names decorations = {
            "$QEL_ISAv5$FCH_ISAv2$IEEE1$IW", "$QEL_ISAv5$FCH_ISAv2$ZLTv2$IEEE1$IW",
            "$QEL_ISAv7$FCH_ISAv4$ZLTv3$IEEE1$IW", "$QEL_ISAv7$FCH_ISAv4$ZLTv3$N$IEEE1$IW"};
        const Names names = {"plain.o", "fast.o", "new.o", "vector.o"};
        for (size_t i = 0; i < names.size(); ++i) {
            arlib::ArchiveMember* member =
                add(made, names[i].c_str(), "f\n=" + decorations[i] + "\n");
            member->setType(WrittenModuleType::instance());
        }
        ASSERT_TRUE(arlib::ArchiveFileWriter().writeFile(pathOf("lib.a").c_str(), made));
        EXPECT_EQ(variantHandler.reports, Names());
    }
    archive = std::make_unique<arlib::Archive>();
    ASSERT_TRUE(read("lib.a", *archive));
    EXPECT_EQ(chosen("f", "$QEL_ISAv5$FCH_ISAv2$IEEE1$IW"), "plain.o");
    EXPECT_EQ(chosen("f", "$QEL_ISAv6$FCH_ISAv3$ZLTv2$IEEE1$IW"), "fast.o");
    EXPECT_EQ(chosen("f", "$QEL_ISAv7$FCH_ISAv4$ZLTv3$IEEE1$IW"), "new.o");
    EXPECT_EQ(chosen("f", "$QEL_ISAv8$FCH_ISAv5$ZLTv4$N$IEEE1$IW$ROPI"), "vector.o");
}

} // namespace
} // namespace arlibtest
