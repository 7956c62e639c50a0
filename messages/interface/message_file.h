// Reader of overlay catalogues: texts from a file, to be put before the built-in ones.
//
// Format: "V", four digits of a format version, "V", a blank, a decimal count. Each entry stands
// behind a line feed: a code such as "L6839E", a blank, the decimal length of its text in bytes, a
// blank, the text. Entries ascend by key, since look-ups search by halves.
#pragma once

#include "messages/interface/message_catalogue.h"

#include <cstdio>

namespace messages {

// Reads a catalogue from `stream`, which stays open. The result is one block of the heap, to be
// given to `freeMessageFile`. Null if the file is of another kind or a later version, and, with a
// warning on standard error, if it is badly formed; null also if memory is short. An entry with a
// text of length 0 has a null text, which stands for the built-in one.
MessageCatalogue* readMessageFile(std::FILE* stream);

// Releases what `readMessageFile` gave; null is allowed.
void freeMessageFile(MessageCatalogue* catalogue);

} // namespace messages
