// How groups of members with the same names are found: against the plain rule that compares each
// member with each, and where fingerprints tell nothing.

#include "arlib/src/minor_variant_groups.h"

#include <map>
#include <random>

#include "tests/arlib/variant_fixture.h"

namespace arlibtest {
namespace {

class VariantGroups : public VariantTest {
protected:
    void SetUp() override {
        VariantTest::SetUp();
        region.emplace(1024, "test");
    }
    void TearDown() override {
        region.reset();
        VariantTest::TearDown();
    }

    arlib::SymbolNameList* list(const Names& names) {
        auto* result = new (region->get()->Alloc(sizeof(arlib::SymbolNameList), 8, nullptr))
            arlib::SymbolNameList(region->get());
        for (const std::string& name : names) {
            result->add(name);
        }
        return result;
    }
    bool compatible(const Names& first, const Names& second) {
        return arlib::SymbolComparison(list(first)->getNames())
            .symbolCompatible(list(second)->getNames());
    }
    uint64_t fingerprint(const Names& names) {
        return arlib::symbolFingerprint(list(names)->getNames());
    }

    // The groups among lists of names, as "0 2|1 3"; with real fingerprints, or all the same.
    std::string groups(const std::vector<Names>& lists, bool areFingerprintsBlind = false) {
        arlib::Archive archive;
        arlib::HostingMembers hosting(region->get());
        std::map<const arlib::ArchiveMember*, size_t> indexes;
        for (const Names& names : lists) {
            arlib::ArchiveMember* member = addModule(archive, "m", names);
            indexes[member] = hosting.getSize();
            arlib::SymbolNameList* own = list(names);
            hosting.add(member, *own,
                        areFingerprintsBlind ? 0 : arlib::symbolFingerprint(own->getNames()));
        }
        arlib::MinorVariantGroups found(region->get());
        found.collect(archive, hosting);
        std::string text;
        std::vector<bool> isGrouped(lists.size());
        for (uint32_t i = 0; i < found.getCount(); ++i) {
            text += i != 0 ? "|" : "";
            for (const arlib::MinorVariant& variant : found.get(i)) {
                const size_t index = indexes.at(variant.member);
                text += (text.empty() || text.back() == '|' ? "" : " ") + std::to_string(index);
                isGrouped[index] = true;
                EXPECT_EQ(Names(variant.names.begin(), variant.names.end()), lists[index]);
            }
        }
        for (uint32_t i = 0; i < lists.size(); ++i) {
            EXPECT_EQ(found.isGrouped(i), isGrouped[i]);
        }
        return text;
    }

    // The same by the plain rule: each member that is left starts a group and takes all that are
    // left behind it and have its names.
    static std::string plainGroups(std::vector<Names> lists) {
        for (Names& names : lists) {
            std::sort(names.begin(), names.end());
        }
        std::vector<bool> isTaken(lists.size());
        std::string text;
        for (size_t i = 0; i < lists.size(); ++i) {
            std::string group;
            for (size_t k = i; k < lists.size(); ++k) {
                if (!isTaken[i] && !isTaken[k] && lists[k] == lists[i] && k != i) {
                    group += " " + std::to_string(k);
                    isTaken[k] = true;
                }
            }
            if (!group.empty()) {
                text += (text.empty() ? "" : "|") + std::to_string(i) + group;
            }
        }
        return text;
    }

    std::optional<arlib::OwnedRegion> region;
};

TEST_F(VariantGroups, ListsAreComparedAsMultisets) {
    EXPECT_TRUE(compatible({}, {}));
    EXPECT_TRUE(compatible({"a", "b"}, {"a", "b"}));
    EXPECT_TRUE(compatible({"a", "b", "c"}, {"c", "a", "b"}));
    EXPECT_TRUE(compatible({"a", "b", "a"}, {"a", "a", "b"}));
    EXPECT_FALSE(compatible({"a", "b", "a"}, {"a", "b", "b"})) << "the same names, not as often";
    EXPECT_FALSE(compatible({"a", "b"}, {"a"}));
    EXPECT_FALSE(compatible({"a"}, {"a", "a"}));
    EXPECT_FALSE(compatible({"a", "b"}, {"a", "c"}));
    EXPECT_FALSE(compatible({"name"}, {"Name"})) << "case counts";
    EXPECT_FALSE(compatible({"ab", "c"}, {"a", "bc"}));
}

TEST_F(VariantGroups, FingerprintsDoNotHangOnTheOrder) {
    Names names;
    for (int i = 0; i < 40; ++i) {
        names.push_back(std::string(static_cast<size_t>(i), 'x') + "name" + std::to_string(i));
    }
    const uint64_t first = fingerprint(names);
    std::mt19937 random(1);
    for (int round = 0; round < 20; ++round) {
        std::shuffle(names.begin(), names.end(), random);
        EXPECT_EQ(fingerprint(names), first);
    }
    names.back().back() ^= 1;
    EXPECT_NE(fingerprint(names), first);
}

TEST_F(VariantGroups, FingerprintsTellSimilarListsApart) {
    std::map<uint64_t, std::string> seen;
    const auto isNew = [&](const Names& names) {
        std::string text;
        for (const std::string& name : names) {
            text += name + "/";
        }
        const auto [place, isAdded] = seen.emplace(fingerprint(names), text);
        EXPECT_TRUE(isAdded) << text << " and " << place->second;
    };
    isNew({});
    isNew({""});
    isNew({"", ""});
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i);
        isNew({number});
        isNew({"first_of_" + number, "second_of_" + number});
        isNew({"first_of_" + number, "first_of_" + number});
        isNew({"a_name_of_many_characters_" + number + "_and_more"});
        isNew({std::string(static_cast<size_t>(i % 300) + 1, static_cast<char>('a' + i / 300))});
        isNew({number + "1", "2"});
    }
}

TEST_F(VariantGroups, StandInTheOrderOfTheirFirstMembers) {
    EXPECT_EQ(groups({}), "");
    EXPECT_EQ(groups({{"a"}}), "");
    EXPECT_EQ(groups({{"a"}, {"b"}, {"c"}}), "");
    EXPECT_EQ(groups({{"a"}, {"b"}, {"b"}, {"a"}}), "0 3|1 2");
    EXPECT_EQ(groups({{"x"}, {"a", "b"}, {"c"}, {"b", "a"}, {"c"}, {"a", "b"}, {"y"}}),
              "1 3 5|2 4");
    EXPECT_EQ(groups({{"a"}, {"a"}, {"a"}, {"a"}}), "0 1 2 3");
}

TEST_F(VariantGroups, AreThoseOfThePlainRuleWhateverTheFingerprints) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::vector<Names> lists(random() % 30);
        for (Names& names : lists) {
            names.resize(1 + random() % 3);
            for (std::string& name : names) {
                name = std::string(1, static_cast<char>('a' + random() % 3));
            }
        }
        const std::string expected = plainGroups(lists);
        EXPECT_EQ(groups(lists), expected);
        EXPECT_EQ(groups(lists, true), expected) << "all fingerprints the same";
    }
}

TEST_F(VariantGroups, OnlyMembersOfGroupsAreAskedForAttributes) {
    WrittenModuleType::asked().clear();
    arlib::Archive archive;
    addModule(archive, "alone.o", {"f"});
    addModule(archive, "a.o", {"g"});
    addModule(archive, "other.o", {"G"});
    addModule(archive, "b.o", {"g"});
    table(archive);
    EXPECT_EQ(WrittenModuleType::asked(), (Names{"a.o", "b.o"}));
}

} // namespace
} // namespace arlibtest
