// What users do to diagnostics: silence them, move them to another severity, and choose their
// style. The options act from the moment when they are read, in their order.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

const std::string badNumber = "Warning: L9962I: Unknown diagnostic number ";

class DiagnosticOptions : public CommandCase {
protected:
    DiagnosticOptions() {
        library("lib.a", {"a.o", "b.o"});
        file("new.o", "x");
    }

    // A run that warns: there is no such member to delete.
    CommandResult warning(Words options) const {
        options.insert(options.end(), {"-d", "lib.a", "no.o"});
        return tomex(std::move(options));
    }
    // A run that fails for the same reason.
    CommandResult failing(Words options) const {
        options.insert(options.end(), {"-t", "lib.a", "no.o"});
        return tomex(std::move(options));
    }
    static std::string warned() { return notPresent("Warning", "no.o"); }
    static std::string failed() { return notPresent("Error", "no.o"); }
    static constexpr const char* plain = "'no.o' not present in archive 'lib.a'\n";
};

TEST_F(DiagnosticOptions, EachTargetOfANumber) {
    EXPECT_TRUE(ended(warning({}), 0, "", warned()));
    EXPECT_TRUE(ended(warning({"--diag_suppress=6831"}), 0, "", ""));
    EXPECT_TRUE(ended(warning({"--diag_remark=6831"}), 0, "", plain));
    EXPECT_TRUE(ended(warning({"--diag_warning=6831"}), 0, "", warned()));
    EXPECT_TRUE(ended(warning({"--diag_error=6831"}), 1, "", failed()));
}

TEST_F(DiagnosticOptions, EachFormOfANumber) {
    for (const char* text : {"6831", "L6831", "l6831", "6831E", "L6831E", "l6831e", "L6831W",
                             "06831", "L006831", " 6831", "L 6831", "+6831", "6831.5", "6831 x"}) {
        EXPECT_TRUE(ended(warning({std::string("--diag_suppress=") + text}), 0, "", "")) << text;
        EXPECT_TRUE(ended(warning({"--diag_suppress", text}), 0, "", "")) << text;
        EXPECT_TRUE(ended(warning({std::string("--diag_error=") + text}), 1, "", failed())) << text;
    }
}

TEST_F(DiagnosticOptions, EachFormOfAList) {
    file("c.o", "c");
    const Words run = {"-ru", "lib.a", "new.o"};
    const auto silent = [&](Words options) {
        options.insert(options.end(), run.begin(), run.end());
        return tomex(std::move(options));
    };
    EXPECT_TRUE(ended(silent({"--diag_suppress=6831,6875"}), 0, "", ""));
    EXPECT_TRUE(ended(silent({"--diag_suppress=6875,6831"}), 0, "", ""));
    EXPECT_TRUE(ended(silent({"--diag_suppress", "6831,L6875W,6873"}), 0, "", ""));
    EXPECT_TRUE(ended(silent({"--diag_suppress=6831", "--diag_suppress=6875"}), 0, "", ""));
    EXPECT_TRUE(ended(silent({"--diag_suppress=,6875,,"}), 0, "", ""));
    EXPECT_TRUE(ended(silent({"--diag_suppress=0,6875"}), 0, "", badNumber + "0\n"));
    EXPECT_TRUE(ended(silent({"--diag_suppress=6875,x,10000"}), 0, "", badNumber + "10000\n"));
    EXPECT_TRUE(ended(silent({"--diag_suppress=6874"}), 0, "", notElf("new.o")));
}

TEST_F(DiagnosticOptions, LaterSettingsReplaceEarlierOnes) {
    EXPECT_TRUE(ended(warning({"--diag_error=6831", "--diag_suppress=6831"}), 0, "", ""));
    EXPECT_TRUE(ended(warning({"--diag_suppress=6831", "--diag_error=6831"}), 1, "", failed()));
    EXPECT_TRUE(ended(warning({"--diag_error=6831", "--diag_warning=6831"}), 0, "", warned()));
    EXPECT_TRUE(ended(warning({"--diag_error=warning", "--diag_suppress=warning"}), 0, "", ""));
    EXPECT_TRUE(
        ended(warning({"--diag_suppress=warning", "--diag_warning=warning"}), 0, "", warned()));
}

TEST_F(DiagnosticOptions, ClassOfWarnings) {
    for (const char* word : {"warning", "WARNING", "Warning"}) {
        EXPECT_TRUE(ended(warning({std::string("--diag_suppress=") + word}), 0, "", ""));
        EXPECT_TRUE(ended(warning({std::string("--diag_error=") + word}), 1, "", failed()));
        EXPECT_TRUE(ended(warning({std::string("--diag_warning=") + word}), 0, "", warned()));
    }
    EXPECT_TRUE(ended(failing({"--diag_suppress=warning"}), 1, "", failed()));
}

