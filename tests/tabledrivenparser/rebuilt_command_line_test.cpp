// Which parameters are shown, in which order and spelling, and what counts as a default.

#include "tests/tabledrivenparser/rebuilt_fixture.h"

#include "tabledrivenparser/interface/call_back_parameter.h"
#include "tabledrivenparser/interface/unknown_option_handler.h"
#include "tabledrivenparser/interface/value_writer.h"
#include "tabledrivenparser/interface/via_reading.h"

namespace tabledrivenparser {

namespace {

const uint32_t maskOne[] = {1, 0};
const uint32_t maskTwo[] = {2, 0};

class FakeProvider final : public DefaultProvider {
public:
    const char* provide(const ParameterDescriptor& /*descriptor*/) override {
        ++calls;
        return text;
    }
    const char* text = nullptr;
    int calls = 0;
};

class RebuiltCommandLineTest : public RebuiltTest {
protected:
    void SetUp() override {
        RebuiltTest::SetUp();
        m_flag = addParameter(ParameterType_BOOLEAN);
        m_number = addParameter(ParameterType_INT);
        m_words = addParameter(ParameterType_STRING_VECTOR);
        m_text = addParameter(ParameterType_STRING);
        addOption("", m_words);
        addFlag("f", m_flag);
        addFlag("flag", m_flag);
        addFlag("no_flag", m_flag, 0);
        addOption("number", m_number);
        addOption("text", m_text);
        addOption("t", m_text);
    }
    void setDefault(uint32_t parameter, uint32_t kind, uint64_t value) {
        m_descriptors[parameter].defaultKind = kind;
        m_descriptors[parameter].defaultValue = value;
        m_values[parameter].value = kind == DefaultKind_Value ? value : 0;
    }

