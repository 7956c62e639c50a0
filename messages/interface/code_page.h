// Character sets on the way out and in: texts are UTF-8 inside, and whatever the user's terminal
// or log reads outside.
//
// A code page is a number. 0 is the character set of the environment, as it was when the run began;
// 65001 is UTF-8; 20936 is GB2312; any other N is what the host's converter knows as CPN or
// WINDOWS-N.
#pragma once

#include <cstdint>

namespace messages {

enum CodePage : uint32_t {
    CodePage_Default = 0,
    CodePage_Gb2312 = 20936,
    CodePage_Utf8 = 65001,
    CodePage_None = 0xFFFFFFFF, // no conversion at all
};

uint32_t inputCodePage();
uint32_t outputCodePage();
void setCodePages(uint32_t input, uint32_t output);

// True if texts can be converted to (from) the code page on this host.
bool canConvertTo(uint32_t codePage);
bool canConvertFrom(uint32_t codePage);

// Converts from UTF-8 to the code page, or with `toUtf8` the other way. A character that the target
// lacks becomes "?". The result is `text` itself where nothing is to be done, else a work buffer
// that holds until the next call. Null gives null; a code page that does not exist, and a lack of
// memory, give `text`.
const char* convertOutput(const char* text, uint32_t codePage, bool toUtf8);

// True until the first text with anything but ASCII has been converted: up to then `convertOutput`
// gives texts of pure ASCII as they are.
bool asciiPasses();

// Settles code page 0 by the environment, sets both code pages to 0, and lets texts of pure ASCII
// pass unread again until the first other text. Called by `initMessages`.
void initCodePages();

} // namespace messages
