// How the program takes the link-time library, with libraries made for it.
//
// The program under test is the usual one, built for a library without a folder in its name, so
// that the host looks for it where a test says. See tests/support/lto_library.h for what the made
// libraries understand.
#include "tests/command/bitcode_case.h"
#include "tests/support/lto_library.h"

#include <cstring>

namespace commandtest {
namespace {

constexpr const char* libraryFile = "libtomex_made_lto.so";

class BitcodeLibrary : public BitcodeCase {
protected:
    Command command(const Words& words) const {
        Command made = testsupport::tomex(folder, words);
        made.program = TOMEX_MADE_LTO_PROGRAM;
        made.environment["LD_LIBRARY_PATH"] = library.path();
        made.environment["TOMEX_LTO_LOG"] = library.pathOf("log");
        return made;
    }
    CommandResult with(const Words& words) const { return testsupport::run(command(words)); }
    void runs(const Words& words, const std::string& error = "") const {
        EXPECT_TRUE(ended(with(words), 0, "", error));
    }
    void makeLibrary(const Words& without = {}) const {
        testsupport::makeLtoLibrary(library, libraryFile, without);
    }

    // An object whose module is that text, in an archive of its own.
    void add(const std::string& name, const std::string& text) const {
        file(name, objectWithBitcode({text}, {"elf"}));
    }
    Words symbolsOf(const std::string& text, const std::string& error = "") const {
        add("a.o", text);
        runs({"-rc", "--create", "lib.a", "a.o"}, error);
        return symbols();
    }
    std::string notLoaded(size_t index, const std::string& name) const {
        return unreadableMember(index, name, "Failed to load LTO library");
    }

