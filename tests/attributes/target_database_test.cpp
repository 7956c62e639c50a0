// The table of targets and the lookups on it.
#include "attributes/interface/target_database.h"

#include "attributes/interface/decoration.h"
#include "attributes/interface/feature_words.h"
#include "attributes/src/target_lookup.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace attributes::test {
namespace {

FullAttr filled() {
    FullAttr value;
    value.isa = {1, 2};
    value.targetClass = 3;
    value.targetKind = 4;
    value.access[2] = 5;
    value.options = 6;
    value.requirements = 7;
    value.abiVersion = 8;
    return value;
}

std::string changed(const char* name, int (*change)(int)) {
    std::string text;
    for (const char* c = name; *c != '\0'; ++c) {
        text += static_cast<char>(change(*c));
    }
    return text;
}

TEST(TargetTable, HasItsBlocks) {
    constexpr struct {
        uint32_t count;
        uint32_t kind;
    } blocks[] = {
        {117, 0x10000000}, {137, 0x40000000}, {12, 0x10000000}, {40, 0x40000000}, {47, 0x20000000},
    };
    ASSERT_EQ(std::size(procAndArchList), 353U);
    uint32_t row = 0;
    for (const auto& block : blocks) {
        for (uint32_t i = 0; i < block.count; ++i) {
            ASSERT_EQ(procAndArchList[row].kind, block.kind) << row;
            ++row;
        }
    }
    EXPECT_EQ(row, TargetCount);
    const Target& last = procAndArchList[TargetCount - 1];
    EXPECT_STREQ(last.name, "None");
    EXPECT_EQ(last.isa, IsaSet{});
}

TEST(TargetTable, RowsAreWellFormed) {
    std::map<std::string, const Target*> byName;
    for (const Target& row : procAndArchList) {
        ASSERT_NE(row.name, nullptr);
        const std::string folded = changed(row.name, std::tolower);
        EXPECT_FALSE(folded.empty());
        EXPECT_TRUE(byName.emplace(folded, &row).second) << row.name;
    }
    for (const Target& row : procAndArchList) {
        if (row.base != nullptr && row.base[0] != '\0') {
            const auto base = byName.find(changed(row.base, std::tolower));
            ASSERT_NE(base, byName.end()) << row.name;
            EXPECT_EQ(base->second->kind, row.kind) << row.name;
            EXPECT_NE(base->second, &row) << row.name;
        }
        EXPECT_LE(row.listed, 1U) << row.name;
        EXPECT_TRUE(row.family == nullptr || row.family[0] != '\0') << row.name;
        const bool isUnit = row.kind == target_kind::FLOATING_POINT_UNIT;
        const bool isProcessor = row.kind == target_kind::PROCESSOR;
        EXPECT_EQ((row.targetClass & 0x7F) == 0, isUnit) << row.name;
        EXPECT_EQ(row.targetClass >> 7, isProcessor ? 1U : 0U) << row.name;
    }
}

TEST(TargetTable, FeaturesAreComplete) {
    for (const Target& row : procAndArchList) {
        IsaSet isa = row.isa;
        normaliseIsa(isa);
        EXPECT_EQ(isa, row.isa) << row.name;
    }
}

TEST(TargetTable, ArchitecturesHaveNoUnitButTheOneThatComesWithTheVectors) {
    for (const Target& row : procAndArchList) {
        if (row.kind == target_kind::ARCHITECTURE && !hasAny(row.isa, feature_word::TRGf)) {
            EXPECT_FALSE(hasAny(row.isa, feature_word::FLOATING_POINT_BITS)) << row.name;
        }
    }
}

// A unit from the second generation on needs loads of pairs, or the wide instruction set.
TEST(TargetTable, ProcessorsWithAUnitCanHaveIt) {
    using namespace feature_word;
    for (const Target& row : procAndArchList) {
        if (row.kind == target_kind::PROCESSOR && hasAll(row.isa, ZLT_ISAv2)) {
            EXPECT_TRUE(hasAny(row.isa, PAIR_PREFETCH | Q64_ISAv8)) << row.name;
        }
    }
}

TEST(TargetTable, EachUnitHasACallingFormWithoutIt) {
    uint32_t pairs = 0;
    for (uint32_t i = firstFloatingPointRow(); i + 1 < TargetCount; ++i) {
        const Target& row = procAndArchList[i];
        if (std::strncmp(row.name, "soft.", 5) == 0) {
            FullAttr hard;
            ASSERT_NE(findTarget(row.name + 5, hard), nullptr) << row.name;
            EXPECT_EQ(row.isa, hard.isa | feature_word::SOFTFP) << row.name;
            EXPECT_STREQ(row.base, row.name + 5);
            ++pairs;
        } else {
            EXPECT_FALSE(hasAny(row.isa, feature_word::SOFTFP)) << row.name;
        }
    }
    EXPECT_EQ(pairs, 23U);
}

TEST(TargetTable, HasVariationsByDottedNames) {
    FullAttr value;
    EXPECT_STREQ(findTarget("M9.Main.DSP", value), "m9.main.dsp");
    for (const Target& row : procAndArchList) {
        if (std::strcmp(row.name, "m9.main.dsp") == 0) {
            EXPECT_STREQ(row.base, "m9.main");
            EXPECT_STREQ(row.family, "v9m");
            EXPECT_EQ(row.listed, 1U);
        }
    }
}

TEST(FindTarget, FindsEachRowWhateverTheCase) {
    for (const Target& row : procAndArchList) {
        FullAttr expected = filled();
        expected.isa = row.isa;
        expected.targetClass = row.targetClass;
        expected.targetKind = row.kind;
        for (const std::string& name : {std::string(row.name), changed(row.name, std::toupper),
                                        changed(row.name, std::tolower)}) {
            FullAttr value = filled();
            EXPECT_EQ(findTarget(name.c_str(), value), row.name) << name;
            EXPECT_EQ(value, expected) << name;
        }
        FullAttr value = filled();
        EXPECT_EQ(findTarget((std::string(row.name) + " ").c_str(), value), nullptr);
        EXPECT_EQ(value, FullAttr{});
    }
}

TEST(FindTarget, ZeroesTheValueWhereThereIsNone) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "no such target", "v", "."}) {
        FullAttr value = filled();
        EXPECT_EQ(findTarget(name, value), nullptr);
        EXPECT_EQ(value, FullAttr{});
    }
}

