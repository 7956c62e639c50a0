// The limits that a descriptor sets to the values of its parameter.
#pragma once

#include "tabledrivenparser/interface/parameters.h"

#include <cstdint>

namespace tabledrivenparser {

// Whether `value` satisfies `constraints` (null for none): no node applies under `activeMask`, or
// one that applies allows it. `type` says how the value and the nodes' `allowed` are read; a
// vector's value is one element.
bool passesConstraints(const ValueConstraint* constraints, uint32_t type, uint64_t value,
                       uint32_t activeMask);

// Whether `text` satisfies `pattern` (see ValueConstraint::allowed). A null text satisfies only a
// null or empty pattern, and a null pattern is as an empty one.
bool matchesPattern(const char* pattern, const char* text);

} // namespace tabledrivenparser
