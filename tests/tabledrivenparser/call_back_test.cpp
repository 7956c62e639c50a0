// Call-back parameters: what they are handed, and what their answers come to.

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/interface/call_back_parameter.h"

namespace tabledrivenparser {

namespace {

class FakeCallBack final : public CallBackParameter {
public:
    uint32_t invoke(Parser& parser, const OptionRow& row, uint32_t dashes, const char* text,
                    const char* argument) override {
        calls.push_back(std::string(row.name) + " " + std::to_string(dashes) + " " + text + " " +
                        (argument == nullptr ? "<null>" : argument));
        sequenceAtCall = parser.sequence();
        return answer;
    }
    void describe(Parser&, const OptionRow*, TextBuffer&) override {}
    void reset() override {}

    uint32_t answer = 1;
    uint32_t sequenceAtCall = 0;
    Texts calls;
};

class CallBackTest : public ParserTest {
protected:
    void SetUp() override {
        ParserTest::SetUp();
        m_holder.callBack = &m_callBack;
        m_call = addParameter(ParameterType_CALL_BACK);
        m_values[m_call].value = addressValue(&m_holder);
        m_flag = addParameter(ParameterType_BOOLEAN);
        addOption("need", m_call);
        addOption("may", m_call, 0, 0, OptionArgument_Optional);
        addFlag("bare", m_call);
        addFlag("b", m_call);
        addFlag("f", m_flag);
    }
    // The result of the word when the call back gives `answer`.
    uint32_t wordsFor(uint32_t answer, const char* word, const char* nextWord) {
        m_callBack.answer = answer;
        return parser().parseWord(word, nextWord);
    }

    FakeCallBack m_callBack;
    CallBackHolder m_holder;
    uint32_t m_call = 0;
    uint32_t m_flag = 0;
};

const char* const notFound = "3 23131338 Unexpected argument for option '--need'";

} // namespace

TEST_F(CallBackTest, IsHandedWhatTheWordSays) {
    wordsFor(2, "--need=x", "next");
    wordsFor(2, "--NEED", "next");
    wordsFor(1, "--may=x", "next");
    wordsFor(2, "--may", "next");
    wordsFor(1, "--may", nullptr);
    wordsFor(1, "--bare", "next");
    wordsFor(1, "-b", "next");
    EXPECT_EQ(m_callBack.calls,
              (Texts{"need 2 need=x x", "need 2 NEED next", "may 2 may=x x", "may 2 may next",
                     "may 2 may <null>", "bare 2 bare <null>", "b 1 b <null>"}));
    EXPECT_TRUE(messages().empty());
}

TEST_F(CallBackTest, StampComesBeforeTheCall) {
    wordsFor(1, "--bare", nullptr);
    EXPECT_EQ(m_callBack.sequenceAtCall, 1U);
    EXPECT_EQ(parameters().lastSet(m_call), 1U);
    wordsFor(0, "--bare", nullptr);
    EXPECT_EQ(parameters().lastSet(m_call), 2U);
    EXPECT_EQ(parameters().firstSet(m_call), 1U);
}

TEST_F(CallBackTest, ListenerIsNotAsked) {
    wordsFor(1, "--bare", nullptr);
    EXPECT_TRUE(m_listener.offered.empty());
    EXPECT_EQ(m_values[m_call].value, addressValue(&m_holder));
}

TEST_F(CallBackTest, RequiredArgumentInTheNextWordTakesTwoWords) {
    EXPECT_EQ(wordsFor(2, "--need", "next"), 2U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(CallBackTest, RequiredArgumentJoinedCountsAsOneWord) {
    EXPECT_EQ(wordsFor(2, "--need=x", "next"), 1U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(CallBackTest, RequiredArgumentWithAnswerOneFails) {
    EXPECT_EQ(wordsFor(1, "--need", "next"), 0U);
    EXPECT_EQ(wordsFor(1, "--need=x", "next"), 0U);
    EXPECT_EQ(messages(), (Texts{notFound, notFound}));
}

TEST_F(CallBackTest, RequiredArgumentMissingIsFatalWithoutACall) {
    EXPECT_EQ(wordsFor(2, "--need", nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131098 Missing argument for option 'need'."});
    EXPECT_TRUE(m_callBack.calls.empty());
    EXPECT_EQ(parameters().lastSet(m_call), 0U);
}

TEST_F(CallBackTest, OptionalArgumentThatWasJoined) {
    EXPECT_EQ(wordsFor(1, "--may=x", "next"), 1U);
    EXPECT_EQ(wordsFor(2, "--may=x", "next"), 1U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(CallBackTest, OptionalArgumentOfferedTheNextWordMustTakeIt) {
    EXPECT_EQ(wordsFor(2, "--may", "next"), 2U);
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(wordsFor(1, "--may", "next"), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131338 Unexpected argument for option '--may'"});
}

TEST_F(CallBackTest, OptionalArgumentAtTheEndOfTheWords) {
    EXPECT_EQ(wordsFor(1, "--may", nullptr), 1U);
    EXPECT_EQ(wordsFor(2, "--may", nullptr), 1U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(CallBackTest, RowWithoutArgumentCannotTakeTwoWords) {
    EXPECT_EQ(wordsFor(1, "--bare", "next"), 1U);
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(wordsFor(2, "--bare", "next"), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131338 Unexpected argument for option '--bare'"});
}

TEST_F(CallBackTest, AnswerZeroIsAFailureOnEveryRow) {
    EXPECT_EQ(wordsFor(0, "--need=x", "next"), 0U);
    EXPECT_EQ(wordsFor(0, "--may", "next"), 0U);
    EXPECT_EQ(wordsFor(0, "--bare", "next"), 0U);
    EXPECT_EQ(wordsFor(0, "-b", "next"), 0U);
    EXPECT_EQ(messages(), (Texts{notFound, "3 23131338 Unexpected argument for option '--may'",
                                 "3 23131338 Unexpected argument for option '--bare'",
                                 "3 23131338 Unexpected argument for option '-b'"}));
}

TEST_F(CallBackTest, FailureInsideAChainDoesNotStopIt) {
    EXPECT_EQ(wordsFor(0, "-bf", nullptr), 1U);
    EXPECT_TRUE(parameters().isSet(m_flag));
    EXPECT_TRUE(messages().empty());
}

TEST_F(CallBackTest, MayStandInAChain) {
    EXPECT_EQ(wordsFor(1, "-fb", "next"), 1U);
    EXPECT_EQ(m_callBack.calls, Texts{"b 1 b <null>"});
}

TEST_F(CallBackTest, HolderWithoutACallBackFails) {
    m_holder.callBack = nullptr;
    EXPECT_EQ(wordsFor(1, "--bare", nullptr), 0U);
    m_values[m_call].value = 0;
    EXPECT_EQ(wordsFor(1, "--bare", nullptr), 0U);
    EXPECT_EQ(messages().size(), 2U);
}

TEST_F(CallBackTest, WordLoopSkipsTheWordThatWasUsed) {
    uint32_t words = addParameter(ParameterType_STRING_VECTOR);
    m_values[m_call].value = addressValue(&m_holder);
    addOption("", words);
    m_callBack.answer = 2;
    parse({"--may", "used", "left"});
    EXPECT_EQ(texts(words), Texts{"left"});
}

} // namespace tabledrivenparser
