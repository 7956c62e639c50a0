// Loaded images whose tables have changed their size: they are written if everything still fits,
// and not at all otherwise.
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/prune_criteria.h"
#include "tests/elfext/round_trip_fixtures.h"

namespace elfext::test {
namespace {

namespace elf = testsupport::elf;

constexpr const char* clash = " have alignment constraints which cannot both be satisfied given "
                              "their relative offset";

// A library that needs another one. Its dynamic section has a free entry, and behind its names
// there are zeros up to the next section.
class WriterGrowthTest : public ReaderFormatTest {
protected:
    void SetUp() override {
        ReaderFormatTest::SetUp();
        testsupport::ElfBuilder builder(format(), elf::ET_DYN);
        m_Names = builder.add({.name = ".dynstr",
                               .type = elf::SHT_STRTAB,
                               .flags = elf::SHF_ALLOC,
                               .contents = std::string("\0liba.so\0", 9),
                               .mapped = true});
        m_Next = builder.add({.name = ".rodata",
                              .flags = elf::SHF_ALLOC,
                              .contents = "constants",
                              .mapped = true,
                              .alignment = 256});
        m_Dynamic = builder.addDynamic(
            m_Names, {{.tag = elf::DT_NEEDED, .value = 1}, {.tag = elf::DT_NULL}});
        builder.section(m_Dynamic).mapped = true;
        builder.section(m_Dynamic).flags = elf::SHF_ALLOC;
        builder.addSegment({.firstSection = 0, .lastSection = m_Dynamic});
        builder.addSegment(
            {.type = elf::PT_DYNAMIC, .firstSection = m_Dynamic, .lastSection = m_Dynamic});
        m_File = builder.bytes();
        m_NamesPlace = placeOf(m_File, m_Names);
        m_Room = placeOf(m_File, m_Next) - m_NamesPlace - 9;
        ASSERT_GT(m_Room, 8U);
    }
    // Reads the file and lets it need a library more, whose name has so many characters.
    void need(size_t length) {
        startModule(true);
        ASSERT_TRUE(read(m_File));
        needAlso(length);
    }
    void needAlso(size_t length) {
        m_Added.push_back(module().addNeededLibrary(std::string(length, 'n').c_str()));
    }
    // The same file without any change.
    std::string untouched() {
        startModule();
        EXPECT_TRUE(read(m_File));
        return writtenBytes(module());
    }
    // Takes back what has been added since the file was read.
    void removeAdded() {
        ManualPruneCriteria criteria;
        for (const NeededLibrary* const library : m_Added) {
            criteria.addNeededLibrary(library);
        }
        module().prune(criteria);
        m_Added.clear();
    }
    // Some bytes more or fewer in what a program header says.
    void changeFileSize(size_t segment, uint64_t size) {
        const size_t width = format().is64 ? 8 : 4;
        const size_t place = format().is64 ? 64 + segment * 56 + 32 : 52 + segment * 32 + 16;
        testsupport::writeNumber(m_File, place, width, format().littleEndian, size);
    }
    uint64_t fileSizeOf(uint32_t segment) {
        startModule();
        EXPECT_TRUE(read(m_File));
        return module().getSegment(segment)->getFileSize();
    }
    void expectRefusal(const Report& report) {
        EXPECT_EQ(writtenBytes(module()), "");
        EXPECT_EQ(reports(), Reports{report});
        // A file that is there is not touched.
        const testsupport::ScratchFolder folder;
        folder.write("lib.so", m_File);
        EXPECT_FALSE(writeElfFile(folder.pathOf("lib.so").c_str(), &module()));
        EXPECT_EQ(folder.read("lib.so"), m_File);
        EXPECT_EQ(folder.entries(), std::vector<std::string>{"lib.so"});
    }
    std::string overlap() const {
        return "Sections #" + std::to_string(m_Names) + " and #" + std::to_string(m_Next) +
               " overlap in the file";
    }

