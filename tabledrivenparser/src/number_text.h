// Numbers as users write them in arguments.
//
// A text that starts with "0x" or "0X" is read in base 16 from behind the prefix, any other in base
// 10, so that a leading "0" does not make it octal. White space and a sign before the digits are
// the conversion's business: an unsigned number takes a minus sign and wraps round.
#pragma once

#include <cstdint>

namespace tabledrivenparser {

enum class NumberKind { Signed32, Unsigned32, Signed64, Unsigned64 };

enum class NumberOutcome {
    Read,
    // Nothing of the text was used.
    NoNumber,
    // The number is out of the kind's range.
    Overflow,
};

struct NumberText {
    NumberOutcome outcome = NumberOutcome::NoNumber;
    // Signed numbers are sign-extended.
    uint64_t value = 0;
    // The first character behind the number.
    const char* end = nullptr;
};

// Reads the number that the NUL-ended `text` begins with. "0x" with no digits behind it is 0.
NumberText readNumber(const char* text, NumberKind kind);

} // namespace tabledrivenparser
