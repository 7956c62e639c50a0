#include "attributes/interface/attribute_algebra.h"

#include <algorithm>
#include <iterator>

#include "attributes/interface/decoration.h"
#include "attributes/interface/feature_words.h"

namespace attributes {

using namespace feature_word;

const IsaConflict isaConflicts[IsaConflictCount] = {
    {FLA_ISA | ZLT_ISAv1, "FLA", "ZLT"},
    {PURE_DOUBLES | MIXED_DOUBLES, "pure-endian double", "mixed-endian double"},
    {QEL_ISAv3 | M, "qel-isa", "m-profile"},
    {Q64_ISAv8 | SOFTFP, "Q64", "SoftZLT"},
};

const OptionConflict optionConflicts[OptionConflictCount] = {
    {option_bit::STKCKD | option_bit::NOT_STKCKD, "stack-checked", "not-stack-checked"},
    {option_bit::EBA4 | option_bit::EBA8, "require 4-byte alignment of 8-byte datatypes",
     "require 8-byte alignment of 8-byte datatypes"},
};

namespace {

// Loads that need alignment, yet less than their size; and loads that need none. Each in both
// halves, since loads of data count in the upper half too.
constexpr uint32_t AlignedLoads = 0x016E016E;
constexpr uint32_t UnalignedLoads = 0xFC00FC00;

// A pattern of options is told by one of its bits and completed by the others. Options that only
// one of two objects has are often a part of a pattern.
struct OptionPattern {
    uint64_t sign;
    uint64_t whole;
};
constexpr OptionPattern optionPatterns[] = {
    {option_bit::OTIME & ~option_bit::OSPACE, option_bit::OTIME},
    {option_bit::IEEEX & ~option_bit::IEEEF, option_bit::IEEEX},
    {option_bit::IEEEF & ~option_bit::IEEEJ, option_bit::IEEEF},
};

// ZLT_ISAv2 came with an architecture that has paired prefetches, or is 64 bits wide.
bool lacksBaseOfZlt2(const IsaSet& isa) {
    return hasAll(isa, ZLT_ISAv2) && !hasAll(isa, PAIR_PREFETCH) && !hasAll(isa, Q64_ISAv8) &&
           !hasAll(isa, Q64_ISAv9);
}

template <typename Value, typename Operation>
uint32_t compareValues(const Value& x, uint32_t mode, const Value& y, Operation isBeyond) {
    if (x == y) {
        return mode | CompareMode_Equal;
    }
    const uint32_t rest = mode & ~uint32_t{CompareMode_Equal};
    if (rest == CompareMode_Subset && isBeyond(x, y)) {
        return 0;
    }
    if (rest == CompareMode_Superset && isBeyond(y, x)) {
        return 0;
    }
    return rest;
}

bool isaIsBeyond(const IsaSet& x, const IsaSet& y) {
    return !isEmpty(without(x, y));
}

bool wordIsBeyond(uint64_t x, uint64_t y) {
    return (x & ~y) != 0;
}

} // namespace

ConflictNames findIsaConflict(const IsaSet& isa) {
    for (const IsaConflict& row : isaConflicts) {
        if (hasAll(isa, row.mask)) {
            return {row.first, row.second};
        }
    }
    return {};
}

ConflictNames findOptionConflict(uint64_t options) {
    for (const OptionConflict& row : optionConflicts) {
        if ((options & row.mask) == row.mask) {
            return {row.first, row.second};
        }
    }
    return {};
}

ConflictNames findAccessConflict(const FullAttr& value) {
    const uint32_t data = value.access[2];
    const uint32_t all = value.access[0] | value.access[1] | data | (data << 16);
    if ((all & AlignedLoads) != 0 && (all & UnalignedLoads) != 0) {
        return {"L/S", "UL/US"};
    }
    return {};
}

bool combineIsa(FullAttr& out, const FullAttr& a, const FullAttr& b) {
    out.targetClass = a.targetClass | b.targetClass;
    out.targetKind = a.targetKind | b.targetKind;
    out.isa = a.isa | b.isa;
    return !lacksBaseOfZlt2(out.isa) && findIsaConflict(out.isa).first == nullptr;
}

bool combine(FullAttr& out, const FullAttr& a, const FullAttr& b) {
    for (uint32_t i = 0; i < std::size(out.access); ++i) {
        out.access[i] = a.access[i] | b.access[i];
    }
    out.options = a.options | b.options;
    out.requirements = ((a.requirements | b.requirements) & requirement_bit::REQ8) |
                       (a.requirements & b.requirements & requirement_bit::PRES8);
    out.abiVersion = std::min(a.abiVersion, b.abiVersion);
    const bool isPossible = combineIsa(out, a, b);
    return isPossible && findOptionConflict(out.options).first == nullptr &&
           findAccessConflict(out).first == nullptr;
}

void common(FullAttr& out, const FullAttr& a, const FullAttr& b) {
    out.isa = a.isa & b.isa;
    for (uint32_t i = 0; i < std::size(out.access); ++i) {
        out.access[i] = a.access[i] & b.access[i];
    }
    out.options = a.options & b.options;
    out.requirements = a.requirements & b.requirements;
    out.abiVersion = a.abiVersion & b.abiVersion;
}

void difference(FullAttr& out, const FullAttr& a, const FullAttr& b) {
    // A decoration without an instruction set of its own would read as one of the compact set.
    const bool usesQel = hasAny(a.isa | b.isa, QEL_ISAv9);
    out.isa = without(a.isa, b.isa) & significantIsa;
    if (usesQel) {
        setWord(out.isa, QEL_ISAv3);
    }
    normaliseIsa(out.isa);
    for (uint32_t i = 0; i < std::size(out.access); ++i) {
        out.access[i] = static_cast<uint16_t>(a.access[i] & ~b.access[i]);
    }
    out.options = a.options & ~b.options;
    for (const OptionPattern& pattern : optionPatterns) {
        if ((out.options & pattern.sign) != 0) {
            out.options |= pattern.whole;
        }
    }
    out.requirements = a.requirements & ~b.requirements;
    out.abiVersion = a.abiVersion & ~b.abiVersion;
}

uint32_t compareIsa(const FullAttr& a, uint32_t mode, const FullAttr& b) {
    return compareValues(a.isa & significantIsa, mode, b.isa & significantIsa, isaIsBeyond);
}

uint32_t compareAccess(const FullAttr& a, uint32_t mode, const FullAttr& b) {
    uint32_t result = ~uint32_t{0};
    for (uint32_t i = 0; i < std::size(a.access); ++i) {
        result &= compareValues<uint64_t>(a.access[i], mode, b.access[i], wordIsBeyond);
    }
    return result;
}

uint32_t compareOptions(const FullAttr& a, uint32_t mode, const FullAttr& b) {
    return compareValues(a.options, mode, b.options, wordIsBeyond);
}

bool sameVariant(const FullAttr& a, const FullAttr& b) {
    return (a.isa & significantIsa) == (b.isa & significantIsa) && a.options == b.options &&
           std::equal(a.access, std::end(a.access), b.access);
}

void addDoublesDefault(FullAttr& value) {
    mergeDecoration(value, "$IEEE1$PE");
}

} // namespace attributes
