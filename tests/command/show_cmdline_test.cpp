// --show_cmdline: the command line as the program understood it.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

class ShowCommandLine : public CommandCase {
protected:
    ShowCommandLine() {
        library("lib.a", {"a.o", "b.o"});
        file("a.o", "new");
    }
    // The first line of a run's output.
    std::string shown(const Words& words) const {
        const CommandResult result = tomex(words);
        EXPECT_EQ(result.signal, 0) << result;
        return result.output.substr(0, result.output.find('\n'));
    }
};

TEST_F(ShowCommandLine, StandsInBracketsBeforeEverythingElse) {
    EXPECT_TRUE(ended(tomex({"--show_cmdline", "-t", "lib.a"}), 0,
                      "[tomex --show_cmdline -t lib.a]\na.o\nb.o\n", ""));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a", "--show-cm."}), 0,
                      "[tomex --show_cmdline -t lib.a]\na.o\nb.o\n", ""));
}

TEST_F(ShowCommandLine, NameIsTheOneThatTheProgramWasCalledBy) {
    Command command = testsupport::tomex(folder, {"--show_cmdline", "-t", "lib.a"});
    command.argumentZero = "/tools/bin/librarian.exe";
    EXPECT_TRUE(
        ended(testsupport::run(command), 0, "[librarian --show_cmdline -t lib.a]\na.o\nb.o\n", ""));
}

TEST_F(ShowCommandLine, ComesBeforeVersionHelpAndErrors) {
    EXPECT_TRUE(ended(
        tomex({"--show_cmdline", "--version_number"}), 0,
        "[tomex --show_cmdline --version_number]\n" + tomex({"--version_number"}).output, ""));
    EXPECT_TRUE(ended(tomex({"--show_cmdline", "-h"}), 0,
                      "[tomex --help --show_cmdline]\n" + tomex({"-h"}).output, ""));
    EXPECT_TRUE(ended(tomex({"--show_cmdline", "-tx", "lib.a"}), 1,
                      "[tomex --show_cmdline -t -x lib.a]\n",
                      "Error: L6840E: Only one action option may be specified\n"));
    EXPECT_TRUE(ended(tomex({"--show_cmdline"}), 1, "[tomex --show_cmdline]\n" + tomex({}).output,
                      "Error: L6838E: No archive specified\n"));
}

TEST_F(ShowCommandLine, NothingIsShownOfALineThatCannotBeRead) {
    EXPECT_TRUE(ended(tomex({"--show_cmdline", "--none"}), 1, "",
                      "Fatal error: L3900U: Unrecognized option '--none'.\n"));
}

