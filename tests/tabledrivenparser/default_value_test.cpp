// Defaults of every kind, and the row by which a parameter is shown.

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/interface/best_row.h"
#include "tabledrivenparser/src/default_value.h"

namespace tabledrivenparser {

namespace {

const uint32_t maskOne[] = {1, 0};
const uint32_t maskTwo[] = {2, 0};
const uint32_t maskOneAndTwo[] = {1, 2, 0};

class FakeProvider final : public DefaultProvider {
public:
    const char* provide(const ParameterDescriptor& descriptor) override {
        seen = &descriptor;
        return text;
    }
    const char* text = nullptr;
    const ParameterDescriptor* seen = nullptr;
};

class DefaultValueTest : public ParserTest {
protected:
    uint32_t addWithDefault(uint32_t type, uint32_t kind, uint64_t value,
                            const void* constraints = nullptr) {
        uint32_t parameter = addParameter(type, constraints);
        m_descriptors[parameter].defaultKind = kind;
        m_descriptors[parameter].defaultValue = value;
        return parameter;
    }
    uint32_t addProvided(uint32_t type, const void* constraints = nullptr) {
        uint32_t parameter = addWithDefault(type, DefaultKind_Provider, 0, constraints);
        m_values[parameter].defaultProvider = &m_provider;
        return parameter;
    }
    FakeProvider m_provider;
};

class BestRowTest : public ParserTest {
protected:
    // The name of the best of the rows that were added for the one parameter.
    std::string best(uint32_t parameter) {
        parser();
        m_rowPointers.clear();
        for (const OptionRow& each : m_rows) {
            m_rowPointers.push_back(&each);
        }
        m_rowPointers.push_back(nullptr);
        m_descriptors[parameter].rows = m_rowPointers.data();
        const OptionRow* found = bestRowForParameter(parser(), parameter);
        return found == nullptr ? "none" : found->name[0] == 0 ? "positional" : found->name;
    }
    std::vector<const OptionRow*> m_rowPointers;
};

} // namespace

TEST_F(DefaultValueTest, KindsZeroAndOneHoldTheValueItself) {
    uint32_t none = addWithDefault(ParameterType_INT, DefaultKind_None, 5);
    uint32_t value = addWithDefault(ParameterType_INT, DefaultKind_Value, 6);
    EXPECT_EQ(defaultOf(parser(), none, 1), 5U);
    EXPECT_EQ(defaultOf(parser(), value, 1), 6U);
}

TEST_F(DefaultValueTest, MaskedKindTakesTheFirstNodeThatFits) {
    static const MaskedDefault third{maskTwo, 30, nullptr};
    static const MaskedDefault second{maskOne, 20, &third};
    static const MaskedDefault first{maskOneAndTwo, 10, &second};
    uint32_t parameter =
        addWithDefault(ParameterType_INT, DefaultKind_Masked, addressValue(&first));
    EXPECT_EQ(defaultOf(parser(), parameter, 3), 10U);
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 20U);
    EXPECT_EQ(defaultOf(parser(), parameter, 2), 30U);
    EXPECT_EQ(defaultOf(parser(), parameter, 4), 0U);
}

TEST_F(DefaultValueTest, EmptyMaskedListGivesZero) {
    uint32_t parameter = addWithDefault(ParameterType_INT, DefaultKind_Masked, 0);
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
}

TEST_F(DefaultValueTest, ConstructionResolvesMaskedDefaultsOnce) {
    static const MaskedDefault node{maskTwo, 30, nullptr};
    uint32_t masked = addWithDefault(ParameterType_INT, DefaultKind_Masked, addressValue(&node));
    uint32_t plain = addWithDefault(ParameterType_INT, DefaultKind_Value, 7);
    m_values[masked].value = 99;
    m_table.activeMask = 2;
    EXPECT_EQ(parameters().intValue(masked), 30);
    EXPECT_EQ(parameters().intValue(plain), 0);
    EXPECT_EQ(parameters().lastSet(masked), 0U);
}

TEST_F(DefaultValueTest, ConstructionWithAllOnesLeavesTheValues) {
    static const MaskedDefault node{maskTwo, 30, nullptr};
    uint32_t masked = addWithDefault(ParameterType_INT, DefaultKind_Masked, addressValue(&node));
    m_values[masked].value = 99;
    EXPECT_EQ(parameters().intValue(masked), 99);
}

