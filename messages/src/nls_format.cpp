#include "messages/interface/nls_format.h"

#include "messages/interface/code_page.h"
#include "messages/interface/message_code.h"
#include "messages/src/ascii.h"
#include "messages/src/message_state.h"
#include "messages/src/stream_output.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace messages {

namespace {

constexpr uint32_t noCell = UINT32_MAX;

// What a format says at one place: which cells it takes and where its parts stand.
struct Conversion {
    const char* next = nullptr; // behind the conversion
    const char* type = nullptr; // its type character, behind a prefix "l"
    bool percent = false;       // "%%"
    bool prefixed = false;      // with an "l"
    uint32_t cell = noCell;
    uint32_t widthCell = noCell;
    uint32_t precisionCell = noCell;
    int width = -1; // numeric, -1 for none
    int precision = -1;
    std::array<char, 6> flags{}; // each flag once
};

// The cell named by a digit and "$" at `at`, which moves on behind them, else the next in sequence.
uint32_t takeCell(const char*& at, uint32_t& sequential) {
    if (at[0] >= '1' && at[0] <= '9' && at[1] == '$') {
        const auto cell = static_cast<uint32_t>(at[0] - '1');
        at += 2;
        return cell;
    }
    return sequential++;
}

int takeNumber(const char*& at) {
    constexpr int limit = 1 << 20; // no message is wider than that
    int value = 0;
    for (; isDigit(*at); ++at) {
        value = std::min(value * 10 + (*at - '0'), limit);
    }
    return value;
}

void takeFlags(const char*& at, Conversion& conversion) {
    uint32_t used = 0;
    for (; *at != '\0' && std::strchr(" #+-", *at) != nullptr; ++at) {
        if (std::strchr(conversion.flags.data(), *at) == nullptr) {
            conversion.flags[used++] = *at;
        }
    }
    // A leading zero is a flag to the host's formatter and part of the width to a reader.
    if (*at == '0') {
        conversion.flags[used] = '0';
    }
}

// A width or precision: a number, or "*" for one that is an argument itself.
void takeSize(const char*& at, uint32_t& sequential, uint32_t& cell, int& number) {
    if (*at == '*') {
        ++at;
        cell = takeCell(at, sequential);
    } else if (isDigit(*at)) {
        number = takeNumber(at);
    }
}

// Reads the conversion behind the "%" at `percent`. A format that ends there has an empty one.
Conversion readConversion(const char* percent, uint32_t& sequential) {
    Conversion conversion;
    const char* at = percent + 1;
    if (*at == '\0' || *at == '%') {
        conversion.percent = *at == '%';
        conversion.type = at;
        conversion.next = *at == '\0' ? at : at + 1;
        return conversion;
    }
    // The value's cell is settled before those of its width and precision: required by texts that
    // were written for this formatter, and unlike the host's.
    conversion.cell = takeCell(at, sequential);
    takeFlags(at, conversion);
    takeSize(at, sequential, conversion.widthCell, conversion.width);
    if (*at == '.') {
        ++at;
        conversion.precision = 0;
        takeSize(at, sequential, conversion.precisionCell, conversion.precision);
    }
    if (*at == 'l') {
        conversion.prefixed = true;
        ++at;
    }
    conversion.type = at;
    conversion.next = *at == '\0' ? at : at + 1;
    return conversion;
}

enum class Kind { None, Number, Real, Pointer };

Kind kindOf(char type) {
    if (type == '\0') {
        return Kind::None;
    }
    if (std::strchr("*diouxXc", type) != nullptr) {
        return Kind::Number;
    }
    if (std::strchr("eEfgG", type) != nullptr) {
        return Kind::Real;
    }
    return std::strchr("nps", type) != nullptr ? Kind::Pointer : Kind::None;
}

void noteConversion(NlsCell* cells, uint32_t cell, const char* type) {
    if (cell >= nlsCellCount) {
        beginOutput(stderr);
        std::fputs("** NLS Fatal Error: Too many arguments in format string\n", stderr);
        endOutput(stderr);
        leaveProgram(EXIT_FAILURE);
    }
    cells[cell].conversion = type;
}

// Bytes to a bounded buffer; all are counted, also those that do not fit or have no buffer.
class Sink {
public:
    Sink(char* destination, uint64_t capacity) : m_To(destination), m_Capacity(capacity) {}

