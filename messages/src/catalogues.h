// The tables of texts, one file a language.
#pragma once

#include "messages/interface/message_catalogue.h"

namespace messages {

// All languages hold the same keys in the same order.
constexpr uint64_t messageCount = 117;

extern const MessageEntry g_englishEntries[messageCount];
extern const MessageEntry g_japaneseEntries[messageCount];

} // namespace messages
