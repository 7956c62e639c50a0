// What is computed from the model: which tables there are, what they are called, and what they
// hold.
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "elfext/interface/elf_layout.h"
#include "elfext/interface/prune_criteria.h"
#include "elfext/src/string_table_builder.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/round_trip_fixtures.h"

#include <set>

namespace elfext::test {
namespace {

namespace elf = testsupport::elf;

class AuxiliaryTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        module().setType(ET_REL);
        module().createNullSection(0);
    }

    Names sectionNames() {
        Names names;
        for (const Section* const section : module().getSections()) {
            names.push_back(textOf(section->getName()));
        }
        return names;
    }
    Section* find(const std::string& name) {
        for (Section* const section : module().getSections()) {
            if (textOf(section->getName()) == name) {
                return section;
            }
        }
        ADD_FAILURE() << name;
        return module().getSection(0);
    }
    static std::vector<uint32_t> wordsOf(const Section* section) {
        const Buffer& bytes = section->getLoadedContents();
        std::vector<uint32_t> words;
        for (uint64_t i = 0; i + 4 <= bytes.getSize(); i += 4) {
            words.push_back(bytes.getUint32(i));
        }
        return words;
    }
    // The module as it is read back from its bytes.
    ObjectModule& readBack() {
        m_Bytes = writtenBytes(module());
        m_Again = std::make_unique<ObjectModule>();
        EXPECT_TRUE(readBytes(m_Bytes, *m_Again, m_Handler));
        EXPECT_EQ(m_Handler.m_Reports, Reports());
        return *m_Again;
    }
    static SymbolFields localNamed(const char* name) {
        SymbolFields fields = named(name);
        fields.m_Binding = STB_LOCAL;
        return fields;
    }
    void TearDown() override {
        m_Again.reset();
        ModelTest::TearDown();
    }

    std::string m_Bytes;

private:
    RecordingHandler m_Handler;
    std::unique_ptr<ObjectModule> m_Again;
};

using AuxiliaryDeathTest = AuxiliaryTest;

// --- Which tables there are

TEST_F(AuxiliaryTest, NothingIsMadeOfNothing) {
    module().clear();
    module().updateAuxiliarySections();
    EXPECT_EQ(module().getSectionCount(), 0U);
    EXPECT_TRUE(module().areAuxiliarySectionsUpToDate());
}

TEST_F(AuxiliaryTest, StaticSymbolsHaveTheirTables) {
    makeSection();
    module().createUndefinedSymbol(named("f"));
    module().updateAuxiliarySections();
    EXPECT_EQ(sectionNames(), (Names{"(null)", ".text", ".symtab", ".strtab", ".shstrtab"}));
    EXPECT_EQ(find(".symtab")->getLink(), find(".strtab"));
}

TEST_F(AuxiliaryTest, DynamicSymbolsHaveTheirTables) {
    module().createDynamicUndefinedSymbol(named("f"));
    module().updateAuxiliarySections();
    EXPECT_EQ(sectionNames(),
              (Names{"(null)", ".dynsym", ".hash", ".dynamic", ".dynstr", ".shstrtab"}));
    for (const char* const name : {".dynsym", ".hash", ".dynamic", ".dynstr"}) {
        EXPECT_NE(find(name)->getFlags() & SHF_ALLOC, 0U) << name;
    }
}

TEST_F(AuxiliaryTest, TablesOfRelocationsAreNamedAfterTheirTargets) {
    Section* const text = makeSection();
    text->addRelocation(0, 1, nullptr);
    text->addRelocationWithAddend(4, 1, nullptr, 2);
    Section* const nameless = module().createSection(nullptr, SHT_PROGBITS, 0);
    nameless->addRelocation(0, 1, nullptr);
    const std::string longName(2000, 'x');
    makeSection(longName.c_str())->addRelocationWithAddend(0, 1, nullptr, 0);
    module().updateAuxiliarySections();
    EXPECT_EQ(text->getRelocationSections().getSize(), 2U);
    EXPECT_EQ(find(".rel.text")->getType(), uint32_t{SHT_REL});
    EXPECT_EQ(find(".rela.text")->getType(), uint32_t{SHT_RELA});
    EXPECT_EQ(find(".rel")->getInfo(), nameless->getIndex());
    EXPECT_EQ(find(".rela" + longName.substr(0, 1018))->getType(), uint32_t{SHT_RELA});
    EXPECT_EQ(find(".rel.text")->getLink(), find(".symtab"));
    EXPECT_EQ(find(".rel.text")->getIndex(), text->getIndex() + 1);
}

