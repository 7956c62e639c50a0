// Symbolic names of ELF constants, for messages.
#pragma once

#include <cstdint>
#include <string>

namespace elfext {

// The name of a section type, such as "SHT_NOTE". A type without a name gives "SHT_? (0x0000000C)"
// in a buffer that the next call of this kind overwrites; known names stay for good.
const char* getSectionTypeName(uint32_t type);

// The names of the section flags that are set, in ascending order of their bits with " | "
// between them; bits without a name come last as one hexadecimal number. Empty for 0.
std::string getSectionFlagNames(uint32_t flags);

} // namespace elfext
