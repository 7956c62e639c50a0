// The records of an ELF file as the library holds them: always in the wide form, in the host's
// byte order, whatever the file's class and order.
//
// Their fields are those of the System V ABI's chapters "Object Files" and "Program Loading"; a
// 32-bit file's fields are widened.
#pragma once

#include "elfext/interface/elf_constants.h"

#include <cstdint>

namespace elfext {

struct Elf64_Ehdr {
    uint8_t e_ident[EI_NIDENT];
    uint16_t e_type;
    uint16_t e_machine;
    uint32_t e_version;
    uint64_t e_entry;
    uint64_t e_phoff;
    uint64_t e_shoff;
    uint32_t e_flags;
    uint16_t e_ehsize;
    uint16_t e_phentsize;
    uint16_t e_phnum;
    uint16_t e_shentsize;
    uint16_t e_shnum;
    uint16_t e_shstrndx;
};

struct Elf64_Shdr {
    uint32_t sh_name;
    uint32_t sh_type;
    uint64_t sh_flags;
    uint64_t sh_addr;
    uint64_t sh_offset;
    uint64_t sh_size;
    uint32_t sh_link;
    uint32_t sh_info;
    uint64_t sh_addralign;
    uint64_t sh_entsize;
};

struct Elf64_Phdr {
    uint32_t p_type;
    uint32_t p_flags;
    uint64_t p_offset;
    uint64_t p_vaddr;
    uint64_t p_paddr;
    uint64_t p_filesz;
    uint64_t p_memsz;
    uint64_t p_align;
};

struct Elf64_Sym {
    uint32_t st_name;
    uint8_t st_info;
    uint8_t st_other;
    uint16_t st_shndx;
    uint64_t st_value;
    uint64_t st_size;
};

// A relocation of either form; one without an addend has 0. `symbol` and `type` are the two parts
// of `r_info`.
struct Elf64_Rela {
    uint64_t r_offset;
    uint32_t symbol;
    uint32_t type;
    uint64_t r_addend;
};

} // namespace elfext
