// The known tags: each row of the table, and the slots.
#include "attributes/interface/standard_tags.h"

#include <cstring>
#include <set>
#include <string>
#include <utility>

#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

struct ExpectedRow {
    const char* name;
    TagVendor vendor;
    uint32_t number;
    TagForm form;
    bool setsStale;
};

// The public and the private tags, as documents of the format list them.
constexpr ExpectedRow expectedRows[] = {
    {"Tag_CPU_raw_name", TagVendor_Qeabi, 4, TagForm_Text, false},
    {"Tag_CPU_name", TagVendor_Qeabi, 5, TagForm_Text, false},
    {"Tag_CPU_arch", TagVendor_Qeabi, 6, TagForm_Word, true},
    {"Tag_CPU_arch_profile", TagVendor_Qeabi, 7, TagForm_Byte, true},
    {"Tag_QEL_ISA_use", TagVendor_Qeabi, 8, TagForm_Byte, true},
    {"Tag_FINCH_ISA_use", TagVendor_Qeabi, 9, TagForm_Byte, true},
    {"Tag_Q64_ISA_use", TagVendor_Qeabi, 40, TagForm_Byte, true},
    {"Tag_FP_arch", TagVendor_Qeabi, 10, TagForm_Byte, true},
    {"Tag_WMMX_arch", TagVendor_Qeabi, 11, TagForm_Byte, true},
    {"Tag_Advanced_SIMD_arch", TagVendor_Qeabi, 12, TagForm_Byte, true},
    {"Tag_TRG_arch", TagVendor_Qeabi, 48, TagForm_Byte, true},
    {"Tag_PCS_config", TagVendor_Qeabi, 13, TagForm_Byte, true},
    {"Tag_ABI_PCS_R9_use", TagVendor_Qeabi, 14, TagForm_Byte, true},
    {"Tag_ABI_PCS_RW_data", TagVendor_Qeabi, 15, TagForm_Byte, true},
    {"Tag_ABI_PCS_RO_data", TagVendor_Qeabi, 16, TagForm_Byte, true},
    {"Tag_ABI_PCS_GOT_use", TagVendor_Qeabi, 17, TagForm_Byte, true},
    {"Tag_ABI_PCS_wchar_t", TagVendor_Qeabi, 18, TagForm_Byte, false},
    {"Tag_ABI_FP_rounding", TagVendor_Qeabi, 19, TagForm_Byte, true},
    {"Tag_ABI_FP_denormal", TagVendor_Qeabi, 20, TagForm_Byte, true},
    {"Tag_ABI_FP_exceptions", TagVendor_Qeabi, 21, TagForm_Byte, true},
    {"Tag_ABI_FP_user_exceptions", TagVendor_Qeabi, 22, TagForm_Byte, true},
    {"Tag_ABI_FP_number_model", TagVendor_Qeabi, 23, TagForm_Byte, true},
    {"Tag_ABI_align_needed", TagVendor_Qeabi, 24, TagForm_Byte, true},
    {"Tag_ABI_align_preserved", TagVendor_Qeabi, 25, TagForm_Byte, true},
    {"Tag_ABI_enum_size", TagVendor_Qeabi, 26, TagForm_Byte, false},
    {"Tag_ABI_HardFP_use", TagVendor_Qeabi, 27, TagForm_Byte, false},
    {"Tag_ABI_ZLT_args", TagVendor_Qeabi, 28, TagForm_Byte, true},
    {"Tag_ABI_WMMX_args", TagVendor_Qeabi, 29, TagForm_Byte, false},
    {"Tag_ABI_optimization_goals", TagVendor_Qeabi, 30, TagForm_Byte, false},
    {"Tag_ABI_FP_optimization_goals", TagVendor_Qeabi, 31, TagForm_Byte, false},
    {"Tag_CPU_unaligned_access", TagVendor_Qeabi, 34, TagForm_Byte, true},
    {"Tag_FP_HP_extension", TagVendor_Qeabi, 36, TagForm_Byte, true},
    {"Tag_ABI_FP_16bit_format", TagVendor_Qeabi, 38, TagForm_Byte, false},
    {"Tag_DSP_extension", TagVendor_Qeabi, 46, TagForm_Byte, true},
    {"Tag_nodefaults", TagVendor_Qeabi, 64, TagForm_Byte, false},
    {"Tag_F2EE_use", TagVendor_Qeabi, 66, TagForm_Byte, true},
    {"Tag_conformance", TagVendor_Qeabi, 67, TagForm_Text, false},
    {"Tag_Virtualization_use", TagVendor_Qeabi, 68, TagForm_Byte, true},
    {"Tag_MPextension_use", TagVendor_Qeabi, 42, TagForm_Byte, false},
    {"Tag_DIV_use", TagVendor_Qeabi, 44, TagForm_Byte, false},
    {"Tag_PAC_extension", TagVendor_Qeabi, 50, TagForm_Byte, false},
    {"Tag_BTI_extension", TagVendor_Qeabi, 52, TagForm_Byte, false},
    {"Tag_PACRET_use", TagVendor_Qeabi, 76, TagForm_Byte, false},
    {"Tag_BTI_use", TagVendor_Qeabi, 74, TagForm_Byte, false},
    {"Tag_AV_interworking", TagVendor_Qel, 4, TagForm_Byte, true},
    {"Tag_AV_cpp_exceptions", TagVendor_Qel, 6, TagForm_Byte, true},
    {"Tag_AV_mdivide", TagVendor_Qel, 8, TagForm_Byte, true},
    {"Tag_AV_standardlib", TagVendor_Qel, 10, TagForm_Byte, true},
    {"Tag_AV_microlib", TagVendor_Qel, 12, TagForm_Byte, true},
    {"Tag_AV_require8", TagVendor_Qel, 14, TagForm_Byte, true},
    {"Tag_AV_eba", TagVendor_Qel, 16, TagForm_Byte, true},
    {"Tag_AV_version", TagVendor_Qel, 18, TagForm_Byte, false},
    {"Tag_AV_pld", TagVendor_Qel, 20, TagForm_Byte, true},
    {"Tag_AV_v8_isa", TagVendor_Qel, 22, TagForm_Byte, true},
};

