// The parser takes what is right and names each flaw.
#include "tests/support/archive_parser.h"

#include <gtest/gtest.h>

#include "tests/support/archive_builder.h"

namespace testsupport {
namespace {

using Texts = std::vector<std::string>;

ArchiveBuilder goodArchive() {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = "abc", .date = 1, .uid = 2, .gid = 3, .mode = 0644})
        .add("a_name_of_many_characters.o", "de")
        .add("", "f")
        .symbol("first", 0)
        .symbol("second", 1);
    return builder;
}

std::string flawOf(const std::string& bytes, ArchiveRules rules = ArchiveRules::OwnOutput) {
    return parseArchive(bytes, rules).error;
}

std::string flawOfMember(BuiltMember member) {
    return flawOf(ArchiveBuilder().add(std::move(member)).bytes());
}

TEST(ArchiveParser, GivesEveryMember) {
    const ArchiveBuilder builder = goodArchive();
    const ParsedArchive archive = parseArchive(builder.bytes());
    ASSERT_EQ(archive.error, "");
    EXPECT_EQ(archive.names(), (Texts{"a.o", "a_name_of_many_characters.o", ""}));
    EXPECT_EQ(archive.summary(),
              (Texts{"/ 0 0 0 100644 25", "// 0 0 0 100644 29", "a.o 1 2 3 644 3",
                     "a_name_of_many_characters.o 0 0 0 100644 2", " 0 0 0 100644 1"}));
    const ParsedMember* member = archive.find("a.o");
    ASSERT_NE(member, nullptr);
    EXPECT_EQ(member->contents, "abc");
    EXPECT_EQ(member->headerOffset, builder.offsetOf(0));
    EXPECT_EQ(member->header, "a.o/            1           2     3     644     3         `\n");
    EXPECT_EQ(archive.plainMembers().size(), 3U);
    EXPECT_EQ(archive.find("b.o"), nullptr);
    EXPECT_EQ(archive.table("//")->contents, "a_name_of_many_characters.o/\n");
}

TEST(ArchiveParser, GivesEverySymbolWithItsMember) {
    const ArchiveBuilder builder = goodArchive();
    const ParsedArchive archive = parseArchive(builder.bytes());
    ASSERT_EQ(archive.symbols.size(), 2U);
    EXPECT_EQ(archive.symbols[0].name, "first");
    EXPECT_EQ(archive.symbols[0].member, "a.o");
    EXPECT_EQ(archive.symbols[1].headerOffset, builder.offsetOf(1));
}

TEST(ArchiveParser, EmptyArchiveIsGood) {
    EXPECT_EQ(flawOf("!<arch>\n"), "");
}

TEST(ArchiveParser, EveryTruncationButBetweenMembersIsAFlaw) {
    const std::string bytes = ArchiveBuilder().add("a", "123").add("b", "45").bytes();
    for (size_t size = 0; size < bytes.size(); ++size) {
        const bool whole = size == 8 || size == 8 + 64;
        EXPECT_EQ(flawOf(bytes.substr(0, size)).empty(), whole) << size;
    }
}

TEST(ArchiveParser, WrongHeaderFieldsAreFlaws) {
    EXPECT_EQ(flawOfMember({.name = "a"}), "");
    EXPECT_EQ(flawOfMember({.name = "a", .rawDate = std::string(12, ' ')}),
              "the date field \"            \" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.name = "a", .rawUid = " 1    "}),
              "the uid field \" 1    \" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.name = "a", .rawGid = "01    "}),
              "the gid field \"01    \" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.name = "a", .rawMode = "648     "}),
              "the mode field \"648     \" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.name = "a", .rawSize = "-1        "}),
              "the size field \"-1        \" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.name = "a", .rawMagic = "`\r"}),
              "the header's magic is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.rawName = padded("a", 16)}),
              "the name field \"a\" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.rawName = padded("a/b", 16)}),
              "the name field \"a/b\" is wrong at offset 8");
    EXPECT_EQ(flawOfMember({.rawName = padded("/3", 16)}),
              "the name field \"/3\" leads to no name at offset 8");
}

TEST(ArchiveParser, WrongPaddingIsAFlaw) {
    EXPECT_EQ(flawOfMember({.name = "a", .contents = "x", .rawPadding = " "}),
              "the padding byte is missing or wrong at offset 69");
}

TEST(ArchiveParser, NameTableMustHoldTheNamesInOrderAndNoMore) {
    const std::string name = "a_name_of_many_characters";
    EXPECT_EQ(flawOf(ArchiveBuilder().rawNameTable(name + "/\nmore/\n").add(name, "").bytes()),
              "the name table holds more than the members' names at offset 8");
    EXPECT_EQ(flawOf(ArchiveBuilder().rawNameTable(name).add(name, "").bytes()),
              "the name field \"/0\" leads to no whole name at offset 94");
    EXPECT_EQ(flawOf(ArchiveBuilder().rawNameTable("short/\n").add(name, "").bytes()),
              "the short name \"short\" stands in the name table at offset 76");
}

TEST(ArchiveParser, TablesStandOnlyInFront) {
    const ParsedArchive archive =
        parseArchive(ArchiveBuilder().add("a", "").add({.rawName = padded("/", 16)}).bytes());
    EXPECT_EQ(archive.error, "");
    EXPECT_EQ(archive.names(), (Texts{"a", ""}));
    EXPECT_EQ(archive.table("/"), nullptr);
    EXPECT_EQ(flawOf(ArchiveBuilder().add("a", "").add({.rawName = padded("//", 16)}).bytes()),
              "the name field \"//\" leads to no name at offset 68");
}

TEST(ArchiveParser, WrongSymbolTablesAreFlaws) {
    const auto flaw = [](const std::string& table, ArchiveRules rules = ArchiveRules::OwnOutput) {
        return flawOf(ArchiveBuilder().rawSymbolTable(table).add("a", "").bytes(), rules);
    };
    const std::string good = bigEndian32(1) + bigEndian32(78) + "n" + std::string(1, '\0');
    ASSERT_EQ(flaw(good), "");
    EXPECT_EQ(flaw("abc"), "the symbol table has no count at offset 8");
    EXPECT_EQ(flaw(bigEndian32(1)), "the symbol table has too few offsets at offset 8");
    EXPECT_EQ(flaw(bigEndian32(1) + bigEndian32(9) + std::string("n\0", 2)),
              "symbol 0 has no name or no member at offset 8");
    EXPECT_EQ(flaw(bigEndian32(1) + bigEndian32(78) + "nn"),
              "symbol 0 has no name or no member at offset 8");
    EXPECT_EQ(flaw(bigEndian32(0) + std::string(2, '\0')),
              "the symbol table holds more than its symbols at offset 8");
    EXPECT_EQ(flaw(bigEndian32(0) + std::string(2, '\0'), ArchiveRules::AnyTool), "");
}

TEST(ArchiveParser, OtherToolsMayLeaveTableFieldsBlank) {
    ArchiveBuilder builder;
    builder.add("a_name_of_many_characters", "");
    builder.nameTableHeader().rawDate = std::string(12, ' ');
    EXPECT_NE(flawOf(builder.bytes()), "");
    EXPECT_EQ(flawOf(builder.bytes(), ArchiveRules::AnyTool), "");
}

} // namespace
} // namespace testsupport
