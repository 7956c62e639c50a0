// A bounded text writer, for texts whose length is known only when they are written.
//
// Whoever writes offers the room that will usually do. What does not fit is dropped but counted, so
// that after a first try `length` tells how much room a second one needs. A closing NUL is a
// character like others here: written and counted.
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

} // namespace tabledrivenparser
