// What tells of sections, symbols and versions by their numbers, and must follow when some of them
// go or move; and attributes sections and memory that are not to be had.
#include "attributes/interface/build_attributes.h"
#include "tests/elfext/allocation_failure.h"
#include "tests/elfext/attribute_section_builder.h"
#include "tests/elfext/stale_tables_fixtures.h"

#include <map>

namespace elfext::test {
namespace {

using testsupport::ElfBuilder;
using testsupport::RichElf;

namespace elf = testsupport::elf;

INSTANTIATE_FORMATS(StaleTablesTest);

// --- Versions

TEST_P(StaleTablesTest, HiddenVersionsStayHiddenWhenSymbolsGo) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    std::string file = rich.bytes(); // versions 2, 1, 3, 1
    for (const auto& [entry, number] :
         std::map<uint64_t, uint64_t>{{2, 0x8001}, {3, 0x8003}, {4, 0}}) {
        setContentsNumber(file, rich.versym, 2 * entry, 2, number);
    }
    ASSERT_TRUE(read(file));
    EXPECT_FALSE(module().getDynamicSymbol(1)->isVersionHidden());
    EXPECT_TRUE(module().getDynamicSymbol(3)->isVersionHidden());
    pruneDynamicSymbol(1);
    readBackTheSame();
    EXPECT_EQ(contentsOf(section(rich.versym)),
              bytes().half(0).half(0x8001).half(0x8003).half(0).bytes());
    module().getDynamicSymbol(2)->setVersionEntry(Symbol::NoVersionEntry);
    module().getDynamicSymbol(3)->setVersionEntry(VER_NDX_GLOBAL | VERSYM_HIDDEN);
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(rich.versym)),
              bytes().half(0).half(0x8001).half(3).half(0x8001).bytes());
}

TEST_P(StaleTablesTest, NumbersOfVersionsThatWereNotReadFollowTheirSymbols) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    std::string file = rich.bytes();
    constexpr uint64_t verneedTag = 15; // of the entries of the dynamic section
    setContentsNumber(file, rich.dynamic, verneedTag * 2 * width(), width(), 0x60000001);
    ASSERT_TRUE(read(file));
    ASSERT_EQ(module().getDynamicSymbol(1)->getSymbolVersionDefinition(), nullptr);
    pruneDynamicSymbol(2);
    readBackTheSame();
    EXPECT_EQ(contentsOf(section(rich.versym)), bytes().half(0).half(2).half(3).half(1).bytes());
}

TEST_P(StaleTablesTest, ASymbolThatLosesItsSectionLosesItsVersion) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    prune({&section(rich.text)});
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(*module().getVersymSections()[0]),
              bytes().half(0).half(1).half(1).half(3).half(1).bytes());
}

// --- Notes that tell the segments of sections

class SegmentNotesTest : public StaleTablesTest {
protected:
    void SetUp() override {
        StaleTablesTest::SetUp();
        rich = richElf(format(), elf::ET_DYN);
        ASSERT_TRUE(read(rich));
        ASSERT_EQ(segmentOf(section(rich.text)), 1);
        ASSERT_EQ(segmentOf(section(rich.data)), 2);
    }
    static int segmentOf(const Section& section) {
        return section.getSegment() != nullptr ? static_cast<int>(section.getSegment()->getIndex())
                                               : -1;
    }
    static Section* named(ObjectModule& module, const std::string& name) {
        for (Section* const section : module.getSections()) {
            if (textOf(section->getName()) == name) {
                return section;
            }
        }
        ADD_FAILURE() << name;
        return module.getSection(0);
    }

    RichElf rich;
};
INSTANTIATE_FORMATS(SegmentNotesTest);

TEST_P(SegmentNotesTest, SoundNotesStay) {
    const std::string before = contentsOf(section(rich.note));
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(rich.note)), before);
}

TEST_P(SegmentNotesTest, SectionsThatGoLeaveTheNote) {
    const std::string before = contentsOf(section(rich.note));
    Section* const note = &section(rich.note);
    prune({&section(rich.exidx), &section(rich.initArray), &section(rich.debugLine)});
    ObjectModule& again = readBackTheSame();
    EXPECT_EQ(contentsOf(*note).size(), before.size() - 2 * 4);
    EXPECT_EQ(contentsOf(*note).substr(0, 28), before.substr(0, 28)); // another's note
    EXPECT_EQ(segmentOf(*named(again, ".text")), 1);
    EXPECT_EQ(segmentOf(*named(again, ".data")), 2);
    EXPECT_EQ(segmentOf(*named(again, ".bss")), 2);
}

