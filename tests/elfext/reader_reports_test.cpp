// Every problem that the reader reports, in each class and byte order: the sentence, its severity,
// and what comes of the handler's answer. Each row spoils one thing in a file without defects.
#include "tests/elfext/reader_fixtures.h"

#include "tests/support/elf_fields.h"

namespace elfext::test {
namespace {

using namespace testsupport;

enum Outcome {
    Outcome_GoesOn,     // if the handler says so
    Outcome_Fails,      // whatever the handler says
    Outcome_Impossible, // and a handler that says to go on is at fault
};

// A file and where its parts are.
struct Sample {
    RichElf rich;
    ElfFormat format;
    std::string file = {};

    explicit Sample(ElfFormat fileFormat, uint16_t type = elf::ET_REL)
        : rich(richElf(fileFormat, type)), format(fileFormat) {}

    size_t lastSection() const { return rich.names; }
    // To be called when the builder is as it is to be.
    void finish() {
        if (file.empty()) {
            file = rich.bytes();
        }
    }
    void set(HeaderField field, uint64_t value) {
        finish();
        setHeaderField(file, field, value);
    }
    void set(size_t section, SectionField field, uint64_t value) {
        finish();
        setSectionField(file, section, field, value);
    }
    uint64_t get(size_t section, SectionField field) {
        finish();
        return sectionField(file, section, field);
    }
    void setSymbol(size_t table, size_t index, SymbolField field, uint64_t value) {
        finish();
        setSymbolField(file, table, index, field, value);
    }
    void setWord(size_t section, uint64_t offset, uint64_t value) {
        finish();
        setContentsNumber(file, section, offset, 4, value);
    }
    void setByte(size_t section, uint64_t offset, uint64_t value) {
        finish();
        setContentsNumber(file, section, offset, 1, value);
    }
};

std::string number(uint64_t value) {
    return std::to_string(value);
}
std::string hash(uint64_t value) {
    return "#" + number(value);
}

// Spoils the sample and gives the sentence.
using Spoil = std::string (*)(Sample& sample);

struct ReportCase {
    const char* name;
    uint32_t severity;
    Outcome outcome;
    Spoil spoil;
    uint16_t type = elf::ET_REL;
    // Formats in which the flaw can be made; others are passed over.
    bool (*isFor)(ElfFormat format) = [](ElfFormat /*format*/) { return true; };
};

bool isBigEndian(ElfFormat format) {
    return !format.littleEndian;
}
bool isNarrow(ElfFormat format) {
    return !format.is64;
}

constexpr uint64_t farIndex = 200;

std::string badIndex(Sample& sample, const char* what, size_t section, const char* sought) {
    sample.set(section, SectionField::Link, farIndex);
    return std::string(what) + " section " + hash(section) + " refers to " + sought +
           " section #200 but the last section is " + hash(sample.lastSection());
}

std::string badType(Sample& sample, const char* what, size_t section, const char* sought,
                    const char* wanted) {
    sample.set(section, SectionField::Link, sample.rich.text);
    return std::string(what) + " section " + hash(section) + " refers to " + sought + " section " +
           hash(sample.rich.text) + " but that section has type 1 (SHT_PROGBITS) instead of " +
           wanted;
}

const char* const outOfMemory = "Out of memory";
const char* const shortData = "I/O error writing file 'test.o': Unknown error -1";
const char* const readFailure = "I/O error reading file 'test.o': Unknown error -1";

const ReportCase headerCases[] = {
    {"ShortHeader", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.finish();
         sample.file.resize(10);
         return std::string(shortData);
     }},
    {"HeaderOf20Bytes", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.finish();
         sample.file.resize(20);
         return std::string(readFailure);
     },
     elf::ET_REL, isNarrow},
    {"WrongMagic", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.finish();
         sample.file[3] = 'G';
         return std::string("File is not an ELF file (wrong magic number)");
     },
     elf::ET_REL, isNarrow},
    {"WrongClass", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.finish();
         sample.file[4] = 3;
         return std::string("File is not 32-bit ELF");
     },
     elf::ET_REL, isNarrow},
    {"TypeZero", 0, Outcome_Fails,
     [](Sample& sample) {
         sample.set(HeaderField::Type, 0);
         return std::string("ELF file has unrecognised type code 0 (we handle types 1-4)");
     }},
    {"TypeFive", 0, Outcome_Fails,
     [](Sample& sample) {
         sample.set(HeaderField::Type, 5);
         return std::string("ELF file has unrecognised type code 5 (we handle types 1-4)");
     }},
    // In any order but 1 the header is taken for big-endian.
    {"Endianness", 0, Outcome_Fails,
     [](Sample& sample) {
         sample.set(HeaderField::Data, 3);
         return std::string("ELF file has invalid endianness code 3 (should be 1 or 2)");
     },
     elf::ET_REL, isBigEndian},
    {"Version", 0, Outcome_Fails,
     [](Sample& sample) {
         sample.set(HeaderField::Version, 2);
         return std::string("ELF file has unsupported version code 2 (we only handle version 1)");
     }},
    {"Machine", 1, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(HeaderField::Machine, 50);
         return std::string(
             "ELF file has unsupported machine code 50 (we only handle EM_QEL = 40)");
     }},
    {"SectionHeadersBeyondFile", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::SectionHeaderOffset, 0x7000000);
         return std::string(shortData);
     }},
    {"TooManySectionHeaders", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::SectionHeaderCount, 0xFEFF);
         return std::string(shortData);
     }},
    {"ProgramHeadersBeyondFile", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::ProgramHeaderOffset, 0x7000000);
         return std::string(shortData);
     },
     elf::ET_EXEC},
    {"CountlessProgramHeaders", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::ProgramHeaderCount, 0xFFFF);
         sample.file.append(0xFFFF * programHeaderSize(sample.format), '\0');
         return std::string(shortData);
     },
     elf::ET_EXEC},
};

