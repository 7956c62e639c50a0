// Storing by type: each of the types with and without an argument, the listener, copies.

#include "tests/tabledrivenparser/parser_fixture.h"

namespace tabledrivenparser {

namespace {

class ValueStoreTest : public ParserTest {
protected:
    // A parameter with the option `opt` that requires an argument, `may` whose argument is
    // optional, and `bare` without one; the latter two imply `implied`.
    uint32_t addType(uint32_t type, uint64_t implied = 0, char separator = 0,
                     const void* constraints = nullptr) {
        uint32_t parameter = addParameter(type, constraints);
        addOption("opt", parameter, separator);
        addOption("may", parameter, separator, 0, OptionArgument_Optional, implied);
        addRow({"bare", parameter, OptionArgument_None, implied, nullptr, separator, 0});
        return parameter;
    }
};

const uint64_t minusOne = ~uint64_t{0};

} // namespace

// BOOLEAN

TEST_F(ValueStoreTest, BooleanWithoutArgumentTakesTheImpliedValue) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addFlag("x", parameter, 1);
    addFlag("no_x", parameter, 0);
    parse({"-x"});
    EXPECT_TRUE(parameters().boolValue(parameter));
    parse({"--no_x"});
    EXPECT_FALSE(parameters().boolValue(parameter));
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
}

TEST_F(ValueStoreTest, BooleanImpliedValueIsReadIn32BitsAndStoredAsOne) {
    uint32_t parameter = addParameter(ParameterType_BOOLEAN);
    addFlag("many", parameter, 7);
    addFlag("high", parameter, uint64_t{1} << 32);
    parse({"--many"});
    EXPECT_EQ(m_values[parameter].value, 1U);
    parse({"--high"});
    EXPECT_EQ(m_values[parameter].value, 0U);
}

