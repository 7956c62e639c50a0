// The routines that can unpack what the linker packed.
//
// The linker chooses how to compress the initialised data of an image, and links the routine that
// unpacks them at start-up: "__decompress", which also bears the name of its variant. So an image
// tells by its symbols which variant its data are for. The routines that do the same here are
// registered by whoever has them; sizes are known without.
#pragma once

#include <cstdint>

namespace elfext {

// Unpacks `sourceSize` bytes to the `destinationSize` bytes at `destination`. In the result every
// bit but bit 1 tells of a failure.
using Decompressor = uint32_t (*)(const uint8_t* source, uint64_t sourceSize, uint8_t* destination,
                                  uint64_t destinationSize);

inline constexpr int32_t unknownDecompressor = -1;
inline constexpr int32_t decompressorCount = 3;

// The variant that a symbol's name, which may be null, stands for: 0 to 2, or unknownDecompressor.
int32_t decompressorOfSymbol(const char* symbolName);

// What the variant `id` does, in English, and its symbol. `id` is one of the variants.
const char* decompressorDescription(int32_t id);
const char* decompressorSymbol(int32_t id);

// The routine of a variant, null for none, which is how all start. One table serves the process.
void registerDecompressor(int32_t id, Decompressor routine);
// Null also for unknownDecompressor.
Decompressor findDecompressor(int32_t id);

} // namespace elfext