const ReportCase contentsCases[] = {
    {"SectionBeyondFile", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(sample.rich.debugInfo, SectionField::Offset, 0x7000000);
         return std::string(shortData);
     }},
    {"SegmentBeyondFile", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.finish();
         setSegmentField(sample.file, 1, SegmentField::FileSize, 0x7000000);
         return std::string(shortData);
     },
     elf::ET_EXEC},
    {"StringTableStarts", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setByte(sample.rich.strings, 0, 'x');
         return "String table section " + hash(sample.rich.strings) +
                " starts with a non-zero byte value";
     }},
    {"StringTableEnds", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setByte(sample.rich.strings,
                        sample.get(sample.rich.strings, SectionField::Size) - 1, 'x');
         return "String table section " + hash(sample.rich.strings) +
                " ends with a non-zero byte value";
     }},
    {"StringTableStartsAndEnds", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setByte(sample.rich.strings, 0, 'x');
         sample.setByte(sample.rich.strings,
                        sample.get(sample.rich.strings, SectionField::Size) - 1, 'x');
         return "String table section " + hash(sample.rich.strings) +
                " starts and ends with a non-zero byte value";
     }},
    {"StringTableInSegment", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setByte(sample.rich.dynamicStrings, 0, 'x');
         return "String table section " + hash(sample.rich.dynamicStrings) +
                " starts with a non-zero byte value";
     },
     elf::ET_EXEC},
    {"TooManyCopies", 0, Outcome_Impossible,
     [](Sample& sample) {
         // Twenty symbol tables of 512 KiB that are all the same bytes.
         sample.rich.builder.section(sample.rich.data).contents.assign(0x80000, '\0');
         BuiltSection table;
         table.type = elf::SHT_SYMTAB;
         table.link = sample.rich.strings;
         for (int i = 0; i < 20; ++i) {
             sample.rich.builder.add(table);
         }
         sample.file = sample.rich.bytes();
         const size_t names = sample.rich.builder.sectionCount();
         const uint64_t place = sample.get(sample.rich.data, SectionField::Offset);
         for (size_t i = sample.rich.names; i < names; ++i) {
             sample.set(i, SectionField::Offset, place);
             sample.set(i, SectionField::Size, 0x80000);
         }
         return std::string(outOfMemory);
     }},
};

