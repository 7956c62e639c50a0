// Where the ELF library says what is wrong with a file.
//
// The library never prints. Each kind of problem has an operation of its own here, which gets the
// facts; the base class makes an English sentence of them and passes it to `report`, with its idea
// of how bad the problem is. A program derives from it and overrides `report`, and beyond that
// whatever it wants to word itself.
//
// Every operation answers whether to go on past the problem (true) or to fail (false). Problems
// after which going on is impossible must be answered with false: true is an internal fault there.
// A module without a handler counts as one whose every answer is false.
//
// Sections, segments, symbols, relocations and records are told by their numbers in the file,
// which count from 0. Sizes, lengths and offsets are in bytes. Texts that are passed in need to
// live during the call only. The module is the one that is being read; it may be half made.
#pragma once

#include <cstdint>

namespace elfext {

class ObjectModule;

// How bad a problem is. The library only passes it on.
enum Severity : uint32_t {
    Severity_Fatal = 0,
    Severity_Warning = 1,
    Severity_Error = 2,
};

class ErrorHandler {
public:
    ErrorHandler() = default;
    ErrorHandler(const ErrorHandler&) = delete;
    ErrorHandler& operator=(const ErrorHandler&) = delete;
    virtual ~ErrorHandler() = default;

    // Gets every sentence that no operation below keeps for itself. `message` ends in a NUL and
    // is valid during the call.
    virtual bool report(ObjectModule* objectModule, Severity severity, const char* message) = 0;

    virtual bool outOfMemory(ObjectModule* objectModule);

    // File access. `fileName` may be null if it is not known; `errnum` is the host's error
    // number, 0 if there is none, -1 where no host call failed.
    virtual bool ioErrorReading(ObjectModule* objectModule, const char* fileName, int errnum);
    virtual bool ioErrorWriting(ObjectModule* objectModule, const char* fileName, int errnum);

    virtual bool sectionHeaderTableEmpty(ObjectModule* objectModule);

