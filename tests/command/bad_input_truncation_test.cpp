// An archive that ends too early, at every byte there is, and the padding byte.
//
// Cut between two members, an archive is whole again; only symbols may be left whose member is
// gone. Everywhere else it is an error, which tells where the cut is: in the magic or the padding,
// in a header, or in contents.
#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

using testsupport::ParsedMember;
using testsupport::ParsedSymbol;

// What a run on the first `length` bytes of an archive must do.
struct Expectation {
    int status = 0;
    std::string output;
    std::string error;
};

class BadInputTruncation : public BadInputCase {
protected:
    BadInputTruncation() {
        ArchiveBuilder builder;
        builder.add({.name = "a.o", .contents = "abc", .date = 1000, .uid = 10, .gid = 20})
            .add({.name = "a_long_member_name_.o", .contents = "defgh"})
            .add({.name = "even.o", .contents = "ijkl"})
            .add({.name = "empty.o"})
            .symbol("one", 0)
            .symbol("four", 3);
        whole = builder.bytes();
        parsed = testsupport::parseArchive(whole);
    }

    Expectation expected(size_t length) const {
        if (length < testsupport::archiveMagic.size()) {
            return {1, "", unreadable()};
        }
        Expectation result;
        for (const ParsedMember& member : parsed.members) {
            if (length == member.headerOffset) {
                break;
            }
            if (const std::string error = cutIn(member, length); !error.empty()) {
                return {1, "", error};
            }
            result.output += member.auxiliary ? "" : member.name + "\n";
        }
        result.error = symbolsWithoutMember(length);
        return result;
    }

    std::string whole;
    ParsedArchive parsed;

private:
    static std::string cutIn(const ParsedMember& member, size_t length) {
        const uint64_t contents = member.headerOffset + testsupport::memberHeaderSize;
        const uint64_t end = contents + member.size;
        if (length < contents) {
            return failed("End of file in the middle of archive member header starting at offset " +
                          std::to_string(member.headerOffset));
        }
        if (length < end) {
            return failed("Error reading member '" + (member.auxiliary ? "" : member.name) +
                          "': archive member is at offset " + std::to_string(contents) +
                          " and has size " + std::to_string(member.size) +
                          " but archive file is only " + std::to_string(length) + " bytes long");
        }
        return length == end && member.size % 2 == 1 ? unreadable() : "";
    }

    std::string symbolsWithoutMember(size_t length) const {
        std::string lines;
        size_t index = 0;
        for (const ParsedSymbol& symbol : parsed.symbols) {
            if (length > parsed.members[0].headerOffset && length <= symbol.headerOffset) {
                lines += warned(
                    "Archive symbol table says symbol #" + std::to_string(index) + " '" +
                    symbol.name + "' is defined in the archive member starting at offset " +
                    std::to_string(symbol.headerOffset) + " but no archive member starts there");
            }
            ++index;
        }
        return lines;
    }
};

TEST_F(BadInputTruncation, TheArchiveHasEverythingThatCanBeCut) {
    ASSERT_TRUE(parsed.ok()) << parsed.error;
    ASSERT_EQ(parsed.members.size(), 6U);
    EXPECT_EQ(parsed.table("/")->size % 2, 1U);
    EXPECT_EQ(parsed.table("//")->size % 2, 1U);
    ASSERT_EQ(parsed.symbols.size(), 2U);
    EXPECT_EQ(expected(whole.size()).error, "");
}

TEST_F(BadInputTruncation, ReadingAtEveryByte) {
    for (size_t length = 0; length <= whole.size(); ++length) {
        const std::string bytes = whole.substr(0, length);
        folder.write("lib.a", bytes);
        const Expectation run = expected(length);
        untouched(bytes, [&] {
            EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), run.status, run.output, run.error)) << length;
        });
    }
}

TEST_F(BadInputTruncation, EditingAtEveryByte) {
    file("new.o", "new");
    for (size_t length = 0; length <= whole.size(); ++length) {
        const std::string bytes = whole.substr(0, length);
        folder.write("lib.a", bytes);
        const Expectation run = expected(length);
        const CommandResult result = tomex({"-r", "lib.a", "new.o"});
        if (run.status == 1) {
            EXPECT_TRUE(ended(result, 1, "", run.error)) << length;
            EXPECT_TRUE(folder.read("lib.a") == bytes) << length;
        } else {
            EXPECT_TRUE(ended(result, 0, "", run.error + notElf("new.o"))) << length;
            EXPECT_EQ(listed(names()), run.output + "new.o\n") << length;
        }
        EXPECT_EQ(folder.entries(), (Words{"lib.a", "new.o"})) << length;
    }
}

// --- padding -------------------------------------------------------------------------------------

class BadInputPadding : public BadInputCase {
protected:
    static std::string flaw(uint64_t offset, const std::string& value) {
        return "Padding byte at offset " + std::to_string(offset) + " has value " + value +
               " and not 0x0A as it should be";
    }
};

TEST_F(BadInputPadding, OtherValuesAreForgiven) {
    const std::vector<std::pair<std::string, std::string>> values = {
        {std::string(1, '\0'), "0"}, {"\r", "13"}, {" ", "32"}, {"!", "33"}, {"\xff", "255"}};
    for (const auto& [byte, value] : values) {
        BuiltMember member = {.name = "a.o", .contents = "abc", .rawPadding = byte};
        const ParsedArchive written =
            forgiven(ArchiveBuilder().add(member).add("b.o", "1").bytes(), {flaw(71, value)},
                     {"a.o", "b.o"}, {"a.o 0 0 0 100644 3", "b.o 0 0 0 100644 1"});
        EXPECT_EQ(written.find("a.o")->contents, "abc");
    }
}

TEST_F(BadInputPadding, OfTheLastMember) {
    BuiltMember member = {.name = "a.o", .contents = "abc", .rawPadding = "x"};
    forgiven(ArchiveBuilder().add(member).bytes(), {flaw(71, "120")}, {"a.o"},
             {"a.o 0 0 0 100644 3"});
}

TEST_F(BadInputPadding, OfTheTables) {
    ArchiveBuilder builder;
    builder.add({.name = "a_long_member_name_.o", .contents = "1"})
        .rawSymbolTable(std::string(5, '\0'));
    builder.symbolTableHeader().rawPadding = "S";
    builder.nameTableHeader().rawPadding = "N";
    forgiven(builder.bytes(), {flaw(73, "83"), flaw(157, "78")}, {"a_long_member_name_.o"},
             {"a_long_member_name_.o 0 0 0 100644 1"});
}

TEST_F(BadInputPadding, MissingBetweenMembers) {
    BuiltMember member = {.name = "a.o", .contents = "abc", .rawPadding = ""};
    // The next header's first byte is taken for the padding, and so the header is one byte short.
    ArchiveBuilder builder;
    builder.add(member).add({.name = "b.o"});
    refused(builder.bytes(),
            warned(flaw(71, "98")) + failed("End of file in the middle of archive member header "
                                            "starting at offset 72"));
}

TEST_F(BadInputPadding, TooMuch) {
    BuiltMember member = {.name = "a.o", .contents = "ab", .rawPadding = "\n"};
    refused(ArchiveBuilder().add(member).add("b.o", "12").bytes(),
            failed(headerAt(70) + " contains incorrect archive-member magic number"));
    refused(ArchiveBuilder().add(member).bytes(),
            failed("End of file in the middle of archive member header starting at offset 70"));
}

} // namespace
} // namespace commandtest
