// Records of an ELF file as bytes, one behind the other: the way back from `file_layout.h`.
#pragma once

#include "elfext/interface/byte_order.h"
#include "elfext/interface/elf_records.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace elfext {

class RecordBytes {
public:
    RecordBytes(bool is64, bool isLittleEndian) : m_Is64(is64), m_IsLittleEndian(isLittleEndian) {}

    const uint8_t* data() const { return m_Bytes.data(); }
    uint64_t size() const { return m_Bytes.size(); }
    // Makes room for `size` bytes in all.
    void reserve(uint64_t size) { m_Bytes.reserve(static_cast<size_t>(size)); }
    // Cuts the bytes, or fills them up with zeros.
    void resize(uint64_t size) { m_Bytes.resize(static_cast<size_t>(size)); }

    void byte(uint8_t value) { m_Bytes.push_back(value); }
    void half(uint16_t value) { put(value); }
    void word(uint32_t value) { put(value); }
    // A word of the class's width; of a wider value the low bits count.
    void address(uint64_t value) {
        if (m_Is64) {
            put(value);
        } else {
            put(static_cast<uint32_t>(value));
        }
    }
    void raw(const void* bytes, uint64_t count) {
        const auto* const first = static_cast<const uint8_t*>(bytes);
        m_Bytes.insert(m_Bytes.end(), first, first + count);
    }
    void text(const char* value) { raw(value, std::strlen(value) + 1); }
    // Seven bits a byte, the lowest first, bit 7 in every byte but the last.
    void uleb(uint32_t value) {
        for (; value >= 0x80; value >>= 7) {
            byte(static_cast<uint8_t>(value | 0x80));
        }
        byte(static_cast<uint8_t>(value));
    }
    // Replaces the word at `offset`.
    void setWord(uint64_t offset, uint32_t value) {
        const uint32_t stored = convertByteOrder(value, m_IsLittleEndian);
        std::memcpy(m_Bytes.data() + offset, &stored, sizeof stored);
    }

    void elfHeader(const Elf64_Ehdr& header) {
        raw(header.e_ident, EI_NIDENT);
        half(header.e_type);
        half(header.e_machine);
        word(header.e_version);
        address(header.e_entry);
        address(header.e_phoff);
        address(header.e_shoff);
        word(header.e_flags);
        half(header.e_ehsize);
        half(header.e_phentsize);
        half(header.e_phnum);
        half(header.e_shentsize);
        half(header.e_shnum);
        half(header.e_shstrndx);
    }

    void sectionHeader(const Elf64_Shdr& header) {
        word(header.sh_name);
        word(header.sh_type);
        address(header.sh_flags);
        address(header.sh_addr);
        address(header.sh_offset);
        address(header.sh_size);
        word(header.sh_link);
        word(header.sh_info);
        address(header.sh_addralign);
        address(header.sh_entsize);
    }

    void programHeader(const Elf64_Phdr& header) {
        word(header.p_type);
        if (m_Is64) {
            word(header.p_flags);
        }
        address(header.p_offset);
        address(header.p_vaddr);
        address(header.p_paddr);
        address(header.p_filesz);
        address(header.p_memsz);
        if (!m_Is64) {
            word(header.p_flags);
        }
        address(header.p_align);
    }

    void symbol(const Elf64_Sym& symbol) {
        word(symbol.st_name);
        if (!m_Is64) {
            address(symbol.st_value);
            address(symbol.st_size);
        }
        byte(symbol.st_info);
        byte(symbol.st_other);
        half(symbol.st_shndx);
        if (m_Is64) {
            address(symbol.st_value);
            address(symbol.st_size);
        }
    }

    void relocation(const Elf64_Rela& relocation, bool hasAddend) {
        address(relocation.r_offset);
        if (m_Is64) {
            put(uint64_t{relocation.symbol} << 32 | relocation.type);
        } else {
            put(relocation.symbol << 8 | (relocation.type & 0xFF));
        }
        if (hasAddend) {
            address(relocation.r_addend);
        }
    }

private:
    template <typename Integer>
    void put(Integer value) {
        const Integer stored = convertByteOrder(value, m_IsLittleEndian);
        const size_t place = m_Bytes.size();
        m_Bytes.resize(place + sizeof stored);
        std::memcpy(m_Bytes.data() + place, &stored, sizeof stored);
    }

    bool m_Is64;
    bool m_IsLittleEndian;
    std::vector<uint8_t> m_Bytes;
};

} // namespace elfext
