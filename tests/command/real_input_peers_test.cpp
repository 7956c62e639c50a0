// Archives that other archivers make, in all the kinds that they make, and archives of ours that
// they read: names of every length, empty and odd contents, and the dialects of the format that put
// names where this program does not look for them.
#include "tests/command/real_input_case.h"

#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

using testsupport::ArchiveRules;

// Files with names around the lengths that matter and contents of odd, even and no size.
const std::vector<std::pair<std::string, std::string>> inputs = {
    {"a.o", "a"},
    {"empty.o", ""},
    {"thirteen_13.o", "even"},
    {"fourteen__14.o", "odds!"},
    {"fifteen___15__o", "15"},
    {"sixteen___16___o", "sixteen"},
    {"seventeen_17____o", "17"},
    {"with a blank.o", "blank"},
    {"with a blank in a long name.o", "blanks"},
    {"a_very_" + std::string(180, 'l') + "_name.o", std::string(5001, 'v')},
    {"UPPER.O", "upper"},
    {"noextension", "\n"},
    {".hidden", "`\n`\n"},
};

class RealInputPeers : public RealInputCase {
protected:
    RealInputPeers() {
        for (const auto& [name, bytes] : inputs) {
            file(name, bytes, 1500000000);
            names.push_back(name);
            allNames += name + "\n";
            allBytes += bytes;
        }
    }

    Words withFiles(Words words) const {
        words.insert(words.end(), names.begin(), names.end());
        return words;
    }
    void makes(const Witness& witness, const Words& words) const {
        const CommandResult result = witness.run(folder, withFiles(words));
        EXPECT_TRUE(result.exitedWith(0)) << result;
    }

    // "lib.a" is read as what it is, to the last field and byte.
    void isRead() const {
        const ParsedArchive parsed =
            testsupport::parseArchive(folder.read("lib.a"), ArchiveRules::AnyTool);
        ASSERT_EQ(parsed.error, "");
        EXPECT_EQ(parsed.names(), names);
        EXPECT_EQ(prints({"-t", "lib.a"}), allNames);
        EXPECT_EQ(prints({"-p", "lib.a"}), allBytes);
        std::string details;
        for (const ParsedMember& member : parsed.plainMembers()) {
            details += detailedLine(member);
        }
        EXPECT_EQ(prints({"-tv", "lib.a"}), details);
        EXPECT_EQ(prints(withFiles({"-p", "lib.a"})), allBytes);
        extracts();
        const ParsedArchive after = rewritten();
        EXPECT_EQ(after.names(), names);
    }

    const std::string& bytesOf(size_t index) const { return inputs.at(index).second; }

    Words names;
    std::string allNames;
    std::string allBytes;

private:
    void extracts() const {
        folder.makeFolder("out");
        Command command = testsupport::tomex(folder, {"-x", "../lib.a"});
        command.folder = folder.pathOf("out");
        EXPECT_TRUE(ended(testsupport::run(command), 0, "", ""));
        for (const auto& [name, bytes] : inputs) {
            EXPECT_EQ(folder.read("out/" + name), bytes) << name;
        }
        folder.remove("out");
    }
    // Moving a member to where it stands would leave the tables alone, so it is moved away first.
    ParsedArchive rewritten() const {
        EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "", ""));
        EXPECT_EQ(prints({"-t", "lib.a"}), allNames);
        EXPECT_TRUE(ended(tomex({"-m", "lib.a", "a.o"}), 0, "", ""));
        EXPECT_TRUE(ended(tomex({"-m", "-b", "empty.o", "lib.a", "a.o"}), 0, "", ""));
        return archive();
    }
};

// --- ours, read by others ------------------------------------------------------------------------

TEST_F(RealInputPeers, OthersReadWhatIsMadeHere) {
    EXPECT_TRUE(ended(tomex(withFiles({"-rc", "lib.a"})), 0, "", notElf("a.o")));
    EXPECT_EQ(archive().names(), names);
    for (const Witness* witness : {&ar, &llvmAr}) {
        if (!present(*witness)) {
            continue;
        }
        EXPECT_EQ(says(*witness, {"t", "lib.a"}), allNames);
        EXPECT_EQ(says(*witness, {"p", "lib.a"}), allBytes);
        for (const auto& [name, bytes] : inputs) {
            EXPECT_EQ(says(*witness, {"p", "lib.a", name}), bytes) << name;
        }
        const std::string details = says(*witness, {"tv", "lib.a"});
        EXPECT_EQ(std::count(details.begin(), details.end(), '\n'),
                  static_cast<ptrdiff_t>(names.size()));
        EXPECT_NE(details.find("Jul 14 02:40 2017 a.o\n"), std::string::npos) << details;
    }
}

