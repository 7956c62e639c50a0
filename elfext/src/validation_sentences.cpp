// The sentences of what validation and layout find: a file that could be read, but is not as the
// format wants it.
#include "elfext/interface/error_handler.h"

#include "elfext/src/error_sentence.h"

namespace elfext {
namespace {

// Two parts of a file whose positions exclude each other.
template <typename... Pieces>
bool reportClash(ErrorHandler& handler, ObjectModule* objectModule, const Pieces&... pieces) {
    return reportSentence(handler, objectModule, Severity_Error, pieces...,
                          " have alignment constraints which cannot both be satisfied given their "
                          "relative offset");
}

} // namespace

bool ErrorHandler::sectionSymbolSizeBad(ObjectModule* objectModule, uint64_t symbol,
                                        uint32_t section, uint64_t size, uint64_t sectionSize) {
    return reportSentence(*this, objectModule, Severity_Warning, "Symbol ", Number{symbol},
                          ", the STT_SECTION symbol for section ", Number{section}, ", has size ",
                          size, " which should be either zero or the section's size ", sectionSize);
}

bool ErrorHandler::sectionSymbolSizeTooBig(ObjectModule* objectModule, uint64_t symbol,
                                           uint32_t section, uint64_t size, uint64_t sectionSize) {
    return reportSentence(*this, objectModule, Severity_Warning, "Symbol ", Number{symbol},
                          ", a STT_SECTION symbol in section ", Number{section}, ", has size ",
                          size, " which should be at most the section's size ", sectionSize);
}

bool ErrorHandler::entrySizeBad(ObjectModule* objectModule, uint32_t section, uint64_t entrySize,
                                uint64_t expectedSize) {
    return reportSentence(*this, objectModule, Severity_Error, "Section ", Number{section},
                          " specifies its entry size as ", entrySize, " (should be ", expectedSize,
                          ")");
}

bool ErrorHandler::sectionLengthBad(ObjectModule* objectModule, uint32_t section, uint64_t length,
                                    uint64_t entrySize) {
    return reportSentence(*this, objectModule, Severity_Error, "Section ", Number{section},
                          " has length ", length, ", which is not a multiple of ", entrySize);
}

bool ErrorHandler::pltRelocationsMixed(ObjectModule* objectModule) {
    return report(objectModule, Severity_Error,
                  "Relocations in PLT and GOT include some with addends and some without");
}

bool ErrorHandler::nullSectionNotNull(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning, "SHT_NULL section ",
                          Number{section}, " does not have completely null details");
}

bool ErrorHandler::firstSectionNotNull(ObjectModule* objectModule, uint32_t type) {
    return reportSentence(*this, objectModule, Severity_Error, "Section #0 has type ",
                          TypeName{type}, " instead of SHT_NULL");
}

bool ErrorHandler::auxiliarySectionHasSymbol(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning, "Auxiliary section ",
                          Number{section}, " has at least one symbol defined in it");
}

bool ErrorHandler::auxiliarySectionHasRelocation(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning, "Auxiliary section ",
                          Number{section}, " has at least one relocation in it");
}

bool ErrorHandler::multipleDynamicRelocations(ObjectModule* objectModule, uint64_t offset,
                                              uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning,
                          "Multiple dynamic relocations at offset ", offset, " in section ",
                          Number{section});
}

bool ErrorHandler::multipleStaticRelocations(ObjectModule* objectModule, uint64_t offset,
                                             uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning,
                          "Multiple static relocations at offset ", offset, " in section ",
                          Number{section});
}

bool ErrorHandler::programHeadersInRelocatable(ObjectModule* objectModule) {
    return report(objectModule, Severity_Fatal,
                  "Program header table is non-empty although file is not executable");
}

bool ErrorHandler::loadableSectionOutsideSegment(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning, "Loadable section ",
                          Number{section}, " is not contained in a loadable segment");
}

bool ErrorHandler::nonLoadableSectionInSegment(ObjectModule* objectModule, uint32_t section,
                                               uint32_t segment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Non-loadable section ",
                          Number{section}, " is contained in loadable segment ", Number{segment});
}

bool ErrorHandler::segmentsOutOfOrder(ObjectModule* objectModule, uint32_t firstSegment,
                                      uint32_t secondSegment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Loadable segments ",
                          Number{firstSegment}, " appears before ", Number{secondSegment},
                          " in the file but after it in memory");
}

bool ErrorHandler::segmentsOverlap(ObjectModule* objectModule, uint32_t firstSegment,
                                   uint32_t secondSegment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Loadable segments ",
                          Number{firstSegment}, " and ", Number{secondSegment}, " overlap");
}

bool ErrorHandler::sectionsOverlap(ObjectModule* objectModule, uint32_t firstSection,
                                   uint32_t secondSection) {
    return reportSentence(*this, objectModule, Severity_Warning, "Sections ", Number{firstSection},
                          " and ", Number{secondSection}, " overlap in the file");
}

bool ErrorHandler::duplicateInterp(ObjectModule* objectModule, uint32_t firstSegment,
                                   uint32_t secondSegment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Segments ", Number{firstSegment},
                          " and ", Number{secondSegment}, " both have type PT_INTERP");
}

bool ErrorHandler::duplicatePhdr(ObjectModule* objectModule, uint32_t firstSegment,
                                 uint32_t secondSegment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Segments ", Number{firstSegment},
                          " and ", Number{secondSegment}, " both have type PT_PHDR");
}

bool ErrorHandler::loadBeforeInterp(ObjectModule* objectModule, uint32_t loadSegment,
                                    uint32_t interpSegment) {
    return reportSentence(*this, objectModule, Severity_Warning, "PT_LOAD segment ",
                          Number{loadSegment}, " comes before PT_INTERP segment ",
                          Number{interpSegment});
}

