// Sets of attributes as an algebra: what two of them give together, what they share, what one has
// beyond the other, and whether one contains the other.
//
// The algebra is bitwise by design. Each bit of features, access and options is a capability that
// is required or a promise that is made, and a mixed set is the union; what cannot coexist stands
// in two short tables. All operations work on values and allocate nothing; results may be one of
// the operands.
#pragma once

#include "attributes/interface/build_attributes.h"
#include "attributes/interface/full_attr.h"

#include <cstdint>

namespace attributes {

// The bits of features by which variants are told apart. Others never separate two sets.
inline constexpr IsaSet significantIsa{0xFFFFFFFFFFFFFFFF, 0x103FF};

// A set with all bits of `mask` is impossible; the names are of the two things that meet.
struct IsaConflict {
    IsaSet mask;
    const char* first;
    const char* second;
};
struct OptionConflict {
    uint64_t mask;
    const char* first;
    const char* second;
};

inline constexpr uint32_t IsaConflictCount = 4;
inline constexpr uint32_t OptionConflictCount = 2;
extern const IsaConflict isaConflicts[IsaConflictCount];
extern const OptionConflict optionConflicts[OptionConflictCount];

// The two things that clash in a set, both null when nothing does.
struct ConflictNames {
    const char* first = nullptr;
    const char* second = nullptr;
};

// The first row of `isaConflicts` that the features hit.
ConflictNames findIsaConflict(const IsaSet& isa);
// The first row of `optionConflicts` that the options hit.
ConflictNames findOptionConflict(uint64_t options);
// "L/S" and "UL/US" where loads rely on an alignment below the natural one in two ways at once:
// by instructions that need alignment and by such that do not. Stores take no part in it.
ConflictNames findAccessConflict(const FullAttr& value);

// Union of features and classes. False if no object can have the result.
bool combineIsa(FullAttr& out, const FullAttr& a, const FullAttr& b);

// Union of two sets. Requiring alignment spreads, preserving it must hold in both, and the format
// is the older of the two. False if no object can have the result; `out` is filled in any case.
bool combine(FullAttr& out, const FullAttr& a, const FullAttr& b);

// What both have. `targetClass` and `targetKind` of `out` stay.
void common(FullAttr& out, const FullAttr& a, const FullAttr& b);

// What `a` has beyond `b`, completed where a decoration needs it. `targetClass` and `targetKind`
// of `out` stay.
void difference(FullAttr& out, const FullAttr& a, const FullAttr& b);

// The sense of a comparison; sums of these are allowed.
enum CompareMode : uint32_t {
    CompareMode_Equal = 1,
    CompareMode_Subset = 2,   // the first has nothing beyond the second
    CompareMode_Superset = 4, // the second has nothing beyond the first
};

// Three-way comparison of one part of two sets. Bit 0 of the answer is set where they are equal.
// If they are not, the answer is what is left of `mode` without bit 0, or 0 where that is a sense
// alone which does not hold.
uint32_t compareIsa(const FullAttr& a, uint32_t mode, const FullAttr& b);
uint32_t compareAccess(const FullAttr& a, uint32_t mode, const FullAttr& b);
uint32_t compareOptions(const FullAttr& a, uint32_t mode, const FullAttr& b);

// Whether two sets are the same in all that variants are told apart by: significant features,
// options and access. Requirements and the object format are not among it.
bool sameVariant(const FullAttr& a, const FullAttr& b);

// Adds what an object without a word on doubles has: doubles in the byte order of the machine.
void addDoublesDefault(FullAttr& value);

// Inheritance: `own`, filled up with what only `base` states. Empty if one of them is. Stale if
// anything was taken over from a slot of `base`.
void overlay(BuildAttributes& out, const BuildAttributes& base, const BuildAttributes& own);

// What `own` states beyond `base`. Rebuilds either if it is stale. Empty if one of them is.
void differenceFromBase(BuildAttributes& out, BuildAttributes& base, BuildAttributes& own);

} // namespace attributes
