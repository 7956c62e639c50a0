// The hash of texts and bytes that come from files: what tables and fingerprints are made with.
//
// Keys come from files, and short ones that differ in a byte or two are the rule; so all 64 bits
// depend on all bytes and their order. Files may be hostile too: against a hash that is the same in
// each run anyone can make keys by the thousand that all collide, and each look-up a walk. So its
// factors are random, and there are two: a difference in the top bit of a key passes any single
// one unchanged, and can be undone by the next bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace platform {

// Both odd, so that a product loses nothing.
struct HashFactors {
    uint64_t first;
    uint64_t second;
};
// Those of this run.
const HashFactors& hashFactors();

// Takes one more number into a hash.
inline uint64_t mixHash(uint64_t hash, uint64_t value) {
    const HashFactors& factors = hashFactors();
    hash = (hash ^ value) * factors.first;
    hash = (hash ^ (hash >> 32)) * factors.second;
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

} // namespace platform
