// The section layer: what is delivered, what is a fault, and what a fault costs.
#include "elfext/interface/build_attributes_parsers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/elfext/attribute_section_builder.h"
#include "tests/elfext/container_fixtures.h"

namespace elfext::test {
namespace {

// Writes down what it is called for, e.g. "sections qeabi [3 4] 2 bytes 'xy'".
class RecordingSectionParser : public BuildAttributesSectionParser {
public:
    bool parseFileSubSubsection(const char* vendorName, const uint8_t* data,
                                uint32_t length) override {
        return note("file", vendorName, "", data, length);
    }
    bool parseSectionSubSubsection(const char* vendorName, const uint32_t* indexes, uint32_t count,
                                   const uint8_t* data, uint32_t length) override {
        return note("sections", vendorName, listOf(indexes, count), data, length);
    }
    bool parseSymbolSubSubsection(const char* vendorName, const uint32_t* indexes, uint32_t count,
                                  const uint8_t* data, uint32_t length) override {
        return note("symbols", vendorName, listOf(indexes, count), data, length);
    }

    bool answer = true;
    std::vector<std::string> calls;

private:
    static std::string listOf(const uint32_t* indexes, uint32_t count) {
        std::string text = " [";
        for (uint32_t i = 0; i < count; ++i) {
            text += (i == 0 ? "" : " ") + std::to_string(indexes[i]);
        }
        return text + "]";
    }
    bool note(const std::string& kind, const char* vendorName, const std::string& list,
              const uint8_t* data, uint32_t length) {
        calls.push_back(kind + " " + vendorName + list + " '" +
                        std::string(reinterpret_cast<const char*>(data), length) + "'");
        return answer;
    }
};

using Calls = std::vector<std::string>;

class AttributesWalkTest : public testing::TestWithParam<bool> {
protected:
    AttributeSectionBuilder build{GetParam()};

    // Walks a section and tells whether it was sound; the calls are in `calls` then.
    bool walk(const std::string& section) {
        RecordingSectionParser parser;
        parser.answer = m_Answer;
        const ExactBytes bytes(section);
        const bool isSound = parser.parse(bytes.data(), bytes.size(), GetParam());
        calls = parser.calls;
        return isSound;
    }

