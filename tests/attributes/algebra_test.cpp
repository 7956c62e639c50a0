// The algebra of values: its tables with their names, and its rules.
#include "attributes/interface/attribute_algebra.h"

#include "tests/attributes/decoration_text.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using namespace feature_word;

FullAttr withIsa(const IsaSet& isa) {
    FullAttr value;
    value.isa = isa;
    return value;
}

FullAttr withOptions(uint64_t options) {
    FullAttr value;
    value.options = options;
    return value;
}

FullAttr withAccess(uint32_t word, uint32_t access) {
    FullAttr value;
    value.access[word] = static_cast<uint16_t>(access);
    return value;
}

bool isPossible(const FullAttr& a, const FullAttr& b) {
    FullAttr out;
    return combine(out, a, b);
}

TEST(Algebra, SignificantFeatures) {
    EXPECT_EQ(significantIsa, (IsaSet{0xFFFFFFFFFFFFFFFF, 0x103FF}));
}

TEST(Algebra, ConflictsOfFeaturesHaveTheirNames) {
    const struct {
        uint64_t mask;
        const char* first;
        const char* second;
    } expected[] = {
        {0x0880000000000000, "FLA", "ZLT"},
        {0x6000000000000000, "pure-endian double", "mixed-endian double"},
        {0x1001, "qel-isa", "m-profile"},
        {0x1000010000000000, "Q64", "SoftZLT"},
    };
    static_assert(std::size(expected) == IsaConflictCount);
    for (uint32_t i = 0; i < IsaConflictCount; ++i) {
        EXPECT_EQ(isaConflicts[i].mask, (IsaSet{expected[i].mask, 0}));
        EXPECT_STREQ(isaConflicts[i].first, expected[i].first);
        EXPECT_STREQ(isaConflicts[i].second, expected[i].second);
        const ConflictNames names = findIsaConflict({expected[i].mask, 0xFFFF});
        EXPECT_STREQ(names.first, expected[i].first);
        EXPECT_STREQ(names.second, expected[i].second);
        // Each half alone is possible, both together are not.
        const uint64_t lowest = expected[i].mask & (0 - expected[i].mask);
        const FullAttr one = withIsa({lowest, 0});
        const FullAttr other = withIsa({expected[i].mask & ~lowest, 0});
        EXPECT_EQ(findIsaConflict(one.isa).first, nullptr);
        EXPECT_EQ(findIsaConflict(other.isa).first, nullptr);
        EXPECT_TRUE(isPossible(one, one)) << i;
        EXPECT_TRUE(isPossible(other, other)) << i;
        EXPECT_FALSE(isPossible(one, other)) << i;
        EXPECT_FALSE(isPossible(other, one)) << i;
    }
    // The first row that is hit counts.
    EXPECT_STREQ(findIsaConflict({~uint64_t{0}, 0}).first, "FLA");
    EXPECT_STREQ(findIsaConflict({0x6000000000001001, 0}).first, "pure-endian double");
}

TEST(Algebra, ConflictsOfOptionsHaveTheirNames) {
    const struct {
        uint64_t mask;
        const char* first;
        const char* second;
    } expected[] = {
        {0x30, "stack-checked", "not-stack-checked"},
        {0x880000, "require 4-byte alignment of 8-byte datatypes",
         "require 8-byte alignment of 8-byte datatypes"},
    };
    static_assert(std::size(expected) == OptionConflictCount);
    for (uint32_t i = 0; i < OptionConflictCount; ++i) {
        EXPECT_EQ(optionConflicts[i].mask, expected[i].mask);
        const ConflictNames names = findOptionConflict(expected[i].mask | 0x7);
        EXPECT_STREQ(names.first, expected[i].first);
        EXPECT_STREQ(names.second, expected[i].second);
        const uint64_t lowest = expected[i].mask & (0 - expected[i].mask);
        EXPECT_EQ(findOptionConflict(lowest).first, nullptr);
        EXPECT_EQ(findOptionConflict(expected[i].mask & ~lowest).first, nullptr);
        EXPECT_FALSE(isPossible(withOptions(lowest), withOptions(expected[i].mask)));
        EXPECT_TRUE(isPossible(withOptions(lowest), withOptions(lowest)));
    }
}

