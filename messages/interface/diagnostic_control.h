// What the user may do to diagnostics: silence them, or move them to another severity, by number
// or by class.
#pragma once

#include <cstdint>

namespace messages {

// The severity, 1 to 6, that a report of `key` raised with `flags` has after the user's settings.
// A severity in `flags` that does not exist is an internal fault.
uint32_t effectiveSeverity(uint32_t flags, uint32_t key);

// One element of a --diag_ option. `severity` is the target in the form of a flags word. `text` is
// "warning" or "error" in any case, or a number, perhaps with the tool's letter in front and
// anything behind: "L6826", "l6826", "6826", "L6826E" are the same. Acts from now on. True if the
// text was refused, which has then been reported; a number of another tool's letter is ignored.
bool applyDiagnosticControl(uint32_t severity, const char* text);

} // namespace messages
