// Printing decorations: each token alone, the order, the blocks of access, and buffers of any size.
#include "tests/attributes/decoration_text.h"

#include "alloclib/interface/default_region.h"
#include "attributes/interface/feature_words.h"
#include "attributes/src/decoration_tables.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace attributes::test {
namespace {

FullAttr withIsa(const IsaSet& isa) {
    FullAttr value;
    value.isa = isa;
    return value;
}

std::string printedIsa(uint64_t low, uint64_t high) {
    return printed(withIsa({low, high}));
}

std::string printedOptions(uint64_t options) {
    FullAttr value;
    value.options = options;
    return printed(value);
}

std::string printedAccess(uint16_t code, uint16_t readOnly, uint16_t data, uint16_t stores) {
    FullAttr value;
    value.access[0] = code;
    value.access[1] = readOnly;
    value.access[2] = data;
    value.access[3] = stores;
    return printed(value);
}

TEST(PrintDecoration, EachFeatureTokenAlone) {
    for (const IsaToken& row : isaPrintTable) {
        std::string expected = "$" + std::string(row.text) + "$IEEE1";
        if (row.text == "MX82") {
            expected = "$MX81$IEEE1"; // whose row is met first
        } else if (row.text == "FPiv8") {
            expected = "$ZLTi5$IEEE1"; // likewise
        }
        EXPECT_EQ(printed(withIsa(row.mask)), expected);
    }
}

TEST(PrintDecoration, ATokenTakesItsBitsOut) {
    EXPECT_EQ(printedIsa(0x3F, 0), "$QEL_ISAv8$IEEE1");
    EXPECT_EQ(printedIsa(0x3F, 0x10000), "$QEL_ISAv9$IEEE1");
    EXPECT_EQ(printedIsa(0x7C7, 0), "$FCH_ISAv5$QEL_ISAv5$IEEE1");
    EXPECT_EQ(printedIsa(0x11C0, 0), "$FCH_ISAv3M$IEEE1");
    EXPECT_EQ(printedIsa(0x7FF000000000000, 0), "$FP_QELv8$IEEE1");
    EXPECT_EQ(printedIsa(0x7FF000000000000, 0x2), "$FP_QELv8_FP16$IEEE1");
    EXPECT_EQ(printedIsa(0x7ED000000000000, 0x2), "$ZLTv5_D16_FP16$IEEE1");
    EXPECT_EQ(printedIsa(0x5007F0000000, 0), "$PLD8$IEEE1");
    EXPECT_EQ(printedIsa(0xC000000000, 0), "$DE$IEEE1");
    EXPECT_EQ(printedIsa(0x800000000000, 0x1), "$CX81$CX81$IEEE1");
}

TEST(PrintDecoration, AProfileShowsWithTheWideInstructionSetOnly) {
    EXPECT_EQ(printedIsa(0x10000800000, 0), "$Q64_ISAv8$A_PROFILE$IEEE1");
    EXPECT_EQ(printedIsa(0x210000000000, 0), "$Q64_ISAv8$R_PROFILE$IEEE1");
    EXPECT_EQ(printedIsa(0x210000800000, 0), "$Q64_ISAv8$R_PROFILE$IEEE1");
    EXPECT_EQ(printedIsa(0x30000800000, 0), "$Q64_ISAv9$IEEE1");
    EXPECT_EQ(printedIsa(0x80003F, 0), "$QEL_ISAv8$IEEE1");
}

TEST(PrintDecoration, WhatNoRowCoversIsNotPrinted) {
    for (const IsaSet& isa :
         {feature_word::M, feature_word::SOFTFP, feature_word::FP16, feature_word::ZLT_HALF,
          feature_word::QEL_DIVIDE, feature_word::VIRTUALIZATION_EXTENSION, feature_word::MX81,
          feature_word::TRGf, feature_word::FP_GENERATION_7, IsaSet{0x2, 0}, IsaSet{0x20, 0},
          IsaSet{0, 0x10000}, IsaSet{0xC2800000000, 0}, IsaSet{0, 0xFFFFFFFFFFFEFD10}}) {
        EXPECT_EQ(printed(withIsa(isa)), "$IEEE1") << isa.low << ' ' << isa.high;
    }
}

TEST(PrintDecoration, FeaturesStandInTheOrderOfTheirRows) {
    EXPECT_EQ(printedIsa(0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFFFF),
              "$FCH_ISAv5$QEL_ISAv9$Q64_ISAv9$X$E$P$J$Z$N$DE$K$B$S$MX7$MX81$FLAv3$FP_QELv8_FP16$PE"
              "$ME$FZ_POSZERO$PLD8$WMMX2$MD$MPE$CX81$CX81$TRGf$RAS$IEEE1");
}

// One row for each way in which a form can lie in the words for code, read-only data and data.
TEST(PrintDecoration, BlocksOfAccess) {
    constexpr uint16_t form = 0x1; // L88
    const struct {
        const char* words; // which of the three have it
        const char* expected;
    } cases[] = {
        {"---", "$IEEE1"},       {"x--", "$X:L88$IEEE1"}, {"-x-", "$C:L88$IEEE1"},
        {"--x", "$W:L88$IEEE1"}, {"xx-", "$R:L88$IEEE1"}, {"x-x", "$X:L88$IEEE1"},
        {"-xx", "$C:L88$IEEE1"}, {"xxx", "$A:L88$IEEE1"},
    };
    for (const auto& c : cases) {
        const auto word = [&c](size_t i) {
            return c.words[i] == 'x' ? form : static_cast<uint16_t>(0);
        };
        EXPECT_EQ(printedAccess(word(0), word(1), word(2), 0), c.expected) << c.words;
    }
    EXPECT_EQ(printedAccess(0, 0, 0, form), "$S88$IEEE1");
}

TEST(PrintDecoration, BlocksStandInTheirOrder) {
    // L88 in all, L84 in code and read-only data, L82 in read-only data, L81 in code, L42 in data.
    EXPECT_EQ(printedAccess(0x1 | 0x2 | 0x8, 0x1 | 0x2 | 0x4, 0x1 | 0x20, 0x8002),
              "$A:L88$R:L84$C:L82$X:L81$W:L42$S84US21$IEEE1");
    EXPECT_EQ(printedAccess(0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF),
              "$A:L88L84L82L81L42L41L22L21UL84UL82UL81UL42UL41UL21$X:L11"
              "$S88S84S82S81S42S41S22S21US84US82US81US42US41US21$IEEE1");
}

TEST(PrintDecoration, WhatAllObjectsMayDoPrintsAsNothing) {
    EXPECT_EQ(printedAccess(0x0010, 0, 0, 0), "$IEEE1");
    EXPECT_EQ(printedAccess(0x0010, 0x0210, 0x0210, 0x0210), "$IEEE1");
    EXPECT_EQ(printedAccess(0x0210, 0x0210, 0x0210, 0x0210), "$X:L11$IEEE1");
}

TEST(PrintDecoration, EachOptionTokenAlone) {
    for (const OptionToken& row : optionTokens) {
        EXPECT_EQ(printedOptions(row.bits), "$IEEE1$" + std::string(row.text));
    }
    for (const OptionToken& row : requirementTokens) {
        FullAttr value;
        value.requirements = row.bits;
        EXPECT_EQ(printed(value), "$IEEE1$" + std::string(row.text));
    }
}

TEST(PrintDecoration, OptionsTakeTheirBitsOut) {
    EXPECT_EQ(printedOptions(0), "$IEEE1");
    EXPECT_EQ(printedOptions(0x30000), "$IEEE1$OTIME");
    EXPECT_EQ(printedOptions(0x20000), "$IEEE1");
    EXPECT_EQ(printedOptions(0x700000), "$IEEE1$IEEEX");
    EXPECT_EQ(printedOptions(0x500000), "$IEEE1$IEEEJ");
    EXPECT_EQ(printedOptions(0x600000), "$IEEE1");
    EXPECT_EQ(printedOptions(0xFFFFFFFFFFFFFFFF),
              "$IEEE1$IW$~IW$RWPI$USESV6$STKCKD$~STKCKD$USESV7$HARDFP$SOFTFP$WCHAR32$ENUMINT$~SHL"
              "$OTIME$ROPI$IEEEX$EBA4$EBA8$UX$FPIC$INDIRECT$STANDARDLIB$MICROLIB$THREADEDCXX"
              "$SIGN_RET_ADDR$TAGGED_STACK$BTI$PACBTILIB$ACCEL_MOPS");
}

TEST(PrintDecoration, RequirementsAndFormatComeLast) {
    FullAttr value;
    value.requirements = 0x3;
    value.abiVersion = 2;
    value.options = 1;
    EXPECT_EQ(printed(value), "$IEEE1$IW$REQ8$PRES8$EABIv2");
    value.requirements = 0xFFFFFFFFFFFFFFFC;
    value.abiVersion = 1;
    EXPECT_EQ(printed(value), "$IEEE1$IW");
    value.abiVersion = 3;
    EXPECT_EQ(printed(value), "$IEEE1$IW$EABIv2");
}

TEST(PrintDecoration, ClassAndKindAreNotPrinted) {
    FullAttr value;
    value.targetClass = 0xFFFFFFFF;
    value.targetKind = 0xFFFFFFFF;
    EXPECT_EQ(printed(value), "$IEEE1");
}

// Prints into a block of exactly `size` bytes, so that the sanitizer sees a byte too many.
std::string printedInto(const FullAttr& value, uint64_t size, uint64_t& length) {
    const std::unique_ptr<char[]> buffer(new char[size]);
    std::memset(buffer.get(), '\xEE', size);
    length = printDecoration(value, buffer.get(), size);
    const void* const end = std::memchr(buffer.get(), '\0', size);
    return end == nullptr ? "no end" : std::string(buffer.get());
}

TEST(PrintDecoration, AShortBufferLosesTokensButNotTheLength) {
    FullAttr value;
    value.options = 0x30001; // "$IEEE1$IW$OTIME"
    uint64_t length = 0;
    EXPECT_EQ(printedInto(value, 16, length), "$IEEE1$IW$OTIME");
    EXPECT_EQ(length, 15U);
    EXPECT_EQ(printedInto(value, 15, length), "$IEEE1$IW");
    EXPECT_EQ(length, 15U);
    EXPECT_EQ(printedInto(value, 14, length), "$IEEE1$IW");
    EXPECT_EQ(printedInto(value, 9, length), "$IEEE1");
    // A token that does not fit is skipped, a shorter one behind it is not.
    EXPECT_EQ(printedInto(value, 6, length), "$IW");
    EXPECT_EQ(printedInto(value, 4, length), "$IW");
    EXPECT_EQ(printedInto(value, 3, length), "");
    EXPECT_EQ(printedInto(value, 1, length), "");
    EXPECT_EQ(length, 15U);
    char untouched = '\xEE';
    EXPECT_EQ(printDecoration(value, &untouched, 0), 15U);
    EXPECT_EQ(untouched, '\xEE');
}

TEST(PrintDecoration, NothingFollowsABlockThatWasCut) {
    FullAttr value;
    value.isa = {0x10000, 0};    // "$X"
    value.access[0] = 0x1 | 0x2; // "$X:L88L84"
    value.options = 1;
    uint64_t length = 0;
    EXPECT_EQ(printedInto(value, 21, length), "$X$X:L88L84$IEEE1$IW");
    EXPECT_EQ(length, 20U);
    EXPECT_EQ(printedInto(value, 20, length), "$X$X:L88L84$IEEE1");
    EXPECT_EQ(printedInto(value, 12, length), "$X$X:L88L84");
    EXPECT_EQ(printedInto(value, 11, length), "$X$X:L88");
    EXPECT_EQ(length, 20U);
    EXPECT_EQ(printedInto(value, 8, length), "$X$X:");
    EXPECT_EQ(printedInto(value, 5, length), "$X");
    EXPECT_EQ(length, 20U);
    value.isa = {};
    EXPECT_EQ(printedInto(value, 7, length), "$X:L88");
    EXPECT_EQ(printedInto(value, 4, length), "$X:");
    // There would be room for "$IW" where "UL84" has none.
    value.access[0] = 0x1 | 0x400;
    EXPECT_EQ(printedInto(value, 10, length), "$X:L88");
    EXPECT_EQ(length, 19U);
}

FullAttr randomValue(std::mt19937_64& random) {
    FullAttr value;
    value.isa = {random() & random(), random() & random()};
    for (uint16_t& word : value.access) {
        word = static_cast<uint16_t>(random() & random());
    }
    value.options = random() & random();
    value.requirements = random();
    value.abiVersion = random() % 4;
    return value;
}

TEST(PrintDecoration, AnyBufferHoldsTokensInOrder) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 300; ++i) {
        const FullAttr value = randomValue(random);
        const std::string whole = printed(value);
        for (uint64_t size = 1; size <= whole.size() + 1; ++size) {
            uint64_t length = 0;
            const std::string cut = printedInto(value, size, length);
            ASSERT_EQ(length, whole.size());
            ASSERT_LT(cut.size(), size);
            // What was written is the whole text with some of its parts left out.
            size_t position = 0;
            for (const char c : cut) {
                position = whole.find(c, position);
                ASSERT_NE(position, std::string::npos) << whole << ' ' << cut;
                ++position;
            }
            ASSERT_TRUE(cut.empty() || cut[0] == '$');
            ASSERT_EQ(size == whole.size() + 1, cut == whole) << size << ' ' << whole;
        }
    }
}

