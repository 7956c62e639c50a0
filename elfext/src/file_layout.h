// How the records of an ELF file lie in its bytes: one layout for each class and byte order.
//
// The readers here are templates over both, so that a loop over the entries of a table decides on
// them once and not at each field. A caller hands its loop to `withLayout` as a generic lambda.
// None of them checks bounds: the caller knows that the whole record is there.
//
// The layouts are those of the System V ABI, chapter 4 ("Object Files"), and of its 64-bit form.
#pragma once

#include "elfext/interface/byte_order.h"
#include "elfext/interface/elf_records.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace elfext {

// Sizes in bytes of the records, by class. Files that say otherwise in their headers are read at
// these strides all the same.
struct RecordSizes {
    uint32_t elfHeader;
    uint32_t sectionHeader;
    uint32_t programHeader;
    uint32_t symbol;
    uint32_t rel;
    uint32_t rela;
    uint32_t dynamicEntry;
    uint32_t half;
    uint32_t word;
    uint32_t address; // a word of the class's width
};

inline constexpr RecordSizes recordSizes32 = {52, 40, 32, 16, 8, 12, 8, 2, 4, 4};
inline constexpr RecordSizes recordSizes64 = {64, 64, 56, 24, 16, 24, 16, 2, 4, 8};

constexpr const RecordSizes& recordSizes(bool is64) {
    return is64 ? recordSizes64 : recordSizes32;
}

template <bool Is64, bool IsLittleEndian>
class FileLayout {
public:
    static constexpr RecordSizes sizes = recordSizes(Is64);

    static uint16_t half(const uint8_t* bytes) { return integer<uint16_t>(bytes); }
    static uint32_t word(const uint8_t* bytes) { return integer<uint32_t>(bytes); }
    // A word of the class's width.
    static uint64_t address(const uint8_t* bytes) {
        if constexpr (Is64) {
            return integer<uint64_t>(bytes);
        } else {
            return integer<uint32_t>(bytes);
        }
    }

    static Elf64_Ehdr elfHeader(const uint8_t* bytes) {
        Elf64_Ehdr header = {};
        std::copy_n(bytes, EI_NIDENT, header.e_ident);
        Fields fields(bytes + EI_NIDENT);
        header.e_type = fields.half();
        header.e_machine = fields.half();
        header.e_version = fields.word();
        header.e_entry = fields.address();
        header.e_phoff = fields.address();
        header.e_shoff = fields.address();
        header.e_flags = fields.word();
        header.e_ehsize = fields.half();
        header.e_phentsize = fields.half();
        header.e_phnum = fields.half();
        header.e_shentsize = fields.half();
        header.e_shnum = fields.half();
        header.e_shstrndx = fields.half();
        return header;
    }

    static Elf64_Shdr sectionHeader(const uint8_t* bytes) {
        Elf64_Shdr header = {};
        Fields fields(bytes);
        header.sh_name = fields.word();
        header.sh_type = fields.word();
        header.sh_flags = fields.address();
        header.sh_addr = fields.address();
        header.sh_offset = fields.address();
        header.sh_size = fields.address();
        header.sh_link = fields.word();
        header.sh_info = fields.word();
        header.sh_addralign = fields.address();
        header.sh_entsize = fields.address();
        return header;
    }

    static Elf64_Phdr programHeader(const uint8_t* bytes) {
        Elf64_Phdr header = {};
        Fields fields(bytes);
        header.p_type = fields.word();
        if constexpr (Is64) {
            header.p_flags = fields.word();
        }
        header.p_offset = fields.address();
        header.p_vaddr = fields.address();
        header.p_paddr = fields.address();
        header.p_filesz = fields.address();
        header.p_memsz = fields.address();
        if constexpr (!Is64) {
            header.p_flags = fields.word();
        }
        header.p_align = fields.address();
        return header;
    }

    static Elf64_Sym symbol(const uint8_t* bytes) {
        Elf64_Sym symbol = {};
        Fields fields(bytes);
        symbol.st_name = fields.word();
        if constexpr (!Is64) {
            symbol.st_value = fields.address();
            symbol.st_size = fields.address();
        }
        symbol.st_info = fields.byte();
        symbol.st_other = fields.byte();
        symbol.st_shndx = fields.half();
        if constexpr (Is64) {
            symbol.st_value = fields.address();
            symbol.st_size = fields.address();
        }
        return symbol;
    }

    // The number of the symbol alone, for loops that check all entries of a table.
    static uint32_t relocationSymbol(const uint8_t* bytes) {
        return symbolOf(address(bytes + sizes.address));
    }

    static Elf64_Rela relocation(const uint8_t* bytes, bool hasAddend) {
        Elf64_Rela relocation = {};
        Fields fields(bytes);
        relocation.r_offset = fields.address();
        const uint64_t info = fields.address();
        relocation.symbol = symbolOf(info);
        relocation.type = static_cast<uint32_t>(Is64 ? info & 0xFFFFFFFF : info & 0xFF);
        if (hasAddend) {
            relocation.r_addend = Is64 ? fields.address() : extendSign(fields.word());
        }
        return relocation;
    }

private:
    // Takes the fields of a record one by one.
    class Fields {
    public:
        explicit Fields(const uint8_t* bytes) : m_Bytes(bytes) {}
        uint8_t byte() { return *m_Bytes++; }
        uint16_t half() { return take<uint16_t>(); }
        uint32_t word() { return take<uint32_t>(); }
        uint64_t address() {
            if constexpr (Is64) {
                return take<uint64_t>();
            } else {
                return take<uint32_t>();
            }
        }

    private:
        template <typename Integer>
        Integer take() {
            const Integer value = integer<Integer>(m_Bytes);
            m_Bytes += sizeof(Integer);
            return value;
        }

        const uint8_t* m_Bytes;
    };

    template <typename Integer>
    static Integer integer(const uint8_t* bytes) {
        Integer value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return convertByteOrder(value, IsLittleEndian);
    }

    // Addends are the only fields that may be negative.
    static uint64_t extendSign(uint32_t value) {
        return static_cast<uint64_t>(int64_t{static_cast<int32_t>(value)});
    }

    static uint32_t symbolOf(uint64_t info) {
        return static_cast<uint32_t>(Is64 ? info >> 32 : info >> 8);
    }
};

// Calls `action` with the layout of a file.
template <typename Action>
decltype(auto) withLayout(bool is64, bool isLittleEndian, Action&& action) {
    if (is64) {
        return isLittleEndian ? action(FileLayout<true, true>())
                              : action(FileLayout<true, false>());
    }
    return isLittleEndian ? action(FileLayout<false, true>()) : action(FileLayout<false, false>());
}

} // namespace elfext
