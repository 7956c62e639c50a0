// Records over records: what is inherited, and what one states beyond another.
#include <string>

#include "attributes/interface/attribute_algebra.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using InheritanceTest = RecordTest;

BuildAttributes laidOver(const BuildAttributes& base, const BuildAttributes& own) {
    BuildAttributes out;
    overlay(out, base, own);
    return out;
}

BuildAttributes beyond(BuildAttributes base, BuildAttributes own) {
    BuildAttributes out((BuildAttributes::EmptyRecord()));
    differenceFromBase(out, base, own);
    return out;
}

BuildAttributes emptyRecord() {
    return BuildAttributes((BuildAttributes::EmptyRecord()));
}

// A record with one slot set and nothing that hangs on it.
BuildAttributes withSlot(Tag tag, uint32_t number) {
    BuildAttributes record;
    if (tagRows[tag].form == TagForm_Text) {
        record.m_StandardTags.setText(tag, std::to_string(number).c_str());
    } else {
        record.m_StandardTags.setNumber(tag, number);
    }
    return record;
}

TEST_F(InheritanceTest, EachSlotIsInheritedUnlessItIsStated) {
    for (const TagRow& row : tagRows) {
        const BuildAttributes inherited = laidOver(withSlot(row.tag, 3), BuildAttributes());
        EXPECT_EQ(Witness::slotOf(inherited, row.tag),
                  Witness::slotOf(withSlot(row.tag, 3), row.tag));
        EXPECT_TRUE(inherited.derivedStale) << row.name;
        const BuildAttributes stated = laidOver(withSlot(row.tag, 3), withSlot(row.tag, 0));
        EXPECT_EQ(Witness::slotOf(stated, row.tag), Witness::slotOf(withSlot(row.tag, 0), row.tag));
        EXPECT_FALSE(stated.derivedStale) << row.name;
        const BuildAttributes kept = laidOver(BuildAttributes(), withSlot(row.tag, 3));
        EXPECT_EQ(Witness(kept), Witness(withSlot(row.tag, 3))) << row.name;
    }
}

TEST_F(InheritanceTest, TheValueIsThatOfTheOwnRecordUntilItIsRebuilt) {
    BuildAttributes base = recordWith({{Tag_CPU_arch, 10}});
    base.rebuildFullAttr();
    BuildAttributes own = recordWith({{Tag_ABI_enum_size, 2}});
    own.fullAttr.options = 0x1234;
    EXPECT_EQ(laidOver(base, own).fullAttr, own.fullAttr);
}

TEST_F(InheritanceTest, OfAnEmptyRecordIsEmpty) {
    const BuildAttributes record = recordWith({{Tag_CPU_arch, 10}});
    for (const auto& [base, own] :
         {std::pair(emptyRecord(), record), std::pair(record, emptyRecord()),
          std::pair(emptyRecord(), emptyRecord())}) {
        EXPECT_EQ(Witness(laidOver(base, own)), Witness(emptyRecord()));
        EXPECT_EQ(laidOver(base, own).fullAttr, FullAttr());
        EXPECT_EQ(Witness(beyond(base, own)), Witness(emptyRecord()));
        EXPECT_EQ(beyond(base, own).fullAttr, FullAttr());
    }
}

TEST_F(InheritanceTest, ListsAreJoinedWithTheOwnEntriesFirst) {
    BuildAttributes base;
    base.addCompatibilityTag(1, "a");
    base.addCompatibilityTag(1, "b");
    base.addAlsoCompatibilityTag({6, 1U});
    base.addAlsoCompatibilityTag({6, 2U});
    BuildAttributes own;
    own.addCompatibilityTag(1, "c");
    own.addCompatibilityTag(1, "b");
    own.addAlsoCompatibilityTag({6, 2U});
    const Witness joined(laidOver(base, own));
    const std::vector<std::pair<uint32_t, std::string>> compatible = {{1, "c"}, {1, "b"}, {1, "a"}};
    EXPECT_EQ(joined.compatible, compatible);
    EXPECT_EQ(joined.alsoCompatible, (std::vector<std::string>{"6=2", "6=1"}));
    EXPECT_FALSE(joined.stale);
    EXPECT_EQ(Witness(laidOver(base, BuildAttributes())).compatible, Witness(base).compatible);
    EXPECT_EQ(Witness(laidOver(BuildAttributes(), own)), Witness(own));
}

