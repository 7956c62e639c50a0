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
        module().addNeededLibrary(std::string(length, 'n').c_str());
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

} // namespace
} // namespace elfext::test
