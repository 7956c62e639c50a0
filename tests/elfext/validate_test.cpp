// Validation: the rules that have a fixed order, in that order. For each sentence there is a module
// that breaks the rule and one that just does not.
#include "tests/elfext/validate_fixtures.h"

#include <algorithm>

namespace elfext::test {
namespace {

// --- 1: There are sections

TEST_F(ValidateTest, SectionHeaderTableEmpty) {
    module().clear();
    expectFlaw("sectionHeaderTableEmpty", Severity_Fatal, "Section header table is empty");
}

TEST_F(ValidateTest, TheNullSectionAloneIsEnough) {
    expectNothing();
}

// --- 2: The null section

TEST_F(ValidateTest, NullSectionNotNull) {
    using Spoil = void (*)(Section&);
    const Spoil spoils[] = {
        [](Section& null) { null.setName("x"); },     [](Section& null) { null.setFlags(1); },
        [](Section& null) { null.setAddress(1); },    [](Section& null) { null.setSize(1); },
        [](Section& null) { null.setLink(&null); },   [](Section& null) { null.setInfo(1); },
        [](Section& null) { null.setAlignment(1); },  [](Section& null) { null.setEntrySize(1); },
        [](Section& null) { null.setFileOffset(1); }, [](Section& null) { null.setUpperFlags(1); }};
    for (const Spoil spoil : spoils) {
        module().clear();
        spoil(*module().createNullSection(0));
        keepTables();
        expectFlaw("nullSectionNotNull", Severity_Warning,
                   "SHT_NULL section #0 does not have completely null details");
    }
}

TEST_F(ValidateTest, OtherNullSectionsMayHaveDetails) {
    Section* const null = module().createNullSection(SHF_ALLOC);
    null->setInfo(7);
    null->setEntrySize(3);
    null->setSize(7);
    keepTables();
    expectNothing();
}

TEST_F(ValidateTest, NullSectionOfVeryManySectionsHoldsTheirNumber) {
    for (uint32_t i = 1; i < SHN_LORESERVE; ++i) {
        plain();
    }
    Section& null = *module().getSection(0);
    null.setSize(SHN_LORESERVE);
    null.setLink(module().getSection(1));
    keepTables();
    expectNothing();
    null.setSize(7);
    keepTables();
    expectFlaw("nullSectionNotNull", Severity_Warning,
               "SHT_NULL section #0 does not have completely null details");
}

TEST_F(ValidateTest, NullSectionOfFewerSectionsHoldsNoNumber) {
    for (uint32_t i = 1; i < SHN_LORESERVE - 1; ++i) {
        plain();
    }
    module().getSection(0)->setSize(SHN_LORESERVE - 1);
    keepTables();
    expectFlaw("nullSectionNotNull", Severity_Warning,
               "SHT_NULL section #0 does not have completely null details");
}

TEST_F(ValidateTest, FirstSectionNotNull) {
    module().clear();
    plain();
    module().createNullSection(0);
    expectFlaw("firstSectionNotNull", Severity_Error,
               "Section #0 has type 1 (SHT_PROGBITS) instead of SHT_NULL");
}

TEST_F(ValidateTest, FirstSectionOfAnUnknownTypeIsTold) {
    module().clear();
    plain(0, 0x12345678);
    expectFlaw("firstSectionNotNull", Severity_Error,
               "Section #0 has type 305419896 instead of SHT_NULL");
}

// --- 3: Auxiliary sections

TEST_F(ValidateTest, AuxiliarySectionHasSymbol) {
    Section* const strings = module().createStringTableSection(nullptr);
    module().createHostedSymbol(named("name"), strings, 0);
    keepTables();
    expectFlaw("auxiliarySectionHasSymbol", Severity_Warning,
               "Auxiliary section #1 has at least one symbol defined in it");
}

TEST_F(ValidateTest, AuxiliarySectionHasDynamicSymbol) {
    Section* const strings = module().createStringTableSection(nullptr);
    module().createDynamicHostedSymbol(named("name"), strings, 0);
    keepTables();
    expectFlaw("auxiliarySectionHasSymbol", Severity_Warning,
               "Auxiliary section #1 has at least one symbol defined in it");
}

TEST_F(ValidateTest, AuxiliarySectionHasRelocation) {
    Section* const strings = module().createStringTableSection(nullptr);
    strings->addRelocationAsRead({});
    keepTables();
    expectFlaws({{"auxiliarySectionHasRelocation", Severity_Warning,
                  "Auxiliary section #1 has at least one relocation in it"},
                 {"relocationTargetNotRelocatable", Severity_Warning,
                  "Relocation #0 in section #0 has target section #1 which should not be relocated "
                  "at all"}});
}

TEST_F(ValidateTest, TheNullSectionIsAnAuxiliaryOneToo) {
    module().getSection(0)->addRelocation(0, 1, nullptr);
    keepTables();
    expectFlaw("auxiliarySectionHasRelocation", Severity_Warning,
               "Auxiliary section #0 has at least one relocation in it");
}

TEST_F(ValidateTest, OtherSectionsHaveSymbolsAndRelocations) {
    module().createStringTableSection(nullptr);
    Section* const text = plain();
    text->addRelocation(0, 1, module().createHostedSymbol(named("f"), text, 0));
    text->addRelocation(4, 1, module().createDynamicHostedSymbol(named("f"), text, 0));
    keepTables();
    expectNothing();
}

// --- 4: Program headers

TEST_F(ValidateTest, ProgramHeadersInRelocatable) {
    unplacedSegment(PT_NULL, 0, 0);
    expectFlaw("programHeadersInRelocatable", Severity_Fatal,
               "Program header table is non-empty although file is not executable");
}

TEST_F(ValidateTest, OtherFilesHaveProgramHeaders) {
    unplacedSegment(PT_LOAD, 0, 0);
    for (const uint32_t type : {ET_NONE, ET_EXEC, ET_DYN, ET_CORE}) {
        module().setType(type);
        expectNothing();
    }
}

// --- 5: The order of loadable segments

class ValidateImageTest : public ValidateTest {
protected:
    void SetUp() override {
        ValidateTest::SetUp();
        module().setType(ET_CORE);
    }
    static Flaw outOfOrder(uint32_t first, uint32_t second) {
        return {"segmentsOutOfOrder", Severity_Warning,
                "Loadable segments #" + std::to_string(first) + " appears before #" +
                    std::to_string(second) + " in the file but after it in memory"};
    }
};

TEST_F(ValidateImageTest, SegmentsOutOfOrder) {
    segment(PT_LOAD, 0x200, 0x1000, 0x10);
    segment(PT_NULL, 0x180, 0, 0x10); // not loadable
    segment(PT_LOAD, 0x100, 0x2000, 0x10);
    expectFlaws({outOfOrder(2, 0)});
}

TEST_F(ValidateImageTest, SegmentOutOfOrderIsSeenPastOthersAtItsNeighboursPlace) {
    segment(PT_LOAD, 0x1000, 100, 1);
    segment(PT_LOAD, 0x1000, 50, 0);
    segment(PT_LOAD, 0x2000, 75, 1);
    expectFlaws({outOfOrder(0, 2)});
}

TEST_F(ValidateImageTest, SegmentOutOfOrderIsToldOnce) {
    segment(PT_LOAD, 0x100, 0x5000, 0x10);
    segment(PT_LOAD, 0x200, 0x6000, 0x10);
    segment(PT_LOAD, 0x300, 0x1000, 0x10);
    segment(PT_LOAD, 0x400, 0x2000, 0x10);
    segment(PT_LOAD, 0x500, 0x7000, 0x10);
    expectFlaws({outOfOrder(1, 2), outOfOrder(1, 3)});
}

TEST_F(ValidateImageTest, SegmentsAtOnePlaceOfTheFileOrOfMemoryAreInOrder) {
    segment(PT_LOAD, 0x200, 0x2000, 0x10);
    segment(PT_TLS, 0x200, 0x1000, 0x10);
    segment(PT_NOTE, 0x200, 0x1800, 0x10);
    segment(PT_NOTE, 0x300, 0x2000, 0x10);
    expectNothing();
}

TEST_F(ValidateImageTest, SegmentWithoutAPlaceInTheFileIsInOrder) {
    segment(PT_LOAD, 0x200, 0x1000, 0x10);
    unplacedSegment(PT_LOAD, 0x2000, 0x10);
    expectNothing();
}

// --- 6: Sections in the file

Flaw overlapping(uint32_t first, uint32_t second) {
    return {"sectionsOverlap", Severity_Warning,
            "Sections #" + std::to_string(first) + " and #" + std::to_string(second) +
                " overlap in the file"};
}

TEST_F(ValidateTest, SectionsOverlap) {
    placed(0, 0x100, 0, 0x10);
    placed(0, 0x120, 0, 0x10);
    placed(0, 0x10F, 0, 0x12);
    expectFlaws({overlapping(1, 3), overlapping(2, 3)});
}

TEST_F(ValidateTest, SectionsThatTouchDoNotOverlap) {
    placed(0, 0x100, 0, 0x10);
    placed(0, 0x120, 0, 0x10);
    placed(0, 0x110, 0, 0x10);
    expectNothing();
}

TEST_F(ValidateTest, SectionsInsideALongOneOverlapItAllTheSame) {
    placed(0, 0x110, 0, 0x10);
    placed(0, 0x130, 0, 0x10);
    placed(0, 0x100, 0, 0x100);
    placed(0, 0x1FF, 0, 0x100);
    placed(0, 0x2FF, 0, 1);
    expectFlaws({overlapping(1, 3), overlapping(2, 3), overlapping(3, 4)});
}

// Hostile files have thousands of sections at one place.
TEST_F(ValidateTest, SectionThatOverlapsManyIsToldOnce) {
    constexpr uint32_t count = 1000;
    Flaws expected;
    for (uint32_t i = 1; i <= count; ++i) {
        placed(0, 0x100, 0, 0x10);
        if (i > 1) {
            expected.push_back(overlapping(1, i));
        }
    }
    EXPECT_TRUE(validateWith(OperationHandler::always));
    EXPECT_EQ(m_Handler.m_Flaws, expected);
}

TEST_F(ValidateTest, SectionsWithoutBytesOverlapNothing) {
    placed(0, 0x100, 0, 0x10);
    placed(0, 0x104, 0, 0);
    Section* const bss = plain(0, SHT_NOBITS);
    bss->setFileOffset(0x104);
    bss->setSize(0x100);
    Section* const null = module().createNullSection(0);
    null->setFileOffset(0x104);
    null->setSize(0x100);
    plain()->setSize(0x200); // without a place
    keepTables();
    expectNothing();
}

// --- 7: Segments of which there is one

TEST_F(ValidateImageTest, DuplicateInterp) {
    unplacedSegment(PT_INTERP, 0, 0);
    unplacedSegment(PT_NULL, 0, 0);
    unplacedSegment(PT_INTERP, 0, 0);
    unplacedSegment(PT_INTERP, 0, 0);
    expectFlaws(
        {{"duplicateInterp", Severity_Warning, "Segments #0 and #2 both have type PT_INTERP"},
         {"duplicateInterp", Severity_Warning, "Segments #0 and #3 both have type PT_INTERP"}});
}

TEST_F(ValidateImageTest, DuplicatePhdr) {
    unplacedSegment(PT_NULL, 0, 0);
    unplacedSegment(PT_PHDR, 0, 0x100);
    unplacedSegment(PT_PHDR, 0, 0x100);
    expectFlaw("duplicatePhdr", Severity_Warning, "Segments #1 and #2 both have type PT_PHDR");
}

TEST_F(ValidateImageTest, LoadBeforeInterp) {
    unplacedSegment(PT_NULL, 0, 0);
    unplacedSegment(PT_LOAD, 0, 0x100);
    unplacedSegment(PT_LOAD, 0x100, 0x100);
    unplacedSegment(PT_INTERP, 0, 0);
    expectFlaw("loadBeforeInterp", Severity_Warning,
               "PT_LOAD segment #1 comes before PT_INTERP segment #3");
}

TEST_F(ValidateImageTest, LoadBeforePhdr) {
    segment(PT_LOAD, 0, 0, 0x1000);
    unplacedSegment(PT_PHDR, 0, 0x100);
    expectFlaw("loadBeforePhdr", Severity_Warning,
               "PT_LOAD segment #0 comes before PT_PHDR segment #1");
}

TEST_F(ValidateImageTest, LoadBeforeTheSecondOfThemIsToldToo) {
    unplacedSegment(PT_INTERP, 0, 0);
    unplacedSegment(PT_LOAD, 0, 0x100);
    unplacedSegment(PT_INTERP, 0, 0);
    expectFlaws(
        {{"duplicateInterp", Severity_Warning, "Segments #0 and #2 both have type PT_INTERP"},
         {"loadBeforeInterp", Severity_Warning,
          "PT_LOAD segment #1 comes before PT_INTERP segment #2"}});
}

TEST_F(ValidateImageTest, OneOfEachInFrontOfWhatIsLoaded) {
    unplacedSegment(PT_PHDR, 0, 0x1000);
    unplacedSegment(PT_INTERP, 0, 0);
    segment(PT_LOAD, 0, 0, 0x1000);
    segment(PT_LOAD, 0x1000, 0x1000, 0x1000);
    expectNothing();
}

TEST_F(ValidateImageTest, PhdrTooSmall) {
    unplacedSegment(PT_PHDR, 52, 63);
    segment(PT_LOAD, 0, 0, 0x1000);
    expectFlaw("phdrTooSmall", Severity_Warning,
               "PT_PHDR segment #0 has size 63 bytes, smaller than the actual size of the program "
               "header table (64)");
    module().getSegment(0)->setFileSize(64);
    expectNothing();
    module().setClass(ELFCLASS64);
    module().getSegment(0)->setFileSize(111);
    expectFlaw("phdrTooSmall", Severity_Warning,
               "PT_PHDR segment #0 has size 111 bytes, smaller than the actual size of the program "
               "header table (112)");
    module().getSegment(0)->setFileSize(112);
    expectNothing();
}

// --- 8: Index tables of exceptions

TEST_F(ValidateTest, ExidxFlagsBad) {
    Section* const text = plain(SHF_ALLOC | SHF_EXECINSTR);
    for (const uint32_t flags :
         {uint32_t{SHF_ALLOC | SHF_LINK_ORDER}, uint32_t{SHF_ALLOC}, uint32_t{SHF_LINK_ORDER},
          uint32_t{0}, uint32_t{SHF_ALLOC | SHF_LINK_ORDER | SHF_WRITE}}) {
        plain(flags, SHT_QEL_EXIDX)->setLink(text);
    }
    expectFlaws(
        {{"exidxFlagsBad", Severity_Warning,
          "SHT_QEL_EXIDX section #3 should have SHF_LINK_ORDER (128) flag set"},
         {"exidxFlagsBad", Severity_Warning,
          "SHT_QEL_EXIDX section #4 should have SHF_ALLOC (2) flag set"},
         {"exidxFlagsBad", Severity_Warning,
          "SHT_QEL_EXIDX section #5 should have SHF_ALLOC (2) SHF_LINK_ORDER (128) flags set"}});
}

TEST_F(ValidateTest, ExidxLinkBad) {
    Section* const links[] = {nullptr, plain(SHF_ALLOC | SHF_EXECINSTR, SHT_NOBITS),
                              plain(SHF_ALLOC), plain(SHF_EXECINSTR)};
    Flaws expected;
    for (Section* const link : links) {
        Section* const exidx = plain(SHF_ALLOC | SHF_LINK_ORDER, SHT_QEL_EXIDX);
        exidx->setLink(link);
        expected.push_back({"exidxLinkBad", Severity_Warning,
                            "sh_link field of SHT_QEL_EXIDX section #" +
                                std::to_string(exidx->getIndex()) +
                                " should point to a SHT_PROGBITS section with SHF_ALLOC and "
                                "SHF_EXECINSTR flags set"});
    }
    expectFlaws(expected);
}

TEST_F(ValidateTest, ExidxOfCodeIsSound) {
    Section* const text = plain(SHF_ALLOC | SHF_EXECINSTR | SHF_WRITE);
    plain(SHF_ALLOC | SHF_LINK_ORDER, SHT_QEL_EXIDX)->setLink(text);
    expectNothing();
}

// --- 9: Groups and relocations

class ValidateGroupTest : public ValidateTest {
protected:
    void SetUp() override {
        ValidateTest::SetUp();
        Group* const first = groupWithSection("first");   // 1
        Group* const second = groupWithSection("second"); // 2
        inFirst = module().createSection(nullptr, SHT_PROGBITS, 0, first);
        alsoInFirst = module().createSection(nullptr, SHT_PROGBITS, 0, first);
        inSecond = module().createSection(nullptr, SHT_PROGBITS, 0, second);
        free = plain();
    }
    Section* inFirst = nullptr;     // 3
    Section* alsoInFirst = nullptr; // 4
    Section* inSecond = nullptr;    // 5
    Section* free = nullptr;        // 6
};

TEST_F(ValidateGroupTest, FlagsAndMembershipAgree) {
    expectNothing();
}

TEST_F(ValidateGroupTest, GroupFlagWithoutGroup) {
    free->setFlags(SHF_GROUP | SHF_ALLOC);
    expectFlaw(
        "groupFlagWithoutGroup", Severity_Error,
        "Section #6 has the SHF_GROUP flag set but is not referenced by any SHT_GROUP section");
}

TEST_F(ValidateGroupTest, GroupMemberWithoutFlag) {
    inSecond->setFlags(SHF_ALLOC);
    expectFlaw("groupMemberWithoutFlag", Severity_Error,
               "Section #5 is referenced by SHT_GROUP section #2 but does not have the SHF_GROUP "
               "flag set");
}

TEST_F(ValidateGroupTest, RelocationCrossesGroup) {
    inFirst->addRelocation(0, 1, nullptr);
    inFirst->addRelocation(4, 1, localIn(inSecond));
    settleTables();
    const Section* const table = inFirst->getRelocationSections()[0];
    expectFlaw("relocationCrossesGroup", Severity_Error,
               "Relocation #1 in section #" + std::to_string(table->getIndex()) +
                   " references a local symbol in section #" +
                   std::to_string(inSecond->getIndex()) +
                   " which is not in the same group as its target section #" +
                   std::to_string(inFirst->getIndex()));
}

TEST_F(ValidateGroupTest, OtherRelocationsDoNotCrossGroups) {
    inFirst->addRelocation(0, 1, localIn(inFirst));
    inFirst->addRelocation(4, 1, localIn(alsoInFirst));
    inFirst->addRelocation(8, 1, localIn(free));
    inFirst->addRelocation(12, 1, module().createHostedSymbol(named("global"), inSecond, 0));
    inFirst->addRelocation(16, 1, module().createAbsoluteSymbol(localNamed("number"), 0));
    inFirst->addRelocation(20, 1, nullptr);
    free->addRelocation(0, 1, localIn(inSecond));
    expectNothing();
}

TEST_F(ValidateTest, RelocationTargetNotRelocatable) {
    Section* const note = plain(0, SHT_NOTE);
    note->addRelocationAsRead({.m_Offset = 0});
    note->addRelocationAsRead({.m_Offset = 4});
    settleTables();
    ASSERT_EQ(note->getIndex(), 1U);
    expectFlaws({{"relocationTargetNotRelocatable", Severity_Warning,
                  "Relocation #0 in section #2 has target section #1 which should not be relocated "
                  "at all"},
                 {"relocationTargetNotRelocatable", Severity_Warning,
                  "Relocation #1 in section #2 has target section #1 which should not be relocated "
                  "at all"}});
    note->setIsRelocatable(true);
    expectNothing();
}

// Relocations are counted within their tables, not within their section.
TEST_F(ValidateTest, RelocationsAreToldByTheirPlaceInTheirTable) {
    Section* const text = plain();
    text->addRelocationWithAddend(0, 1, nullptr, 0);
    text->addRelocation(4, 1, nullptr);
    text->addRelocationWithAddend(8, 1, nullptr, 0);
    settleTables();
    text->setIsRelocatable(false);
    keepTables();
    Flaws expected;
    for (const Section* const section : text->getRelocationSections()) {
        const uint32_t count = section->getType() == SHT_RELA ? 2 : 1;
        for (uint32_t i = 0; i < count; ++i) {
            expected.push_back({"relocationTargetNotRelocatable", Severity_Warning,
                                "Relocation #" + std::to_string(i) + " in section #" +
                                    std::to_string(section->getIndex()) +
                                    " has target section #1 which should not be relocated at all"});
        }
    }
    ASSERT_EQ(expected.size(), 3U);
    EXPECT_TRUE(validateWith(OperationHandler::always));
    const auto bySentence = [](const Flaw& left, const Flaw& right) {
        return left.sentence < right.sentence;
    };
    std::sort(m_Handler.m_Flaws.begin(), m_Handler.m_Flaws.end(), bySentence);
    std::sort(expected.begin(), expected.end(), bySentence);
    EXPECT_EQ(m_Handler.m_Flaws, expected);
}

// --- 10: Symbols

TEST_F(ValidateTest, SectionSymbolSizeBad) {
    Section* const text = plain();
    text->setSize(16);
    for (const uint64_t size : {0U, 16U, 8U, 17U}) {
        module().createHostedSymbol(sectionSymbol(size), text, 0);
    }
    expectFlaws({{"sectionSymbolSizeBad", Severity_Warning,
                  "Symbol #3, the STT_SECTION symbol for section #1, has size 8 which should be "
                  "either zero or the section's size 16"},
                 {"sectionSymbolSizeBad", Severity_Warning,
                  "Symbol #4, the STT_SECTION symbol for section #1, has size 17 which should be "
                  "either zero or the section's size 16"}});
}

TEST_F(ValidateTest, SectionSymbolSizeTooBig) {
    Section* const text = plain();
    text->setSize(16);
    for (const uint64_t size : {8U, 16U, 17U}) {
        module().createDynamicHostedSymbol(sectionSymbol(size), text, 4);
    }
    keepTables();
    expectFlaw("sectionSymbolSizeTooBig", Severity_Warning,
               "Symbol #3, a STT_SECTION symbol in section #1, has size 17 which should be at most "
               "the section's size 16");
}

TEST_F(ValidateTest, SymbolsOfOtherTypesHaveAnySize) {
    SymbolFields fields = localNamed("f", STT_FUNC);
    fields.m_Size = 17;
    module().createHostedSymbol(fields, plain(), 0);
    expectNothing();
}

TEST_F(ValidateTest, SectionSymbolNotInSection) {
    SymbolFields fields = sectionSymbol(0);
    fields.m_Binding = STB_GLOBAL;
    module().createAbsoluteSymbol(fields, 0);
    module().createCommonSymbol(fields, 0);
    module().createUndefinedSymbol(fields);
    module().createHostedSymbol(fields, plain(), 0);
    module().createDynamicAbsoluteSymbol(fields, 0);
    settleTables();
    const auto flaw = [](uint32_t symbol, const char* kind, const Section* table) {
        return Flaw{"sectionSymbolNotInSection", Severity_Warning,
                    "Symbol #" + std::to_string(symbol) + " in " + kind + "symbol table section #" +
                        std::to_string(table->getIndex()) +
                        " has type STT_SECTION but is not defined relative to a section"};
    };
    const Section* const symtab = module().getSymtabSections()[0];
    expectFlaws({flaw(1, "", symtab), flaw(2, "", symtab), flaw(3, "", symtab),
                 flaw(1, "dynamic ", module().getDynsymSections()[0])});
}

TEST_F(ValidateTest, LocalSymbolUndefined) {
    module().createUndefinedSymbol(localNamed("nowhere"));
    module().createDynamicUndefinedSymbol(localNamed("nowhere"));
    expectFlaws({{"localSymbolUndefined", Severity_Error,
                  "Symbol #1 has binding STB_LOCAL but is undefined"},
                 {"localSymbolUndefined", Severity_Error,
                  "Dynamic symbol #1 has binding STB_LOCAL but is undefined"}});
}

TEST_F(ValidateTest, OtherSymbolsMayBeUndefinedAndLocalOnesAnywhere) {
    SymbolFields weak = named("weak");
    weak.m_Binding = STB_WEAK;
    module().createUndefinedSymbol(weak);
    module().createUndefinedSymbol(named("global"));
    module().createDynamicUndefinedSymbol(named("global"));
    module().createAbsoluteSymbol(localNamed("number"), 1);
    module().createCommonSymbol(localNamed("common"), 4);
    localIn(plain());
    expectNothing();
}

} // namespace
} // namespace elfext::test
