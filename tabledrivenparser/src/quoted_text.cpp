// A text has two spellings, both made to be read by word_scan.h.
//
// The bare one puts a backslash before each double quote. It is the usual one, and what people
// expect to see, but some texts with a backslash, a single quote, a parenthesis or white space
// would be read as something else. Those get the other one, between double quotes, where a
// backslash takes the meaning from a quote and from another backslash. Which of the two it is, is
// settled by reading the bare one back. Only a text with a blank or a tab never stands bare, also
// where parentheses would keep it together: required by what else reads the shown line and knows of
// quotes alone.

#include "tabledrivenparser/src/quoted_text.h"

#include "tabledrivenparser/src/word_scan.h"

#include <cstddef>
#include <cstring>

namespace tabledrivenparser {

namespace {

// Hands the characters of the bare spelling to `put`.
template <class Put>
void spellBare(const char* text, Put put) {
    bool hasSpecial = std::strpbrk(text, "\",") != nullptr;
    char previous = 0;
    for (; *text != 0; ++text) {
        if (*text == '"') {
            if (previous == '\\') {
                put('\\');
            }
            put('\\');
        }
        put(*text);
        previous = *text;
    }
    if (hasSpecial && previous == '\\') {
        put('\\');
    }
}

// The same for the spelling between double quotes. There a backslash alone is itself before all
// but a quote; of several in a row, each needs one more.
template <class Put>
void spellInQuotes(const char* text, Put put) {
    put('"');
    while (*text != 0) {
        size_t backslashes = std::strspn(text, "\\");
        text += backslashes;
        bool areDoubled = backslashes > 1 || *text == '"' || *text == 0;
        for (size_t left = areDoubled ? 2 * backslashes : backslashes; left > 0; --left) {
            put('\\');
        }
        if (*text == '"') {
            put('\\');
        }
        if (*text != 0) {
            put(*text++);
        }
    }
    put('"');
}

bool hasBlankOrTab(const char* text) {
    return std::strpbrk(text, " \t") != nullptr;
}

// Whether the bare spelling of `text` gives `text` when it is read.
bool readsBackBare(const char* text) {
    WordScan scan;
    const char* expected = text;
    bool isSame = true;
    auto expect = [&](char character) {
        isSame = isSame && *expected == character;
        if (isSame) {
            ++expected;
        }
    };
    auto read = [&](char character) {
        if (!isSame) {
            return;
        }
        WordStep step = scan.take(character);
        if (step.hasBackslash) {
            expect('\\');
        }
        if (step.isKept) {
            expect(character);
        }
        isSame = isSame && !(step.isEnd && character != 0);
    };
    spellBare(text, read);
    read('\0');
    return isSame && !scan.isOpen() && *expected == 0;
}

} // namespace

void writeQuoted(TextBuffer& buffer, const char* text) {
    auto put = [&](char character) { buffer.add(character); };
    if (*text != 0 && !hasBlankOrTab(text) && readsBackBare(text)) {
        spellBare(text, put);
    } else {
        spellInQuotes(text, put);
    }
}

} // namespace tabledrivenparser
