// Parsing decorations: each token alone, what ends a token, defaults, merging, and any bytes.
#include "tests/attributes/decoration_text.h"

#include "attributes/interface/feature_words.h"
#include "attributes/src/decoration_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <memory>
#include <random>
#include <string>

namespace attributes::test {
namespace {

using Words = std::array<uint16_t, 4>;

Words accessOf(const std::string& text) {
    const FullAttr value = parsed(text);
    return {value.access[0], value.access[1], value.access[2], value.access[3]};
}

std::string inCase(std::string_view text, int (*change)(int)) {
    std::string changed;
    for (const char c : text) {
        changed += static_cast<char>(change(c));
    }
    return changed;
}

constexpr Words DefaultWords = {0x0010, 0x0210, 0x0210, 0x0210};
constexpr uint64_t DefaultOptions = 0x300000;

FullAttr emptyParse() {
    FullAttr value;
    for (size_t word = 0; word < 4; ++word) {
        value.access[word] = DefaultWords[word];
    }
    value.options = DefaultOptions;
    return value;
}

TEST(ParseDecoration, OfNothing) {
    EXPECT_EQ(parsed(""), emptyParse());
    EXPECT_EQ(parsed("$"), emptyParse());
    EXPECT_EQ(parsed("$$$"), emptyParse());
    EXPECT_EQ(parsed("$unknown"), emptyParse());
}

TEST(ParseDecoration, EachFeatureTokenAlone) {
    for (const IsaToken& row : isaParseTable) {
        FullAttr expected = emptyParse();
        expected.isa = row.mask;
        normaliseIsa(expected.isa);
        const std::string text(row.text);
        EXPECT_EQ(parsed("$" + text), expected) << text;
        EXPECT_EQ(parsed("$" + inCase(text, std::tolower)), expected) << text;
        EXPECT_EQ(parsed("$" + inCase(text, std::toupper)), expected) << text;
        EXPECT_EQ(parsed("$$" + text + "$$"), expected) << text;
        // By their whole length only, and not without a "$" in front.
        EXPECT_EQ(parsed("$" + text + "\x01").isa, IsaSet{}) << text;
        EXPECT_EQ(parsed("$ " + text).isa, IsaSet{}) << text;
        EXPECT_EQ(parsed(text).isa, IsaSet{}) << text;
    }
}

TEST(ParseDecoration, WhatIsPrintedOnlyIsNotRead) {
    EXPECT_EQ(parsed("$CX81").isa, IsaSet{});
    EXPECT_EQ(parsed("$ZLTv5_D16_FP16").isa, IsaSet{});
    // The rows with a profile are read as two tokens.
    EXPECT_EQ(parsed("$Q64_ISAv8$R_PROFILE").isa, (IsaSet{0x210000000000, 0}));
    EXPECT_EQ(parsed("$Q64_ISAv8$A_PROFILE").isa, (IsaSet{0x10000800000, 0}));
}

TEST(ParseDecoration, TokensAddUpAndAreCompleted) {
    EXPECT_EQ(parsed("$QEL_ISAv5$FCH_ISAv1").isa, (IsaSet{0xC7, 0}));
    EXPECT_EQ(parsed("$ZLTi3$VFMA").isa, (IsaSet{0x2784000000000000, 0}));
    EXPECT_EQ(parsed("$FINCH_ISAv1").isa, (IsaSet{0x200043, 0}));
}

TEST(ParseDecoration, AMarkerInFrontIsSkipped) {
    for (const char* text : {"BuildAttributes$$QEL_ISAv4", "BUILDATTRIBUTES$$$QEL_ISAv4",
                             "buildattributes$$QEL_ISAv4", "$QEL_ISAv4"}) {
        EXPECT_EQ(parsed(text).isa, (IsaSet{0x3, 0})) << text;
    }
    EXPECT_EQ(parsed("BuildAttributes$"), emptyParse());
    EXPECT_EQ(parsed("BuildAttributes$$"), emptyParse());
    // With one "$" it is no marker, and no text that begins with a token.
    EXPECT_EQ(parsed("BuildAttributes$QEL_ISAv4"), emptyParse());
    EXPECT_EQ(parsed("BuildAttribute$$QEL_ISAv4"), emptyParse());
    EXPECT_EQ(parsed(" $QEL_ISAv4"), emptyParse());
    // As a token of its own it has no meaning.
    EXPECT_EQ(parsed("$BuildAttributes$$QEL_ISAv4").isa, (IsaSet{0x3, 0}));
}

TEST(ParseDecoration, EachOptionTokenAlone) {
    for (const OptionToken& row : optionTokens) {
        FullAttr expected = emptyParse();
        expected.options |= row.bits;
        const std::string text(row.text);
        if (text != "SOFTFP") { // no feature is called so
            EXPECT_EQ(parsed("$" + text), expected) << text;
        }
        EXPECT_EQ(parsed("$" + inCase(text, std::tolower)).options, expected.options) << text;
        EXPECT_EQ(parsed("$" + text + "_").options, DefaultOptions) << text;
        EXPECT_EQ(parsed("$IEEE1$" + text).options, row.bits) << text;
    }
    EXPECT_EQ(parsed("$SOFTFP").isa, IsaSet{});
}

TEST(ParseDecoration, TheDefaultModelHoldsUnlessNamed) {
    EXPECT_EQ(parsed("$IEEE1").options, 0U);
    EXPECT_EQ(parsed("$ieee1").options, 0U);
    EXPECT_EQ(parsed("$IW").options, 0x300001U);
    // Tokens act in their order.
    EXPECT_EQ(parsed("$IEEE1$IEEEF").options, 0x300000U);
    EXPECT_EQ(parsed("$IEEEF$IEEE1").options, 0U);
    EXPECT_EQ(parsed("$IEEEX$IEEE1").options, 0x400000U);
    EXPECT_EQ(parsed("$IEEE1$IEEEJ$IEEE1").options, 0U);
}

TEST(ParseDecoration, RequirementsAndFormat) {
    EXPECT_EQ(parsed("$REQ8").requirements, 1U);
    EXPECT_EQ(parsed("$pres8").requirements, 2U);
    EXPECT_EQ(parsed("$REQ8$PRES8$REQ8").requirements, 3U);
    EXPECT_EQ(parsed("$EABIv2").abiVersion, 2U);
    EXPECT_EQ(parsed("$eabiV2").abiVersion, 2U);
    EXPECT_EQ(parsed("$EABIv1").abiVersion, 0U);
}

TEST(ParseDecoration, RegionsOfAccess) {
    const struct {
        const char* text;
        Words words;
    } cases[] = {
        {"$A:L88", {0x0011, 0x0211, 0x0211, 0x0210}},
        {"$C:L88", {0x0011, 0x0211, 0x0211, 0x0210}},
        {"$R:L88", {0x0010, 0x0211, 0x0211, 0x0210}},
        {"$W:L88", {0x0010, 0x0210, 0x0211, 0x0210}},
        {"$X:L88", {0x0011, 0x0210, 0x0210, 0x0210}},
        // Without a letter, or with an unknown one, loads go nowhere.
        {"$L88", {0x0010, 0x0210, 0x0210, 0x0210}},
        {"$Q:L88", {0x0010, 0x0210, 0x0210, 0x0210}},
        {"$a:L88", {0x0010, 0x0210, 0x0210, 0x0210}},
        {"$:L88", {0x0010, 0x0210, 0x0210, 0x0210}},
        // Stores always belong to their own word.
        {"$S88", {0x0010, 0x0210, 0x0210, 0x0211}},
        {"$A:S88", {0x0010, 0x0210, 0x0210, 0x0211}},
        {"$?:S88", {0x0010, 0x0210, 0x0210, 0x0211}},
        {"$X:US21", {0x0010, 0x0210, 0x0210, 0x8210}},
        {"$A:", DefaultWords},
        {"$A", DefaultWords},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(accessOf(c.text), c.words) << c.text;
    }
}

TEST(ParseDecoration, EachFormOfAccess) {
    for (const AccessToken& token : accessTokens) {
        const auto load = static_cast<uint16_t>(token.bit);
        const auto store = static_cast<uint16_t>(token.bit >> 16);
        const std::string text(token.text);
        EXPECT_EQ(
            accessOf("$A:" + text),
            (Words{static_cast<uint16_t>(0x0010 | load), static_cast<uint16_t>(0x0210 | load),
                   static_cast<uint16_t>(0x0210 | load), static_cast<uint16_t>(0x0210 | store)}))
            << text;
        EXPECT_EQ(accessOf("$A:" + inCase(text, std::tolower)), DefaultWords) << text;
        EXPECT_EQ(accessOf("$A: " + text), DefaultWords) << text;
    }
}

TEST(ParseDecoration, FormsOfAccessAreFoundInOrderOnly) {
    EXPECT_EQ(accessOf("$X:L88L84UL21"), (Words{0x8013, 0x0210, 0x0210, 0x0210}));
    EXPECT_EQ(accessOf("$X:L84L88"), (Words{0x0012, 0x0210, 0x0210, 0x0210}));
    EXPECT_EQ(accessOf("$X:L88L88"), (Words{0x0011, 0x0210, 0x0210, 0x0210}));
    EXPECT_EQ(accessOf("$X:L88,L84"), (Words{0x0011, 0x0210, 0x0210, 0x0210}));
    EXPECT_EQ(accessOf("$X:L8"), DefaultWords);
    // A token ends at the next one.
    EXPECT_EQ(accessOf("$X:L8$8"), DefaultWords);
    EXPECT_EQ(accessOf("$X:$L88"), DefaultWords);
}

TEST(ParseDecoration, ClassAndKindStay) {
    FullAttr value;
    value.targetClass = 7;
    value.targetKind = 0x40000000;
    value.isa = {1, 1};
    value.access[0] = 0xFFFF;
    value.options = 1;
    value.requirements = 3;
    value.abiVersion = 5;
    parseDecoration(value, "$IEEE1");
    FullAttr expected = emptyParse();
    expected.options = 0;
    expected.targetClass = 7;
    expected.targetKind = 0x40000000;
    EXPECT_EQ(value, expected);
}

TEST(MergeDecoration, AddsToAValue) {
    FullAttr value;
    value.isa = {0x7, 0};
    value.access[0] = 0x2;
    value.options = 0x1;
    value.requirements = 1;
    value.abiVersion = 1;
    value.targetClass = 9;
    mergeDecoration(value, "$FCH_ISAv1$X:L88$S88$RWPI$PRES8$EABIv2");
    FullAttr expected;
    expected.isa = {0xC7, 0}; // completed together with what was there
    expected.access[0] = 0x3; // and not reset
    expected.access[3] = 0x1;
    expected.options = 0x300005; // with the default model, since the text does not name it
    expected.requirements = 3;
    expected.abiVersion = 3;
    expected.targetClass = 9;
    EXPECT_EQ(value, expected);
}

TEST(MergeDecoration, OfDoublesAddsNothingElse) {
    FullAttr value;
    value.options = 0x300000;
    value.access[1] = 0x8;
    FullAttr expected = value;
    expected.isa = feature_word::PURE_DOUBLES;
    mergeDecoration(value, "$IEEE1$PE");
    EXPECT_EQ(value, expected);
}

TEST(MergeDecoration, CompletesWhatWasThere) {
    FullAttr value;
    value.isa = {0x4, 0};
    mergeDecoration(value, "");
    EXPECT_EQ(value.isa, (IsaSet{0x7, 0}));
}

// Parses a text that lies in a block of exactly its size, so that the sanitizer sees a byte too
// many.
FullAttr parsedExactly(const std::string& text) {
    const std::unique_ptr<char[]> copy(new char[text.size() + 1]);
    text.copy(copy.get(), text.size());
    copy[text.size()] = '\0';
    FullAttr value;
    parseDecoration(value, copy.get());
    return value;
}

TEST(ParseDecoration, AnyBytesAreTaken) {
    std::mt19937_64 random(23);
    IsaSet knownIsa;
    for (const IsaToken& row : isaParseTable) {
        setWord(knownIsa, row.mask);
    }
    uint64_t knownOptions = 0;
    for (const OptionToken& row : optionTokens) {
        knownOptions |= row.bits;
    }
    for (int i = 0; i < 20000; ++i) {
        std::string text = random() % 8 == 0 ? "BuildAttributes$" : "";
        const uint64_t pieces = random() % 12;
        for (uint64_t piece = 0; piece < pieces; ++piece) {
            switch (random() % 5) {
            case 0:
                text += '$';
                text += isaParseTable[random() % isaParseTable.size()].text;
                break;
            case 1:
                text += '$';
                text += optionTokens[random() % optionTokens.size()].text;
                break;
            case 2:
                text += "$A:";
                text += accessTokens[random() % accessTokens.size()].text;
                break;
            case 3:
                text += '$';
                break;
            default:
                text += static_cast<char>(1 + random() % 255);
            }
        }
        const FullAttr value = parsedExactly(text);
        EXPECT_TRUE(hasAll(knownIsa | feature_word::FP16 | feature_word::M |
                               feature_word::MIXED_DOUBLES | feature_word::PURE_DOUBLES,
                           value.isa))
            << text;
        EXPECT_EQ(value.options & ~knownOptions, 0U) << text;
        EXPECT_EQ(value.requirements & ~uint64_t{3}, 0U);
        EXPECT_EQ(value.abiVersion & ~uint64_t{2}, 0U);
        EXPECT_EQ(value.access[0] & 0x0010, 0x0010);
    }
}

TEST(ParseDecoration, LongTextsAreTaken) {
    EXPECT_EQ(parsed(std::string(1000000, '$')), emptyParse());
    EXPECT_EQ(parsed("$" + std::string(1000000, 'X')), emptyParse());
    EXPECT_EQ(parsed("$" + std::string(1000000, 'X') + "$X").isa, (IsaSet{0x10000, 0}));
    EXPECT_EQ(accessOf("$A:" + std::string(1000000, 'L')), DefaultWords);
    std::string tokens;
    for (int i = 0; i < 50000; ++i) {
        tokens += "$QEL_ISAv4$IW$A:L88";
    }
    const FullAttr value = parsed(tokens);
    EXPECT_EQ(value.isa, (IsaSet{0x3, 0}));
    EXPECT_EQ(value.options, 0x300001U);
    EXPECT_EQ(value.access[0], 0x0011);
}

} // namespace
} // namespace attributes::test
