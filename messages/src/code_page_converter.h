// The host's converter between one character set and 16-bit units, kept open as long as the same
// code page is asked for.
#pragma once

#include "messages/src/work_buffer.h"

#include <cstdint>
#include <iconv.h>

namespace messages {

class CodePageConverter {
public:
    enum class Direction { ToPage, FromPage };

    explicit CodePageConverter(Direction direction) : m_Direction(direction) {}
    ~CodePageConverter() { close(); }
    CodePageConverter(const CodePageConverter&) = delete;
    CodePageConverter& operator=(const CodePageConverter&) = delete;

    // Opens the converter for a code page; `defaultCharset` is the name behind page 0. False if the
    // host does not know it.
    bool open(uint32_t codePage, const char* defaultCharset);
    void close();

    // Converts `count` units to the page, ended by a NUL. Null without memory.
    char* toPage(const uint16_t* units, uint64_t count, WorkBuffer<char>& result);

    // Converts `length` bytes from the page; `count` becomes the number of units. Null without
    // memory. A byte that is part of no character becomes "?".
    uint16_t* fromPage(const char* text, uint64_t length, WorkBuffer<uint16_t>& result,
                       uint64_t& count);

private:
    bool openCharset(const char* charset);

    Direction m_Direction;
    iconv_t m_Handle = nullptr;
    bool m_Open = false;
    uint32_t m_CodePage = 0;
};

} // namespace messages
