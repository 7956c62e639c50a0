// The record: what it holds at first, its setters and what hangs on them, copies and equality.
#include "attributes/interface/build_attributes.h"

#include <set>
#include <string>

#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using BuildAttributesTest = RecordTest;
using BuildAttributesDeathTest = RecordTest;

// A record with each kind of content.
BuildAttributes fullRecord() {
    BuildAttributes record = recordWith({{Tag_CPU_arch, 10}, {Tag_AV_interworking, 1}});
    record.setCpuName("m9.main");
    record.addAlsoCompatibilityTag({6, 11U});
    record.addAlsoCompatibilityTag({5, "m9"});
    record.setOtherNumericTag(200, 7);
    record.setOtherStringTag(201, "text");
    return record;
}

TEST_F(BuildAttributesTest, TheDefaultValueHasItsSevenOptions) {
    const FullAttr value = defaultFullAttr();
    FullAttr expected;
    for (uint16_t& access : expected.access) {
        access = 0x0290;
    }
    expected.options = 0x818069;
    expected.abiVersion = 2;
    EXPECT_EQ(value, expected);
}

TEST_F(BuildAttributesTest, ANewRecordStatesNothing) {
    const BuildAttributes record;
    EXPECT_TRUE(record.present);
    EXPECT_FALSE(record.derivedStale);
    EXPECT_EQ(record.fullAttr, defaultFullAttr());
    for (const TagRow& row : tagRows) {
        EXPECT_FALSE(record.isPresent(row.tag));
    }
    EXPECT_EQ(record.m_CompatibilityTags, nullptr);
    EXPECT_EQ(record.m_AlsoCompatibilityTags, nullptr);
    EXPECT_EQ(record.otherNumericTags, nullptr);
    EXPECT_EQ(record.otherStringTags, nullptr);
}

TEST_F(BuildAttributesTest, TheEmptyRecordIsAllZero) {
    const BuildAttributes record((BuildAttributes::EmptyRecord()));
    EXPECT_FALSE(record.present);
    EXPECT_FALSE(record.derivedStale);
    EXPECT_EQ(record.fullAttr, FullAttr());
    EXPECT_EQ(Witness(record).slots, Witness(BuildAttributes()).slots);
}

TEST_F(BuildAttributesTest, EachSetterStoresAndMarksAsItsRowSays) {
    for (const TagRow& row : tagRows) {
        if (row.form == TagForm_Text) {
            continue;
        }
        BuildAttributes record;
        record.setTag(row.tag, 3);
        EXPECT_TRUE(record.isPresent(row.tag)) << row.name;
        EXPECT_EQ(record.getNumber(row.tag), 3U) << row.name;
        EXPECT_EQ(record.derivedStale, row.setsStale) << row.name;
        record.derivedStale = false;
        record.setTag(row.tag, 0);
        EXPECT_TRUE(record.isPresent(row.tag)) << row.name;
        EXPECT_EQ(record.getNumber(row.tag), 0U) << row.name;
        EXPECT_EQ(record.derivedStale, row.setsStale) << row.name;
    }
}

TEST_F(BuildAttributesTest, TextSettersStoreAndDoNotMark) {
    BuildAttributes record;
    record.setCpuRawName("raw");
    record.setCpuName("name");
    record.setConformance("2.0");
    EXPECT_STREQ(record.getText(Tag_CPU_raw_name), "raw");
    EXPECT_STREQ(record.getText(Tag_CPU_name), "name");
    EXPECT_STREQ(record.getText(Tag_conformance), "2.0");
    EXPECT_FALSE(record.derivedStale);
    record.setCpuName("");
    EXPECT_TRUE(record.isPresent(Tag_CPU_name));
}

TEST_F(BuildAttributesDeathTest, TextSettersTakeUpTo31Characters) {
    const std::string fits(31, 'n');
    const std::string tooLong(32, 'n');
    BuildAttributes record;
    record.setCpuRawName(fits.c_str());
    EXPECT_EQ(record.getText(Tag_CPU_raw_name), fits);
    const char* const file = "attributes/src/build_attributes";
    EXPECT_FAULT(record.setCpuRawName(tooLong.c_str()), file,
                 "name != NULL && strlen(name) + 1 <= sizeof(m_StandardTags.m_CpuRawName)");
    EXPECT_FAULT(record.setCpuName(nullptr), file,
                 "name != NULL && strlen(name) + 1 <= sizeof(m_StandardTags.m_CpuName)");
    EXPECT_FAULT(
        record.setConformance(tooLong.c_str()), file,
        "conformance != NULL && strlen(conformance) + 1 <= sizeof(m_StandardTags.m_Conformance)");
}

