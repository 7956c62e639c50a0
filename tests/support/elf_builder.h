// ELF files made byte by byte, for tests that need to know every byte of their input.
//
// An ELF file is a header, a table of program headers (segments: what is mapped into memory), the
// contents of its sections, and a table of section headers. The builder lays these out in that
// order and writes all of it correctly on its own: names into string tables, counts and offsets
// into headers, the extended forms where a file has 65,280 or more sections. Every field of every
// header can be replaced by any number, and the contents of every section are open, so that a test
// can make exactly one thing wrong and leave the rest right. See elf_fields.h for spoiling single
// fields of a finished file, and rich_elf.h for a file that holds all kinds of sections.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/elf_fields.h"

namespace testsupport {

// Values of the format that tests use.
namespace elf {

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
    SHT_DYNSYM = 11,
    SHT_INIT_ARRAY = 14,
    SHT_GROUP = 17,
    SHT_SYMTAB_SHNDX = 18,
    SHT_GNU_verdef = 0x6FFFFFFD,
    SHT_GNU_verneed = 0x6FFFFFFE,
    SHT_GNU_versym = 0x6FFFFFFF,
    SHT_QEL_EXIDX = 0x70000001,
    SHT_QEL_PREEMPTMAP = 0x70000002,
    SHT_QEL_ATTRIBUTES = 0x70000003,
    SHT_QEL_DEBUGOVERLAY = 0x70000004,
};

enum SectionFlag : uint32_t {
    SHF_WRITE = 1,
    SHF_ALLOC = 2,
    SHF_EXECINSTR = 4,
    SHF_LINK_ORDER = 0x80,
    SHF_GROUP = 0x200,
};

enum SectionIndex : uint32_t {
    SHN_UNDEF = 0,
    SHN_LORESERVE = 0xFF00,
    SHN_ABS = 0xFFF1,
    SHN_COMMON = 0xFFF2,
    SHN_XINDEX = 0xFFFF,
};

enum SymbolBinding : uint8_t { STB_LOCAL = 0, STB_GLOBAL = 1, STB_WEAK = 2 };
enum SymbolType : uint8_t {
    STT_NOTYPE = 0,
    STT_OBJECT = 1,
    STT_FUNC = 2,
    STT_SECTION = 3,
    STT_FILE = 4,
};
enum FileType : uint16_t { ET_REL = 1, ET_EXEC = 2, ET_DYN = 3, ET_CORE = 4 };
enum Machine : uint16_t { EM_QEL = 40, EM_QEL64 = 183 };
enum SegmentType : uint32_t {
    PT_LOAD = 1,
    PT_DYNAMIC = 2,
    PT_INTERP = 3,
    PT_NOTE = 4,
    PT_PHDR = 6,
    PT_TLS = 7,
};
enum DynamicTag : uint32_t {
    DT_NULL = 0,
    DT_NEEDED = 1,
    DT_HASH = 4,
    DT_STRTAB = 5,
    DT_SYMTAB = 6,
    DT_STRSZ = 10,
    DT_SYMENT = 11,
    DT_INIT = 12,
    DT_FINI = 13,
    DT_SONAME = 14,
    DT_RPATH = 15,
    DT_SYMBOLIC = 16,
    DT_DEBUG = 21,
    DT_TEXTREL = 22,
    DT_BIND_NOW = 24,
    DT_INIT_ARRAY = 25,
    DT_INIT_ARRAYSZ = 27,
    DT_RUNPATH = 29,
    DT_FLAGS = 30,
    DT_VERSYM = 0x6FFFFFF0,
    DT_VERDEF = 0x6FFFFFFC,
    DT_VERDEFNUM = 0x6FFFFFFD,
    DT_VERNEED = 0x6FFFFFFE,
    DT_VERNEEDNUM = 0x6FFFFFFF,
    DT_QEL_PREEMPTMAP = 0x70000002,
};
inline constexpr uint32_t GRP_COMDAT = 1;

} // namespace elf

struct BuiltSection {
    std::string name = {};
    uint32_t type = elf::SHT_PROGBITS;
    uint64_t flags = 0;
    std::string contents = {};
    uint64_t noBitsSize = 0; // the size of a SHT_NOBITS section, whose contents are not used
    uint64_t link = 0;
    uint64_t info = 0;
    uint64_t address = 0;
    // The address is `imageBase` plus the file offset, whatever `address` says.
    bool mapped = false;
    uint64_t alignment = 1;
    uint64_t entrySize = 0;
    // Fields of the header to replace; the layout of the file does not change by it.
    std::map<SectionField, uint64_t> raw = {};
};

struct BuiltSegment {
    uint32_t type = elf::PT_LOAD;
    uint32_t flags = 4;
    // It covers the file from the start of the first section to the end of the last one; a last
    // SHT_NOBITS section counts in memory only. A first section 0 means the start of the file.
    size_t firstSection = 0;
    size_t lastSection = 0;
    uint64_t alignment = 0x1000;
    std::map<SegmentField, uint64_t> raw = {};
};

