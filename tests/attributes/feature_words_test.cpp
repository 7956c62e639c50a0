// The names of feature words against their bits, and arithmetic on sets.
#include "attributes/interface/feature_words.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>

namespace attributes::test {
namespace {

using Bits = std::pair<uint64_t, uint64_t>; // low, high

// Written out once more, by hand: the bits are shared with compilers and linkers.
const std::map<std::string, Bits> expectedNames = {
    {"QEL_ISAv3", {0x1, 0}},
    {"QEL_ISAv4", {0x3, 0}},
    {"QEL_ISAv5", {0x7, 0}},
    {"QEL_ISAv6", {0xF, 0}},
    {"QEL_ISAv7", {0x1F, 0}},
    {"QEL_ISAv8", {0x3F, 0}},
    {"QEL_ISAv9", {0x3F, 0x10000}},
    {"FINCH_ISAv1", {0x40, 0}},
    {"FINCH_ISAv2", {0xC0, 0}},
    {"FINCH_ISAv3", {0x1C0, 0}},
    {"FINCH_ISAv4", {0x3C0, 0}},
    {"FINCH_ISAv5", {0x7C0, 0}},
    {"PAIR_PREFETCH", {0x20000, 0}},
    {"DSP_MULT", {0x40000, 0}},
    {"JAVA_STATE", {0x80000, 0}},
    {"SAFEHOUSE_ISA", {0x1000000, 0}},
    {"ORCA_ISA", {0x2000000, 0}},
    {"KERNEL_ISA", {0x100000, 0}},
    {"V6F2_ISA", {0x800, 0}},
    {"OS_EXTENSION", {0x200000, 0}},
    {"MX7_EXTENSION", {0x400000, 0}},
    {"MX8_INSNS", {0x2000, 0}},
    {"FINCH_DIVIDE", {0x4000000000, 0}},
    {"QEL_DIVIDE", {0x8000000000, 0}},
    {"DIVIDE_EXTENSION", {0xC000000000, 0}},
    {"VFMA_EXTENSION", {0x4000000000000, 0}},
    {"EXTREGS_D16", {0x8000000000000, 0}},
    {"EXTREGS_D32", {0x18000000000000, 0}},
    {"ZLT_SINGLE", {0x20000000000000, 0}},
    {"ZLT_DOUBLE", {0x40000000000000, 0}},
    {"ZLT_HALF", {0, 0x2}},
    {"ZLT_ISAv1", {0x80000000000000, 0}},
    {"ZLT_ISAv2", {0x180000000000000, 0}},
    {"ZLT_ISAv3", {0x380000000000000, 0}},
    {"ZLT_ISAv5", {0x381000000000000, 0}},
    {"FP_ISA_QELv8", {0x383000000000000, 0}},
    {"FP16", {0x400000000000000, 0}},
    {"FLA_ISA", {0x800000000000000, 0}},
    {"SOFTFP", {0x1000000000000000, 0}},
    {"PURE_DOUBLES", {0x2000000000000000, 0}},
    {"MIXED_DOUBLES", {0x4000000000000000, 0}},
    {"FZ_POSZERO", {0x8000000000000000, 0}},
    {"PLD8", {0x5007F0000000, 0}},
    {"PLD6", {0x1007F0000000, 0}},
    {"PLD5", {0x7F0000000, 0}},
    {"PLD4", {0x3F0000000, 0}},
    {"PLD3", {0x1F0000000, 0}},
    {"PLD2", {0xF0000000, 0}},
    {"PLD1", {0x70000000, 0}},
    {"PLD0", {0x30000000, 0}},
    {"PLD7", {0x10000000, 0}},
    {"WMMX_ISA", {0x4000, 0}},
    {"WMMX2_ISA", {0xC000, 0}},
    {"MARVELL_DIV", {0x4000000, 0}},
    {"MP_EXTENSIONS", {0x8000000, 0}},
    {"VIRTUALIZATION_EXTENSION", {0x1000000000, 0}},
    {"A_PROFILE", {0x800000, 0}},
    {"R_PROFILE", {0x200000000000, 0}},
};

TEST(FeatureWords, HaveTheirBitsAndNames) {
    const NamedFeatureWords words = namedFeatureWords();
    std::map<std::string, Bits> names;
    for (uint32_t i = 0; i < words.count; ++i) {
        names[words.rows[i].name] = {words.rows[i].word.low, words.rows[i].word.high};
    }
    EXPECT_EQ(names.size(), words.count);
    EXPECT_EQ(names, expectedNames);
}

TEST(FeatureWords, AreNamedByBothHalves) {
    std::set<Bits> seen;
    for (const auto& [name, bits] : expectedNames) {
        EXPECT_TRUE(seen.insert(bits).second) << name;
        EXPECT_STREQ(nameOfFeatureWord({bits.first, bits.second}), name.c_str());
        EXPECT_EQ(nameOfFeatureWord({bits.first, bits.second | uint64_t{1} << 63}), nullptr);
        EXPECT_EQ(
            nameOfFeatureWord({bits.first ^ uint64_t{1} << 11 ^ uint64_t{1} << 12, bits.second}),
            nullptr)
            << name;
    }
    EXPECT_EQ(nameOfFeatureWord({}), nullptr);
}

TEST(FeatureWords, WithoutANameForReaders) {
    using namespace feature_word;
    EXPECT_EQ(Q64_ISAv8, (IsaSet{0x10000000000, 0}));
    EXPECT_EQ(Q64_ISAv9, (IsaSet{0x30000000000, 0}));
    EXPECT_EQ(M, (IsaSet{0x1000, 0}));
    EXPECT_EQ(X, (IsaSet{0x10000, 0}));
    EXPECT_EQ(MX81, (IsaSet{0, 0x20}));
    EXPECT_EQ(MX82, (IsaSet{0, 0x200}));
    EXPECT_EQ(CX81_LOW, (IsaSet{0x800000000000, 0}));
    EXPECT_EQ(CX81_HIGH, (IsaSet{0, 0x1}));
    EXPECT_EQ(RAS, (IsaSet{0, 0x8}));
    EXPECT_EQ(TRGi, (IsaSet{0, 0x40}));
    EXPECT_EQ(TRGf, (IsaSet{0, 0x80}));
    EXPECT_EQ(FP_GENERATION, (IsaSet{0x0383000000000000, 0}));
    EXPECT_EQ(FP_GENERATION_7, (IsaSet{0, 0x4}));
    EXPECT_EQ(FLOATING_POINT_BITS, (IsaSet{0x0FFF000000000000, 0x2}));
}

TEST(IsaOperations, WorkOnBothHalves) {
    constexpr IsaSet a{0xF0, 0x3};
    constexpr IsaSet b{0x3C, 0x6};
    EXPECT_EQ(a | b, (IsaSet{0xFC, 0x7}));
    EXPECT_EQ(a & b, (IsaSet{0x30, 0x2}));
    EXPECT_EQ(~a, (IsaSet{~uint64_t{0xF0}, ~uint64_t{3}}));
    EXPECT_EQ(without(a, b), (IsaSet{0xC0, 0x1}));
    IsaSet set = a;
    setWord(set, b);
    EXPECT_EQ(set, (IsaSet{0xFC, 0x7}));
    clearWord(set, a);
    EXPECT_EQ(set, (IsaSet{0x0C, 0x4}));
    EXPECT_TRUE(hasAll(a, {0x30, 0x2}));
    EXPECT_FALSE(hasAll(a, {0x30, 0x4}));
    EXPECT_FALSE(hasAll(a, {0x08, 0x2}));
    EXPECT_TRUE(hasAll(a, {}));
    EXPECT_TRUE(hasAny(a, {0, 0x6}));
    EXPECT_TRUE(hasAny(a, {0x10, 0}));
    EXPECT_FALSE(hasAny(a, {0x0F, 0x4}));
    EXPECT_FALSE(hasAny(a, {}));
    EXPECT_TRUE(isEmpty({}));
    EXPECT_FALSE(isEmpty({0, 1}));
}

} // namespace
} // namespace attributes::test
