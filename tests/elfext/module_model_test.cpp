// The module as a whole: its fields and their defaults, texts and images, emptiness, clearing.
#include "alloclib/interface/region_stats.h"
#include "elfext/interface/deferred_contents.h"
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/version_records.h"
#include "elfext/src/low_level.h"
#include "tests/elfext/model_fixtures.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>

namespace elfext::test {
namespace {

using ModuleTest = ModelTest;
using ModuleDeathTest = ModelTest;

constexpr const char* source = "elfext/src/object_module";

TEST_F(ModuleTest, StartsAsAnEmptyLittleEndian32BitFile) {
    const ObjectModule& fresh = module();
    EXPECT_TRUE(fresh.isEmpty());
    EXPECT_EQ(fresh.getMachine(), 40U);
    EXPECT_EQ(fresh.getClass(), 1U);
    EXPECT_FALSE(fresh.is64Bit());
    EXPECT_EQ(fresh.getEndianness(), 1U);
    EXPECT_TRUE(fresh.isLittleEndian());
    EXPECT_EQ(fresh.getOsAbi(), 0U);
    EXPECT_EQ(fresh.getAbiVersion(), 0U);
    EXPECT_EQ(fresh.getType(), 0U);
    EXPECT_EQ(fresh.getProperties(), 0U);
    EXPECT_EQ(fresh.getEntryPoint(), 0U);
    EXPECT_EQ(fresh.getFlags(), 0U);
    EXPECT_EQ(fresh.getIdentVersion(), 1U);
    EXPECT_EQ(fresh.getVersion(), 1U);
    EXPECT_EQ(fresh.getSectionHeaderOffset(), 0U);
    EXPECT_EQ(fresh.getProgramHeaderOffset(), 0U);
    EXPECT_EQ(fresh.getSectionHeaderCount(), 0U);
    EXPECT_EQ(fresh.getProgramHeaderCount(), 0U);
    EXPECT_EQ(fresh.getSectionHeaderSize(), 40U);
    EXPECT_EQ(fresh.getProgramHeaderSize(), 32U);
    EXPECT_EQ(fresh.getReadBuffer(), nullptr);
    EXPECT_FALSE(fresh.isContentsInReadBuffer());
    EXPECT_EQ(fresh.getErrorHandler(), nullptr);
    EXPECT_FALSE(fresh.getReaderOption(0));
    EXPECT_FALSE(fresh.getReaderOption(1));
    EXPECT_EQ(fresh.getFileName(), nullptr);
    EXPECT_EQ(fresh.getObjectName(), nullptr);
    EXPECT_EQ(fresh.getReferenceCountedFile(), nullptr);
    EXPECT_FALSE(fresh.areIndexesFrozen());
    EXPECT_TRUE(fresh.areSymbolListsSorted());
    EXPECT_NE(fresh.getBuildAttributesCache(), nullptr);
    EXPECT_NE(fresh.getObjectRegion(), fresh.getContainerRegion());
}

TEST_F(ModuleTest, RegionsAreNamedInStatistics) {
    const auto nameOf = [](alloclib::Region* owner) {
        return static_cast<alloclib::RegionGeneral*>(owner)->statistics()->name;
    };
    EXPECT_STREQ(nameOf(module().getObjectRegion()), "elfext::ObjectModule::ObjectRegion");
    EXPECT_STREQ(nameOf(module().getContainerRegion()), "elfext::ObjectModule::ContainerRegion");
}

TEST_F(ModuleTest, StartsWithoutDynamicValues) {
    const ObjectModule& fresh = module();
    EXPECT_EQ(fresh.getSoName(), nullptr);
    for (const auto& value :
         {fresh.getInit(), fresh.getFini(), fresh.getInitArray(), fresh.getInitArraySize(),
          fresh.getPreinitArray(), fresh.getPreinitArraySize(), fresh.getFiniArray(),
          fresh.getFiniArraySize()}) {
        EXPECT_FALSE(value.has_value());
    }
    EXPECT_EQ(fresh.getDynamicFlags(), 0U);
    EXPECT_FALSE(fresh.hasDynamicFlags());
}

TEST_F(ModuleTest, HeaderSizeDependsOnTheMagicInUse) {
    EXPECT_FALSE(lowlevel::isPlainMagicInUse());
    EXPECT_EQ(module().getElfHeaderSize(), 60U);
    lowlevel::setPlainMagicInUse(true);
    const ObjectModule plain;
    lowlevel::setPlainMagicInUse(false);
    EXPECT_EQ(plain.getElfHeaderSize(), 52U);
    module().setElfHeaderSize(64);
    EXPECT_EQ(module().getElfHeaderSize(), 64U);
}

TEST_F(ModuleTest, HeaderFieldsHoldWhatIsSet) {
    module().setMachine(EM_QEL64);
    module().setClass(ELFCLASS64);
    module().setOsAbi(64);
    module().setAbiVersion(3);
    module().setType(ET_DYN);
    module().setProperties(ModuleProperty_FromFile | ModuleProperty_DebugTag);
    module().setEntryPoint(0x123456789A);
    module().setFlags(0x5000000);
    module().setIdentVersion(7);
    module().setVersion(8);
    module().setSectionHeaderOffset(0x1FFFFFFFF);
    module().setProgramHeaderOffset(0x2FFFFFFFF);
    module().setSectionHeaderCount(0xFFFF);
    module().setProgramHeaderCount(0xFFFE);
    module().setSectionHeaderSize(64);
    module().setProgramHeaderSize(56);
    module().setReaderOption(1, true);
    EXPECT_EQ(module().getMachine(), 183U);
    EXPECT_TRUE(module().is64Bit());
    EXPECT_EQ(module().getOsAbi(), 64U);
    EXPECT_EQ(module().getAbiVersion(), 3U);
    EXPECT_EQ(module().getType(), 3U);
    EXPECT_EQ(module().getProperties(), 0x220U);
    EXPECT_EQ(module().getEntryPoint(), 0x123456789AU);
    EXPECT_EQ(module().getFlags(), 0x5000000U);
    EXPECT_EQ(module().getIdentVersion(), 7U);
    EXPECT_EQ(module().getVersion(), 8U);
    EXPECT_EQ(module().getSectionHeaderOffset(), 0x1FFFFFFFFU);
    EXPECT_EQ(module().getProgramHeaderOffset(), 0x2FFFFFFFFU);
    EXPECT_EQ(module().getSectionHeaderCount(), 0xFFFFU);
    EXPECT_EQ(module().getProgramHeaderCount(), 0xFFFEU);
    EXPECT_EQ(module().getSectionHeaderSize(), 64U);
    EXPECT_EQ(module().getProgramHeaderSize(), 56U);
    EXPECT_FALSE(module().getReaderOption(0));
    EXPECT_TRUE(module().getReaderOption(1));
}

TEST_F(ModuleTest, PropertyBits) {
    EXPECT_EQ(ModuleProperty_ElfHeaderLoaded, 0x00000001U);
    EXPECT_EQ(ModuleProperty_SectionHeaderTableLoaded, 0x00000002U);
    EXPECT_EQ(ModuleProperty_ProgramHeaderTableLoaded, 0x00000004U);
    EXPECT_EQ(ModuleProperty_SymbolWithBuildAttributes, 0x00000008U);
    EXPECT_EQ(ModuleProperty_BuildAttributesSection, 0x00000010U);
    EXPECT_EQ(ModuleProperty_DebugTag, 0x00000020U);
    EXPECT_EQ(ModuleProperty_QelModuleTag, 0x00000040U);
    EXPECT_EQ(ModuleProperty_NoSectionHeaders, 0x00000100U);
    EXPECT_EQ(ModuleProperty_FromFile, 0x00000200U);
    EXPECT_EQ(ModuleProperty_OffsetIncongruent, 0x20000000U);
    EXPECT_EQ(ModuleProperty_AuxiliarySectionWithSymbols, 0x40000000U);
    EXPECT_EQ(ModuleProperty_AuxiliarySectionWithRelocations, 0x80000000U);
}

TEST_F(ModuleTest, AddressesAreInFilesOfTypes2To4) {
    for (const auto& [type, has] :
         {std::pair{0U, false}, {1U, false}, {2U, true}, {3U, true}, {4U, true}, {5U, false}}) {
        module().setType(type);
        EXPECT_EQ(module().hasAddresses(), has) << type;
    }
}

TEST_F(ModuleTest, ByteOrderGoesWithTheEncoding) {
    module().setEndianness(2);
    EXPECT_EQ(module().getEndianness(), 2U);
    EXPECT_FALSE(module().isLittleEndian());
    module().setEndianness(1);
    EXPECT_TRUE(module().isLittleEndian());
    module().setEndianness(3);
    EXPECT_EQ(module().getEndianness(), 3U);
    EXPECT_FALSE(module().isLittleEndian());
}

TEST_F(ModuleTest, NamesAreCopied) {
    char name[] = "libc.a";
    module().setFileName(name);
    module().setObjectName(name);
    name[0] = 'X';
    EXPECT_STREQ(module().getFileName(), "libc.a");
    EXPECT_STREQ(module().getObjectName(), "libc.a");
    module().setFileName(nullptr);
    EXPECT_EQ(module().getFileName(), nullptr);
}

TEST_F(ModuleTest, AMembersNameHoldsItsArchives) {
    module().setMemberName("lib.a", "x.o");
    EXPECT_STREQ(module().getObjectName(), "lib.a(x.o)");
    module().setMemberName("", "");
    EXPECT_STREQ(module().getObjectName(), "()");
}

TEST_F(ModuleDeathTest, AMembersNameNeedsBothNames) {
    EXPECT_FAULT(module().setMemberName(nullptr, "x"), source, "archiveName != NULL");
    EXPECT_FAULT(module().setMemberName("x", nullptr), source, "memberName != NULL");
}

TEST_F(ModuleTest, TextsInAnImageAreNotCopied) {
    const char image[] = "\0one\0two";
    const auto* const bytes = reinterpret_cast<const uint8_t*>(image);
    EXPECT_NE(module().keepText(image + 1), image + 1);
    module().setReadBuffer(bytes, 5, true);
    EXPECT_EQ(module().getReadBuffer(), bytes);
    EXPECT_TRUE(module().isContentsInReadBuffer());
    EXPECT_EQ(module().keepText(image), image);
    EXPECT_EQ(module().keepText(image + 4), image + 4);
    EXPECT_NE(module().keepText(image + 5), image + 5);
    EXPECT_STREQ(module().keepText(image + 5), "two");
    EXPECT_EQ(module().keepText(nullptr), nullptr);
    EXPECT_EQ(makeSection(image + 1)->getName(), image + 1);
    EXPECT_EQ(module().createUndefinedSymbol(named(image + 1))->getName(), image + 1);
    module().releaseImages();
    EXPECT_EQ(module().getReadBuffer(), nullptr);
    EXPECT_FALSE(module().isContentsInReadBuffer());
    EXPECT_NE(module().keepText(image + 1), image + 1);
}

TEST_F(ModuleTest, AnAdoptedImageIsTheModules) {
    auto image = std::make_unique<uint8_t[]>(4);
    std::memcpy(image.get(), "abc", 4);
    const char* const text = reinterpret_cast<const char*>(image.get());
    module().adoptImage(std::move(image), 4);
    EXPECT_EQ(module().keepText(text), text);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(module().getReadBuffer(), nullptr);
    module().setFileName(text);
    EXPECT_NE(module().getFileName(), text);
    module().adoptImage(nullptr, 4);
    EXPECT_STREQ(module().getFileName(), "abc");
}

TEST_F(ModuleTest, DynamicValuesHoldWhatIsSetUntilTheyAreForgotten) {
    module().setInit(1);
    module().setFini(2);
    module().setInitArray(3);
    module().setInitArraySize(4);
    module().setPreinitArray(5);
    module().setPreinitArraySize(6);
    module().setFiniArray(7);
    module().setFiniArraySize(0);
    module().addDynamicFlags(DF_SYMBOLIC);
    module().addDynamicFlags(DF_BIND_NOW);
    EXPECT_EQ(module().getInit(), 1U);
    EXPECT_EQ(module().getFini(), 2U);
    EXPECT_EQ(module().getInitArray(), 3U);
    EXPECT_EQ(module().getInitArraySize(), 4U);
    EXPECT_EQ(module().getPreinitArray(), 5U);
    EXPECT_EQ(module().getPreinitArraySize(), 6U);
    EXPECT_EQ(module().getFiniArray(), 7U);
    EXPECT_EQ(module().getFiniArraySize(), 0U);
    EXPECT_EQ(module().getDynamicFlags(), 10U);
    EXPECT_TRUE(module().hasDynamicFlags());
    module().setSoName("libx.so");
    module().forgetDynamicValues();
    EXPECT_EQ(module().getSoName(), nullptr);
    EXPECT_FALSE(module().getInit().has_value());
    EXPECT_FALSE(module().getFiniArraySize().has_value());
    EXPECT_EQ(module().getDynamicFlags(), 0U);
    EXPECT_FALSE(module().hasDynamicFlags());
}

TEST_F(ModuleTest, DynamicFlagsOfZeroWereSeenToo) {
    module().addDynamicFlags(0);
    EXPECT_TRUE(module().hasDynamicFlags());
    EXPECT_EQ(module().getDynamicFlags(), 0U);
}

TEST_F(ModuleTest, AnEqualSoNameIsNotCopied) {
    char name[] = "libx.so";
    module().setSoName(name);
    const char* const kept = module().getSoName();
    EXPECT_NE(kept, name);
    module().setAuxiliarySectionsUpToDate(true);
    module().setSoName("libx.so");
    EXPECT_EQ(module().getSoName(), kept);
    EXPECT_TRUE(module().areAuxiliarySectionsUpToDate());
    module().setSoName("liby.so");
    EXPECT_STREQ(module().getSoName(), "liby.so");
    EXPECT_FALSE(module().areAuxiliarySectionsUpToDate());
    module().setSoName(nullptr);
    EXPECT_EQ(module().getSoName(), nullptr);
}

TEST_F(ModuleTest, EachKindOfObjectEndsEmptiness) {
    const auto isEmptyAfter = [](auto&& action) {
        ObjectModule fresh;
        action(fresh);
        const bool isEmpty = fresh.isEmpty();
        fresh.clear();
        EXPECT_TRUE(fresh.isEmpty());
        return isEmpty;
    };
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.createNullSection(0); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.createGroup("g", "s", 0); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.createUndefinedSymbol(SymbolFields()); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.createDynamicUndefinedSymbol(SymbolFields()); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.addNeededLibrary("l"); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.addLibrarySearchPath("p", DT_RPATH); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.addPreemption("s", "d"); }));
    EXPECT_FALSE(isEmptyAfter([](auto& m) { m.createRawDataBlock(1); }));
    EXPECT_TRUE(isEmptyAfter([](auto& m) { m.createSegment(SegmentFields()); }));
    EXPECT_TRUE(isEmptyAfter([](auto& m) { m.setSoName("x"); }));
}

