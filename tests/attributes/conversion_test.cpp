// From a derived value back to tags, step by step.
#include "attributes/interface/build_attributes.h"

#include <string>

#include "attributes/interface/isa_levels.h"
#include "attributes/interface/target_database.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using namespace feature_word;

using ConversionTest = RecordTest;

BuildAttributes recordOf(const FullAttr& value) {
    BuildAttributes record;
    record.fromFullAttr(value);
    return record;
}

BuildAttributes recordOfIsa(const IsaSet& isa) {
    FullAttr value;
    value.isa = isa;
    return recordOf(value);
}

BuildAttributes recordOfOptions(uint64_t options) {
    FullAttr value;
    value.options = options;
    return recordOf(value);
}

TEST_F(ConversionTest, TakesTheValueAndIsNotStale) {
    FullAttr value = defaultFullAttr();
    value.targetClass = 5;
    value.isa = QEL_ISAv5;
    BuildAttributes record;
    record.derivedStale = true;
    record.fromFullAttr(value);
    EXPECT_EQ(record.fullAttr, value);
    EXPECT_FALSE(record.derivedStale);
}

TEST_F(ConversionTest, OfAnEmptyValueStatesNoArchitectureAndMostlyZeros) {
    const BuildAttributes record = recordOf(FullAttr());
    const std::string expected[][2] = {
        {"Tag_FP_arch", "0"},
        {"Tag_WMMX_arch", "0"},
        {"Tag_Advanced_SIMD_arch", "0"},
        {"Tag_TRG_arch", "0"},
        {"Tag_ABI_PCS_R9_use", "3"},
        {"Tag_ABI_PCS_RW_data", "0"},
        {"Tag_ABI_PCS_RO_data", "0"},
        {"Tag_ABI_PCS_GOT_use", "1"},
        {"Tag_ABI_FP_rounding", "0"},
        {"Tag_ABI_FP_denormal", "0"},
        {"Tag_ABI_FP_exceptions", "0"},
        {"Tag_ABI_FP_user_exceptions", "0"},
        {"Tag_ABI_FP_number_model", "0"},
        {"Tag_ABI_FP_optimization_goals", "0"},
        {"Tag_ABI_align_needed", "2"},
        {"Tag_ABI_align_preserved", "0"},
        {"Tag_ABI_ZLT_args", "3"},
        {"Tag_ABI_optimization_goals", "0"},
        {"Tag_CPU_unaligned_access", "0"},
        {"Tag_FP_HP_extension", "0"},
        {"Tag_DSP_extension", "0"},
        {"Tag_F2EE_use", "0"},
        {"Tag_Virtualization_use", "0"},
        {"Tag_MPextension_use", "0"},
        {"Tag_DIV_use", "0"},
        {"Tag_AV_interworking", "1"},
        {"Tag_AV_cpp_exceptions", "0"},
        {"Tag_AV_mdivide", "0"},
        {"Tag_AV_standardlib", "0"},
        {"Tag_AV_microlib", "0"},
        {"Tag_AV_require8", "1"},
        {"Tag_AV_eba", "2"},
        {"Tag_AV_pld", "0"},
    };
    const Witness witness(record);
    for (const TagRow& row : tagRows) {
        std::string slot = "-";
        for (const auto& [name, value] : expected) {
            slot = name == row.name ? value : slot;
        }
        EXPECT_EQ(witness.slots[row.tag], slot) << row.name;
    }
    // No interworking: the conventions are those of this tool chain.
    ASSERT_TRUE(witness.compatible);
    EXPECT_EQ(witness.compatible->size(), 1U);
    EXPECT_NE(record.findCompatibilityTag(2, "QEL"), nullptr);
    ASSERT_TRUE(witness.alsoCompatible);
    EXPECT_EQ(*witness.alsoCompatible, std::vector<std::string>{"6=11"});
    EXPECT_EQ(record.fullAttr.options, option_bit::EBA4);
}

