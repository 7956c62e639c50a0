// Completing a set of features.
//
// Features imply others: a level of an instruction set all lower levels, doubles a byte order of
// doubles. A set that was read from tokens, or that is what one set has beyond another, may hold a
// bit without its companions. The rules run once, in order; a rule late in the order may add what
// an earlier one would have gone on from, so that a second run may add more. The linker has the
// same order.
#include "attributes/interface/decoration.h"

#include "attributes/interface/feature_words.h"

#include <cstddef>
#include <span>

namespace attributes {

namespace {

using namespace feature_word;

// Levels from the highest to the lowest. The first of which the set has a bit beyond the next
// level is completed. The highest levels of the instruction sets take no part.
constexpr IsaSet FinchLevels[] = {FINCH_ISAv4, FINCH_ISAv3, FINCH_ISAv2, FINCH_ISAv1};
constexpr IsaSet QelLevels[] = {QEL_ISAv7, QEL_ISAv6, QEL_ISAv5, QEL_ISAv4, QEL_ISAv3};
constexpr IsaSet WmmxLevels[] = {WMMX2_ISA, WMMX_ISA};
constexpr IsaSet PrefetchLevels[] = {PLD8, PLD6, PLD5, PLD4, PLD3, PLD2, PLD1, PLD0, PLD7};
constexpr IsaSet FloatingPointLevels[] = {FP_ISA_QELv8, ZLT_ISAv5, ZLT_ISAv3, ZLT_ISAv2, ZLT_ISAv1};
constexpr IsaSet RegisterLevels[] = {EXTREGS_D32, EXTREGS_D16};

void completeLevel(IsaSet& isa, std::span<const IsaSet> levels) {
    for (size_t i = 0; i + 1 < levels.size(); ++i) {
        if (hasAny(isa, without(levels[i], levels[i + 1]))) {
            setWord(isa, levels[i]);
            return;
        }
    }
}

void imply(IsaSet& isa, const IsaSet& word, const IsaSet& implied) {
    if (hasAll(isa, word)) {
        setWord(isa, implied);
    }
}

// A compact-only division is one of microcontrollers, and so are their later instructions.
void completeMicrocontroller(IsaSet& isa) {
    if (hasAll(isa, FINCH_DIVIDE) && !hasAny(isa, QEL_DIVIDE | QEL_ISAv3 | JAVA_STATE)) {
        setWord(isa, M);
    }
    imply(isa, MX82, MX81);
    imply(isa, MX81, MX8_INSNS);
    imply(isa, MX8_INSNS, M);
}

// What handles doubles has them in the machine's byte order; the old unit had them mixed.
void completeDoubles(IsaSet& isa) {
    if (hasAny(isa, ZLT_ISAv1 | ZLT_DOUBLE | ZLT_SINGLE | EXTREGS_D16)) {
        setWord(isa, PURE_DOUBLES);
    } else {
        imply(isa, FLA_ISA, MIXED_DOUBLES);
    }
}

} // namespace

void normaliseIsa(IsaSet& isa) {
    completeLevel(isa, FinchLevels);
    completeLevel(isa, QelLevels);
    completeLevel(isa, WmmxLevels);
    completeLevel(isa, PrefetchLevels);
    imply(isa, ZLT_HALF, FP_ISA_QELv8);
    completeLevel(isa, FloatingPointLevels);
    completeLevel(isa, RegisterLevels);
    completeMicrocontroller(isa);
    imply(isa, QEL_ISAv5 | FINCH_ISAv1, FINCH_ISAv2);
    imply(isa, VIRTUALIZATION_EXTENSION, DIVIDE_EXTENSION);
    completeDoubles(isa);
    imply(isa, ZLT_ISAv3 | VFMA_EXTENSION, FP16);
    imply(isa, TRGf, TRGi | ZLT_SINGLE | ZLT_HALF);
    imply(isa, TRGi, DSP_MULT);
}

} // namespace attributes
