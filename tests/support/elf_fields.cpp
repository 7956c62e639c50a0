#include "tests/support/elf_fields.h"

#include <stdexcept>

namespace testsupport {

namespace {

struct FieldRow {
    FieldPlace narrow; // 32-bit
    FieldPlace wide;   // 64-bit
};

// Rows in the order of the enumerators.
constexpr FieldRow headerRows[] = {
    {{4, 1}, {4, 1}},   // EI_CLASS
    {{5, 1}, {5, 1}},   // EI_DATA
    {{6, 1}, {6, 1}},   // EI_VERSION
    {{7, 1}, {7, 1}},   // EI_OSABI
    {{8, 1}, {8, 1}},   // EI_ABIVERSION
    {{16, 2}, {16, 2}}, // e_type
    {{18, 2}, {18, 2}}, // e_machine
    {{20, 4}, {20, 4}}, // e_version
    {{24, 4}, {24, 8}}, // e_entry
    {{28, 4}, {32, 8}}, // e_phoff
    {{32, 4}, {40, 8}}, // e_shoff
    {{36, 4}, {48, 4}}, // e_flags
    {{40, 2}, {52, 2}}, // e_ehsize
    {{42, 2}, {54, 2}}, // e_phentsize
    {{44, 2}, {56, 2}}, // e_phnum
    {{46, 2}, {58, 2}}, // e_shentsize
    {{48, 2}, {60, 2}}, // e_shnum
    {{50, 2}, {62, 2}}, // e_shstrndx
};

constexpr FieldRow sectionRows[] = {
    {{0, 4}, {0, 4}},   // sh_name
    {{4, 4}, {4, 4}},   // sh_type
    {{8, 4}, {8, 8}},   // sh_flags
    {{12, 4}, {16, 8}}, // sh_addr
    {{16, 4}, {24, 8}}, // sh_offset
    {{20, 4}, {32, 8}}, // sh_size
    {{24, 4}, {40, 4}}, // sh_link
    {{28, 4}, {44, 4}}, // sh_info
    {{32, 4}, {48, 8}}, // sh_addralign
    {{36, 4}, {56, 8}}, // sh_entsize
};

constexpr FieldRow segmentRows[] = {
    {{0, 4}, {0, 4}},   // p_type
    {{4, 4}, {8, 8}},   // p_offset
    {{8, 4}, {16, 8}},  // p_vaddr
    {{12, 4}, {24, 8}}, // p_paddr
    {{16, 4}, {32, 8}}, // p_filesz
    {{20, 4}, {40, 8}}, // p_memsz
    {{24, 4}, {4, 4}},  // p_flags
    {{28, 4}, {48, 8}}, // p_align
};

constexpr FieldRow symbolRows[] = {
    {{0, 4}, {0, 4}},  // st_name
    {{4, 4}, {8, 8}},  // st_value
    {{8, 4}, {16, 8}}, // st_size
    {{12, 1}, {4, 1}}, // st_info
    {{13, 1}, {5, 1}}, // st_other
    {{14, 2}, {6, 2}}, // st_shndx
};

constexpr FieldRow relocationRows[] = {
    {{0, 4}, {0, 8}},  // r_offset
    {{4, 4}, {8, 8}},  // r_info
    {{8, 4}, {16, 8}}, // r_addend
};

template <class Field, size_t count>
FieldPlace find(const FieldRow (&rows)[count], Field field, ElfFormat format) {
    const FieldRow& row = rows[static_cast<size_t>(field)];
    return format.is64 ? row.wide : row.narrow;
}

template <class Field>
uint64_t read(std::string_view file, uint64_t record, Field field) {
    const ElfFormat format = formatOf(file);
    const FieldPlace place = placeOf(field, format);
    return readNumber(file, record + place.offset, place.width, format.littleEndian);
}

template <class Field>
void write(std::string& file, uint64_t record, Field field, uint64_t value) {
    const ElfFormat format = formatOf(file);
    const FieldPlace place = placeOf(field, format);
    writeNumber(file, record + place.offset, place.width, format.littleEndian, value);
}

uint64_t sectionHeaderAt(std::string_view file, size_t section) {
    return headerField(file, HeaderField::SectionHeaderOffset) +
           section * sectionHeaderSize(formatOf(file));
}

uint64_t programHeaderAt(std::string_view file, size_t segment) {
    return headerField(file, HeaderField::ProgramHeaderOffset) +
           segment * programHeaderSize(formatOf(file));
}

constexpr uint64_t typeRela = 4;

} // namespace

std::string describe(ElfFormat format) {
    return std::string(format.is64 ? "64-bit " : "32-bit ") +
           (format.littleEndian ? "little-endian" : "big-endian");
}

FieldPlace placeOf(HeaderField field, ElfFormat format) {
    return find(headerRows, field, format);
}

FieldPlace placeOf(SectionField field, ElfFormat format) {
    return find(sectionRows, field, format);
}

FieldPlace placeOf(SegmentField field, ElfFormat format) {
    return find(segmentRows, field, format);
}

FieldPlace placeOf(SymbolField field, ElfFormat format) {
    return find(symbolRows, field, format);
}

FieldPlace placeOf(RelocationField field, ElfFormat format) {
    return find(relocationRows, field, format);
}

size_t elfHeaderSize(ElfFormat format) {
    return format.is64 ? 64 : 52;
}

size_t sectionHeaderSize(ElfFormat format) {
    return format.is64 ? 64 : 40;
}

size_t programHeaderSize(ElfFormat format) {
    return format.is64 ? 56 : 32;
}

size_t symbolSize(ElfFormat format) {
    return format.is64 ? 24 : 16;
}

size_t relocationSize(ElfFormat format, bool withAddend) {
    return (format.is64 ? size_t{8} : size_t{4}) * (withAddend ? 3 : 2);
}

size_t dynamicEntrySize(ElfFormat format) {
    return format.is64 ? 16 : 8;
}

uint64_t readNumber(std::string_view bytes, uint64_t offset, size_t width, bool littleEndian) {
    if (offset > bytes.size() || bytes.size() - offset < width) {
        throw std::out_of_range("no such bytes to read a number from");
    }
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        const size_t at = littleEndian ? width - 1 - i : i;
        value = value << 8U | static_cast<unsigned char>(bytes[offset + at]);
    }
    return value;
}

