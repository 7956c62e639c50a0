#include "tabledrivenparser/interface/text_buffer.h"

#include "alloclib/interface/default_region.h"

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

void makeRoom(TextBuffer& buffer) {
    buffer.capacity = buffer.length;
    buffer.text =
        static_cast<char*>(alloclib::allocate(alloclib::defaultRegion(), buffer.capacity, 1));
    buffer.length = 0;
}

} // namespace tabledrivenparser
