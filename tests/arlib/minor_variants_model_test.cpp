// All groups of two, three and four members out of a table of attribute sets, in all orders and
// with repetitions, against a small model.
//
// The model knows nothing of bits: a set of attributes is a set of words, tokens are read into and
// printed from words by a table of its own, and the rules are done in words. It has the tokens of
// the table of sets and no others.

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "tests/arlib/variant_fixture.h"

namespace arlibtest {
namespace {

using Words = std::set<std::string>;

// Some of the attributes: features, options, forms of access, and those that tell no variants
// apart.
struct Set {
    Words features;
    Words options;
    Words access;
    Words others;

    bool sameVariant(const Set& other) const {
        return features == other.features && options == other.options && access == other.access;
    }
};

struct Token {
    const char* text;
    Words words;
};

// In the order in which they are printed. A profile is read, but never printed.
const std::vector<Token> featureTokens = {
    {"QEL_ISAv6", {"q3", "q4", "q5", "q6"}},
    {"QEL_ISAv5", {"q3", "q4", "q5"}},
    {"QEL_ISAv4", {"q3", "q4"}},
    {"QEL_ISAv3", {"q3"}},
    {"E", {"e"}},
    {"N", {"n"}},
    {"ZLTi1", {"z1"}},
    {"PE", {"pe"}},
    {"ME", {"me"}},
};
const Token profile = {"A_PROFILE", {"profile"}};
const std::vector<Token> optionTokens = {
    {"IW", {"iw"}},     {"STKCKD", {"sc"}}, {"~STKCKD", {"nsc"}},          {"OTIME", {"os", "ot"}},
    {"OSPACE", {"os"}}, {"ROPI", {"ropi"}}, {"IEEEX", {"i1", "i2", "i3"}}, {"IEEEF", {"i1", "i2"}},
};
const std::vector<Token> otherTokens = {
    {"REQ8", {"req8"}}, {"PRES8", {"pres8"}}, {"EABIv2", {"v2"}}};

bool has(const Words& all, const Words& some) {
    return std::includes(all.begin(), all.end(), some.begin(), some.end());
}
void add(Words& all, const Words& some) {
    all.insert(some.begin(), some.end());
}
Words minus(Words all, const Words& some) {
    std::erase_if(all, [&some](const std::string& word) { return some.contains(word); });
    return all;
}
Words both(const Words& a, const Words& b) {
    return minus(a, minus(a, b));
}

// A level holds all lower ones; floating point says how doubles lie.
void complete(Words& features) {
    for (const char* levels : {"q6", "q5", "q4"}) {
        if (features.contains(levels)) {
            features.insert("q" + std::string(1, static_cast<char>(levels[1] - 1)));
        }
    }
    if (features.contains("z1")) {
        features.insert("pe");
    }
}

Set decoded(const std::string& text) {
    Set set;
    add(set.options, {"i1", "i2"});
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.size(), text.find('$', start + 1));
        const std::string token = text.substr(start + 1, end - start - 1);
        start = end;
        const auto take = [&token](const std::vector<Token>& tokens, Words& words) {
            for (const Token& known : tokens) {
                if (token == known.text) {
                    add(words, known.words);
                }
            }
        };
        take(featureTokens, set.features);
        take({profile}, set.features);
        take(optionTokens, set.options);
        take(otherTokens, set.others);
        if (token == "IEEE1") {
            set.options = minus(set.options, {"i1", "i2"});
        }
        if (token == "A:L22") {
            set.access.insert("L22");
        }
        for (const char* store : {"S22", "US42"}) {
            if (token.starts_with(store)) {
                set.access.insert(store);
            }
        }
        if (token == "S22US42") {
            set.access.insert("US42");
        }
    }
    complete(set.features);
    return set;
}

std::string printed(const std::vector<Token>& tokens, Words words) {
    std::string text;
    for (const Token& token : tokens) {
        if (has(words, token.words)) {
            text += std::string("$") + token.text;
            words = minus(words, token.words);
        }
    }
    return text;
}