TEST_F(ValueStoreTest, BooleanArgumentIsNotLookedAt) {
    uint32_t parameter = addType(ParameterType_BOOLEAN, 1);
    m_rows[0].impliedValue = 1;
    parse({"--opt=false"});
    EXPECT_TRUE(parameters().boolValue(parameter));
    parse({"--may=nonsense"});
    EXPECT_TRUE(parameters().boolValue(parameter));
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(ValueStoreTest, BooleanConstraintTestsTheWord) {
    static const ValueConstraint onlyTrue{nullptr, "true", nullptr};
    uint32_t parameter = addParameter(ParameterType_BOOLEAN, &onlyTrue);
    addFlag("x", parameter, 1);
    addFlag("no_x", parameter, 0);
    parse({"-x", "--no_x"});
    EXPECT_TRUE(parameters().boolValue(parameter));
    EXPECT_EQ(parameters().lastSet(parameter), 1U);
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument '<null>' not permitted for option 'no_x'."});
}

// ADDRESS, ADDRESS64, INT

TEST_F(ValueStoreTest, AddressWithArgument) {
    uint32_t parameter = addType(ParameterType_ADDRESS);
    parse({"--opt=0xFFFF0000"});
    EXPECT_EQ(parameters().addressValue(parameter), 0xFFFF0000U);
    EXPECT_EQ(m_values[parameter].value, 0xFFFF0000U);
    parse({"--opt=-1"});
    EXPECT_EQ(m_values[parameter].value, 0xFFFFFFFFU);
}

TEST_F(ValueStoreTest, AddressWithoutArgument) {
    uint32_t parameter = addType(ParameterType_ADDRESS, 0x80000000);
    parse({"--bare"});
    EXPECT_EQ(parameters().addressValue(parameter), 0x80000000U);
    parse({"--may=1", "--may"});
    EXPECT_EQ(parameters().addressValue(parameter), 0x80000000U);
}

TEST_F(ValueStoreTest, AddressOverflowIsFatal) {
    uint32_t parameter = addType(ParameterType_ADDRESS);
    parse({"--opt=0x100000000"});
    EXPECT_EQ(messages(),
              (Texts{"3 23131210 Overflow: '0x100000000' will not fit in an integer.",
                     "3 23131130 Argument '0x100000000' not permitted for option 'opt'."}));
    EXPECT_FALSE(parameters().isSet(parameter));
}

TEST_F(ValueStoreTest, Address64WithAndWithoutArgument) {
    uint32_t parameter = addType(ParameterType_ADDRESS64, minusOne);
    parse({"--opt", "0xFFFFFFFF00000000"});
    EXPECT_EQ(parameters().address64Value(parameter), 0xFFFFFFFF00000000U);
    parse({"--bare"});
    EXPECT_EQ(parameters().address64Value(parameter), minusOne);
    parse({"--opt=18446744073709551616"});
    EXPECT_EQ(messages().at(0),
              "3 23131210 Overflow: '18446744073709551616' will not fit in an integer.");
}

TEST_F(ValueStoreTest, IntWithArgument) {
    uint32_t parameter = addType(ParameterType_INT);
    parse({"--opt=-12"});
    EXPECT_EQ(parameters().intValue(parameter), -12);
    parse({"--opt=010"});
    EXPECT_EQ(parameters().intValue(parameter), 10);
    parse({"--opt=0x10"});
    EXPECT_EQ(parameters().intValue(parameter), 16);
    parse({"--opt=0x"});
    EXPECT_EQ(parameters().intValue(parameter), 0);
    EXPECT_EQ(parameters().lastSet(parameter), 4U);
}

TEST_F(ValueStoreTest, IntWithoutArgumentIsSignExtended) {
    uint32_t parameter = addType(ParameterType_INT, 0xFFFFFFFF);
    parse({"--bare"});
    EXPECT_EQ(parameters().intValue(parameter), -1);
    EXPECT_EQ(m_values[parameter].value, minusOne);
    EXPECT_EQ(m_listener.offered.at(0).second, minusOne);
}

TEST_F(ValueStoreTest, IntWithTextBehindTheNumberFails) {
    uint32_t parameter = addType(ParameterType_INT);
    for (const char* word : {"--opt=5x", "--opt=x", "--opt=", "--opt=5 ", "--opt=-0x5"}) {
        parse({word});
    }
    EXPECT_EQ(messages(), (Texts{"3 23131130 Argument '5x' not permitted for option 'opt'.",
                                 "3 23131130 Argument 'x' not permitted for option 'opt'.",
                                 "3 23131130 Argument '' not permitted for option 'opt'.",
                                 "3 23131130 Argument '5 ' not permitted for option 'opt'.",
                                 "3 23131130 Argument '-0x5' not permitted for option 'opt'."}));
    EXPECT_FALSE(parameters().isSet(parameter));
}

TEST_F(ValueStoreTest, IntOverflowIsFatal) {
    addType(ParameterType_INT);
    parse({"--opt=2147483648"});
    EXPECT_EQ(messages().at(0), "3 23131210 Overflow: '2147483648' will not fit in an integer.");
}

// INT_VECTOR, INT64_VECTOR

TEST_F(ValueStoreTest, IntVectorStampsEachElement) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 0, ',');
    parse({"--opt=1,-2,0x3"});
    EXPECT_EQ(ints(parameter), (std::vector<int>{1, -2, 3}));
    EXPECT_EQ(parameters().firstSet(parameter), 1U);
    EXPECT_EQ(parameters().lastSet(parameter), 3U);
    parse({"--opt=4"});
    EXPECT_EQ(ints(parameter), (std::vector<int>{1, -2, 3, 4}));
    EXPECT_EQ(parameters().lastSet(parameter), 4U);
}

TEST_F(ValueStoreTest, IntVectorTrailingSeparatorFailsAfterTheOthersWereStored) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 0, ',');
    parse({"--opt=1,2,"});
    EXPECT_EQ(ints(parameter), (std::vector<int>{1, 2}));
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument '1,2,' not permitted for option 'opt'."});
}

TEST_F(ValueStoreTest, IntVectorElementMustEndAtASeparator) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 0, ',');
    for (const char* word : {"--opt=", "--opt=,1", "--opt=1;2", "--opt=1x,2", "--opt=3,,4"}) {
        parse({word});
    }
    EXPECT_EQ(ints(parameter), std::vector<int>{3});
    EXPECT_EQ(messages().size(), 5U);
}

TEST_F(ValueStoreTest, IntVectorPrefixAloneIsZero) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 0, ',');
    parse({"--opt=0x,1,0x"});
    EXPECT_EQ(ints(parameter), (std::vector<int>{0, 1, 0}));
}

TEST_F(ValueStoreTest, IntVectorOverflowNamesTheTextFromTheNumberOn) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 0, ',');
    parse({"--opt=1,2147483648,2"});
    EXPECT_EQ(messages(),
              (Texts{"3 23131210 Overflow: '2147483648,2' will not fit in an integer.",
                     "3 23131130 Argument '1,2147483648,2' not permitted for option 'opt'."}));
    EXPECT_EQ(ints(parameter), std::vector<int>{1});
}

TEST_F(ValueStoreTest, IntVectorWithoutArgumentAppendsTheImpliedValue) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 9, ',');
    parse({"--bare", "--may", "--may=1,2"});
    EXPECT_EQ(ints(parameter), (std::vector<int>{9, 9, 1, 2}));
}