TEST_F(BuildAttributesTest, WithChecksSwitchedOffLongTextsAreCut) {
    platform::setCheckLevel("none");
    BuildAttributes record;
    record.setCpuRawName(std::string(40, 'n').c_str());
    EXPECT_EQ(record.getText(Tag_CPU_raw_name), std::string(31, 'n'));
}

TEST_F(BuildAttributesTest, OptimizationGoalsUpdateTheOptionsAtOnce) {
    for (uint32_t goals = 0; goals < 8; ++goals) {
        BuildAttributes record;
        record.setTag(Tag_ABI_optimization_goals, goals);
        const bool isTime = goals == 1 || goals == 2;
        EXPECT_EQ(record.fullAttr.options, isTime ? 0x838069U : 0x818069U) << goals;
        EXPECT_FALSE(record.derivedStale);
        record.setTag(Tag_ABI_optimization_goals, 4);
        EXPECT_EQ(record.fullAttr.options, 0x818069U);
    }
}

TEST_F(BuildAttributesTest, InterworkingAndDivideAddAndRemoveTheOwnVendor) {
    for (const auto& [first, second] : {std::pair(Tag_AV_interworking, Tag_AV_mdivide),
                                        std::pair(Tag_AV_mdivide, Tag_AV_interworking)}) {
        BuildAttributes record;
        record.setTag(first, 0);
        EXPECT_EQ(record.m_CompatibilityTags, nullptr);
        record.setTag(first, 1);
        EXPECT_NE(record.findCompatibilityTag(2, "QEL"), nullptr);
        record.setTag(second, 5);
        EXPECT_EQ(record.getCompatibilityTagCount(), 1U);
        record.setTag(first, 0);
        EXPECT_NE(record.findCompatibilityTag(2, "QEL"), nullptr);
        record.addCompatibilityTag(1, "QEL");
        record.setTag(second, 0);
        EXPECT_EQ(record.findCompatibilityTag(2, "QEL"), nullptr);
        EXPECT_NE(record.findCompatibilityTag(1, "QEL"), nullptr);
        EXPECT_TRUE(record.derivedStale);
    }
}

TEST_F(BuildAttributesTest, AValueThatIsZeroInEightBitsCountsAsZero) {
    EXPECT_EQ(recordWith({{Tag_AV_interworking, 256}}).getCompatibilityTagCount(), 0U);
}

// What `Tag_ABI_align_needed` becomes; "-" is an absent tag.
struct AlignmentCase {
    int eba;
    int require8;
    uint32_t afterRequire8; // where `Tag_AV_eba` was there before
    uint32_t afterEba;      // where `Tag_AV_require8` was
};
constexpr int Absent = -1;
constexpr AlignmentCase alignmentCases[] = {
    {Absent, 0, 1, 9}, {Absent, 1, 0, 9}, {Absent, 2, 0, 9}, {0, Absent, 9, 1}, {1, Absent, 9, 0},
    {2, Absent, 9, 2}, {3, Absent, 9, 0}, {0, 0, 1, 1},      {0, 1, 0, 0},      {0, 2, 0, 0},
    {1, 0, 0, 0},      {1, 1, 0, 0},      {2, 0, 2, 2},      {2, 1, 2, 2},      {3, 0, 0, 0},
};

TEST_F(BuildAttributesTest, Require8AndEbaSettleTheAlignmentNeeded) {
    for (const AlignmentCase& row : alignmentCases) {
        for (const bool ebaIsLast : {false, true}) {
            if ((ebaIsLast ? row.eba : row.require8) == Absent) {
                continue;
            }
            BuildAttributes record;
            if (ebaIsLast && row.require8 != Absent) {
                record.setTag(Tag_AV_require8, static_cast<uint32_t>(row.require8));
            } else if (!ebaIsLast && row.eba != Absent) {
                record.setTag(Tag_AV_eba, static_cast<uint32_t>(row.eba));
            }
            record.setTag(Tag_ABI_align_needed, 9);
            record.derivedStale = false;
            if (ebaIsLast) {
                record.setTag(Tag_AV_eba, static_cast<uint32_t>(row.eba));
            } else {
                record.setTag(Tag_AV_require8, static_cast<uint32_t>(row.require8));
            }
            EXPECT_EQ(record.getNumber(Tag_ABI_align_needed),
                      ebaIsLast ? row.afterEba : row.afterRequire8)
                << row.eba << " " << row.require8 << " " << ebaIsLast;
            EXPECT_TRUE(record.derivedStale);
        }
    }
}

