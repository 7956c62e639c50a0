// What the parser tells of its steps.

#include "tests/tabledrivenparser/recording_trace.h"
#include "tests/tabledrivenparser/via_fixture.h"

namespace tabledrivenparser {

namespace {

class TraceHookTest : public ViaTest {
protected:
    void SetUp() override {
        ViaTest::SetUp();
        uint32_t words = addParameter(ParameterType_STRING_VECTOR);
        uint32_t text = addParameter(ParameterType_STRING);
        uint32_t flag = addParameter(ParameterType_BOOLEAN);
        uint32_t other = addParameter(ParameterType_BOOLEAN);
        uint32_t via = addParameter(ParameterType_VIA_FILE);
        addOption("", words);
        addOption("text", text);
        addFlag("x", flag);
        addFlag("y", other);
        addOption("via", via);
    }
    Texts trace() { return std::exchange(m_trace.pieces, {}); }
    void traceFromHere() { parser().setTraceHook(&m_trace); }

    RecordingTrace m_trace;
};

} // namespace

TEST_F(TraceHookTest, ThereIsNoneAtFirst) {
    EXPECT_EQ(parser().traceHook(), nullptr);
    parse({"-x", "a"});
    traceFromHere();
    EXPECT_EQ(parser().traceHook(), &m_trace);
    parser().setTraceHook(nullptr);
    parse({"-x", "a"});
    EXPECT_TRUE(trace().empty());
}

TEST_F(TraceHookTest, SearchAndArgument) {
    traceFromHere();
    parse({"--text=a"});
    EXPECT_EQ(trace(),
              (Texts{"    (Searching for 'text=a').", " (Found 'text').", " (Argument 'a')."}));
    parse({"--TEXT", "b"});
    EXPECT_EQ(trace(),
              (Texts{"    (Searching for 'TEXT').", " (Found 'text').", " (Argument 'b')."}));
    parse({"-x"});
    EXPECT_EQ(trace(), (Texts{"    (Searching for 'x').", " (Found 'x')."}));
    parse({"word"});
    EXPECT_EQ(trace(),
              (Texts{"    (Searching for 'word').", " (Found '').", " (Argument 'word')."}));
    parse({"--none"});
    EXPECT_EQ(trace(), Texts{"    (Searching for 'none')."});
    parse({"--"});
    EXPECT_TRUE(trace().empty());
}

TEST_F(TraceHookTest, LettersOfOneWord) {
    traceFromHere();
    parse({"-xy"});
    EXPECT_EQ(trace(), (Texts{"    (Searching for 'xy').", " (Found 'x').",
                              "single char option: x RETRY: y\n", "    (Searching for 'y').",
                              " (Found 'y')."}));
}

TEST_F(TraceHookTest, FilesAndTheirDepth) {
    const std::string inner = file("-x", "inner");
    const std::string outer = file("--via=" + inner, "outer");
    traceFromHere();
    parse({"--via", outer.c_str()});
    EXPECT_EQ(trace(),
              (Texts{"    (Searching for 'via').", " (Found 'via').",
                     " (Argument '" + outer + "').", "\n    via file '" + outer + "' (depth 1) {\n",
                     "    (Searching for 'via=" + inner + "').", " (Found 'via').",
                     " (Argument '" + inner + "').", "\n    via file '" + inner + "' (depth 2) {\n",
                     "    (Searching for 'x').", " (Found 'x').", "    }\n", "    }\n"}));
}

TEST_F(TraceHookTest, TextInMemory) {
    traceFromHere();
    parseViaText(parser(), "-x");
    EXPECT_EQ(trace(), (Texts{"\n    parse string {\n", "    (Searching for 'x').", " (Found 'x').",
                              "    }\n"}));
}

TEST_F(TraceHookTest, TextsOfAnyLengthAndContent) {
    traceFromHere();
    const std::string word = std::string(9000, 'w') + "%s%n";
    parse({word.c_str()});
    EXPECT_EQ(trace()[0], "    (Searching for '" + word + "').");
}

} // namespace tabledrivenparser