TEST_F(ModuleTest, ClearingRemovesEverything) {
    Section* const text = makeSection();
    module().createStringTableSection(".strtab");
    module().createSymbolTableSection(SHT_SYMTAB);
    module().createHostedSymbol(named("a"), text, 4);
    module().createAbsoluteSymbol(named("b"), 4);
    module().createCommonSymbol(named("c"), 4);
    module().createDynamicUndefinedSymbol(named("d"));
    EXPECT_EQ(module().getSymbolsSortedByName().getSize(), 3U);
    module().createGroup("g", "signature", GRP_COMDAT);
    module().createSegment(SegmentFields());
    module().addNeededLibrary("l");
    module().addLibrarySearchPath("p", DT_RPATH);
    module().addPreemption("s", "d");
    module().createRawDataBlock(5);
    module().addDebugOverlayRecord({});
    module().createFileVersionDefinition(1, 1);
    module().setSoName("x.so");
    module().setProperties(ModuleProperty_FromFile);
    module().getSectionHeaderTable().setCount(5);
    module().getSectionHeaderTable().setEntrySize(40);
    module().setFileName("x.o");
    module().setMachine(EM_QEL64);
    const uint8_t image[4] = {};
    module().setReadBuffer(image, 4, true);

    module().setAuxiliarySectionsUpToDate(true);
    module().clear();
    EXPECT_FALSE(module().areAuxiliarySectionsUpToDate());
    EXPECT_TRUE(module().isEmpty());
    EXPECT_EQ(module().getSectionCount(), 0U);
    EXPECT_EQ(module().getStringTableSections().getSize(), 0U);
    EXPECT_EQ(module().getSymtabSections().getSize(), 0U);
    EXPECT_EQ(module().getSegmentCount(), 0U);
    EXPECT_EQ(module().getAbsoluteSymbols().getSize(), 0U);
    EXPECT_EQ(module().getCommonSymbols().getSize(), 0U);
    EXPECT_EQ(module().getUndefinedDynamicSymbols().getSize(), 0U);
    EXPECT_EQ(module().getSymbolsSortedByName().getSize(), 0U);
    EXPECT_EQ(module().getDebugOverlayRecords().getSize(), 0U);
    EXPECT_EQ(module().findComdatGroup("signature"), nullptr);
    EXPECT_EQ(module().getFileVersionDefinition(), nullptr);
    EXPECT_EQ(module().getSoName(), nullptr);
    EXPECT_EQ(module().getProperties(), 0U);
    EXPECT_EQ(module().getReadBuffer(), nullptr);
    EXPECT_EQ(module().getSectionHeaderTable().getCount(), 0U);
    EXPECT_STREQ(module().getFileName(), "x.o");
    EXPECT_EQ(module().getMachine(), 183U);
}