TEST_F(ConversionTest, ArchitectureComesWithAnyLevel) {
    for (const IsaSet& isa :
         {QEL_ISAv3, QEL_ISAv9 | KERNEL_ISA, FINCH_ISAv1, FINCH_ISAv4 | M | KERNEL_ISA, Q64_ISAv8,
          Q64_ISAv9, QEL_ISAv7 | FINCH_ISAv4 | KERNEL_ISA | DSP_MULT | A_PROFILE}) {
        const BuildAttributes record = recordOfIsa(isa);
        EXPECT_TRUE(record.isPresent(Tag_CPU_arch));
        EXPECT_EQ(record.getNumber(Tag_CPU_arch), archFromIsa(isa));
        EXPECT_TRUE(record.isPresent(Tag_CPU_arch_profile));
        EXPECT_EQ(record.getNumber(Tag_CPU_arch_profile), profileFromIsa(isa));
        EXPECT_TRUE(record.isPresent(Tag_QEL_ISA_use));
        EXPECT_EQ(record.getNumber(Tag_QEL_ISA_use), hasAll(isa, QEL_ISAv3) ? 1U : 0U);
        EXPECT_TRUE(record.isPresent(Tag_Q64_ISA_use));
        EXPECT_EQ(record.getNumber(Tag_Q64_ISA_use), hasAll(isa, Q64_ISAv8) ? 1U : 0U);
    }
    EXPECT_FALSE(recordOfIsa(M | KERNEL_ISA).isPresent(Tag_CPU_arch));
}

TEST_F(ConversionTest, UseOfTheCompactSet) {
    const auto useOf = [](const IsaSet& isa) {
        return recordOfIsa(isa).getNumber(Tag_FINCH_ISA_use);
    };
    EXPECT_EQ(useOf(QEL_ISAv4), 0U);
    EXPECT_EQ(useOf(FINCH_ISAv1), 1U);
    EXPECT_EQ(useOf(FINCH_ISAv3), 1U);
    EXPECT_EQ(useOf(FINCH_ISAv4), 2U);
    EXPECT_EQ(useOf(FINCH_ISAv5), 2U);
    EXPECT_EQ(useOf(FINCH_ISAv3 | MX8_INSNS), 3U);
    EXPECT_EQ(useOf(QEL_ISAv4 | MX8_INSNS), 3U);
}

TEST_F(ConversionTest, CompatibleArchitecturesThatFollow) {
    const auto entriesOf = [](const IsaSet& isa) {
        return Witness(recordOfIsa(isa)).alsoCompatible.value_or(std::vector<std::string>());
    };
    using Entries = std::vector<std::string>;
    EXPECT_EQ(entriesOf({}), Entries{"6=11"});
    EXPECT_EQ(entriesOf(FINCH_ISAv3), Entries{"6=11"});
    EXPECT_EQ(entriesOf(FINCH_ISAv4), Entries{});
    EXPECT_EQ(entriesOf(FINCH_ISAv3 | M), Entries{});
    EXPECT_EQ(entriesOf(FINCH_ISAv3 | OS_EXTENSION), Entries{});
    EXPECT_EQ(entriesOf(Q64_ISAv8), Entries{});
    EXPECT_EQ(entriesOf(QEL_ISAv3), Entries{});
    EXPECT_EQ(entriesOf(QEL_ISAv8), Entries{"6=15"});
    EXPECT_EQ(entriesOf(QEL_ISAv8 | A_PROFILE), Entries{});
    EXPECT_EQ(entriesOf(QEL_ISAv8 | R_PROFILE), Entries{});
    EXPECT_EQ(entriesOf(QEL_ISAv9), Entries{});
    // Not a second time.
    BuildAttributes record = recordOf(FullAttr());
    record.fromFullAttr(FullAttr());
    EXPECT_EQ(record.getAlsoCompatibilityTagCount(), 1U);
}

// Features and a tag that they settle.
struct FeatureCase {
    IsaSet isa;
    Tag tag;
    uint32_t value;
};

constexpr IsaSet Extended3 = ZLT_ISAv3 | FP16 | VFMA_EXTENSION;

