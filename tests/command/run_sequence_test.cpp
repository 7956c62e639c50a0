// The order in which a run goes: banner and usage, what is missing, what exists, what may be
// written, and with which status it ends.
#include "tests/command/command_case.h"
#include "tests/command/usage_text.h"

namespace commandtest {
namespace {

constexpr char noArchive[] = "Error: L6838E: No archive specified\n";
constexpr char noAction[] = "Error: L6839E: One of the actions -[dmpqrtx] must be specified\n";
constexpr char oneAction[] = "Error: L6840E: Only one action option may be specified\n";
constexpr char readOnly[] = "Error: L6979E: Output file 'lib.a' is read-only\n";

std::string notFound(const std::string& name) {
    return "Error: L6832E: Archive '" + name + "' not found : No such file or directory\n";
}

class RunSequence : public CommandCase {
protected:
    // The texts in it are settings of the build.
    std::string banner() const { return tomex({"--vsn"}).output; }
    std::string usage() const { return banner() + usageText("tomex"); }

    CommandResult asOther(Words words) const {
        folder.giveToUnprivilegedUser();
        Command command = testsupport::tomex(folder, std::move(words));
        command.unprivileged = true;
        return testsupport::run(command);
    }
};

TEST_F(RunSequence, BannerNamesProductComponentAndTool) {
    const CommandResult result = tomex({"--vsn"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.error, "");
    EXPECT_TRUE(result.output.starts_with("Product: ")) << result;
    const size_t component = result.output.find("\nComponent: ");
    const size_t tool = result.output.find("\nTool: tomex [5ec1ef00]");
    ASSERT_NE(component, std::string::npos) << result;
    ASSERT_NE(tool, std::string::npos) << result;
    EXPECT_LT(component, tool);
    EXPECT_TRUE(result.output.ends_with("\n")) << result;
    EXPECT_FALSE(result.output.ends_with(" \n")) << result;
}

TEST_F(RunSequence, NoArgumentsPrintBannerAndUsage) {
    EXPECT_TRUE(ended(tomex({}), 0, usage(), ""));
}

TEST_F(RunSequence, ProgramNameOfUsageComesFromItsCall) {
    const std::vector<std::pair<std::string, std::string>> calls = {
        {"/opt/bin/tomex", "tomex"},
        {"./archiver", "archiver"},
        {"archiver.exe", "archiver"},
        {"ARCHIVER.EXE", "ARCHIVER"},
        {"c:\\bin\\qar.exe", "qar"},
        {"a.b", "b"},
        {"rvarchiver", "archiver"},
        {"/opt/rvx.dll", "x"},
        {std::string(40, 'z'), std::string(31, 'z')},
    };
    for (const auto& [call, name] : calls) {
        Command command = testsupport::tomex(folder, {"--help"});
        command.argumentZero = call;
        EXPECT_TRUE(ended(testsupport::run(command), 0, banner() + usageText(name), "")) << call;
    }
}

TEST_F(RunSequence, HelpOpensNoArchive) {
    folder.write("damaged.a", "!<arch>\nrubbish");
    for (const Words& words : std::vector<Words>{{"-h"},
                                                 {"--help"},
                                                 {"--help", "damaged.a"},
                                                 {"-t", "-h", "damaged.a"},
                                                 {"-r", "--help", "missing.a", "x.o"},
                                                 {"--help", "--vsn"},
                                                 {"--create", "-h"}}) {
        EXPECT_TRUE(ended(tomex(words), 0, usage(), ""));
    }
    EXPECT_EQ(folder.entries(), Words{"damaged.a"});
}

TEST_F(RunSequence, OptionErrorComesBeforeHelp) {
    EXPECT_TRUE(ended(tomex({"--help", "-t", "-x", "lib.a"}), 1, "", oneAction));
}

TEST_F(RunSequence, VersionWithoutArchivePrintsBannerOnly) {
    for (const Words& words :
         std::vector<Words>{{"--vsn"}, {"--version"}, {"-V"}, {"--vsn", ""}, {"-t", "--vsn"}}) {
        EXPECT_TRUE(ended(tomex(words), 0, banner(), ""));
    }
}

TEST_F(RunSequence, VersionWithArchiveButNoActionIsAnErrorAndBannerWithoutUsage) {
    library("lib.a", {"a.o"});
    EXPECT_TRUE(ended(tomex({"--vsn", "lib.a"}), 1, banner(), noAction));
}

TEST_F(RunSequence, VersionWithArchiveAndActionDoesTheAction) {
    library("lib.a", {"a.o"});
    EXPECT_TRUE(ended(tomex({"--vsn", "-t", "lib.a"}), 0, "a.o\n", ""));
}

TEST_F(RunSequence, ArchiveWithoutActionIsAnErrorAndUsage) {
    library("lib.a", {"a.o"});
    const std::string before = folder.read("lib.a");
    for (const Words& words : std::vector<Words>{{"lib.a"},
                                                 {"-n", "lib.a"},
                                                 {"-c", "-v", "lib.a"},
                                                 {"-u", "lib.a"},
                                                 {"-a", "a.o", "lib.a"},
                                                 {"--normalise=5", "lib.a", "a.o"},
                                                 {"--", "-t"},
                                                 {"-n", "missing.a"}}) {
        EXPECT_TRUE(ended(tomex(words), 1, usage(), noAction));
    }
    EXPECT_EQ(folder.read("lib.a"), before);
    EXPECT_EQ(folder.entries(), Words{"lib.a"});
}

TEST_F(RunSequence, NoArchiveNameIsAnErrorAndUsage) {
    for (const Words& words : std::vector<Words>{
             {"-t"}, {"-v"}, {"--"}, {"--create"}, {"-r", ""}, {"", "a.o"}, {"-t", "--", ""}}) {
        EXPECT_TRUE(ended(tomex(words), 1, usage(), noArchive));
    }
    EXPECT_TRUE(folder.entries().empty());
}

TEST_F(RunSequence, InsertOfNothingIntoMissingArchiveDoesNothing) {
    for (const char* word : {"-r", "-q", "-rv", "-rn", "-rs", "-rc"}) {
        EXPECT_TRUE(ended(tomex({word, "lib.a"}), 0, "", "")) << word;
    }
    EXPECT_TRUE(folder.entries().empty());
}

TEST_F(RunSequence, CreateOfNothingIsAnError) {
    const std::string line = "Error: L6980E: No archive members specified with --create\n";
    EXPECT_TRUE(ended(tomex({"--create", "lib.a"}), 1, "", line));
    EXPECT_TRUE(folder.entries().empty());
    folder.write("lib.a", "whatever stands here");
    EXPECT_TRUE(ended(tomex({"--create", "lib.a"}), 1, "", line));
    EXPECT_EQ(folder.read("lib.a"), "whatever stands here");
}

TEST_F(RunSequence, MissingArchiveIsAnErrorForAllButInsert) {
    for (const char* word : {"-t", "-tv", "-x", "-p", "-d", "-m"}) {
        EXPECT_TRUE(ended(tomex({word, "missing.a", "a.o"}), 1, "", notFound("missing.a"))) << word;
        EXPECT_TRUE(ended(tomex({word, "missing.a"}), 1, "", notFound("missing.a"))) << word;
    }
    EXPECT_TRUE(folder.entries().empty());
}

TEST_F(RunSequence, MissingArchiveIsAnErrorForTheReports) {
    for (const char* word : {"--sizes", "--entries", "--zt", "--zs"}) {
        EXPECT_TRUE(ended(tomex({word, "missing.a"}), 1, "", notFound("missing.a"))) << word;
    }
    EXPECT_TRUE(folder.entries().empty());
}

TEST_F(RunSequence, MissingFolderOfTheArchiveMeansMissingArchive) {
    EXPECT_TRUE(ended(tomex({"-t", "none/lib.a"}), 1, "", notFound("none/lib.a")));
}

TEST_F(RunSequence, FolderGivenAsArchiveCannotBeRead) {
    folder.makeFolder("dir");
    file("a.o", "a");
    const std::string line = "Error: L6835E: Reading file 'dir' : Is a directory\n";
    EXPECT_TRUE(ended(tomex({"-t", "dir"}), 1, "", line));
    EXPECT_TRUE(ended(tomex({"-r", "dir", "a.o"}), 1, "", line));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "dir"}));
}

