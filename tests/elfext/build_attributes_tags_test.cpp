// The tag layers of both vendors, and what decoding makes of their attributes.
#include "elfext/interface/build_attributes_parsers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/attributes/record_fixtures.h"
#include "tests/elfext/attribute_section_builder.h"

namespace elfext::test {
namespace {

using attributes::BuildAttributes;
using attributes::TagRow;
using attributes::test::Witness;

using Calls = std::vector<std::string>;

// Writes down each tag, e.g. "6=10", "5'name'", "also 32=2'QEL'".
class RecordingTagParser : public QeabiBuildAttributesSubSubsectionParser {
public:
    bool numericTag(uint32_t tag, uint32_t number) override {
        return note(std::to_string(tag) + "=" + std::to_string(number));
    }
    bool stringTag(uint32_t tag, const char* text) override {
        return note(std::to_string(tag) + "'" + text + "'");
    }
    bool numericAndStringTag(uint32_t tag, uint32_t number, const char* text) override {
        return note(std::to_string(tag) + "=" + std::to_string(number) + "'" + text + "'");
    }
    bool alsoCompatibleNumericTag(uint32_t tag, uint32_t number) override {
        return note("also " + std::to_string(tag) + "=" + std::to_string(number));
    }
    bool alsoCompatibleStringTag(uint32_t tag, const char* text) override {
        return note("also " + std::to_string(tag) + "'" + text + "'");
    }
    bool alsoCompatibleNumericAndStringTag(uint32_t tag, uint32_t number,
                                           const char* text) override {
        return note("also " + std::to_string(tag) + "=" + std::to_string(number) + "'" + text +
                    "'");
    }

    bool answer = true;
    Calls calls;

private:
    bool note(const std::string& call) {
        calls.push_back(call);
        return answer;
    }
};

class RecordingQelParser : public QelBuildAttributesSubSubsectionParser {
public:
    bool numericTag(uint32_t tag, uint32_t number) override {
        calls.push_back(std::to_string(tag) + "=" + std::to_string(number));
        return answer;
    }
    bool stringTag(uint32_t tag, const char* text) override {
        calls.push_back(std::to_string(tag) + "'" + text + "'");
        return answer;
    }

    bool answer = true;
    Calls calls;
};

template <typename Parser>
bool parseWith(Parser& parser, const std::string& stream) {
    const ExactBytes bytes(stream);
    return parser.parse(bytes.data(), bytes.size());
}

// The calls for a stream; one that is not sound has a last "bad".
Calls callsFor(const std::string& stream) {
    RecordingTagParser parser;
    if (!parseWith(parser, stream)) {
        parser.calls.emplace_back("bad");
    }
    return parser.calls;
}

Calls qelCallsFor(const std::string& stream) {
    RecordingQelParser parser;
    if (!parseWith(parser, stream)) {
        parser.calls.emplace_back("bad");
    }
    return parser.calls;
}

std::string nested(const std::string& attribute) {
    return uleb(65) + attribute;
}

TEST(QeabiTags, NothingIsSound) {
    EXPECT_EQ(callsFor(""), Calls{});
}

TEST(QeabiTags, EachTagByItsClass) {
    for (uint32_t tag = 4; tag < 1000; ++tag) {
        if (tag == 65) {
            continue;
        }
        const std::string name = std::to_string(tag);
        if (tag == 32) {
            EXPECT_EQ(callsFor(both(tag, 300, "v")), Calls{"32=300'v'"});
        } else if (tag == 4 || tag == 5 || (tag > 32 && tag % 2 == 1)) {
            EXPECT_EQ(callsFor(text(tag, "v")), Calls{name + "'v'"});
        } else {
            EXPECT_EQ(callsFor(number(tag, 300)), Calls{name + "=300"});
        }
    }
    EXPECT_EQ(callsFor(number(0xFFFFFFFE, 1)), Calls{"4294967294=1"});
    EXPECT_EQ(callsFor(text(0x80000001, "")), Calls{"2147483649''"});
}

TEST(QeabiTags, ComeInOrder) {
    EXPECT_EQ(callsFor(number(6, 1) + text(5, "a") + number(6, 0) + both(32, 0, "")),
              (Calls{"6=1", "5'a'", "6=0", "32=0''"}));
}

TEST(QeabiTags, BelowFourThereAreNone) {
    for (uint32_t tag = 0; tag < 4; ++tag) {
        EXPECT_EQ(callsFor(number(6, 1) + number(tag, 1) + number(6, 2)), (Calls{"6=1", "bad"}));
    }
}

TEST(QeabiTags, ACutEndsTheWalk) {
    const Calls bad = {"6=1", "bad"};
    EXPECT_EQ(callsFor(number(6, 1) + "\x86"), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(8)), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(8) + "\x80"), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(5)), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(5) + "abc"), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(32) + uleb(2)), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(32) + uleb(2) + "QEL"), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(65) + "\x06"), bad);
    EXPECT_EQ(callsFor(number(6, 1) + uleb(65)), bad);
    EXPECT_EQ(callsFor(number(6, 1) + std::string(1000000, '\xFF')), bad);
}