TEST_P(SegmentNotesTest, SectionsAndSegmentsThatMoveMoveInTheNote) {
    Section* const data = &section(rich.data);
    module().setSectionIndex(data, 1);
    EXPECT_EQ(segmentOf(*named(readBackTheSame(), ".data")), 2);
    module().setSegmentIndex(module().getSegment(2), 0);
    ObjectModule& again = readBackTheSame();
    EXPECT_EQ(segmentOf(*named(again, ".data")), 0);
    EXPECT_EQ(segmentOf(*named(again, ".text")), 2);
}

TEST_P(SegmentNotesTest, ASectionOfNoSegmentHasANumberThatNoneHas) {
    ManualPruneCriteria criteria;
    criteria.addSegment(module().getSegment(2));
    module().prune(criteria);
    const std::string written = writtenBytes(module());
    ObjectModule again;
    RecordingHandler handler(true);
    ASSERT_TRUE(readBytes(written, again, handler));
    EXPECT_EQ(handler.m_Reports.size(), 3U); // .init_array, .data and .bss
    EXPECT_EQ(segmentOf(*named(again, ".data")), -1);
    EXPECT_EQ(segmentOf(*named(again, ".text")), 1);
}

// Made whole, it would want more room than an image has for it.
TEST_P(SegmentNotesTest, ANoteThatItsSectionCutsOffStays) {
    const std::string notes = contentsOf(section(rich.note));
    const std::string cut = notes.substr(0, notes.size() - 1);
    setContents(section(rich.note), cut);
    Section* const note = &section(rich.note);
    prune({&section(rich.debugLine), &section(rich.exidx)});
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(*note), cut);
}

// One map says it all, however many notes were there to be mended.
TEST_P(SegmentNotesTest, OneOfManyStaleNotesIsWrittenAnew) {
    const std::string notes = contentsOf(section(rich.note));
    const std::string sound = notes.substr(notes.find("QEL") - 12);
    const std::string other = bytes().word(4).word(4).word(1).text("ABC").word(7).bytes();
    const std::string stale =
        bytes().word(4).word(0).word(NT_QEL_SECTION_SEGMENTS).text("QEL").bytes();
    Section* const more = module().createSection(".more", SHT_NOTE, 0);
    setContents(section(rich.note), stale + other + stale + stale + other);
    setContents(*more, stale + stale + other);
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(rich.note)), sound + other + other);
    EXPECT_EQ(contentsOf(*more), other);
    // One that is right will do.
    setContents(*more, stale + other);
    module().setAuxiliarySectionsUpToDate(false);
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(section(rich.note)), sound + other + other);
    EXPECT_EQ(contentsOf(*more), other);
}

// --- Links and infos of sections that the library knows nothing of

class SectionNumbersTest : public StaleTablesTest {
protected:
    // Sections 1 to 4; the last one names the second by its link and the third by its info.
    std::string file() {
        ElfBuilder builder(format());
        for (const char* const name : {".one", ".two", ".three"}) {
            builder.add({.name = name, .contents = "1234"});
        }
        builder.add({.name = ".names",
                     .type = 0x60001234,
                     .flags = SHF_INFO_LINK,
                     .contents = "1234",
                     .link = 2,
                     .info = 3});
        return builder.bytes();
    }
};
INSTANTIATE_FORMATS(SectionNumbersTest);

TEST_P(SectionNumbersTest, FollowSectionsThatMove) {
    ASSERT_TRUE(read(file()));
    EXPECT_EQ(section(4).getInfoSection(), &section(3));
    prune({&section(1)});
    ObjectModule& again = readBackTheSame();
    EXPECT_EQ(again.getSection(3)->getInfo(), 2U);
    EXPECT_EQ(again.getSection(3)->getLink(), again.getSection(1));
    module().setSectionIndex(&section(2), 1);
    EXPECT_EQ(section(3).getInfo(), 1U);
    ObjectModule& moved = readBackTheSame();
    EXPECT_EQ(moved.getSection(3)->getLink(), moved.getSection(2));
    module().imposeSectionOrder();
    readBackTheSame();
}

