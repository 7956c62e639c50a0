// From tags to the derived value, step by step.
//
// Without an architecture the features start from nothing, so what a tag adds can be seen alone;
// what a tag takes away shows on the architectures that have it.
#include <string>

#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/target_database.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using namespace feature_word;

using RebuildTest = RecordTest;

constexpr uint32_t profiles[] = {0, 'A', 'M', 'R', 'S'};
constexpr uint32_t LastArch = 26;

FullAttr rowOf(uint32_t arch, uint32_t profile) {
    FullAttr row;
    lookupByArch(arch, profile, row);
    return row;
}

FullAttr wideRowOf(uint32_t arch, uint32_t profile) {
    FullAttr row;
    lookupWide(arch, profile, row);
    return row;
}

// The value of a record that states just an architecture and the use of its instruction sets.
FullAttr rebuiltArch(uint32_t arch, uint32_t profile) {
    return rebuilt({{Tag_CPU_arch, arch},
                    {Tag_CPU_arch_profile, profile},
                    {Tag_QEL_ISA_use, 1},
                    {Tag_FINCH_ISA_use, 1}});
}

TEST_F(RebuildTest, OfARecordWithoutTags) {
    BuildAttributes record;
    record.derivedStale = true;
    record.fullAttr = FullAttr();
    record.rebuildFullAttr();
    EXPECT_FALSE(record.derivedStale);
    FullAttr expected = defaultFullAttr();
    expected.requirements = requirement_bit::REQ8;
    EXPECT_EQ(record.fullAttr, expected);
    EXPECT_EQ(record.fullAttr.options, 0x818069U);
    EXPECT_EQ(record.fullAttr.isa, IsaSet());
}

TEST_F(RebuildTest, TwiceGivesTheSame) {
    RandomSource random(1);
    for (int i = 0; i < 3000; ++i) {
        BuildAttributes record = random.record();
        record.rebuildFullAttr();
        const FullAttr first = record.fullAttr;
        record.rebuildFullAttr();
        ASSERT_EQ(record.fullAttr, first);
        EXPECT_FALSE(record.derivedStale);
    }
}

TEST_F(RebuildTest, TakesTheRowOfTheArchitectureButForTheWideSet) {
    // What absent tags take away from any row.
    const IsaSet cleared = Q64_ISAv9 | WMMX2_ISA | ORCA_ISA | TRGi | TRGf | SAFEHOUSE_ISA |
                           VIRTUALIZATION_EXTENSION | X | FLOATING_POINT_BITS | MP_EXTENSIONS |
                           SOFTFP | PURE_DOUBLES | MARVELL_DIV | PLD1;
    for (uint32_t arch = 0; arch <= LastArch; ++arch) {
        for (const uint32_t profile : profiles) {
            const FullAttr row = rowOf(arch, profile);
            const FullAttr value = rebuiltArch(arch, profile);
            IsaSet expected = without(row.isa, cleared);
            if (arch == 10 && (profile == 'R' || profile == 'M')) {
                setWord(expected, FINCH_DIVIDE);
            }
            EXPECT_EQ(value.isa, expected) << arch << " " << profile;
            EXPECT_EQ(value.targetClass, row.targetClass) << arch << " " << profile;
            EXPECT_EQ(value.targetKind, row.targetKind) << arch << " " << profile;
        }
    }
}

