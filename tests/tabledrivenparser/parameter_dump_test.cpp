// Parameters and rows as text, every type, default and form of a row.

#include "tests/tabledrivenparser/rebuilt_fixture.h"
#include "tests/tabledrivenparser/recording_trace.h"

#include "tabledrivenparser/interface/call_back_parameter.h"
#include "tabledrivenparser/interface/parameter_dump.h"
#include "tabledrivenparser/interface/via_reading.h"

namespace tabledrivenparser {

namespace {

const EnumRow styleRows[] = {{.name = "plain", .value = 1}, {.name = "wide", .value = 2}};
const EnumTable styles = {2, styleRows};

class ParameterDumpTest : public RebuiltTest {
protected:
    // The dump, whose lines must be a call each.
    std::string dump() {
        RecordingTrace trace;
        parser().setTraceHook(&trace);
        dumpParameters(parser());
        parser().setTraceHook(nullptr);
        std::string all;
        for (const std::string& each : trace.pieces) {
            EXPECT_EQ(each.find('\n'), each.size() - 1) << each;
            all += each;
        }
        return all;
    }
};

} // namespace

TEST_F(ParameterDumpTest, TypesUnsetWithTheRowsOfEach) {
    const uint32_t types[] = {
        ParameterType_BOOLEAN,      ParameterType_ENUM,     ParameterType_ADDRESS,
        ParameterType_ADDRESS64,    ParameterType_INT,      ParameterType_INT_VECTOR,
        ParameterType_INT64_VECTOR, ParameterType_STRING,   ParameterType_STRING_VECTOR,
        ParameterType_CALL_BACK,    ParameterType_VIA_FILE, 11};
    const std::string text = "te xt";
    const uint64_t implied[] = {1,
                                2,
                                0xAB,
                                0x123456789A,
                                static_cast<uint64_t>(-3),
                                static_cast<uint64_t>(-4),
                                static_cast<uint64_t>(-5),
                                addressValue(text.c_str()),
                                addressValue(text.c_str()),
                                0,
                                addressValue(text.c_str()),
                                0};
    for (uint32_t type : types) {
        uint32_t parameter = addParameter(type, type == ParameterType_ENUM ? &styles : nullptr);
        static const char* const names[] = {"a", "b", "c", "d", "e", "f",
                                            "g", "h", "i", "j", "k", "l"};
        addFlag(names[parameter], parameter, implied[parameter]);
    }
    m_values[1].value = 1;
    linkRows();
    EXPECT_EQ(dump(), "  0: BOOLEAN unset:false\n"
                      "       'a' public implied parameter:true\n"
                      "  1: ENUM unset:plain\n"
                      "       'b' public implied parameter:wide\n"
                      "  2: ADDRESS unset:0x0\n"
                      "       'c' public implied parameter:0xAB\n"
                      "  3: ADDRESS64 unset:0x0\n"
                      "       'd' public implied parameter:0x123456789A\n"
                      "  4: INT unset:0\n"
                      "       'e' public implied parameter:-3\n"
                      "  5: INT_VECTOR unset:\n"
                      "       'f' public implied parameter:-4\n"
                      "  6: INT64_VECTOR unset:\n"
                      "       'g' public implied parameter:-5\n"
                      "  7: STRING unset:<null>\n"
                      "       'h' public implied parameter:te xt\n"
                      "  8: STRING_VECTOR unset:\n"
                      "       'i' public implied parameter:te xt\n"
                      "  9: CALL_BACK unset:<call back>\n"
                      "       'j' public implied parameter:<call back>\n"
                      " 10: VIA_FILE unset:\n"
                      "       'k' public implied parameter:te xt\n"
                      " 11: [BAD TYPE!] unset:\n"
                      "       'l' public implied parameter:\n");
}

TEST_F(ParameterDumpTest, SettingsWithWhereTheyCameFrom) {
    uint32_t words = addParameter(ParameterType_STRING_VECTOR);
    uint32_t number = addParameter(ParameterType_INT);
    uint32_t masked = addParameter(ParameterType_INT);
    uint32_t free = addParameter(ParameterType_INT);
    uint32_t via = addParameter(ParameterType_VIA_FILE);
    uint32_t numbers = addParameter(ParameterType_INT_VECTOR);
    static const MaskedDefault node{nullptr, 4, nullptr};
    m_descriptors[number].defaultValue = 7;
    m_descriptors[masked].defaultKind = DefaultKind_Masked;
    m_descriptors[masked].defaultValue = addressValue(&node);
    m_descriptors[free].defaultKind = DefaultKind_None;
    addOption("words", words);
    addOption("number", number);
    addOption("masked", masked);
    addOption("free", free);
    addOption("via", via);
    addOption("numbers", numbers, ',');
    parse({"--words=a b", "--words=c\"d", "--words=", "--number=8", "--masked=9", "--free=0",
           "--via=/dev/null", "--numbers=1,2"});
    EXPECT_EQ(dump(), "  0: STRING_VECTOR set from: to:a b,c\"d,\n"
                      "  1: INT set from:7 to:8\n"
                      "  2: INT set from:<list> to:9\n"
                      "  3: INT set from:<none> to:0\n"
                      "  4: VIA_FILE set from: to:/dev/null\n"
                      "  5: INT_VECTOR set from: to:1,2\n");
}

TEST_F(ParameterDumpTest, ValueOfAnyLength) {
    uint32_t text = addParameter(ParameterType_STRING);
    addOption("text", text);
    for (size_t length : {254U, 255U, 256U, 257U, 5000U}) {
        const std::string value(length, 'v');
        parse({"--text", value.c_str()});
        EXPECT_EQ(dump(), "  0: STRING set from:<null> to:" + value + "\n");
    }
}

TEST_F(ParameterDumpTest, FormsOfRows) {
    static const uint32_t masks[] = {1, 0xABC0, 0};
    static const uint32_t noMasks[] = {0};
    uint32_t text = addParameter(ParameterType_STRING);
    addRow({"", text, OptionArgument_Required, 0, nullptr, 0, 0});
    addRow({"a", text, OptionArgument_Required, 0, nullptr, ',', OptionFlag_OldSyntax});
    addRow({"b", text, OptionArgument_Optional, 0, noMasks, 0, OptionFlag_Deprecated});
    addRow({"cc", text, OptionArgument_None, addressValue("x"), masks, ':',
            OptionFlag_OldSyntax | OptionFlag_Deprecated | OptionFlag_Public});
    linkRows();
    EXPECT_EQ(dump(), "  0: STRING unset:<null>\n"
                      "       '' no-flags parameter required\n"
                      "       'a' oldSyntax parameter required separator=','\n"
                      "       'b' deprecated implied parameter:<null> (optional)\n"
                      "       'cc' oldSyntax,deprecated,public implied parameter:x"
                      " soft restriction: 0x1,0xABC0 separator=':'\n");
}

TEST_F(ParameterDumpTest, ProviderThatFailsIsReported) {
    class FakeProvider final : public DefaultProvider {
    public:
        const char* provide(const ParameterDescriptor& /*descriptor*/) override { return "maybe"; }
    };
    FakeProvider provider;
    uint32_t flag = addParameter(ParameterType_BOOLEAN);
    m_descriptors[flag].defaultKind = DefaultKind_Provider;
    m_values[flag].defaultProvider = &provider;
    addFlag("flag", flag);
    linkRows();
    EXPECT_EQ(dump(), "  0: BOOLEAN unset:false\n"
                      "       'flag' public implied parameter:true\n");
    EXPECT_TRUE(messages().empty());
    parse({"--flag"});
    EXPECT_EQ(dump(), "  0: BOOLEAN set from:false to:true\n"
                      "       'flag' public implied parameter:true\n");
    EXPECT_EQ(messages(), Texts{"3 23131130 Argument 'maybe' not permitted for option 'flag'."});
}

TEST_F(ParameterDumpTest, NothingIsDoneWithoutAHook) {
    class FakeProvider final : public DefaultProvider {
    public:
        const char* provide(const ParameterDescriptor& /*descriptor*/) override {
            ++calls;
            return "true";
        }
        int calls = 0;
    };
    FakeProvider provider;
    uint32_t flag = addParameter(ParameterType_BOOLEAN);
    m_descriptors[flag].defaultKind = DefaultKind_Provider;
    m_values[flag].defaultProvider = &provider;
    parser().bumpSequence(flag);
    dumpParameters(parser());
    EXPECT_EQ(provider.calls, 0);
    dump();
    EXPECT_EQ(provider.calls, 1);
}

} // namespace tabledrivenparser
