// From tags to their meaning: how `fullAttr` is derived.
//
// The architecture gives a set of features to start with; each further tag adds to it or takes
// away, in a fixed order. What follows from a single tag stands in tables; an absent tag counts as
// 0 in them. So a record without any tag has a meaning too, and it is not the default one.

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "attributes/interface/access_strings.h"
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/feature_words.h"
#include "attributes/interface/option_strings.h"
#include "attributes/interface/target_database.h"

namespace attributes {

namespace {

using namespace feature_word;

constexpr uint32_t AnyOther = 0xFFFFFFFF;
constexpr IsaSet None{};

// What a tag's value makes of the features: some go, then some come. Of a tag's rows the first
// with the value counts; a value without a row changes nothing.
struct FeatureRule {
    Tag tag;
    uint32_t value;
    IsaSet cleared;
    IsaSet added;
};

constexpr FeatureRule featureRules[] = {
    {Tag_WMMX_arch, 1, WMMX2_ISA, WMMX_ISA},
    {Tag_WMMX_arch, 2, WMMX2_ISA, WMMX2_ISA},
    {Tag_WMMX_arch, AnyOther, WMMX2_ISA, None},

    {Tag_Advanced_SIMD_arch, 1, None, ORCA_ISA},
    {Tag_Advanced_SIMD_arch, 2, None, ORCA_ISA},
    {Tag_Advanced_SIMD_arch, 3, None, ORCA_ISA},
    {Tag_Advanced_SIMD_arch, 4, None, ORCA_ISA | CX81_LOW},
    {Tag_Advanced_SIMD_arch, AnyOther, ORCA_ISA, None},

    {Tag_TRG_arch, 1, TRGf, TRGi},
    {Tag_TRG_arch, 2, None, TRGi | TRGf},
    {Tag_TRG_arch, AnyOther, TRGi | TRGf, None},

    {Tag_Virtualization_use, 1, VIRTUALIZATION_EXTENSION, SAFEHOUSE_ISA},
    {Tag_Virtualization_use, 2, SAFEHOUSE_ISA, VIRTUALIZATION_EXTENSION},
    {Tag_Virtualization_use, 3, None, SAFEHOUSE_ISA | VIRTUALIZATION_EXTENSION},
    {Tag_Virtualization_use, AnyOther, SAFEHOUSE_ISA | VIRTUALIZATION_EXTENSION, None},

    {Tag_F2EE_use, 1, None, X},
    {Tag_F2EE_use, AnyOther, X, None},

    {Tag_FP_arch, 1, FLOATING_POINT_BITS, EXTREGS_D16 | ZLT_ISAv1},
    {Tag_FP_arch, 2, FLOATING_POINT_BITS, EXTREGS_D16 | ZLT_ISAv2},
    {Tag_FP_arch, 3, FLOATING_POINT_BITS, EXTREGS_D32 | ZLT_ISAv3},
    {Tag_FP_arch, 4, FLOATING_POINT_BITS, EXTREGS_D16 | ZLT_ISAv3},
    {Tag_FP_arch, 5, FLOATING_POINT_BITS, EXTREGS_D32 | ZLT_ISAv3 | FP16 | VFMA_EXTENSION},
    {Tag_FP_arch, 6, FLOATING_POINT_BITS, EXTREGS_D16 | ZLT_ISAv3 | FP16 | VFMA_EXTENSION},
    {Tag_FP_arch, 7, FLOATING_POINT_BITS, EXTREGS_D32 | FP_ISA_QELv8 | FP16 | VFMA_EXTENSION},
    {Tag_FP_arch, 8, FLOATING_POINT_BITS, EXTREGS_D16 | ZLT_ISAv5 | FP16 | VFMA_EXTENSION},
    {Tag_FP_arch, AnyOther, FLOATING_POINT_BITS, None},

    {Tag_ABI_HardFP_use, 1, None, ZLT_SINGLE},
    {Tag_ABI_HardFP_use, 2, None, ZLT_DOUBLE},
    {Tag_ABI_HardFP_use, AnyOther, None, ZLT_SINGLE | ZLT_DOUBLE},

    {Tag_MPextension_use, 1, None, MP_EXTENSIONS},
    {Tag_MPextension_use, AnyOther, MP_EXTENSIONS, None},

    {Tag_AV_mdivide, 0, MARVELL_DIV, None},
    {Tag_AV_mdivide, 1, None, MARVELL_DIV},

    {Tag_AV_pld, 0, PLD1, None},
    {Tag_AV_pld, 1, None, PLD1},
    {Tag_AV_pld, 2, None, PLD2},
    {Tag_AV_pld, 3, None, PLD3},
    {Tag_AV_pld, 4, None, PLD4},
    {Tag_AV_pld, 5, None, PLD5},
    {Tag_AV_pld, 6, None, PLD0},
    {Tag_AV_pld, 7, None, PLD6},
    {Tag_AV_pld, 8, None, PLD7},
    {Tag_AV_pld, 9, None, PLD8},
};

// What a tag's value says of the options, as an option string; rows are found in the same way.
struct OptionRule {
    Tag tag;
    uint32_t value;
    const char* text;
};

constexpr OptionRule optionRules[] = {
    {Tag_ABI_PCS_RW_data, 0, "/norwpi/nofpic"},
    {Tag_ABI_PCS_RW_data, 1, "/norwpi/fpic/noropi/noindirect"},
    {Tag_ABI_PCS_RW_data, 3, "/norwpi/nofpic"},
    {Tag_ABI_PCS_RO_data, 0, "/noropi"},
    {Tag_ABI_PCS_RO_data, 1, "/ropi"},
    {Tag_ABI_PCS_GOT_use, 2, "/indirect"},
    {Tag_ABI_PCS_GOT_use, AnyOther, "/noindirect"},
    {Tag_ABI_PCS_R9_use, 0, "/usev6"},
    {Tag_ABI_PCS_R9_use, AnyOther, "/nousev6"},
    {Tag_ABI_align_needed, 1, "/8byte"},
    {Tag_ABI_align_needed, AnyOther, "/no8byte"},
    {Tag_ABI_optimization_goals, 1, "-otime"},
    {Tag_ABI_optimization_goals, 2, "-otime"},
    {Tag_ABI_optimization_goals, AnyOther, "-ospace"},
    {Tag_AV_interworking, 0, "/interwork"},
    {Tag_AV_interworking, 1, "/nointerwork"},
    {Tag_AV_standardlib, 0, "/nostandardlib"},
    {Tag_AV_standardlib, 1, "/standardlib"},
    {Tag_AV_microlib, 0, "/nomicrolib"},
    {Tag_AV_microlib, 1, "/microlib"},
    {Tag_AV_eba, 0, "/8byte"},
    {Tag_AV_eba, 1, "/no8byte"},
    {Tag_AV_eba, 2, "/no8byte"},
};

// The forms of access that all objects compatible with an architecture have.
constexpr uint16_t AccessOfOldest = access_bit::L44 | access_bit::L11;
constexpr uint16_t AccessOfMiddle = AccessOfOldest | access_bit::L22;
constexpr uint16_t AccessOfUnaligned = AccessOfMiddle | access_bit::UL41 | access_bit::UL21;

uint16_t accessOfArch(uint32_t arch) {
    if (arch == 0) {
        return AccessOfOldest;
    }
    return allowsUnalignedAccess(arch) ? AccessOfUnaligned : AccessOfMiddle;
}

// Derives the value of one record. Each step is one group of tags; their order matters.
class Derivation {
public:
    Derivation(const BuildAttributes& record, FullAttr& value) : m_Record(record), m_Value(value) {}

