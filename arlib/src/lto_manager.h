// Symbols that exist only in bitcode.
//
// An object may carry, in a section named ".llvm.lto", a module of LLVM bitcode that the linker
// will compile. What the module defines stands in no symbol table, and only LLVM can read bitcode;
// so its link-time optimisation library is asked. The library is large. It is bound when the first
// such section is met, and never for archives without one; it is never unloaded.
//
// The library ends its process on most damaged modules and spins on a few, so it reads them in a
// worker process (platform/interface/worker_process.h). The worker is the same program, with the
// library bound.
#pragma once

#include <string>
#include <string_view>

#include "arlib/src/lto_interface.h"
#include "platform/interface/dynamic_library.h"
#include "platform/interface/worker_process.h"

namespace elfext {
class Section;
}

namespace arlib {

class SymbolNameList;

class LTOManager {
public:
    LTOManager(const LTOManager&) = delete;
    LTOManager& operator=(const LTOManager&) = delete;
    virtual ~LTOManager() = default;

    // The one object, made when it is asked for first.
    static LTOManager& instance();

    // Binds the library unless that is done. False if it cannot be loaded or lacks a function; the
    // next call then tries all over again. See dynamicLibraryFailure() for the host's reason.
    bool load();

    // True for the name of sections that hold bitcode. The name may be null.
    static bool isBitcodeSection(const char* name);

    // Appends the names that the section's module defines for others, in the library's order. The
    // library must be bound, and the section's contents in memory. On false, `failure` is
    // "LTO Module Error: " with the library's text, and no names have been added.
    bool addSymbols(const elfext::Section& section, SymbolNameList& names, std::string& failure);

    // What is loaded: a path, or a name that the host looks for. Set by the build.
    static const char* getLibraryName();

protected:
    LTOManager();

private:
    static std::string listSymbols(std::string_view path, std::string_view contents);

    template <typename Function>
    Function* function(LTOFunction which) const {
        return reinterpret_cast<Function*>(m_Functions[which]);
    }

    bool m_LoadAttempted = false;
    platform::DynamicLibrary m_Library = nullptr; // null until every function was found
    platform::DynamicFunction m_Functions[LTOFunction_Count] = {};
    platform::WorkerProcess m_Worker;
};

} // namespace arlib
