// Laws of records and values, on many random ones: what a journey from tags to a value, a text and
// back keeps. Each exception is named with the rule that causes it.
#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/isa_levels.h"
#include "tests/attributes/decoration_text.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using namespace feature_word;

using RecordPropertiesTest = RecordTest;

FullAttr rebuiltFrom(const FullAttr& value) {
    BuildAttributes record;
    record.fromFullAttr(value);
    record.rebuildFullAttr();
    return record.fullAttr;
}

TEST_F(RecordPropertiesTest, ValueToTagsToValueKeepsTheOptionsThatTagsState) {
    // Options that no tag states, or that a rebuild settles by itself:
    const uint64_t unstated = option_bit::STKCKD | option_bit::NOT_STKCKD | option_bit::USESV7 |
                              option_bit::HARDFP | option_bit::SOFTFP | option_bit::NOT_SHL |
                              option_bit::THREADEDCXX | option_bit::TAGGED_STACK |
                              option_bit::PACBTILIB | option_bit::ACCEL_MOPS;
    const uint64_t kept = option_bit::IW | option_bit::UX | option_bit::STANDARDLIB |
                          option_bit::MICROLIB | option_bit::ENUMINT | option_bit::WCHAR32 |
                          option_bit::SIGN_RET_ADDR | option_bit::BTI | option_bit::ROPI;
    RandomSource random(41);
    for (int i = 0; i < 10000; ++i) {
        const FullAttr value = random.value();
        const FullAttr back = rebuiltFrom(value);
        ASSERT_EQ(back.options & kept & ~option_bit::ROPI,
                  value.options & kept & ~option_bit::ROPI);
        ASSERT_EQ(back.options & unstated, 0x818069 & unstated);
        ASSERT_EQ(back.requirements, value.requirements & 3);
    }
}

// A value that came from tags goes to tags and back without a change in options and requirements.
// Features, target and access may change once more, for these reasons, and never after that:
//  - an object of the oldest architecture, number 0, has no row, so its levels are lost, and
//    without levels no architecture is stated;
//  - tags of extensions add features by which architectures, profiles and units are told:
//    `DSP_MULT` by `Tag_DSP_extension`, `X` by `Tag_F2EE_use`, so that another row is found;
//  - a compatible architecture takes such features away.
TEST_F(RecordPropertiesTest, TheThirdJourneyThroughTagsChangesNothing) {
    RandomSource random(42);
    uint32_t changes = 0;
    for (int i = 0; i < 20000; ++i) {
        const FullAttr once = rebuiltFrom(random.oneIn(2) ? random.value() : random.sparseValue());
        const FullAttr twice = rebuiltFrom(once);
        ASSERT_EQ(twice.options, once.options);
        ASSERT_EQ(twice.requirements, once.requirements);
        ASSERT_EQ(twice.abiVersion, once.abiVersion);
        ASSERT_EQ(rebuiltFrom(twice), twice);
        const bool hasLevels =
            qelVersion(once.isa) != 0 || finchVersion(once.isa) != 0 || q64Version(once.isa) != 0;
        BuildAttributes record;
        record.fromFullAttr(once);
        const bool isRestricted = record.getAlsoCompatibilityTagCount() != 0;
        const bool mayChange = !hasLevels || isRestricted || hasAny(once.isa, DSP_MULT | X);
        ASSERT_TRUE(mayChange || twice == once) << testing::PrintToString(once);
        changes += twice == once ? 0U : 1U;
    }
    EXPECT_GT(changes, 0U);
    EXPECT_LT(changes, 4000U);
}

TEST_F(RecordPropertiesTest, RandomRecordsGoThroughEverything) {
    RandomSource random(43);
    for (int i = 0; i < 5000; ++i) {
        BuildAttributes record = random.record();
        record.rebuildFullAttr();
        const FullAttr decoration = parsed(printed(record.fullAttr));
        BuildAttributes decorated;
        decorated.fromFullAttr(decoration);
        // What has a form in text is printed, so the record of the text states the same there.
        EXPECT_EQ(decorated.getNumber(Tag_AV_interworking),
                  (record.fullAttr.options & option_bit::IW) != 0 ? 0U : 1U);
        EXPECT_EQ(decorated.getNumber(Tag_AV_require8),
                  (record.fullAttr.requirements & requirement_bit::REQ8) != 0 ? 0U : 1U);
        EXPECT_EQ(decorated.getNumber(Tag_WMMX_arch),
                  record.getNumber(Tag_WMMX_arch) <= 2 ? record.getNumber(Tag_WMMX_arch) : 0U);
        // And printing is stable after one round.
        const std::string once = printed(decoration);
        const std::string twice = printed(parsed(once));
        ASSERT_EQ(printed(parsed(twice)), twice);
    }
}

} // namespace
} // namespace attributes::test
