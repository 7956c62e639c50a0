// Looks into members that are ELF files: which names they define, and how they were built.
//
// A member is read whole, into a module that lives for the length of one question. The module
// refers to the member's bytes wherever it can, so these are brought into memory once, in a buffer
// that serves all members of an archive in turn.

#include <cstdint>
#include <vector>

#include "arlib/interface/archive.h"
#include "arlib/interface/archive_member_type.h"
#include "arlib/interface/symbol_name_list.h"
#include "arlib/src/elfext_error_string_capture.h"
#include "arlib/src/lto_manager.h"
#include "arlib/src/marker_attributes.h"
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/decoration.h"
#include "elfext/interface/elf_object_module_reader.h"
#include "elfext/interface/format_recognizer.h"
#include "elfext/interface/object_module.h"

namespace arlib {
namespace {

bool isDefinedForOthers(const elfext::Symbol& symbol, bool debugSymbols) {
    if (symbol.getCategory() == elfext::Symbol::Category_Undefined ||
        symbol.getBinding() == elfext::STB_LOCAL) {
        return false;
    }
    return debugSymbols || symbol.getCategory() != elfext::Symbol::Category_Hosted ||
           !symbol.getSection()->isDebugSection();
}

void listSymbols(const elfext::ObjectModule& module, bool debugSymbols, SymbolNameList& names) {
    names.clear();
    names.getMarkers().start();
    for (const elfext::Symbol* symbol : module.getSymbols()) {
        const char* name = symbol->getName();
        if (const char* decoration = MarkerAttributes::decorationOf(name); decoration != nullptr) {
            names.getMarkers().add(decoration);
        }
        if (name != nullptr && *name != '\0' && isDefinedForOthers(*symbol, debugSymbols)) {
            names.add(name);
        }
    }
}

// Appends the names that exist only in the module's bitcode, of which it may have one section. The
// failure tells why that cannot be done; empty, it is done.
void listBitcodeSymbols(const elfext::ObjectModule& module, SymbolNameList& names,
                        std::string& failure) {
    elfext::Section* bitcode = nullptr;
    for (elfext::Section* section : module.getSections()) {
        if (!LTOManager::isBitcodeSection(section->getName())) {
            continue;
        }
        if (bitcode != nullptr) {
            failure = "Found multiple LTO Bitcode sections.";
            return;
        }
        bitcode = section;
    }
    if (bitcode == nullptr) {
        return;
    }
    if (bitcode->getContents() == nullptr) {
        failure = "Failed to load Bitcode section contents";
    } else if (!LTOManager::instance().load()) {
        failure = "Failed to load LTO library";
    } else {
        LTOManager::instance().addSymbols(*bitcode, names, failure);
    }
}

// The attributes that marker symbols state, merged. False if there are none.
bool mergeMarkerSymbols(const elfext::ObjectModule& module, attributes::FullAttr& result) {
    MarkerAttributes markers(result);
    for (const elfext::Symbol* symbol : module.getSymbols()) {
        if (const char* decoration = MarkerAttributes::decorationOf(symbol->getName());
            decoration != nullptr) {
            markers.add(decoration);
        }
    }
    return markers.isFound();
}

// The attributes of the module as its section has them. They take the way through their text,
// which leaves out what a marker symbol could not state either: required, so that both kinds of
// objects compare alike.
void takeSectionAttributes(const elfext::ObjectModule& module, attributes::FullAttr& result) {
    attributes::BuildAttributes own;
    module.getBuildAttributes(own);
    if (own.derivedStale) {
        own.rebuildFullAttr();
    }
    std::vector<char> text(attributes::printDecoration(own.fullAttr, nullptr, 0) + 1);
    attributes::printDecoration(own.fullAttr, text.data(), text.size());
    attributes::parseDecoration(result, text.data());
}

} // namespace

bool ElfImageArchiveMemberType::recognise(ArchiveMember& member) const {
    if (const MemberContents* contents = member.getContents(); contents != nullptr) {
        return elfext::isElfFile(contents->bytes(), member.getSize());
    }
    const ContentsLocation* location = member.getLocation();
    return location != nullptr &&
           elfext::isElfFile(location->getFileName(), location->getOffset(), member.getSize());
}

bool ElfImageArchiveMemberType::getSymbols(ArchiveMember& member, SymbolNameList& names,
                                           std::string& failure) const {
    failure.clear();
    ElfextErrorStringCapture capture(failure);
    if (!member.ensureLocation()) {
        return false;
    }
    elfext::ObjectModule module;
    if (!member.readObjectModule(module, &capture)) {
        return false;
    }
    listSymbols(module, member.getArchive()->getDebugSymbols(), names);
    listBitcodeSymbols(module, names, failure);
    // The module may refer to the contents, so they go last.
    return member.releaseContents() && failure.empty();
}

bool ElfImageArchiveMemberType::getBuildAttributes(ArchiveMember& member,
                                                   attributes::FullAttr& result,
                                                   bool fromSection) const {
    if (!member.ensureLocation()) {
        return false;
    }
    elfext::ObjectModule module;
    elfext::ErrorHandler* handler = member.getArchive()->getElfErrorHandler();
    if (!member.readObjectModule(module, handler)) {
        return false;
    }
    bool isFound = true;
    if (fromSection) {
        takeSectionAttributes(module, result);
    } else {
        isFound = mergeMarkerSymbols(module, result);
    }
    // The module may refer to the contents, so they go last.
    return member.releaseContents() && isFound;
}

} // namespace arlib
