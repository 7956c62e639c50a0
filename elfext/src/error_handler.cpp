// The sentences of problems that end or disturb a read. Those of validation and layout are in
// validation_sentences.cpp.
#include "elfext/interface/error_handler.h"

#include "elfext/interface/naming.h"
#include "elfext/src/error_sentence.h"

#include <cstring>

namespace elfext {

std::ostream& operator<<(std::ostream& stream, Number number) {
    return stream << '#' << number.value;
}

std::ostream& operator<<(std::ostream& stream, TypeName typeName) {
    stream << typeName.type;
    const char* const name = getSectionTypeName(typeName.type);
    if (std::strchr(name, '?') == nullptr) {
        stream << " (" << name << ')';
    }
    return stream;
}

namespace {

bool reportIoError(ErrorHandler& handler, ObjectModule* objectModule, const char* action,
                   const char* fileName, int errnum) {
    const bool isNamed = fileName != nullptr;
    return reportSentence(handler, objectModule, Severity_Fatal, "I/O error ", action, " file",
                          isNamed ? " '" : "", isNamed ? fileName : "", isNamed ? "'" : "",
                          errnum != 0 ? ": " : "", errnum != 0 ? std::strerror(errnum) : "");
}

// A section that refers to another one which is not there. `what` is the kind of section that
// refers, `sought` what it refers to.
bool reportIndex(ErrorHandler& handler, ObjectModule* objectModule, Severity severity,
                 const char* what, uint32_t section, const char* sought, uint32_t index,
                 uint32_t lastSection) {
    return reportSentence(handler, objectModule, severity, what, " section ", Number{section},
                          " refers to ", sought, " section ", Number{index},
                          " but the last section is ", Number{lastSection});
}

// The same for one that is there, but has another type than `wanted`.
bool reportType(ErrorHandler& handler, ObjectModule* objectModule, const char* what,
                uint32_t section, const char* sought, uint32_t index, uint32_t type,
                const char* wanted) {
    return reportSentence(handler, objectModule, Severity_Fatal, what, " section ", Number{section},
                          " refers to ", sought, " section ", Number{index},
                          " but that section has type ", TypeName{type}, " instead of ", wanted);
}

// A symbol of a table with what is wrong about it.
template <typename... Pieces>
bool reportSymbol(ErrorHandler& handler, ObjectModule* objectModule, Severity severity,
                  uint64_t symbol, bool isDynamic, uint32_t section, const Pieces&... pieces) {
    return reportSentence(handler, objectModule, severity, "Symbol ", Number{symbol}, " in ",
                          isDynamic ? "dynamic " : "", "symbol table section ", Number{section},
                          pieces...);
}

constexpr const char* anySymbolTable = "SHT_SYMTAB or SHT_DYNSYM";
constexpr const char* stringTableType = "SHT_STRTAB";

} // namespace

bool ErrorHandler::outOfMemory(ObjectModule* objectModule) {
    return report(objectModule, Severity_Fatal, "Out of memory");
}

bool ErrorHandler::ioErrorReading(ObjectModule* objectModule, const char* fileName, int errnum) {
    return reportIoError(*this, objectModule, "reading", fileName, errnum);
}

bool ErrorHandler::ioErrorWriting(ObjectModule* objectModule, const char* fileName, int errnum) {
    return reportIoError(*this, objectModule, "writing", fileName, errnum);
}

bool ErrorHandler::sectionHeaderTableEmpty(ObjectModule* objectModule) {
    return report(objectModule, Severity_Fatal, "Section header table is empty");
}

bool ErrorHandler::elfHeaderNameTableIndexBad(ObjectModule* objectModule, uint32_t index,
                                              uint32_t lastSection) {
    return reportSentence(*this, objectModule, Severity_Fatal,
                          "ELF header refers to section-name string table section ", Number{index},
                          " but the last section is ", Number{lastSection});
}

bool ErrorHandler::symbolTableLinkIndexBad(ObjectModule* objectModule, uint32_t section,
                                           uint32_t index, uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "Symbol table", section, "string table",
                       index, lastSection);
}

bool ErrorHandler::relocationLinkIndexBad(ObjectModule* objectModule, uint32_t section,
                                          uint32_t index, uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "Relocation", section, "symbol table",
                       index, lastSection);
}

bool ErrorHandler::groupLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                     uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Error, "Group", section, "symbol table", index,
                       lastSection);
}

bool ErrorHandler::groupMemberIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                       uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Error, "Group", section, "member", index,
                       lastSection);
}

bool ErrorHandler::relocationTargetIndexBad(ObjectModule* objectModule, uint32_t section,
                                            uint32_t index, uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Error, "Relocation", section, "target", index,
                       lastSection);
}

bool ErrorHandler::shndxLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                     uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "SHT_SYMTAB_SHNDX", section,
                       "symbol table", index, lastSection);
}

bool ErrorHandler::hashLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                    uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "Hash", section, "symbol table", index,
                       lastSection);
}

bool ErrorHandler::preemptionMapLinkIndexBad(ObjectModule* objectModule, uint32_t section,
                                             uint32_t index, uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "Preemption map", section,
                       "string table", index, lastSection);
}