TEST_F(BuildAttributesTest, CompatibilityReplacesTheClaimOfConformance) {
    BuildAttributes record;
    record.setConformance("2.08");
    EXPECT_TRUE(record.addCompatibilityTag(1, "gnat"));
    EXPECT_FALSE(record.isPresent(Tag_conformance));
    record.setConformance("2.08");
    EXPECT_FALSE(record.isPresent(Tag_conformance));
    record.setDefaultConformance();
    EXPECT_FALSE(record.isPresent(Tag_conformance));
    EXPECT_FALSE(record.addCompatibilityTag(1, "gnat"));
    EXPECT_EQ(record.removeCompatibilityTag("gnat"), 1U);
    record.setDefaultConformance();
    EXPECT_STREQ(record.getText(Tag_conformance), "2.09");
    EXPECT_FALSE(record.derivedStale);
}

TEST_F(BuildAttributesTest, AnEntryThatIsThereAlreadyClearsConformanceToo) {
    BuildAttributes record;
    record.addCompatibilityTag(1, "gnat");
    record.m_StandardTags.setText(Tag_conformance, "x");
    EXPECT_FALSE(record.addCompatibilityTag(1, "gnat"));
    EXPECT_FALSE(record.isPresent(Tag_conformance));
}

TEST_F(BuildAttributesTest, CompatibilityIsFoundAndRemovedByVendor) {
    BuildAttributes record;
    EXPECT_EQ(record.findCompatibilityTag(1, "a"), nullptr);
    EXPECT_EQ(record.removeCompatibilityTag("a"), 0U);
    record.addCompatibilityTag(1, "a");
    record.addCompatibilityTag(2, "b");
    record.addCompatibilityTag(2, "a");
    EXPECT_EQ(record.findCompatibilityTag(2, "b")->flag, 2U);
    EXPECT_EQ(record.removeCompatibilityTag("a"), 2U);
    EXPECT_EQ(record.getCompatibilityTagCount(), 1U);
}

TEST_F(BuildAttributesTest, CopiesAreDeepAndTakeTheMarkAlong) {
    BuildAttributes original = fullRecord();
    ASSERT_TRUE(original.derivedStale);
    BuildAttributes copy(original);
    BuildAttributes assigned;
    assigned.addCompatibilityTag(1, "gone");
    assigned = original;
    const Witness expected(original);
    original.addCompatibilityTag(7, "later");
    original.addAlsoCompatibilityTag({6, 12U});
    original.setOtherNumericTag(200, 8);
    original.setOtherStringTag(201, "changed");
    EXPECT_EQ(Witness(copy), expected);
    EXPECT_EQ(Witness(assigned), expected);
    copy = *&copy;
    EXPECT_EQ(Witness(copy), expected);
    BuildAttributes moved(std::move(copy));
    EXPECT_EQ(Witness(moved), expected);
}

TEST_F(BuildAttributesTest, EqualityIgnoresTheDerivedValueAndItsMark) {
    BuildAttributes a = recordWith({{Tag_CPU_arch, 10}});
    BuildAttributes b = a;
    b.rebuildFullAttr();
    EXPECT_NE(a.fullAttr, b.fullAttr);
    EXPECT_NE(a.derivedStale, b.derivedStale);
    EXPECT_TRUE(a.equals(b));
    EXPECT_EQ(a.hash(), b.hash());
}

TEST_F(BuildAttributesTest, EmptyRecordsAreEqualToEachOtherOnly) {
    BuildAttributes empty((BuildAttributes::EmptyRecord()));
    BuildAttributes filled = fullRecord();
    filled.present = false;
    EXPECT_TRUE(empty.equals(filled));
    EXPECT_EQ(empty.hash(), filled.hash());
    EXPECT_FALSE(empty.equals(BuildAttributes()));
    EXPECT_FALSE(BuildAttributes().equals(empty));
}

