#include "elfext/src/string_table_builder.h"

#include <algorithm>
#include <cstring>

namespace elfext {
namespace {

// By the last character, then the one before it, and so on; a text comes before those that end
// with it.
bool endsBefore(std::string_view left, std::string_view right) {
    return std::lexicographical_compare(left.rbegin(), left.rend(), right.rbegin(), right.rend());
}

} // namespace

void StringTableBuilder::keep(std::span<const uint8_t> bytes) {
    if (bytes.empty()) {
        return;
    }
    m_Bytes.assign(bytes.begin(), bytes.end());
    if (m_Bytes.back() != 0) {
        m_Bytes.push_back(0);
    }
    for (size_t start = 0; start < bytes.size();) {
        const auto* const text = reinterpret_cast<const char*>(bytes.data() + start);
        const size_t length = strnlen(text, bytes.size() - start);
        if (length != 0) {
            m_KeptTexts.push_back({{text, length}, static_cast<uint32_t>(start), true});
        }
        start += length + 1;
    }
}

void StringTableBuilder::add(const char* text) {
    if (text == nullptr) {
        return;
    }
    const std::string_view view(text);
    if (view.empty()) {
        m_HasEmptyText = true;
    } else if (m_Places.try_emplace(view, static_cast<uint32_t>(m_Texts.size())).second) {
        m_Texts.push_back({view, 0, false});
    }
}

// Those that end with a text stand right behind it, so its neighbour tells whether there are any.
void StringTableBuilder::build() {
    std::vector<Text*> sorted;
    sorted.reserve(m_Texts.size() + m_KeptTexts.size());
    for (Text& text : m_Texts) {
        sorted.push_back(&text);
    }
    for (Text& text : m_KeptTexts) {
        sorted.push_back(&text);
    }
    std::sort(sorted.begin(), sorted.end(), [](const Text* left, const Text* right) {
        if (left->text != right->text) {
            return endsBefore(left->text, right->text);
        }
        return left->isPlaced < right->isPlaced;
    });
    const Text* longer = nullptr;
    for (auto text = sorted.rbegin(); text != sorted.rend(); ++text) {
        place(**text, longer);
        longer = *text;
    }
    placeEmptyText();
}

void StringTableBuilder::place(Text& text, const Text* longer) {
    if (text.isPlaced) {
        return;
    }
    text.isPlaced = true;
    if (longer != nullptr && longer->text.ends_with(text.text)) {
        text.offset =
            longer->offset + static_cast<uint32_t>(longer->text.size() - text.text.size());
        return;
    }
    text.offset = static_cast<uint32_t>(m_Bytes.size());
    m_Bytes.insert(m_Bytes.end(), text.text.begin(), text.text.end());
    m_Bytes.push_back(0);
}

// The empty text is not the same as none, so it is not at offset 0.
void StringTableBuilder::placeEmptyText() {
    if (!m_HasEmptyText) {
        return;
    }
    if (m_Bytes.size() == 1) {
        m_Bytes.push_back(0);
    }
    m_EmptyText = static_cast<uint32_t>(m_Bytes.size() - 1);
}

uint32_t StringTableBuilder::offsetOf(const char* text) const {
    if (text == nullptr) {
        return 0;
    }
    const std::string_view view(text);
    return view.empty() ? m_EmptyText : m_Texts[m_Places.at(view)].offset;
}

} // namespace elfext
