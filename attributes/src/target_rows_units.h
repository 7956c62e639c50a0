// The last block of targets: floating-point units.
//
// Each unit stands there twice: called with its own registers, and with those of integers
// ("soft."). "None" is the last row of the whole table: tools take it for the end of the units.
#pragma once

#include "attributes/interface/target_database.h"
#include "attributes/src/target_words.h"

namespace attributes::target_rows {

using namespace target_words;

// Floating-point units.
inline constexpr Target units[] = {
    {"zlt1", "", "zlt1", Listed, Unit, TargetClass_Unit, Zlt1},
    {"soft.zlt1", "zlt1", "zlt1", Listed, Unit, TargetClass_Unit, Zlt1 | SOFTFP},
    {"zlt1.sp", "zlt1", "zlt1", Hidden, Unit, TargetClass_Unit, Zlt1Sp},
    {"soft.zlt1.sp", "zlt1.sp", "zlt1", Hidden, Unit, TargetClass_Unit, Zlt1Sp | SOFTFP},
    {"zlt2", "", "zlt2", Listed, Unit, TargetClass_Unit, Zlt2},
    {"soft.zlt2", "zlt2", "zlt2", Listed, Unit, TargetClass_Unit, Zlt2 | SOFTFP},
    {"zlt2.sp", "zlt2", "zlt2", Hidden, Unit, TargetClass_Unit, Zlt2Sp},
    {"soft.zlt2.sp", "zlt2.sp", "zlt2", Hidden, Unit, TargetClass_Unit, Zlt2Sp | SOFTFP},
    {"zlt3", "", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3},
    {"soft.zlt3", "zlt3", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3 | SOFTFP},
    {"zlt3.sp", "zlt3", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3Sp},
    {"soft.zlt3.sp", "zlt3.sp", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3Sp | SOFTFP},
    {"zlt3.fp16", "zlt3", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3 | FP16},
    {"soft.zlt3.fp16", "zlt3.fp16", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3 | FP16 | SOFTFP},
    {"zlt3.d16", "zlt3", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3D16},
    {"soft.zlt3.d16", "zlt3.d16", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3D16 | SOFTFP},
    {"zlt3.d16.sp", "zlt3.d16", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3D16Sp},
    {"soft.zlt3.d16.sp", "zlt3.d16.sp", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3D16Sp | SOFTFP},
    {"zlt3.d16.fp16", "zlt3.d16", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3D16 | FP16},
    {"soft.zlt3.d16.fp16", "zlt3.d16.fp16", "zlt3", Listed, Unit, TargetClass_Unit,
     Zlt3D16 | FP16 | SOFTFP},
    {"zlt3.d16.sp.fp16", "zlt3.d16.sp", "zlt3", Listed, Unit, TargetClass_Unit, Zlt3D16Sp | FP16},
    {"soft.zlt3.d16.sp.fp16", "zlt3.d16.sp.fp16", "zlt3", Listed, Unit, TargetClass_Unit,
     Zlt3D16Sp | FP16 | SOFTFP},
    {"zlt4", "", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4},
    {"soft.zlt4", "zlt4", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4 | SOFTFP},
    {"zlt4.sp", "zlt4", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4Sp},
    {"soft.zlt4.sp", "zlt4.sp", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4Sp | SOFTFP},
    {"zlt4.d16", "zlt4", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4D16},
    {"soft.zlt4.d16", "zlt4.d16", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4D16 | SOFTFP},
    {"zlt4.d16.sp", "zlt4.d16", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4D16Sp},
    {"soft.zlt4.d16.sp", "zlt4.d16.sp", "zlt4", Listed, Unit, TargetClass_Unit, Zlt4D16Sp | SOFTFP},
    {"zlt5.d16", "", "zlt5", Listed, Unit, TargetClass_Unit, Zlt5D16},
    {"soft.zlt5.d16", "zlt5.d16", "zlt5", Listed, Unit, TargetClass_Unit, Zlt5D16 | SOFTFP},
    {"zlt5.d16.sp", "zlt5.d16", "zlt5", Listed, Unit, TargetClass_Unit, Zlt5D16Sp},
    {"soft.zlt5.d16.sp", "zlt5.d16.sp", "zlt5", Listed, Unit, TargetClass_Unit, Zlt5D16Sp | SOFTFP},
    {"fp8", "", "fp8", Listed, Unit, TargetClass_Unit, Fp8},
    {"soft.fp8", "fp8", "fp8", Listed, Unit, TargetClass_Unit, Fp8 | SOFTFP},
    {"fp8.half", "fp8", "fp8", Listed, Unit, TargetClass_Unit, Fp8 | ZLT_HALF},
    {"soft.fp8.half", "fp8.half", "fp8", Listed, Unit, TargetClass_Unit, Fp8 | ZLT_HALF | SOFTFP},
    {"fp8.d16", "fp8", "fp8", Listed, Unit, TargetClass_Unit, Fp8D16},
    {"soft.fp8.d16", "fp8.d16", "fp8", Listed, Unit, TargetClass_Unit, Fp8D16 | SOFTFP},
    {"fp8.d16.half", "fp8.d16", "fp8", Listed, Unit, TargetClass_Unit, Fp8D16 | ZLT_HALF},
    {"soft.fp8.d16.half", "fp8.d16.half", "fp8", Listed, Unit, TargetClass_Unit,
     Fp8D16 | ZLT_HALF | SOFTFP},
    {"fp8.d16.sp", "fp8.d16", "fp8", Listed, Unit, TargetClass_Unit, Fp8D16Sp},
    {"soft.fp8.d16.sp", "fp8.d16.sp", "fp8", Listed, Unit, TargetClass_Unit, Fp8D16Sp | SOFTFP},
    {"fla3", "", "fla", Listed, Unit, TargetClass_Unit, Fla3},
    {"soft.fla3", "fla3", "fla", Listed, Unit, TargetClass_Unit, Fla3 | SOFTFP},
    {"None", "", nullptr, Listed, Unit, TargetClass_Unit, IsaSet{}},
};

} // namespace attributes::target_rows
