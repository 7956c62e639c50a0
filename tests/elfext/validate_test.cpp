// Validation: one test a sentence, in the order in which the rules are checked.
#include "elfext/interface/elf_layout.h"
#include "elfext/interface/relocation.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {
namespace {

class ValidateTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        module().setErrorHandler(&m_Handler);
        module().setType(ET_REL);
        module().createNullSection(0);
    }

    // The only thing wrong is what `message` says: with a handler that ends the validation there,
    // and with one that lets it go on.
    void expectOnly(Severity severity, const std::string& message) {
        expectAll({{severity, message}});
    }
    void expectAll(const Reports& expected) {
        m_Handler.m_Reports.clear();
        m_Handler.m_GoesOn = false;
        EXPECT_FALSE(module().validate());
        EXPECT_EQ(m_Handler.m_Reports, Reports{expected[0]});
        m_Handler.m_Reports.clear();
        m_Handler.m_GoesOn = true;
        EXPECT_TRUE(module().validate());
        EXPECT_EQ(m_Handler.m_Reports, expected);
        module().setErrorHandler(nullptr);
        EXPECT_FALSE(module().validate());
        module().setErrorHandler(&m_Handler);
    }
    void expectNothing() {
        m_Handler.m_Reports.clear();
        m_Handler.m_GoesOn = false;
        EXPECT_TRUE(module().validate());
        EXPECT_EQ(m_Handler.m_Reports, Reports());
    }
    // The tables say what they should, and stay as a test has spoilt them.
    void settleTables() {
        module().updateAuxiliarySections();
        module().setAuxiliarySectionsUpToDate(true);
    }
    void keepTables() { module().setAuxiliarySectionsUpToDate(true); }

    Symbol* local(const char* name, Section* section) {
        SymbolFields fields = named(name);
        fields.m_Binding = STB_LOCAL;
        return section != nullptr ? module().createHostedSymbol(fields, section, 0)
                                  : module().createUndefinedSymbol(fields);
    }
    Segment* segment(uint32_t type, uint64_t offset, uint64_t address, uint64_t size,
                     uint64_t alignment = 1) {
        Segment* const made = module().createSegment({.m_Type = type,
                                                      .m_VirtualAddress = address,
                                                      .m_PhysicalAddress = address,
                                                      .m_MemorySize = size,
                                                      .m_FileSize = size,
                                                      .m_Flags = PF_R,
                                                      .m_Alignment = alignment});
        made->setFileOffset(offset);
        return made;
    }
    // A section at a place of the file and of memory.
    Section* placed(const char* name, uint32_t flags, uint64_t offset, uint64_t address,
                    uint64_t size) {
        Section* const section = module().createSection(name, SHT_PROGBITS, flags);
        section->setFileOffset(offset);
        section->setAddress(address);
        section->setSize(size);
        return section;
    }

    RecordingHandler m_Handler;
};

TEST_F(ValidateTest, ASoundObjectIsPassed) {
    Section* const text = makeSection();
    text->setSize(16);
    text->addRelocation(4, 1, module().createHostedSymbol(named("f"), text, 0));
    expectNothing();
    ASSERT_TRUE(layOutElfFile(&module()));
    expectNothing();
}

TEST_F(ValidateTest, TheAuxiliarySectionsAreBroughtUpToDateFirst) {
    module().createUndefinedSymbol(named("f"));
    expectNothing();
    EXPECT_EQ(module().getSymtabSections().getSize(), 1U);
    EXPECT_TRUE(module().areAuxiliarySectionsUpToDate());
}

// 1
TEST_F(ValidateTest, SectionHeaderTableEmpty) {
    module().clear();
    expectOnly(Severity_Fatal, "Section header table is empty");
}

// 2
TEST_F(ValidateTest, NullSectionNotNull) {
    using Spoil = void (*)(Section&);
    const Spoil spoils[] = {
        [](Section& null) { null.setName("x"); },    [](Section& null) { null.setFlags(1); },
        [](Section& null) { null.setAddress(1); },   [](Section& null) { null.setSize(1); },
        [](Section& null) { null.setLink(&null); },  [](Section& null) { null.setInfo(1); },
        [](Section& null) { null.setAlignment(1); }, [](Section& null) { null.setEntrySize(1); },
        [](Section& null) { null.setFileOffset(1); }};
    for (const Spoil spoil : spoils) {
        module().clear();
        spoil(*module().createNullSection(0));
        keepTables();
        m_Handler.m_Reports.clear();
        m_Handler.m_GoesOn = false;
        EXPECT_FALSE(module().validate());
        EXPECT_EQ(m_Handler.m_Reports,
                  (Reports{{Severity_Warning,
                            "SHT_NULL section #0 does not have completely null details"}}));
    }
}

