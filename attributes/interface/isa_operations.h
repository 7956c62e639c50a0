// Arithmetic on feature sets: union, intersection, and the three questions that all rules about
// features are made of.
//
// A feature word is a set of one or more bits that stand for one feature; most of them include the
// words of their lesser siblings. So "has" always means "has all bits of the word".
#pragma once

#include "attributes/interface/full_attr.h"

namespace attributes {

constexpr IsaSet operator|(const IsaSet& a, const IsaSet& b) {
    return {a.low | b.low, a.high | b.high};
}

constexpr IsaSet operator&(const IsaSet& a, const IsaSet& b) {
    return {a.low & b.low, a.high & b.high};
}

constexpr IsaSet operator~(const IsaSet& a) {
    return {~a.low, ~a.high};
}

// What `a` has beyond `b`.
constexpr IsaSet without(const IsaSet& a, const IsaSet& b) {
    return a & ~b;
}

constexpr void setWord(IsaSet& isa, const IsaSet& word) {
    isa = isa | word;
}

constexpr void clearWord(IsaSet& isa, const IsaSet& word) {
    isa = isa & ~word;
}

constexpr bool isEmpty(const IsaSet& isa) {
    return isa.low == 0 && isa.high == 0;
}

// Whether `isa` has all bits of `word`.
constexpr bool hasAll(const IsaSet& isa, const IsaSet& word) {
    return (isa & word) == word;
}

// Whether `isa` has at least one bit of `word`.
constexpr bool hasAny(const IsaSet& isa, const IsaSet& word) {
    return !isEmpty(isa & word);
}

} // namespace attributes
