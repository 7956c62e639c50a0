// What a module shares: names, blocks, records, and the memo of decorations.
#include "attributes/interface/build_attributes_cache.h"

#include <cstring>
#include <string>
#include <vector>

#include "attributes/interface/decoration.h"
#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

class CacheTest : public RecordTest {
protected:
    void SetUp() override {
        RecordTest::SetUp();
        m_Cache = std::make_unique<BuildAttributesCache>(region());
    }
    void TearDown() override {
        m_Cache.reset();
        RecordTest::TearDown();
    }
    static const uint8_t* bytes(const std::string& text) {
        return reinterpret_cast<const uint8_t*>(text.data());
    }
    const BuildAttributesBlock* intern(const std::string& vendor, const std::string& contents) {
        return m_Cache->internBlock(vendor.c_str(), bytes(contents),
                                    static_cast<uint32_t>(contents.size()));
    }

    std::unique_ptr<BuildAttributesCache> m_Cache;
};
using CacheDeathTest = CacheTest;

TEST_F(CacheTest, NamesAreKeptOnce) {
    std::string name = "vendor";
    const char* const kept = m_Cache->internVendorName(name.c_str());
    EXPECT_NE(kept, name.c_str());
    name[0] = 'V';
    EXPECT_STREQ(kept, "vendor");
    EXPECT_EQ(m_Cache->internVendorName("vendor"), kept);
    EXPECT_EQ(m_Cache->internVendorName(kept), kept);
    EXPECT_NE(m_Cache->internVendorName("Vendor"), kept);
    EXPECT_EQ(m_Cache->getVendorNameCount(), 2U);
    EXPECT_STREQ(m_Cache->getVendorName(0), "vendor");
    EXPECT_STREQ(m_Cache->getVendorName(1), "Vendor");
}

// Pieces of sixteen bytes in two forms, of which the second undoes with a few bits what its first
// half has changed: that is all it takes where a hash multiplies by one factor for each eight.
TEST_F(CacheTest, NamesThatAreMadeToCollideAreFoundAgain) {
    constexpr uint32_t pieces = 16;
    constexpr uint32_t count = 1U << pieces;
    const char* first = nullptr;
    for (uint32_t i = 0; i < count; ++i) {
        std::string name;
        for (uint32_t piece = 0; piece < pieces; ++piece) {
            name += (i >> piece & 1U) != 0 ? "aaaaaaaaaaaaaaaa"
                                           : "aaaaaaa\xE1"
                                             "aaaaeaa\xE1";
        }
        const char* const kept = m_Cache->internVendorName(name.c_str());
        first = i == 0 ? kept : first;
    }
    EXPECT_EQ(m_Cache->getVendorNameCount(), count);
    EXPECT_EQ(m_Cache->getVendorName(0), first);
}

TEST_F(CacheTest, BlocksAreKeptOnceByVendorAndBytes) {
    const BuildAttributesBlock* const block = intern("qeabi", "abc");
    EXPECT_STREQ(block->getVendorName(), "qeabi");
    EXPECT_EQ(block->getLength(), 3U);
    EXPECT_EQ(std::memcmp(block->getData(), "abc", 3), 0);
    EXPECT_EQ(intern("qeabi", "abc"), block);
    EXPECT_NE(intern("qeabi", "abd"), block);
    EXPECT_NE(intern("qeabi", "ab"), block);
    const BuildAttributesBlock* const other = intern("QEL", "abc");
    EXPECT_NE(other, block);
    // The bytes are shared between vendors.
    EXPECT_EQ(other->getData(), block->getData());
    EXPECT_EQ(m_Cache->getBlockCount(), 4U);
    EXPECT_EQ(m_Cache->getByteBlockCount(), 3U);
    EXPECT_EQ(m_Cache->getVendorNameCount(), 2U);
    EXPECT_EQ(m_Cache->getBlock(0), block);
}

