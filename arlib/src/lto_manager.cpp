#include "arlib/src/lto_manager.h"

#include <algorithm>
#include <string_view>

#include "arlib/interface/symbol_name_list.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/section.h"
#include "platform/interface/internal_check.h"

namespace arlib {
namespace {

// The worker's answer begins with one of these. Behind the first stand the names, each with a NUL
// behind it, behind the second the library's text.
constexpr char listMark = 'L';
constexpr char failureMark = 'F';

// A sound module takes milliseconds, and memory of a few times its size.
platform::WorkLimits limitsFor(uint64_t size) {
    constexpr uint64_t mebibyte = uint64_t{1024} * 1024;
    return {.memory = 512 * mebibyte + 64 * size,
            .seconds = static_cast<uint32_t>(2 + size / mebibyte)};
}

bool isDefinedForOthers(lto_symbol_attributes attributes) {
    const uint32_t definition = attributes & LTO_SYMBOL_DEFINITION_MASK;
    return definition != LTO_SYMBOL_DEFINITION_UNDEFINED &&
           definition != LTO_SYMBOL_DEFINITION_WEAKUNDEF &&
           (attributes & LTO_SYMBOL_SCOPE_MASK) != LTO_SYMBOL_SCOPE_INTERNAL;
}

void addListed(std::string_view listed, SymbolNameList& names) {
    names.reserve(names.getSize() +
                  static_cast<uint32_t>(std::count(listed.begin(), listed.end(), '\0')));
    for (size_t length = 0; (length = listed.find('\0')) != std::string_view::npos;) {
        names.add(listed.substr(0, length));
        listed.remove_prefix(length + 1);
    }
}

} // namespace

LTOManager::LTOManager() : m_Worker(listSymbols) {
}

LTOManager& LTOManager::instance() {
    static LTOManager manager;
    return manager;
}

bool LTOManager::isBitcodeSection(const char* name) {
    return name != nullptr && std::string_view(name) == ".llvm.lto";
}

const char* LTOManager::getLibraryName() {
    return TOMEX_LTO_LIBRARY_NAME;
}

bool LTOManager::load() {
    if (m_LoadAttempted && m_Library != nullptr) {
        return true;
    }
    m_LoadAttempted = true;
    platform::DynamicLibrary library = platform::loadDynamicLibrary(getLibraryName());
    if (library == nullptr) {
        return false;
    }
    for (uint32_t i = 0; i < LTOFunction_Count; ++i) {
        m_Functions[i] = platform::findDynamicFunction(library, ltoFunctionNames[i]);
        if (m_Functions[i] == nullptr) {
            return false;
        }
    }
    m_Library = library;
    return true;
}

// Runs in the worker, whose copy of the one object has the library bound.
std::string LTOManager::listSymbols(std::string_view path, std::string_view contents) {
    const LTOManager& lto = instance();
    const std::string fileName(path);
    lto_module_t module = lto.function<lto_module_create_in_local_context>(
        LTOFunction_ModuleCreateInLocalContext)(contents.data(), contents.size(), fileName.c_str());
    if (module == nullptr) {
        const char* text = lto.function<lto_get_error_message>(LTOFunction_GetErrorMessage)();
        return failureMark + std::string(text != nullptr ? text : "");
    }
    auto* const nameOf = lto.function<lto_module_get_symbol_name>(LTOFunction_ModuleGetSymbolName);
    auto* const attributesOf =
        lto.function<lto_module_get_symbol_attribute>(LTOFunction_ModuleGetSymbolAttribute);
    std::string list(1, listMark);
    const unsigned int count =
        lto.function<lto_module_get_num_symbols>(LTOFunction_ModuleGetNumSymbols)(module);
    for (unsigned int i = 0; i < count; ++i) {
        const char* name = nameOf(module, i);
        const lto_symbol_attributes attributes = attributesOf(module, i);
        if (isDefinedForOthers(attributes) && name != nullptr && *name != '\0') {
            list.append(name).push_back('\0');
        }
    }
    lto.function<lto_module_dispose>(LTOFunction_ModuleDispose)(module);
    return list;
}

bool LTOManager::addSymbols(const elfext::Section& section, SymbolNameList& names,
                            std::string& failure) {
    TOMEX_CHECK(m_Library != nullptr);
    // Not the size that the section states: types without contents state one as well.
    const elfext::Buffer& contents = section.getLoadedContents();
    const uint64_t size = contents.getSize();
    const char* fileName = section.getObjectModule()->getFileName();
    const platform::WorkAnswer answer =
        m_Worker.ask(fileName != nullptr ? fileName : "",
                     {reinterpret_cast<const char*>(contents.getData()), size}, limitsFor(size));
    if (answer.isWhole && answer.text.starts_with(listMark)) {
        addListed(std::string_view(answer.text).substr(1), names);
        return true;
    }
    // What the library says of a module that it dies of counts like what it says otherwise.
    const bool isMarked = answer.isWhole && answer.text.starts_with(failureMark);
    failure = "LTO Module Error: " + answer.text.substr(isMarked ? 1 : 0);
    return false;
}

} // namespace arlib
