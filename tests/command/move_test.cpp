// Moving members inside the archive.
#include "tests/command/command_case.h"

#include <cctype>
#include <optional>
#include <random>
#include <utility>

namespace commandtest {
namespace {

class Move : public CommandCase {
protected:
    Move() { library("lib.a", {"a", "b", "c", "d", "e"}); }

    // The order after moving with these words, as one text.
    std::string order(Words options, const Words& words) const {
        library("lib.a", {"a", "b", "c", "d", "e"});
        options.insert(options.begin(), "-m");
        options.emplace_back("lib.a");
        options.insert(options.end(), words.begin(), words.end());
        EXPECT_TRUE(ended(tomex(options), 0, "", ""));
        std::string text;
        for (const std::string& name : names()) {
            EXPECT_EQ(contents(name), name + ".");
            text += name;
        }
        return text;
    }
};

TEST_F(Move, WithoutPositionToTheEnd) {
    EXPECT_EQ(order({}, {"a"}), "bcdea");
    EXPECT_EQ(order({}, {"c"}), "abdec");
    EXPECT_EQ(order({}, {"e"}), "abcde");
    EXPECT_EQ(order({}, {"a", "c"}), "bdeac");
    EXPECT_EQ(order({}, {"c", "a"}), "bdeca");
    EXPECT_EQ(order({}, {}), "abcde");
}

TEST_F(Move, BehindAMember) {
    EXPECT_EQ(order({"-a", "d"}, {"b"}), "acdbe"); // from before: the place shifts
    EXPECT_EQ(order({"-a", "b"}, {"e"}), "abecd");
    EXPECT_EQ(order({"-a", "e"}, {"a"}), "bcdea");
    EXPECT_EQ(order({"-a", "b"}, {"c"}), "abcde");
}

TEST_F(Move, InFrontOfAMember) {
    EXPECT_EQ(order({"-b", "d"}, {"b"}), "acbde");
    EXPECT_EQ(order({"-b", "b"}, {"e"}), "aebcd");
    EXPECT_EQ(order({"-b", "a"}, {"e"}), "eabcd");
    EXPECT_EQ(order({"-i", "b"}, {"a"}), "abcde");
}

TEST_F(Move, SeveralLandInTheOrderGiven) {
    EXPECT_EQ(order({"-a", "c"}, {"a", "e"}), "bcaed");
    EXPECT_EQ(order({"-a", "c"}, {"e", "a"}), "bcead");
    EXPECT_EQ(order({"-b", "c"}, {"d", "e", "a"}), "bdeac");
    EXPECT_EQ(order({"-a", "e"}, {"a", "b", "c"}), "deabc");
}

TEST_F(Move, MemberAtThePositionItself) {
    EXPECT_EQ(order({"-a", "c"}, {"c"}), "abcde");
    EXPECT_EQ(order({"-b", "c"}, {"c"}), "abcde");
    EXPECT_EQ(order({"-a", "c"}, {"c", "a"}), "bcade");
    EXPECT_EQ(order({"-b", "c"}, {"c", "e"}), "abced");
    EXPECT_EQ(order({"-a", "c"}, {"a", "a"}), "bcade");
}

TEST_F(Move, OnlyTheFirstMatchMoves) {
    EXPECT_EQ(order({}, {"?"}), "bcdea");
    EXPECT_EQ(order({}, {"?", "?"}), "cdeab");
    folder.write("lib.a", ArchiveBuilder().add("x", "1").add("y", "2").add("X", "3").bytes());
    EXPECT_TRUE(ended(tomex({"-mv", "lib.a", "x"}), 0, "m - x\n", ""));
    EXPECT_EQ(names(), (Words{"y", "X", "x"}));
}

TEST_F(Move, TablesAreNoMatch) {
    EXPECT_EQ(order({}, {"*"}), "bcdea");
}

TEST_F(Move, PositionInFrontOfTheTablesIsTheFront) {
    EXPECT_EQ(order({"-b", "*"}, {"?"}), "abcde"); // "*" expands to no file: "a" moves
    EXPECT_EQ(order({"-b", "*"}, {"d", "e"}), "deabc");
    EXPECT_EQ(order({"-a", "*"}, {"d", "e"}), "deabc");
}

TEST_F(Move, CaseAndFolderOfTheWordDoNotMatter) {
    EXPECT_EQ(order({"-a", "x/B"}, {"y/A", "E"}), "baecd");
}

TEST_F(Move, HeadersAndContentsMoveAlong) {
    folder.write("lib.a", ArchiveBuilder()
                              .add({.name = "x", .contents = "1", .date = 1, .uid = 2, .gid = 3})
                              .add(made("y"))
                              .bytes());
    EXPECT_TRUE(ended(tomex({"-mv", "lib.a", "X"}), 0, "m - x\n", ""));
    EXPECT_EQ(archive().summary(), (Words{emptyTable(), kept("y"), "x 1 2 3 100644 1"}));
    EXPECT_EQ(contents("x"), "1");
}

TEST_F(Move, LongNamesFollowTheNewOrder) {
    library("lib.a", {"first-of-the-names.o", "second-of-the-names.o"});
    EXPECT_EQ(tomex({"-m", "lib.a", "first*"}).status, 0);
    EXPECT_EQ(names(), (Words{"second-of-the-names.o", "first-of-the-names.o"}));
    EXPECT_EQ(contents("first-of-the-names.o"), "first-of-the-names.o.");
}

TEST_F(Move, AbsentMemberIsAnErrorAndNothingIsWritten) {
    const std::string before = folder.read("lib.a");
    EXPECT_TRUE(ended(tomex({"-mv", "lib.a", "none", "a", "x*"}), 1, "m - a\n",
                      notPresent("Error", "none") + notPresent("Error", "x*")));
    EXPECT_EQ(folder.read("lib.a"), before);
}

// The order that moving one member after the other gives. Members are told apart by their dates.
class OrderModel {
public:
    explicit OrderModel(const std::string& names) {
        for (const char name : names) {
            m_Members.emplace_back(name, m_Members.size());
        }
    }

