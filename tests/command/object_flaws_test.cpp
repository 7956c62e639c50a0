// What the program says of members that are objects by their header and broken behind it.
//
// One flaw, one warning with the reader's sentence; the member is stored all the same, and the
// names of the others stand in the symbol table.
#include "tests/command/bad_input_case.h"
#include "tests/command/object_flaws.h"

namespace commandtest {
namespace {

using testsupport::ElfBuilder;
using testsupport::ElfFormat;
using testsupport::HeaderField;

struct FlawCase {
    const ObjectFlaw* flaw;
    ElfFormat format;
};

std::vector<FlawCase> allCases() {
    std::vector<FlawCase> cases;
    for (const auto* flaws : {&headerFlaws(), &linkFlaws(), &contentsFlaws()}) {
        for (const ObjectFlaw& flaw : *flaws) {
            for (const ElfFormat format : testsupport::allElfFormats) {
                cases.push_back({&flaw, format});
            }
        }
    }
    return cases;
}

std::string caseName(const testing::TestParamInfo<FlawCase>& info) {
    const ElfFormat format = info.param.format;
    return std::string(info.param.flaw->name) + (format.is64 ? "64" : "32") +
           (format.littleEndian ? "Little" : "Big");
}

std::string unreadableMember(size_t index, const std::string& why) {
    return warned("Unable to read symbols defined in archive member #" + std::to_string(index) +
                  " 'bad.o': " + why);
}

class ObjectFlawCase : public CommandCase {
protected:
    // An object that defines one name.
    static std::string soundObject(const std::string& name) {
        ElfBuilder builder;
        const auto text = static_cast<uint32_t>(builder.add({.name = ".text", .contents = "code"}));
        builder.addSymbols({{.name = name, .section = text}});
        return builder.bytes();
    }
    Words symbols() const {
        Words found;
        for (const testsupport::ParsedSymbol& symbol : archive().symbols) {
            found.push_back(symbol.name + " in " + symbol.member);
        }
        return found;
    }
    // What is left of a bad header: the object is refused for that reason.
    void refusedFor(const std::string& bytes, const std::string& sentence) const {
        file("bad.o", bytes);
        EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "bad.o"}), 0, "", unreadableMember(0, sentence)));
        EXPECT_EQ(symbols(), Words());
        folder.remove("lib.a");
    }
};

class ObjectFlaws : public ObjectFlawCase, public testing::WithParamInterface<FlawCase> {};

INSTANTIATE_TEST_SUITE_P(All, ObjectFlaws, testing::ValuesIn(allCases()), caseName);

TEST_P(ObjectFlaws, IsOneWarningAndCostsNoOtherMember) {
    std::string sentence;
    const std::string bytes = GetParam().flaw->spoil(
        testsupport::richElf(GetParam().format, GetParam().flaw->fileType), sentence);
    file("first.o", soundObject("first"));
    file("bad.o", bytes);
    file("last.o", soundObject("last"));
    EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "first.o", "bad.o", "last.o"}), 0, "",
                      unreadableMember(1, sentence)));
    EXPECT_EQ(symbols(), (Words{"first in first.o", "last in last.o"}));
    EXPECT_TRUE(contents("bad.o") == bytes);
}

// A byte order that is neither counts as big-endian while the header is read, so only a file in
// that order gets as far as this sentence.
TEST_F(ObjectFlawCase, UnknownByteOrder) {
    for (const bool is64 : {false, true}) {
        for (const uint64_t order : {0U, 3U, 0xFFU}) {
            ElfBuilder builder(ElfFormat{is64, false});
            refusedFor(builder.header(HeaderField::Data, order).bytes(),
                       "ELF file has invalid endianness code " + std::to_string(order) +
                           " (should be 1 or 2)");
        }
    }
    ElfBuilder little(ElfFormat{true, true});
    refusedFor(little.header(HeaderField::Data, 3).bytes(),
               "ELF file has unrecognised type code 256 (we handle types 1-4)");
}

