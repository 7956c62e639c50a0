// What a library's name promises of its members: --libattrmap and its map.
#include "tests/command/variant_case.h"

namespace commandtest {
namespace {

class VariantsLibrary : public VariantCase {
protected:
    VariantsLibrary() {
        object("a.o", {"f"}, {"$QEL_ISAv4$IEEE1$STKCKD"});
        object("b.o", {"f"}, {"$QEL_ISAv4$E$IEEE1$STKCKD"});
    }

    // What is said of both members in a library that promises not to check the stack.
    static std::string clashes(const std::string& library) {
        const std::string flaw = "Warning: L6974W: '" + library + "': malformed archive: ";
        const std::string ending = " are incompatible with library attributes\n";
        return flaw +
               "Common attributes of minor variant group beginning with archive member #0 'a.o'" +
               ending + flaw + "Attributes of minor variant member object 'a.o'" + ending + flaw +
               "Attributes of minor variant member object 'b.o'" + ending +
               "Warning: L6874W: Minor variants of archive member 'a.o' include no base "
               "variant\n";
    }
    void make(const std::string& library, const Words& options, const std::string& error) const {
        Words words = options;
        words.insert(words.end(), {"-rc", library, "a.o", "b.o"});
        if (folder.exists(library)) {
            folder.remove(library);
        }
        EXPECT_TRUE(ended(tomex(words), 0, "", error)) << library;
    }
    // With this text as the map.
    void makeByMap(const std::string& library, const std::string& map,
                   const std::string& error) const {
        file("a.map", map);
        make(library, {"--libattrmap=a.map"}, error);
    }

