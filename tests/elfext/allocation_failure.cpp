#include "tests/elfext/allocation_failure.h"

#include <cstdlib>
#include <new>

namespace {

bool isArmed = false;
uint64_t successesLeft = 0;

void* allocateFor(std::size_t size) {
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

void* operator new(std::size_t size) {
    if (isArmed && successesLeft-- == 0) {
        isArmed = false;
        throw std::bad_alloc();
    }
    void* const block = allocateFor(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocateFor(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}

namespace elfext::test {

AllocationFailure::AllocationFailure(uint64_t number) {
    successesLeft = number;
    isArmed = true;
}

AllocationFailure::~AllocationFailure() {
    isArmed = false;
}

} // namespace elfext::test