TEST_F(ValidateTest, NullSectionOfVeryManySectionsHoldsTheirNumber) {
    for (uint32_t i = 1; i < SHN_LORESERVE; ++i) {
        module().createSection(nullptr, SHT_PROGBITS, 0);
    }
    Section& null = *module().getSection(0);
    null.setSize(SHN_LORESERVE);
    null.setLink(module().getSection(1));
    expectNothing();
    null.setSize(7);
    expectOnly(Severity_Warning, "SHT_NULL section #0 does not have completely null details");
}

TEST_F(ValidateTest, FirstSectionNotNull) {
    module().clear();
    module().createSection(nullptr, SHT_PROGBITS, 0);
    expectOnly(Severity_Error, "Section #0 has type 1 (SHT_PROGBITS) instead of SHT_NULL");
}

// 3
TEST_F(ValidateTest, AuxiliarySectionHasSymbol) {
    settleTables();
    Section* const strings = module().createStringTableSection(nullptr);
    module().createDynamicHostedSymbol(named("name"), strings, 0);
    keepTables();
    expectOnly(Severity_Warning, "Auxiliary section #1 has at least one symbol defined in it");
}

TEST_F(ValidateTest, AuxiliarySectionHasRelocation) {
    Section* const strings = module().createStringTableSection(nullptr);
    strings->addRelocationAsRead({});
    keepTables();
    expectAll({{Severity_Warning, "Auxiliary section #1 has at least one relocation in it"},
               {Severity_Warning, "Relocation #0 in section #0 has target section #1 which should "
                                  "not be relocated at all"}});
}

TEST_F(ValidateTest, TheNullSectionIsAnAuxiliaryOneToo) {
    module().getSection(0)->addRelocation(0, 1, nullptr);
    keepTables();
    expectOnly(Severity_Warning, "Auxiliary section #0 has at least one relocation in it");
}

// 4
TEST_F(ValidateTest, ProgramHeadersInRelocatable) {
    segment(PT_NULL, 0, 0, 0);
    expectOnly(Severity_Fatal, "Program header table is non-empty although file is not executable");
    module().setType(ET_CORE);
    expectNothing();
}

// 5
TEST_F(ValidateTest, SegmentsOutOfOrder) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0x200, 0x1000, 0x10);
    segment(PT_NULL, 0x180, 0, 0x10); // not loadable
    segment(PT_LOAD, 0x100, 0x2000, 0x10);
    expectOnly(Severity_Warning,
               "Loadable segments #2 appears before #0 in the file but after it in memory");
}

TEST_F(ValidateTest, SegmentsAtOnePlaceOfTheFileAreInOrder) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0x200, 0x2000, 0x10);
    segment(PT_LOAD, 0x200, 0x1000, 0x10);
    expectNothing();
}

// 6
TEST_F(ValidateTest, SectionsOverlap) {
    placed(nullptr, 0, 0x100, 0, 0x10);
    placed(nullptr, 0, 0x120, 0, 0x10);
    placed(nullptr, 0, 0x10F, 0, 0x12);
    expectAll({{Severity_Warning, "Sections #1 and #3 overlap in the file"},
               {Severity_Warning, "Sections #2 and #3 overlap in the file"}});
}

TEST_F(ValidateTest, SectionsWithoutBytesOverlapNothing) {
    placed(nullptr, 0, 0x100, 0, 0x10);
    placed(nullptr, 0, 0x104, 0, 0);
    Section* const bss = module().createSection(nullptr, SHT_NOBITS, 0);
    bss->setFileOffset(0x104);
    bss->setSize(0x100);
    module().createSection(nullptr, SHT_PROGBITS, 0)->setSize(0x200); // without a place
    expectNothing();
}

