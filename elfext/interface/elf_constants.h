// The numbers of the ELF format that the library tells apart.
//
// Names and values are those of the System V ABI's "Object Files" chapter and of the versioning
// and GNU additions to it; the ranges that the ABI leaves to a processor hold what the QEL
// processor supplement defines there.
#pragma once

#include <cstdint>

namespace elfext {

// Positions in e_ident.
enum IdentIndex : uint32_t {
    EI_CLASS = 4,
    EI_DATA = 5,
    EI_VERSION = 6,
    EI_OSABI = 7,
    EI_ABIVERSION = 8,
    EI_NIDENT = 16,
};

enum FileClass : uint32_t {
    ELFCLASS32 = 1,
    ELFCLASS64 = 2,
};

enum DataEncoding : uint32_t {
    ELFDATA2LSB = 1, // little endian
    ELFDATA2MSB = 2,
};

enum FormatVersion : uint32_t {
    EV_CURRENT = 1,
};

// e_type.
enum FileType : uint32_t {
    ET_NONE = 0,
    ET_REL = 1,
    ET_EXEC = 2,
    ET_DYN = 3,
    ET_CORE = 4,
};

// e_machine.
enum Machine : uint32_t {
    EM_QEL = 40,
    EM_QEL64 = 183,
    EM_QEL64_SECOND = 184, // taken for the same
};

// EI_OSABI.
enum OsAbi : uint32_t {
    ELFOSABI_QEL = 64, // the processor's own ABI
};

// st_shndx, e_shstrndx.
enum SectionIndex : uint32_t {
    SHN_UNDEF = 0,
    SHN_LORESERVE = 0xFF00, // from here on numbers have other meanings
    SHN_ABS = 0xFFF1,
    SHN_COMMON = 0xFFF2,
    SHN_XINDEX = 0xFFFF,
};

// sh_type.
enum SectionType : uint32_t {
    SHT_NULL = 0,
    SHT_PROGBITS = 1,
    SHT_SYMTAB = 2,
    SHT_STRTAB = 3,
    SHT_RELA = 4,
    SHT_HASH = 5,
    SHT_DYNAMIC = 6,
    SHT_NOTE = 7,
    SHT_NOBITS = 8,
    SHT_REL = 9,
    SHT_SHLIB = 10,
    SHT_DYNSYM = 11,
    SHT_INIT_ARRAY = 14,
    SHT_FINI_ARRAY = 15,
    SHT_PREINIT_ARRAY = 16,
    SHT_GROUP = 17,
    SHT_SYMTAB_SHNDX = 18,
    SHT_LOOS = 0x60000000,
    SHT_GNU_HASH = 0x6FFFFFF6,
    SHT_GNU_LIBLIST = 0x6FFFFFF7,
    SHT_GNU_verdef = 0x6FFFFFFD,
    SHT_GNU_verneed = 0x6FFFFFFE,
    SHT_GNU_versym = 0x6FFFFFFF,
    SHT_LOPROC = 0x70000000,
    SHT_QEL_EXIDX = 0x70000001,
    SHT_QEL_PREEMPTMAP = 0x70000002,
    SHT_QEL_ATTRIBUTES = 0x70000003,
    SHT_QEL_DEBUGOVERLAY = 0x70000004,
    SHT_HIPROC = 0x7FFFFFFF,
    SHT_LOUSER = 0x80000000,
    SHT_HIUSER = 0xFFFFFFFF,
};

// sh_flags.
enum SectionFlag : uint32_t {
    SHF_WRITE = 0x1,
    SHF_ALLOC = 0x2,
    SHF_EXECINSTR = 0x4,
    SHF_INFO_LINK = 0x40, // sh_info is a section's number
    SHF_LINK_ORDER = 0x80,
    SHF_GROUP = 0x200,
    SHF_TLS = 0x400,
    SHF_ENTRYSECT = 0x10000000, // the entry point is in it
};

// The first word of a group section.
enum GroupFlag : uint32_t {
    GRP_COMDAT = 0x1,
};

// The high four bits of st_info.
enum SymbolBinding : uint32_t {
    STB_LOCAL = 0,
    STB_GLOBAL = 1,
    STB_WEAK = 2,
};

// The low four bits of st_info.
enum SymbolType : uint32_t {
    STT_NOTYPE = 0,
    STT_OBJECT = 1,
    STT_FUNC = 2,
    STT_SECTION = 3,
    STT_FILE = 4,
    STT_COMMON = 5,
    STT_TLS = 6,
};

// The low two bits of st_other.
enum SymbolVisibility : uint32_t {
    STV_DEFAULT = 0,
    STV_INTERNAL = 1,
    STV_HIDDEN = 2,
    STV_PROTECTED = 3,
};

// p_type.
enum SegmentType : uint32_t {
    PT_NULL = 0,
    PT_LOAD = 1,
    PT_DYNAMIC = 2,
    PT_INTERP = 3,
    PT_NOTE = 4,
    PT_SHLIB = 5,
    PT_PHDR = 6,
    PT_TLS = 7,
    PT_QEL_EXIDX = 0x70000001,
};

// p_flags.
enum SegmentFlag : uint32_t {
    PF_X = 0x1,
    PF_W = 0x2,
    PF_R = 0x4,
};

// d_tag.
enum DynamicTag : uint32_t {
    DT_NULL = 0,
    DT_NEEDED = 1,
    DT_PLTRELSZ = 2,
    DT_PLTGOT = 3,
    DT_HASH = 4,
    DT_STRTAB = 5,
    DT_SYMTAB = 6,
    DT_RELA = 7,
    DT_RELASZ = 8,
    DT_RELAENT = 9,
    DT_STRSZ = 10,
    DT_SYMENT = 11,
    DT_INIT = 12,
    DT_FINI = 13,
    DT_SONAME = 14,
    DT_RPATH = 15,
    DT_SYMBOLIC = 16,
    DT_REL = 17,
    DT_RELSZ = 18,
    DT_RELENT = 19,
    DT_PLTREL = 20,
    DT_DEBUG = 21,
    DT_TEXTREL = 22,
    DT_JMPREL = 23,
    DT_BIND_NOW = 24,
    DT_INIT_ARRAY = 25,
    DT_FINI_ARRAY = 26,
    DT_INIT_ARRAYSZ = 27,
    DT_FINI_ARRAYSZ = 28,
    DT_RUNPATH = 29,
    DT_FLAGS = 30,
    DT_PREINIT_ARRAY = 32,
    DT_PREINIT_ARRAYSZ = 33,
    DT_RELRSZ = 35, // of relative relocations in their packed form
    DT_RELR = 36,
    DT_RELRENT = 37,
    DT_GNU_HASH = 0x6FFFFEF5,
    DT_VERSYM = 0x6FFFFFF0,
    DT_RELACOUNT = 0x6FFFFFF9, // how many relative relocations come first
    DT_RELCOUNT = 0x6FFFFFFA,
    DT_VERDEF = 0x6FFFFFFC,
    DT_VERDEFNUM = 0x6FFFFFFD,
    DT_VERNEED = 0x6FFFFFFE,
    DT_VERNEEDNUM = 0x6FFFFFFF,
    DT_QEL_MODULE = 0x70000001,
    DT_QEL_PREEMPTMAP = 0x70000002,
};

// The value of DT_FLAGS, where the older tags of the same meaning are gathered too.
enum DynamicFlag : uint32_t {
    DF_SYMBOLIC = 0x2,
    DF_TEXTREL = 0x4,
    DF_BIND_NOW = 0x8,
};

// The types of notes that the tools themselves write under the name "QEL".
enum NoteType : uint32_t {
    NT_QEL_SECTION_SEGMENTS = 0x40000000, // for each SHF_ALLOC section its segment's index
};

// vd_flags.
enum VersionFlag : uint32_t {
    VER_FLG_BASE = 0x1, // the version of the file itself
    VER_FLG_WEAK = 0x2,
};

// Numbers in the table of symbol versions. Those that stand for no version tell local and global
// symbols apart.
enum VersionNumber : uint32_t {
    VER_NDX_LOCAL = 0,
    VER_NDX_GLOBAL = 1,
    VERSYM_VERSION = 0x7FFF, // the part that is the number
    VERSYM_HIDDEN = 0x8000,  // not found by who asks for no version
};

} // namespace elfext
