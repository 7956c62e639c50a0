// Operations on whole modules work in regions of their own, which whoever traces memory sees by
// name and which end with the operation.
#include "alloclib/interface/alloclib.h"
#include "elfext/interface/prune_criteria.h"
#include "tests/elfext/model_fixtures.h"

#include <functional>
#include <string>

namespace elfext::test {
namespace {

class ScratchRegionTest : public ModelTest {
protected:
    // Two trace lines tell of the region: one when it is made and one when it goes.
    static void expectRegion(const std::string& name, const std::function<void()>& operation) {
        alloclib::setTraceLevel(1);
        testing::internal::CaptureStderr();
        operation();
        const std::string trace = testing::internal::GetCapturedStderr();
        alloclib::setTraceLevel(0);
        const std::string::size_type made = trace.find("(" + name + ":");
        ASSERT_NE(made, std::string::npos) << trace;
        const std::string::size_type gone = trace.find("(" + name + ":", made + 1);
        ASSERT_NE(gone, std::string::npos) << trace;
        EXPECT_EQ(trace.find("(" + name + ":", gone + 1), std::string::npos) << trace;
        EXPECT_NE(lineAt(trace, made).find("New region"), std::string::npos) << trace;
        EXPECT_NE(lineAt(trace, gone).find("estroyed"), std::string::npos) << trace;
    }

private:
    static std::string lineAt(const std::string& text, std::string::size_type place) {
        const std::string::size_type start = text.rfind('\n', place) + 1; // 0 in the first line
        return text.substr(start, text.find('\n', place) - start);
    }
};

TEST_F(ScratchRegionTest, ThatOfARemoval) {
    ManualPruneCriteria criteria;
    criteria.addSection(makeSection());
    expectRegion("Prune region", [&] { module().prune(criteria); });
    EXPECT_EQ(module().getSectionCount(), 0U);
}

TEST_F(ScratchRegionTest, ThatOfAnUpdateOfTheAuxiliarySections) {
    module().createUndefinedSymbol(named("f"));
    expectRegion("updateAuxiliarySections() region",
                 [this] { EXPECT_TRUE(module().updateAuxiliarySections()); });
    EXPECT_EQ(module().getSymtabSections().getSize(), 1U);
}

TEST_F(ScratchRegionTest, ThatOfANewOrderOfTheSections) {
    makeSection();
    expectRegion("imposeSectionOrder() temp region", [this] { module().imposeSectionOrder(); });
    EXPECT_EQ(module().getSectionCount(), 2U);
}

} // namespace
} // namespace elfext::test