bool ErrorHandler::dynamicLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                       uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "Dynamic", section, "string table",
                       index, lastSection);
}

bool ErrorHandler::linkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                uint32_t lastSection) {
    return reportIndex(*this, objectModule, Severity_Fatal, "Link field of", section, "target",
                       index, lastSection);
}

bool ErrorHandler::elfHeaderNameTableTypeBad(ObjectModule* objectModule, uint32_t index,
                                             uint32_t type) {
    return reportSentence(*this, objectModule, Severity_Fatal,
                          "ELF header refers to section-name string table section ", Number{index},
                          " but that section has type ", TypeName{type}, " instead of ",
                          stringTableType);
}

bool ErrorHandler::symbolTableLinkTypeBad(ObjectModule* objectModule, uint32_t section,
                                          uint32_t index, uint32_t type) {
    return reportType(*this, objectModule, "Symbol table", section, "string table", index, type,
                      stringTableType);
}

bool ErrorHandler::relocationLinkTypeBad(ObjectModule* objectModule, uint32_t section,
                                         uint32_t index, uint32_t type) {
    return reportType(*this, objectModule, "Relocation", section, "symbol table", index, type,
                      anySymbolTable);
}

bool ErrorHandler::groupLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                    uint32_t type) {
    return reportType(*this, objectModule, "Group", section, "symbol table", index, type,
                      anySymbolTable);
}

bool ErrorHandler::shndxLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                    uint32_t type) {
    return reportType(*this, objectModule, "SHT_SYMTAB_SHNDX", section, "symbol table", index, type,
                      anySymbolTable);
}

bool ErrorHandler::hashLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                   uint32_t type) {
    return reportType(*this, objectModule, "Hash", section, "symbol table", index, type,
                      "SHT_DYNSYM");
}

bool ErrorHandler::preemptionMapLinkTypeBad(ObjectModule* objectModule, uint32_t section,
                                            uint32_t index, uint32_t type) {
    return reportType(*this, objectModule, "Preemption map", section, "string table", index, type,
                      stringTableType);
}

bool ErrorHandler::dynamicLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                      uint32_t type) {
    return reportType(*this, objectModule, "Dynamic", section, "string table", index, type,
                      stringTableType);
}

bool ErrorHandler::sectionNameWithoutTable(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Error, "Section name field for section ",
                          Number{section},
                          " specifies a nonzero string table offset, but there is no section-name "
                          "string table");
}

bool ErrorHandler::sectionNameOffsetBad(ObjectModule* objectModule, uint32_t section,
                                        uint64_t offset, uint64_t length) {
    return reportSentence(*this, objectModule, Severity_Error, "Section name field for section ",
                          Number{section}, " specifies a string table offset ", offset,
                          " which is beyond the end of the section-name string table (length ",
                          length, ")");
}

bool ErrorHandler::groupSymbolIndexBad(ObjectModule* objectModule, uint32_t section,
                                       uint32_t symbolIndex, uint32_t symbolTable,
                                       uint64_t symbolCount) {
    return reportSentence(*this, objectModule, Severity_Error, "Group section ", Number{section},
                          " refers to symbol ", Number{symbolIndex},
                          " but its associated symbol table section ", Number{symbolTable},
                          " only contains ", symbolCount, " symbols");
}

bool ErrorHandler::shndxDuplicate(ObjectModule* objectModule, uint32_t firstSection,
                                  uint32_t secondSection, uint32_t symbolTable) {
    return reportSentence(*this, objectModule, Severity_Error, "SHT_SYMTAB_SHNDX sections ",
                          Number{firstSection}, " and ", Number{secondSection},
                          " are both associated with the same symbol table section ",
                          Number{symbolTable});
}

bool ErrorHandler::shndxSizeMismatch(ObjectModule* objectModule, uint32_t section,
                                     uint64_t entryCount, uint32_t symbolTable,
                                     uint64_t symbolCount) {
    return reportSentence(*this, objectModule, Severity_Fatal, "SHT_SYMTAB_SHNDX section ",
                          Number{section}, " contains ", entryCount,
                          " entries, but its associated symbol table section ", Number{symbolTable},
                          " contains ", symbolCount);
}

bool ErrorHandler::symbolNameOffsetBad(ObjectModule* objectModule, uint64_t symbol, bool isDynamic,
                                       uint32_t section, uint64_t offset, uint32_t stringTable,
                                       uint64_t length) {
    return reportSymbol(*this, objectModule, Severity_Error, symbol, isDynamic, section,
                        " refers to offset ", offset, " in string table section ",
                        Number{stringTable}, ", which is only ", length, " bytes long");
}

bool ErrorHandler::symbolXindexWithoutShndx(ObjectModule* objectModule, uint64_t symbol,
                                            bool isDynamic, uint32_t section) {
    return reportSymbol(*this, objectModule, Severity_Fatal, symbol, isDynamic, section,
                        " has SHN_XINDEX section field, but there is no SHT_SYMTAB_SHNDX section "
                        "associated with the symbol table");
}

