#include "tabledrivenparser/interface/text_buffer.h"

#include <limits>

namespace tabledrivenparser {

void TextBuffer::add(char character) {
    if (length < capacity) {
        text[length] = character;
    }
    if (length != std::numeric_limits<uint32_t>::max()) {
        ++length;
    }
}

void TextBuffer::addText(const char* added) {
    for (; *added != 0; ++added) {
        add(*added);
    }
}

} // namespace tabledrivenparser
