// Prints the variants of a symbol that a library offers:
//
//     $ variants libmaths.a sine
//     sine_soft.o
//     sine_fast.o $A:L88$IEEE1
//
// A library may hold several builds of one module. Its symbol table then lists their symbols once
// for each build, under the same name: plain for the build that suits everybody, and with a
// decoration that says what the others ask for. A linker chooses by it; this program shows what
// there is to choose from, in the order of the table.
//
// It is built against the installed libraries; see CMakeLists.txt.
#include <cstdint>
#include <cstdio>
#include <string>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/error_handler.h"
#include "arlib/interface/symbol.h"
#include "attributes/interface/decoration.h"

namespace {

// Shows what is wrong with a library, and reads on where that is possible.
class PrintingHandler : public arlib::ErrorHandler {
public:
    bool report(arlib::Archive* /*archive*/, arlib::ErrorKind kind, const char* text) override {
        std::fprintf(stderr, "variants: %s\n", text);
        return kind != arlib::ErrorKind_Fatal;
    }
};

// Asks for the length first, then for the text.
std::string decorationOf(const arlib::Symbol& symbol) {
    const attributes::FullAttr& value = symbol.getBuildAttributes();
    std::string text(attributes::printDecoration(value, nullptr, 0) + 1, '\0');
    attributes::printDecoration(value, text.data(), text.size());
    text.pop_back();
    return text;
}

// False if there is no such symbol.
bool printVariants(arlib::Archive& archive, const char* name) {
    arlib::SymbolList symbols;
    archive.findSymbols(name, symbols);
    for (uint32_t i = 0; i < symbols.getSize(); ++i) {
        const arlib::Symbol& symbol = *symbols.get(i);
        const std::string member = symbol.getDefiningMember()->getName();
        const std::string decoration =
            symbol.hasBuildAttributes() ? " " + decorationOf(symbol) : std::string();
        std::printf("%s%s\n", member.c_str(), decoration.c_str());
    }
    return symbols.getSize() != 0;
}

// The exit status: 0 if the symbol was found, 1 if not, 2 if the library could not be read.
int showLibrary(const char* fileName, const char* name) {
    PrintingHandler handler;
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    if (!arlib::ArchiveFileReader().readFile(fileName, archive)) {
        return 2;
    }
    return printVariants(archive, name) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: variants LIBRARY SYMBOL\n");
        return 2;
    }
    // Everything of the libraries lives in regions, which are up from here on.
    alloclib::startAllocators();
    const int status = showLibrary(argv[1], argv[2]);
    alloclib::finishAllocators();
    return status;
}
