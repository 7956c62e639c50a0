#include "attributes/interface/standard_tags.h"

#include <cstring>

namespace attributes {

// Columns: tag, name, vendor, number, second number, form, sets stale, is compared.
// clang-format off
const TagRow tagRows[Tag_Count] = {
    {Tag_CPU_raw_name, "Tag_CPU_raw_name", TagVendor_Qeabi, 4, 0, TagForm_Text, false, true},
    {Tag_CPU_name, "Tag_CPU_name", TagVendor_Qeabi, 5, 0, TagForm_Text, false, true},
    {Tag_CPU_arch, "Tag_CPU_arch", TagVendor_Qeabi, 6, 0, TagForm_Word, true, true},
    {Tag_CPU_arch_profile, "Tag_CPU_arch_profile", TagVendor_Qeabi, 7, 0, TagForm_Byte, true, true},
    {Tag_QEL_ISA_use, "Tag_QEL_ISA_use", TagVendor_Qeabi, 8, 0, TagForm_Byte, true, true},
    {Tag_FINCH_ISA_use, "Tag_FINCH_ISA_use", TagVendor_Qeabi, 9, 0, TagForm_Byte, true, true},
    {Tag_Q64_ISA_use, "Tag_Q64_ISA_use", TagVendor_Qeabi, 40, 0, TagForm_Byte, true, false},
    {Tag_FP_arch, "Tag_FP_arch", TagVendor_Qeabi, 10, 0, TagForm_Byte, true, true},
    {Tag_WMMX_arch, "Tag_WMMX_arch", TagVendor_Qeabi, 11, 0, TagForm_Byte, true, true},
    {Tag_Advanced_SIMD_arch, "Tag_Advanced_SIMD_arch", TagVendor_Qeabi, 12, 0, TagForm_Byte, true, true},
    {Tag_TRG_arch, "Tag_TRG_arch", TagVendor_Qeabi, 48, 0, TagForm_Byte, true, true},
    {Tag_PCS_config, "Tag_PCS_config", TagVendor_Qeabi, 13, 0, TagForm_Byte, true, true},
    {Tag_ABI_PCS_R9_use, "Tag_ABI_PCS_R9_use", TagVendor_Qeabi, 14, 0, TagForm_Byte, true, true},
    {Tag_ABI_PCS_RW_data, "Tag_ABI_PCS_RW_data", TagVendor_Qeabi, 15, 0, TagForm_Byte, true, true},
    {Tag_ABI_PCS_RO_data, "Tag_ABI_PCS_RO_data", TagVendor_Qeabi, 16, 0, TagForm_Byte, true, true},
    {Tag_ABI_PCS_GOT_use, "Tag_ABI_PCS_GOT_use", TagVendor_Qeabi, 17, 0, TagForm_Byte, true, true},
    {Tag_ABI_PCS_wchar_t, "Tag_ABI_PCS_wchar_t", TagVendor_Qeabi, 18, 0, TagForm_Byte, false, true},
    {Tag_ABI_FP_rounding, "Tag_ABI_FP_rounding", TagVendor_Qeabi, 19, 0, TagForm_Byte, true, true},
    {Tag_ABI_FP_denormal, "Tag_ABI_FP_denormal", TagVendor_Qeabi, 20, 0, TagForm_Byte, true, true},
    {Tag_ABI_FP_exceptions, "Tag_ABI_FP_exceptions", TagVendor_Qeabi, 21, 0, TagForm_Byte, true, true},
    {Tag_ABI_FP_user_exceptions, "Tag_ABI_FP_user_exceptions", TagVendor_Qeabi, 22, 0, TagForm_Byte, true, true},
    {Tag_ABI_FP_number_model, "Tag_ABI_FP_number_model", TagVendor_Qeabi, 23, 0, TagForm_Byte, true, true},
    {Tag_ABI_align_needed, "Tag_ABI_align_needed", TagVendor_Qeabi, 24, 0, TagForm_Byte, true, true},
    {Tag_ABI_align_preserved, "Tag_ABI_align_preserved", TagVendor_Qeabi, 25, 0, TagForm_Byte, true, true},
    {Tag_ABI_enum_size, "Tag_ABI_enum_size", TagVendor_Qeabi, 26, 0, TagForm_Byte, false, true},
    {Tag_ABI_HardFP_use, "Tag_ABI_HardFP_use", TagVendor_Qeabi, 27, 0, TagForm_Byte, false, true},
    {Tag_ABI_ZLT_args, "Tag_ABI_ZLT_args", TagVendor_Qeabi, 28, 0, TagForm_Byte, true, true},
    {Tag_ABI_WMMX_args, "Tag_ABI_WMMX_args", TagVendor_Qeabi, 29, 0, TagForm_Byte, false, true},
    {Tag_ABI_optimization_goals, "Tag_ABI_optimization_goals", TagVendor_Qeabi, 30, 0, TagForm_Byte, false, true},
    {Tag_ABI_FP_optimization_goals, "Tag_ABI_FP_optimization_goals", TagVendor_Qeabi, 31, 0, TagForm_Byte, false, true},
    {Tag_CPU_unaligned_access, "Tag_CPU_unaligned_access", TagVendor_Qeabi, 34, 0, TagForm_Byte, true, true},
    {Tag_FP_HP_extension, "Tag_FP_HP_extension", TagVendor_Qeabi, 36, 0, TagForm_Byte, true, true},
    {Tag_ABI_FP_16bit_format, "Tag_ABI_FP_16bit_format", TagVendor_Qeabi, 38, 0, TagForm_Byte, false, true},
    {Tag_DSP_extension, "Tag_DSP_extension", TagVendor_Qeabi, 46, 0, TagForm_Byte, true, true},
    {Tag_nodefaults, "Tag_nodefaults", TagVendor_Qeabi, 64, 0, TagForm_Byte, false, true},
    {Tag_F2EE_use, "Tag_F2EE_use", TagVendor_Qeabi, 66, 0, TagForm_Byte, true, true},
    {Tag_conformance, "Tag_conformance", TagVendor_Qeabi, 67, 0, TagForm_Text, false, true},
    {Tag_Virtualization_use, "Tag_Virtualization_use", TagVendor_Qeabi, 68, 0, TagForm_Byte, true, true},
    {Tag_MPextension_use, "Tag_MPextension_use", TagVendor_Qeabi, 42, 70, TagForm_Byte, false, true},
    {Tag_DIV_use, "Tag_DIV_use", TagVendor_Qeabi, 44, 0, TagForm_Byte, false, true},
    {Tag_PAC_extension, "Tag_PAC_extension", TagVendor_Qeabi, 50, 0, TagForm_Byte, false, false},
    {Tag_BTI_extension, "Tag_BTI_extension", TagVendor_Qeabi, 52, 0, TagForm_Byte, false, false},
    {Tag_PACRET_use, "Tag_PACRET_use", TagVendor_Qeabi, 76, 0, TagForm_Byte, false, false},
    {Tag_BTI_use, "Tag_BTI_use", TagVendor_Qeabi, 74, 0, TagForm_Byte, false, false},
    {Tag_AV_interworking, "Tag_AV_interworking", TagVendor_Qel, 4, 0, TagForm_Byte, true, true},
    {Tag_AV_cpp_exceptions, "Tag_AV_cpp_exceptions", TagVendor_Qel, 6, 0, TagForm_Byte, true, true},
    {Tag_AV_mdivide, "Tag_AV_mdivide", TagVendor_Qel, 8, 0, TagForm_Byte, true, true},
    {Tag_AV_standardlib, "Tag_AV_standardlib", TagVendor_Qel, 10, 0, TagForm_Byte, true, true},
    {Tag_AV_microlib, "Tag_AV_microlib", TagVendor_Qel, 12, 0, TagForm_Byte, true, true},
    {Tag_AV_require8, "Tag_AV_require8", TagVendor_Qel, 14, 0, TagForm_Byte, true, true},
    {Tag_AV_eba, "Tag_AV_eba", TagVendor_Qel, 16, 0, TagForm_Byte, true, true},
    {Tag_AV_version, "Tag_AV_version", TagVendor_Qel, 18, 0, TagForm_Byte, false, true},
    {Tag_AV_pld, "Tag_AV_pld", TagVendor_Qel, 20, 0, TagForm_Byte, true, true},
    {Tag_AV_v8_isa, "Tag_AV_v8_isa", TagVendor_Qel, 22, 0, TagForm_Byte, true, true},
};
// clang-format on

namespace {

// Tag numbers of both vendors are below this.
constexpr uint32_t NumberLimit = 77;

// From a vendor's numbers to its rows, so that reading a tag does not walk them.
struct NumberIndex {
    NumberIndex() {
        for (const TagRow& row : tagRows) {
            rows[row.vendor][row.number] = &row;
            if (row.otherNumber != 0) {
                rows[row.vendor][row.otherNumber] = &row;
            }
        }
    }

