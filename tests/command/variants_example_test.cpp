// The library of variants in examples/, as the demonstration and the user's guide show it.
#include "tests/command/variant_case.h"

namespace commandtest {
namespace {

class VariantsExample : public VariantCase {
protected:
    void SetUp() override {
        const CommandResult made = runProgram(TOMEX_VARIANT_OBJECTS, {"."});
        ASSERT_TRUE(made.exitedWith(0)) << made;
        runs({"-rc", "libvector.a", "vector_plain.o", "vector_fpu.o", "vector_media.o",
              "vector_wide.o"});
    }
    CommandResult runProgram(const std::string& program, const Words& words) const {
        return testsupport::run({.program = program, .arguments = words, .folder = folder.path()});
    }
    // What a linker takes for a program that may use this.
    std::string chosen(const std::string& requester) const {
        return runProgram(TOMEX_SELECT_VARIANT, {"libvector.a", "dot_product", requester}).output;
    }
};

TEST_F(VariantsExample, HasOneBaseAndThreeVariants) {
    Words expected;
    const Words rows = {" in vector_plain.o",
                        "$$BuildAttributes$$QEL_ISAv3$ZLTv2$PE$IEEE1 in vector_fpu.o",
                        "$$BuildAttributes$$QEL_ISAv3$WMMX$IEEE1 in vector_media.o",
                        "$$BuildAttributes$$FCH_ISAv4$QEL_ISAv7$N$ZLTv3$PE$IEEE1 in vector_wide.o"};
    for (const std::string& row : rows) {
        expected.push_back("dot_product" + row);
        expected.push_back("vector_length" + row);
    }
    EXPECT_EQ(symbols("libvector.a"), expected);
}

TEST_F(VariantsExample, ReportShowsEachWithItsAttributes) {
    const CommandResult result = tomex({"--zs", "libvector.a"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(
        result.output,
        "dot_product          from vector_plain.o at offset    482\n"
        "vector_length        from vector_plain.o at offset    482\n"
        "dot_product$$BuildAttributes$$QEL_ISAv3$ZLTv2$PE$IEEE1 from vector_fpu.o at offset    "
        "986\n"
        "vector_length$$BuildAttributes$$QEL_ISAv3$ZLTv2$PE$IEEE1 from vector_fpu.o at offset    "
        "986\n"
        "dot_product$$BuildAttributes$$QEL_ISAv3$WMMX$IEEE1 from vector_media.o at offset   1494\n"
        "vector_length$$BuildAttributes$$QEL_ISAv3$WMMX$IEEE1 from vector_media.o at offset   "
        "1494\n"
        "dot_product$$BuildAttributes$$FCH_ISAv4$QEL_ISAv7$N$ZLTv3$PE$IEEE1 from vector_wide.o at "
        "offset   2002\n"
        "vector_length$$BuildAttributes$$FCH_ISAv4$QEL_ISAv7$N$ZLTv3$PE$IEEE1 from vector_wide.o "
        "at "
        "offset   2002\n");
}

TEST_F(VariantsExample, LinkerTakesTheMostSpecificThatFits) {
    EXPECT_EQ(chosen("$QEL_ISAv5$FCH_ISAv2$IEEE1$IW"), "vector_plain.o\n");
    EXPECT_EQ(chosen("$QEL_ISAv6$FCH_ISAv3$ZLTv2$IEEE1$IW"), "vector_fpu.o\n");
    EXPECT_EQ(chosen("$QEL_ISAv5$FCH_ISAv2$WMMX2$IEEE1$IW"), "vector_media.o\n");
    EXPECT_EQ(chosen("$QEL_ISAv8$FCH_ISAv5$N$ZLTv4$IEEE1$IW"), "vector_wide.o\n");
    EXPECT_EQ(chosen("$QEL_ISAv8$FCH_ISAv5$ZLTv4$IEEE1$IW"), "vector_fpu.o\n");
    EXPECT_TRUE(runProgram(TOMEX_SELECT_VARIANT, {"libvector.a", "none", ""}).exitedWith(1));
    const CommandResult missing = runProgram(TOMEX_SELECT_VARIANT, {"none.a", "f", ""});
    EXPECT_TRUE(missing.exitedWith(1)) << missing;
    EXPECT_TRUE(missing.error.starts_with("none.a: ")) << missing.error;
}

TEST_F(VariantsExample, WithoutThePlainBuildThereIsNoBase) {
    runs({"-d", "libvector.a", "vector_plain.o"},
         "Warning: L6874W: Minor variants of archive member 'vector_fpu.o' include no base "
         "variant\n");
    EXPECT_EQ(chosen("$QEL_ISAv5$FCH_ISAv2$IEEE1$IW"), "") << "nothing for the plain processor";
    EXPECT_EQ(chosen("$QEL_ISAv5$FCH_ISAv2$WMMX$IEEE1$IW"), "vector_media.o\n");
}

} // namespace
} // namespace commandtest
