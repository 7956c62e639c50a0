// Numbers in the fixed-width character fields of a member header.
#pragma once

#include <cstdint>
#include <string_view>

namespace arlib {

// Reads a number that fills its field: blanks, at least one digit of the base, blanks, and nothing
// else up to the field's end. False if the field holds anything else or the number does not fit
// into 32 bits.
bool parseNumberField(std::string_view field, uint32_t base, uint32_t& value);

// True if the field, of 16 characters or less, is all blanks.
bool isBlankField(std::string_view field);

} // namespace arlib
