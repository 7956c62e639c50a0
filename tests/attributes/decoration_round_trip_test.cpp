// What becomes of a value that is printed and read again.
//
// Nearly everything comes back. What does not is listed here, each loss with the rule of printing
// or reading that causes it; a value that differs from the model in a single bit fails the test.
#include "tests/attributes/decoration_text.h"

#include "attributes/interface/feature_words.h"
#include "attributes/src/decoration_tables.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace attributes::test {
namespace {

using namespace feature_word;

constexpr IsaSet Unit8D16{0x7EF000000000000, 0};
constexpr IsaSet Unit8{0x7FF000000000000, 0};
constexpr IsaSet Unit5D16{0x7ED000000000000, 0};
constexpr IsaSet Unit3D16{0x3E8000000000000, 0};
constexpr IsaSet Unit1{0xE8000000000000, 0};
constexpr IsaSet UpperRegisters{0x10000000000000, 0}; // what D32 has beyond D16
constexpr IsaSet Generation8{0x2000000000000, 0};     // what "FPiv8" has beyond "ZLTi5"
constexpr IsaSet Generation5{0x1000000000000, 0};     // what "ZLTi5" has beyond "ZLTi3"

// Features that no token carries back, in whatever company.
constexpr IsaSet NeverRead = SOFTFP | VIRTUALIZATION_EXTENSION | FP_GENERATION_7 // no token
                             | CX81_LOW | CX81_HIGH // printed, but no row to read them
                             | MX82                 // "MX81" is met first and takes "MX8"
                             | IsaSet{0xC2800000000, 0xFFFFFFFFFFFEFD10}; // bits without a name

// Whether a bit comes back depends on others.
struct Loss {
    const char* why;
    IsaSet bits;
    bool (*isLost)(const IsaSet& isa);
};

const Loss losses[] = {
    {"the bit of the 32-bit set's v8 shows with all of v7 only",
     {0x20, 0},
     [](const IsaSet& isa) { return !hasAll(isa, QEL_ISAv7); }},
    {"that of v9 with all of v8 only",
     {0, 0x10000},
     [](const IsaSet& isa) { return !hasAll(isa, QEL_ISAv8); }},
    {"that of the compact set's v5 with all of v4 only",
     {0x400, 0},
     [](const IsaSet& isa) { return !hasAll(isa, FINCH_ISAv4); }},
    {"that of the wide set's v9 with v8 only",
     {0x20000000000, 0},
     [](const IsaSet& isa) { return !hasAll(isa, Q64_ISAv8); }},
    {"the M bit shows in FCH_ISAv3M only, else others have to imply it", M,
     [](const IsaSet& isa) {
         const bool isShown = hasAll(isa, FINCH_ISAv3) && !hasAll(isa, FINCH_ISAv4);
         const bool isImplied =
             hasAll(isa, MX8_INSNS) ||
             (hasAll(isa, FINCH_DIVIDE) && !hasAny(isa, QEL_DIVIDE | QEL_ISAv3 | JAVA_STATE));
         return !isShown && !isImplied;
     }},
    {"a 32-bit division shows with the compact one only", QEL_DIVIDE,
     [](const IsaSet& isa) { return !hasAll(isa, FINCH_DIVIDE); }},
    {"a real-time profile shows with v8 of the wide set only", R_PROFILE,
     [](const IsaSet& isa) { return !hasAll(isa, Q64_ISAv8) || hasAll(isa, Q64_ISAv9); }},
    {"so does an application profile, and the real-time row takes v8 first", A_PROFILE,
     [](const IsaSet& isa) {
         return !hasAll(isa, Q64_ISAv8) || hasAll(isa, Q64_ISAv9) || hasAll(isa, R_PROFILE);
     }},
    {"half-precision storage comes with a unit, or is implied", FP16,
     [](const IsaSet& isa) { return !hasAll(isa, ZLT_ISAv3 | VFMA_EXTENSION); }},
    {"half-precision arithmetic shows in a whole unit with all registers, or is implied", ZLT_HALF,
     [](const IsaSet& isa) { return !hasAll(isa, Unit8) && !hasAll(isa, TRGf); }},
    {"ZLTi5 is met before FPiv8, so the latter shows in a whole unit only", Generation8,
     [](const IsaSet& isa) { return !hasAll(isa, Unit8D16); }},
    {"the token of a whole third generation takes what ZLTi5 needs", Generation5,
     [](const IsaSet& isa) { return hasAll(isa, Unit3D16) && !hasAll(isa, Unit5D16); }},
    {"ZLTv5_D16, ZLTv2 and ZLTv1 take the registers that EXTD32 needs", UpperRegisters,
     [](const IsaSet& isa) {
         const bool isFifth = hasAll(isa, Unit5D16) && !hasAll(isa, Unit8D16);
         const bool isBelowThird = hasAll(isa, Unit1) && !hasAll(isa, ZLT_ISAv3);
         return isFifth || isBelowThird;
     }},
};

IsaSet afterRoundTrip(const IsaSet& isa) {
    IsaSet expected = without(isa, NeverRead);
    for (const Loss& loss : losses) {
        if (loss.isLost(isa)) {
            clearWord(expected, loss.bits);
        }
    }
    return expected;
}

// The words that a form of access comes back in, by the words that it went out of: one row for
// each combination of code, read-only data, data.
void moveForm(const uint16_t (&in)[4], uint16_t form, uint16_t (&out)[4]) {
    constexpr struct {
        uint32_t in;  // bit 0 code, bit 1 read-only data, bit 2 data
        uint32_t out; // likewise
    } rows[] = {
        {0b000, 0b000}, // nothing
        {0b001, 0b001}, // "X"
        {0b010, 0b111}, // "C"
        {0b011, 0b110}, // "R"
        {0b100, 0b100}, // "W"
        {0b101, 0b001}, // "X" takes the form out of the union before "W" is printed
        {0b110, 0b111}, // so does "C"
        {0b111, 0b111}, // "A"
    };
    uint32_t from = 0;
    for (uint32_t word = 0; word < 3; ++word) {
        from |= (in[word] & form) != 0 ? 1U << word : 0U;
    }
    for (uint32_t word = 0; word < 3; ++word) {
        if ((rows[from].out >> word & 1U) != 0) {
            out[word] = static_cast<uint16_t>(out[word] | form);
        }
    }
}

constexpr uint16_t L44Form = 0x0010;
constexpr uint16_t L11Form = 0x0200;

void accessAfterRoundTrip(const uint16_t (&in)[4], uint16_t (&out)[4]) {
    for (uint32_t bit = 0; bit < 16; ++bit) {
        const auto form = static_cast<uint16_t>(1U << bit);
        if (form == L44Form) {
            continue; // never printed, always read
        }
        if (form == L11Form) {
            out[0] = static_cast<uint16_t>(
                out[0] | (in[0] & form)); // printed for code only, read for all others always
            continue;
        }
        moveForm(in, form, out);
    }
    out[0] |= L44Form;
    out[1] |= L44Form | L11Form;
    out[2] |= L44Form | L11Form;
    out[3] = static_cast<uint16_t>(in[3] | L44Form | L11Form);
}

uint64_t optionsAfterRoundTrip(uint64_t options) {
    uint64_t expected = 0;
    for (const OptionToken& row : optionTokens) {
        expected |= options & row.bits;
    }
    // Parts of patterns.
    if ((options & option_bit::OSPACE) == 0) {
        expected &= ~option_bit::OTIME;
    }
    if ((options & option_bit::IEEEJ) == 0) {
        expected &= ~option_bit::IEEEX;
    } else if ((options & option_bit::IEEEF) != option_bit::IEEEF) {
        expected &= ~option_bit::IEEEX | option_bit::IEEEJ;
    }
    return expected;
}

FullAttr afterRoundTrip(const FullAttr& value) {
    FullAttr expected;
    expected.isa = afterRoundTrip(value.isa);
    accessAfterRoundTrip(value.access, expected.access);
    expected.options = optionsAfterRoundTrip(value.options);
    expected.requirements = value.requirements & 3;
    expected.abiVersion = value.abiVersion & 2;
    return expected;
}

class RandomValues {
public:
    // Any value.
    FullAttr next() {
        FullAttr value;
        value.isa = isa();
        for (uint16_t& word : value.access) {
            word = static_cast<uint16_t>(bits());
        }
        value.options = m_Random() % 3 == 0 ? bits() : options();
        value.requirements = m_Random() % 5;
        value.abiVersion = m_Random() % 4;
        value.targetClass = static_cast<uint32_t>(m_Random());
        value.targetKind = static_cast<uint32_t>(m_Random());
        return value;
    }