const ReportCase nameCases[] = {
    {"NoSectionsForNames", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::SectionHeaderOffset, 0);
         sample.set(HeaderField::NameTableIndex, 0xFFFF);
         return std::string("Section header table is empty");
     }},
    {"NameTableIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::NameTableIndex, farIndex);
         return "ELF header refers to section-name string table section #200 but the last section "
                "is " +
                hash(sample.lastSection());
     }},
    {"NameTableIndexWithoutSections", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::SectionHeaderOffset, 0);
         sample.set(HeaderField::NameTableIndex, 1);
         return std::string("ELF header refers to section-name string table section #1 but the "
                            "last section is #4294967295");
     }},
    {"ExtendedNameTableIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::NameTableIndex, 0xFFFF);
         sample.set(0, SectionField::Link, farIndex);
         return "ELF header refers to section-name string table section #200 but the last section "
                "is " +
                hash(sample.lastSection());
     }},
    {"NameTableType", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(HeaderField::NameTableIndex, sample.rich.note);
         return "ELF header refers to section-name string table section " + hash(sample.rich.note) +
                " but that section has type 7 (SHT_NOTE) instead of SHT_STRTAB";
     }},
    {"NameTableUnknownType", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(sample.rich.note, SectionField::Type, 0x12345);
         sample.set(HeaderField::NameTableIndex, sample.rich.note);
         return "ELF header refers to section-name string table section " + hash(sample.rich.note) +
                " but that section has type 74565 instead of SHT_STRTAB";
     }},
    {"NameWithoutTable", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(HeaderField::NameTableIndex, 0);
         return std::string("Section name field for section #1 specifies a nonzero string table "
                            "offset, but there is no section-name string table");
     }},
    {"NameOffset", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(sample.rich.text, SectionField::Name, 100000);
         return "Section name field for section " + hash(sample.rich.text) +
                " specifies a string table offset 100000 which is beyond the end of the "
                "section-name string table (length " +
                number(sample.get(sample.rich.names, SectionField::Size)) + ")";
     }},
    {"NameOffsetAtEnd", 2, Outcome_GoesOn,
     [](Sample& sample) {
         const uint64_t length = sample.get(sample.rich.names, SectionField::Size);
         sample.set(sample.rich.text, SectionField::Name, length);
         return "Section name field for section " + hash(sample.rich.text) +
                " specifies a string table offset " + number(length) +
                " which is beyond the end of the section-name string table (length " +
                number(length) + ")";
     }},
};

