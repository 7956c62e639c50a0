#include "messages/interface/message_locale.h"

#include "messages/interface/code_page.h"
#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_keys.h"
#include "messages/src/ascii.h"
#include "messages/src/message_state.h"
#include "messages/src/stream_output.h"

#include <clocale>
#include <cstdio>
#include <optional>
#include <string_view>

namespace messages {

namespace {

constexpr uint64_t longestPlainName = 12;

void selectLanguage(std::string_view language) {
    const auto locales = localeTable();
    for (uint32_t i = 0; i < locales.size(); ++i) {
        if (language == locales[i].name) {
            setCurrentLocale(i);
        }
    }
}

bool isKnownLanguage(std::string_view language) {
    return language == "ja_JP" || language == "en_US";
}

// A number that fills the text; none for a text with anything else or one that has no 32-bit value.
std::optional<uint32_t> wholeNumber(std::string_view text) {
    uint64_t value = 0;
    for (const char c : text) {
        if (!isDigit(c)) {
            return std::nullopt;
        }
        value = value * 10 + static_cast<uint64_t>(c - '0');
        if (value > UINT32_MAX) {
            return std::nullopt;
        }
    }
    return text.empty() ? std::nullopt : std::optional(static_cast<uint32_t>(value));
}

std::optional<uint32_t> codePageOf(std::string_view codeSet) {
    for (const char* word : {"UTF-8", "UTF8", "utf-8", "utf8"}) {
        if (codeSet == word) {
            return CodePage_Utf8;
        }
    }
    if (equalFolded(codeSet, "gb2312")) {
        return CodePage_Gb2312;
    }
    return wholeNumber(codeSet);
}

// Takes the code set for both directions, as far as the host can convert. True if it can in both.
bool selectCodeSet(std::string_view codeSet) {
    const std::optional<uint32_t> codePage = codePageOf(codeSet);
    if (!codePage) {
        setCodePages(CodePage_Default, CodePage_Default);
        return false;
    }
    if (*codePage == CodePage_Utf8) {
        setCodePages(CodePage_Utf8, CodePage_Utf8);
        return true;
    }
    const bool output = canConvertTo(*codePage);
    const bool input = canConvertFrom(*codePage);
    setCodePages(input ? *codePage : uint32_t{CodePage_Default},
                 output ? *codePage : uint32_t{CodePage_Default});
    return output && input;
}

[[noreturn]] void refuse(const char* name, FatalReporter report) {
    if (report == nullptr || !report(MessageKey_BadMessageLocale, name)) {
        beginOutput(stderr);
        std::fprintf(stderr, "*** Could not initialise message locale '%s'\n", name);
        endOutput(stderr);
    }
    leaveProgram(EXIT_FAILURE);
}

} // namespace

void setMessageLocale(const char* name, FatalReporter report) {
    const std::string_view text = name != nullptr ? name : "";
    const uint64_t dot = text.find('.');
    const bool dotted = dot != std::string_view::npos;
    const std::string_view language = text.substr(0, dot);
    selectLanguage(dotted ? language : language.substr(0, longestPlainName));
    std::setlocale(LC_CTYPE, "C");
    const bool accepted = selectCodeSet(dotted ? text.substr(dot + 1) : text);
    const bool known = isKnownLanguage(language);
    if (dotted ? !(known && accepted) : !(known || accepted)) {
        refuse(name != nullptr ? name : "", report);
    }
}

} // namespace messages
