// The default of a parameter, by whichever of the four kinds its descriptor names.
#pragma once

#include "tabledrivenparser/interface/parser.h"

#include <cstdint>

namespace tabledrivenparser {

// The default of `parameter` under `mask`, held as ParameterType tells. Where a provider gives no
// text, or one that means nothing for the type, that is reported as fatal; the result is then 0.
uint64_t defaultOf(Parser& parser, uint32_t parameter, uint32_t mask);

// The default of a DefaultKind_Masked parameter under `mask`: that of the first node all of whose
// masks share a bit with it, else 0.
uint64_t maskedDefault(const ParameterDescriptor& descriptor, uint32_t mask);

} // namespace tabledrivenparser