    // A value whose features are complete, as those of objects are.
    FullAttr nextComplete() {
        FullAttr value = next();
        normaliseIsa(value.isa);
        normaliseIsa(value.isa); // a second time for TRGf
        return value;
    }

private:
    uint64_t bits() {
        uint64_t value = m_Random();
        for (uint64_t i = m_Random() % 3; i > 0; --i) {
            value &= m_Random();
        }
        return value;
    }

    IsaSet isa() {
        IsaSet isa;
        const uint64_t kind = m_Random() % 4;
        for (uint64_t i = kind == 0 ? 0 : m_Random() % 16; i > 0; --i) {
            const auto& table = m_Random() % 2 == 0 ? isaPrintTable : isaParseTable;
            setWord(isa, table[m_Random() % table.size()].mask);
        }
        if (kind <= 1) {
            setWord(isa, {bits() & m_Random(), bits() & m_Random()});
        }
        if (m_Random() % 3 == 0) {
            // Floating point is where most rows meet.
            setWord(isa, {bits() & 0x0FFF000000000000, bits() & 0xC2});
        }
        return isa;
    }

    uint64_t options() {
        uint64_t options = 0;
        for (uint64_t i = m_Random() % 16; i > 0; --i) {
            options |= optionTokens[m_Random() % optionTokens.size()].bits;
        }
        return options;
    }