bool ErrorHandler::symbolSectionIndexBad(ObjectModule* objectModule, uint64_t symbol,
                                         bool isDynamic, uint32_t section, uint32_t index,
                                         uint32_t lastSection) {
    return reportSymbol(*this, objectModule, Severity_Fatal, symbol, isDynamic, section,
                        " is defined in section ", Number{index}, " but the last section is ",
                        Number{lastSection});
}

bool ErrorHandler::sectionSymbolNotInSection(ObjectModule* objectModule, uint64_t symbol,
                                             bool isDynamic, uint32_t section) {
    return reportSymbol(*this, objectModule, Severity_Warning, symbol, isDynamic, section,
                        " has type STT_SECTION but is not defined relative to a section");
}

bool ErrorHandler::relocationSymbolIndexBad(ObjectModule* objectModule, uint64_t relocation,
                                            uint32_t section, uint32_t symbolIndex,
                                            uint32_t symbolTable, uint64_t symbolCount) {
    return reportSentence(*this, objectModule, Severity_Error, "Relocation ", Number{relocation},
                          " in relocation section ", Number{section}, " refers to symbol ",
                          Number{symbolIndex}, " but its associated symbol table section ",
                          Number{symbolTable}, " only contains ", symbolCount, " symbols");
}

bool ErrorHandler::sectionInTwoGroups(ObjectModule* objectModule, uint32_t section,
                                      uint32_t firstGroup, uint32_t secondGroup) {
    return reportSentence(*this, objectModule, Severity_Error, "Section ", Number{section},
                          " belongs to group section ", Number{firstGroup},
                          " and also to group section ", Number{secondGroup});
}

bool ErrorHandler::buildAttributesCorrupted(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning, "Build attributes in section ",
                          Number{section}, " are corrupted");
}

bool ErrorHandler::stringTableEmpty(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Fatal, "String table section ",
                          Number{section}, " is completely empty");
}

bool ErrorHandler::stringTableNotTerminated(ObjectModule* objectModule, uint32_t section,
                                            bool starts, bool ends) {
    return reportSentence(*this, objectModule, Severity_Error, "String table section ",
                          Number{section}, starts ? " starts" : "", starts && ends ? " and" : "",
                          ends ? " ends" : "", " with a non-zero byte value");
}

bool ErrorHandler::unrecognisedType(ObjectModule* objectModule, uint32_t type) {
    return reportSentence(*this, objectModule, Severity_Fatal,
                          "ELF file has unrecognised type code ", type, " (we handle types 1-4)");
}

bool ErrorHandler::invalidEndianness(ObjectModule* objectModule, uint32_t endianness) {
    return reportSentence(*this, objectModule, Severity_Fatal,
                          "ELF file has invalid endianness code ", endianness,
                          " (should be 1 or 2)");
}

bool ErrorHandler::unsupportedVersion(ObjectModule* objectModule, uint32_t version) {
    return reportSentence(*this, objectModule, Severity_Fatal,
                          "ELF file has unsupported version code ", version,
                          " (we only handle version 1)");
}

bool ErrorHandler::unsupportedMachine(ObjectModule* objectModule, uint32_t machine) {
    return reportSentence(*this, objectModule, Severity_Warning,
                          "ELF file has unsupported machine code ", machine,
                          " (we only handle EM_QEL = 40)");
}

bool ErrorHandler::notElf(ObjectModule* objectModule) {
    return report(objectModule, Severity_Fatal, "File is not an ELF file (wrong magic number)");
}

bool ErrorHandler::not32BitElf(ObjectModule* objectModule) {
    return report(objectModule, Severity_Fatal, "File is not 32-bit ELF");
}

bool ErrorHandler::debugOverlayNotDebugSection(ObjectModule* objectModule, uint64_t record,
                                               uint32_t section, uint32_t index) {
    return reportSentence(*this, objectModule, Severity_Error, "Record ", Number{record},
                          " in debug overlay section ", Number{section}, " refers to section ",
                          Number{index}, " which is not a debug section");
}

bool ErrorHandler::debugOverlayNotSection(ObjectModule* objectModule, uint64_t record,
                                          uint32_t section, uint32_t index) {
    return reportSentence(*this, objectModule, Severity_Error, "Record ", Number{record},
                          " in debug overlay section ", Number{section}, " refers to section ",
                          Number{index}, " which is not a section");
}

bool ErrorHandler::noteEntryCountBad(ObjectModule* objectModule, uint32_t section,
                                     uint64_t entryCount, uint64_t allocSectionCount) {
    return reportSentence(*this, objectModule, Severity_Warning,
                          "Section/segment mapping in SHT_NOTE section ", Number{section},
                          " contains ", entryCount, " entries, but there are ", allocSectionCount,
                          " SHF_ALLOC sections");
}

bool ErrorHandler::noteSegmentIndexBad(ObjectModule* objectModule, uint32_t section,
                                       uint32_t targetSection, uint32_t segment) {
    return reportSentence(*this, objectModule, Severity_Warning,
                          "Section/segment mapping in SHT_NOTE section ", Number{section},
                          " maps section ", Number{targetSection}, " to segment ", Number{segment},
                          " which does not exist");
}

} // namespace elfext