TEST_F(ValueStoreTest, IntVectorWithoutSeparatorIgnoresItsArgument) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 9);
    m_rows[0].impliedValue = 8;
    EXPECT_EQ(parser().parseWord("--opt", "5"), 2U);
    parse({"--opt=x", "--may=7"});
    EXPECT_EQ(ints(parameter), (std::vector<int>{8, 8, 9}));
    EXPECT_TRUE(messages().empty());
}

TEST_F(ValueStoreTest, Int64VectorWithAndWithoutArgument) {
    uint32_t parameter = addType(ParameterType_INT64_VECTOR, minusOne, ',');
    parse({"--opt=9223372036854775807,-1", "--bare"});
    EXPECT_EQ(int64s(parameter), (std::vector<int64_t>{INT64_MAX, -1, -1}));
    EXPECT_EQ(parameters().lastSet(parameter), 3U);
    parse({"--opt=9223372036854775808"});
    EXPECT_EQ(messages().at(0),
              "3 23131210 Overflow: '9223372036854775808' will not fit in an integer.");
}

TEST_F(ValueStoreTest, Int64VectorWithoutSeparatorIgnoresItsArgument) {
    uint32_t parameter = addType(ParameterType_INT64_VECTOR);
    parse({"--opt=5"});
    EXPECT_EQ(int64s(parameter), std::vector<int64_t>{0});
}

// STRING

TEST_F(ValueStoreTest, StringOfTheCommandLineIsKeptByAddress) {
    uint32_t parameter = addType(ParameterType_STRING);
    const char* word = "value";
    parse({"--opt", word});
    EXPECT_EQ(parameters().textValue(parameter), word);
    EXPECT_TRUE(parser().empty());
}

TEST_F(ValueStoreTest, StringOfAViaFileIsCopied) {
    uint32_t parameter = addType(ParameterType_STRING);
    std::string buffer = "value";
    parser().setViaDepth(1);
    parser().parseWord("--opt", buffer.c_str());
    buffer[0] = 'X';
    EXPECT_STREQ(parameters().textValue(parameter), "value");
    EXPECT_EQ(parser().count(), 1U);
}

TEST_F(ValueStoreTest, StringImpliedValueIsNeverCopied) {
    const char* implied = "implied";
    uint32_t parameter = addType(ParameterType_STRING, addressValue(implied));
    parser().setViaDepth(1);
    parse({"--bare"});
    EXPECT_EQ(parameters().textValue(parameter), implied);
    parse({"--may"});
    EXPECT_EQ(parameters().textValue(parameter), implied);
    EXPECT_TRUE(parser().empty());
}

TEST_F(ValueStoreTest, StringMayImplyNoText) {
    uint32_t parameter = addType(ParameterType_STRING, 0);
    parse({"--opt=x", "--bare"});
    EXPECT_EQ(parameters().textValue(parameter), nullptr);
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
}

TEST_F(ValueStoreTest, StringIsNotSplit) {
    uint32_t parameter = addType(ParameterType_STRING, 0, ',');
    parse({"--opt=a,b"});
    EXPECT_STREQ(parameters().textValue(parameter), "a,b");
}

// STRING_VECTOR

TEST_F(ValueStoreTest, StringVectorWithoutSeparatorAppendsTheTextAsOne) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR);
    const char* word = "a,b";
    parse({"--opt", word, "--opt=c"});
    EXPECT_EQ(texts(parameter), (Texts{"a,b", "c"}));
    EXPECT_EQ(parameters().textList(parameter)->firstNode()->value, word);
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
}

TEST_F(ValueStoreTest, StringVectorIsSplitAtEachSeparatorInACopy) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    const char* word = "a,b,,c,";
    parse({"--opt", word});
    EXPECT_EQ(texts(parameter), (Texts{"a", "b", "", "c", ""}));
    EXPECT_STREQ(word, "a,b,,c,");
    EXPECT_EQ(parser().count(), 1U);
    EXPECT_EQ(parameters().firstSet(parameter), 1U);
    EXPECT_EQ(parameters().lastSet(parameter), 5U);
}

TEST_F(ValueStoreTest, StringVectorWithoutTheSeparatorInTheTextIsKeptByAddress) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    const char* word = "abc";
    parse({"--opt", word});
    EXPECT_EQ(parameters().textList(parameter)->firstNode()->value, word);
    EXPECT_TRUE(parser().empty());
}

