// The names of all bits of a `FullAttr`: the feature words of `isa`, the option bits, the forms of
// access, the requirements and the version of the object format.
//
// The features of a set are 128 bits. A feature word is a name for some of them, and words build
// upon each other: `QEL_ISAv5` holds the bits of `QEL_ISAv4`, which holds that of `QEL_ISAv3`. A
// rule that asks for "a bit of v5 beyond v4" is therefore about one bit, and one that asks for v5
// about three. The bits are those of the tool chain's compilers and linkers and can never change:
// they reach users in decorations of symbols and in library attribute maps.
#pragma once

#include "attributes/interface/isa_operations.h"

#include <cstdint>

namespace attributes {

namespace feature_word {

// The levels of the instruction sets: the 32-bit one, the compact one and the 64-bit one.
inline constexpr IsaSet QEL_ISAv3{0x1, 0};
inline constexpr IsaSet QEL_ISAv4{0x3, 0};
inline constexpr IsaSet QEL_ISAv5{0x7, 0};
inline constexpr IsaSet QEL_ISAv6{0xF, 0};
inline constexpr IsaSet QEL_ISAv7{0x1F, 0};
inline constexpr IsaSet QEL_ISAv8{0x3F, 0};
inline constexpr IsaSet QEL_ISAv9{0x3F, 0x10000};

inline constexpr IsaSet FINCH_ISAv1{0x40, 0};
inline constexpr IsaSet FINCH_ISAv2{0xC0, 0};
inline constexpr IsaSet FINCH_ISAv3{0x1C0, 0};
inline constexpr IsaSet FINCH_ISAv4{0x3C0, 0};
inline constexpr IsaSet FINCH_ISAv5{0x7C0, 0};

inline constexpr IsaSet Q64_ISAv8{0x10000000000, 0};
inline constexpr IsaSet Q64_ISAv9{0x30000000000, 0};

// Extensions and states of the integer side.
inline constexpr IsaSet V6F2_ISA{0x800, 0};                        // "B"
inline constexpr IsaSet M{0x1000, 0};                              // the M bit: microcontrollers
inline constexpr IsaSet MX8_INSNS{0x2000, 0};                      // "MX8"
inline constexpr IsaSet MX81{0, 0x20};                             // what "MX81" adds to "MX8"
inline constexpr IsaSet MX82{0, 0x200};                            // what "MX82" adds to "MX81"
inline constexpr IsaSet WMMX_ISA{0x4000, 0};                       // "WMMX"
inline constexpr IsaSet WMMX2_ISA{0xC000, 0};                      // "WMMX2"
inline constexpr IsaSet X{0x10000, 0};                             // "X"
inline constexpr IsaSet PAIR_PREFETCH{0x20000, 0};                 // "P"
inline constexpr IsaSet DSP_MULT{0x40000, 0};                      // "E"
inline constexpr IsaSet JAVA_STATE{0x80000, 0};                    // "J"
inline constexpr IsaSet KERNEL_ISA{0x100000, 0};                   // "K"
inline constexpr IsaSet OS_EXTENSION{0x200000, 0};                 // "S"
inline constexpr IsaSet MX7_EXTENSION{0x400000, 0};                // "MX7"
inline constexpr IsaSet A_PROFILE{0x800000, 0};                    // "A_PROFILE"
inline constexpr IsaSet SAFEHOUSE_ISA{0x1000000, 0};               // "Z"
inline constexpr IsaSet ORCA_ISA{0x2000000, 0};                    // "N"
inline constexpr IsaSet MARVELL_DIV{0x4000000, 0};                 // "MD"
inline constexpr IsaSet MP_EXTENSIONS{0x8000000, 0};               // "MPE"
inline constexpr IsaSet VIRTUALIZATION_EXTENSION{0x1000000000, 0}; // no token
inline constexpr IsaSet FINCH_DIVIDE{0x4000000000, 0};             // "D"
inline constexpr IsaSet QEL_DIVIDE{0x8000000000, 0};               // no token
inline constexpr IsaSet DIVIDE_EXTENSION{0xC000000000, 0};         // "DE"
inline constexpr IsaSet R_PROFILE{0x200000000000, 0};              // "R_PROFILE"
inline constexpr IsaSet CX81_LOW{0x800000000000, 0};               // "CX81", second row
inline constexpr IsaSet CX81_HIGH{0, 0x1};                         // "CX81", first row
inline constexpr IsaSet RAS{0, 0x8};                               // "RAS"
inline constexpr IsaSet TRGi{0, 0x40};                             // "TRGi"
inline constexpr IsaSet TRGf{0, 0x80};                             // what "TRGf" adds to "TRGi"

// The prefetch forms. Nine levels whose numbers are not their order: each holds the one before it
// in this list.
inline constexpr IsaSet PLD7{0x10000000, 0};
inline constexpr IsaSet PLD0{0x30000000, 0};
inline constexpr IsaSet PLD1{0x70000000, 0};
inline constexpr IsaSet PLD2{0xF0000000, 0};
inline constexpr IsaSet PLD3{0x1F0000000, 0};
inline constexpr IsaSet PLD4{0x3F0000000, 0};
inline constexpr IsaSet PLD5{0x7F0000000, 0};
inline constexpr IsaSet PLD6{0x1007F0000000, 0};
inline constexpr IsaSet PLD8{0x5007F0000000, 0};

// Floating point: instruction sets, registers, widths, and how doubles and zeros are handled.
inline constexpr IsaSet ZLT_ISAv1{0x80000000000000, 0};     // "ZLTi1"
inline constexpr IsaSet ZLT_ISAv2{0x180000000000000, 0};    // "ZLTi2"
inline constexpr IsaSet ZLT_ISAv3{0x380000000000000, 0};    // "ZLTi3"
inline constexpr IsaSet ZLT_ISAv5{0x381000000000000, 0};    // "ZLTi5"
inline constexpr IsaSet FP_ISA_QELv8{0x383000000000000, 0}; // "FPiv8"
inline constexpr IsaSet VFMA_EXTENSION{0x4000000000000, 0}; // "VFMA"
inline constexpr IsaSet EXTREGS_D16{0x8000000000000, 0};    // "EXTD16"
inline constexpr IsaSet EXTREGS_D32{0x18000000000000, 0};   // "EXTD32"
inline constexpr IsaSet ZLT_SINGLE{0x20000000000000, 0};    // "ZLTS"
inline constexpr IsaSet ZLT_DOUBLE{0x40000000000000, 0};    // "ZLTD"
inline constexpr IsaSet ZLT_HALF{0, 0x2};
inline constexpr IsaSet FP16{0x400000000000000, 0};
inline constexpr IsaSet FLA_ISA{0x800000000000000, 0}; // "FLAv3"
inline constexpr IsaSet SOFTFP{0x1000000000000000, 0};
inline constexpr IsaSet PURE_DOUBLES{0x2000000000000000, 0};  // "PE"
inline constexpr IsaSet MIXED_DOUBLES{0x4000000000000000, 0}; // "ME"
inline constexpr IsaSet FZ_POSZERO{0x8000000000000000, 0};    // "FZ_POSZERO"

// Masks over several words.
inline constexpr IsaSet FP_GENERATION{0x0383000000000000, 0};       // tells the generations apart
inline constexpr IsaSet FP_GENERATION_7{0, 0x4};                    // marks the newest generation
inline constexpr IsaSet FLOATING_POINT_BITS{0x0FFF000000000000, 2}; // what Tag_FP_arch decides

} // namespace feature_word

// Bits of `FullAttr::options`. The names are those of the tokens in decorations; a token that
// begins with "~" is a bit of its own, written NOT_ here.
namespace option_bit {

inline constexpr uint64_t IW = 0x1;
inline constexpr uint64_t NOT_IW = 0x2;
inline constexpr uint64_t RWPI = 0x4;
inline constexpr uint64_t USESV6 = 0x8;
inline constexpr uint64_t STKCKD = 0x10;
inline constexpr uint64_t NOT_STKCKD = 0x20;
inline constexpr uint64_t USESV7 = 0x40;
inline constexpr uint64_t HARDFP = 0x100;
inline constexpr uint64_t SOFTFP = 0x200;
inline constexpr uint64_t ENUMINT = 0x800;
inline constexpr uint64_t WCHAR32 = 0x1000;
inline constexpr uint64_t NOT_SHL = 0x8000;
inline constexpr uint64_t OSPACE = 0x10000;
inline constexpr uint64_t OTIME = 0x30000;
inline constexpr uint64_t ROPI = 0x40000;
inline constexpr uint64_t EBA4 = 0x80000;
inline constexpr uint64_t IEEEJ = 0x100000;
inline constexpr uint64_t IEEEF = 0x300000;
inline constexpr uint64_t IEEEX = 0x700000;
inline constexpr uint64_t EBA8 = 0x800000;
inline constexpr uint64_t UX = 0x4000000;
inline constexpr uint64_t FPIC = 0x8000000;
inline constexpr uint64_t THREADEDCXX = 0x10000000;
inline constexpr uint64_t INDIRECT = 0x20000000;
inline constexpr uint64_t STANDARDLIB = 0x40000000;
inline constexpr uint64_t MICROLIB = 0x80000000;
inline constexpr uint64_t SIGN_RET_ADDR = 0x100000000;
inline constexpr uint64_t TAGGED_STACK = 0x200000000;
inline constexpr uint64_t BTI = 0x400000000;
inline constexpr uint64_t PACBTILIB = 0x800000000;
inline constexpr uint64_t ACCEL_MOPS = 0x1000000000;

} // namespace option_bit

// Forms of access to memory. L is a load, S a store, U one that need not be aligned; the first
// digit is the size in bytes, the second the alignment in bytes that the form relies on. Loads are
// bits of `access[0]` to `access[2]`. Stores are written sixteen bits higher, and `access[3]`
// holds them shifted down by those.
namespace access_bit {

inline constexpr uint32_t L88 = 0x1;
inline constexpr uint32_t L84 = 0x2;
inline constexpr uint32_t L82 = 0x4;
inline constexpr uint32_t L81 = 0x8;
inline constexpr uint32_t L44 = 0x10;
inline constexpr uint32_t L42 = 0x20;
inline constexpr uint32_t L41 = 0x40;
inline constexpr uint32_t L22 = 0x80;
inline constexpr uint32_t L21 = 0x100;
inline constexpr uint32_t L11 = 0x200;
inline constexpr uint32_t UL84 = 0x400;
inline constexpr uint32_t UL82 = 0x800;
inline constexpr uint32_t UL81 = 0x1000;
inline constexpr uint32_t UL42 = 0x2000;
inline constexpr uint32_t UL41 = 0x4000;
inline constexpr uint32_t UL21 = 0x8000;
inline constexpr uint32_t S88 = 0x10000;
inline constexpr uint32_t S84 = 0x20000;
inline constexpr uint32_t S82 = 0x40000;
inline constexpr uint32_t S81 = 0x80000;
inline constexpr uint32_t S44 = 0x100000;
inline constexpr uint32_t S42 = 0x200000;
inline constexpr uint32_t S41 = 0x400000;
inline constexpr uint32_t S22 = 0x800000;
inline constexpr uint32_t S21 = 0x1000000;
inline constexpr uint32_t S11 = 0x2000000;
inline constexpr uint32_t US84 = 0x4000000;
inline constexpr uint32_t US82 = 0x8000000;
inline constexpr uint32_t US81 = 0x10000000;
inline constexpr uint32_t US42 = 0x20000000;
inline constexpr uint32_t US41 = 0x40000000;
inline constexpr uint32_t US21 = 0x80000000;

} // namespace access_bit

// Bits of `FullAttr::requirements`.
namespace requirement_bit {

inline constexpr uint64_t REQ8 = 0x1;  // needs that doubles lie at multiples of 8
inline constexpr uint64_t PRES8 = 0x2; // keeps the stack at multiples of 8

} // namespace requirement_bit

// Values of `FullAttr::abiVersion`.
namespace abi_version {

inline constexpr uint64_t UNKNOWN = 0;
inline constexpr uint64_t EABIv2 = 2;

} // namespace abi_version

// Values of `FullAttr::targetKind`.
namespace target_kind {

inline constexpr uint32_t ARCHITECTURE = 0x10000000;
inline constexpr uint32_t FLOATING_POINT_UNIT = 0x20000000;
inline constexpr uint32_t PROCESSOR = 0x40000000;

} // namespace target_kind

// One named feature word.
struct NamedFeatureWord {
    const char* name;
    IsaSet word;
};

// All feature words that have a name for readers, e.g. in internal listings. No two have equal
// words.
struct NamedFeatureWords {
    const NamedFeatureWord* rows;
    uint32_t count;
};
NamedFeatureWords namedFeatureWords();

// The name of the feature word that equals `isa` in both halves, or null when there is none. The
// text lives for ever.
const char* nameOfFeatureWord(const IsaSet& isa);

} // namespace attributes
