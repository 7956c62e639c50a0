// Enumerated parameters: choosing a row, defaults, deprecation, the list of arguments.

#include "tests/tabledrivenparser/parser_fixture.h"

namespace tabledrivenparser {

namespace {

const uint32_t maskOne[] = {1, 0};
const uint32_t maskTwo[] = {2, 0};

class FakeFilter final : public ValueFilter {
public:
    bool accept(Parameters&, const ParameterDescriptor&, uint32_t, uint64_t value,
                bool quiet) override {
        asked.emplace_back(value, quiet);
        return value != rejected;
    }
    uint64_t rejected = ~uint64_t{0};
    std::vector<std::pair<uint64_t, bool>> asked;
};

class EnumTest : public ParserTest {
protected:
    uint32_t addEnum(const std::vector<EnumRow>& rows) {
        m_enumRows = rows;
        m_enumTable = {static_cast<uint32_t>(m_enumRows.size()), m_enumRows.data()};
        m_style = addParameter(ParameterType_ENUM, &m_enumTable);
        addOption("style", m_style);
        addOption("s", m_style);
        return m_style;
    }
    uint32_t addPlainEnum() {
        return addEnum({{"list", 0, nullptr, nullptr, 0},
                        {"first", 1, nullptr, nullptr, 0},
                        {nullptr, 9, nullptr, nullptr, 0},
                        {"second", 2, nullptr, nullptr, 0}});
    }
    uint32_t chosen() { return parameters().enumValue(m_style); }

