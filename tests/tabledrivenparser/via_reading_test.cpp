// Via files as part of a command line: what their words do, nesting, stamps, copies, failures.

#include "tests/tabledrivenparser/via_fixture.h"

#include <stdexcept>

namespace tabledrivenparser {

namespace {

class ViaReadingTest : public ViaTest {
protected:
    void SetUp() override {
        ViaTest::SetUp();
        m_words = addParameter(ParameterType_STRING_VECTOR);
        m_text = addParameter(ParameterType_STRING);
        m_flag = addParameter(ParameterType_BOOLEAN);
        m_via = addParameter(ParameterType_VIA_FILE);
        addOption("", m_words);
        addOption("text", m_text);
        addFlag("x", m_flag);
        addOption("via", m_via, ',');
    }
    // Reads "--via PATH" for a file with these bytes.
    void parseFile(std::string_view bytes) {
        m_path = file(bytes);
        parse({"--via", m_path.c_str()});
    }
    const char* textValue() { return parameters().textValue(m_text); }

    uint32_t m_words = 0;
    uint32_t m_text = 0;
    uint32_t m_flag = 0;
    uint32_t m_via = 0;
    std::string m_path;
};

} // namespace

TEST_F(ViaReadingTest, WordsOfTheFileStandWhereItIsNamed) {
    const std::string path = file("b -x \"c d\" --text=e\nf");
    parse({"a", "--via", path.c_str(), "g"});
    EXPECT_EQ(texts(m_words), (Texts{"a", "b", "c d", "f", "g"}));
    EXPECT_TRUE(parameters().boolValue(m_flag));
    EXPECT_STREQ(textValue(), "e");
    EXPECT_EQ(texts(m_via), Texts{path});
    EXPECT_TRUE(reported().empty());
}

TEST_F(ViaReadingTest, EmptyFileAndCommentsAreSilentlyAccepted) {
    for (const char* bytes : {"", "\n\n", "# nothing\n; here"}) {
        parseFile(bytes);
    }
    EXPECT_TRUE(texts(m_words).empty());
    EXPECT_TRUE(reported().empty());
    EXPECT_EQ(parameters().lastSet(m_via), 3U);
}

TEST_F(ViaReadingTest, EmptyWordIsPositional) {
    parseFile("\"\" a");
    EXPECT_EQ(texts(m_words), (Texts{"", "a"}));
}

TEST_F(ViaReadingTest, ValuesOutliveTheBuffer) {
    std::string bytes = "--text=kept first\n";
    for (int line = 0; line < 300; ++line) {
        bytes += "overwriting" + std::to_string(line) + "\n";
    }
    parseFile(bytes);
    EXPECT_STREQ(textValue(), "kept");
    EXPECT_EQ(texts(m_words).size(), 301U);
    EXPECT_EQ(texts(m_words)[0], "first");
    EXPECT_EQ(texts(m_words)[300], "overwriting299");
}

TEST_F(ViaReadingTest, ArgumentCanStandInTheNextWordOfTheFile) {
    parseFile("--text\n-x a");
    EXPECT_STREQ(textValue(), "-x");
    EXPECT_FALSE(parameters().isSet(m_flag));
    EXPECT_EQ(texts(m_words), Texts{"a"});
}

TEST_F(ViaReadingTest, ArgumentIsNotTakenFromBehindTheFile) {
    const std::string path = file("a --text\n");
    parse({"--via", path.c_str(), "b"});
    EXPECT_EQ(reported(), Texts{"3 23131098 Missing argument for option 'text'."});
    EXPECT_EQ(textValue(), nullptr);
    EXPECT_EQ(texts(m_words), (Texts{"a", "b"}));
}

TEST_F(ViaReadingTest, ArgumentIsNotTakenFromBehindANestedFile) {
    const std::string inner = file("--text", "inner");
    parseFile("--via " + inner + " word");
    EXPECT_EQ(reported(), Texts{"3 23131098 Missing argument for option 'text'."});
    EXPECT_EQ(texts(m_words), Texts{"word"});
}

TEST_F(ViaReadingTest, FaultIsFoundOneWordAhead) {
    parseFile("a -x \"open\n");
    EXPECT_EQ(reported(), malformed());
    EXPECT_EQ(texts(m_words), Texts{"a"});
    EXPECT_TRUE(parameters().isSet(m_flag)); // this reporter came back
    bool isAsked = false;
    m_listener.takes = [&](uint32_t parameter, uint64_t) {
        if (parameter == m_flag) {
            isAsked = true;
            EXPECT_EQ(reported(), malformed());
        }
        return false;
    };
    parseFile("-x \"open\n");
    EXPECT_TRUE(isAsked);
}

TEST_F(ViaReadingTest, EndOfOptionsHoldsBehindTheFile) {
    const std::string path = file("-x -- --text=a\n");
    parse({"--via", path.c_str(), "-x", "--"});
    EXPECT_EQ(texts(m_words), (Texts{"--text=a", "-x", "--"}));
    EXPECT_TRUE(parser().endOfOptions());
}

TEST_F(ViaReadingTest, EndOfOptionsOutsideHoldsInsideAsWell) {
    const std::string inner = file("-x", "inner");
    parseFile("-- --via " + inner);
    EXPECT_EQ(texts(m_words), (Texts{"--via", inner}));
    EXPECT_EQ(texts(m_via), Texts{m_path});
}

TEST_F(ViaReadingTest, StampsTellWhenAFileWasReadToItsEnd) {
    const std::string inner = file("-x", "inner");
    parseFile("--text=a --via=" + inner + " b");
    EXPECT_EQ(parameters().lastSet(m_text), 1U);
    EXPECT_EQ(parameters().lastSet(m_flag), 2U);
    EXPECT_EQ(parameters().firstSet(m_via), 3U); // of the inner file, which ends first
    EXPECT_EQ(parameters().lastSet(m_words), 4U);
    EXPECT_EQ(parameters().lastSet(m_via), 5U);
    EXPECT_EQ(texts(m_via), (Texts{m_path, inner})); // in the order of opening
}

TEST_F(ViaReadingTest, NameIsCopiedOnlyIfItComesFromAFile) {
    const std::string inner = file("", "inner");
    parseFile("--via=" + inner);
    const StrList& files = *parameters().textList(m_via);
    EXPECT_EQ(files.firstNode()->value, m_path.c_str());
    EXPECT_EQ(parser().count(), 1U); // of the inner name
}

TEST_F(ViaReadingTest, SeveralFilesInOneArgument) {
    const std::string one = file("1 --text=a", "one");
    const std::string two = file("2 --text=b", "two");
    parse({"--via", (one + "," + two).c_str(), "3"});
    EXPECT_EQ(texts(m_words), (Texts{"1", "2", "3"}));
    EXPECT_STREQ(textValue(), "b");
    EXPECT_EQ(texts(m_via), (Texts{one, two}));
}

TEST_F(ViaReadingTest, SameFileCanBeReadTwice) {
    const std::string path = file("a");
    parse({"--via", path.c_str(), "--via", path.c_str()});
    EXPECT_EQ(texts(m_words), (Texts{"a", "a"}));
    EXPECT_EQ(texts(m_via), (Texts{path, path}));
}

TEST_F(ViaReadingTest, NineNestedFilesWork) {
    for (int level = 1; level <= 9; ++level) {
        const std::string next = m_folder.pathOf("f" + std::to_string(level + 1));
        const std::string words = "in" + std::to_string(level) + " ";
        file(level < 9 ? words + "--via " + next + " out" + std::to_string(level) : words,
             "f" + std::to_string(level));
    }
    uint32_t deepest = 0;
    m_listener.takes = [&](uint32_t, uint64_t) {
        deepest = std::max(deepest, parser().viaDepth());
        return false;
    };
    parse({"--via", m_folder.pathOf("f1").c_str()});
    EXPECT_TRUE(reported().empty());
    EXPECT_EQ(texts(m_words),
              (Texts{"in1", "in2", "in3", "in4", "in5", "in6", "in7", "in8", "in9", "out8", "out7",
                     "out6", "out5", "out4", "out3", "out2", "out1"}));
    EXPECT_EQ(deepest, 9U);
    EXPECT_EQ(parser().viaDepth(), 0U);
}

TEST_F(ViaReadingTest, FileThatNamesItselfFailsAtTheTenthLevel) {
    const std::string path = m_folder.pathOf("f");
    parseFile("a --via " + path);
    const Texts told = reported();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told[0], "3 23131114 Recursive via file inclusion depth of 10 reached in file 'f'.");
    EXPECT_EQ(texts(m_words), Texts(9, "a"));
    EXPECT_EQ(texts(m_via), Texts(9, path));
    EXPECT_EQ(parser().viaDepth(), 0U);
}