struct LookupCase {
    uint32_t arch;
    uint32_t profile;
    const char* name; // null: none
};

using Lookup = const char* (*)(uint32_t, uint32_t, FullAttr&);

void expectLookup(Lookup lookup, const LookupCase& c) {
    FullAttr value = filled();
    EXPECT_STREQ(lookup(c.arch, c.profile, value), c.name) << c.arch << ' ' << c.profile;
    FullAttr expected = filled();
    findTarget(c.name, expected);
    EXPECT_EQ(value, expected) << c.arch << ' ' << c.profile;
}

TEST(LookupByArch, GivesTheRowsOfNumbersAndProfiles) {
    constexpr LookupCase byProfile[] = {
        {10, 'A', "app7"}, {10, 'M', "m7.base"}, {10, 'R', "rt7"},    {10, 'S', "apprt7"},
        {10, 0, "v7"},     {10, 'a', "v7"},      {10, 255, "v7"},     {14, 'A', "app8"},
        {14, 'R', "rt8"},  {14, 'S', "apprt8"},  {14, 'M', "app8"},   {14, 0, "app8"},
        {14, 1, "app8"},   {22, 'A', "app9"},    {22, 'R', "apprt8"}, {22, 'S', "apprt8"},
        {22, 0, "apprt8"}, {22, 'M', "apprt8"},
    };
    for (const LookupCase& c : byProfile) {
        expectLookup(lookupByArch, c);
    }
    constexpr LookupCase withoutProfile[] = {
        {0, 0, nullptr},
        {1, 0, "v4"},
        {2, 0, "v4.finch"},
        {3, 0, "v5"},
        {4, 0, "v5.dsp"},
        {5, 0, "v5.dsp.java"},
        {6, 0, "v6"},
        {7, 0, "v6.kernel.safe"},
        {8, 0, "v6.finch4"},
        {9, 0, "v6.kernel"},
        {11, 0, "m6.base"},
        {12, 0, "m6.os"},
        {13, 0, "m7.dsp"},
        {15, 0, "rt8"},
        {16, 0, "m8.base"},
        {17, 0, "m8.main"},
        {18, 0, nullptr},
        {19, 0, nullptr},
        {20, 0, nullptr},
        {21, 0, "m9.main"},
        {23, 0, "m10.main"},
        {24, 0, nullptr},
        {0xFFFFFFFF, 0, nullptr},
    };
    for (LookupCase c : withoutProfile) {
        for (const uint32_t profile : {0U, 65U, 77U, 82U, 83U, 1U, 255U}) {
            c.profile = profile;
            expectLookup(lookupByArch, c);
        }
    }
}