    void put(const char* bytes, uint64_t size) {
        if (m_To != nullptr && m_Length < m_Capacity) {
            std::memcpy(m_To + m_Length, bytes, std::min(size, m_Capacity - m_Length));
        }
        m_Length += size;
    }

    // The host formats straight into what is left of the buffer.
    template <class Value>
    void format(const char* specification, int width, int precision, Value value) {
        const uint64_t left = m_To != nullptr && m_Length < m_Capacity ? m_Capacity - m_Length : 0;
        const uint64_t room = std::min<uint64_t>(left, INT_MAX);
        char* to = room != 0 ? m_To + m_Length : nullptr;
        const int size = std::snprintf(to, room, specification, width, precision, value);
        m_Length += static_cast<uint64_t>(std::max(size, 0));
    }

    // Ends the text in the buffer; the end is not counted.
    void end() {
        if (m_To != nullptr && m_Capacity != 0) {
            m_To[std::min(m_Length, m_Capacity - 1)] = '\0';
        }
    }

    uint64_t length() const { return m_Length; }

private:
    char* m_To;
    uint64_t m_Capacity;
    uint64_t m_Length = 0;
};

void fillConversion(Sink& sink, const Conversion& conversion, const NlsCell* cells) {
    const char type = *conversion.type;
    const Kind kind = kindOf(type);
    if (kind == Kind::None || type == 'n' || conversion.cell >= nlsCellCount) {
        return;
    }
    const int width =
        conversion.widthCell < nlsCellCount ? cells[conversion.widthCell].number : conversion.width;
    const int precision = conversion.precisionCell < nlsCellCount
                              ? cells[conversion.precisionCell].number
                              : conversion.precision;
    // A negative precision is none; a width of -1 would turn the flag "-" on, so it is 0 then.
    const bool noWidth = conversion.widthCell == noCell && width < 0;
    // Numbers in cells are 32 bits wide also where the format says "l"; only for characters does
    // the prefix change what the cell holds.
    const bool wide = conversion.prefixed && (type == 's' || type == 'c');
    std::array<char, 16> specification{};
    std::snprintf(specification.data(), specification.size(), "%%%s*.*%s%c",
                  conversion.flags.data(), wide ? "l" : "", type);
    const NlsCell& cell = cells[conversion.cell];
    switch (kind) {
    case Kind::Number:
        sink.format(specification.data(), noWidth ? 0 : width, precision, cell.number);
        break;
    case Kind::Real:
        sink.format(specification.data(), noWidth ? 0 : width, precision, cell.real);
        break;
    default:
        sink.format(specification.data(), noWidth ? 0 : width, precision, cell.pointer);
        break;
    }
}

void fill(Sink& sink, const char* format, const NlsCell* cells) {
    uint32_t sequential = 0;
    while (*format != '\0') {
        const char* percent = std::strchr(format, '%');
        if (percent == nullptr) {
            sink.put(format, std::strlen(format));
            return;
        }
        sink.put(format, static_cast<uint64_t>(percent - format));
        const Conversion conversion = readConversion(percent, sequential);
        if (conversion.percent) {
            sink.put("%", 1);
        } else {
            fillConversion(sink, conversion, cells);
        }
        format = conversion.next;
    }
}

uint64_t fillAll(char* destination, uint64_t capacity, const char* format, const NlsCell* cells) {
    Sink sink(destination, capacity);
    fill(sink, format, cells);
    sink.end();
    return sink.length();
}

// Runs `use` on the finished text of a format. Null, without memory, is not passed on.
template <class Use>
int64_t withText(const char* format, const NlsCell* cells, Use use) {
    const uint64_t size = fillAll(nullptr, 0, format, cells) + 1;
    auto* text = static_cast<char*>(std::malloc(size));
    if (text == nullptr) {
        return -1;
    }
    fillAll(text, size, format, cells);
    const int64_t result = use(text, size - 1);
    std::free(text);
    return result;
}

// The code in front of a message, with its colon; nothing for plain information.
uint64_t codePrefix(uint32_t key, char (&prefix)[codeBufferSize + 2]) {
    char code[codeBufferSize];
    formatCode(key, code);
    const uint64_t length = std::strlen(code);
    if (code[length - 1] == 'I') {
        prefix[0] = '\0';
        return 0;
    }
    return static_cast<uint64_t>(std::snprintf(prefix, sizeof(prefix), "%s: ", code));
}

} // namespace

