// The tags that an attributes section can hold, and the slots that keep what it said of each.
//
// An attribute is a pair of a tag, which is a number, and a value. The numbers are public for the
// vendor "qeabi" (the supplement of the processor's ABI for build attributes) and private for the
// vendor "QEL". Here each known tag has a slot: whether the file stated it, and what it said. All
// that is to be known of a tag stands in its row of `tagRows`; whoever reads, compares, merges or
// copies tags walks the rows.
#pragma once

#include <cstdint>

namespace attributes {

// The known tags, in the order of their slots.
enum Tag : uint32_t {
    Tag_CPU_raw_name,
    Tag_CPU_name,
    Tag_CPU_arch,
    Tag_CPU_arch_profile,
    Tag_QEL_ISA_use,
    Tag_FINCH_ISA_use,
    Tag_Q64_ISA_use,
    Tag_FP_arch,
    Tag_WMMX_arch,
    Tag_Advanced_SIMD_arch,
    Tag_TRG_arch,
    Tag_PCS_config,
    Tag_ABI_PCS_R9_use,
    Tag_ABI_PCS_RW_data,
    Tag_ABI_PCS_RO_data,
    Tag_ABI_PCS_GOT_use,
    Tag_ABI_PCS_wchar_t,
    Tag_ABI_FP_rounding,
    Tag_ABI_FP_denormal,
    Tag_ABI_FP_exceptions,
    Tag_ABI_FP_user_exceptions,
    Tag_ABI_FP_number_model,
    Tag_ABI_align_needed,
    Tag_ABI_align_preserved,
    Tag_ABI_enum_size,
    Tag_ABI_HardFP_use,
    Tag_ABI_ZLT_args,
    Tag_ABI_WMMX_args,
    Tag_ABI_optimization_goals,
    Tag_ABI_FP_optimization_goals,
    Tag_CPU_unaligned_access,
    Tag_FP_HP_extension,
    Tag_ABI_FP_16bit_format,
    Tag_DSP_extension,
    Tag_nodefaults,
    Tag_F2EE_use,
    Tag_conformance,
    Tag_Virtualization_use,
    Tag_MPextension_use,
    Tag_DIV_use,
    Tag_PAC_extension,
    Tag_BTI_extension,
    Tag_PACRET_use,
    Tag_BTI_use,
    Tag_AV_interworking,
    Tag_AV_cpp_exceptions,
    Tag_AV_mdivide,
    Tag_AV_standardlib,
    Tag_AV_microlib,
    Tag_AV_require8,
    Tag_AV_eba,
    Tag_AV_version,
    Tag_AV_pld,
    Tag_AV_v8_isa,
    Tag_Count // how many there are
};

// The numbers of the two tags that have lists of their own in place of slots.
inline constexpr uint32_t TagNumber_compatibility = 32;
inline constexpr uint32_t TagNumber_also_compatible_with = 65;

// Who defines a tag's number.
enum TagVendor : uint32_t {
    TagVendor_Qeabi, // "qeabi"
    TagVendor_Qel,   // "QEL"
};

// The vendors' names as they stand in a section.
inline constexpr const char* VendorName_Qeabi = "qeabi";
inline constexpr const char* VendorName_Qel = "QEL";

// What a slot holds.
enum TagForm : uint32_t {
    TagForm_Byte, // a number, cut to 8 bits
    TagForm_Word, // a number, 32 bits
    TagForm_Text, // up to 31 characters
};

// What is to be known of a tag.
struct TagRow {
    Tag tag; // also the row's index
    const char* name;
    TagVendor vendor;
    uint32_t number;      // in the vendor's stream
    uint32_t otherNumber; // a second number of the same tag, or 0
    TagForm form;
    // Whether setting the tag makes the derived value stale. Some tags that the derived value
    // depends on do not: required by the users of old objects, whose decorations would change.
    bool setsStale;
    // Whether two records that differ in this tag alone are different records.
    bool isCompared;
};

// The rows, `Tag_Count` of them, in the order of `Tag`.
extern const TagRow tagRows[Tag_Count];

// The row of the tag with this number in the vendor's stream, or null when no slot belongs to it.
const TagRow* findTagRow(TagVendor vendor, uint32_t number);

// One slot for each tag. All absent at first.
struct StandardTags {
    static constexpr uint32_t TextSize = 32; // bytes, with the NUL

    bool isPresent(Tag tag) const { return m_Present[tag]; }

    // The number in a slot, 0 when it is absent. `tag` is one with a number.
    uint32_t getNumber(Tag tag) const {
        if (!m_Present[tag]) {
            return 0;
        }
        return tag == Tag_CPU_arch ? m_CpuArch : m_Numbers[tag];
    }

    // The text in a slot, empty when it is absent. `tag` is one with a text.
    const char* getText(Tag tag) const { return m_Present[tag] ? textOf(tag) : ""; }

    // Stores a number, cut to the slot's width, and marks the slot as present. Nothing else:
    // whatever follows from it is up to `BuildAttributes`.
    void setNumber(Tag tag, uint32_t number) {
        m_Present[tag] = true;
        if (tag == Tag_CPU_arch) {
            m_CpuArch = number;
        } else {
            m_Numbers[tag] = static_cast<uint8_t>(number);
        }
    }

    // Stores the first 31 characters of a text and marks the slot as present.
    void setText(Tag tag, const char* text);

    // Marks a slot as absent.
    void clear(Tag tag) { m_Present[tag] = false; }

    // Takes the slot of `tag` over from `other`, present or not.
    void copySlot(Tag tag, const StandardTags& other);

    // Whether number or text of the two slots are equal, an absent one counting as 0 or as the
    // empty text.
    bool hasEqualValue(Tag tag, const StandardTags& other) const;

    bool m_Present[Tag_Count] = {};
    uint8_t m_Numbers[Tag_Count] = {}; // those of `TagForm_Byte`
    uint32_t m_CpuArch = 0;
    char m_CpuRawName[TextSize] = {};
    char m_CpuName[TextSize] = {};
    char m_Conformance[TextSize] = {};

private:
    const char* textOf(Tag tag) const;
};

} // namespace attributes
