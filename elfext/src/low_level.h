// The lowest layer of reading: headers and bytes of an ELF file, from a stream or from memory.
//
// The state is the process's own, and there is one: between `openFile` or `openBuffer` and `close`
// there is one file that is being read, and reads do not nest. `OpenInput` pairs the calls.
//
// Nothing is reported here. Every operation gives a status, which the reader turns into a report.
//
// Two forms of files are known. The plain one is ELF. The second one has a magic number of its
// own and two more words behind a 32-bit header; the bytes of its sections and segments are
// enciphered. The cipher is nothing that this library knows, so they come as they are stored.
#pragma once

#include "elfext/interface/elf_records.h"

#include <cstdint>
#include <cstdio>

namespace elfext {

enum LowLevelStatus : uint32_t {
    LowLevelStatus_Good = 0,
    LowLevelStatus_Short = 1, // less data than asked for, or a position out of range
    LowLevelStatus_ReadFailed = 2,
    LowLevelStatus_BadMagic = 3,
    LowLevelStatus_BadClass = 5,
    LowLevelStatus_OutOfMemory = 6,
};

enum ReadMode : uint32_t {
    ReadMode_Plain = 1,
    ReadMode_SecondForm = 2,
};

namespace lowlevel {

// From a stream only the first 2 GiB can be reached.
inline constexpr uint64_t LastStreamOffset = 0x7FFFFFFF;

// The size of a stream that nobody has asked for it.
inline constexpr uint64_t UnknownSize = UINT64_MAX;

// Starts a read. The stream, or the `size` bytes at `data`, stay the caller's and must stay as
// they are until `close`.
void openFile(std::FILE* file, uint64_t size);
void openBuffer(const uint8_t* data, uint64_t size);
void close();

// What the header's read found: the class (32 or 64 bits), the byte order and the form.
bool is64Bit();
bool isLittleEndian();
ReadMode getReadMode();
void setLittleEndian(bool littleEndian);

// Copies `count` bytes at `offset`. No more than 32 bits' worth can be asked for at once.
LowLevelStatus readBytes(void* buffer, uint64_t offset, uint64_t count);

// The status that `readBytes` would give, as far as it can be known without reading.
LowLevelStatus checkBytes(uint64_t offset, uint64_t count);

// The bytes from `offset` on where the file is in memory; the caller has checked the range.
// Null where it is a stream.
const uint8_t* bufferBytes(uint64_t offset);

// The header. Sets class, byte order and form.
LowLevelStatus readElfHeader(Elf64_Ehdr& header);

// `count` headers from the place that the ELF header names. Nothing is written if they are not
// all there.
LowLevelStatus readSectionHeaders(const Elf64_Ehdr& elfHeader, uint64_t count, Elf64_Shdr* headers);
LowLevelStatus readProgramHeaders(const Elf64_Ehdr& elfHeader, uint64_t count, Elf64_Phdr* headers);

// The status of reading that many headers, to be asked before memory is taken for them.
LowLevelStatus checkSectionHeaders(const Elf64_Ehdr& elfHeader, uint64_t count);
LowLevelStatus checkProgramHeaders(const Elf64_Ehdr& elfHeader, uint64_t count);

// Whether files that are made carry the plain magic number. Unset at the start of the process;
// the default size of a module's header depends on it.
bool isPlainMagicInUse();
void setPlainMagicInUse(bool inUse);

} // namespace lowlevel

// A read from opening to closing.
class OpenInput {
public:
    explicit OpenInput(std::FILE* file, uint64_t size) { lowlevel::openFile(file, size); }
    OpenInput(const uint8_t* data, uint64_t size) { lowlevel::openBuffer(data, size); }
    OpenInput(const OpenInput&) = delete;
    OpenInput& operator=(const OpenInput&) = delete;
    ~OpenInput() { lowlevel::close(); }
};

} // namespace elfext