TEST(Algebra, AStackThatIsCheckedAndNotIsImpossibleButFilledIn) {
    FullAttr checked = withOptions(option_bit::STKCKD);
    checked.isa = QEL_ISAv5;
    checked.access[0] = 0x10;
    checked.requirements = requirement_bit::REQ8;
    checked.abiVersion = 2;
    checked.targetClass = 3;
    FullAttr unchecked = withOptions(option_bit::NOT_STKCKD);
    unchecked.isa = FINCH_ISAv1;
    unchecked.access[3] = 0x20;
    unchecked.targetKind = target_kind::ARCHITECTURE;
    FullAttr out = defaultFullAttr();
    EXPECT_FALSE(combine(out, checked, unchecked));
    FullAttr expected;
    expected.isa = QEL_ISAv5 | FINCH_ISAv1;
    expected.targetClass = 3;
    expected.targetKind = target_kind::ARCHITECTURE;
    expected.access[0] = 0x10;
    expected.access[3] = 0x20;
    expected.options = 0x30;
    expected.requirements = requirement_bit::REQ8;
    EXPECT_EQ(out, expected);
}

TEST(Algebra, RequiringSpreadsAndPreservingNeedsBoth) {
    for (uint64_t a = 0; a < 8; ++a) {
        for (uint64_t b = 0; b < 8; ++b) {
            FullAttr x;
            FullAttr y;
            x.requirements = a;
            y.requirements = b;
            FullAttr out;
            combine(out, x, y);
            EXPECT_EQ(out.requirements, ((a | b) & 1) | (a & b & 2));
        }
    }
}

TEST(Algebra, TheOlderFormatCounts) {
    FullAttr x;
    FullAttr y;
    x.abiVersion = 2;
    FullAttr out;
    combine(out, x, y);
    EXPECT_EQ(out.abiVersion, 0U);
    y.abiVersion = 2;
    combine(out, x, y);
    EXPECT_EQ(out.abiVersion, 2U);
    y.abiVersion = ~uint64_t{0};
    combine(out, x, y);
    EXPECT_EQ(out.abiVersion, 2U);
}

TEST(Algebra, TheSecondZltNeedsItsBase) {
    const FullAttr zlt = withIsa(ZLT_ISAv2);
    FullAttr out;
    EXPECT_FALSE(combineIsa(out, zlt, FullAttr()));
    EXPECT_EQ(out.isa, ZLT_ISAv2);
    EXPECT_TRUE(combineIsa(out, zlt, withIsa(PAIR_PREFETCH)));
    EXPECT_TRUE(combineIsa(out, zlt, withIsa(Q64_ISAv8)));
    EXPECT_TRUE(combineIsa(out, zlt, withIsa(Q64_ISAv9)));
    EXPECT_FALSE(combineIsa(out, zlt, withIsa(without(Q64_ISAv9, Q64_ISAv8))));
    EXPECT_FALSE(combineIsa(out, withIsa(FP_ISA_QELv8), FullAttr()));
    EXPECT_TRUE(combineIsa(out, withIsa(ZLT_ISAv1), FullAttr()));
    // Half of it from each side.
    EXPECT_FALSE(combineIsa(out, withIsa(ZLT_ISAv1), withIsa(without(ZLT_ISAv2, ZLT_ISAv1))));
    EXPECT_FALSE(isPossible(zlt, FullAttr()));
}

