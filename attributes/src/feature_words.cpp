// The names of feature words, for whoever shows a single word to a reader.
#include "attributes/interface/feature_words.h"

#include <iterator>

namespace attributes {

namespace {

using namespace feature_word;

#define TOMEX_NAMED_WORD(word)                                                                     \
    { #word, word }

constexpr NamedFeatureWord names[] = {
    TOMEX_NAMED_WORD(QEL_ISAv3),
    TOMEX_NAMED_WORD(QEL_ISAv4),
    TOMEX_NAMED_WORD(QEL_ISAv5),
    TOMEX_NAMED_WORD(QEL_ISAv6),
    TOMEX_NAMED_WORD(QEL_ISAv7),
    TOMEX_NAMED_WORD(QEL_ISAv8),
    TOMEX_NAMED_WORD(QEL_ISAv9),
    TOMEX_NAMED_WORD(FINCH_ISAv1),
    TOMEX_NAMED_WORD(FINCH_ISAv2),
    TOMEX_NAMED_WORD(FINCH_ISAv3),
    TOMEX_NAMED_WORD(FINCH_ISAv4),
    TOMEX_NAMED_WORD(FINCH_ISAv5),
    TOMEX_NAMED_WORD(PAIR_PREFETCH),
    TOMEX_NAMED_WORD(DSP_MULT),
    TOMEX_NAMED_WORD(JAVA_STATE),
    TOMEX_NAMED_WORD(SAFEHOUSE_ISA),
    TOMEX_NAMED_WORD(ORCA_ISA),
    TOMEX_NAMED_WORD(KERNEL_ISA),
    TOMEX_NAMED_WORD(V6F2_ISA),
    TOMEX_NAMED_WORD(OS_EXTENSION),
    TOMEX_NAMED_WORD(MX7_EXTENSION),
    TOMEX_NAMED_WORD(MX8_INSNS),
    TOMEX_NAMED_WORD(FINCH_DIVIDE),
    TOMEX_NAMED_WORD(QEL_DIVIDE),
    TOMEX_NAMED_WORD(DIVIDE_EXTENSION),
    TOMEX_NAMED_WORD(VFMA_EXTENSION),
    TOMEX_NAMED_WORD(EXTREGS_D16),
    TOMEX_NAMED_WORD(EXTREGS_D32),
    TOMEX_NAMED_WORD(ZLT_SINGLE),
    TOMEX_NAMED_WORD(ZLT_DOUBLE),
    TOMEX_NAMED_WORD(ZLT_HALF),
    TOMEX_NAMED_WORD(ZLT_ISAv1),
    TOMEX_NAMED_WORD(ZLT_ISAv2),
    TOMEX_NAMED_WORD(ZLT_ISAv3),
    TOMEX_NAMED_WORD(ZLT_ISAv5),
    TOMEX_NAMED_WORD(FP_ISA_QELv8),
    TOMEX_NAMED_WORD(FP16),
    TOMEX_NAMED_WORD(FLA_ISA),
    TOMEX_NAMED_WORD(SOFTFP),
    TOMEX_NAMED_WORD(PURE_DOUBLES),
    TOMEX_NAMED_WORD(MIXED_DOUBLES),
    TOMEX_NAMED_WORD(FZ_POSZERO),
    TOMEX_NAMED_WORD(PLD0),
    TOMEX_NAMED_WORD(PLD1),
    TOMEX_NAMED_WORD(PLD2),
    TOMEX_NAMED_WORD(PLD3),
    TOMEX_NAMED_WORD(PLD4),
    TOMEX_NAMED_WORD(PLD5),
    TOMEX_NAMED_WORD(PLD6),
    TOMEX_NAMED_WORD(PLD7),
    TOMEX_NAMED_WORD(PLD8),
    TOMEX_NAMED_WORD(WMMX_ISA),
    TOMEX_NAMED_WORD(WMMX2_ISA),
    TOMEX_NAMED_WORD(MARVELL_DIV),
    TOMEX_NAMED_WORD(MP_EXTENSIONS),
    TOMEX_NAMED_WORD(VIRTUALIZATION_EXTENSION),
    TOMEX_NAMED_WORD(A_PROFILE),
    TOMEX_NAMED_WORD(R_PROFILE),
};

#undef TOMEX_NAMED_WORD

} // namespace

NamedFeatureWords namedFeatureWords() {
    return {names, static_cast<uint32_t>(std::size(names))};
}

const char* nameOfFeatureWord(const IsaSet& isa) {
    for (const NamedFeatureWord& named : names) {
        if (named.word == isa) {
            return named.name;
        }
    }
    return nullptr;
}

} // namespace attributes