TEST_F(ValueStoreTest, StringVectorOfAViaFileIsCopied) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    std::string buffer = "abc";
    parser().setViaDepth(1);
    parser().parseWord("--opt", buffer.c_str());
    buffer = "x,y";
    parser().parseWord("--opt", buffer.c_str());
    buffer = "zzz";
    EXPECT_EQ(texts(parameter), (Texts{"abc", "x", "y"}));
    EXPECT_EQ(parser().count(), 2U);
}

TEST_F(ValueStoreTest, StringVectorBehindItsSeparatorBeginsWithAnEmptyElement) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    parse({"--opt,x"});
    EXPECT_EQ(texts(parameter), (Texts{"", "x"}));
    EXPECT_EQ(messages(), Texts{"1 23131236 Old syntax, please use '--opt=,x'."});
}

TEST_F(ValueStoreTest, StringVectorFailedPieceDoesNotStopTheOthers) {
    static const ValueConstraint noB{nullptr, "a|c", nullptr};
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',', &noB);
    parse({"--opt=a,b,c"});
    EXPECT_EQ(texts(parameter), (Texts{"a", "c"}));
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument 'a,b,c' not permitted for option 'opt'."});
}

TEST_F(ValueStoreTest, StringVectorImpliedTextIsTreatedTheSameWay) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, addressValue("p,q"), ',');
    parse({"--bare"});
    EXPECT_EQ(texts(parameter), (Texts{"p", "q"}));
}

TEST_F(ValueStoreTest, StringVectorImpliedTextIsNotCopiedWhole) {
    const char* implied = "p,q";
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, addressValue(implied));
    parser().setViaDepth(3);
    parse({"--bare"});
    EXPECT_EQ(parameters().textList(parameter)->firstNode()->value, implied);
}

TEST_F(ValueStoreTest, StringVectorMayImplyNoText) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    parse({"--bare"});
    EXPECT_EQ(texts(parameter), Texts{"<null>"});
}

// VIA_FILE

TEST_F(ValueStoreTest, ViaFileNamesCollectInTheList) {
    uint32_t parameter = addType(ParameterType_VIA_FILE);
    const char* word = "/dev/null";
    parse({"--opt", word, "--opt=/dev/null"});
    EXPECT_EQ(texts(parameter), (Texts{"/dev/null", "/dev/null"}));
    EXPECT_EQ(parameters().textList(parameter)->firstNode()->value, word);
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
}

TEST_F(ValueStoreTest, ViaFileNamesAreSplitInACopy) {
    uint32_t parameter = addType(ParameterType_VIA_FILE, 0, ',');
    parse({"--opt=/dev/null,/dev/null"});
    EXPECT_EQ(texts(parameter), (Texts{"/dev/null", "/dev/null"}));
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
    EXPECT_EQ(parser().count(), 1U);
}

TEST_F(ValueStoreTest, ViaFileNamedInAViaFileIsCopied) {
    uint32_t parameter = addType(ParameterType_VIA_FILE);
    std::string buffer = "/dev/null";
    parser().setViaDepth(1);
    parser().parseWord("--opt", buffer.c_str());
    buffer[1] = 'X';
    EXPECT_EQ(texts(parameter), Texts{"/dev/null"});
    EXPECT_EQ(parser().viaDepth(), 1U);
}

TEST_F(ValueStoreTest, ViaFileImpliedName) {
    uint32_t parameter = addType(ParameterType_VIA_FILE, addressValue("/dev/null"));
    parser().setViaDepth(1);
    parse({"--bare"});
    EXPECT_EQ(texts(parameter), Texts{"/dev/null"});
    EXPECT_TRUE(parser().empty());
}

TEST_F(ValueStoreTest, ViaFileWithoutANameFails) {
    uint32_t parameter = addType(ParameterType_VIA_FILE);
    parse({"--bare"});
    EXPECT_TRUE(texts(parameter).empty());
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument '<null>' not permitted for option 'bare'."});
}

TEST_F(ValueStoreTest, ViaFileRejectedByItsConstraintIsNotStamped) {
    static const ValueConstraint dev{nullptr, "/dev/*", nullptr};
    uint32_t parameter = addType(ParameterType_VIA_FILE, 0, ',', &dev);
    parse({"--opt=/etc/none,/dev/null"});
    EXPECT_EQ(texts(parameter), Texts{"/dev/null"});
    EXPECT_EQ(parameters().lastSet(parameter), 1U);
    EXPECT_EQ(messages(),
              Texts{"3 23131130 Argument '/etc/none,/dev/null' not permitted for option 'opt'."});
    EXPECT_EQ(parser().viaDepth(), 0U);
}