TEST(Algebra, LoadsBelowNaturalAlignmentClashWithUnalignedOnes) {
    EXPECT_FALSE(isPossible(withAccess(0, 0x20), withAccess(1, 0x2000)));
    EXPECT_TRUE(isPossible(withAccess(0, 0x20), withAccess(3, 0x2000)));
    const uint32_t aligned = 0x016E;
    const uint32_t unaligned = 0xFC00;
    for (uint32_t a = 0; a < 16; ++a) {
        for (uint32_t b = 0; b < 16; ++b) {
            for (uint32_t i = 0; i < 4; ++i) {
                for (uint32_t j = 0; j < 4; ++j) {
                    const bool clash = i < 3 && j < 3 &&
                                       (((aligned >> a & 1) != 0 && (unaligned >> b & 1) != 0) ||
                                        ((aligned >> b & 1) != 0 && (unaligned >> a & 1) != 0));
                    EXPECT_EQ(isPossible(withAccess(i, 1U << a), withAccess(j, 1U << b)), !clash)
                        << a << " " << b << " " << i << " " << j;
                }
            }
        }
    }
    FullAttr both = withAccess(0, 0x0120);
    EXPECT_EQ(findAccessConflict(both).first, nullptr);
    both.access[2] = 0x8000;
    EXPECT_STREQ(findAccessConflict(both).first, "L/S");
    EXPECT_STREQ(findAccessConflict(both).second, "UL/US");
}

TEST(Algebra, CommonLeavesTheTargetAlone) {
    RandomSource random(11);
    for (int i = 0; i < 1000; ++i) {
        const FullAttr a = random.value();
        const FullAttr b = random.value();
        FullAttr out = random.value();
        const FullAttr before = out;
        common(out, a, b);
        EXPECT_EQ(out.targetClass, before.targetClass);
        EXPECT_EQ(out.targetKind, before.targetKind);
        EXPECT_EQ(out.isa, (IsaSet{a.isa.low & b.isa.low, a.isa.high & b.isa.high}));
        for (int word = 0; word < 4; ++word) {
            EXPECT_EQ(out.access[word], a.access[word] & b.access[word]);
        }
        EXPECT_EQ(out.options, a.options & b.options);
        EXPECT_EQ(out.requirements, a.requirements & b.requirements);
        EXPECT_EQ(out.abiVersion, a.abiVersion & b.abiVersion);
    }
}

TEST(Algebra, DifferenceKeepsSignificantFeaturesOnly) {
    FullAttr out;
    difference(out, withIsa({0, ~uint64_t{0}}), FullAttr());
    EXPECT_EQ(out.isa.high & ~uint64_t{0x103FF}, 0U);
    difference(out, withIsa({0, 0xFFFE0000}), FullAttr());
    EXPECT_EQ(out.isa, IsaSet());
}

TEST(Algebra, DifferenceStillSaysThatThereIsAQelSet) {
    FullAttr out;
    difference(out, withIsa(KERNEL_ISA | QEL_ISAv5), withIsa(QEL_ISAv5));
    EXPECT_EQ(out.isa, KERNEL_ISA | QEL_ISAv3);
    difference(out, withIsa(KERNEL_ISA), withIsa(QEL_ISAv5));
    EXPECT_EQ(out.isa, KERNEL_ISA | QEL_ISAv3);
    difference(out, withIsa(KERNEL_ISA), withIsa(FINCH_ISAv2));
    EXPECT_EQ(out.isa, KERNEL_ISA);
    // Any bit of a level will do, and levels are completed.
    difference(out, withIsa({0, 0x10000}), FullAttr());
    EXPECT_TRUE(hasAll(out.isa, QEL_ISAv3));
    difference(out, withIsa(QEL_ISAv7), withIsa(QEL_ISAv5));
    EXPECT_EQ(out.isa, QEL_ISAv7);
}