TEST_F(ShowCommandLine, EachOptionInItsCanonicalSpelling) {
    const std::vector<std::pair<Words, std::string>> spellings = {
        {{"--create"}, "--create --show_cmdline"},
        {{"-create"}, "--create --show_cmdline"},
        {{"-h"}, "--help --show_cmdline"},
        {{"--help"}, "--help --show_cmdline"},
        {{"-V"}, "--show_cmdline --version"},
        {{"--vsn"}, "--show_cmdline --version"},
        {{"--version"}, "--show_cmdline --version"},
        {{"--sizes"}, "--show_cmdline --sizes"},
        {{"--entries"}, "--show_cmdline --entries"},
        {{"--zs"}, "--show_cmdline --zs"},
        {{"--zt"}, "--show_cmdline --zt"},
        {{"-cCdmnpqstTuvx"}, "--show_cmdline -c -C -d -m -n -p -r -s -t -T -u -v -x"},
        {{"-q"}, "--show_cmdline -r"},
        {{"-R"}, "--show_cmdline -r"},
        {{"--new-files-only"}, "--show_cmdline --new_files_only"},
        {{"--debug_symbols"}, "--show_cmdline --debug_symbols"},
        {{"--unique_symbols"}, "--show_cmdline --unique_symbols"},
        {{"--qeabi_buildattr"}, "--show_cmdline --qeabi_buildattr"},
        {{"--normalise", "0x10"}, "--show_cmdline --normalise=16"},
        {{"--no_normalise=-5"}, "--show_cmdline --normalise=-5"},
        {{"-a", "x"}, "--show_cmdline -ax"},
        {{"-b", "x"}, "--show_cmdline -bx"},
        {{"-ix"}, "--show_cmdline -bx"},
        {{"--db_check=none"}, "--show_cmdline --db_check=none"},
        {{"--diag_style=GNU"}, "--show_cmdline --diag_style=gnu"},
        {{"--diag_suppress", "1,L2", "--diag_suppress=3"}, "--show_cmdline --diag_suppress=1,L2,3"},
        {{"--diag_error=1"}, "--show_cmdline --diag_error=1"},
        {{"--diag_warning=1"}, "--show_cmdline --diag_warning=1"},
        {{"--diag_remark=1"}, "--show_cmdline --diag_remark=1"},
        {{"--version_number"}, "--show_cmdline --version_number"},
        {{"--message_locale", "en_US"}, "--show_cmdline --message_locale=en_US"},
        {{"--libattrmap", "my map"}, "--show_cmdline --libattrmap=\"my map\""},
        {{"lib.a", "b*", "-"}, "--show_cmdline lib.a b* -"},
    };
    for (const auto& [words, line] : spellings) {
        Words all = words;
        all.insert(all.begin(), "--show_cmdline");
        EXPECT_EQ(shown(all), "[tomex " + line + "]");
    }
}

TEST_F(ShowCommandLine, DefaultsAreNotShown) {
    EXPECT_EQ(
        shown({"--show_cmdline", "--debug_symbols", "--no_debug_symbols", "--no_unique_symbols",
               "--no_qeabi_buildattr", "--normalise=0", "--diag_style=qel", "lib.a"}),
        "[tomex --show_cmdline lib.a]");
    EXPECT_EQ(shown({"--show_cmdline", "--normalise=5", "--no_normalise=0", "lib.a"}),
              "[tomex --show_cmdline lib.a]");
}

TEST_F(ShowCommandLine, LastSettingIsShown) {
    EXPECT_EQ(shown({"--show_cmdline", "-a", "x", "-a", "y", "-b", "p", "-i", "q", "lib.a"}),
              "[tomex --show_cmdline -ay -bq lib.a]");
}

TEST_F(ShowCommandLine, DiagnosticThatDoesNotExistIsNotShown) {
    EXPECT_TRUE(ended(tomex({"--show_cmdline", "--diag_error=99999", "-t", "lib.a", "a.o"}), 0,
                      "[tomex --show_cmdline -t lib.a a.o]\na.o\n",
                      "Warning: L9962I: Unknown diagnostic number 99999\n"));
}

TEST_F(ShowCommandLine, WordsAreQuotedAsNeeded) {
    EXPECT_EQ(shown({"--show_cmdline", "my lib.a", "a,b", "q\"r", "s t\"u", "", "v w\\", "x\\"}),
              "[tomex --show_cmdline \"my lib.a\" a,b q\\\"r \"s t\\\"u\" \"\" \"v w\\\\\" x\\]");
    EXPECT_EQ(shown({"--show_cmdline", "-a", "", "-b", "=x", "--libattrmap=", "lib.a", "==y"}),
              "[tomex --show_cmdline -a \"\" -b =x --libattrmap=\"\" lib.a ==y]");
    EXPECT_EQ(shown({"--show_cmdline", "-a", "(x y)", "lib.a", "(a b)", "x(1\t2)", "(c)"}),
              "[tomex --show_cmdline -a\"(x y)\" lib.a \"(a b)\" \"x(1\t2)\" (c)]");
}

