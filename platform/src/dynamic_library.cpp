#include "platform/interface/dynamic_library.h"

#include <string>

#include <dlfcn.h>

namespace platform {
namespace {

std::string& lastFailure() {
    static std::string text;
    return text;
}

void noteFailure() {
    const char* text = ::dlerror();
    lastFailure() = text != nullptr ? text : "";
}

} // namespace

DynamicLibrary loadDynamicLibrary(const char* name) {
    // Bound at once, so that a library that lacks something of its own fails here and not in the
    // middle of a call; and for itself alone, so that its names meet none of the program's.
    DynamicLibrary library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        noteFailure();
    }
    return library;
}

DynamicFunction findDynamicFunction(DynamicLibrary library, const char* name) {
    auto function = reinterpret_cast<DynamicFunction>(::dlsym(library, name));
    if (function == nullptr) {
        noteFailure();
    }
    return function;
}

const char* dynamicLibraryFailure() {
    return lastFailure().c_str();
}

} // namespace platform
