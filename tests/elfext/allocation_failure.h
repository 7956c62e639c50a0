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
};

} // namespace elfext::test
