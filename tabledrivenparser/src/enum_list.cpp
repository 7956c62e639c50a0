#include "tabledrivenparser/src/enum_list.h"

#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/src/enum_choice.h"
#include "tabledrivenparser/src/mask_list.h"
#include "tabledrivenparser/src/row_match.h"

#include <cstddef>

namespace tabledrivenparser {

namespace {

// Writes text as far as it fits and counts all of it, so that a text that was too long tells how
// much room it needs.
class BoundedText {
public:
    BoundedText(char* buffer, size_t capacity) : m_buffer(buffer), m_capacity(capacity) {}

    void add(const char* text) {
        for (; *text != 0; ++text, ++m_length) {
            if (m_length < m_capacity) {
                m_buffer[m_length] = *text;
            }
        }
    }

    // Ends the text with a NUL. False if the text and the NUL did not fit.
    bool finish() {
        bool fits = m_length < m_capacity;
        if (fits) {
            m_buffer[m_length] = 0;
        } else if (m_capacity != 0) {
            m_buffer[m_capacity - 1] = 0;
        }
        return fits;
    }

    size_t length() const { return m_length; }

private:
    char* m_buffer;
    size_t m_capacity;
    size_t m_length = 0;
};

void writeList(BoundedText& text, Parser& parser, const OptionRow& option) {
    uint32_t activeMask = parser.options().activeMask;
    for (const EnumRow& row : enumRows(parser, option.parameter)) {
        if (row.name == nullptr || !masksPass(row.rowRestrictions, activeMask) ||
            !isEnumValueAvailable(parser, option.parameter, row.value, true)) {
            continue;
        }
        if (text.length() != 0) {
            text.add(" ");
        }
        text.add(isLongName(option) ? "--" : "-");
        text.add(option.name);
        text.add(isLongName(option) ? "=" : "");
        text.add(row.name);
        text.add("\n");
    }
}

} // namespace

void reportSelectableArguments(Parser& parser, const OptionRow& option) {
    char usualBuffer[2048];
    const char* list = usualBuffer;
    BoundedText text(usualBuffer, sizeof usualBuffer);
    writeList(text, parser, option);
    if (!text.finish()) {
        size_t size = text.length() + 1;
        auto* largeBuffer =
            static_cast<char*>(alloclib::allocate(alloclib::defaultRegion(), size, 1));
        BoundedText again(largeBuffer, size);
        writeList(again, parser, option);
        again.finish();
        list = largeBuffer;
    }
    parser.reporter().reportParseMessage(ParserSeverity_Information,
                                         ParserMessage_SelectableArguments, option.name, list);
    parser.parameters().listShown = 1;
}

} // namespace tabledrivenparser
