// How the symbols of a group of variants get into the symbol table.
//
// All members of a group define the same names, so the names alone cannot tell them apart. What
// all members have in common is worked out; the one that has just that is the base variant, and
// its names stand in the table as they are. Behind the names of every other member stands its
// decoration, which says what it has beyond the others:
//
//     dot_product
//     dot_product$$BuildAttributes$$QEL_ISAv3$ZLTv2$PE$IEEE1
//
// A linker takes the entry that fits what it links; one that knows nothing of decorations finds
// the base variant.
#pragma once

#include <span>

#include "arlib/src/minor_variant_groups.h"
#include "arlib/src/symbol_output.h"

namespace arlib {

class Archive;

// Checks a group against itself and against what the library promises, and adds the symbols of all
// its members to the output. Flaws go to the archive's handler; false if it says so of one of
// them, or is not there: there shall be no table then, and what has been added is of no use.
bool processMinorVariantGroup(Archive& archive, std::span<const MinorVariant> group,
                              SymbolOutput& output);

} // namespace arlib
