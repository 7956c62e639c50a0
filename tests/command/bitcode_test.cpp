// Libraries of objects whose symbols stand in bitcode, with the library of the host's LLVM.
//
// The compiler makes the modules, and llvm-nm says what they define.
#include "tests/command/bitcode_case.h"

#include <random>
#include <sstream>

#include "tests/support/retarget.h"

namespace commandtest {
namespace {

using testsupport::BitcodePlace;
using testsupport::ElfFormat;
using testsupport::GenericTarget;

class BitcodeMembers : public BitcodeCase {
protected:
    void runs(const Words& words, const std::string& error = "") const {
        EXPECT_TRUE(ended(tomex(words), 0, "", error));
    }

    // The files that the program's loader opens in a run, as the loader tells it.
    std::string loadedBy(const Words& words) const {
        const ScratchFolder elsewhere;
        Command command = testsupport::tomex(folder, words);
        command.environment["LD_DEBUG"] = "files";
        command.environment["LD_DEBUG_OUTPUT"] = elsewhere.pathOf("loader");
        EXPECT_TRUE(ended(testsupport::run(command), 0, "", ""));
        std::string told;
        for (const std::string& entry : elsewhere.entries()) {
            told += elsewhere.read(entry);
        }
        EXPECT_NE(told.find("libc.so"), std::string::npos) << "the loader says nothing";
        return told;
    }
    bool loadsTheLibrary(const Words& words) const {
        return loadedBy(words).find("libLTO") != std::string::npos;
    }

    // Members made of these modules one after the other, each with one symbol of its own outside
    // them, and a sound member between. All modules are damaged; gives the standard error stream.
    std::string tell(const Words& modules) const {
        const Words sound = {"sound"};
        // The sound members are alike, which is worth a warning that is not asked for here.
        Words words = {"--diag_suppress=6876", "-rc", "lib.a"};
        Words expected;
        for (size_t i = 0; i < modules.size(); ++i) {
            const std::string number = std::to_string(i);
            file("bad" + number + ".o", objectWithBitcode({modules[i]}, {"elf" + number}));
            words.push_back("bad" + number + ".o");
            if (i % 50 == 0) {
                file("good" + number + ".o",
                     objectWithBitcode({module("int in_module = 1;")}, {"elf"}));
                words.push_back("good" + number + ".o");
                expected = joined(expected, in("good" + number + ".o", {"elf", "in_module"}));
            }
        }
        const CommandResult result = tomex(words);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(symbols(), expected);
        EXPECT_EQ(archive().plainMembers().size(), words.size() - 3);
        return result.error;
    }
    // One line a damaged member, in order, each with a text of the library's.
    static void expectOneWarningEach(const std::string& told, size_t count) {
        std::istringstream lines(told);
        size_t found = 0;
        for (std::string line; std::getline(lines, line); ++found) {
            const std::string member = " 'bad" + std::to_string(found) + ".o': LTO Module Error: ";
            const size_t text = line.find(member);
            EXPECT_TRUE(line.starts_with("Warning: L6974W: ")) << line;
            EXPECT_NE(text, std::string::npos) << line << " is not about" << member;
            EXPECT_LT(text + member.size(), line.size()) << line;
        }
        EXPECT_EQ(found, count) << told;
    }
};

TEST_F(BitcodeMembers, TheTableListsWhatIsDefinedAndExternal) {
    const std::string bitcode = richModule();
    const Words defined = definedIn(bitcode);
    EXPECT_GT(defined.size(), 15U);
    file("a.o", objectWithBitcode({bitcode}));
    runs({"-rc", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), in("a.o", defined));
}

TEST_F(BitcodeMembers, SymbolsOfTheObjectComeFirstWhereverTheModuleStands) {
    const std::string bitcode = module("int two = 2; int one(void) { return two; }");
    for (const BitcodePlace place : {BitcodePlace::BeforeSymbols, BitcodePlace::BehindSymbols}) {
        file("a.o", objectWithBitcode({bitcode}, {"zeta", "alpha"}, {}, place));
        runs({"-rc", "--create", "lib.a", "a.o"});
        EXPECT_EQ(symbols(), in("a.o", joined({"zeta", "alpha"}, definedIn(bitcode))));
    }
}

TEST_F(BitcodeMembers, OfAllFormatsAndTargets) {
    Words words = {"-rc", "lib.a"};
    Words expected;
    for (const GenericTarget& target : testsupport::genericTargets()) {
        const std::string bitcode = richModule(target.name);
        file(target.name + ".o", objectWithBitcode({bitcode}, {target.name}, target.format));
        words.push_back(target.name + ".o");
        expected =
            joined(expected, in(target.name + ".o", joined({target.name}, definedIn(bitcode))));
    }
    runs(words);
    EXPECT_EQ(symbols(), expected);
}

TEST_F(BitcodeMembers, ANameMayStandInBoth) {
    const std::string bitcode = module("int twice = 2; int once = 1;");
    file("a.o", objectWithBitcode({bitcode}, {"twice"}));
    file("b.o", objectWithBitcode({bitcode}));
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), (Words{"twice in a.o", "twice in a.o", "once in a.o", "twice in b.o",
                                "once in b.o"}));
    runs({"-s", "--unique_symbols", "lib.a"});
    EXPECT_EQ(symbols(), (Words{"twice in a.o", "once in a.o"}));
}