TEST_F(RealInputPeers, OthersEditWhatIsMadeHere) {
    for (const Witness* witness : {&ar, &llvmAr}) {
        if (!present(*witness)) {
            continue;
        }
        folder.write("lib.a", "!<arch>\n");
        EXPECT_TRUE(ended(tomex(withFiles({"-r", "lib.a"})), 0, "", notElf("a.o")));
        says(*witness, {"d", "lib.a", "seventeen_17____o"});
        Words left = names;
        left.erase(std::find(left.begin(), left.end(), "seventeen_17____o"));
        EXPECT_EQ(prints({"-t", "lib.a"}), listed(left));
    }
}

TEST_F(RealInputPeers, SymbolsMakeNoDifferenceToOthers) {
    for (const Words& options : std::vector<Words>{{"-rcn", "lib.a"}, {"-rcs", "lib.a"}}) {
        EXPECT_TRUE(tomex(withFiles(options)).exitedWith(0));
        for (const Witness* witness : {&ar, &llvmAr}) {
            if (present(*witness)) {
                EXPECT_EQ(says(*witness, {"t", "lib.a"}), allNames);
                EXPECT_EQ(says(*witness, {"p", "lib.a"}), allBytes);
            }
        }
        folder.remove("lib.a");
    }
}

// --- others', read here --------------------------------------------------------------------------

TEST_F(RealInputPeers, MadeByAr) {
    if (!present(ar)) {
        return;
    }
    for (const char* operation : {"rc", "rcD", "rcU", "rcS", "rcs", "qc", "qcS"}) {
        SCOPED_TRACE(operation);
        makes(ar, {operation, "lib.a"});
        isRead();
        folder.remove("lib.a");
    }
}

TEST_F(RealInputPeers, MadeByLlvmAr) {
    if (!present(llvmAr)) {
        return;
    }
    for (const char* operation : {"rc", "rcD", "rcU", "rcS", "rcs", "qc"}) {
        SCOPED_TRACE(operation);
        makes(llvmAr, {"--format=gnu", operation, "lib.a"});
        isRead();
        folder.remove("lib.a");
    }
}

TEST_F(RealInputPeers, NamesThatStandTwice) {
    for (const Witness* witness : {&ar, &llvmAr}) {
        if (!present(*witness)) {
            continue;
        }
        file("sub/a.o", "another");
        says(*witness, {"qc", "lib.a", "a.o", "seventeen_17____o"});
        says(*witness, {"q", "lib.a", "sub/a.o", "seventeen_17____o"});
        EXPECT_EQ(prints({"-t", "lib.a"}), "a.o\nseventeen_17____o\na.o\nseventeen_17____o\n");
        EXPECT_EQ(prints({"-p", "lib.a", "a.o"}), "aanother");
        EXPECT_EQ(prints({"-p", "lib.a", "s*"}), "1717");
        EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "", ""));
        EXPECT_EQ(says(*witness, {"t", "lib.a"}), prints({"-t", "lib.a"}));
        // The names are written anew as soon as members change: then each name has its own place.
        EXPECT_TRUE(ended(tomex({"-m", "lib.a", "a.o"}), 0, "", ""));
        EXPECT_EQ(archive().names(),
                  (Words{"seventeen_17____o", "a.o", "seventeen_17____o", "a.o"}));
        EXPECT_EQ(says(*witness, {"p", "lib.a"}), "17another17a");
        folder.remove("lib.a");
    }
}

TEST_F(RealInputPeers, TableOfSymbolsOfRealObjects) {
    const Witness compiler{"gcc"};
    if (!present(compiler) || !present(ar)) {
        return;
    }
    folder.write("one.c", "int one_symbol(void) { return 1; }\nint other_symbol = 2;\n");
    folder.write("two.c", "int two_symbol(void) { return 3; }\n");
    says(compiler, {"-c", "one.c", "two.c"});
    for (const Witness* witness : {&ar, &llvmAr}) {
        if (!present(*witness)) {
            continue;
        }
        says(*witness, {"rcs", "lib.a", "one.o", "two.o"});
        ASSERT_EQ(
            testsupport::parseArchive(folder.read("lib.a"), ArchiveRules::AnyTool).symbols.size(),
            3U);
        EXPECT_EQ(prints({"-t", "lib.a"}), "one.o\ntwo.o\n");
        EXPECT_EQ(prints({"-p", "lib.a", "two.o"}), folder.read("two.o"));
        folder.remove("lib.a");
    }
}

