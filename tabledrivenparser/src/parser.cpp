// The road of a word through the parser; see parser.h. The row search is in option_search.cpp, the
// storing by type in option_store.cpp.

#include "tabledrivenparser/interface/parser.h"

#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/interface/unknown_option_handler.h"
#include "tabledrivenparser/src/default_value.h"
#include "tabledrivenparser/src/option_store.h"
#include "tabledrivenparser/src/option_use.h"
#include "tabledrivenparser/src/row_match.h"

#include <algorithm>
#include <string>

namespace tabledrivenparser {

namespace {

const char* dashText(uint32_t dashes) {
    static constexpr const char* texts[] = {"", "-", "--"};
    return texts[std::min(dashes, 2U)];
}

// Ends the list of a vector parameter, if it has one.
template <class T>
void endList(ParameterValue& value) {
    auto* list = pointerOfValue<LinkedList<T>>(value.value);
    if (list != nullptr) {
        list->~LinkedList<T>();
    }
    value.value = 0;
}

// The chain's names, as they stood in the word.
std::string joinNames(const MatchChain& chain) {
    std::string names;
    for (const MatchString* member : chain) {
        names += member->row->name;
    }
    return names;
}

} // namespace

Parser::Parser(const OptionTable& options, std::span<ParameterValue> values,
               std::span<const ParameterDescriptor> descriptors, Reporter& reporter,
               Listener* listener)
    : m_options(options), m_reporter(reporter) {
    m_parameters.parameterCount = static_cast<uint32_t>(values.size());
    m_parameters.values = values.data();
    m_parameters.descriptorCount = static_cast<uint32_t>(descriptors.size());
    m_parameters.descriptors = descriptors.data();
    m_parameters.listener = listener;
    m_parameters.parser = this;
    if (m_options.activeMask == 0xFFFFFFFF) {
        return;
    }
    for (size_t index = 0; index < std::min(values.size(), descriptors.size()); ++index) {
        if (descriptors[index].defaultKind == DefaultKind_Masked) {
            values[index].value = maskedDefault(descriptors[index], m_options.activeMask);
        }
    }
}

Parser::~Parser() {
    uint32_t count = std::min(m_parameters.parameterCount, m_parameters.descriptorCount);
    for (uint32_t index = 0; index < count; ++index) {
        ParameterValue& value = m_parameters.values[index];
        switch (m_parameters.descriptors[index].type) {
        case ParameterType_INT_VECTOR:
            endList<int>(value);
            break;
        case ParameterType_INT64_VECTOR:
            endList<int64_t>(value);
            break;
        case ParameterType_STRING_VECTOR:
            endList<const char*>(value);
            break;
        default:
            break;
        }
    }
}

void Parser::parseWords(WordSource& source, uint32_t filterCount, const uint32_t* filter) {
    const char* word = source.nextToken();
    const char* next = source.nextToken();
    while (word != nullptr) {
        if (parseWord(word, next, filterCount, filter) > 1) {
            next = source.nextToken();
        }
        word = next;
        next = source.nextToken();
    }
}

uint32_t Parser::parseWord(const char* word, const char* nextWord, uint32_t filterCount,
                           const uint32_t* filter) {
    uint32_t dashes = 0;
    if (!endOfOptions()) {
        while (dashes < 2 && word[dashes] == '-') {
            ++dashes;
        }
    }
    if (dashes == 2 && word[2] == 0) {
        m_endOfOptions = 1;
        return 1;
    }
    if (dashes == 1 && word[1] == 0) {
        dashes = 0; // a lone "-" is a name like others
    }
    return parseOption(word + dashes, nextWord, dashes, nullptr, filterCount, filter);
}

uint32_t Parser::parseOption(const char* text, const char* nextWord, uint32_t dashes,
                             MatchChain* chain, uint32_t filterCount, const uint32_t* filter) {
    MatchChain ownChain;
    // One round for each option of the word. Not a recursion: a word may have any length.
    for (;;) {
        OptionUse use;
        use.text = text;
        use.nextWord = nextWord;
        use.dashes = dashes;
        use.filterCount = filterCount;
        use.filter = filter;
        use.match = findOption(text, dashes);
        const MatchString& match = use.match;
        bool hasNoArgument = match.row != nullptr && match.row->argument == OptionArgument_None;
        if (match.row == nullptr || (match.isLong && hasNoArgument && match.rest[0] != 0)) {
            return handleNotFound(use);
        }
        if (isLeftAlone(use)) {
            return 1;
        }
        if (!settleArgument(use)) {
            return 0;
        }
        if (use.takesArgument) {
            trace(" (Argument '%s').", use.argument);
        }
        if (chain != nullptr && !admitToChain(use, *chain)) {
            return 0;
        }
        bool stored = storeOption(*this, use);
        if (!stored && use.words != 0) {
            m_reporter.reportParseMessage(ParserSeverity_Fatal, ParserMessage_ArgumentNotPermitted,
                                          use.argument == nullptr ? "<null>" : use.argument,
                                          match.row->name);
        }
        if (!hasNoArgument || dashes != 1 || match.rest[0] == 0) {
            return finishWord(use, stored);
        }
        if (chain == nullptr) {
            chain = &ownChain;
        }
        trace("single char option: %c RETRY: %s\n", match.row->name[0], match.rest);
        chain->append(makeInDefaultRegion<MatchString>(match));
        text = match.rest;
    }
}

// Whether a selective pass has no business with the option.
bool Parser::isLeftAlone(const OptionUse& use) const {
    if (use.filterCount == 0) {
        return false;
    }
    uint32_t parameter = use.row().parameter;
    const uint32_t* end = use.filter + use.filterCount;
    return std::find(use.filter, end, parameter) == end &&
           m_parameters.descriptors[parameter].type != ParameterType_VIA_FILE;
}

// Decides whether the option has an argument and where it stands. False if it is missing.
bool Parser::settleArgument(OptionUse& use) {
    const OptionRow& row = use.row();
    const MatchString& match = use.match;
    use.takesArgument = row.argument == OptionArgument_Required ||
                        (row.argument == OptionArgument_Optional && match.rest[0] != 0);
    if (!use.takesArgument) {
        return true;
    }
    if (match.hasSeparator && match.rest[0] == '=') {
        use.argument = match.rest + 1;
    } else if (match.hasSeparator) {
        // The separator stays in the argument: required for users' scripts.
        m_reporter.reportParseMessage(ParserSeverity_Warning, ParserMessage_OldSyntax, "--",
                                      row.name, "=", match.rest);
        use.argument = match.rest;
    } else if (row.argument == OptionArgument_Required && match.rest[0] == 0 &&
               !isPositional(row)) {
        if (use.nextWord == nullptr) {
            m_reporter.reportParseMessage(ParserSeverity_Fatal, ParserMessage_MissingArgument,
                                          use.text);
            return false;
        }
        use.argument = use.nextWord;
        use.argumentIsNextWord = true;
        use.words = 2;
    } else {
        use.argument = match.rest;
    }
    return true;
}

// Checks an option that stands behind others in one word. False if it cannot.
bool Parser::admitToChain(const OptionUse& use, const MatchChain& chain) {
    const OptionRow& row = use.row();
    if (use.takesArgument) {
        m_reporter.reportParseMessage(ParserSeverity_Fatal, ParserMessage_ConcatenatedArgument,
                                      row.name, use.argument);
        return false;
    }
    std::string names;
    for (const MatchString* member : chain) {
        if (member->row->parameter != row.parameter) {
            continue;
        }
        if (names.empty()) {
            names = joinNames(chain);
        }
        m_reporter.reportParseMessage(ParserSeverity_Warning, ParserMessage_RepeatedOption,
                                      row.name, names.c_str(), row.name, use.match.rest);
    }
    return true;
}

// The result of a word whose last option is dealt with.
uint32_t Parser::finishWord(const OptionUse& use, bool stored) {
    uint32_t words = use.words;
    if (!stored && m_options.unknownOptionHandler != nullptr) {
        words = m_options.unknownOptionHandler->handle(*this, nullptr, use.dashes, use.text,
                                                       use.nextWord);
    }
    if (words == 0) {
        reportNotFound(use);
    }
    return words;
}

uint32_t Parser::handleNotFound(const OptionUse& use) {
    if (use.filterCount != 0) {
        return 0;
    }
    if (m_options.unknownOptionHandler != nullptr) {
        uint32_t words = m_options.unknownOptionHandler->handle(*this, nullptr, use.dashes,
                                                                use.text, use.nextWord);
        if (words != 0) {
            return words;
        }
    }
    reportNotFound(use);
    return 0;
}

void Parser::reportNotFound(const OptionUse& use) {
    if (use.match.row != nullptr) {
        m_reporter.reportParseMessage(ParserSeverity_Fatal, ParserMessage_UnexpectedArgument,
                                      dashText(use.dashes), use.row().name);
    } else {
        m_reporter.reportParseMessage(ParserSeverity_Fatal, ParserMessage_UnrecognizedOption,
                                      dashText(use.dashes), use.text);
    }
}

void Parser::bumpSequence(uint32_t parameter) {
    ParameterValue& value = m_parameters.values[parameter];
    ++m_sequence;
    if (value.firstSet == 0) {
        value.firstSet = m_sequence;
    }
    value.lastSet = m_sequence;
}

} // namespace tabledrivenparser
