// The laws of the algebra, on random values.
#include "attributes/interface/attribute_algebra.h"

#include <string>

#include "tests/attributes/decoration_text.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using namespace feature_word;

// Values with bits that a rule drops are told apart from the others.
TEST(AlgebraLaws, CombiningIsCommutativeAndAssociative) {
    RandomSource random(15);
    uint32_t possible = 0;
    for (int i = 0; i < 20000; ++i) {
        // Values with a few bits, and some with many.
        const bool isSparse = random.oneIn(2);
        const FullAttr a = isSparse ? random.sparseValue() : random.value();
        const FullAttr b = isSparse ? random.sparseValue() : random.value();
        const FullAttr c = isSparse ? random.sparseValue() : random.value();
        FullAttr ab;
        FullAttr ba;
        ASSERT_EQ(combine(ab, a, b), combine(ba, b, a));
        ASSERT_EQ(ab, ba);
        FullAttr bc;
        combine(bc, b, c);
        FullAttr left;
        FullAttr right;
        // What is possible depends on the whole alone, so the answers agree as well.
        const bool isWholePossible = combine(left, ab, c);
        ASSERT_EQ(isWholePossible, combine(right, a, bc));
        ASSERT_EQ(left, right);
        possible += isWholePossible ? 1 : 0;
        // A set that is impossible stays so, but for one that lacks the base of its unit.
        FullAttr same;
        if (isWholePossible && !hasAny(c.isa, PAIR_PREFETCH | Q64_ISAv8)) {
            ASSERT_TRUE(combine(same, ab, ab));
        }
    }
    EXPECT_GT(possible, 5000U);
    EXPECT_LT(possible, 15000U);
}

TEST(AlgebraLaws, CombiningASetWithItselfGivesTheSet) {
    RandomSource random(16);
    for (int i = 0; i < 20000; ++i) {
        FullAttr a = random.value();
        FullAttr out;
        combine(out, a, a);
        ASSERT_EQ(out, a);
        // Requirements without a name are dropped, once.
        a.requirements |= 0x14;
        combine(out, a, a);
        ASSERT_NE(out, a);
        a.requirements &= 3;
        ASSERT_EQ(out, a);
    }
}

TEST(AlgebraLaws, CommonIsCommutativeAssociativeAndIdempotent) {
    RandomSource random(17);
    for (int i = 0; i < 20000; ++i) {
        const FullAttr a = random.value();
        const FullAttr b = random.value();
        const FullAttr c = random.value();
        FullAttr ab;
        FullAttr ba;
        common(ab, a, b);
        common(ba, b, a);
        ASSERT_EQ(ab, ba);
        FullAttr bc;
        common(bc, b, c);
        FullAttr left;
        FullAttr right;
        common(left, ab, c);
        common(right, a, bc);
        ASSERT_EQ(left, right);
        FullAttr same = a;
        common(same, a, a);
        ASSERT_EQ(same, a);
        // What two sets share is part of both.
        ASSERT_NE(compareIsa(ab, 3, a) & compareOptions(ab, 3, b) & compareAccess(ab, 3, a), 0U);
    }
}

TEST(AlgebraLaws, ComparisonTurnsAround) {
    RandomSource random(18);
    for (int i = 0; i < 20000; ++i) {
        const FullAttr a = random.value();
        const FullAttr b = random.oneIn(3) ? a : random.value();
        ASSERT_EQ(compareOptions(a, 3, b) == 2, compareOptions(b, 5, a) == 4);
        ASSERT_EQ(compareIsa(a, 3, b) == 2, compareIsa(b, 5, a) == 4);
        ASSERT_EQ(compareOptions(a, 1, b), a.options == b.options ? 1U : 0U);
    }
}

TEST(AlgebraLaws, ResultsMayBeOperands) {
    RandomSource random(19);
    for (int i = 0; i < 5000; ++i) {
        const FullAttr a = random.value();
        const FullAttr b = random.value();
        for (const auto operation : {&common, &difference}) {
            FullAttr first = a;
            FullAttr apart = a;
            operation(apart, a, b);
            operation(first, first, b);
            ASSERT_EQ(first, apart);
            FullAttr second = b;
            apart = b;
            operation(apart, a, b);
            operation(second, a, second);
            ASSERT_EQ(second, apart);
        }
        FullAttr apart;
        const bool isPossible = combine(apart, a, b);
        FullAttr first = a;
        FullAttr second = b;
        ASSERT_EQ(combine(first, first, b), isPossible);
        ASSERT_EQ(combine(second, a, second), isPossible);
        ASSERT_EQ(first, apart);
        ASSERT_EQ(second, apart);
    }
}