TEST_F(BuildAttributesTest, EachSlotSeparatesRecordsButForFive) {
    uint32_t gaps = 0;
    for (const TagRow& row : tagRows) {
        BuildAttributes absent;
        BuildAttributes zero;
        BuildAttributes other;
        if (row.form == TagForm_Text) {
            zero.m_StandardTags.setText(row.tag, "");
            other.m_StandardTags.setText(row.tag, "x");
        } else {
            zero.m_StandardTags.setNumber(row.tag, 0);
            other.m_StandardTags.setNumber(row.tag, 1);
        }
        const bool isGap = row.tag == Tag_Q64_ISA_use || row.tag == Tag_PAC_extension ||
                           row.tag == Tag_BTI_extension || row.tag == Tag_PACRET_use ||
                           row.tag == Tag_BTI_use;
        gaps += isGap ? 1 : 0;
        EXPECT_EQ(absent.equals(zero), isGap) << row.name;
        EXPECT_EQ(zero.equals(other), isGap) << row.name;
        EXPECT_EQ(other.equals(absent), isGap) << row.name;
        EXPECT_EQ(zero.hash() == other.hash(), isGap) << row.name;
        EXPECT_TRUE(other.equals(BuildAttributes(other))) << row.name;
    }
    EXPECT_EQ(gaps, 5U);
}

TEST_F(BuildAttributesTest, ListsSeparateRecordsByTheirEntriesAndTheirOrder) {
    BuildAttributes a;
    BuildAttributes b;
    a.addCompatibilityTag(1, "x");
    EXPECT_FALSE(a.equals(b));
    b.addCompatibilityTag(1, std::string("x").c_str());
    b.m_CompatibilityTags->setVendorName(0, "x");
    EXPECT_TRUE(a.equals(b));
    a.addCompatibilityTag(2, "y");
    a.addCompatibilityTag(3, "z");
    b.addCompatibilityTag(3, "z");
    b.addCompatibilityTag(2, "y");
    EXPECT_FALSE(a.equals(b));
    a = BuildAttributes();
    b = BuildAttributes();
    a.addAlsoCompatibilityTag({6, 1U});
    EXPECT_FALSE(a.equals(b));
    b.addAlsoCompatibilityTag({6, 2U});
    EXPECT_FALSE(a.equals(b));
}

TEST_F(BuildAttributesTest, AnEmptyListIsNotNone) {
    BuildAttributes record;
    record.addCompatibilityTag(1, "x");
    record.removeCompatibilityTag("x");
    EXPECT_EQ(record.getCompatibilityTagCount(), 0U);
    EXPECT_FALSE(record.equals(BuildAttributes()));
    EXPECT_FALSE(BuildAttributes().equals(record));
    EXPECT_TRUE(record.equals(BuildAttributes(record)));
}

TEST_F(BuildAttributesTest, TablesSeparateRecordsByKeysAndValuesInAnyOrder) {
    BuildAttributes a;
    BuildAttributes b;
    a.setOtherNumericTag(1, 1);
    EXPECT_FALSE(a.equals(b));
    a.setOtherNumericTag(2, 2);
    b.setOtherNumericTag(2, 2);
    EXPECT_FALSE(a.equals(b));
    b.setOtherNumericTag(1, 1);
    EXPECT_TRUE(a.equals(b));
    EXPECT_EQ(a.hash(), b.hash());
    b.setOtherNumericTag(1, 2);
    EXPECT_FALSE(a.equals(b));
    a = BuildAttributes();
    b = BuildAttributes();
    a.setOtherStringTag(1, "x");
    b.setOtherStringTag(1, "y");
    EXPECT_FALSE(a.equals(b));
    b.setOtherStringTag(1, "x");
    EXPECT_TRUE(a.equals(b));
    b.setOtherStringTag(3, "x");
    EXPECT_FALSE(a.equals(b));
    EXPECT_FALSE(b.equals(a));
}

TEST_F(BuildAttributesTest, EqualityAndHashFollowTheWitnessOnRandomRecords) {
    RandomSource random(20);
    uint32_t equalPairs = 0;
    for (int round = 0; round < 5000; ++round) {
        const BuildAttributes a = random.record();
        BuildAttributes b = a;
        // One change, which may change nothing.
        switch (random.below(4)) {
        case 0:
            b.m_StandardTags.clear(static_cast<Tag>(random.below(Tag_Count)));
            break;
        case 1:
            b.addCompatibilityTag(random.below(3), "QEL");
            break;
        case 2:
            b.setOtherNumericTag(random.below(4), random.below(3));
            break;
        default:
            b = random.oneIn(2) ? random.record() : a;
        }
        const bool isEqual = Witness(a).isEquivalent(Witness(b));
        EXPECT_EQ(a.equals(b), isEqual) << testing::PrintToString(Witness(a)) << "\n"
                                        << testing::PrintToString(Witness(b));
        EXPECT_EQ(b.equals(a), isEqual);
        if (isEqual) {
            ++equalPairs;
            EXPECT_EQ(a.hash(), b.hash());
        }
    }
    EXPECT_GT(equalPairs, 500U);
    EXPECT_LT(equalPairs, 4500U);
}

} // namespace
} // namespace attributes::test
