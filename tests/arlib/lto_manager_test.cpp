// The names that modules of bitcode define, with the library of the host's LLVM.
//
// The compiler makes the modules, llvm-nm is the witness for what they define. How the manager
// takes each kind of library and each answer is tested with made libraries in
// tests/command/bitcode_library_test.cpp.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "arlib/interface/owned_region.h"
#include "arlib/interface/symbol_name_list.h"
#include "arlib/src/lto_manager.h"
#include "elfext/interface/object_module.h"
#include "tests/arlib/arlib_fixture.h"
#include "tests/support/bitcode.h"
#include "tests/support/lto_library.h"
#include "tests/support/retarget.h"

namespace arlibtest {
namespace {

using testsupport::compileBitcode;
using testsupport::definedInBitcode;

// Not the one object of the process, but bound and asked like it.
class OwnManager final : public arlib::LTOManager {};

bool isLibraryInMemory() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libLTO") != std::string::npos) {
            return true;
        }
    }
    return false;
}

class Bitcode : public ArlibTest {
protected:
    struct Answer {
        bool isGood = false;
        std::string failure;
        Names names;
    };

    static Answer symbolsOf(const std::string& bytes, uint32_t type = elfext::SHT_PROGBITS) {
        arlib::LTOManager& manager = arlib::LTOManager::instance();
        EXPECT_TRUE(manager.load()) << platform::dynamicLibraryFailure();
        elfext::ObjectModule module;
        module.setFileName("lib.a");
        elfext::Section* section = module.createSection(".llvm.lto", type, 0);
        if (!bytes.empty()) {
            section->setContents(bytes.data(), bytes.size());
        }
        return ask(manager, *section);
    }
    static Answer ask(arlib::LTOManager& manager, const elfext::Section& section) {
        const arlib::OwnedRegion region(1024, "test");
        arlib::SymbolNameList list(region.get());
        list.add("from the symbol table");
        Answer answer;
        answer.isGood = manager.addSymbols(section, list, answer.failure);
        EXPECT_EQ(list.get(0), "from the symbol table");
        for (uint32_t i = 1; i < list.getSize(); ++i) {
            answer.names.emplace_back(list.get(i));
        }
        EXPECT_TRUE(answer.isGood ? answer.failure.empty() : answer.names.empty());
        return answer;
    }

