// A text on the heap with one owner; copies are deep. A null text and an empty one differ.
#pragma once

namespace attributes {

class OwnedText {
public:
    OwnedText() = default;
    // A copy of `text`, which ends in a NUL, or is null.
    explicit OwnedText(const char* text) : m_Text(duplicate(text)) {}
    OwnedText(const OwnedText& other) : m_Text(duplicate(other.m_Text)) {}
    OwnedText(OwnedText&& other) noexcept : m_Text(other.m_Text) { other.m_Text = nullptr; }
    OwnedText& operator=(OwnedText other) noexcept {
        char* const text = m_Text;
        m_Text = other.m_Text;
        other.m_Text = text;
        return *this;
    }
    ~OwnedText() { delete[] m_Text; }

    // The text, or null. Good until the next assignment.
    const char* get() const { return m_Text; }

    bool operator==(const OwnedText& other) const;

private:
    static char* duplicate(const char* text);

    char* m_Text = nullptr;
};

} // namespace attributes
