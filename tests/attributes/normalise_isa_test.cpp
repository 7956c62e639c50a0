// Completing sets of features: each rule by itself, and what a second run adds.
#include "attributes/interface/decoration.h"
#include "attributes/interface/feature_words.h"
#include "attributes/src/decoration_tables.h"

#include <gtest/gtest.h>

#include <random>

namespace attributes::test {
namespace {

using namespace feature_word;

IsaSet normalised(IsaSet isa) {
    normaliseIsa(isa);
    return isa;
}

struct Case {
    const char* what;
    IsaSet in;
    IsaSet out;
};

constexpr Case cases[] = {
    {"nothing", {0, 0}, {0, 0}},
    // The compact instruction set: the top level stands by itself.
    {"a bit of v5 alone", {0x400, 0}, {0x400, 0}},
    {"a bit of v4 alone", {0x200, 0}, {0x3C0, 0}},
    {"a bit of v3 alone", {0x100, 0}, {0x1C0, 0}},
    {"a bit of v2 alone", {0x80, 0}, {0xC0, 0}},
    {"v1", {0x40, 0}, {0x40, 0}},
    {"bits of v5 and v2", {0x480, 0}, {0x4C0, 0}},
    // The 32-bit instruction set: the two top levels stand by themselves.
    {"a bit of v9 alone", {0, 0x10000}, {0, 0x10000}},
    {"a bit of v8 alone", {0x20, 0}, {0x20, 0}},
    {"a bit of v7 alone", {0x10, 0}, {0x1F, 0}},
    {"a bit of v6 alone", {0x8, 0}, {0xF, 0}},
    {"a bit of v5 of 32 bits", {0x4, 0}, {0x7, 0}},
    {"a bit of v4 of 32 bits", {0x2, 0}, {0x3, 0}},
    {"v3 of 32 bits", {0x1, 0}, {0x1, 0}},
    // Extensions in levels.
    {"a bit of WMMX2", {0x8000, 0}, {0xC000, 0}},
    {"WMMX", {0x4000, 0}, {0x4000, 0}},
    {"a bit of PLD8", {0x400000000000, 0}, {0x5007F0000000, 0}},
    {"a bit of PLD6", {0x100000000000, 0}, {0x1007F0000000, 0}},
    {"a bit of PLD5", {0x400000000, 0}, {0x7F0000000, 0}},
    {"a bit of PLD4", {0x200000000, 0}, {0x3F0000000, 0}},
    {"a bit of PLD3", {0x100000000, 0}, {0x1F0000000, 0}},
    {"a bit of PLD2", {0x80000000, 0}, {0xF0000000, 0}},
    {"a bit of PLD1", {0x40000000, 0}, {0x70000000, 0}},
    {"a bit of PLD0", {0x20000000, 0}, {0x30000000, 0}},
    {"PLD7", {0x10000000, 0}, {0x10000000, 0}},
    // Floating point. What has a bit of the first generation has doubles of the machine's order.
    {"half precision", {0, 0x2}, {0x2383000000000000, 0x2}},
    {"a bit of FPiv8", {0x2000000000000, 0}, {0x2383000000000000, 0}},
    {"a bit of ZLTi5", {0x1000000000000, 0}, {0x2381000000000000, 0}},
    {"a bit of ZLTi3", {0x200000000000000, 0}, {0x2380000000000000, 0}},
    {"a bit of ZLTi2", {0x100000000000000, 0}, {0x2180000000000000, 0}},
    {"ZLTi1", {0x80000000000000, 0}, {0x2080000000000000, 0}},
    {"a bit of EXTD32", {0x10000000000000, 0}, {0x2018000000000000, 0}},
    {"EXTD16", {0x8000000000000, 0}, {0x2008000000000000, 0}},
    {"single precision", {0x20000000000000, 0}, {0x2020000000000000, 0}},
    {"double precision", {0x40000000000000, 0}, {0x2040000000000000, 0}},
    {"the old unit", {0x800000000000000, 0}, {0x4800000000000000, 0}},
    {"the old unit and a new one", {0x820000000000000, 0}, {0x2820000000000000, 0}},
    {"VFMA alone", {0x4000000000000, 0}, {0x4000000000000, 0}},
    {"VFMA with ZLTi2", {0x184000000000000, 0}, {0x2184000000000000, 0}},
    {"VFMA with ZLTi3", {0x384000000000000, 0}, {0x2784000000000000, 0}},
    // Microcontrollers.
    {"division of the compact set", {0x4000000000, 0}, {0x4000001000, 0}},
    {"both divisions", {0xC000000000, 0}, {0xC000000000, 0}},
    {"division and v3 of 32 bits", {0x4000000001, 0}, {0x4000000001, 0}},
    {"division and Java", {0x4000080000, 0}, {0x4000080000, 0}},
    {"MX82", {0, 0x200}, {0x3000, 0x220}},
    {"MX81", {0, 0x20}, {0x3000, 0x20}},
    {"MX8", {0x2000, 0}, {0x3000, 0}},
    // Sets that imply each other.
    {"v5 of 32 bits and compact v1", {0x47, 0}, {0xC7, 0}},
    {"v4 of 32 bits and compact v1", {0x43, 0}, {0x43, 0}},
    {"virtualization", {0x1000000000, 0}, {0xD000000000, 0}},
    {"TRGi", {0, 0x40}, {0x40000, 0x40}},
    {"TRGf", {0, 0x80}, {0x20000000040000, 0xC2}},
    // Unknown bits stay.
    {"no features", {0, 0xFFFFFFFFFFFE0000}, {0, 0xFFFFFFFFFFFE0000}},
};

TEST(NormaliseIsa, FollowsEachRule) {
    for (const Case& c : cases) {
        EXPECT_EQ(normalised(c.in), c.out) << c.what;
    }
}

TEST(NormaliseIsa, LeavesWholeLevelsAsTheyAre) {
    for (const IsaToken& row : isaParseTable) {
        const IsaSet out = normalised(row.mask);
        EXPECT_TRUE(hasAll(out, row.mask)) << row.text;
        const IsaSet added = without(out, row.mask);
        // The only companions of whole tokens.
        EXPECT_TRUE(hasAll(PURE_DOUBLES | MIXED_DOUBLES | M | FP_ISA_QELv8 | ZLT_SINGLE | ZLT_HALF |
                               DSP_MULT,
                           added))
            << row.text;
    }
}

class RandomSets {
public:
    // Sets of whole words, of single bits, and of both.
    IsaSet next() {
        IsaSet isa;
        const uint64_t kind = m_Random() % 4;
        if (kind != 0) {
            const uint64_t count = m_Random() % 12;
            for (uint64_t i = 0; i < count; ++i) {
                setWord(isa, isaParseTable[m_Random() % isaParseTable.size()].mask);
            }
        }
        if (kind == 0) {
            isa = {m_Random() & m_Random(), m_Random() & m_Random() & 0x103FF};
        } else if (kind == 1) {
            setWord(isa, {m_Random() & m_Random() & m_Random(), m_Random() & m_Random() & 0x3FF});
        }
        return isa;
    }

private:
    std::mt19937_64 m_Random{7};
};

TEST(NormaliseIsa, OnlyAdds) {
    RandomSets sets;
    for (int i = 0; i < 100000; ++i) {
        const IsaSet isa = sets.next();
        EXPECT_TRUE(hasAll(normalised(isa), isa));
    }
}

// The one rule late in the order whose results earlier rules go on from is that of TRGf: it adds
// half and single precision. Without it one run is enough; with it, two are.
TEST(NormaliseIsa, IsIdempotentButForOneRule) {
    RandomSets sets;
    int exceptions = 0;
    for (int i = 0; i < 100000; ++i) {
        const IsaSet once = normalised(sets.next());
        const IsaSet twice = normalised(once);
        if (twice != once) {
            ++exceptions;
            EXPECT_TRUE(hasAll(once, TRGf));
            const IsaSet added = without(twice, once);
            EXPECT_TRUE(hasAll(FP_ISA_QELv8 | PURE_DOUBLES | FP16, added));
        }
        EXPECT_EQ(normalised(twice), twice);
    }
    EXPECT_GT(exceptions, 0);
    // The exception by itself.
    EXPECT_EQ(normalised(normalised({0, 0x80})), (IsaSet{0x23A3000000040000, 0xC2}));
}

} // namespace
} // namespace attributes::test
