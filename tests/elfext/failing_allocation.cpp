#include "tests/elfext/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace elfext::test {
namespace {

constexpr uint64_t never = UINT64_MAX;

uint64_t g_Seen = 0;
uint64_t g_FailingNumber = never;
uint64_t g_FailingSize = never;

} // namespace

FailingAllocation::FailingAllocation(uint64_t number) {
    g_Seen = 0;
    g_FailingNumber = number;
}

FailingAllocation::~FailingAllocation() {
    g_FailingNumber = never;
}

bool FailingAllocation::hasFailed() {
    return g_Seen >= g_FailingNumber;
}

FailingLargeAllocations::FailingLargeAllocations(uint64_t size) {
    g_FailingSize = size;
}

FailingLargeAllocations::~FailingLargeAllocations() {
    g_FailingSize = never;
}

} // namespace elfext::test

using namespace elfext::test;

void* operator new(std::size_t size) {
    void* const block = ++g_Seen != g_FailingNumber ? std::malloc(size != 0 ? size : 1) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return size < g_FailingSize ? std::malloc(size != 0 ? size : 1) : nullptr;
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
