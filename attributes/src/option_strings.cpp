// Reading option strings.
#include "attributes/interface/option_strings.h"

#include "attributes/interface/feature_words.h"
#include "attributes/src/option_words.h"
#include "attributes/src/text_match.h"

namespace attributes {

namespace {

using namespace option_bit;

// The words about stack checks are known and change nothing: older build scripts still say them.
// "usev7" too, since `USESV7` is decided elsewhere.
constexpr OptionWord rows[] = {
    {"interwork", IW, NOT_IW},
    {"inter", IW, NOT_IW},
    {"ropi", ROPI, 0},
    {"pic", ROPI, 0},
    {"rwpiclient", 0, RWPI | USESV6},
    {"rwpi", RWPI, USESV6},
    {"pid", RWPI, USESV6},
    {"usev6", USESV6, 0},
    {"hardfp", HARDFP, SOFTFP},
    {"softfp", SOFTFP, HARDFP},
    {"swstna", 0, 0},
    {"swstackcheck", 0, 0},
    {"swst", 0, 0},
    {"usev7", 0, 0},
    {"ospace", OSPACE, OTIME},
    {"otime", OTIME, OSPACE},
    {"ieee_full", IEEEX, 0},
    {"ieee_part", IEEEF, 0},
    {"ieee_java", IEEEJ, 0},
    {"8byte", EBA8, EBA4},
    {"fpic", FPIC | INDIRECT | ROPI, 0},
    {"indirect", INDIRECT, 0},
    {"standardlib", STANDARDLIB, 0},
    {"microlib", MICROLIB, 0},
    {"threadedcxx", THREADEDCXX, 0},
    {"sign_ret_addr", SIGN_RET_ADDR, 0},
    {"tagged_stack", TAGGED_STACK, 0},
    {"bti", BTI, 0},
    {"pacbtilib", PACBTILIB, 0},
};

const OptionWord* findWord(const char* text) {
    for (const OptionWord& word : rows) {
        if (startsWithIgnoringCase(text, word.text)) {
            return &word;
        }
    }
    return nullptr;
}

// A word with "no" in front. Required as it stands, since `rebuildFullAttr` is written in it:
// "norwpi" does not give the register of position-independent data back to where it was taken
// from, and "no8byte" asks for neither alignment.
uint64_t withoutWord(uint64_t options, const OptionWord& word) {
    uint64_t added = word.clear;
    uint64_t removed = word.set;
    if ((options & RWPI) != 0) {
        added &= ~USESV6;
    }
    if ((word.set & EBA8) != 0) {
        added &= ~EBA4;
        removed |= EBA4;
    }
    return (options & ~removed) | added;
}

} // namespace

constinit const std::span<const OptionWord> optionWords = rows;

void applyOptionString(uint64_t& options, const char* text) {
    while (*text == '-' || *text == '/') {
        ++text;
        const bool isNegated = startsWithIgnoringCase(text, "no");
        if (isNegated) {
            text += 2;
        }
        const OptionWord* word = findWord(text);
        if (word == nullptr) {
            continue;
        }
        text += word->text.size();
        options = isNegated ? withoutWord(options, *word) : (options & ~word->clear) | word->set;
    }
}

} // namespace attributes
