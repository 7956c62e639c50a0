#include "tabledrivenparser/interface/parameter_dump.h"

#include "tabledrivenparser/interface/value_writer.h"
#include "tabledrivenparser/src/default_value.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace tabledrivenparser {

namespace {

// By ParameterType.
constexpr std::array typeNames = {"BOOLEAN",       "ENUM",       "ADDRESS",      "ADDRESS64",
                                  "INT",           "INT_VECTOR", "INT64_VECTOR", "STRING",
                                  "STRING_VECTOR", "CALL_BACK",  "VIA_FILE"};

struct FlagName {
    OptionFlag flag;
    const char* name;
};

constexpr std::array flagNames = {FlagName{OptionFlag_OldSyntax, "oldSyntax"},
                                  FlagName{OptionFlag_Deprecated, "deprecated"},
                                  FlagName{OptionFlag_Public, "public"}};

constexpr char dumpSeparator = ',';

const char* typeName(uint32_t type) {
    return type < typeNames.size() ? typeNames[type] : "[BAD TYPE!]";
}

std::string valueText(const ParameterDescriptor& descriptor, uint64_t value) {
    char usual[256];
    TextBuffer buffer{.capacity = sizeof usual, .text = usual, .separator = dumpSeparator};
    return writeWhole(buffer, [&](TextBuffer& text) {
        writeValue(text, descriptor.type, value, descriptor.constraints, "", 0);
        text.add('\0');
    });
}

// The text of what a bare option stands for: of a vector that is one element.
std::string impliedText(const ParameterDescriptor& descriptor, uint64_t implied) {
    switch (descriptor.type) {
    case ParameterType_INT_VECTOR: {
        LinkedList<int> list(static_cast<int>(implied));
        return valueText(descriptor, addressValue(&list));
    }
    case ParameterType_INT64_VECTOR: {
        LinkedList<int64_t> list(static_cast<int64_t>(implied));
        return valueText(descriptor, addressValue(&list));
    }
    case ParameterType_STRING_VECTOR:
    case ParameterType_VIA_FILE: {
        StrList list(textOfValue(implied));
        return valueText(descriptor, addressValue(&list));
    }
    default:
        return valueText(descriptor, implied);
    }
}

std::string defaultText(Parser& parser, uint32_t parameter) {
    const ParameterDescriptor& descriptor = parser.parameters().descriptors[parameter];
    switch (descriptor.defaultKind) {
    case DefaultKind_None:
        return "<none>";
    case DefaultKind_Masked:
        return "<list>";
    default:
        return valueText(descriptor, defaultOf(parser, parameter, parser.options().activeMask));
    }
}

std::string parameterText(Parser& parser, uint32_t parameter) {
    const ParameterDescriptor& descriptor = parser.parameters().descriptors[parameter];
    std::string value = valueText(descriptor, parser.parameters().values[parameter].value);
    std::string text = typeName(descriptor.type);
    if (!parser.parameters().isSet(parameter)) {
        return text + " unset:" + value;
    }
    return text + " set from:" + defaultText(parser, parameter) + " to:" + value;
}

std::string flagsText(const OptionRow& row) {
    std::string text;
    for (const FlagName& each : flagNames) {
        if ((row.flags & each.flag) != 0) {
            text += text.empty() ? "" : ",";
            text += each.name;
        }
    }
    return text.empty() ? "no-flags" : text;
}

std::string masksText(const uint32_t* masks) {
    std::string text;
    for (; *masks != 0; ++masks) {
        std::array<char, 16> mask{};
        std::snprintf(mask.data(), mask.size(), "0x%X", *masks);
        text += text.empty() ? "" : ",";
        text += mask.data();
    }
    return text;
}

std::string rowText(const ParameterDescriptor& descriptor, const OptionRow& row) {
    std::string text = std::string("'") + row.name + "' " + flagsText(row);
    if (row.argument == OptionArgument_Required) {
        text += " parameter required";
    } else {
        text += " implied parameter:" + impliedText(descriptor, row.impliedValue);
        text += row.argument == OptionArgument_Optional ? " (optional)" : "";
    }
    if (row.restrictions != nullptr && row.restrictions[0] != 0) {
        text += " soft restriction: " + masksText(row.restrictions);
    }
    if (row.separator != 0) {
        text += std::string(" separator='") + row.separator + "'";
    }
    return text;
}

} // namespace

void dumpParameters(Parser& parser) {
    if (parser.traceHook() == nullptr) {
        return;
    }
    uint32_t count =
        std::min(parser.parameters().parameterCount, parser.parameters().descriptorCount);
    for (uint32_t parameter = 0; parameter < count; ++parameter) {
        parser.trace("%3i: %s\n", static_cast<int>(parameter),
                     parameterText(parser, parameter).c_str());
        const ParameterDescriptor& descriptor = parser.parameters().descriptors[parameter];
        const OptionRow* const* rows = descriptor.rows;
        for (; rows != nullptr && *rows != nullptr; ++rows) {
            parser.trace("       %s\n", rowText(descriptor, **rows).c_str());
        }
    }
}

} // namespace tabledrivenparser
