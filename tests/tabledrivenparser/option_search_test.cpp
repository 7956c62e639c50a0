// Finding the row for a word.

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/src/row_match.h"

namespace tabledrivenparser {

namespace {

class OptionSearchTest : public ParserTest {
protected:
    // The name of the row found, "none" if there is none.
    std::string found(const char* text, uint32_t dashes) {
        MatchString match = parser().findOption(text, dashes);
        return match.row == nullptr ? "none" : match.row->name;
    }
    uint32_t addBoolean() { return addParameter(ParameterType_BOOLEAN); }
};

const uint32_t firstMask[] = {1, 0};
const uint32_t bothMasks[] = {1, 2, 0};
const uint32_t noMasks[] = {0};

} // namespace

TEST_F(OptionSearchTest, LetterIndexHoldsTheFirstRowOfEachLetter) {
    static constexpr std::array<OptionRow, 5> rows = {{{"", 0, 0, 0, nullptr, 0, 0},
                                                       {"1", 0, 0, 0, nullptr, 0, 0},
                                                       {"b", 0, 0, 0, nullptr, 0, 0},
                                                       {"C", 0, 0, 0, nullptr, 0, 0},
                                                       {"c", 0, 0, 0, nullptr, 0, 0}}};
    static constexpr auto index = makeLetterIndex(rows);
    static_assert(index[0] == 0xFFFFFFFF);
    EXPECT_EQ(index[1], 2U);
    EXPECT_EQ(index[2], 3U);
    EXPECT_EQ(index[25], 0xFFFFFFFFU);
}

TEST_F(OptionSearchTest, FullNameWithTwoDashes) {
    addFlag("create", addBoolean());
    EXPECT_EQ(found("create", 2), "create");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, FullNameWithOneDashIsOldSyntaxWithAWarning) {
    addFlag("create", addBoolean(), 1, OptionFlag_Public | OptionFlag_OldSyntax);
    EXPECT_EQ(found("create", 1), "create");
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--create'."});
}

TEST_F(OptionSearchTest, LongNameWithOneDashNeedsAnOldSyntaxRow) {
    addFlag("create", addBoolean());
    EXPECT_EQ(found("create", 1), "none");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, OldSyntaxPolicyTwoRefuses) {
    m_table.oldSyntaxPolicy = SyntaxPolicy_Refuse;
    addFlag("create", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("d", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("create", 1), "none");
    EXPECT_EQ(found("D", 1), "none");
    EXPECT_EQ(found("d", 1), "d");
    EXPECT_EQ(found("create", 2), "create");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, AnyOtherOldSyntaxPolicyAcceptsSilently) {
    for (uint32_t policy : {0U, 3U, 0xFFFFFFFFU}) {
        dropParser();
        m_rows.clear();
        m_table.oldSyntaxPolicy = policy;
        addFlag("create", addBoolean(), 1, OptionFlag_OldSyntax);
        addFlag("d", addBoolean(), 1, OptionFlag_OldSyntax);
        EXPECT_EQ(found("create", 1), "create");
        EXPECT_EQ(found("D", 1), "d");
        EXPECT_TRUE(messages().empty());
    }
}

TEST_F(OptionSearchTest, LetterInTheWrongCaseIsOldSyntax) {
    addFlag("d", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("x", addBoolean());
    EXPECT_EQ(found("D", 1), "d");
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '-d'."});
    EXPECT_EQ(found("X", 1), "none");
    EXPECT_EQ(found("d", 1), "d");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, OneLetterRowsThatDifferInCaseAreToldApart) {
    addFlag("V", addBoolean());
    addFlag("v", addBoolean());
    EXPECT_EQ(found("V", 1), "V");
    EXPECT_EQ(found("v", 1), "v");
}

TEST_F(OptionSearchTest, OldSyntaxRowsThatDifferInCaseAreAmbiguous) {
    addFlag("V", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("v", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("v", 1), "none");
    EXPECT_EQ(messages(), Texts{"0 23131378 Possible matches for 'v' include 'V' and 'v'."});
}

TEST_F(OptionSearchTest, TextIsFoldedAlsoInItsFirstLetter) {
    addFlag("create", addBoolean());
    EXPECT_EQ(found("CREATE", 2), "create");
    EXPECT_EQ(found("Create", 2), "create");
    EXPECT_FALSE(parser().findOption("CREATE", 2).sameCase);
    EXPECT_TRUE(parser().findOption("cREATE", 2).sameCase);
}

TEST_F(OptionSearchTest, RowNameWithUpperCaseBehindItsFirstLetterNeverMatches) {
    addFlag("creAte", addBoolean());
    EXPECT_EQ(found("creAte", 2), "none");
    EXPECT_EQ(found("create", 2), "none");
}

TEST_F(OptionSearchTest, RowNameMayBeginWithUpperCase) {
    addFlag("Create", addBoolean());
    EXPECT_EQ(found("create", 2), "Create");
}

TEST_F(OptionSearchTest, DashInTheTextReadsAsUnderscore) {
    addFlag("no_normalise", addBoolean());
    EXPECT_EQ(found("no-normalise", 2), "no_normalise");
    EXPECT_EQ(found("no_normalise", 2), "no_normalise");
}

TEST_F(OptionSearchTest, DashInARowNameNeverMatches) {
    addFlag("no-x", addBoolean());
    EXPECT_EQ(found("no-x", 2), "none");
    EXPECT_EQ(found("no_x", 2), "none");
}

TEST_F(OptionSearchTest, DotShortensAPublicName) {
    addFlag("create", addBoolean());
    MatchString match = parser().findOption("cre.", 2);
    ASSERT_NE(match.row, nullptr);
    EXPECT_STREQ(match.row->name, "create");
    EXPECT_TRUE(match.dot);
    EXPECT_FALSE(match.exact);
    EXPECT_TRUE(match.matched);
    EXPECT_EQ(match.matchedLength, 4U);
    EXPECT_STREQ(match.rest, "");
}

TEST_F(OptionSearchTest, DotAfterOneLetterShortensALongName) {
    addFlag("create", addBoolean());
    EXPECT_EQ(found("c.", 2), "create");
}

TEST_F(OptionSearchTest, DotNeedsAPublicRow) {
    addFlag("create", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("cre.", 2), "none");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, DotNeedsTwoDashes) {
    addFlag("create", addBoolean(), 1, OptionFlag_Public | OptionFlag_OldSyntax);
    EXPECT_EQ(found("cre.", 1), "none");
}

TEST_F(OptionSearchTest, FullNameCannotTakeTheDot) {
    addFlag("create", addBoolean());
    EXPECT_EQ(found("create.", 2), "none");
}

TEST_F(OptionSearchTest, WithoutTheDotAShortenedNameDoesNotMatch) {
    addFlag("create", addBoolean());
    EXPECT_EQ(found("cre", 2), "none");
    EXPECT_EQ(found("creates", 2), "none");
}

TEST_F(OptionSearchTest, DotMayBeFollowedByAnArgument) {
    addOption("normalise", addParameter(ParameterType_INT));
    MatchString match = parser().findOption("norm.=5", 2);
    ASSERT_NE(match.row, nullptr);
    EXPECT_TRUE(match.hasSeparator);
    EXPECT_STREQ(match.rest, "=5");
    EXPECT_EQ(found("norm.5", 2), "none");
}

TEST_F(OptionSearchTest, OneLetterNameCannotTakeADot) {
    addFlag("r", addBoolean());
    EXPECT_EQ(found("r.", 2), "none");
    EXPECT_FALSE(parser().findOption("r.", 1).dot);
}

TEST_F(OptionSearchTest, AmbiguousShortFormNamesTheFirstAndTheLast) {
    for (const char* name : {"no_alpha", "no_beta", "no_gamma"}) {
        addFlag(name, addBoolean());
    }
    EXPECT_EQ(found("no_.", 2), "none");
    EXPECT_EQ(messages(),
              Texts{"0 23131378 Possible matches for 'no_.' include 'no_alpha' and 'no_gamma'."});
    parse({"--no_."});
    EXPECT_EQ(messages(),
              (Texts{"0 23131378 Possible matches for 'no_.' include 'no_alpha' and 'no_gamma'.",
                     "3 23131082 Unrecognized option '--no_.'."}));
}

TEST_F(OptionSearchTest, OnlyPublicRowsTakeTheDotSoOthersAreNoRivals) {
    addFlag("create", addBoolean());
    addFlag("creation", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("crea.", 2), "create");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, LongestMatchWins) {
    addFlag("c", addBoolean());
    addFlag("create", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("create", 1), "create");
    EXPECT_EQ(found("creat", 1), "c");
    EXPECT_EQ(found("c", 1), "c");
}

TEST_F(OptionSearchTest, ShorterMatchBehindALongerOneIsIgnored) {
    addFlag("create", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("c", addBoolean());
    addFlag("C", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("create", 1), "create");
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--create'."});
}

TEST_F(OptionSearchTest, LongerMatchClearsTheRival) {
    addFlag("C", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("c", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("create", addBoolean(), 1, OptionFlag_OldSyntax);
    EXPECT_EQ(found("create", 1), "create");
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--create'."});
}

TEST_F(OptionSearchTest, WithARestARowThatRequiresAnArgumentIsPreferred) {
    uint32_t text = addParameter(ParameterType_STRING);
    uint32_t flag = addBoolean();
    addFlag("opt", flag);
    addOption("opt", text);
    addOption("red", text);
    addFlag("red", flag);
    EXPECT_EQ(parser().findOption("opt=1", 2).row->argument, 0U);
    EXPECT_EQ(parser().findOption("red=1", 2).row->argument, 0U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, WithoutARestARowWithoutArgumentIsPreferred) {
    uint32_t text = addParameter(ParameterType_STRING);
    uint32_t flag = addBoolean();
    addFlag("opt", flag);
    addOption("opt", text);
    addOption("red", text);
    addFlag("red", flag);
    EXPECT_EQ(parser().findOption("opt", 2).row->argument, 2U);
    EXPECT_EQ(parser().findOption("red", 2).row->argument, 2U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, OptionalArgumentTiesWithTheOtherTwo) {
    uint32_t text = addParameter(ParameterType_STRING);
    addOption("opt", text, 0, 0, OptionArgument_Optional);
    addOption("opt", text, 0, 0, OptionArgument_Required);
    EXPECT_EQ(found("opt", 2), "none");
    EXPECT_EQ(found("opt=1", 2), "none");
    EXPECT_EQ(messages().size(), 2U);
}

TEST_F(OptionSearchTest, ShortFormWithoutArgumentSkipsRowsThatRequireOne) {
    addFlag("no_alpha", addBoolean());
    addOption("no_beta", addParameter(ParameterType_INT));
    EXPECT_EQ(found("no_.", 2), "no_alpha");
    EXPECT_EQ(found("no_.=1", 2), "no_beta");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, NewBestByPreferenceClearsTheRival) {
    addOption("no_a", addParameter(ParameterType_INT));
    addOption("no_b", addParameter(ParameterType_INT));
    addFlag("no_c", addBoolean());
    EXPECT_EQ(found("no_.", 2), "no_c");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, LosingByPreferenceLeavesTheRival) {
    addFlag("no_a", addBoolean());
    addFlag("no_b", addBoolean());
    addOption("no_c", addParameter(ParameterType_INT));
    EXPECT_EQ(found("no_.", 2), "none");
    EXPECT_EQ(messages(),
              Texts{"0 23131378 Possible matches for 'no_.' include 'no_a' and 'no_b'."});
}

TEST_F(OptionSearchTest, LongRowWithTextBehindTheNameNeedsASeparator) {
    addOption("libs", addParameter(ParameterType_STRING_VECTOR), ',');
    EXPECT_EQ(found("libsx", 2), "none");
    EXPECT_TRUE(parser().findOption("libs=x", 2).hasSeparator);
    EXPECT_TRUE(parser().findOption("libs,x", 2).hasSeparator);
    EXPECT_FALSE(parser().findOption("libs", 2).hasSeparator);
    EXPECT_EQ(found("libs:x", 2), "none");
}

TEST_F(OptionSearchTest, OneLetterRowIsNotReachedWithTwoDashes) {
    addFlag("r", addBoolean());
    EXPECT_EQ(found("r", 2), "none");
}

TEST_F(OptionSearchTest, OneLetterRowIsNotReachedWithASeparator) {
    addFlag("r", addBoolean());
    addOption("l", addParameter(ParameterType_STRING_VECTOR), ',');
    EXPECT_EQ(found("r=x", 1), "none");
    EXPECT_EQ(found("l,x", 1), "none");
    EXPECT_EQ(found("lx", 1), "l");
    EXPECT_EQ(found("r", 1), "r");
}

TEST_F(OptionSearchTest, LetterWithoutRowsFindsNothing) {
    addFlag("a", addBoolean());
    EXPECT_EQ(found("zebra", 2), "none");
    EXPECT_EQ(found("b", 1), "none");
}

TEST_F(OptionSearchTest, NameThatBeginsWithNoLetterIsFoundBeforeTheLetters) {
    addOption("", addParameter(ParameterType_STRING_VECTOR));
    addFlag("1", addBoolean());
    addFlag("2nd", addBoolean());
    addFlag("a", addBoolean());
    EXPECT_EQ(found("1", 1), "1");
    EXPECT_EQ(found("2ND", 2), "2nd");
    EXPECT_EQ(found("3", 1), "none");
    EXPECT_EQ(found("-x", 2), "none");
}

TEST_F(OptionSearchTest, WalkForOtherCharactersStopsAtTheLetterA) {
    // Out of table order on purpose: a row behind the first "a" is not looked at.
    parser();
    m_rows = {{"a", 0, OptionArgument_None, 1, nullptr, 0, 0},
              {"1", 0, OptionArgument_None, 1, nullptr, 0, 0}};
    auto index = makeLetterIndex(m_rows);
    OptionTable table = m_table;
    table.rowCount = 2;
    table.rows = m_rows.data();
    table.letterIndex = index.data();
    Parser other(table, m_values, m_descriptors, m_reporter, nullptr);
    EXPECT_EQ(other.findOption("1", 1).row, nullptr);
    EXPECT_NE(other.findOption("a", 1).row, nullptr);
}

TEST_F(OptionSearchTest, WalkOfALetterStopsAtTheNextOne) {
    m_rows = {{"b", 0, OptionArgument_None, 1, nullptr, 0, 0},
              {"c", 0, OptionArgument_None, 1, nullptr, 0, 0},
              {"b2", 0, OptionArgument_None, 1, nullptr, 0, 0}};
    auto index = makeLetterIndex(m_rows);
    index['b' - 'a'] = 0;
    OptionTable table;
    table.rowCount = 3;
    table.rows = m_rows.data();
    table.letterIndex = index.data();
    Parser other(table, m_values, m_descriptors, m_reporter, nullptr);
    EXPECT_EQ(other.findOption("b2", 2).row, nullptr);
}

TEST_F(OptionSearchTest, LastRowOfTheTableEndsTheWalk) {
    addFlag("zz", addBoolean());
    EXPECT_EQ(found("zz", 2), "zz");
    EXPECT_EQ(found("zy", 2), "none");
    EXPECT_EQ(found("#", 2), "none");
}

TEST_F(OptionSearchTest, EmptyTextWithDashesFindsNothing) {
    addOption("", addParameter(ParameterType_STRING_VECTOR));
    EXPECT_EQ(found("", 1), "none");
    EXPECT_EQ(found("", 2), "none");
}

TEST_F(OptionSearchTest, NonLettersDoNotFoldOntoLetters) {
    addFlag("a", addBoolean());
    EXPECT_EQ(found("\xC1", 1), "none");
    EXPECT_EQ(found("!", 1), "none");
}

TEST_F(OptionSearchTest, RestrictedRowIsAsIfItDidNotExist) {
    addRow({"opt", addBoolean(), OptionArgument_None, 1, firstMask, 0, 0});
    m_table.activeMask = 2;
    EXPECT_EQ(found("opt", 2), "none");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, EveryMaskMustShareABit) {
    addRow({"both", addBoolean(), OptionArgument_None, 1, bothMasks, 0, 0});
    addRow({"one", addBoolean(), OptionArgument_None, 1, firstMask, 0, 0});
    addRow({"empty", addBoolean(), OptionArgument_None, 1, noMasks, 0, 0});
    m_table.activeMask = 1;
    EXPECT_EQ(found("both", 2), "none");
    EXPECT_EQ(found("one", 2), "one");
    EXPECT_EQ(found("empty", 2), "empty");
    dropParser();
    m_table.activeMask = 3;
    EXPECT_EQ(found("both", 2), "both");
}

TEST_F(OptionSearchTest, RestrictedRowIsNoRival) {
    addFlag("no_a", addBoolean());
    addRow({"no_b", addBoolean(), OptionArgument_None, 1, firstMask, 0, OptionFlag_Public});
    m_table.activeMask = 2;
    EXPECT_EQ(found("no_.", 2), "no_a");
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, RestrictedRowIsMarkedUnavailableInItsMatch) {
    OptionRow restricted{"opt", 0, OptionArgument_None, 1, firstMask, 0, 0};
    EXPECT_TRUE(matchRow(restricted, "opt", 2).unavailable);
    EXPECT_TRUE(matchRow(restricted, "opt", 2).matched);
    EXPECT_FALSE(matchRow(restricted, "opt", 1).unavailable);
    EXPECT_FALSE(matchRow(restricted, "op", 2).unavailable);
}

TEST_F(OptionSearchTest, DeprecatedOptionWarns) {
    addFlag("old", addBoolean(), 1, OptionFlag_Deprecated);
    EXPECT_EQ(found("old", 2), "old");
    EXPECT_EQ(messages(), Texts{"1 23131268 Option 'old' is deprecated."});
}

TEST_F(OptionSearchTest, DeprecatedWarningReplacesTheOldSyntaxWarning) {
    addFlag("old", addBoolean(), 1, OptionFlag_Deprecated | OptionFlag_OldSyntax);
    EXPECT_EQ(found("old", 1), "old");
    EXPECT_EQ(messages(), Texts{"1 23131268 Option 'old' is deprecated."});
}

TEST_F(OptionSearchTest, AnyOtherDeprecatedPolicyIsSilentAboutItAndWarnsOfOldSyntax) {
    for (uint32_t policy : {0U, 2U}) {
        dropParser();
        m_rows.clear();
        m_table.deprecatedPolicy = policy;
        addFlag("old", addBoolean(), 1, OptionFlag_Deprecated | OptionFlag_OldSyntax);
        EXPECT_EQ(found("old", 2), "old");
        EXPECT_TRUE(messages().empty());
        EXPECT_EQ(found("old", 1), "old");
        EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--old'."});
    }
}

TEST_F(OptionSearchTest, PositionalRowTakesAnyTextWithoutDashes) {
    addOption("", addParameter(ParameterType_STRING_VECTOR));
    MatchString match = parser().findOption("file.o", 0);
    ASSERT_NE(match.row, nullptr);
    EXPECT_STREQ(match.rest, "file.o");
    EXPECT_EQ(match.matchedLength, 0U);
    EXPECT_TRUE(match.matched);
    EXPECT_TRUE(match.exact);
    EXPECT_FALSE(match.dot);
    EXPECT_FALSE(match.isLong);
    EXPECT_FALSE(match.hasSeparator);
    EXPECT_TRUE(parser().findOption("=x", 0).hasSeparator);
}

TEST_F(OptionSearchTest, PositionalRowIsNotDroppedOrWarnedAbout) {
    addRow({"", addParameter(ParameterType_STRING_VECTOR), OptionArgument_Required, 0, firstMask, 0,
            OptionFlag_Deprecated});
    m_table.activeMask = 2;
    MatchString match = parser().findOption("x", 0);
    ASSERT_NE(match.row, nullptr);
    EXPECT_TRUE(match.unavailable);
    EXPECT_TRUE(messages().empty());
}

TEST_F(OptionSearchTest, WithoutAPositionalRowAWordFindsNothing) {
    addFlag("x", addBoolean());
    EXPECT_EQ(found("x", 0), "none");
}

TEST_F(OptionSearchTest, EmptyTableFindsNothing) {
    EXPECT_EQ(found("x", 0), "none");
    EXPECT_EQ(found("x", 1), "none");
    EXPECT_EQ(found("=", 2), "none");
}

TEST_F(OptionSearchTest, MatchCarriesTheRowsNature) {
    addFlag("opt", addBoolean(), 1, OptionFlag_OldSyntax);
    addFlag("x", addBoolean());
    MatchString longMatch = parser().findOption("opt", 2);
    EXPECT_TRUE(longMatch.isLong);
    EXPECT_TRUE(longMatch.oldSyntax);
    EXPECT_TRUE(longMatch.exact);
    EXPECT_EQ(longMatch.matchedLength, 3U);
    MatchString shortMatch = parser().findOption("xyz", 1);
    EXPECT_FALSE(shortMatch.isLong);
    EXPECT_FALSE(shortMatch.oldSyntax);
    EXPECT_STREQ(shortMatch.rest, "yz");
}

} // namespace tabledrivenparser