// 7
TEST_F(ValidateTest, DuplicateInterp) {
    module().setType(ET_CORE);
    segment(PT_INTERP, 0, 0, 0);
    segment(PT_NULL, 0, 0, 0);
    segment(PT_INTERP, 0, 0, 0);
    segment(PT_INTERP, 0, 0, 0);
    expectAll({{Severity_Warning, "Segments #0 and #2 both have type PT_INTERP"},
               {Severity_Warning, "Segments #0 and #3 both have type PT_INTERP"}});
}

TEST_F(ValidateTest, DuplicatePhdr) {
    module().setType(ET_CORE);
    segment(PT_PHDR, 0, 0, 0x100);
    segment(PT_PHDR, 0, 0, 0x100);
    expectOnly(Severity_Warning, "Segments #0 and #1 both have type PT_PHDR");
}

TEST_F(ValidateTest, LoadBeforeInterp) {
    module().setType(ET_EXEC);
    segment(PT_NULL, 0, 0, 0);
    segment(PT_LOAD, 0, 0, 0x100);
    segment(PT_INTERP, 0, 0, 0);
    expectOnly(Severity_Warning, "PT_LOAD segment #1 comes before PT_INTERP segment #2");
}

TEST_F(ValidateTest, LoadBeforePhdr) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0, 0, 0x1000);
    segment(PT_PHDR, 0, 0, 0x100);
    expectOnly(Severity_Warning, "PT_LOAD segment #0 comes before PT_PHDR segment #1");
}

TEST_F(ValidateTest, PhdrTooSmall) {
    module().setType(ET_EXEC);
    segment(PT_PHDR, 52, 52, 63);
    segment(PT_LOAD, 0, 0, 0x1000);
    expectOnly(Severity_Warning, "PT_PHDR segment #0 has size 63 bytes, smaller than the actual "
                                 "size of the program header table (64)");
    module().setClass(ELFCLASS64);
    expectOnly(Severity_Warning, "PT_PHDR segment #0 has size 63 bytes, smaller than the actual "
                                 "size of the program header table (112)");
}

// 8
TEST_F(ValidateTest, ExidxFlagsBad) {
    Section* const text = module().createSection(nullptr, SHT_PROGBITS, SHF_ALLOC | SHF_EXECINSTR);
    const auto exidx = [&](uint32_t flags) {
        module().createSection(nullptr, SHT_QEL_EXIDX, flags)->setLink(text);
    };
    exidx(SHF_ALLOC | SHF_LINK_ORDER);
    exidx(SHF_ALLOC);
    exidx(SHF_LINK_ORDER);
    exidx(0);
    expectAll(
        {{Severity_Warning, "SHT_QEL_EXIDX section #3 should have SHF_LINK_ORDER (128) flag set"},
         {Severity_Warning, "SHT_QEL_EXIDX section #4 should have SHF_ALLOC (2) flag set"},
         {Severity_Warning, "SHT_QEL_EXIDX section #5 should have SHF_ALLOC (2) "
                            "SHF_LINK_ORDER (128) flags set"}});
}

TEST_F(ValidateTest, ExidxLinkBad) {
    Section* const links[] = {
        nullptr, module().createSection(nullptr, SHT_NOBITS, SHF_ALLOC | SHF_EXECINSTR),
        module().createSection(nullptr, SHT_PROGBITS, SHF_ALLOC),
        module().createSection(nullptr, SHT_PROGBITS, SHF_EXECINSTR)};
    Reports expected;
    for (Section* const link : links) {
        Section* const exidx =
            module().createSection(nullptr, SHT_QEL_EXIDX, SHF_ALLOC | SHF_LINK_ORDER);
        exidx->setLink(link);
        expected.push_back(
            {Severity_Warning, "sh_link field of SHT_QEL_EXIDX section #" +
                                   std::to_string(exidx->getIndex()) +
                                   " should point to a SHT_PROGBITS section with SHF_ALLOC and "
                                   "SHF_EXECINSTR flags set"});
    }
    expectAll(expected);
}

// 9
TEST_F(ValidateTest, GroupFlagWithoutGroup) {
    module().createSection(nullptr, SHT_PROGBITS, SHF_GROUP);
    expectOnly(Severity_Error, "Section #1 has the SHF_GROUP flag set but is not referenced by any "
                               "SHT_GROUP section");
}

TEST_F(ValidateTest, GroupMemberWithoutFlag) {
    Group* const group = module().createGroup(nullptr, "signature", 0);
    module().createSection(nullptr, SHT_PROGBITS, 0, group)->setFlags(0);
    expectOnly(Severity_Error, "Section #2 is referenced by SHT_GROUP section #1 but does not have "
                               "the SHF_GROUP flag set");
}