TEST_F(CacheTest, AnInternedBlockIsFoundByItsOwnBytes) {
    const BuildAttributesBlock* const block = intern("qeabi", "abcdef");
    EXPECT_EQ(m_Cache->internBlock(block->getVendorName(), block->getData(), block->getLength()),
              block);
    // A part of it is other bytes.
    const BuildAttributesBlock* const part =
        m_Cache->internBlock(block->getVendorName(), block->getData(), 3);
    EXPECT_NE(part, block);
    EXPECT_EQ(part, intern("qeabi", "abc"));
}

TEST_F(CacheTest, BlocksMayBeEmptyAndHoldZeros) {
    const BuildAttributesBlock* const empty = intern("v", "");
    EXPECT_EQ(empty->getLength(), 0U);
    EXPECT_NE(empty->getData(), nullptr);
    EXPECT_EQ(intern("v", ""), empty);
    const std::string zeros(5, '\0');
    EXPECT_NE(intern("v", zeros), intern("v", zeros.substr(1)));
    EXPECT_EQ(m_Cache->getBlockCount(), 3U);
}

TEST_F(CacheDeathTest, NamesAndBytesAreNeeded) {
    const char* const file = "attributes/src/build_attributes_cache";
    EXPECT_FAULT(m_Cache->internBlock(nullptr, bytes("a"), 1), file, "vendorName != NULL");
    EXPECT_FAULT(m_Cache->internBlock("v", nullptr, 1), file, "data != NULL");
    EXPECT_FAULT(m_Cache->internVendorName(nullptr), file, "vendorName != NULL");
    const char* const header = "attributes/interface/build_attributes_cache";
    EXPECT_FAULT(BuildAttributesBlock(nullptr, bytes("a"), 1), header, "vendorName != NULL");
    EXPECT_FAULT(BuildAttributesBlock("v", nullptr, 1), header, "data != NULL");
}

TEST_F(CacheTest, RecordsAreKeptOnceAndRebuilt) {
    const BuildAttributes record = recordWith({{Tag_CPU_arch, 10}, {Tag_QEL_ISA_use, 1}});
    ASSERT_TRUE(record.derivedStale);
    const BuildAttributes* const kept = m_Cache->internRecord(record);
    EXPECT_FALSE(kept->derivedStale);
    EXPECT_TRUE(hasAll(kept->fullAttr.isa, feature_word::QEL_ISAv6));
    EXPECT_TRUE(record.derivedStale);
    EXPECT_EQ(m_Cache->internRecord(record), kept);
    EXPECT_EQ(m_Cache->internRecord(*kept), kept);
    EXPECT_NE(m_Cache->internRecord(BuildAttributes()), kept);
    EXPECT_EQ(m_Cache->getRecordCount(), 2U);
    EXPECT_EQ(m_Cache->getRecord(0), kept);
}

TEST_F(CacheTest, ARecordThatIsNotStaleKeepsItsValue) {
    BuildAttributes record;
    record.setTag(Tag_ABI_enum_size, 2);
    ASSERT_FALSE(record.derivedStale);
    EXPECT_EQ(m_Cache->internRecord(record)->fullAttr, defaultFullAttr());
    // Once anything marks it, the value shows.
    record.setTag(Tag_PCS_config, 1);
    EXPECT_TRUE(m_Cache->internRecord(record)->fullAttr.options & option_bit::ENUMINT);
}

TEST_F(CacheTest, RecordsThatDifferInAGapAreOne) {
    const BuildAttributes* const first = m_Cache->internRecord(recordWith({{Tag_BTI_use, 1}}));
    EXPECT_EQ(m_Cache->internRecord(BuildAttributes()), first);
    EXPECT_EQ(first->getNumber(Tag_BTI_use), 1U);
}

TEST_F(CacheTest, VendorNamesOfRecordsMoveIntoTheCache) {
    std::string name = "gnat";
    BuildAttributes record;
    record.addCompatibilityTag(1, name.c_str());
    const BuildAttributes* const kept = m_Cache->internRecord(record);
    name = "gone";
    EXPECT_NE(kept->findCompatibilityTag(1, "gnat"), nullptr);
    EXPECT_EQ((*kept->m_CompatibilityTags)[0].vendorName, m_Cache->internVendorName("gnat"));
    EXPECT_EQ(m_Cache->internRecord(*kept), kept);
}

