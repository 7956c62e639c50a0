// A NUL-terminated text on the heap, released with free(). May hold null: "no such part".
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace platform {

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};

using OwnedText = std::unique_ptr<char, FreeText>;

// A copy of the text; null if the memory cannot be had.
inline OwnedText copyText(std::string_view text) {
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy != nullptr) {
        text.copy(copy, text.size());
        copy[text.size()] = '\0';
    }
    return OwnedText(copy);
}

// The text as a view; empty for null.
inline std::string_view viewOf(const OwnedText& text) {
    return text ? std::string_view(text.get()) : std::string_view();
}

} // namespace platform
