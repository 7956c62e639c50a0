// Where the fields of ELF headers and records lie, for tests that read or spoil single fields.
//
// An ELF file is one of four kinds: 32- or 64-bit, little- or big-endian; its bytes 4 and 5 say
// which. The 64-bit records hold mostly the same fields as the 32-bit ones, some wider and some in
// another order. The tables behind these functions are taken from the System V application binary
// interface, chapter 4, and from its 64-bit supplement.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace testsupport {

struct ElfFormat {
    bool is64 = true;
    bool littleEndian = true;
};

inline constexpr std::array<ElfFormat, 4> allElfFormats = {
    ElfFormat{true, true}, ElfFormat{true, false}, ElfFormat{false, true}, ElfFormat{false, false}};

// "64-bit little-endian" and so on, for failure messages.
std::string describe(ElfFormat format);

// The enumerators stand in the order of the 32-bit header.
enum class HeaderField {
    Class,
    Data,
    IdentVersion,
    OsAbi,
    AbiVersion,
    Type,
    Machine,
    Version,
    Entry,
    ProgramHeaderOffset,
    SectionHeaderOffset,
    Flags,
    HeaderSize,
    ProgramHeaderSize,
    ProgramHeaderCount,
    SectionHeaderSize,
    SectionHeaderCount,
    NameTableIndex,
};

enum class SectionField {
    Name,
    Type,
    Flags,
    Address,
    Offset,
    Size,
    Link,
    Info,
    Alignment,
    EntrySize,
};

enum class SegmentField {
    Type,
    Offset,
    VirtualAddress,
    PhysicalAddress,
    FileSize,
    MemorySize,
    Flags,
    Alignment,
};

enum class SymbolField {
    Name,
    Value,
    Size,
    Info,
    Other,
    Section,
};

enum class RelocationField {
    Offset,
    Info,
    Addend,
};

// Both in bytes; the offset counts from the start of the record.
struct FieldPlace {
    size_t offset = 0;
    size_t width = 0;
};

FieldPlace placeOf(HeaderField field, ElfFormat format);
FieldPlace placeOf(SectionField field, ElfFormat format);
FieldPlace placeOf(SegmentField field, ElfFormat format);
FieldPlace placeOf(SymbolField field, ElfFormat format);
FieldPlace placeOf(RelocationField field, ElfFormat format);

// Sizes of the records in bytes.
size_t elfHeaderSize(ElfFormat format);
size_t sectionHeaderSize(ElfFormat format);
size_t programHeaderSize(ElfFormat format);
size_t symbolSize(ElfFormat format);
size_t relocationSize(ElfFormat format, bool withAddend);
size_t dynamicEntrySize(ElfFormat format);

// One number of `width` bytes at `offset`. Throw std::out_of_range where the bytes end before.
uint64_t readNumber(std::string_view bytes, uint64_t offset, size_t width, bool littleEndian);
void writeNumber(std::string& bytes, uint64_t offset, size_t width, bool littleEndian,
                 uint64_t value);

// Numbers and texts one behind the other, in a file's byte order.
class ElfBytes {
public:
    explicit ElfBytes(ElfFormat format) : m_format(format) {}

    ElfBytes& byte(uint64_t value) { return number(value, 1); }
    ElfBytes& half(uint64_t value) { return number(value, 2); }
    ElfBytes& word(uint64_t value) { return number(value, 4); }
    // As wide as the class: 4 or 8 bytes.
    ElfBytes& address(uint64_t value) { return number(value, m_format.is64 ? 8 : 4); }
    ElfBytes& number(uint64_t value, size_t width);
    // The text and a zero byte behind it.
    ElfBytes& text(std::string_view value);
    ElfBytes& raw(std::string_view value);
    // Zero bytes up to a multiple of `alignment`.
    ElfBytes& align(size_t alignment);

    const std::string& bytes() const { return m_bytes; }

private:
    ElfFormat m_format;
    std::string m_bytes;
};

// Reading and spoiling fields of a whole file. What a file's own bytes 4 and 5 say decides where
// a field lies; `file` must have a header. Section and segment fields are found through the file's
// header tables, so spoil those last.
ElfFormat formatOf(std::string_view file);
uint64_t headerField(std::string_view file, HeaderField field);
uint64_t sectionField(std::string_view file, size_t section, SectionField field);
uint64_t segmentField(std::string_view file, size_t segment, SegmentField field);
void setHeaderField(std::string& file, HeaderField field, uint64_t value);
void setSectionField(std::string& file, size_t section, SectionField field, uint64_t value);
void setSegmentField(std::string& file, size_t segment, SegmentField field, uint64_t value);
// A field of entry `index` of the symbol table or relocation table in section `section`.
void setSymbolField(std::string& file, size_t section, size_t index, SymbolField field,
                    uint64_t value);
void setRelocationField(std::string& file, size_t section, size_t index, RelocationField field,
                        uint64_t value);

} // namespace testsupport
