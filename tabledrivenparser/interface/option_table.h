// The table of options that a program accepts.
//
// The table is constant data of the program; the parser reads it in place. Each row says under
// which name an option is written, which parameter it sets, whether an argument follows, and which
// value a bare option stands for. Several rows may set one parameter: synonyms, or a pair such as
// "x" and "no_x" that sets opposite values.
//
// The order of the rows matters. Row 0 is the positional row (empty name) if the program takes
// words that are no options. Then come rows whose names begin with no letter, then the rows grouped
// by their first letter, case folded, from a to z. Within a letter the order is free, but where a
// shortened name fits several rows the report names the first and the last of them.
//
// Names are written with "_" where the user may write "_" or "-", and in lower case after their
// first character: an upper-case letter there can never be matched.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tabledrivenparser {

class UnknownOptionHandler;

// The values of OptionRow::argument.
enum OptionArgument : uint32_t {
    OptionArgument_Required = 0, // joined, after "=", or the next word
    OptionArgument_Optional = 1, // only joined or after "="
    OptionArgument_None = 2,
};

// The bits of OptionRow::flags.
enum OptionFlag : uint8_t {
    // Also accepted the old way: a long name after one dash, a letter in the wrong case.
    OptionFlag_OldSyntax = 1,
    OptionFlag_Deprecated = 2,
    // May be shortened by a "." at its end.
    OptionFlag_Public = 4,
};

struct OptionRow {
    // Without dashes; "" for the positional row.
    const char* name = nullptr;
    // Index into the parameter arrays.
    uint32_t parameter = 0;
    // An OptionArgument.
    uint32_t argument = OptionArgument_Required;
    // The value taken when no argument is given: a number, a truth value, or the address of a text
    // (addressValue in parameters.h makes one).
    uint64_t impliedValue = 0;
    // Masks, ended by 0. The row exists only if every mask shares a bit with the table's
    // activeMask. Null and an empty list mean always.
    const uint32_t* restrictions = nullptr;
    // For parameters of several values: what splits one argument into them, 0 for nothing. It is
    // also taken where "=" may stand between option and argument, with a warning.
    char separator = 0;
    // OptionFlag bits.
    uint8_t flags = 0;
};

// What to do about an option that is written the old way, or one that is deprecated. Any other
// value accepts it silently.
enum SyntaxPolicy : uint32_t {
    SyntaxPolicy_Warn = 1,
    SyntaxPolicy_Refuse = 2, // for the old syntax only
};

struct OptionTable {
    uint32_t rowCount = 0;
    const OptionRow* rows = nullptr;
    // 26 entries: the first row of each letter a to z, or noRow.
    const uint32_t* letterIndex = nullptr;
    uint32_t oldSyntaxPolicy = SyntaxPolicy_Warn;
    uint32_t deprecatedPolicy = SyntaxPolicy_Warn;
    uint32_t activeMask = 0xFFFFFFFF;
    // Asked about words that no row takes; may be null.
    UnknownOptionHandler* unknownOptionHandler = nullptr;
};

// The mark of a letter that no row begins with.
constexpr uint32_t noRow = 0xFFFFFFFF;

// The letter index of rows that stand in table order.
constexpr std::array<uint32_t, 26> makeLetterIndex(std::span<const OptionRow> rows) {
    std::array<uint32_t, 26> index{};
    index.fill(noRow);
    for (size_t row = rows.size(); row-- > 0;) {
        char first = rows[row].name[0];
        if (first >= 'A' && first <= 'Z') {
            first = static_cast<char>(first - 'A' + 'a');
        }
        if (first >= 'a' && first <= 'z') {
            index[static_cast<size_t>(first - 'a')] = static_cast<uint32_t>(row);
        }
    }
    return index;
}

} // namespace tabledrivenparser