    std::string m_File;
    size_t m_Names = 0;
    size_t m_Next = 0;
    size_t m_Dynamic = 0;
    size_t m_NamesPlace = 0;
    size_t m_Room = 0; // zeros behind the names
    std::vector<const NeededLibrary*> m_Added;
};

INSTANTIATE_FORMATS(WriterGrowthTest);

TEST_P(WriterGrowthTest, NamesGrowIntoThePadding) {
    need(m_Room - 1);
    const std::string bytes = writtenBytes(module());
    EXPECT_EQ(reports(), Reports());
    startModule();
    ASSERT_TRUE(read(bytes));
    ASSERT_EQ(module().getNeededLibraryCount(), 2U);
    EXPECT_STREQ(module().getNeededLibrary(0)->getName(), "liba.so");
    EXPECT_EQ(module().getNeededLibrary(1)->getName(), std::string(m_Room - 1, 'n'));
    EXPECT_EQ(contentsOf(section(m_Next)), "constants");
    EXPECT_EQ(placeOf(bytes, m_Names), m_NamesPlace);
    EXPECT_EQ(section(m_Names).getSize(), 9 + m_Room);
    // It can be written again, and cannot grow any more.
    EXPECT_EQ(writtenBytes(module()), bytes);
    module().addNeededLibrary("x");
    EXPECT_EQ(writtenBytes(module()), "");
}

TEST_P(WriterGrowthTest, NamesThatDoNotFitAreRefused) {
    need(m_Room);
    expectRefusal({Severity_Warning, overlap()});
}

TEST_P(WriterGrowthTest, BytesThatMeanSomethingAreNoPadding) {
    m_File[m_NamesPlace + 9 + m_Room - 1] = '!';
    need(m_Room - 2);
    EXPECT_NE(writtenBytes(module()), "");
    need(m_Room - 1);
    expectRefusal({Severity_Error, "Segment #0 and section #" + std::to_string(m_Names) + clash});
}

TEST_P(WriterGrowthTest, ADynamicSectionHasTheEntriesThatAreFree) {
    need(1);
    module().addNeededLibrary("o");
    expectRefusal({Severity_Error, "Segment #0 and section #" + std::to_string(m_Dynamic) + clash});
}

TEST_P(WriterGrowthTest, ProgramHeadersDoNotGrowIntoASection) {
    ASSERT_TRUE(read(m_File));
    module().createSegment({.m_Type = PT_NOTE, .m_Alignment = 1});
    expectRefusal({Severity_Error, std::string("Segment #0 and program header table") + clash});
}

// What is left of a table's place is zero.
TEST_P(WriterGrowthTest, FewerProgramHeadersLeaveTheRestInPlace) {
    ASSERT_TRUE(read(m_File));
    ManualPruneCriteria criteria;
    criteria.addSegment(module().getSegment(1));
    module().prune(criteria);
    const std::string bytes = writtenBytes(module());
    EXPECT_EQ(reports(), Reports());
    EXPECT_EQ(placeOf(bytes, m_Names), m_NamesPlace);
    ASSERT_TRUE(read(bytes));
    EXPECT_EQ(module().getSegmentCount(), 1U);
}

// --- What was refused and is undone

TEST_P(WriterGrowthTest, NamesThatWereRefusedCanBeTakenBack) {
    const std::string first = untouched();
    ASSERT_NE(first, "");
    need(m_Room);
    ASSERT_EQ(writtenBytes(module()), "");
    ASSERT_EQ(writtenBytes(module()), "");
    removeAdded();
    EXPECT_EQ(writtenBytes(module()), first);
    // There is as much room as before.
    needAlso(m_Room - 1);
    EXPECT_NE(writtenBytes(module()), "");
    EXPECT_EQ(section(m_Names).getSize(), 9 + m_Room);
}

TEST_P(WriterGrowthTest, EntriesThatWereRefusedCanBeTakenBack) {
    const std::string first = untouched();
    need(1);
    needAlso(2);
    ASSERT_EQ(writtenBytes(module()), "");
    removeAdded();
    EXPECT_EQ(writtenBytes(module()), first);
}

TEST_P(WriterGrowthTest, ANameThatWasRefusedCanBeSetBack) {
    const std::string first = untouched();
    startModule(true);
    ASSERT_TRUE(read(m_File));
    module().setSoName(std::string(m_Room, 's').c_str());
    ASSERT_EQ(writtenBytes(module()), "");
    module().setSoName(nullptr);
    EXPECT_EQ(writtenBytes(module()), first);
}

TEST_P(WriterGrowthTest, ASegmentThatWasRefusedCanBeTakenBack) {
    const std::string first = untouched();
    for (const uint32_t number : {0U, 2U}) {
        startModule(true);
        ASSERT_TRUE(read(m_File));
        Segment* const added = module().createSegment({.m_Type = PT_NOTE, .m_Alignment = 1});
        module().setSegmentIndex(added, number);
        ASSERT_EQ(writtenBytes(module()), "");
        ManualPruneCriteria criteria;
        criteria.addSegment(added);
        module().prune(criteria);
        EXPECT_EQ(writtenBytes(module()), first) << number;
    }
}

// What an update has added can go, what the program has put there cannot.
TEST_P(WriterGrowthTest, TextsOfTheProgramStay) {
    ASSERT_GT(m_Room, 12U);
    const std::string texts("\0liba.so\0mine\0", 14);
    need(m_Room);
    ASSERT_EQ(writtenBytes(module()), "");
    removeAdded();
    section(m_Names).setContents(texts.data(), texts.size());
    needAlso(2);
    ASSERT_NE(writtenBytes(module()), "");
    EXPECT_EQ(contentsOf(section(m_Names)), texts + std::string("nn\0", 3));
}

// --- What did not fit when it was read

// Nothing has grown, so the file is as good as it was.
TEST_P(WriterGrowthTest, WhatWasLongerThanItsSegmentStaysSo) {
    const std::string sound = m_File;
    const uint64_t sizes[] = {fileSizeOf(0), fileSizeOf(1)};
    struct Row {
        size_t segment;
        uint64_t size;
    };
    for (const Row row : {Row{0, sizes[0] - 1}, Row{1, 2}, Row{1, sizes[1] - 1}}) {
        m_File = sound;
        changeFileSize(row.segment, row.size);
        const RoundTrip trip = roundTrip(m_File);
        EXPECT_EQ(trip.difference, "") << row.segment << ' ' << row.size;
    }
}

TEST_P(WriterGrowthTest, ADynamicSectionWithoutAnEndGetsNone) {
    const size_t entrySize = format().is64 ? 16 : 8;
    testsupport::setSectionField(m_File, m_Dynamic, testsupport::SectionField::Size, entrySize);
    m_File[placeOf(m_File, m_Dynamic) + entrySize + entrySize / 2] = '!';
    const RoundTrip trip = roundTrip(m_File);
    EXPECT_EQ(trip.difference, "");
    need(1);
    EXPECT_EQ(writtenBytes(module()), "");
    removeAdded();
    EXPECT_EQ(writtenBytes(module()), trip.bytes);
}

TEST_P(WriterGrowthTest, ASegmentMayEndInTheProgramHeaders) {
    changeFileSize(0, format().is64 ? 0x58 : 0x44);
    ASSERT_TRUE(read(m_File));
    const uint64_t place = module().getProgramHeaderOffset();
    EXPECT_NE(writtenBytes(module()), "");
    EXPECT_EQ(reports(), Reports());
    EXPECT_EQ(module().getProgramHeaderOffset(), place);
    // One more is too many.
    module().createSegment({.m_Type = PT_NOTE, .m_Alignment = 1});
    EXPECT_EQ(writtenBytes(module()), "");
}

TEST_P(WriterGrowthTest, ASegmentMayEndInFewerProgramHeaders) {
    changeFileSize(0, format().is64 ? 0x58 : 0x44);
    ASSERT_TRUE(read(m_File));
    const uint64_t place = module().getProgramHeaderOffset();
    ManualPruneCriteria criteria;
    criteria.addSegment(module().getSegment(1));
    module().prune(criteria);
    const std::string bytes = writtenBytes(module());
    EXPECT_EQ(reports(), Reports());
    ASSERT_TRUE(read(bytes));
    EXPECT_EQ(module().getSegmentCount(), 1U);
    EXPECT_EQ(module().getProgramHeaderOffset(), place);
}

TEST_P(WriterGrowthTest, WhatIsLongerThanItsSegmentDoesNotGrow) {
    changeFileSize(1, 2);
    need(1);
    EXPECT_NE(writtenBytes(module()), ""); // into a free entry
    need(1);
    needAlso(2);
    expectRefusal({Severity_Error, "Segment #0 and section #" + std::to_string(m_Dynamic) + clash});
}

// --- Headers of a size of their own

TEST_P(WriterGrowthTest, AHeaderOfAnotherSizeIsWrittenInThatOfItsClass) {
    const std::string first = untouched();
    ASSERT_NE(first, "");
    ASSERT_EQ(module().getSegment(0)->getFileOffset(), 0U); // as linkers have it
    const uint64_t ofClass = format().is64 ? 64 : 52;
    for (const uint64_t size : {uint64_t{0}, uint64_t{0x25}, ofClass - 1, ofClass + 8}) {
        std::string bytes = m_File;
        testsupport::writeNumber(bytes, ofClass - 12, 2, format().littleEndian, size);
        ASSERT_TRUE(readOn(bytes)) << size;
        EXPECT_EQ(writtenBytes(module()), first) << size;
        EXPECT_EQ(reports(), Reports()) << size;
    }
}

// --- Sections that the image did not have

class WriterNewSectionTest : public ReaderFormatTest {
protected:
    // One to be loaded, which is in memory by its address, but in no segment. Zeros have no bytes
    // in the file.
    Section* addSection(uint32_t type = SHT_PROGBITS) {
        testsupport::ElfBuilder builder(format(), elf::ET_DYN);
        const size_t data = builder.add(
            {.name = ".data", .flags = elf::SHF_ALLOC, .contents = "0123456789", .mapped = true});
        builder.addSegment({.firstSection = 0, .lastSection = data});
        EXPECT_TRUE(read(builder.bytes()));
        m_Unchanged = writtenBytes(module());
        Section* const added = module().createSection(".new", type, SHF_ALLOC);
        if (type == SHT_NOBITS) {
            added->setSize(3);
        } else {
            added->setContents("new", 3);
        }
        added->setAddress(section(data).getAddress());
        return added;
    }
    Reports outside() {
        for (const Section* const section : module().getSections()) {
            if (textOf(section->getName()) == ".new") {
                return {{Severity_Warning, "Loadable section #" +
                                               std::to_string(section->getIndex()) +
                                               " is not contained in a loadable segment"}};
            }
        }
        return {};
    }
    std::string m_Unchanged; // the file without it
};
INSTANTIATE_FORMATS(WriterNewSectionTest);

// No loader would ever see it.
TEST_P(WriterNewSectionTest, ASectionThatIsLoadedWithNoSegmentIsTold) {
    for (const uint32_t type : {SHT_PROGBITS, SHT_NOBITS}) {
        startModule();
        addSection(type);
        EXPECT_EQ(writtenBytes(module()), "");
        ASSERT_EQ(outside().size(), 1U);
        EXPECT_EQ(reports(), outside());
        EXPECT_FALSE(module().validate());
        EXPECT_EQ(reports(), (Reports{outside().front(), outside().front()}));
    }
}

TEST_P(WriterNewSectionTest, ItCanBeTakenBack) {
    for (const uint32_t type : {SHT_PROGBITS, SHT_NOBITS}) {
        startModule();
        const Section* const added = addSection(type);
        ASSERT_EQ(writtenBytes(module()), "");
        ManualPruneCriteria criteria;
        criteria.addSection(added);
        module().prune(criteria);
        ASSERT_NE(m_Unchanged, "");
        EXPECT_EQ(writtenBytes(module()), m_Unchanged);
    }
}

TEST_P(WriterNewSectionTest, ASegmentMayHoldZerosThatAreNew) {
    Section* const added = addSection(SHT_NOBITS);
    Segment& segment = *module().getSegment(0);
    segment.addContained(added, segment.getFileSize());
    added->setAddress(segment.getVirtualAddress() + segment.getFileSize());
    segment.setMemorySize(segment.getFileSize() + 3);
    EXPECT_NE(writtenBytes(module()), "");
    EXPECT_TRUE(module().validate());
    EXPECT_EQ(reports(), Reports());
}

TEST_P(WriterNewSectionTest, ItIsWrittenForAProgramThatKnowsBetter) {
    startModule(true);
    addSection();
    const std::string bytes = writtenBytes(module());
    EXPECT_NE(bytes, "");
    EXPECT_EQ(reports(), outside());
    // What a file has like that is written as it is.
    startModule();
    ASSERT_TRUE(read(bytes));
    EXPECT_EQ(writtenBytes(module()), bytes);
    EXPECT_EQ(reports(), Reports());
    EXPECT_FALSE(module().validate());
    EXPECT_EQ(reports(), outside());
}

} // namespace
} // namespace elfext::test
