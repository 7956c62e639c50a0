// Prints the variants of a symbol that a library offers:
//
//     $ variants libvector.a dot_product
//     vector_plain.o  yes   -                          $FCH_ISAv2$QEL_ISAv5$IEEE1$IW
//     vector_fpu.o    no    $QEL_ISAv3$ZLTv2$PE$IEEE1  $FCH_ISAv2$QEL_ISAv5$ZLTv2$PE$IEEE1$IW
//
// That is the member, whether it is the base, its decoration, and how it was built.
//
// A library may hold several builds of one module. Its symbol table then lists their symbols once
// for each build, under the same name: plain for the build that suits everybody, the base, and with
// a decoration that says what the others ask for beyond it. A linker chooses by these; this program
// shows what there is to choose from, in the order of the table. How a member was built is what the
// object itself states.
//
// It is built against the installed libraries; see CMakeLists.txt.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/error_handler.h"
#include "arlib/interface/symbol.h"
#include "attributes/interface/decoration.h"
#include "elfext/interface/error_handler.h"
#include "elfext/interface/object_module.h"

namespace {

// Shows what is wrong with a library, and reads on where that is possible.
class LibraryHandler final : public arlib::ErrorHandler {
public:
    bool report(arlib::Archive* /*archive*/, arlib::ErrorKind kind, const char* text) override {
        std::fprintf(stderr, "variants: %s\n", text);
        return kind != arlib::ErrorKind_Fatal;
    }
};

// The same for a member that is an object.
class ObjectHandler final : public elfext::ErrorHandler {
public:
    bool report(elfext::ObjectModule* /*objectModule*/, elfext::Severity severity,
                const char* message) override {
        std::fprintf(stderr, "variants: %s\n", message);
        return severity != elfext::Severity_Fatal;
    }
};

// Attributes in short. Asks for the length first, then for the text.
std::string decorationOf(const attributes::FullAttr& value) {
    std::string text(attributes::printDecoration(value, nullptr, 0) + 1, '\0');
    attributes::printDecoration(value, text.data(), text.size());
    text.pop_back();
    return text;
}

bool hasAttributesSection(arlib::ArchiveMember& member) {
    elfext::ObjectModule object;
    return member.readObjectModule(object, member.getArchive()->getElfErrorHandler()) &&
           object.getBuildAttributesSections().getSize() != 0;
}

// What an object states of how it was built, in a marker symbol or else in its attributes section;
// "-" if it states nothing.
std::string builtFor(arlib::ArchiveMember& member) {
    if (member.getType() == nullptr || !member.getType()->isObjectModule()) {
        return "-";
    }
    const auto& type = static_cast<const arlib::ObjectModuleArchiveMemberType&>(*member.getType());
    attributes::FullAttr value;
    const bool isKnown =
        type.getBuildAttributes(member, value, false) ||
        (hasAttributesSection(member) && type.getBuildAttributes(member, value, true));
    return isKnown ? decorationOf(value) : "-";
}

struct Variant {
    std::string member;
    std::string base;
    std::string decoration;
    std::string attributes;
};

// What a linker takes for a program that may use nothing that not all variants have.
std::vector<const arlib::Symbol*> findBases(arlib::Archive& archive, const char* name) {
    attributes::FullAttr nothing;
    attributes::parseDecoration(nothing, "");
    arlib::SymbolList bases;
    archive.selectSymbolVariants(name, nothing, bases);
    std::vector<const arlib::Symbol*> found;
    for (uint32_t i = 0; i < bases.getSize(); ++i) {
        found.push_back(bases.get(i));
    }
    return found;
}

std::vector<Variant> findVariants(arlib::Archive& archive, const char* name) {
    const std::vector<const arlib::Symbol*> bases = findBases(archive, name);
    arlib::SymbolList symbols;
    archive.findSymbols(name, symbols);
    std::vector<Variant> variants;
    for (uint32_t i = 0; i < symbols.getSize(); ++i) {
        const arlib::Symbol& symbol = *symbols.get(i);
        const bool isBase = std::find(bases.begin(), bases.end(), &symbol) != bases.end();
        variants.push_back(
            {symbol.getDefiningMember()->getName(), isBase ? "yes" : "no",
             symbol.hasBuildAttributes() ? decorationOf(symbol.getBuildAttributes()) : "-",
             builtFor(*symbol.getDefiningMember())});
    }
    return variants;
}

// A table whose columns are as wide as what stands in them.
void print(const std::vector<Variant>& variants) {
    size_t memberWidth = 0;
    size_t decorationWidth = 0;
    for (const Variant& variant : variants) {
        memberWidth = std::max(memberWidth, variant.member.size());
        decorationWidth = std::max(decorationWidth, variant.decoration.size());
    }
    for (const Variant& variant : variants) {
        std::printf("%-*s  %-4s  %-*s  %s\n", static_cast<int>(memberWidth), variant.member.c_str(),
                    variant.base.c_str(), static_cast<int>(decorationWidth),
                    variant.decoration.c_str(), variant.attributes.c_str());
    }
}

// The exit status: 0 if the symbol was found, 1 if not, 2 if the library could not be read.
int showLibrary(const char* fileName, const char* name) {
    LibraryHandler libraryHandler;
    ObjectHandler objectHandler;
    arlib::Archive archive;
    archive.setErrorHandler(&libraryHandler);
    archive.setElfErrorHandler(&objectHandler);
    if (!arlib::ArchiveFileReader().readFile(fileName, archive)) {
        return 2;
    }
    const std::vector<Variant> variants = findVariants(archive, name);
    if (variants.empty()) {
        std::fprintf(stderr, "variants: no symbol '%s' in '%s'\n", name, fileName);
        return 1;
    }
    print(variants);
    return 0;
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
