// Decorations: sets of attributes as text, a chain of tokens each behind a "$".
//
// A decoration stands in symbol names, so that variants of a function can be told apart without
// looking into their objects ("name$$BuildAttributes$..."); it marks objects that have no section
// of attributes ("BuildAttributes$..."); and it is how sets are shown to users. For example
//
//     $QEL_ISAv5$FCH_ISAv2$E$P$PE$A:L22$X:L11L21$S22$S11$IEEE1$IW$USESV6$~STKCKD$REQ8
//
// names two instruction sets, three features, forms of access to memory, options and a
// requirement. Printing and parsing walk different tables and are no exact inverses; the compilers
// and linkers of the tool chain do the same, so the differences are required:
//  - features that no token covers are lost in print, such as the bits of a composite token
//    without the rest of it;
//  - parsing completes features that imply others (`normaliseIsa`);
//  - forms of access come back in other words than they went out of: "R" prints what code and
//    read-only data share and is read into read-only data and data, "C" prints what only
//    read-only data has left and is read into all three;
//  - "IEEE1" is printed always, and means that the default model of floating point does not apply.
#pragma once

#include "alloclib/interface/region.h"
#include "attributes/interface/full_attr.h"

#include <cstdint>

namespace attributes {

// What stands before a decoration in a symbol's name: as its whole name, the same with the first
// token's "$", and behind the name of the symbol that is decorated.
inline constexpr char MarkerText[] = "BuildAttributes$";
inline constexpr char MarkerWithTokenText[] = "BuildAttributes$$";
inline constexpr char SymbolMarkerText[] = "$$BuildAttributes$";
inline constexpr uint32_t MarkerLength = 16;
inline constexpr uint32_t MarkerWithTokenLength = 17;
inline constexpr uint32_t SymbolMarkerLength = 18;
// A decorated symbol's name, of its plain name and a marker with its decoration.
inline constexpr char DecoratedSymbolFormat[] = "%s$$%s";

// Writes the decoration of `value` with a NUL into `buffer`, which has `size` bytes, and returns
// the length of the whole decoration in bytes, without the NUL, whether it fitted or not. With a
// null buffer it only measures. What does not fit is cut at whole tokens: outside of the forms of
// access a later, shorter token may still find room. A buffer of at least one byte always ends up
// with a NUL.
uint64_t printDecoration(const FullAttr& value, char* buffer, uint64_t size);

// Fills all of `out` but `targetClass` and `targetKind` from a decoration: not null, ended by a
// NUL, with or without "BuildAttributes$" in front. No text is an error: tokens without a meaning
// add nothing, and a text that does not begin with a "$" has no tokens.
void parseDecoration(FullAttr& out, const char* text);

// Adds what a decoration says to a value: all parts are united, none is reset.
void mergeDecoration(FullAttr& inOut, const char* text);

// Completes a set of features so that what they imply is in it too.
void normaliseIsa(IsaSet& isa);

// "BuildAttributes$" and the decoration of `value`, ended by a NUL, in memory of `region`.
char* symbolDecoration(const FullAttr& value, alloclib::Region& region);

} // namespace attributes