TEST_F(ViaReadingTest, TextInMemoryCountsAsALevel) {
    const std::string path = m_folder.pathOf("f");
    file("a --via " + path);
    parseViaText(parser(), ("--via=" + path).c_str());
    EXPECT_EQ(texts(m_words), Texts(8, "a"));
    EXPECT_EQ(parser().viaDepth(), 0U);
}

TEST_F(ViaReadingTest, RejectedNameIsNotRead) {
    static const ValueConstraint none{nullptr, "none", nullptr};
    m_descriptors[m_via].constraints = &none;
    parseFile("a");
    EXPECT_EQ(reported(), Texts{"3 23131130 Argument 'f' not permitted for option 'via'."});
    EXPECT_TRUE(texts(m_words).empty());
    EXPECT_FALSE(parameters().isSet(m_via));
    EXPECT_EQ(parser().viaDepth(), 0U);
}

TEST_F(ViaReadingTest, NameThatTheListenerTakesIsReadAndNotStored) {
    m_listener.takes = [&](uint32_t parameter, uint64_t) { return parameter == m_via; };
    parseFile("a");
    EXPECT_EQ(texts(m_words), Texts{"a"});
    EXPECT_TRUE(texts(m_via).empty());
    EXPECT_TRUE(parameters().isSet(m_via));
}

