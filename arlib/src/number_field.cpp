#include "arlib/src/number_field.h"

namespace arlib {
namespace {

size_t skipBlanks(std::string_view field, size_t position) {
    while (position < field.size() && field[position] == ' ') {
        ++position;
    }
    return position;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

bool parseNumberField(std::string_view field, uint32_t base, uint32_t& value) {
    size_t position = skipBlanks(field, 0);
    if (position == field.size() || !isDigit(field[position])) {
        return false;
    }
    uint64_t number = 0;
    while (position < field.size() && isDigit(field[position])) {
        const auto digit = static_cast<uint32_t>(field[position] - '0');
        if (digit >= base) {
            break; // "8" and "9" end an octal number
        }
        number = number * base + digit;
        if (number > UINT32_MAX) {
            return false;
        }
        ++position;
    }
    if (skipBlanks(field, position) != field.size()) {
        return false;
    }
    value = static_cast<uint32_t>(number);
    return true;
}

bool isBlankField(std::string_view field) {
    return skipBlanks(field, 0) == field.size();
}

} // namespace arlib