std::string printed(const Set& set) {
    std::string text = printed(featureTokens, set.features);
    text += set.access.contains("L22") ? "$A:L22" : "";
    const std::string stores = std::string(set.access.contains("S22") ? "S22" : "") +
                               (set.access.contains("US42") ? "US42" : "");
    text += stores.empty() ? "" : "$" + stores;
    return text + "$IEEE1" + printed(optionTokens, set.options) + printed(otherTokens, set.others);
}

Set difference(const Set& own, const Set& common) {
    Set set = {minus(own.features, common.features), minus(own.options, common.options),
               minus(own.access, common.access), minus(own.others, common.others)};
    if (own.features.contains("q3") || common.features.contains("q3")) {
        set.features.insert("q3");
    }
    complete(set.features);
    if (set.options.contains("ot")) {
        set.options.insert("os");
    }
    if (set.options.contains("i3")) {
        add(set.options, {"i1", "i2"});
    }
    if (set.options.contains("i2")) {
        set.options.insert("i1");
    }
    return set;
}

// The union; requiring 8-byte places spreads, keeping them and the format must hold in both. False
// if no object can have the result.
bool merge(Set& set, const Set& other) {
    add(set.features, other.features);
    add(set.options, other.options);
    add(set.access, other.access);
    Words others = both(set.others, other.others);
    if (set.others.contains("req8") || other.others.contains("req8")) {
        others.insert("req8");
    }
    set.others = others;
    return !has(set.features, {"pe", "me"}) && !has(set.options, {"sc", "nsc"});
}

struct Outcome {
    Names entries;
    Names reports;

    bool operator==(const Outcome&) const = default;
};

std::string memberName(size_t index) {
    return std::string(1, static_cast<char>('a' + index)) + ".o";
}

std::string listed(const std::vector<size_t>& members) {
    std::string text;
    for (const size_t member : members) {
        text += " " + memberName(member);
    }
    return text;
}

// What becomes of a group of members with the names "f" and "g", by the rules in words.
Outcome modelled(const std::vector<std::optional<std::string>>& texts,
                 const std::optional<std::string>& library) {
    Outcome outcome;
    std::vector<Set> sets;
    std::vector<size_t> all;
    for (const auto& text : texts) {
        all.push_back(sets.size());
        sets.push_back(decoded(text.value_or("")));
    }
    Set common = sets[0];
    for (const Set& set : sets) {
        common = {both(common.features, set.features), both(common.options, set.options),
                  both(common.access, set.access), both(common.others, set.others)};
    }
    common.features.insert("pe");
    if (Set merged = common; library && !merge(merged, decoded(*library))) {
        outcome.reports.push_back("35:" + listed(all));
    }
    std::vector<size_t> bases;
    std::vector<std::pair<std::string, std::vector<size_t>>> suffixes; // the newest first
    for (const size_t index : all) {
        Set own = sets[index];
        own.features.insert("pe");
        if (library && !merge(own, decoded(*library))) {
            outcome.reports.push_back("36: " + memberName(index));
        }
        std::string suffix;
        if (own.sameVariant(common)) {
            bases.push_back(index);
        } else {
            const std::string text = printed(difference(own, common));
            suffix = "$$BuildAttributes$" + text;
            const auto known = std::find_if(suffixes.begin(), suffixes.end(),
                                            [&](const auto& row) { return row.first == suffix; });
            if (known != suffixes.end()) {
                known->second.push_back(index);
            } else {
                suffixes.insert(suffixes.begin(), {suffix, {index}});
            }
            Set again = decoded(text);
            merge(again, common);
            if (!again.sameVariant(own)) {
                outcome.reports.push_back("34: " + memberName(index) + " of" + listed(all));
            }
        }
        for (const char* name : {"f", "g"}) {
            outcome.entries.push_back(name + suffix + " in " + memberName(index));
        }
    }
    if (bases.empty()) {
        outcome.reports.push_back("31:" + listed(all));
    } else if (bases.size() > 1) {
        outcome.reports.push_back("32:" + listed(bases));
    }
    std::stable_sort(suffixes.begin(), suffixes.end(), [](const auto& a, const auto& b) {
        return placeOf(a.first, 17) < placeOf(b.first, 17);
    });
    for (const auto& [suffix, members] : suffixes) {
        if (members.size() > 1) {
            outcome.reports.push_back("33:" + listed(members) + " " + suffix);
        }
    }
    return outcome;
}

