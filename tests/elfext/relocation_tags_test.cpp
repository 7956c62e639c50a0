// Which table relocations stand in, and what the dynamic section tells of such tables.
#include "elfext/interface/relocation.h"
#include "tests/elfext/stale_tables_fixtures.h"

#include <algorithm>
#include <iterator>

namespace elfext::test {
namespace {

using testsupport::ElfBuilder;
using testsupport::ElfBytes;
using testsupport::RichElf;

namespace elf = testsupport::elf;

class RelocationTablesTest : public StaleTablesTest {};
INSTANTIATE_FORMATS(RelocationTablesTest);

// Two tables of one section, whose relocations have the types of their numbers.
TEST_P(RelocationTablesTest, RelocationsStayInTheirTables) {
    ElfBuilder builder(format());
    const size_t text = builder.add({.name = ".text", .contents = std::string(64, 'T')});
    const size_t symbols = builder.addSymbols({{.name = "f"}});
    const size_t one = builder.addRelocations(
        ".rel.one", SHT_REL, text, symbols,
        {{.offset = 0, .symbol = 1, .type = 1}, {.offset = 4, .symbol = 1, .type = 2}});
    const size_t two = builder.addRelocations(
        ".rel.two", SHT_REL, text, symbols,
        {{.offset = 8, .symbol = 1, .type = 3}, {.offset = 12, .symbol = 1, .type = 4}});
    ASSERT_TRUE(read(builder.bytes()));
    const std::string second = contentsOf(section(two));
    ManualPruneCriteria criteria;
    criteria.addRelocation(section(text).getRelocations()[0]);
    module().prune(criteria);
    section(text).addRelocation(16, 5, module().getSymbol(1));
    module().updateAuxiliarySections();
    EXPECT_EQ(section(one).getSize(), 2 * width());
    EXPECT_EQ(section(two).getSize(), 3 * 2 * width());
    EXPECT_EQ(contentsOf(section(two)).substr(0, second.size()), second);
}

// What the dynamic section tells of tables in memory.
class RelocationTagsTest : public StaleTablesTest {
protected:
    using Tags = std::vector<std::pair<uint64_t, uint64_t>>;

    void SetUp() override {
        StaleTablesTest::SetUp();
        makeImage();
    }
    void makeImage() {
        makeFormat(ET_DYN);
        SegmentFields fields;
        fields.m_Type = PT_LOAD;
        module().createSegment(fields);
        m_Dynamic = module().createDynamicSection();
        m_Dynamic->setFlags(SHF_ALLOC);
        m_Dynamic->setAddress(0x5000);
    }
    uint64_t entrySize(bool hasAddends = true) const { return (hasAddends ? 3 : 2) * width(); }
    // A table at `address` with relocations of these types, for a target of its own.
    Section* makeTable(uint64_t address, const std::vector<uint16_t>& types, bool hasAddends = true,
                       const char* targetName = ".data") {
        Section* const target = module().createSection(targetName, SHT_PROGBITS, SHF_ALLOC);
        auto* const table = module().createRelocationSection(
            ".rel.dyn", hasAddends ? SHT_RELA : SHT_REL, SHF_ALLOC);
        table->setAddress(address);
        table->setTarget(target, true);
        for (const uint16_t type : types) {
            Relocation* const relocation =
                hasAddends ? target->addRelocationWithAddend(0, type, nullptr, 0)
                           : target->addRelocation(0, type, nullptr);
            relocation->setIsDynamic(true);
        }
        return table;
    }
    // With tables that hold their relocations, as in a file.
    void setTags(const Tags& tags) {
        module().updateAuxiliarySections();
        ElfBytes entries = bytes();
        for (const auto& [tag, value] : tags) {
            entries.address(tag).address(value);
        }
        setContents(*m_Dynamic, entries.address(0).address(0).bytes());
    }
    Tags tagsNow() {
        module().updateAuxiliarySections();
        const Buffer& contents = m_Dynamic->getLoadedContents();
        const auto number = [this, &contents](uint64_t offset) {
            return width() == 8 ? contents.getUnalignedUint64(offset)
                                : contents.getUnalignedUint32(offset);
        };
        Tags tags;
        for (uint64_t place = 0; number(place) != DT_NULL; place += 2 * width()) {
            const uint64_t tag = number(place);
            if (tag != DT_STRTAB && tag != DT_STRSZ && tag != DT_SYMTAB && tag != DT_SYMENT) {
                tags.emplace_back(tag, number(place + width()));
            }
        }
        return tags;
    }
    // Sixteen bytes in memory.
    Section* makePart(uint64_t address, uint32_t type = SHT_PROGBITS, uint32_t flags = 0) {
        Section* const part = module().createSection(".part", type, SHF_ALLOC | flags);
        part->setAddress(address);
        part->setSize(16);
        return part;
    }
    void pruneRelocation(Section* table, uint32_t index) {
        ManualPruneCriteria criteria;
        criteria.addRelocation(table->asRelocationSection()->getTarget()->getRelocations()[index]);
        module().prune(criteria);
    }