TEST_F(ModuleTest, AClearedModuleCanBeFilledAgain) {
    for (uint32_t round = 0; round < 3; ++round) {
        Section* const text = makeSection();
        EXPECT_EQ(text->getIndex(), 0U);
        EXPECT_EQ(module().getSymbolIndex(module().createHostedSymbol(named("a"), text, 4)), 1U);
        EXPECT_EQ(namesOf(module().getSymbolsSortedByName()), Names{"a"});
        module().createGroup("g", "signature", GRP_COMDAT);
        EXPECT_EQ(module().findComdatGroup("signature"), module().getGroup(0));
        module().clear();
    }
}

TEST_F(ModuleTest, ClearingAnEmptyModuleDoesNothing) {
    const uint8_t image[4] = {};
    module().setReadBuffer(image, 4, true);
    module().setSoName("x.so");
    module().setAuxiliarySectionsUpToDate(true);
    module().clear();
    EXPECT_TRUE(module().areAuxiliarySectionsUpToDate());
    EXPECT_EQ(module().getReadBuffer(), image);
    EXPECT_STREQ(module().getSoName(), "x.so");
}

TEST_F(ModuleDeathTest, FrozenIndexesForbidChangesOfStructure) {
    Section* const text = makeSection();
    module().setIndexesFrozen(true);
    EXPECT_TRUE(module().areIndexesFrozen());
    const std::string frozen = "!m_IndexesFrozen";
    constexpr const char* maker = "elfext/src/object_module_make";
    EXPECT_FAULT(module().clear(), source, frozen);
    EXPECT_FAULT(makeSection(), maker, frozen);
    EXPECT_FAULT(module().createUndefinedSymbol(SymbolFields()), maker, frozen);
    EXPECT_FAULT(module().createGroup("g", "s", 0), maker, frozen);
    EXPECT_FAULT(module().createSegment(SegmentFields()), maker, frozen);
    EXPECT_FAULT(module().addNeededLibrary("l"), maker, frozen);
    EXPECT_FAULT(module().createRawDataBlock(0), maker, frozen);
    EXPECT_FAULT(module().setSectionIndex(text, 0), maker, frozen);
    module().setIndexesFrozen(false);
    EXPECT_EQ(makeSection()->getIndex(), 1U);
}

