#include "tabledrivenparser/src/enum_list.h"

#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/interface/text_buffer.h"
#include "tabledrivenparser/src/enum_choice.h"
#include "tabledrivenparser/src/mask_list.h"
#include "tabledrivenparser/src/row_match.h"

namespace tabledrivenparser {

namespace {

void writeList(TextBuffer& text, Parser& parser, const OptionRow& option) {
    uint32_t activeMask = parser.options().activeMask;
    for (const EnumRow& row : enumRows(parser, option.parameter)) {
        if (row.name == nullptr || !masksPass(row.rowRestrictions, activeMask) ||
            !isEnumValueAvailable(parser, option.parameter, row.value, true)) {
            continue;
        }
        if (text.length != 0) {
            text.add(' ');
        }
        text.addText(isLongName(option) ? "--" : "-");
        text.addText(option.name);
        text.addText(isLongName(option) ? "=" : "");
        text.addText(row.name);
        text.add('\n');
    }
    text.add('\0');
}

} // namespace

void reportSelectableArguments(Parser& parser, const OptionRow& option) {
    char usual[2048];
    TextBuffer buffer{.capacity = sizeof usual, .text = usual};
    const char* list =
        writeWhole(buffer, [&](TextBuffer& text) { writeList(text, parser, option); });
    parser.reporter().reportParseMessage(ParserSeverity_Information,
                                         ParserMessage_SelectableArguments, option.name, list);
    parser.parameters().listShown = 1;
}

} // namespace tabledrivenparser
