// Finding the row for a word: the search proper, the choice between rows that fit, and the warnings
// about how the option was written.
//
// Only the rows of one initial letter are walked. The longest match wins, so that "create" is not
// read as "c" with something behind it. Of two rows that match equally far, the one that can use
// what follows wins. What is still undecided then is an ambiguous short form: it is reported with
// two of the names, and counts as not found.

#include "tabledrivenparser/interface/parser.h"
#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/src/letter_case.h"
#include "tabledrivenparser/src/row_match.h"

namespace tabledrivenparser {

namespace {

struct Search {
    MatchString best;
    // The last row that tied with the best.
    const OptionRow* rival = nullptr;
};

// Whether one dash is enough for the row, old syntax permitting.
bool fitsOneDash(const MatchString& match, const OptionTable& options) {
    if (match.dot) {
        return false;
    }
    if (match.oldSyntax && options.oldSyntaxPolicy != SyntaxPolicy_Refuse) {
        return true;
    }
    return !match.isLong && match.sameCase;
}

// Whether what follows the name, and the dashes before it, leave the row possible.
bool isCandidate(const MatchString& match, uint32_t dashes, const OptionTable& options) {
    if (!match.matched || match.unavailable) {
        return false;
    }
    if (match.isLong) {
        if (match.exact && match.dot) {
            return false; // the dot is for shortened names only
        }
        if (match.rest[0] != 0 && !match.hasSeparator) {
            return false;
        }
    } else if (dashes == 2 || match.hasSeparator) {
        return false;
    }
    return dashes != 1 || fitsOneDash(match, options);
}

// Whether `one` makes better use of what follows the name than `other`, which matched as far.
bool usesRestBetter(const MatchString& one, const MatchString& other) {
    if (one.rest[0] != 0) {
        return one.row->argument == OptionArgument_Required &&
               other.row->argument == OptionArgument_None;
    }
    return one.row->argument == OptionArgument_None &&
           other.row->argument == OptionArgument_Required;
}

void weigh(const MatchString& match, Search& search) {
    const MatchString& best = search.best;
    bool isBetter = best.row == nullptr || match.matchedLength > best.matchedLength;
    if (!isBetter) {
        if (match.matchedLength < best.matchedLength) {
            return;
        }
        isBetter = usesRestBetter(match, best);
        if (!isBetter) {
            if (!usesRestBetter(best, match)) {
                search.rival = match.row;
            }
            return;
        }
    }
    search.best = match;
    search.rival = nullptr;
}

// Walks the rows that share the first letter of `text` (or, where that is no letter, the rows
// before those with letters).
Search searchRows(const OptionTable& options, const char* text, uint32_t dashes) {
    Search search;
    char first = foldCase(text[0]);
    bool hasLetter = isLetter(first);
    uint32_t start = hasLetter ? options.letterIndex[first - 'a'] : 0;
    if (start == noRow) {
        return search;
    }
    for (uint32_t index = start; index < options.rowCount; ++index) {
        const OptionRow& row = options.rows[index];
        char rowFirst = foldCase(row.name[0]);
        if (hasLetter ? rowFirst != first : rowFirst == 'a') {
            break;
        }
        if (rowFirst != first) {
            continue;
        }
        MatchString match = matchRow(row, text, options.activeMask);
        if (isCandidate(match, dashes, options)) {
            weigh(match, search);
        }
    }
    return search;
}

// One message at most: a deprecated option is not worth learning to spell.
void warnOfSpelling(const OptionTable& options, Reporter& reporter, const MatchString& match,
                    uint32_t dashes) {
    const char* name = match.row->name;
    if ((match.row->flags & OptionFlag_Deprecated) != 0 &&
        options.deprecatedPolicy == SyntaxPolicy_Warn) {
        reporter.reportParseMessage(ParserSeverity_Warning, ParserMessage_DeprecatedOption, name);
        return;
    }
    if (options.oldSyntaxPolicy != SyntaxPolicy_Warn || dashes != 1) {
        return;
    }
    if (match.isLong) {
        reporter.reportParseMessage(ParserSeverity_Warning, ParserMessage_OldSyntax, "--", name, "",
                                    "");
    } else if (!match.sameCase) {
        reporter.reportParseMessage(ParserSeverity_Warning, ParserMessage_OldSyntax, "-", name, "",
                                    "");
    }
}

} // namespace

MatchString Parser::findOption(const char* text, uint32_t dashes) {
    trace("    (Searching for '%s').", text);
    MatchString match = searchOption(text, dashes);
    if (match.row != nullptr) {
        trace(" (Found '%s').", match.row->name);
    }
    return match;
}

MatchString Parser::searchOption(const char* text, uint32_t dashes) {
    if (dashes == 0) {
        if (m_options.rowCount == 0 || !isPositional(m_options.rows[0])) {
            return {};
        }
        return matchRow(m_options.rows[0], text, m_options.activeMask);
    }
    if (text[0] == 0) {
        return {};
    }
    Search search = searchRows(m_options, text, dashes);
    if (search.rival != nullptr) {
        m_reporter.reportParseMessage(ParserSeverity_Information, ParserMessage_PossibleMatches,
                                      text, search.best.row->name, search.rival->name);
        return {};
    }
    if (search.best.row != nullptr) {
        warnOfSpelling(m_options, m_reporter, search.best, dashes);
    }
    return search.best;
}

} // namespace tabledrivenparser
