// The hash of each type of key that the tables know.
//
// A table calls its hash through a pointer to a function from key pointer to 32 bits. `KeyHash`
// names the one that belongs to a type; a table of another type is given its own.
#pragma once

#include "elfext/interface/array.h"
#include "elfext/interface/fast_array.h"
#include "elfext/interface/stringlett.h"

#include <cstdint>

namespace elfext {

template <typename Key>
struct KeyHash;

template <>
struct KeyHash<uint16_t> {
    static uint32_t hash(const uint16_t* key) { return *key; }
};

template <>
struct KeyHash<uint32_t> {
    static uint32_t hash(const uint32_t* key) { return *key; }
};

template <>
struct KeyHash<uint64_t> {
    static uint32_t hash(const uint64_t* key) {
        return static_cast<uint32_t>(*key >> 32) ^ static_cast<uint32_t>(*key);
    }
};

// The low four bits of an address are zero for nearly every object.
template <typename Object>
struct KeyHash<Object*> {
    static uint32_t hash(Object* const* key) {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(*key)) >> 4;
    }
};

template <>
struct KeyHash<Stringlett> {
    static uint32_t hash(const Stringlett* key) { return key->getHash(); }
};

template <>
struct KeyHash<NumberedStringlett> {
    static uint32_t hash(const NumberedStringlett* key) { return key->getHash(); }
};

namespace detail {

template <typename Bytes>
uint32_t hashBytes(const Bytes& bytes) {
    uint32_t hash = 0;
    for (const uint8_t byte : bytes) {
        hash = hash * 31 + byte;
    }
    return hash;
}

} // namespace detail

template <>
struct KeyHash<array<uint8_t>> {
    static uint32_t hash(const array<uint8_t>* key) { return detail::hashBytes(*key); }
};

template <>
struct KeyHash<fast_array<uint8_t>> {
    static uint32_t hash(const fast_array<uint8_t>* key) { return detail::hashBytes(*key); }
};

} // namespace elfext