    std::vector<EnumRow> m_enumRows;
    EnumTable m_enumTable;
    uint32_t m_style = 0;
};

} // namespace

TEST_F(EnumTest, ArgumentChoosesItsRowUnderCaseFolding) {
    addPlainEnum();
    parse({"--style=second"});
    EXPECT_EQ(chosen(), 2U);
    parse({"--style=FIRST"});
    EXPECT_EQ(chosen(), 1U);
    EXPECT_EQ(parameters().lastSet(m_style), 2U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(EnumTest, ArgumentMustBeTheWholeName) {
    addPlainEnum();
    parse({"--style=firs", "--style=firstly", "--style="});
    EXPECT_EQ(messages(), (Texts{"3 23131130 Argument 'firs' not permitted for option 'style'.",
                                 "3 23131130 Argument 'firstly' not permitted for option 'style'.",
                                 "3 23131130 Argument '' not permitted for option 'style'."}));
    EXPECT_FALSE(parameters().isSet(m_style));
}

TEST_F(EnumTest, MissingTableChoosesNothing) {
    uint32_t parameter = addParameter(ParameterType_ENUM);
    addOption("style", parameter);
    addFlag("bare", parameter, 3);
    parse({"--style=first", "--bare"});
    EXPECT_EQ(messages().size(), 2U);
    EXPECT_FALSE(parameters().isSet(parameter));
}

TEST_F(EnumTest, ValueRestrictionsOfTheFirstRowOfTheValueDecide) {
    addEnum({{"one", 1, maskOne, nullptr, 0},
             {"uno", 1, nullptr, nullptr, 0},
             {"two", 2, nullptr, nullptr, 0},
             {"due", 2, maskOne, nullptr, 0}});
    m_table.activeMask = 2;
    parse({"--style=uno"});
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument 'uno' not permitted for option 'style'."});
    parse({"--style=due"});
    EXPECT_EQ(chosen(), 2U);
}

TEST_F(EnumTest, RowRestrictionsDoNotKeepARowFromBeingChosen) {
    addEnum({{"one", 1, nullptr, maskOne, 0}});
    m_table.activeMask = 2;
    parse({"--style=one"});
    EXPECT_EQ(chosen(), 1U);
}

TEST_F(EnumTest, FilterIsAskedForEachCandidate) {
    FakeFilter filter;
    addEnum({{"same", 1, nullptr, nullptr, 0},
             {"other", 2, nullptr, nullptr, 0},
             {"same", 3, nullptr, nullptr, 0}});
    m_values[m_style].filter = &filter;
    filter.rejected = 3;
    parse({"--style=same"});
    EXPECT_EQ(chosen(), 1U);
    using Asked = std::pair<uint64_t, bool>;
    EXPECT_EQ(filter.asked, (std::vector<Asked>{{1, false}, {3, false}}));
    filter.rejected = 2;
    parse({"--style=other"});
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument 'other' not permitted for option 'style'."});
}

TEST_F(EnumTest, LaterRowOfTheSameNameTakesOver) {
    addEnum({{"same", 1, nullptr, nullptr, 0}, {"SAME", 2, nullptr, nullptr, 0}});
    parse({"--style=same"});
    EXPECT_EQ(chosen(), 2U);
}

TEST_F(EnumTest, LaterRestrictedRowDoesNotReplaceAnUnrestrictedOne) {
    addEnum({{"same", 1, nullptr, nullptr, 0}, {"same", 2, nullptr, maskOne, 0}});
    parse({"--style=same"});
    EXPECT_EQ(chosen(), 1U);
}

TEST_F(EnumTest, LaterRowReplacesARestrictedOne) {
    addEnum({{"same", 1, nullptr, maskOne, 0},
             {"same", 2, nullptr, maskTwo, 0},
             {"same", 3, nullptr, nullptr, 0}});
    parse({"--style=same"});
    EXPECT_EQ(chosen(), 3U);
}

TEST_F(EnumTest, LaterDeprecatedRowReplacesOnlyADeprecatedOne) {
    addEnum({{"same", 1, nullptr, nullptr, 0},
             {"same", 2, nullptr, nullptr, 1},
             {"old", 3, nullptr, nullptr, 1},
             {"old", 4, nullptr, nullptr, 1}});
    parse({"--style=same"});
    EXPECT_EQ(chosen(), 1U);
    parse({"--style=old"});
    EXPECT_EQ(chosen(), 4U);
}

TEST_F(EnumTest, EmptyRestrictionListCountsAsUnrestricted) {
    static const uint32_t noMasks[] = {0};
    addEnum({{"same", 1, nullptr, nullptr, 0}, {"same", 2, nullptr, noMasks, 0}});
    parse({"--style=same"});
    EXPECT_EQ(chosen(), 2U);
}

TEST_F(EnumTest, DeprecatedRowWarnsWithTheArgumentAsWritten) {
    addEnum({{"old", 3, nullptr, nullptr, 1}});
    parse({"--style=OLD"});
    EXPECT_EQ(messages(), Texts{"1 23131316 Argument 'OLD' to option 'style' is deprecated"});
    EXPECT_EQ(chosen(), 3U);
}

TEST_F(EnumTest, ListenerTakesTheValueBeforeAnyMessage) {
    addEnum({{"list", 0, nullptr, nullptr, 1}});
    m_values[m_style].value = 5;
    m_listener.takes = [](uint32_t, uint64_t) { return true; };
    parse({"--style=list"});
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(chosen(), 5U);
    EXPECT_EQ(parameters().lastSet(m_style), 1U);
    EXPECT_EQ(parameters().listShown, 0U);
}

TEST_F(EnumTest, ListenerSeesTheValue) {
    addPlainEnum();
    parse({"--style=second"});
    using Offer = std::pair<uint32_t, uint64_t>;
    EXPECT_EQ(m_listener.offered, (std::vector<Offer>{{m_style, 2}}));
}

TEST_F(EnumTest, ValueZeroListsTheArgumentsOfALongOption) {
    addPlainEnum();
    m_values[m_style].value = 1;
    parse({"--style=list"});
    EXPECT_EQ(messages(),
              Texts{"0 23131298 The following arguments to option 'style' can be selected:\n"
                    " --style=list\n --style=first\n --style=second\n"});
    EXPECT_EQ(parameters().listShown, 1U);
    EXPECT_EQ(chosen(), 0U);
    EXPECT_EQ(parameters().lastSet(m_style), 1U);
}

TEST_F(EnumTest, ValueZeroListsTheArgumentsOfAOneLetterOption) {
    addPlainEnum();
    parse({"-slist"});
    EXPECT_EQ(messages(), Texts{"0 23131298 The following arguments to option 's' can be "
                                "selected:\n -slist\n -sfirst\n -ssecond\n"});
}

TEST_F(EnumTest, OtherValuesListNothing) {
    addPlainEnum();
    parse({"--style=first"});
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(parameters().listShown, 0U);
}

TEST_F(EnumTest, SelectivePassListsNothing) {
    addPlainEnum();
    const uint32_t filter[] = {m_style};
    EXPECT_EQ(parser().parseOption("style=list", nullptr, 2, nullptr, 1, filter), 1U);
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(parameters().lastSet(m_style), 1U);
}

TEST_F(EnumTest, ListLeavesOutWhatCannotBeSelected) {
    FakeFilter filter;
    addEnum({{"list", 0, nullptr, nullptr, 0},
             {"row_out", 1, nullptr, maskOne, 0},
             {"value_out", 2, maskOne, nullptr, 0},
             {"value_out_too", 2, nullptr, nullptr, 0},
             {nullptr, 3, nullptr, nullptr, 0},
             {"filtered", 4, nullptr, nullptr, 0},
             {"kept", 5, nullptr, nullptr, 0}});
    m_values[m_style].filter = &filter;
    filter.rejected = 4;
    m_table.activeMask = 2;
    parse({"--style=list"});
    EXPECT_EQ(messages(), Texts{"0 23131298 The following arguments to option 'style' can be "
                                "selected:\n --style=list\n --style=kept\n"});
    // Asked aloud for the candidate, then quietly for the listed rows.
    using Asked = std::pair<uint64_t, bool>;
    EXPECT_EQ(filter.asked, (std::vector<Asked>{{0, false}, {0, true}, {4, true}, {5, true}}));
}

TEST_F(EnumTest, ListWhoseFirstRowIsLeftOutBeginsWithoutAnExtraBlank) {
    addEnum({{"hidden", 1, nullptr, maskOne, 0}, {"list", 0, nullptr, nullptr, 0}});
    m_table.activeMask = 2;
    parse({"--style=list"});
    EXPECT_EQ(messages(), Texts{"0 23131298 The following arguments to option 'style' can be "
                                "selected:\n --style=list\n"});
}

TEST_F(EnumTest, LongListIsCompleteAroundTheSizeOfTheFirstBuffer) {
    // "--style=list\n" is 13 characters; " --style=" and the line feed add 10 to each further name.
    for (size_t textLength : {2046U, 2047U, 2048U, 2049U, 9000U}) {
        dropParser();
        m_rows.clear();
        m_descriptors.clear();
        m_values.clear();
        std::string name(textLength - 13 - 10, 'n');
        addEnum({{"list", 0, nullptr, nullptr, 0}, {name.c_str(), 1, nullptr, nullptr, 0}});
        parse({"--style=list"});
        EXPECT_EQ(messages(),
                  Texts{"0 23131298 The following arguments to option 'style' can be selected:\n"
                        " --style=list\n --style=" +
                        name + "\n"})
            << textLength;
    }
}

TEST_F(EnumTest, LongListOfManyRowsIsComplete) {
    std::vector<std::string> names;
    std::vector<EnumRow> rows = {{"list", 0, nullptr, nullptr, 0}};
    std::string expected = "--style=list\n";
    for (int index = 1; index < 500; ++index) {
        names.push_back("argument" + std::to_string(index));
        expected += " --style=" + names.back() + "\n";
    }
    for (uint32_t index = 1; index < 500; ++index) {
        rows.push_back({names[index - 1].c_str(), index, nullptr, nullptr, 0});
    }
    addEnum(rows);
    parse({"--style=list"});
    EXPECT_EQ(messages(),
              Texts{"0 23131298 The following arguments to option 'style' can be selected:\n " +
                    expected});
}

TEST_F(EnumTest, ImpliedValueMustBeInTheTable) {
    addPlainEnum();
    addFlag("known", m_style, 2);
    addFlag("unknown", m_style, 7);
    addFlag("hole", m_style, 9);
    parse({"--known"});
    EXPECT_EQ(chosen(), 2U);
    parse({"--unknown", "--hole"});
    EXPECT_EQ(chosen(), 2U);
    EXPECT_EQ(messages(), (Texts{"3 23131130 Argument '<null>' not permitted for option 'unknown'.",
                                 "3 23131130 Argument '<null>' not permitted for option 'hole'."}));
}

TEST_F(EnumTest, ImpliedValueMustBeAvailable) {
    FakeFilter filter;
    filter.rejected = 2;
    addEnum({{"one", 1, maskOne, nullptr, 0},
             {"uno", 1, nullptr, nullptr, 0},
             {"two", 2, nullptr, nullptr, 0},
             {"three", 3, nullptr, nullptr, 0}});
    m_values[m_style].filter = &filter;
    m_table.activeMask = 2;
    addFlag("one", m_style, 1);
    addFlag("two", m_style, 2);
    addFlag("three", m_style, 3);
    parse({"--one", "--two"});
    EXPECT_EQ(messages().size(), 2U);
    EXPECT_FALSE(parameters().isSet(m_style));
    parse({"--three"});
    EXPECT_EQ(chosen(), 3U);
    using Asked = std::pair<uint64_t, bool>;
    EXPECT_EQ(filter.asked, (std::vector<Asked>{{2, false}, {3, false}}));
}

TEST_F(EnumTest, ImpliedDefaultIsAcceptedUnseen) {
    FakeFilter filter;
    filter.rejected = 77;
    addPlainEnum();
    m_values[m_style].filter = &filter;
    m_descriptors[m_style].defaultValue = 77;
    addFlag("usual", m_style, 77);
    parse({"--usual"});
    EXPECT_EQ(chosen(), 77U);
    EXPECT_TRUE(filter.asked.empty());
    EXPECT_TRUE(messages().empty());
}

TEST_F(EnumTest, ImpliedZeroListsNothing) {
    addPlainEnum();
    m_descriptors[m_style].defaultValue = 1;
    addFlag("zero", m_style, 0);
    parse({"--zero"});
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(parameters().lastSet(m_style), 1U);
}

TEST_F(EnumTest, ImpliedValueIsOfferedToTheListener) {
    addPlainEnum();
    addFlag("known", m_style, 2);
    m_listener.takes = [](uint32_t, uint64_t value) { return value == 2; };
    parse({"--known"});
    EXPECT_EQ(chosen(), 0U);
    EXPECT_EQ(parameters().lastSet(m_style), 1U);
}

} // namespace tabledrivenparser
