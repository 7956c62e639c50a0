// From a meaning back to tags: how a record is made of a decoration.
//
// A decoration says less than the tags do, so each tag gets the value that the meaning amounts to;
// where it says nothing, most tags are stated as 0, and a few stay as they are.

#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/decoration.h"
#include "attributes/interface/feature_words.h"
#include "attributes/interface/isa_levels.h"
#include "attributes/interface/target_database.h"
#include "platform/interface/internal_check.h"

namespace attributes {

namespace {

using namespace feature_word;

constexpr uint8_t Untouched = 0xFF;

// The tags of a model of floating point.
struct FloatingPointModel {
    uint8_t rounding;
    uint8_t denormal;
    uint8_t exceptions;
    uint8_t userExceptions;
    uint8_t numberModel;
    uint8_t optimizationGoals;
};

// The models as rows, tested in this order: the first is the one without `PURE_DOUBLES`, the last
// the one that is left. That the strictest leaves `Tag_ABI_FP_exceptions` open is required: objects
// of this tool chain are told apart by their records, and theirs have that gap.
enum ModelRow : uint32_t {
    ModelRow_None,
    ModelRow_Full,
    ModelRow_Part,
    ModelRow_Java,
    ModelRow_FlushToZero,
    ModelRow_Other,
};

constexpr FloatingPointModel floatingPointModels[] = {
    {0, 0, 0, 0, 0, 0}, {1, 1, Untouched, 1, 3, 0}, {0, 1, 0, 1, 3, 0},
    {0, 1, 0, 0, 2, 0}, {0, 0, 0, 0, 1, Untouched}, {0, 2, 0, 0, 1, Untouched},
};

// Prefetch forms in the order in which they are tried; the last that is there wins.
struct PrefetchRow {
    IsaSet word;
    uint32_t value;
};
constexpr PrefetchRow prefetchRows[] = {
    {PLD7, 8}, {PLD0, 6}, {PLD1, 1}, {PLD2, 2}, {PLD3, 3},
    {PLD4, 4}, {PLD5, 5}, {PLD6, 7}, {PLD8, 9},
};

// The values of `Tag_FP_arch` and `Tag_Advanced_SIMD_arch` by generation of floating point.
struct GenerationRow {
    uint32_t archWith16Registers;
    uint32_t archWith32Registers;
    uint32_t simd;
};
constexpr GenerationRow generationRows[] = {
    {0, 0, 1}, {1, 1, 1}, {2, 2, 1}, {4, 3, 1}, {6, 5, 2}, {8, 7, 3}, {8, 7, 3}, {8, 7, 3},
};
constexpr uint32_t SimdWithExtensions = 4; // in place of 3

// Sets the tags of one record, a group of them a step.
class TagSetter {
public:
    TagSetter(BuildAttributes& record, FullAttr& value)
        : m_Record(record), m_Value(value), m_Isa(value.isa), m_Qel(qelVersion(value.isa)),
          m_Finch(finchVersion(value.isa)), m_Q64(q64Version(value.isa)),
          m_Generation(fpGeneration(value.isa)) {}

    void run() {
        setArchitecture();
        setCompatibleArchitectures();
        setExtensions();
        setFloatingPoint();
        setDivision();
        setDsp();
        setArgumentsAndAccess();
        setPositionIndependence();
        put(Tag_ABI_align_preserved, hasRequirement(requirement_bit::PRES8));
        setOptimizationGoals();
        setFloatingPointModel();
        setReturnProtection();
        setToolChainTags();
        setEba();
        setPrefetch();
        setTypeSizes();
        m_Record.updateAlignmentNeeded();
        m_Record.updateQelCompatibility();
    }

private:
    void put(Tag tag, uint32_t number) { m_Record.m_StandardTags.setNumber(tag, number); }
    void put(Tag tag, bool isThere) { put(tag, isThere ? 1U : 0U); }
    bool has(const IsaSet& word) const { return hasAll(m_Isa, word); }
    bool hasOption(uint64_t bits) const { return (m_Value.options & bits) == bits; }
    bool hasRequirement(uint64_t bit) const { return (m_Value.requirements & bit) != 0; }
    uint32_t number(Tag tag) const { return m_Record.getNumber(tag); }

    void setArchitecture() {
        if (m_Qel == 0 && m_Finch == 0 && m_Q64 == 0) {
            return;
        }
        put(Tag_CPU_arch, archFromIsa(m_Isa));
        put(Tag_CPU_arch_profile, profileFromIsa(m_Isa));
        put(Tag_QEL_ISA_use, m_Qel != 0);
        put(Tag_FINCH_ISA_use, finchUse());
        put(Tag_Q64_ISA_use, m_Q64 != 0);
    }

