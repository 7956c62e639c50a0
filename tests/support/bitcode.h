// Modules of LLVM bitcode, made by the host's compiler, and objects that carry them.
//
// The linker's optimiser wants bitcode in a section named ".llvm.lto". What a module defines is
// asked of `llvm-nm`, which reads bitcode by itself. Other versions of the tools will do as well,
// as long as the library that the program loads is not older than the compiler.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/elf_builder.h"
#include "tests/support/scratch_folder.h"

namespace testsupport {

inline constexpr std::string_view bitcodeSectionName = ".llvm.lto";

// Compiles a source for a target, which is a compiler's --target. Throws std::runtime_error with
// the compiler's words if it fails. `flags` are further options; "-xc++" makes it C++.
std::string compileBitcode(const ScratchFolder& folder, const std::string& target,
                           std::string_view source, const std::vector<std::string>& flags = {});

// The names of symbols that are defined and not local, in the module's order, as the witness has
// them. Throws std::runtime_error if it does not understand the module.
std::vector<std::string> definedInBitcode(const ScratchFolder& folder, std::string_view bitcode);

// A source with every kind of symbol that a C module can have.
std::string_view richBitcodeSource();

// Where the bitcode stands in an object.
enum class BitcodePlace { BeforeSymbols, BehindSymbols };

// An object with one section for each of these modules. `names` are defined in its symbol table.
std::string objectWithBitcode(const std::vector<std::string>& modules,
                              const std::vector<std::string>& names = {}, ElfFormat format = {},
                              BitcodePlace place = BitcodePlace::BehindSymbols);

} // namespace testsupport