    Section* m_Dynamic = nullptr;
};
INSTANTIATE_FORMATS(RelocationTagsTest);

TEST_P(RelocationTagsTest, ANewSectionTellsOfTheFirstTableOfEachKind) {
    makeTable(0x1000, {8, 8});
    makeTable(0x2000, {8});
    makeTable(0x3000, {8}, false);
    makeTable(0x4000, {7}, false, ".plt");
    EXPECT_EQ(tagsNow(), (Tags{{DT_RELA, 0x1000},
                               {DT_RELASZ, 2 * entrySize()},
                               {DT_RELAENT, entrySize()},
                               {DT_REL, 0x3000},
                               {DT_RELSZ, entrySize(false)},
                               {DT_RELENT, entrySize(false)},
                               {DT_JMPREL, 0x4000},
                               {DT_PLTRELSZ, entrySize(false)},
                               {DT_PLTREL, DT_REL}}));
}

TEST_P(RelocationTagsTest, CountsAndSizesFollowWhatIsLeft) {
    Section* const table = makeTable(0x1000, {8, 8, 8, 6, 8});
    const auto tags = [this](uint64_t relocations, uint64_t relative) {
        return Tags{{DT_RELA, 0x1000},
                    {DT_RELASZ, relocations * entrySize()},
                    {DT_RELAENT, entrySize()},
                    {DT_RELACOUNT, relative},
                    {DT_DEBUG, 7}};
    };
    setTags(tags(5, 3));
    EXPECT_EQ(tagsNow(), tags(5, 3));
    pruneRelocation(table, 4);
    EXPECT_EQ(tagsNow(), tags(4, 3));
    pruneRelocation(table, 1);
    EXPECT_EQ(tagsNow(), tags(3, 2));
    pruneRelocation(table, 2);
    EXPECT_EQ(tagsNow(), tags(2, 2));
    pruneRelocation(table, 0);
    pruneRelocation(table, 0);
    EXPECT_EQ(tagsNow(), (Tags{{DT_DEBUG, 7}}));
}

TEST_P(RelocationTagsTest, TheCountFollowsAlsoWhereTheSizeStays) {
    Section* const table = makeTable(0x1000, {8, 8, 8, 6});
    const auto tags = [this](uint64_t relative) {
        return Tags{{DT_RELA, 0x1000}, {DT_RELASZ, 4 * entrySize()}, {DT_RELACOUNT, relative}};
    };
    setTags(tags(3));
    Section* const target = table->asRelocationSection()->getTarget();
    pruneRelocation(table, 0);
    target->addRelocationWithAddend(0, 8, nullptr, 0)->setIsDynamic(true); // behind the other type
    EXPECT_EQ(tagsNow(), tags(2));
    target->getRelocations()[1]->setType(6);
    EXPECT_EQ(tagsNow(), tags(1));
}

// What a file counts otherwise stays for as long as its relocations do.
TEST_P(RelocationTagsTest, ACountThatNeverWasRightStays) {
    makeTable(0x1000, {8, 6});
    const Tags tags = {{DT_RELA, 0x1000}, {DT_RELASZ, 77}, {DT_RELACOUNT, 2}};
    setTags(tags);
    EXPECT_EQ(tagsNow(), tags);
}

TEST_P(RelocationTagsTest, AllThreeKindsGo) {
    Section* const plain = makeTable(0x1000, {8, 8}, false);
    Section* const calls = makeTable(0x2000, {7}, false);
    const Tags ofCalls = {
        {DT_JMPREL, 0x2000}, {DT_PLTRELSZ, entrySize(false)}, {DT_PLTREL, DT_REL}};
    Tags all = {{DT_REL, 0x1000},
                {DT_RELSZ, 2 * entrySize(false)},
                {DT_RELENT, entrySize(false)},
                {DT_RELCOUNT, 1}};
    all.insert(all.end(), ofCalls.begin(), ofCalls.end());
    setTags(all);
    EXPECT_EQ(tagsNow(), all);
    pruneRelocation(plain, 1);
    pruneRelocation(plain, 0);
    EXPECT_EQ(tagsNow(), ofCalls);
    pruneRelocation(calls, 0);
    EXPECT_EQ(tagsNow(), Tags());
}

TEST_P(RelocationTagsTest, AStretchOfSeveralTablesEndsWithTheLastThatIsLeft) {
    const uint64_t size = entrySize();
    std::vector<Section*> tables;
    for (uint64_t i = 0; i < 3; ++i) {
        tables.push_back(makeTable(0x1000 + 2 * i * size, {8, 8}));
    }
    const auto tags = [](uint64_t address, uint64_t length, uint64_t count) {
        return Tags{{DT_RELA, address}, {DT_RELASZ, length}, {DT_RELACOUNT, count}};
    };
    setTags(tags(0x1000, 6 * size, 6));
    module().updateAuxiliarySections();
    pruneRelocation(tables[2], 0);
    EXPECT_EQ(tagsNow(), tags(0x1000, 5 * size, 2));
    pruneRelocation(tables[1], 0); // leaves a gap
    EXPECT_EQ(tagsNow(), tags(0x1000, 5 * size, 2));
    pruneRelocation(tables[0], 1);
    pruneRelocation(tables[0], 0);
    EXPECT_EQ(tagsNow(), tags(0x1000 + 2 * size, 3 * size, 0));
}

TEST_P(RelocationTagsTest, ARemovedTableTakesItsTagsAlong) {
    Section* const table = makeTable(0x1000, {8});
    const Tags stay = {{DT_REL, 0x9000}, {DT_RELSZ, 0x40}, {DT_HASH, 0x7000}};
    Tags all = {{DT_RELA, 0x1000}, {DT_RELASZ, entrySize()}};
    all.insert(all.end(), stay.begin(), stay.end());
    setTags(all);
    EXPECT_EQ(tagsNow(), all);
    ManualPruneCriteria criteria;
    criteria.addSection(table);
    criteria.addRelocation(table->asRelocationSection()->getTarget()->getRelocations()[0]);
    module().prune(criteria);
    // Of the others no section tells, so nobody knows that they are gone.
    EXPECT_EQ(tagsNow(), stay);
}

// Not even noted when the tags were first looked at, and not noted later on.
TEST_P(RelocationTagsTest, TagsOfATableThatWentBeforeDoNotComeBack) {
    const Section* const table = makeTable(0x1000, {8});
    const Tags stay = {{DT_DEBUG, 7}};
    setTags({{DT_RELA, 0x1000}, {DT_RELASZ, entrySize()}, stay[0]});
    ManualPruneCriteria criteria;
    criteria.addSection(table);
    criteria.addRelocation(table->asRelocationSection()->getTarget()->getRelocations()[0]);
    module().prune(criteria);
    EXPECT_EQ(tagsNow(), stay);
    module().markChanged();
    EXPECT_EQ(tagsNow(), stay);
}

// --- Other tags of memory that is not there any more

TEST_P(RelocationTagsTest, TagsThatLeadToRemovedMemoryGo) {
    const std::vector<std::pair<uint64_t, Tags>> parts = {
        {0x2000, {{DT_INIT, 0x2000}}},
        {0x2100, {{DT_FINI, 0x210F}}}, // its last byte
        {0x2200, {{DT_INIT_ARRAY, 0x2200}, {DT_INIT_ARRAYSZ, 16}}},
        {0x2300, {{DT_FINI_ARRAY, 0x2300}, {DT_FINI_ARRAYSZ, 16}}},
        {0x2400, {{DT_PREINIT_ARRAY, 0x2400}, {DT_PREINIT_ARRAYSZ, 16}}},
        {0x2500, {{DT_RELR, 0x2500}, {DT_RELRSZ, 16}, {DT_RELRENT, 8}}},
        {0x2600, {{DT_PLTGOT, 0x2600}}},
    };
    for (const auto& gone : parts) {
        startModule();
        makeImage();
        const Section* doomed = nullptr;
        Tags all;
        Tags left;
        for (const auto& part : parts) {
            const Section* const made = makePart(part.first);
            doomed = &part == &gone ? made : doomed;
            all.insert(all.end(), part.second.begin(), part.second.end());
            if (&part != &gone) {
                left.insert(left.end(), part.second.begin(), part.second.end());
            }
        }
        setTags(all);
        module().setInit(0x2000);
        module().setFini(0x210F);
        module().setInitArray(0x2200);
        module().setInitArraySize(16);
        module().setFiniArray(0x2300);
        module().setFiniArraySize(16);
        module().setPreinitArray(0x2400);
        module().setPreinitArraySize(16);
        EXPECT_EQ(tagsNow(), all);
        prune({doomed});
        EXPECT_EQ(tagsNow(), left) << std::hex << gone.first;
        module().setAuxiliarySectionsUpToDate(false); // they do not come back either
        EXPECT_EQ(tagsNow(), left) << std::hex << gone.first;
    }
}

TEST_P(RelocationTagsTest, APlaceThatTheProgramStatesInsteadStays) {
    const Section* const part = makePart(0x2000);
    setTags({{DT_INIT, 0x2000}, {DT_FINI, 0x2004}});
    module().setInit(0x2000);
    module().setFini(0x2004);
    prune({part});
    module().setInit(0x3000);
    EXPECT_EQ(tagsNow(), (Tags{{DT_INIT, 0x3000}}));
    EXPECT_EQ(module().getFini(), std::nullopt);
}

TEST_P(RelocationTagsTest, TagsThatLeadBesideRemovedMemoryStay) {
    const Section* const code = makePart(0x2000);
    const Section* const ofThreads = makePart(0x2200, SHT_NOBITS, SHF_TLS);
    makePart(0x2200);
    Section* const empty = makePart(0x2300);
    empty->setSize(0);
    const Tags all = {{DT_PLTGOT, 0x1FFF}, {DT_INIT, 0x2010}, {DT_RELR, 0x2200}, {DT_HASH, 0x2300}};
    setTags(all);
    module().setInit(0x2010);
    prune({code, ofThreads, empty});
    EXPECT_EQ(tagsNow(), all);
}

// A new dynamic section tells what the module has read of the old one.
TEST_P(RelocationTagsTest, ValuesOfRemovedMemoryDoNotOutliveTheirSection) {
    for (const bool isAtOnce : {true, false}) {
        startModule();
        makeImage();
        const Section* const code = makePart(0x2000);
        module().setInit(0x2000);
        module().setFini(0x3000);
        if (isAtOnce) {
            prune({m_Dynamic, code});
        } else {
            prune({m_Dynamic});
            prune({code});
        }
        ASSERT_EQ(module().getDynamicSections().getSize(), 0U);
        module().updateAuxiliarySections();
        ASSERT_EQ(module().getDynamicSections().getSize(), 1U);
        m_Dynamic = module().getDynamicSections()[0];
        const Tags now = tagsNow();
        EXPECT_EQ(std::count(now.begin(), now.end(), Tags::value_type(DT_FINI, 0x3000)), 1);
        EXPECT_TRUE(std::none_of(now.begin(), now.end(),
                                 [](const auto& tag) { return tag.first == DT_INIT; }));
        EXPECT_EQ(module().getInit(), std::nullopt);
    }
}

class DynamicTagsTest : public StaleTablesTest {
protected:
    void SetUp() override {
        StaleTablesTest::SetUp();
        rich = richElf(format(), elf::ET_DYN);
        ASSERT_TRUE(read(rich));
    }
    bool hasTag(uint64_t tag) {
        const Buffer& contents = module().getDynamicSections()[0]->getLoadedContents();
        for (uint64_t place = 0; place + 2 * width() <= contents.getSize(); place += 2 * width()) {
            if ((width() == 8 ? contents.getUnalignedUint64(place)
                              : contents.getUnalignedUint32(place)) == tag) {
                return true;
            }
        }
        return false;
    }
    // Which of these there are after an update, and after another one.
    std::vector<uint32_t> tagsOf(const std::vector<uint32_t>& tags) {
        std::vector<uint32_t> found;
        for (int i = 0; i < 2; ++i) {
            module().setAuxiliarySectionsUpToDate(false);
            module().updateAuxiliarySections();
            found.clear();
            std::copy_if(tags.begin(), tags.end(), std::back_inserter(found),
                         [this](uint32_t tag) { return hasTag(tag); });
        }
        return found;
    }

