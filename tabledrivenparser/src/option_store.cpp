#include "tabledrivenparser/src/option_store.h"

#include "tabledrivenparser/interface/call_back_parameter.h"
#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/interface/via_reading.h"
#include "tabledrivenparser/src/enum_choice.h"
#include "tabledrivenparser/src/number_text.h"
#include "tabledrivenparser/src/value_store.h"

#include <cstring>

namespace tabledrivenparser {

namespace {

bool reportIfOverflow(Parser& parser, const NumberText& number, const char* text) {
    if (number.outcome != NumberOutcome::Overflow) {
        return false;
    }
    parser.reporter().reportParseMessage(ParserSeverity_Fatal, ParserMessage_Overflow, text);
    return true;
}

bool storeNumber(Parser& parser, const OptionUse& use, NumberKind kind) {
    uint32_t parameter = use.row().parameter;
    if (!use.takesArgument) {
        uint64_t value = use.row().impliedValue;
        if (kind == NumberKind::Signed32) {
            value = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(value)));
        } else if (kind == NumberKind::Unsigned32) {
            value = static_cast<uint32_t>(value);
        }
        return storeValue(parser, parameter, value);
    }
    NumberText number = readNumber(use.argument, kind);
    if (reportIfOverflow(parser, number, use.argument) ||
        number.outcome == NumberOutcome::NoNumber || *number.end != 0) {
        return false;
    }
    return storeValue(parser, parameter, number.value);
}

bool appendNumber(Parser& parser, uint32_t parameter, NumberKind kind, uint64_t value) {
    return kind == NumberKind::Signed32
               ? appendInt(parser, parameter, static_cast<int32_t>(value))
               : appendInt64(parser, parameter, static_cast<int64_t>(value));
}

bool storeNumberVector(Parser& parser, const OptionUse& use, NumberKind kind) {
    const OptionRow& row = use.row();
    if (!use.takesArgument || row.separator == 0) {
        // Without a separator even a given argument is passed over: required for the tables that
        // rely on it.
        return appendNumber(parser, row.parameter, kind, row.impliedValue);
    }
    for (const char* text = use.argument;;) {
        NumberText number = readNumber(text, kind);
        if (reportIfOverflow(parser, number, text) || number.outcome == NumberOutcome::NoNumber ||
            (*number.end != 0 && *number.end != row.separator) ||
            !appendNumber(parser, row.parameter, kind, number.value)) {
            return false;
        }
        if (*number.end == 0) {
            return true;
        }
        text = number.end + 1;
    }
}

// Whether the text comes from a buffer that will be overwritten.
bool mustCopy(const Parser& parser, const OptionUse& use) {
    return use.takesArgument && parser.viaDepth() > 0;
}

const char* textOf(const OptionUse& use) {
    return use.takesArgument ? use.argument : textOfValue(use.row().impliedValue);
}

bool storeText(Parser& parser, const OptionUse& use) {
    const char* text = textOf(use);
    if (mustCopy(parser, use)) {
        text = parser.copyString(text);
    }
    return storeValue(parser, use.row().parameter, addressValue(text));
}

// Splits a copy of `text` at each `separator` and hands every piece to `storePiece`. A piece that
// fails does not keep the others from being stored. True if all succeeded.
template <class StorePiece>
bool storePieces(Parser& parser, const char* text, char separator, StorePiece storePiece) {
    bool isAllStored = true;
    for (char* piece = parser.copyString(text); piece != nullptr;) {
        char* end = std::strchr(piece, separator);
        if (end != nullptr) {
            *end++ = 0;
        }
        isAllStored = storePiece(piece) && isAllStored;
        piece = end;
    }
    return isAllStored;
}

bool isToBeSplit(const char* text, char separator) {
    return text != nullptr && separator != 0 && std::strchr(text, separator) != nullptr;
}

bool storeTextVector(Parser& parser, const OptionUse& use) {
    const OptionRow& row = use.row();
    const char* text = textOf(use);
    if (isToBeSplit(text, row.separator)) {
        return storePieces(parser, text, row.separator, [&](const char* piece) {
            return appendText(parser, row.parameter, piece);
        });
    }
    if (mustCopy(parser, use)) {
        text = parser.copyString(text);
    }
    return appendText(parser, row.parameter, text);
}

bool storeViaFile(Parser& parser, const OptionUse& use) {
    const OptionRow& row = use.row();
    const char* text = textOf(use);
    auto readOne = [&](const char* name, bool copyName) {
        return readViaFile(parser, row.parameter, name, copyName, use.filterCount, use.filter);
    };
    if (isToBeSplit(text, row.separator)) {
        return storePieces(parser, text, row.separator,
                           [&](const char* piece) { return readOne(piece, false); });
    }
    return text != nullptr && readOne(text, mustCopy(parser, use));
}

// The number of words that a call back's answer stands for. An answer that does not fit how the
// row takes its argument is a failure.
uint32_t wordsOfAnswer(uint32_t answer, const OptionUse& use) {
    uint32_t argument = use.row().argument;
    if (answer == 2) {
        if (argument == OptionArgument_None) {
            return 0;
        }
        return use.argumentIsNextWord ? 2 : 1;
    }
    if (answer == 1 && (argument == OptionArgument_Required ||
                        (argument == OptionArgument_Optional && use.argumentIsNextWord))) {
        return 0;
    }
    return answer;
}

bool callBack(Parser& parser, OptionUse& use) {
    const OptionRow& row = use.row();
    if (row.argument == OptionArgument_Optional && !use.takesArgument) {
        use.argument = use.nextWord;
        use.argumentIsNextWord = use.nextWord != nullptr;
    }
    parser.bumpSequence(row.parameter);
    uint64_t value = parser.parameters().values[row.parameter].value;
    const auto* holder = pointerOfValue<const CallBackHolder>(value);
    uint32_t answer = 0;
    if (holder != nullptr && holder->callBack != nullptr) {
        answer = holder->callBack->invoke(parser, row, use.dashes, use.text, use.argument);
    }
    use.words = wordsOfAnswer(answer, use);
    return use.words != 0;
}

} // namespace

bool storeOption(Parser& parser, OptionUse& use) {
    const OptionRow& row = use.row();
    switch (parser.parameters().descriptors[row.parameter].type) {
    case ParameterType_BOOLEAN:
        return storeValue(parser, row.parameter,
                          static_cast<uint32_t>(row.impliedValue) != 0 ? 1 : 0);
    case ParameterType_ENUM:
        return use.takesArgument
                   ? storeEnumArgument(parser, row, use.argument, use.filterCount != 0)
                   : storeEnumImplied(parser, row);
    case ParameterType_ADDRESS:
        return storeNumber(parser, use, NumberKind::Unsigned32);
    case ParameterType_ADDRESS64:
        return storeNumber(parser, use, NumberKind::Unsigned64);
    case ParameterType_INT:
        return storeNumber(parser, use, NumberKind::Signed32);
    case ParameterType_INT_VECTOR:
        return storeNumberVector(parser, use, NumberKind::Signed32);
    case ParameterType_INT64_VECTOR:
        return storeNumberVector(parser, use, NumberKind::Signed64);
    case ParameterType_STRING:
        return storeText(parser, use);
    case ParameterType_STRING_VECTOR:
        return storeTextVector(parser, use);
    case ParameterType_CALL_BACK:
        return callBack(parser, use);
    case ParameterType_VIA_FILE:
        return storeViaFile(parser, use);
    default:
        return false;
    }
}

} // namespace tabledrivenparser