TEST_F(AuxiliaryTest, TablesOfDynamicRelocationsHaveFixedNames) {
    Symbol* const symbol = module().createDynamicUndefinedSymbol(named("f"));
    Section* const data = makeSection(".data");
    Section* const got = makeSection(".got");
    Section* const plt = makeSection(".plt");
    data->addRelocation(0, 1, symbol);
    data->addRelocationWithAddend(4, 1, symbol, 0);
    got->addRelocation(0, 1, symbol);
    plt->addRelocationWithAddend(0, 1, symbol, 0);
    module().updateAuxiliarySections();
    const auto nameOf = [](Section* target, uint32_t index) {
        return textOf(target->getDynamicRelocationSections()[index]->getName());
    };
    EXPECT_EQ(nameOf(data, 0), ".rel.dyn");
    EXPECT_EQ(nameOf(data, 1), ".rela.dyn");
    EXPECT_EQ(nameOf(got, 0), ".rel.plt");
    EXPECT_EQ(nameOf(plt, 0), ".rela.plt");
    EXPECT_EQ(find(".rel.dyn")->getLink(), find(".dynsym"));
    EXPECT_TRUE(find(".rel.dyn")->asRelocationSection()->isDynamic());
}

TEST_F(AuxiliaryTest, RecordsHaveTheirTables) {
    Section* const debug = makeSection(".debug_info");
    module().addDebugOverlayRecord({1, debug, makeSection()});
    module().setSoName("lib.so");
    module().createDynamicSection();
    module().addPreemption("f", "a.so")->addPreemptedDll("b.so");
    module().createFileVersionDefinition(1, VER_FLG_BASE)->addDefinedVersionIdentifier("lib.so");
    Symbol* const symbol = module().createDynamicUndefinedSymbol(named("g"));
    symbol->setSymbolVersionRequirement(
        module().createSymbolVersionRequirement(2, 0, "c.so", "C_1"));
    attributes::BuildAttributes record;
    record.setTag(attributes::Tag_CPU_arch, 9);
    module().setBuildAttributes(record);
    module().updateAuxiliarySections();
    for (const char* const name : {".QEL.debug_overlay", ".QEL.preemptmap", ".version_d",
                                   ".version_r", ".version", ".dynamic", ".QEL.attributes"}) {
        EXPECT_TRUE(find(name)->isAuxiliary()) << name;
    }
    ObjectModule& again = readBack();
    EXPECT_EQ(again.getDebugOverlayRecords().getSize(), 1U);
    EXPECT_STREQ(again.getSoName(), "lib.so");
    ASSERT_EQ(again.getDynamicSymbolCount(), 1U);
    ASSERT_NE(again.getDynamicSymbol(1)->getSymbolVersionRequirement(), nullptr);
    EXPECT_EQ(again.getFileVersionDefinition()->getDefinedVersionIdentifierCount(), 1U);
    attributes::BuildAttributes readRecord;
    again.getBuildAttributes(readRecord);
    EXPECT_EQ(readRecord.getNumber(attributes::Tag_CPU_arch), 9U);
}

TEST_F(AuxiliaryTest, WhatIsUpToDateStays) {
    module().createUndefinedSymbol(named("f"));
    module().setAuxiliarySectionsUpToDate(true);
    module().updateAuxiliarySections();
    EXPECT_EQ(module().getSectionCount(), 1U);
}

TEST_F(AuxiliaryDeathTest, FrozenIndexesForbidIt) {
    module().setIndexesFrozen(true);
    EXPECT_FAULT(module().updateAuxiliarySections(), "elfext/src/auxiliary_update",
                 "!m_IndexesFrozen");
    EXPECT_FAULT(module().imposeSectionOrder(), "elfext/src/section_arrangement",
                 "!m_IndexesFrozen");
}

