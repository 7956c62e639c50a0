// Bytes that are no text: contents of files that the user asked to see, printed as they are.
#pragma once

#include <cstddef>

namespace messages {

// Writes count bytes to the standard output, behind all that has been printed there. False if they
// could not be written (see outputLost).
bool printBytesToStandardOutput(const void* bytes, size_t count);

// A descriptor of its own for the standard output, with all that has been printed there written
// before; for bodies that are better copied by the host than through a buffer. The caller closes
// it. -1 with errno set if there is none.
int duplicateStandardOutput();

// Says that bytes written to such a descriptor were lost (see outputLost), with the host's number
// for why.
void noteLostOutput(int error);

} // namespace messages