TEST_F(ViaReadingTest, FileThatCannotBeOpenedEndsTheReading) {
    const std::string path = m_folder.pathOf("none");
    parse({"--via", path.c_str()});
    EXPECT_EQ(reported(), Texts{"3 23131146 Could not open via file 'none'."});
    EXPECT_TRUE(texts(m_words).empty());
    EXPECT_EQ(parser().viaDepth(), 0U);
}

TEST_F(ViaReadingTest, SelectivePassReadsFilesForItsParametersOnly) {
    const std::string path = file("-x --text=a b");
    const uint32_t filter[] = {m_text};
    const char* const words[] = {"--via", path.c_str(), "-x"};
    WordArray source(words);
    parser().parseWords(source, 1, filter);
    EXPECT_STREQ(textValue(), "a");
    EXPECT_FALSE(parameters().isSet(m_flag));
    EXPECT_TRUE(texts(m_words).empty());
    EXPECT_TRUE(reported().empty());
}

TEST_F(ViaReadingTest, TextInMemoryIsReadLikeAFile) {
    const char* text = "a -x \"b c\" --text d";
    parseViaText(parser(), text);
    EXPECT_STREQ(text, "a -x \"b c\" --text d");
    EXPECT_EQ(texts(m_words), (Texts{"a", "b c"}));
    EXPECT_STREQ(textValue(), "d");
    EXPECT_TRUE(parameters().isSet(m_flag));
    EXPECT_FALSE(parameters().isSet(m_via));
    EXPECT_EQ(parser().count(), 3U); // the values were copied
}

TEST_F(ViaReadingTest, TextInMemoryCanBeReadInPlace) {
    std::string text = "a --text=\"b c\"";
    parseViaTextInPlace(parser(), text.data());
    EXPECT_NE(text, "a --text=\"b c\"");
    text.assign(text.size(), '!');
    EXPECT_EQ(texts(m_words), Texts{"a"});
    EXPECT_STREQ(textValue(), "b c");
}

TEST_F(ViaReadingTest, TextInMemoryObeysTheFilter) {
    const uint32_t filter[] = {m_flag};
    parseViaText(parser(), "-x --text=a b", 1, filter);
    EXPECT_TRUE(parameters().isSet(m_flag));
    EXPECT_FALSE(parameters().isSet(m_text));
    std::string text = "-x --text=a b";
    parseViaTextInPlace(parser(), text.data(), 1, filter);
    EXPECT_EQ(parameters().lastSet(m_flag), 2U);
    EXPECT_FALSE(parameters().isSet(m_text));
    EXPECT_TRUE(reported().empty());
}

TEST_F(ViaReadingTest, ExceptionThatPassesThroughLeavesNothingOpen) {
    m_listener.takes = [&](uint32_t parameter, uint64_t) {
        if (parameter == m_text) {
            throw std::runtime_error("enough");
        }
        return false;
    };
    const std::string inner = file("--text=a", "inner");
    const auto before = openFiles();
    EXPECT_THROW(parseFile("--via=" + inner), std::runtime_error);
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(parser().viaDepth(), 0U);
    EXPECT_FALSE(parameters().isSet(m_via));
}

TEST_F(ViaReadingTest, FileIsClosedAtItsEnd) {
    const std::string path = file("a");
    // Far more files than a process may have open.
    for (int count = 0; count < 3000; ++count) {
        parse({"--via", path.c_str()});
    }
    EXPECT_TRUE(reported().empty());
    EXPECT_EQ(texts(m_words).size(), 3000U);
}

} // namespace tabledrivenparser