    const TagRow* rows[2][NumberLimit] = {};
};

} // namespace

const TagRow* findTagRow(TagVendor vendor, uint32_t number) {
    static const NumberIndex index;
    return number < NumberLimit ? index.rows[vendor][number] : nullptr;
}

const char* StandardTags::textOf(Tag tag) const {
    switch (tag) {
    case Tag_CPU_raw_name:
        return m_CpuRawName;
    case Tag_CPU_name:
        return m_CpuName;
    default:
        return m_Conformance;
    }
}

void StandardTags::setText(Tag tag, const char* text) {
    char* const slot = const_cast<char*>(textOf(tag));
    // All bytes are settled, so that slots with equal texts are equal as memory too.
    const size_t length = strnlen(text, TextSize - 1);
    std::memcpy(slot, text, length);
    std::memset(slot + length, 0, TextSize - length);
    m_Present[tag] = true;
}

void StandardTags::copySlot(Tag tag, const StandardTags& other) {
    if (!other.m_Present[tag]) {
        clear(tag);
    } else if (tagRows[tag].form == TagForm_Text) {
        setText(tag, other.textOf(tag));
    } else {
        setNumber(tag, other.getNumber(tag));
    }
}

bool StandardTags::hasEqualValue(Tag tag, const StandardTags& other) const {
    if (tagRows[tag].form == TagForm_Text) {
        return std::strcmp(getText(tag), other.getText(tag)) == 0;
    }
    return getNumber(tag) == other.getNumber(tag);
}

} // namespace attributes