    void run() {
        m_Value = defaultFullAttr();
        takeArchitecture();
        restrictToCompatibleArchitectures();
        applyFeatures(Tag_WMMX_arch);
        applyFeatures(Tag_Advanced_SIMD_arch);
        applyFeatures(Tag_TRG_arch);
        applyFeatures(Tag_Virtualization_use);
        applyFeatures(Tag_F2EE_use);
        applyFloatingPoint();
        applyFeatures(Tag_MPextension_use);
        applyDivision();
        applyFloatingPointArguments();
        applyDsp();
        applyUnalignedAccess();
        applyPositionIndependence();
        applyOptions(Tag_ABI_PCS_R9_use);
        applyAlignment();
        applyOptions(Tag_ABI_optimization_goals);
        applyFloatingPointModel();
        applyReturnProtection();
        applyToolChainTags();
        applyTypeSizes();
    }

private:
    uint32_t number(Tag tag) const { return m_Record.getNumber(tag); }

    void applyFeatures(Tag tag) {
        for (const FeatureRule& rule : featureRules) {
            if (rule.tag == tag && (rule.value == number(tag) || rule.value == AnyOther)) {
                clearWord(m_Value.isa, rule.cleared);
                setWord(m_Value.isa, rule.added);
                return;
            }
        }
    }

    void applyOptions(Tag tag) {
        for (const OptionRule& rule : optionRules) {
            if (rule.tag == tag && (rule.value == number(tag) || rule.value == AnyOther)) {
                applyOptions(rule.text);
                return;
            }
        }
    }

    void applyOptions(const char* text) { applyOptionString(m_Value.options, text); }

    void setIf(bool condition, const IsaSet& word) {
        if (condition) {
            setWord(m_Value.isa, word);
        } else {
            clearWord(m_Value.isa, word);
        }
    }

    void setRequirementIf(bool condition, uint64_t bit) {
        m_Value.requirements &= ~bit;
        m_Value.requirements |= condition ? bit : 0;
    }

