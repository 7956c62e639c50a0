#include "tabledrivenparser/interface/value_writer.h"

#include "tabledrivenparser/interface/parameters.h"
#include "tabledrivenparser/src/quoted_text.h"

#include <array>
#include <cinttypes>
#include <cstdio>

namespace tabledrivenparser {

namespace {

bool isLong(const char* name) {
    return name[0] != 0 && name[1] != 0;
}

// Begins an option that a value follows.
void beginOption(TextBuffer& buffer, const char* name) {
    writeOption(buffer, name);
    if (isLong(name)) {
        buffer.add(buffer.joined != 0 ? buffer.separator : '=');
    }
}

template <class Number>
void addNumber(TextBuffer& buffer, const char* format, Number number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, number);
    buffer.addText(text.data());
}

// A value with no row, which no option could have brought about, is shown as a number.
void addEnumName(TextBuffer& buffer, const EnumTable* table, uint32_t value) {
    for (uint32_t index = 0; table != nullptr && index < table->count; ++index) {
        if (table->rows[index].name != nullptr && table->rows[index].value == value) {
            buffer.addText(table->rows[index].name);
            return;
        }
    }
    addNumber(buffer, "%" PRIu32, value);
}

void addText(TextBuffer& buffer, const char* text) {
    if (text == nullptr) {
        buffer.addText("<null>");
    } else if (buffer.quoting != 0) {
        writeQuoted(buffer, text);
    } else {
        buffer.addText(text);
    }
}

// Whether the argument of a letter is looked for in the next word: if nothing stands behind the
// letter. What looks like the "=" of a long name does not belong there either.
bool standsAlone(const char* argument, char separator) {
    return argument[0] == 0 || argument[0] == '=' || argument[0] == separator;
}

// The first text behind a name. From the front of a positional word reading takes an "=".
void addFirstText(TextBuffer& buffer, const char* name, const char* text, char separator) {
    if (buffer.quoting != 0 && text != nullptr) {
        if (name[0] == 0 && text[0] == '=') {
            buffer.add('=');
        } else if (name[0] != 0 && !isLong(name) && standsAlone(text, separator)) {
            buffer.add(buffer.separator);
        }
    }
    addText(buffer, text);
}

// Writes all elements of a list. `addFirst` writes one behind a name, `addNext` one behind another.
template <class T, class AddFirst, class AddNext>
void addList(TextBuffer& buffer, uint64_t value, const char* name, char separator,
             AddFirst addFirst, AddNext addNext) {
    const auto* list = pointerOfValue<const LinkedList<T>>(value);
    if (list == nullptr) {
        return;
    }
    for (const LinkedListNode<T>* node = list->firstNode(); node != nullptr; node = node->next) {
        if (separator == 0 || node == list->firstNode()) {
            beginOption(buffer, name);
            addFirst(node->value);
        } else {
            buffer.add(separator);
            addNext(node->value);
        }
    }
}

template <class T>
void addNumberList(TextBuffer& buffer, uint64_t value, const char* name, char separator,
                   const char* format) {
    auto add = [&](T number) { addNumber(buffer, format, number); };
    addList<T>(buffer, value, name, separator, add, add);
}

void addTextList(TextBuffer& buffer, uint64_t value, const char* name, char separator) {
    addList<const char*>(
        buffer, value, name, separator,
        [&](const char* text) { addFirstText(buffer, name, text, separator); },
        [&](const char* text) { addText(buffer, text); });
}

void addSingleValue(TextBuffer& buffer, uint32_t type, uint64_t value, const void* constraints,
                    const char* name, char separator) {
    switch (type) {
    case ParameterType_BOOLEAN:
        buffer.addText(value != 0 ? "true" : "false");
        break;
    case ParameterType_ENUM:
        addEnumName(buffer, static_cast<const EnumTable*>(constraints),
                    static_cast<uint32_t>(value));
        break;
    case ParameterType_ADDRESS:
        addNumber(buffer, "0x%" PRIX32, static_cast<uint32_t>(value));
        break;
    case ParameterType_ADDRESS64:
        addNumber(buffer, "0x%" PRIX64, value);
        break;
    case ParameterType_INT:
        addNumber(buffer, "%" PRIi32, static_cast<int32_t>(value));
        break;
    case ParameterType_STRING:
        addFirstText(buffer, name, textOfValue(value), separator);
        break;
    case ParameterType_CALL_BACK:
        buffer.addText("<call back>");
        break;
    default:
        break;
    }
}

} // namespace

void writeOption(TextBuffer& buffer, const char* name) {
    if (buffer.length != 0) {
        buffer.add(buffer.separator);
    }
    if (name[0] != 0) {
        buffer.addText(isLong(name) && buffer.joined == 0 ? "--" : "-");
        buffer.addText(name);
    }
}

void writeValue(TextBuffer& buffer, uint32_t type, uint64_t value, const void* constraints,
                const char* name, char separator) {
    switch (type) {
    case ParameterType_INT_VECTOR:
        addNumberList<int>(buffer, value, name, separator, "%i");
        break;
    case ParameterType_INT64_VECTOR:
        addNumberList<int64_t>(buffer, value, name, separator, "%" PRIi64);
        break;
    case ParameterType_STRING_VECTOR:
    case ParameterType_VIA_FILE:
        addTextList(buffer, value, name, separator);
        break;
    default:
        beginOption(buffer, name);
        addSingleValue(buffer, type, value, constraints, name, separator);
        break;
    }
}

} // namespace tabledrivenparser