// --- What is not in use any more

TEST_F(AuxiliaryTest, TablesThatNobodyNeedsGo) {
    Section* const text = makeSection();
    auto* const first = module().createSymbolTableSection(SHT_SYMTAB, "first");
    auto* const names = module().createStringTableSection("names");
    first->setLink(names);
    auto* const second = module().createSymbolTableSection(SHT_SYMTAB, "second");
    auto* const stray = module().createStringTableSection("stray");
    stray->setServesSymbols(true);
    second->setLink(stray);
    second->setShndxSection(module().createShndxSection());
    auto* const foreign = module().createStringTableSection("foreign");
    auto* const lost = module().createRelocationSection("lost", SHT_REL, 0);
    module().createGroupSection("no group");
    auto* const table = module().createRelocationSection(".rel.text", SHT_REL, 0);
    table->setTarget(text, false);
    table->setLink(second);
    text->addRelocation(0, 1, module().createUndefinedSymbol(named("f")));
    EXPECT_EQ(lost->getTarget(), nullptr);
    module().updateAuxiliarySections();
    EXPECT_EQ(sectionNames(),
              (Names{"(null)", ".text", ".rel.text", "foreign", "first", "names", ".shstrtab"}));
    EXPECT_EQ(table->getLink(), first);
    EXPECT_EQ(foreign->getContentsSize(), 0U);
}

TEST_F(AuxiliaryTest, ATableThatLosesItsLastRelocationGoes) {
    Section* const text = makeSection();
    Relocation* const relocation = text->addRelocation(0, 1, nullptr);
    module().updateAuxiliarySections();
    find(".rel.text");
    ManualPruneCriteria criteria;
    criteria.addRelocation(relocation);
    module().prune(criteria);
    module().updateAuxiliarySections();
    EXPECT_EQ(text->getRelocationSections().getSize(), 0U);
    EXPECT_EQ(sectionNames(), (Names{"(null)", ".text", ".shstrtab"}));
}

TEST_F(AuxiliaryTest, AStringTableOfAProgramsOwnStays) {
    auto* const own = module().createStringTableSection(".stabstr");
    own->setContents("\0stab", 6);
    makeSection(".stab")->setLink(own);
    module().updateAuxiliarySections();
    EXPECT_EQ(own->getContentsSize(), 6U);
    EXPECT_EQ(find(".stab")->getLink(), own);
}

// --- What they hold

TEST_F(AuxiliaryTest, LocalSymbolsComeFirst) {
    module().createUndefinedSymbol(named("global"));
    module().createAbsoluteSymbol(localNamed("one"), 1);
    module().createUndefinedSymbol(named("other"));
    module().createAbsoluteSymbol(localNamed("two"), 2);
    module().updateAuxiliarySections();
    EXPECT_EQ(namesOf(module().getSymbols()), (Names{"one", "two", "global", "other"}));
    EXPECT_EQ(find(".symtab")->getInfo(), 3U);
    EXPECT_EQ(find(".symtab")->getContentsSize(), 5U * 16);
}

TEST_F(AuxiliaryTest, TheBitOfAFunctionsInstructionSetStays) {
    Section* const text = makeSection();
    text->setSize(16);
    module().createHostedSymbol(named("f", STT_FUNC), text, 5);
    module().createAbsoluteSymbol(named("a", STT_FUNC), 7);
    ObjectModule& again = readBack();
    EXPECT_EQ(again.getSymbol(1)->getOffset(), 5U);
    EXPECT_EQ(again.getSymbol(2)->getAbsoluteValue(), 7U);
}

TEST_F(AuxiliaryTest, NoNameAndTheEmptyNameAreDifferent) {
    module().createUndefinedSymbol(named(nullptr));
    module().createUndefinedSymbol(named(""));
    EXPECT_EQ(namesOf(readBack().getSymbols()), (Names{"(null)", ""}));
}

