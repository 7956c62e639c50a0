// Arguments of options: where they are taken from, which values are good, and which option wins
// when several set the same thing.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

std::string missing(const std::string& name) {
    return "Fatal error: L3901U: Missing argument for option '" + name + "'.\n";
}

std::string notPermitted(const std::string& argument, const std::string& name) {
    return "Fatal error: L3903U: Argument '" + argument + "' not permitted for option '" + name +
           "'.\n";
}

std::string overflow(const std::string& text) {
    return "Fatal error: L3908U: Overflow: '" + text + "' will not fit in an integer.\n";
}

class OptionsArgument : public CommandCase {
protected:
    OptionsArgument() { file("a.o", "abc", 1234); }

    // The summary line of a.o in a library that is made with these options.
    std::string made(Words options) const {
        options.insert(options.end(), {"-rc", "lib.a", "a.o"});
        const CommandResult result = tomex(options);
        EXPECT_TRUE(ended(result, 0, "", notElf("a.o")));
        const Words summary = archive().summary();
        EXPECT_EQ(summary.size(), 2U);
        folder.remove("lib.a");
        return summary.back();
    }
    static std::string normalised(const std::string& date) {
        return "a.o " + date + " 0 0 100644 3";
    }
};

TEST_F(OptionsArgument, MissingAtTheEnd) {
    for (const char* name :
         {"db_check", "diag_error", "diag_remark", "diag_style", "diag_suppress", "diag_warning",
          "libattrmap", "message_locale", "no_normalise", "normalise", "via"}) {
        EXPECT_TRUE(ended(tomex({"lib.a", std::string("--") + name}), 1, "", missing(name)));
    }
    for (const char* name : {"a", "b", "i"}) {
        EXPECT_TRUE(ended(tomex({"lib.a", std::string("-") + name}), 1, "", missing(name)));
    }
    EXPECT_TRUE(ended(tomex({"--NO-Norm."}), 1, "", missing("NO-Norm.")));
}

TEST_F(OptionsArgument, NextWordIsTakenEvenIfItLooksLikeAnOption) {
    EXPECT_TRUE(ended(tomex({"--normalise", "--vsn"}), 1, "", notPermitted("--vsn", "normalise")));
    EXPECT_TRUE(ended(tomex({"-a", "-t", "lib.a"}), 1, tomex({}).output,
                      "Error: L6839E: One of the actions -[dmpqrtx] must be specified\n"));
    library("lib.a", {"a.o", "--"});
    EXPECT_TRUE(ended(tomex({"-t", "-a", "--", "lib.a"}), 0, "a.o\n--\n", ""));
}

TEST_F(OptionsArgument, IntegerForms) {
    const std::vector<std::pair<std::string, std::string>> good = {
        {"1000000000", "1000000000"},
        {"1", "1"},
        {"010", "10"},
        {"0x10", "16"},
        {"0X1f", "31"},
        {"+7", "7"},
        {"2147483647", "2147483647"},
        {"0x7fffffff", "2147483647"},
        {"-1", "4294967295"},
        {"-2147483648", "2147483648"},
    };
    for (const auto& [text, date] : good) {
        EXPECT_EQ(made({"--normalise", text}), normalised(date)) << text;
        EXPECT_EQ(made({"--normalise=" + text}), normalised(date)) << text;
        EXPECT_EQ(made({"--no_normalise=" + text}), normalised(date)) << text;
    }
}

TEST_F(OptionsArgument, IntegerZeroNormalisesNothing) {
    for (const char* text : {"0", "0x", "0X", "0x0", "-0", "00"}) {
        EXPECT_EQ(made({"--normalise", text}), added("a.o", 1234, 3)) << text;
        EXPECT_EQ(made({"--no-normalise", text}), added("a.o", 1234, 3)) << text;
    }
}

TEST_F(OptionsArgument, WhatIsNoIntegerIsNotPermitted) {
    for (const char* text : {"", "x", "5x", "1,2", "=5", "0xg", "1 ", "0b1", "-", "1.5", "5="}) {
        EXPECT_TRUE(ended(tomex({"-r", "lib.a", "a.o", std::string("--normalise=") + text}), 1, "",
                          notPermitted(text, "normalise")));
        EXPECT_TRUE(ended(tomex({"-r", "lib.a", "a.o", "--no-normalise", text}), 1, "",
                          notPermitted(text, "no_normalise")));
    }
    EXPECT_EQ(folder.entries(), Words{"a.o"});
}