TEST_F(BitcodeMembers, TheTableFollowsItsMembers) {
    file("a.o", objectWithBitcode({module("int a1, a2;")}));
    file("b.o", objectWithBitcode({module("int b1;")}, {"b0"}));
    runs({"-rc", "lib.a", "a.o", "b.o"});
    runs({"-m", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), (Words{"b0 in b.o", "b1 in b.o", "a1 in a.o", "a2 in a.o"}));
    file("b.o", objectWithBitcode({module("int new;")}), 2000);
    runs({"-r", "lib.a", "b.o"});
    EXPECT_EQ(symbols(), (Words{"new in b.o", "a1 in a.o", "a2 in a.o"}));
    runs({"-rc", "other.a", "lib.a"});
    EXPECT_EQ(symbols("other.a"), symbols());
    runs({"-d", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), Words{"new in b.o"});
    runs({"-sn", "lib.a"});
    runs({"-s", "lib.a"});
    EXPECT_EQ(symbols(), Words{"new in b.o"});
}

TEST_F(BitcodeMembers, TwoModulesInAMemberAreTooMany) {
    const std::string bitcode = module("int in_module = 1;");
    for (const size_t count : {2U, 5U}) {
        file("a.o", objectWithBitcode(Words(count, bitcode), {"elf"}));
        file("b.o", objectWithBitcode({bitcode}, {"elf"}));
        runs({"-rc", "--create", "lib.a", "a.o", "b.o"},
             unreadableMember(0, "a.o", "Found multiple LTO Bitcode sections."));
        EXPECT_EQ(symbols(), (Words{"elf in b.o", "in_module in b.o"}));
        EXPECT_EQ(names(), (Words{"a.o", "b.o"}));
    }
}

TEST_F(BitcodeMembers, TheWarningCanBeMadeAnError) {
    file("a.o", objectWithBitcode({"text"}));
    const CommandResult result = tomex({"-rc", "--diag_error=6974", "lib.a", "a.o"});
    EXPECT_EQ(result.status, 1) << result;
    runs({"-rc", "--diag_suppress=6974", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), Words());
}

TEST_F(BitcodeMembers, EmptyOrOtherContentsAreToldInTheLibrarysWords) {
    const std::string text = "The file was not recognized as a valid object file";
    file("empty.o", objectWithBitcode({""}, {"elf"}));
    file("text.o", objectWithBitcode({"some text"}, {"elf"}));
    runs({"-rc", "lib.a", "empty.o", "text.o"},
         badModule(0, "empty.o", text) + badModule(1, "text.o", text));
    EXPECT_EQ(symbols(), Words());
    EXPECT_EQ(names(), (Words{"empty.o", "text.o"}));
}

// Of a type that has a size and no bytes, and of the type that has no meaning.
TEST_F(BitcodeMembers, SectionsWithoutContentsAreEmpty) {
    for (const uint32_t type : {testsupport::elf::SHT_NOBITS, testsupport::elf::SHT_NULL}) {
        testsupport::ElfBuilder builder;
        const size_t section = builder.add({.name = ".llvm.lto", .type = type});
        builder.section(section).raw[testsupport::SectionField::Size] = uint64_t{1} << 30;
        builder.addSymbols({});
        file("a.o", builder.bytes());
        const std::string text = "The file was not recognized as a valid object file";
        runs({"-rc", "--create", "lib.a", "a.o"}, badModule(0, "a.o", text));
    }
}

TEST_F(BitcodeMembers, CutAtEveryTenthByte) {
    const std::string bitcode = richModule();
    Words modules;
    for (size_t size = 0; size < bitcode.size(); size += 10) {
        modules.push_back(bitcode.substr(0, size));
    }
    EXPECT_GT(modules.size(), 200U);
    expectOneWarningEach(tell(modules), modules.size());
}

TEST_F(BitcodeMembers, RandomBytes) {
    std::mt19937 random(7);
    Words modules;
    for (int i = 0; i < 100; ++i) {
        // Half of them begin like bitcode.
        std::string bytes = i % 2 == 0 ? "BC\xC0\xDE" : "";
        for (size_t size = 1 + random() % 3000; size > 0; --size) {
            bytes += static_cast<char>(random());
        }
        modules.push_back(bytes);
    }
    expectOneWarningEach(tell(modules), modules.size());
}

