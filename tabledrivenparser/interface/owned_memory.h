// The copies that a parser makes of texts that would not outlive their source.
//
// A word of the command line stays where it is for the whole run and is kept by its address. A word
// of a via file stands in a buffer that is soon overwritten, and a text that is to be split is
// written into; both are copied here. The list records the blocks, the default region owns them.
#pragma once

#include "tabledrivenparser/interface/linked_list.h"

#include <cstddef>

namespace tabledrivenparser {

class OwnedMemory : public LinkedList<void*> {
public:
    OwnedMemory() = default;
    // Empties the list; the copies stay valid until the default region ends.
    ~OwnedMemory() override;

    // A copy of the NUL-ended `text` in the default region; null gives null.
    char* copyString(const char* text);
    // A copy of `size` bytes in the default region, aligned to 8; null gives null.
    void* copyBytes(const void* data, size_t size);
};

} // namespace tabledrivenparser