TEST(LookupWide, GivesTheRowsOfTheWideSet) {
    constexpr LookupCase cases[] = {
        {14, 'A', "app8.wide"}, {14, 'R', "rw.wide"},   {14, 0, nullptr},
        {14, 'S', nullptr},     {14, 'M', nullptr},     {15, 0, "rw.wide"},
        {15, 'A', "rw.wide"},   {15, 'R', "rw.wide"},   {22, 0, "app9.wide"},
        {22, 'A', "app9.wide"}, {22, 'R', "app9.wide"},
    };
    for (const LookupCase& c : cases) {
        expectLookup(lookupWide, c);
    }
    for (uint32_t arch = 0; arch < 64; ++arch) {
        if (arch != 14 && arch != 15 && arch != 22) {
            expectLookup(lookupWide, {arch, 'A', nullptr});
        }
    }
}

TEST(TargetKinds, AreToldFromAValue) {
    FullAttr value;
    const auto is = [&value](const char* name) {
        findTarget(name, value);
        return std::string(isArchitectureRow(value) ? "a" : "-") +
               (isProcessorOrArchitectureRow(value) ? "p" : "-");
    };
    EXPECT_EQ(is("v4"), "ap");
    EXPECT_EQ(is("qp401"), "-p");
    EXPECT_EQ(is("zlt3"), "--");
    EXPECT_EQ(is("None"), "--");
    EXPECT_EQ(is(nullptr), "--");
}

TEST(FirstFloatingPointRow, IsTheOneBehindAllProcessors) {
    EXPECT_EQ(firstFloatingPointRow(), 306U);
    EXPECT_EQ(firstFloatingPointRow(), 306U);
    EXPECT_EQ(procAndArchList[305].kind, target_kind::PROCESSOR);
    const Target rows[] = {
        {"a", nullptr, nullptr, 1, target_kind::ARCHITECTURE, 1, {}},
        {"u", nullptr, nullptr, 1, target_kind::FLOATING_POINT_UNIT, 0, {}},
        {"w", nullptr, nullptr, 1, target_kind::FLOATING_POINT_UNIT, 0, {}},
    };
    EXPECT_EQ(findFirstFloatingPointRow(rows), 1U);
}

TEST(FirstFloatingPointRow, IsMissedAsAFaultOfTheProgram) {
    const Target rows[] = {{"a", nullptr, nullptr, 1, target_kind::ARCHITECTURE, 1, {}}};
    EXPECT_EXIT(findFirstFloatingPointRow(rows), testing::ExitedWithCode(1),
                "Did not find any FPU's in procAndArchList");
    EXPECT_EXIT(findFirstFloatingPointRow({}), testing::ExitedWithCode(1),
                "Did not find any FPU's in procAndArchList");
}

} // namespace
} // namespace attributes::test
