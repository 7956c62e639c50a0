#include "tests/support/bitcode.h"

#include <sstream>
#include <stdexcept>

#include "tests/support/witness.h"

namespace testsupport {

namespace {

constexpr std::string_view richSource = R"(
int data = 1;
const int constant = 2;
int zeroed;
int common_data;
static int internal_data = 3;
extern int undefined_data;
extern int weak_undefined __attribute__((weak));
__attribute__((weak)) int weak_data = 4;
__attribute__((visibility("hidden"))) int hidden_data = 5;
__attribute__((visibility("protected"))) int protected_data = 6;
__thread int thread_data = 7;
const char* text = "a private constant";
int undefined_function(int);
static __attribute__((noinline)) int internal_function(int x) { return x + internal_data++; }
inline int inline_function(int x) { return x; }
extern inline int emitted_inline(int x) { return x + 1; }
int function(int x) {
    int sum = internal_function(x) + inline_function(x) + undefined_function(undefined_data);
    return &weak_undefined ? sum + weak_undefined : sum;
}
__attribute__((weak)) int weak_function(int x) { return x; }
__attribute__((visibility("hidden"))) int hidden_function(int x) { return x; }
__attribute__((visibility("protected"))) int protected_function(int x) { return x; }
int alias_of_function(int) __attribute__((alias("function")));
int weak_alias(int) __attribute__((weak, alias("function")));
__asm__(".globl assembled\nassembled:\n.long 0\n");
__asm__("assembled_local:\n.long 0\n");
)";

CommandResult runWitness(const ScratchFolder& folder, const char* name,
                         const std::vector<std::string>& arguments) {
    const Witness witness(name);
    if (!witness.present()) {
        throw std::runtime_error(witness.absence());
    }
    const CommandResult result = witness.run(folder, arguments);
    if (!result.exitedWith(0)) {
        throw std::runtime_error(result.describe());
    }
    return result;
}

} // namespace

std::string_view richBitcodeSource() {
    return richSource;
}

std::string compileBitcode(const ScratchFolder& folder, const std::string& target,
                           std::string_view source, const std::vector<std::string>& flags) {
    folder.write("module.c", source);
    // Options go first: one that names the language counts for the files behind it.
    std::vector<std::string> arguments = flags;
    arguments.insert(arguments.end(),
                     {"--target=" + target, "-emit-llvm", "-c", "module.c", "-o", "module.bc"});
    runWitness(folder, "clang", arguments);
    std::string bitcode = folder.read("module.bc");
    folder.remove("module.c");
    folder.remove("module.bc");
    return bitcode;
}

std::vector<std::string> definedInBitcode(const ScratchFolder& folder, std::string_view bitcode) {
    folder.write("module.bc", bitcode);
    const CommandResult result =
        runWitness(folder, "llvm-nm", {"-P", "-p", "-g", "--defined-only", "module.bc"});
    folder.remove("module.bc");
    std::vector<std::string> names;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        names.push_back(line.substr(0, line.find(' ')));
    }
    return names;
}

std::string objectWithBitcode(const std::vector<std::string>& modules,
                              const std::vector<std::string>& names, ElfFormat format,
                              BitcodePlace place) {
    ElfBuilder builder(format);
    const auto text = static_cast<uint32_t>(builder.add({.name = ".text", .contents = "code"}));
    const auto addModules = [&] {
        for (const std::string& module : modules) {
            builder.add({.name = std::string(bitcodeSectionName), .contents = module});
        }
    };
    std::vector<BuiltElfSymbol> symbols;
    for (const std::string& name : names) {
        symbols.push_back({.name = name, .section = text});
    }
    if (place == BitcodePlace::BeforeSymbols) {
        addModules();
    }
    builder.addSymbols(symbols);
    if (place == BitcodePlace::BehindSymbols) {
        addModules();
    }
    return builder.bytes();
}

} // namespace testsupport