TEST_F(ValueStoreTest, UnknownTypeFails) {
    uint32_t parameter = addType(11);
    parse({"--opt=x"});
    EXPECT_FALSE(parameters().isSet(parameter));
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument 'x' not permitted for option 'opt'."});
}

// The listener

TEST_F(ValueStoreTest, ListenerSeesEachValueBeforeItIsStored) {
    uint32_t parameter = addType(ParameterType_INT);
    uint64_t storedAtCall = 99;
    m_listener.takes = [&](uint32_t, uint64_t) {
        storedAtCall = m_values[parameter].value;
        return false;
    };
    parse({"--opt=5"});
    EXPECT_EQ(storedAtCall, 0U);
    using Offer = std::pair<uint32_t, uint64_t>;
    EXPECT_EQ(m_listener.offered, (std::vector<Offer>{{parameter, 5}}));
    EXPECT_EQ(parameters().intValue(parameter), 5);
}

TEST_F(ValueStoreTest, ValueThatTheListenerTakesIsStampedButNotStored) {
    uint32_t parameter = addType(ParameterType_STRING, addressValue("implied"));
    m_listener.takes = [](uint32_t, uint64_t) { return true; };
    EXPECT_EQ(parser().parseWord("--opt", "x"), 2U);
    EXPECT_EQ(parameters().textValue(parameter), nullptr);
    EXPECT_EQ(parameters().lastSet(parameter), 1U);
    EXPECT_TRUE(messages().empty());
}

TEST_F(ValueStoreTest, ListenerSeesVectorsElementByElement) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    Texts seen;
    m_listener.takes = [&](uint32_t, uint64_t value) {
        seen.emplace_back(textOfValue(value));
        return seen.back() == "b";
    };
    parse({"--opt=a,b,c"});
    EXPECT_EQ(seen, (Texts{"a", "b", "c"}));
    EXPECT_EQ(texts(parameter), (Texts{"a", "c"}));
    EXPECT_EQ(parameters().lastSet(parameter), 3U);
}

TEST_F(ValueStoreTest, ListenerThatTakesAllLeavesNoList) {
    uint32_t parameter = addType(ParameterType_INT_VECTOR, 0, ',');
    m_listener.takes = [](uint32_t, uint64_t) { return true; };
    parse({"--opt=1,-1"});
    EXPECT_EQ(parameters().intList(parameter), nullptr);
    EXPECT_EQ(m_listener.offered.at(1).second, minusOne);
    EXPECT_EQ(parameters().lastSet(parameter), 2U);
}

TEST_F(ValueStoreTest, ListenerIsNotAskedAboutRejectedValues) {
    static const ValueConstraint onlyA{nullptr, "a", nullptr};
    addType(ParameterType_STRING, 0, 0, &onlyA);
    parse({"--opt=b"});
    EXPECT_TRUE(m_listener.offered.empty());
}

TEST_F(ValueStoreTest, ParserWorksWithoutAListener) {
    uint32_t parameter = addType(ParameterType_STRING_VECTOR, 0, ',');
    parser();
    dropParser();
    auto index = makeLetterIndex(m_rows);
    m_table.letterIndex = index.data();
    Parser other(m_table, m_values, m_descriptors, m_reporter, nullptr);
    other.parseWord("--opt=a,b", nullptr);
    EXPECT_EQ(other.parameters().textList(parameter)->count(), 2U);
}

// The end of a parser

TEST_F(ValueStoreTest, EndOfTheParserDropsTheVectorsAndKeepsTheRest) {
    uint32_t numbers = addParameter(ParameterType_INT_VECTOR);
    uint32_t wide = addParameter(ParameterType_INT64_VECTOR);
    uint32_t words = addParameter(ParameterType_STRING_VECTOR);
    uint32_t unset = addParameter(ParameterType_STRING_VECTOR);
    uint32_t text = addParameter(ParameterType_STRING);
    uint32_t via = addParameter(ParameterType_VIA_FILE);
    addOption("numbers", numbers, ',');
    addOption("wide", wide, ',');
    addOption("words", words, ',');
    addOption("text", text);
    addOption("via", via);
    parse({"--numbers=1,2", "--wide=3", "--words=a,b", "--text=x", "--via=/dev/null"});
    dropParser();
    EXPECT_EQ(m_values[numbers].value, 0U);
    EXPECT_EQ(m_values[wide].value, 0U);
    EXPECT_EQ(m_values[words].value, 0U);
    EXPECT_EQ(m_values[unset].value, 0U);
    EXPECT_STREQ(textOfValue(m_values[text].value), "x");
    EXPECT_NE(m_values[via].value, 0U);
    EXPECT_EQ(m_values[words].lastSet, 5U);
}

} // namespace tabledrivenparser