class ValidateGroupTest : public ValidateTest {
protected:
    void SetUp() override {
        ValidateTest::SetUp();
        Group* const first = module().createGroup(".group", "first", GRP_COMDAT);
        Group* const second = module().createGroup(".group", "second", GRP_COMDAT);
        inFirst = module().createSection(".one", SHT_PROGBITS, 0, first);
        alsoInFirst = module().createSection(".two", SHT_PROGBITS, 0, first);
        inSecond = module().createSection(".three", SHT_PROGBITS, 0, second);
        free = module().createSection(".four", SHT_PROGBITS, 0);
    }
    Section* inFirst = nullptr;
    Section* alsoInFirst = nullptr;
    Section* inSecond = nullptr;
    Section* free = nullptr;
};

TEST_F(ValidateGroupTest, RelocationCrossesGroup) {
    inFirst->addRelocation(0, 1, nullptr);
    inFirst->addRelocation(4, 1, local("there", inSecond));
    module().updateAuxiliarySections();
    const Section* const table = inFirst->getRelocationSections()[0];
    expectOnly(Severity_Error, "Relocation #1 in section #" + std::to_string(table->getIndex()) +
                                   " references a local symbol in section #" +
                                   std::to_string(inSecond->getIndex()) +
                                   " which is not in the same group as its target section #" +
                                   std::to_string(inFirst->getIndex()));
}

TEST_F(ValidateGroupTest, OtherRelocationsDoNotCrossGroups) {
    inFirst->addRelocation(0, 1, local("here", inFirst));
    inFirst->addRelocation(4, 1, local("beside", alsoInFirst));
    inFirst->addRelocation(8, 1, local("free", free));
    inFirst->addRelocation(12, 1, module().createHostedSymbol(named("global"), inSecond, 0));
    free->addRelocation(0, 1, local("there", inSecond));
    expectNothing();
}

TEST_F(ValidateTest, RelocationTargetNotRelocatable) {
    Section* const note = module().createSection(".note", SHT_NOTE, 0);
    note->addRelocationAsRead({});
    module().updateAuxiliarySections();
    ASSERT_EQ(note->getIndex(), 1U);
    expectOnly(Severity_Warning, "Relocation #0 in section #2 has target section #1 which should "
                                 "not be relocated at all");
}

// 10
TEST_F(ValidateTest, SectionSymbolSizeBad) {
    Section* const text = makeSection();
    text->setSize(16);
    for (const uint64_t size : {0U, 16U, 8U}) {
        SymbolFields fields = named(nullptr, STT_SECTION);
        fields.m_Binding = STB_LOCAL;
        fields.m_Size = size;
        module().createHostedSymbol(fields, text, 0);
    }
    expectOnly(Severity_Warning, "Symbol #3, the STT_SECTION symbol for section #1, has size 8 "
                                 "which should be either zero or the section's size 16");
}

TEST_F(ValidateTest, SectionSymbolSizeTooBig) {
    Section* const text = makeSection();
    text->setSize(16);
    for (const uint64_t size : {8U, 16U, 17U}) {
        SymbolFields fields = named(nullptr, STT_SECTION);
        fields.m_Binding = STB_LOCAL;
        fields.m_Size = size;
        module().createHostedSymbol(fields, text, 4);
    }
    expectOnly(Severity_Warning, "Symbol #3, a STT_SECTION symbol in section #1, has size 17 which "
                                 "should be at most the section's size 16");
}

TEST_F(ValidateTest, SectionSymbolNotInSection) {
    SymbolFields fields = named(nullptr, STT_SECTION);
    module().createAbsoluteSymbol(fields, 0);
    module().createDynamicAbsoluteSymbol(fields, 0);
    module().updateAuxiliarySections();
    const auto number = [](const ObjectModule::SectionArray& tables) {
        return std::to_string(tables[0]->getIndex());
    };
    expectAll({{Severity_Warning, "Symbol #1 in symbol table section #" +
                                      number(module().getSymtabSections()) +
                                      " has type STT_SECTION but is not defined relative to a "
                                      "section"},
               {Severity_Warning, "Symbol #1 in dynamic symbol table section #" +
                                      number(module().getDynsymSections()) +
                                      " has type STT_SECTION but is not defined relative to a "
                                      "section"}});
}