TEST_F(DiagnosticOptions, ClassOfErrors) {
    for (const char* option : {"suppress", "warning", "error"}) {
        for (const char* word : {"error", "ERROR"}) {
            const std::string text = std::string("--diag_") + option + "=" + word;
            EXPECT_TRUE(ended(failing({text}), 1, "", failed())) << text;
            EXPECT_TRUE(ended(warning({text}), 0, "", warned())) << text;
        }
    }
}

TEST_F(DiagnosticOptions, ClassesAreNoRemarks) {
    for (const char* word : {"warning", "Error"}) {
        EXPECT_TRUE(ended(warning({std::string("--diag_remark=") + word}), 0, "",
                          badNumber + word + "\n" + warned()));
    }
    EXPECT_TRUE(ended(warning({"--diag_suppress=warnings"}), 0, "", warned())); // another letter
    EXPECT_TRUE(ended(warning({"--diag_suppress=remark"}), 0, "", warned()));
}

TEST_F(DiagnosticOptions, NumberIsMovedOnWithItsClass) {
    EXPECT_TRUE(ended(warning({"--diag_warning=6831", "--diag_suppress=warning"}), 0, "", ""));
    EXPECT_TRUE(ended(warning({"--diag_error=6831", "--diag_suppress=warning"}), 1, "", failed()));
    EXPECT_TRUE(ended(warning({"--diag_error=6831", "--diag_suppress=error"}), 0, "", ""));
    EXPECT_TRUE(ended(warning({"--diag_error=6831", "--diag_warning=error"}), 0, "", warned()));
    EXPECT_TRUE(ended(warning({"--diag_remark=6831", "--diag_error=warning"}), 0, "", plain));
}

TEST_F(DiagnosticOptions, ErrorsKeepTheirSeverity) {
    for (const char* option : {"suppress", "remark", "warning", "error"}) {
        EXPECT_TRUE(ended(failing({std::string("--diag_") + option + "=6831"}), 1, "", failed()));
    }
}

TEST_F(DiagnosticOptions, FatalErrorsKeepTheirSeverity) {
    for (const char* option : {"suppress", "remark", "warning", "error"}) {
        EXPECT_TRUE(ended(tomex({std::string("--diag_") + option + "=3900", "--foo"}), 1, "",
                          "Fatal error: L3900U: Unrecognized option '--foo'.\n"));
    }
}

TEST_F(DiagnosticOptions, RemarksKeepTheirSeverity) {
    for (const char* option : {"suppress", "remark", "warning", "error"}) {
        EXPECT_TRUE(ended(tomex({std::string("--diag_") + option + "=6873", "-s", "made.a"}), 0, "",
                          creating("made.a")));
        folder.remove("made.a");
    }
}

TEST_F(DiagnosticOptions, NumberReachesEverySeries) {
    const std::string oldSyntax =
        "Warning: L3910W: Old syntax, please use '--sizes'.\n" +
        std::string("Error: L6832E: "
                    "Archive 'none.a' not found : No such file or directory\n");
    const std::string quiet = oldSyntax.substr(oldSyntax.find("Error"));
    EXPECT_TRUE(ended(tomex({"-sizes", "none.a"}), 1, "", oldSyntax));
    for (const char* text : {"3910", "L3910", "L3910W"}) {
        EXPECT_TRUE(ended(tomex({std::string("--diag_suppress=") + text, "-sizes", "none.a"}), 1,
                          "", quiet));
    }
    for (const char* text : {"X3910", "x3910", "foo", "X", "zero"}) {
        EXPECT_TRUE(ended(tomex({std::string("--diag_suppress=") + text, "-sizes", "none.a"}), 1,
                          "", oldSyntax));
    }
}

TEST_F(DiagnosticOptions, ActOnWhatIsReadLater) {
    const std::string oldSyntax = "L3910W: Old syntax, please use '--create'.\n";
    const Words run = {"-c", "made.a", "new.o"};
    const auto made = [&](Words options) {
        options.insert(options.end(), run.begin(), run.end());
        CommandResult result = tomex(std::move(options));
        folder.remove("made.a");
        return result;
    };
    const std::string notObject = notElf("new.o", "made.a");
    EXPECT_TRUE(
        ended(made({"-create", "--diag_suppress=warning"}), 0, "", "Warning: " + oldSyntax));
    EXPECT_TRUE(ended(made({"--diag_suppress=warning", "-create"}), 0, "", ""));
    EXPECT_TRUE(ended(made({"-create", "--diag_suppress=3910", "-create"}), 0, "",
                      "Warning: " + oldSyntax + notObject));
    EXPECT_TRUE(ended(made({"-create", "--diag_style=ide"}), 0, "",
                      "Warning: " + oldSyntax +
                          "tomex : warning L6875:  Adding non-ELF object 'new.o' to archive "
                          "'made.a'\n"));
}

TEST_F(DiagnosticOptions, RaisedWarningOfTheParserStopsTheRun) {
    EXPECT_TRUE(ended(tomex({"--diag_error=3910", "-create", "made.a", "new.o"}), 1, "",
                      "Error: L3910W: Old syntax, please use '--create'.\n"));
    EXPECT_FALSE(folder.exists("made.a"));
}

