// One word: its argument, concatenated options, selective passes, unknown options, the stamps.

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/interface/call_back_parameter.h"
#include "tabledrivenparser/interface/unknown_option_handler.h"

namespace tabledrivenparser {

namespace {

class ParseOptionTest : public ParserTest {
protected:
    void SetUp() override {
        ParserTest::SetUp();
        m_text = addParameter(ParameterType_STRING);
        m_letters = addParameter(ParameterType_STRING);
        m_optional = addParameter(ParameterType_STRING);
        m_t = addParameter(ParameterType_BOOLEAN);
        m_v = addParameter(ParameterType_BOOLEAN);
        m_create = addParameter(ParameterType_BOOLEAN);
        addOption("text", m_text);
        addOption("list", m_text, ',');
        addOption("a", m_letters);
        addOption("maybe", m_optional, ';', OptionFlag_Public, OptionArgument_Optional,
                  addressValue(m_implied));
        addOption("m", m_optional, 0, OptionFlag_Public, OptionArgument_Optional,
                  addressValue(m_implied));
        addFlag("t", m_t);
        addFlag("v", m_v);
        addFlag("verbose", m_v, 1, OptionFlag_OldSyntax);
        addFlag("q", m_v, 0);
        addFlag("create", m_create, 1, OptionFlag_OldSyntax | OptionFlag_Public);
    }
    std::string value(uint32_t parameter) {
        const char* text = parameters().textValue(parameter);
        return text == nullptr ? "<null>" : text;
    }

