// Levels, generations, architectures and profiles, from features.
#include "attributes/interface/isa_levels.h"

#include "attributes/interface/feature_words.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using namespace feature_word;

TEST(IsaLevels, ALevelNeedsAllOfItsBits) {
    const IsaSet qel[] = {QEL_ISAv3, QEL_ISAv4, QEL_ISAv5, QEL_ISAv6,
                          QEL_ISAv7, QEL_ISAv8, QEL_ISAv9};
    EXPECT_EQ(qelVersion({}), 0U);
    for (uint32_t i = 0; i < std::size(qel); ++i) {
        EXPECT_EQ(qelVersion(qel[i]), i + 3);
        EXPECT_EQ(qelVersion(without(qel[i], QEL_ISAv3)), 0U);
    }
    EXPECT_EQ(qelVersion(QEL_ISAv4 | IsaSet{0x38, 0x10000}), 4U);
    const IsaSet finch[] = {FINCH_ISAv1, FINCH_ISAv2, FINCH_ISAv3, FINCH_ISAv4, FINCH_ISAv5};
    for (uint32_t i = 0; i < std::size(finch); ++i) {
        EXPECT_EQ(finchVersion(finch[i]), i + 1);
        EXPECT_EQ(finchVersion(without(finch[i], FINCH_ISAv1)), 0U);
    }
    EXPECT_EQ(q64Version({}), 0U);
    EXPECT_EQ(q64Version(Q64_ISAv8), 8U);
    EXPECT_EQ(q64Version(Q64_ISAv9), 9U);
    EXPECT_EQ(q64Version(without(Q64_ISAv9, Q64_ISAv8)), 0U);
}

TEST(IsaLevels, GenerationsAreToldExactly) {
    EXPECT_EQ(fpGeneration({}), 0U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv1), 1U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv2), 2U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv3), 3U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv3 | FP16), 3U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv3 | VFMA_EXTENSION), 3U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv3 | FP16 | VFMA_EXTENSION), 4U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv5), 5U);
    EXPECT_EQ(fpGeneration(FP_ISA_QELv8), 6U);
    EXPECT_EQ(fpGeneration(FP_ISA_QELv8 | FP16 | VFMA_EXTENSION), 6U);
    EXPECT_EQ(fpGeneration(FP_ISA_QELv8 | IsaSet{0, 4}), 7U);
    EXPECT_EQ(fpGeneration(ZLT_ISAv1 | IsaSet{0, 4}), 7U);
    EXPECT_EQ(fpGeneration({0, 4}), 0U);
    // Bits that make up none.
    EXPECT_EQ(fpGeneration({0x100000000000000, 0}), 0U);
    EXPECT_EQ(fpGeneration({0x382000000000000, 0}), 0U);
    EXPECT_EQ(fpGeneration(EXTREGS_D32 | ZLT_DOUBLE), 0U);
}

struct ArchCase {
    IsaSet isa;
    uint32_t arch;
};