TEST_F(AuxiliaryTest, AGroupNamesItsSymbol) {
    module().createUndefinedSymbol(named("other"));
    module().createUndefinedSymbol(named("signature"));
    Group* const group = module().createGroup(".group", "signature", GRP_COMDAT);
    Section* const member = module().createSection(".text.f", SHT_PROGBITS, 0, group);
    member->addRelocation(0, 1, nullptr);
    module().updateAuxiliarySections();
    const Section* const table = find(".rel.text.f");
    EXPECT_NE(table->getFlags() & SHF_GROUP, 0U);
    EXPECT_EQ(find(".group")->getIndex(), 1U);
    EXPECT_EQ(find(".group")->getInfo(), 2U);
    EXPECT_EQ(wordsOf(find(".group")),
              (std::vector<uint32_t>{GRP_COMDAT, member->getIndex(), table->getIndex()}));
    EXPECT_STREQ(readBack().getGroup(0)->getSignature(), "signature");
}

TEST_F(AuxiliaryTest, ARenamedGroupHasItsNameInTheFirstFile) {
    module().createUndefinedSymbol(named("signature"));
    Group* const group = module().createGroup(".group", "signature", GRP_COMDAT);
    module().updateAuxiliarySections();
    group->setName(".renamed");
    ObjectModule& again = readBack();
    EXPECT_STREQ(again.getGroup(0)->getName(), ".renamed");
    EXPECT_STREQ(again.getGroup(0)->getSection()->getName(), ".renamed");
}

TEST_F(AuxiliaryTest, AGroupWithoutASymbolGetsOne) {
    module().createUndefinedSymbol(named("global"));
    module().createGroup(".group", "nobody", 0);
    module().updateAuxiliarySections();
    EXPECT_EQ(namesOf(module().getSymbols()), (Names{"nobody", "global"}));
    EXPECT_STREQ(readBack().getGroup(0)->getSignature(), "nobody");
}

TEST_F(AuxiliaryTest, VeryManySectionsAreNumberedBesideTheirSymbols) {
    while (module().getSectionCount() < SHN_LORESERVE + 10) {
        module().createSection(".s", SHT_PROGBITS, 0);
    }
    module().createHostedSymbol(named("far"), module().getSection(SHN_LORESERVE + 5), 1);
    module().createHostedSymbol(named("near"), module().getSection(3), 2);
    module().updateAuxiliarySections();
    EXPECT_EQ(find(".symtab_shndx")->getType(), uint32_t{SHT_SYMTAB_SHNDX});
    EXPECT_EQ(wordsOf(find(".symtab_shndx")), (std::vector<uint32_t>{0, SHN_LORESERVE + 5, 0}));
    ObjectModule& again = readBack();
    EXPECT_EQ(again.getSectionCount(), module().getSectionCount());
    EXPECT_EQ(again.getSymbol(1)->getSection()->getIndex(), SHN_LORESERVE + 5U);
    EXPECT_EQ(again.getSymbol(2)->getSection()->getIndex(), 3U);
    EXPECT_STREQ(again.getSection(7)->getName(), ".s");
}

TEST_F(AuxiliaryTest, TheHashTableFindsEverySymbol) {
    Names names;
    for (int i = 0; i < 40; ++i) {
        names.push_back("symbol" + std::to_string(i));
        module().createDynamicUndefinedSymbol(named(names.back().c_str()));
    }
    module().updateAuxiliarySections();
    const std::vector<uint32_t> hash = wordsOf(find(".hash"));
    const uint32_t buckets = hash[0];
    EXPECT_EQ(hash[1], 41U);
    ASSERT_EQ(hash.size(), 2U + buckets + 41);
    for (uint32_t i = 1; i <= 40; ++i) {
        uint32_t entry = hash[2 + getVersionHash(names[i - 1].c_str()) % buckets];
        while (entry != 0 && entry != i) {
            entry = hash[2 + buckets + entry];
        }
        EXPECT_EQ(entry, i);
    }
}

