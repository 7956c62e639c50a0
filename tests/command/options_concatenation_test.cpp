// Several letters behind one dash.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

std::string repeated(const std::string& letter, const std::string& word) {
    return "Warning: L3920W: Option '-" + letter + "' repeated in concatenated options '-" + word +
           "'.\n";
}

class OptionsConcatenation : public CommandCase {
protected:
    OptionsConcatenation() { library("lib.a", {"a.o"}); }

    std::string verboseList() const { return tomex({"-t", "-v", "lib.a"}).output; }
};

TEST_F(OptionsConcatenation, OrderOfTheLettersDoesNotMatter) {
    const std::string list = verboseList();
    EXPECT_TRUE(list.starts_with("rw-------")) << list;
    EXPECT_TRUE(ended(tomex({"-tv", "lib.a"}), 0, list, ""));
    EXPECT_TRUE(ended(tomex({"-vt", "lib.a"}), 0, list, ""));
    EXPECT_TRUE(ended(tomex({"-v", "lib.a", "-t"}), 0, list, ""));
}

TEST_F(OptionsConcatenation, RepeatedLetterWarns) {
    EXPECT_TRUE(ended(tomex({"-tt", "lib.a"}), 0, "a.o\n", repeated("t", "tt")));
    EXPECT_TRUE(ended(tomex({"-vtv", "lib.a"}), 0, verboseList(), repeated("v", "vtv")));
    EXPECT_TRUE(ended(tomex({"-ttv", "lib.a"}), 0, verboseList(), repeated("t", "ttv")));
}

TEST_F(OptionsConcatenation, RepeatedLetterWarnsOnceForEachEarlierOne) {
    EXPECT_TRUE(ended(tomex({"-ttt", "lib.a"}), 0, "a.o\n",
                      repeated("t", "ttt") + repeated("t", "ttt") + repeated("t", "ttt")));
}

TEST_F(OptionsConcatenation, LettersOfOneMeaningAreRepetitions) {
    file("a.o", "new");
    EXPECT_TRUE(ended(tomex({"-rq", "lib.a", "a.o"}), 0, "", repeated("q", "rq") + notElf("a.o")));
    EXPECT_TRUE(
        ended(tomex({"-qcr", "lib.a", "a.o"}), 0, "", repeated("r", "qcr") + notElf("a.o")));
}

TEST_F(OptionsConcatenation, RepetitionInOtherWordsIsNone) {
    EXPECT_TRUE(ended(tomex({"-t", "-t", "lib.a"}), 0, "a.o\n", ""));
    EXPECT_TRUE(ended(tomex({"-tC", "-tT", "lib.a"}), 0, "a.o\n", ""));
}

TEST_F(OptionsConcatenation, LettersOfDifferentCaseAreDifferentOptions) {
    EXPECT_TRUE(ended(tomex({"-tTcC", "lib.a"}), 0, "a.o\n", ""));
}

TEST_F(OptionsConcatenation, LetterInTheWrongCaseWarnsInsideAWord) {
    EXPECT_TRUE(ended(tomex({"-tN", "lib.a"}), 0, "a.o\n",
                      "Warning: L3910W: Old syntax, please use '-n'.\n"));
    EXPECT_EQ(archive().table("/"), nullptr);
}

TEST_F(OptionsConcatenation, LetterWithArgumentCannotStandInside) {
    const std::string line = "Fatal error: L3917U: Concatenated options cannot have arguments: -";
    EXPECT_TRUE(ended(tomex({"-ra", "pos", "lib.a"}), 1, "", line + "a pos\n"));
    EXPECT_TRUE(ended(tomex({"-rapos", "lib.a"}), 1, "", line + "a pos\n"));
    EXPECT_TRUE(ended(tomex({"-mvb", "lib.a"}), 1, "", line + "b lib.a\n"));
}

TEST_F(OptionsConcatenation, LetterWithArgumentInsideTheLastWordMissesIt) {
    EXPECT_TRUE(ended(tomex({"lib.a", "-ra"}), 1, "",
                      "Fatal error: L3901U: Missing argument for option 'a'.\n"));
}

TEST_F(OptionsConcatenation, LetterWithArgumentInFrontTakesTheRest) {
    EXPECT_TRUE(
        ended(tomex({"-av", "-t", "lib.a"}), 1, "", "Error: L6841E: Position 'v' not found\n"));
}

TEST_F(OptionsConcatenation, UnknownLetterIsNamedAlone) {
    EXPECT_TRUE(
        ended(tomex({"-tz", "lib.a"}), 1, "", "Fatal error: L3900U: Unrecognized option '-z'.\n"));
    EXPECT_TRUE(ended(tomex({"-tzv", "lib.a"}), 1, "",
                      "Fatal error: L3900U: Unrecognized option '-zv'.\n"));
    EXPECT_TRUE(
        ended(tomex({"-t-", "lib.a"}), 1, "", "Fatal error: L3900U: Unrecognized option '--'.\n"));
}

TEST_F(OptionsConcatenation, LongNameCanEndAWordInOldSyntax) {
    EXPECT_TRUE(ended(tomex({"-tvsn", "lib.a"}), 0, "a.o\n",
                      "Warning: L3910W: Old syntax, please use '--vsn'.\n"));
}

TEST_F(OptionsConcatenation, LongerNameWins) {
    EXPECT_TRUE(ended(tomex({"-vsn", "-t", "lib.a"}), 0, "a.o\n",
                      "Warning: L3910W: Old syntax, please use '--vsn'.\n"));
    EXPECT_NE(archive().table("/"), nullptr); // "-v -s -n" would have dropped it
}

} // namespace
} // namespace commandtest
