// The comparison of modules that other tests rest on: it sees what differs.
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/module_comparison.h"

namespace elfext::test {
namespace {

class ComparisonTest : public ModelTest {
protected:
    void TearDown() override {
        m_Other.reset();
        ModelTest::TearDown();
    }
    ObjectModule& other() {
        if (m_Other == nullptr) {
            m_Other = std::make_unique<ObjectModule>();
        }
        return *m_Other;
    }
    std::string difference() { return differenceBetween(module(), other()); }

private:
    std::unique_ptr<ObjectModule> m_Other;
};

TEST_F(ComparisonTest, SeesBlocksOfAttributesThatDiffer) {
    const uint8_t one[] = {1, 2, 3};
    const uint8_t two[] = {1, 2, 4};
    EXPECT_EQ(difference(), "");
    module().addBuildAttributesBlock("others", one, sizeof one);
    EXPECT_EQ(difference(), "module 0: attribute blocks is 1 and 0");
    other().addBuildAttributesBlock("others", two, sizeof two);
    EXPECT_EQ(difference(), "module 0: others is 010203 and 010204");
    other().addBuildAttributesBlock("others", one, sizeof one);
    EXPECT_EQ(difference(), "");
    other().removeBuildAttributesBlock("others");
    other().addBuildAttributesBlock("more", one, sizeof one);
    EXPECT_EQ(difference(), "module 0: others is 010203 and none");
}

TEST_F(ComparisonTest, SeesVersionsThatNoSymbolHas) {
    module().createSymbolVersionDefinition(2, 0)->addDefinedVersionIdentifier("V1");
    EXPECT_EQ(difference(), "version definition 0: record is 2/0 V1 and none");
    other().createSymbolVersionDefinition(2, 0)->addDefinedVersionIdentifier("V2");
    EXPECT_EQ(difference(), "version definition 0: record is 2/0 V1 and 2/0 V2");
}

TEST_F(ComparisonTest, SeesRequirementsThatNoSymbolHas) {
    module().createSymbolVersionRequirement(3, 0, "libc.so", "C_1");
    other().createSymbolVersionRequirement(3, VER_FLG_WEAK, "libc.so", "C_1");
    EXPECT_EQ(difference(), "version requirement 0: record is 3/0 libc.so C_1 and 3/2 libc.so C_1");
}

TEST_F(ComparisonTest, SeesTheVersionOfTheFile) {
    module().createFileVersionDefinition(1, VER_FLG_BASE)->addDefinedVersionIdentifier("lib.so");
    EXPECT_EQ(difference(), "file 0: version is 1/1 lib.so and none");
}

TEST_F(ComparisonTest, SeesHiddenVersions) {
    const SymbolFields fields = named("f");
    module().createDynamicUndefinedSymbol(fields)->setVersionEntry(1 | VERSYM_HIDDEN);
    other().createDynamicUndefinedSymbol(fields)->setVersionEntry(1);
    EXPECT_EQ(difference(), "dynamic symbol 0: version's hiding is 1 and 0");
}

} // namespace
} // namespace elfext::test