TEST_F(AuxiliaryTest, ANewDynamicSectionTellsEverything) {
    module().addNeededLibrary("libc.so");
    module().addNeededLibrary("libm.so");
    module().addLibrarySearchPath("/opt", DT_RUNPATH);
    module().setSoName("me.so");
    module().setInit(0x1000);
    module().addDynamicFlags(DF_BIND_NOW);
    ObjectModule& again = readBack();
    EXPECT_EQ(again.getNeededLibraryCount(), 2U);
    EXPECT_STREQ(again.getNeededLibrary(1)->getName(), "libm.so");
    EXPECT_STREQ(again.getLibrarySearchPath(0)->getPath(), "/opt");
    EXPECT_EQ(again.getLibrarySearchPath(0)->getTag(), uint32_t{DT_RUNPATH});
    EXPECT_STREQ(again.getSoName(), "me.so");
    EXPECT_EQ(again.getInit(), uint64_t{0x1000});
    EXPECT_EQ(again.getDynamicFlags(), uint32_t{DF_BIND_NOW});
}

// Whether the dynamic section has been written in between or not.
TEST_F(AuxiliaryTest, TablesThatAreMadeLaterAreToldOfAsWell) {
    const auto tags = [this] {
        const std::vector<uint32_t> words = wordsOf(find(".dynamic"));
        std::multiset<uint32_t> found;
        for (size_t i = 0; words[i] != DT_NULL; i += 2) {
            found.insert(words[i]);
        }
        return found;
    };
    module().addNeededLibrary("a");
    ASSERT_NE(writtenBytes(module()), "");
    EXPECT_EQ(tags(), (std::multiset<uint32_t>{DT_NEEDED, DT_STRTAB, DT_STRSZ, DT_SYMENT}));
    module().createDynamicUndefinedSymbol(named("f"));
    makeSection(".data")->addRelocationWithAddend(0, 1, nullptr, 0)->setIsDynamic(true);
    for (int i = 0; i < 2; ++i) {
        ASSERT_NE(writtenBytes(module()), "");
        EXPECT_EQ(tags(),
                  (std::multiset<uint32_t>{DT_NEEDED, DT_STRTAB, DT_STRSZ, DT_SYMENT, DT_HASH,
                                           DT_SYMTAB, DT_RELA, DT_RELASZ, DT_RELAENT}));
        module().markChanged();
    }
}

TEST_F(AuxiliaryTest, ThePreemptionMapOfTheSystemProfileIsToldByItsPlace) {
    module().setOsAbi(ELFOSABI_QEL);
    module().createDynamicSection();
    module().addPreemption("malloc", "fast.so")->addPreemptedDll("libc.so");
    module().addPreemption("nothing", "none.so"); // preempts nothing, and ends no map
    module().addPreemption("free", "fast.so")->addPreemptedDll("libc.so");
    ObjectModule& again = readBack();
    ASSERT_EQ(again.getPreemptionCount(), 2U);
    EXPECT_STREQ(again.getPreemption(1)->getSymbolName(), "free");
}

TEST_F(AuxiliaryTest, AttributesOfAllKindsOfObjectsComeBack) {
    Section* const text = makeSection();
    Symbol* const symbol = module().createHostedSymbol(named("f"), text, 0);
    const uint8_t foreign[] = {1, 2, 3};
    module().addBuildAttributesBlock("others", foreign, sizeof foreign);
    attributes::BuildAttributes record;
    record.setCpuName("QEL-1");
    record.setTag(attributes::Tag_CPU_arch, 300);
    record.addCompatibilityTag(2, "tools");
    record.addAlsoCompatibilityTag({6, 11});
    record.setTag(attributes::Tag_AV_version, 3);
    text->setBuildAttributes(record);
    record.setTag(attributes::Tag_CPU_arch, 4);
    symbol->setBuildAttributes(record);
    ObjectModule& again = readBack();
    ASSERT_NE(again.findBuildAttributesBlock("others"), nullptr);
    EXPECT_EQ(again.findBuildAttributesBlock("others")->getLength(), 3U);
    ASSERT_NE(again.getSection(1)->getOwnBuildAttributes(), nullptr);
    EXPECT_TRUE(
        again.getSection(1)->getOwnBuildAttributes()->equals(*text->getOwnBuildAttributes()));
    ASSERT_NE(again.getSymbol(1)->getOwnBuildAttributes(), nullptr);
    EXPECT_TRUE(again.getSymbol(1)->getOwnBuildAttributes()->equals(record));
}

