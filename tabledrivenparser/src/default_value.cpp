#include "tabledrivenparser/src/default_value.h"

#include "tabledrivenparser/interface/best_row.h"
#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/src/letter_case.h"
#include "tabledrivenparser/src/mask_list.h"

#include <cstring>
#include <optional>

namespace tabledrivenparser {

namespace {

std::optional<uint64_t> readTruthValue(const char* text) {
    if (std::strcmp(text, "true") == 0) {
        return 1;
    }
    if (std::strcmp(text, "false") == 0) {
        return 0;
    }
    return std::nullopt;
}

std::optional<uint64_t> readEnumName(const EnumTable* table, const char* text) {
    for (uint32_t index = 0; table != nullptr && index < table->count; ++index) {
        const EnumRow& row = table->rows[index];
        if (row.name != nullptr && equalFolded(row.name, text)) {
            return row.value;
        }
    }
    return std::nullopt;
}

std::optional<uint64_t> readProvidedText(const ParameterDescriptor& descriptor, const char* text) {
    if (text == nullptr) {
        return std::nullopt;
    }
    switch (descriptor.type) {
    case ParameterType_BOOLEAN:
        return readTruthValue(text);
    case ParameterType_ENUM:
        return readEnumName(static_cast<const EnumTable*>(descriptor.constraints), text);
    default:
        return 0;
    }
}

uint64_t providedDefault(Parser& parser, uint32_t parameter) {
    const ParameterDescriptor& descriptor = parser.parameters().descriptors[parameter];
    DefaultProvider* provider = parser.parameters().values[parameter].defaultProvider;
    const char* text = provider == nullptr ? nullptr : provider->provide(descriptor);
    std::optional<uint64_t> value = readProvidedText(descriptor, text);
    if (!value.has_value()) {
        const OptionRow* row = bestRowForParameter(parser, parameter);
        parser.reporter().reportParseMessage(
            ParserSeverity_Fatal, ParserMessage_ArgumentNotPermitted,
            text == nullptr ? "<null>" : text, row == nullptr ? "<unknown>" : row->name);
    }
    return value.value_or(0);
}

} // namespace

uint64_t maskedDefault(const ParameterDescriptor& descriptor, uint32_t mask) {
    const auto* node = pointerOfValue<const MaskedDefault>(descriptor.defaultValue);
    for (; node != nullptr; node = node->next) {
        if (masksPass(node->masks, mask)) {
            return node->value;
        }
    }
    return 0;
}

uint64_t defaultOf(Parser& parser, uint32_t parameter, uint32_t mask) {
    const ParameterDescriptor& descriptor = parser.parameters().descriptors[parameter];
    switch (descriptor.defaultKind) {
    case DefaultKind_Masked:
        return maskedDefault(descriptor, mask);
    case DefaultKind_Provider:
        return providedDefault(parser, parameter);
    default:
        return descriptor.defaultValue;
    }
}

} // namespace tabledrivenparser
