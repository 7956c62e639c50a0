// One run of the message library: its start and its end, what is counted in between, and the way
// out of the process.
//
// `initMessages` comes before any option is read and any file is opened, `closeMessages` is the
// first step of the exit path. The exit path itself belongs to the tool, which hands it in with
// `setExitHandler`: fatal reports, the limit on errors and internal faults leave through it.
#pragma once

#include <cstdint>

namespace messages {

// Sets all state to that of a fresh run: English, the environment's code page, style 0, no
// diagnostic setting, no counts, output to standard error. May be called again.
//
// The library then also carries the internal checks' output, reopens standard streams that were
// closed by whoever started the process (so that no archive is opened under their number), and
// makes writing to a pipe without a reader a failed write rather than the end of the process.
void initMessages();

// Flushes the standard streams and closes all others that the library holds. What failed up to
// then shows in `outputLost`.
void closeMessages();

// Installs the way out: `exitProgram(status)` must not return. Null restores the default, which
// closes the messages and calls the host's `exit`. Internal checks leave by it too.
void setExitHandler(void (*exitProgram)(int status));

// True if any text or flush of this run could not be written (full disk, closed pipe).
bool outputLost();

// The status that a run ends with: `status`, or 1 if output was lost. To be asked as the last thing
// of a way out, after `closeMessages` if that is part of it. What the standard output lost is
// reported on standard error, once; not so if its reader went away, who knows.
int finalStatus(int status);

// Number of reports so far whose effective severity was that of `severityFlags` or above.
uint32_t countAtOrAbove(uint32_t severityFlags);

// Number of reports so far at severity "error" exactly; a run with any ends with status 1.
uint32_t errorCount();

// The number of errors, fatal errors and internal faults that are printed; the next one calls
// `limitHandler` before it is printed. A null handler is the exit with status 1.
void setErrorLimit(uint32_t errorLimit, void (*limitHandler)());

// How a diagnostic looks: 0 is the plain style, 1 that of development environments, 2 that of the
// GNU tools. Any other value is an internal fault at the next diagnostic.
void setStyle(int32_t style);
int32_t style();

// How far the current line of plain output has got, in bytes.
uint32_t column();

// The letter of all printed codes, and the name that stands for a missing file name.
char toolLetter();
const char* toolName();

} // namespace messages
