// Limits on values: ranges, patterns, masks, and a program's own filter.

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/src/value_constraint.h"

namespace tabledrivenparser {

namespace {

const uint32_t maskOne[] = {1, 0};
const uint32_t maskTwo[] = {2, 0};
const uint32_t maskOneAndTwo[] = {1, 2, 0};

const int32_t smallPairs[] = {0, 9, 100, 109, 1, 0};
const int32_t negativePairs[] = {-5, -1, 0, -1};
const int64_t widePairs[] = {-1, -1, int64_t{1} << 40, int64_t{1} << 41, 1, 0};
const int32_t noPairs[] = {0, -1};

class ValueConstraintTest : public ParserTest {};

// Answers from a list of values, and writes down what it was asked.
class FakeFilter final : public ValueFilter {
public:
    bool accept(Parameters& parameters, const ParameterDescriptor& descriptor, uint32_t mask,
                uint64_t value, bool quiet) override {
        seenParameters = &parameters;
        seenDescriptor = &descriptor;
        seenMask = mask;
        seenQuiet = quiet;
        seen.push_back(value);
        return value != rejected;
    }
    uint64_t rejected = 0;
    Parameters* seenParameters = nullptr;
    const ParameterDescriptor* seenDescriptor = nullptr;
    uint32_t seenMask = 0;
    bool seenQuiet = true;
    std::vector<uint64_t> seen;
};

bool passesInt(const ValueConstraint* constraint, int32_t value, uint32_t mask = 0xFFFFFFFF) {
    return passesConstraints(constraint, ParameterType_INT,
                             static_cast<uint64_t>(static_cast<int64_t>(value)), mask);
}

} // namespace

TEST_F(ValueConstraintTest, NoConstraintPassesAll) {
    EXPECT_TRUE(passesInt(nullptr, 5));
}

TEST_F(ValueConstraintTest, ValueMustLieInsideOnePair) {
    const ValueConstraint constraint{nullptr, smallPairs, nullptr};
    for (int32_t inside : {0, 5, 9, 100, 109}) {
        EXPECT_TRUE(passesInt(&constraint, inside)) << inside;
    }
    for (int32_t outside : {-1, 10, 99, 110, INT32_MIN, INT32_MAX}) {
        EXPECT_FALSE(passesInt(&constraint, outside)) << outside;
    }
}

TEST_F(ValueConstraintTest, FirstTurnedPairEndsTheList) {
    const int32_t pairs[] = {1, 1, 3, 2, 5, 6};
    const ValueConstraint constraint{nullptr, pairs, nullptr};
    EXPECT_TRUE(passesInt(&constraint, 1));
    EXPECT_FALSE(passesInt(&constraint, 5));
    const ValueConstraint none{nullptr, noPairs, nullptr};
    EXPECT_FALSE(passesInt(&none, 0));
}

TEST_F(ValueConstraintTest, AddressesCompareAsSigned32Bits) {
    const ValueConstraint constraint{nullptr, negativePairs, nullptr};
    EXPECT_TRUE(passesConstraints(&constraint, ParameterType_ADDRESS, 0xFFFFFFFF, 1));
    EXPECT_FALSE(passesConstraints(&constraint, ParameterType_ADDRESS, 0, 1));
}

TEST_F(ValueConstraintTest, WideTypesCompareIn64Bits) {
    const ValueConstraint constraint{nullptr, widePairs, nullptr};
    for (uint32_t type : {ParameterType_ADDRESS64, ParameterType_INT64_VECTOR}) {
        EXPECT_TRUE(passesConstraints(&constraint, type, uint64_t{1} << 40, 1));
        EXPECT_TRUE(passesConstraints(&constraint, type, ~uint64_t{0}, 1));
        EXPECT_FALSE(passesConstraints(&constraint, type, 0, 1));
        EXPECT_FALSE(passesConstraints(&constraint, type, 0xFFFFFFFF, 1));
    }
}

TEST_F(ValueConstraintTest, NodeThatDoesNotApplyIsPassedOver) {
    const ValueConstraint constraint{maskTwo, noPairs, nullptr};
    EXPECT_TRUE(passesInt(&constraint, 5, 1));
    EXPECT_FALSE(passesInt(&constraint, 5, 2));
}

TEST_F(ValueConstraintTest, NodeAppliesOnlyIfEveryMaskSharesABit) {
    const ValueConstraint constraint{maskOneAndTwo, noPairs, nullptr};
    EXPECT_TRUE(passesInt(&constraint, 5, 1));
    EXPECT_FALSE(passesInt(&constraint, 5, 3));
}

TEST_F(ValueConstraintTest, OneApplyingNodeIsEnough) {
    const ValueConstraint second{maskOne, negativePairs, nullptr};
    const ValueConstraint first{maskOne, smallPairs, &second};
    EXPECT_TRUE(passesInt(&first, 5, 1));
    EXPECT_TRUE(passesInt(&first, -5, 1));
    EXPECT_FALSE(passesInt(&first, 50, 1));
    EXPECT_TRUE(passesInt(&first, 50, 2));
}

TEST_F(ValueConstraintTest, SatisfiedNodeThatDoesNotApplyIsNoHelp) {
    const ValueConstraint second{maskTwo, negativePairs, nullptr};
    const ValueConstraint first{maskOne, smallPairs, &second};
    EXPECT_FALSE(passesInt(&first, -5, 1));
}

TEST_F(ValueConstraintTest, PatternComparesTheFoldedValue) {
    EXPECT_TRUE(matchesPattern("abc", "abc"));
    EXPECT_TRUE(matchesPattern("abc", "ABC"));
    EXPECT_FALSE(matchesPattern("abc", "abcd"));
    EXPECT_FALSE(matchesPattern("abc", "ab"));
    EXPECT_FALSE(matchesPattern("aBc", "aBc"));
}

TEST_F(ValueConstraintTest, PatternWithLeadingCComparesCaseAndAll) {
    EXPECT_TRUE(matchesPattern("CaBc", "aBc"));
    EXPECT_FALSE(matchesPattern("CaBc", "abc"));
    EXPECT_TRUE(matchesPattern("cat", "CAT"));
    EXPECT_TRUE(matchesPattern("C", ""));
}

TEST_F(ValueConstraintTest, PatternAlternativesAreSplitByBars) {
    const char* pattern = "one|Ctwo|three";
    EXPECT_TRUE(matchesPattern(pattern, "ONE"));
    EXPECT_TRUE(matchesPattern(pattern, "two"));
    EXPECT_FALSE(matchesPattern(pattern, "Two"));
    EXPECT_TRUE(matchesPattern(pattern, "Three"));
    EXPECT_FALSE(matchesPattern(pattern, "one|two"));
    EXPECT_FALSE(matchesPattern(pattern, ""));
    EXPECT_TRUE(matchesPattern("one|", ""));
    EXPECT_TRUE(matchesPattern("|one", ""));
}

TEST_F(ValueConstraintTest, StarAcceptsTheRestOfTheValue) {
    EXPECT_TRUE(matchesPattern("ab*", "ab"));
    EXPECT_TRUE(matchesPattern("ab*", "ABcd|"));
    EXPECT_FALSE(matchesPattern("ab*", "a"));
    EXPECT_TRUE(matchesPattern("*", ""));
    EXPECT_TRUE(matchesPattern("x|C*", "Anything"));
    EXPECT_TRUE(matchesPattern("a*z", "ab"));
}

TEST_F(ValueConstraintTest, NullValuePassesOnlyANullOrEmptyPattern) {
    EXPECT_TRUE(matchesPattern(nullptr, nullptr));
    EXPECT_TRUE(matchesPattern("", nullptr));
    EXPECT_FALSE(matchesPattern("*", nullptr));
    EXPECT_FALSE(matchesPattern("|", nullptr));
    EXPECT_TRUE(matchesPattern(nullptr, ""));
    EXPECT_FALSE(matchesPattern(nullptr, "x"));
    EXPECT_FALSE(matchesPattern("", "x"));
}

TEST_F(ValueConstraintTest, EveryConstrainedTypeIsTested) {
    static const ValueConstraint numbers{nullptr, smallPairs, nullptr};
    static const ValueConstraint wide{nullptr, widePairs, nullptr};
    static const ValueConstraint pattern{nullptr, "good|/dev/null", nullptr};
    struct Case {
        uint32_t type;
        const void* constraint;
        const char* good;
        const char* bad;
    };
    const Case cases[] = {
        {ParameterType_ADDRESS, &numbers, "--opt=5", "--opt=50"},
        {ParameterType_ADDRESS64, &wide, "--opt=0x10000000000", "--opt=50"},
        {ParameterType_INT, &numbers, "--opt=5", "--opt=-5"},
        {ParameterType_INT_VECTOR, &numbers, "--opt=5,6", "--opt=50"},
        {ParameterType_INT64_VECTOR, &wide, "--opt=-1", "--opt=1"},
        {ParameterType_STRING, &pattern, "--opt=Good", "--opt=bad"},
        {ParameterType_STRING_VECTOR, &pattern, "--opt=good,good", "--opt=bad"},
        {ParameterType_VIA_FILE, &pattern, "--opt=/dev/null", "--opt=bad"},
    };
    for (const Case& each : cases) {
        dropParser();
        m_rows.clear();
        m_descriptors.clear();
        m_values.clear();
        uint32_t parameter = addParameter(each.type, each.constraint);
        addOption("opt", parameter, ',');
        parse({each.good});
        EXPECT_TRUE(parameters().isSet(parameter)) << each.type;
        EXPECT_TRUE(messages().empty()) << each.type;
        uint32_t stamp = parameters().lastSet(parameter);
        parse({each.bad});
        EXPECT_EQ(parameters().lastSet(parameter), stamp) << each.type;
        EXPECT_EQ(messages().size(), 1U) << each.type;
    }
}

TEST_F(ValueConstraintTest, IntVectorStopsAtARejectedElement) {
    static const ValueConstraint numbers{nullptr, smallPairs, nullptr};
    uint32_t parameter = addParameter(ParameterType_INT_VECTOR, &numbers);
    addOption("opt", parameter, ',');
    parse({"--opt=1,50,2"});
    EXPECT_EQ(ints(parameter), std::vector<int>{1});
}

TEST_F(ValueConstraintTest, FilterComesBeforeTheConstraints) {
    static const ValueConstraint numbers{nullptr, smallPairs, nullptr};
    FakeFilter filter;
    filter.rejected = 7;
    uint32_t parameter = addParameter(ParameterType_INT, &numbers);
    m_values[parameter].filter = &filter;
    addOption("opt", parameter);
    m_table.activeMask = 0xF0;
    parse({"--opt=7", "--opt=50", "--opt=8"});
    EXPECT_EQ(filter.seen, (std::vector<uint64_t>{7, 50, 8}));
    EXPECT_EQ(parameters().intValue(parameter), 8);
    EXPECT_EQ(parameters().lastSet(parameter), 1U);
    EXPECT_EQ(messages().size(), 2U);
    EXPECT_EQ(filter.seenParameters, &parameters());
    EXPECT_EQ(filter.seenDescriptor, &m_descriptors[parameter]);
    EXPECT_EQ(filter.seenMask, 0xF0U);
    EXPECT_FALSE(filter.seenQuiet);
}

TEST_F(ValueConstraintTest, FilterIsNotAskedWhereThereAreNoConstraints) {
    FakeFilter filter;
    filter.rejected = 7;
    uint32_t parameter = addParameter(ParameterType_INT);
    m_values[parameter].filter = &filter;
    addOption("opt", parameter);
    parse({"--opt=7"});
    EXPECT_EQ(parameters().intValue(parameter), 7);
    EXPECT_TRUE(filter.seen.empty());
}

TEST_F(ValueConstraintTest, FilterSeesVectorsElementByElement) {
    static const ValueConstraint all{nullptr, "*", nullptr};
    FakeFilter filter;
    uint32_t parameter = addParameter(ParameterType_STRING_VECTOR, &all);
    m_values[parameter].filter = &filter;
    addOption("opt", parameter, ',');
    parse({"--opt=a,b"});
    ASSERT_EQ(filter.seen.size(), 2U);
    EXPECT_STREQ(textOfValue(filter.seen[1]), "b");
}

} // namespace tabledrivenparser
