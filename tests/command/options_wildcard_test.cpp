// Words of the file list: as names of files, wildcards and all, when files are inserted; as
// patterns of members in every other case. The program gets the words as a shell passes them when
// quoted.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

std::string noFile(const std::string& name) {
    return "Error: L6833E: File '" + name + "' does not exist\n";
}

constexpr char isFolder[] = "Error: L6835E: Reading file 'lib.a' : Is a directory\n"
                            "Error: L6830E: Writing file 'lib.a' : Is a directory\n";

class OptionsWildcard : public CommandCase {
protected:
    void files(const Words& names) const {
        for (const std::string& name : names) {
            file(name, name);
        }
    }
    // The members of a new library made of these words.
    Words inserted(Words words) const {
        const std::string name = "new-library";
        words.insert(words.begin(), {"--create", name});
        const CommandResult result = tomex(words);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        return result.exitedWith(0) ? names(name) : Words{};
    }
    testing::AssertionResult notFound(const std::string& word) const {
        return ended(tomex({"-r", "lib.a", word}), 1, "", noFile(word));
    }
};

TEST_F(OptionsWildcard, MatchesComeInByteOrder) {
    files({"b.o", "a.o", "B.o", "a10.o", "a9.o", "\xc3\xa9.o", "~.o", "c.x"});
    EXPECT_EQ(inserted({"*.o"}),
              (Words{"B.o", "a.o", "a10.o", "a9.o", "b.o", "~.o", "\xc3\xa9.o"}));
}

TEST_F(OptionsWildcard, QuestionMarkIsOneCharacter) {
    files({"a.o", "b.o", "ab.o", ".o"});
    EXPECT_EQ(inserted({"?.o"}), (Words{"a.o", "b.o"}));
    EXPECT_EQ(inserted({"a?.o"}), Words{"ab.o"});
    EXPECT_EQ(inserted({"??o"}), (Words{"a.o", "b.o"}));
}

TEST_F(OptionsWildcard, StarAlsoMatchesNothing) {
    files({"a.o", "ab.o", "aXbX"});
    EXPECT_EQ(inserted({"a*.o"}), (Words{"a.o", "ab.o"}));
    EXPECT_EQ(inserted({"a**b*"}), (Words{"aXbX", "ab.o"}));
}

TEST_F(OptionsWildcard, LeadingDotIsMatchedOnlyByALeadingDot) {
    files({".hidden", "shown"});
    EXPECT_EQ(inserted({"s*"}), Words{"shown"});
    EXPECT_EQ(inserted({".h*"}), Words{".hidden"});
    EXPECT_EQ(inserted({".?idden"}), Words{".hidden"});
    EXPECT_TRUE(notFound("?hidden"));
    EXPECT_TRUE(notFound("*hidden"));
}

TEST_F(OptionsWildcard, DotAndStarMeanTheFolderAndItsParentToo) {
    files({".hidden"});
    // Folders fail where they are read, which is when the archive is written.
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", ".*"}), 1, "a - .\na - ..\na - .hidden\n",
                      notElf(".") + creating() + isFolder));
    EXPECT_EQ(folder.entries(), Words{".hidden"});
}

TEST_F(OptionsWildcard, CaseMatters) {
    files({"a.o"});
    EXPECT_TRUE(notFound("*.O"));
    EXPECT_TRUE(notFound("A*"));
}

TEST_F(OptionsWildcard, NothingElseIsSpecial) {
    files({"[ab].o", "a.o", "b.o", "{a,b}.o", "\\x.o", "x.o"});
    EXPECT_EQ(inserted({"[ab].o"}), Words{"[ab].o"});
    EXPECT_EQ(inserted({"[ab]*"}), Words{"[ab].o"});
    EXPECT_EQ(inserted({"{a,b}.*"}), Words{"{a,b}.o"});
    EXPECT_EQ(inserted({"\\*.o"}), Words{"x.o"}); // a backslash ends a folder in member names
    EXPECT_EQ(contents("x.o", "new-library"), "\\x.o");
    EXPECT_TRUE(notFound("[b]*"));
}

TEST_F(OptionsWildcard, WordWithoutMatchIsKeptAsTyped) {
    files({"a.o"});
    EXPECT_TRUE(notFound("x*.o"));
    EXPECT_TRUE(notFound("none/*.o"));
    EXPECT_TRUE(notFound("??"));
}