    uint32_t finchUse() const {
        if (has(MX8_INSNS)) {
            return 3;
        }
        if (m_Finch >= 4) {
            return 2;
        }
        return m_Finch >= 1 ? 1 : 0;
    }

    void setCompatibleArchitectures() {
        if (m_Qel == 0 && m_Q64 == 0 && m_Finch <= 3 && !has(M) && !has(OS_EXTENSION)) {
            addCompatibleArchitecture(11);
        }
        if (m_Qel == 8 && !has(A_PROFILE) && !has(R_PROFILE)) {
            addCompatibleArchitecture(15);
        }
    }

    void addCompatibleArchitecture(uint32_t arch) {
        const AlsoCompatibilityTag entry(tagRows[Tag_CPU_arch].number, arch);
        const auto& list = m_Record.m_AlsoCompatibilityTags;
        if (list == nullptr || list->find(entry) == AlsoCompatibilityTagList::NotFound) {
            m_Record.addAlsoCompatibilityTag(entry);
        }
    }

    void setExtensions() {
        const uint32_t wmmx = has(WMMX_ISA) ? 1 : 0;
        put(Tag_WMMX_arch, has(WMMX2_ISA) ? 2 : wmmx);
        const uint32_t virtualization = has(VIRTUALIZATION_EXTENSION) ? 2 : 0;
        put(Tag_Virtualization_use, virtualization + (has(SAFEHOUSE_ISA) ? 1 : 0));
        put(Tag_F2EE_use, has(X));
        const uint32_t trg = has(TRGi) ? 1 : 0;
        put(Tag_TRG_arch, has(TRGf) ? 2 : trg);
        put(Tag_MPextension_use, has(MP_EXTENSIONS));
    }

    void setFloatingPoint() {
        const GenerationRow& row = generationRows[m_Generation];
        const uint32_t arch = has(EXTREGS_D32) ? row.archWith32Registers : row.archWith16Registers;
        put(Tag_FP_arch, arch);
        put(Tag_FP_HP_extension, arch > 4 || ((arch == 3 || arch == 4) && has(FP16)));
        uint32_t simd = row.simd;
        if (m_Generation >= 5 && (has(CX81_LOW) || has(ZLT_HALF))) {
            simd = SimdWithExtensions;
        }
        put(Tag_Advanced_SIMD_arch, has(ORCA_ISA) ? simd : 0);
        setHardFloatingPoint();
    }

    void setHardFloatingPoint() {
        if (has(ZLT_SINGLE | ZLT_DOUBLE)) {
            put(Tag_ABI_HardFP_use, 0U);
        } else if (has(ZLT_SINGLE)) {
            put(Tag_ABI_HardFP_use, 1U);
        } else if (has(ZLT_DOUBLE)) {
            put(Tag_ABI_HardFP_use, 2U);
        } else {
            m_Record.m_StandardTags.clear(Tag_ABI_HardFP_use);
        }
    }

    void setDivision() {
        const bool divides = number(Tag_CPU_arch) == 10 && has(DIVIDE_EXTENSION);
        put(Tag_DIV_use, divides ? 2U : 0U);
    }

    void setDsp() {
        FullAttr row;
        lookupByArch(number(Tag_CPU_arch), number(Tag_CPU_arch_profile), row);
        put(Tag_DSP_extension, has(MX7_EXTENSION) && !hasAll(row.isa, MX7_EXTENSION));
    }

    void setArgumentsAndAccess() {
        const uint32_t withoutHardware = has(PURE_DOUBLES) ? 0 : 3;
        put(Tag_ABI_ZLT_args, m_Generation > 0 && !has(SOFTFP) ? 1 : withoutHardware);
        put(Tag_CPU_unaligned_access, (m_Value.access[2] & access_bit::UL41) != 0);
    }

    void setPositionIndependence() {
        put(Tag_ABI_PCS_RO_data, hasOption(option_bit::ROPI));
        put(Tag_ABI_PCS_GOT_use, hasOption(option_bit::INDIRECT) ? 2U : 1U);
        if (hasOption(option_bit::RWPI)) {
            put(Tag_ABI_PCS_RW_data, 2U);
            put(Tag_ABI_PCS_R9_use, 1U);
        } else {
            put(Tag_ABI_PCS_RW_data, hasOption(option_bit::FPIC));
            put(Tag_ABI_PCS_R9_use, hasOption(option_bit::USESV6) ? 0U : 3U);
        }
    }