TEST_F(RunSequence, FileThatIsNoArchiveStopsTheRun) {
    folder.write("lib.a", "no archive");
    file("a.o", "a");
    const std::string line = "Error: L6826E: 'lib.a' not in archive format\n";
    for (const char* word : {"-t", "-rv", "-d", "-m", "-x", "-p", "-s"}) {
        EXPECT_TRUE(ended(tomex({word, "lib.a", "a.o"}), 1, "", line)) << word;
    }
    EXPECT_EQ(folder.read("lib.a"), "no archive");
}

TEST_F(RunSequence, RegenerateRewritesTheArchive) {
    folder.write("lib.a", ArchiveBuilder().add(made("a.o")).symbol("old", 0).bytes());
    EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o")}));
    EXPECT_TRUE(ended(tomex({"-s", "-n", "lib.a"}), 0, "", ""));
    EXPECT_EQ(archive().summary(), Words{kept("a.o")});
}

TEST_F(RunSequence, RegenerateMakesAMissingArchive) {
    EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "", creating()));
    EXPECT_EQ(archive().summary(), Words{emptyTable()});
    EXPECT_TRUE(ended(tomex({"-s", "-n", "bare.a"}), 0, "", creating("bare.a")));
    EXPECT_EQ(folder.read("bare.a"), "!<arch>\n");
    EXPECT_TRUE(ended(tomex({"-sc", "quiet.a"}), 0, "", ""));
    EXPECT_EQ(folder.read("quiet.a"), folder.read("lib.a"));
}