TEST_F(InheritanceTest, TablesAreJoinedByKey) {
    BuildAttributes base;
    base.setOtherNumericTag(200, 1);
    base.setOtherNumericTag(202, 2);
    base.setOtherStringTag(201, "base");
    BuildAttributes own;
    own.setOtherNumericTag(200, 0);
    const Witness joined(laidOver(base, own));
    EXPECT_EQ(joined.numeric, (std::map<uint32_t, uint32_t>{{200, 0}, {202, 2}}));
    EXPECT_EQ(joined.strings, (std::map<uint32_t, std::string>{{201, "base"}}));
    EXPECT_FALSE(joined.stale);
}

TEST_F(InheritanceTest, InheritedInterworkingBringsTheOwnVendor) {
    const BuildAttributes interworking = withSlot(Tag_AV_interworking, 1);
    EXPECT_NE(laidOver(interworking, BuildAttributes()).findCompatibilityTag(2, "QEL"), nullptr);
    EXPECT_NE(
        laidOver(withSlot(Tag_AV_mdivide, 1), BuildAttributes()).findCompatibilityTag(2, "QEL"),
        nullptr);
    // What is stated already is left alone.
    EXPECT_EQ(
        laidOver(interworking, withSlot(Tag_AV_interworking, 1)).findCompatibilityTag(2, "QEL"),
        nullptr);
    // And takes it away where neither is in force.
    BuildAttributes own;
    own.addCompatibilityTag(2, "QEL");
    EXPECT_EQ(laidOver(withSlot(Tag_AV_interworking, 0), own).getCompatibilityTagCount(), 0U);
    EXPECT_EQ(laidOver(withSlot(Tag_CPU_arch, 1), own).getCompatibilityTagCount(), 1U);
}

TEST_F(InheritanceTest, InheritedAlignmentTagsSettleTheAlignmentNeeded) {
    const auto needed = [](const BuildAttributes& base, const BuildAttributes& own) {
        return Witness(laidOver(base, own)).slots[Tag_ABI_align_needed];
    };
    EXPECT_EQ(needed(withSlot(Tag_AV_require8, 0), BuildAttributes()), "1");
    EXPECT_EQ(needed(withSlot(Tag_AV_require8, 1), BuildAttributes()), "0");
    EXPECT_EQ(needed(withSlot(Tag_AV_require8, 0), withSlot(Tag_AV_eba, 2)), "2");
    EXPECT_EQ(needed(withSlot(Tag_AV_eba, 2), BuildAttributes()), "2");
    EXPECT_EQ(needed(withSlot(Tag_AV_eba, 0), withSlot(Tag_AV_require8, 1)), "0");
    EXPECT_EQ(needed(withSlot(Tag_AV_eba, 0), withSlot(Tag_ABI_align_needed, 2)), "1");
    EXPECT_EQ(needed(withSlot(Tag_AV_eba, 0), withSlot(Tag_AV_eba, 2)), "-");
}

TEST_F(InheritanceTest, ResultsMayBeOperands) {
    RandomSource random(31);
    for (int i = 0; i < 500; ++i) {
        const BuildAttributes base = random.record();
        const BuildAttributes own = random.record();
        const Witness expected(laidOver(base, own));
        BuildAttributes asBase = base;
        overlay(asBase, asBase, own);
        EXPECT_EQ(Witness(asBase), expected);
        BuildAttributes asOwn = own;
        overlay(asOwn, base, asOwn);
        EXPECT_EQ(Witness(asOwn), expected);
        const Witness expectedDifference(beyond(base, own));
        BuildAttributes differenceBase = base;
        BuildAttributes differenceOwn = own;
        differenceFromBase(differenceOwn, differenceBase, differenceOwn);
        EXPECT_EQ(Witness(differenceOwn), expectedDifference);
    }
}

TEST_F(InheritanceTest, LaysNothingOverNothing) {
    RandomSource random(32);
    for (int i = 0; i < 3000; ++i) {
        const BuildAttributes record = random.record();
        EXPECT_EQ(Witness(laidOver(record, record)), Witness(record));
        EXPECT_EQ(Witness(laidOver(BuildAttributes(), record)), Witness(record));
    }
}

TEST_F(InheritanceTest, DifferenceStatesEachSlotThatDiffers) {
    for (const TagRow& row : tagRows) {
        const std::string three = Witness::slotOf(withSlot(row.tag, 3), row.tag);
        const std::string nothing = row.form == TagForm_Text ? "''" : "0";
        const auto slot = [&row](const BuildAttributes& base, const BuildAttributes& own) {
            const Witness witness(beyond(base, own));
            EXPECT_FALSE(witness.stale);
            return witness.slots[row.tag];
        };
        EXPECT_EQ(slot(BuildAttributes(), withSlot(row.tag, 3)), three);
        EXPECT_EQ(slot(withSlot(row.tag, 4), withSlot(row.tag, 3)), three);
        EXPECT_EQ(slot(withSlot(row.tag, 3), withSlot(row.tag, 3)), "-");
        EXPECT_EQ(slot(withSlot(row.tag, 3), BuildAttributes()), nothing);
        if (row.form != TagForm_Text) {
            EXPECT_EQ(slot(BuildAttributes(), withSlot(row.tag, 0)), "-"); // absent counts as 0
        }
    }
}

