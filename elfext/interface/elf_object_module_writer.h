// The writer: makes the bytes of an ELF file of an `ObjectModule`.
//
// It brings the auxiliary sections up to date, lays the file out and writes it, as a plain ELF file
// of the module's class and byte order, of any type. Contents that were left in the file that they
// came from are fetched first, so that a module may be written over its own file. Problems go to
// the module's `ErrorHandler`; without one they are failures, and false is all that the caller
// learns.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace elfext {

class ObjectModule;

// Makes the file in memory. `image` gets a block of `size` bytes, which is the caller's.
bool writeElfBuffer(ObjectModule* objectModule, std::unique_ptr<uint8_t[]>* image, uint64_t* size);

// Makes or replaces a file. One that could not be written to its end is removed.
bool writeElfFile(const char* fileName, ObjectModule* objectModule);

// Writes to an open stream, from its position on. The stream stays the caller's.
bool writeElfFile(std::FILE* elfFile, ObjectModule* objectModule);

} // namespace elfext
