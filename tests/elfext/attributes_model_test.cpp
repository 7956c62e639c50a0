// Build attributes of a module, its sections and its symbols.
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "tests/elfext/model_fixtures.h"

#include <cstring>

namespace elfext::test {
namespace {

using attributes::BuildAttributes;
using attributes::BuildAttributesBlock;

class AttributesModelTest : public ModelTest {
protected:
    static BuildAttributes withArch(uint32_t arch) {
        BuildAttributes record;
        record.setTag(attributes::Tag_CPU_arch, arch);
        return record;
    }
    static BuildAttributes attributesOf(const ObjectWithBuildAttributes& object) {
        BuildAttributes result((BuildAttributes::EmptyRecord()));
        object.getBuildAttributes(result);
        return result;
    }
    static const uint8_t* bytes(const char* text) { return reinterpret_cast<const uint8_t*>(text); }
};
using AttributesModelDeathTest = AttributesModelTest;

TEST_F(AttributesModelTest, WithoutRecordsEverythingIsTheDefault) {
    Section* const text = makeSection();
    const Symbol* const symbol = module().createHostedSymbol(named("f"), text, 0);
    EXPECT_FALSE(module().inheritsBuildAttributes());
    EXPECT_TRUE(text->inheritsBuildAttributes());
    EXPECT_TRUE(symbol->inheritsBuildAttributes());
    for (const ObjectWithBuildAttributes* const object :
         {static_cast<const ObjectWithBuildAttributes*>(&module()),
          static_cast<const ObjectWithBuildAttributes*>(text),
          static_cast<const ObjectWithBuildAttributes*>(symbol)}) {
        EXPECT_EQ(object->getOwnBuildAttributes(), nullptr);
        EXPECT_FALSE(object->hasBuildAttributes());
        const BuildAttributes result = attributesOf(*object);
        EXPECT_TRUE(result.present);
        EXPECT_TRUE(result.equals(BuildAttributes()));
    }
}

TEST_F(AttributesModelTest, SectionsInheritFromTheModuleAndSymbolsFromSections) {
    Section* const text = makeSection();
    Section* const data = makeSection();
    const Symbol* const inText = module().createHostedSymbol(named("f"), text, 0);
    const Symbol* const inData = module().createHostedSymbol(named("g"), data, 0);
    const Symbol* const absolute = module().createAbsoluteSymbol(named("h"), 0);
    module().setBuildAttributes(withArch(10));
    text->setBuildAttributes(withArch(11));
    const auto archOf = [](const ObjectWithBuildAttributes& object) {
        return attributesOf(object).getNumber(attributes::Tag_CPU_arch);
    };
    EXPECT_EQ(archOf(module()), 10U);
    EXPECT_EQ(archOf(*text), 11U);
    EXPECT_EQ(archOf(*data), 10U);
    EXPECT_EQ(archOf(*inText), 11U);
    EXPECT_EQ(archOf(*inData), 10U);
    EXPECT_EQ(archOf(*absolute), 10U);
    BuildAttributes parent;
    text->getParentBuildAttributes(parent);
    EXPECT_EQ(parent.getNumber(attributes::Tag_CPU_arch), 10U);
    inText->getParentBuildAttributes(parent);
    EXPECT_EQ(parent.getNumber(attributes::Tag_CPU_arch), 11U);
    module().getParentBuildAttributes(parent);
    EXPECT_FALSE(parent.isPresent(attributes::Tag_CPU_arch));
}

TEST_F(AttributesModelTest, OwnRecordsAreLaidOverTheParents) {
    Section* const text = makeSection();
    module().setBuildAttributes(withArch(10));
    BuildAttributes own;
    own.setTag(attributes::Tag_ABI_PCS_wchar_t, 4);
    text->setBuildAttributes(own);
    const BuildAttributes result = attributesOf(*text);
    EXPECT_EQ(result.getNumber(attributes::Tag_CPU_arch), 10U);
    EXPECT_EQ(result.getNumber(attributes::Tag_ABI_PCS_wchar_t), 4U);
    EXPECT_FALSE(attributesOf(module()).isPresent(attributes::Tag_ABI_PCS_wchar_t));
}

TEST_F(AttributesModelTest, NoDefaultsMeansTheDefaultRecord) {
    BuildAttributes record = withArch(10);
    record.setTag(attributes::Tag_nodefaults, 0);
    Section* const text = makeSection();
    module().setBuildAttributes(withArch(9));
    text->setBuildAttributes(record);
    EXPECT_TRUE(attributesOf(*text).equals(BuildAttributes()));
    EXPECT_TRUE(text->getOwnBuildAttributes()->isPresent(attributes::Tag_CPU_arch));
}

TEST_F(AttributesModelTest, EqualRecordsAreOneObject) {
    Section* const text = makeSection();
    Section* const data = makeSection();
    text->setBuildAttributes(withArch(10));
    data->setBuildAttributes(withArch(10));
    EXPECT_EQ(text->getOwnBuildAttributes(), data->getOwnBuildAttributes());
    EXPECT_FALSE(text->getOwnBuildAttributes()->derivedStale);
    module().setBuildAttributes(withArch(11));
    EXPECT_EQ(module().getBuildAttributesCache()->getRecordCount(), 2U);
}

TEST_F(AttributesModelTest, SettingAndDroppingOutdateTheAuxiliarySections) {
    Section* const text = makeSection();
    const auto outdates = [this](auto&& action) {
        module().setAuxiliarySectionsUpToDate(true);
        action();
        return !module().areAuxiliarySectionsUpToDate();
    };
    EXPECT_TRUE(outdates([&] { text->setBuildAttributes(withArch(10)); }));
    EXPECT_TRUE(outdates([&] { text->setBuildAttributes(withArch(10)); }));
    EXPECT_TRUE(outdates([&] { text->addBuildAttributesBlock("x", bytes("a"), 1); }));
    EXPECT_TRUE(outdates([&] { text->removeBuildAttributesBlock("x"); }));
    EXPECT_FALSE(outdates([&] { text->removeBuildAttributesBlock("x"); }));
    EXPECT_TRUE(outdates([&] { text->dropBuildAttributes(); }));
    EXPECT_FALSE(outdates([&] { text->dropBuildAttributes(); }));
    EXPECT_TRUE(outdates([&] { module().setBuildAttributes(withArch(10)); }));
}

TEST_F(AttributesModelTest, BlocksAreKeptByVendor) {
    Section* const text = makeSection();
    EXPECT_EQ(text->getBuildAttributesBlockCount(), 0U);
    EXPECT_EQ(text->findBuildAttributesBlock("qeabi"), nullptr);
    EXPECT_FALSE(text->removeBuildAttributesBlock("qeabi"));
    text->addBuildAttributesBlock("qeabi", bytes("abc"), 3);
    text->addBuildAttributesBlock("QEL", bytes("d"), 1);
    text->addBuildAttributesBlock("qeabi", bytes("xy"), 2);
    EXPECT_TRUE(text->hasBuildAttributes());
    ASSERT_EQ(text->getBuildAttributesBlockCount(), 2U);
    const BuildAttributesBlock* const block = text->getBuildAttributesBlock(0);
    EXPECT_STREQ(block->getVendorName(), "qeabi");
    EXPECT_EQ(block->getLength(), 2U);
    EXPECT_EQ(std::memcmp(block->getData(), "xy", 2), 0);
    EXPECT_EQ(text->findBuildAttributesBlock("QEL"), text->getBuildAttributesBlock(1));
    EXPECT_TRUE(text->removeBuildAttributesBlock("qeabi"));
    ASSERT_EQ(text->getBuildAttributesBlockCount(), 1U);
    EXPECT_STREQ(text->getBuildAttributesBlock(0)->getVendorName(), "QEL");
    text->dropBuildAttributes();
    EXPECT_EQ(text->getBuildAttributesBlockCount(), 0U);
    EXPECT_FALSE(text->hasBuildAttributes());
}

TEST_F(AttributesModelTest, ManyVendors) {
    constexpr uint32_t count = 3000;
    Section* const text = makeSection();
    for (uint32_t round = 0; round < 2; ++round) {
        for (uint32_t i = 0; i < count; ++i) {
            const std::string vendor = "v" + std::to_string(i);
            text->addBuildAttributesBlock(vendor.c_str(), bytes("ab"), round + 1);
        }
    }
    ASSERT_EQ(text->getBuildAttributesBlockCount(), count);
    EXPECT_STREQ(text->getBuildAttributesBlock(count - 1)->getVendorName(), "v2999");
    EXPECT_EQ(text->findBuildAttributesBlock("v1500"), text->getBuildAttributesBlock(1500));
    EXPECT_EQ(text->findBuildAttributesBlock("v1500")->getLength(), 2U);
    EXPECT_TRUE(text->removeBuildAttributesBlock("v0"));
    EXPECT_EQ(text->findBuildAttributesBlock("v0"), nullptr);
    EXPECT_EQ(text->findBuildAttributesBlock("v1500"), text->getBuildAttributesBlock(1499));
}

TEST_F(AttributesModelTest, EqualBlocksOfAModuleAreOneObject) {
    Section* const text = makeSection();
    module().addBuildAttributesBlock("QEL", bytes("abc"), 3);
    text->addBuildAttributesBlock("QEL", bytes("abc"), 3);
    EXPECT_EQ(module().getBuildAttributesBlock(0), text->getBuildAttributesBlock(0));
}

TEST_F(AttributesModelTest, ClearingDropsTheModulesOwn) {
    makeSection();
    module().setBuildAttributes(withArch(10));
    module().addBuildAttributesBlock("QEL", bytes("abc"), 3);
    module().clear();
    EXPECT_FALSE(module().hasBuildAttributes());
    EXPECT_EQ(module().getOwnBuildAttributes(), nullptr);
}

TEST_F(AttributesModelDeathTest, BlocksNeedNameAndBytes) {
    constexpr const char* source = "elfext/src/object_with_build_attributes";
    Section* const text = makeSection();
    EXPECT_FAULT(text->addBuildAttributesBlock(nullptr, bytes("a"), 1), source,
                 "vendorName != NULL");
    EXPECT_FAULT(text->addBuildAttributesBlock("x", nullptr, 1), source, "data != NULL");
    EXPECT_FAULT(text->getBuildAttributesBlock(0), source,
                 "index < getBuildAttributesBlockCount()");
    EXPECT_FAULT(text->findBuildAttributesBlock(nullptr), source, "vendorName != NULL");
    EXPECT_FAULT(text->removeBuildAttributesBlock(nullptr), source, "vendorName != NULL");
}

// An object without a cache, which no module can give.
class Uncached final : public ObjectWithBuildAttributes {
public:
    explicit Uncached(ObjectModule* module) : ObjectWithBuildAttributes(module, nullptr) {}
    bool inheritsBuildAttributes() const override { return false; }
    void getParentBuildAttributes(BuildAttributes& /*result*/) const override {}
};

TEST_F(AttributesModelDeathTest, EveryObjectHasACache) {
    EXPECT_FAULT(Uncached{&module()}, "elfext/interface/object_with_build_attributes",
                 "buildAttributesCache != NULL");
}

} // namespace
} // namespace elfext::test