TEST(QeabiTags, NestedAttributes) {
    EXPECT_EQ(callsFor(nested(number(6, 11) + '\0')), Calls{"also 6=11"});
    // The text's end is the number 0.
    EXPECT_EQ(callsFor(nested(uleb(6) + '\0')), Calls{"also 6=0"});
    EXPECT_EQ(callsFor(nested(number(200, 300) + '\0')), Calls{"also 200=300"});
    EXPECT_EQ(callsFor(nested(text(5, "name"))), Calls{"also 5'name'"});
    EXPECT_EQ(callsFor(nested(text(5, ""))), Calls{"also 5''"});
    EXPECT_EQ(callsFor(nested(both(32, 2, "QEL"))), Calls{"also 32=2'QEL'"});
    // One inside of one is a text like others.
    EXPECT_EQ(callsFor(nested(text(65, "\x06\x01"))), Calls{"also 65'\x06\x01'"});
}

TEST(QeabiTags, BadNestedAttributesAreRejectedAndTheWalkGoesOn) {
    const std::string cases[] = {
        ntbs(""),                  // tag 0
        number(3, 1) + '\0',       // no class
        number(6, 1) + "x" + '\0', // a rest
        ntbs("\x86"),              // the tag runs into the end and is 6, without a number
        uleb(32) + '\0',           // 0, and no text
        ntbs(number(32, 2)),       // a text that is empty is the end, so this one is sound
    };
    for (size_t i = 0; i < std::size(cases) - 1; ++i) {
        EXPECT_EQ(callsFor(nested(cases[i]) + number(6, 1)), (Calls{"6=1", "bad"})) << i;
    }
    EXPECT_EQ(callsFor(nested(cases[5]) + number(6, 1)), (Calls{"also 32=2''", "6=1"}));
}

TEST(QeabiTags, AFalseAnswerIsRememberedAndTheWalkGoesOn) {
    RecordingTagParser parser;
    parser.answer = false;
    const std::string stream = number(6, 1) + text(5, "") + both(32, 0, "") +
                               nested(number(6, 1) + '\0') + nested(text(5, "")) +
                               nested(both(32, 1, ""));
    EXPECT_FALSE(parseWith(parser, stream));
    EXPECT_EQ(parser.calls.size(), 6U);
}

TEST(QeabiTags, WhatIsNotOverriddenIsContent) {
    QeabiBuildAttributesSubSubsectionParser parser;
    const std::string stream = number(6, 1) + text(5, "") + both(32, 0, "") +
                               nested(number(6, 1) + '\0') + nested(text(5, "")) +
                               nested(both(32, 1, ""));
    EXPECT_TRUE(parseWith(parser, stream));
    QelBuildAttributesSubSubsectionParser qelParser;
    EXPECT_TRUE(parseWith(qelParser, number(4, 1) + text(5, "")));
}

// A user may put a walk of its own in place of the one there is.
TEST(QeabiTags, TheWalkItselfCanBeReplaced) {
    class RefusingParser final : public QeabiBuildAttributesSubSubsectionParser {
    public:
        bool parse(const uint8_t* /*data*/, uint32_t /*length*/) override { return false; }
    };
    RefusingParser parser;
    EXPECT_FALSE(
        parseWith(static_cast<QeabiBuildAttributesSubSubsectionParser&>(parser), number(6, 1)));
}