TEST(Algebra, DifferenceCompletesPatternsOfOptions) {
    const struct {
        uint64_t a;
        uint64_t b;
        uint64_t difference;
    } cases[] = {
        {0x30000, 0x10000, 0x30000},    {0x10000, 0, 0x10000},
        {0x20000, 0, 0x30000},          {0x700000, 0x300000, 0x700000},
        {0x700000, 0x100000, 0x700000}, {0x300000, 0x100000, 0x300000},
        {0x100000, 0, 0x100000},        {0x400000, 0x400000, 0},
        {0x420000, 0, 0x730000},        {0x818069, 0x818069, 0},
        {0x818069, 0x69, 0x818000},
    };
    for (const auto& row : cases) {
        FullAttr out;
        difference(out, withOptions(row.a), withOptions(row.b));
        EXPECT_EQ(out.options, row.difference) << std::hex << row.a << " " << row.b;
    }
}

TEST(Algebra, DifferenceOfTheOtherFieldsIsPlain) {
    FullAttr a;
    FullAttr b;
    a.access[0] = 0x0290;
    b.access[0] = 0x0010;
    a.access[3] = 0xC290;
    b.access[3] = 0xFFFF;
    a.requirements = 3;
    b.requirements = 1;
    a.abiVersion = 2;
    FullAttr out;
    out.targetClass = 9;
    out.targetKind = 8;
    difference(out, a, b);
    EXPECT_EQ(out.access[0], 0x0280);
    EXPECT_EQ(out.access[3], 0);
    EXPECT_EQ(out.requirements, 2U);
    EXPECT_EQ(out.abiVersion, 2U);
    EXPECT_EQ(out.targetClass, 9U);
    EXPECT_EQ(out.targetKind, 8U);
}

TEST(Algebra, NothingIsLeftOfASetWithoutItselfButItsQelSet) {
    RandomSource random(12);
    uint32_t withQel = 0;
    for (int i = 0; i < 5000; ++i) {
        const FullAttr a = random.value();
        FullAttr out;
        difference(out, a, a);
        FullAttr expected;
        if (hasAny(a.isa, QEL_ISAv9)) {
            ++withQel;
            expected.isa = QEL_ISAv3;
        }
        ASSERT_EQ(out, expected);
    }
    EXPECT_GT(withQel, 100U);
    EXPECT_LT(withQel, 5000U);
}

// The rule of one comparison, said in another way.
uint32_t expectedAnswer(uint64_t x, uint32_t mode, uint64_t y) {
    const bool isSubset = (x | y) == y;
    const bool isSuperset = (x | y) == x;
    if (isSubset && isSuperset) {
        return mode | 1U;
    }
    if ((mode & 6U) == 2 && !isSubset) {
        return 0;
    }
    if ((mode & 6U) == 4 && !isSuperset) {
        return 0;
    }
    return mode & 6U;
}

TEST(Algebra, ComparisonInAllModes) {
    const uint64_t sets[] = {0, 1, 2, 3, 6};
    for (uint32_t mode = 0; mode < 8; ++mode) {
        for (const uint64_t x : sets) {
            for (const uint64_t y : sets) {
                const uint32_t expected = expectedAnswer(x, mode, y);
                EXPECT_EQ(compareOptions(withOptions(x), mode, withOptions(y)), expected)
                    << x << " " << mode << " " << y;
                EXPECT_EQ(compareIsa(withIsa({x, 0}), mode, withIsa({y, 0})), expected);
                EXPECT_EQ(compareIsa(withIsa({0, x}), mode, withIsa({0, y})), expected);
            }
        }
    }
}

TEST(Algebra, ComparisonInTheSenseOfCallers) {
    const FullAttr small = withIsa(QEL_ISAv4);
    const FullAttr large = withIsa(QEL_ISAv5);
    const FullAttr other = withIsa(FINCH_ISAv2);
    EXPECT_NE(compareIsa(small, 3, small) & 1U, 0U);
    EXPECT_EQ(compareIsa(small, 3, large), 2U);
    EXPECT_EQ(compareIsa(large, 3, small), 0U);
    EXPECT_EQ(compareIsa(large, 5, small), 4U);
    EXPECT_EQ(compareIsa(small, 3, other), 0U);
    EXPECT_EQ(compareIsa(small, 5, other), 0U);
    EXPECT_EQ(compareIsa(small, 1, large), 0U);
}