TEST_P(SectionNumbersTest, LeadNowhereWithoutTheirSection) {
    ASSERT_TRUE(read(file()));
    prune({&section(2), &section(3)});
    const Section& names = *readBackTheSame().getSection(2);
    EXPECT_EQ(names.getInfo(), 0U);
    EXPECT_EQ(names.getLink(), nullptr);
}

TEST_P(SectionNumbersTest, PlainNumbersStay) {
    ASSERT_TRUE(read(file()));
    section(4).setInfo(2);
    EXPECT_EQ(section(4).getInfoSection(), nullptr);
    prune({&section(1)});
    EXPECT_EQ(section(3).getInfo(), 2U);
    std::string wild = file();
    testsupport::setSectionField(wild, 4, testsupport::SectionField::Info, 77);
    startModule();
    ASSERT_TRUE(read(wild));
    EXPECT_EQ(section(4).getInfoSection(), nullptr);
    EXPECT_EQ(section(4).getInfo(), 77U);
}

// --- The first hash table

TEST_P(StaleTablesTest, AHashTableInMemoryKeepsItsBuckets) {
    makeFormat(ET_DYN);
    SegmentFields segment;
    segment.m_Type = PT_LOAD;
    module().createSegment(segment);
    for (int i = 0; i < 40; ++i) {
        SymbolFields fields;
        fields.m_Name = "f";
        fields.m_Binding = STB_GLOBAL;
        module().createDynamicUndefinedSymbol(fields);
    }
    auto* const symbols = module().createSymbolTableSection(SHT_DYNSYM, ".dynsym");
    symbols->setHashSection(module().createHashSection());
    Section& hash = *symbols->getHashSection();
    hash.setFlags(SHF_ALLOC);
    setContents(hash, bytes().word(3).word(41).bytes() + std::string((3 + 41) * 4, '\0'));
    pruneDynamicSymbol(40);
    module().updateAuxiliarySections();
    EXPECT_EQ(hash.getLoadedContents().getUnalignedUint32(0), 3U);
    EXPECT_EQ(hash.getSize(), 4 * (2 + 3 + 40U));
}

TEST_P(StaleTablesTest, HashTablesAndVersionsOfNoUseGo) {
    makeFormat(ET_DYN);
    SymbolFields fields;
    fields.m_Name = "f";
    fields.m_Binding = STB_GLOBAL;
    Symbol* const symbol = module().createDynamicAbsoluteSymbol(fields, 4);
    auto* const symbols = module().createSymbolTableSection(SHT_DYNSYM, ".dynsym");
    module().createHashSection("stray");
    symbols->setHashSection(module().createHashSection("used"));
    SymbolVersionDefinition* const definition = module().createSymbolVersionDefinition(2, 0);
    definition->addDefinedVersionIdentifier("V");
    symbol->setSymbolVersionDefinition(definition);
    for (const char* const name : {"stray", "last"}) {
        module().createVersymSection(name);
        module().createVerdefSection(name);
    }
    module().updateAuxiliarySections();
    ASSERT_EQ(module().getHashSections().getSize(), 1U);
    EXPECT_STREQ(module().getHashSections()[0]->getName(), "used");
    ASSERT_EQ(module().getVersymSections().getSize(), 1U);
    EXPECT_STREQ(module().getVersymSections()[0]->getName(), "last");
    ASSERT_EQ(module().getVerdefSections().getSize(), 1U);
    EXPECT_EQ(contentsOf(*module().getVersymSections()[0]), bytes().half(0).half(2).bytes());
}

// --- Attributes sections that nobody understands

