// The tokens of decorations, as data.
//
// The tables are walked in order. When features, options and requirements are printed, a row takes
// its bits out of what is left, so the rows with more bits stand before their parts; where they do
// not, the later row is never printed, and that is required. Features have a table for printing and
// one for parsing.
#pragma once

#include "attributes/interface/full_attr.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace attributes {

struct IsaToken {
    std::string_view text;
    IsaSet mask;
};

struct AccessToken {
    std::string_view text;
    uint32_t bit;
};

struct OptionToken {
    std::string_view text;
    uint64_t bits;
};

// A letter in front of forms of access, and the words that they are read into.
struct RegionLetter {
    char letter;
    uint32_t region;
};

// A name of a stretch of memory in access strings.
struct RegionName {
    std::string_view text;
    uint32_t region;
};

// Which words of `access` a region addresses. Stores are addressed always.
namespace region_bit {
inline constexpr uint32_t CODE = 0x10000000;      // access[0]
inline constexpr uint32_t READ_ONLY = 0x20000000; // access[1] and access[2]
inline constexpr uint32_t DATA = 0x40000000;      // access[2]
inline constexpr uint32_t ALL = 0x70000000;
inline constexpr uint32_t STORES_ONLY = 0x1000000;
} // namespace region_bit

extern const std::span<const IsaToken> isaPrintTable;
extern const std::span<const IsaToken> isaParseTable;
extern const std::span<const AccessToken> accessTokens;
extern const std::span<const OptionToken> optionTokens;
extern const std::span<const OptionToken> requirementTokens;
extern const std::span<const OptionToken> abiTokens;
// Options that hold unless a text says otherwise, by naming the token.
extern const std::span<const OptionToken> defaultTokens;
extern const std::span<const RegionLetter> regionLetters;
extern const std::span<const RegionName> regionNames;

} // namespace attributes
