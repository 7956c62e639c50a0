// From the number and profile of an architecture to its features, and back.
//
// An object states its architecture as a number and a letter; the table of targets turns them into
// features, and those are turned into a number and a letter again: at once, after all that a record
// of attributes does with them, and after they were printed and read. Every pair that does not come
// back as itself is listed with the reason.
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/isa_levels.h"
#include "attributes/interface/target_database.h"
#include "tests/attributes/decoration_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace attributes::test {
namespace {

constexpr uint32_t allProfiles[] = {0, 'A', 'M', 'R', 'S'};

struct Stated {
    uint32_t arch;
    uint32_t profile;

    bool operator==(const Stated&) const = default;
};

std::string text(const Stated& stated) {
    return std::to_string(stated.arch) + ' ' +
           (stated.profile == 0 ? "none" : std::string(1, static_cast<char>(stated.profile)));
}

// Pairs that come back as another one.
struct Exception {
    const char* why;
    uint32_t arch;
    const char* profiles; // "-" is none
    Stated back;
};

constexpr const char* NoProfiles = "the version has no profiles: its features tell none";

constexpr Exception exceptions[] = {
    {NoProfiles, 1, "AMRS", {1, 0}},
    {NoProfiles, 2, "AMRS", {2, 0}},
    {NoProfiles, 3, "AMRS", {3, 0}},
    {NoProfiles, 4, "AMRS", {4, 0}},
    {NoProfiles, 5, "AMRS", {5, 0}},
    {NoProfiles, 6, "AMRS", {6, 0}},
    {NoProfiles, 7, "AMRS", {7, 0}},
    {NoProfiles, 8, "AMRS", {8, 0}},
    {NoProfiles, 9, "AMRS", {9, 0}},
    {"microcontrollers below the seventh version have none told", 11, "AMRS", {11, 0}},
    {"microcontrollers below the seventh version have none told", 12, "AMRS", {12, 0}},
    {"the number is of microcontrollers, and their letter is told", 13, "-ARS", {13, 'M'}},
    {"the eighth version without a letter of its own is the 32-bit row", 14, "-M", {14, 'A'}},
    {"real time of the eighth version has a number of its own", 14, "R", {15, 'R'}},
    {"the number is of real time, and its letter is told", 15, "-AMS", {15, 'R'}},
    {"microcontrollers from the eighth version on have none told", 16, "AMRS", {16, 0}},
    {"microcontrollers from the eighth version on have none told", 17, "AMRS", {17, 0}},
    {"microcontrollers from the eighth version on have none told", 21, "AMRS", {21, 0}},
    {"the newest version has one profile; others get the combined row of the one before",
     22,
     "-MRS",
     {14, 'S'}},
    {"microcontrollers from the eighth version on have none told", 23, "AMRS", {23, 0}},
};

constexpr const char* WideHasNone = "profiles are told by levels that the wide set does not have";

constexpr Exception wideExceptions[] = {
    {WideHasNone, 14, "A", {14, 0}},
    {"real time of the eighth version has a number of its own; and no profile is told",
     14,
     "R",
     {15, 0}},
    {WideHasNone, 15, "AMRS", {15, 0}},
    {WideHasNone, 22, "AMRS", {22, 0}},
};

template <size_t Count>
const Exception* findException(const Exception (&table)[Count], const Stated& stated) {
    for (const Exception& row : table) {
        const char letter = stated.profile == 0 ? '-' : static_cast<char>(stated.profile);
        if (row.arch == stated.arch && std::strchr(row.profiles, letter) != nullptr) {
            return &row;
        }
    }
    return nullptr;
}

template <size_t Count>
void expectRoundTrips(const char* (*lookup)(uint32_t, uint32_t, FullAttr&),
                      const Exception (&table)[Count], uint32_t expectedTargets) {
    uint32_t targets = 0;
    for (uint32_t arch = 0; arch < 64; ++arch) {
        for (const uint32_t profile : allProfiles) {
            const Stated stated{arch, profile};
            const Exception* exception = findException(table, stated);
            FullAttr value;
            if (lookup(arch, profile, value) == nullptr) {
                EXPECT_EQ(exception, nullptr) << text(stated);
                continue;
            }
            ++targets;
            const Stated back{archFromIsa(value.isa), profileFromIsa(value.isa)};
            EXPECT_EQ(back, exception == nullptr ? stated : exception->back)
                << text(stated) << " gave " << text(back) << ": "
                << (exception == nullptr ? "to come back" : exception->why);
            // A row of the list that comes back has no business there.
            EXPECT_TRUE(exception == nullptr || back != stated) << text(stated);
        }
    }
    EXPECT_EQ(targets, expectedTargets);
}

TEST(TargetRoundTrip, OfAllNumbersAndProfiles) {
    expectRoundTrips(lookupByArch, exceptions, 20 * 5);
}

TEST(TargetRoundTrip, OfAllWideNumbersAndProfiles) {
    expectRoundTrips(lookupWide, wideExceptions, 2 + 5 + 5);
}

// What an object states, what its record states after its features were derived and turned back,
// and what a record made of their decoration states.
struct Journey {
    Stated stated;
    const char* name; // for the wide set, where it matters; else null
    Stated derived;
    Stated decorated;
    const char* why; // null where nothing changes
};

constexpr const char* LetterIsNotPrinted =
    "the words for profiles have tokens in company of the wide set only";

constexpr Journey journeys[] = {
    {{1, 0}, nullptr, {1, 0}, {1, 0}, nullptr},
    {{2, 0}, nullptr, {2, 0}, {2, 0}, nullptr},
    {{3, 0}, nullptr, {3, 0}, {3, 0}, nullptr},
    {{4, 0}, nullptr, {4, 0}, {4, 0}, nullptr},
    {{5, 0}, nullptr, {5, 0}, {5, 0}, nullptr},
    {{6, 0}, nullptr, {6, 0}, {6, 0}, nullptr},
    {{7, 0}, nullptr, {9, 0}, {9, 0}, "the secure state is what Tag_Virtualization_use says"},
    {{8, 0}, nullptr, {8, 0}, {8, 0}, nullptr},
    {{9, 0}, nullptr, {9, 0}, {9, 0}, nullptr},
    {{10, 'A'}, nullptr, {10, 'A'}, {10, 'S'}, LetterIsNotPrinted},
    {{10, 'M'}, nullptr, {10, 'M'}, {10, 'M'}, nullptr},
    {{10, 'R'}, nullptr, {10, 'R'}, {10, 'S'}, LetterIsNotPrinted},
    {{10, 'S'}, nullptr, {10, 'S'}, {10, 'S'}, nullptr},
    {{10, 0}, nullptr, {10, 0}, {10, 0}, nullptr},
    {{11, 0}, nullptr, {11, 0}, {11, 0}, nullptr},
    {{12, 0}, nullptr, {12, 0}, {12, 0}, nullptr},
    {{13, 'M'}, nullptr, {13, 'M'}, {13, 'M'}, nullptr},
    {{14, 'A'}, nullptr, {14, 'A'}, {14, 'S'}, LetterIsNotPrinted},
    {{14, 'S'}, nullptr, {14, 'S'}, {14, 'S'}, nullptr},
    {{15, 'R'}, nullptr, {15, 'R'}, {14, 'S'}, LetterIsNotPrinted},
    {{16, 0}, nullptr, {16, 0}, {16, 0}, nullptr},
    {{17, 0}, nullptr, {17, 0}, {17, 0}, nullptr},
    {{21, 0}, nullptr, {21, 0}, {21, 0}, nullptr},
    {{22, 'A'}, nullptr, {22, 'A'}, {22, 'S'}, LetterIsNotPrinted},
    {{23, 0}, nullptr, {23, 0}, {21, 0}, "MX81 is printed before MX82 and takes its bits"},
    {{14, 'A'}, "", {14, 0}, {14, 0}, WideHasNone},
    {{15, 'R'}, "rw.wide", {15, 0}, {15, 0}, WideHasNone},
    {{15, 'R'}, "rw.wide.auth", {15, 0}, {15, 0}, WideHasNone},
    {{22, 'A'}, "", {22, 0}, {22, 0}, WideHasNone},
};

Stated statedBy(const BuildAttributes& record) {
    return {record.getNumber(Tag_CPU_arch), record.getNumber(Tag_CPU_arch_profile)};
}

BuildAttributes recordOf(const FullAttr& value) {
    BuildAttributes record;
    record.fromFullAttr(value);
    return record;
}

// What an object for a target states of the sets it uses: all that there are.
BuildAttributes statedRecord(const Journey& journey) {
    BuildAttributes record;
    record.setTag(Tag_CPU_arch, journey.stated.arch);
    record.setTag(Tag_CPU_arch_profile, journey.stated.profile);
    if (journey.name != nullptr) {
        record.setCpuName(journey.name);
        record.setTag(Tag_Q64_ISA_use, 1);
    } else {
        record.setTag(Tag_QEL_ISA_use, 1);
        record.setTag(Tag_FINCH_ISA_use, 1);
    }
    return record;
}

TEST(TargetRoundTrip, ThroughRecordsAndDecorations) {
    for (const Journey& journey : journeys) {
        BuildAttributes record = statedRecord(journey);
        record.rebuildFullAttr();
        const BuildAttributes derived = recordOf(record.fullAttr);
        EXPECT_EQ(statedBy(derived), journey.derived)
            << text(journey.stated) << " gave " << text(statedBy(derived));
        const BuildAttributes decorated = recordOf(parsed(printed(record.fullAttr)));
        EXPECT_EQ(statedBy(decorated), journey.decorated)
            << text(journey.stated) << " gave " << text(statedBy(decorated));
        EXPECT_EQ(journey.why == nullptr,
                  journey.derived == journey.stated && journey.decorated == journey.stated);
        for (const Tag tag : {Tag_QEL_ISA_use, Tag_FINCH_ISA_use, Tag_Q64_ISA_use}) {
            EXPECT_EQ(decorated.getNumber(tag), derived.getNumber(tag)) << text(journey.stated);
        }
        // A second journey ends where the first one did.
        BuildAttributes again = derived;
        again.rebuildFullAttr();
        EXPECT_EQ(statedBy(recordOf(again.fullAttr)), journey.derived) << text(journey.stated);
    }
}

TEST(TargetRoundTrip, OfTheSecureStateWhereItIsStated) {
    BuildAttributes record = statedRecord({{7, 0}, nullptr, {}, {}, nullptr});
    record.setTag(Tag_Virtualization_use, 1);
    record.rebuildFullAttr();
    EXPECT_EQ(statedBy(recordOf(record.fullAttr)), (Stated{7, 0}));
    EXPECT_EQ(statedBy(recordOf(parsed(printed(record.fullAttr)))), (Stated{7, 0}));
}

TEST(TargetRoundTrip, OfTheApplicationProfileThroughTheTokenThatItHas) {
    BuildAttributes record = statedRecord({{10, 'A'}, nullptr, {}, {}, nullptr});
    record.setTag(Tag_F2EE_use, 1);
    record.rebuildFullAttr();
    EXPECT_EQ(statedBy(recordOf(parsed(printed(record.fullAttr)))), (Stated{10, 'A'}));
}

// An object that uses one of the two instruction sets only states the same architecture as one
// that uses both, with one exception.
TEST(TargetRoundTrip, WithOneOfTheInstructionSetsAlone) {
    for (const Journey& journey : journeys) {
        if (journey.name != nullptr) {
            continue;
        }
        for (const Tag left : {Tag_QEL_ISA_use, Tag_FINCH_ISA_use}) {
            BuildAttributes record = statedRecord(journey);
            record.setTag(left == Tag_QEL_ISA_use ? Tag_FINCH_ISA_use : Tag_QEL_ISA_use, 0);
            record.rebuildFullAttr();
            if (qelVersion(record.fullAttr.isa) == 0 && finchVersion(record.fullAttr.isa) == 0) {
                continue; // the target has only the other set
            }
            Stated expected = journey.derived;
            if (left == Tag_FINCH_ISA_use && journey.stated.arch == 22) {
                expected = {14, 'A'}; // the newest version is a word of the 32-bit set
            }
            EXPECT_EQ(statedBy(recordOf(record.fullAttr)), expected) << text(journey.stated);
        }
    }
}

} // namespace
} // namespace attributes::test
