// How many bytes of a module are code, literals, data of each kind, debug tables and padding.
//
// A module with sections is measured by these, section for section, with code sections split at
// their mapping symbols, and with what segments hold outside of all sections. One that has only
// segments is measured by what a loader would make of these.
#pragma once

#include <cstdint>
#include <cstdio>

namespace elfext {

class ObjectModule;

// All in bytes.
struct SizeStatistics {
    uint64_t m_Code = 0;
    uint64_t m_LiteralPools = 0;       // what stands between code, also without being marked
    uint64_t m_RwDataUncompressed = 0; // as it is in memory
    uint64_t m_RwDataCompressed = 0;   // as it is in the file
    uint64_t m_RoData = 0;
    uint64_t m_ZiData = 0; // starts as zeros, and takes up nothing in the file
    uint64_t m_DebugInfo = 0;
    uint64_t m_InternalPadding = 0;

    SizeStatistics& operator+=(const SizeStatistics& other);
    bool operator==(const SizeStatistics& other) const = default;
};

// Measures a module. What is wrong with it is not reported: a table of compressed data that does
// not make sense means that nothing is compressed. Sums wrap around at 64 bits.
SizeStatistics computeSizeStatistics(ObjectModule& objectModule);

// Prints the eight numbers with their names, each cut to its low 32 bits, between two lines of
// "=". `f` is not null.
void printSizeStatistics(std::FILE* f, const SizeStatistics& statistics);

} // namespace elfext