TEST_F(CacheTest, ManyOfEachAreFoundAgain) {
    RandomSource random(5);
    std::vector<BuildAttributes> records;
    std::vector<const BuildAttributes*> kept;
    for (int i = 0; i < 1000; ++i) {
        records.push_back(random.record());
        kept.push_back(m_Cache->internRecord(records.back()));
    }
    for (size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(m_Cache->internRecord(records[i]), kept[i]);
        // The first equal one in order of arrival.
        uint32_t first = 0;
        while (!m_Cache->getRecord(first)->equals(records[i])) {
            ++first;
        }
        EXPECT_EQ(m_Cache->getRecord(first), kept[i]);
    }
    for (int i = 0; i < 1000; ++i) {
        const std::string text = std::to_string(i);
        const BuildAttributesBlock* const block = intern("v" + text, text);
        EXPECT_EQ(m_Cache->getBlockCount(), static_cast<uint32_t>(i) + 1);
        EXPECT_EQ(intern("v" + text, text), block);
    }
}

TEST_F(CacheTest, TheHighestVersionOnlyRises) {
    EXPECT_EQ(m_Cache->getHighestVersion(), 0U);
    m_Cache->raiseHighestVersion(7);
    m_Cache->raiseHighestVersion(3);
    EXPECT_EQ(m_Cache->getHighestVersion(), 7U);
}

TEST_F(CacheTest, ADecorationMakesARecordOnce) {
    BuildAttributesMemo& memo = m_Cache->getMemo();
    EXPECT_EQ(&m_Cache->getMemo(), &memo);
    std::string text = "$QEL_ISAv5$IEEE1";
    const BuildAttributes record(text.c_str(), memo, *m_Cache);
    text[0] = 'x';
    EXPECT_EQ(memo.getCount(), 1U);
    const BuildAttributes* const known = memo.find("$QEL_ISAv5$IEEE1");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(memo.find("$QEL_ISAv4"), nullptr);
    EXPECT_EQ(Witness(*known), Witness(record));
    const BuildAttributes again("$QEL_ISAv5$IEEE1", memo, *m_Cache);
    EXPECT_EQ(memo.getCount(), 1U);
    EXPECT_EQ(Witness(again), Witness(record));
    EXPECT_EQ(again.fullAttr, record.fullAttr);
}

TEST_F(CacheTest, DecorationsThatCollideAreFoundAgain) {
    constexpr uint32_t pairs = 16;
    BuildAttributesMemo& memo = m_Cache->getMemo();
    const BuildAttributes record;
    for (uint32_t i = 0; i < 1U << pairs; ++i) {
        const std::string text = collidingText(i, pairs);
        EXPECT_EQ(memo.find(text.c_str()), nullptr);
        memo.add(text.c_str(), record);
        EXPECT_NE(memo.find(text.c_str()), nullptr);
    }
    EXPECT_EQ(memo.getCount(), 1U << pairs);
}

TEST_F(CacheTest, ARecordOfADecorationIsThatOfItsValue) {
    for (const char* const text : {"", "$QEL_ISAv7$K$A_PROFILE", "$FCH_ISAv1$~IW$MD", "nothing"}) {
        FullAttr value;
        parseDecoration(value, text);
        BuildAttributes expected;
        expected.fromFullAttr(value);
        const BuildAttributes record(text, m_Cache->getMemo(), *m_Cache);
        EXPECT_EQ(Witness(record), Witness(expected)) << text;
        EXPECT_EQ(record.fullAttr, expected.fullAttr) << text;
        EXPECT_TRUE(record.present);
        EXPECT_FALSE(record.derivedStale);
    }
}

TEST_F(CacheDeathTest, ADecorationIsNeeded) {
    EXPECT_FAULT(BuildAttributes(nullptr, m_Cache->getMemo(), *m_Cache),
                 "attributes/src/attribute_conversion", "buildAttributesString != NULL");
}

} // namespace
} // namespace attributes::test
