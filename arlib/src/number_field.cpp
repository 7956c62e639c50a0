#include "arlib/src/number_field.h"

#include <cstring>

namespace arlib {
namespace {

constexpr char blanks[] = "                ";
constexpr size_t blankCount = sizeof blanks - 1;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

bool parseNumberField(std::string_view field, uint32_t base, uint32_t& value) {
    const char* position = field.data();
    const char* const end = position + field.size();
    while (position != end && *position == ' ') {
        ++position;
    }
    if (position == end || !isDigit(*position)) {
        return false;
    }
    uint64_t number = 0;
    // A digit that the base has not, as "8" in an octal number, ends the number.
    for (; position != end && *position >= '0' && static_cast<uint32_t>(*position - '0') < base;
         ++position) {
        number = number * base + static_cast<uint32_t>(*position - '0');
        if (number > UINT32_MAX) {
            return false;
        }
    }
    if (!isBlankField({position, static_cast<size_t>(end - position)})) {
        return false;
    }
    value = static_cast<uint32_t>(number);
    return true;
}

bool isBlankField(std::string_view field) {
    return field.size() <= blankCount && std::memcmp(field.data(), blanks, field.size()) == 0;
}

} // namespace arlib