// A member of a group of variants has the group's common part and what its decoration says beyond.
bool comesBack(const FullAttr& member, const FullAttr& commonPart, const FullAttr& beyond) {
    const FullAttr decoration = parsed(printed(beyond));
    FullAttr merged = decoration;
    combine(merged, commonPart, decoration);
    return (compareIsa(merged, 1, member) & compareAccess(merged, 1, member) &
            compareOptions(merged, 1, member)) != 0;
}

// A set as compilers state it: levels and features that have tokens, usual access and options.
FullAttr statedValue(RandomSource& random) {
    static constexpr const char* levels[] = {"$QEL_ISAv4", "$QEL_ISAv5$FCH_ISAv2",
                                             "$QEL_ISAv6$FCH_ISAv3", "$QEL_ISAv7$FCH_ISAv4"};
    static constexpr const char* features[] = {"$E", "$P", "$J", "$K", "$S", "$N", "$MPE", "$PLD2"};
    static constexpr const char* options[] = {"$IW",   "$USESV6", "$~SHL", "$OSPACE",
                                              "$EBA8", "$ROPI",   "$FPIC", "$UX"};
    std::string text = levels[random.below(4)];
    for (const char* const feature : features) {
        text += random.oneIn(2) ? feature : "";
    }
    text += "$IEEE1";
    for (const char* const option : options) {
        text += random.oneIn(2) ? option : "";
    }
    return parsed(text);
}

// The difference of a member from its group, merged with what the group has, is the member. Three
// rules break that, and the check of variants says so each time:
//  - a completed pattern of options, or a completed level, that the member does not have whole;
//  - forms of access that come back in other words than they went out of;
//  - features and options without a token.
TEST(AlgebraLaws, DifferenceAndMergeGiveTheMemberBack) {
    RandomSource random(21);
    for (int i = 0; i < 5000; ++i) {
        const FullAttr member = statedValue(random);
        FullAttr commonPart = member;
        common(commonPart, member, statedValue(random));
        FullAttr beyond;
        difference(beyond, member, commonPart);
        ASSERT_TRUE(comesBack(member, commonPart, beyond)) << printed(member);
    }
}

TEST(AlgebraLaws, DifferenceAndMergeLoseNothingOrTheCheckSaysSo) {
    RandomSource random(22);
    uint32_t back = 0;
    for (int i = 0; i < 20000; ++i) {
        FullAttr member = random.value();
        normaliseIsa(member.isa);
        FullAttr other = member;
        if (random.oneIn(2)) {
            other = random.value();
        } else {
            other.options ^= uint64_t{1} << random.below(37);
            other.isa.low ^= uint64_t{1} << random.below(64);
        }
        FullAttr commonPart = member;
        common(commonPart, member, other);
        FullAttr beyond;
        difference(beyond, member, commonPart);
        FullAttr merged;
        combine(merged, commonPart, beyond);
        // Merging without a text in between loses nothing; what it has too much is completed.
        ASSERT_NE(compareIsa(member, 3, merged) & compareAccess(member, 3, merged) &
                      compareOptions(member, 3, merged),
                  0U);
        const uint64_t tooMany = merged.options & ~member.options;
        ASSERT_EQ(tooMany & ~option_bit::IEEEX & ~option_bit::OTIME, 0U);
        const FullAttr decoration = parsed(printed(beyond));
        FullAttr read;
        combine(read, commonPart, decoration);
        const bool isMember = (read.isa & significantIsa) == (member.isa & significantIsa) &&
                              read.options == member.options &&
                              std::equal(read.access, read.access + 4, member.access);
        ASSERT_EQ(comesBack(member, commonPart, beyond), isMember);
        back += isMember ? 1 : 0;
    }
    EXPECT_LT(back, 20000U);
}

} // namespace
} // namespace attributes::test