constexpr FeatureCase featureCases[] = {
    {WMMX_ISA, Tag_WMMX_arch, 1},
    {WMMX2_ISA, Tag_WMMX_arch, 2},
    {{0x8000, 0}, Tag_WMMX_arch, 0},
    {SAFEHOUSE_ISA, Tag_Virtualization_use, 1},
    {VIRTUALIZATION_EXTENSION, Tag_Virtualization_use, 2},
    {SAFEHOUSE_ISA | VIRTUALIZATION_EXTENSION, Tag_Virtualization_use, 3},
    {X, Tag_F2EE_use, 1},
    {ZLT_ISAv1, Tag_FP_arch, 1},
    {ZLT_ISAv1 | EXTREGS_D32, Tag_FP_arch, 1},
    {ZLT_ISAv2, Tag_FP_arch, 2},
    {ZLT_ISAv3, Tag_FP_arch, 4},
    {ZLT_ISAv3 | EXTREGS_D16, Tag_FP_arch, 4},
    {ZLT_ISAv3 | EXTREGS_D32, Tag_FP_arch, 3},
    {ZLT_ISAv3 | VFMA_EXTENSION, Tag_FP_arch, 4},
    {Extended3, Tag_FP_arch, 6},
    {Extended3 | EXTREGS_D32, Tag_FP_arch, 5},
    {ZLT_ISAv5, Tag_FP_arch, 8},
    {ZLT_ISAv5 | EXTREGS_D32, Tag_FP_arch, 7},
    {FP_ISA_QELv8, Tag_FP_arch, 8},
    {FP_ISA_QELv8 | EXTREGS_D32, Tag_FP_arch, 7},
    {FP_ISA_QELv8 | FP_GENERATION_7, Tag_FP_arch, 8},
    {FP_ISA_QELv8 | FP_GENERATION_7 | EXTREGS_D32, Tag_FP_arch, 7},
    {EXTREGS_D32, Tag_FP_arch, 0},
    {FP_ISA_QELv8, Tag_Advanced_SIMD_arch, 0},
    {ORCA_ISA, Tag_Advanced_SIMD_arch, 1},
    {ORCA_ISA | ZLT_ISAv3, Tag_Advanced_SIMD_arch, 1},
    {ORCA_ISA | CX81_LOW, Tag_Advanced_SIMD_arch, 1},
    {ORCA_ISA | Extended3, Tag_Advanced_SIMD_arch, 2},
    {ORCA_ISA | Extended3 | CX81_LOW, Tag_Advanced_SIMD_arch, 2},
    {ORCA_ISA | ZLT_ISAv5, Tag_Advanced_SIMD_arch, 3},
    {ORCA_ISA | FP_ISA_QELv8, Tag_Advanced_SIMD_arch, 3},
    {ORCA_ISA | FP_ISA_QELv8 | CX81_HIGH, Tag_Advanced_SIMD_arch, 3},
    {ORCA_ISA | FP_ISA_QELv8 | CX81_LOW, Tag_Advanced_SIMD_arch, 4},
    {ORCA_ISA | ZLT_ISAv5 | ZLT_HALF, Tag_Advanced_SIMD_arch, 4},
    {ORCA_ISA | FP_ISA_QELv8 | FP_GENERATION_7 | CX81_LOW, Tag_Advanced_SIMD_arch, 4},
    {TRGi, Tag_TRG_arch, 1},
    {TRGi | TRGf, Tag_TRG_arch, 2},
    {TRGf, Tag_TRG_arch, 2},
    {ZLT_SINGLE | ZLT_DOUBLE, Tag_ABI_HardFP_use, 0},
    {ZLT_SINGLE, Tag_ABI_HardFP_use, 1},
    {ZLT_DOUBLE, Tag_ABI_HardFP_use, 2},
    {ZLT_ISAv3, Tag_FP_HP_extension, 0},
    {ZLT_ISAv3 | FP16, Tag_FP_HP_extension, 1},
    {ZLT_ISAv3 | FP16 | EXTREGS_D32, Tag_FP_HP_extension, 1},
    {ZLT_ISAv2 | FP16, Tag_FP_HP_extension, 0},
    {Extended3, Tag_FP_HP_extension, 1},
    {Extended3 | EXTREGS_D32, Tag_FP_HP_extension, 1},
    {FP_ISA_QELv8 | EXTREGS_D32, Tag_FP_HP_extension, 1},
    {FP_ISA_QELv8, Tag_FP_HP_extension, 1},
    {MP_EXTENSIONS, Tag_MPextension_use, 1},
    {QEL_ISAv7 | DIVIDE_EXTENSION, Tag_DIV_use, 2},
    {QEL_ISAv7 | FINCH_DIVIDE, Tag_DIV_use, 0},
    {QEL_ISAv6 | DIVIDE_EXTENSION, Tag_DIV_use, 0},
    {DIVIDE_EXTENSION, Tag_DIV_use, 0},
    {ZLT_ISAv1, Tag_ABI_ZLT_args, 1},
    {ZLT_ISAv1 | PURE_DOUBLES, Tag_ABI_ZLT_args, 1},
    {ZLT_ISAv1 | SOFTFP, Tag_ABI_ZLT_args, 3},
    {ZLT_ISAv1 | SOFTFP | PURE_DOUBLES, Tag_ABI_ZLT_args, 0},
    {PURE_DOUBLES, Tag_ABI_ZLT_args, 0},
    {MARVELL_DIV, Tag_AV_mdivide, 1},
    {PLD7, Tag_AV_pld, 8},
    {PLD0, Tag_AV_pld, 6},
    {PLD1, Tag_AV_pld, 1},
    {PLD2, Tag_AV_pld, 2},
    {PLD3, Tag_AV_pld, 3},
    {PLD4, Tag_AV_pld, 4},
    {PLD5, Tag_AV_pld, 5},
    {PLD6, Tag_AV_pld, 7},
    {PLD8, Tag_AV_pld, 9},
};