TEST_F(RunSequence, ListWithTableOptionsListsAndWrites) {
    folder.write("lib.a", ArchiveBuilder().add(made("a.o")).bytes());
    EXPECT_TRUE(ended(tomex({"-t", "-s", "lib.a"}), 0, "a.o\n", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("a.o")}));
    EXPECT_TRUE(ended(tomex({"-tn", "lib.a"}), 0, "a.o\n", ""));
    EXPECT_EQ(archive().summary(), Words{kept("a.o")});
}

TEST_F(RunSequence, ReadingActionsWriteNothing) {
    library("lib.a", {"a.o"});
    const uint64_t identity = folder.identity("lib.a");
    for (const char* word : {"-t", "-tv", "-p", "-x", "--sizes", "--entries", "--zt", "--zs"}) {
        EXPECT_EQ(tomex({word, "lib.a"}).status, 0);
    }
    EXPECT_EQ(folder.identity("lib.a"), identity);
}

TEST_F(RunSequence, DifferentActionsConflict) {
    library("lib.a", {"a.o"});
    file("a.o", "new");
    const std::string before = folder.read("lib.a");
    for (const Words& words : std::vector<Words>{{"--sizes", "-t"},
                                                 {"--zt", "--sizes"},
                                                 {"-r", "-d"},
                                                 {"-q", "-x"},
                                                 {"-tx"},
                                                 {"--create", "-d"},
                                                 {"-m", "-p"},
                                                 {"--entries", "--zs"},
                                                 {"-p", "--zt"}}) {
        Words all = words;
        all.insert(all.end(), {"lib.a", "a.o"});
        EXPECT_TRUE(ended(tomex(all), 1, "", oneAction));
    }
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(RunSequence, EachFurtherActionIsReported) {
    EXPECT_TRUE(
        ended(tomex({"-d", "-x", "-t", "-t", "lib.a"}), 1, "", std::string(oneAction) + oneAction));
}

TEST_F(RunSequence, SpellingsOfOneActionDoNotConflict) {
    file("a.o", "a");
    for (const Words& words :
         std::vector<Words>{{"-r", "-q"}, {"--create", "-r"}, {"-q", "--create"}, {"-s", "-r"}}) {
        Words all = words;
        all.insert(all.end(), {"-c", "lib.a", "a.o"});
        EXPECT_TRUE(ended(tomex(all), 0, "", notElf("a.o")));
    }
}

TEST_F(RunSequence, SingleDashIsAWord) {
    file("-", "dash");
    file("a.o", "a");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "-"}), 0, "a - -\n", notElf("-") + creating()));
    EXPECT_EQ(contents("-"), "dash");
    folder.remove("-");
    EXPECT_TRUE(ended(tomex({"-r", "-", "a.o"}), 0, "", notElf("a.o", "-") + creating("-")));
    EXPECT_EQ(names("-"), Words{"a.o"});
}

TEST_F(RunSequence, WordsBehindTwoDashesAreNoOptions) {
    file("-v", "v");
    file("--", "dashes");
    EXPECT_TRUE(ended(tomex({"-r", "--", "lib.a", "-v", "--"}), 0, "", notElf("-v") + creating()));
    EXPECT_EQ(names(), (Words{"-v", "--"}));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "--", "-V"}), 0, "-v\n", ""));
}

TEST_F(RunSequence, OptionsMayStandBehindTheArchive) {
    library("lib.a", {"a.o", "b.o"});
    EXPECT_TRUE(ended(tomex({"lib.a", "-t", "b.o"}), 0, "b.o\n", ""));
    EXPECT_TRUE(ended(tomex({"lib.a", "b.o", "-t"}), 0, "b.o\n", ""));
}