    RichElf rich;
};
INSTANTIATE_FORMATS(DynamicTagsTest);

// None of the tables says anything without the others: the loader takes the numbers of symbols'
// versions for those of definitions and requirements.
TEST_P(DynamicTagsTest, TagsOfVersionsGoTogether) {
    const std::vector<uint32_t> tags = {DT_VERSYM, DT_VERDEF, DT_VERDEFNUM, DT_VERNEED,
                                        DT_VERNEEDNUM};
    EXPECT_EQ(tagsOf(tags), tags);
    for (const size_t table : {rich.versym, rich.verdef, rich.verneed}) {
        startModule();
        ASSERT_TRUE(read(rich));
        prune({&section(table)});
        EXPECT_EQ(tagsOf(tags), std::vector<uint32_t>()) << table;
        EXPECT_TRUE(hasTag(DT_HASH));
    }
}

TEST_P(DynamicTagsTest, TagsOfARemovedHashTableGo) {
    const std::vector<uint32_t> tags = {DT_HASH, DT_VERSYM};
    prune({&section(rich.hash)});
    EXPECT_EQ(tagsOf(tags), std::vector<uint32_t>{DT_VERSYM});
}

TEST_P(DynamicTagsTest, TagsOfRemovedSymbolsAndTextsGo) {
    const std::vector<uint32_t> tags = {DT_SYMTAB, DT_SYMENT, DT_STRTAB, DT_STRSZ};
    EXPECT_EQ(tagsOf(tags), tags);
    prune({&section(rich.dynamicSymbols)});
    EXPECT_EQ(tagsOf(tags), (std::vector<uint32_t>{DT_STRTAB, DT_STRSZ}));
    startModule();
    ASSERT_TRUE(read(rich));
    prune({&section(rich.dynamicStrings)});
    EXPECT_EQ(tagsOf(tags), (std::vector<uint32_t>{DT_SYMTAB, DT_SYMENT}));
}

TEST_P(DynamicTagsTest, TheTagOfARemovedPreemptionMapGoes) {
    const std::vector<uint32_t> tags = {DT_HASH, DT_QEL_PREEMPTMAP};
    EXPECT_EQ(tagsOf(tags), tags);
    ManualPruneCriteria criteria;
    criteria.addSection(module().getPreemptionMapSections()[0]);
    for (uint32_t i = 0; i < module().getPreemptionCount(); ++i) {
        criteria.addPreemption(module().getPreemption(i));
    }
    module().prune(criteria);
    EXPECT_EQ(tagsOf(tags), std::vector<uint32_t>{DT_HASH});
}

// The preemptions themselves still stand, so they get another map.
TEST_P(DynamicTagsTest, PreemptionsGetANewMapInPlaceOfARemovedOne) {
    const uint32_t count = module().getPreemptionCount();
    ASSERT_NE(count, 0U);
    prune({module().getPreemptionMapSections()[0]});
    module().updateAuxiliarySections();
    ASSERT_EQ(module().getPreemptionMapSections().getSize(), 1U);
    EXPECT_NE(module().getPreemptionMapSections()[0]->getContentsSize(), 0U);
    EXPECT_EQ(module().getPreemptionCount(), count);
}

} // namespace
} // namespace elfext::test
