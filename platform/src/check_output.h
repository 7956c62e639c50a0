// Printing of this library's few texts, through the output that was installed for the checks.
#pragma once

namespace platform {

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void printCheckText(const char* format, ...);

} // namespace platform
