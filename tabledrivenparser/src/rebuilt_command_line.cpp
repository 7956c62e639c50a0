#include "tabledrivenparser/interface/rebuilt_command_line.h"

#include "tabledrivenparser/interface/best_row.h"
#include "tabledrivenparser/interface/call_back_parameter.h"
#include "tabledrivenparser/interface/unknown_option_handler.h"
#include "tabledrivenparser/interface/value_writer.h"
#include "tabledrivenparser/src/default_value.h"
#include "tabledrivenparser/src/mask_list.h"
#include "tabledrivenparser/src/row_match.h"

#include <algorithm>
#include <cstring>

namespace tabledrivenparser {

namespace {

bool isSameText(const char* one, const char* other) {
    if (one == nullptr || other == nullptr) {
        return one == other;
    }
    return std::strcmp(one, other) == 0;
}

template <class T>
bool isEmptyList(uint64_t value) {
    const auto* list = pointerOfValue<const LinkedList<T>>(value);
    return list == nullptr || list->empty();
}

template <class T>
bool areEmptyLists(uint64_t one, uint64_t other) {
    return isEmptyList<T>(one) && isEmptyList<T>(other);
}

bool isSameValue(uint32_t type, uint64_t one, uint64_t other) {
    switch (type) {
    case ParameterType_BOOLEAN:
    case ParameterType_ENUM:
    case ParameterType_ADDRESS:
    case ParameterType_INT:
        return static_cast<uint32_t>(one) == static_cast<uint32_t>(other);
    case ParameterType_ADDRESS64:
        return one == other;
    case ParameterType_STRING:
        return isSameText(textOfValue(one), textOfValue(other));
    case ParameterType_INT_VECTOR:
        return areEmptyLists<int>(one, other);
    case ParameterType_INT64_VECTOR:
        return areEmptyLists<int64_t>(one, other);
    case ParameterType_STRING_VECTOR:
        return areEmptyLists<const char*>(one, other);
    default:
        return false;
    }
}

// The row of words that are no options, or null.
const OptionRow* positionalRow(const Parser& parser) {
    const OptionTable& options = parser.options();
    return options.rowCount != 0 && isPositional(options.rows[0]) ? &options.rows[0] : nullptr;
}

bool isChanged(const Parser& parser, uint32_t parameter) {
    return parser.parameters().isSet(parameter) &&
           !isDefault(parser.parameters(), parameter, parser.options().activeMask);
}

void showParameter(Parser& parser, uint32_t parameter, TextBuffer& buffer) {
    const OptionRow* row = bestRowForParameter(parser, parameter);
    if (row == nullptr || !isChanged(parser, parameter)) {
        return;
    }
    const ParameterDescriptor& descriptor = parser.parameters().descriptors[parameter];
    uint64_t value = parser.parameters().values[parameter].value;
    if (descriptor.type == ParameterType_VIA_FILE) {
        return;
    }
    if (descriptor.type == ParameterType_CALL_BACK) {
        const auto* holder = pointerOfValue<const CallBackHolder>(value);
        if (holder != nullptr && holder->callBack != nullptr) {
            holder->callBack->describe(parser, row, buffer);
        }
    } else if (rowShowsArgument(parser, parameter, *row)) {
        writeValue(buffer, descriptor.type, value, descriptor.constraints, row->name,
                   row->separator);
    } else {
        writeOption(buffer, row->name);
    }
}

// Whether a word that is no option would be read as one.
bool looksLikeOption(const char* word) {
    return word != nullptr && word[0] == '-' && word[1] != 0;
}

bool hasWordLikeOption(uint32_t type, uint64_t value) {
    if (type == ParameterType_STRING) {
        return looksLikeOption(textOfValue(value));
    }
    const auto* words =
        type == ParameterType_STRING_VECTOR ? pointerOfValue<const StrList>(value) : nullptr;
    return words != nullptr && std::any_of(words->begin(), words->end(), looksLikeOption);
}

void showPositionalWords(const Parser& parser, const OptionRow& row, TextBuffer& buffer) {
    if (!isChanged(parser, row.parameter) ||
        !masksPass(row.restrictions, parser.options().activeMask)) {
        return;
    }
    const ParameterDescriptor& descriptor = parser.parameters().descriptors[row.parameter];
    uint64_t value = parser.parameters().values[row.parameter].value;
    if (parser.endOfOptions() || hasWordLikeOption(descriptor.type, value)) {
        buffer.add(buffer.separator);
        buffer.addText("--");
    }
    writeValue(buffer, descriptor.type, value, descriptor.constraints, row.name, row.separator);
}

} // namespace

bool isDefault(const Parameters& parameters, uint32_t parameter, uint32_t mask) {
    const ParameterDescriptor& descriptor = parameters.descriptors[parameter];
    const ParameterValue& value = parameters.values[parameter];
    if (descriptor.defaultKind == DefaultKind_None) {
        return false;
    }
    if (descriptor.defaultKind == DefaultKind_Provider &&
        (value.defaultProvider == nullptr ||
         value.defaultProvider->provide(descriptor) == nullptr)) {
        return false;
    }
    return isSameValue(descriptor.type, value.value,
                       defaultOf(*parameters.parser, parameter, mask));
}

uint32_t rebuildCommandLine(Parser& parser, TextBuffer& buffer) {
    const OptionRow* positional = positionalRow(parser);
    uint32_t count =
        std::min(parser.parameters().parameterCount, parser.parameters().descriptorCount);
    for (uint32_t parameter = 0; parameter < count; ++parameter) {
        if (positional == nullptr || parameter != positional->parameter) {
            showParameter(parser, parameter, buffer);
        }
    }
    if (UnknownOptionHandler* handler = parser.options().unknownOptionHandler) {
        handler->describe(parser, buffer);
    }
    if (positional != nullptr) {
        showPositionalWords(parser, *positional, buffer);
    }
    buffer.add('\0');
    return buffer.length;
}

} // namespace tabledrivenparser
