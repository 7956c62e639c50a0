#include "tests/command/object_flaws.h"

namespace commandtest {

using namespace testsupport;
using namespace testsupport::elf;

namespace {

std::string number(uint64_t value) {
    return "#" + std::to_string(value);
}

// A file whose header holds `value` in `field`.
std::string withHeader(const RichElf& rich, HeaderField field, uint64_t value) {
    std::string bytes = rich.bytes();
    setHeaderField(bytes, field, value);
    return bytes;
}

std::string withSection(const RichElf& rich, size_t section, SectionField field, uint64_t value) {
    std::string bytes = rich.bytes();
    setSectionField(bytes, section, field, value);
    return bytes;
}

// `section` refers to one behind the last.
std::string withBadIndex(const RichElf& rich, size_t section, SectionField field,
                         const std::string& what, const std::string& sought,
                         std::string& sentence) {
    sentence = what + " section " + number(section) + " refers to " + sought + " section " +
               number(rich.names + 1) + " but the last section is " + number(rich.names);
    return withSection(rich, section, field, rich.names + 1);
}

// `section` refers to `target`, which has another type than it must.
std::string withBadType(const RichElf& rich, size_t section, size_t target, const std::string& what,
                        const std::string& sought, const std::string& typeText,
                        const std::string& wanted, std::string& sentence) {
    sentence = what + " section " + number(section) + " refers to " + sought + " section " +
               number(target) + " but that section has type " + typeText + " instead of " + wanted;
    return withSection(rich, section, SectionField::Link, target);
}

const std::string programBits = "1 (SHT_PROGBITS)";
const std::string anySymbols = "SHT_SYMTAB or SHT_DYNSYM";

// Where the linker's own text for a failed read would stand there is none: no host call failed.
const std::string endedEarly = "I/O error writing file 'bad.o': Unknown error -1";

} // namespace

const std::vector<ObjectFlaw>& headerFlaws() {
    static const std::vector<ObjectFlaw> flaws = {
        {"SectionHeadersBehindTheEnd",
         [](RichElf rich, std::string& sentence) {
             sentence = endedEarly;
             const std::string bytes = rich.bytes();
             return bytes.substr(0, bytes.size() - 1);
         }},
        {"ContentsBehindTheEnd",
         [](RichElf rich, std::string& sentence) {
             sentence = endedEarly;
             return withSection(rich, rich.strings, SectionField::Offset, 0x7FFFFFFF);
         }},
        {"ProgramHeadersBehindTheEnd",
         [](RichElf rich, std::string& sentence) {
             sentence = endedEarly;
             return withHeader(rich, HeaderField::ProgramHeaderCount, 0x7FFF);
         },
         ET_DYN},
        {"FileTypeZero",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF file has unrecognised type code 0 (we handle types 1-4)";
             return withHeader(rich, HeaderField::Type, 0);
         }},
        {"FileTypeFive",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF file has unrecognised type code 5 (we handle types 1-4)";
             return withHeader(rich, HeaderField::Type, 5);
         }},
        {"VersionZero",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF file has unsupported version code 0 (we only handle version 1)";
             return withHeader(rich, HeaderField::Version, 0);
         }},
        {"VersionTwo",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF file has unsupported version code 2 (we only handle version 1)";
             return withHeader(rich, HeaderField::Version, 2);
         }},
        {"OtherMachine",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF file has unsupported machine code 50 (we only handle EM_QEL = 40)";
             return withHeader(rich, HeaderField::Machine, 50);
         }},
        {"NameTableOfAFileWithoutSections",
         [](RichElf rich, std::string& sentence) {
             sentence = "Section header table is empty";
             std::string bytes = withHeader(rich, HeaderField::NameTableIndex, SHN_XINDEX);
             setHeaderField(bytes, HeaderField::SectionHeaderOffset, 0);
             setHeaderField(bytes, HeaderField::SectionHeaderCount, 0);
             return bytes;
         }},
        {"NameTableIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF header refers to section-name string table section " +
                        number(rich.names + 1) + " but the last section is " + number(rich.names);
             return withHeader(rich, HeaderField::NameTableIndex, rich.names + 1);
         }},
        {"NameTableType",
         [](RichElf rich, std::string& sentence) {
             sentence = "ELF header refers to section-name string table section " +
                        number(rich.text) +
                        " but that section has type 1 (SHT_PROGBITS) instead of SHT_STRTAB";
             return withHeader(rich, HeaderField::NameTableIndex, rich.text);
         }},
        {"NameTableTypeWithoutName",
         [](RichElf rich, std::string& sentence) {
             rich.builder.section(rich.debugInfo).type = 0x12345678;
             sentence = "ELF header refers to section-name string table section " +
                        number(rich.debugInfo) +
                        " but that section has type 305419896 instead of SHT_STRTAB";
             return withHeader(rich, HeaderField::NameTableIndex, rich.debugInfo);
         }},
        {"SectionNameWithoutTable",
         [](RichElf rich, std::string& sentence) {
             sentence = "Section name field for section #1 specifies a nonzero string table "
                        "offset, but there is no section-name string table";
             return withHeader(rich, HeaderField::NameTableIndex, 0);
         }},
        {"SectionNameOffset",
         [](RichElf rich, std::string& sentence) {
             const uint64_t length = sectionField(rich.bytes(), rich.names, SectionField::Size);
             sentence = "Section name field for section " + number(rich.data) +
                        " specifies a string table offset " + std::to_string(length) +
                        " which is beyond the end of the section-name string table (length " +
                        std::to_string(length) + ")";
             return withSection(rich, rich.data, SectionField::Name, length);
         }},
        {"SectionsOverlap",
         [](RichElf rich, std::string& sentence) {
             sentence = "Sections " + number(rich.text) + " and " + number(rich.data) +
                        " overlap in the file";
             std::string bytes = rich.bytes();
             const uint64_t text = sectionField(bytes, rich.text, SectionField::Offset);
             setSectionField(bytes, rich.data, SectionField::Size, 4);
             setSectionField(bytes, rich.data, SectionField::Offset, text + 32);
             return bytes;
         }},
    };
    return flaws;
}

