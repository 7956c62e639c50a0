#include "messages/interface/message_code.h"

#include "messages/src/ascii.h"

#include <cstdio>
#include <cstring>

namespace messages {

namespace {

constexpr uint32_t letterFactor = 16384;
constexpr char classLetters[] = "?IWE?U??";
constexpr uint64_t classPosition = 5;

// The lowest four bits of a key by its class letter.
uint32_t classBits(char letter) {
    switch (foldUpper(letter)) {
    case 'I':
        return 2;
    case 'W':
        return 4;
    case 'E':
        return 6;
    case 'U':
        return 10;
    default:
        return 0;
    }
}

} // namespace

void formatCode(uint32_t key, char (&buffer)[codeBufferSize]) {
    const auto letter = static_cast<char>((key >> 18) & 0x7FU);
    const bool printable = letter >= ' ' && letter <= '~';
    std::snprintf(buffer, codeBufferSize, "%c%.4d%c", printable ? letter : '?',
                  static_cast<int>(keyNumber(key)), classLetters[(key >> 1) & 7U]);
}

uint32_t parseCode(const char* text) {
    const uint64_t length = std::strlen(text);
    const char letter = length > 0 && isLetter(text[0]) ? foldUpper(text[0]) : 'Q';
    const auto number = static_cast<uint32_t>(length > 1 ? decimalValue(text + 1) : 0);
    const uint32_t bits = length > classPosition ? classBits(text[classPosition]) : 0;
    return (static_cast<uint32_t>(letter) * letterFactor + number) * 16 + bits;
}

} // namespace messages