TEST_F(ValidateTest, LocalSymbolUndefined) {
    local("nowhere", nullptr);
    SymbolFields fields = named("shown");
    fields.m_Binding = STB_LOCAL;
    module().createDynamicUndefinedSymbol(fields);
    expectAll({{Severity_Error, "Symbol #1 has binding STB_LOCAL but is undefined"},
               {Severity_Error, "Dynamic symbol #1 has binding STB_LOCAL but is undefined"}});
}

// --- The rest

TEST_F(ValidateTest, EntrySizeBad) {
    module().createUndefinedSymbol(named("f"));
    settleTables();
    module().getSymtabSections()[0]->setEntrySize(15);
    keepTables();
    expectOnly(Severity_Error, "Section #1 specifies its entry size as 15 (should be 16)");
}

TEST_F(ValidateTest, SectionLengthBad) {
    Section* const table = makeSection();
    table->setEntrySize(8);
    table->setSize(20);
    expectOnly(Severity_Error, "Section #1 has length 20, which is not a multiple of 8");
}

TEST_F(ValidateTest, SectionLengthBadCountsTheEntriesThatThereShouldBe) {
    module().createUndefinedSymbol(named("f"));
    settleTables();
    module().getSymtabSections()[0]->setSize(33);
    keepTables();
    expectOnly(Severity_Error, "Section #1 has length 33, which is not a multiple of 16");
}

TEST_F(ValidateTest, PltRelocationsMixed) {
    Section* const got = makeSection(".got.plt");
    Section* const data = makeSection(".data");
    Symbol* const symbol = module().createDynamicUndefinedSymbol(named("f"));
    got->addRelocation(0, 1, symbol);
    data->addRelocationWithAddend(0, 1, symbol, 0);
    got->addRelocationWithAddend(4, 1, module().createUndefinedSymbol(named("static")), 0);
    expectNothing();
    makeSection(".plt")->addRelocationWithAddend(0, 1, symbol, 0);
    expectOnly(Severity_Error,
               "Relocations in PLT and GOT include some with addends and some without");
}

TEST_F(ValidateTest, MultipleRelocations) {
    Section* const data = makeSection(".data");
    Symbol* const symbol = module().createUndefinedSymbol(named("f"));
    Symbol* const dynamicSymbol = module().createDynamicUndefinedSymbol(named("f"));
    for (const uint64_t offset : {8U, 4U, 4U, 4U}) {
        data->addRelocation(offset, 1, symbol);
    }
    for (const uint64_t offset : {8U, 12U, 8U}) {
        data->addRelocation(offset, 1, dynamicSymbol);
    }
    expectAll({{Severity_Warning, "Multiple dynamic relocations at offset 8 in section #1"},
               {Severity_Warning, "Multiple static relocations at offset 4 in section #1"}});
}

TEST_F(ValidateTest, NoLoadableSegments) {
    for (const uint32_t type : {ET_EXEC, ET_DYN}) {
        module().setType(type);
        expectOnly(Severity_Fatal, "No loadable segments exist");
    }
    module().setType(ET_CORE);
    expectNothing();
}

TEST_F(ValidateTest, SegmentsOverlap) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0, 0x1000, 0x100);
    segment(PT_NOTE, 0, 0x1000, 0x10);
    segment(PT_LOAD, 0x100, 0x1100, 0x10);
    segment(PT_LOAD, 0x200, 0x110F, 0x10);
    expectOnly(Severity_Warning, "Loadable segments #2 and #3 overlap");
}

TEST_F(ValidateTest, SegmentNotCongruent) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0x1004, 0x2004, 1, 0x1000);
    segment(PT_LOAD, 0x2004, 0x3008, 1, 0x1000);
    expectOnly(Severity_Warning, "Loadable segment #1's virtual address 12296 and its file offset "
                                 "8196 are not congruent modulo its alignment 4096");
}

TEST_F(ValidateTest, SectionAddressNotAligned) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0x100, 0x1000, 0x100);
    placed(nullptr, SHF_ALLOC, 0x104, 0x1004, 4)->setAlignment(8);
    placed(nullptr, 0, 0x304, 0x1004, 4)->setAlignment(8);
    expectOnly(Severity_Warning,
               "Loadable section #1's virtual address 4100 is not a multiple of its alignment 8");
}