    FullAttr rowOf(uint32_t arch) const {
        FullAttr row;
        lookupByArch(arch, number(Tag_CPU_arch_profile), row);
        return row;
    }

    // The features of the stated architecture; those of 0 where none is stated.
    const IsaSet& isaOfOwnArch() {
        if (!m_IsaOfOwnArch) {
            m_IsaOfOwnArch = rowOf(number(Tag_CPU_arch)).isa;
        }
        return *m_IsaOfOwnArch;
    }

    void takeArchitecture() {
        FullAttr row;
        if (!m_Record.isPresent(Tag_CPU_arch)) {
            findTarget("", row);
        } else if (number(Tag_Q64_ISA_use) == 0) {
            row = rowOf(number(Tag_CPU_arch));
            m_IsaOfOwnArch = row.isa;
        } else {
            lookupWide(number(Tag_CPU_arch), isRealTimeWide() ? 'R' : 'A', row);
        }
        m_Value.isa = row.isa;
        m_Value.targetClass = row.targetClass;
        m_Value.targetKind = row.targetKind;
        if (m_Record.isPresent(Tag_CPU_arch)) {
            defaultAccess(number(Tag_CPU_arch), m_Value.access);
            dropUnusedInstructionSets();
        }
    }

    // The 64-bit real-time processors have no profile of their own; their names tell them.
    bool isRealTimeWide() const {
        const char* const name = m_Record.getText(Tag_CPU_name);
        return std::strcmp(name, "rw.wide") == 0 || std::strcmp(name, "rw.wide.auth") == 0;
    }

    void dropUnusedInstructionSets() {
        if (number(Tag_FINCH_ISA_use) == 0) {
            clearWord(m_Value.isa, FINCH_ISAv5);
        }
        if (number(Tag_QEL_ISA_use) == 0) {
            clearWord(m_Value.isa, QEL_ISAv9);
        }
        if (number(Tag_Q64_ISA_use) == 0) {
            clearWord(m_Value.isa, Q64_ISAv9);
        }
    }

    // What also runs on another architecture uses no more than what both have.
    void restrictToCompatibleArchitectures() {
        if (m_Record.m_AlsoCompatibilityTags == nullptr) {
            return;
        }
        std::array<std::optional<IsaSet>, KnownArchCount> known;
        for (const AlsoCompatibilityTag& entry : *m_Record.m_AlsoCompatibilityTags) {
            if (entry.getTag() != tagRows[Tag_CPU_arch].number || !entry.hasNumber()) {
                continue;
            }
            // All higher numbers are the same: without a row. A record may name the same
            // architecture any number of times.
            const uint32_t arch = std::min(entry.getNumber(), KnownArchCount - 1);
            if (!known[arch]) {
                known[arch] = rowOf(arch).isa;
            }
            m_Value.isa = m_Value.isa & *known[arch];
            for (uint16_t& access : m_Value.access) {
                access &= accessOfArch(arch);
            }
        }
    }

    void applyFloatingPoint() {
        applyFeatures(Tag_FP_arch);
        const uint32_t arch = number(Tag_FP_arch);
        if ((arch == 3 || arch == 4) && number(Tag_FP_HP_extension) == 1) {
            setWord(m_Value.isa, FP16);
        }
        if (arch == 8 && number(Tag_CPU_arch) == 14) {
            setWord(m_Value.isa, FP_ISA_QELv8);
            if (number(Tag_Advanced_SIMD_arch) >= 4) {
                setWord(m_Value.isa, CX81_LOW);
            }
        }
        if (arch != 0) {
            applyFeatures(Tag_ABI_HardFP_use);
        }
    }

    // Only one architecture leaves it open whether there are divisions.
    void applyDivision() {
        if (number(Tag_CPU_arch) != 10 || number(Tag_DIV_use) == 1) {
            return;
        }
        const uint32_t profile = number(Tag_CPU_arch_profile);
        if (number(Tag_DIV_use) == 2) {
            setWord(m_Value.isa, DIVIDE_EXTENSION);
        } else if (profile == 'R' || profile == 'M') {
            setWord(m_Value.isa, FINCH_DIVIDE);
        }
    }

    void applyFloatingPointArguments() {
        const bool usesNumbers = number(Tag_ABI_FP_number_model) != 0;
        setIf(usesNumbers && number(Tag_ABI_ZLT_args) != 1, SOFTFP);
    }

    void applyDsp() {
        if (number(Tag_DSP_extension) == 1) {
            setWord(m_Value.isa, DSP_MULT | MX7_EXTENSION);
        } else if (!hasAll(isaOfOwnArch(), MX7_EXTENSION)) {
            clearWord(m_Value.isa, MX7_EXTENSION);
        }
    }

