// Groups of variants in the symbol table: bases, decorations, what is reported, and what the
// library's own attributes change.

#include "tests/arlib/variant_fixture.h"

namespace arlibtest {
namespace {

class MinorVariants : public VariantTest {
protected:
    // The table of modules with one name each, in this order, called a.o, b.o and so on.
    Names tableOf(const std::vector<std::optional<std::string>>& decorations,
                  const char* library = nullptr) {
        arlib::Archive archive;
        char name[] = "a.o";
        for (const auto& decoration : decorations) {
            addModule(archive, name, {"f"}, decoration);
            ++name[0];
        }
        if (library != nullptr) {
            promise(archive, library);
        }
        return table(archive);
    }
    static void promise(arlib::Archive& archive, const char* decoration) {
        attributes::FullAttr promised;
        attributes::parseDecoration(promised, decoration);
        archive.setLibraryAttributes(promised);
    }
    // Writes "out.a", though its table cannot be made.
    void writeAsItIs(arlib::Archive& archive) const {
        EXPECT_TRUE(arlib::ArchiveFileWriter().writeFile(pathOf("out.a").c_str(), archive));
        EXPECT_FALSE(archive.isSymbolTableUpToDate());
    }
    // Names and contents, as a reader gets them that forgives nothing.
    std::vector<std::pair<std::string, std::string>> membersOf(const std::string& name) {
        arlib::Archive archive;
        handler.goesOn = false;
        EXPECT_TRUE(read(name, archive));
        EXPECT_EQ(handler.reports, Names());
        std::vector<std::pair<std::string, std::string>> members;
        for (arlib::ArchiveMember* member : archive.getMembers()) {
            if (!member->isAuxiliary()) {
                members.emplace_back(member->getName(), contentsOf(member));
            }
        }
        return members;
    }
    const Names& reports() const { return variantHandler.reports; }
};

TEST_F(MinorVariants, ThePlainOneIsTheBase) {
    const Names expected = {"f in a.o", "f$$BuildAttributes$$QEL_ISAv3$E$IEEE1 in b.o"};
    EXPECT_EQ(tableOf({"$QEL_ISAv5", "$QEL_ISAv5$E"}), expected);
    EXPECT_EQ(reports(), Names());
    EXPECT_EQ(tableOf({"$QEL_ISAv5$E", "$QEL_ISAv5"}),
              (Names{"f$$BuildAttributes$$QEL_ISAv3$E$IEEE1 in a.o", "f in b.o"}));
    EXPECT_EQ(reports(), Names());
}

TEST_F(MinorVariants, OppositeFeaturesHaveNoBase) {
    EXPECT_EQ(tableOf({"$QEL_ISAv5$E", "$QEL_ISAv5$P"}),
              (Names{"f$$BuildAttributes$$QEL_ISAv3$E$IEEE1 in a.o",
                     "f$$BuildAttributes$$QEL_ISAv3$P$IEEE1 in b.o"}));
    EXPECT_EQ(reports(), Names{"31: a.o b.o"});
}

TEST_F(MinorVariants, IdenticalMembersAreAllBases) {
    EXPECT_EQ(tableOf({"$E", "$E", "$E"}), (Names{"f in a.o", "f in b.o", "f in c.o"}));
    EXPECT_EQ(reports(), Names{"32: a.o b.o c.o"});
    EXPECT_EQ(tableOf({{}, {}}), (Names{"f in a.o", "f in b.o"}));
    EXPECT_EQ(reports(), Names{"32: a.o b.o"});
}

TEST_F(MinorVariants, OnlyTheBasesAreListedWhereThereAreSeveral) {
    tableOf({"$E", "$E$P", "$E"});
    EXPECT_EQ(reports(), Names{"32: a.o c.o"});
}

TEST_F(MinorVariants, TwoThatDifferAlikeAreReported) {
    const std::string suffix = "$$BuildAttributes$$E$IEEE1";
    EXPECT_EQ(tableOf({"$E", "", "$E"}),
              (Names{"f" + suffix + " in a.o", "f in b.o", "f" + suffix + " in c.o"}));
    EXPECT_EQ(reports(), Names{"33: a.o c.o " + suffix});
}

// Suffixes are kept in a table of 17 places by the hash that all names have; reports go through it
// place by place. One that is more than three quarters full takes half as many places more, and
// one, before another suffix comes in: all go to their new places in the order of the old ones. Who
// comes to a place stands in front there.
class SuffixPlaces {
public:
    void add(const std::string& suffix, const std::string& line) {
        if (m_Count * 4 > m_Places.size() * 3) {
            grow();
        }
        put(m_Places, {suffix, line});
        ++m_Count;
    }
    size_t size() const { return m_Places.size(); }
    Names lines() const {
        Names all;
        for (const auto& chain : m_Places) {
            for (const auto& [suffix, line] : chain) {
                all.push_back(line);
            }
        }
        return all;
    }

private:
    using Entry = std::pair<std::string, std::string>;
    using Places = std::vector<std::vector<Entry>>;