    Calls calls;
    bool m_Answer = true;
};

INSTANTIATE_TEST_SUITE_P(ByteOrders, AttributesWalkTest, testing::Bool(),
                         [](const auto& order) { return order.param ? "Little" : "Big"; });

TEST_P(AttributesWalkTest, JustTheFormatIsSound) {
    EXPECT_TRUE(walk("A"));
    EXPECT_EQ(calls, Calls{});
}

TEST_P(AttributesWalkTest, NothingAndAnyOtherFormatAreCorrupt) {
    EXPECT_FALSE(walk(""));
    for (int format = 0; format < 256; ++format) {
        const bool isSound =
            walk(static_cast<char>(format) + build.subsection("qeabi", build.file("x")));
        EXPECT_EQ(isSound, format == 'A') << format;
        EXPECT_EQ(calls.empty(), format != 'A') << format;
    }
}

TEST_P(AttributesWalkTest, DeliversAllScopesInOrder) {
    const std::string scopes = build.file("abc") + build.sections({3, 200, 70000}, "de") +
                               build.symbols({1}, "") + build.file("");
    EXPECT_TRUE(walk("A" + build.subsection("qeabi", scopes) +
                     build.subsection("", build.file("f")) + build.subsection("QEL", "")));
    EXPECT_EQ(calls, (Calls{"file qeabi 'abc'", "sections qeabi [3 200 70000] 'de'",
                            "symbols qeabi [1] ''", "file qeabi ''", "file  'f'"}));
}

TEST_P(AttributesWalkTest, ASubsectionOfFiveBytesHoldsAnEmptyName) {
    EXPECT_TRUE(walk("A" + build.word(5) + ntbs("")));
    EXPECT_TRUE(walk("A" + build.subsection("", "") + build.subsection("", build.file("x"))));
    EXPECT_EQ(calls, Calls{"file  'x'"});
}

TEST_P(AttributesWalkTest, AWrongLengthOfASubsectionEndsTheWalk) {
    const std::string good = build.subsection("qeabi", build.file("x"));
    for (const uint32_t length : {0U, 1U, 3U, 4U}) {
        EXPECT_FALSE(walk("A" + good + build.word(length) + ntbs("") + good)) << length;
        EXPECT_EQ(calls, Calls{"file qeabi 'x'"});
    }
    // Four bytes are a length and nothing else, yet what follows them is not looked at.
    EXPECT_FALSE(walk("A" + build.word(4) + good));
    EXPECT_EQ(calls, Calls{});
    for (const uint32_t length : {6U, 100U, 0x7FFFFFFFU, 0xFFFFFFFBU, 0xFFFFFFFFU}) {
        EXPECT_FALSE(walk("A" + good + build.word(length) + ntbs(""))) << length;
        EXPECT_EQ(calls, Calls{"file qeabi 'x'"});
    }
    EXPECT_FALSE(walk("A" + build.subsection("qeabi", build.file("x"), 1)));
    EXPECT_EQ(calls, Calls{});
}

TEST_P(AttributesWalkTest, ALengthThatIsCutEndsTheWalk) {
    const std::string good = build.subsection("qeabi", build.file("x"));
    for (size_t size = 1; size < 4; ++size) {
        EXPECT_FALSE(walk("A" + good + build.word(5).substr(0, size)));
        EXPECT_EQ(calls, Calls{"file qeabi 'x'"});
    }
}

TEST_P(AttributesWalkTest, ANameWithoutEndCostsItsSubsectionOnly) {
    EXPECT_FALSE(walk("A" + build.raw("qeabi") + build.subsection("QEL", build.file("x"))));
    EXPECT_EQ(calls, Calls{"file QEL 'x'"});
}

TEST_P(AttributesWalkTest, ABadScopeCostsTheRestOfItsSubsectionOnly) {
    for (const uint32_t scope : {0U, 4U, 127U, 128U, 0xFFFFFFFFU}) {
        const std::string scopes = build.file("a") + build.scope(scope, "x") + build.file("b");
        EXPECT_FALSE(walk("A" + build.subsection("qeabi", scopes) +
                          build.subsection("QEL", build.file("c"))));
        EXPECT_EQ(calls, (Calls{"file qeabi 'a'", "file QEL 'c'"})) << scope;
    }
}

TEST_P(AttributesWalkTest, ABadSizeOfAScopeCostsTheRestOfItsSubsectionOnly) {
    const std::string after = build.subsection("QEL", build.file("c"));
    const std::string cases[] = {
        build.scope(1, "", -1),
        build.scope(1, "", -5),
        build.scope(1, "abc", 1),
        uleb(1),
        uleb(1) + build.word(5).substr(1),
        "\x81",
        build.scope(1, "", 0x7FFFFFF0),
    };
    for (const std::string& bad : cases) {
        EXPECT_FALSE(walk("A" + build.subsection("qeabi", build.file("a") + bad) + after));
        EXPECT_EQ(calls, (Calls{"file qeabi 'a'", "file QEL 'c'"}));
    }
}

TEST_P(AttributesWalkTest, ASizeCountsTheScopesOwnBytes) {
    EXPECT_TRUE(walk("A" + build.subsection("qeabi", build.scope(1, "xy", 0, 2))));
    EXPECT_EQ(calls, Calls{"file qeabi 'xy'"});
    // Two bytes of scope: a size of 5 does not hold them.
    EXPECT_FALSE(walk("A" + build.subsection("qeabi", build.scope(1, "", -1, 1))));
    EXPECT_EQ(calls, Calls{});
}

TEST_P(AttributesWalkTest, AListWithoutAnEndIsNotDelivered) {
    for (const uint32_t scope : {2U, 3U}) {
        const std::string scopes =
            build.scope(scope, "") + build.scope(scope, "\x01\x02") + build.file("a");
        EXPECT_FALSE(walk("A" + build.subsection("qeabi", scopes)));
        EXPECT_EQ(calls, Calls{"file qeabi 'a'"});
    }
}

TEST_P(AttributesWalkTest, AnEmptyListIsDelivered) {
    EXPECT_TRUE(walk("A" + build.subsection("qeabi", build.sections({}, "xy"))));
    EXPECT_EQ(calls, Calls{"sections qeabi [] 'xy'"});
}

TEST_P(AttributesWalkTest, ABadIndexEndsTheListAndWhatStandsBeforeIsDelivered) {
    // A number that runs into the end of the list, whose 0 byte is found first.
    const std::string cut = std::string("\x05\x06\x87") + '\0';
    EXPECT_FALSE(walk("A" + build.subsection("q", build.scope(2, cut + "xy") + build.file("a"))));
    EXPECT_EQ(calls, (Calls{"sections q [5 6] 'xy'", "file q 'a'"}));
    // One that is 0, though no byte of it is: the bits fold away.
    const std::string folded = std::string("\x05\x80\x80\x80\x80\x70\x06", 7) + '\0';
    EXPECT_FALSE(walk("A" + build.subsection("q", build.scope(3, folded + "xy"))));
    EXPECT_EQ(calls, Calls{"symbols q [5] 'xy'"});
}

TEST_P(AttributesWalkTest, LongNumbersFoldAtThirtyTwoBits) {
    // The sixth byte's shift is 35, which counts as 3.
    const std::string six = "\x81\x80\x80\x80\x80\x01";
    EXPECT_TRUE(walk("A" + build.subsection("q", build.scope(2, six + '\0'))));
    EXPECT_EQ(calls, Calls{"sections q [9] ''"});
    const std::string full = "\xFF\xFF\xFF\xFF\x7F";
    EXPECT_TRUE(walk("A" + build.subsection("q", build.scope(2, full + '\0'))));
    EXPECT_EQ(calls, Calls{"sections q [4294967295] ''"});
    // Of any length.
    const std::string long1 = std::string(100000, '\xFF') + "\x01";
    EXPECT_TRUE(walk("A" + build.subsection("q", build.scope(2, long1 + '\0'))));
    EXPECT_EQ(calls, Calls{"sections q [4294967295] ''"});
    EXPECT_FALSE(walk("A" + build.subsection("q", std::string(100000, '\xFF'))));
}

TEST_P(AttributesWalkTest, ListsMayBeLongerThanTheFirstRoom) {
    std::vector<uint64_t> indexes;
    std::string expected = "symbols q [";
    for (uint64_t i = 1; i <= 3000; ++i) {
        indexes.push_back(i);
        expected += (i == 1 ? "" : " ") + std::to_string(i);
    }
    EXPECT_TRUE(
        walk("A" + build.subsection("q", build.symbols(indexes, "x") + build.symbols({7}, "y"))));
    EXPECT_EQ(calls, (Calls{expected + "] 'x'", "symbols q [7] 'y'"}));
}

TEST_P(AttributesWalkTest, AFalseAnswerIsRememberedAndTheWalkGoesOn) {
    m_Answer = false;
    const std::string scopes = build.file("a") + build.sections({1}, "b");
    EXPECT_FALSE(
        walk("A" + build.subsection("q", scopes) + build.subsection("r", build.symbols({2}, "c"))));
    EXPECT_EQ(calls.size(), 3U);
}

TEST_P(AttributesWalkTest, EveryCutIsNoticedButAtTheEndOfASubsection) {
    const std::string first =
        "A" + build.subsection("qeabi", build.file("abc") + build.sections({3, 200}, "de"));
    const std::string whole = first + build.subsection("QEL", build.symbols({1, 2}, "f"));
    for (size_t size = 0; size <= whole.size(); ++size) {
        const bool isSound = size == 1 || size == first.size() || size == whole.size();
        EXPECT_EQ(walk(whole.substr(0, size)), isSound) << size;
    }
}

TEST_P(AttributesWalkTest, AnyByteMayBeWrong) {
    const std::string whole =
        "A" + build.subsection("qeabi", build.file("abc") + build.sections({3, 200}, "de")) +
        build.subsection("QEL", build.symbols({1, 2}, "f"));
    uint32_t sound = 0;
    for (size_t place = 0; place < whole.size(); ++place) {
        for (uint32_t value = 0; value < 256; ++value) {
            std::string broken = whole;
            broken[place] = static_cast<char>(value);
            sound += walk(broken) ? 1U : 0U;
        }
    }
    EXPECT_GT(sound, 256U); // bodies and names may be anything
    EXPECT_LT(sound, 256U * whole.size());
}

TEST_P(AttributesWalkTest, WhatIsNotOverriddenIsContent) {
    BuildAttributesSectionParser parser;
    const std::string section =
        "A" + build.subsection("qeabi", build.file("a") + build.sections({1}, "b") +
                                            build.symbols({1}, "c"));
    EXPECT_TRUE(parser.parse(bytesOf(section), section.size(), GetParam()));
}

TEST(AttributesWalkDeathTest, BytesAreNeeded) {
    BuildAttributesSectionParser parser;
    EXPECT_FAULT(parser.parse(nullptr, 0, true), "elfext/src/build_attributes_section_parser",
                 "buildAttributesData != NULL");
}

} // namespace
} // namespace elfext::test