TEST_F(ConversionTest, FeaturesSettleTheirTags) {
    for (const FeatureCase& row : featureCases) {
        const BuildAttributes record = recordOfIsa(row.isa);
        EXPECT_TRUE(record.isPresent(row.tag)) << tagRows[row.tag].name;
        EXPECT_EQ(record.getNumber(row.tag), row.value)
            << tagRows[row.tag].name << " " << std::hex << row.isa.high << ":" << row.isa.low;
    }
}

TEST_F(ConversionTest, WithoutAWidthThatTagBecomesAbsent) {
    BuildAttributes record = recordWith({{Tag_ABI_HardFP_use, 1}});
    record.fromFullAttr(FullAttr());
    EXPECT_FALSE(record.isPresent(Tag_ABI_HardFP_use));
}

TEST_F(ConversionTest, DspIsStatedWhereTheArchitectureLacksIt) {
    bool sawRowWith = false;
    bool sawRowWithout = false;
    for (uint32_t arch = 0; arch < 26; ++arch) {
        for (const uint32_t profile : {0U, 65U, 77U, 82U, 83U}) {
            FullAttr row;
            lookupByArch(arch, profile, row);
            BuildAttributes record;
            FullAttr value = row;
            setWord(value.isa, MX7_EXTENSION);
            record.fromFullAttr(value);
            FullAttr stated;
            lookupByArch(record.getNumber(Tag_CPU_arch), record.getNumber(Tag_CPU_arch_profile),
                         stated);
            const bool has = hasAll(stated.isa, MX7_EXTENSION);
            (has ? sawRowWith : sawRowWithout) = true;
            EXPECT_EQ(record.getNumber(Tag_DSP_extension), has ? 0U : 1U) << arch << profile;
            clearWord(value.isa, MX7_EXTENSION);
            record.fromFullAttr(value);
            EXPECT_EQ(record.getNumber(Tag_DSP_extension), 0U);
        }
    }
    EXPECT_TRUE(sawRowWith);
    EXPECT_TRUE(sawRowWithout);
}

TEST_F(ConversionTest, UnalignedAccessIsThatOfData) {
    for (uint32_t word = 0; word < 4; ++word) {
        FullAttr value;
        value.access[word] = 0x4000;
        EXPECT_EQ(recordOf(value).getNumber(Tag_CPU_unaligned_access), word == 2 ? 1U : 0U);
        value.access[word] = 0xBFFF;
        EXPECT_EQ(recordOf(value).getNumber(Tag_CPU_unaligned_access), 0U);
    }
}