    size_t find(char word) const {
        size_t index = 0;
        while (word != '?' && std::tolower(m_Members[index].first) != std::tolower(word)) {
            ++index;
        }
        return index;
    }
    // To the place of the given index, or to the end; gives the place for the next one.
    std::optional<size_t> move(char word, std::optional<size_t> place) {
        const size_t from = find(word);
        const auto member = m_Members[from];
        m_Members.erase(m_Members.begin() + static_cast<ptrdiff_t>(from));
        size_t to = m_Members.size();
        if (place) {
            to = from < *place ? *place - 1 : *place;
            place = to + 1;
        }
        m_Members.insert(m_Members.begin() + static_cast<ptrdiff_t>(to), member);
        return place;
    }
    Words summary() const {
        Words lines;
        for (const auto& [name, date] : m_Members) {
            lines.push_back(std::string(1, name) + " " + std::to_string(date));
        }
        return lines;
    }

private:
    std::vector<std::pair<char, size_t>> m_Members;
};

TEST_F(Move, ManyWordsGiveTheOrderOfMovingOneByOne) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto oneOf = [&random](std::string_view letters) {
            return letters[std::uniform_int_distribution<size_t>(0, letters.size() - 1)(random)];
        };
        std::string present;
        ArchiveBuilder builder;
        for (uint64_t i = 0; i < 7; ++i) {
            present += oneOf(seed % 2 == 0 ? "abAB" : "abcdefghij");
            builder.add({.name = present.substr(present.size() - 1), .contents = "x", .date = i});
        }
        folder.write("lib.a", builder.bytes());
        OrderModel model(present);
        Words words = {"-m", "lib.a"};
        std::optional<size_t> place;
        if (const char way = oneOf("abe"); way != 'e') {
            const char anchor = oneOf(present);
            place = model.find(anchor) + (way == 'a' ? 1 : 0);
            words.insert(words.begin() + 1, {std::string("-") + way, std::string(1, anchor)});
        }
        for (int i = 0; i < 8; ++i) {
            const char word = oneOf(present + "?");
            place = model.move(word, place);
            words.emplace_back(1, word);
        }
        ASSERT_TRUE(ended(tomex(words), 0, "", "")) << seed;
        Words found;
        for (const auto& member : archive().members) {
            if (member.name != "/") {
                found.push_back(member.name + " " + std::to_string(member.date));
            }
        }
        ASSERT_EQ(found, model.summary()) << "seed " << seed;
    }
}

TEST_F(Move, ArchiveWithoutMembersHasNothingToMove) {
    folder.write("lib.a", "!<arch>\n");
    EXPECT_TRUE(ended(tomex({"-m", "lib.a", "*"}), 1, "", notPresent("Error", "*")));
    folder.write("lib.a", ArchiveBuilder().withSymbolTable().bytes());
    EXPECT_TRUE(ended(tomex({"-m", "lib.a", "*"}), 1, "", notPresent("Error", "*")));
}

} // namespace
} // namespace commandtest
