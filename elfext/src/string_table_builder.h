// Makes the contents of a string table: texts with their NULs, told by their offsets.
//
// A table starts with a NUL, so that offset 0 stands for no text. A text that is the end of another
// one shares its bytes. A table that others refer to by offsets which nobody here can change keeps
// the bytes that it has, and grows at its end.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace elfext {

class StringTableBuilder {
public:
    StringTableBuilder() = default;
    StringTableBuilder(const StringTableBuilder&) = delete;
    StringTableBuilder& operator=(const StringTableBuilder&) = delete;

    // Starts from `bytes`, before anything is added.
    void keep(std::span<const uint8_t> bytes);
    // Adds a text, which must stay where it is until the table is done; null for none.
    void add(const char* text);
    // Settles all offsets.
    void build();

    // Where an added text is: 0 for null only.
    uint32_t offsetOf(const char* text) const;
    const std::vector<uint8_t>& bytes() const { return m_Bytes; }

private:
    struct Text {
        std::string_view text;
        uint32_t offset = 0;
        bool isPlaced = false;
    };

    void place(Text& text, const Text* longer);
    void placeEmptyText();

    std::vector<uint8_t> m_Bytes = {0};
    std::vector<Text> m_Texts;
    std::unordered_map<std::string_view, uint32_t> m_Places; // in m_Texts
    std::vector<Text> m_KeptTexts;
    bool m_HasEmptyText = false;
    uint32_t m_EmptyText = 0;
};

} // namespace elfext
