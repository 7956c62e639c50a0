// The catalogues: every text that the tool can report, by key, in each built-in language.
//
// A catalogue is constant data sorted by key, so a look-up is a binary search and nothing is read
// or built at start. All languages hold the same keys in the same order. An overlay catalogue read
// from a file (see message_file.h) can go before them; the tool sets none.
#pragma once

#include <cstdint>
#include <span>

namespace messages {

struct MessageEntry {
    uint32_t key;
    const char* text; // UTF-8
};

// `entries` ascend by key.
struct MessageCatalogue {
    uint64_t count;
    const MessageEntry* entries;
};

// A built-in language.
struct LocaleRow {
    const char* name;
    uint64_t count;
    const MessageEntry* entries;
};

// The built-in languages; the first is the one that a run starts in. Constant data.
std::span<const LocaleRow> localeTable();

// Index in the locale table of the language in force.
uint32_t currentLocale();
void setCurrentLocale(uint32_t index);

// Puts a catalogue before the built-in ones; null takes it away. It must outlive its use.
void setOverlay(const MessageCatalogue* overlay);

// The text of `key` by `overlay` (may be null) and then by the language in force. Never null: an
// unknown key gives a text that says so, which holds until the next such look-up.
const char* lookupMessage(uint32_t key, const MessageCatalogue* overlay);

// `lookupMessage` with the overlay that was set.
const char* messageText(uint32_t key);

} // namespace messages
