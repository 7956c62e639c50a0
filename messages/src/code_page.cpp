#include "messages/interface/code_page.h"

#include "messages/src/ascii.h"
#include "messages/src/code_page_converter.h"
#include "messages/src/utf16.h"
#include "messages/src/work_buffer.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>

namespace messages {

namespace {

constexpr const char* plainCharset = "ANSI_X3.4-1968";

struct CodePages {
    uint32_t input = CodePage_Default;
    uint32_t output = CodePage_Default;
    // Until the first other text has been seen, texts of pure ASCII pass as they are.
    bool asciiOnly = true;
    // The character set behind code page 0.
    std::array<char, 64> defaultCharset{"ANSI_X3.4-1968"};
};

CodePages g_pages;

CodePageConverter& outputConverter() {
    static CodePageConverter converter(CodePageConverter::Direction::ToPage);
    return converter;
}

CodePageConverter& inputConverter() {
    static CodePageConverter converter(CodePageConverter::Direction::FromPage);
    return converter;
}

bool isUtf8(uint32_t codePage) {
    return codePage == CodePage_Utf8 ||
           (codePage == CodePage_Default && equalFolded(g_pages.defaultCharset.data(), "UTF-8"));
}

bool isAscii(const char* text) {
    unsigned char bits = 0;
    for (; *text != '\0'; ++text) {
        bits |= static_cast<unsigned char>(*text);
    }
    return bits < 0x80;
}

// The locale that the environment asks for character sets, by the order in which hosts look.
const char* environmentLocale() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return "C";
}

void setDefaultCharset(const char* charset) {
    const uint64_t size = std::strlen(charset) + 1;
    if (size <= g_pages.defaultCharset.size()) {
        std::memcpy(g_pages.defaultCharset.data(), charset, size);
    }
}

// The environment's character set. A locale that is not installed still names its character set
// behind a dot ("ja_JP.UTF-8", often so on small hosts), and the terminal is set to that.
void settleDefaultCharset() {
    setDefaultCharset(plainCharset);
    const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale != nullptr) {
        setDefaultCharset(::nl_langinfo_l(CODESET, locale));
        ::freelocale(locale);
    } else if (const char* dot = std::strchr(environmentLocale(), '.'); dot != nullptr) {
        std::array<char, 64> charset{};
        std::snprintf(charset.data(), charset.size(), "%.*s",
                      static_cast<int>(std::strcspn(dot + 1, "@")), dot + 1);
        setDefaultCharset(charset.data());
    }
    if (equalFolded(g_pages.defaultCharset.data(), "UTF8")) {
        setDefaultCharset("UTF-8");
    }
    outputConverter().close();
    inputConverter().close();
    if (!isUtf8(CodePage_Default) && !canConvertTo(CodePage_Default)) {
        setDefaultCharset(plainCharset);
    }
}

const char* fromUtf8(const char* text, uint32_t codePage, WorkBuffer<uint16_t>& units,
                     WorkBuffer<char>& result) {
    const uint64_t length = std::strlen(text);
    if (!units.require(length + 1)) {
        return text;
    }
    const uint64_t count = decodeUtf8(text, length, units.data());
    if (isUtf8(codePage)) {
        if (!result.require(count * utf8BytesPerUnit + 1)) {
            return text;
        }
        result.data()[encodeUtf8(units.data(), count, result.data())] = '\0';
        return result.data();
    }
    CodePageConverter& converter = outputConverter();
    if (!converter.open(codePage, g_pages.defaultCharset.data())) {
        return text;
    }
    const char* converted = converter.toPage(units.data(), count, result);
    return converted != nullptr ? converted : text;
}

const char* toUtf8Text(const char* text, uint32_t codePage, WorkBuffer<uint16_t>& units,
                       WorkBuffer<char>& result) {
    CodePageConverter& converter = inputConverter();
    if (!converter.open(codePage, g_pages.defaultCharset.data())) {
        return text;
    }
    uint64_t count = 0;
    const uint16_t* decoded = converter.fromPage(text, std::strlen(text), units, count);
    if (decoded == nullptr || !result.require(count * utf8BytesPerUnit + 1)) {
        return text;
    }
    result.data()[encodeUtf8(decoded, count, result.data())] = '\0';
    return result.data();
}

} // namespace

uint32_t inputCodePage() {
    return g_pages.input;
}

uint32_t outputCodePage() {
    return g_pages.output;
}

void setCodePages(uint32_t input, uint32_t output) {
    g_pages.input = input;
    g_pages.output = output;
}

bool canConvertTo(uint32_t codePage) {
    return isUtf8(codePage) || outputConverter().open(codePage, g_pages.defaultCharset.data());
}

bool canConvertFrom(uint32_t codePage) {
    return inputConverter().open(codePage, g_pages.defaultCharset.data());
}

bool asciiPasses() {
    return g_pages.asciiOnly;
}

const char* convertOutput(const char* text, uint32_t codePage, bool toUtf8) {
    static WorkBuffer<uint16_t> units;
    static WorkBuffer<char> result;
    if (text == nullptr || codePage == CodePage_None) {
        return text;
    }
    if (g_pages.asciiOnly) {
        if (isAscii(text)) {
            return text;
        }
        g_pages.asciiOnly = false;
    }
    return toUtf8 ? toUtf8Text(text, codePage, units, result)
                  : fromUtf8(text, codePage, units, result);
}

void initCodePages() {
    g_pages.input = CodePage_Default;
    g_pages.output = CodePage_Default;
    g_pages.asciiOnly = true;
    settleDefaultCharset();
}

} // namespace messages
