#include "tabledrivenparser/interface/owned_memory.h"

#include <cstring>

namespace tabledrivenparser {

namespace {

void* copyToDefaultRegion(const void* data, size_t size, size_t alignment) {
    void* block = alloclib::allocate(alloclib::defaultRegion(), size, alignment);
    std::memcpy(block, data, size);
    return block;
}

} // namespace

OwnedMemory::~OwnedMemory() {
    clear();
}

char* OwnedMemory::copyString(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    void* block = copyToDefaultRegion(text, std::strlen(text) + 1, 1);
    append(block);
    return static_cast<char*>(block);
}

void* OwnedMemory::copyBytes(const void* data, size_t size) {
    if (data == nullptr) {
        return nullptr;
    }
    void* block = copyToDefaultRegion(data, size, 8);
    append(block);
    return block;
}

} // namespace tabledrivenparser
