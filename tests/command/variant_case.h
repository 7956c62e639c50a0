// What the tests of variants in libraries share: objects that state how they were built, and the
// library's symbol table as lines.
#pragma once

#include "tests/command/command_case.h"
#include "tests/support/elf_builder.h"

namespace commandtest {

// An object that defines these names and has a marker symbol for each decoration, local as
// compilers make them.
inline std::string variantObject(const Words& names, const Words& decorations,
                                 const std::string& attributesSection = "") {
    using testsupport::BuiltElfSymbol;
    namespace elf = testsupport::elf;
    testsupport::ElfBuilder builder({false, true});
    const auto text = static_cast<uint32_t>(builder.add({.name = ".text", .contents = "code"}));
    if (!attributesSection.empty()) {
        builder.add({.name = ".QEL.attributes",
                     .type = elf::SHT_QEL_ATTRIBUTES,
                     .contents = attributesSection});
    }
    std::vector<BuiltElfSymbol> symbols;
    for (const std::string& decoration : decorations) {
        BuiltElfSymbol marker =
            testsupport::reservedSymbol("BuildAttributes$" + decoration, elf::SHN_ABS);
        marker.binding = elf::STB_LOCAL;
        symbols.push_back(marker);
    }
    for (const std::string& name : names) {
        symbols.push_back({.name = name, .section = text});
    }
    builder.addSymbols(symbols);
    return builder.bytes();
}

class VariantCase : public CommandCase {
protected:
    void object(const std::string& name, const Words& names, const Words& decorations) const {
        file(name, variantObject(names, decorations));
    }
    Words symbols(const std::string& name = "lib.a") const {
        Words found;
        for (const testsupport::ParsedSymbol& symbol : archive(name).symbols) {
            found.push_back(symbol.name + " in " + symbol.member);
        }
        return found;
    }
    void runs(const Words& words, const std::string& error = "", int status = 0) const {
        EXPECT_TRUE(ended(tomex(words), status, "", error));
    }
};

} // namespace commandtest