TEST_F(ModuleTest, EveryChangeOutdatesTheAuxiliarySections) {
    Section* const text = makeSection();
    Symbol* const symbol = module().createAbsoluteSymbol(named("a"), 1);
    Segment* const segment = module().createSegment(SegmentFields());
    Group* const group = module().createGroup("g", "s", 0);
    Preemption* const preemption = module().addPreemption("s", "d");
    Relocation* const relocation = text->addRelocation(0, 1, nullptr);
    EXPECT_NE(relocation, nullptr);
    const auto outdates = [this](auto&& action) {
        module().setAuxiliarySectionsUpToDate(true);
        action();
        return !module().areAuxiliarySectionsUpToDate();
    };
    EXPECT_TRUE(outdates([&] { text->setName(".x"); }));
    EXPECT_TRUE(outdates([&] { text->setFlags(1); }));
    EXPECT_TRUE(outdates([&] { text->setAddress(1); }));
    EXPECT_TRUE(outdates([&] { text->setSize(1); }));
    EXPECT_TRUE(outdates([&] { text->setAlignment(1); }));
    EXPECT_TRUE(outdates([&] { text->setEntrySize(1); }));
    EXPECT_TRUE(outdates([&] { text->setLink(text); }));
    EXPECT_TRUE(outdates([&] { text->setInfo(1); }));
    EXPECT_TRUE(outdates([&] { text->setSegment(segment); }));
    EXPECT_TRUE(outdates([&] { text->addRelocation(0, 1, symbol); }));
    EXPECT_TRUE(outdates([&] { symbol->setName("b"); }));
    EXPECT_TRUE(outdates([&] { symbol->setSize(1); }));
    EXPECT_TRUE(outdates([&] { symbol->setType(1); }));
    EXPECT_TRUE(outdates([&] { symbol->setBinding(1); }));
    EXPECT_TRUE(outdates([&] { symbol->setVisibility(1); }));
    EXPECT_TRUE(outdates([&] { symbol->setAbsoluteValue(1); }));
    EXPECT_TRUE(outdates([&] { symbol->makeUndefined(); }));
    EXPECT_TRUE(outdates([&] { symbol->setLinkedSymbol(symbol); }));
    EXPECT_TRUE(outdates([&] { segment->setType(1); }));
    EXPECT_TRUE(outdates([&] { segment->setAlignment(1); }));
    EXPECT_TRUE(outdates([&] { segment->setFileSize(1); }));
    EXPECT_TRUE(outdates([&] { group->setName("h"); }));
    EXPECT_TRUE(outdates([&] { group->setFlags(1); }));
    EXPECT_TRUE(outdates([&] { group->setSignature("t"); }));
    EXPECT_TRUE(outdates([&] { group->addMember(text); }));
    EXPECT_TRUE(outdates([&] { group->removeMember(text); }));
    EXPECT_TRUE(outdates([&] { preemption->addPreemptedDll("x"); }));
    EXPECT_TRUE(outdates([&] { module().addNeededLibrary("x"); }));
    EXPECT_TRUE(outdates([&] { module().addDynamicFlags(1); }));
    EXPECT_TRUE(outdates([&] { module().addDebugOverlayRecord({}); }));
    EXPECT_TRUE(outdates([&] { module().setSymbolIndex(symbol, 1); }));
    EXPECT_FALSE(outdates([&] { module().getSymbolsSortedByName(); }));
    EXPECT_FALSE(outdates([&] { text->getRelocationsSortedByOffset(); }));
}