    uint32_t m_flag = 0;
    uint32_t m_number = 0;
    uint32_t m_words = 0;
    uint32_t m_text = 0;
};

using IsDefaultTest = RebuiltCommandLineTest;

} // namespace

TEST_F(RebuiltCommandLineTest, NothingSetIsAnEmptyLine) {
    EXPECT_EQ(rebuiltFrom({}), "");
}

TEST_F(RebuiltCommandLineTest, OrderIsThatOfTheParametersWithThePositionalWordsLast) {
    EXPECT_EQ(rebuiltFrom({"lib.a", "--text", "v", "x.o", "--number=5", "-f"}),
              "--flag --number=5 --text=v lib.a x.o");
}

TEST_F(RebuiltCommandLineTest, LastSettingIsShown) {
    EXPECT_EQ(rebuiltFrom({"--number=5", "--number=6", "-t", "a", "--text=b"}),
              "--number=6 --text=b");
}

TEST_F(RebuiltCommandLineTest, SettingToTheDefaultIsNotShown) {
    EXPECT_EQ(rebuiltFrom({"--no-flag", "--number=0"}), "");
}

TEST_F(RebuiltCommandLineTest, NoFormBehindTheFlagIsShownIfItIsAChange) {
    EXPECT_EQ(rebuiltFrom({"--flag", "--no_flag"}), "");
    dropParser();
    m_values = std::vector<ParameterValue>(m_values.size());
    setDefault(m_flag, DefaultKind_Value, 1);
    EXPECT_EQ(rebuiltFrom({"--flag", "--no_flag"}), "--no_flag");
    parse({"--flag"});
    EXPECT_EQ(rebuilt(), "");
}

TEST_F(RebuiltCommandLineTest, ParameterThatNoRowCanShowIsLeftOut) {
    uint32_t odd = addParameter(ParameterType_BOOLEAN);
    linkRows();
    parser().bumpSequence(odd);
    m_values[odd].value = 1;
    EXPECT_EQ(rebuilt(), "");
}

TEST_F(RebuiltCommandLineTest, OptionalArgumentIsShownIfItIsNotTheImpliedOne) {
    uint32_t level = addParameter(ParameterType_INT);
    addOption("level", level, 0, OptionFlag_Public, OptionArgument_Optional, 3);
    EXPECT_EQ(rebuiltFrom({"--level"}), "--level");
    parse({"--level=4"});
    EXPECT_EQ(rebuilt(), "--level=4");
    parse({"--level=3"});
    EXPECT_EQ(rebuilt(), "--level");
}

TEST_F(RebuiltCommandLineTest, EndOfOptionsStandsBeforeThePositionalWords) {
    EXPECT_EQ(rebuiltFrom({"-f", "lib.a", "--", "-x", "--"}), "--flag -- lib.a -x --");
}

TEST_F(RebuiltCommandLineTest, EndOfOptionsIsNotShownWithoutPositionalWords) {
    EXPECT_EQ(rebuiltFrom({"-f", "--"}), "--flag");
}

TEST_F(RebuiltCommandLineTest, EndOfOptionsHasItsSeparatorInAnyCase) {
    EXPECT_EQ(rebuiltFrom({"--", "x"}), " -- x");
}

TEST_F(RebuiltCommandLineTest, EndOfOptionsIsAddedForWordsThatLookLikeOptions) {
    EXPECT_EQ(rebuiltFrom({"-", "=-"}), "- -");
    parse({"a", "=-f"});
    EXPECT_EQ(rebuilt(), " -- - - a -f");
    parse({"--"});
    EXPECT_EQ(rebuilt(), " -- - - a -f");
}

TEST_F(RebuiltCommandLineTest, PositionalTextCanLookLikeAnOptionToo) {
    m_descriptors[m_words].type = ParameterType_STRING;
    EXPECT_EQ(rebuiltFrom({"-f", "a"}), "--flag a");
    parse({"=--flag"});
    EXPECT_EQ(rebuilt(), "--flag -- --flag");
}

TEST_F(RebuiltCommandLineTest, PositionalWordsAreBareAndQuotedAsNeeded) {
    EXPECT_EQ(rebuiltFrom({"my lib.a", "-", "", "a,b", "q\"r"}), "\"my lib.a\" - \"\" a,b q\\\"r");
}

TEST_F(RebuiltCommandLineTest, RestrictedPositionalRowIsNotShown) {
    static const uint32_t four[] = {4, 0};
    for (OptionRow& each : m_rows) {
        if (each.name[0] == 0) {
            each.restrictions = four;
        }
    }
    m_table.activeMask = 4;
    EXPECT_EQ(rebuiltFrom({"a", "-f"}), "--flag a");
    dropParser();
    m_values = std::vector<ParameterValue>(m_values.size());
    m_table.activeMask = 8;
    EXPECT_EQ(rebuiltFrom({"a", "-f"}), "--flag");
}

TEST_F(RebuiltCommandLineTest, TableWithoutPositionalRow) {
    m_rows.erase(m_rows.begin());
    EXPECT_EQ(rebuiltFrom({"--flag"}), "--flag");
}

TEST_F(RebuiltCommandLineTest, TableWithoutRows) {
    m_rows.clear();
    EXPECT_EQ(rebuiltFrom({}), "");
}

TEST_F(RebuiltCommandLineTest, ViaFilesAreLeftOutAndTheirWordsShown) {
    uint32_t via = addParameter(ParameterType_VIA_FILE);
    addOption("via", via);
    linkRows();
    parseViaText(parser(), "--via /dev/null a --flag");
    EXPECT_TRUE(parameters().isSet(via));
    EXPECT_EQ(rebuilt(), "--flag a");
}

TEST_F(RebuiltCommandLineTest, VectorsAreJoinedOrRepeated) {
    uint32_t joined = addParameter(ParameterType_STRING_VECTOR);
    uint32_t repeated = addParameter(ParameterType_STRING_VECTOR);
    uint32_t numbers = addParameter(ParameterType_INT_VECTOR);
    addOption("joined", joined, ',');
    addOption("repeated", repeated);
    addOption("numbers", numbers, ':');
    EXPECT_EQ(rebuiltFrom({"--numbers=1:2", "--repeated=a,b", "--joined=c,d", "--repeated", "e f",
                           "--joined=g"}),
              "--joined=c,d,g --repeated=a,b --repeated=\"e f\" --numbers=1:2");
}

TEST_F(RebuiltCommandLineTest, NameOfAnEnumerationIsThatOfTheFirstRowWithTheValue) {
    static const EnumRow rows[] = {
        {.name = "one", .value = 1}, {.name = "two", .value = 2}, {.name = "deux", .value = 2}};
    static const EnumTable table = {3, rows};
    uint32_t style = addParameter(ParameterType_ENUM, &table);
    addOption("style", style);
    setDefault(style, DefaultKind_Value, 1);
    EXPECT_EQ(rebuiltFrom({"--style=deux"}), "--style=two");
    parse({"--style=one"});
    EXPECT_EQ(rebuilt(), "");
}

TEST_F(RebuiltCommandLineTest, CallBackDescribesItself) {
    class FakeCallBack final : public CallBackParameter {
    public:
        uint32_t invoke(Parser& /*parser*/, const OptionRow& /*row*/, uint32_t /*dashes*/,
                        const char* /*text*/, const char* /*argument*/) override {
            return 1;
        }
        void describe(Parser& parser, const OptionRow* row, TextBuffer& buffer) override {
            seenParser = &parser;
            writeOption(buffer, row->name);
            buffer.addText(":described");
        }
        void reset() override {}
        Parser* seenParser = nullptr;
    };
    FakeCallBack callBack;
    CallBackHolder holder{&callBack};
    uint32_t call = addParameter(ParameterType_CALL_BACK);
    uint32_t unheld = addParameter(ParameterType_CALL_BACK);
    addFlag("call", call);
    addFlag("unheld", unheld);
    m_values[call].value = addressValue(&holder);
    EXPECT_EQ(rebuiltFrom({"--call", "-f", "a"}), "--flag --call:described a");
    EXPECT_EQ(callBack.seenParser, &parser());
    parser().bumpSequence(unheld);
    EXPECT_EQ(rebuilt(), "--flag --call:described a");
}

TEST_F(RebuiltCommandLineTest, HandlerOfUnknownOptionsDescribesItselfBeforeThePositionalWords) {
    class FakeHandler final : public UnknownOptionHandler {
    public:
        uint32_t handle(Parser& /*parser*/, const OptionRow* /*row*/, uint32_t /*dashes*/,
                        const char* /*text*/, const char* /*nextWord*/) override {
            return 1;
        }
        void describe(Parser& /*parser*/, TextBuffer& buffer) override {
            writeOption(buffer, "unknown");
        }
    };
    FakeHandler handler;
    m_table.unknownOptionHandler = &handler;
    EXPECT_EQ(rebuiltFrom({"--unknown", "a", "-f"}), "--flag --unknown a");
}

TEST_F(RebuiltCommandLineTest, HandlerWithNothingToShowShowsNothing) {
    class FakeHandler final : public UnknownOptionHandler {
    public:
        uint32_t handle(Parser& /*parser*/, const OptionRow* /*row*/, uint32_t /*dashes*/,
                        const char* /*text*/, const char* /*nextWord*/) override {
            return 1;
        }
    };
    FakeHandler handler;
    m_table.unknownOptionHandler = &handler;
    EXPECT_EQ(rebuiltFrom({"--unknown", "a"}), "a");
}

TEST_F(RebuiltCommandLineTest, LongLineTellsTheSizeForTheSecondTry) {
    linkRows();
    parse({"--text=abc", "lib.a"});
    const std::string line = "--text=abc lib.a";
    for (uint32_t capacity = 0; capacity <= line.size() + 2; ++capacity) {
        std::string room(line.size() + 2, '!');
        TextBuffer buffer{capacity, room.data(), 0, 1, ' ', 0};
        EXPECT_EQ(rebuildCommandLine(parser(), buffer), line.size() + 1);
        EXPECT_EQ(buffer.fits(), capacity > line.size());
        std::string expected = line + '\0' + '!';
        if (capacity < expected.size()) {
            std::fill(expected.begin() + capacity, expected.end(), '!');
        }
        EXPECT_EQ(room, expected);
    }
}

TEST_F(IsDefaultTest, NumbersAndTruthValuesCompareIn32Bits) {
    linkRows();
    setDefault(m_number, DefaultKind_Value, 0xFFFFFFFF);
    parse({"--number=-1"});
    EXPECT_TRUE(isDefault(parameters(), m_number, 1));
    parse({"--number=1"});
    EXPECT_FALSE(isDefault(parameters(), m_number, 1));
    EXPECT_TRUE(isDefault(parameters(), m_flag, 1));
    parse({"--flag"});
    EXPECT_FALSE(isDefault(parameters(), m_flag, 1));
}

TEST_F(IsDefaultTest, WideAddressesCompareIn64Bits) {
    uint32_t wide = addParameter(ParameterType_ADDRESS64);
    uint32_t narrow = addParameter(ParameterType_ADDRESS);
    for (uint32_t parameter : {wide, narrow}) {
        setDefault(parameter, DefaultKind_Value, 0x100000005);
        m_values[parameter].value = 5;
    }
    EXPECT_FALSE(isDefault(parameters(), wide, 1));
    EXPECT_TRUE(isDefault(parameters(), narrow, 1));
}

TEST_F(IsDefaultTest, TextsCompareByTheirCharacters) {
    const std::string usual = "usual";
    setDefault(m_text, DefaultKind_Value, addressValue("usual"));
    m_values[m_text].value = addressValue(usual.c_str());
    EXPECT_TRUE(isDefault(parameters(), m_text, 1));
    m_values[m_text].value = addressValue("Usual");
    EXPECT_FALSE(isDefault(parameters(), m_text, 1));
    m_values[m_text].value = 0;
    EXPECT_FALSE(isDefault(parameters(), m_text, 1));
    setDefault(m_text, DefaultKind_Value, 0);
    EXPECT_TRUE(isDefault(parameters(), m_text, 1));
    m_values[m_text].value = addressValue("");
    EXPECT_FALSE(isDefault(parameters(), m_text, 1));
}

TEST_F(IsDefaultTest, VectorsAreAtTheirDefaultIfBothAreEmpty) {
    StrList empty;
    StrList full("x");
    StrList same("x");
    auto isAtDefault = [&](const StrList* value, const StrList* usual) {
        m_descriptors[m_words].defaultValue = addressValue(usual);
        m_values[m_words].value = addressValue(value);
        bool result = isDefault(parameters(), m_words, 1);
        m_values[m_words].value = 0;
        return result;
    };
    EXPECT_TRUE(isAtDefault(nullptr, nullptr));
    EXPECT_TRUE(isAtDefault(&empty, nullptr));
    EXPECT_TRUE(isAtDefault(nullptr, &empty));
    EXPECT_FALSE(isAtDefault(&full, nullptr));
    EXPECT_FALSE(isAtDefault(nullptr, &full));
    EXPECT_FALSE(isAtDefault(&full, &same));
}

TEST_F(IsDefaultTest, VectorsOfNumbersToo) {
    uint32_t ints = addParameter(ParameterType_INT_VECTOR);
    uint32_t longs = addParameter(ParameterType_INT64_VECTOR);
    addOption("ints", ints, ',');
    addOption("longs", longs, ',');
    EXPECT_TRUE(isDefault(parameters(), ints, 1));
    EXPECT_TRUE(isDefault(parameters(), longs, 1));
    parse({"--ints=0"});
    EXPECT_FALSE(isDefault(parameters(), ints, 1));
    EXPECT_TRUE(isDefault(parameters(), longs, 1));
    parse({"--longs=0"});
    EXPECT_FALSE(isDefault(parameters(), longs, 1));
}

TEST_F(IsDefaultTest, NothingToCompareWithIsAlwaysAChange) {
    setDefault(m_number, DefaultKind_None, 0);
    EXPECT_FALSE(isDefault(parameters(), m_number, 1));
    EXPECT_EQ(rebuiltFrom({"--number=0"}), "--number=0");
}

TEST_F(IsDefaultTest, MaskedDefaultIsThatOfTheMask) {
    const MaskedDefault second{maskTwo, 7, nullptr};
    const MaskedDefault first{maskOne, 5, &second};
    setDefault(m_number, DefaultKind_Masked, addressValue(&first));
    m_values[m_number].value = 7;
    EXPECT_FALSE(isDefault(parameters(), m_number, 1));
    EXPECT_TRUE(isDefault(parameters(), m_number, 2));
    EXPECT_FALSE(isDefault(parameters(), m_number, 4));
    m_values[m_number].value = 0;
    EXPECT_TRUE(isDefault(parameters(), m_number, 4));
}

TEST_F(IsDefaultTest, ProviderIsAskedAndItsFailureIsAChange) {
    FakeProvider provider;
    setDefault(m_flag, DefaultKind_Provider, 0);
    EXPECT_FALSE(isDefault(parameters(), m_flag, 1));
    m_values[m_flag].defaultProvider = &provider;
    EXPECT_FALSE(isDefault(parameters(), m_flag, 1));
    EXPECT_TRUE(messages().empty()); // a null answer is no fault here
    provider.text = "false";
    EXPECT_TRUE(isDefault(parameters(), m_flag, 1));
    provider.text = "true";
    EXPECT_FALSE(isDefault(parameters(), m_flag, 1));
    EXPECT_TRUE(messages().empty());
    provider.text = "maybe";
    isDefault(parameters(), m_flag, 1);
    EXPECT_EQ(messages(),
              Texts{"3 23131130 Argument 'maybe' not permitted for option '<unknown>'."});
}

TEST_F(IsDefaultTest, OtherTypesAreAlwaysAChange) {
    uint32_t call = addParameter(ParameterType_CALL_BACK);
    uint32_t via = addParameter(ParameterType_VIA_FILE);
    EXPECT_FALSE(isDefault(parameters(), call, 1));
    EXPECT_FALSE(isDefault(parameters(), via, 1));
}

} // namespace tabledrivenparser
