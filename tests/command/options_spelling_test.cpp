// How an option may be written: each row of the table in its proper form, with one dash, in the
// wrong case, with dashes in its name, cut short with a full stop.
//
// Every run here also asks for the version number, which is printed when all words have been read
// and ends the run: so whatever else a run prints comes from reading its words.
#include "tests/command/command_case.h"

namespace commandtest {
namespace {

std::string oldSyntax(const std::string& form) {
    return "Warning: L3910W: Old syntax, please use '" + form + "'.\n";
}

std::string unrecognized(const std::string& form) {
    return "Fatal error: L3900U: Unrecognized option '" + form + "'.\n";
}

struct OptionRow {
    const char* name;
    const char* argument; // null: takes none
    bool oldSyntax;       // may be written with one dash, a letter in the wrong case
};

constexpr OptionRow longRows[] = {
    {"qeabi_buildattr", nullptr, false},
    {"create", nullptr, true},
    {"db_check", "low", false},
    {"debug_symbols", nullptr, false},
    {"diag_error", "6874", false},
    {"diag_remark", "6874", false},
    {"diag_style", "qel", false},
    {"diag_suppress", "6874", false},
    {"diag_warning", "6874", false},
    {"entries", nullptr, true},
    {"help", nullptr, true},
    {"libattrmap", "none.map", false},
    {"message_locale", "en_US", false},
    {"new_files_only", nullptr, true},
    {"no_qeabi_buildattr", nullptr, false},
    {"no_debug_symbols", nullptr, false},
    {"no_normalise", "5", false},
    {"no_unique_symbols", nullptr, false},
    {"normalise", "5", false},
    {"sizes", nullptr, true},
    {"unique_symbols", nullptr, false},
    {"version", nullptr, true},
    {"version_number", nullptr, false},
    {"via", "words", true},
    {"vsn", nullptr, true},
    {"zs", nullptr, true},
    {"zt", nullptr, true},
};

constexpr OptionRow letterRows[] = {
    {"a", "x.o", true},    {"b", "x.o", true},    {"C", nullptr, false}, {"c", nullptr, false},
    {"d", nullptr, true},  {"h", nullptr, true},  {"i", "x.o", true},    {"m", nullptr, true},
    {"n", nullptr, true},  {"p", nullptr, true},  {"q", nullptr, true},  {"r", nullptr, true},
    {"s", nullptr, true},  {"T", nullptr, false}, {"t", nullptr, false}, {"u", nullptr, true},
    {"V", nullptr, false}, {"v", nullptr, false}, {"x", nullptr, true},
};

std::string upper(std::string text) {
    for (char& character : text) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return text;
}

std::string dashed(std::string text) {
    for (char& character : text) {
        if (character == '_') {
            character = '-';
        }
    }
    return text;
}

class OptionsSpelling : public CommandCase {
protected:
    OptionsSpelling() { folder.write("words", "-c\n"); }

    // The words are good, with exactly these warnings.
    testing::AssertionResult accepted(Words words, const std::string& warnings = "") const {
        words.emplace_back("--version_number");
        return ended(tomex(words), 0, m_version, warnings);
    }
    testing::AssertionResult refused(Words words, const std::string& lines) const {
        words.emplace_back("--version_number");
        return ended(tomex(words), 1, "", lines);
    }
    // The row's option, in that form, with its argument in a word of its own.
    static Words spelled(const OptionRow& row, const std::string& form) {
        return row.argument != nullptr ? Words{form, row.argument} : Words{form};
    }

