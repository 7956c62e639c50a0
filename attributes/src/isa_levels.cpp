#include "attributes/interface/isa_levels.h"

#include <cstddef>

#include "attributes/interface/feature_words.h"

namespace attributes {

namespace {

using namespace feature_word;

// A level and the word that it needs in full.
struct LevelRow {
    IsaSet word;
    uint32_t level;
};

// Highest first.
constexpr LevelRow qelLevels[] = {
    {QEL_ISAv9, 9}, {QEL_ISAv8, 8}, {QEL_ISAv7, 7}, {QEL_ISAv6, 6},
    {QEL_ISAv5, 5}, {QEL_ISAv4, 4}, {QEL_ISAv3, 3},
};
constexpr LevelRow finchLevels[] = {
    {FINCH_ISAv5, 5}, {FINCH_ISAv4, 4}, {FINCH_ISAv3, 3}, {FINCH_ISAv2, 2}, {FINCH_ISAv1, 1},
};
constexpr LevelRow q64Levels[] = {{Q64_ISAv9, 9}, {Q64_ISAv8, 8}};

// The generations by the bits that tell them apart: these must be there and no others of them.
constexpr LevelRow floatingPointLevels[] = {
    {FP_ISA_QELv8, 6}, {ZLT_ISAv5, 5}, {ZLT_ISAv3, 3}, {ZLT_ISAv2, 2}, {ZLT_ISAv1, 1},
};

template <size_t Count>
uint32_t levelOf(const IsaSet& isa, const LevelRow (&levels)[Count]) {
    for (const LevelRow& row : levels) {
        if (hasAll(isa, row.word)) {
            return row.level;
        }
    }
    return 0;
}

constexpr uint32_t AnyLevel = 0xFF;

// Features with these levels and all bits of `with` are of the architecture `arch`.
struct ArchRow {
    uint32_t qel;
    uint32_t finch;
    IsaSet with;
    uint32_t arch;
};

// The first row that fits counts.
constexpr ArchRow archRows[] = {
    {AnyLevel, AnyLevel, Q64_ISAv9, 22},
    {AnyLevel, AnyLevel, Q64_ISAv8 | R_PROFILE, 15},
    {AnyLevel, AnyLevel, Q64_ISAv8, 14},
    {9, AnyLevel, {}, 22},
    {8, AnyLevel, R_PROFILE, 15},
    {8, AnyLevel, {}, 14},
    {7, AnyLevel, {}, 10},
    {6, AnyLevel, KERNEL_ISA | SAFEHOUSE_ISA, 7},
    {6, AnyLevel, KERNEL_ISA, 9},
    {6, AnyLevel, V6F2_ISA, 8},
    {6, 4, {}, 8},
    {6, AnyLevel, {}, 6},
    {5, AnyLevel, DSP_MULT | JAVA_STATE, 5},
    {5, AnyLevel, DSP_MULT, 4},
    {5, AnyLevel, {}, 3},
    {4, AnyLevel, OS_EXTENSION, 2},
    {4, AnyLevel, FINCH_ISAv1, 2},
    {4, AnyLevel, {}, 1},
    {3, AnyLevel, {}, 0},
    // The compact instruction set alone.
    {0, 1, {}, 2},
    {0, 2, DSP_MULT | JAVA_STATE, 5},
    {0, 2, DSP_MULT, 4},
    {0, 2, {}, 3},
    {0, 3, M | MX8_INSNS, 16},
    {0, 3, M | OS_EXTENSION, 12},
    {0, 3, M, 11},
    {0, 3, KERNEL_ISA | SAFEHOUSE_ISA, 7},
    {0, 3, KERNEL_ISA, 9},
    {0, 3, {}, 6},
    {0, 4, MX82, 23},
    {0, 4, MX81, 21},
    {0, 4, MX8_INSNS, 17},
    {0, 4, KERNEL_ISA | MX7_EXTENSION, 13},
    {0, 4, KERNEL_ISA, 10},
    {0, 4, {}, 8},
    {0, 5, R_PROFILE, 15},
    {0, 5, {}, 14},
};

bool isLevel(uint32_t wanted, uint32_t level) {
    return wanted == AnyLevel || wanted == level;
}

// Whether there are no profiles at all in the architecture of these features.
bool isWithoutProfile(const IsaSet& isa) {
    const uint32_t finch = finchVersion(isa);
    if (hasAll(isa, MX8_INSNS) && (finch == 3 || finch == 4)) {
        return true;
    }
    if (qelVersion(isa) < 7 && finch < 4) {
        return true;
    }
    return !hasAll(isa, KERNEL_ISA) && !hasAll(isa, Q64_ISAv8);
}

} // namespace

uint32_t qelVersion(const IsaSet& isa) {
    return levelOf(isa, qelLevels);
}

uint32_t finchVersion(const IsaSet& isa) {
    return levelOf(isa, finchLevels);
}

uint32_t q64Version(const IsaSet& isa) {
    return levelOf(isa, q64Levels);
}

uint32_t fpGeneration(const IsaSet& isa) {
    const IsaSet generation = isa & FP_GENERATION;
    if (hasAll(isa, FP_GENERATION_7) && !isEmpty(generation)) {
        return 7;
    }
    for (const LevelRow& row : floatingPointLevels) {
        if (generation == row.word) {
            const bool isExtended = row.level == 3 && hasAll(isa, FP16 | VFMA_EXTENSION);
            return isExtended ? 4 : row.level;
        }
    }
    return 0;
}

uint32_t archFromIsa(const IsaSet& isa) {
    const uint32_t qel = qelVersion(isa);
    const uint32_t finch = finchVersion(isa);
    for (const ArchRow& row : archRows) {
        if (isLevel(row.qel, qel) && isLevel(row.finch, finch) && hasAll(isa, row.with)) {
            return row.arch;
        }
    }
    return 0;
}

uint32_t profileFromIsa(const IsaSet& isa) {
    if (isWithoutProfile(isa)) {
        return 0;
    }
    if (hasAll(isa, M)) {
        return 'M';
    }
    if (!hasAll(isa, DSP_MULT) && !hasAll(isa, Q64_ISAv8)) {
        return 0;
    }
    if (hasAll(isa, A_PROFILE)) {
        return 'A';
    }
    if (hasAll(isa, R_PROFILE)) {
        return 'R';
    }
    return hasAll(isa, X) ? 'A' : 'S';
}

} // namespace attributes