    void applyUnalignedAccess() {
        const uint32_t use = number(Tag_CPU_unaligned_access);
        if (use == 0) {
            applyAccessString(m_Value.access, "-UL41-US41-UL21-US21");
        } else if (use == 1) {
            applyAccessString(m_Value.access, "+UL41+US41+UL21+US21");
        }
    }

    void applyPositionIndependence() {
        if (number(Tag_ABI_PCS_RO_data) == 1 && number(Tag_ABI_PCS_RW_data) == 1 &&
            number(Tag_ABI_PCS_GOT_use) == 2) {
            applyOptions("/norwpi/fpic");
            return;
        }
        if (number(Tag_ABI_PCS_RW_data) == 2) {
            if (number(Tag_ABI_PCS_R9_use) == 1) {
                applyOptions("/nofpic/rwpi");
            }
        } else {
            applyOptions(Tag_ABI_PCS_RW_data);
        }
        applyOptions(Tag_ABI_PCS_RO_data);
        applyOptions(Tag_ABI_PCS_GOT_use);
    }

    void applyAlignment() {
        const uint32_t needed = number(Tag_ABI_align_needed);
        applyOptions(Tag_ABI_align_needed);
        if (needed == 2) {
            m_Value.options |= option_bit::EBA4;
        }
        setRequirementIf(needed == 1, requirement_bit::REQ8);
        const uint32_t preserved = number(Tag_ABI_align_preserved);
        setRequirementIf(preserved == 1 || preserved == 2, requirement_bit::PRES8);
    }

    void applyFloatingPointModel() {
        const uint32_t model = number(Tag_ABI_FP_number_model);
        setIf(model != 0, PURE_DOUBLES);
        if (model == 0) {
            applyOptions("-noieee_full-noieee_part-noieee_java");
        } else if (number(Tag_ABI_FP_rounding) == 1 || number(Tag_ABI_FP_exceptions) == 1) {
            applyOptions("-noieee_part-noieee_java-ieee_full");
        } else if (model == 3) {
            applyOptions("-noieee_full-noieee_java-ieee_part");
        } else if (number(Tag_ABI_FP_denormal) == 1) {
            applyOptions("-noieee_full-noieee_part-ieee_java");
        } else {
            applyOptions("-noieee_full-noieee_part-noieee_java");
            setIf(number(Tag_ABI_FP_denormal) == 0, FZ_POSZERO);
        }
    }

    void applyReturnProtection() {
        if (number(Tag_PACRET_use) != 0) {
            applyOptions("/sign_ret_addr");
        }
        if (number(Tag_BTI_use) != 0) {
            applyOptions("/bti");
        }
    }

    void applyToolChainTags() {
        applyOptions(Tag_AV_interworking);
        if (number(Tag_AV_cpp_exceptions) <= 1) {
            m_Value.options &= ~option_bit::UX;
            m_Value.options |= number(Tag_AV_cpp_exceptions) == 1 ? option_bit::UX : 0;
        }
        applyFeatures(Tag_AV_mdivide);
        applyOptions(Tag_AV_standardlib);
        applyOptions(Tag_AV_microlib);
        if (number(Tag_AV_require8) <= 1) {
            setRequirementIf(number(Tag_AV_require8) == 0, requirement_bit::REQ8);
        }
        applyOptions(Tag_AV_eba);
        if (number(Tag_AV_eba) == 2) {
            m_Value.options |= option_bit::EBA4;
        }
        applyFeatures(Tag_AV_pld);
        if (number(Tag_AV_v8_isa) == 1) {
            applyNewestLevels();
        }
    }

    void applyNewestLevels() {
        if (m_Record.isPresent(Tag_FINCH_ISA_use)) {
            setWord(m_Value.isa, FINCH_ISAv5);
        }
        if (m_Record.isPresent(Tag_QEL_ISA_use)) {
            setWord(m_Value.isa, QEL_ISAv8);
        }
    }

    void applyTypeSizes() {
        m_Value.options |= number(Tag_ABI_enum_size) == 2 ? option_bit::ENUMINT : 0;
        m_Value.options |= number(Tag_ABI_PCS_wchar_t) == 4 ? option_bit::WCHAR32 : 0;
        m_Value.options |= number(Tag_PACRET_use) != 0 ? option_bit::SIGN_RET_ADDR : 0;
        m_Value.options |= number(Tag_BTI_use) != 0 ? option_bit::BTI : 0;
    }

    // Architectures are numbered below this.
    static constexpr uint32_t KnownArchCount = 64;

    const BuildAttributes& m_Record;
    FullAttr& m_Value;
    std::optional<IsaSet> m_IsaOfOwnArch;
};

} // namespace

void BuildAttributes::rebuildFullAttr() {
    derivedStale = false;
    Derivation(*this, fullAttr).run();
}

} // namespace attributes