// What is left of a module with a few wrong bytes, on which the library may well end its process.
TEST_F(BitcodeMembers, SpoiltModulesCostOnlyTheirOwnMember) {
    const std::string bitcode = richModule();
    std::mt19937 random(3);
    // A module that is still whole makes its member one more build of the sound one beside it.
    Words words = {"--diag_suppress=6876", "-rc", "lib.a"};
    for (int i = 0; i < 150; ++i) {
        std::string spoilt = bitcode;
        for (int k = 0; k < 3; ++k) {
            spoilt[random() % spoilt.size()] = static_cast<char>(random());
        }
        const std::string number = std::to_string(i);
        file("bad" + number + ".o", objectWithBitcode({spoilt}, {"elf" + number}));
        file("good" + number + ".o", objectWithBitcode({bitcode}, {"elf" + number}));
        words.push_back("bad" + number + ".o");
        words.push_back("good" + number + ".o");
    }
    const CommandResult result = tomex(words);
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_NE(result.error, "") << "none has failed";
    const Words found = symbols();
    Words good;
    for (const std::string& name : found) {
        if (name.find(" in good") != std::string::npos) {
            good.push_back(name);
        }
    }
    EXPECT_EQ(good.size(), 150 * (1 + definedIn(bitcode).size()));
    size_t warnings = 0;
    std::istringstream lines(result.error);
    for (std::string line; std::getline(lines, line); ++warnings) {
        EXPECT_NE(line.find("': LTO Module Error: "), std::string::npos) << line;
        EXPECT_EQ(line.find("'good"), std::string::npos) << line;
    }
    EXPECT_LE(warnings, 150U);
}

TEST_F(BitcodeMembers, TheLibraryIsLoadedOnlyForThem) {
    file("plain.o", objectWithBitcode({}, {"plain"}));
    file("text", "text");
    file("lto.o", objectWithBitcode({module("int in_module = 1;")}));
    testsupport::ElfBuilder builder;
    builder.add({.name = ".llvm.lto.x", .contents = "x"});
    builder.add({.name = ".llvmbc", .contents = "x"});
    builder.addSymbols({});
    file("similar.o", builder.bytes());
    EXPECT_FALSE(loadsTheLibrary({"-rc", "plain.a", "plain.o", "similar.o"}));
    EXPECT_FALSE(loadsTheLibrary({"-s", "plain.a"}));
    EXPECT_FALSE(loadsTheLibrary({"-d", "plain.a", "similar.o"}));
    EXPECT_FALSE(loadsTheLibrary({"-rcn", "lto.a", "lto.o"})) << "no table is made";
    EXPECT_TRUE(loadsTheLibrary({"-s", "lto.a"}));
    EXPECT_TRUE(loadsTheLibrary({"-r", "plain.a", "lto.o"}));
    EXPECT_FALSE(loadsTheLibrary({"-x", "lto.a"}));
}

// An object that states how it was built, and names in bitcode beside those of its symbol table.
std::string builtModule(const std::string& bitcode, const std::string& decoration) {
    testsupport::ElfBuilder builder;
    const auto text = static_cast<uint32_t>(builder.add({.name = ".text", .contents = "code"}));
    builder.add({.name = std::string(testsupport::bitcodeSectionName), .contents = bitcode});
    testsupport::BuiltElfSymbol marker =
        testsupport::reservedSymbol("BuildAttributes$" + decoration, testsupport::elf::SHN_ABS);
    marker.binding = testsupport::elf::STB_LOCAL;
    builder.addSymbols({marker, {.name = "elf", .section = text}});
    return builder.bytes();
}

TEST_F(BitcodeMembers, NamesInBitcodeMakeVariantsToo) {
    const std::string bitcode = module("int one = 1; int two = 2;");
    file("a.o", builtModule(bitcode, "$QEL_ISAv5$IEEE1"));
    file("b.o", builtModule(bitcode, "$QEL_ISAv5$E$IEEE1"));
    // The names of all of them, elsewhere: it is the names that count.
    file("c.o", objectWithBitcode({module("int two = 2; int elf = 3;")}, {"one"}));
    runs({"-rc", "lib.a", "a.o", "b.o"});
    const std::string suffix = "$$BuildAttributes$$QEL_ISAv3$E$IEEE1";
    EXPECT_EQ(symbols(), joined(in("a.o", {"elf", "one", "two"}),
                                in("b.o", {"elf" + suffix, "one" + suffix, "two" + suffix})));
    runs({"-r", "lib.a", "c.o"},
         "Warning: L6874W: Minor variants of archive member 'a.o' include no base variant\n");
}

TEST_F(BitcodeMembers, ThatDifferInBitcodeAloneAreNoVariants) {
    file("a.o", builtModule(module("int one = 1; int two = 2;"), "$QEL_ISAv5$IEEE1"));
    file("b.o", builtModule(module("int one = 1; int other = 2;"), "$QEL_ISAv5$E$IEEE1"));
    file("c.o", builtModule(module("int one = 1;"), "$QEL_ISAv5$N$IEEE1"));
    runs({"-rc", "lib.a", "a.o", "b.o", "c.o"});
    EXPECT_EQ(symbols(),
              joined(joined(in("a.o", {"elf", "one", "two"}), in("b.o", {"elf", "one", "other"})),
                     in("c.o", {"elf", "one"})));
}

} // namespace
} // namespace commandtest
