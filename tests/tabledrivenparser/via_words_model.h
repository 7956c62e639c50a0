// What the words of a via file are, told a second time: on the whole text at once, with a look at
// the character behind a backslash in place of a memory of it. The buffer and its limit are left
// out. Tests and the fuzz target hold the reader against it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace viamodel {

struct Words {
    std::vector<std::string> words;
    bool isMalformed = false;

    bool operator==(const Words&) const = default;
};

// What the comment filter lets through.
inline std::string withoutComments(std::string_view file) {
    std::string kept;
    while (!file.empty()) {
        const size_t comment = file.find_first_of("#;");
        kept += file.substr(0, comment);
        if (comment == std::string_view::npos) {
            break;
        }
        const size_t end = file.find_first_of("\r\n", comment);
        file = end == std::string_view::npos ? std::string_view() : file.substr(end + 1);
    }
    return kept;
}

// Takes one word, which begins at `at`. False if it is malformed.
inline bool takeWord(std::string_view text, size_t& at, std::string& word) {
    char quote = 0;
    bool isGroup = false;
    for (; at < text.size() && text[at] != '\n' && text[at] != '\r'; ++at) {
        const char c = text[at];
        const bool isPlain = quote == 0 && !isGroup;
        if (isPlain && (c == ' ' || c == '\t' || c == '\v' || c == '\f')) {
            return true;
        }
        if (c == '\\') {
            const char next = at + 1 < text.size() ? text[at + 1] : '\0';
            if (next == '"' || (next == '\\' && quote != 0) || (next == '\'' && quote == '\'')) {
                word += next;
                ++at;
            } else if (next == '\\' || next == '\'') {
                word += c;
                word += next;
                ++at;
            } else {
                word += c;
            }
        } else if (c == quote) {
            quote = 0;
        } else if (isPlain && (c == '"' || c == '\'')) {
            quote = c;
        } else {
            isGroup = quote == 0 ? (c == '(' || (isGroup && c != ')')) : isGroup;
            word += c;
        }
    }
    return quote == 0 && !isGroup;
}

// The words of a text up to its end, its first NUL, or its first malformed word.
inline Words wordsOf(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    Words result;
    for (size_t at = 0;;) {
        at = text.find_first_not_of(" \t\n\v\f\r", at);
        if (at == std::string_view::npos) {
            return result;
        }
        std::string word;
        if (!takeWord(text, at, word)) {
            result.isMalformed = true;
            return result;
        }
        result.words.push_back(word);
    }
}

} // namespace viamodel
