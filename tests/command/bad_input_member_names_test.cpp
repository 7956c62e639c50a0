// Names that try to lead an extraction out of the current folder, and names that no file can have.
//
// A member's name is cut behind its last slash or backslash as soon as it is read, so whatever
// stands in an archive, the program only ever makes files in the folder where it runs.
#include "tests/command/bad_input_case.h"

#include <sys/stat.h>

namespace commandtest {
namespace {

using namespace std::string_literals;

// Extracts in the folder "work", beside which nothing may change.
class BadInputMemberName : public BadInputCase {
protected:
    BadInputMemberName() {
        folder.makeFolder("work/a");
        folder.makeFolder("work/name");
        file("outside.o", "outside");
        file("x", "x outside");
    }

    // An archive of one member that has this name in the name table.
    static std::string longNamed(const std::string& name) {
        BuiltMember member = {.contents = "contents", .rawName = padded("/0", 16)};
        return ArchiveBuilder().rawNameTable(name + "/\n").add(member).bytes();
    }
    static std::string shortNamed(const std::string& name) {
        BuiltMember member = {.contents = "contents", .rawName = padded(name + "/", 16)};
        return ArchiveBuilder().add(member).bytes();
    }

    CommandResult runIn(Words words) const {
        Command command = testsupport::tomex(folder, std::move(words));
        command.folder = folder.pathOf("work");
        return testsupport::run(command);
    }

    // The member is called `name`, and extracting it makes that file and no other.
    void extractedAs(const std::string& bytes, const std::string& name) const {
        folder.write("lib.a", bytes);
        EXPECT_TRUE(ended(runIn({"-t", "../lib.a"}), 0, name + "\n", ""));
        EXPECT_TRUE(ended(runIn({"-x", "../lib.a"}), 0, "", ""));
        Words expected = {"a", "name", name};
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(folder.entries("work"), expected);
        EXPECT_EQ(folder.read("work/" + name), "contents");
        nothingElse();
        folder.remove("work/" + name);
    }

    // Extracting it fails with that host text and makes nothing.
    void notExtracted(const std::string& bytes, const std::string& name,
                      const std::string& why) const {
        folder.write("lib.a", bytes);
        EXPECT_TRUE(ended(runIn({"-t", "../lib.a"}), 0, name + "\n", ""));
        EXPECT_TRUE(ended(runIn({"-x", "../lib.a"}), 1, "",
                          "Error: L6843E: Writing file '" + name + "' : " + why + "\n"));
        EXPECT_EQ(folder.entries("work"), (Words{"a", "name"}));
        nothingElse();
    }

