// The second kind of hash table of dynamic symbols, seen as a loader sees it.
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/stale_tables_fixtures.h"

namespace elfext::test {
namespace {

class GnuHashTest : public StaleTablesTest {
protected:
    // A module with 40 functions, some of which are not offered, and a table that knows nothing.
    void makeModule() {
        makeFormat(ET_DYN);
        Section* const text = module().createSection(".text", SHT_PROGBITS, SHF_ALLOC);
        for (int i = 0; i < 40; ++i) {
            const std::string name = "function" + std::to_string(i);
            SymbolFields fields;
            fields.m_Name = name.c_str();
            fields.m_Binding = i % 10 == 3 ? STB_LOCAL : STB_GLOBAL;
            if (i % 5 == 1) {
                module().createDynamicUndefinedSymbol(fields);
            } else if (i % 5 == 2) {
                module().createDynamicAbsoluteSymbol(fields, 8);
            } else {
                module().createDynamicHostedSymbol(fields, text, 4);
            }
        }
        auto* const symbols = module().createSymbolTableSection(SHT_DYNSYM, ".dynsym");
        symbols->setHashSection(module().createHashSection());
        m_Hash = module().createSection(".hash2", SHT_GNU_HASH, SHF_ALLOC);
        m_Hash->setLink(symbols);
        // 7 buckets, from entry 1, two words of filter, shifted by 5.
        setContents(*m_Hash, bytes().word(7).word(1).word(2).word(5).bytes() +
                                 std::string(2 * width() + 7 * 4, '\0'));
    }
    uint32_t word(uint64_t offset) const {
        return m_Hash->getLoadedContents().getUnalignedUint32(offset);
    }
    // The number of the symbol that a loader finds, 0 for none.
    uint32_t find(const std::string& name) {
        uint32_t hash = 5381;
        for (const char c : name) {
            hash = hash * 33 + static_cast<uint8_t>(c);
        }
        const auto bits = static_cast<uint32_t>(8 * width());
        const Buffer& table = m_Hash->getLoadedContents();
        const uint64_t place = 16 + width() * (hash / bits % word(8));
        const uint64_t filter =
            width() == 8 ? table.getUnalignedUint64(place) : table.getUnalignedUint32(place);
        if ((filter >> hash % bits & filter >> (hash >> word(12)) % bits & 1) == 0) {
            return 0;
        }
        const uint64_t buckets = 16 + width() * word(8);
        uint32_t entry = word(buckets + uint64_t{4} * (hash % word(0)));
        while (entry != 0) {
            const uint32_t chain = word(buckets + uint64_t{4} * (word(0) + entry - word(4)));
            if ((chain | 1) == (hash | 1) &&
                textOf(module().getDynamicSymbol(entry)->getName()) == name) {
                return entry;
            }
            entry = (chain & 1) == 0 ? entry + 1 : 0;
        }
        return 0;
    }
    void expectThatAllAreFound() {
        uint32_t offered = 0;
        for (const Symbol* const symbol : module().getDynamicSymbols()) {
            const bool isOffered = symbol->getCategory() != Symbol::Category_Undefined &&
                                   symbol->getBinding() != STB_LOCAL;
            const uint32_t expected = isOffered ? module().getDynamicSymbolIndex(symbol) : 0;
            EXPECT_EQ(find(symbol->getName()), expected) << symbol->getName();
            offered += isOffered ? 1U : 0U;
        }
        EXPECT_EQ(m_Hash->getContentsSize(), 16 + 2 * width() + 4 * (7 + uint64_t{offered}));
        EXPECT_EQ(word(4), module().getDynamicSymbolCount() + 1 - offered);
    }

