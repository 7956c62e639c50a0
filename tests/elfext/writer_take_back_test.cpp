// Changes of a loaded image that are taken back: the image is then written as if they had never
// been made, however often the tables were made anew in between.
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/prune_criteria.h"
#include "elfext/interface/relocation.h"
#include "tests/elfext/round_trip_fixtures.h"

#include <algorithm>
#include <functional>

namespace elfext::test {
namespace {

using testsupport::BuiltDynamicTag;
using testsupport::BuiltElfRelocation;
using testsupport::ElfBuilder;

namespace elf = testsupport::elf;

// What has come since it was set up goes again.
class Additions {
public:
    explicit Additions(ObjectModule& module) : m_Module(module) {}

    void addLibrary(const char* name) {
        m_Criteria.addNeededLibrary(m_Module.addNeededLibrary(name));
    }
    void addPreemption(const char* name) {
        Preemption* const preemption = m_Module.addPreemption(name, "a");
        preemption->addPreemptedDll("a");
        m_Criteria.addPreemption(preemption);
    }
    void addSymbol(bool isDynamic) {
        SymbolFields fields;
        fields.m_Name = "a";
        fields.m_Binding = STB_GLOBAL;
        m_Criteria.addSymbol(isDynamic ? m_Module.createDynamicUndefinedSymbol(fields)
                                       : m_Module.createUndefinedSymbol(fields));
    }
    // As those that the section has.
    void addRelocation(Section& section, uint16_t type = 8) {
        Section::RelocationAsRead relocation;
        relocation.m_HasAddend = true;
        relocation.m_IsDynamic = true;
        relocation.m_Type = type;
        if (section.getRelocations().getSize() != 0) {
            relocation.m_TableNumber = section.getRelocations()[0]->getTableNumber();
        }
        section.addRelocationAsRead(relocation);
        m_Criteria.addRelocation(section.getRelocations()[section.getRelocations().getSize() - 1]);
        m_Module.markChanged();
    }
    Section* addSection(uint64_t address) {
        Section* const section = m_Module.createSection(".new", SHT_PROGBITS, SHF_ALLOC);
        section->setContents("0123456789ABCDEF", 16);
        section->setAddress(address);
        m_Criteria.addSection(section);
        return section;
    }
    void takeBack() { m_Module.prune(m_Criteria); }

private:
    ObjectModule& m_Module;
    ManualPruneCriteria m_Criteria;
};

// A library with two tables of relocations, one directly behind the other, so that the first one
// cannot grow; nor can the map of preemptions and the code behind it.
class WriterTakeBackTest : public ReaderFormatTest {
protected:
    void SetUp() override {
        ReaderFormatTest::SetUp();
        m_File = image(false);
    }
    // `isOneStretch`: the first tags tell of both tables.
    std::string image(bool isOneStretch) {
        ElfBuilder builder(format(), elf::ET_DYN);
        m_Names = builder.addStringTable(".dynstr");
        const uint32_t library = builder.addString(m_Names, "liba.so");
        place(builder, m_Names);
        const size_t symbols = builder.addSymbolTable(".dynsym", elf::SHT_DYNSYM, m_Names, {});
        place(builder, symbols, 256);
        m_Data = builder.add({.name = ".data", .contents = std::string(64, 'D')});
        place(builder, m_Data);
        const size_t plt = builder.add({.name = ".plt", .contents = std::string(16, 'P')});
        place(builder, plt);
        m_Relocations = builder.addRelocations(".rela.dyn", elf::SHT_RELA, m_Data, symbols,
                                               {{.type = 8}, {.type = 8}, {.type = 6}});
        place(builder, m_Relocations);
        const size_t calls = builder.addRelocations(".rela.plt", elf::SHT_RELA, plt, symbols,
                                                    {{.type = 7}, {.type = 7}});
        place(builder, calls);
        m_Map = builder.add({.name = ".map",
                             .type = elf::SHT_QEL_PREEMPTMAP,
                             .contents = std::string(4, '\0'),
                             .link = m_Names});
        place(builder, m_Map);
        m_Code = builder.add({.name = ".init", .contents = std::string(16, 'I')});
        place(builder, m_Code, 4);
        const uint64_t size = format().is64 ? 24 : 12;
        std::vector<BuiltDynamicTag> tags = {
            {DT_NEEDED, library},   {DT_STRTAB, 0, m_Names},     {DT_INIT, 0, m_Code},
            {DT_PLTGOT, 4, m_Code}, {DT_RELA, 0, m_Relocations}, {DT_RELASZ, 3 * size},
            {DT_RELAENT, size},     {DT_RELACOUNT, 2},           {DT_QEL_PREEMPTMAP, 0, m_Map}};
        if (isOneStretch) {
            tags[5].value = 5 * size;
        } else {
            tags.insert(tags.end(),
                        {{DT_JMPREL, 0, calls}, {DT_PLTRELSZ, 2 * size}, {DT_PLTREL, DT_RELA}});
        }
        tags.insert(tags.end(), 3, {DT_NULL});
        m_Dynamic = builder.addDynamic(m_Names, tags);
        place(builder, m_Dynamic);
        builder.addSegment({.firstSection = 0, .lastSection = m_Dynamic});
        builder.addSegment(
            {.type = elf::PT_DYNAMIC, .firstSection = m_Dynamic, .lastSection = m_Dynamic});
        return builder.bytes();
    }
    static void place(ElfBuilder& builder, size_t section, uint64_t alignment = 8) {
        builder.section(section).mapped = true;
        builder.section(section).flags = elf::SHF_ALLOC;
        builder.section(section).alignment = alignment;
    }
    // Reads the file, with a handler that lets nothing pass.
    void start() {
        startModule();
        ASSERT_TRUE(read(m_File));
    }
    std::string untouched() {
        start();
        return writtenBytes(module());
    }
    // Makes the tables anew, and lets layout refuse them or not.
    enum class Between { Nothing, Update, Validate, Refuse };
    void pass(Between between) {
        if (between == Between::Update) {
            module().updateAuxiliarySections();
        } else if (between == Between::Validate) {
            module().validate();
        } else if (between == Between::Refuse) {
            EXPECT_EQ(writtenBytes(module()), "");
        }
    }
    void pruneRelocations(uint16_t type) {
        ManualPruneCriteria criteria;
        for (const Relocation* const relocation : section(m_Data).getRelocations()) {
            if (relocation->getType() == type) {
                criteria.addRelocation(relocation);
            }
        }
        module().prune(criteria);
    }

