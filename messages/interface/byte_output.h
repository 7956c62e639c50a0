// Bytes that are no text: contents of files that the user asked to see, printed as they are.
#pragma once

#include <cstddef>

namespace messages {

// Writes count bytes to the standard output, behind all that has been printed there. False if they
// could not be written (see outputLost).
bool printBytesToStandardOutput(const void* bytes, size_t count);

} // namespace messages
