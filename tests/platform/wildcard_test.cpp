#include "platform/interface/folder_search.h"
#include "platform/interface/wildcard.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scratch_folder.h"

namespace platform {
namespace {

struct MatchCase {
    const char* pattern;
    const char* text;
    bool matches;
};

class WildcardMatch : public testing::TestWithParam<MatchCase> {};

TEST_P(WildcardMatch, Case) {
    EXPECT_EQ(wildcardMatch(GetParam().pattern, GetParam().text), GetParam().matches)
        << GetParam().pattern << " against " << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Member, WildcardMatch,
    testing::Values(MatchCase{"A*.O", "abc.o", true}, MatchCase{"a*.o", "ABC.O", true},
                    MatchCase{"?", "", false}, MatchCase{"?", "x", true}, MatchCase{"", "", true},
                    MatchCase{"", "x", false}, MatchCase{"*", "", true},
                    MatchCase{"***", "abc", true}, MatchCase{"a*", "a", true},
                    MatchCase{"a**b", "ab", true}, MatchCase{"a*b*c", "axxbyybzzc", true},
                    MatchCase{"a*b*c", "axxbyyc_", false}, MatchCase{"*a?", "banana", false},
                    MatchCase{"*a?", "bananas", true}, MatchCase{"x.o", "x.oo", false},
                    MatchCase{"x.oo", "x.o", false}, MatchCase{"[ab]", "a", false},
                    MatchCase{"[ab]", "[AB]", true}, MatchCase{"\xC3\x84", "\xC3\xA4", false},
                    MatchCase{"*\\", "a\\", true}));

TEST(WildcardMatch, ManyStarsDoNotMultiplyTheCost) {
    std::string pattern;
    for (int i = 0; i < 60; ++i) {
        pattern += "*a";
    }
    const std::string text(2000, 'a');
    EXPECT_FALSE(wildcardMatch(pattern + "b", text));
    EXPECT_TRUE(wildcardMatch(pattern, text));
}

std::vector<std::string> matchesIn(const testsupport::ScratchFolder& folder, const char* pattern) {
    std::vector<std::string> names;
    MatchIterator iterator;
    for (const char* name = firstMatch(folder.path().c_str(), pattern, iterator); name != nullptr;
         name = nextMatch(iterator)) {
        names.emplace_back(name);
    }
    return names;
}

class FileWildcards : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"b.o", "a.o", "A.o", ".hidden", "a.txt", "\xC3\xA9.o"}) {
            m_Folder.write(name, "");
        }
    }
    testsupport::ScratchFolder m_Folder;
};

using Names = std::vector<std::string>;

TEST_F(FileWildcards, AreSortedByUnsignedBytes) {
    EXPECT_EQ(matchesIn(m_Folder, "*.o"), (Names{"A.o", "a.o", "b.o", "\xC3\xA9.o"}));
}

TEST_F(FileWildcards, MatchWithCase) {
    EXPECT_EQ(matchesIn(m_Folder, "A.*"), (Names{"A.o"}));
}

TEST_F(FileWildcards, LeadingDotNeedsADot) {
    EXPECT_EQ(matchesIn(m_Folder, "*hidden"), Names{});
    EXPECT_EQ(matchesIn(m_Folder, "?hidden"), Names{});
    EXPECT_EQ(matchesIn(m_Folder, ".h*"), (Names{".hidden"}));
    EXPECT_EQ(matchesIn(m_Folder, ".*"), (Names{".", "..", ".hidden"}));
}

TEST_F(FileWildcards, BracketsAreCharactersLikeOthers) {
    EXPECT_EQ(matchesIn(m_Folder, "[ab].o"), Names{});
    m_Folder.write("[ab].o", "");
    EXPECT_EQ(matchesIn(m_Folder, "[ab].?"), (Names{"[ab].o"}));
}

TEST_F(FileWildcards, NothingFound) {
    EXPECT_EQ(matchesIn(m_Folder, "*.zip"), Names{});
    MatchIterator iterator;
    EXPECT_EQ(firstMatch("/nonexistent/folder", "*", iterator), nullptr);
    EXPECT_EQ(nextMatch(iterator), nullptr);
}

} // namespace
} // namespace platform