struct BuiltElfSymbol {
    std::string name = {};
    // An index, also one of 65,280 and more, or a reserved one if `reserved` is set.
    uint32_t section = elf::SHN_UNDEF;
    bool reserved = false;
    // In a mapped section, counted from the section's start.
    uint64_t value = 0;
    uint64_t size = 0;
    uint8_t binding = elf::STB_GLOBAL;
    uint8_t type = elf::STT_NOTYPE;
    uint8_t other = 0;
    // Writes SHN_XINDEX and puts the index into the extension table, though it would fit.
    bool extended = false;
};

// A symbol outside all sections: absolute, common or undefined by `index`.
BuiltElfSymbol reservedSymbol(std::string name, uint32_t index, uint64_t value = 0);

struct BuiltElfRelocation {
    uint64_t offset = 0;
    uint32_t symbol = 0;
    uint32_t type = 1;
    uint64_t addend = 0; // SHT_RELA only
};

struct BuiltDynamicTag {
    uint64_t tag = 0;
    uint64_t value = 0;
    // Added to the value: the address of that section.
    std::optional<size_t> addressOf = std::nullopt;
};

struct BuiltNote {
    std::string name = {}; // without its terminator
    uint32_t type = 0;
    std::string description = {};
};

// Where everything came to lie.
struct ElfLayout {
    struct Place {
        uint64_t offset = 0;
        uint64_t size = 0; // in the file
        uint64_t address = 0;
    };
    std::vector<Place> sections;
    uint64_t programHeaderOffset = 0; // 0 if there are no segments
    uint64_t sectionHeaderOffset = 0;
    uint64_t fileSize = 0;
};

// Where mapped sections and segments start in memory.
inline constexpr uint64_t imageBase = 0x10000;

class ElfBuilder {
public:
    // Section 0 exists from the start. The machine is the one that goes with the class.
    explicit ElfBuilder(ElfFormat format = {}, uint16_t type = elf::ET_REL);

    ElfFormat format() const { return m_format; }

    // All of these return the new section's index.
    size_t add(BuiltSection section);
    // A table with nothing but the empty text. addString returns the place of the text in it.
    size_t addStringTable(std::string name);
    uint32_t addString(size_t stringTable, std::string_view text);
    // Entry 0 is made without being told. Names go into `stringTable`. Where a symbol needs it, a
    // SHT_SYMTAB_SHNDX section follows directly behind the table.
    size_t addSymbolTable(std::string name, uint32_t type, size_t stringTable,
                          const std::vector<BuiltElfSymbol>& symbols);
    // ".strtab" and behind it ".symtab": the returned index is the latter's.
    size_t addSymbols(const std::vector<BuiltElfSymbol>& symbols);
    size_t addRelocations(std::string name, uint32_t type, size_t target, size_t symbolTable,
                          const std::vector<BuiltElfRelocation>& relocations);
    // `signature` is an index into the symbol table. Members do not get their flag by it.
    size_t addGroup(std::string name, size_t symbolTable, uint32_t signature, uint32_t flags,
                    const std::vector<uint32_t>& members);
    // A DT_NULL is appended.
    size_t addDynamic(size_t stringTable, const std::vector<BuiltDynamicTag>& tags);
    size_t addNotes(std::string name, const std::vector<BuiltNote>& notes);
    // Returns the new segment's index.
    size_t addSegment(BuiltSegment segment);

    size_t sectionCount() const { return m_sections.size(); }
    // Symbol tables and dynamic sections get their contents when everything has its place, unless
    // a test has changed the size of them: spoil single entries in the finished file.
    BuiltSection& section(size_t index) { return m_sections.at(index); }
    BuiltSegment& segment(size_t index) { return m_segments.at(index); }
    // Replaces a field of the ELF header.
    ElfBuilder& header(HeaderField field, uint64_t value);
    // Leaves out the table of section names, which otherwise comes last. Names are then 0.
    ElfBuilder& withoutSectionNames();

    // The file. The name table, if any, is the last section of it.
    std::string bytes() const;
    // As bytes() lays it out; with the name table.
    ElfLayout layout() const;

private:
    using Fill = std::function<std::string(const ElfLayout&)>;

    void fillLate(size_t section, Fill fill);
    std::vector<BuiltSection> finishedSections(std::vector<uint32_t>& nameOffsets) const;
    ElfLayout laidOut(const std::vector<BuiltSection>& sections) const;
    std::string headerBytes(const ElfLayout& layout) const;
    std::string programHeaderBytes(const BuiltSegment& segment, const ElfLayout& layout,
                                   const std::vector<BuiltSection>& sections) const;
    std::string sectionHeaderBytes(const BuiltSection& section, const ElfLayout::Place& place,
                                   uint32_t nameOffset) const;

    ElfFormat m_format;
    uint16_t m_type;
    bool m_withSectionNames = true;
    std::map<HeaderField, uint64_t> m_rawHeader;
    std::vector<BuiltSection> m_sections;
    std::vector<BuiltSegment> m_segments;
    // Contents that depend on where sections come to lie. They do not change their size.
    std::map<size_t, Fill> m_fills;
};

} // namespace testsupport
