// Where words of a via file begin and end, and what is left of them.

#include "tests/tabledrivenparser/via_fixture.h"
#include "tests/tabledrivenparser/via_words_model.h"

#include <random>

namespace tabledrivenparser {

namespace {

class ViaTokenTest : public ViaTest {
protected:
    // The words of `text`, which must be the same for a file, for a text in memory and for the
    // model; for what has no comment in it.
    Texts words(const std::string& text) {
        const Texts ofFile = fileWords(text);
        EXPECT_EQ(textWords(text), ofFile) << text;
        EXPECT_EQ(viamodel::wordsOf(text), (viamodel::Words{ofFile, false})) << text;
        EXPECT_EQ(reported(), Texts()) << text;
        return ofFile;
    }
    void expectMalformed(const std::string& text, const Texts& before = {}) {
        EXPECT_EQ(fileWords(text), before) << text;
        EXPECT_EQ(reported(), malformed()) << text;
        EXPECT_EQ(textWords(text), before) << text;
        EXPECT_EQ(reported(), Texts{"3 23131178 Malformed via file ''."}) << text;
        EXPECT_EQ(viamodel::wordsOf(text), (viamodel::Words{before, true})) << text;
    }
};

} // namespace

TEST_F(ViaTokenTest, EmptyFileHasNoWords) {
    EXPECT_EQ(words(""), Texts());
    EXPECT_EQ(words(" \t\r\n\v\f\n"), Texts());
}

TEST_F(ViaTokenTest, WhiteSpaceSeparatesWords) {
    EXPECT_EQ(words("a b\tc\nd\re\vf\fg  \n\n h\n"),
              (Texts{"a", "b", "c", "d", "e", "f", "g", "h"}));
}

TEST_F(ViaTokenTest, WordAtTheEndOfTheFileNeedsNoLineEnd) {
    EXPECT_EQ(words("one two"), (Texts{"one", "two"}));
    EXPECT_EQ(words("one"), Texts{"one"});
}

TEST_F(ViaTokenTest, LineEndsOfAllHosts) {
    EXPECT_EQ(words("one\r\ntwo\rthree\nfour"), (Texts{"one", "two", "three", "four"}));
}

TEST_F(ViaTokenTest, BytesBeyondAsciiAreCharactersLikeOthers) {
    EXPECT_EQ(words("caf\xc3\xa9 \xff\x80 \x01"), (Texts{"caf\xc3\xa9", "\xff\x80", "\x01"}));
}

TEST_F(ViaTokenTest, DoubleQuotesKeepWhiteSpaceAndAreDropped) {
    EXPECT_EQ(words("\"a b\" c"), (Texts{"a b", "c"}));
    EXPECT_EQ(words("a\"b c\"d"), Texts{"ab cd"});
    EXPECT_EQ(words("--x=\"a \tb\""), Texts{"--x=a \tb"});
    EXPECT_EQ(words("\"a\"\" \"\"b\""), Texts{"a b"});
}

TEST_F(ViaTokenTest, SingleQuotesKeepWhiteSpaceAndAreDropped) {
    EXPECT_EQ(words("'a b' c"), (Texts{"a b", "c"}));
    EXPECT_EQ(words("a'b c'd"), Texts{"ab cd"});
}

TEST_F(ViaTokenTest, QuotesOfTheOtherKindAreCharacters) {
    EXPECT_EQ(words("\"it's\" 'say \"x\"'"), (Texts{"it's", "say \"x\""}));
}

TEST_F(ViaTokenTest, EmptyQuotesAreAnEmptyWord) {
    EXPECT_EQ(words("\"\" '' x"), (Texts{"", "", "x"}));
    EXPECT_EQ(words("a\"\"b"), Texts{"ab"});
    EXPECT_EQ(words("\"\""), Texts{""});
}

TEST_F(ViaTokenTest, BackslashBeforeABlankIsNoEscape) {
    EXPECT_EQ(words("abc\\ def"), (Texts{"abc\\", "def"}));
    EXPECT_EQ(words("abc\\\ndef\\"), (Texts{"abc\\", "def\\"}));
}

TEST_F(ViaTokenTest, BackslashInsideDoubleQuotes) {
    EXPECT_EQ(words("\"a\\\"b\""), Texts{"a\"b"});
    EXPECT_EQ(words("\"a\\\\b\""), Texts{"a\\b"});
    EXPECT_EQ(words("\"a\\'b\""), Texts{"a\\'b"});
    EXPECT_EQ(words("\"a\\b\\ c\""), Texts{"a\\b\\ c"});
    EXPECT_EQ(words("\"a\\\\\\\"b\""), Texts{"a\\\"b"});
}

TEST_F(ViaTokenTest, BackslashInsideSingleQuotes) {
    EXPECT_EQ(words("'it\\'s'"), Texts{"it's"});
    EXPECT_EQ(words("'a\\\\b'"), Texts{"a\\b"});
    EXPECT_EQ(words("'a\\\"b'"), Texts{"a\"b"});
    EXPECT_EQ(words("'a\\b'"), Texts{"a\\b"});
}

TEST_F(ViaTokenTest, BackslashOutsideQuotes) {
    EXPECT_EQ(words("a\\\\b"), Texts{"a\\\\b"});
    EXPECT_EQ(words("a\\\"b"), Texts{"a\"b"});
    EXPECT_EQ(words("a\\'b"), Texts{"a\\'b"});
    EXPECT_EQ(words("a\\b c:\\d\\"), (Texts{"a\\b", "c:\\d\\"}));
    // Of two the second has no meaning left to take away.
    EXPECT_EQ(words("\\\\\"a b\""), Texts{"\\\\a b"});
    EXPECT_EQ(words("\\\"\\\""), Texts{"\"\""});
}

TEST_F(ViaTokenTest, ParenthesesKeepWhiteSpaceAndStay) {
    EXPECT_EQ(words("--x=(a b) c"), (Texts{"--x=(a b)", "c"}));
    EXPECT_EQ(words("(a \"b 'c\\ d)e"), Texts{"(a \"b 'c\\ d)e"});
    EXPECT_EQ(words("a)b c"), (Texts{"a)b", "c"}));
    EXPECT_EQ(words("\\(a b)"), Texts{"\\(a b)"});
}

TEST_F(ViaTokenTest, ParenthesesAreNotCounted) {
    EXPECT_EQ(words("((a b) c)"), (Texts{"((a b)", "c)"}));
}

TEST_F(ViaTokenTest, ParenthesesInsideQuotesAreCharacters) {
    EXPECT_EQ(words("\"(\"a b"), (Texts{"(a", "b"}));
    EXPECT_EQ(words("'(' ')'"), (Texts{"(", ")"}));
}

TEST_F(ViaTokenTest, BackslashBeforeADoubleQuoteCountsInsideParentheses) {
    EXPECT_EQ(words("(a\\\"b)"), Texts{"(a\"b)"});
    EXPECT_EQ(words("(a\\\\b\\'c)"), Texts{"(a\\\\b\\'c)"});
}

TEST_F(ViaTokenTest, NothingGoesOnBehindTheEndOfTheLine) {
    for (const char* end : {"", "\n", "\r\n", "\nb\"", "\n)"}) {
        for (const char* open : {"\"a", "'a", "(a", "a\"b", "\"a\\\"", "'a\\'", "\"a\\", "((a"}) {
            expectMalformed(std::string(open) + end);
        }
        expectMalformed(std::string("x y \"a") + end, {"x", "y"});
    }
}

TEST_F(ViaTokenTest, NothingComesBehindAMalformedWord) {
    m_folder.write("f", "a \"b\nc d");
    ViaFile viaFile(m_folder.pathOf("f").c_str(), m_reporter);
    EXPECT_STREQ(viaFile.nextToken(), "a");
    EXPECT_EQ(viaFile.nextToken(), nullptr);
    EXPECT_EQ(viaFile.nextToken(), nullptr);
    EXPECT_EQ(reported(), malformed());
}

TEST_F(ViaTokenTest, NothingComesBehindTheEnd) {
    m_folder.write("f", "a\n");
    ViaFile viaFile(m_folder.pathOf("f").c_str(), m_reporter);
    EXPECT_STREQ(viaFile.nextToken(), "a");
    m_folder.write("f", "a\nb\n");
    EXPECT_EQ(viaFile.nextToken(), nullptr);
    EXPECT_EQ(viaFile.nextToken(), nullptr);
}

TEST_F(ViaTokenTest, CommentsReachToTheEndOfTheLine) {
    EXPECT_EQ(fileWords("# all\n"), Texts());
    EXPECT_EQ(fileWords("# all"), Texts());
    EXPECT_EQ(fileWords("; one\n# two\nword"), Texts{"word"});
    EXPECT_EQ(fileWords("one # x \"y ' ( # ; z\ntwo ; x\n three\n"),
              (Texts{"one", "two", "three"}));
    EXPECT_EQ(reported(), Texts());
}

TEST_F(ViaTokenTest, CommentTakesItsLineEndAlong) {
    EXPECT_EQ(fileWords("one#x\ntwo"), Texts{"onetwo"});
    EXPECT_EQ(fileWords("one;x\rtwo"), Texts{"onetwo"});
    EXPECT_EQ(fileWords("one #x\ntwo"), (Texts{"one", "two"}));
    EXPECT_EQ(fileWords("one#x\n two"), (Texts{"one", "two"}));
    EXPECT_EQ(fileWords("one#x\n#y\n#\ntwo"), Texts{"onetwo"});
    // Of two characters at the end of a line only the first goes.
    EXPECT_EQ(fileWords("one#x\r\ntwo"), (Texts{"one", "two"}));
    EXPECT_EQ(reported(), Texts());
}

TEST_F(ViaTokenTest, CommentCannotBeQuoted) {
    EXPECT_EQ(fileWords("\"a#b\"\nc"), Texts());
    EXPECT_EQ(reported(), malformed());
    EXPECT_EQ(fileWords("\"a#b\"\nc\""), Texts{"ac"});
    EXPECT_EQ(fileWords("a\\#b\nc"), Texts{"a\\c"});
    EXPECT_EQ(reported(), Texts());
    EXPECT_EQ(fileWords("(a;b)\n"), Texts());
    EXPECT_EQ(reported(), malformed());
}

TEST_F(ViaTokenTest, TextInMemoryHasNoComments) {
    EXPECT_EQ(textWords("a#b \";c\" #d"), (Texts{"a#b", ";c", "#d"}));
    EXPECT_EQ(reported(), Texts());
}

TEST_F(ViaTokenTest, TextInMemoryHasNoLimit) {
    const std::string longWord(5000, 'x');
    EXPECT_EQ(textWords(longWord + " \"" + longWord + "\""), (Texts{longWord, longWord}));
    EXPECT_EQ(reported(), Texts());
}

TEST_F(ViaTokenTest, TextInMemoryHoldsItsWords) {
    std::string text = "a \"b c\"";
    DummyViaFile viaFile(text.data(), m_reporter);
    EXPECT_EQ(viaFile.nextToken(), text.data());
    EXPECT_EQ(viaFile.nextToken(), text.data() + 2);
    EXPECT_EQ(viaFile.nextToken(), nullptr);
}

TEST_F(ViaTokenTest, AnyTextGivesTheWordsOfTheModel) {
    std::mt19937 random(24);
    const std::string letters = "aab  \t\n\"\"''\\\\\\()#;\r\v\f,=-";
    int malformedTexts = 0;
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (size_t length = random() % 40; length > 0; --length) {
            text += letters[random() % letters.size()];
        }
        const viamodel::Words model = viamodel::wordsOf(text);
        EXPECT_EQ(textWords(text), model.words) << text;
        EXPECT_EQ(messages().size(), model.isMalformed ? 1U : 0U) << text;
        malformedTexts += model.isMalformed ? 1 : 0;
        if (round % 20 == 0) {
            const viamodel::Words ofFile = viamodel::wordsOf(viamodel::withoutComments(text));
            EXPECT_EQ(fileWords(text), ofFile.words) << text;
            EXPECT_EQ(messages().size(), ofFile.isMalformed ? 1U : 0U) << text;
        }
    }
    EXPECT_GT(malformedTexts, 500);
    EXPECT_LT(malformedTexts, 3500);
}

} // namespace tabledrivenparser