TEST_F(InheritanceTest, DifferenceHasTheDifferenceOfTheValues) {
    RandomSource random(33);
    for (int i = 0; i < 2000; ++i) {
        BuildAttributes base = random.record();
        BuildAttributes own = random.record();
        const BuildAttributes out = beyond(base, own);
        for (BuildAttributes* const operand : {&base, &own}) {
            if (operand->derivedStale) {
                operand->rebuildFullAttr();
            }
        }
        FullAttr expected = defaultFullAttr();
        difference(expected, own.fullAttr, base.fullAttr);
        ASSERT_EQ(out.fullAttr, expected);
    }
}

TEST_F(InheritanceTest, DifferenceRebuildsWhatIsStale) {
    BuildAttributes base = recordWith({{Tag_CPU_arch, 10}});
    BuildAttributes own = recordWith({{Tag_CPU_arch, 9}});
    BuildAttributes out;
    differenceFromBase(out, base, own);
    EXPECT_FALSE(base.derivedStale);
    EXPECT_FALSE(own.derivedStale);
    EXPECT_NE(own.fullAttr, defaultFullAttr());
}

TEST_F(InheritanceTest, DifferenceOfListsAndTables) {
    BuildAttributes base;
    base.addCompatibilityTag(1, "a");
    base.addAlsoCompatibilityTag({6, 1U});
    base.setOtherNumericTag(1, 1);
    base.setOtherNumericTag(2, 2);
    base.setOtherNumericTag(3, 3);
    base.setOtherStringTag(5, "five");
    BuildAttributes own;
    own.addCompatibilityTag(1, "b");
    own.addCompatibilityTag(1, "a");
    own.addAlsoCompatibilityTag({6, 2U});
    own.addAlsoCompatibilityTag({6, 1U});
    own.setOtherNumericTag(1, 1);
    own.setOtherNumericTag(2, 7);
    own.setOtherNumericTag(4, 4);
    const Witness out(beyond(base, own));
    const std::vector<std::pair<uint32_t, std::string>> compatible = {{1, "b"}};
    EXPECT_EQ(out.compatible, compatible);
    EXPECT_EQ(out.alsoCompatible, std::vector<std::string>{"6=2"});
    EXPECT_EQ(out.numeric, (std::map<uint32_t, uint32_t>{{2, 7}, {3, 0}, {4, 4}}));
    EXPECT_EQ(out.strings, (std::map<uint32_t, std::string>{{5, ""}}));
    const Witness same(beyond(own, own));
    EXPECT_EQ(same.compatible, std::nullopt);
    EXPECT_EQ(same.alsoCompatible, std::nullopt);
    EXPECT_EQ(same.numeric, std::nullopt);
}

// The difference laid over the base says what the own record said, an absent slot as 0. Exceptions:
//  - `Tag_ABI_align_needed`, where the base's `Tag_AV_require8` or `Tag_AV_eba` is inherited: it
//    is settled anew;
//  - `Tag_conformance`, where an inherited tag brings the entry of the own vendor;
//  - lists: entries that only the base has stay, and nothing can take them away.
TEST_F(InheritanceTest, DifferenceLaidOverTheBaseGivesTheRecordBack) {
    RandomSource random(34);
    for (int i = 0; i < 5000; ++i) {
        const BuildAttributes base = random.record();
        const BuildAttributes own = random.record();
        const BuildAttributes back = laidOver(base, beyond(base, own));
        for (const TagRow& row : tagRows) {
            if (row.tag != Tag_ABI_align_needed && row.tag != Tag_conformance) {
                ASSERT_TRUE(back.m_StandardTags.hasEqualValue(row.tag, own.m_StandardTags))
                    << row.name;
            }
        }
        for (uint32_t entry = 0; entry < own.getAlsoCompatibilityTagCount(); ++entry) {
            ASSERT_NE(back.m_AlsoCompatibilityTags->find((*own.m_AlsoCompatibilityTags)[entry]),
                      AlsoCompatibilityTagList::NotFound);
        }
    }
}

} // namespace
} // namespace attributes::test
