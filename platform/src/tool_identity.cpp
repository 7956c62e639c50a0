#include "platform/interface/tool_identity.h"

#include <cstdio>

// Settings that a build leaves out.
#if !defined(TOMEX_VERSION_MAJOR)
#define TOMEX_VERSION_MAJOR 0
#define TOMEX_VERSION_MINOR 0
#define TOMEX_VERSION_PATCH 0
#endif
#if !defined(TOMEX_DELIVERY_NUMBER)
#define TOMEX_DELIVERY_NUMBER ""
#endif
#if !defined(TOMEX_PRODUCT_NAME)
#define TOMEX_PRODUCT_NAME ""
#endif
#if !defined(TOMEX_COMPONENT_NAME)
#define TOMEX_COMPONENT_NAME ""
#endif
#if !defined(TOMEX_DEVELOPMENT_BUILD)
#define TOMEX_DEVELOPMENT_BUILD 0
#endif
#if !defined(TOMEX_EXTRA_TEXT)
#define TOMEX_EXTRA_TEXT ""
#endif
#if !defined(TOMEX_SUPPLIER)
#define TOMEX_SUPPLIER ""
#endif

namespace platform {

namespace {

constexpr const char* orUnknown(const char* text) {
    return *text != '\0' ? text : "unknown";
}

} // namespace

const ToolIdentity& toolIdentity() {
    static const ToolIdentity identity{
        .versionMajor = TOMEX_VERSION_MAJOR,
        .versionMinor = TOMEX_VERSION_MINOR,
        .versionPatch = TOMEX_VERSION_PATCH,
        .deliveryNumber = parseDeliveryNumber(TOMEX_DELIVERY_NUMBER),
        .productName = orUnknown(TOMEX_PRODUCT_NAME),
        .componentName = orUnknown(TOMEX_COMPONENT_NAME),
        .developmentBuild = TOMEX_DEVELOPMENT_BUILD != 0,
        .extraText = TOMEX_EXTRA_TEXT,
        .supplier = TOMEX_SUPPLIER,
    };
    return identity;
}

const char* versionNumberText() {
    static char text[versionNumberSize];
    formatVersionNumber(toolIdentity(), text);
    return text;
}

void formatVersionNumber(const ToolIdentity& identity, char (&buffer)[versionNumberSize]) {
    const uint32_t patch = identity.versionPatch > 99 ? 0 : identity.versionPatch;
    std::snprintf(buffer, versionNumberSize, "%01u%02u%02u%02u", identity.versionMajor,
                  identity.versionMinor, patch, identity.deliveryNumber);
}

void versionParts(uint32_t* major, uint32_t* minor, uint32_t* patch) {
    const ToolIdentity& identity = toolIdentity();
    if (major != nullptr) {
        *major = identity.versionMajor;
    }
    if (minor != nullptr) {
        *minor = identity.versionMinor;
    }
    if (patch != nullptr) {
        *patch = identity.versionPatch;
    }
}

uint32_t versionMajor() {
    return toolIdentity().versionMajor;
}

uint32_t deliveryNumber() {
    return toolIdentity().deliveryNumber;
}

uint32_t parseDeliveryNumber(const char* text) {
    uint64_t value = 0;
    for (; *text != '\0'; ++text) {
        if (*text < '0' || *text > '9') {
            return 0;
        }
        value = value * 10 + static_cast<uint64_t>(*text - '0');
        if (value > UINT32_MAX) {
            return 0;
        }
    }
    return static_cast<uint32_t>(value);
}

} // namespace platform