TEST(Algebra, FeaturesThatAreNotSignificantNeverSeparate) {
    EXPECT_EQ(compareIsa(withIsa({1, 0x400}), 1, withIsa({1, 0x20000})), 1U);
    EXPECT_EQ(compareIsa(withIsa({1, 0x10000}), 1, withIsa({1, 0})), 0U);
}

TEST(Algebra, ComparisonOfAccessIsThatOfItsFourWordsTogether) {
    RandomSource random(13);
    for (int i = 0; i < 5000; ++i) {
        FullAttr a;
        FullAttr b;
        for (int word = 0; word < 4; ++word) {
            a.access[word] = static_cast<uint16_t>(random.below(4));
            b.access[word] =
                random.oneIn(2) ? a.access[word] : static_cast<uint16_t>(random.below(4));
        }
        const uint32_t mode = random.below(8);
        uint32_t expected = ~0U;
        for (int word = 0; word < 4; ++word) {
            expected &= expectedAnswer(a.access[word], mode, b.access[word]);
        }
        ASSERT_EQ(compareAccess(a, mode, b), expected);
    }
    // One word that is larger among equal ones.
    EXPECT_EQ(compareAccess(withAccess(2, 1), 3, withAccess(2, 3)), 2U);
    EXPECT_EQ(compareAccess(withAccess(2, 1), 3, withAccess(2, 1)), 3U);
}

TEST(Algebra, NeitherRequirementsNorFormatAreCompared) {
    FullAttr a;
    FullAttr b;
    a.requirements = 3;
    a.abiVersion = 2;
    a.targetClass = 1;
    EXPECT_EQ(compareIsa(a, 1, b) & compareAccess(a, 1, b) & compareOptions(a, 1, b), 1U);
}

TEST(Algebra, TheDefaultOfDoublesAddsOneFeature) {
    RandomSource random(14);
    for (int i = 0; i < 2000; ++i) {
        FullAttr value = random.value();
        // Twice, since what `TRGf` implies comes after the rule that would complete it.
        normaliseIsa(value.isa);
        normaliseIsa(value.isa);
        FullAttr expected = value;
        setWord(expected.isa, PURE_DOUBLES);
        addDoublesDefault(value);
        ASSERT_EQ(value, expected);
    }
    FullAttr open = withIsa(ZLT_HALF);
    addDoublesDefault(open);
    EXPECT_TRUE(hasAll(open.isa, FP_ISA_QELv8)); // completed on the way
}
TEST(SameVariant, LooksAtFeaturesOptionsAndAccessAlone) {
    const FullAttr none;
    EXPECT_TRUE(sameVariant(none, none));
    for (uint32_t bit = 0; bit < 64; ++bit) {
        const uint64_t value = uint64_t{1} << bit;
        EXPECT_FALSE(sameVariant(none, withIsa({value, 0}))) << bit;
        EXPECT_EQ(sameVariant(withIsa({0, value}), none), (value & 0x103FF) == 0) << bit;
        EXPECT_FALSE(sameVariant(none, withOptions(value))) << bit;
    }
    for (uint32_t word = 0; word < 4; ++word) {
        for (uint32_t bit = 0; bit < 16; ++bit) {
            EXPECT_FALSE(sameVariant(withAccess(word, 1U << bit), none)) << word << " " << bit;
        }
    }
    FullAttr others;
    others.targetClass = 1;
    others.targetKind = 2;
    others.requirements = 3;
    others.abiVersion = 2;
    EXPECT_TRUE(sameVariant(none, others));
}

} // namespace
} // namespace attributes::test