// Byte 4 alone makes a file one of 64 bits; what it lacks shows when it is read.
TEST_F(ObjectFlawCase, SixtyFourBytesWithTheClassAndNothingElse) {
    std::string bytes(64, '\0');
    bytes[4] = 2;
    refusedFor(bytes, "ELF file has unrecognised type code 0 (we handle types 1-4)");
    bytes.resize(63);
    file("short", bytes);
    EXPECT_TRUE(ended(tomex({"-rc", "new.a", "short"}), 0, "", notElf("short", "new.a")));
}

TEST_F(ObjectFlawCase, EveryMachineOfTheToolChainIsTaken) {
    for (const bool is64 : {false, true}) {
        for (const uint64_t machine : {40U, 183U, 184U}) {
            ElfBuilder builder(ElfFormat{is64, true});
            builder.addSymbols({testsupport::reservedSymbol("absolute", 0xFFF1, 1)});
            file("a.o", builder.header(HeaderField::Machine, machine).bytes());
            EXPECT_TRUE(ended(tomex({"-rc", "lib.a", "a.o"}), 0, "", ""));
            EXPECT_EQ(symbols(), Words{"absolute in a.o"});
            folder.remove("lib.a");
        }
        for (const uint64_t machine : {0U, 39U, 41U, 182U, 185U, 0xFFFFU}) {
            refusedFor(
                ElfBuilder(ElfFormat{is64, true}).header(HeaderField::Machine, machine).bytes(),
                "ELF file has unsupported machine code " + std::to_string(machine) +
                    " (we only handle EM_QEL = 40)");
        }
    }
}

// A member of an archive that is made anew: its number counts the tables in front, and the file
// that could not be read to its end is the archive.
TEST_F(ObjectFlawCase, MemberOfAnArchive) {
    const std::string bytes = testsupport::richElf().bytes();
    folder.write("lib.a", ArchiveBuilder()
                              .add("first.o", soundObject("first"))
                              .add("bad.o", bytes.substr(0, bytes.size() - 1))
                              .symbol("first", 0)
                              .bytes());
    EXPECT_TRUE(ended(tomex({"-s", "lib.a"}), 0, "",
                      unreadableMember(2, "I/O error writing file 'lib.a': Unknown error -1")));
    EXPECT_EQ(symbols(), Words{"first in first.o"});
}

TEST_F(ObjectFlawCase, EachBadMemberIsToldOfInItsTurn) {
    const std::string other = ElfBuilder().header(HeaderField::Machine, 50).bytes();
    for (const char* name : {"a.o", "b.o"}) {
        file(name, other);
    }
    const auto line = [](const char* number, const char* name) {
        return warned(std::string("Unable to read symbols defined in archive member #") + number +
                      " '" + name +
                      "': ELF file has unsupported machine code 50 (we only handle EM_QEL = 40)");
    };
    EXPECT_TRUE(
        ended(tomex({"-rc", "lib.a", "a.o", "b.o"}), 0, "", line("0", "a.o") + line("1", "b.o")));
}

TEST_F(ObjectFlawCase, WarningCanBeMadeAnErrorAndBeLeftOut) {
    const std::string sentence =
        "Unable to read symbols defined in archive member #0 'bad.o': ELF file has unsupported "
        "version code 7 (we only handle version 1)";
    file("bad.o", ElfBuilder().header(HeaderField::Version, 7).bytes());
    EXPECT_TRUE(ended(tomex({"--diag_error=L6974", "-rc", "lib.a", "bad.o"}), 1, "",
                      warned(sentence, "Error")));
    EXPECT_EQ(names(), Words{"bad.o"}) << "the writer goes on";
    folder.remove("lib.a");
    EXPECT_TRUE(ended(tomex({"--diag_suppress=L6974", "-rc", "lib.a", "bad.o"}), 0, "", ""));
}

TEST_F(ObjectFlawCase, NobodyLooksWhereNoTableIsMade) {
    file("bad.o", ElfBuilder().header(HeaderField::Version, 7).bytes());
    EXPECT_TRUE(ended(tomex({"-rcn", "lib.a", "bad.o"}), 0, "", ""));
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, "bad.o\n", ""));
    EXPECT_TRUE(ended(tomex({"-x", "lib.a"}), 0, "", ""));
}

} // namespace
} // namespace commandtest