    const std::string m_version = tomex({"--version_number"}).output;
};

TEST_F(OptionsSpelling, VersionNumberIsDigits) {
    ASSERT_GE(m_version.size(), 8U);
    EXPECT_EQ(m_version.find_first_not_of("0123456789"), m_version.size() - 1);
    EXPECT_EQ(m_version.back(), '\n');
}

TEST_F(OptionsSpelling, VersionNumberEndsTheRunBeforeAllElse) {
    for (const Words& words :
         std::vector<Words>{{"--help"}, {"--vsn"}, {"-t", "missing.a"}, {"-t", "-x", "lib.a"}}) {
        EXPECT_TRUE(accepted(words));
    }
}

TEST_F(OptionsSpelling, LongNameWithTwoDashes) {
    for (const OptionRow& row : longRows) {
        EXPECT_TRUE(accepted(spelled(row, std::string("--") + row.name)));
    }
}

TEST_F(OptionsSpelling, LongNameInUpperCase) {
    for (const OptionRow& row : longRows) {
        EXPECT_TRUE(accepted(spelled(row, "--" + upper(row.name))));
    }
}

TEST_F(OptionsSpelling, LongNameWithDashesInIt) {
    for (const OptionRow& row : longRows) {
        EXPECT_TRUE(accepted(spelled(row, "--" + dashed(row.name))));
    }
}

TEST_F(OptionsSpelling, LongNameWithEqualsSign) {
    for (const OptionRow& row : longRows) {
        const std::string form = std::string("--") + row.name;
        if (row.argument != nullptr) {
            EXPECT_TRUE(accepted({form + "=" + row.argument}));
        } else {
            EXPECT_TRUE(
                refused({form + "=1"},
                        "Fatal error: L3916U: Unexpected argument for option '" + form + "'\n"));
        }
    }
}

TEST_F(OptionsSpelling, LongNameWithOneDashIsOldSyntaxWhereItIsAllowed) {
    for (const OptionRow& row : longRows) {
        if (row.oldSyntax) {
            const std::string proper = std::string("--") + row.name;
            EXPECT_TRUE(accepted(spelled(row, std::string("-") + row.name), oldSyntax(proper)));
            EXPECT_TRUE(accepted(spelled(row, "-" + upper(row.name)), oldSyntax(proper)));
        }
    }
}

TEST_F(OptionsSpelling, OtherLongNameWithOneDashIsReadAsLetters) {
    const std::string noArgument = "Fatal error: L3917U: Concatenated options cannot have "
                                   "arguments: -";
    const std::vector<std::pair<std::string, std::string>> forms = {
        {"-qeabi_buildattr", unrecognized("-eabi_buildattr")},
        {"-db_check=low", noArgument + "b _check=low\n"},
        {"-debug_symbols", unrecognized("-ebug_symbols")},
        {"-diag_error=6874", noArgument + "i ag_error=6874\n"},
        {"-libattrmap=x", unrecognized("-libattrmap=x")},
        {"-message_locale=en_US", unrecognized("-essage_locale=en_US")},
        {"-no_debug_symbols", unrecognized("-o_debug_symbols")},
        {"-no_normalise=5", unrecognized("-o_normalise=5")},
        {"-normalise=5", unrecognized("-ormalise=5")},
        {"-show_cmdline", unrecognized("-ow_cmdline")},
        {"-unique_symbols", noArgument + "i que_symbols\n"},
        {"-version_number", unrecognized("-ersion_number")},
    };
    for (const auto& [form, line] : forms) {
        EXPECT_TRUE(refused({form}, line));
    }
}

TEST_F(OptionsSpelling, OldSyntaxWithUnexpectedArgumentWarnsFirst) {
    EXPECT_TRUE(refused({"-create=1"},
                        oldSyntax("--create") +
                            "Fatal error: L3916U: Unexpected argument for option '-create'\n"));
}

TEST_F(OptionsSpelling, LetterWithOneDash) {
    for (const OptionRow& row : letterRows) {
        EXPECT_TRUE(accepted(spelled(row, std::string("-") + row.name)));
        if (row.argument != nullptr) {
            EXPECT_TRUE(accepted({std::string("-") + row.name + row.argument}));
        }
    }
}

TEST_F(OptionsSpelling, LetterInTheWrongCaseIsOldSyntaxWhereItIsAllowed) {
    for (const OptionRow& row : letterRows) {
        if (row.oldSyntax) {
            const std::string proper = std::string("-") + row.name;
            EXPECT_TRUE(accepted(spelled(row, upper(proper)), oldSyntax(proper)));
        }
    }
}

TEST_F(OptionsSpelling, LetterWithTwoDashesIsNoOption) {
    for (const OptionRow& row : letterRows) {
        const std::string form = std::string("--") + row.name;
        EXPECT_TRUE(refused({form}, unrecognized(form)));
    }
}

TEST_F(OptionsSpelling, LetterTakesNoEqualsSign) {
    for (const OptionRow& row : letterRows) {
        const std::string form = std::string("-") + row.name + "=x";
        EXPECT_TRUE(refused({form}, unrecognized(form)));
    }
}

TEST_F(OptionsSpelling, UnknownNames) {
    for (const char* form : {"--foo", "-z", "-1", "--1", "--creat", "--createx", "---create", "--_",
                             "-e", "-k", "--no", "--no_create", "--vians"}) {
        EXPECT_TRUE(refused({form}, unrecognized(form)));
    }
}

TEST_F(OptionsSpelling, UnknownNameIsShownWholeHoweverLongItIs) {
    const std::string form = "--" + std::string(30000, 'y');
    EXPECT_TRUE(refused({form}, unrecognized(form)));
}

TEST_F(OptionsSpelling, UnknownNameIsShownSafely) {
    EXPECT_TRUE(refused({"--%s%n"}, unrecognized("--%s%n")));
    EXPECT_TRUE(refused({"--\x1b[1m\x7f"}, unrecognized("--\\033[1m\\177")));
}

TEST_F(OptionsSpelling, CommandLineCanBeShown) {
    library("lib.a", {"a.o"});
    const CommandResult result = tomex({"--show_cmdline", "-t", "lib.a"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_TRUE(result.output.ends_with("a.o\n")) << result;
    EXPECT_EQ(result.error, "");
}

TEST_F(OptionsSpelling, ReadingStopsAtTheFirstUnknownName) {
    EXPECT_TRUE(
        refused({"-A", "x", "--foo", "--bar", "-B", "x"}, oldSyntax("-a") + unrecognized("--foo")));
}

TEST_F(OptionsSpelling, FullStopCutsANameShort) {
    for (const Words& words : std::vector<Words>{{"--cre."},
                                                 {"--c."},
                                                 {"--CRE."},
                                                 {"--h."},
                                                 {"--e."},
                                                 {"--qe."},
                                                 {"--si."},
                                                 {"--no-q."},
                                                 {"--db_."},
                                                 {"--new."},
                                                 {"--u."},
                                                 {"--version_."},
                                                 {"--no_n.", "5"},
                                                 {"--norm.", "5"},
                                                 {"--norm.=5"},
                                                 {"--mes.=en_US"},
                                                 {"--lib.=x"},
                                                 {"--diag_st.=gnu"}}) {
        EXPECT_TRUE(words[0] == "--db_." ? accepted({"--db_.", "low"}) : accepted(words));
    }
}

TEST_F(OptionsSpelling, FullStopBehindAWholeNameIsNoName) {
    for (const OptionRow& row : longRows) {
        const std::string form = std::string("--") + row.name + ".";
        if (std::string_view("version") != row.name) { // which is a start of another name
            EXPECT_TRUE(refused({form}, unrecognized(form)));
        }
    }
    EXPECT_TRUE(accepted({"--version."}));
}

TEST_F(OptionsSpelling, FullStopWithOneDashIsNoAbbreviation) {
    EXPECT_TRUE(refused({"-cre."}, unrecognized("-e.")));
    EXPECT_TRUE(refused({"-zs."}, unrecognized("-zs.")));
}

TEST_F(OptionsSpelling, FullStopDoesNotShortenLetters) {
    EXPECT_TRUE(refused({"--."}, unrecognized("--.")));
    EXPECT_TRUE(refused({"-t."}, unrecognized("-.")));
}

TEST_F(OptionsSpelling, AmbiguousAbbreviationNamesTheFirstAndTheLastThatFit) {
    struct Ambiguity {
        const char* text;
        const char* first;
        const char* last;
    };
    constexpr Ambiguity ambiguities[] = {
        {"no_.", "no_qeabi_buildattr", "no_unique_symbols"},
        {"ver.", "version", "version_number"},
        {"v.", "version", "vsn"},
        {"diag_.", "diag_error", "diag_warning"},
        {"diag_s.=x", "diag_style", "diag_suppress"},
        {"n.", "new_files_only", "no_unique_symbols"},
        {"n.=5", "no_normalise", "normalise"},
        {"z.", "zs", "zt"},
        {"NO_.", "no_qeabi_buildattr", "no_unique_symbols"},
    };
    for (const Ambiguity& ambiguity : ambiguities) {
        const std::string text = ambiguity.text;
        EXPECT_TRUE(refused({"--" + text}, "Possible matches for '" + text + "' include '" +
                                               ambiguity.first + "' and '" + ambiguity.last +
                                               "'.\n" + unrecognized("--" + text)));
    }
}

TEST_F(OptionsSpelling, FormOfTheOptionDecidesAmongAbbreviatedNames) {
    // With nothing behind it an option that takes no argument is meant, with "=" one that does.
    EXPECT_TRUE(accepted({"--d."})); // debug_symbols
    EXPECT_TRUE(accepted({"--no_n.=5"}));
    EXPECT_TRUE(accepted({"--vi.=words"}));
    EXPECT_TRUE(accepted({"--no_u."}));
}

} // namespace
} // namespace commandtest