// Options and a tag that they settle.
struct OptionCase {
    uint64_t options;
    Tag tag;
    uint32_t value;
};
constexpr OptionCase optionCases[] = {
    {option_bit::ROPI, Tag_ABI_PCS_RO_data, 1},
    {0, Tag_ABI_PCS_RO_data, 0},
    {option_bit::INDIRECT, Tag_ABI_PCS_GOT_use, 2},
    {0, Tag_ABI_PCS_GOT_use, 1},
    {option_bit::RWPI, Tag_ABI_PCS_RW_data, 2},
    {option_bit::RWPI, Tag_ABI_PCS_R9_use, 1},
    {option_bit::RWPI | option_bit::FPIC | option_bit::USESV6, Tag_ABI_PCS_RW_data, 2},
    {option_bit::RWPI | option_bit::FPIC | option_bit::USESV6, Tag_ABI_PCS_R9_use, 1},
    {option_bit::FPIC, Tag_ABI_PCS_RW_data, 1},
    {option_bit::FPIC, Tag_ABI_PCS_R9_use, 3},
    {option_bit::USESV6, Tag_ABI_PCS_R9_use, 0},
    {option_bit::OTIME, Tag_ABI_optimization_goals, 2},
    {option_bit::OSPACE, Tag_ABI_optimization_goals, 4},
    {0x20000, Tag_ABI_optimization_goals, 0},
    {option_bit::SIGN_RET_ADDR, Tag_PACRET_use, 1},
    {option_bit::SIGN_RET_ADDR, Tag_PAC_extension, 1},
    {option_bit::BTI, Tag_BTI_use, 1},
    {option_bit::BTI, Tag_BTI_extension, 1},
    {option_bit::IW, Tag_AV_interworking, 0},
    {option_bit::NOT_IW, Tag_AV_interworking, 1},
    {option_bit::UX, Tag_AV_cpp_exceptions, 1},
    {option_bit::STANDARDLIB, Tag_AV_standardlib, 1},
    {option_bit::MICROLIB, Tag_AV_microlib, 1},
    {option_bit::EBA8, Tag_AV_eba, 0},
    {option_bit::EBA8 | option_bit::EBA4, Tag_AV_eba, 0},
    {option_bit::EBA4, Tag_AV_eba, 2},
    {option_bit::ENUMINT, Tag_ABI_enum_size, 2},
    {option_bit::WCHAR32, Tag_ABI_PCS_wchar_t, 4},
};

TEST_F(ConversionTest, OptionsSettleTheirTags) {
    for (const OptionCase& row : optionCases) {
        const BuildAttributes record = recordOfOptions(row.options);
        EXPECT_TRUE(record.isPresent(row.tag)) << tagRows[row.tag].name;
        EXPECT_EQ(record.getNumber(row.tag), row.value)
            << tagRows[row.tag].name << " " << std::hex << row.options;
    }
}

TEST_F(ConversionTest, SomeTagsAreStatedOnlyWhereTheirFeatureIsThere) {
    const Tag tags[] = {Tag_PACRET_use,    Tag_PAC_extension, Tag_BTI_use,
                        Tag_BTI_extension, Tag_ABI_enum_size, Tag_ABI_PCS_wchar_t};
    const BuildAttributes record = recordOf(FullAttr());
    for (const Tag tag : tags) {
        EXPECT_FALSE(record.isPresent(tag)) << tagRows[tag].name;
    }
}

TEST_F(ConversionTest, AlignmentAndTheFormat) {
    FullAttr value;
    value.abiVersion = abi_version::EABIv2;
    value.requirements = requirement_bit::PRES8;
    BuildAttributes record = recordOf(value);
    EXPECT_EQ(record.getNumber(Tag_AV_eba), 1U);
    EXPECT_EQ(record.fullAttr.options, 0U);
    EXPECT_EQ(record.getNumber(Tag_ABI_align_needed), 0U);
    EXPECT_EQ(record.getNumber(Tag_ABI_align_preserved), 1U);
    EXPECT_EQ(record.getNumber(Tag_AV_require8), 1U);
    value.requirements = requirement_bit::REQ8;
    value.options = option_bit::EBA8;
    record = recordOf(value);
    EXPECT_EQ(record.getNumber(Tag_AV_require8), 0U);
    EXPECT_EQ(record.getNumber(Tag_ABI_align_needed), 1U);
    EXPECT_EQ(record.getNumber(Tag_ABI_align_preserved), 0U);
    value.requirements = 0;
    EXPECT_EQ(recordOf(value).getNumber(Tag_ABI_align_needed), 0U);
    value.options = option_bit::EBA4;
    EXPECT_EQ(recordOf(value).getNumber(Tag_ABI_align_needed), 2U);
}

