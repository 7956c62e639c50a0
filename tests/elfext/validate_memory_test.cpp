// Validation where memory runs out, wherever it does.
#include "tests/elfext/allocation_failure.h"
#include "tests/elfext/validate_fixtures.h"

namespace elfext::test {
namespace {

class ValidateMemoryTest : public ValidateTest {
protected:
    // A module that has tables yet to be made, and nothing wrong with it. It has no groups: their
    // symbols are looked up in sorted lists, and sorting ends the process as regions do.
    void makeAnew() {
        module().clear();
        module().createNullSection(0);
        Section* const text = module().createSection(".text", SHT_PROGBITS, 0);
        Section* const data = module().createSection(".data", SHT_PROGBITS, 0);
        for (Section* const section : {text, data}) {
            section->setSize(16);
            Symbol* const symbol = module().createHostedSymbol(named("symbol"), section, 0);
            section->addRelocation(0, 1, symbol);
            section->addRelocationWithAddend(4, 1, symbol, 0);
        }
    }
    // What is told if allocation number `number` fails. Nothing if there are not so many.
    Flaws flawsWithout(uint64_t number, bool& answer) {
        makeAnew();
        m_Handler.m_AnswersTrue = 0;
        m_Handler.m_Flaws.clear();
        const AllocationFailure failure(number);
        answer = module().validate();
        return m_Handler.m_Flaws;
    }
};

TEST_F(ValidateMemoryTest, OutOfMemoryIsToldAndEndsIt) {
    const Flaws outOfMemory = {{"outOfMemory", Severity_Fatal, "Out of memory"}};
    uint64_t number = 0;
    bool answer = false;
    for (; !answer; ++number) {
        const Flaws flaws = flawsWithout(number, answer);
        ASSERT_EQ(flaws, answer ? Flaws() : outOfMemory) << "allocation " << number;
    }
    EXPECT_GT(number, 20U);
    module().clear();
}

} // namespace
} // namespace elfext::test
