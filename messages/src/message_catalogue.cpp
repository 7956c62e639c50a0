#include "messages/interface/message_catalogue.h"

#include "messages/interface/message_code.h"
#include "messages/src/catalogues.h"

#include <cstdio>

namespace messages {

namespace {

constinit const LocaleRow g_locales[] = {
    {"en_US", messageCount, g_englishEntries},
    {"ja_JP", messageCount, g_japaneseEntries},
};

constinit uint32_t g_currentLocale = 0;
constinit const MessageCatalogue* g_overlay = nullptr;

const MessageEntry* findEntry(const MessageEntry* entries, uint64_t count, uint32_t key) {
    uint64_t low = 0;
    uint64_t high = count;
    while (low < high) {
        const uint64_t probe = (low + high) / 2;
        if (entries[probe].key == key) {
            return &entries[probe];
        }
        if (entries[probe].key < key) {
            low = probe + 1;
        } else {
            high = probe;
        }
    }
    return nullptr;
}

// The built-in text of a key, or null. A listing asks for one key line after line, so the last
// answer is kept.
const char* builtInText(uint32_t key) {
    static constinit const MessageEntry* last = nullptr;
    static constinit uint32_t lastLocale = 0;
    if (last == nullptr || last->key != key || lastLocale != g_currentLocale) {
        const LocaleRow& locale = g_locales[g_currentLocale];
        last = findEntry(locale.entries, locale.count, key);
        lastLocale = g_currentLocale;
    }
    return last != nullptr ? last->text : nullptr;
}

// A text that shows the key that nobody knows, so that a gap in a catalogue is seen where it
// matters and not at the cost of the report.
const char* notFoundText(uint32_t key) {
    static char text[64];
    char code[codeBufferSize];
    formatCode(key, code);
    std::snprintf(text, sizeof(text), "<NotFound Code=%s key=0x%.8x>", code, key);
    return text;
}

} // namespace

std::span<const LocaleRow> localeTable() {
    return g_locales;
}

uint32_t currentLocale() {
    return g_currentLocale;
}

void setCurrentLocale(uint32_t index) {
    g_currentLocale = index < localeTable().size() ? index : 0;
}

void setOverlay(const MessageCatalogue* overlay) {
    g_overlay = overlay;
}

const char* lookupMessage(uint32_t key, const MessageCatalogue* overlay) {
    if (overlay != nullptr && overlay->count != 0) {
        const MessageEntry* entry = findEntry(overlay->entries, overlay->count, key);
        if (entry != nullptr && entry->text != nullptr) {
            return entry->text;
        }
    }
    const char* text = builtInText(key);
    return text != nullptr ? text : notFoundText(key);
}

const char* messageText(uint32_t key) {
    return lookupMessage(key, g_overlay);
}

} // namespace messages