    static constexpr Between allBetween[] = {Between::Update, Between::Validate, Between::Refuse};

    std::string m_File;
    size_t m_Names = 0;
    size_t m_Data = 0;
    size_t m_Relocations = 0;
    size_t m_Map = 0;
    size_t m_Code = 0;
    size_t m_Dynamic = 0;
};
INSTANTIATE_FORMATS(WriterTakeBackTest);

// --- Relocations

TEST_P(WriterTakeBackTest, RelocationsLeaveTheTagsAsTheyWere) {
    for (const bool isOneStretch : {false, true}) {
        m_File = image(isOneStretch);
        const std::string first = untouched();
        ASSERT_NE(first, "");
        for (const Between between : allBetween) {
            start();
            Additions additions(module());
            additions.addRelocation(section(m_Data));
            pass(between);
            additions.addRelocation(section(m_Data));
            pass(between);
            additions.takeBack();
            EXPECT_EQ(writtenBytes(module()), first) << isOneStretch;
        }
    }
}

TEST_P(WriterTakeBackTest, RelocationsOfTheFileCanGoAfterwards) {
    start();
    pruneRelocations(8);
    pruneRelocations(6);
    const std::string without = writtenBytes(module());
    ASSERT_NE(without, "");
    for (const Between between : allBetween) {
        start();
        Additions additions(module());
        additions.addRelocation(section(m_Data), 5);
        pass(between);
        additions.takeBack();
        module().updateAuxiliarySections();
        pruneRelocations(8);
        module().updateAuxiliarySections();
        pruneRelocations(6);
        EXPECT_EQ(writtenBytes(module()), without);
    }
}

TEST_P(WriterTakeBackTest, TheCountOfRelativeRelocationsComesBack) {
    const std::string first = untouched();
    start();
    Relocation& relocation = *section(m_Data).getRelocations()[0];
    relocation.setType(6);
    module().updateAuxiliarySections();
    relocation.setType(8);
    EXPECT_EQ(writtenBytes(module()), first);
}

// --- The map of preemptions

TEST_P(WriterTakeBackTest, ARefusedPreemptionMapShrinksAgain) {
    const std::string first = untouched();
    start();
    Additions both(module());
    both.addPreemption("free");
    both.addPreemption("malloc");
    pass(Between::Refuse);
    pass(Between::Refuse);
    both.takeBack();
    EXPECT_EQ(writtenBytes(module()), first);
}

// --- Memory that was taken up for a while

TEST_P(WriterTakeBackTest, TagsOfWhatIsStillThereStay) {
    const std::string first = untouched();
    start();
    Additions additions(module());
    additions.addSection(section(m_Code).getAddress());
    additions.addSection(section(m_Relocations).getAddress() - 4);
    additions.addSection(section(m_Map).getAddress());
    pass(Between::Refuse);
    additions.takeBack();
    EXPECT_EQ(writtenBytes(module()), first);
}

TEST_P(WriterTakeBackTest, ASectionThatTakesAnothersPlaceTakesItsTags) {
    start();
    module().updateAuxiliarySections();
    const std::string tags = contentsOf(section(m_Dynamic));
    Section& old = section(m_Code);
    const uint64_t address = old.getAddress();
    const uint64_t offset = old.getFileOffset();
    const std::string contents = contentsOf(old);
    ManualPruneCriteria criteria;
    criteria.addSection(&old);
    module().prune(criteria);
    Section* const section = module().createSection(".again", SHT_PROGBITS, SHF_ALLOC);
    section->setContents(contents.data(), contents.size());
    section->setAddress(address);
    module().getSegment(0)->addContained(section, offset);
    EXPECT_NE(writtenBytes(module()), "");
    EXPECT_EQ(contentsOf(*module().getDynamicSections()[0]), tags);
}

// Without its first half, and without its second half.
TEST_P(WriterTakeBackTest, TagsThatLeadBesideWhatHasTakenThePlaceGo) {
    for (const bool isFirstHalf : {true, false}) {
        start();
        const uint64_t address = section(m_Code).getAddress();
        ManualPruneCriteria criteria;
        criteria.addSection(&section(m_Code));
        module().prune(criteria);
        Section* const section = module().createSection(".again", SHT_PROGBITS, SHF_ALLOC);
        section->setContents("01234567", 8);
        section->setAddress(address + (isFirstHalf ? 0 : 8));
        module().updateAuxiliarySections();
        EXPECT_EQ(module().getInit().has_value(), isFirstHalf);
    }
}

// Texts that an update has added would reach over the code if layout let them.
TEST_P(WriterTakeBackTest, TagsDoNotStayForGrowthThatLayoutRefuses) {
    start();
    ManualPruneCriteria criteria;
    criteria.addSection(&section(m_Code));
    module().prune(criteria);
    const std::string without = writtenBytes(module());
    ASSERT_NE(without, "");
    for (const Between between : allBetween) {
        start();
        Additions additions(module());
        additions.addLibrary(std::string(0x400, 'n').c_str());
        pass(between);
        ManualPruneCriteria again;
        again.addSection(&section(m_Code));
        module().prune(again);
        additions.takeBack();
        EXPECT_EQ(writtenBytes(module()), without);
    }
}

// What was removed before the last layout is forgotten: a place there is one like any other.
TEST_P(WriterTakeBackTest, APlaceInMemoryThatWasFreedCanBeStatedLater) {
    start();
    const uint64_t address = section(m_Code).getAddress();
    ManualPruneCriteria criteria;
    criteria.addSection(&section(m_Code));
    module().prune(criteria);
    ASSERT_NE(writtenBytes(module()), "");
    ASSERT_EQ(module().getInit(), std::nullopt);
    module().setInit(address);
    ASSERT_NE(writtenBytes(module()), "");
    module().markChanged();
    const std::string bytes = writtenBytes(module());
    EXPECT_EQ(module().getInit(), address);
    startModule();
    ASSERT_TRUE(read(bytes));
    EXPECT_EQ(module().getInit(), address);
}

// --- What was written and then taken back

// Others may know the offsets of what has been in a file, so it is as if that file had been read.
TEST_P(WriterTakeBackTest, WhatWasWrittenIsSettled) {
    start();
    Additions additions(module());
    additions.addLibrary("libb.so");
    const std::string with = writtenBytes(module());
    ASSERT_NE(with, "");
    additions.takeBack();
    const std::string bytes = writtenBytes(module());
    startModule();
    ASSERT_TRUE(read(with));
    ManualPruneCriteria criteria;
    criteria.addNeededLibrary(module().getNeededLibrary(1));
    module().prune(criteria);
    EXPECT_EQ(writtenBytes(module()), bytes);
    EXPECT_NE(bytes, untouched());
}

// --- Tables that were not there

// A program and an object without any table but that of the sections' names.
class WriterNewTableTest : public ReaderFormatTest {
protected:
    using Change = std::function<void(Additions&)>;