const ReportCase linkCases[] = {
    {"SymbolTableIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "Symbol table", sample.rich.symbols, "string table");
     }},
    {"SymbolTableType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "Symbol table", sample.rich.symbols, "string table", "SHT_STRTAB");
     }},
    {"SymbolTableNoLink", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(sample.rich.symbols, SectionField::Link, 0);
         return "Symbol table section " + hash(sample.rich.symbols) +
                " refers to string table section #0 but that section has type 0 (SHT_NULL) "
                "instead of SHT_STRTAB";
     }},
    {"DynamicSymbolTableIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "Symbol table", sample.rich.dynamicSymbols, "string table");
     }},
    {"DynamicSymbolTableType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "Symbol table", sample.rich.dynamicSymbols, "string table",
                        "SHT_STRTAB");
     }},
    {"RelIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "Relocation", sample.rich.textRelocations, "symbol table");
     }},
    {"RelType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "Relocation", sample.rich.textRelocations, "symbol table",
                        "SHT_SYMTAB or SHT_DYNSYM");
     }},
    {"RelaIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "Relocation", sample.rich.dataRelocations, "symbol table");
     }},
    {"RelaType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "Relocation", sample.rich.dataRelocations, "symbol table",
                        "SHT_SYMTAB or SHT_DYNSYM");
     }},
    {"RelocationTarget", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(sample.rich.textRelocations, SectionField::Info, farIndex);
         return "Relocation section " + hash(sample.rich.textRelocations) +
                " refers to target section #200 but the last section is " +
                hash(sample.lastSection());
     }},
    {"HashIndex", 0, Outcome_Impossible,
     [](Sample& sample) { return badIndex(sample, "Hash", sample.rich.hash, "symbol table"); }},
    {"HashType", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(sample.rich.hash, SectionField::Link, sample.rich.symbols);
         return "Hash section " + hash(sample.rich.hash) + " refers to symbol table section " +
                hash(sample.rich.symbols) +
                " but that section has type 2 (SHT_SYMTAB) instead of SHT_DYNSYM";
     }},
    {"DynamicIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "Dynamic", sample.rich.dynamic, "string table");
     }},
    {"DynamicType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "Dynamic", sample.rich.dynamic, "string table", "SHT_STRTAB");
     }},
    {"GroupType", 0, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(sample.rich.group, SectionField::Link, sample.rich.dynamicSymbols);
         return "Group section " + hash(sample.rich.group) + " refers to symbol table section " +
                hash(sample.rich.dynamicSymbols) +
                " but that section has type 11 (SHT_DYNSYM) instead of SHT_SYMTAB or SHT_DYNSYM";
     }},
    {"GroupSymbol", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(sample.rich.group, SectionField::Info, RichSymbol_Count);
         return "Group section " + hash(sample.rich.group) + " refers to symbol " +
                hash(RichSymbol_Count) + " but its associated symbol table section " +
                hash(sample.rich.symbols) + " only contains " + number(RichSymbol_Count) +
                " symbols";
     }},
    {"ShndxIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "SHT_SYMTAB_SHNDX", sample.rich.extension, "symbol table");
     }},
    {"ShndxType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "SHT_SYMTAB_SHNDX", sample.rich.extension, "symbol table",
                        "SHT_SYMTAB or SHT_DYNSYM");
     }},
    {"ShndxDuplicate", 2, Outcome_GoesOn,
     [](Sample& sample) {
         BuiltSection second;
         second.type = elf::SHT_SYMTAB_SHNDX;
         second.link = sample.rich.symbols;
         const size_t index = sample.rich.builder.add(second);
         return "SHT_SYMTAB_SHNDX sections " + hash(sample.rich.extension) + " and " + hash(index) +
                " are both associated with the same symbol table section " +
                hash(sample.rich.symbols);
     }},
    {"ShndxSize", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.set(sample.rich.extension, SectionField::Size, 11);
         return "SHT_SYMTAB_SHNDX section " + hash(sample.rich.extension) +
                " contains 2 entries, but its associated symbol table section " +
                hash(sample.rich.symbols) + " contains " + number(RichSymbol_Count);
     }},
    {"ShndxSizeTooLarge", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.rich.builder.section(sample.rich.extension).contents += std::string(4, '\0');
         return "SHT_SYMTAB_SHNDX section " + hash(sample.rich.extension) + " contains " +
                number(RichSymbol_Count + 1) +
                " entries, but its associated symbol table section " + hash(sample.rich.symbols) +
                " contains " + number(RichSymbol_Count);
     }},
    {"PreemptionMapIndex", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badIndex(sample, "Preemption map", sample.rich.preemptionMap, "string table");
     }},
    {"PreemptionMapType", 0, Outcome_Impossible,
     [](Sample& sample) {
         return badType(sample, "Preemption map", sample.rich.preemptionMap, "string table",
                        "SHT_STRTAB");
     }},
    {"OtherLink", 0, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(sample.rich.exidx, SectionField::Link, farIndex);
         return "Link field of section " + hash(sample.rich.exidx) +
                " refers to target section #200 but the last section is " +
                hash(sample.lastSection());
     }},
};