void writeNumber(std::string& bytes, uint64_t offset, size_t width, bool littleEndian,
                 uint64_t value) {
    if (offset > bytes.size() || bytes.size() - offset < width) {
        throw std::out_of_range("no such bytes to write a number to");
    }
    for (size_t i = 0; i < width; ++i) {
        const size_t at = littleEndian ? i : width - 1 - i;
        bytes[offset + at] = static_cast<char>(value & 0xFFU);
        value >>= 8U;
    }
}

ElfBytes& ElfBytes::number(uint64_t value, size_t width) {
    const size_t start = m_bytes.size();
    m_bytes.resize(start + width);
    writeNumber(m_bytes, start, width, m_format.littleEndian, value);
    return *this;
}

ElfBytes& ElfBytes::text(std::string_view value) {
    m_bytes += value;
    m_bytes += '\0';
    return *this;
}

ElfBytes& ElfBytes::raw(std::string_view value) {
    m_bytes += value;
    return *this;
}

ElfBytes& ElfBytes::align(size_t alignment) {
    m_bytes.resize((m_bytes.size() + alignment - 1) / alignment * alignment);
    return *this;
}

ElfFormat formatOf(std::string_view file) {
    return {readNumber(file, 4, 1, true) == 2, readNumber(file, 5, 1, true) == 1};
}

uint64_t headerField(std::string_view file, HeaderField field) {
    return read(file, 0, field);
}

uint64_t sectionField(std::string_view file, size_t section, SectionField field) {
    return read(file, sectionHeaderAt(file, section), field);
}

uint64_t segmentField(std::string_view file, size_t segment, SegmentField field) {
    return read(file, programHeaderAt(file, segment), field);
}

void setHeaderField(std::string& file, HeaderField field, uint64_t value) {
    write(file, 0, field, value);
}

void setSectionField(std::string& file, size_t section, SectionField field, uint64_t value) {
    write(file, sectionHeaderAt(file, section), field, value);
}

void setSegmentField(std::string& file, size_t segment, SegmentField field, uint64_t value) {
    write(file, programHeaderAt(file, segment), field, value);
}

void setSymbolField(std::string& file, size_t section, size_t index, SymbolField field,
                    uint64_t value) {
    const uint64_t table = sectionField(file, section, SectionField::Offset);
    write(file, table + index * symbolSize(formatOf(file)), field, value);
}

void setRelocationField(std::string& file, size_t section, size_t index, RelocationField field,
                        uint64_t value) {
    const bool withAddend = sectionField(file, section, SectionField::Type) == typeRela;
    const uint64_t table = sectionField(file, section, SectionField::Offset);
    write(file, table + index * relocationSize(formatOf(file), withAddend), field, value);
}

} // namespace testsupport