TEST_F(DefaultValueTest, ProviderOfABooleanSaysTrueOrFalse) {
    uint32_t parameter = addProvided(ParameterType_BOOLEAN);
    m_provider.text = "true";
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 1U);
    m_provider.text = "false";
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(m_provider.seen, &m_descriptors[parameter]);
}

TEST_F(DefaultValueTest, ProviderOfABooleanMustSayItExactly) {
    uint32_t parameter = addProvided(ParameterType_BOOLEAN);
    for (const char* text : {"TRUE", "1", "", "true "}) {
        m_provider.text = text;
        EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
        EXPECT_EQ(messages(), Texts{std::string("3 23131130 Argument '") + text +
                                    "' not permitted for option '<unknown>'."});
    }
}

TEST_F(DefaultValueTest, ProviderOfAnEnumNamesARow) {
    static const EnumRow rows[] = {{nullptr, 5, nullptr, nullptr, 0},
                                   {"one", 1, nullptr, nullptr, 0},
                                   {"two", 2, nullptr, nullptr, 0}};
    static const EnumTable table{3, rows};
    uint32_t parameter = addProvided(ParameterType_ENUM, &table);
    m_provider.text = "two";
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 2U);
    EXPECT_TRUE(messages().empty());
    m_provider.text = "three";
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
    EXPECT_EQ(messages(),
              Texts{"3 23131130 Argument 'three' not permitted for option '<unknown>'."});
}

TEST_F(DefaultValueTest, ProviderOfAnyOtherTypeGivesZero) {
    m_provider.text = "5";
    for (uint32_t type :
         {ParameterType_ADDRESS, ParameterType_ADDRESS64, ParameterType_INT,
          ParameterType_INT_VECTOR, ParameterType_INT64_VECTOR, ParameterType_STRING,
          ParameterType_STRING_VECTOR, ParameterType_CALL_BACK, ParameterType_VIA_FILE}) {
        addProvided(type);
    }
    for (uint32_t parameter = 0; parameter < 9; ++parameter) {
        EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
    }
    EXPECT_TRUE(messages().empty());
}

TEST_F(DefaultValueTest, ProviderThatGivesNothingIsFatalAndNamesTheBestRow) {
    uint32_t parameter = addProvided(ParameterType_BOOLEAN);
    addFlag("x", parameter, 0);
    addFlag("no_x", parameter, 0);
    parser();
    const OptionRow* rows[] = {row("x"), row("no_x"), nullptr};
    m_descriptors[parameter].rows = rows;
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument '<null>' not permitted for option 'no_x'."});
}

TEST_F(DefaultValueTest, MissingProviderIsAsOneThatGivesNothing) {
    uint32_t parameter = addWithDefault(ParameterType_INT, DefaultKind_Provider, 3);
    EXPECT_EQ(defaultOf(parser(), parameter, 1), 0U);
    EXPECT_EQ(messages(),
              Texts{"3 23131130 Argument '<null>' not permitted for option '<unknown>'."});
}

TEST_F(DefaultValueTest, EnumWithoutArgumentComparesWithItsProvidedDefault) {
    static const EnumRow rows[] = {{"one", 1, maskOne, nullptr, 0}};
    static const EnumTable table{1, rows};
    uint32_t parameter = addProvided(ParameterType_ENUM, &table);
    addFlag("x", parameter, 1);
    m_table.activeMask = 2;
    m_provider.text = "one";
    parse({"-x"});
    EXPECT_EQ(parameters().enumValue(parameter), 1U);
    EXPECT_TRUE(messages().empty());
}

// bestRowForParameter

TEST_F(BestRowTest, NoRowsGiveNone) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    EXPECT_EQ(bestRowForParameter(parser(), parameter), nullptr);
    EXPECT_EQ(best(parameter), "none");
}

TEST_F(BestRowTest, RowWithoutArgumentMustImplyThePresentValue) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addFlag("no_x", parameter, 0);
    addFlag("x", parameter, 1);
    EXPECT_EQ(best(parameter), "no_x");
    parse({"-x"});
    EXPECT_EQ(best(parameter), "x");
}

