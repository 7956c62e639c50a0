// Lets one chosen allocation of this program fail.
//
// The program's own `operator new` counts the allocations that throw where memory runs out. It
// is the standard containers that use them; regions take their memory elsewhere.
#pragma once

#include <cstdint>

namespace elfext::test {

// From its construction on the allocation of that number fails, the first being 1, and none after
// it.
class FailingAllocation {
public:
    explicit FailingAllocation(uint64_t number);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // Whether it has come to that.
    static bool hasFailed();
};

// The same for allocations of that size or more that give null where memory runs out: all fail.
class FailingLargeAllocations {
public:
    explicit FailingLargeAllocations(uint64_t size);
    ~FailingLargeAllocations();
    FailingLargeAllocations(const FailingLargeAllocations&) = delete;
    FailingLargeAllocations& operator=(const FailingLargeAllocations&) = delete;
};

} // namespace elfext::test
