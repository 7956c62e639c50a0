// Where the parser's words come from, one after the other.
//
// The command line and the files that stand in for parts of it are read by the same loop; this is
// all it needs to know of them. The loop reads one word ahead.
#pragma once

#include <cstddef>
#include <span>

namespace tabledrivenparser {

class WordSource {
public:
    WordSource() = default;
    WordSource(const WordSource&) = delete;
    WordSource& operator=(const WordSource&) = delete;
    virtual ~WordSource() = default;

    // The next word, or null at the end and ever after. The text stays valid until the second call
    // after this one.
    virtual const char* nextToken() = 0;
};

// The words of an array, such as a program's arguments from the second on. The array must outlive
// the object; parsed values go on pointing to its texts.
class WordArray final : public WordSource {
public:
    explicit WordArray(std::span<const char* const> words) : m_words(words) {}

    const char* nextToken() override {
        return m_position < m_words.size() ? m_words[m_position++] : nullptr;
    }

private:
    std::span<const char* const> m_words;
    size_t m_position = 0;
};

} // namespace tabledrivenparser