    static constexpr const char* m_implied = "implied";
    uint32_t m_text = 0;
    uint32_t m_letters = 0;
    uint32_t m_optional = 0;
    uint32_t m_t = 0;
    uint32_t m_v = 0;
    uint32_t m_create = 0;
};

class FakeHandler final : public UnknownOptionHandler {
public:
    uint32_t handle(Parser&, const OptionRow* row, uint32_t dashes, const char* text,
                    const char* nextWord) override {
        calls.push_back(std::string(row == nullptr ? "" : "row ") + std::to_string(dashes) + " " +
                        text + " " + (nextWord == nullptr ? "<null>" : nextWord));
        return answer;
    }
    uint32_t answer = 0;
    Texts calls;
};

class FailingCallBack final : public CallBackParameter {
public:
    uint32_t invoke(Parser&, const OptionRow&, uint32_t, const char*, const char*) override {
        return 0;
    }
    void describe(Parser&, const OptionRow*, TextBuffer&) override {}
    void reset() override {}
};

} // namespace

TEST_F(ParseOptionTest, ArgumentBehindAnEqualsSign) {
    EXPECT_EQ(parser().parseOption("text=foo", "next", 2, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_text), "foo");
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, EmptyArgumentBehindAnEqualsSign) {
    EXPECT_EQ(parser().parseOption("text=", "next", 2, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_text), "");
}

TEST_F(ParseOptionTest, OnlyTheFirstEqualsSignIsTakenAway) {
    parse({"--text==a=b"});
    EXPECT_EQ(value(m_text), "=a=b");
}

TEST_F(ParseOptionTest, SeparatorInPlaceOfTheEqualsSignWarnsAndStaysInTheValue) {
    parse({"--list,x"});
    EXPECT_EQ(value(m_text), ",x");
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--list=,x'."});
}

TEST_F(ParseOptionTest, RequiredArgumentIsTheNextWord) {
    EXPECT_EQ(parser().parseOption("text", "foo", 2, nullptr, 0, nullptr), 2U);
    EXPECT_EQ(value(m_text), "foo");
}

TEST_F(ParseOptionTest, NextWordIsTakenEvenIfItBeginsWithADash) {
    parse({"--text", "-v"});
    EXPECT_EQ(value(m_text), "-v");
    EXPECT_FALSE(parameters().isSet(m_v));
}

TEST_F(ParseOptionTest, NextWordIsTakenBehindAShortenedName) {
    parse({"--tex.", "foo"});
    EXPECT_EQ(value(m_text), "foo");
}

TEST_F(ParseOptionTest, MissingNextWordIsFatal) {
    EXPECT_EQ(parser().parseOption("text", nullptr, 2, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131098 Missing argument for option 'text'."});
    EXPECT_FALSE(parameters().isSet(m_text));
}

TEST_F(ParseOptionTest, MissingArgumentNamesTheTextAsWritten) {
    parse({"--TEX."});
    EXPECT_EQ(messages(), Texts{"3 23131098 Missing argument for option 'TEX.'."});
}

TEST_F(ParseOptionTest, OneLetterRowTakesTheRestAsItsArgument) {
    EXPECT_EQ(parser().parseOption("afoo", "next", 1, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_letters), "foo");
}

TEST_F(ParseOptionTest, OneLetterRowTakesTheNextWordWithoutARest) {
    EXPECT_EQ(parser().parseOption("a", "foo", 1, nullptr, 0, nullptr), 2U);
    EXPECT_EQ(value(m_letters), "foo");
}

TEST_F(ParseOptionTest, OptionalArgumentIsTakenOnlyIfJoined) {
    EXPECT_EQ(parser().parseOption("maybe", "next", 2, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_optional), "implied");
    EXPECT_EQ(parser().parseOption("maybe=given", "next", 2, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_optional), "given");
    EXPECT_EQ(parser().parseOption("mjoined", "next", 1, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_optional), "joined");
    EXPECT_EQ(parser().parseOption("m", nullptr, 1, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(value(m_optional), "implied");
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, OptionalArgumentBehindTheSeparator) {
    parse({"--maybe;x"});
    EXPECT_EQ(value(m_optional), ";x");
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--maybe=;x'."});
}

TEST_F(ParseOptionTest, PositionalWordLosesItsLeadingEqualsSign) {
    uint32_t words = addParameter(ParameterType_STRING_VECTOR);
    addOption("", words);
    parse({"=x", "==y", "=", "z="});
    EXPECT_EQ(texts(words), (Texts{"x", "=y", "", "z="}));
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, PositionalWordNeverTakesTheNextOne) {
    uint32_t words = addParameter(ParameterType_STRING_VECTOR);
    addOption("", words);
    EXPECT_EQ(parser().parseOption("", "next", 0, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(texts(words), Texts{""});
}

TEST_F(ParseOptionTest, UnrecognizedOptionNamesDashesAndText) {
    EXPECT_EQ(parser().parseOption("zzz", nullptr, 2, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(parser().parseOption("z", nullptr, 1, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(parser().parseOption("word", nullptr, 0, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), (Texts{"3 23131082 Unrecognized option '--zzz'.",
                                 "3 23131082 Unrecognized option '-z'.",
                                 "3 23131082 Unrecognized option 'word'."}));
}

TEST_F(ParseOptionTest, LongRowWithoutArgumentRefusesOne) {
    EXPECT_EQ(parser().parseOption("create=yes", nullptr, 2, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131338 Unexpected argument for option '--create'"});
    EXPECT_FALSE(parameters().isSet(m_create));
}

TEST_F(ParseOptionTest, RefusedArgumentWithOneDashNamesThatDash) {
    parse({"-create=yes"});
    EXPECT_EQ(messages(), (Texts{"1 23131236 Old syntax, please use '--create'.",
                                 "3 23131338 Unexpected argument for option '-create'"}));
}

TEST_F(ParseOptionTest, HandlerIsAskedAboutUnknownWordsBeforeTheReport) {
    FakeHandler handler;
    m_table.unknownOptionHandler = &handler;
    handler.answer = 2;
    EXPECT_EQ(parser().parseOption("zzz", "next", 2, nullptr, 0, nullptr), 2U);
    handler.answer = 1;
    EXPECT_EQ(parser().parseOption("create=1", nullptr, 2, nullptr, 0, nullptr), 1U);
    EXPECT_TRUE(messages().empty());
    handler.answer = 0;
    EXPECT_EQ(parser().parseOption("zzz", nullptr, 1, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131082 Unrecognized option '-zzz'."});
    EXPECT_EQ(handler.calls, (Texts{"2 zzz next", "2 create=1 <null>", "1 zzz <null>"}));
}

TEST_F(ParseOptionTest, HandlerIsAskedAboutAFailedStoreAndItsAnswerCounts) {
    FakeHandler handler;
    m_table.unknownOptionHandler = &handler;
    FailingCallBack callBack;
    CallBackHolder holder{&callBack};
    uint32_t parameter = addParameter(ParameterType_CALL_BACK);
    m_values[parameter].value = addressValue(&holder);
    addFlag("call", parameter);
    handler.answer = 2;
    EXPECT_EQ(parser().parseOption("call", "next", 2, nullptr, 0, nullptr), 2U);
    EXPECT_TRUE(messages().empty());
    handler.answer = 0;
    EXPECT_EQ(parser().parseOption("call", "next", 2, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131338 Unexpected argument for option '--call'"});
    EXPECT_EQ(handler.calls, (Texts{"2 call next", "2 call next"}));
}

TEST_F(ParseOptionTest, FailedStoreNamesArgumentAndRow) {
    uint32_t number = addParameter(ParameterType_INT);
    addOption("number", number);
    EXPECT_EQ(parser().parseOption("numb.", "five", 2, nullptr, 0, nullptr), 2U);
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument 'five' not permitted for option 'number'."});
    EXPECT_FALSE(parameters().isSet(number));
    EXPECT_EQ(parser().sequence(), 0U);
}

TEST_F(ParseOptionTest, ConcatenatedOptionsRunOneAfterTheOther) {
    EXPECT_EQ(parser().parseOption("tv", "next", 1, nullptr, 0, nullptr), 1U);
    EXPECT_TRUE(parameters().boolValue(m_t));
    EXPECT_TRUE(parameters().boolValue(m_v));
    EXPECT_EQ(parameters().lastSet(m_t), 1U);
    EXPECT_EQ(parameters().lastSet(m_v), 2U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, RepeatedOptionInAWordWarnsAndStoresTwice) {
    parse({"-tt"});
    EXPECT_EQ(messages(), Texts{"1 23131396 Option '-t' repeated in concatenated options '-tt'."});
    EXPECT_EQ(parameters().firstSet(m_t), 1U);
    EXPECT_EQ(parameters().lastSet(m_t), 2U);
}

TEST_F(ParseOptionTest, RepeatedOptionNamesTheWholeWordAroundIt) {
    parse({"-tvtx"});
    EXPECT_EQ(messages(), (Texts{"1 23131396 Option '-t' repeated in concatenated options '-tvtx'.",
                                 "3 23131082 Unrecognized option '-x'."}));
}

TEST_F(ParseOptionTest, EveryEarlierUseOfTheParameterWarns) {
    parse({"-ttt"});
    EXPECT_EQ(messages(),
              (Texts{"1 23131396 Option '-t' repeated in concatenated options '-ttt'.",
                     "1 23131396 Option '-t' repeated in concatenated options '-ttt'.",
                     "1 23131396 Option '-t' repeated in concatenated options '-ttt'."}));
}

TEST_F(ParseOptionTest, RepetitionIsJudgedByParameterNotByName) {
    parse({"-vq"});
    EXPECT_EQ(messages(), Texts{"1 23131396 Option '-q' repeated in concatenated options '-vq'."});
    EXPECT_FALSE(parameters().boolValue(m_v));
}

TEST_F(ParseOptionTest, SameOptionInTwoWordsDoesNotWarn) {
    parse({"-t", "-t"});
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, ConcatenatedOptionCannotHaveAnArgument) {
    EXPECT_EQ(parser().parseOption("tafoo", "next", 1, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131354 Concatenated options cannot have arguments: -a foo"});
    EXPECT_FALSE(parameters().isSet(m_letters));
    EXPECT_TRUE(parameters().isSet(m_t));
}

TEST_F(ParseOptionTest, ConcatenatedOptionCannotTakeTheNextWordEither) {
    parse({"-ta", "foo"});
    EXPECT_EQ(messages().at(0), "3 23131354 Concatenated options cannot have arguments: -a foo");
    parse({"-ta"});
    EXPECT_EQ(messages(), Texts{"3 23131098 Missing argument for option 'a'."});
}

TEST_F(ParseOptionTest, ConcatenatedOptionalArgumentMayBeAbsent) {
    parse({"-tm"});
    EXPECT_EQ(value(m_optional), "implied");
    EXPECT_TRUE(messages().empty());
    parse({"-tmx"});
    EXPECT_EQ(messages(), Texts{"3 23131354 Concatenated options cannot have arguments: -m x"});
}

TEST_F(ParseOptionTest, UnknownOptionInAChainIsNamedAlone) {
    EXPECT_EQ(parser().parseOption("tz", nullptr, 1, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131082 Unrecognized option '-z'."});
    EXPECT_TRUE(parameters().isSet(m_t));
}

TEST_F(ParseOptionTest, LongOldSyntaxNameMayEndAChain) {
    parse({"-tcreate"});
    EXPECT_TRUE(parameters().boolValue(m_create));
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--create'."});
}

TEST_F(ParseOptionTest, FlagFollowedByAnEqualsSignIsUnrecognized) {
    parse({"-t=x", "-tv=x"});
    EXPECT_EQ(messages(), (Texts{"3 23131082 Unrecognized option '-t=x'.",
                                 "3 23131082 Unrecognized option '-v=x'."}));
}

TEST_F(ParseOptionTest, GivenChainCountsAsWhatStoodBefore) {
    MatchString earlier = parser().findOption("t", 1);
    MatchChain chain(&earlier);
    EXPECT_EQ(parser().parseOption("vt", nullptr, 1, &chain, 0, nullptr), 1U);
    EXPECT_EQ(messages(), Texts{"1 23131396 Option '-t' repeated in concatenated options '-tvt'."});
    EXPECT_EQ(chain.count(), 2U);
}

TEST_F(ParseOptionTest, VeryLongChainDoesNotExhaustTheStack) {
    std::string word(5000, 't');
    m_reporter.countsOnly = true;
    EXPECT_EQ(parser().parseOption(word.c_str(), nullptr, 1, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(parameters().lastSet(m_t), 5000U);
    EXPECT_EQ(m_reporter.count, 5000U * 4999U / 2U);
}

TEST_F(ParseOptionTest, FailedStoreDoesNotStopAChain) {
    static const ValueConstraint onlyFalse{nullptr, "false", nullptr};
    uint32_t guarded = addParameter(ParameterType_BOOLEAN, &onlyFalse);
    addFlag("g", guarded);
    EXPECT_EQ(parser().parseOption("gt", nullptr, 1, nullptr, 0, nullptr), 1U);
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument '<null>' not permitted for option 'g'."});
    EXPECT_FALSE(parameters().isSet(guarded));
    EXPECT_TRUE(parameters().isSet(m_t));
}

TEST_F(ParseOptionTest, SelectivePassLeavesOtherOptionsAlone) {
    const uint32_t filter[] = {m_text, m_t};
    EXPECT_EQ(parser().parseOption("v", nullptr, 1, nullptr, 2, filter), 1U);
    EXPECT_FALSE(parameters().isSet(m_v));
    EXPECT_EQ(parser().parseOption("t", nullptr, 1, nullptr, 2, filter), 1U);
    EXPECT_TRUE(parameters().isSet(m_t));
    EXPECT_EQ(parser().parseOption("text", "x", 2, nullptr, 2, filter), 2U);
    EXPECT_EQ(value(m_text), "x");
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, SelectivePassLeavesTheWholeWordOfAnUnlistedOptionAlone) {
    const uint32_t filter[] = {m_t};
    EXPECT_EQ(parser().parseOption("vt", nullptr, 1, nullptr, 1, filter), 1U);
    EXPECT_FALSE(parameters().isSet(m_t));
    // Also where its argument would be missing.
    EXPECT_EQ(parser().parseOption("text", nullptr, 2, nullptr, 1, filter), 1U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(ParseOptionTest, SelectivePassStillReadsViaFiles) {
    uint32_t via = addParameter(ParameterType_VIA_FILE);
    addOption("via", via);
    const uint32_t filter[] = {m_t};
    EXPECT_EQ(parser().parseOption("via", "/dev/null", 2, nullptr, 1, filter), 2U);
    EXPECT_EQ(texts(via), Texts{"/dev/null"});
}

TEST_F(ParseOptionTest, SelectivePassIsSilentAboutUnknownWords) {
    FakeHandler handler;
    handler.answer = 1;
    m_table.unknownOptionHandler = &handler;
    const uint32_t filter[] = {m_t};
    EXPECT_EQ(parser().parseOption("zzz", nullptr, 2, nullptr, 1, filter), 0U);
    EXPECT_EQ(parser().parseOption("create=1", nullptr, 2, nullptr, 1, filter), 0U);
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(handler.calls.empty());
}

TEST_F(ParseOptionTest, SelectivePassRunsTheWordLoop) {
    static const char* const words[] = {"-t", "--text", "x", "-v"};
    const uint32_t filter[] = {m_text};
    WordArray source(words);
    parser().parseWords(source, 1, filter);
    EXPECT_EQ(value(m_text), "x");
    EXPECT_FALSE(parameters().isSet(m_t));
    EXPECT_FALSE(parameters().isSet(m_v));
}

TEST_F(ParseOptionTest, StampsTellTheOrderOfSettings) {
    EXPECT_EQ(parameters().firstSet(m_t), 0U);
    EXPECT_FALSE(parameters().isSet(m_t));
    parse({"-t", "-v", "-t"});
    EXPECT_EQ(parameters().firstSet(m_t), 1U);
    EXPECT_EQ(parameters().lastSet(m_t), 3U);
    EXPECT_EQ(parameters().firstSet(m_v), 2U);
    EXPECT_EQ(parameters().lastSet(m_v), 2U);
    EXPECT_EQ(parser().sequence(), 3U);
    EXPECT_TRUE(parameters().isSet(m_t));
}

TEST_F(ParseOptionTest, ParserKnowsItsParts) {
    EXPECT_EQ(parameters().parser, &parser());
    EXPECT_EQ(parameters().listener, &m_listener);
    EXPECT_EQ(parameters().parameterCount, m_values.size());
    EXPECT_EQ(parameters().descriptorCount, m_descriptors.size());
    EXPECT_EQ(&parser().reporter(), &m_reporter);
    EXPECT_EQ(parser().options().rows, m_rows.data());
    parse({"-t"});
    EXPECT_EQ(m_listener.seenParameters, &parameters());
}

TEST_F(ParseOptionTest, MessageKeysFollowFromTheirCodes) {
    auto key = [](uint32_t number, uint32_t classNumber) {
        return (('X' * 16384U) + number) * 16U + 2U * classNumber;
    };
    EXPECT_EQ(key(3900, 5), ParserMessage_UnrecognizedOption);
    EXPECT_EQ(key(3901, 5), ParserMessage_MissingArgument);
    EXPECT_EQ(key(3902, 5), ParserMessage_ViaFileTooDeep);
    EXPECT_EQ(key(3903, 5), ParserMessage_ArgumentNotPermitted);
    EXPECT_EQ(key(3904, 5), ParserMessage_ViaFileNotOpened);
    EXPECT_EQ(key(3905, 5), ParserMessage_ViaFileNotRead);
    EXPECT_EQ(key(3906, 5), ParserMessage_ViaFileMalformed);
    EXPECT_EQ(key(3907, 5), ParserMessage_ViaFileWordTooLong);
    EXPECT_EQ(key(3908, 5), ParserMessage_Overflow);
    EXPECT_EQ(key(3910, 2), ParserMessage_OldSyntax);
    EXPECT_EQ(key(3912, 2), ParserMessage_DeprecatedOption);
    EXPECT_EQ(key(3913, 2), ParserMessage_ViaFileNotClosed);
    EXPECT_EQ(key(3914, 1), ParserMessage_SelectableArguments);
    EXPECT_EQ(key(3915, 2), ParserMessage_DeprecatedArgument);
    EXPECT_EQ(key(3916, 5), ParserMessage_UnexpectedArgument);
    EXPECT_EQ(key(3917, 5), ParserMessage_ConcatenatedArgument);
    EXPECT_EQ(key(3918, 5), ParserMessage_ViaFileBinary);
    EXPECT_EQ(key(3919, 1), ParserMessage_PossibleMatches);
    EXPECT_EQ(key(3920, 2), ParserMessage_RepeatedOption);
}

} // namespace tabledrivenparser