// What the headers say decides how the tables of the file look.
TEST_F(ModuleTest, EveryChangeOfTheFilesFieldsOutdatesTheAuxiliarySections) {
    using DynamicValue = ObjectModule::DynamicValue;
    const std::function<void()> changes[] = {
        [this] { module().setMachine(EM_QEL64); },
        [this] { module().setClass(ELFCLASS64); },
        [this] { module().setEndianness(ELFDATA2MSB); },
        [this] { module().setOsAbi(ELFOSABI_QEL); },
        [this] { module().setAbiVersion(1); },
        [this] { module().setType(ET_EXEC); },
        [this] { module().setEntryPoint(1); },
        [this] { module().setFlags(1); },
        [this] { module().setIdentVersion(1); },
        [this] { module().setVersion(1); },
        [this] { module().setSoName("name"); },
        [this] { module().setInit(DynamicValue(1)); },
        [this] { module().setFini(DynamicValue(1)); },
        [this] { module().setInitArray(DynamicValue(1)); },
        [this] { module().setInitArraySize(DynamicValue(1)); },
        [this] { module().setPreinitArray(DynamicValue(1)); },
        [this] { module().setPreinitArraySize(DynamicValue(1)); },
        [this] { module().setFiniArray(DynamicValue(1)); },
        [this] { module().setFiniArraySize(DynamicValue(1)); },
    };
    for (size_t i = 0; i < std::size(changes); ++i) {
        module().setAuxiliarySectionsUpToDate(true);
        changes[i]();
        EXPECT_FALSE(module().areAuxiliarySectionsUpToDate()) << i;
    }
}

