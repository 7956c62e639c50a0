// What this library knows of LLVM's link-time optimisation library.
//
// The types and functions are those of LLVM's published C interface, under their own names; see
// "llvm-c/lto.h" in any release of LLVM, or https://llvm.org/doxygen/group__LLVMCLTO.html. They
// are declared here so that a build needs nothing of LLVM. All functions of the list must be there
// for a library to count as whole; types are given to those that are called.
#pragma once

#include <cstddef>
#include <cstdint>

namespace arlib {

// A module that the library has read.
using lto_module_t = struct LLVMOpaqueLTOModule*;

// How a symbol is defined and who sees it: one value of each group under its mask.
enum lto_symbol_attributes : uint32_t {
    LTO_SYMBOL_DEFINITION_MASK = 0x0700,
    LTO_SYMBOL_DEFINITION_REGULAR = 0x0100,
    LTO_SYMBOL_DEFINITION_TENTATIVE = 0x0200,
    LTO_SYMBOL_DEFINITION_WEAK = 0x0300,
    LTO_SYMBOL_DEFINITION_UNDEFINED = 0x0400,
    LTO_SYMBOL_DEFINITION_WEAKUNDEF = 0x0500,
    LTO_SYMBOL_SCOPE_MASK = 0x3800,
    LTO_SYMBOL_SCOPE_INTERNAL = 0x0800,
    LTO_SYMBOL_SCOPE_HIDDEN = 0x1000,
    LTO_SYMBOL_SCOPE_DEFAULT = 0x1800,
    LTO_SYMBOL_SCOPE_PROTECTED = 0x2000,
    LTO_SYMBOL_SCOPE_DEFAULT_CAN_BE_HIDDEN = 0x2800,
};

// The functions, in the order in which they are looked up. The order is required: the host's
// text names the first that is missing.
enum LTOFunction : uint32_t {
    LTOFunction_GetErrorMessage,
    LTOFunction_ModuleCreateInLocalContext,
    LTOFunction_ModuleCreateInCodegenContext,
    LTOFunction_ModuleDispose,
    LTOFunction_ModuleGetNumSymbols,
    LTOFunction_ModuleGetSymbolName,
    LTOFunction_ModuleGetSymbolAttribute,
    LTOFunction_CodegenSetDiagnosticHandler,
    LTOFunction_CodegenCreate,
    LTOFunction_CodegenDispose,
    LTOFunction_CodegenAddModule,
    LTOFunction_CodegenSetPicModel,
    LTOFunction_CodegenSetCpu,
    LTOFunction_CodegenAddMustPreserveSymbol,
    LTOFunction_CodegenCompile,
    LTOFunction_CodegenCompileToFile,
    LTOFunction_CodegenDebugOptions,
    LTOFunction_Count,
};

inline constexpr const char* ltoFunctionNames[LTOFunction_Count] = {
    "lto_get_error_message",
    "lto_module_create_in_local_context",
    "lto_module_create_in_codegen_context",
    "lto_module_dispose",
    "lto_module_get_num_symbols",
    "lto_module_get_symbol_name",
    "lto_module_get_symbol_attribute",
    "lto_codegen_set_diagnostic_handler",
    "lto_codegen_create",
    "lto_codegen_dispose",
    "lto_codegen_add_module",
    "lto_codegen_set_pic_model",
    "lto_codegen_set_cpu",
    "lto_codegen_add_must_preserve_symbol",
    "lto_codegen_compile",
    "lto_codegen_compile_to_file",
    "lto_codegen_debug_options",
};

// Of the functions that are called.

// The text for the last failure; the library's.
using lto_get_error_message = const char*();
// Reads a module from `length` bytes, which must outlive it. `path` is for messages. Null on
// failure; otherwise the module must be given back to lto_module_dispose.
using lto_module_create_in_local_context = lto_module_t(const void* bytes, size_t length,
                                                        const char* path);
using lto_module_dispose = void(lto_module_t module);
// Symbols count from 0. Names live as long as the module.
using lto_module_get_num_symbols = unsigned int(lto_module_t module);
using lto_module_get_symbol_name = const char*(lto_module_t module, unsigned int index);
using lto_module_get_symbol_attribute = lto_symbol_attributes(lto_module_t module,
                                                              unsigned int index);

} // namespace arlib
