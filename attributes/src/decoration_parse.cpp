// Parsing decorations.
#include "attributes/interface/decoration.h"

#include "attributes/interface/feature_words.h"
#include "attributes/src/access_regions.h"
#include "attributes/src/decoration_tables.h"
#include "attributes/src/text_match.h"

#include <span>
#include <string_view>

namespace attributes {

namespace {

// Gives the tokens of a text one by one.
class TokenReader {
public:
    explicit TokenReader(const char* text)
        : m_Position(startsWithIgnoringCase(text, MarkerWithTokenText) ? text + MarkerLength
                                                                       : text) {}

    // The next token that is not empty. False at the end, and where no "$" stands.
    bool next(std::string_view& token) {
        while (*m_Position == '$') {
            const char* const start = ++m_Position;
            while (*m_Position != '\0' && *m_Position != '$') {
                ++m_Position;
            }
            if (m_Position != start) {
                token = {start, static_cast<size_t>(m_Position - start)};
                return true;
            }
        }
        return false;
    }

private:
    const char* m_Position;
};

// No two rows of a table have the same text, so the first that fits is the only one.
IsaSet featuresOf(std::string_view token) {
    for (const IsaToken& row : isaParseTable) {
        if (equalsIgnoringCase(row.text, token)) {
            return row.mask;
        }
    }
    return {};
}

uint64_t bitsOf(std::span<const OptionToken> table, std::string_view token) {
    for (const OptionToken& row : table) {
        if (equalsIgnoringCase(row.text, token)) {
            return row.bits;
        }
    }
    return 0;
}

uint64_t defaultOptions() {
    uint64_t options = 0;
    for (const OptionToken& row : defaultTokens) {
        options |= row.bits;
    }
    return options;
}

// Takes "A:" and its like off a token. Without a known letter the token speaks of stores only.
uint32_t takeRegionLetter(std::string_view& token) {
    if (token.size() < 2 || token[1] != ':') {
        return region_bit::STORES_ONLY;
    }
    const char letter = token[0];
    token.remove_prefix(2);
    for (const RegionLetter& row : regionLetters) {
        if (row.letter == letter) {
            return row.region;
        }
    }
    return region_bit::STORES_ONLY;
}

// One walk over the table: forms are found in its order only, and their case matters.
void addAccess(AccessWords& access, std::string_view token) {
    const uint32_t region = takeRegionLetter(token);
    uint32_t forms = 0;
    for (const AccessToken& row : accessTokens) {
        // The first letter decides nearly all comparisons, as most tokens are no forms at all.
        if (!token.empty() && token[0] == row.text[0] && token.starts_with(row.text)) {
            forms |= row.bit;
            token.remove_prefix(row.text.size());
        }
    }
    changeAccess(access, region, 0xFFFFFFFF, forms);
}

// Adds what the tokens of a text say.
void addTokens(FullAttr& value, const char* text) {
    uint64_t options = defaultOptions();
    TokenReader reader(text);
    std::string_view token;
    while (reader.next(token)) {
        setWord(value.isa, featuresOf(token));
        addAccess(value.access, token);
        options |= bitsOf(optionTokens, token);
        options &= ~bitsOf(defaultTokens, token);
        value.requirements |= bitsOf(requirementTokens, token);
        value.abiVersion |= bitsOf(abiTokens, token);
    }
    value.options |= options;
    normaliseIsa(value.isa);
}

} // namespace

void parseDecoration(FullAttr& out, const char* text) {
    const uint16_t start[4] = {access_bit::L44, access_bit::L44 | access_bit::L11,
                               access_bit::L44 | access_bit::L11,
                               access_bit::L44 | access_bit::L11};
    FullAttr value;
    value.targetClass = out.targetClass;
    value.targetKind = out.targetKind;
    for (uint32_t word = 0; word < 4; ++word) {
        value.access[word] = start[word];
    }
    addTokens(value, text);
    out = value;
}

void mergeDecoration(FullAttr& inOut, const char* text) {
    addTokens(inOut, text);
}

} // namespace attributes