TEST_F(RealInputPeers, ThinArchivesAreNoArchives) {
    for (const Words& options : std::vector<Words>{{"rcT", "thin.a"}, {"rc", "--thin", "thin.a"}}) {
        const Witness& witness = options.size() == 2 ? ar : llvmAr;
        if (!present(witness)) {
            continue;
        }
        makes(witness, options);
        EXPECT_TRUE(ended(tomex({"-t", "thin.a"}), 1, "",
                          "Error: L6826E: 'thin.a' not in archive format\n"));
        folder.remove("thin.a");
    }
}

// --- other dialects ------------------------------------------------------------------------------

// Names in front of the contents: "#1/" and a length in the name field. Read as a name with
// something behind its slash, so the members have no names, and their contents begin with them.
TEST_F(RealInputPeers, NamesInFrontOfTheContents) {
    if (!present(llvmAr)) {
        return;
    }
    for (const char* format : {"--format=bsd", "--format=darwin"}) {
        SCOPED_TRACE(format);
        says(llvmAr, {format, "rcS", "lib.a", "a.o", "seventeen_17____o"});
        const std::string bytes = folder.read("lib.a");
        std::string flaws;
        std::string lines;
        std::string contents;
        for (size_t offset = 8; offset < bytes.size();) {
            const std::string field = bytes.substr(offset, 16);
            ASSERT_EQ(field.substr(0, 3), "#1/");
            flaws += warned(headerAt(offset) + " has a trailing non-space character after the '/' "
                                               "character in its name field");
            lines += "\n";
            const size_t size = std::stoul(bytes.substr(offset + 48, 10));
            contents += bytes.substr(offset + 60, size);
            offset += 60 + size + size % 2;
        }
        EXPECT_EQ(lines, "\n\n");
        EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, lines, flaws));
        EXPECT_TRUE(ended(tomex({"-p", "lib.a"}), 0, contents, flaws));
        EXPECT_NE(contents.find("seventeen_17____o"), std::string::npos);
        folder.remove("lib.a");
    }
}

// Two symbol tables in front, and so the name table stands third, where it is none.
TEST_F(RealInputPeers, TwoSymbolTables) {
    const std::string noTable = " contains an index into the long name table, but this archive has "
                                "no long name table";
    BuiltMember second = {.contents = std::string(8, '\0'), .rawName = padded("/", 16)};
    BuiltMember table = {.contents = std::string("seventeen_17____o\0", 18),
                         .rawName = padded("//", 16)};
    BuiltMember member = {.contents = "17", .rawName = padded("/0", 16)};
    ArchiveBuilder builder;
    builder.withSymbolTable().add(second).add(table).add("a.o", "a").add(member);
    folder.write("lib.a", builder.bytes());
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "\n\na.o\n\n",
                      warned(headerAt(builder.offsetOf(3)) + noTable)));
}

// The same tool's archives for another object format.
TEST_F(RealInputPeers, MadeByLlvmLib) {
    const Witness llvmLib{"llvm-lib"};
    const Witness compiler{"clang"};
    if (!present(llvmLib) || !present(compiler)) {
        return;
    }
    folder.write("short.c", "int in_short(void) { return 1; }\n");
    folder.write("a_long_member_name.c", "int in_long(void) { return 2; }\n");
    says(compiler, {"-c", "--target=x86_64-pc-windows-msvc", "short.c", "a_long_member_name.c"});
    says(llvmLib, {"/out:lib.a", "short.o", "a_long_member_name.o"});
    for (const std::string name : {"short.o", "a_long_member_name.o"}) {
        EXPECT_EQ(prints({"-t", "lib.a", name}), name + "\n");
        EXPECT_TRUE(prints({"-p", "lib.a", name}) == folder.read(name));
    }
    EXPECT_EQ(prints({"-t", "lib.a"}), says(llvmAr, {"t", "lib.a"}));
}

} // namespace
} // namespace commandtest