    std::mt19937_64 m_Random{41};
};

TEST(DecorationRoundTrip, GivesAllBackButTheLosses) {
    RandomValues values;
    for (int i = 0; i < 60000; ++i) {
        const FullAttr value = values.nextComplete();
        const std::string text = printed(value);
        const FullAttr back = parsed(text);
        const FullAttr expected = afterRoundTrip(value);
        ASSERT_EQ(back.isa, expected.isa)
            << std::hex << value.isa.low << ' ' << value.isa.high << ' ' << text << " gave "
            << back.isa.low << ' ' << back.isa.high << " not " << expected.isa.low << ' '
            << expected.isa.high;
        ASSERT_EQ(back, expected) << text;
    }
}

// No line of the list of losses is there in vain: each bit is lost from some value.
TEST(DecorationRoundTrip, LosesEachBitOfTheList) {
    RandomValues values;
    bool isSeen[std::size(losses)] = {};
    IsaSet neverRead;
    for (int i = 0; i < 100000; ++i) {
        const IsaSet isa = values.nextComplete().isa;
        setWord(neverRead, isa & NeverRead);
        for (size_t loss = 0; loss < std::size(losses); ++loss) {
            isSeen[loss] |= hasAny(isa, losses[loss].bits) && losses[loss].isLost(isa);
        }
    }
    EXPECT_EQ(neverRead, NeverRead);
    for (size_t loss = 0; loss < std::size(losses); ++loss) {
        EXPECT_TRUE(isSeen[loss]) << losses[loss].why;
    }
}

TEST(DecorationRoundTrip, EachTokenAloneIsPrintedAgain) {
    for (const IsaToken& row : isaParseTable) {
        FullAttr value = parsed("$IEEE1$" + std::string(row.text));
        const std::string text = printed(value);
        const FullAttr again = parsed(text);
        if (row.text == "MX82") {
            EXPECT_EQ(without(value.isa, again.isa), MX82);
        } else if (row.text == "FPiv8") {
            EXPECT_EQ(without(value.isa, again.isa), Generation8);
        } else if (row.text == "FPiv8_2") {
            EXPECT_EQ(without(value.isa, again.isa), Generation8 | ZLT_HALF);
        } else if (row.text == "R_PROFILE" || row.text == "A_PROFILE") {
            EXPECT_TRUE(isEmpty(again.isa)) << row.text;
        } else if (row.text == "TRGf") {
            // Its half precision is added last, and goes on from there the next time.
            EXPECT_EQ(without(again.isa, value.isa), PURE_DOUBLES);
        } else {
            EXPECT_EQ(again.isa, value.isa) << row.text << ' ' << text;
        }
    }
    for (const OptionToken& row : optionTokens) {
        const std::string text = "$IEEE1$" + std::string(row.text);
        EXPECT_EQ(printed(parsed(text)), text);
    }
    for (const AccessToken& row : accessTokens) {
        const std::string block = (row.bit > 0xFFFF ? "$" : "$A:") + std::string(row.text);
        std::string expected = block + "$IEEE1";
        if (row.bit == 0x10 || row.bit == 0x100000 || row.bit == 0x2000000) {
            expected = "$IEEE1"; // what all may do
        } else if (row.bit == 0x200) {
            expected = "$X:L11$IEEE1"; // likewise, but for code
        }
        EXPECT_EQ(printed(parsed(block + "$IEEE1")), expected);
    }
}

// The text of a value that was read is read and printed as itself, except for three things: forms
// of access that moved ("R" comes back as "C", and that as "A"), and what TRGf implies.
TEST(DecorationRoundTrip, TextIsStableAfterOneRound) {
    RandomValues values;
    for (int i = 0; i < 20000; ++i) {
        FullAttr value = values.next();
        const bool isMovingAccess = i % 2 == 0;
        if (!isMovingAccess) {
            // Nothing in read-only data that is not in all.
            value.access[1] = value.access[0] & value.access[2];
        }
        const std::string once = printed(parsed(printed(value)));
        const std::string twice = printed(parsed(once));
        if (!isMovingAccess && !hasAll(value.isa, TRGf)) {
            ASSERT_EQ(twice, once);
        }
        const std::string thrice = printed(parsed(twice));
        ASSERT_EQ(printed(parsed(thrice)), thrice);
    }
}

TEST(DecorationRoundTrip, FormsOfAccessMove) {
    FullAttr value;
    value.access[0] = 0x1;
    value.access[1] = 0x1;
    const std::string first = printed(value);
    EXPECT_EQ(first, "$R:L88$IEEE1");
    const std::string second = printed(parsed(first));
    EXPECT_EQ(second, "$C:L88$IEEE1");
    const std::string third = printed(parsed(second));
    EXPECT_EQ(third, "$A:L88$IEEE1");
    EXPECT_EQ(printed(parsed(third)), third);
}

TEST(DecorationRoundTrip, ATruncatedTextIsReadAsItsTokens) {
    RandomValues values;
    for (int i = 0; i < 500; ++i) {
        const FullAttr value = values.nextComplete();
        const std::string text = printed(value);
        const FullAttr whole = parsed(text);
        // Cut between tokens: nothing comes in that was not there.
        for (size_t end = text.find('$'); end != std::string::npos; end = text.find('$', end + 1)) {
            const FullAttr part = parsed(text.substr(0, end));
            ASSERT_EQ(part.options & ~(whole.options | 0x300000), 0U);
            for (size_t word = 0; word < 4; ++word) {
                ASSERT_EQ(part.access[word] & ~whole.access[word], 0);
            }
        }
    }
}

} // namespace
} // namespace attributes::test