TEST(QelTags, AreEvenOrOdd) {
    EXPECT_EQ(qelCallsFor(""), Calls{});
    for (uint32_t tag = 4; tag < 300; ++tag) {
        const std::string name = std::to_string(tag);
        if (tag % 2 == 0) {
            EXPECT_EQ(qelCallsFor(number(tag, 7)), Calls{name + "=7"});
        } else {
            EXPECT_EQ(qelCallsFor(text(tag, "v")), Calls{name + "'v'"});
        }
    }
    for (uint32_t tag = 0; tag < 4; ++tag) {
        EXPECT_EQ(qelCallsFor(number(tag, 0) + number(4, 1)), Calls{"bad"});
    }
    EXPECT_EQ(qelCallsFor(number(4, 1) + uleb(4)), (Calls{"4=1", "bad"}));
    EXPECT_EQ(qelCallsFor(number(4, 1) + uleb(5) + "x"), (Calls{"4=1", "bad"}));
    EXPECT_EQ(qelCallsFor(number(4, 1) + "\x84"), (Calls{"4=1", "bad"}));
    RecordingQelParser parser;
    parser.answer = false;
    EXPECT_FALSE(parseWith(parser, number(4, 1) + text(5, "")));
    EXPECT_EQ(parser.calls.size(), 2U);
}

TEST(TagParsersDeathTest, BytesAreNeeded) {
    const char* const file = "elfext/src/build_attributes_tag_parsers";
    QeabiBuildAttributesSubSubsectionParser qeabi;
    EXPECT_FAULT(qeabi.parse(nullptr, 0), file, "subSubsectionData != NULL");
    QelBuildAttributesSubSubsectionParser qel;
    EXPECT_FAULT(qel.parse(nullptr, 0), file, "subSubsectionData != NULL");
}

TEST(TagParsers, EachCutOfAStreamIsTaken) {
    const std::string stream = number(6, 300) + text(5, "name") + both(32, 200, "QEL") +
                               nested(number(6, 11) + '\0') + nested(both(32, 1, "x"));
    uint32_t sound = 0;
    for (size_t size = 0; size <= stream.size(); ++size) {
        RecordingTagParser parser;
        sound += parseWith(parser, stream.substr(0, size)) ? 1U : 0U;
        RecordingQelParser qelParser;
        parseWith(qelParser, stream.substr(0, size));
    }
    EXPECT_EQ(sound, 6U); // before, between and behind the five attributes
}

// Decoding.

using DecodingTest = attributes::test::RecordTest;

BuildAttributes decoded(const std::string& stream, bool isSound = true) {
    BuildAttributes record;
    QeabiBuildAttributesDecodingParser parser(&record);
    // Vendor names in the record refer to the bytes, so these must stay.
    EXPECT_EQ(parser.parse(bytesOf(stream), static_cast<uint32_t>(stream.size())), isSound);
    return record;
}

BuildAttributes qelDecoded(const std::string& stream) {
    BuildAttributes record;
    QelBuildAttributesDecodingParser parser(&record);
    EXPECT_TRUE(parseWith(parser, stream));
    return record;
}

TEST_F(DecodingTest, EachTagGoesToItsSlot) {
    for (const TagRow& row : attributes::tagRows) {
        BuildAttributes expected;
        std::string stream;
        if (row.form == attributes::TagForm_Text) {
            stream = text(row.number, "12");
            expected.m_StandardTags.setText(row.tag, "12");
        } else {
            stream = number(row.number, 3);
            expected.setTag(row.tag, 3);
        }
        const bool isQeabi = row.vendor == attributes::TagVendor_Qeabi;
        const BuildAttributes record = isQeabi ? decoded(stream) : qelDecoded(stream);
        EXPECT_EQ(Witness(record), Witness(expected)) << row.name;
        EXPECT_EQ(record.derivedStale, row.setsStale) << row.name;
        EXPECT_EQ(record.fullAttr, expected.fullAttr) << row.name;
    }
}

TEST_F(DecodingTest, TwoTagsWriteOneSlotAndTheLaterWins) {
    EXPECT_EQ(decoded(number(42, 1) + number(70, 2)).getNumber(attributes::Tag_MPextension_use),
              2U);
    EXPECT_EQ(decoded(number(70, 2) + number(42, 1)).getNumber(attributes::Tag_MPextension_use),
              1U);
}