const ReportCase tableCases[] = {
    {"SymbolName", 2, Outcome_GoesOn,
     [](Sample& sample) {
         const uint64_t length = sample.get(sample.rich.strings, SectionField::Size);
         sample.setSymbol(sample.rich.symbols, RichSymbol_Data, SymbolField::Name, length);
         return "Symbol " + hash(RichSymbol_Data) + " in symbol table section " +
                hash(sample.rich.symbols) + " refers to offset " + number(length) +
                " in string table section " + hash(sample.rich.strings) + ", which is only " +
                number(length) + " bytes long";
     }},
    {"DynamicSymbolName", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.dynamicSymbols, 2, SymbolField::Name, 0xFFFFFFFF);
         return "Symbol #2 in dynamic symbol table section " + hash(sample.rich.dynamicSymbols) +
                " refers to offset 4294967295 in string table section " +
                hash(sample.rich.dynamicStrings) + ", which is only " +
                number(sample.get(sample.rich.dynamicStrings, SectionField::Size)) + " bytes long";
     }},
    {"XindexWithoutTable", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.dynamicSymbols, 1, SymbolField::Section, 0xFFFF);
         return "Symbol #1 in dynamic symbol table section " + hash(sample.rich.dynamicSymbols) +
                " has SHN_XINDEX section field, but there is no SHT_SYMTAB_SHNDX section "
                "associated with the symbol table";
     }},
    {"SymbolSection", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.symbols, RichSymbol_Data, SymbolField::Section, 0xFF00);
         return "Symbol " + hash(RichSymbol_Data) + " in symbol table section " +
                hash(sample.rich.symbols) +
                " is defined in section #65280 but the last section is " +
                hash(sample.lastSection());
     }},
    {"ExtendedSymbolSection", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.setWord(sample.rich.extension, 4 * RichSymbol_Extended, 0x10000);
         return "Symbol " + hash(RichSymbol_Extended) + " in symbol table section " +
                hash(sample.rich.symbols) +
                " is defined in section #65536 but the last section is " +
                hash(sample.lastSection());
     }},
    {"DynamicSymbolSection", 0, Outcome_Impossible,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.dynamicSymbols, 1, SymbolField::Section,
                          sample.lastSection() + 1);
         return "Symbol #1 in dynamic symbol table section " + hash(sample.rich.dynamicSymbols) +
                " is defined in section " + hash(sample.lastSection() + 1) +
                " but the last section is " + hash(sample.lastSection());
     }},
    {"SectionSymbolAbsolute", 1, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.symbols, RichSymbol_Absolute, SymbolField::Info,
                          elf::STT_SECTION);
         return "Symbol " + hash(RichSymbol_Absolute) + " in symbol table section " +
                hash(sample.rich.symbols) +
                " has type STT_SECTION but is not defined relative to a section";
     }},
    {"SectionSymbolCommon", 1, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.symbols, RichSymbol_Common, SymbolField::Info,
                          elf::STT_SECTION);
         return "Symbol " + hash(RichSymbol_Common) + " in symbol table section " +
                hash(sample.rich.symbols) +
                " has type STT_SECTION but is not defined relative to a section";
     }},
    {"DynamicSectionSymbolUndefined", 1, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setSymbol(sample.rich.dynamicSymbols, 3, SymbolField::Info, elf::STT_SECTION);
         return "Symbol #3 in dynamic symbol table section " + hash(sample.rich.dynamicSymbols) +
                " has type STT_SECTION but is not defined relative to a section";
     }},
    {"RelocationSymbol", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.finish();
         setRelocationField(sample.file, sample.rich.textRelocations, 1, RelocationField::Info,
                            farIndex << (sample.format.is64 ? 32 : 8));
         return "Relocation #1 in relocation section " + hash(sample.rich.textRelocations) +
                " refers to symbol #200 but its associated symbol table section " +
                hash(sample.rich.symbols) + " only contains " + number(RichSymbol_Count) +
                " symbols";
     }},
    {"RelocationSymbolAtEnd", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.finish();
         setRelocationField(sample.file, sample.rich.dynamicRelocations, 0, RelocationField::Info,
                            uint64_t{5} << (sample.format.is64 ? 32 : 8));
         return "Relocation #0 in relocation section " + hash(sample.rich.dynamicRelocations) +
                " refers to symbol #5 but its associated symbol table section " +
                hash(sample.rich.dynamicSymbols) + " only contains 5 symbols";
     }},
    {"GroupMember", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setWord(sample.rich.group, 4, farIndex);
         return "Group section " + hash(sample.rich.group) +
                " refers to member section #200 but the last section is " +
                hash(sample.lastSection());
     }},
    {"SectionInTwoGroups", 2, Outcome_GoesOn,
     [](Sample& sample) {
         const size_t second =
             sample.rich.builder.addGroup(".group", sample.rich.symbols, RichSymbol_Signature, 0,
                                          {static_cast<uint32_t>(sample.rich.groupedText)});
         return "Section " + hash(sample.rich.groupedText) + " belongs to group section " +
                hash(sample.rich.group) + " and also to group section " + hash(second);
     }},
    {"SectionsOverlap", 1, Outcome_GoesOn,
     [](Sample& sample) {
         sample.set(sample.rich.debugLine, SectionField::Offset,
                    sample.get(sample.rich.debugInfo, SectionField::Offset) + 23);
         return "Sections " + hash(sample.rich.debugInfo) + " and " + hash(sample.rich.debugLine) +
                " overlap in the file";
     }},
    {"BuildAttributes", 1, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setByte(sample.rich.attributes, 0, 'B');
         return "Build attributes in section " + hash(sample.rich.attributes) + " are corrupted";
     }},
    {"OverlayOfNoDebugSection", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setWord(sample.rich.debugOverlay, sample.format.is64 ? 8 : 4, sample.rich.text);
         return "Record #0 in debug overlay section " + hash(sample.rich.debugOverlay) +
                " refers to section " + hash(sample.rich.text) + " which is not a debug section";
     }},
    {"OverlayOfMissingDebugSection", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setWord(sample.rich.debugOverlay, sample.format.is64 ? 24 : 16, farIndex);
         return "Record #1 in debug overlay section " + hash(sample.rich.debugOverlay) +
                " refers to section #200 which is not a debug section";
     }},
    {"OverlayOfNoSection", 2, Outcome_GoesOn,
     [](Sample& sample) {
         sample.setWord(sample.rich.debugOverlay, sample.format.is64 ? 28 : 20, farIndex);
         return "Record #1 in debug overlay section " + hash(sample.rich.debugOverlay) +
                " refers to section #200 which is not a section";
     }},
};

