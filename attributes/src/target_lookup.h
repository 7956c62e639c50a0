// Walks over target tables, apart from the one table there is, so that tests can walk others.
#pragma once

#include "attributes/interface/target_database.h"

#include <cstdint>
#include <span>

namespace attributes {

// The index of the first floating-point unit. A table without one is a fault of the program, and
// ends it.
uint32_t findFirstFloatingPointRow(std::span<const Target> rows);

} // namespace attributes
