// The choice of language and character set: the option `message_locale`.
#pragma once

#include <cstdint>

namespace messages {

// Reports a key with its arguments; true says that the run is to end.
using FatalReporter = bool (*)(uint32_t key, ...);

// Selects by `name`, "language", "codeset" or "language.codeset": a language by its exact name in
// the locale table, a code set by "UTF-8", "UTF8", "utf-8", "utf8", "gb2312" (in any case) or a
// decimal code page. A name with a dot needs both, one without either.
//
// A name that selects nothing ends the process with status 1, after `report` (may be null) or a
// plain line on standard error has said so.
void setMessageLocale(const char* name, FatalReporter report);

} // namespace messages