class ReaderReportTest : public ReaderTest, public testing::WithParamInterface<ReportCase> {
protected:
    struct Spoiled {
        ElfFormat format;
        std::string file;
        Reports expected;
    };

    static const ReportCase& row() { return GetParam(); }

    static std::vector<Spoiled> spoiledFiles() {
        std::vector<Spoiled> files;
        for (const ElfFormat format : allElfFormats) {
            if (row().isFor(format)) {
                Sample sample(format, row().type);
                const std::string sentence = row().spoil(sample);
                sample.finish();
                files.push_back({format, sample.file, {{row().severity, sentence}}});
            }
        }
        return files;
    }
};
using ReaderReportDeathTest = ReaderReportTest;

TEST_P(ReaderReportTest, AnswerOfNoEndsTheRead) {
    for (const Spoiled& spoiled : spoiledFiles()) {
        SCOPED_TRACE(describe(spoiled.format));
        startModule();
        EXPECT_FALSE(read(spoiled.file));
        EXPECT_EQ(reports(), spoiled.expected);
        EXPECT_EQ(handler().m_Module, &module());
        EXPECT_TRUE(module().isEmpty());
        EXPECT_EQ(module().getSectionCount(), 0U);
        EXPECT_EQ(module().getSegmentCount(), 0U);
        EXPECT_STREQ(module().getFileName(), testFileName);
    }
}

TEST_P(ReaderReportTest, WithoutAHandlerTheReadEndsSilently) {
    for (const Spoiled& spoiled : spoiledFiles()) {
        SCOPED_TRACE(describe(spoiled.format));
        startModule();
        module().setErrorHandler(nullptr);
        EXPECT_FALSE(read(spoiled.file));
        EXPECT_TRUE(module().isEmpty());
        EXPECT_TRUE(reports().empty());
    }
}

// With checks switched off a handler that says to go on where that is impossible changes nothing.
TEST_P(ReaderReportTest, AnswerOfYes) {
    if (row().outcome == Outcome_Impossible) {
        platform::setCheckLevel("none");
    }
    for (const Spoiled& spoiled : spoiledFiles()) {
        SCOPED_TRACE(describe(spoiled.format));
        EXPECT_EQ(readOn(spoiled.file), row().outcome == Outcome_GoesOn);
        ASSERT_FALSE(reports().empty());
        EXPECT_EQ(reports()[0], spoiled.expected[0]);
        EXPECT_EQ(module().isEmpty(), row().outcome != Outcome_GoesOn);
    }
}

TEST_P(ReaderReportDeathTest, AnswerOfYesIsAFaultOfTheHandler) {
    ASSERT_EQ(row().outcome, Outcome_Impossible);
    EXPECT_FAULT(readOn(spoiledFiles().front().file), "elfext/src/reporting", "!err_response");
}

std::vector<ReportCase> allCases() {
    std::vector<ReportCase> rows(std::begin(headerCases), std::end(headerCases));
    rows.insert(rows.end(), std::begin(contentsCases), std::end(contentsCases));
    rows.insert(rows.end(), std::begin(nameCases), std::end(nameCases));
    rows.insert(rows.end(), std::begin(linkCases), std::end(linkCases));
    rows.insert(rows.end(), std::begin(tableCases), std::end(tableCases));
    return rows;
}

std::vector<ReportCase> impossibleCases() {
    std::vector<ReportCase> rows = allCases();
    std::erase_if(rows, [](const ReportCase& row) { return row.outcome != Outcome_Impossible; });
    return rows;
}

const auto nameOfRow = [](const auto& parameter) { return std::string(parameter.param.name); };
INSTANTIATE_TEST_SUITE_P(Flaws, ReaderReportTest, testing::ValuesIn(allCases()), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Flaws, ReaderReportDeathTest, testing::ValuesIn(impossibleCases()),
                         nameOfRow);

} // namespace
} // namespace elfext::test
