// Keys and the codes that users see of them.
//
// A key packs a series letter, a number and a class into 32 bits; its code is "L6839E" and the
// like. The class letter belongs to the key: it does not follow the severity of a report.
#pragma once

#include <cstdint>

namespace messages {

// Room for any code with its end: a letter, a number of up to five digits, a class letter.
constexpr uint32_t codeBufferSize = 8;

// The number part of a key, which --diag_ options name; 0 to 16383.
constexpr uint32_t keyNumber(uint32_t key) {
    return (key >> 4) & 0x3FFFU;
}

// Writes the code of `key` and its end. A letter that is not printable shows as "?".
void formatCode(uint32_t key, char (&buffer)[codeBufferSize]);

// The key of a code, however short or odd the text: a missing or unknown letter counts as "Q", a
// missing number as 0, a missing or unknown class as none.
uint32_t parseCode(const char* text);

} // namespace messages