    Section* m_Hash = nullptr;
};
INSTANTIATE_FORMATS(GnuHashTest);

TEST_P(GnuHashTest, FindsWhatIsOfferedAndNothingElse) {
    makeModule();
    module().updateAuxiliarySections();
    expectThatAllAreFound();
    EXPECT_EQ(find("function4"), module().getDynamicSymbolIndex([this] {
        SymbolList found;
        module().findDynamicSymbols("function4", found);
        return found[0];
    }()));
}

TEST_P(GnuHashTest, FollowsWhenSymbolsGoMoveComeOrChange) {
    makeModule();
    module().updateAuxiliarySections();
    const auto indexOf = [this](const char* name) {
        SymbolList found;
        module().findDynamicSymbols(name, found);
        return module().getDynamicSymbolIndex(found[0]);
    };
    for (const char* const name : {"function0", "function39", "function1", "function13"}) {
        pruneDynamicSymbol(indexOf(name));
        module().updateAuxiliarySections();
        EXPECT_EQ(find(name), 0U);
        expectThatAllAreFound();
    }
    module().setDynamicSymbolIndex(module().getDynamicSymbol(30), 12);
    module().updateAuxiliarySections();
    expectThatAllAreFound();
    SymbolFields fields;
    fields.m_Name = "another";
    fields.m_Binding = STB_GLOBAL;
    module().createDynamicAbsoluteSymbol(fields, 1);
    module().updateAuxiliarySections();
    EXPECT_NE(find("another"), 0U);
    expectThatAllAreFound();
    module().getDynamicSymbol(indexOf("function6"))->makeAbsolute(3); // it was undefined
    module().getDynamicSymbol(indexOf("function4"))->setName("renamed");
    module().updateAuxiliarySections();
    EXPECT_NE(find("function6"), 0U);
    EXPECT_NE(find("renamed"), 0U);
    expectThatAllAreFound();
}

TEST_P(GnuHashTest, StaysAsItIsWhereItFits) {
    makeModule();
    module().updateAuxiliarySections();
    std::string fitting = contentsOf(*m_Hash);
    fitting.replace(16, 2 * width(), 2 * width(), '\xFF'); // a filter that lets all pass
    setContents(*m_Hash, fitting);
    const Names before = namesOf(module().getDynamicSymbols());
    module().updateAuxiliarySections();
    EXPECT_EQ(contentsOf(*m_Hash), fitting);
    EXPECT_EQ(namesOf(module().getDynamicSymbols()), before);
}

TEST_P(GnuHashTest, WithoutAnythingToFindItIsEmpty) {
    makeModule();
    ManualPruneCriteria criteria;
    for (const Symbol* const symbol : module().getDynamicSymbols()) {
        if (symbol->getCategory() != Symbol::Category_Undefined) {
            criteria.addSymbol(symbol);
        }
    }
    const std::string empty = contentsOf(*m_Hash);
    module().prune(criteria);
    module().updateAuxiliarySections();
    EXPECT_EQ(module().getDynamicSymbolCount(), 8U);
    EXPECT_EQ(contentsOf(*m_Hash), empty); // as linkers make it
}

TEST_P(GnuHashTest, WhatIsNoSuchTableIsLeftAlone) {
    const std::string rest(2 * width() + 7 * 4, '\0');
    for (const std::string& contents :
         {std::string(), std::string(15, 'x'),
          bytes().word(0).word(1).word(2).word(5).bytes() + rest,
          bytes().word(7).word(0).word(2).word(5).bytes() + rest,
          bytes().word(7).word(1).word(3).word(5).bytes() + rest,
          bytes().word(7).word(1).word(0).word(5).bytes() + rest,
          bytes().word(7).word(1).word(2).word(32).bytes() + rest,
          bytes().word(8).word(1).word(2).word(5).bytes() + rest,
          bytes().word(UINT32_MAX).word(1).word(0x80000000).word(5).bytes() + rest}) {
        startModule();
        makeModule();
        setContents(*m_Hash, contents);
        module().updateAuxiliarySections();
        EXPECT_EQ(contentsOf(*m_Hash), contents);
    }
}

} // namespace
} // namespace elfext::test