bool ErrorHandler::loadBeforePhdr(ObjectModule* objectModule, uint32_t loadSegment,
                                  uint32_t phdrSegment) {
    return reportSentence(*this, objectModule, Severity_Warning, "PT_LOAD segment ",
                          Number{loadSegment}, " comes before PT_PHDR segment ",
                          Number{phdrSegment});
}

bool ErrorHandler::phdrTooSmall(ObjectModule* objectModule, uint32_t segment, uint64_t size,
                                uint64_t tableSize) {
    return reportSentence(
        *this, objectModule, Severity_Warning, "PT_PHDR segment ", Number{segment}, " has size ",
        size, " bytes, smaller than the actual size of the program header table (", tableSize, ")");
}

bool ErrorHandler::segmentNotCongruent(ObjectModule* objectModule, uint32_t segment,
                                       uint64_t address, uint64_t fileOffset, uint64_t alignment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Loadable segment ",
                          Number{segment}, "'s virtual address ", address, " and its file offset ",
                          fileOffset, " are not congruent modulo its alignment ", alignment);
}

bool ErrorHandler::sectionAddressNotAligned(ObjectModule* objectModule, uint32_t section,
                                            uint64_t address, uint64_t alignment) {
    return reportSentence(*this, objectModule, Severity_Warning, "Loadable section ",
                          Number{section}, "'s virtual address ", address,
                          " is not a multiple of its alignment ", alignment);
}

bool ErrorHandler::noLoadableSegments(ObjectModule* objectModule) {
    return report(objectModule, Severity_Fatal, "No loadable segments exist");
}

bool ErrorHandler::headersNotMapped(ObjectModule* objectModule, uint32_t segment, uint64_t unmapped,
                                    uint64_t needed) {
    return reportSentence(*this, objectModule, Severity_Warning, "First loadable segment ",
                          Number{segment}, " has ", unmapped, " bytes unmapped at the start, but ",
                          needed, " are needed");
}

bool ErrorHandler::exidxFlagsBad(ObjectModule* objectModule, uint32_t section, bool alloc,
                                 bool linkOrder) {
    return reportSentence(*this, objectModule, Severity_Warning, "SHT_QEL_EXIDX section ",
                          Number{section}, " should have", alloc ? " SHF_ALLOC (2)" : "",
                          linkOrder ? " SHF_LINK_ORDER (128)" : "", " flag",
                          alloc && linkOrder ? "s" : "", " set");
}

bool ErrorHandler::exidxLinkBad(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Warning,
                          "sh_link field of SHT_QEL_EXIDX section ", Number{section},
                          " should point to a SHT_PROGBITS section with SHF_ALLOC and "
                          "SHF_EXECINSTR flags set");
}

bool ErrorHandler::groupFlagWithoutGroup(ObjectModule* objectModule, uint32_t section) {
    return reportSentence(*this, objectModule, Severity_Error, "Section ", Number{section},
                          " has the SHF_GROUP flag set but is not referenced by any SHT_GROUP "
                          "section");
}

bool ErrorHandler::groupMemberWithoutFlag(ObjectModule* objectModule, uint32_t section,
                                          uint32_t groupSection) {
    return reportSentence(*this, objectModule, Severity_Error, "Section ", Number{section},
                          " is referenced by SHT_GROUP section ", Number{groupSection},
                          " but does not have the SHF_GROUP flag set");
}

bool ErrorHandler::relocationCrossesGroup(ObjectModule* objectModule, uint64_t relocation,
                                          uint32_t section, uint32_t symbolSection,
                                          uint32_t targetSection) {
    return reportSentence(
        *this, objectModule, Severity_Error, "Relocation ", Number{relocation}, " in section ",
        Number{section}, " references a local symbol in section ", Number{symbolSection},
        " which is not in the same group as its target section ", Number{targetSection});
}

bool ErrorHandler::relocationTargetNotRelocatable(ObjectModule* objectModule, uint64_t relocation,
                                                  uint32_t section, uint32_t targetSection) {
    return reportSentence(*this, objectModule, Severity_Warning, "Relocation ", Number{relocation},
                          " in section ", Number{section}, " has target section ",
                          Number{targetSection}, " which should not be relocated at all");
}

bool ErrorHandler::localSymbolUndefined(ObjectModule* objectModule, uint64_t symbol,
                                        bool isDynamic) {
    return reportSentence(*this, objectModule, Severity_Error,
                          isDynamic ? "Dynamic symbol" : "Symbol", " ", Number{symbol},
                          " has binding STB_LOCAL but is undefined");
}

bool ErrorHandler::segmentsAlignmentClash(ObjectModule* objectModule, uint32_t firstSegment,
                                          uint32_t secondSegment) {
    return reportClash(*this, objectModule, "Segment ", Number{firstSegment}, " and segment ",
                       Number{secondSegment});
}

bool ErrorHandler::segmentSectionAlignmentClash(ObjectModule* objectModule, uint32_t segment,
                                                uint32_t section) {
    return reportClash(*this, objectModule, "Segment ", Number{segment}, " and section ",
                       Number{section});
}

bool ErrorHandler::segmentProgramHeaderClash(ObjectModule* objectModule, uint32_t segment) {
    return reportClash(*this, objectModule, "Segment ", Number{segment},
                       " and program header table");
}

bool ErrorHandler::segmentSectionHeaderClash(ObjectModule* objectModule, uint32_t segment) {
    return reportClash(*this, objectModule, "Segment ", Number{segment},
                       " and section header table");
}

bool ErrorHandler::segmentElfHeaderClash(ObjectModule* objectModule, uint32_t segment) {
    return reportClash(*this, objectModule, "Segment ", Number{segment}, " and ELF header");
}

} // namespace elfext
