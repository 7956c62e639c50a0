#include "tabledrivenparser/src/word_scan.h"

#include <cctype>

namespace tabledrivenparser {

bool WordScan::endsWord(char character) const {
    if (character == 0 || character == '\n' || character == '\r') {
        return true;
    }
    return !isOpen() && std::isspace(static_cast<unsigned char>(character)) != 0;
}

// Acts on a quote that opens or closes, and on a backslash that may take a meaning away. False for
// any other character.
bool WordScan::changesQuotes(char character) {
    if (m_isEscaped) {
        return false;
    }
    switch (character) {
    case '"':
        if (m_isSingle || m_isGroup) {
            return false;
        }
        m_isDouble = !m_isDouble;
        return true;
    case '\'':
        if (m_isDouble || m_isGroup) {
            return false;
        }
        m_isSingle = !m_isSingle;
        return true;
    case '\\':
        m_isEscaped = true;
        return true;
    default:
        return false;
    }
}

WordStep WordScan::take(char character) {
    WordStep step;
    if (m_isEscaped && character != '"') {
        bool isEscape = (character == '\\' && isQuoted()) || (character == '\'' && m_isSingle);
        step.hasBackslash = !isEscape;
    }
    if (endsWord(character)) {
        step.isEnd = true;
        return step;
    }
    if (changesQuotes(character)) {
        return step;
    }
    m_isEscaped = false;
    step.isKept = true;
    if (!isQuoted()) {
        if (character == '(') {
            m_isGroup = true;
        } else if (character == ')') {
            m_isGroup = false;
        }
    }
    return step;
}

} // namespace tabledrivenparser