TEST_F(OptionsWildcard, FileWithAWildcardInItsNameIsAMatchOfItself) {
    files({"a*", "ab", "?"});
    EXPECT_EQ(inserted({"a*"}), (Words{"a*", "ab"}));
    EXPECT_EQ(inserted({"?"}), Words{"?"});
}

TEST_F(OptionsWildcard, FolderOfTheWordIsKept) {
    files({"sub/b.o", "sub/a.o", "sub/deep/c.o", "a.o"});
    EXPECT_EQ(inserted({"sub/*.o"}), (Words{"a.o", "b.o"}));
    EXPECT_EQ(contents("a.o", "new-library"), "sub/a.o");
    EXPECT_EQ(inserted({"./*.o"}), Words{"a.o"});
    EXPECT_EQ(contents("a.o", "new-library"), "a.o");
    EXPECT_EQ(inserted({"sub//deep/*"}), Words{"c.o"});
    EXPECT_EQ(inserted({"sub/../?.o"}), Words{"a.o"});
    EXPECT_EQ(inserted({folder.pathOf("sub/?.o")}), (Words{"a.o", "b.o"}));
}

TEST_F(OptionsWildcard, FoldersAreNotSearchedByPattern) {
    files({"sub/a.o"});
    EXPECT_TRUE(notFound("s*/a.o"));
    EXPECT_TRUE(notFound("s?b/*.o"));
}

TEST_F(OptionsWildcard, FolderThatMayNotBeReadHasNoMatches) {
    files({"locked/a.o"});
    folder.giveToUnprivilegedUser();
    folder.setMode("locked", 0);
    Command command = testsupport::tomex(folder, {"-r", "lib.a", "locked/*"});
    command.unprivileged = true;
    EXPECT_TRUE(ended(testsupport::run(command), 1, "", noFile("locked/*")));
}

TEST_F(OptionsWildcard, FoldersMatchAndCannotBeRead) {
    files({"a.o"});
    folder.makeFolder("b.o");
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "*.o"}), 1, "", notElf("a.o") + creating() + isFolder));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "b.o"}));
}

TEST_F(OptionsWildcard, DanglingLinkMatchesAndDoesNotExist) {
    folder.makeSymbolicLink("x.o", "nowhere");
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "*.o"}), 1, "", noFile("x.o")));
}

TEST_F(OptionsWildcard, WordsKeepTheirOrderAndTheirRepetitions) {
    files({"a.o", "b.o", "c.x"});
    EXPECT_EQ(inserted({"c*", "*.o", "a.o"}), (Words{"c.x", "a.o", "b.o", "a.o"}));
}

TEST_F(OptionsWildcard, AllFormsOfInsertingExpand) {
    files({"a.o", "b.o"});
    for (const char* option : {"-r", "-q", "--create"}) {
        EXPECT_TRUE(ended(tomex({option, "-c", "lib.a", "*.o"}), 0, "", notElf("a.o")));
        EXPECT_EQ(names(), (Words{"a.o", "b.o"}));
        folder.remove("lib.a");
    }
}

TEST_F(OptionsWildcard, OtherActionsMatchMembersWhateverFilesThereAre) {
    library("lib.a", {"a.o", "b.o", "c.x"});
    files({"z.o"});
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "*.o"}), 0, "a.o\nb.o\n", ""));
    EXPECT_TRUE(ended(tomex({"-p", "lib.a", "?.X"}), 0, "c.x.", ""));
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", "z*"}), 0, "", notPresent("Warning", "z*")));
    EXPECT_TRUE(ended(tomex({"-dv", "lib.a", "*.o"}), 0, "d - b.o\nd - a.o\n", ""));
}

TEST_F(OptionsWildcard, PositionMakesEveryActionExpandFiles) {
    library("lib.a", {"a.o", "b.o", "c.o", "d.o"});
    files({"a.o", "c.o"});
    EXPECT_TRUE(ended(tomex({"-t", "-a", "b.o", "lib.a", "*.o"}), 0, "a.o\nc.o\n", ""));
    EXPECT_TRUE(ended(tomex({"-t", "-b", "b.o", "lib.a", "d*"}), 0, "d.o\n", ""));
    // Without files the pattern would mean its first match alone.
    EXPECT_TRUE(ended(tomex({"-mv", "-a", "d.o", "lib.a", "*.o"}), 0, "m - a.o\nm - c.o\n", ""));
    EXPECT_EQ(names(), (Words{"b.o", "d.o", "a.o", "c.o"}));
}

} // namespace
} // namespace commandtest