// --- Deferred contents

// Puts the section's offset in the file into its buffer, as often as it is called.
bool loadOffset(Section& section, const DeferredContents& deferredContents) {
    section.getLoadedContents().setSize(1);
    section.getLoadedContents().setUint8(
        0, static_cast<uint8_t>(deferredContents.getSectionHeader().sh_offset));
    return true;
}

bool failToLoad(Section& /*section*/, const DeferredContents& /*deferredContents*/) {
    return false;
}

class DeferredModuleTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        m_File = module().keepFile(std::tmpfile());
        ASSERT_NE(m_File->getFile(), nullptr);
    }
    Section* deferredSection(uint64_t offset, DeferredContents::LoadFunction load = loadOffset) {
        Section* const section = makeSection();
        section->setSize(1);
        Elf64_Shdr header = {};
        header.sh_offset = offset;
        m_Records.push_back(std::make_unique<DeferredContents>(m_File, header, load));
        section->deferContents(m_Records.back().get());
        return section;
    }
    ReferenceCountedFile* m_File = nullptr;
    std::vector<std::unique_ptr<DeferredContents>> m_Records;
};
using DeferredModuleDeathTest = DeferredModuleTest;

TEST_F(DeferredModuleTest, TheFileClosesWithItsLastSection) {
    EXPECT_FALSE(module().hasDeferredContents());
    Section* const first = deferredSection(5);
    Section* const second = deferredSection(6);
    EXPECT_TRUE(module().hasDeferredContents());
    EXPECT_TRUE(first->isContentsDeferred());
    EXPECT_EQ(first->getDeferredContents()->getReferenceCountedFile(), m_File);
    EXPECT_EQ(m_File->getReferenceCount(), 2U);
    Buffer* const contents = first->getContents();
    ASSERT_NE(contents, nullptr);
    EXPECT_EQ(contents->getUint8(0), 5U);
    EXPECT_FALSE(first->isContentsDeferred());
    EXPECT_EQ(m_File->getReferenceCount(), 1U);
    EXPECT_NE(m_File->getFile(), nullptr);
    EXPECT_EQ(second->getContents()->getUint8(0), 6U);
    EXPECT_EQ(m_File->getFile(), nullptr);
    EXPECT_FALSE(module().hasDeferredContents());
    EXPECT_EQ(first->getContents(), contents);
}