// Tags that never tell two records apart.
const std::set<std::string> equalityGaps = {"Tag_Q64_ISA_use", "Tag_PAC_extension",
                                            "Tag_BTI_extension", "Tag_PACRET_use", "Tag_BTI_use"};

TEST(StandardTags, EachRowIsAsTheFormatHasIt) {
    ASSERT_EQ(std::size(expectedRows), size_t{Tag_Count});
    for (uint32_t i = 0; i < Tag_Count; ++i) {
        const TagRow& row = tagRows[i];
        const ExpectedRow& expected = expectedRows[i];
        EXPECT_EQ(row.tag, i) << row.name;
        EXPECT_STREQ(row.name, expected.name);
        EXPECT_EQ(row.vendor, expected.vendor) << row.name;
        EXPECT_EQ(row.number, expected.number) << row.name;
        EXPECT_EQ(row.otherNumber, row.tag == Tag_MPextension_use ? 70U : 0U) << row.name;
        EXPECT_EQ(row.form, expected.form) << row.name;
        EXPECT_EQ(row.setsStale, expected.setsStale) << row.name;
        EXPECT_EQ(row.isCompared, !equalityGaps.contains(row.name)) << row.name;
    }
}

TEST(StandardTags, AreFoundByTheirNumbersAndByNoOthers) {
    uint32_t found = 0;
    for (const TagVendor vendor : {TagVendor_Qeabi, TagVendor_Qel}) {
        for (uint32_t number = 0; number < 1000; ++number) {
            const TagRow* const row = findTagRow(vendor, number);
            if (row == nullptr) {
                continue;
            }
            ++found;
            EXPECT_EQ(row->vendor, vendor);
            EXPECT_TRUE(row->number == number || row->otherNumber == number) << row->name;
        }
        EXPECT_EQ(findTagRow(vendor, 0xFFFFFFFF), nullptr);
        EXPECT_EQ(findTagRow(vendor, TagNumber_compatibility), nullptr);
        EXPECT_EQ(findTagRow(vendor, TagNumber_also_compatible_with), nullptr);
    }
    EXPECT_EQ(found, Tag_Count + 1U); // one tag has two numbers
}

TEST(StandardTags, OneSlotBelongsToTwoNumbers) {
    EXPECT_EQ(findTagRow(TagVendor_Qeabi, 42), &tagRows[Tag_MPextension_use]);
    EXPECT_EQ(findTagRow(TagVendor_Qeabi, 70), &tagRows[Tag_MPextension_use]);
}

TEST(StandardTags, SlotsAreAbsentAtFirst) {
    const StandardTags tags;
    for (const TagRow& row : tagRows) {
        EXPECT_FALSE(tags.isPresent(row.tag));
        if (row.form == TagForm_Text) {
            EXPECT_STREQ(tags.getText(row.tag), "");
        } else {
            EXPECT_EQ(tags.getNumber(row.tag), 0U);
        }
    }
}

TEST(StandardTags, EachSlotHoldsItsOwnValueCutToItsWidth) {
    for (const TagRow& row : tagRows) {
        StandardTags tags;
        if (row.form == TagForm_Text) {
            tags.setText(row.tag, row.name);
            EXPECT_STREQ(tags.getText(row.tag), row.name);
        } else {
            tags.setNumber(row.tag, 0x12345678);
            EXPECT_EQ(tags.getNumber(row.tag), row.form == TagForm_Word ? 0x12345678U : 0x78U)
                << row.name;
        }
        for (const TagRow& other : tagRows) {
            EXPECT_EQ(tags.isPresent(other.tag), other.tag == row.tag) << other.name;
        }
        StandardTags copy;
        copy.copySlot(row.tag, tags);
        EXPECT_TRUE(copy.isPresent(row.tag));
        EXPECT_TRUE(copy.hasEqualValue(row.tag, tags)) << row.name;
        EXPECT_FALSE(copy.hasEqualValue(row.tag, StandardTags())) << row.name;
        copy.copySlot(row.tag, StandardTags());
        EXPECT_FALSE(copy.isPresent(row.tag));
        // What was there does not show through.
        EXPECT_TRUE(copy.hasEqualValue(row.tag, StandardTags())) << row.name;
    }
}

TEST(StandardTags, TextsAreCutAt31CharactersAndReplacedWhole) {
    StandardTags tags;
    const std::string forty(40, 'x');
    tags.setText(Tag_CPU_raw_name, forty.c_str());
    EXPECT_EQ(tags.getText(Tag_CPU_raw_name), std::string(31, 'x'));
    tags.setText(Tag_CPU_raw_name, "y");
    StandardTags fresh;
    fresh.setText(Tag_CPU_raw_name, "y");
    EXPECT_EQ(std::memcmp(tags.m_CpuRawName, fresh.m_CpuRawName, StandardTags::TextSize), 0);
}

} // namespace
} // namespace attributes::test
