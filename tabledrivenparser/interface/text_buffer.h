// A bounded text writer, for texts whose length is known only when they are written.
//
// Whoever writes offers the room that will usually do. What does not fit is dropped but counted, so
// that after a first try `length` tells how much room a second one needs; `writeWhole` makes both.
// A closing NUL is a character like others here: written and counted.
#pragma once

#include <cstdint>

namespace tabledrivenparser {

struct TextBuffer {
    // Bytes at `text`, which is the caller's.
    uint32_t capacity = 0;
    char* text = nullptr;
    // Bytes written so far, dropped ones included. It stays at its greatest value when it gets
    // there.
    uint32_t length = 0;

    // How options and values are written here (see value_writer.h). 1: texts that would not be read
    // back as they are get quotes and backslashes.
    uint8_t quoting = 0;
    // Stands between two options.
    char separator = ' ';
    // 1: a long name has one dash, and its value follows the separator in place of "=".
    uint8_t joined = 0;

    void add(char character);
    // Adds a NUL-ended text without its NUL.
    void addText(const char* added);

    // Whether all of it could be written.
    bool fits() const { return length <= capacity; }
};

// Empties `buffer` and gives it as much room as all that was written to it needs. The default
// region provides the room and keeps it.
void makeRoom(TextBuffer& buffer);

// Has `write` write a text, its NUL included, into the empty `buffer`, and if there is too little
// room, makes room and has it write the same once more. Gives the text, which stands in the
// caller's room or in the default region. Only a text too long to be counted is cut.
template <class Write>
const char* writeWhole(TextBuffer& buffer, const Write& write) {
    write(buffer);
    if (!buffer.fits()) {
        makeRoom(buffer);
        write(buffer);
        buffer.text[buffer.capacity - 1] = '\0';
    }
    return buffer.text;
}

} // namespace tabledrivenparser
