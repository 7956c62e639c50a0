// The two lists of a record.
#include "attributes/interface/compatibility_tags.h"

#include <string>
#include <vector>

#include "tests/attributes/record_fixtures.h"

namespace attributes::test {
namespace {

using CompatibilityTagsTest = RecordTest;
using CompatibilityTagsDeathTest = RecordTest;

std::vector<std::string> namesIn(const CompatibilityTagList& list) {
    std::vector<std::string> names;
    for (const CompatibilityTag& entry : list) {
        names.push_back(std::to_string(entry.flag) + entry.vendorName);
    }
    return names;
}

TEST_F(CompatibilityTagsTest, EntriesAreEqualByFlagAndContentsOfTheName) {
    const std::string first = "QEL";
    const std::string second = "QEL";
    EXPECT_EQ(CompatibilityTag(2, first.c_str()), CompatibilityTag(2, second.c_str()));
    EXPECT_FALSE(CompatibilityTag(2, "QEL") == CompatibilityTag(1, "QEL"));
    EXPECT_FALSE(CompatibilityTag(2, "QEL") == CompatibilityTag(2, "qel"));
    EXPECT_EQ(CompatibilityTag(), CompatibilityTag());
    EXPECT_FALSE(CompatibilityTag() == CompatibilityTag(0, ""));
}

TEST_F(CompatibilityTagsTest, AddingKeepsTheOrderAndRefusesEqualOnes) {
    CompatibilityTagList list;
    EXPECT_TRUE(list.add({1, "b"}));
    EXPECT_TRUE(list.add({1, "a"}));
    EXPECT_TRUE(list.add({2, "b"}));
    EXPECT_FALSE(list.add({1, "a"}));
    EXPECT_EQ(namesIn(list), (std::vector<std::string>{"1b", "1a", "2b"}));
    EXPECT_TRUE(list.contains({2, "b"}));
    EXPECT_EQ(list.find({2, "b"}), &list[2]);
    EXPECT_EQ(list.find({2, "a"}), nullptr);
}

TEST_F(CompatibilityTagsTest, RemovalByEntryAndByVendor) {
    CompatibilityTagList list;
    for (const char* const name : {"a", "b", "a", "c"}) {
        list.add({1, name});
        list.add({2, name});
    }
    EXPECT_FALSE(list.remove({3, "a"}));
    EXPECT_TRUE(list.remove({1, "b"}));
    EXPECT_EQ(namesIn(list), (std::vector<std::string>{"1a", "2a", "2b", "1c", "2c"}));
    EXPECT_EQ(list.removeVendor("a"), 2U);
    EXPECT_EQ(list.removeVendor("a"), 0U);
    EXPECT_EQ(namesIn(list), (std::vector<std::string>{"2b", "1c", "2c"}));
    EXPECT_TRUE(list.add({1, "a"}));
}

TEST_F(CompatibilityTagsTest, LongListsBehaveAsShortOnes) {
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back("vendor" + std::to_string(i));
    }
    CompatibilityTagList list;
    for (const std::string& name : names) {
        EXPECT_TRUE(list.add({1, name.c_str()}));
        EXPECT_FALSE(list.add({1, std::string(name).c_str()}));
    }
    EXPECT_TRUE(list.remove({1, "vendor500"}));
    EXPECT_FALSE(list.remove({1, "vendor500"}));
    EXPECT_FALSE(list.contains({1, "vendor500"}));
    EXPECT_TRUE(list.contains({1, "vendor999"}));
    CompatibilityTagList copy(list);
    EXPECT_EQ(copy, list);
    EXPECT_TRUE(copy.add({1, "vendor500"}));
    EXPECT_FALSE(copy == list);
    EXPECT_STREQ(copy[copy.getCount() - 1].vendorName, "vendor500");
    EXPECT_EQ(copy.removeVendor("vendor7"), 1U);
    EXPECT_TRUE(copy.add({1, "vendor7"}));
    copy = list;
    EXPECT_EQ(copy, list);
    copy = *&copy;
    EXPECT_EQ(copy, list);
    // Another copy of a name changes nothing.
    copy.setVendorName(3, "vendor3");
    EXPECT_EQ(copy, list);
    EXPECT_FALSE(copy.add({1, "vendor3"}));
}

TEST_F(CompatibilityTagsDeathTest, ANameIsNeeded) {
    EXPECT_FAULT(CompatibilityTag(1, nullptr), "attributes/interface/compatibility_tags",
                 "vendorName != NULL");
}

TEST_F(CompatibilityTagsTest, NestedTagsKeepSevenBits) {
    EXPECT_EQ(AlsoCompatibilityTag(134, 9U).getTag(), 6U);
    EXPECT_EQ(AlsoCompatibilityTag(0xFFFFFFFF, "x").getTag(), 127U);
    EXPECT_EQ(AlsoCompatibilityTag(128, 1, "x").getTag(), 0U);
}

TEST_F(CompatibilityTagsTest, NestedAttributesHaveANumberOrATextOrBoth) {
    const AlsoCompatibilityTag number(6, 11U);
    EXPECT_TRUE(number.hasNumber());
    EXPECT_EQ(number.getNumber(), 11U);
    EXPECT_FALSE(number.hasText());
    EXPECT_EQ(number.getText(), nullptr);
    const AlsoCompatibilityTag text(5, "m9");
    EXPECT_FALSE(text.hasNumber());
    EXPECT_STREQ(text.getText(), "m9");
    const AlsoCompatibilityTag both(32, 2, "QEL");
    EXPECT_EQ(both.getNumber(), 2U);
    EXPECT_STREQ(both.getText(), "QEL");
}

TEST_F(CompatibilityTagsDeathTest, ANumberThatIsNotThereCannotBeRead) {
    const AlsoCompatibilityTag text(5, "m9");
    EXPECT_FAULT(static_cast<void>(text.getNumber()), "attributes/interface/compatibility_tags",
                 "m_HasNumericParameter");
}

TEST_F(CompatibilityTagsTest, NestedAttributesAreEqualInAllTheyHold) {
    const std::string name = "m9";
    EXPECT_EQ(AlsoCompatibilityTag(5, "m9"), AlsoCompatibilityTag(5, name.c_str()));
    EXPECT_FALSE(AlsoCompatibilityTag(5, "m9") == AlsoCompatibilityTag(5, "m8"));
    EXPECT_FALSE(AlsoCompatibilityTag(5, "m9") == AlsoCompatibilityTag(7, "m9"));
    EXPECT_FALSE(AlsoCompatibilityTag(6, 1U) == AlsoCompatibilityTag(6, 2U));
    EXPECT_FALSE(AlsoCompatibilityTag(32, 0, "") == AlsoCompatibilityTag(32, ""));
    EXPECT_FALSE(AlsoCompatibilityTag(32, 0, "") == AlsoCompatibilityTag(32, 0U));
}

TEST_F(CompatibilityTagsTest, NestedTextsAreCopiedDeeply) {
    std::string name = "first";
    AlsoCompatibilityTag entry(5, name.c_str());
    name = "other";
    AlsoCompatibilityTag copy(entry);
    EXPECT_STREQ(copy.getText(), "first");
    EXPECT_NE(copy.getText(), entry.getText());
    copy = AlsoCompatibilityTag(6, 1U);
    EXPECT_STREQ(entry.getText(), "first");
    copy = entry;
    entry = *&entry;
    EXPECT_EQ(copy, entry);
}

TEST_F(CompatibilityTagsTest, NestedListAddsFindsRemovesAndClears) {
    AlsoCompatibilityTagList list;
    list.add({6, 1U});
    list.add({6, 2U});
    list.add({6, 1U});
    EXPECT_EQ(list.getCount(), 3U);
    EXPECT_EQ(list.find({6, 2U}), 1U);
    EXPECT_EQ(list.find({6, 1U}), 0U);
    EXPECT_EQ(list.find({6, 3U}), AlsoCompatibilityTagList::NotFound);
    list.remove(0);
    EXPECT_EQ(list.find({6, 1U}), 1U);
    AlsoCompatibilityTagList base;
    base.add({6, 4U});
    base.add({6, 2U});
    base.add({6, 4U});
    list.addMissing(base);
    // An entry that stands twice in the base is missing twice.
    ASSERT_EQ(list.getCount(), 4U);
    EXPECT_EQ(list[2], AlsoCompatibilityTag(6, 4U));
    EXPECT_EQ(list[3], AlsoCompatibilityTag(6, 4U));
    list.clear();
    EXPECT_EQ(list.getCount(), 0U);
}

} // namespace
} // namespace attributes::test
