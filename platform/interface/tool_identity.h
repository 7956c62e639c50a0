// What the tool knows of itself: its version, its delivery and the names of its banner.
//
// All of it is fixed by the settings of the build (see the TOMEX_ settings in CMakeLists.txt).
#pragma once

#include <cstdint>

namespace platform {

struct ToolIdentity {
    uint32_t versionMajor;
    uint32_t versionMinor;
    uint32_t versionPatch;
    uint32_t deliveryNumber;
    const char* productName;
    const char* componentName;
    bool developmentBuild; // not for production; the banner says so
    const char* extraText; // a further line of the banner; empty for none
    const char* supplier;  // who delivered the tool; empty for none
};

// The identity of this build. Constant data.
const ToolIdentity& toolIdentity();

// The packed version number, in a static text: version 3.14.0 with delivery number 5 is "3140005".
const char* versionNumberText();

// The longest packed number: four numbers of ten digits and the end.
constexpr uint32_t versionNumberSize = 41;

// The same for any identity, into a buffer of `versionNumberSize` bytes. A patch number above 99
// is written as 0, since it has only two places.
void formatVersionNumber(const ToolIdentity& identity, char (&buffer)[versionNumberSize]);

// The three numbers of the version; any of the pointers may be null.
void versionParts(uint32_t* major, uint32_t* minor, uint32_t* patch);

uint32_t versionMajor();

uint32_t deliveryNumber();

// The delivery number that a setting's text means: 0 for a text with anything but digits, for
// none at all, and for one that has no 32-bit value.
uint32_t parseDeliveryNumber(const char* text);

} // namespace platform