    static void put(Places& places, const Entry& entry) {
        auto& chain = places[placeOf(entry.first, static_cast<uint32_t>(places.size()))];
        chain.insert(chain.begin(), entry);
    }
    void grow() {
        Places grown(m_Places.size() * 3 / 2 + 1);
        for (const auto& chain : m_Places) {
            for (const Entry& entry : chain) {
                put(grown, entry);
            }
        }
        m_Places = grown;
    }

    Places m_Places = Places(17);
    size_t m_Count = 0;
};

TEST_F(MinorVariants, IdenticalOnesAreReportedInTheOrderOfTheirTable) {
    const Names tokens = {"IW",      "~IW",      "RWPI",   "USESV6", "STKCKD",      "~STKCKD",
                          "USESV7",  "WCHAR32",  "~SHL",   "OSPACE", "ROPI",        "EBA4",
                          "EBA8",    "UX",       "FPIC",   "BTI",    "STANDARDLIB", "MICROLIB",
                          "ENUMINT", "INDIRECT", "HARDFP", "SOFTFP"};
    for (const size_t count : {size_t{4}, size_t{13}, size_t{14}, size_t{20}, tokens.size()}) {
        arlib::Archive archive;
        addModule(archive, "base.o", {"f"}, "$IEEE1");
        SuffixPlaces places;
        for (size_t i = 0; i < count; ++i) {
            const std::string name = tokens[i] + "_";
            addModule(archive, name + "1.o", {"f"}, "$IEEE1$" + tokens[i]);
            addModule(archive, name + "2.o", {"f"}, "$IEEE1$" + tokens[i]);
            const std::string suffix = "$$BuildAttributes$$IEEE1$" + tokens[i];
            places.add(suffix, "33: " + name + "1.o " + name + "2.o " + suffix);
        }
        EXPECT_EQ(places.size(), count <= 13 ? 17U : count <= 20 ? 26U : 40U) << count;
        table(archive);
        EXPECT_EQ(reports(), places.lines()) << count;
    }
}

TEST_F(MinorVariants, WhatNoTokenSaysIsReported) {
    // A profile has a token only together with a 64-bit instruction set.
    EXPECT_EQ(tableOf({"$QEL_ISAv7", "$QEL_ISAv7$A_PROFILE"}),
              (Names{"f in a.o", "f$$BuildAttributes$$QEL_ISAv3$IEEE1 in b.o"}));
    EXPECT_EQ(reports(), Names{"34: b.o of a.o b.o"});
    // What code and read-only data share is printed, but read into read-only data and data.
    tableOf({"$IEEE1", "$X:L22$R:L22$IEEE1"});
    EXPECT_EQ(reports(), Names()) << "all three: it comes back";
    tableOf({"$IEEE1", "$X:L22$IEEE1"});
    EXPECT_EQ(reports(), Names());
    tableOf({"$IEEE1", "$C:L22$IEEE1"});
    EXPECT_EQ(reports(), Names());
    tableOf({"$IEEE1", "$R:L22$IEEE1"});
    EXPECT_EQ(reports(), Names{"34: b.o of a.o b.o"}) << "read-only data and data grow by code";
}

TEST_F(MinorVariants, RequirementsSeparateNoVariants) {
    EXPECT_EQ(tableOf({"$REQ8$EABIv2", "$PRES8"}), (Names{"f in a.o", "f in b.o"}));
    EXPECT_EQ(reports(), Names{"32: a.o b.o"});
    EXPECT_EQ(tableOf({"$IEEE1", "$E$IEEE1$REQ8$PRES8$EABIv2"}),
              (Names{"f in a.o", "f$$BuildAttributes$$E$IEEE1$REQ8$PRES8$EABIv2 in b.o"}))
        << "but they are told";
}

TEST_F(MinorVariants, AMemberWithoutAWordIsWhatNoTextSays) {
    EXPECT_EQ(tableOf({{}, "$E"}), (Names{"f in a.o", "f$$BuildAttributes$$E$IEEE1 in b.o"}));
    EXPECT_EQ(reports(), Names());
    EXPECT_EQ(tableOf({{}, "$IEEE1"}),
              (Names{"f$$BuildAttributes$$IEEE1$IEEEF in a.o", "f in b.o"}))
        << "the default model of floating point is an option too";
    EXPECT_EQ(reports(), Names());
}

TEST_F(MinorVariants, StandBeforeAllOthersGroupByGroup) {
    arlib::Archive archive;
    addModule(archive, "alone.o", {"z", "y"});
    addModule(archive, "a1.o", {"a", "b"}, "$E");
    addModule(archive, "b1.o", {"x"});
    addModule(archive, "a2.o", {"b", "a"}, "");
    addModule(archive, "last.o", {"a"});
    addModule(archive, "b2.o", {"x"}, "$P");
    EXPECT_EQ(table(archive),
              (Names{"a$$BuildAttributes$$E$IEEE1 in a1.o", "b$$BuildAttributes$$E$IEEE1 in a1.o",
                     "b in a2.o", "a in a2.o", "x in b1.o", "x$$BuildAttributes$$P$IEEE1 in b2.o",
                     "z in alone.o", "y in alone.o", "a in last.o"}));
    EXPECT_EQ(reports(), Names());
}

TEST_F(MinorVariants, NoGroupNoDecoration) {
    arlib::Archive archive;
    addModule(archive, "a.o", {"f"}, "$E");
    addModule(archive, "b.o", {"F"}, "$P");
    addModule(archive, "c.o", {"f", "f"}, "$J");
    EXPECT_EQ(table(archive), (Names{"f in a.o", "F in b.o", "f in c.o", "f in c.o"}));
    EXPECT_EQ(reports(), Names());
}

TEST_F(MinorVariants, NamesAreUniqueOnlyOutsideOfGroups) {
    arlib::Archive archive;
    archive.setUniqueSymbols(true);
    addModule(archive, "a.o", {"f", "f"});
    addModule(archive, "b.o", {"f", "f"}, "$E");
    addModule(archive, "c.o", {"f", "g", "g"});
    addModule(archive, "d.o", {"f", "g"});
    const std::string decorated = "f$$BuildAttributes$$E$IEEE1 in b.o";
    EXPECT_EQ(table(archive),
              (Names{"f in a.o", "f in a.o", decorated, decorated, "f in c.o", "g in c.o"}));
}

TEST_F(MinorVariants, SectionsSpeakOnRequest) {
    arlib::Archive archive;
    addModule(archive, "a.o", {"f"}, "$E", '=');
    addModule(archive, "b.o", {"f"}, "$P", '+');
    EXPECT_EQ(table(archive), (Names{"f$$BuildAttributes$$E$IEEE1 in a.o", "f in b.o"}));
    archive.setBuildAttributesFromSection(true);
    EXPECT_EQ(table(archive), (Names{"f in a.o", "f$$BuildAttributes$$P$IEEE1 in b.o"}));
}

TEST_F(MinorVariants, LibraryIsMergedIntoMembers) {
    // What the library promises and the base has anyway changes nothing.
    const Names expected = {"f in a.o", "f$$BuildAttributes$$QEL_ISAv3$E$IEEE1 in b.o"};
    EXPECT_EQ(tableOf({"$QEL_ISAv4$IEEE1", "$QEL_ISAv4$E$IEEE1"}, "$QEL_ISAv4$IEEE1"), expected);
    EXPECT_EQ(reports(), Names());
    // What only the library has puts every member beyond what the members have in common.
    EXPECT_EQ(tableOf({"$QEL_ISAv4$IEEE1", "$QEL_ISAv4$E$IEEE1"}, "$QEL_ISAv5$IEEE1"),
              (Names{"f$$BuildAttributes$$QEL_ISAv5$IEEE1 in a.o",
                     "f$$BuildAttributes$$QEL_ISAv5$E$IEEE1 in b.o"}));
    EXPECT_EQ(reports(), Names{"31: a.o b.o"});
    // What one member and the library have makes that member no other than the rest.
    EXPECT_EQ(tableOf({"$IEEE1", "$E$IEEE1"}, "$E$IEEE1"),
              (Names{"f$$BuildAttributes$$E$IEEE1 in a.o", "f$$BuildAttributes$$E$IEEE1 in b.o"}));
    EXPECT_EQ(reports(), (Names{"31: a.o b.o", "33: a.o b.o $$BuildAttributes$$E$IEEE1"}));
}

TEST_F(MinorVariants, ClashesWithTheLibraryAreReported) {
    tableOf({"$IEEE1$STKCKD", "$E$IEEE1$STKCKD"}, "$IEEE1$~STKCKD");
    EXPECT_EQ(reports(), (Names{"35: a.o b.o", "36: a.o", "36: b.o", "31: a.o b.o"}));
    EXPECT_EQ(variantHandler.clashing.options, 0x30U) << "of the member, the library's merged in";
    tableOf({"$IEEE1", "$IEEE1$STKCKD"}, "$IEEE1$~STKCKD");
    EXPECT_EQ(reports(), (Names{"36: b.o", "31: a.o b.o"})) << "common attributes fit";
    // Each kind of clash counts: features, options, access; stores take no part.
    tableOf({"$IEEE1", "$FLAv3$IEEE1"}, "$ZLTi1$IEEE1");
    EXPECT_EQ(reports()[0], "36: b.o");
    tableOf({"$IEEE1", "$IEEE1$EBA4"}, "$IEEE1$EBA8");
    EXPECT_EQ(reports()[0], "36: b.o");
    tableOf({"$IEEE1", "$A:L42$IEEE1"}, "$A:UL42$IEEE1");
    EXPECT_EQ(reports()[0], "36: b.o");
    tableOf({"$IEEE1", "$S42$IEEE1"}, "$US42$IEEE1");
    EXPECT_EQ(reports(), Names{"31: a.o b.o"});
}

TEST_F(MinorVariants, CommonAttributesAreReportedAsTheyAre) {
    variantHandler.stopsAt = "35";
    arlib::Archive archive;
    addModule(archive, "a.o", {"f"}, "$IEEE1$STKCKD");
    addModule(archive, "b.o", {"f"}, "$E$IEEE1$STKCKD");
    promise(archive, "$IEEE1$~STKCKD");
    archive.setErrorHandler(&variantHandler);
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    EXPECT_FALSE(archive.updateAuxiliaryMembers());
    EXPECT_EQ(variantHandler.clashing.options, 0x10U);
    EXPECT_EQ(variantHandler.clashing.isa.low, 0x2000000000000000U);
}

TEST_F(MinorVariants, LibraryOnlyMattersToGroups) {
    arlib::Archive archive;
    addModule(archive, "a.o", {"f"}, "$IEEE1$STKCKD");
    addModule(archive, "b.o", {"g"}, "$IEEE1$STKCKD");
    promise(archive, "$IEEE1$~STKCKD");
    EXPECT_EQ(table(archive), (Names{"f in a.o", "g in b.o"}));
    EXPECT_EQ(reports(), Names());
}

// Each flaw, when the handler says to stop there or is not there: no new table is made, and the
// rest of the archive stands, on disk too if it is written all the same.
TEST_F(MinorVariants, EachFlawMayStopTheRebuild) {
    const struct {
        const char* slot;
        std::vector<std::optional<std::string>> decorations;
        const char* library;
    } rows[] = {
        {"31", {"$E", "$P"}, nullptr},
        {"32", {"$E", "$E"}, nullptr},
        {"33", {"", "$E", "$E"}, nullptr},
        {"34", {"", "$A_PROFILE"}, nullptr},
        {"35", {"$IEEE1$STKCKD", "$E$IEEE1$STKCKD"}, "$IEEE1$~STKCKD"},
        {"36", {"$IEEE1", "$IEEE1$STKCKD"}, "$IEEE1$~STKCKD"},
    };
    for (const auto& row : rows) {
        for (const bool hasHandler : {true, false}) {
            arlib::Archive archive;
            std::vector<std::pair<std::string, std::string>> expected;
            for (const auto& decoration : row.decorations) {
                arlib::ArchiveMember* member =
                    addModule(archive, "a_member_with_a_long_name.o", {"f"}, decoration);
                expected.emplace_back(member->getName(), contentsOf(member));
            }
            if (row.library != nullptr) {
                promise(archive, row.library);
            }
            variantHandler.stopsAt = row.slot;
            archive.setErrorHandler(hasHandler ? &variantHandler : nullptr);
            variantHandler.reports.clear();
            EXPECT_FALSE(archive.updateAuxiliaryMembers()) << row.slot;
            EXPECT_FALSE(archive.isSymbolTableUpToDate()) << row.slot;
            EXPECT_EQ(archive.getSymbolTable(), nullptr) << row.slot;
            EXPECT_EQ(namesOf(archive)[0], "//") << "in front, if it is written all the same";
            if (hasHandler) {
                ASSERT_FALSE(reports().empty()) << row.slot;
                EXPECT_EQ(reports().back().substr(0, 2), row.slot) << "nothing follows";
            }
            writeAsItIs(archive);
            EXPECT_EQ(membersOf("out.a"), expected) << row.slot;
            EXPECT_EQ(testsupport::parseArchive(folder.read("out.a")).table("/"), nullptr)
                << row.slot;
        }
    }
}

// Members that are added behind those of the old table leave it right, if not complete.
TEST_F(MinorVariants, OldTableStaysWhereTheNewOneIsGivenUp) {
    const std::string longName = "a_member_with_a_long_name.o";
    testsupport::ArchiveBuilder builder;
    builder.add(longName, "f\n").symbol("old", 0);
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    archive.getMembers()[2]->setType(WrittenModuleType::instance());
    addModule(archive, "b.o", {"f"});
    archive.setErrorHandler(nullptr);
    EXPECT_FALSE(archive.updateAuxiliaryMembers());
    ASSERT_NE(archive.getSymbolTable(), nullptr);
    EXPECT_EQ(contentsOf(archive.getSymbolTable()).substr(8), std::string("old\0", 4));
    writeAsItIs(archive);
    const std::vector<std::pair<std::string, std::string>> expected = {{longName, "f\n"},
                                                                       {"b.o", "f\n"}};
    EXPECT_EQ(membersOf("out.a"), expected);
    arlib::Archive again;
    ASSERT_TRUE(read("out.a", again));
    ASSERT_EQ(again.getSymbols().getSize(), 1U);
    EXPECT_STREQ(again.getSymbols()[0]->getName(), "old");
    EXPECT_EQ(again.getSymbols()[0]->getDefiningMember()->getName(), longName);
}

TEST_F(MinorVariants, TableThatIsReadGivesAttributesBack) {
    arlib::Archive archive;
    addModule(archive, "a.o", {"f", "g"}, "$QEL_ISAv5$IEEE1");
    addModule(archive, "b.o", {"f", "g"}, "$QEL_ISAv5$E$A:L22$IEEE1$IW$REQ8");
    addModule(archive, "c.o", {"f", "g"}, "$QEL_ISAv6$IEEE1");
    archive.setErrorHandler(&variantHandler);
    ASSERT_TRUE(arlib::ArchiveFileWriter().writeFile(pathOf("lib.a").c_str(), archive));
    EXPECT_EQ(reports(), Names());
    arlib::Archive again;
    ASSERT_TRUE(read("lib.a", again));
    Names found;
    for (const arlib::Symbol* symbol : again.getSymbols()) {
        std::string line =
            std::string(symbol->getName()) + " in " + symbol->getDefiningMember()->getName();
        if (symbol->hasBuildAttributes()) {
            char text[1024];
            attributes::printDecoration(symbol->getBuildAttributes(), text, sizeof text);
            line += text;
        }
        found.push_back(line);
    }
    const std::string wide = "$QEL_ISAv3$E$A:L22$IEEE1$IW$REQ8";
    EXPECT_EQ(found, (Names{"f in a.o", "g in a.o", "f in b.o" + wide, "g in b.o" + wide,
                            "f in c.o$QEL_ISAv6$IEEE1", "g in c.o$QEL_ISAv6$IEEE1"}));
}

} // namespace
} // namespace arlibtest
