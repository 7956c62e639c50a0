// Tells whether bytes are an ELF file, by the header alone.
//
// Nothing is reported: what cannot be opened, told or read is simply not ELF. The look is a short
// one, so anything of at least 64 bytes whose byte 4 is 2 counts as ELF: that byte alone says that
// a file is 64-bit ELF.
#pragma once

#include <cstdint>
#include <cstdio>

namespace elfext {

// The `size` bytes at `data`, which may be null for none.
bool isElfFile(const void* data, uint64_t size);

// The `size` bytes at `offset` of a file. All of them must be there.
bool isElfFile(const char* fileName, uint64_t offset, uint64_t size);

// A stream, from its start. Its position is left as it was.
bool isElfFile(std::FILE* elfFile);

} // namespace elfext
