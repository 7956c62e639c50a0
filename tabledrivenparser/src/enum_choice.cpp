#include "tabledrivenparser/src/enum_choice.h"

#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/src/default_value.h"
#include "tabledrivenparser/src/enum_list.h"
#include "tabledrivenparser/src/letter_case.h"
#include "tabledrivenparser/src/mask_list.h"
#include "tabledrivenparser/src/value_store.h"

#include <span>

namespace tabledrivenparser {

namespace {

bool isRestricted(const EnumRow& row) {
    return row.rowRestrictions != nullptr && row.rowRestrictions[0] != 0;
}

// Whether a later row of the same name takes over from the choice.
bool takesOver(const EnumRow& later, const EnumRow& choice) {
    if (isRestricted(later) && !isRestricted(choice)) {
        return false;
    }
    return later.deprecated == 0 || choice.deprecated != 0;
}

const EnumRow* firstRowWithValue(std::span<const EnumRow> rows, uint32_t value) {
    for (const EnumRow& row : rows) {
        if (row.name != nullptr && row.value == value) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

std::span<const EnumRow> enumRows(const Parser& parser, uint32_t parameter) {
    const auto* table =
        static_cast<const EnumTable*>(parser.parameters().descriptors[parameter].constraints);
    return table == nullptr ? std::span<const EnumRow>() : std::span(table->rows, table->count);
}

bool isEnumValueAvailable(Parser& parser, uint32_t parameter, uint32_t value, bool quiet) {
    const EnumRow* row = firstRowWithValue(enumRows(parser, parameter), value);
    uint32_t activeMask = parser.options().activeMask;
    if (row == nullptr || !masksPass(row->valueRestrictions, activeMask)) {
        return false;
    }
    Parameters& parameters = parser.parameters();
    ValueFilter* filter = parameters.values[parameter].filter;
    return filter == nullptr ||
           filter->accept(parameters, parameters.descriptors[parameter], activeMask, value, quiet);
}

const EnumRow* chooseEnumRow(Parser& parser, uint32_t parameter, const char* argument) {
    const EnumRow* choice = nullptr;
    for (const EnumRow& row : enumRows(parser, parameter)) {
        if (row.name == nullptr || !equalFolded(row.name, argument) ||
            !isEnumValueAvailable(parser, parameter, row.value, false)) {
            continue;
        }
        if (choice == nullptr || takesOver(row, *choice)) {
            choice = &row;
        }
    }
    return choice;
}

bool storeEnumArgument(Parser& parser, const OptionRow& option, const char* argument,
                       bool isSelectivePass) {
    uint32_t parameter = option.parameter;
    const EnumRow* choice = chooseEnumRow(parser, parameter, argument);
    if (choice == nullptr) {
        return false;
    }
    if (!doesListenerTake(parser, parameter, choice->value)) {
        if (choice->deprecated != 0) {
            parser.reporter().reportParseMessage(
                ParserSeverity_Warning, ParserMessage_DeprecatedArgument, argument, option.name);
        }
        if (choice->value == 0 && !isSelectivePass) {
            reportSelectableArguments(parser, option);
        }
        parser.parameters().values[parameter].value = choice->value;
    }
    parser.bumpSequence(parameter);
    return true;
}

bool storeEnumImplied(Parser& parser, const OptionRow& option) {
    uint32_t parameter = option.parameter;
    auto value = static_cast<uint32_t>(option.impliedValue);
    auto usual = static_cast<uint32_t>(defaultOf(parser, parameter, parser.options().activeMask));
    if (value != usual && !isEnumValueAvailable(parser, parameter, value, false)) {
        return false;
    }
    storeAcceptedValue(parser, parameter, value);
    return true;
}

} // namespace tabledrivenparser