    // A section number that the file does not have. `section` holds the number, `index` is the
    // number itself, `lastSection` the greatest one there is.
    virtual bool elfHeaderNameTableIndexBad(ObjectModule* objectModule, uint32_t index,
                                            uint32_t lastSection);
    virtual bool symbolTableLinkIndexBad(ObjectModule* objectModule, uint32_t section,
                                         uint32_t index, uint32_t lastSection);
    virtual bool relocationLinkIndexBad(ObjectModule* objectModule, uint32_t section,
                                        uint32_t index, uint32_t lastSection);
    virtual bool groupLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                   uint32_t lastSection);
    virtual bool groupMemberIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                     uint32_t lastSection);
    virtual bool relocationTargetIndexBad(ObjectModule* objectModule, uint32_t section,
                                          uint32_t index, uint32_t lastSection);
    virtual bool shndxLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                   uint32_t lastSection);
    virtual bool hashLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                  uint32_t lastSection);
    virtual bool preemptionMapLinkIndexBad(ObjectModule* objectModule, uint32_t section,
                                           uint32_t index, uint32_t lastSection);
    virtual bool dynamicLinkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                     uint32_t lastSection);
    virtual bool linkIndexBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                              uint32_t lastSection);

    // A section number whose section has the wrong type, `type`.
    virtual bool elfHeaderNameTableTypeBad(ObjectModule* objectModule, uint32_t index,
                                           uint32_t type);
    virtual bool symbolTableLinkTypeBad(ObjectModule* objectModule, uint32_t section,
                                        uint32_t index, uint32_t type);
    virtual bool relocationLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                       uint32_t type);
    virtual bool groupLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                  uint32_t type);
    virtual bool shndxLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                  uint32_t type);
    virtual bool hashLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                 uint32_t type);
    virtual bool preemptionMapLinkTypeBad(ObjectModule* objectModule, uint32_t section,
                                          uint32_t index, uint32_t type);
    virtual bool dynamicLinkTypeBad(ObjectModule* objectModule, uint32_t section, uint32_t index,
                                    uint32_t type);

    // Names of sections. `length` is that of the name table.
    virtual bool sectionNameWithoutTable(ObjectModule* objectModule, uint32_t section);
    virtual bool sectionNameOffsetBad(ObjectModule* objectModule, uint32_t section, uint64_t offset,
                                      uint64_t length);

    // `symbolTable` is the number of the table, `symbolCount` how many entries it has.
    virtual bool groupSymbolIndexBad(ObjectModule* objectModule, uint32_t section,
                                     uint32_t symbolIndex, uint32_t symbolTable,
                                     uint64_t symbolCount);
    virtual bool shndxDuplicate(ObjectModule* objectModule, uint32_t firstSection,
                                uint32_t secondSection, uint32_t symbolTable);
    virtual bool shndxSizeMismatch(ObjectModule* objectModule, uint32_t section,
                                   uint64_t entryCount, uint32_t symbolTable, uint64_t symbolCount);

    // Symbols. `section` is the table's number, `isDynamic` is true for a `SHT_DYNSYM` table.
    virtual bool symbolNameOffsetBad(ObjectModule* objectModule, uint64_t symbol, bool isDynamic,
                                     uint32_t section, uint64_t offset, uint32_t stringTable,
                                     uint64_t length);
    virtual bool symbolXindexWithoutShndx(ObjectModule* objectModule, uint64_t symbol,
                                          bool isDynamic, uint32_t section);
    virtual bool symbolSectionIndexBad(ObjectModule* objectModule, uint64_t symbol, bool isDynamic,
                                       uint32_t section, uint32_t index, uint32_t lastSection);
    virtual bool sectionSymbolNotInSection(ObjectModule* objectModule, uint64_t symbol,
                                           bool isDynamic, uint32_t section);
    virtual bool sectionSymbolSizeBad(ObjectModule* objectModule, uint64_t symbol, uint32_t section,
                                      uint64_t size, uint64_t sectionSize);
    virtual bool sectionSymbolSizeTooBig(ObjectModule* objectModule, uint64_t symbol,
                                         uint32_t section, uint64_t size, uint64_t sectionSize);

    virtual bool relocationSymbolIndexBad(ObjectModule* objectModule, uint64_t relocation,
                                          uint32_t section, uint32_t symbolIndex,
                                          uint32_t symbolTable, uint64_t symbolCount);
    virtual bool sectionInTwoGroups(ObjectModule* objectModule, uint32_t section,
                                    uint32_t firstGroup, uint32_t secondGroup);
    virtual bool buildAttributesCorrupted(ObjectModule* objectModule, uint32_t section);
    virtual bool stringTableEmpty(ObjectModule* objectModule, uint32_t section);
    // The flags tell which end of the table has a nonzero byte; one of them is true.
    virtual bool stringTableNotTerminated(ObjectModule* objectModule, uint32_t section, bool starts,
                                          bool ends);

    // Codes of the ELF header.
    virtual bool unrecognisedType(ObjectModule* objectModule, uint32_t type);
    virtual bool invalidEndianness(ObjectModule* objectModule, uint32_t endianness);
    virtual bool unsupportedVersion(ObjectModule* objectModule, uint32_t version);
    virtual bool unsupportedMachine(ObjectModule* objectModule, uint32_t machine);

    // What validation and layout find.
    virtual bool entrySizeBad(ObjectModule* objectModule, uint32_t section, uint64_t entrySize,
                              uint64_t expectedSize);
    virtual bool sectionLengthBad(ObjectModule* objectModule, uint32_t section, uint64_t length,
                                  uint64_t entrySize);
    virtual bool pltRelocationsMixed(ObjectModule* objectModule);
    virtual bool nullSectionNotNull(ObjectModule* objectModule, uint32_t section);
    virtual bool firstSectionNotNull(ObjectModule* objectModule, uint32_t type);
    virtual bool auxiliarySectionHasSymbol(ObjectModule* objectModule, uint32_t section);
    virtual bool auxiliarySectionHasRelocation(ObjectModule* objectModule, uint32_t section);
    virtual bool multipleDynamicRelocations(ObjectModule* objectModule, uint64_t offset,
                                            uint32_t section);
    virtual bool multipleStaticRelocations(ObjectModule* objectModule, uint64_t offset,
                                           uint32_t section);
    virtual bool programHeadersInRelocatable(ObjectModule* objectModule);
    virtual bool loadableSectionOutsideSegment(ObjectModule* objectModule, uint32_t section);
    virtual bool nonLoadableSectionInSegment(ObjectModule* objectModule, uint32_t section,
                                             uint32_t segment);
    virtual bool segmentsOutOfOrder(ObjectModule* objectModule, uint32_t firstSegment,
                                    uint32_t secondSegment);
    virtual bool segmentsOverlap(ObjectModule* objectModule, uint32_t firstSegment,
                                 uint32_t secondSegment);
    virtual bool sectionsOverlap(ObjectModule* objectModule, uint32_t firstSection,
                                 uint32_t secondSection);
    virtual bool duplicateInterp(ObjectModule* objectModule, uint32_t firstSegment,
                                 uint32_t secondSegment);
    virtual bool duplicatePhdr(ObjectModule* objectModule, uint32_t firstSegment,
                               uint32_t secondSegment);
    virtual bool loadBeforeInterp(ObjectModule* objectModule, uint32_t loadSegment,
                                  uint32_t interpSegment);
    virtual bool loadBeforePhdr(ObjectModule* objectModule, uint32_t loadSegment,
                                uint32_t phdrSegment);
    virtual bool phdrTooSmall(ObjectModule* objectModule, uint32_t segment, uint64_t size,
                              uint64_t tableSize);
    virtual bool segmentNotCongruent(ObjectModule* objectModule, uint32_t segment, uint64_t address,
                                     uint64_t fileOffset, uint64_t alignment);
    virtual bool sectionAddressNotAligned(ObjectModule* objectModule, uint32_t section,
                                          uint64_t address, uint64_t alignment);
    virtual bool noLoadableSegments(ObjectModule* objectModule);
    virtual bool headersNotMapped(ObjectModule* objectModule, uint32_t segment, uint64_t unmapped,
                                  uint64_t needed);
    // The flags tell which section flags are missing; one of them is true.
    virtual bool exidxFlagsBad(ObjectModule* objectModule, uint32_t section, bool alloc,
                               bool linkOrder);
    virtual bool exidxLinkBad(ObjectModule* objectModule, uint32_t section);
    virtual bool groupFlagWithoutGroup(ObjectModule* objectModule, uint32_t section);
    virtual bool groupMemberWithoutFlag(ObjectModule* objectModule, uint32_t section,
                                        uint32_t groupSection);
    virtual bool relocationCrossesGroup(ObjectModule* objectModule, uint64_t relocation,
                                        uint32_t section, uint32_t symbolSection,
                                        uint32_t targetSection);
    virtual bool relocationTargetNotRelocatable(ObjectModule* objectModule, uint64_t relocation,
                                                uint32_t section, uint32_t targetSection);
    virtual bool localSymbolUndefined(ObjectModule* objectModule, uint64_t symbol, bool isDynamic);

    // What the file is not.
    virtual bool notElf(ObjectModule* objectModule);
    virtual bool not32BitElf(ObjectModule* objectModule);

    // Positions in the file that cannot be found.
    virtual bool segmentsAlignmentClash(ObjectModule* objectModule, uint32_t firstSegment,
                                        uint32_t secondSegment);
    virtual bool segmentSectionAlignmentClash(ObjectModule* objectModule, uint32_t segment,
                                              uint32_t section);
    virtual bool segmentProgramHeaderClash(ObjectModule* objectModule, uint32_t segment);
    virtual bool segmentSectionHeaderClash(ObjectModule* objectModule, uint32_t segment);
    virtual bool segmentElfHeaderClash(ObjectModule* objectModule, uint32_t segment);

    // Debug overlay records and section-to-segment notes. `index` is the section number in the
    // record, `targetSection` the mapped section.
    virtual bool debugOverlayNotDebugSection(ObjectModule* objectModule, uint64_t record,
                                             uint32_t section, uint32_t index);
    virtual bool debugOverlayNotSection(ObjectModule* objectModule, uint64_t record,
                                        uint32_t section, uint32_t index);
    virtual bool noteEntryCountBad(ObjectModule* objectModule, uint32_t section,
                                   uint64_t entryCount, uint64_t allocSectionCount);
    virtual bool noteSegmentIndexBad(ObjectModule* objectModule, uint32_t section,
                                     uint32_t targetSection, uint32_t segment);
};

} // namespace elfext
