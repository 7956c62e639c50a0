// A check site in a header, as users of a library compile it into their own sources.
#pragma once

#include "platform/interface/internal_check.h"

inline void checkInHeader(int value) {
    TOMEX_CHECK(value == 0);
}