    const ScratchFolder library;
};

TEST_F(BitcodeLibrary, ThatIsNotThereIsAWarningForEachMember) {
    add("a.o", "1900 in_module");
    file("b.o", objectWithBitcode({}, {"beta"}));
    add("c.o", "1900 in_module");
    runs({"-rc", "lib.a", "a.o", "b.o", "c.o"}, notLoaded(0, "a.o") + notLoaded(2, "c.o"));
    EXPECT_EQ(symbols(), Words{"beta in b.o"});
    EXPECT_EQ(names(), (Words{"a.o", "b.o", "c.o"}));
    library.write(libraryFile, "no library");
    runs({"-s", "lib.a"}, notLoaded(1, "a.o") + notLoaded(3, "c.o"));
}

TEST_F(BitcodeLibrary, ThatLacksAFunctionIsNotTaken) {
    add("a.o", "1900 in_module");
    makeLibrary();
    runs({"-rc", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), (Words{"elf in a.o", "in_module in a.o"}));
    for (const std::string& function : testsupport::ltoFunctions()) {
        SCOPED_TRACE(function);
        makeLibrary({function});
        runs({"-rc", "--create", "lib.a", "a.o"}, notLoaded(0, "a.o"));
        EXPECT_EQ(symbols(), Words());
        EXPECT_EQ(names(), Words{"a.o"});
    }
}

// The library comes while the program is at work. At one of its calls it must be late for the first
// member and in time for the second.
TEST_F(BitcodeLibrary, IsLookedForAgainAtTheNextMember) {
    makeLibrary();
    const std::string hidden = library.pathOf("hidden");
    const std::string shown = library.pathOf(libraryFile);
    const std::string late = notLoaded(0, "a.o");
    add("a.o", "1900 in_module");
    add("b.o", "1900 in_module" + std::string(200000, '\n'));
    const auto rebuild = [&](uint64_t call) {
        library.write("hidden", library.read(libraryFile));
        library.remove(libraryFile);
        Command made = command({"-rc", "--create", "lib.a", "a.o", "b.o"});
        made.faults = {"*:nth=" + std::to_string(call) + ":replace=" + shown + "," + hidden};
        const CommandResult result = testsupport::run(made);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        const bool isMoved = !library.exists("hidden");
        if (!isMoved) {
            library.write(libraryFile, library.read("hidden"));
        }
        return std::pair(isMoved, result.error);
    };
    size_t foundLate = 0;
    for (uint64_t call = 1;; ++call) {
        const auto [isMoved, error] = rebuild(call);
        if (!isMoved) {
            break;
        }
        if (error == late) {
            ++foundLate;
            EXPECT_EQ(symbols(), (Words{"elf in b.o", "in_module in b.o"}));
        }
    }
    EXPECT_GT(foundLate, 0U);
}

TEST_F(BitcodeLibrary, KindOfDefinitionAndScopeDecide) {
    makeLibrary();
    std::string text;
    Words expected = {"elf in a.o"};
    // All values of both fields, with the other bits clear and set.
    for (const uint32_t others : {0U, 0xC0FFU}) {
        for (uint32_t definition = 0; definition < 8; ++definition) {
            for (uint32_t scope = 0; scope < 8; ++scope) {
                char line[64];
                std::snprintf(line, sizeof line, "%x d%u_s%u_%x\n",
                              others | definition << 8 | scope << 11, definition, scope, others);
                text += line;
                const bool isUndefined = definition == 4 || definition == 5;
                const bool isInternal = scope == 1;
                if (!isUndefined && !isInternal) {
                    expected.push_back(std::string(std::strchr(line, ' ') + 1));
                    expected.back().pop_back();
                    expected.back() += " in a.o";
                }
            }
        }
    }
    EXPECT_EQ(symbolsOf(text), expected);
    EXPECT_EQ(expected.size(), 1U + 2 * 6 * 7);
}

TEST_F(BitcodeLibrary, SymbolsWithoutANameAreLeftOut) {
    makeLibrary();
    EXPECT_EQ(symbolsOf("1900 first\n1900\n1900 \n1900 last"),
              (Words{"elf in a.o", "first in a.o", "last in a.o"}));
}

TEST_F(BitcodeLibrary, IsCalledInOrderAndForNothingElse) {
    makeLibrary();
    EXPECT_EQ(symbolsOf("1900 one\n500 two\n"), (Words{"elf in a.o", "one in a.o"}));
    EXPECT_EQ(library.read("log"), "create 17\ncount 0\nname 0\nattribute 0\nname 1\n"
                                   "attribute 1\ndispose 0\n");
    library.remove("log");
    symbolsOf("!fail on purpose", badModule(0, "a.o", "on purpose"));
    EXPECT_EQ(library.read("log"), "create 16\nerror 0\n");
}

TEST_F(BitcodeLibrary, IsToldTheFile) {
    makeLibrary();
    add("a.o", "!path");
    runs({"-rc", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), (Words{"elf in a.o", "a.o in a.o"}));
    runs({"-s", "lib.a"});
    EXPECT_EQ(symbols(), (Words{"elf in a.o", "lib.a in a.o"}));
}

TEST_F(BitcodeLibrary, ItsTextIsTold) {
    makeLibrary();
    EXPECT_EQ(symbolsOf("!fail no reason", badModule(0, "a.o", "no reason")), Words());
    EXPECT_EQ(symbolsOf("!fail %s%n\\n", badModule(0, "a.o", "%s%n\\n")), Words());
    EXPECT_EQ(symbolsOf("!silent", badModule(0, "a.o", "")), Words());
}

TEST_F(BitcodeLibrary, WhatItPrintsIsNotShown) {
    makeLibrary();
    EXPECT_EQ(symbolsOf("!say something\n1900 name"), (Words{"elf in a.o", "name in a.o"}));
}

TEST_F(BitcodeLibrary, ItMayEndItsProcess) {
    makeLibrary();
    add("die.o", "!die of this");
    add("sound.o", "1900 sound");
    add("crash.o", "!crash");
    add("exit.o", "!exit");
    add("fill.o", "!fill");
    add("last.o", "1900 last");
    runs({"-rc", "lib.a", "die.o", "sound.o", "crash.o", "exit.o", "fill.o", "last.o"},
         badModule(0, "die.o", "of this") + badModule(2, "crash.o", ::strsignal(SIGSEGV)) +
             badModule(3, "exit.o", std::strerror(EIO)) +
             badModule(4, "fill.o", "all memory is used"));
    EXPECT_EQ(symbols(),
              (Words{"elf in sound.o", "sound in sound.o", "elf in last.o", "last in last.o"}));
}

TEST_F(BitcodeLibrary, AModuleIsReadAsIfItWereTheFirst) {
    makeLibrary();
    add("a.o", "!second\n1900 a");
    add("b.o", "!second\n1900 b");
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), (Words{"elf in a.o", "a in a.o", "elf in b.o", "b in b.o"}));
}

} // namespace
} // namespace commandtest