class CorruptAttributesTest : public StaleTablesTest {
protected:
    // An object with these attributes sections, which is read whatever is wrong with it.
    void readWith(const std::vector<std::string>& sections) {
        ElfBuilder builder(format());
        builder.add({.name = ".one", .contents = "1234"});
        builder.add({.name = ".two", .contents = "1234"});
        for (const std::string& contents : sections) {
            builder.add(
                {.name = ".QEL.attributes", .type = elf::SHT_QEL_ATTRIBUTES, .contents = contents});
        }
        ASSERT_TRUE(readOn(builder.bytes()));
    }
    std::string sound(const std::string& vendor = "acme") const {
        const AttributeSectionBuilder builder(format().littleEndian);
        return "A" + builder.subsection(vendor, builder.scope(1, number(5, 6)));
    }
    std::vector<std::string> attributesOf(ObjectModule& objectModule) {
        std::vector<std::string> contents;
        for (Section* const section : objectModule.getBuildAttributesSections()) {
            contents.push_back(contentsOf(*section));
        }
        return contents;
    }
};
INSTANTIATE_FORMATS(CorruptAttributesTest);

TEST_P(CorruptAttributesTest, KeepTheirBytes) {
    const std::string corrupt = sound() + "zz";
    readWith({corrupt});
    ASSERT_EQ(module().getBuildAttributesBlockCount(), 0U);
    prune({&section(1)});
    module().updateAuxiliarySections();
    EXPECT_EQ(attributesOf(module()), std::vector<std::string>{corrupt});
}

TEST_P(CorruptAttributesTest, SoDoThoseBesideThem) {
    const std::vector<std::string> contents = {sound("first"), sound() + "zz", sound("last")};
    readWith(contents);
    module().updateAuxiliarySections();
    EXPECT_EQ(attributesOf(module()), contents);
}

TEST_P(CorruptAttributesTest, MakeWayForWhatTheProgramStates) {
    readWith({sound() + "zz", sound("last")});
    attributes::BuildAttributes record;
    record.setTag(attributes::Tag_CPU_arch, 9);
    module().setBuildAttributes(record);
    ObjectModule& again = readBack();
    EXPECT_EQ(again.getBuildAttributesSections().getSize(), 1U);
    EXPECT_NE(again.getOwnBuildAttributes(), nullptr);
}

TEST_P(CorruptAttributesTest, SoundOnesBecomeOneWithoutTheDroppedStatements) {
    readWith({sound("first"), sound("second")});
    ASSERT_TRUE(module().removeBuildAttributesBlock("first"));
    module().updateAuxiliarySections();
    EXPECT_EQ(attributesOf(module()), std::vector<std::string>{sound("second")});
    ASSERT_TRUE(module().removeBuildAttributesBlock("second"));
    module().updateAuxiliarySections();
    EXPECT_EQ(attributesOf(module()), std::vector<std::string>{"A"});
}

TEST_P(CorruptAttributesTest, AnEmptyOneStaysEmpty) {
    readWith({""});
    module().updateAuxiliarySections();
    EXPECT_EQ(attributesOf(module()), std::vector<std::string>{""});
}

// --- Memory that runs out

// Whatever allocation fails, it is reported once, and the module can be used for another file.
TEST_P(StaleTablesTest, ExhaustedMemoryIsReported) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    uint64_t failures = 0;
    for (bool isDone = false; !isDone;) {
        startModule();
        ASSERT_TRUE(read(rich));
        pruneDynamicSymbol(1);
        prune({&section(rich.exidx)});
        {
            const AllocationFailure failure(failures);
            isDone = module().updateAuxiliarySections();
        }
        ASSERT_EQ(module().areAuxiliarySectionsUpToDate(), isDone);
        if (!isDone) {
            ASSERT_EQ(reports().size(), 1U) << failures;
            EXPECT_EQ(reports()[0].message, "Out of memory");
            ++failures;
        }
    }
    EXPECT_EQ(reports(), Reports());
    EXPECT_GT(failures, 100U);
    ASSERT_TRUE(read(rich));
    EXPECT_TRUE(module().updateAuxiliarySections());
}

TEST_P(StaleTablesTest, RemovalNeedsNoMemoryButThatOfRegions) {
    const RichElf rich = richElf(format(), elf::ET_DYN);
    ASSERT_TRUE(read(rich));
    SectionTypePruneCriteria criteria(SHT_PROGBITS);
    const AllocationFailure failure(0);
    module().prune(criteria);
    module().imposeSectionOrder();
    module().clear();
    EXPECT_TRUE(module().isEmpty());
}

} // namespace
} // namespace elfext::test