TEST_F(RunSequence, WordLosesItsEqualsSign) {
    file("x", "x");
    EXPECT_TRUE(ended(tomex({"-r", "=lib.a", "=x"}), 0, "", notElf("x") + creating()));
    EXPECT_TRUE(ended(tomex({"-t", "--", "=lib.a"}), 0, "x\n", ""));
}

TEST_F(RunSequence, ReadOnlyArchiveStopsBeforeTheAction) {
    library("lib.a", {"a.o"});
    file("a.o", "new");
    folder.setMode("lib.a", 0444);
    const std::string before = folder.read("lib.a");
    for (const char* word : {"-rv", "-dv", "-mv", "-s", "-tn", "-ts"}) {
        EXPECT_TRUE(ended(asOther({word, "lib.a", "a.o", "nothere.o"}), 1, "", readOnly)) << word;
    }
    EXPECT_EQ(folder.read("lib.a"), before);
    EXPECT_EQ(folder.entries(), (Words{"a.o", "lib.a"}));
}

TEST_F(RunSequence, ReadOnlyArchiveCanBeRead) {
    library("lib.a", {"a.o"});
    folder.setMode("lib.a", 0444);
    EXPECT_TRUE(ended(asOther({"-t", "lib.a"}), 0, "a.o\n", ""));
    EXPECT_TRUE(ended(asOther({"-p", "lib.a"}), 0, "a.o.", ""));
    EXPECT_TRUE(ended(asOther({"-x", "lib.a"}), 0, "", ""));
    EXPECT_EQ(folder.read("a.o"), "a.o.");
}

TEST_F(RunSequence, UnreadableArchiveCannotBeRead) {
    library("lib.a", {"a.o"});
    folder.setMode("lib.a", 0);
    EXPECT_TRUE(ended(asOther({"-t", "lib.a"}), 1, "",
                      "Error: L6835E: Reading file 'lib.a' : Permission denied\n"));
}

TEST_F(RunSequence, PositionMustBeFoundWhateverTheAction) {
    library("lib.a", {"a.o"});
    const std::string before = folder.read("lib.a");
    const std::string line = "Error: L6841E: Position 'none.o' not found\n";
    for (const char* word : {"-t", "-x", "-p", "-dv", "-mv", "-rv", "-s"}) {
        EXPECT_TRUE(ended(tomex({word, "-a", "none.o", "lib.a", "a.o"}), 1, "", line)) << word;
        EXPECT_TRUE(ended(tomex({word, "-b", "none.o", "lib.a", "a.o"}), 1, "", line)) << word;
        EXPECT_TRUE(ended(tomex({word, "-i", "none.o", "none.a", "a.o"}), 1, "", line)) << word;
    }
    EXPECT_EQ(folder.read("lib.a"), before);
    EXPECT_EQ(folder.entries(), Words{"lib.a"});
}

TEST_F(RunSequence, ErrorInOneWordWritesNothingButAllWordsAreWorkedOn) {
    library("lib.a", {"a.o"});
    file("b.o", "b");
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "no.o", "b.o", "none.o"}), 1, "a - b.o\n",
                      "Error: L6833E: File 'no.o' does not exist\n" + notElf("b.o") +
                          "Error: L6833E: File 'none.o' does not exist\n"));
    EXPECT_EQ(folder.read("lib.a"), before);
    EXPECT_EQ(folder.entries(), (Words{"b.o", "lib.a"}));
}

TEST_F(RunSequence, WarningsDoNotCountForTheStatus) {
    library("lib.a", {"a.o", "b.o"});
    EXPECT_TRUE(ended(tomex({"-d", "lib.a", "no.o", "a.o", "none.o"}), 0, "",
                      notPresent("Warning", "no.o") + notPresent("Warning", "none.o")));
    EXPECT_EQ(names(), Words{"b.o"});
}

TEST_F(RunSequence, FiftyErrorsArePrintedAndTheNextEndsTheRun) {
    Words words = {"-r", "lib.a"};
    std::string lines;
    for (int i = 0; i < 60; ++i) {
        words.push_back("no" + std::to_string(i));
        if (i < 50) {
            lines += "Error: L6833E: File '" + words.back() + "' does not exist\n";
        }
    }
    EXPECT_TRUE(ended(tomex(words), 1, "", lines));
    EXPECT_TRUE(folder.entries().empty());
}

} // namespace
} // namespace commandtest