const std::vector<ObjectFlaw>& linkFlaws() {
    static const std::vector<ObjectFlaw> flaws = {
        {"SymbolTableLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.symbols, SectionField::Link, "Symbol table",
                                 "string table", sentence);
         }},
        {"DynamicSymbolTableLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.dynamicSymbols, SectionField::Link, "Symbol table",
                                 "string table", sentence);
         }},
        {"RelocationLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.textRelocations, SectionField::Link, "Relocation",
                                 "symbol table", sentence);
         }},
        {"RelocationTargetIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.dataRelocations, SectionField::Info, "Relocation",
                                 "target", sentence);
         }},
        {"GroupLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.group, SectionField::Link, "Group", "symbol table",
                                 sentence);
         }},
        {"ExtensionLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.extension, SectionField::Link, "SHT_SYMTAB_SHNDX",
                                 "symbol table", sentence);
         }},
        {"HashLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.hash, SectionField::Link, "Hash", "symbol table",
                                 sentence);
         }},
        {"PreemptionMapLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.preemptionMap, SectionField::Link, "Preemption map",
                                 "string table", sentence);
         }},
        {"DynamicLinkIndex",
         [](RichElf rich, std::string& sentence) {
             return withBadIndex(rich, rich.dynamic, SectionField::Link, "Dynamic", "string table",
                                 sentence);
         }},
        {"OtherLinkIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = "Link field of section " + number(rich.exidx) +
                        " refers to target section " + number(rich.names + 1) +
                        " but the last section is " + number(rich.names);
             return withSection(rich, rich.exidx, SectionField::Link, rich.names + 1);
         }},
        {"SymbolTableLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.symbols, rich.text, "Symbol table", "string table",
                                programBits, "SHT_STRTAB", sentence);
         }},
        {"SymbolTableLinkedToItself",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.symbols, rich.symbols, "Symbol table", "string table",
                                "2 (SHT_SYMTAB)", "SHT_STRTAB", sentence);
         }},
        {"RelocationLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.textRelocations, rich.text, "Relocation", "symbol table",
                                programBits, anySymbols, sentence);
         }},
        {"GroupLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.group, rich.dynamicSymbols, "Group", "symbol table",
                                "11 (SHT_DYNSYM)", anySymbols, sentence);
         }},
        {"ExtensionLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.extension, rich.text, "SHT_SYMTAB_SHNDX", "symbol table",
                                programBits, anySymbols, sentence);
         }},
        {"HashLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.hash, rich.symbols, "Hash", "symbol table",
                                "2 (SHT_SYMTAB)", "SHT_DYNSYM", sentence);
         }},
        {"PreemptionMapLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.preemptionMap, rich.text, "Preemption map",
                                "string table", programBits, "SHT_STRTAB", sentence);
         }},
        {"DynamicLinkType",
         [](RichElf rich, std::string& sentence) {
             return withBadType(rich, rich.dynamic, rich.text, "Dynamic", "string table",
                                programBits, "SHT_STRTAB", sentence);
         }},
    };
    return flaws;
}

} // namespace commandtest
