// Brings the contents of a section in that were left in the file.
#pragma once

namespace elfext {

class DeferredContents;
class Section;

// Reads the contents into the section's buffer. What goes wrong is reported to the module's error
// handler, the buffer is left empty and the answer is false; the section closes the file then. No
// read may be going on.
bool loadDeferredContents(Section& section, const DeferredContents& deferredContents);

} // namespace elfext