TEST_F(ConversionTest, ModelsOfFloatingPoint) {
    struct Model {
        IsaSet isa;
        uint64_t options;
        std::string slots[6]; // rounding, denormal, exceptions, user exceptions, model, goals
    };
    const Model models[] = {
        {FZ_POSZERO, option_bit::IEEEX, {"0", "0", "0", "0", "0", "0"}},
        {PURE_DOUBLES, option_bit::IEEEX, {"1", "1", "-", "1", "3", "0"}},
        {PURE_DOUBLES | FZ_POSZERO, option_bit::IEEEF, {"0", "1", "0", "1", "3", "0"}},
        {PURE_DOUBLES | FZ_POSZERO, option_bit::IEEEJ, {"0", "1", "0", "0", "2", "0"}},
        {PURE_DOUBLES | FZ_POSZERO, 0, {"0", "0", "0", "0", "1", "-"}},
        {PURE_DOUBLES, 0, {"0", "2", "0", "0", "1", "-"}},
        {PURE_DOUBLES, 0x600000, {"0", "2", "0", "0", "1", "-"}},
    };
    const Tag tags[] = {Tag_ABI_FP_rounding,     Tag_ABI_FP_denormal,
                        Tag_ABI_FP_exceptions,   Tag_ABI_FP_user_exceptions,
                        Tag_ABI_FP_number_model, Tag_ABI_FP_optimization_goals};
    for (const Model& model : models) {
        FullAttr value;
        value.isa = model.isa;
        value.options = model.options;
        const Witness witness(recordOf(value));
        for (uint32_t i = 0; i < std::size(tags); ++i) {
            EXPECT_EQ(witness.slots[tags[i]], model.slots[i])
                << tagRows[tags[i]].name << " " << std::hex << model.options;
        }
    }
}

TEST_F(ConversionTest, TheOwnVendorFollowsTheTwoTags) {
    BuildAttributes record = recordOfOptions(option_bit::IW);
    EXPECT_EQ(record.getCompatibilityTagCount(), 0U);
    EXPECT_EQ(record.m_CompatibilityTags, nullptr);
    record.setConformance("2.09");
    FullAttr value;
    value.options = option_bit::IW;
    value.isa = MARVELL_DIV;
    record.fromFullAttr(value);
    EXPECT_NE(record.findCompatibilityTag(2, "QEL"), nullptr);
    EXPECT_FALSE(record.isPresent(Tag_conformance));
    record.addCompatibilityTag(1, "QEL");
    value.isa = IsaSet();
    record.fromFullAttr(value);
    EXPECT_EQ(record.findCompatibilityTag(2, "QEL"), nullptr);
    EXPECT_EQ(record.getCompatibilityTagCount(), 1U);
}

TEST_F(ConversionTest, IsStableAndKeepsRandomValuesButForOneOption) {
    RandomSource random(3);
    for (int i = 0; i < 5000; ++i) {
        const FullAttr value = random.value();
        const BuildAttributes once = recordOf(value);
        FullAttr expected = value;
        const uint64_t alignments = option_bit::EBA4 | option_bit::EBA8;
        if ((value.options & alignments) == 0 && value.abiVersion != abi_version::EABIv2) {
            expected.options |= option_bit::EBA4;
        }
        ASSERT_EQ(once.fullAttr, expected);
        BuildAttributes twice = once;
        twice.fromFullAttr(once.fullAttr);
        ASSERT_EQ(Witness(twice), Witness(once));
    }
}

} // namespace
} // namespace attributes::test
