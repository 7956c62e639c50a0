#include "tabledrivenparser/src/number_text.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>

namespace tabledrivenparser {

namespace {

struct Conversion {
    uint64_t value = 0;
    bool isInRange = true;
    char* end = nullptr;
};

Conversion convertSigned(const char* digits, int base, NumberKind kind) {
    Conversion result;
    errno = 0;
    long long number = std::strtoll(digits, &result.end, base);
    result.isInRange = errno != ERANGE;
    if (kind == NumberKind::Signed32 && (number < std::numeric_limits<int32_t>::min() ||
                                         number > std::numeric_limits<int32_t>::max())) {
        result.isInRange = false;
    }
    result.value = static_cast<uint64_t>(number);
    return result;
}

bool hasMinusSign(const char* digits) {
    while (std::isspace(static_cast<unsigned char>(*digits)) != 0) {
        ++digits;
    }
    return *digits == '-';
}

Conversion convertUnsigned(const char* digits, int base, NumberKind kind) {
    Conversion result;
    errno = 0;
    unsigned long long number = std::strtoull(digits, &result.end, base);
    result.isInRange = errno != ERANGE;
    result.value = number;
    if (kind == NumberKind::Unsigned32) {
        // The range is that of the magnitude; only then does the sign wrap it round.
        uint64_t magnitude = hasMinusSign(digits) ? 0 - number : number;
        if (magnitude > std::numeric_limits<uint32_t>::max()) {
            result.isInRange = false;
        }
        result.value = static_cast<uint32_t>(number);
    }
    return result;
}

} // namespace

NumberText readNumber(const char* text, NumberKind kind) {
    bool isHexadecimal = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* digits = isHexadecimal ? text + 2 : text;
    int base = isHexadecimal ? 16 : 10;
    bool isSigned = kind == NumberKind::Signed32 || kind == NumberKind::Signed64;
    Conversion converted =
        isSigned ? convertSigned(digits, base, kind) : convertUnsigned(digits, base, kind);

    NumberText number;
    number.value = converted.value;
    number.end = converted.end;
    if (!converted.isInRange) {
        number.outcome = NumberOutcome::Overflow;
    } else if (converted.end != text) {
        number.outcome = NumberOutcome::Read;
    }
    return number;
}

} // namespace tabledrivenparser
