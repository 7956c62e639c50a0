// Lets memory run out where a test wants it.
//
// The allocation function of the language is replaced for the whole test program. Regions do not
// use it: they end the process where memory runs out.
#pragma once

#include <cstdint>

namespace elfext::test {

// In the life of this object allocation number `number`, counted from 0, fails.
class AllocationFailure {
public:
    explicit AllocationFailure(uint64_t number);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    // Whether it has come to that, in the life of the last one.
    static bool hasHappened();
};

// The same for all allocations of at least so many bytes that give null where memory runs out.
class LargeAllocationFailure {
public:
    explicit LargeAllocationFailure(uint64_t size);
    ~LargeAllocationFailure();
    LargeAllocationFailure(const LargeAllocationFailure&) = delete;
    LargeAllocationFailure& operator=(const LargeAllocationFailure&) = delete;
};

} // namespace elfext::test