TEST_F(RebuildTest, TakesTheWideRowByTheNameOfTheProcessor) {
    for (uint32_t arch = 0; arch <= LastArch; ++arch) {
        for (const char* const name : {"", "rw.wide", "rw.wide.auth", "RW.WIDE", "rw.wide.", "a"}) {
            BuildAttributes record = recordWith({{Tag_CPU_arch, arch},
                                                 {Tag_Q64_ISA_use, 1},
                                                 {Tag_QEL_ISA_use, 1},
                                                 {Tag_FINCH_ISA_use, 1}});
            const std::string text = name;
            if (!text.empty()) {
                record.setCpuName(name);
            }
            record.rebuildFullAttr();
            const bool isRealTime = text == "rw.wide" || text == "rw.wide.auth";
            const FullAttr row = wideRowOf(arch, isRealTime ? 'R' : 'A');
            EXPECT_EQ(record.fullAttr.isa & Q64_ISAv9, row.isa & Q64_ISAv9) << arch << text;
            EXPECT_EQ(record.fullAttr.isa & QEL_ISAv9, row.isa & QEL_ISAv9) << arch << text;
            EXPECT_EQ(record.fullAttr.targetClass, row.targetClass) << arch << text;
            EXPECT_EQ(record.fullAttr.targetKind, row.targetKind) << arch << text;
        }
    }
    EXPECT_TRUE(hasAll(wideRowOf(15, 'R').isa, Q64_ISAv8));
}

TEST_F(RebuildTest, DropsInstructionSetsThatAreNotUsed) {
    bool sawBoth = false;
    for (uint32_t arch = 1; arch <= LastArch; ++arch) {
        const IsaSet row = rowOf(arch, 'A').isa;
        sawBoth = sawBoth || (hasAny(row, QEL_ISAv9) && hasAny(row, FINCH_ISAv5));
        for (const bool qel : {false, true}) {
            for (const bool finch : {false, true}) {
                const FullAttr value = rebuilt({{Tag_CPU_arch, arch},
                                                {Tag_CPU_arch_profile, 'A'},
                                                {Tag_QEL_ISA_use, qel ? 1U : 0U},
                                                {Tag_FINCH_ISA_use, finch ? 2U : 0U}});
                EXPECT_EQ(value.isa & QEL_ISAv9, qel ? row & QEL_ISAv9 : IsaSet());
                EXPECT_EQ(value.isa & FINCH_ISAv5, finch ? row & FINCH_ISAv5 : IsaSet());
                EXPECT_EQ(value.isa & Q64_ISAv9, IsaSet());
            }
        }
    }
    EXPECT_TRUE(sawBoth);
}

TEST_F(RebuildTest, TakesTheAccessOfTheArchitecture) {
    // Unaligned forms are as the tag for them says, so it is set to leave them alone.
    for (uint32_t arch = 0; arch <= LastArch; ++arch) {
        const FullAttr value = rebuilt({{Tag_CPU_arch, arch}, {Tag_CPU_unaligned_access, 2}});
        const bool isUnaligned = (arch >= 6 && arch <= 17) || (arch >= 21 && arch <= 23);
        for (uint32_t word = 0; word < 4; ++word) {
            const uint32_t newer = isUnaligned ? 0xC290 : 0x0290;
            const uint32_t expected = arch == 0 ? 0x0210 : newer;
            EXPECT_EQ(value.access[word], expected) << arch << " " << word;
        }
    }
}

TEST_F(RebuildTest, IsRestrictedToCompatibleArchitectures) {
    for (uint32_t arch = 0; arch < 80; ++arch) {
        BuildAttributes record = recordWith({{Tag_CPU_arch, 10},
                                             {Tag_CPU_arch_profile, 'A'},
                                             {Tag_CPU_unaligned_access, 2},
                                             {Tag_QEL_ISA_use, 1},
                                             {Tag_FINCH_ISA_use, 1}});
        record.rebuildFullAttr();
        const FullAttr before = record.fullAttr;
        record.addAlsoCompatibilityTag({6, arch});
        record.rebuildFullAttr();
        EXPECT_EQ(record.fullAttr.isa, before.isa & rowOf(arch, 'A').isa) << arch;
        const bool isUnaligned = (arch >= 6 && arch <= 17) || (arch >= 21 && arch <= 23);
        const uint32_t newer = isUnaligned ? 0xC290 : 0x0290;
        const uint32_t mask = arch == 0 ? 0x0210 : newer;
        for (uint32_t word = 0; word < 4; ++word) {
            EXPECT_EQ(record.fullAttr.access[word], before.access[word] & mask) << arch;
        }
    }
}

