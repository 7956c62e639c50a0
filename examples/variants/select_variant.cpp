// Asks a library which variant of a symbol a linker takes.
//
//     select_variant LIBRARY SYMBOL DECORATION
//
// The decoration says what the program that is linked may use, "$QEL_ISAv6$ZLTv2$IEEE1" say. The
// members that define the chosen symbols are printed, one a line. Status 1 if there are none.

#include <cstdio>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/symbol.h"
#include "attributes/interface/decoration.h"

namespace {

class PrintingHandler final : public arlib::ErrorHandler {
public:
    explicit PrintingHandler(const char* library) : m_Library(library) {}

    bool report(arlib::Archive*, arlib::ErrorKind kind, const char* text) override {
        std::fprintf(stderr, "%s: %s\n", m_Library, text);
        return kind != arlib::ErrorKind_Fatal;
    }

private:
    const char* m_Library;
};

bool printChoice(const char* library, const char* symbol, const char* decoration) {
    PrintingHandler handler(library);
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    if (!arlib::ArchiveFileReader().readFile(library, archive)) {
        return false;
    }
    attributes::FullAttr requester;
    attributes::parseDecoration(requester, decoration);
    arlib::SymbolList chosen;
    const bool isFound = archive.selectSymbolVariants(symbol, requester, chosen);
    for (uint32_t i = 0; i < chosen.getSize(); ++i) {
        std::printf("%s\n", chosen.get(i)->getDefiningMember()->getName());
    }
    return isFound;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s LIBRARY SYMBOL DECORATION\n", argv[0]);
        return 2;
    }
    alloclib::startAllocators();
    const bool isFound = printChoice(argv[1], argv[2], argv[3]);
    alloclib::finishAllocators();
    return isFound ? 0 : 1;
}