TEST_F(DeferredModuleTest, AFailureClosesTheFileAndLeavesTheContentsDeferred) {
    Section* const section = deferredSection(5, failToLoad);
    Section* const other = deferredSection(6);
    EXPECT_EQ(section->getContents(), nullptr);
    EXPECT_TRUE(section->isContentsDeferred());
    EXPECT_EQ(m_File->getFile(), nullptr);
    EXPECT_EQ(section->getContents(), nullptr);
    EXPECT_TRUE(other->isContentsDeferred());
}

TEST_F(DeferredModuleTest, ClearingGivesTheFileBack) {
    deferredSection(5);
    deferredSection(6);
    m_File->addReference();
    std::FILE* const file = m_File->getFile();
    module().clear();
    EXPECT_EQ(module().getReferenceCountedFile(), nullptr);
    EXPECT_FALSE(module().hasDeferredContents());
    EXPECT_EQ(m_File->getReferenceCount(), 1U);
    EXPECT_EQ(m_File->getFile(), file);
    m_File->release();
    EXPECT_EQ(m_File->getFile(), nullptr);
}

TEST_F(DeferredModuleTest, WritingGetsTheContentsIn) {
    Section* const section = deferredSection(5);
    const uint8_t value = 9;
    section->write(0, &value, 1);
    EXPECT_FALSE(section->isContentsDeferred());
    EXPECT_EQ(section->getLoadedContents().getUint8(0), 9U);
}

TEST_F(DeferredModuleDeathTest, NeitherNameNorByteOrderChangeMeanwhile) {
    Section* const section = deferredSection(5);
    EXPECT_FAULT(module().setFileName("x"), source, "!hasDeferredContents()");
    EXPECT_FAULT(module().setEndianness(1), source, "!hasDeferredContents()");
    uint8_t byte = 0;
    EXPECT_FAULT(section->read(0, &byte, 1), "elfext/interface/section", "!isContentsDeferred()");
    EXPECT_FAULT(section->setContents(&byte, 1), "elfext/src/section", "!isContentsDeferred()");
}

TEST_F(DeferredModuleDeathTest, ARecordNeedsAFile) {
    EXPECT_FAULT(DeferredContents(nullptr, Elf64_Shdr(), loadOffset),
                 "elfext/interface/deferred_contents", "referenceCountedFile != NULL");
    EXPECT_FAULT(m_File->release(), "elfext/src/deferred_contents", "m_ReferenceCount != 0");
}

} // namespace
} // namespace elfext::test
