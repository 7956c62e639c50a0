#include "tabledrivenparser/src/row_match.h"

#include "tabledrivenparser/src/letter_case.h"
#include "tabledrivenparser/src/mask_list.h"

namespace tabledrivenparser {

namespace {

// A name has "_" where the user may write "_" or "-".
char nameCharacter(char character) {
    return character == '-' ? '_' : foldCase(character);
}

// How far `text` follows `name`, from the second character on.
uint32_t commonLength(const char* name, const char* text) {
    uint32_t length = 1;
    while (name[length] != 0 && name[length] == nameCharacter(text[length])) {
        ++length;
    }
    return length;
}

} // namespace

MatchString matchRow(const OptionRow& row, const char* text, uint32_t activeMask) {
    MatchString match;
    match.row = &row;
    match.isLong = isLongName(row);
    match.oldSyntax = (row.flags & OptionFlag_OldSyntax) != 0;
    if (isPositional(row)) {
        match.sameCase = true;
        match.exact = true;
    } else {
        match.sameCase = row.name[0] == text[0];
        match.matchedLength = commonLength(row.name, text);
        match.exact = row.name[match.matchedLength] == 0;
        if (match.isLong && (row.flags & OptionFlag_Public) != 0 &&
            text[match.matchedLength] == '.') {
            match.dot = true;
            ++match.matchedLength;
        }
    }
    match.rest = text + match.matchedLength;
    char next = match.rest[0];
    match.hasSeparator = next == '=' || (next != 0 && next == row.separator);
    match.matched = match.dot || match.exact;
    match.unavailable = match.matched && !masksPass(row.restrictions, activeMask);
    return match;
}

} // namespace tabledrivenparser