TEST_F(ShowCommandLine, EndOfOptionsIsShownBeforeTheOperands) {
    EXPECT_EQ(shown({"--show_cmdline", "lib.a", "--", "-x", "--via"}),
              "[tomex --show_cmdline -- lib.a -x --via]");
    EXPECT_EQ(shown({"--show_cmdline", "--"}), "[tomex --show_cmdline]");
    // Reading takes the "=" away, and what is left must not become an option.
    EXPECT_EQ(shown({"--show_cmdline", "lib.a", "=-x"}), "[tomex --show_cmdline -- lib.a -x]");
}

TEST_F(ShowCommandLine, WordsOfAViaFileAreShownAndTheFileIsNot) {
    folder.write("w.via", "-t 'my lib.a'");
    EXPECT_EQ(shown({"--show_cmdline", "--via", "w.via", "x"}),
              "[tomex --show_cmdline -t \"my lib.a\" x]");
    folder.write("w.via", "--show_cmdline -t lib.a");
    EXPECT_EQ(shown({"--via", "w.via"}), "[tomex --show_cmdline -t lib.a]");
}

TEST_F(ShowCommandLine, LineOfAnyLength) {
    // The first buffer has 4096 bytes; "--show_cmdline -t lib.a " and the NUL are 25 of them.
    for (const size_t length : {4070U, 4071U, 4072U, 60000U}) {
        const std::string name(length, 'n');
        EXPECT_EQ(shown({"--show_cmdline", "-t", "lib.a", name}),
                  "[tomex --show_cmdline -t lib.a " + name + "]");
    }
    std::string line = "[tomex --show_cmdline -t lib.a";
    std::string words;
    for (int index = 0; index < 50000; ++index) {
        words += "m" + std::to_string(index) + ".o\n";
        line += " m" + std::to_string(index) + ".o";
    }
    folder.write("w.via", words);
    EXPECT_EQ(shown({"--show_cmdline", "-t", "lib.a", "--via", "w.via"}), line + "]");
}

TEST_F(ShowCommandLine, TextIsShownSafelyAndAsItIs) {
    EXPECT_EQ(shown({"--show_cmdline", "lib.a", "%s%n\x1b[1m"}),
              "[tomex --show_cmdline lib.a %s%n\\033[1m]");
}

TEST_F(ShowCommandLine, LostLineIsALostOutput) {
    Command command = testsupport::tomex(folder, {"--show_cmdline", "-s", "lib.a"});
    command.output = Stream::Closed;
    EXPECT_EQ(testsupport::run(command).status, 1);
}

// What is shown, put into a via file, gives the same run for lines like these. The tests behind it
// tell of the others.
TEST_F(ShowCommandLine, ShownLineGivesTheSameRun) {
    file("my file.o", "x");
    file("it's(1.o", "y");
    file("q\"\\.o", "z");
    file("=e.o", "e");
    file("-v", "dash");
    file("(p q).o", "p");
    const std::vector<Words> runs = {
        {"-tv", "lib.a"},
        {"-t", "lib.a", "b*"},
        {"-t", "lib.a", "no.o"},
        {"-x", "-C", "lib.a", "a.o"},
        {"-p", "lib.a"},
        {"-rcv", "new.a", "my file.o", "it's(1.o", "q\"\\.o", "==e.o"},
        {"-qc", "my new.a", "--normalise=5", "a.o", "*.o"},
        {"-rv", "-a", "a.o", "lib.a", "my file.o"},
        {"-rv", "lib.a", "(p q).o"},
        {"-mv", "-b", "(p q).o", "lib.a", "b.o"},
        {"-mv", "-i", "a.o", "lib.a", "b.o"},
        {"-dv", "lib.a", "b.o", "none"},
        {"--create", "lib.a", "a.o"},
        {"--create", "lib.a"},
        {"-sn", "lib.a"},
        {"-rv", "--", "lib.a", "-v"},
        {"-rv", "lib.a", "=-v"},
        {"-r", "-b", "", "lib.a", "a.o"},
        {"-r", "-b", "=x", "lib.a", "a.o"},
        {"--diag_error=6875,6831", "--diag_style=ide", "-r", "lib.a", "a.o"},
        {"--diag_suppress=warning", "-r", "lib.a", "a.o"},
        {"--message_locale=ja_JP.UTF-8", "-t", "none.a"},
        {"--db_check=show,medium", "-t", "lib.a"},
        {"-tx", "lib.a"},
        {"--help"},
        {"--vsn", "--unique_symbols"},
        {"-t"},
    };
    for (const Words& words : runs) {
        const auto runAfresh = [&](Words all) {
            for (const char* made : {"new.a", "my new.a"}) {
                if (folder.exists(made)) {
                    folder.remove(made);
                }
            }
            library("lib.a", {"a.o", "b.o"});
            return tomex(std::move(all));
        };
        const auto archives = [&] {
            std::string all;
            for (const char* name : {"lib.a", "new.a", "my new.a"}) {
                all += folder.exists(name) ? folder.read(name) : "none";
            }
            return all;
        };
        Words all = words;
        all.insert(all.begin(), "--show_cmdline");
        const CommandResult first = runAfresh(all);
        const std::string firstArchives = archives();
        const std::string line = first.output.substr(0, first.output.find("]\n"));
        ASSERT_TRUE(line.starts_with("[tomex --")) << first;
        folder.write("shown.via", line.substr(7));

        const CommandResult second = runAfresh({"--via", "shown.via"});
        EXPECT_TRUE(ended(second, first.status, first.output, first.error));
        EXPECT_TRUE(archives() == firstArchives) << second;
    }
}

