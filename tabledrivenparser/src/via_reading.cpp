#include "tabledrivenparser/interface/via_reading.h"

#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/src/value_store.h"

namespace tabledrivenparser {

namespace {

// One more level of nesting for the object's life.
class ViaLevel {
public:
    explicit ViaLevel(Parser& parser) : m_parser(parser) {
        m_parser.setViaDepth(m_parser.viaDepth() + 1);
    }
    ~ViaLevel() { m_parser.setViaDepth(m_parser.viaDepth() - 1); }
    ViaLevel(const ViaLevel&) = delete;
    ViaLevel& operator=(const ViaLevel&) = delete;

private:
    Parser& m_parser;
};

} // namespace

void runViaFile(ViaFile& viaFile, Parser& parser, uint32_t filterCount, const uint32_t* filter) {
    parser.parseWords(viaFile, filterCount, filter);
}

bool readViaFile(Parser& parser, uint32_t parameter, const char* name, bool copyName,
                 uint32_t filterCount, const uint32_t* filter) {
    if (copyName) {
        name = parser.copyString(name);
    }
    ViaLevel level(parser);
    if (parser.viaDepth() >= viaDepthLimit) {
        parser.reporter().reportParseMessage(ParserSeverity_Fatal, ParserMessage_ViaFileTooDeep,
                                             static_cast<int>(viaDepthLimit), name);
        return false;
    }
    if (!appendViaFileName(parser, parameter, name)) {
        return false;
    }
    parser.trace("\n    via file '%s' (depth %lu) {\n", name,
                 static_cast<unsigned long>(parser.viaDepth()));
    ViaFile viaFile(name, parser.reporter());
    runViaFile(viaFile, parser, filterCount, filter);
    parser.bumpSequence(parameter);
    parser.trace("    }\n");
    return true;
}

void parseViaText(Parser& parser, const char* text, uint32_t filterCount, const uint32_t* filter) {
    parseViaTextInPlace(parser, alloclib::copyString(alloclib::defaultRegion(), text), filterCount,
                        filter);
}

void parseViaTextInPlace(Parser& parser, char* text, uint32_t filterCount, const uint32_t* filter) {
    ViaLevel level(parser);
    parser.trace("\n    parse string {\n");
    DummyViaFile viaFile(text, parser.reporter());
    runViaFile(viaFile, parser, filterCount, filter);
    parser.trace("    }\n");
}

} // namespace tabledrivenparser