    std::string file(uint16_t type, bool hasNames = true) {
        ElfBuilder builder(format(), type);
        const size_t text = builder.add({.name = hasNames ? ".text" : "",
                                         .flags = elf::SHF_ALLOC,
                                         .contents = "0123456789ABCDEF",
                                         .mapped = type != elf::ET_REL});
        if (type != elf::ET_REL) {
            builder.addSegment({.firstSection = 0, .lastSection = text});
        }
        if (!hasNames) {
            builder.withoutSectionNames();
        }
        return builder.bytes();
    }
    const std::vector<Change> changes = {
        [](Additions& additions) { additions.addLibrary("a"); },
        [](Additions& additions) { additions.addSymbol(true); },
        [](Additions& additions) { additions.addSymbol(false); },
        [](Additions& additions) { additions.addPreemption("a"); },
        [this](Additions& additions) { additions.addRelocation(section(1)); },
        [this](Additions&) { module().setPreinitArray(4); },
        [this](Additions&) { module().setSoName("a"); },
    };
    void takeBack(Additions& additions) {
        additions.takeBack();
        module().setPreinitArray(std::nullopt);
        module().setSoName(nullptr);
    }
};
INSTANTIATE_FORMATS(WriterNewTableTest);

TEST_P(WriterNewTableTest, TablesThatNothingNeedsAnyMoreGo) {
    for (const std::string& bytes :
         {file(elf::ET_EXEC), file(elf::ET_DYN), file(elf::ET_REL), file(elf::ET_REL, false)}) {
        startModule();
        ASSERT_TRUE(read(bytes));
        const std::string first = writtenBytes(module());
        ASSERT_NE(first, "");
        for (size_t change = 0; change < changes.size(); ++change) {
            for (const bool isWritten : {false, true}) {
                startModule(isWritten); // a strict handler refuses what no segment holds
                ASSERT_TRUE(read(bytes));
                module().setErrorHandler(&handler());
                Additions additions(module());
                changes[change](additions);
                const uint32_t count = module().getSectionCount();
                writtenBytes(module());
                EXPECT_GT(module().getSectionCount(), count) << change;
                takeBack(additions);
                handler().m_Reports.clear();
                EXPECT_EQ(writtenBytes(module()), first) << change << isWritten;
                EXPECT_EQ(reports(), Reports()) << change << isWritten;
            }
        }
    }
}

TEST_P(WriterNewTableTest, TablesThatAreStillNeededStayTheSame) {
    startModule(true);
    ASSERT_TRUE(read(file(elf::ET_EXEC)));
    Additions additions(module());
    additions.addLibrary("a");
    module().updateAuxiliarySections();
    const Section* const dynamic = module().getDynamicSections()[0];
    const uint32_t count = module().getSectionCount();
    module().addNeededLibrary("b");
    module().updateAuxiliarySections();
    additions.takeBack();
    module().updateAuxiliarySections();
    EXPECT_EQ(module().getSectionCount(), count);
    EXPECT_EQ(module().getDynamicSections()[0], dynamic);
    EXPECT_NE(writtenBytes(module()), "");
}

// A program that has given such a table a place knows why.
TEST_P(WriterNewTableTest, TablesThatTheProgramHasPlacedStay) {
    for (const bool isInSegment : {false, true}) {
        startModule(true);
        ASSERT_TRUE(read(file(elf::ET_EXEC)));
        Additions additions(module());
        additions.addLibrary("a");
        module().updateAuxiliarySections();
        Section* const dynamic = module().getDynamicSections()[0];
        if (isInSegment) {
            module()
                .createSegment({.m_Type = PT_DYNAMIC, .m_Alignment = 1})
                ->addContained(dynamic, 0);
        } else {
            dynamic->setAddress(0x123450);
        }
        additions.takeBack();
        module().updateAuxiliarySections();
        ASSERT_EQ(module().getDynamicSections().getSize(), 1U);
        EXPECT_EQ(module().getDynamicSections()[0], dynamic);
        EXPECT_NE(dynamic->getLink(), nullptr);
    }
}

TEST_P(WriterNewTableTest, AnEmptyModuleIsEmptyAgain) {
    Additions additions(module());
    additions.addSymbol(false);
    module().updateAuxiliarySections();
    EXPECT_EQ(module().getSectionCount(), 4U);
    additions.takeBack();
    module().updateAuxiliarySections();
    EXPECT_EQ(module().getSectionCount(), 0U);
}

} // namespace
} // namespace elfext::test