TEST_F(RebuildTest, IsRestrictedByEachCompatibleArchitectureAndByNothingElse) {
    BuildAttributes record = recordWith({{Tag_CPU_arch, 10}, {Tag_QEL_ISA_use, 1}});
    record.rebuildFullAttr();
    const FullAttr alone = record.fullAttr;
    record.addAlsoCompatibilityTag({8, 1U});
    record.addAlsoCompatibilityTag({5, "name"});
    record.addAlsoCompatibilityTag({6, "text in place of a number"});
    record.rebuildFullAttr();
    EXPECT_EQ(record.fullAttr, alone);
    record.addAlsoCompatibilityTag({134, 4U}); // seven bits: 6
    record.addAlsoCompatibilityTag({6, 1U});
    record.rebuildFullAttr();
    EXPECT_EQ(record.fullAttr.isa, alone.isa & rowOf(4, 0).isa & rowOf(1, 0).isa);
}

// A tag's value and the features that it gives a record without any.
struct FeatureCase {
    Tag tag;
    uint32_t value;
    IsaSet isa;
};
constexpr IsaSet None{};
constexpr IsaSet CX81{0x800000000000, 0};
constexpr FeatureCase featureCases[] = {
    {Tag_WMMX_arch, 0, None},
    {Tag_WMMX_arch, 1, {0x4000, 0}},
    {Tag_WMMX_arch, 2, {0xC000, 0}},
    {Tag_WMMX_arch, 3, None},
    {Tag_Advanced_SIMD_arch, 0, None},
    {Tag_Advanced_SIMD_arch, 1, {0x2000000, 0}},
    {Tag_Advanced_SIMD_arch, 2, {0x2000000, 0}},
    {Tag_Advanced_SIMD_arch, 3, {0x2000000, 0}},
    {Tag_Advanced_SIMD_arch, 4, {0x800002000000, 0}},
    {Tag_Advanced_SIMD_arch, 5, None},
    {Tag_TRG_arch, 0, None},
    {Tag_TRG_arch, 1, {0, 0x40}},
    {Tag_TRG_arch, 2, {0, 0xC0}},
    {Tag_TRG_arch, 3, None},
    {Tag_Virtualization_use, 0, None},
    {Tag_Virtualization_use, 1, {0x1000000, 0}},
    {Tag_Virtualization_use, 2, {0x1000000000, 0}},
    {Tag_Virtualization_use, 3, {0x1001000000, 0}},
    {Tag_Virtualization_use, 4, None},
    {Tag_F2EE_use, 0, None},
    {Tag_F2EE_use, 1, {0x10000, 0}},
    {Tag_F2EE_use, 2, None},
    {Tag_FP_arch, 0, None},
    {Tag_FP_arch, 1, {0x88000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 2, {0x188000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 3, {0x398000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 4, {0x388000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 5, {0x79C000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 6, {0x78C000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 7, {0x79F000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 8, {0x78D000000000000 | 0x60000000000000, 0}},
    {Tag_FP_arch, 9, {0x60000000000000, 0}},
    {Tag_ABI_HardFP_use, 1, None}, // without a unit it says nothing
    {Tag_MPextension_use, 1, {0x8000000, 0}},
    {Tag_MPextension_use, 2, None},
    {Tag_DSP_extension, 1, {0x440000, 0}},
    {Tag_DSP_extension, 2, None},
    {Tag_DIV_use, 2, None}, // another architecture than the one that leaves it open
    {Tag_AV_mdivide, 0, None},
    {Tag_AV_mdivide, 1, {0x4000000, 0}},
    {Tag_AV_mdivide, 2, None},
    {Tag_AV_pld, 0, None},
    {Tag_AV_pld, 1, PLD1},
    {Tag_AV_pld, 2, PLD2},
    {Tag_AV_pld, 3, PLD3},
    {Tag_AV_pld, 4, PLD4},
    {Tag_AV_pld, 5, PLD5},
    {Tag_AV_pld, 6, PLD0},
    {Tag_AV_pld, 7, PLD6},
    {Tag_AV_pld, 8, PLD7},
    {Tag_AV_pld, 9, PLD8},
    {Tag_AV_pld, 10, None},
    {Tag_AV_v8_isa, 1, None}, // no set is said to be used
};

TEST_F(RebuildTest, EachTagGivesItsFeatures) {
    for (const FeatureCase& row : featureCases) {
        EXPECT_EQ(rebuilt({{row.tag, row.value}}).isa, row.isa)
            << tagRows[row.tag].name << " " << row.value;
    }
}

TEST_F(RebuildTest, HalfPrecisionComesWithTwoUnitsOnly) {
    for (uint32_t unit = 0; unit < 10; ++unit) {
        for (uint32_t half = 0; half < 3; ++half) {
            const IsaSet isa = rebuilt({{Tag_FP_arch, unit}, {Tag_FP_HP_extension, half}}).isa;
            const bool isThere =
                (unit >= 5 && unit <= 8) || (half == 1 && (unit == 3 || unit == 4));
            EXPECT_EQ(hasAll(isa, FP16), isThere) << unit << " " << half;
        }
    }
}

TEST_F(RebuildTest, TheLastUnitDependsOnTheArchitecture) {
    const auto unitOf = [](uint32_t arch, uint32_t simd) {
        return rebuilt({{Tag_CPU_arch, arch}, {Tag_FP_arch, 8}, {Tag_Advanced_SIMD_arch, simd}})
                   .isa &
               (FLOATING_POINT_BITS | CX81);
    };
    const IsaSet fifth{0x7ED000000000000, 0};
    const IsaSet eighth{0x7EF000000000000, 0};
    EXPECT_EQ(unitOf(17, 0), fifth);
    EXPECT_EQ(unitOf(15, 5), fifth);
    EXPECT_EQ(unitOf(14, 0), eighth);
    EXPECT_EQ(unitOf(14, 3), eighth);
    EXPECT_EQ(unitOf(14, 4), eighth | CX81);
    EXPECT_EQ(unitOf(14, 5), eighth | CX81);
}

TEST_F(RebuildTest, WidthsOfAUnit) {
    const IsaSet both = ZLT_SINGLE | ZLT_DOUBLE;
    const auto widthsOf = [&](uint32_t use) {
        return rebuilt({{Tag_FP_arch, 1}, {Tag_ABI_HardFP_use, use}}).isa & both;
    };
    EXPECT_EQ(widthsOf(0), both);
    EXPECT_EQ(widthsOf(1), ZLT_SINGLE);
    EXPECT_EQ(widthsOf(2), ZLT_DOUBLE);
    EXPECT_EQ(widthsOf(3), both);
    EXPECT_EQ(widthsOf(4), both);
}

TEST_F(RebuildTest, DivisionsOfTheArchitectureThatLeavesThemOpen) {
    for (const uint32_t profile : profiles) {
        for (const uint32_t arch : {9U, 10U, 13U}) {
            const IsaSet row = rowOf(arch, profile).isa & DIVIDE_EXTENSION;
            for (uint32_t use = 0; use < 4; ++use) {
                const IsaSet isa =
                    rebuilt(
                        {{Tag_CPU_arch, arch}, {Tag_CPU_arch_profile, profile}, {Tag_DIV_use, use}})
                        .isa &
                    DIVIDE_EXTENSION;
                IsaSet expected = row;
                if (arch == 10 && use == 2) {
                    expected = DIVIDE_EXTENSION;
                } else if (arch == 10 && use != 1 && (profile == 'R' || profile == 'M')) {
                    expected = row | FINCH_DIVIDE;
                }
                EXPECT_EQ(isa, expected) << arch << " " << profile << " " << use;
            }
        }
    }
}

// Where another architecture has taken the division away, only the tag decides.
TEST_F(RebuildTest, ADivisionThatWasTakenAwayComesBackAsItsTagSays) {
    constexpr IsaSet expected[] = {FINCH_DIVIDE, None, DIVIDE_EXTENSION, FINCH_DIVIDE};
    for (const uint32_t profile : {uint32_t{'R'}, uint32_t{'M'}, uint32_t{'A'}}) {
        for (uint32_t use = 0; use < std::size(expected); ++use) {
            BuildAttributes record = recordWith(
                {{Tag_CPU_arch, 10}, {Tag_CPU_arch_profile, profile}, {Tag_DIV_use, use}});
            record.addAlsoCompatibilityTag({6, 9U});
            record.rebuildFullAttr();
            const bool isLeftOpen = profile == 'A' && use != 2;
            EXPECT_EQ(record.fullAttr.isa & DIVIDE_EXTENSION, isLeftOpen ? None : expected[use])
                << profile << " " << use;
        }
    }
}

TEST_F(RebuildTest, SoftFloatingPoint) {
    for (uint32_t args = 0; args < 5; ++args) {
        for (uint32_t model = 0; model < 4; ++model) {
            const FullAttr value =
                rebuilt({{Tag_ABI_ZLT_args, args}, {Tag_ABI_FP_number_model, model}});
            EXPECT_EQ(hasAll(value.isa, SOFTFP), model != 0 && args != 1) << args << " " << model;
        }
    }
}

TEST_F(RebuildTest, DspComesFromItsTagOrItsArchitecture) {
    const FullAttr stated = rebuilt({{Tag_CPU_arch, 11}, {Tag_DSP_extension, 1}});
    EXPECT_TRUE(hasAll(stated.isa, DSP_MULT | MX7_EXTENSION));
    bool sawRowWith = false;
    for (uint32_t arch = 0; arch <= LastArch; ++arch) {
        const bool rowHas = hasAll(rowOf(arch, 0).isa, MX7_EXTENSION);
        sawRowWith = sawRowWith || rowHas;
        EXPECT_EQ(hasAll(rebuilt({{Tag_CPU_arch, arch}}).isa, MX7_EXTENSION), rowHas) << arch;
    }
    EXPECT_TRUE(sawRowWith);
    // The wide rows are judged by the row of the 32-bit set.
    for (uint32_t arch = 0; arch <= LastArch; ++arch) {
        const bool has = hasAll(wideRowOf(arch, 'A').isa & rowOf(arch, 0).isa, MX7_EXTENSION);
        EXPECT_EQ(hasAll(rebuilt({{Tag_CPU_arch, arch}, {Tag_Q64_ISA_use, 1}}).isa, MX7_EXTENSION),
                  has)
            << arch;
    }
}

TEST_F(RebuildTest, UnalignedAccess) {
    const auto accessOf = [](TagValues values) { return rebuilt(values).access[2]; };
    EXPECT_EQ(accessOf({{Tag_CPU_arch, 10}}), 0x0290);
    EXPECT_EQ(accessOf({{Tag_CPU_arch, 10}, {Tag_CPU_unaligned_access, 0}}), 0x0290);
    EXPECT_EQ(accessOf({{Tag_CPU_arch, 10}, {Tag_CPU_unaligned_access, 1}}), 0xC290);
    EXPECT_EQ(accessOf({{Tag_CPU_arch, 10}, {Tag_CPU_unaligned_access, 2}}), 0xC290);
    EXPECT_EQ(accessOf({{Tag_CPU_arch, 1}, {Tag_CPU_unaligned_access, 1}}), 0xC290);
    const FullAttr value = rebuilt({{Tag_CPU_unaligned_access, 1}});
    for (const uint16_t access : value.access) {
        EXPECT_EQ(access, 0xC290);
    }
}

// Position independence: the four tags and the bits of the options that they decide.
struct PositionCase {
    uint32_t readOnly;
    uint32_t readWrite;
    uint32_t table;
    uint32_t base;
    uint64_t options;
};
constexpr uint64_t PositionBits = option_bit::ROPI | option_bit::RWPI | option_bit::USESV6 |
                                  option_bit::FPIC | option_bit::INDIRECT;
constexpr uint64_t V6 = option_bit::USESV6;
constexpr PositionCase positionCases[] = {
    {0, 0, 0, 0, V6},
    {0, 0, 0, 1, 0},
    {0, 0, 2, 0, V6 | option_bit::INDIRECT},
    {1, 0, 0, 0, V6 | option_bit::ROPI},
    {2, 0, 0, 0, V6},
    {0, 1, 0, 0, V6 | option_bit::FPIC},
    {0, 1, 2, 0, V6 | option_bit::FPIC | option_bit::INDIRECT},
    {1, 1, 0, 0, V6 | option_bit::FPIC | option_bit::ROPI},
    {1, 1, 2, 0, V6 | option_bit::FPIC | option_bit::ROPI | option_bit::INDIRECT},
    {1, 1, 2, 3, option_bit::FPIC | option_bit::ROPI | option_bit::INDIRECT},
    {0, 2, 0, 0, V6},
    {0, 2, 0, 1, option_bit::RWPI},
    {1, 2, 2, 1, option_bit::RWPI | option_bit::ROPI | option_bit::INDIRECT},
    {0, 2, 0, 2, 0},
    {0, 3, 0, 0, V6},
    {0, 4, 0, 0, V6},
};

TEST_F(RebuildTest, PositionIndependence) {
    for (const PositionCase& row : positionCases) {
        const FullAttr value = rebuilt({{Tag_ABI_PCS_RO_data, row.readOnly},
                                        {Tag_ABI_PCS_RW_data, row.readWrite},
                                        {Tag_ABI_PCS_GOT_use, row.table},
                                        {Tag_ABI_PCS_R9_use, row.base}});
        EXPECT_EQ(value.options & PositionBits, row.options)
            << row.readOnly << row.readWrite << row.table << row.base;
        EXPECT_EQ(value.options & ~PositionBits, 0x818069 & ~PositionBits);
    }
}

TEST_F(RebuildTest, AlignmentNeededThenWhatTheToolChainSaysOfIt) {
    const auto valueOf = [](uint32_t needed, uint32_t eba, uint32_t require8) {
        BuildAttributes record;
        record.m_StandardTags.setNumber(Tag_ABI_align_needed, needed);
        record.m_StandardTags.setNumber(Tag_AV_eba, eba);
        record.m_StandardTags.setNumber(Tag_AV_require8, require8);
        record.rebuildFullAttr();
        return record.fullAttr;
    };
    const uint64_t both = option_bit::EBA4 | option_bit::EBA8;
    // A value of `Tag_AV_eba` without a meaning leaves what `Tag_ABI_align_needed` says.
    EXPECT_EQ(valueOf(0, 9, 9).options & both, 0U);
    EXPECT_EQ(valueOf(1, 9, 9).options & both, option_bit::EBA8);
    EXPECT_EQ(valueOf(2, 9, 9).options & both, option_bit::EBA4);
    EXPECT_EQ(valueOf(3, 9, 9).options & both, 0U);
    EXPECT_EQ(valueOf(0, 9, 9).requirements, 0U);
    EXPECT_EQ(valueOf(1, 9, 9).requirements, requirement_bit::REQ8);
    EXPECT_EQ(valueOf(2, 9, 9).requirements, 0U);
    EXPECT_EQ(valueOf(3, 9, 9).requirements, 0U);
    for (uint32_t needed = 0; needed < 4; ++needed) {
        EXPECT_EQ(valueOf(needed, 0, 9).options & both, option_bit::EBA8) << needed;
        EXPECT_EQ(valueOf(needed, 1, 9).options & both, 0U) << needed;
        EXPECT_EQ(valueOf(needed, 2, 9).options & both, option_bit::EBA4) << needed;
        EXPECT_EQ(valueOf(needed, 9, 0).requirements, requirement_bit::REQ8) << needed;
        EXPECT_EQ(valueOf(needed, 9, 1).requirements, 0U) << needed;
        EXPECT_EQ(valueOf(needed, 9, 2).requirements, valueOf(needed, 9, 9).requirements);
    }
}

TEST_F(RebuildTest, AlignmentPreserved) {
    for (uint32_t preserved = 0; preserved < 5; ++preserved) {
        const FullAttr value = rebuilt({{Tag_ABI_align_preserved, preserved}});
        const bool isPreserved = preserved == 1 || preserved == 2;
        EXPECT_EQ(value.requirements & requirement_bit::PRES8,
                  isPreserved ? requirement_bit::PRES8 : 0);
    }
}

TEST_F(RebuildTest, OptimizationGoals) {
    for (uint32_t goals = 0; goals < 8; ++goals) {
        const FullAttr value = rebuilt({{Tag_ABI_optimization_goals, goals}});
        const bool isTime = goals == 1 || goals == 2;
        EXPECT_EQ(value.options & option_bit::OTIME,
                  isTime ? option_bit::OTIME : option_bit::OSPACE)
            << goals;
    }
}

// The model of floating point: the options and the two features that it decides.
struct ModelCase {
    uint32_t model;
    uint32_t rounding;
    uint32_t exceptions;
    uint32_t denormal;
    uint64_t options;
    IsaSet isa;
};
constexpr ModelCase modelCases[] = {
    {0, 0, 0, 0, 0, None},
    {0, 1, 1, 1, 0, None},
    {1, 1, 0, 0, option_bit::IEEEX, PURE_DOUBLES},
    {1, 0, 1, 0, option_bit::IEEEX, PURE_DOUBLES},
    {3, 1, 1, 1, option_bit::IEEEX, PURE_DOUBLES},
    {3, 0, 0, 1, option_bit::IEEEF, PURE_DOUBLES},
    {3, 2, 2, 0, option_bit::IEEEF, PURE_DOUBLES},
    {1, 0, 0, 1, option_bit::IEEEJ, PURE_DOUBLES},
    {2, 0, 0, 1, option_bit::IEEEJ, PURE_DOUBLES},
    {1, 0, 0, 0, 0, PURE_DOUBLES | FZ_POSZERO},
    {2, 0, 0, 0, 0, PURE_DOUBLES | FZ_POSZERO},
    {1, 0, 0, 2, 0, PURE_DOUBLES},
    {4, 2, 2, 3, 0, PURE_DOUBLES},
};

TEST_F(RebuildTest, ModelOfFloatingPoint) {
    for (const ModelCase& row : modelCases) {
        const FullAttr value = rebuilt({{Tag_ABI_FP_number_model, row.model},
                                        {Tag_ABI_FP_rounding, row.rounding},
                                        {Tag_ABI_FP_exceptions, row.exceptions},
                                        {Tag_ABI_FP_denormal, row.denormal},
                                        {Tag_ABI_ZLT_args, 1}});
        EXPECT_EQ(value.options & option_bit::IEEEX, row.options)
            << row.model << row.rounding << row.exceptions << row.denormal;
        EXPECT_EQ(value.isa, row.isa)
            << row.model << row.rounding << row.exceptions << row.denormal;
    }
}

// Tags that decide options alone: value, bits, and what becomes of them in a default value.
struct OptionCase {
    Tag tag;
    uint32_t value;
    uint64_t options;
};
constexpr uint64_t Default = 0x818069;
constexpr OptionCase optionCases[] = {
    {Tag_AV_interworking, 0, Default},
    {Tag_AV_interworking, 1, (Default & ~option_bit::IW) | option_bit::NOT_IW},
    {Tag_AV_interworking, 2, Default},
    {Tag_AV_cpp_exceptions, 0, Default},
    {Tag_AV_cpp_exceptions, 1, Default | option_bit::UX},
    {Tag_AV_cpp_exceptions, 2, Default},
    {Tag_AV_standardlib, 0, Default},
    {Tag_AV_standardlib, 1, Default | option_bit::STANDARDLIB},
    {Tag_AV_standardlib, 2, Default},
    {Tag_AV_microlib, 0, Default},
    {Tag_AV_microlib, 1, Default | option_bit::MICROLIB},
    {Tag_AV_microlib, 2, Default},
    {Tag_PACRET_use, 0, Default},
    {Tag_PACRET_use, 1, Default | option_bit::SIGN_RET_ADDR},
    {Tag_PACRET_use, 9, Default | option_bit::SIGN_RET_ADDR},
    {Tag_BTI_use, 0, Default},
    {Tag_BTI_use, 1, Default | option_bit::BTI},
    {Tag_PAC_extension, 1, Default},
    {Tag_BTI_extension, 1, Default},
    {Tag_ABI_enum_size, 1, Default},
    {Tag_ABI_enum_size, 2, Default | option_bit::ENUMINT},
    {Tag_ABI_enum_size, 3, Default},
    {Tag_ABI_PCS_wchar_t, 2, Default},
    {Tag_ABI_PCS_wchar_t, 4, Default | option_bit::WCHAR32},
    {Tag_PCS_config, 1, Default},
    {Tag_ABI_WMMX_args, 1, Default},
    {Tag_ABI_FP_user_exceptions, 1, Default},
    {Tag_ABI_FP_optimization_goals, 1, Default},
    {Tag_ABI_FP_16bit_format, 1, Default},
    {Tag_nodefaults, 1, Default},
    {Tag_AV_version, 1, Default},
};

TEST_F(RebuildTest, EachTagGivesItsOptions) {
    for (const OptionCase& row : optionCases) {
        EXPECT_EQ(rebuilt({{row.tag, row.value}}).options, row.options)
            << tagRows[row.tag].name << " " << row.value;
    }
}

TEST_F(RebuildTest, NewestLevelsOfTheSetsThatAreStated) {
    const auto isaOf = [](TagValues values) {
        return rebuilt(values).isa & (QEL_ISAv9 | FINCH_ISAv5);
    };
    EXPECT_EQ(isaOf({{Tag_AV_v8_isa, 1}, {Tag_QEL_ISA_use, 1}}), QEL_ISAv8);
    EXPECT_EQ(isaOf({{Tag_AV_v8_isa, 1}, {Tag_FINCH_ISA_use, 0}}), FINCH_ISAv5);
    EXPECT_EQ(isaOf({{Tag_AV_v8_isa, 0}, {Tag_QEL_ISA_use, 1}}), None);
    EXPECT_EQ(isaOf({{Tag_AV_v8_isa, 2}, {Tag_QEL_ISA_use, 1}, {Tag_FINCH_ISA_use, 1}}), None);
    EXPECT_EQ(isaOf({{Tag_AV_v8_isa, 1}, {Tag_QEL_ISA_use, 0}, {Tag_FINCH_ISA_use, 0}}),
              QEL_ISAv8 | FINCH_ISAv5);
}

TEST_F(RebuildTest, EnumSizeShowsOnceAnotherTagMarksTheRecord) {
    BuildAttributes record;
    record.setTag(Tag_ABI_enum_size, 2);
    EXPECT_FALSE(record.derivedStale);
    EXPECT_EQ(record.fullAttr.options & option_bit::ENUMINT, 0U);
    record.setTag(Tag_ABI_PCS_R9_use, 0);
    ASSERT_TRUE(record.derivedStale);
    record.rebuildFullAttr();
    EXPECT_EQ(record.fullAttr.options & option_bit::ENUMINT, option_bit::ENUMINT);
}

TEST_F(RebuildTest, ValuesWithoutAMeaningNeverFail) {
    for (const TagRow& row : tagRows) {
        if (row.form == TagForm_Text) {
            continue;
        }
        for (uint32_t value = 0; value < 256; ++value) {
            BuildAttributes record = recordWith({{row.tag, value}});
            record.rebuildFullAttr();
            EXPECT_FALSE(record.derivedStale);
        }
        rebuilt({{row.tag, 0xFFFFFFFF}});
    }
}

} // namespace
} // namespace attributes::test
