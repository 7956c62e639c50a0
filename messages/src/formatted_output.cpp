#include "messages/interface/formatted_output.h"

#include "messages/interface/code_page.h"
#include "messages/src/ctype_guard.h"
#include "messages/src/stream_output.h"
#include "messages/src/work_buffer.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace messages {

namespace {

constexpr uint64_t escapedSize = 4; // a backslash and three digits

// What stands in the way of writing a text as it is.
enum Oddity : uint8_t {
    Oddity_None = 0,
    Oddity_Control = 1,     // must not reach a terminal
    Oddity_BeyondAscii = 2, // differs from one character set to another
};

constexpr std::array<uint8_t, 256> makeOddities() {
    std::array<uint8_t, 256> oddities{};
    for (uint32_t c = 1; c < oddities.size(); ++c) {
        const bool control = (c < 0x20 && c != '\t' && c != '\n') || c == 0x7F;
        oddities[c] = control ? Oddity_Control : c >= 0x80 ? Oddity_BeyondAscii : Oddity_None;
    }
    return oddities;
}

// By the value of a byte.
constexpr std::array<uint8_t, 256> g_oddities = makeOddities();

uint32_t oddityOf(char c) {
    return g_oddities[static_cast<unsigned char>(c)];
}

bool isControl(char c) {
    return oddityOf(c) == Oddity_Control;
}

uint32_t odditiesOf(std::string_view text) {
    uint32_t oddities = 0;
    for (const char c : text) {
        oddities |= oddityOf(c);
    }
    return oddities;
}

WorkBuffer<char>& formatBuffer() {
    static WorkBuffer<char> buffer;
    return buffer;
}

// Puts together a format that holds no conversion but "%s". The result is the end of the text, or
// null if the format holds another, the text does not fit or there is a null argument: the host's
// formatter then does it.
const char* joinTexts(const char* format, va_list arguments) {
    WorkBuffer<char>& buffer = formatBuffer();
    char* to = buffer.data();
    const char* const limit = to + buffer.capacity() - 1;
    for (; *format != '\0'; ++format) {
        if (*format != '%') {
            if (to == limit) {
                return nullptr;
            }
            *to++ = *format;
            continue;
        }
        ++format;
        const char* text = *format == 's' ? va_arg(arguments, const char*) : nullptr;
        if (text == nullptr) {
            return nullptr;
        }
        const size_t length = std::strlen(text);
        if (length > static_cast<size_t>(limit - to)) {
            return nullptr;
        }
        std::memcpy(to, text, length);
        to += length;
    }
    *to = '\0';
    return to;
}

// The text of any format, by the host's formatter under the "C" rules.
std::string_view formatByHost(const char* format, va_list arguments) {
    const CTypeGuard guard;
    WorkBuffer<char>& buffer = formatBuffer();
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
    return buffer.data(); // up to the first character of value zero, if an argument was one
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

// A text without control characters, in a static buffer or in a block of the heap that this object
// owns. Without memory for either, they are overwritten where they stand.
class SafeText {
public:
    explicit SafeText(char* text) : m_Text(text) {
        static char buffer[1024];
        const std::string_view whole = text;
        const auto controls =
            static_cast<uint64_t>(std::count_if(whole.begin(), whole.end(), isControl));
        const uint64_t size = whole.size() + controls * (escapedSize - 1) + 1;
        char* target = buffer;
        if (size > sizeof(buffer)) {
            m_Block = static_cast<char*>(std::malloc(size));
            target = m_Block;
        }
        if (target == nullptr) {
            std::replace_if(text, text + whole.size(), isControl, '?');
            return;
        }
        writeEscaped(target, text);
        m_Text = target;
    }
    ~SafeText() { std::free(m_Block); }
    SafeText(const SafeText&) = delete;
    SafeText& operator=(const SafeText&) = delete;

    char* text() const { return m_Text; }

private:
    char* m_Text;
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

int writeText(std::FILE* stream, uint32_t& column, std::string_view text) {
    column = columnAfter(column, text.data(), text.size());
    const int64_t written = writeBytes(stream, text.data(), text.size());
    return static_cast<int>(std::min<int64_t>(written, INT_MAX));
}

// Writes `text` in the user's character set. The line feeds that end it are kept out of the
// conversion: a name that is no UTF-8 would take the end of its line for a part of its last
// character.
int writeConverted(std::FILE* stream, uint32_t& column, char* text) {
    char* const end = text + (std::string_view(text).find_last_not_of('\n') + 1);
    const uint64_t lineFeeds = std::strlen(end);
    *end = '\0';
    const int body = writeText(stream, column, convertOutput(text, outputCodePage(), false));
    if (lineFeeds == 0) {
        return body;
    }
    *end = '\n';
    const int tail = writeText(stream, column, {end, lineFeeds});
    return body < 0 || tail < 0 ? -1 : body + tail;
}

} // namespace

std::string_view formatText(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const char* end = joinTexts(format, again);
    va_end(again);
    return end != nullptr ? std::string_view(formatBuffer().data(), end)
                          : formatByHost(format, arguments);
}

int printFormattedAt(std::FILE* stream, uint32_t& column, const char* format, va_list arguments) {
    const std::string_view text = formatText(format, arguments);
    const uint32_t oddities = odditiesOf(text);
    if (oddities == 0 && asciiPasses()) {
        return writeText(stream, column, text);
    }
    char* raw = formatBuffer().data();
    if ((oddities & Oddity_Control) == 0) {
        return writeConverted(stream, column, raw);
    }
    const SafeText safe(raw);
    return writeConverted(stream, column, safe.text());
}

int printFormatted(std::FILE* stream, const char* format, va_list arguments) {
    uint32_t column = 0;
    return printFormattedAt(stream, column, format, arguments);
}

} // namespace messages