    void nothingElse() const {
        EXPECT_EQ(folder.entries(), (Words{"lib.a", "outside.o", "work", "x"}));
        EXPECT_EQ(folder.read("outside.o"), "outside");
        EXPECT_EQ(folder.read("x"), "x outside");
        EXPECT_EQ(folder.entries("work/a"), Words{});
        EXPECT_EQ(folder.entries("work/name"), Words{});
    }
};

TEST_F(BadInputMemberName, FolderAbove) {
    extractedAs(longNamed("../x"), "x");
    extractedAs(longNamed("../outside.o"), "outside.o");
    extractedAs(longNamed("../../../../../../folder/outside.o"), "outside.o");
}

TEST_F(BadInputMemberName, FolderBelow) {
    extractedAs(longNamed("a/b"), "b");
    extractedAs(longNamed("a/../../x"), "x");
    extractedAs(longNamed("./x"), "x");
}

TEST_F(BadInputMemberName, AbsoluteName) {
    extractedAs(longNamed(folder.pathOf("outside.o")), "outside.o");
    extractedAs(longNamed("/x"), "x");
    extractedAs(longNamed("//x"), "x");
}

TEST_F(BadInputMemberName, Backslashes) {
    extractedAs(longNamed("\\x"), "x");
    extractedAs(longNamed("..\\x"), "x");
    extractedAs(longNamed("a\\b"), "b");
    extractedAs(longNamed("C:\\x"), "x");
    extractedAs(longNamed("\\\\server\\share\\x"), "x");
    extractedAs(longNamed("..\\../x"), "x");
    extractedAs(longNamed("../..\\x"), "x");
    extractedAs(shortNamed("\\x"), "x");
    extractedAs(shortNamed("..\\x"), "x");
    extractedAs(shortNamed("..\\..\\x"), "x");
}

TEST_F(BadInputMemberName, FoldersThemselves) {
    for (const std::string name : {".", ".."}) {
        notExtracted(shortNamed(name), name, "Is a directory");
        notExtracted(longNamed(name), name, "Is a directory");
        notExtracted(longNamed("a/" + name), name, "Is a directory");
        notExtracted(longNamed("\\" + name), name, "Is a directory");
        notExtracted(shortNamed("\\" + name), name, "Is a directory");
    }
    notExtracted(shortNamed("name"), "name", "Is a directory");
}

TEST_F(BadInputMemberName, NothingBehindTheLastSeparator) {
    for (const std::string name : {"a/", "/", "..//", "a\\", "../"}) {
        notExtracted(longNamed(name), "", "No such file or directory");
    }
    notExtracted(shortNamed("\\"), "", "No such file or directory");
    notExtracted(shortNamed("a\\"), "", "No such file or directory");
}

TEST_F(BadInputMemberName, EmptyNameIsNoFileThatExists) {
    folder.write("lib.a", ArchiveBuilder().add({.rawName = padded("nothing", 16)}).bytes());
    const std::string flaw = "Warning: L6974W: '../lib.a': malformed archive: " + headerAt(8) +
                             " has no '/' character in its name field\n";
    EXPECT_TRUE(ended(runIn({"-xC", "../lib.a"}), 1, "",
                      flaw + "Error: L6843E: Writing file '' : No such file or directory\n"));
    nothingElse();
}

TEST_F(BadInputMemberName, OtherMembersAreExtractedAllTheSame) {
    ArchiveBuilder builder;
    builder.add("a.o", "1").add("..", "2").add("b.o", "3").add("", "4").add("c.o", "5");
    folder.write("lib.a", builder.bytes());
    EXPECT_TRUE(ended(runIn({"-xv", "../lib.a"}), 1, "x - a.o\nx - b.o\nx - c.o\n",
                      "Error: L6843E: Writing file '..' : Is a directory\n"
                      "Error: L6843E: Writing file '' : No such file or directory\n"));
    EXPECT_EQ(folder.entries("work"), (Words{"a", "a.o", "b.o", "c.o", "name"}));
}

// Extracting writes through a link that the user has put there, but a name cannot make one up.
TEST_F(BadInputMemberName, SeparatorsAreCutBeforeAnythingIsMatched) {
    folder.write("lib.a", longNamed("deep/er/../x"));
    EXPECT_TRUE(ended(runIn({"-t", "../lib.a", "x"}), 0, "x\n", ""));
    EXPECT_TRUE(ended(runIn({"-t", "../lib.a", "other/x"}), 0, "x\n", ""));
    EXPECT_TRUE(
        ended(runIn({"-t", "../lib.a", "deep"}), 1, "", notPresent("Error", "deep", "../lib.a")));
}

TEST_F(BadInputMemberName, CutNameIsTheOneThatIsWritten) {
    folder.write("lib.a", longNamed("../../some/folder/x.o"));
    EXPECT_TRUE(ended(tomex({"-r", "lib.a", "x"}), 0, "", notElf("x")));
    EXPECT_EQ(archive().summary(),
              (Words{emptyTable(), "x.o 0 0 0 100644 8", added("x", 1000, 9)}));
}

TEST_F(BadInputMemberName, ControlCharactersArePrintedAsOctalNumbers) {
    const std::string name = "a\x01\x1b[31m\x7f\r.o";
    folder.write("lib.a", shortNamed(name));
    const std::string printed = "a\\001\\033[31m\\177\\015.o";
    EXPECT_TRUE(ended(runIn({"-t", "../lib.a"}), 0, printed + "\n", ""));
    EXPECT_TRUE(ended(runIn({"-pv", "../lib.a"}), 0, "\n<" + printed + ">\n\ncontents", ""));
    EXPECT_TRUE(ended(runIn({"-xv", "../lib.a"}), 0, "x - " + printed + "\n", ""));
    EXPECT_EQ(folder.read("work/" + name), "contents");
}

TEST_F(BadInputMemberName, EveryControlCharacter) {
    for (int code = 1; code <= 0x7f; code = code == 0x1f ? 0x7f : code + 1) {
        const char character = static_cast<char>(code);
        folder.write("lib.a", shortNamed("a"s + character + "b"));
        std::string printed = {'\\', static_cast<char>('0' + code / 64),
                               static_cast<char>('0' + code / 8 % 8),
                               static_cast<char>('0' + code % 8)};
        if (character == '\t' || character == '\n') {
            printed = character;
        }
        EXPECT_TRUE(ended(runIn({"-t", "../lib.a"}), 0, "a" + printed + "b\n", "")) << code;
    }
}

TEST_F(BadInputMemberName, ControlCharactersInMessages) {
    folder.write("lib.a", shortNamed("a\x07.o"));
    EXPECT_TRUE(
        ended(runIn({"-t", "../lib.a", "\x07"}), 1, "", notPresent("Error", "\\007", "../lib.a")));
    BuiltMember member = {.name = "\x08.o", .rawSize = padded("7", 10)};
    folder.write("lib.a", ArchiveBuilder().add(member).bytes());
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 1, "",
                      failed("Error reading member '\\010.o': archive member is at offset 68 and "
                             "has size 7 but archive file is only 68 bytes long")));
}

// A byte that promises more bytes of its character than the name has must not be believed.
TEST_F(BadInputMemberName, CharactersCutShort) {
    for (const char* bytes : {"\xc3", "\xe2\x82", "\xf0\x9f\x98", "\xf8", "\xfc", "\xff", "\x80"}) {
        folder.write(
            "lib.a",
            ArchiveBuilder().add("a.o", "1").add("b"s + bytes, "2").add("c.o", "3").bytes());
        for (const char* locale : {"C", "C.UTF-8"}) {
            Command command = testsupport::tomex(folder, {"-t", "lib.a"});
            command.environment["LC_ALL"] = locale;
            const CommandResult result = testsupport::run(command);
            EXPECT_TRUE(result.exitedWith(0)) << result;
            EXPECT_TRUE(result.output.starts_with("a.o\nb")) << result;
            EXPECT_TRUE(result.output.ends_with("c.o\n")) << result;
            EXPECT_EQ(result.error, "");
        }
        EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
        EXPECT_EQ(folder.read("b"s + bytes), "2");
    }
}

} // namespace
} // namespace commandtest
