// The hash by which the records, blocks and names of a cache are found.
//
// Keys come from files, and short ones that differ in a byte or two are the rule; so all 64 bits
// depend on all bytes and their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace attributes {

// Takes one more number into a hash.
inline uint64_t mixHash(uint64_t hash, uint64_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15;
    return hash ^ (hash >> 29);
}

// Takes bytes into a hash, eight at a time.
inline uint64_t mixBytes(uint64_t hash, const void* bytes, size_t length) {
    const auto* next = static_cast<const unsigned char*>(bytes);
    hash = mixHash(hash, length);
    for (; length >= sizeof(uint64_t); length -= sizeof(uint64_t), next += sizeof(uint64_t)) {
        uint64_t word = 0;
        std::memcpy(&word, next, sizeof word);
        hash = mixHash(hash, word);
    }
    uint64_t rest = 0;
    std::memcpy(&rest, next, length);
    return mixHash(hash, rest);
}

inline uint64_t mixText(uint64_t hash, const char* text) {
    return mixBytes(hash, text, std::strlen(text));
}

// A hash for tables that take 32 bits.
inline uint32_t foldHash(uint64_t hash) {
    return static_cast<uint32_t>(hash ^ (hash >> 32));
}

} // namespace attributes
