// Texts between UTF-8 and 16-bit units, the form in which they meet the host's code pages.
//
// The decoder takes the length of a sequence from its first byte alone and does not test the bytes
// that follow, so any byte string gives some text: file names that are not UTF-8 print as
// something, and the same everywhere.
#pragma once

#include <cstdint>

namespace messages {

// Decodes `length` bytes into `units`, which must hold as many elements. The result is the number
// of units. A character above 0xFFFF becomes "?". So does a sequence that the end of the text cuts
// short; what follows its first byte and is no part of it is read on its own. So does a control
// character in a longer form than its own single byte: it would slip by the step that makes control
// characters harmless.
uint64_t decodeUtf8(const char* text, uint64_t length, uint16_t* units);

// The most bytes that one unit becomes in UTF-8.
constexpr uint64_t utf8BytesPerUnit = 3;

// Encodes `count` units into `text`, which must hold `count * utf8BytesPerUnit` bytes. Pairs of
// surrogates become one character; one without the other becomes "?". The result is the number of
// bytes.
uint64_t encodeUtf8(const uint16_t* units, uint64_t count, char* text);

// The number of units, 1 or 2, of the character that starts at `units`, of which there are `count`.
uint64_t unitsOfCharacter(const uint16_t* units, uint64_t count);

} // namespace messages
