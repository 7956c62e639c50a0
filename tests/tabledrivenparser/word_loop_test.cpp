// From words to calls: dashes, the end of options, words that are used as arguments.

#include "tests/tabledrivenparser/parser_fixture.h"

namespace tabledrivenparser {

namespace {

class WordLoopTest : public ParserTest {
protected:
    void SetUp() override {
        ParserTest::SetUp();
        m_words = addParameter(ParameterType_STRING_VECTOR);
        m_text = addParameter(ParameterType_STRING);
        m_flag = addParameter(ParameterType_BOOLEAN);
        addOption("", m_words);
        addOption("text", m_text);
        addFlag("x", m_flag);
    }

    uint32_t m_words = 0;
    uint32_t m_text = 0;
    uint32_t m_flag = 0;
};

} // namespace

TEST_F(WordLoopTest, WordsWithoutDashesArePositional) {
    parse({"lib.a", "x", "y.o"});
    EXPECT_EQ(texts(m_words), (Texts{"lib.a", "x", "y.o"}));
    EXPECT_FALSE(parameters().isSet(m_flag));
}

TEST_F(WordLoopTest, LoneDashIsAWordWithTheDashInIt) {
    parse({"-"});
    EXPECT_EQ(texts(m_words), Texts{"-"});
    EXPECT_TRUE(messages().empty());
}

TEST_F(WordLoopTest, TwoDashesEndTheOptionsAndAreDropped) {
    parse({"-x", "--", "-x", "--text=1", "--", "-", "lib"});
    EXPECT_TRUE(parser().endOfOptions());
    EXPECT_EQ(texts(m_words), (Texts{"-x", "--text=1", "--", "-", "lib"}));
    EXPECT_FALSE(parameters().isSet(m_text));
    EXPECT_EQ(parameters().lastSet(m_flag), 1U);
}

TEST_F(WordLoopTest, EndOfOptionsHoldsForLaterSources) {
    parse({"--"});
    parse({"-x"});
    EXPECT_EQ(texts(m_words), Texts{"-x"});
}

TEST_F(WordLoopTest, ThirdDashBelongsToTheText) {
    parse({"---x"});
    EXPECT_EQ(messages(), Texts{"3 23131082 Unrecognized option '---x'."});
    parse({"---"});
    EXPECT_EQ(messages(), Texts{"3 23131082 Unrecognized option '---'."});
}

TEST_F(WordLoopTest, EmptyWordIsPositional) {
    parse({"", "--text", ""});
    EXPECT_EQ(texts(m_words), Texts{""});
    EXPECT_STREQ(parameters().textValue(m_text), "");
}

TEST_F(WordLoopTest, WordUsedAsArgumentIsSkipped) {
    parse({"--text", "value", "word", "--text", "other"});
    EXPECT_EQ(texts(m_words), Texts{"word"});
    EXPECT_STREQ(parameters().textValue(m_text), "other");
}

TEST_F(WordLoopTest, EndMarkIsTakenAsArgument) {
    parse({"--text", "--", "-x"});
    EXPECT_STREQ(parameters().textValue(m_text), "--");
    EXPECT_FALSE(parser().endOfOptions());
    EXPECT_TRUE(parameters().isSet(m_flag));
}

TEST_F(WordLoopTest, NoWordsDoNothing) {
    parse({});
    EXPECT_EQ(parser().sequence(), 0U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(WordLoopTest, ParseWordGivesTheNumberOfWordsUsed) {
    EXPECT_EQ(parser().parseWord("-x", "y"), 1U);
    EXPECT_EQ(parser().parseWord("--text", "y"), 2U);
    EXPECT_EQ(parser().parseWord("--text=z", "y"), 1U);
    EXPECT_EQ(parser().parseWord("--", "y"), 1U);
    EXPECT_EQ(parser().parseWord("--text", "y"), 1U);
}

TEST_F(WordLoopTest, SourceIsReadOneWordAheadAndNoFurther) {
    class CountingSource final : public WordSource {
    public:
        const char* nextToken() override {
            static const char* const words[] = {"--text", "one", "two"};
            return calls < 3 ? words[calls++] : nullptr;
        }
        size_t calls = 0;
    };
    CountingSource source;
    size_t callsAtFirstValue = 0;
    m_listener.takes = [&](uint32_t parameter, uint64_t) {
        if (parameter == m_text) {
            callsAtFirstValue = source.calls;
        }
        return false;
    };
    parser().parseWords(source);
    EXPECT_EQ(callsAtFirstValue, 2U);
    EXPECT_EQ(texts(m_words), Texts{"two"});
}

TEST_F(WordLoopTest, FiftyThousandOperandsKeepTheirOrder) {
    std::vector<std::string> names;
    names.reserve(50000);
    for (int index = 0; index < 50000; ++index) {
        names.push_back("member" + std::to_string(index));
    }
    std::vector<const char*> words;
    words.reserve(names.size());
    for (const std::string& name : names) {
        words.push_back(name.c_str());
    }
    WordArray source(words);
    parser().parseWords(source);
    EXPECT_EQ(texts(m_words), names);
    EXPECT_EQ(parser().sequence(), 50000U);
}

} // namespace tabledrivenparser