// A joined list is one word, however it was given.
TEST_F(ShowCommandLine, ListTooLongForAViaFileIsShownAndCannotBeReadAgain) {
    for (const int count : {100, 300}) {
        std::string list = "6875";
        std::string words = "--diag_suppress=6875\n";
        for (int index = 1; index < count; ++index) {
            list += ",6875";
            words += "--diag_suppress=6875\n";
        }
        const std::string line = "--show_cmdline -t --diag_suppress=" + list + " lib.a";
        folder.write("w.via", "--show_cmdline -t lib.a\n" + words);
        EXPECT_TRUE(ended(tomex({"--via", "w.via"}), 0, "[tomex " + line + "]\na.o\nb.o\n", ""));

        folder.write("shown.via", line);
        const CommandResult again = tomex({"--via", "shown.via"});
        if (list.size() <= 1023) {
            EXPECT_TRUE(ended(again, 0, "[tomex " + line + "]\na.o\nb.o\n", ""));
        } else {
            EXPECT_TRUE(ended(again, 1, "",
                              "Fatal error: L3907U: Via file 'shown.via' command too long for "
                              "buffer.\n"));
        }
    }
}

// What was said of the spelling of an option is not said of the shown one.
TEST_F(ShowCommandLine, ShownLineHasNothingToWarnOf) {
    const std::string line = "[tomex --show_cmdline -n -t --diag_error=3910 lib.a]\n";
    EXPECT_TRUE(ended(tomex({"--show_cmdline", "--diag_error=3910", "-N", "-t", "lib.a"}), 1, line,
                      "Error: L3910W: Old syntax, please use '-n'.\n"));
    folder.write("shown.via", line.substr(7, line.size() - 9));
    EXPECT_TRUE(ended(tomex({"--via", "shown.via"}), 0, line + "a.o\nb.o\n", ""));
}

TEST_F(ShowCommandLine, NameThatTheCharacterSetLacksIsShownChanged) {
    EXPECT_EQ(shown({"--show_cmdline", "-t", "lib.a", "caf\xc3\xa9"}),
              "[tomex --show_cmdline -t lib.a caf?]");
    EXPECT_EQ(shown({"--show_cmdline", "--message_locale=utf8", "lib.a", "caf\xc3\xa9"}),
              "[tomex --show_cmdline --message_locale=utf8 lib.a caf\xc3\xa9]");
}

} // namespace
} // namespace commandtest
