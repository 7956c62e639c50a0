// The targets of the tool chain: architectures, processors and floating-point units, each with the
// features that it implies.
//
// The table is constant and shared by the whole tool chain; nothing on a command line or in a file
// changes it. Here it turns the architecture that an object states as a number into a set of
// features.
#pragma once

#include "attributes/interface/full_attr.h"

#include <cstdint>

namespace attributes {

// One target.
struct Target {
    const char* name;     // by which it is found; unique, also when case is ignored
    const char* base;     // name of the target that it is a variation of; may be null or empty
    const char* family;   // architecture or unit family that it belongs to; may be null
    uint32_t listed;      // 1 if lists of targets show it, 0 if it is hidden
    uint32_t kind;        // of target_kind
    uint32_t targetClass; // class of the architecture; bit 7 marks processors; 0 for units
    IsaSet isa;
};

// How many targets there are.
inline constexpr uint32_t TargetCount = 353;

// All targets: 117 architectures, 137 processors, 12 architectures, 40 processors and 47
// floating-point units, the last of which is "None", without features. Rows are not sorted.
extern const Target (&procAndArchList)[TargetCount];

// Finds a target by name, ignoring case, and copies its `isa`, `targetClass` and kind to `out`.
// The answer is the row's name, which lives for ever. A null or unknown name gives null and
// zeroes `out`.
const char* findTarget(const char* name, FullAttr& out);

// Finds the target of a `Tag_CPU_arch` value and a profile letter ('A', 'M', 'R', 'S', or 0), as
// `findTarget` does. Numbers without a target give null and zero `out`.
const char* lookupByArch(uint32_t arch, uint32_t profile, FullAttr& out);

// The same for objects that use the 64-bit instruction set.
const char* lookupWide(uint32_t arch, uint32_t profile, FullAttr& out);

// Whether a value was derived from an architecture; from an architecture or a processor.
bool isArchitectureRow(const FullAttr& value);
bool isProcessorOrArchitectureRow(const FullAttr& value);

// The index in `procAndArchList` of the first floating-point unit.
uint32_t firstFloatingPointRow();

} // namespace attributes