const std::vector<std::optional<std::string>> attributeSets = {
    std::nullopt,
    "$IEEE1",
    "$QEL_ISAv4$IEEE1$IW",
    "$QEL_ISAv6$IEEE1$IW$REQ8$EABIv2",
    "$QEL_ISAv6$E$A:L22$S22$IEEE1$IW",
    "$QEL_ISAv4$ZLTi1$IEEE1$IW$OTIME$STKCKD",
    "$QEL_ISAv4$IEEE1$IW$OSPACE$~STKCKD$PRES8",
    "$QEL_ISAv6$A_PROFILE$S22US42$IEEE1$IEEEX",
    "$QEL_ISAv5$N$ME$IEEE1$IEEEF$ROPI",
};

class VariantModel : public VariantTest {
protected:
    Outcome built(const std::vector<std::optional<std::string>>& texts,
                  const std::optional<std::string>& library) {
        arlib::Archive archive;
        for (size_t i = 0; i < texts.size(); ++i) {
            addModule(archive, memberName(i), {"f", "g"}, texts[i]);
        }
        if (library) {
            attributes::FullAttr promised;
            attributes::parseDecoration(promised, library->c_str());
            archive.setLibraryAttributes(promised);
        }
        Outcome outcome;
        outcome.entries = table(archive);
        outcome.reports = variantHandler.reports;
        return outcome;
    }

    // Every tuple of so many sets.
    void compareAll(size_t size, const std::optional<std::string>& library) {
        std::vector<size_t> choice(size);
        std::map<std::string, size_t> slots;
        for (bool isDone = false; !isDone;) {
            std::vector<std::optional<std::string>> texts;
            std::string described;
            for (const size_t index : choice) {
                texts.push_back(attributeSets[index]);
                described += " " + attributeSets[index].value_or("none");
            }
            const Outcome expected = modelled(texts, library);
            const Outcome actual = built(texts, library);
            EXPECT_EQ(actual.entries, expected.entries) << described;
            EXPECT_EQ(actual.reports, expected.reports) << described;
            for (const std::string& report : expected.reports) {
                ++slots[report.substr(0, 2)];
            }
            size_t place = 0;
            while (place < size && ++choice[place] == attributeSets.size()) {
                choice[place++] = 0;
            }
            isDone = place == size;
        }
        // That the sets are chosen well: each flaw comes up.
        for (const char* slot : {"31", "32", "33", "34"}) {
            EXPECT_NE(slots[slot], 0U) << slot;
        }
        EXPECT_EQ(slots["35"] != 0, library.has_value());
        EXPECT_EQ(slots["36"] != 0, library.has_value());
    }
};

TEST_F(VariantModel, PairsInAllOrders) {
    for (const std::optional<std::string>& first : attributeSets) {
        for (const std::optional<std::string>& second : attributeSets) {
            const Outcome expected = modelled({first, second}, {});
            EXPECT_EQ(built({first, second}, {}), expected)
                << first.value_or("none") << " " << second.value_or("none");
        }
    }
}

TEST_F(VariantModel, TriplesInAllOrders) {
    compareAll(3, {});
}

TEST_F(VariantModel, QuadruplesInAllOrders) {
    compareAll(4, {});
}

TEST_F(VariantModel, TriplesInALibraryWithAttributes) {
    compareAll(3, "$QEL_ISAv4$IEEE1$IW$~STKCKD");
}

} // namespace
} // namespace arlibtest