    void setOptimizationGoals() {
        const uint32_t otherGoals = hasOption(option_bit::OSPACE) ? 4 : 0;
        put(Tag_ABI_optimization_goals, hasOption(option_bit::OTIME) ? 2 : otherGoals);
    }

    ModelRow modelRow() const {
        if (!has(PURE_DOUBLES)) {
            return ModelRow_None;
        }
        if (hasOption(option_bit::IEEEX)) {
            return ModelRow_Full;
        }
        if (hasOption(option_bit::IEEEF)) {
            return ModelRow_Part;
        }
        if (hasOption(option_bit::IEEEJ)) {
            return ModelRow_Java;
        }
        return has(FZ_POSZERO) ? ModelRow_FlushToZero : ModelRow_Other;
    }

    void setFloatingPointModel() {
        const FloatingPointModel& model = floatingPointModels[modelRow()];
        putUnlessUntouched(Tag_ABI_FP_rounding, model.rounding);
        putUnlessUntouched(Tag_ABI_FP_denormal, model.denormal);
        putUnlessUntouched(Tag_ABI_FP_exceptions, model.exceptions);
        putUnlessUntouched(Tag_ABI_FP_user_exceptions, model.userExceptions);
        putUnlessUntouched(Tag_ABI_FP_number_model, model.numberModel);
        putUnlessUntouched(Tag_ABI_FP_optimization_goals, model.optimizationGoals);
    }

    void putUnlessUntouched(Tag tag, uint8_t number) {
        if (number != Untouched) {
            put(tag, uint32_t{number});
        }
    }

    void setReturnProtection() {
        if (hasOption(option_bit::SIGN_RET_ADDR)) {
            put(Tag_PACRET_use, 1U);
            put(Tag_PAC_extension, 1U);
        }
        if (hasOption(option_bit::BTI)) {
            put(Tag_BTI_use, 1U);
            put(Tag_BTI_extension, 1U);
        }
    }

    void setToolChainTags() {
        put(Tag_AV_interworking, !hasOption(option_bit::IW));
        put(Tag_AV_cpp_exceptions, hasOption(option_bit::UX));
        put(Tag_AV_mdivide, has(MARVELL_DIV));
        put(Tag_AV_standardlib, hasOption(option_bit::STANDARDLIB));
        put(Tag_AV_microlib, hasOption(option_bit::MICROLIB));
        put(Tag_AV_require8, !hasRequirement(requirement_bit::REQ8));
    }

    // An object that states neither alignment has the one that its format began with.
    void setEba() {
        if (hasOption(option_bit::EBA8)) {
            put(Tag_AV_eba, 0U);
        } else if (hasOption(option_bit::EBA4)) {
            put(Tag_AV_eba, 2U);
        } else if (m_Value.abiVersion == abi_version::EABIv2) {
            put(Tag_AV_eba, 1U);
        } else {
            put(Tag_AV_eba, 2U);
            m_Value.options |= option_bit::EBA4;
        }
    }

    void setPrefetch() {
        uint32_t prefetch = 0;
        for (const PrefetchRow& row : prefetchRows) {
            prefetch = has(row.word) ? row.value : prefetch;
        }
        put(Tag_AV_pld, prefetch);
    }

    void setTypeSizes() {
        if (hasOption(option_bit::ENUMINT)) {
            put(Tag_ABI_enum_size, 2U);
        }
        if (hasOption(option_bit::WCHAR32)) {
            put(Tag_ABI_PCS_wchar_t, 4U);
        }
    }

    BuildAttributes& m_Record;
    FullAttr& m_Value;
    const IsaSet m_Isa;
    const uint32_t m_Qel;
    const uint32_t m_Finch;
    const uint32_t m_Q64;
    const uint32_t m_Generation;
};

} // namespace

void BuildAttributes::fromFullAttr(const FullAttr& value) {
    fullAttr = value;
    TagSetter(*this, fullAttr).run();
    derivedStale = false;
}

BuildAttributes::BuildAttributes(const char* buildAttributesString, BuildAttributesMemo& memo,
                                 BuildAttributesCache& cache) {
    TOMEX_CHECK_TEXT(buildAttributesString != nullptr, "buildAttributesString != NULL");
    if (const BuildAttributes* const known = memo.find(buildAttributesString)) {
        *this = *known;
        return;
    }
    FullAttr value;
    parseDecoration(value, buildAttributesString);
    fromFullAttr(value);
    for (uint32_t i = 0; i < getCompatibilityTagCount(); ++i) {
        const char* const name = (*m_CompatibilityTags)[i].vendorName;
        m_CompatibilityTags->setVendorName(i, cache.internVendorName(name));
    }
    memo.add(buildAttributesString, *this);
}

} // namespace attributes
