#include "tests/command/object_flaws.h"

namespace commandtest {

using namespace testsupport;
using namespace testsupport::elf;

namespace {

std::string number(uint64_t value) {
    return "#" + std::to_string(value);
}

std::string withSymbol(const RichElf& rich, size_t table, size_t symbol, SymbolField field,
                       uint64_t value) {
    std::string bytes = rich.bytes();
    setSymbolField(bytes, table, symbol, field, value);
    return bytes;
}

std::string inStaticTable(const RichElf& rich, uint32_t symbol) {
    return "Symbol " + number(symbol) + " in symbol table section " + number(rich.symbols);
}

std::string inDynamicTable(const RichElf& rich, uint32_t symbol) {
    return "Symbol " + number(symbol) + " in dynamic symbol table section " +
           number(rich.dynamicSymbols);
}

std::string onlyContains(const RichElf& rich, uint64_t symbol) {
    return " refers to symbol " + number(symbol) + " but its associated symbol table section " +
           number(rich.symbols) + " only contains " + std::to_string(RichSymbol_Count) + " symbols";
}

// A word of a section's contents.
void setWord(RichElf& rich, size_t section, size_t index, uint32_t value) {
    std::string& contents = rich.builder.section(section).contents;
    writeNumber(contents, index * 4, 4, rich.builder.format().littleEndian, value);
}

std::string withName(const RichElf& rich, size_t strings, size_t table, uint32_t symbol,
                     const std::string& where, std::string& sentence) {
    RichElf built = rich;
    const std::string length = std::to_string(built.builder.section(strings).contents.size());
    sentence = where + " refers to offset " + length + " in string table section " +
               number(strings) + ", which is only " + length + " bytes long";
    return withSymbol(rich, table, symbol, SymbolField::Name, std::stoul(length));
}

std::string withOpenEnds(RichElf& rich, bool start, bool end) {
    std::string& strings = rich.builder.section(rich.strings).contents;
    strings.front() = start ? 'x' : '\0';
    strings.back() = end ? 'x' : '\0';
    return rich.bytes();
}

} // namespace

const std::vector<ObjectFlaw>& contentsFlaws() {
    static const std::vector<ObjectFlaw> flaws = {
        {"SymbolNameOffset",
         [](RichElf rich, std::string& sentence) {
             return withName(rich, rich.strings, rich.symbols, RichSymbol_Data,
                             inStaticTable(rich, RichSymbol_Data), sentence);
         }},
        {"DynamicSymbolNameOffset",
         [](RichElf rich, std::string& sentence) {
             return withName(rich, rich.dynamicStrings, rich.dynamicSymbols, 1,
                             inDynamicTable(rich, 1), sentence);
         }},
        {"SymbolSectionIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = inStaticTable(rich, RichSymbol_Weak) + " is defined in section " +
                        number(rich.names + 1) + " but the last section is " + number(rich.names);
             return withSymbol(rich, rich.symbols, RichSymbol_Weak, SymbolField::Section,
                               rich.names + 1);
         }},
        {"SymbolSectionIndexReserved",
         [](RichElf rich, std::string& sentence) {
             sentence = inStaticTable(rich, RichSymbol_Weak) +
                        " is defined in section #65280 but the last section is " +
                        number(rich.names);
             return withSymbol(rich, rich.symbols, RichSymbol_Weak, SymbolField::Section, 0xFF00);
         }},
        {"DynamicSymbolSectionIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = inDynamicTable(rich, 2) +
                        " is defined in section #65520 but the last "
                        "section is " +
                        number(rich.names);
             return withSymbol(rich, rich.dynamicSymbols, 2, SymbolField::Section, 0xFFF0);
         }},
        {"ExtendedSymbolSectionIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = inStaticTable(rich, RichSymbol_Extended) +
                        " is defined in section #4294967295 but the last section is " +
                        number(rich.names);
             setWord(rich, rich.extension, RichSymbol_Extended, 0xFFFFFFFF);
             return rich.bytes();
         }},
        {"ExtendedSymbolWithoutTable",
         [](RichElf rich, std::string& sentence) {
             sentence = inDynamicTable(rich, 1) +
                        " has SHN_XINDEX section field, but there is no SHT_SYMTAB_SHNDX section "
                        "associated with the symbol table";
             return withSymbol(rich, rich.dynamicSymbols, 1, SymbolField::Section, SHN_XINDEX);
         }},
        {"SectionSymbolNotInSection",
         [](RichElf rich, std::string& sentence) {
             sentence = inStaticTable(rich, RichSymbol_Absolute) +
                        " has type STT_SECTION but is not defined relative to a section";
             return withSymbol(rich, rich.symbols, RichSymbol_Absolute, SymbolField::Info,
                               STT_SECTION);
         }},
        {"TwoExtensionTables",
         [](RichElf rich, std::string& sentence) {
             const BuiltSection copy = rich.builder.section(rich.extension);
             const size_t second = rich.builder.add(copy);
             sentence =
                 "SHT_SYMTAB_SHNDX sections " + number(rich.extension) + " and " + number(second) +
                 " are both associated with the same symbol table section " + number(rich.symbols);
             return rich.bytes();
         }},
        {"ExtensionTableOfOtherSize",
         [](RichElf rich, std::string& sentence) {
             rich.builder.section(rich.extension).contents += std::string(4, '\0');
             sentence = "SHT_SYMTAB_SHNDX section " + number(rich.extension) + " contains " +
                        std::to_string(RichSymbol_Count + 1) +
                        " entries, but its associated symbol table section " +
                        number(rich.symbols) + " contains " + std::to_string(RichSymbol_Count);
             return rich.bytes();
         }},
        {"RelocationSymbolIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = "Relocation #1 in relocation section " + number(rich.dataRelocations) +
                        onlyContains(rich, RichSymbol_Count);
             std::string bytes = rich.bytes();
             const uint64_t symbol = RichSymbol_Count;
             setRelocationField(bytes, rich.dataRelocations, 1, RelocationField::Info,
                                rich.builder.format().is64 ? symbol << 32U : symbol << 8U);
             return bytes;
         }},
        {"GroupSymbolIndex",
         [](RichElf rich, std::string& sentence) {
             sentence =
                 "Group section " + number(rich.group) + onlyContains(rich, RichSymbol_Count);
             rich.builder.section(rich.group).info = RichSymbol_Count;
             return rich.bytes();
         }},
        {"GroupMemberIndex",
         [](RichElf rich, std::string& sentence) {
             sentence = "Group section " + number(rich.group) + " refers to member section " +
                        number(rich.names + 1) + " but the last section is " + number(rich.names);
             setWord(rich, rich.group, 1, static_cast<uint32_t>(rich.names) + 1);
             return rich.bytes();
         }},
        {"SectionInTwoGroups",
         [](RichElf rich, std::string& sentence) {
             const size_t second =
                 rich.builder.addGroup(".group", rich.symbols, RichSymbol_Function, GRP_COMDAT,
                                       {static_cast<uint32_t>(rich.groupedText)});
             sentence = "Section " + number(rich.groupedText) + " belongs to group section " +
                        number(rich.group) + " and also to group section " + number(second);
             return rich.bytes();
         }},
        {"AttributesCorrupted",
         [](RichElf rich, std::string& sentence) {
             sentence = "Build attributes in section " + number(rich.attributes) + " are corrupted";
             rich.builder.section(rich.attributes).contents[0] = 'B';
             return rich.bytes();
         }},
        {"StringTableStart",
         [](RichElf rich, std::string& sentence) {
             sentence = "String table section " + number(rich.strings) +
                        " starts with a non-zero byte value";
             return withOpenEnds(rich, true, false);
         }},
        {"StringTableEnd",
         [](RichElf rich, std::string& sentence) {
             sentence = "String table section " + number(rich.strings) +
                        " ends with a non-zero byte value";
             return withOpenEnds(rich, false, true);
         }},
        {"StringTableStartAndEnd",
         [](RichElf rich, std::string& sentence) {
             sentence = "String table section " + number(rich.strings) +
                        " starts and ends with a non-zero byte value";
             return withOpenEnds(rich, true, true);
         }},
        {"OverlayOfNoDebugSection",
         [](RichElf rich, std::string& sentence) {
             sentence = "Record #0 in debug overlay section " + number(rich.debugOverlay) +
                        " refers to section " + number(rich.text) + " which is not a debug section";
             const size_t idWords = rich.builder.format().is64 ? 2 : 1;
             setWord(rich, rich.debugOverlay, idWords, static_cast<uint32_t>(rich.text));
             return rich.bytes();
         }},
        {"OverlayOfNoSection",
         [](RichElf rich, std::string& sentence) {
             sentence = "Record #1 in debug overlay section " + number(rich.debugOverlay) +
                        " refers to section " + number(rich.names + 1) + " which is not a section";
             const size_t idWords = rich.builder.format().is64 ? 2 : 1;
             setWord(rich, rich.debugOverlay, 2 * (idWords + 2) - 1,
                     static_cast<uint32_t>(rich.names) + 1);
             return rich.bytes();
         }},
        {"NoteWithTooFewEntries",
         [](RichElf rich, std::string& sentence) {
             std::string& contents = rich.builder.section(rich.note).contents;
             const size_t words = richMappingWords(rich);
             contents.resize(contents.size() - 4);
             const size_t sizeAt = contents.size() - (words - 1) * 4 - 12;
             writeNumber(contents, sizeAt, 4, rich.builder.format().littleEndian, (words - 1) * 4);
             sentence = "Section/segment mapping in SHT_NOTE section " + number(rich.note) +
                        " contains " + std::to_string(words - 1) + " entries, but there are " +
                        std::to_string(words) + " SHF_ALLOC sections";
             return rich.bytes();
         },
         ET_EXEC},
        {"NoteOfNoSegment",
         [](RichElf rich, std::string& sentence) {
             std::string& contents = rich.builder.section(rich.note).contents;
             writeNumber(contents, contents.size() - 4, 4, rich.builder.format().littleEndian, 5);
             sentence = "Section/segment mapping in SHT_NOTE section " + number(rich.note) +
                        " maps section " + number(rich.bss) + " to segment #5 which does not exist";
             return rich.bytes();
         },
         ET_EXEC},
    };
    return flaws;
}

} // namespace commandtest