TEST_F(OptionsArgument, IntegerBeyondTheRangeIsAnOverflow) {
    for (const char* text :
         {"2147483648", "-2147483649", "0x80000000", "4294967296", "99999999999999999999999999",
          "-99999999999999999999999999", "0xffffffffffffffffffff"}) {
        EXPECT_TRUE(
            ended(tomex({"--normalise", text, "-r", "lib.a", "a.o"}), 1, "", overflow(text)));
    }
    EXPECT_EQ(folder.entries(), Words{"a.o"});
}

TEST_F(OptionsArgument, LastOfTheOptionsOfOneSettingWins) {
    EXPECT_EQ(made({"--normalise=5", "--normalise=6"}), normalised("6"));
    EXPECT_EQ(made({"--normalise=5", "--no_normalise=6"}), normalised("6"));
    EXPECT_EQ(made({"--normalise=5", "--no_normalise=0"}), added("a.o", 1234, 3));
}

TEST_F(OptionsArgument, BeforeWinsOverAfter) {
    library("lib.a", {"x", "y", "z"});
    EXPECT_EQ(tomex({"-r", "-b", "y", "-a", "z", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x", "a.o", "y", "z"}));
    library("lib.a", {"x", "y", "z"});
    EXPECT_EQ(tomex({"-r", "-a", "z", "-i", "x", "-b", "y", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x", "a.o", "y", "z"}));
    // The position that does not count need not be there.
    EXPECT_EQ(tomex({"-d", "-b", "x", "-a", "none", "lib.a", "a.o"}).status, 0);
    EXPECT_EQ(names(), (Words{"x", "y", "z"}));
}

TEST_F(OptionsArgument, ListSettingsTakeCommas) {
    EXPECT_TRUE(ended(tomex({"--diag_suppress=6875,6873", "-r", "lib.a", "a.o"}), 0, "",
                      creating())); // a remark may not be lowered further
    folder.remove("lib.a");
    EXPECT_TRUE(ended(tomex({"--diag_suppress", "L6875", "-rc", "lib.a", "a.o"}), 0, "", ""));
    EXPECT_TRUE(
        ended(tomex({"--diag_suppress=X6875", "-rc", "lib.a", "a.o"}), 0, "", notElf("a.o")));
}

TEST_F(OptionsArgument, SeparatorInPlaceOfTheEqualsSignIsOldSyntax) {
    EXPECT_TRUE(ended(tomex({"--diag_suppress,6875", "-rc", "lib.a", "a.o"}), 0, "",
                      "Warning: L3910W: Old syntax, please use '--diag_suppress=,6875'.\n"));
    EXPECT_TRUE(ended(tomex({"--normalise,5", "-r", "lib.a", "a.o"}), 1, "",
                      "Fatal error: L3900U: Unrecognized option '--normalise,5'.\n"));
}

TEST_F(OptionsArgument, CommaInAFileNameIsACharacterLikeAnyOther) {
    file("a,b", "x");
    EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "a,b"}), 0, "", notElf("a,b")));
    EXPECT_EQ(names(), Words{"a,b"});
}

TEST_F(OptionsArgument, RaisedWarningIsAnErrorAndStopsTheWriting) {
    const std::string raised = "Error: L6875W: Adding non-ELF object 'a.o' to archive 'lib.a'\n";
    EXPECT_TRUE(ended(tomex({"--diag_error=6875", "-r", "lib.a", "a.o"}), 1, "", raised));
    EXPECT_TRUE(ended(tomex({"--diag_error=warning", "-r", "lib.a", "a.o"}), 1, "", raised));
    EXPECT_EQ(folder.entries(), Words{"a.o"});
}

TEST_F(OptionsArgument, WarningLoweredToARemarkHasNoCode) {
    EXPECT_TRUE(ended(tomex({"--diag_remark=6875", "-rc", "lib.a", "a.o"}), 0, "",
                      "Adding non-ELF object 'a.o' to archive 'lib.a'\n"));
}

TEST_F(OptionsArgument, UnknownDiagnosticNumberWarns) {
    for (const char* text : {"0", "10000", "foo", "-5"}) {
        const CommandResult result =
            tomex({std::string("--diag_error=") + text, "-rc", "lib.a", "a.o"});
        if (std::string_view("foo") == text) { // another tool's letter
            EXPECT_TRUE(ended(result, 0, "", notElf("a.o")));
        } else {
            EXPECT_TRUE(ended(result, 0, "",
                              std::string("Warning: L9962I: Unknown diagnostic number ") + text +
                                  "\n" + notElf("a.o")));
        }
    }
}

TEST_F(OptionsArgument, StylesOfDiagnostics) {
    const std::string plain = "Error: L6833E: File 'no' does not exist\n";
    const std::string placed = "tomex : error L6833:  File 'no' does not exist\n";
    const std::vector<std::pair<std::string, std::string>> styles = {
        {"qel", plain}, {"gnu", plain}, {"GNU", plain}, {"ide", placed}, {"DevStudio", placed}};
    for (const auto& [style, line] : styles) {
        EXPECT_TRUE(ended(tomex({"--diag_style=" + style, "-r", "lib.a", "no"}), 1, "", line));
        EXPECT_TRUE(ended(tomex({"--diag_style", style, "-r", "lib.a", "no"}), 1, "", line));
    }
}

TEST_F(OptionsArgument, StyleListShowsWhatCanBeSelected) {
    EXPECT_TRUE(
        ended(tomex({"--diag_style=list", "-r", "lib.a", "no"}), 1, "",
              "tomex : The following arguments to option 'diag_style' can be selected:\n"
              " --diag_style=list\n --diag_style=qel\n --diag_style=ide\n --diag_style=devstudio\n"
              " --diag_style=gnu\n\ntomex : error L6833:  File 'no' does not exist\n"));
}

TEST_F(OptionsArgument, StyleThatDoesNotExistIsNotPermitted) {
    for (const char* style : {"", "g", "gnux", "2", "gnu,ide"}) {
        EXPECT_TRUE(ended(tomex({std::string("--diag_style=") + style}), 1, "",
                          notPermitted(style, "diag_style")));
    }
}

TEST_F(OptionsArgument, CheckLevels) {
    library("lib.a", {"a.o"});
    const std::vector<std::pair<std::string, std::string>> levels = {
        {"none", ""},
        {"show", "COLD LOW checks enabled\nHOT LOW checks enabled\n"},
        {"show,none", ""},
        {"show,low", "COLD LOW checks enabled\nHOT LOW checks enabled\n"},
        {"show,medium",
         "COLD LOW checks enabled\nCOLD MEDIUM checks enabled\nHOT LOW checks enabled\n"},
        {"show,high", "COLD LOW checks enabled\nCOLD MEDIUM checks enabled\n"
                      "COLD HIGH checks enabled\nHOT LOW checks enabled\n"},
        {"show,extravagant", "COLD LOW checks enabled\nCOLD MEDIUM checks enabled\n"
                             "COLD HIGH checks enabled\nCOLD EXTRAVAGANT checks enabled\n"
                             "HOT LOW checks enabled\n"},
        {"show,", ""},
        {"foo", ""},
        {"lowx", ""},
        {"", ""},
    };
    for (const auto& [level, lines] : levels) {
        EXPECT_TRUE(ended(tomex({"--db_check=" + level, "-t", "lib.a"}), 0, "a.o\n", lines));
    }
}

TEST_F(OptionsArgument, LanguagesOfMessages) {
    library("lib.a", {"a.o"});
    EXPECT_TRUE(ended(tomex({"--message_locale=en_US", "-t", "lib.a"}), 0, "a.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--message_locale=ja_JP.UTF-8", "-t", "lib.a"}), 0, "a.o\n", ""));
    for (const char* name : {"zz", "en_US.foo", "", "en_US.", "fr_FR"}) {
        EXPECT_TRUE(ended(tomex({std::string("--message_locale=") + name, "-t", "lib.a"}), 1, "",
                          std::string("Fatal error: L9780E: Could not initialise message locale ") +
                              name + "\n"));
    }
}

TEST_F(OptionsArgument, LibraryAttributeMapThatIsNotThereIsNoError) {
    library("lib.a", {"a.o"});
    EXPECT_TRUE(ended(tomex({"--libattrmap=none.map", "-t", "lib.a"}), 0, "a.o\n", ""));
}

} // namespace
} // namespace commandtest
