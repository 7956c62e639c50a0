// Reading access strings, and the defaults of each architecture.
#include "attributes/interface/access_strings.h"

#include "attributes/src/access_regions.h"
#include "attributes/src/decoration_tables.h"
#include "attributes/src/text_match.h"

#include <cstring>

namespace attributes {

namespace {

// Takes a region's name off `text`; 0 when there is none.
uint32_t takeRegionName(const char*& text) {
    for (const RegionName& name : regionNames) {
        if (startsWithIgnoringCase(text, name.text)) {
            text += name.text.size();
            return name.region;
        }
    }
    return 0;
}

// Takes a list of regions with its colon off `text`. A "+" belongs to the list only if a name
// follows, since it begins an item as well.
uint32_t takeRegions(const char*& text) {
    uint32_t region = takeRegionName(text);
    if (region == 0) {
        region = region_bit::ALL;
    } else {
        while (*text == '+') {
            const char* next = text + 1;
            const uint32_t further = takeRegionName(next);
            if (further == 0) {
                break;
            }
            region |= further;
            text = next;
        }
    }
    if (*text == ':') {
        ++text;
    }
    return region;
}

// Takes a form of access off `text`; 0 when there is none.
uint32_t takeForm(const char*& text) {
    for (const AccessToken& token : accessTokens) {
        if (startsWithIgnoringCase(text, token.text)) {
            text += token.text.size();
            return token.bit;
        }
    }
    return 0;
}

// Skips "/" and digits: a cost, which the compilers write there for themselves.
void skipCost(const char*& text) {
    if (*text != '/') {
        return;
    }
    ++text;
    while (*text >= '0' && *text <= '9') {
        ++text;
    }
}

// Sets all four words, the first one being the lowest sixteen bits.
void setWords(AccessWords& access, uint64_t words) {
    for (uint16_t& word : access) {
        word = static_cast<uint16_t>(words & 0xFFFF);
        words >>= 16;
    }
}

constexpr uint64_t AlignedForms = 0x0290029002900290;
constexpr uint64_t UnalignedForms = 0xC290C290C290C290;
// The oldest forms, of which loads of code get a few more.
constexpr uint64_t OldestForms = 0x0210021002100010;
constexpr uint16_t MoreOfCode = 0x200;
constexpr uint16_t MoreOfFinchCode = 0x280;

} // namespace

void applyAccessString(AccessWords& access, const char* text) {
    const uint32_t region = takeRegions(text);
    uint32_t add = 0;
    uint32_t keep = 0xFFFFFFFF;
    while (*text != '\0') {
        const bool isRemoved = *text == '-';
        if (*text == '+' || *text == '-') {
            ++text;
        }
        const uint32_t form = takeForm(text);
        if (form == 0) {
            break;
        }
        if (isRemoved) {
            keep &= ~form;
        } else {
            add |= form;
        }
        skipCost(text);
    }
    changeAccess(access, region, keep, add);
}

void defaultAccess(uint32_t arch, AccessWords& access) {
    if (arch == 0) {
        setWords(access, OldestForms);
        access[0] = static_cast<uint16_t>(access[0] + MoreOfCode);
    } else if (allowsUnalignedAccess(arch)) {
        setWords(access, UnalignedForms);
    } else {
        setWords(access, AlignedForms);
    }
}

void defaultAccessByName(const char* name, AccessWords& access) {
    if (name == nullptr) {
        setWords(access, AlignedForms);
    } else if (std::strcmp(name, "v6") == 0) {
        setWords(access, UnalignedForms);
    } else {
        setWords(access, OldestForms);
        access[0] = static_cast<uint16_t>(
            access[0] + (std::strcmp(name, "Finch") == 0 ? MoreOfFinchCode : MoreOfCode));
    }
}

} // namespace attributes
