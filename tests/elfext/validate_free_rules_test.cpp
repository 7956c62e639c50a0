// Validation: the rules that come behind those of a fixed order. For each sentence there is a
// module that breaks the rule and one that just does not.
#include "tests/elfext/validate_fixtures.h"

namespace elfext::test {
namespace {

class ValidateFreeTest : public ValidateTest {
protected:
    // From here on the module is an image with a segment that holds this much of file and memory.
    Segment* makeImage(uint64_t offset, uint64_t address, uint64_t size, uint64_t alignment = 1) {
        module().setType(ET_EXEC);
        return segment(PT_LOAD, offset, address, size, alignment);
    }
};

// --- The form of tables

struct EntrySize {
    uint32_t type;
    uint64_t sizes[2]; // by class
};
constexpr EntrySize entrySizes[] = {
    {SHT_SYMTAB, {16, 24}}, {SHT_DYNSYM, {16, 24}}, {SHT_REL, {8, 16}},
    {SHT_RELA, {12, 24}},   {SHT_GROUP, {4, 4}},    {SHT_SYMTAB_SHNDX, {4, 4}},
    {SHT_HASH, {4, 4}},     {SHT_DYNAMIC, {8, 16}}, {SHT_GNU_versym, {2, 2}}};

class ValidateTableTest : public ValidateFreeTest {
protected:
    Section* table(uint32_t type) {
        switch (type) {
        case SHT_SYMTAB:
        case SHT_DYNSYM:
            return module().createSymbolTableSection(type);
        case SHT_REL:
        case SHT_RELA:
            return module().createRelocationSection(nullptr, type, 0);
        case SHT_GROUP:
            return module().createGroupSection(nullptr);
        case SHT_SYMTAB_SHNDX:
            return module().createShndxSection(nullptr);
        case SHT_HASH:
            return module().createHashSection(nullptr);
        case SHT_DYNAMIC:
            return module().createDynamicSection(nullptr);
        case SHT_GNU_versym:
            return module().createVersymSection(nullptr);
        default:
            return plain(0, type);
        }
    }
    // Calls `check` with a table of each type, in a file of each class, that has the entries it
    // should have.
    template <typename Check>
    void forEachTable(Check check) {
        for (const uint32_t fileClass : {ELFCLASS32, ELFCLASS64}) {
            for (const EntrySize& row : entrySizes) {
                const uint64_t size = row.sizes[fileClass == ELFCLASS64 ? 1 : 0];
                SCOPED_TRACE(testing::Message() << row.type << " in class " << fileClass);
                module().clear();
                module().setClass(fileClass);
                module().createNullSection(0);
                Section* const made = table(row.type);
                made->setEntrySize(size);
                made->setSize(3 * size);
                keepTables();
                check(*made, size);
            }
        }
    }
};

TEST_F(ValidateTableTest, EntrySizeBad) {
    forEachTable([this](Section& section, uint64_t size) {
        expectNothing();
        for (const uint64_t bad : {uint64_t{0}, size - 1, size + 1, 2 * size}) {
            section.setEntrySize(bad);
            keepTables();
            expectFlaw("entrySizeBad", Severity_Error,
                       "Section #1 specifies its entry size as " + std::to_string(bad) +
                           " (should be " + std::to_string(size) + ")");
        }
    });
}

TEST_F(ValidateTableTest, SectionsOfOtherTypesHaveAnyEntrySize) {
    for (const uint32_t type : {SHT_PROGBITS, SHT_NOTE, SHT_NOBITS, SHT_INIT_ARRAY}) {
        plain(0, type)->setEntrySize(13);
    }
    module().createStringTableSection(nullptr)->setEntrySize(13);
    keepTables();
    expectNothing();
}

TEST_F(ValidateTableTest, SectionLengthBadCountsTheEntriesThatThereShouldBe) {
    forEachTable([this](Section& section, uint64_t size) {
        for (const uint64_t bad : {3 * size - 1, 3 * size + 1}) {
            section.setSize(bad);
            keepTables();
            expectFlaw("sectionLengthBad", Severity_Error,
                       "Section #1 has length " + std::to_string(bad) +
                           ", which is not a multiple of " + std::to_string(size));
        }
    });
}

TEST_F(ValidateFreeTest, SectionLengthBad) {
    Section* const table = plain();
    table->setEntrySize(8);
    table->setSize(20);
    expectFlaw("sectionLengthBad", Severity_Error,
               "Section #1 has length 20, which is not a multiple of 8");
    for (const uint64_t size : {0U, 8U, 24U}) {
        table->setSize(size);
        expectNothing();
    }
    table->setEntrySize(0);
    table->setSize(20);
    expectNothing();
}

// --- Relocations

TEST_F(ValidateFreeTest, PltRelocationsMixed) {
    Section* const got = module().createSection(".got.plt", SHT_PROGBITS, 0);
    Section* const data = module().createSection(".data", SHT_PROGBITS, 0);
    Symbol* const symbol = module().createDynamicUndefinedSymbol(named("f"));
    got->addRelocation(0, 1, symbol);
    got->addRelocation(4, 1, symbol);
    data->addRelocationWithAddend(0, 1, symbol, 0);
    got->addRelocationWithAddend(8, 1, module().createUndefinedSymbol(named("static")), 0);
    keepTables();
    expectNothing();
    module().createSection(".plt", SHT_PROGBITS, 0)->addRelocationWithAddend(0, 1, symbol, 0);
    keepTables();
    expectFlaw("pltRelocationsMixed", Severity_Error,
               "Relocations in PLT and GOT include some with addends and some without");
}

TEST_F(ValidateFreeTest, MultipleDynamicRelocations) {
    Section* const data = plain();
    Symbol* const symbol = module().createDynamicUndefinedSymbol(named("f"));
    for (const uint64_t offset : {8U, 12U, 16U, 8U, 8U, 4U, 4U}) {
        data->addRelocation(offset, 1, symbol);
    }
    keepTables();
    expectFlaws({{"multipleDynamicRelocations", Severity_Warning,
                  "Multiple dynamic relocations at offset 4 in section #1"},
                 {"multipleDynamicRelocations", Severity_Warning,
                  "Multiple dynamic relocations at offset 8 in section #1"}});
}

TEST_F(ValidateFreeTest, MultipleStaticRelocations) {
    plain();
    Section* const data = plain();
    for (const uint64_t offset : {8U, 4U, 4U, 4U}) {
        data->addRelocation(offset, 1, nullptr);
    }
    keepTables();
    expectFlaw("multipleStaticRelocations", Severity_Warning,
               "Multiple static relocations at offset 4 in section #2");
}

TEST_F(ValidateFreeTest, OneRelocationOfEachKindAtAPlace) {
    Symbol* const symbol = module().createDynamicUndefinedSymbol(named("f"));
    for (int i = 0; i < 2; ++i) {
        Section* const data = plain();
        data->addRelocation(4, 1, symbol);
        data->addRelocation(4, 1, nullptr);
        data->addRelocation(5, 1, nullptr);
    }
    keepTables();
    expectNothing();
}

// --- Segments

TEST_F(ValidateFreeTest, NoLoadableSegments) {
    unplacedSegment(PT_NOTE, 0, 0);
    for (const uint32_t type : {ET_EXEC, ET_DYN}) {
        module().setType(type);
        expectFlaw("noLoadableSegments", Severity_Fatal, "No loadable segments exist");
    }
    module().setType(ET_CORE);
    expectNothing();
    unplacedSegment(PT_LOAD, 0, 0);
    for (const uint32_t type : {ET_EXEC, ET_DYN}) {
        module().setType(type);
        expectNothing();
    }
}

TEST_F(ValidateFreeTest, SegmentsOverlap) {
    makeImage(0, 0x1000, 0x100);
    segment(PT_NOTE, 0, 0x1000, 0x10); // a part of it
    segment(PT_LOAD, 0x100, 0x1100, 0x10);
    segment(PT_LOAD, 0x200, 0x110F, 0x10);
    expectFlaw("segmentsOverlap", Severity_Warning, "Loadable segments #2 and #3 overlap");
    module().getSegment(3)->setVirtualAddress(0x1110);
    expectNothing();
    module().getSegment(3)->setVirtualAddress(0x1108);
    module().getSegment(3)->setMemorySize(0);
    expectNothing();
}

TEST_F(ValidateFreeTest, SegmentsInsideALongOneOverlapItAllTheSame) {
    makeImage(0, 0x1000, 0x1000);
    segment(PT_LOAD, 0x1000, 0x1100, 0x10);
    segment(PT_LOAD, 0x1100, 0x1200, 0x10);
    expectFlaws({{"segmentsOverlap", Severity_Warning, "Loadable segments #0 and #1 overlap"},
                 {"segmentsOverlap", Severity_Warning, "Loadable segments #0 and #2 overlap"}});
}

TEST_F(ValidateFreeTest, SegmentNotCongruent) {
    makeImage(0x1004, 0x2004, 1, 0x1000);
    segment(PT_LOAD, 0x2004, 0x3008, 1, 0x1000);
    segment(PT_LOAD, 0x3000, 0x3010, 1, 1);
    segment(PT_LOAD, 0x3001, 0x3020, 1, 0);
    segment(PT_NULL, 0x3002, 0x3033, 1, 0x10); // not loadable
    unplacedSegment(PT_LOAD, 0x3041, 1, 0x10); // nowhere yet
    expectFlaw("segmentNotCongruent", Severity_Warning,
               "Loadable segment #1's virtual address 12296 and its file offset 8196 are not "
               "congruent modulo its alignment 4096");
}

TEST_F(ValidateFreeTest, HeadersNotMapped) {
    module().setType(ET_EXEC);
    segment(PT_PHDR, 52, 0x1034, 64);
    segment(PT_LOAD, 0, 0x1000, 0x200);
    Section* const text = placed(SHF_ALLOC, 115, 0x1073, 4);
    expectFlaw("headersNotMapped", Severity_Warning,
               "First loadable segment #1 has 115 bytes unmapped at the start, but 116 are needed");
    text->setFileOffset(116);
    text->setAddress(0x1074);
    expectNothing();
    module().getSegment(1)->setFileSize(115);
    expectFlaw("headersNotMapped", Severity_Warning,
               "First loadable segment #1 has 115 bytes unmapped at the start, but 116 are needed");
    module().getSegment(1)->setFileSize(116);
    expectNothing();
    module().getSegment(0)->setVirtualAddress(0x34);
    module().getSegment(1)->setFileOffset(0x1000);
    text->setFileOffset(0x1074);
    expectFlaw("headersNotMapped", Severity_Warning,
               "First loadable segment #1 has 0 bytes unmapped at the start, but 116 are needed");
    module().getSegment(0)->setType(PT_NULL); // nobody says that they are in memory
    expectNothing();
}

TEST_F(ValidateFreeTest, HeadersOfAWideFileNeedMore) {
    module().setType(ET_EXEC);
    module().setClass(ELFCLASS64);
    segment(PT_PHDR, 64, 0x1040, 112);
    segment(PT_LOAD, 0, 0x1000, 175);
    expectFlaw("headersNotMapped", Severity_Warning,
               "First loadable segment #1 has 175 bytes unmapped at the start, but 176 are needed");
    module().getSegment(1)->setFileSize(176);
    expectNothing();
}

// --- Sections in memory

TEST_F(ValidateFreeTest, SectionAddressNotAligned) {
    makeImage(0x100, 0x1000, 0x100);
    placed(SHF_ALLOC, 0x104, 0x1004, 4)->setAlignment(8);
    placed(0, 0x304, 0x1004, 4)->setAlignment(8); // not in memory
    placed(SHF_ALLOC, 0x110, 0x1010, 4)->setAlignment(16);
    placed(SHF_ALLOC, 0x121, 0x1021, 4)->setAlignment(1);
    placed(SHF_ALLOC, 0x131, 0x1031, 4)->setAlignment(0);
    expectFlaw("sectionAddressNotAligned", Severity_Warning,
               "Loadable section #1's virtual address 4100 is not a multiple of its alignment 8");
}

TEST_F(ValidateFreeTest, AddressesOfARelocatableFileNeedNoAlignment) {
    placed(SHF_ALLOC, 0x104, 0x1004, 4)->setAlignment(8);
    expectNothing();
}

TEST_F(ValidateFreeTest, LoadableSectionOutsideSegment) {
    makeImage(0x100, 0x1000, 0x20);
    segment(PT_NULL, 0x200, 0x2000, 0x20);
    placed(SHF_ALLOC, 0x100, 0x1000, 0x20);
    placed(SHF_ALLOC, 0x200, 0x2000, 4); // in a segment that is not loaded
    placed(SHF_ALLOC, 0x300, 0x101F, 2); // it ends behind
    placed(SHF_ALLOC, 0x310, 0x0FFF, 2); // it starts before
    placed(SHF_ALLOC, 0x320, 0x1020, 0); // nothing, at the end
    placed(0, 0x330, 0x5000, 2);         // not in memory
    Section* const null = module().createNullSection(SHF_ALLOC);
    null->setAddress(0x5000);
    keepTables();
    const auto outside = [](uint32_t section) {
        return Flaw{"loadableSectionOutsideSegment", Severity_Warning,
                    "Loadable section #" + std::to_string(section) +
                        " is not contained in a loadable segment"};
    };
    expectFlaws({outside(2), outside(3), outside(4)});
}

// The first segment of a shared library starts at address 0, where all sections are that nobody
// has put anywhere.
TEST_F(ValidateFreeTest, LoadableSectionsWithoutAPlaceInTheFileAreOutside) {
    Segment* const load = makeImage(0, 0, 0x200);
    Section* const nowhere = plain(SHF_ALLOC);
    nowhere->setSize(8);
    expectFlaw("loadableSectionOutsideSegment", Severity_Warning,
               "Loadable section #1 is not contained in a loadable segment");
    load->addContained(nowhere, 0x100);
    expectNothing();
}

TEST_F(ValidateFreeTest, ZerosWithoutAPlaceInTheFileAreOutside) {
    Segment* const load = makeImage(0, 0, 0x200);
    Section* const nowhere = plain(SHF_ALLOC, SHT_NOBITS);
    plain(SHF_ALLOC, SHT_NOBITS); // nothing
    nowhere->setSize(8);
    expectFlaw("loadableSectionOutsideSegment", Severity_Warning,
               "Loadable section #1 is not contained in a loadable segment");
    load->addContained(nowhere, 0x100);
    expectNothing();
}

TEST_F(ValidateFreeTest, LoadableSectionsHaveOnePlaceInTheirSegment) {
    makeImage(0x100, 0x1000, 0x200);
    Section* const section = placed(SHF_ALLOC, 0x180, 0x1080, 4);
    keepTables();
    expectNothing();
    section->setFileOffset(0x184);
    expectFlaw("loadableSectionOutsideSegment", Severity_Warning,
               "Loadable section #1 is not contained in a loadable segment");
    section->setSize(0); // it has no bytes that could lie elsewhere
    expectNothing();
    section->setSize(4);
    section->setFlags(0);
    section->setFileOffset(0x400);
    expectNothing();
    Section* const zeros = plain(SHF_ALLOC, SHT_NOBITS);
    zeros->setAddress(0x1090);
    zeros->setFileOffset(0x500);
    zeros->setSize(16);
    expectNothing();
}

TEST_F(ValidateFreeTest, LoadableSectionMayBeInALongSegmentThatStartsFirst) {
    makeImage(0x1000, 0x1000, 0x1000);
    segment(PT_NOTE, 0x1100, 0x1100, 0x10);
    segment(PT_NOTE, 0x1200, 0x1200, 0x10);
    placed(SHF_ALLOC, 0x1208, 0x1208, 0x10);
    expectNothing();
}

TEST_F(ValidateFreeTest, SectionsOfAFileWithoutSegmentsAreInNone) {
    module().setType(ET_CORE);
    placed(SHF_ALLOC, 0x100, 0x1000, 0x20);
    expectNothing();
}

TEST_F(ValidateFreeTest, NonLoadableSectionInSegment) {
    makeImage(0x100, 0x1000, 0x20);
    segment(PT_LOAD, 0x300, 0x3000, 0x20);
    segment(PT_NULL, 0x200, 0x4000, 0x20);
    placed(0, 0x200, 0, 4); // in a segment that is not loaded
    placed(0, 0x31C, 0, 4);
    placed(0, 0x320, 0, 4);              // behind
    placed(SHF_ALLOC, 0x300, 0x3000, 4); // in memory
    placed(0, 0x310, 0, 0);              // nothing
    expectFlaw("nonLoadableSectionInSegment", Severity_Warning,
               "Non-loadable section #2 is contained in loadable segment #1");
}

// Ranges at the end of what a number can say do not wrap.
TEST_F(ValidateFreeTest, RangesAtTheEndOfAllNumbers) {
    module().setClass(ELFCLASS64);
    makeImage(UINT64_MAX - 8, UINT64_MAX - 8, UINT64_MAX);
    segment(PT_LOAD, UINT64_MAX - 4, UINT64_MAX - 4, UINT64_MAX);
    placed(SHF_ALLOC, UINT64_MAX - 6, UINT64_MAX - 6, UINT64_MAX);
    placed(0, UINT64_MAX - 2, 0, UINT64_MAX);
    keepTables();
    expectFlaws({{"sectionsOverlap", Severity_Warning, "Sections #1 and #2 overlap in the file"},
                 {"segmentsOverlap", Severity_Warning, "Loadable segments #0 and #1 overlap"},
                 {"nonLoadableSectionInSegment", Severity_Warning,
                  "Non-loadable section #2 is contained in loadable segment #0"}});
}

} // namespace
} // namespace elfext::test