    const Words plain = {"f in a.o", "f$$BuildAttributes$$QEL_ISAv3$E$IEEE1 in b.o"};
    const Words unchecked = {"f$$BuildAttributes$$QEL_ISAv3$IEEE1$~STKCKD in a.o",
                             "f$$BuildAttributes$$QEL_ISAv3$E$IEEE1$~STKCKD in b.o"};
};

TEST_F(VariantsLibrary, WithoutTheOptionNamesPromiseNothing) {
    for (const char* library : {"c_a__u.l", "c_tv__u.l", "lib.a"}) {
        make(library, {}, "");
        EXPECT_EQ(symbols(library), plain);
    }
}

TEST_F(VariantsLibrary, WithoutItsFileTheBuiltInRowsCount) {
    for (const char* map : {"--libattrmap=none.map", "--libattrmap=."}) {
        make("c_a__s.l", {map}, "");
        EXPECT_EQ(symbols("c_a__s.l"), plain) << "what it promises, they have";
        make("c_a__u.l", {map}, clashes("c_a__u.l"));
        EXPECT_EQ(symbols("c_a__u.l"), unchecked);
        make("c_4.l", {map}, "");
        EXPECT_EQ(symbols("c_4.l"), plain);
    }
}

TEST_F(VariantsLibrary, PromiseThatMembersDoNotStateLeavesNoBase) {
    object("a.o", {"f"}, {"$QEL_ISAv3$IEEE1"});
    object("b.o", {"f"}, {"$QEL_ISAv3$E$IEEE1"});
    const std::string noBase =
        "Warning: L6874W: Minor variants of archive member 'a.o' include no base variant\n";
    make("c_a.l", {"--libattrmap=none.map"}, noBase);
    EXPECT_EQ(symbols("c_a.l"), (Words{"f$$BuildAttributes$$QEL_ISAv4$IEEE1 in a.o",
                                       "f$$BuildAttributes$$QEL_ISAv4$E$IEEE1 in b.o"}));
}

TEST_F(VariantsLibrary, WithVTheGroupIsListed) {
    EXPECT_TRUE(ended(tomex({"--libattrmap=none.map", "-rcv", "c_a__u.l", "a.o", "b.o"}), 0,
                      "a - a.o\na - b.o\n",
                      clashes("c_a__u.l") + " * a.o [0] : a.o\n * a.o [1] : b.o\n"));
}

TEST_F(VariantsLibrary, MapIsReadFromItsFile) {
    const std::string row = "lib* $IEEE1$~STKCKD\n";
    makeByMap("lib.a", row, clashes("lib.a"));
    makeByMap("lib.a", "# the map\n\n" + row, clashes("lib.a"));
    makeByMap("lib.a", "#" + row, "");
    makeByMap("lib.a", " " + row, "");
    makeByMap("lib.a", "lib*\n$IEEE1$~STKCKD\n", "");
    makeByMap("lib.a", "lib.? $IEEE1$~STKCKD alias and more\n", clashes("lib.a"));
    makeByMap("lib.a", "LIB.A\t$IEEE1$~stkckd", clashes("lib.a"));
    makeByMap("lib.a", "bil* $IEEE1$~STKCKD\n", "");
    makeByMap("lib.a", "lib* $IEEE1\n*.a $IEEE1$~STKCKD\n", clashes("lib.a"));
    makeByMap("c_a__u.l", "lib* $IEEE1\n", "");
}

TEST_F(VariantsLibrary, EmptyMapPromisesNothing) {
    for (const char* map : {"", "\n\n", "# nothing\n"}) {
        makeByMap("c_a__u.l", map, "");
        EXPECT_EQ(symbols("c_a__u.l"), plain);
    }
}

TEST_F(VariantsLibrary, LongLinesAreReadInPieces) {
    const std::string row = "lib* $IEEE1$~STKCKD\n";
    makeByMap("lib.a", std::string(4095, 'x') + row, clashes("lib.a"));
    makeByMap("lib.a", std::string(4094, 'x') + row, "");
    makeByMap("lib.a", std::string(4096, 'x') + row, "");
    makeByMap("lib.a", "#" + std::string(4094, 'x') + row, clashes("lib.a"));
    makeByMap("lib.a", "#" + std::string(4094, 'x') + " " + row, "");
    makeByMap("lib.a", "lib*" + std::string(5000, ' ') + "$IEEE1$~STKCKD\n", "");
}

TEST_F(VariantsLibrary, NameIsThePathFromItsLastBackslashOn) {
    const std::string row = "c_* $IEEE1$~STKCKD\n";
    makeByMap("c_4.l", row, clashes("c_4.l"));
    makeByMap("x\\c_4.l", row, "");
    makeByMap("x\\c_4.l", "*" + row, clashes("x\\c_4.l"));
    makeByMap("x\\c_4.l", "\\" + row, clashes("x\\c_4.l"));
    folder.makeFolder("x");
    makeByMap("x/c_4.l", row, "");
    makeByMap("x/c_4.l", "x/" + row, clashes("x/c_4.l"));
    makeByMap("c_x\\4.l", row, "");
}

TEST_F(VariantsLibrary, OnlyGroupsAreChecked) {
    file("a.map", "* $IEEE1$~STKCKD\n");
    EXPECT_TRUE(ended(tomex({"--libattrmap=a.map", "-rc", "lib.a", "a.o"}), 0, "", ""));
    EXPECT_EQ(symbols(), Words{"f in a.o"});
    make("lib.a", {}, "");
    EXPECT_TRUE(ended(tomex({"--libattrmap=a.map", "-t", "lib.a"}), 0, "a.o\nb.o\n", ""))
        << "a run that reads";
    EXPECT_EQ(symbols(), plain);
    EXPECT_TRUE(ended(tomex({"--libattrmap=a.map", "-s", "-n", "lib.a"}), 0, "", ""));
}

TEST_F(VariantsLibrary, ClashesCanBeErrors) {
    file("a.map", "* $IEEE1$~STKCKD\n");
    const CommandResult result =
        tomex({"--libattrmap=a.map", "--diag_error=6974", "-rc", "lib.a", "a.o", "b.o"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_EQ(symbols(), unchecked) << "it was being written";
}

} // namespace
} // namespace commandtest