// --- In a file that has its place in memory

class AuxiliaryReadTest : public ReaderFormatTest {
protected:
    ObjectModule& readBack() {
        m_Bytes = writtenBytes(module());
        m_Again = std::make_unique<ObjectModule>();
        EXPECT_TRUE(readBytes(m_Bytes, *m_Again, m_Handler));
        return *m_Again;
    }
    void TearDown() override {
        m_Again.reset();
        ReaderFormatTest::TearDown();
    }

private:
    std::string m_Bytes;
    RecordingHandler m_Handler;
    std::unique_ptr<ObjectModule> m_Again;
};

TEST_P(AuxiliaryReadTest, LoadedStringTablesKeepTheirBytes) {
    const testsupport::RichElf rich = richElf(format(), elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    const std::string before = contentsOf(section(rich.dynamicStrings));
    const std::string dynamic = contentsOf(section(rich.dynamic));
    const std::string versions = contentsOf(section(rich.versym));
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(rich.dynamicStrings)), before);
    EXPECT_EQ(contentsOf(section(rich.dynamic)), dynamic);
    EXPECT_EQ(contentsOf(section(rich.versym)), versions);
    for (const size_t table : {rich.verdef, rich.verneed, rich.hash, rich.dynamicSymbols}) {
        EXPECT_EQ(section(table).getContentsSize(), section(table).getSize());
    }
}

TEST_P(AuxiliaryReadTest, SymbolsThatAreHiddenStayHidden) {
    const testsupport::RichElf rich = richElf(format(), elf::ET_DYN);
    std::string bytes = rich.bytes();
    const size_t place = placeOf(bytes, rich.versym);
    const bool isLittle = format().littleEndian;
    for (size_t i = 1; i <= 2; ++i) {
        const uint64_t version = testsupport::readNumber(bytes, place + 2 * i, 2, isLittle);
        testsupport::writeNumber(bytes, place + 2 * i, 2, isLittle, version | 0x8000);
    }
    ASSERT_TRUE(read(bytes));
    const std::string versions = contentsOf(section(rich.versym));
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(rich.versym)), versions);
}

TEST_P(AuxiliaryReadTest, ADynamicSectionThatSaysNothingGoesOnSayingNothing) {
    testsupport::ElfBuilder builder(format(), elf::ET_DYN);
    const size_t names = builder.addStringTable(".dynstr");
    const size_t dynamic =
        builder.addDynamic(names, {{.tag = elf::DT_NULL}, {.tag = elf::DT_DEBUG}});
    ASSERT_TRUE(read(builder.bytes()));
    const uint64_t size = section(dynamic).getSize();
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(dynamic)), std::string(size, '\0'));
}