TEST(SymbolDecoration, IsTheMarkerAndTheDecoration) {
    alloclib::startAllocators();
    FullAttr value;
    value.isa = {0x7, 0};
    value.options = 1;
    const char* const text = symbolDecoration(value, alloclib::defaultRegion());
    EXPECT_STREQ(text, "BuildAttributes$$QEL_ISAv5$IEEE1$IW");
    EXPECT_STREQ(symbolDecoration({}, alloclib::defaultRegion()), "BuildAttributes$$IEEE1");
    alloclib::finishAllocators();
}

TEST(SymbolDecoration, MarkersHaveTheirLengths) {
    EXPECT_STREQ(MarkerText, "BuildAttributes$");
    EXPECT_EQ(std::strlen(MarkerText), MarkerLength);
    EXPECT_STREQ(MarkerWithTokenText, "BuildAttributes$$");
    EXPECT_EQ(std::strlen(MarkerWithTokenText), MarkerWithTokenLength);
    EXPECT_STREQ(SymbolMarkerText, "$$BuildAttributes$");
    EXPECT_EQ(std::strlen(SymbolMarkerText), SymbolMarkerLength);
    EXPECT_STREQ(DecoratedSymbolFormat, "%s$$%s");
}

} // namespace
} // namespace attributes::test
