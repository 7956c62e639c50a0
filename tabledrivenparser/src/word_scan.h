// Where a word of a via file ends and which of its characters belong to it.
//
// Quotes of either kind keep white space in a word and are dropped; they may begin and end in the
// middle of it. Parentheses keep white space in it too, and stay. A backslash takes the meaning
// from a double quote everywhere, from a backslash inside quotes, and from a single quote inside
// single quotes; before any other character it is one itself, so that paths of Windows need no
// care. Nothing carries a word on behind the end of its line.
#pragma once

namespace tabledrivenparser {

// What one character does to its word.
struct WordStep {
    // The backslash that stood before the character belongs to the word after all.
    bool hasBackslash = false;
    // The character belongs to the word.
    bool isKept = false;
    // The character ends the word and does not belong to it.
    bool isEnd = false;
};

class WordScan {
public:
    // Takes the next character; the first one of a word is no white space. To be called until
    // `isEnd`, which NUL and the ends of a line bring at the latest.
    WordStep take(char character);

    // Whether quotes or parentheses are open. If they are at the end, the word is malformed.
    bool isOpen() const { return m_isSingle || m_isDouble || m_isGroup; }

private:
    bool endsWord(char character) const;
    bool changesQuotes(char character);
    bool isQuoted() const { return m_isSingle || m_isDouble; }

    bool m_isSingle = false;
    bool m_isDouble = false;
    bool m_isGroup = false;
    bool m_isEscaped = false;
};

} // namespace tabledrivenparser