TEST_F(BestRowTest, NoRowImpliesThePresentValue) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addFlag("x", parameter, 1);
    EXPECT_EQ(best(parameter), "none");
}

TEST_F(BestRowTest, RestrictedRowsAreSkipped) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addRow({"x", parameter, OptionArgument_None, 0, maskOne, 0, 0});
    addRow({"y", parameter, OptionArgument_None, 0, maskTwo, 0, 0});
    m_table.activeMask = 2;
    EXPECT_EQ(best(parameter), "y");
}

TEST_F(BestRowTest, RowThatIsNotDeprecatedComesFirst) {
    uint32_t parameter = addParameter(ParameterType_INT);
    addFlag("aaa", parameter, 0, OptionFlag_Deprecated);
    addOption("b", parameter);
    addFlag("ccc", parameter, 0, OptionFlag_Deprecated);
    EXPECT_EQ(best(parameter), "b");
}

TEST_F(BestRowTest, RowWithoutArgumentComesNext) {
    uint32_t parameter = addParameter(ParameterType_INT);
    addOption("aaa", parameter);
    addFlag("b", parameter, 0);
    addOption("ccc", parameter);
    EXPECT_EQ(best(parameter), "b");
}

TEST_F(BestRowTest, OptionalArgumentShowsOnlyIfTheValueDiffers) {
    uint32_t parameter = addParameter(ParameterType_INT);
    addOption("aaa", parameter);
    addOption("b", parameter, 0, 0, OptionArgument_Optional, 5);
    EXPECT_EQ(best(parameter), "aaa");
    m_values[parameter].value = 5;
    EXPECT_EQ(best(parameter), "b");
    EXPECT_FALSE(rowShowsArgument(parser(), parameter, *row("b")));
    EXPECT_TRUE(rowShowsArgument(parser(), parameter, *row("aaa")));
}

TEST_F(BestRowTest, LongNameBeatsALetter) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addFlag("h", parameter, 0);
    addFlag("help", parameter, 0);
    EXPECT_EQ(best(parameter), "help");
    dropParser();
    m_rows.clear();
    addFlag("help", parameter, 0);
    addFlag("h", parameter, 0);
    EXPECT_EQ(best(parameter), "help");
}

TEST_F(BestRowTest, FirstOfEqualsStays) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addFlag("version", parameter, 0);
    addFlag("vsn", parameter, 0);
    EXPECT_EQ(best(parameter), "version");
}

TEST_F(BestRowTest, EmptyNameBeatsAnyName) {
    uint32_t parameter = addParameter(ParameterType_STRING_VECTOR);
    addOption("file", parameter);
    addOption("", parameter);
    parser();
    const OptionRow* forward[] = {row("file"), row(""), nullptr};
    m_descriptors[parameter].rows = forward;
    EXPECT_STREQ(bestRowForParameter(parser(), parameter)->name, "");
    const OptionRow* backward[] = {row(""), row("file"), nullptr};
    m_descriptors[parameter].rows = backward;
    EXPECT_STREQ(bestRowForParameter(parser(), parameter)->name, "");
}

TEST_F(BestRowTest, EveryRowOfACallBackIsUsableAndShows) {
    uint32_t parameter = addParameter(ParameterType_CALL_BACK);
    m_values[parameter].value = 1234;
    addFlag("c", parameter, 0);
    addFlag("call", parameter, 0);
    EXPECT_EQ(best(parameter), "call");
    EXPECT_TRUE(rowShowsArgument(parser(), parameter, *row("call")));
}

TEST_F(BestRowTest, WideValuesAreComparedWhole) {
    uint32_t parameter = addParameter(ParameterType_ADDRESS64);
    addFlag("low", parameter, 5);
    addFlag("wide", parameter, (uint64_t{1} << 32) + 5);
    parse({"--wide"});
    EXPECT_EQ(best(parameter), "wide");
    parse({"--low"});
    EXPECT_EQ(best(parameter), "low");
}

TEST_F(BestRowTest, NegativeImpliedIntIsRecognisedHoweverItWasWritten) {
    uint32_t parameter = addParameter(ParameterType_INT);
    addFlag("minus", parameter, 0xFFFFFFFF);
    parse({"--minus"});
    EXPECT_EQ(best(parameter), "minus");
}

} // namespace tabledrivenparser
