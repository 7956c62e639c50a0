// What the rows of the target table are made of: the feature sets of whole architectures and
// units, and the class codes.
//
// A set says what every object for an architecture may rely on. The number and profile by which an
// object states its architecture can be told from the set again, so each carries the word by which
// it is known: the level of its instruction set, `M` for microcontrollers, `A_PROFILE` and
// `R_PROFILE` for application and real-time processors. All sets are complete, as `normaliseIsa`
// leaves them.
#pragma once

#include "attributes/interface/feature_words.h"

#include <cstdint>

namespace attributes::target_words {

using namespace feature_word;

// The 32-bit line up to its sixth version.
inline constexpr IsaSet V3 = QEL_ISAv3;
inline constexpr IsaSet V4 = QEL_ISAv4;
inline constexpr IsaSet V4Finch = V4 | FINCH_ISAv1 | OS_EXTENSION;
inline constexpr IsaSet V5 = QEL_ISAv5 | FINCH_ISAv2 | OS_EXTENSION;
inline constexpr IsaSet V5Dsp = V5 | DSP_MULT | PAIR_PREFETCH;
inline constexpr IsaSet V5Java = V5Dsp | JAVA_STATE;
inline constexpr IsaSet V6 =
    QEL_ISAv6 | FINCH_ISAv3 | OS_EXTENSION | DSP_MULT | PAIR_PREFETCH | JAVA_STATE;
inline constexpr IsaSet V6Finch4 = V6 | FINCH_ISAv4 | V6F2_ISA;
inline constexpr IsaSet V6Kernel = V6 | KERNEL_ISA;
inline constexpr IsaSet V6Safe = V6Kernel | SAFEHOUSE_ISA;

// The seventh version: what its profiles share, and the profiles. Multiplication for signals comes
// with the profiles, and without it no profile is told from a set.
inline constexpr IsaSet V7 =
    QEL_ISAv7 | FINCH_ISAv4 | OS_EXTENSION | PAIR_PREFETCH | JAVA_STATE | V6F2_ISA | KERNEL_ISA;
inline constexpr IsaSet AppRt7 = V7 | DSP_MULT;
inline constexpr IsaSet App7 = AppRt7 | A_PROFILE | X;
inline constexpr IsaSet Rt7 = AppRt7 | R_PROFILE | FINCH_DIVIDE;

// The eighth and the ninth version, 32-bit and wide. `Rt8` holds all of `AppRt8`: an object of the
// combined profile states that it is compatible with the real-time one.
inline constexpr IsaSet AppRt8 = QEL_ISAv8 | FINCH_ISAv5 | OS_EXTENSION | PAIR_PREFETCH | V6F2_ISA |
                                 KERNEL_ISA | DSP_MULT | DIVIDE_EXTENSION;
inline constexpr IsaSet App8 = AppRt8 | A_PROFILE;
inline constexpr IsaSet Rt8 = AppRt8 | R_PROFILE;
inline constexpr IsaSet App9 = App8 | QEL_ISAv9 | RAS;
inline constexpr IsaSet App8Wide = Q64_ISAv8 | A_PROFILE;
inline constexpr IsaSet Rt8Wide = Q64_ISAv8 | R_PROFILE;
inline constexpr IsaSet App9Wide = Q64_ISAv9 | A_PROFILE | RAS;

// Microcontrollers. Those with a floating-point unit load pairs, which the unit needs.
inline constexpr IsaSet M6 = FINCH_ISAv3 | M;
inline constexpr IsaSet M6Os = M6 | OS_EXTENSION;
inline constexpr IsaSet M7NoDivide =
    FINCH_ISAv4 | M | OS_EXTENSION | PAIR_PREFETCH | V6F2_ISA | KERNEL_ISA;
inline constexpr IsaSet M7 = M7NoDivide | FINCH_DIVIDE;
inline constexpr IsaSet MicroDsp = DSP_MULT | MX7_EXTENSION;
inline constexpr IsaSet M7Dsp = M7 | MicroDsp;
inline constexpr IsaSet M8Base = M6Os | MX8_INSNS | FINCH_DIVIDE;
inline constexpr IsaSet M8Main = M7 | MX8_INSNS;
inline constexpr IsaSet M9Main = M8Main | MX81;
inline constexpr IsaSet M10Main = M9Main | MX82;

// Floating-point units.
inline constexpr IsaSet Single = ZLT_SINGLE | PURE_DOUBLES;
inline constexpr IsaSet Both = Single | ZLT_DOUBLE;
inline constexpr IsaSet Later = FP16 | VFMA_EXTENSION;
inline constexpr IsaSet Zlt1 = ZLT_ISAv1 | EXTREGS_D16 | Both;
inline constexpr IsaSet Zlt1Sp = ZLT_ISAv1 | EXTREGS_D16 | Single;
inline constexpr IsaSet Zlt2 = ZLT_ISAv2 | EXTREGS_D16 | Both;
inline constexpr IsaSet Zlt2Sp = ZLT_ISAv2 | EXTREGS_D16 | Single;
inline constexpr IsaSet Zlt3 = ZLT_ISAv3 | EXTREGS_D32 | Both;
inline constexpr IsaSet Zlt3Sp = ZLT_ISAv3 | EXTREGS_D32 | Single;
inline constexpr IsaSet Zlt3D16 = ZLT_ISAv3 | EXTREGS_D16 | Both;
inline constexpr IsaSet Zlt3D16Sp = ZLT_ISAv3 | EXTREGS_D16 | Single;
inline constexpr IsaSet Zlt4 = Zlt3 | Later;
inline constexpr IsaSet Zlt4Sp = Zlt3Sp | Later;
inline constexpr IsaSet Zlt4D16 = Zlt3D16 | Later;
inline constexpr IsaSet Zlt4D16Sp = Zlt3D16Sp | Later;
inline constexpr IsaSet Zlt5D16 = ZLT_ISAv5 | EXTREGS_D16 | Both | Later;
inline constexpr IsaSet Zlt5D16Sp = ZLT_ISAv5 | EXTREGS_D16 | Single | Later;
inline constexpr IsaSet Fp8 = FP_ISA_QELv8 | EXTREGS_D32 | Both | Later;
inline constexpr IsaSet Fp8D16 = FP_ISA_QELv8 | EXTREGS_D16 | Both | Later;
inline constexpr IsaSet Fp8D16Sp = FP_ISA_QELv8 | EXTREGS_D16 | Single | Later;
inline constexpr IsaSet Fla3 = FLA_ISA | MIXED_DOUBLES;

// Extensions that come together.
inline constexpr IsaSet Simd = ORCA_ISA;
inline constexpr IsaSet SimdCx = ORCA_ISA | CX81_LOW;
inline constexpr IsaSet Virtual = SAFEHOUSE_ISA | VIRTUALIZATION_EXTENSION | DIVIDE_EXTENSION;
inline constexpr IsaSet TrgInteger = TRGi | MicroDsp;
inline constexpr IsaSet TrgFloat = TrgInteger | TRGf | Fp8D16 | ZLT_HALF;

// Class codes of architectures. Processors add `ProcessorClass`; units have none.
enum TargetClass : uint32_t {
    TargetClass_Unit = 0,
    TargetClass_V3 = 1,
    TargetClass_V4 = 2,
    TargetClass_V4Finch = 3,
    TargetClass_V5 = 4,
    TargetClass_V5Dsp = 5,
    TargetClass_V6 = 6,
    TargetClass_V6Kernel = 7,
    TargetClass_V7 = 8,
    TargetClass_App7 = 9,
    TargetClass_Rt7 = 10,
    TargetClass_App8 = 11,
    TargetClass_Rt8 = 12,
    TargetClass_App9 = 13,
    TargetClass_App8Wide = 14,
    TargetClass_Rt8Wide = 15,
    TargetClass_App9Wide = 16,
    TargetClass_M6 = 17,
    TargetClass_M7 = 18,
    TargetClass_M8 = 19,
    TargetClass_M9 = 20,
    TargetClass_M10 = 21,
};
inline constexpr uint32_t ProcessorClass = 0x80;

// Short forms for the rows.
inline constexpr uint32_t Architecture = target_kind::ARCHITECTURE;
inline constexpr uint32_t Processor = target_kind::PROCESSOR;
inline constexpr uint32_t Unit = target_kind::FLOATING_POINT_UNIT;
inline constexpr uint32_t Listed = 1;
inline constexpr uint32_t Hidden = 0;

} // namespace attributes::target_words