TEST_F(DecodingTest, OtherTagsAreIgnored) {
    std::string stream;
    for (uint32_t tag = 4; tag < 300; ++tag) {
        if (attributes::findTagRow(attributes::TagVendor_Qeabi, tag) == nullptr && tag != 32 &&
            tag != 65) {
            stream += tag % 2 == 0 ? number(tag, 1) : text(tag, "x");
        }
    }
    stream += number(0x80000006, 1);
    EXPECT_EQ(Witness(decoded(stream)), Witness(BuildAttributes()));
    stream.clear();
    for (uint32_t tag = 4; tag < 300; ++tag) {
        if (attributes::findTagRow(attributes::TagVendor_Qel, tag) == nullptr) {
            stream += tag % 2 == 0 ? number(tag, 1) : text(tag, "x");
        }
    }
    EXPECT_EQ(Witness(qelDecoded(stream)), Witness(BuildAttributes()));
}

TEST_F(DecodingTest, NumbersAreCutToTheSlot) {
    const BuildAttributes record = decoded(number(6, 0x12345678) + number(8, 0x101));
    EXPECT_EQ(record.getNumber(attributes::Tag_CPU_arch), 0x12345678U);
    EXPECT_EQ(record.getNumber(attributes::Tag_QEL_ISA_use), 1U);
}

TEST_F(DecodingTest, LongTextsKeepTheirFirst31Characters) {
    const std::string forty = "0123456789012345678901234567890123456789";
    const BuildAttributes record = decoded(text(4, forty) + text(5, forty) + text(67, forty));
    EXPECT_EQ(record.getText(attributes::Tag_CPU_raw_name), forty.substr(0, 31));
    EXPECT_EQ(record.getText(attributes::Tag_CPU_name), forty.substr(0, 31));
    EXPECT_EQ(record.getText(attributes::Tag_conformance), forty.substr(0, 31));
}

TEST_F(DecodingTest, CompatibilityAndConformanceExcludeEachOther) {
    const std::string after = both(32, 1, "gnat") + text(67, "2.09");
    EXPECT_FALSE(decoded(after).isPresent(attributes::Tag_conformance));
    const std::string before = text(67, "2.09") + both(32, 1, "gnat");
    const BuildAttributes record = decoded(before);
    EXPECT_FALSE(record.isPresent(attributes::Tag_conformance));
    EXPECT_NE(record.findCompatibilityTag(1, "gnat"), nullptr);
}

TEST_F(DecodingTest, CompatibilityEntriesDoNotMarkTheRecord) {
    const std::string stream = both(32, 1, "a") + both(32, 2, "b") + both(32, 1, "a");
    const BuildAttributes record = decoded(stream);
    EXPECT_EQ(record.getCompatibilityTagCount(), 2U);
    EXPECT_FALSE(record.derivedStale);
}

TEST_F(DecodingTest, NestedAttributesAreKeptInOrderWithSevenBits) {
    const std::string stream = nested(number(6, 11) + '\0') + nested(number(134, 11) + '\0') +
                               nested(text(5, "m9")) + nested(both(32, 2, "QEL")) +
                               nested(text(129 + 128, "x"));
    const Witness witness(decoded(stream));
    EXPECT_EQ(witness.alsoCompatible,
              (std::vector<std::string>{"6=11", "6=11", "5'm9'", "32=2'QEL'", "1'x'"}));
    EXPECT_FALSE(witness.stale);
}

TEST_F(DecodingTest, WhatStandsBeforeAFaultIsTaken) {
    const BuildAttributes record = decoded(number(6, 10) + uleb(8), false);
    EXPECT_EQ(record.getNumber(attributes::Tag_CPU_arch), 10U);
}

TEST_F(DecodingTest, QelTagsHaveTheirSideEffects) {
    const BuildAttributes record = qelDecoded(number(4, 1) + number(14, 0));
    EXPECT_NE(record.findCompatibilityTag(2, "QEL"), nullptr);
    EXPECT_EQ(record.getNumber(attributes::Tag_ABI_align_needed), 1U);
    EXPECT_TRUE(record.derivedStale);
}

} // namespace
} // namespace elfext::test
