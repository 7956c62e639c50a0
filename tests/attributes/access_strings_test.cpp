// Access strings and the default forms of access.
#include "attributes/interface/access_strings.h"
#include "attributes/src/decoration_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace attributes::test {
namespace {

using Words = std::array<uint16_t, 4>;

Words applied(Words words, const std::string& text) {
    AccessWords access = {words[0], words[1], words[2], words[3]};
    applyAccessString(access, text.c_str());
    return {access[0], access[1], access[2], access[3]};
}

constexpr Words None = {0, 0, 0, 0};
constexpr Words All = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};

TEST(AccessStrings, EachFormGoesInAndOut) {
    for (const AccessToken& token : accessTokens) {
        const auto load = static_cast<uint16_t>(token.bit);
        const auto store = static_cast<uint16_t>(token.bit >> 16);
        const Words in = {load, load, load, store};
        const auto out = [](uint16_t bit) { return static_cast<uint16_t>(~bit); };
        const std::string text(token.text);
        EXPECT_EQ(applied(None, "+" + text), in) << text;
        EXPECT_EQ(applied(None, text), in) << text;
        EXPECT_EQ(applied(All, "-" + text), (Words{out(load), out(load), out(load), out(store)}))
            << text;
    }
}

TEST(AccessStrings, RegionsAddressWords) {
    const struct {
        const char* text;
        Words words;
    } cases[] = {
        {"code:+L88", {1, 0, 0, 0}},
        {"text:+L88", {1, 0, 0, 0}},
        {"rodata:+L88", {0, 1, 1, 0}},
        {"ro:+L88", {1, 1, 1, 0}},
        {"rw:+L88", {0, 0, 1, 0}},
        {"data:+L88", {0, 0, 1, 0}},
        {"all:+L88", {1, 1, 1, 0}},
        {"+L88", {1, 1, 1, 0}},
        {":+L88", {1, 1, 1, 0}},
        {"code+data:+L88", {1, 0, 1, 0}},
        {"CODE+RoData+Rw:+L88", {1, 1, 1, 0}},
        {"code+L88", {1, 0, 0, 0}},      // no colon needed
        {"code+data+L88", {1, 0, 1, 0}}, // the second "+" begins an item
        {"code:L88", {1, 0, 0, 0}},      // nor a sign
        {"code:+S88", {0, 0, 0, 1}},     // stores belong to their own word always
        {"code+data", {0, 0, 0, 0}},
        {"code+", {0, 0, 0, 0}},
        {"codex:+L88", {0, 0, 0, 0}},
        {"code::+L88", {0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(applied(None, c.text), c.words) << c.text;
    }
}

TEST(AccessStrings, ItemsGather) {
    EXPECT_EQ(applied({0x0290, 0x0290, 0x0290, 0x0290}, "+UL41+US41+UL21+US21"),
              (Words{0xC290, 0xC290, 0xC290, 0xC290}));
    EXPECT_EQ(applied({0xC290, 0xC290, 0xC290, 0xC290}, "-UL41-US41-UL21-US21"),
              (Words{0x0290, 0x0290, 0x0290, 0x0290}));
    // What comes in stays in, whatever the order.
    EXPECT_EQ(applied(None, "+L88-L88"), (Words{1, 1, 1, 0}));
    EXPECT_EQ(applied(None, "-L88+L88"), (Words{1, 1, 1, 0}));
    // The words of other regions are left alone, but stores are not.
    EXPECT_EQ(applied(All, "code:-L88-S88"), (Words{0xFFFE, 0xFFFF, 0xFFFF, 0xFFFE}));
}

TEST(AccessStrings, CostsAreSkipped) {
    EXPECT_EQ(applied(None, "+L88/12+S11/0"), (Words{1, 1, 1, 0x200}));
    EXPECT_EQ(applied(None, "+L88/+S11"), (Words{1, 1, 1, 0x200}));
    EXPECT_EQ(applied(None, "+L88/" + std::string(100000, '9') + "+S11"), (Words{1, 1, 1, 0x200}));
    EXPECT_EQ(applied(None, "+L88/1/2+S11"), (Words{1, 1, 1, 0}));
}

TEST(AccessStrings, CaseDoesNotMatter) {
    EXPECT_EQ(applied(None, "ALL:+ul41+Us41"), (Words{0x4000, 0x4000, 0x4000, 0x4000}));
}

TEST(AccessStrings, TheWalkEndsAtWhatIsNoItem) {
    EXPECT_EQ(applied(None, ""), None);
    EXPECT_EQ(applied(None, "+"), None);
    EXPECT_EQ(applied(None, "-"), None);
    EXPECT_EQ(applied(None, "++L88"), None);
    EXPECT_EQ(applied(None, "+L89+L88"), None);
    EXPECT_EQ(applied(None, "+L88 +L84"), (Words{1, 1, 1, 0}));
    EXPECT_EQ(applied(None, "+L88,+L84"), (Words{1, 1, 1, 0}));
    EXPECT_EQ(applied(None, "+U"), None);
    EXPECT_EQ(applied(None, "+UL4"), None);
}

TEST(AccessStrings, AnyTextIsTaken) {
    std::mt19937_64 random(5);
    const std::string alphabet = "+-/:lLuUsS8421codeatrw\x80";
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const uint64_t length = random() % 30;
        for (uint64_t j = 0; j < length; ++j) {
            text += alphabet[random() % alphabet.size()];
        }
        // A text that only adds never takes away, and the other way round.
        const bool removes = text.find('-') != std::string::npos;
        const Words in = {static_cast<uint16_t>(random()), static_cast<uint16_t>(random()),
                          static_cast<uint16_t>(random()), static_cast<uint16_t>(random())};
        const Words out = applied(in, text);
        for (size_t word = 0; word < 4 && !removes; ++word) {
            EXPECT_EQ(out[word] & in[word], in[word]) << text;
        }
    }
    std::string longText = "code";
    for (int i = 0; i < 100000; ++i) {
        longText += "+code+data";
    }
    EXPECT_EQ(applied(None, longText + "+L88"), (Words{1, 0, 1, 0}));
}

Words defaultOf(uint32_t arch) {
    AccessWords access = {1, 2, 3, 4};
    defaultAccess(arch, access);
    return {access[0], access[1], access[2], access[3]};
}

Words defaultOf(const char* name) {
    AccessWords access = {1, 2, 3, 4};
    defaultAccessByName(name, access);
    return {access[0], access[1], access[2], access[3]};
}

TEST(DefaultAccess, ByNumber) {
    EXPECT_EQ(defaultOf(0U), (Words{0x0210, 0x0210, 0x0210, 0x0210}));
    for (uint32_t arch = 1; arch < 40; ++arch) {
        const bool isUnaligned = (arch >= 6 && arch <= 17) || (arch >= 21 && arch <= 23);
        EXPECT_EQ(defaultOf(arch), isUnaligned ? (Words{0xC290, 0xC290, 0xC290, 0xC290})
                                               : (Words{0x0290, 0x0290, 0x0290, 0x0290}))
            << arch;
    }
    EXPECT_EQ(defaultOf(0xFFFFFFFFU), (Words{0x0290, 0x0290, 0x0290, 0x0290}));
}

TEST(DefaultAccess, ByName) {
    EXPECT_EQ(defaultOf(nullptr), (Words{0x0290, 0x0290, 0x0290, 0x0290}));
    EXPECT_EQ(defaultOf("v6"), (Words{0xC290, 0xC290, 0xC290, 0xC290}));
    EXPECT_EQ(defaultOf("Finch"), (Words{0x0290, 0x0210, 0x0210, 0x0210}));
    EXPECT_EQ(defaultOf("v3"), (Words{0x0210, 0x0210, 0x0210, 0x0210}));
    EXPECT_EQ(defaultOf(""), (Words{0x0210, 0x0210, 0x0210, 0x0210}));
}

} // namespace
} // namespace attributes::test
