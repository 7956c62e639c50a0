#include "messages/src/utf16.h"

namespace messages {

namespace {

constexpr uint16_t substitute = '?';

uint64_t sequenceLength(unsigned char first) {
    if (first < 0xC0) {
        return 1;
    }
    if (first < 0xE0) {
        return 2;
    }
    if (first < 0xF0) {
        return 3;
    }
    if (first < 0xF8) {
        return 4;
    }
    return first < 0xFC ? 5 : 6;
}

bool isHighSurrogate(uint32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(uint32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

// The number of bytes, of `left`, that belong to a sequence that the end of the text cuts short:
// its first byte and what can only be part of it.
uint64_t cutSequenceLength(const char* text, uint64_t left) {
    uint64_t length = 1;
    while (length < left && isContinuation(text[length])) {
        ++length;
    }
    return length;
}

// The character of a sequence of `length` bytes, 2 or more.
uint16_t decodeSequence(const char* text, uint64_t length) {
    const uint32_t leadMask = (1U << (length == 6 ? 1 : 7 - length)) - 1;
    uint32_t value = static_cast<unsigned char>(text[0]) & leadMask;
    for (uint64_t i = 1; i < length; ++i) {
        value = (value << 6) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool hiddenControl = value < 0x20 || value == 0x7F;
    return value > 0xFFFF || hiddenControl ? substitute : static_cast<uint16_t>(value);
}

char continuation(uint32_t value) {
    return static_cast<char>(0x80U | (value & 0x3FU));
}

char* encodeCharacter(uint32_t value, char* to) {
    if (value < 0x80) {
        *to++ = static_cast<char>(value);
    } else if (value < 0x800) {
        *to++ = static_cast<char>(0xC0U | (value >> 6));
        *to++ = continuation(value);
    } else if (value < 0x10000) {
        *to++ = static_cast<char>(0xE0U | (value >> 12));
        *to++ = continuation(value >> 6);
        *to++ = continuation(value);
    } else {
        *to++ = static_cast<char>(0xF0U | (value >> 18));
        *to++ = continuation(value >> 12);
        *to++ = continuation(value >> 6);
        *to++ = continuation(value);
    }
    return to;
}

} // namespace

uint64_t decodeUtf8(const char* text, uint64_t length, uint16_t* units) {
    uint64_t count = 0;
    uint64_t at = 0;
    while (at < length) {
        const auto first = static_cast<unsigned char>(text[at]);
        uint64_t size = sequenceLength(first);
        if (size == 1) {
            units[count++] = first;
        } else if (size > length - at) {
            units[count++] = substitute;
            size = cutSequenceLength(text + at, length - at);
        } else {
            units[count++] = decodeSequence(text + at, size);
        }
        at += size;
    }
    return count;
}

uint64_t encodeUtf8(const uint16_t* units, uint64_t count, char* text) {
    char* to = text;
    for (uint64_t i = 0; i < count; ++i) {
        uint32_t value = units[i];
        if (unitsOfCharacter(units + i, count - i) == 2) {
            value = 0x10000 + ((value - 0xD800U) << 10) + (units[i + 1] - 0xDC00U);
            ++i;
        } else if (isHighSurrogate(value) || isLowSurrogate(value)) {
            value = substitute;
        }
        to = encodeCharacter(value, to);
    }
    return static_cast<uint64_t>(to - text);
}

uint64_t unitsOfCharacter(const uint16_t* units, uint64_t count) {
    const bool pair = count > 1 && isHighSurrogate(units[0]) && isLowSurrogate(units[1]);
    return pair ? 2 : 1;
}

} // namespace messages