TEST_P(AuxiliaryReadTest, RemovedLibrariesLeaveTheDynamicSection) {
    const testsupport::RichElf rich = richElf(format(), elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    ASSERT_NE(module().getNeededLibraryCount(), 0U);
    const uint64_t size = section(rich.dynamic).getSize();
    ManualPruneCriteria criteria;
    criteria.addNeededLibrary(module().getNeededLibrary(0));
    const uint32_t count = module().getNeededLibraryCount() - 1;
    module().prune(criteria);
    module().setInit({});
    ObjectModule& again = readBack();
    EXPECT_EQ(again.getNeededLibraryCount(), count);
    EXPECT_FALSE(again.getInit().has_value());
    EXPECT_EQ(again.getSection(static_cast<uint32_t>(rich.dynamic))->getSize(), size);
    EXPECT_EQ(again.getPreemptionCount(), module().getPreemptionCount());
}

TEST_P(AuxiliaryReadTest, ATableThatHasGrownHasNoPlaceUntilLayout) {
    const testsupport::RichElf rich = richElf(format(), elf::ET_REL);
    ASSERT_TRUE(read(rich));
    SymbolFields fields;
    fields.m_Name = "another";
    fields.m_Binding = STB_GLOBAL;
    module().createUndefinedSymbol(fields);
    module().updateAuxiliarySections();
    EXPECT_FALSE(section(rich.symbols).isFileOffsetKnown());
    ASSERT_TRUE(layOutElfFile(&module()));
    EXPECT_TRUE(section(rich.symbols).isFileOffsetKnown());
}

INSTANTIATE_FORMATS(AuxiliaryReadTest);

// --- The order of sections

TEST_F(AuxiliaryTest, TheOrderThatLinkersExpect) {
    module().clear();
    Section* const strings = module().createStringTableSection("strings");
    static_cast<StringTableSection*>(strings)->setServesSymbols(true);
    Section* const symbols = module().createSymbolTableSection(SHT_SYMTAB, "symbols");
    Section* const text = makeSection("text");
    Section* const data = makeSection("data");
    auto* const ofData = module().createRelocationSection("of data", SHT_REL, 0);
    ofData->setTarget(data, false);
    auto* const ofText = module().createRelocationSection("of text", SHT_REL, 0);
    ofText->setTarget(text, false);
    auto* const loaded = module().createRelocationSection("loaded", SHT_REL, SHF_ALLOC);
    loaded->setTarget(text, true);
    module().createGroupSection("group");
    symbols->setLink(strings);
    module().imposeSectionOrder();
    EXPECT_EQ(sectionNames(), (Names{"(null)", "group", "text", "of text", "data", "of data",
                                     "loaded", "strings", "symbols"}));
    EXPECT_EQ(module().getSection(0)->getType(), uint32_t{SHT_NULL});
    EXPECT_EQ(symbols->getIndex(), 8U);
    module().imposeSectionOrder();
    EXPECT_EQ(module().getSectionCount(), 9U);
}

TEST_F(AuxiliaryTest, ANullSectionThatIsThereComesFirst) {
    module().clear();
    makeSection();
    Section* const null = module().createNullSection(0);
    module().imposeSectionOrder();
    EXPECT_EQ(module().getSectionCount(), 2U);
    EXPECT_EQ(null->getIndex(), 0U);
}

// --- String tables

TEST(StringTableBuilderTest, TextsShareTheirEnds) {
    StringTableBuilder builder;
    for (const char* const text : {"bar", "foobar", "ar", "baz", "foobar"}) {
        builder.add(text);
    }
    builder.add(nullptr);
    builder.build();
    EXPECT_EQ(builder.bytes().size(), 1U + 7 + 4);
    EXPECT_EQ(builder.offsetOf("bar"), builder.offsetOf("foobar") + 3);
    EXPECT_EQ(builder.offsetOf("ar"), builder.offsetOf("foobar") + 4);
    EXPECT_EQ(builder.offsetOf(nullptr), 0U);
    const auto* const bytes = reinterpret_cast<const char*>(builder.bytes().data());
    for (const char* const text : {"bar", "foobar", "ar", "baz"}) {
        EXPECT_STREQ(bytes + builder.offsetOf(text), text);
    }
}

TEST(StringTableBuilderTest, KeptBytesStayWhereTheyAre) {
    const char kept[] = "\0one\0other";
    StringTableBuilder builder;
    builder.keep({reinterpret_cast<const uint8_t*>(kept), sizeof kept});
    for (const char* const text : {"her", "one", "new", "another", ""}) {
        builder.add(text);
    }
    builder.build();
    EXPECT_EQ(builder.offsetOf("one"), 1U);
    EXPECT_EQ(builder.offsetOf("her"), 7U); // the end of what is there
    EXPECT_EQ(std::memcmp(builder.bytes().data(), kept, sizeof kept), 0);
    EXPECT_EQ(builder.bytes()[builder.offsetOf("")], 0U);
    EXPECT_NE(builder.offsetOf(""), 0U);
    const auto* const bytes = reinterpret_cast<const char*>(builder.bytes().data());
    EXPECT_STREQ(bytes + builder.offsetOf("new"), "new");
}

TEST(StringTableBuilderTest, TheEmptyTextHasAPlaceOfItsOwn) {
    StringTableBuilder builder;
    builder.add("");
    builder.build();
    EXPECT_EQ(builder.offsetOf(""), 1U);
    EXPECT_EQ(builder.bytes(), (std::vector<uint8_t>{0, 0}));
}

} // namespace
} // namespace elfext::test