const ArchCase archCases[] = {
    {{}, 0},
    {Q64_ISAv9, 22},
    {Q64_ISAv9 | R_PROFILE | QEL_ISAv7, 22},
    {Q64_ISAv8, 14},
    {Q64_ISAv8 | QEL_ISAv9, 14},
    {Q64_ISAv8 | R_PROFILE, 15},
    {QEL_ISAv9, 22},
    {QEL_ISAv9 | R_PROFILE, 22},
    {QEL_ISAv8, 14},
    {QEL_ISAv8 | R_PROFILE, 15},
    {QEL_ISAv7, 10},
    {QEL_ISAv7 | R_PROFILE | SAFEHOUSE_ISA, 10},
    {QEL_ISAv6 | KERNEL_ISA | SAFEHOUSE_ISA, 7},
    {QEL_ISAv6 | KERNEL_ISA | V6F2_ISA, 9},
    {QEL_ISAv6 | SAFEHOUSE_ISA, 6},
    {QEL_ISAv6 | V6F2_ISA, 8},
    {QEL_ISAv6 | FINCH_ISAv4, 8},
    {QEL_ISAv6 | FINCH_ISAv5, 6},
    {QEL_ISAv6 | FINCH_ISAv3, 6},
    {QEL_ISAv5, 3},
    {QEL_ISAv5 | JAVA_STATE, 3},
    {QEL_ISAv5 | DSP_MULT, 4},
    {QEL_ISAv5 | DSP_MULT | JAVA_STATE, 5},
    {QEL_ISAv4, 1},
    {QEL_ISAv4 | OS_EXTENSION, 2},
    {QEL_ISAv4 | FINCH_ISAv1, 2},
    {QEL_ISAv4 | FINCH_ISAv3, 2},
    {QEL_ISAv3, 0},
    {QEL_ISAv3 | FINCH_ISAv5, 0},
    {FINCH_ISAv1, 2},
    {FINCH_ISAv2, 3},
    {FINCH_ISAv2 | DSP_MULT, 4},
    {FINCH_ISAv2 | DSP_MULT | JAVA_STATE, 5},
    {FINCH_ISAv3 | M | MX8_INSNS | OS_EXTENSION, 16},
    {FINCH_ISAv3 | M | OS_EXTENSION, 12},
    {FINCH_ISAv3 | M, 11},
    {FINCH_ISAv3 | KERNEL_ISA | SAFEHOUSE_ISA, 7},
    {FINCH_ISAv3 | KERNEL_ISA, 9},
    {FINCH_ISAv3 | MX8_INSNS, 6},
    {FINCH_ISAv3, 6},
    {FINCH_ISAv4 | IsaSet{0, 0x220} | MX8_INSNS, 23},
    {FINCH_ISAv4 | IsaSet{0, 0x20} | MX8_INSNS | KERNEL_ISA, 21},
    {FINCH_ISAv4 | MX8_INSNS | KERNEL_ISA, 17},
    {FINCH_ISAv4 | KERNEL_ISA | MX7_EXTENSION, 13},
    {FINCH_ISAv4 | KERNEL_ISA, 10},
    {FINCH_ISAv4 | MX7_EXTENSION, 8},
    {FINCH_ISAv5, 14},
    {FINCH_ISAv5 | R_PROFILE, 15},
};

TEST(IsaLevels, ArchitecturesOfFeatures) {
    for (const ArchCase& row : archCases) {
        EXPECT_EQ(archFromIsa(row.isa), row.arch) << std::hex << row.isa.high << ":" << row.isa.low;
    }
}

struct ProfileCase {
    IsaSet isa;
    uint32_t profile;
};

const IsaSet V7 = QEL_ISAv7 | KERNEL_ISA | DSP_MULT;

const ProfileCase profileCases[] = {
    {{}, 0},
    {FINCH_ISAv3 | MX8_INSNS | KERNEL_ISA | M, 0},
    {FINCH_ISAv4 | MX8_INSNS | KERNEL_ISA | M, 0},
    {FINCH_ISAv5 | MX8_INSNS | KERNEL_ISA | M, 'M'},
    {QEL_ISAv6 | FINCH_ISAv3 | KERNEL_ISA | DSP_MULT | A_PROFILE, 0},
    {QEL_ISAv6 | FINCH_ISAv4 | KERNEL_ISA | DSP_MULT | A_PROFILE, 'A'},
    {QEL_ISAv7 | DSP_MULT | A_PROFILE, 0},
    {QEL_ISAv7 | DSP_MULT | Q64_ISAv8 | A_PROFILE, 'A'},
    {FINCH_ISAv4 | KERNEL_ISA | M, 'M'},
    {V7 | M, 'M'},
    {without(V7, DSP_MULT) | A_PROFILE, 0},
    {without(V7, DSP_MULT) | Q64_ISAv8 | A_PROFILE, 'A'},
    {V7 | A_PROFILE | R_PROFILE, 'A'},
    {V7 | R_PROFILE | X, 'R'},
    {V7 | X, 'A'},
    {V7, 'S'},
    {Q64_ISAv8, 0}, // without a level of the other sets there are none
    {Q64_ISAv8 | QEL_ISAv8, 'S'},
};

TEST(IsaLevels, ProfilesOfFeatures) {
    for (const ProfileCase& row : profileCases) {
        EXPECT_EQ(profileFromIsa(row.isa), row.profile)
            << std::hex << row.isa.high << ":" << row.isa.low;
    }
}

} // namespace
} // namespace attributes::test