const NlsCell* nlsArguments(const char* format, va_list arguments) {
    static NlsCell cells[nlsCellCount];
    std::memset(cells, 0, sizeof(cells));
    static const char star = '*';
    uint32_t sequential = 0;
    for (const char* at = std::strchr(format, '%'); at != nullptr;) {
        const Conversion conversion = readConversion(at, sequential);
        if (conversion.widthCell != noCell) {
            noteConversion(cells, conversion.widthCell, &star);
        }
        if (conversion.precisionCell != noCell) {
            noteConversion(cells, conversion.precisionCell, &star);
        }
        if (conversion.cell != noCell) {
            noteConversion(cells, conversion.cell, conversion.type);
        }
        at = std::strchr(conversion.next, '%');
    }
    for (NlsCell& cell : cells) {
        if (cell.conversion == nullptr) {
            break;
        }
        switch (kindOf(*cell.conversion)) {
        case Kind::Number:
            cell.number = va_arg(arguments, int32_t);
            break;
        case Kind::Real:
            cell.real = va_arg(arguments, double);
            break;
        case Kind::Pointer:
            cell.pointer = va_arg(arguments, const void*);
            break;
        case Kind::None:
            break;
        }
    }
    return cells;
}

uint64_t nlsFormat(char* destination, const char* format, const NlsCell* cells) {
    return fillAll(destination, UINT64_MAX, format, cells);
}

int64_t nlsPrint(std::FILE* stream, const char* format, const NlsCell* cells) {
    return withText(format, cells, [stream](const char* text, uint64_t length) {
        beginOutput(stream);
        const int64_t written = writeBytes(stream, text, length);
        endOutput(stream);
        return written;
    });
}

int64_t nlsPrintMessage(std::FILE* stream, const MessageCatalogue* overlay, uint32_t key, ...) {
    const char* format = lookupMessage(key, overlay);
    va_list arguments;
    va_start(arguments, key);
    const NlsCell* cells = nlsArguments(format, arguments);
    va_end(arguments);
    return withText(format, cells, [stream, key](const char* text, uint64_t) -> int64_t {
        char prefix[codeBufferSize + 2];
        const uint64_t prefixLength = codePrefix(key, prefix);
        const char* converted = convertOutput(text, outputCodePage(), false);
        beginOutput(stream);
        const int64_t code = writeBytes(stream, prefix, prefixLength);
        const int64_t body = writeBytes(stream, converted, std::strlen(converted));
        endOutput(stream);
        return code < 0 || body < 0 ? -1 : code + body;
    });
}

uint64_t nlsFormatMessage(char* destination, uint64_t capacity, const MessageCatalogue* overlay,
                          uint32_t key, ...) {
    const char* format = lookupMessage(key, overlay);
    va_list arguments;
    va_start(arguments, key);
    const NlsCell* cells = nlsArguments(format, arguments);
    va_end(arguments);
    Sink sink(destination, capacity);
    withText(format, cells, [&sink, key](const char* text, uint64_t) -> int64_t {
        char prefix[codeBufferSize + 2];
        sink.put(prefix, codePrefix(key, prefix));
        const char* converted = convertOutput(text, outputCodePage(), false);
        sink.put(converted, std::strlen(converted));
        return 0;
    });
    sink.end();
    return sink.length();
}

} // namespace messages
