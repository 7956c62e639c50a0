#include "messages/interface/formatted_output.h"

#include "messages/interface/code_page.h"
#include "messages/src/ctype_guard.h"
#include "messages/src/stream_output.h"
#include "messages/src/work_buffer.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace messages {

namespace {

constexpr uint64_t escapedSize = 4; // a backslash and three digits

bool isControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') || c == 0x7F;
}

// The text of a format in a buffer that holds until the next call.
char* formatText(const char* format, va_list arguments) {
    static WorkBuffer<char> buffer;
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(buffer.data(), buffer.capacity(), format, arguments);
    if (length < 0) {
        buffer.data()[0] = '\0';
    } else if (static_cast<uint64_t>(length) >= buffer.capacity()) {
        // Without memory for the whole text the user gets its start.
        buffer.require(static_cast<uint64_t>(length) + 1);
        std::vsnprintf(buffer.data(), buffer.capacity(), format, again);
    }
    va_end(again);
    return buffer.data();
}

void writeEscaped(char* to, const char* from) {
    for (; *from != '\0'; ++from) {
        if (isControl(*from)) {
            const auto value = static_cast<unsigned char>(*from);
            *to++ = '\\';
            *to++ = static_cast<char>('0' + (value >> 6));
            *to++ = static_cast<char>('0' + ((value >> 3) & 7));
            *to++ = static_cast<char>('0' + (value & 7));
        } else {
            *to++ = *from;
        }
    }
    *to = '\0';
}

// A text without control characters: the text itself, or a rewritten one in a static buffer, or
// one in a block of the heap that this object owns.
class SafeText {
public:
    explicit SafeText(char* text) : m_Text(text) {
        char* end = text + std::strlen(text);
        const auto controls = static_cast<uint64_t>(std::count_if(text, end, isControl));
        if (controls != 0) {
            rewrite(text, end, controls);
        }
    }
    ~SafeText() { std::free(m_Block); }
    SafeText(const SafeText&) = delete;
    SafeText& operator=(const SafeText&) = delete;

    const char* text() const { return m_Text; }

private:
    void rewrite(char* text, char* end, uint64_t controls) {
        static char buffer[1024];
        const uint64_t size = static_cast<uint64_t>(end - text) + controls * (escapedSize - 1) + 1;
        char* target = buffer;
        if (size > sizeof(buffer)) {
            m_Block = static_cast<char*>(std::malloc(size));
            target = m_Block;
        }
        if (target == nullptr) {
            std::replace_if(text, end, isControl, '?');
            return;
        }
        writeEscaped(target, text);
        m_Text = target;
    }

    const char* m_Text;
    char* m_Block = nullptr;
};

// Where a line has got to when `text` is added to it.
uint32_t columnAfter(uint32_t column, const char* text, uint64_t length) {
    uint64_t tail = 0;
    while (tail < length && text[length - tail - 1] != '\n') {
        ++tail;
    }
    return static_cast<uint32_t>(tail < length ? tail : column + tail);
}

} // namespace

int printFormattedAt(std::FILE* stream, uint32_t& column, const char* format, va_list arguments) {
    const CTypeGuard guard;
    const SafeText safe(formatText(format, arguments));
    const char* text = convertOutput(safe.text(), outputCodePage(), false);
    const uint64_t length = std::strlen(text);
    column = columnAfter(column, text, length);
    const int64_t written = writeBytes(stream, text, length);
    return static_cast<int>(std::min<int64_t>(written, INT_MAX));
}

int printFormatted(std::FILE* stream, const char* format, va_list arguments) {
    uint32_t column = 0;
    return printFormattedAt(stream, column, format, arguments);
}

} // namespace messages
