// Option strings: what a compiler is told on its command line, applied to `FullAttr::options`.
//
// A word stands behind a "-" or a "/" and may begin with "no": "/interwork/noropi", "-ospace".
#pragma once

#include <cstdint>

namespace attributes {

// Applies the words of `text` in order, ignoring case. `text` is not null. Each word sets some
// bits and clears others; with "no" it is the other way round, but for two exceptions that are
// required: position-dependent data after position-independent ("/norwpi" where `RWPI` was set)
// does not bring `USESV6` back, and "/no8byte" leaves neither of the two alignments. The walk ends
// at the first place that holds no separator; an unknown word changes nothing.
void applyOptionString(uint64_t& options, const char* text);

} // namespace attributes