    Names namesOf(const std::string& bytes) {
        const Answer answer = symbolsOf(bytes);
        EXPECT_TRUE(answer.isGood) << answer.failure;
        return answer.names;
    }
    std::string failureOf(const std::string& bytes) {
        const Answer answer = symbolsOf(bytes);
        EXPECT_FALSE(answer.isGood);
        EXPECT_TRUE(answer.failure.starts_with("LTO Module Error: ")) << answer.failure;
        return answer.failure.substr(std::min<size_t>(answer.failure.size(), 18));
    }
    std::string richModule(const std::string& target = "x86_64",
                           const Names& flags = {"-O1", "-fcommon"}) const {
        return compileBitcode(folder, target, testsupport::richBitcodeSource(), flags);
    }
    static Names sorted(Names names) {
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(Bitcode, SectionsAreKnownByName) {
    using arlib::LTOManager;
    EXPECT_TRUE(LTOManager::isBitcodeSection(".llvm.lto"));
    for (const char* name : {"", ".llvm.lto.", ".llvm.lt", "llvm.lto", ".LLVM.LTO", ".llvm.lto ",
                             ".llvmbc", ".llvm.lto.1"}) {
        EXPECT_FALSE(LTOManager::isBitcodeSection(name)) << name;
    }
    EXPECT_FALSE(LTOManager::isBitcodeSection(nullptr));
}

TEST_F(Bitcode, ThereIsOneManager) {
    EXPECT_EQ(&arlib::LTOManager::instance(), &arlib::LTOManager::instance());
    EXPECT_STRNE(arlib::LTOManager::getLibraryName(), "");
}

TEST_F(Bitcode, AllFunctionsAreLookedUpInOrder) {
    Names names(std::begin(arlib::ltoFunctionNames), std::end(arlib::ltoFunctionNames));
    EXPECT_EQ(names, testsupport::ltoFunctions());
}

TEST_F(Bitcode, LoadingIsDoneOnce) {
    OwnManager manager;
    EXPECT_TRUE(manager.load()) << platform::dynamicLibraryFailure();
    EXPECT_TRUE(manager.load());
    EXPECT_TRUE(isLibraryInMemory());
}

TEST_F(Bitcode, DefinedAndExternalSymbolsAreListed) {
    const Names expected = {
        "alias_of_function",  "assembled", "common_data", "constant",        "data",
        "emitted_inline",     "function",  "hidden_data", "hidden_function", "protected_data",
        "protected_function", "text",      "thread_data", "weak_alias",      "weak_data",
        "weak_function",      "zeroed",
    };
    for (const Names& flags : {Names{"-O0", "-fcommon"}, Names{"-O2", "-fcommon"},
                               Names{"-O1", "-fno-common", "-g"}, Names{"-Os", "-fcommon"}}) {
        const std::string module = richModule("x86_64", flags);
        EXPECT_EQ(sorted(namesOf(module)), expected);
        EXPECT_EQ(sorted(definedInBitcode(folder, module)), expected);
    }
}

TEST_F(Bitcode, OfAllTargets) {
    for (const testsupport::GenericTarget& target : testsupport::genericTargets()) {
        SCOPED_TRACE(target.name);
        const std::string module = richModule(target.name);
        const Names names = namesOf(module);
        EXPECT_GT(names.size(), 15U);
        EXPECT_EQ(sorted(names), sorted(definedInBitcode(folder, module)));
    }
}

TEST_F(Bitcode, OfAnotherLanguage) {
    const std::string module = compileBitcode(folder, "x86_64", R"(
        template <class T> T twice(T x) { return x + x; }
        struct Shape { virtual ~Shape(); virtual int area() { return twice(2); } };
        Shape::~Shape() {}
        inline int counter() { static int count; return ++count; }
        namespace { int hidden_away() { return counter(); } }
        int use() { return hidden_away() + twice(1L); })",
                                              {"-xc++", "-O0"});
    const Names names = namesOf(module);
    EXPECT_EQ(sorted(names), sorted(definedInBitcode(folder, module)));
    for (const char* name : {"_Z3usev", "_ZTV5Shape", "_Z5twiceIlET_S0_", "_Z7counterv",
                             "_ZZ7countervE5count", "_ZN5ShapeD1Ev"}) {
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
    }
}

TEST_F(Bitcode, AModuleMayDefineNothing) {
    EXPECT_EQ(namesOf(compileBitcode(folder, "x86_64", "")), Names{});
    EXPECT_EQ(namesOf(compileBitcode(folder, "x86_64", "extern int x; static int* p = &x;")),
              Names{});
}

TEST_F(Bitcode, ManyModulesAndLargeOnes) {
    std::string source;
    for (int i = 0; i < 20000; ++i) {
        source += "int variable" + std::to_string(i) + " = 1;\n";
    }
    const std::string large = compileBitcode(folder, "x86_64", source);
    const std::string small = compileBitcode(folder, "x86_64", "int small = 1;");
    for (int i = 0; i < 3; ++i) {
        const Names names = namesOf(large);
        ASSERT_EQ(names.size(), 20000U);
        EXPECT_EQ(names.front(), "variable0");
        EXPECT_EQ(names.back(), "variable19999");
        EXPECT_EQ(namesOf(small), Names{"small"});
    }
}

TEST_F(Bitcode, WhatIsNoBitcodeIsToldInTheLibrarysWords) {
    const std::string notRecognised = "The file was not recognized as a valid object file";
    EXPECT_EQ(failureOf(""), notRecognised);
    EXPECT_EQ(failureOf("text"), notRecognised);
    EXPECT_NE(failureOf(std::string(1000, '\0')), "");
}

TEST_F(Bitcode, SectionsWithoutContentsAreEmpty) {
    elfext::ObjectModule module;
    module.setFileName("lib.a");
    elfext::Section* section = module.createSection(".llvm.lto", elfext::SHT_NOBITS, 0);
    section->setSize(uint64_t{1} << 40);
    arlib::LTOManager& manager = arlib::LTOManager::instance();
    ASSERT_TRUE(manager.load());
    const Answer answer = ask(manager, *section);
    EXPECT_FALSE(answer.isGood);
    EXPECT_EQ(answer.failure, "LTO Module Error: "
                              "The file was not recognized as a valid object file");
}

TEST_F(Bitcode, CutAnywhereItFails) {
    const std::string module = richModule();
    for (size_t size = 0; size < module.size(); size += 10) {
        EXPECT_NE(failureOf(module.substr(0, size)), "") << size;
    }
    EXPECT_GT(namesOf(module).size(), 15U) << "and whole it is well";
}

TEST_F(Bitcode, RandomBytesFail) {
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
        // Half of them begin like bitcode.
        std::string bytes = i % 2 == 0 ? "BC\xC0\xDE" : "";
        for (size_t size = random() % 3000; size > 0; --size) {
            bytes += static_cast<char>(random());
        }
        EXPECT_NE(failureOf(bytes), "") << i;
    }
}

// On many of these the library ends its process. Which, depends on its version.
TEST_F(Bitcode, SpoiltModulesFailOrAreRead) {
    const std::string module = richModule();
    const std::string sound = compileBitcode(folder, "x86_64", "int sound = 1;");
    std::mt19937 random(1);
    int failures = 0;
    for (int i = 0; i < 200; ++i) {
        std::string spoilt = module;
        for (size_t count = 1 + random() % 4; count > 0; --count) {
            spoilt[random() % spoilt.size()] = static_cast<char>(random());
        }
        const Answer answer = symbolsOf(spoilt);
        if (!answer.isGood) {
            ++failures;
            EXPECT_TRUE(answer.failure.starts_with("LTO Module Error: ")) << answer.failure;
            EXPECT_GT(answer.failure.size(), 18U);
            EXPECT_EQ(answer.failure.find('\n'), std::string::npos) << answer.failure;
        }
        if (i % 20 == 0) {
            EXPECT_EQ(namesOf(sound), Names{"sound"}) << "after " << i;
        }
    }
    EXPECT_GT(failures, 50);
}

} // namespace
} // namespace arlibtest
