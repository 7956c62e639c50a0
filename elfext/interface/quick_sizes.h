// The sizes of a relocatable file without a module made of it.
//
// Reports on libraries measure tens of thousands of objects, nearly all of which are plain:
// sections, symbols, relocations, groups, attributes of the whole file, and nothing wrong. Such a
// file is gone over once, with the checks that reading it would make, and nothing is built. Of any
// other one nothing is told; it is to be read then, which decides what it is.
#pragma once

#include "elfext/interface/elf_records.h"
#include "elfext/interface/sizes_statistics.h"

#include <cstdint>
#include <memory>

namespace elfext {

// Measures one file after the other. Objects share nothing, so threads may each have their own.
class QuickSizes {
public:
    QuickSizes();
    ~QuickSizes();
    QuickSizes(const QuickSizes&) = delete;
    QuickSizes& operator=(const QuickSizes&) = delete;

    // Measures the `size` bytes of a file at `bytes`, not null. True if the file can be read
    // without a report, unless that passes the reader's limits, and holds no section with the
    // entry point; `statistics` is then what computeSizeStatistics() says of its module. Where
    // memory runs out with an exception, the answer is false. False tells nothing, and `statistics`
    // is undefined. The bytes may change meanwhile: the answer is then that of some mixture, but
    // nothing outside of them is read.
    bool measure(const uint8_t* bytes, uint64_t size, SizeStatistics& statistics);

private:
    class Walk;
    struct Scratch;

    std::unique_ptr<Scratch> m_Scratch; // memory that the next file uses again
};

} // namespace elfext
