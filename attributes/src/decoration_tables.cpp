// The rows of all token tables.
#include "attributes/src/decoration_tables.h"

#include "attributes/interface/feature_words.h"

namespace attributes {

namespace {

using namespace feature_word;

// What the tokens of whole floating-point units are made of.
constexpr IsaSet BothWidths = ZLT_SINGLE | ZLT_DOUBLE;
constexpr IsaSet Unit1 = ZLT_ISAv1 | BothWidths | EXTREGS_D16;
constexpr IsaSet Unit2 = ZLT_ISAv2 | BothWidths | EXTREGS_D16;
constexpr IsaSet Unit3D16 = ZLT_ISAv3 | BothWidths | EXTREGS_D16;
constexpr IsaSet Unit3 = ZLT_ISAv3 | BothWidths | EXTREGS_D32;
constexpr IsaSet Unit4 = Unit3 | FP16 | VFMA_EXTENSION;
constexpr IsaSet Unit5D16 = ZLT_ISAv5 | BothWidths | EXTREGS_D16 | FP16 | VFMA_EXTENSION;
constexpr IsaSet Unit8D16 = FP_ISA_QELv8 | BothWidths | EXTREGS_D16 | FP16 | VFMA_EXTENSION;
constexpr IsaSet Unit8 = Unit8D16 | EXTREGS_D32;

// "MX82" stands behind "MX81" and "FPiv8" behind "ZLTi5", rows that take some of their bits, so
// both never show. Required: the compilers and users' link maps have it so.
constexpr IsaToken printRows[] = {
    {"FCH_ISAv5", FINCH_ISAv5},
    {"FCH_ISAv4", FINCH_ISAv4},
    {"FCH_ISAv3M", FINCH_ISAv3 | M},
    {"FCH_ISAv3", FINCH_ISAv3},
    {"FCH_ISAv2", FINCH_ISAv2},
    {"FCH_ISAv1", FINCH_ISAv1},
    {"QEL_ISAv9", QEL_ISAv9},
    {"QEL_ISAv8", QEL_ISAv8},
    {"Q64_ISAv9", Q64_ISAv9},
    {"Q64_ISAv8$R_PROFILE", Q64_ISAv8 | R_PROFILE},
    {"Q64_ISAv8$A_PROFILE", Q64_ISAv8 | A_PROFILE},
    {"Q64_ISAv8", Q64_ISAv8},
    {"QEL_ISAv7", QEL_ISAv7},
    {"QEL_ISAv6", QEL_ISAv6},
    {"QEL_ISAv5", QEL_ISAv5},
    {"QEL_ISAv4", QEL_ISAv4},
    {"QEL_ISAv3", QEL_ISAv3},
    {"X", X},
    {"E", DSP_MULT},
    {"P", PAIR_PREFETCH},
    {"J", JAVA_STATE},
    {"Z", SAFEHOUSE_ISA},
    {"N", ORCA_ISA},
    {"DE", DIVIDE_EXTENSION},
    {"D", FINCH_DIVIDE},
    {"K", KERNEL_ISA},
    {"B", V6F2_ISA},
    {"S", OS_EXTENSION},
    {"MX7", MX7_EXTENSION},
    {"MX81", MX8_INSNS | MX81},
    {"MX82", MX8_INSNS | MX81 | MX82},
    {"MX8", MX8_INSNS},
    {"FLAv3", FLA_ISA},
    {"FP_QELv8_FP16", Unit8 | ZLT_HALF},
    {"FP_QELv8", Unit8},
    {"FP_QELv8_D16", Unit8D16},
    {"ZLTv5_D16_FP16", Unit5D16 | ZLT_HALF},
    {"ZLTv5_D16", Unit5D16},
    {"ZLTv4", Unit4},
    {"ZLTv3", Unit3},
    {"ZLTv3_D16", Unit3D16},
    {"ZLTv2", Unit2},
    {"ZLTv1", Unit1},
    {"ZLTi5", ZLT_ISAv5},
    {"FPiv8", FP_ISA_QELv8},
    {"ZLTi3", ZLT_ISAv3},
    {"ZLTi2", ZLT_ISAv2},
    {"ZLTi1", ZLT_ISAv1},
    {"EXTD32", EXTREGS_D32},
    {"EXTD16", EXTREGS_D16},
    {"ZLTS", ZLT_SINGLE},
    {"ZLTD", ZLT_DOUBLE},
    {"VFMA", VFMA_EXTENSION},
    {"PE", PURE_DOUBLES},
    {"ME", MIXED_DOUBLES},
    {"FZ_POSZERO", FZ_POSZERO},
    {"PLD8", PLD8},
    {"PLD6", PLD6},
    {"PLD5", PLD5},
    {"PLD4", PLD4},
    {"PLD3", PLD3},
    {"PLD2", PLD2},
    {"PLD1", PLD1},
    {"PLD0", PLD0},
    {"PLD7", PLD7},
    {"WMMX2", WMMX2_ISA},
    {"WMMX", WMMX_ISA},
    {"MD", MARVELL_DIV},
    {"MPE", MP_EXTENSIONS},
    {"CX81", CX81_HIGH},
    {"CX81", CX81_LOW},
    {"TRGf", TRGi | TRGf},
    {"TRGi", TRGi},
    {"RAS", RAS},
};

// A level of the compact instruction set as older tools write it, together with the level of the
// 32-bit one that goes with it.
constexpr IsaSet FinchLevel1 = FINCH_ISAv1 | QEL_ISAv4 | OS_EXTENSION;
constexpr IsaSet FinchLevel2 = FINCH_ISAv2 | QEL_ISAv5 | OS_EXTENSION;
constexpr IsaSet FinchLevel3 = FINCH_ISAv3 | QEL_ISAv6 | OS_EXTENSION;

// What can be read. The two "Q64_ISAv8" rows with a profile are missing since a "$" ends a token:
// they are read as their two parts.
constexpr IsaToken parseRows[] = {
    {"FCH_ISAv5", FINCH_ISAv5},
    {"FCH_ISAv4", FINCH_ISAv4},
    {"FCH_ISAv3M", FINCH_ISAv3 | M},
    {"FCH_ISAv3", FINCH_ISAv3},
    {"FCH_ISAv2", FINCH_ISAv2},
    {"FCH_ISAv1", FINCH_ISAv1},
    {"FINCH_ISAv5", FINCH_ISAv5 | OS_EXTENSION},
    {"FINCH_ISAv4", FINCH_ISAv4 | OS_EXTENSION},
    {"FINCH_ISAv3", FinchLevel3},
    {"FINCH_ISAv2", FinchLevel2},
    {"FINCH_ISAv1", FinchLevel1},
    {"QEL_ISAv9", QEL_ISAv9},
    {"QEL_ISAv8", QEL_ISAv8},
    {"Q64_ISAv9", Q64_ISAv9},
    {"Q64_ISAv8", Q64_ISAv8},
    {"QEL_ISAv7", QEL_ISAv7},
    {"QEL_ISAv6", QEL_ISAv6},
    {"QEL_ISAv5", QEL_ISAv5},
    {"QEL_ISAv4", QEL_ISAv4},
    {"QEL_ISAv3", QEL_ISAv3},
    {"R_PROFILE", R_PROFILE},
    {"A_PROFILE", A_PROFILE},
    {"X", X},
    {"E", DSP_MULT},
    {"P", PAIR_PREFETCH},
    {"J", JAVA_STATE},
    {"Z", SAFEHOUSE_ISA},
    {"N", ORCA_ISA},
    {"DE", DIVIDE_EXTENSION},
    {"D", FINCH_DIVIDE},
    {"K", KERNEL_ISA},
    {"B", V6F2_ISA},
    {"S", OS_EXTENSION},
    {"MX7", MX7_EXTENSION},
    {"MX81", MX8_INSNS | MX81},
    {"MX82", MX8_INSNS | MX81 | MX82},
    {"MX8", MX8_INSNS},
    {"FLAv3", FLA_ISA},
    {"FP_QELv8_FP16", Unit8 | ZLT_HALF},
    {"FP_QELv8", Unit8},
    {"FP_QELv8_D16", Unit8D16},
    {"ZLTv5_D16", Unit5D16},
    {"ZLTv4", Unit4},
    {"ZLTv3", Unit3},
    {"ZLTv3_D16", Unit3D16},
    {"ZLTv2", Unit2},
    {"ZLTv1", Unit1},
    {"ZLTi5", ZLT_ISAv5},
    {"FPiv8", FP_ISA_QELv8},
    {"FPiv8_2", FP_ISA_QELv8 | ZLT_HALF},
    {"ZLTi3", ZLT_ISAv3},
    {"ZLTi2", ZLT_ISAv2},
    {"ZLTi1", ZLT_ISAv1},
    {"EXTD32", EXTREGS_D32},
    {"EXTD16", EXTREGS_D16},
    {"ZLTS", ZLT_SINGLE},
    {"ZLTD", ZLT_DOUBLE},
    {"VFMA", VFMA_EXTENSION},
    {"PE", PURE_DOUBLES},
    {"ME", MIXED_DOUBLES},
    {"FZ_POSZERO", FZ_POSZERO},
    {"PLD8", PLD8},
    {"PLD6", PLD6},
    {"PLD5", PLD5},
    {"PLD4", PLD4},
    {"PLD3", PLD3},
    {"PLD2", PLD2},
    {"PLD1", PLD1},
    {"PLD0", PLD0},
    {"PLD7", PLD7},
    {"WMMX2", WMMX2_ISA},
    {"WMMX", WMMX_ISA},
    {"MD", MARVELL_DIV},
    {"MPE", MP_EXTENSIONS},
    {"TRGf", TRGi | TRGf},
    {"TRGi", TRGi},
    {"RAS", RAS},
};

constexpr AccessToken accessRows[] = {
    {"L88", access_bit::L88},   {"L84", access_bit::L84},   {"L82", access_bit::L82},
    {"L81", access_bit::L81},   {"L44", access_bit::L44},   {"L42", access_bit::L42},
    {"L41", access_bit::L41},   {"L22", access_bit::L22},   {"L21", access_bit::L21},
    {"L11", access_bit::L11},   {"UL84", access_bit::UL84}, {"UL82", access_bit::UL82},
    {"UL81", access_bit::UL81}, {"UL42", access_bit::UL42}, {"UL41", access_bit::UL41},
    {"UL21", access_bit::UL21}, {"S88", access_bit::S88},   {"S84", access_bit::S84},
    {"S82", access_bit::S82},   {"S81", access_bit::S81},   {"S44", access_bit::S44},
    {"S42", access_bit::S42},   {"S41", access_bit::S41},   {"S22", access_bit::S22},
    {"S21", access_bit::S21},   {"S11", access_bit::S11},   {"US84", access_bit::US84},
    {"US82", access_bit::US82}, {"US81", access_bit::US81}, {"US42", access_bit::US42},
    {"US41", access_bit::US41}, {"US21", access_bit::US21},
};

constexpr OptionToken optionRows[] = {
    {"IW", option_bit::IW},
    {"~IW", option_bit::NOT_IW},
    {"RWPI", option_bit::RWPI},
    {"USESV6", option_bit::USESV6},
    {"STKCKD", option_bit::STKCKD},
    {"~STKCKD", option_bit::NOT_STKCKD},
    {"USESV7", option_bit::USESV7},
    {"HARDFP", option_bit::HARDFP},
    {"SOFTFP", option_bit::SOFTFP},
    {"WCHAR32", option_bit::WCHAR32},
    {"ENUMINT", option_bit::ENUMINT},
    {"~SHL", option_bit::NOT_SHL},
    {"OTIME", option_bit::OTIME},
    {"OSPACE", option_bit::OSPACE},
    {"ROPI", option_bit::ROPI},
    {"IEEEX", option_bit::IEEEX},
    {"IEEEF", option_bit::IEEEF},
    {"IEEEJ", option_bit::IEEEJ},
    {"EBA4", option_bit::EBA4},
    {"EBA8", option_bit::EBA8},
    {"UX", option_bit::UX},
    {"FPIC", option_bit::FPIC},
    {"INDIRECT", option_bit::INDIRECT},
    {"STANDARDLIB", option_bit::STANDARDLIB},
    {"MICROLIB", option_bit::MICROLIB},
    {"THREADEDCXX", option_bit::THREADEDCXX},
    {"SIGN_RET_ADDR", option_bit::SIGN_RET_ADDR},
    {"TAGGED_STACK", option_bit::TAGGED_STACK},
    {"BTI", option_bit::BTI},
    {"PACBTILIB", option_bit::PACBTILIB},
    {"ACCEL_MOPS", option_bit::ACCEL_MOPS},
};

constexpr OptionToken requirementRows[] = {
    {"REQ8", requirement_bit::REQ8},
    {"PRES8", requirement_bit::PRES8},
};

constexpr OptionToken abiRows[] = {
    {"EABIv2", abi_version::EABIv2},
};

constexpr OptionToken defaultRows[] = {
    {"IEEE1", option_bit::IEEEF},
};

constexpr RegionLetter letterRows[] = {
    {'A', region_bit::ALL},       {'C', region_bit::CODE | region_bit::READ_ONLY},
    {'R', region_bit::READ_ONLY}, {'W', region_bit::DATA},
    {'X', region_bit::CODE},
};

// "rodata" stands before "ro": the first name that fits is taken.
constexpr RegionName nameRows[] = {
    {"code", region_bit::CODE},        {"text", region_bit::CODE},
    {"rodata", region_bit::READ_ONLY}, {"ro", region_bit::CODE | region_bit::READ_ONLY},
    {"rw", region_bit::DATA},          {"data", region_bit::DATA},
    {"all", region_bit::ALL},
};

} // namespace

constinit const std::span<const IsaToken> isaPrintTable = printRows;
constinit const std::span<const IsaToken> isaParseTable = parseRows;
constinit const std::span<const AccessToken> accessTokens = accessRows;
constinit const std::span<const OptionToken> optionTokens = optionRows;
constinit const std::span<const OptionToken> requirementTokens = requirementRows;
constinit const std::span<const OptionToken> abiTokens = abiRows;
constinit const std::span<const OptionToken> defaultTokens = defaultRows;
constinit const std::span<const RegionLetter> regionLetters = letterRows;
constinit const std::span<const RegionName> regionNames = nameRows;

} // namespace attributes
