// The symbol table of a library of objects: what stands in it, and the options that change that.
#include "tests/command/command_case.h"
#include "tests/support/rich_elf.h"

namespace commandtest {
namespace {

using testsupport::BuiltElfSymbol;
using testsupport::ElfBuilder;

using namespace testsupport::elf;

class ObjectSymbols : public CommandCase {
protected:
    // An object that defines these names.
    static std::string object(const Words& names) {
        ElfBuilder builder;
        const auto text = static_cast<uint32_t>(builder.add({.name = ".text", .contents = "code"}));
        std::vector<BuiltElfSymbol> symbols;
        for (const std::string& name : names) {
            symbols.push_back({.name = name, .section = text});
        }
        builder.addSymbols(symbols);
        return builder.bytes();
    }
    Words symbols(const std::string& name = "lib.a") const {
        Words found;
        for (const testsupport::ParsedSymbol& symbol : archive(name).symbols) {
            found.push_back(symbol.name + " in " + symbol.member);
        }
        return found;
    }
    void runs(const Words& words, const std::string& error = "") const {
        EXPECT_TRUE(ended(tomex(words), 0, "", error));
    }
};

TEST_F(ObjectSymbols, AreListedInTheOrderOfMembersAndTables) {
    file("z.o", object({"zeta", "eta"}));
    file("a.o", object({"theta", "alpha"}));
    runs({"-r", "lib.a", "z.o", "a.o"}, creating());
    EXPECT_EQ(symbols(), (Words{"zeta in z.o", "eta in z.o", "theta in a.o", "alpha in a.o"}));
}

TEST_F(ObjectSymbols, FollowTheirMembers) {
    file("a.o", object({"alpha"}));
    file("b.o", object({"beta"}));
    file("a_name_too_long_for_a_header.o", object({"long"}));
    runs({"-rc", "lib.a", "a.o", "b.o", "a_name_too_long_for_a_header.o"});
    runs({"-m", "lib.a", "a.o"});
    EXPECT_EQ(symbols(),
              (Words{"beta in b.o", "long in a_name_too_long_for_a_header.o", "alpha in a.o"}));
    file("b.o", object({"gamma", "delta"}), 2000);
    runs({"-r", "lib.a", "b.o"});
    EXPECT_EQ(symbols(), (Words{"gamma in b.o", "delta in b.o",
                                "long in a_name_too_long_for_a_header.o", "alpha in a.o"}));
    runs({"-d", "lib.a", "b.o", "a.o"});
    EXPECT_EQ(symbols(), Words{"long in a_name_too_long_for_a_header.o"});
}

TEST_F(ObjectSymbols, OfMergedLibraries) {
    file("a.o", object({"alpha"}));
    file("b.o", object({"beta"}));
    runs({"-rc", "one.a", "a.o"});
    runs({"-rc", "two.a", "b.o"});
    runs({"-rc", "lib.a", "one.a", "two.a"});
    EXPECT_EQ(symbols(), (Words{"alpha in a.o", "beta in b.o"}));
}

TEST_F(ObjectSymbols, OfALibraryWithoutATable) {
    file("a.o", object({"alpha"}));
    runs({"-rcn", "lib.a", "a.o"});
    EXPECT_EQ(archive().table("/"), nullptr);
    runs({"-s", "lib.a"});
    EXPECT_EQ(symbols(), Words{"alpha in a.o"});
    runs({"-sn", "lib.a"});
    EXPECT_EQ(archive().table("/"), nullptr);
}

TEST_F(ObjectSymbols, OfEveryFormatAndKind) {
    Words expected;
    Words words = {"-rc", "lib.a"};
    for (const testsupport::ElfFormat format : testsupport::allElfFormats) {
        for (const uint16_t type : {ET_REL, ET_EXEC, ET_DYN}) {
            const std::string name =
                "rich" + std::to_string(words.size()) + (format.is64 ? "w" : "n");
            file(name, testsupport::richElf(format, type).bytes());
            words.push_back(name);
            for (const std::string& symbol : testsupport::richNames()) {
                expected.push_back(symbol + " in " + name);
            }
        }
    }
    runs(words, "Warning: L6876W: Minor variants of archive member 'rich2w' include multiple base "
                "variants\n");
    EXPECT_EQ(symbols(), expected);
}

TEST_F(ObjectSymbols, OfDebugSectionsAreListedOnRequest) {
    file("a.o", testsupport::richElf().bytes());
    const auto listed = [&](const Words& options) {
        Words words = options;
        words.insert(words.end(), {"-rc", "lib.a", "a.o"});
        runs(words);
        Words found;
        for (const testsupport::ParsedSymbol& symbol : archive().symbols) {
            found.push_back(symbol.name);
        }
        folder.remove("lib.a");
        return found;
    };
    EXPECT_EQ(listed({}), testsupport::richNames());
    EXPECT_EQ(listed({"--debug_symbols"}), testsupport::richNames(true));
    EXPECT_EQ(listed({"--debug_symbols", "--no_debug_symbols"}), testsupport::richNames());
    EXPECT_EQ(listed({"--no_debug_symbols", "--debug_symbols"}), testsupport::richNames(true));
}

TEST_F(ObjectSymbols, AreListedOnceOnRequest) {
    file("a.o", object({"same", "alpha", "same"}));
    file("b.o", object({"beta", "same"}));
    const Words all = {"same in a.o", "alpha in a.o", "same in a.o", "beta in b.o", "same in b.o"};
    const Words unique = {"same in a.o", "alpha in a.o", "beta in b.o"};
    runs({"-rc", "lib.a", "a.o", "b.o"});
    EXPECT_EQ(symbols(), all);
    runs({"--unique_symbols", "-s", "lib.a"});
    EXPECT_EQ(symbols(), unique);
    runs({"--unique_symbols", "--no_unique_symbols", "-s", "lib.a"});
    EXPECT_EQ(symbols(), all);
    runs({"--unique_symbols", "-m", "lib.a", "a.o"});
    EXPECT_EQ(symbols(), (Words{"beta in b.o", "same in b.o", "alpha in a.o"}));
}

TEST_F(ObjectSymbols, OtherFilesAmongTheObjectsAreRemarkedOnce) {
    file("a.o", object({"alpha"}));
    file("readme", "a text");
    file("notes", "another text");
    runs({"-rc", "lib.a", "a.o", "readme", "notes"}, notElf("readme"));
    EXPECT_EQ(symbols(), Words{"alpha in a.o"});
    EXPECT_EQ(names(), (Words{"a.o", "readme", "notes"}));
    folder.remove("lib.a");
    runs({"-rc", "lib.a", "a.o"});
}

TEST_F(ObjectSymbols, BrokenObjectIsAnObject) {
    file("bad.o", object({"alpha"}).substr(0, 70));
    const CommandResult result = tomex({"-rc", "lib.a", "bad.o"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(result.error.find("non-ELF"), std::string::npos) << result;
    EXPECT_NE(result.error.find("Unable to read symbols"), std::string::npos) << result;
}

TEST_F(ObjectSymbols, TableIsTheSameHoweverTheLibraryCameAbout) {
    file("a.o", object({"alpha"}));
    file("b.o", object({"beta"}));
    runs({"-rc", "lib.a", "a.o", "b.o"});
    runs({"-rc", "other.a", "a.o"});
    runs({"-r", "other.a", "b.o"});
    EXPECT_TRUE(folder.read("lib.a") == folder.read("other.a"));
    runs({"-s", "lib.a"});
    EXPECT_TRUE(folder.read("lib.a") == folder.read("other.a"));
}

TEST_F(ObjectSymbols, LongAndStrangeNames) {
    const Words strange = {std::string(100'000, 'n'), " ", "a b", "\xFF\x80", "$$", "x@@V1", "\n"};
    file("a.o", object(strange));
    runs({"-rc", "lib.a", "a.o"});
    Words found;
    for (const testsupport::ParsedSymbol& symbol : archive().symbols) {
        found.push_back(symbol.name);
    }
    EXPECT_EQ(found, strange);
}

} // namespace
} // namespace commandtest
