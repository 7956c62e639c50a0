#include "tests/elfext/allocation_failure.h"

#include <cstdlib>
#include <new>

namespace {

bool isArmed = false;
bool hasFailed = false;
uint64_t successesLeft = 0;
uint64_t failingSize = UINT64_MAX;

void* allocateFor(std::size_t size) {
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

void* operator new(std::size_t size) {
    if (isArmed && successesLeft-- == 0) {
        isArmed = false;
        hasFailed = true;
        throw std::bad_alloc();
    }
    void* const block = allocateFor(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return size < failingSize ? allocateFor(size) : nullptr;
}

// The forms for arrays as well: the language's own are not those that a sanitizer expects with
// these.
void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
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

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}

namespace elfext::test {

AllocationFailure::AllocationFailure(uint64_t number) {
    successesLeft = number;
    hasFailed = false;
    isArmed = true;
}

AllocationFailure::~AllocationFailure() {
    isArmed = false;
}

bool AllocationFailure::hasHappened() {
    return hasFailed;
}

LargeAllocationFailure::LargeAllocationFailure(uint64_t size) {
    failingSize = size;
}

LargeAllocationFailure::~LargeAllocationFailure() {
    failingSize = UINT64_MAX;
}

} // namespace elfext::test
