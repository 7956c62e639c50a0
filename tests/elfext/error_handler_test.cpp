// Every sentence of the library's error handler, with its severity. The rows stand in the order of
// the operations, which is that of the table of virtual operations.
#include "elfext/interface/error_handler.h"

#include "tests/elfext/reader_fixtures.h"

#include <cstring>

namespace elfext::test {
namespace {

struct SentenceRow {
    const char* name;
    uint32_t severity;
    std::string sentence;
    bool (*call)(ErrorHandler& handler, ObjectModule* objectModule);
};

#define CALL(...)                                                                                  \
    [](ErrorHandler& handler, ObjectModule* objectModule) { return handler.__VA_ARGS__; }

std::vector<SentenceRow> sentenceRows() {
    const std::string enoent = std::strerror(2);
    return {
        {"outOfMemory", 0, "Out of memory", CALL(outOfMemory(objectModule))},
        {"ioErrorReading", 0, "I/O error reading file 'a.o': " + enoent,
         CALL(ioErrorReading(objectModule, "a.o", 2))},
        {"ioErrorReadingNoNumber", 0, "I/O error reading file 'a.o'",
         CALL(ioErrorReading(objectModule, "a.o", 0))},
        {"ioErrorReadingNoName", 0, "I/O error reading file: " + enoent,
         CALL(ioErrorReading(objectModule, nullptr, 2))},
        {"ioErrorReadingNothing", 0, "I/O error reading file",
         CALL(ioErrorReading(objectModule, nullptr, 0))},
        {"ioErrorReadingUnknown", 0, "I/O error reading file 'a.o': Unknown error -1",
         CALL(ioErrorReading(objectModule, "a.o", -1))},
        {"ioErrorWriting", 0, "I/O error writing file 'a.o': " + enoent,
         CALL(ioErrorWriting(objectModule, "a.o", 2))},
        {"ioErrorWritingNothing", 0, "I/O error writing file",
         CALL(ioErrorWriting(objectModule, nullptr, 0))},
        {"sectionHeaderTableEmpty", 0, "Section header table is empty",
         CALL(sectionHeaderTableEmpty(objectModule))},
        {"elfHeaderNameTableIndexBad", 0,
         "ELF header refers to section-name string table section #7 but the last section is #5",
         CALL(elfHeaderNameTableIndexBad(objectModule, 7, 5))},
        {"symbolTableLinkIndexBad", 0,
         "Symbol table section #3 refers to string table section #7 but the last section is #5",
         CALL(symbolTableLinkIndexBad(objectModule, 3, 7, 5))},
        {"relocationLinkIndexBad", 0,
         "Relocation section #3 refers to symbol table section #7 but the last section is #5",
         CALL(relocationLinkIndexBad(objectModule, 3, 7, 5))},
        {"groupLinkIndexBad", 2,
         "Group section #3 refers to symbol table section #7 but the last section is #5",
         CALL(groupLinkIndexBad(objectModule, 3, 7, 5))},
        {"groupMemberIndexBad", 2,
         "Group section #3 refers to member section #7 but the last section is #5",
         CALL(groupMemberIndexBad(objectModule, 3, 7, 5))},
        {"relocationTargetIndexBad", 2,
         "Relocation section #3 refers to target section #7 but the last section is #5",
         CALL(relocationTargetIndexBad(objectModule, 3, 7, 5))},
        {"shndxLinkIndexBad", 0,
         "SHT_SYMTAB_SHNDX section #3 refers to symbol table section #7 but the last section is "
         "#5",
         CALL(shndxLinkIndexBad(objectModule, 3, 7, 5))},
        {"hashLinkIndexBad", 0,
         "Hash section #3 refers to symbol table section #7 but the last section is #5",
         CALL(hashLinkIndexBad(objectModule, 3, 7, 5))},
        {"preemptionMapLinkIndexBad", 0,
         "Preemption map section #3 refers to string table section #7 but the last section is #5",
         CALL(preemptionMapLinkIndexBad(objectModule, 3, 7, 5))},
        {"dynamicLinkIndexBad", 0,
         "Dynamic section #3 refers to string table section #7 but the last section is #5",
         CALL(dynamicLinkIndexBad(objectModule, 3, 7, 5))},
        {"linkIndexBad", 0,
         "Link field of section #3 refers to target section #7 but the last section is #5",
         CALL(linkIndexBad(objectModule, 3, 7, 5))},
        {"elfHeaderNameTableTypeBad", 0,
         "ELF header refers to section-name string table section #7 but that section has type 1 "
         "(SHT_PROGBITS) instead of SHT_STRTAB",
         CALL(elfHeaderNameTableTypeBad(objectModule, 7, 1))},
        {"elfHeaderNameTableUnknownType", 0,
         "ELF header refers to section-name string table section #7 but that section has type 12 "
         "instead of SHT_STRTAB",
         CALL(elfHeaderNameTableTypeBad(objectModule, 7, 12))},
        {"symbolTableLinkTypeBad", 0,
         "Symbol table section #3 refers to string table section #7 but that section has type 2 "
         "(SHT_SYMTAB) instead of SHT_STRTAB",
         CALL(symbolTableLinkTypeBad(objectModule, 3, 7, 2))},
        {"relocationLinkTypeBad", 0,
         "Relocation section #3 refers to symbol table section #7 but that section has type 3 "
         "(SHT_STRTAB) instead of SHT_SYMTAB or SHT_DYNSYM",
         CALL(relocationLinkTypeBad(objectModule, 3, 7, 3))},
        {"groupLinkTypeBad", 0,
         "Group section #3 refers to symbol table section #7 but that section has type 3 "
         "(SHT_STRTAB) instead of SHT_SYMTAB or SHT_DYNSYM",
         CALL(groupLinkTypeBad(objectModule, 3, 7, 3))},
        {"shndxLinkTypeBad", 0,
         "SHT_SYMTAB_SHNDX section #3 refers to symbol table section #7 but that section has type "
         "3 (SHT_STRTAB) instead of SHT_SYMTAB or SHT_DYNSYM",
         CALL(shndxLinkTypeBad(objectModule, 3, 7, 3))},
        {"hashLinkTypeBad", 0,
         "Hash section #3 refers to symbol table section #7 but that section has type 2 "
         "(SHT_SYMTAB) instead of SHT_DYNSYM",
         CALL(hashLinkTypeBad(objectModule, 3, 7, 2))},
        {"preemptionMapLinkTypeBad", 0,
         "Preemption map section #3 refers to string table section #7 but that section has type 2 "
         "(SHT_SYMTAB) instead of SHT_STRTAB",
         CALL(preemptionMapLinkTypeBad(objectModule, 3, 7, 2))},
        {"dynamicLinkTypeBad", 0,
         "Dynamic section #3 refers to string table section #7 but that section has type "
         "1879048195 (SHT_QEL_ATTRIBUTES) instead of SHT_STRTAB",
         CALL(dynamicLinkTypeBad(objectModule, 3, 7, 0x70000003))},
        {"sectionNameWithoutTable", 2,
         "Section name field for section #3 specifies a nonzero string table offset, but there is "
         "no section-name string table",
         CALL(sectionNameWithoutTable(objectModule, 3))},
        {"sectionNameOffsetBad", 2,
         "Section name field for section #3 specifies a string table offset 1000 which is beyond "
         "the end of the section-name string table (length 999)",
         CALL(sectionNameOffsetBad(objectModule, 3, 1000, 999))},
        {"groupSymbolIndexBad", 2,
         "Group section #3 refers to symbol #8 but its associated symbol table section #4 only "
         "contains 6 symbols",
         CALL(groupSymbolIndexBad(objectModule, 3, 8, 4, 6))},
        {"shndxDuplicate", 2,
         "SHT_SYMTAB_SHNDX sections #3 and #4 are both associated with the same symbol table "
         "section #2",
         CALL(shndxDuplicate(objectModule, 3, 4, 2))},
        {"shndxSizeMismatch", 0,
         "SHT_SYMTAB_SHNDX section #3 contains 5 entries, but its associated symbol table section "
         "#2 contains 6",
         CALL(shndxSizeMismatch(objectModule, 3, 5, 2, 6))},
        {"symbolNameOffsetBad", 2,
         "Symbol #9 in symbol table section #3 refers to offset 77 in string table section #4, "
         "which is only 55 bytes long",
         CALL(symbolNameOffsetBad(objectModule, 9, false, 3, 77, 4, 55))},
        {"dynamicSymbolNameOffsetBad", 2,
         "Symbol #9 in dynamic symbol table section #3 refers to offset 77 in string table section "
         "#4, which is only 55 bytes long",
         CALL(symbolNameOffsetBad(objectModule, 9, true, 3, 77, 4, 55))},
        {"symbolXindexWithoutShndx", 0,
         "Symbol #9 in symbol table section #3 has SHN_XINDEX section field, but there is no "
         "SHT_SYMTAB_SHNDX section associated with the symbol table",
         CALL(symbolXindexWithoutShndx(objectModule, 9, false, 3))},
        {"dynamicSymbolXindexWithoutShndx", 0,
         "Symbol #9 in dynamic symbol table section #3 has SHN_XINDEX section field, but there is "
         "no SHT_SYMTAB_SHNDX section associated with the symbol table",
         CALL(symbolXindexWithoutShndx(objectModule, 9, true, 3))},
        {"symbolSectionIndexBad", 0,
         "Symbol #9 in symbol table section #3 is defined in section #70 but the last section is "
         "#5",
         CALL(symbolSectionIndexBad(objectModule, 9, false, 3, 70, 5))},
        {"dynamicSymbolSectionIndexBad", 0,
         "Symbol #9 in dynamic symbol table section #3 is defined in section #70 but the last "
         "section is #5",
         CALL(symbolSectionIndexBad(objectModule, 9, true, 3, 70, 5))},
        {"sectionSymbolNotInSection", 1,
         "Symbol #9 in symbol table section #3 has type STT_SECTION but is not defined relative to "
         "a section",
         CALL(sectionSymbolNotInSection(objectModule, 9, false, 3))},
        {"dynamicSectionSymbolNotInSection", 1,
         "Symbol #9 in dynamic symbol table section #3 has type STT_SECTION but is not defined "
         "relative to a section",
         CALL(sectionSymbolNotInSection(objectModule, 9, true, 3))},
        {"sectionSymbolSizeBad", 1,
         "Symbol #9, the STT_SECTION symbol for section #3, has size 12 which should be either "
         "zero or the section's size 16",
         CALL(sectionSymbolSizeBad(objectModule, 9, 3, 12, 16))},
        {"sectionSymbolSizeTooBig", 1,
         "Symbol #9, a STT_SECTION symbol in section #3, has size 20 which should be at most the "
         "section's size 16",
         CALL(sectionSymbolSizeTooBig(objectModule, 9, 3, 20, 16))},
        {"relocationSymbolIndexBad", 2,
         "Relocation #11 in relocation section #3 refers to symbol #20 but its associated symbol "
         "table section #2 only contains 19 symbols",
         CALL(relocationSymbolIndexBad(objectModule, 11, 3, 20, 2, 19))},
        {"sectionInTwoGroups", 2,
         "Section #6 belongs to group section #3 and also to group section #4",
         CALL(sectionInTwoGroups(objectModule, 6, 3, 4))},
        {"buildAttributesCorrupted", 1, "Build attributes in section #6 are corrupted",
         CALL(buildAttributesCorrupted(objectModule, 6))},
        {"stringTableEmpty", 0, "String table section #6 is completely empty",
         CALL(stringTableEmpty(objectModule, 6))},
        {"stringTableStarts", 2, "String table section #6 starts with a non-zero byte value",
         CALL(stringTableNotTerminated(objectModule, 6, true, false))},
        {"stringTableEnds", 2, "String table section #6 ends with a non-zero byte value",
         CALL(stringTableNotTerminated(objectModule, 6, false, true))},
        {"stringTableStartsAndEnds", 2,
         "String table section #6 starts and ends with a non-zero byte value",
         CALL(stringTableNotTerminated(objectModule, 6, true, true))},
        {"unrecognisedType", 0, "ELF file has unrecognised type code 65280 (we handle types 1-4)",
         CALL(unrecognisedType(objectModule, 65280))},
        {"invalidEndianness", 0, "ELF file has invalid endianness code 3 (should be 1 or 2)",
         CALL(invalidEndianness(objectModule, 3))},
        {"unsupportedVersion", 0,
         "ELF file has unsupported version code 4294967295 (we only handle version 1)",
         CALL(unsupportedVersion(objectModule, 0xFFFFFFFF))},
        {"unsupportedMachine", 1,
         "ELF file has unsupported machine code 62 (we only handle EM_QEL = 40)",
         CALL(unsupportedMachine(objectModule, 62))},
        {"entrySizeBad", 2, "Section #3 specifies its entry size as 5 (should be 16)",
         CALL(entrySizeBad(objectModule, 3, 5, 16))},
        {"sectionLengthBad", 2, "Section #3 has length 33, which is not a multiple of 16",
         CALL(sectionLengthBad(objectModule, 3, 33, 16))},
        {"pltRelocationsMixed", 2,
         "Relocations in PLT and GOT include some with addends and some without",
         CALL(pltRelocationsMixed(objectModule))},
        {"nullSectionNotNull", 1, "SHT_NULL section #3 does not have completely null details",
         CALL(nullSectionNotNull(objectModule, 3))},
        {"firstSectionNotNull", 2, "Section #0 has type 1 (SHT_PROGBITS) instead of SHT_NULL",
         CALL(firstSectionNotNull(objectModule, 1))},
        {"firstSectionOfUnknownType", 2, "Section #0 has type 13 instead of SHT_NULL",
         CALL(firstSectionNotNull(objectModule, 13))},
        {"auxiliarySectionHasSymbol", 1,
         "Auxiliary section #3 has at least one symbol defined in it",
         CALL(auxiliarySectionHasSymbol(objectModule, 3))},
        {"auxiliarySectionHasRelocation", 1,
         "Auxiliary section #3 has at least one relocation in it",
         CALL(auxiliarySectionHasRelocation(objectModule, 3))},
        {"multipleDynamicRelocations", 1,
         "Multiple dynamic relocations at offset 4096 in section #3",
         CALL(multipleDynamicRelocations(objectModule, 4096, 3))},
        {"multipleStaticRelocations", 1, "Multiple static relocations at offset 4096 in section #3",
         CALL(multipleStaticRelocations(objectModule, 4096, 3))},
        {"programHeadersInRelocatable", 0,
         "Program header table is non-empty although file is not executable",
         CALL(programHeadersInRelocatable(objectModule))},
        {"loadableSectionOutsideSegment", 1,
         "Loadable section #3 is not contained in a loadable segment",
         CALL(loadableSectionOutsideSegment(objectModule, 3))},
        {"nonLoadableSectionInSegment", 1,
         "Non-loadable section #3 is contained in loadable segment #1",
         CALL(nonLoadableSectionInSegment(objectModule, 3, 1))},
        {"segmentsOutOfOrder", 1,
         "Loadable segments #1 appears before #2 in the file but after it in memory",
         CALL(segmentsOutOfOrder(objectModule, 1, 2))},
        {"segmentsOverlap", 1, "Loadable segments #1 and #2 overlap",
         CALL(segmentsOverlap(objectModule, 1, 2))},
        {"sectionsOverlap", 1, "Sections #1 and #2 overlap in the file",
         CALL(sectionsOverlap(objectModule, 1, 2))},
        {"duplicateInterp", 1, "Segments #1 and #2 both have type PT_INTERP",
         CALL(duplicateInterp(objectModule, 1, 2))},
        {"duplicatePhdr", 1, "Segments #1 and #2 both have type PT_PHDR",
         CALL(duplicatePhdr(objectModule, 1, 2))},
        {"loadBeforeInterp", 1, "PT_LOAD segment #1 comes before PT_INTERP segment #2",
         CALL(loadBeforeInterp(objectModule, 1, 2))},
        {"loadBeforePhdr", 1, "PT_LOAD segment #1 comes before PT_PHDR segment #2",
         CALL(loadBeforePhdr(objectModule, 1, 2))},
        {"phdrTooSmall", 1,
         "PT_PHDR segment #1 has size 32 bytes, smaller than the actual size of the program header "
         "table (64)",
         CALL(phdrTooSmall(objectModule, 1, 32, 64))},
        {"segmentNotCongruent", 1,
         "Loadable segment #1's virtual address 4100 and its file offset 8 are not congruent "
         "modulo "
         "its alignment 4096",
         CALL(segmentNotCongruent(objectModule, 1, 4100, 8, 4096))},
        {"sectionAddressNotAligned", 1,
         "Loadable section #3's virtual address 18446744073709551615 is not a multiple of its "
         "alignment 16",
         CALL(sectionAddressNotAligned(objectModule, 3, UINT64_MAX, 16))},
        {"noLoadableSegments", 0, "No loadable segments exist",
         CALL(noLoadableSegments(objectModule))},
        {"headersNotMapped", 1,
         "First loadable segment #1 has 20 bytes unmapped at the start, but 52 are needed",
         CALL(headersNotMapped(objectModule, 1, 20, 52))},
        {"exidxAllocMissing", 1, "SHT_QEL_EXIDX section #3 should have SHF_ALLOC (2) flag set",
         CALL(exidxFlagsBad(objectModule, 3, true, false))},
        {"exidxLinkOrderMissing", 1,
         "SHT_QEL_EXIDX section #3 should have SHF_LINK_ORDER (128) flag set",
         CALL(exidxFlagsBad(objectModule, 3, false, true))},
        {"exidxBothMissing", 1,
         "SHT_QEL_EXIDX section #3 should have SHF_ALLOC (2) SHF_LINK_ORDER (128) flags set",
         CALL(exidxFlagsBad(objectModule, 3, true, true))},
        {"exidxLinkBad", 1,
         "sh_link field of SHT_QEL_EXIDX section #3 should point to a SHT_PROGBITS section with "
         "SHF_ALLOC and SHF_EXECINSTR flags set",
         CALL(exidxLinkBad(objectModule, 3))},
        {"groupFlagWithoutGroup", 2,
         "Section #3 has the SHF_GROUP flag set but is not referenced by any SHT_GROUP section",
         CALL(groupFlagWithoutGroup(objectModule, 3))},
        {"groupMemberWithoutFlag", 2,
         "Section #3 is referenced by SHT_GROUP section #4 but does not have the SHF_GROUP flag "
         "set",
         CALL(groupMemberWithoutFlag(objectModule, 3, 4))},
        {"relocationCrossesGroup", 2,
         "Relocation #5 in section #3 references a local symbol in section #7 which is not in the "
         "same group as its target section #8",
         CALL(relocationCrossesGroup(objectModule, 5, 3, 7, 8))},
        {"relocationTargetNotRelocatable", 1,
         "Relocation #5 in section #3 has target section #8 which should not be relocated at all",
         CALL(relocationTargetNotRelocatable(objectModule, 5, 3, 8))},
        {"localSymbolUndefined", 2, "Symbol #9 has binding STB_LOCAL but is undefined",
         CALL(localSymbolUndefined(objectModule, 9, false))},
        {"dynamicLocalSymbolUndefined", 2,
         "Dynamic symbol #9 has binding STB_LOCAL but is undefined",
         CALL(localSymbolUndefined(objectModule, 9, true))},
        {"notElf", 0, "File is not an ELF file (wrong magic number)", CALL(notElf(objectModule))},
        {"not32BitElf", 0, "File is not 32-bit ELF", CALL(not32BitElf(objectModule))},
        {"segmentsAlignmentClash", 2,
         "Segment #1 and segment #2 have alignment constraints which cannot both be satisfied "
         "given their relative offset",
         CALL(segmentsAlignmentClash(objectModule, 1, 2))},
        {"segmentSectionAlignmentClash", 2,
         "Segment #1 and section #2 have alignment constraints which cannot both be satisfied "
         "given their relative offset",
         CALL(segmentSectionAlignmentClash(objectModule, 1, 2))},
        {"segmentProgramHeaderClash", 2,
         "Segment #1 and program header table have alignment constraints which cannot both be "
         "satisfied given their relative offset",
         CALL(segmentProgramHeaderClash(objectModule, 1))},
        {"segmentSectionHeaderClash", 2,
         "Segment #1 and section header table have alignment constraints which cannot both be "
         "satisfied given their relative offset",
         CALL(segmentSectionHeaderClash(objectModule, 1))},
        {"segmentElfHeaderClash", 2,
         "Segment #1 and ELF header have alignment constraints which cannot both be satisfied "
         "given their relative offset",
         CALL(segmentElfHeaderClash(objectModule, 1))},
        {"debugOverlayNotDebugSection", 2,
         "Record #5 in debug overlay section #3 refers to section #7 which is not a debug section",
         CALL(debugOverlayNotDebugSection(objectModule, 5, 3, 7))},
        {"debugOverlayNotSection", 2,
         "Record #5 in debug overlay section #3 refers to section #7 which is not a section",
         CALL(debugOverlayNotSection(objectModule, 5, 3, 7))},
        {"noteEntryCountBad", 1,
         "Section/segment mapping in SHT_NOTE section #3 contains 4 entries, but there are 5 "
         "SHF_ALLOC sections",
         CALL(noteEntryCountBad(objectModule, 3, 4, 5))},
        {"noteSegmentIndexBad", 1,
         "Section/segment mapping in SHT_NOTE section #3 maps section #7 to segment #2 which does "
         "not exist",
         CALL(noteSegmentIndexBad(objectModule, 3, 7, 2))},
    };
}

class ErrorSentenceTest : public ReaderTest, public testing::WithParamInterface<SentenceRow> {};

TEST_P(ErrorSentenceTest, SentenceSeverityAndAnswer) {
    for (const bool answer : {false, true}) {
        startModule(answer);
        EXPECT_EQ(GetParam().call(handler(), &module()), answer);
        EXPECT_EQ(reports(), Reports({{GetParam().severity, GetParam().sentence}}));
        EXPECT_EQ(handler().m_Module, &module());
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, ErrorSentenceTest, testing::ValuesIn(sentenceRows()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

// Every operation but `report` and the destructor has a row above, and no other is named there.
TEST(ErrorSentenceTable, NamesAllOperations) {
    size_t operations = 0;
    for (const SentenceRow& row : sentenceRows()) {
        const std::string name = row.name;
        const bool isVariant = name.ends_with("Nothing") || name.ends_with("NoNumber") ||
                               name.ends_with("NoName") || name.ends_with("Unknown") ||
                               name.ends_with("UnknownType") || name.starts_with("dynamicSymbol") ||
                               name.starts_with("dynamicSection") || name == "stringTableEnds" ||
                               name == "stringTableStartsAndEnds" ||
                               name == "exidxLinkOrderMissing" || name == "exidxBothMissing" ||
                               name == "dynamicLocalSymbolUndefined";
        operations += isVariant ? 0 : 1;
    }
    EXPECT_EQ(operations, 85U);
}

} // namespace
} // namespace elfext::test