TEST_F(ValidateTest, AddressesOfARelocatableFileNeedNoAlignment) {
    placed(nullptr, SHF_ALLOC, 0x104, 0x1004, 4)->setAlignment(8);
    expectNothing();
}

TEST_F(ValidateTest, HeadersNotMapped) {
    module().setType(ET_EXEC);
    segment(PT_PHDR, 52, 0x1034, 64);
    segment(PT_LOAD, 0, 0x1000, 0x200);
    Section* const text = placed(nullptr, SHF_ALLOC, 115, 0x1073, 4);
    expectOnly(Severity_Warning, "First loadable segment #1 has 115 bytes unmapped at the start, "
                                 "but 116 are needed");
    text->setFileOffset(116);
    expectNothing();
    module().getSegment(0)->setVirtualAddress(0x34);
    module().getSegment(1)->setFileOffset(0x1000);
    expectOnly(Severity_Warning, "First loadable segment #1 has 0 bytes unmapped at the start, but "
                                 "116 are needed");
}

TEST_F(ValidateTest, LoadableSectionOutsideSegment) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0x100, 0x1000, 0x20);
    segment(PT_NULL, 0x200, 0x2000, 0x20);
    placed(nullptr, SHF_ALLOC, 0x100, 0x1000, 0x20);
    placed(nullptr, SHF_ALLOC, 0x200, 0x2000, 4);
    placed(nullptr, SHF_ALLOC, 0x300, 0x101F, 2);
    expectAll({{Severity_Warning, "Loadable section #2 is not contained in a loadable segment"},
               {Severity_Warning, "Loadable section #3 is not contained in a loadable segment"}});
}

TEST_F(ValidateTest, NonLoadableSectionInSegment) {
    module().setType(ET_EXEC);
    segment(PT_LOAD, 0x100, 0x1000, 0x20);
    segment(PT_LOAD, 0x300, 0x3000, 0x20);
    placed(nullptr, 0, 0x200, 0, 4);
    placed(nullptr, 0, 0x31C, 0, 4);
    placed(nullptr, 0, 0x320, 0, 4);
    expectOnly(Severity_Warning, "Non-loadable section #2 is contained in loadable segment #1");
}

// --- The order of the rules

TEST_F(ValidateTest, TheRulesAreCheckedInTheirOrder) {
    module().setType(ET_EXEC);
    module().getSection(0)->setInfo(1); // 2
    Section* const strings = module().createStringTableSection(nullptr);
    module().createHostedSymbol(named("in"), strings, 0); // 3
    segment(PT_LOAD, 0x200, 0x1000, 0x10);                // 5
    segment(PT_LOAD, 0x100, 0x2000, 0x10);
    placed(nullptr, 0, 0x600, 0, 8); // 6
    placed(nullptr, 0, 0x604, 0, 8);
    segment(PT_INTERP, 0x400, 0x3000, 0);                     // 7
    module().createSection(nullptr, SHT_QEL_EXIDX, 0);        // 8
    module().createSection(nullptr, SHT_PROGBITS, SHF_GROUP); // 9
    local("nowhere", nullptr);                                // 10
    keepTables();
    m_Handler.m_GoesOn = true;
    EXPECT_TRUE(module().validate());
    Names starts;
    for (const Report& report : m_Handler.m_Reports) {
        starts.push_back(report.message.substr(0, 18));
    }
    EXPECT_EQ(starts, (Names{"SHT_NULL section #", "Auxiliary section ", "Loadable segments ",
                             "Sections #2 and #3", "PT_LOAD segment #0", "SHT_QEL_EXIDX sect",
                             "sh_link field of S", "Section #5 has the", "Symbol #2 has bind"}));
}

class ValidateReadTest : public ReaderFormatTest {};

// What is read and laid out again has no flaws of its own.
TEST_P(ValidateReadTest, ARichObjectIsSound) {
    ASSERT_TRUE(read(richElf(format())));
    module().validate();
    EXPECT_EQ(reports(), Reports());
    ASSERT_TRUE(layOutElfFile(&module()));
    EXPECT_TRUE(module().validate());
    EXPECT_EQ(reports(), Reports());
}

INSTANTIATE_FORMATS(ValidateReadTest);

} // namespace
} // namespace elfext::test