TEST_F(DiagnosticOptions, NumbersThatDoNotExist) {
    for (const char* text : {"0", "10000", "-1", "L0", "L10000W", "L", "Lx", "_", "-6831", "*",
                             "99999999999999999999", "%s"}) {
        for (const char* option : {"suppress", "remark", "warning", "error"}) {
            EXPECT_TRUE(ended(failing({std::string("--diag_") + option + "=" + text}), 1, "",
                              badNumber + text + "\n" + failed()));
        }
    }
    EXPECT_TRUE(ended(failing({"--diag_suppress="}), 1, "", failed()));
    EXPECT_TRUE(ended(failing({"--diag_suppress", ""}), 1, "", failed()));
}

TEST_F(DiagnosticOptions, WarningOfANumberThatDoesNotExistStays) {
    for (const char* options : {"--diag_suppress=9962,warning,0", "--diag_error=9962,warning,0"}) {
        EXPECT_TRUE(ended(tomex({options, "-t", "lib.a"}), 0, "a.o\nb.o\n", badNumber + "0\n"));
    }
}

TEST_F(DiagnosticOptions, StylesOfEachSeverity) {
    const struct {
        const char* style;
        const char* warning;
        const char* error;
        const char* fatal;
        const char* remark;
    } rows[] = {
        {"qel", "Warning: L6831E: ", "Error: L6831E: ", "Fatal error: L3900U: ", ""},
        {"gnu", "Warning: L6831E: ", "Error: L6831E: ", "Fatal error: L3900U: ", ""},
        {"ide", "tomex : warning L6831:  ", "tomex : error L6831:  ",
         "tomex : Fatal error L3900:  ", "tomex : "},
        {"devstudio", "tomex : warning L6831:  ", "tomex : error L6831:  ",
         "tomex : Fatal error L3900:  ", "tomex : "},
    };
    for (const auto& row : rows) {
        const std::string option = std::string("--diag_style=") + row.style;
        EXPECT_TRUE(ended(warning({option}), 0, "", std::string(row.warning) + plain));
        EXPECT_TRUE(ended(failing({option}), 1, "", std::string(row.error) + plain));
        EXPECT_TRUE(
            ended(warning({option, "--diag_remark=6831"}), 0, "", std::string(row.remark) + plain));
        EXPECT_TRUE(ended(tomex({option, "--foo"}), 1, "",
                          std::string(row.fatal) + "Unrecognized option '--foo'.\n"));
        EXPECT_TRUE(ended(tomex({option, "-s", "made.a"}), 0, "", row.remark + creating("made.a")));
        folder.remove("made.a");
    }
}

TEST_F(DiagnosticOptions, LastStyleWins) {
    EXPECT_TRUE(ended(failing({"--diag_style=ide", "--diag_style=qel"}), 1, "", failed()));
    EXPECT_TRUE(ended(failing({"--diag_style=qel", "--diag_style=ide"}), 1, "",
                      std::string("tomex : error L6831:  ") + plain));
}

TEST_F(DiagnosticOptions, WarningsRaisedToErrorsReachTheLimit) {
    Words words = {"--diag_error=6831", "-d", "lib.a"};
    std::string lines;
    for (int i = 0; i < 60; ++i) {
        words.push_back("no" + std::to_string(i));
        lines += i < 50 ? notPresent("Error", words.back()) : "";
    }
    words.push_back("a.o");
    EXPECT_TRUE(ended(tomex(words), 1, "", lines));
    EXPECT_EQ(names(), (Words{"a.o", "b.o"}));
    words[0] = "--diag_suppress=6831";
    EXPECT_TRUE(ended(tomex(words), 0, "", ""));
    EXPECT_EQ(names(), Words{"b.o"});
}

TEST_F(DiagnosticOptions, WarningsAloneHaveNoLimit) {
    Words words = {"-d", "lib.a"};
    std::string lines;
    for (int i = 0; i < 200; ++i) {
        words.push_back("no" + std::to_string(i));
        lines += notPresent("Warning", words.back());
    }
    EXPECT_TRUE(ended(tomex(words), 0, "", lines));
}

TEST_F(DiagnosticOptions, MalformedArchivesCanBeMadeToFail) {
    const std::string line = ": L6974W: 'bad.a': malformed archive: Archive member header starting "
                             "at offset 8 contains invalid date string 'x           '\n";
    folder.write(
        "bad.a",
        ArchiveBuilder().add({.name = "a.o", .contents = "ab", .rawDate = "x           "}).bytes());
    EXPECT_TRUE(ended(tomex({"-t", "bad.a"}), 0, "a.o\n", "Warning" + line));
    EXPECT_TRUE(ended(tomex({"--diag_suppress=L6974", "-t", "bad.a"}), 0, "a.o\n", ""));
    const CommandResult raised = tomex({"--diag_error=6974", "-t", "bad.a"});
    EXPECT_TRUE(raised.exitedWith(1)) << raised;
    EXPECT_EQ(raised.error, "Error" + line);
}

} // namespace
} // namespace commandtest
