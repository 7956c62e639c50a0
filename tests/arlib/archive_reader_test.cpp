// What the reader does under handlers that a program may attach; what it says of each flaw of a
// file is tested through the command.

#include <string>

#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

using testsupport::ArchiveBuilder;
using namespace std::string_literals;

class Reader : public ArlibTest {};

TEST_F(Reader, LeavesNothingChangedAndAllUpToDate) {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = "12345", .date = 9, .uid = 8, .gid = 7, .mode = 0600});
    builder.add("a_member_with_a_long_name.o", "6");
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    const arlib::ArchiveMember* member = archive.getMembers()[1];
    EXPECT_EQ(namesOf(archive), (Names{"//", "a.o", "a_member_with_a_long_name.o"}));
    EXPECT_EQ(member->getDate(), 9);
    EXPECT_EQ(member->getUid(), 8);
    EXPECT_EQ(member->getGid(), 7);
    EXPECT_EQ(member->getMode(), 0600U);
    EXPECT_EQ(member->getSize(), 5U);
    EXPECT_EQ(member->getOffset(), builder.offsetOf(0));
    EXPECT_FALSE(member->isChanged());
    EXPECT_TRUE(archive.isSymbolTableUpToDate());
    EXPECT_TRUE(archive.isFileNameTableUpToDate());
    EXPECT_TRUE(archive.areMemberOffsetsUpToDate());
    EXPECT_STREQ(archive.getFileName(), pathOf("lib.a").c_str());
    EXPECT_EQ(contentsOf(archive.getMembers()[2]), "6");
}

TEST_F(Reader, ReplacesWhatTheArchiveHeld) {
    folder.write("one.a", ArchiveBuilder().add("a.o", "1").bytes());
    folder.write("two.a", ArchiveBuilder().add("b.o", "2").bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("one.a", archive));
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    ASSERT_TRUE(read("two.a", archive));
    EXPECT_EQ(namesOf(archive), Names{"b.o"});
    EXPECT_EQ(archive.getSymbolTableMode(), arlib::SymbolTableMode_IfNeeded);
}

TEST_F(Reader, FailureLeavesTheArchiveEmpty) {
    folder.write("good.a", ArchiveBuilder().add("a.o", "1").bytes());
    std::string cut = ArchiveBuilder().add("a.o", "1").add("b.o", "22").bytes();
    cut.resize(cut.size() - 1);
    folder.write("cut.a", cut);
    arlib::Archive archive;
    ASSERT_TRUE(read("good.a", archive));
    EXPECT_FALSE(read("cut.a", archive));
    EXPECT_EQ(archive.getMembers().getSize(), 0U);
    EXPECT_EQ(archive.getFileNameTable(), nullptr);
}

TEST_F(Reader, WithoutHandlerEveryFlawEndsTheRead) {
    const testsupport::BuiltMember flawed[] = {
        {.name = "a.o", .rawDate = "            "},
        {.name = "a.o", .rawUid = "x     "},
        {.name = "a.o", .rawGid = "x     "},
        {.name = "a.o", .rawMode = "9       "},
        {.name = "a.o", .rawSize = "          "},
        {.name = "a.o", .rawMagic = "xx"},
        {.name = "a.o", .rawName = "no_slash        "},
        {.name = "a.o", .rawName = "a.o/ x          "},
        {.name = "a.o", .rawName = "/12             "},
        {.name = "a.o", .contents = "1", .rawPadding = "x"},
    };
    for (const testsupport::BuiltMember& member : flawed) {
        folder.write("lib.a", ArchiveBuilder().add(member).bytes());
        arlib::Archive archive;
        EXPECT_FALSE(arlib::ArchiveFileReader().readFile(pathOf("lib.a").c_str(), archive));
        EXPECT_EQ(archive.getMembers().getSize(), 0U);
    }
}

TEST_F(Reader, ForgivenFieldsGetNeutralValues) {
    handler.goesOn = true;
    ArchiveBuilder builder;
    builder.add({.name = "a.o",
                 .contents = "1",
                 .rawDate = "soon        ",
                 .rawUid = "-1    ",
                 .rawGid = "0x1   ",
                 .rawMode = "rw      ",
                 .rawMagic = "??",
                 .rawPadding = "x"});
    builder.add({.name = "b.o", .contents = "2", .rawName = "none            "});
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    EXPECT_EQ(handler.reports.size(), 7U);
    const arlib::ArchiveMember* member = archive.getMembers()[0];
    EXPECT_EQ(member->getDate(), 0);
    EXPECT_EQ(member->getUid(), 0);
    EXPECT_EQ(member->getGid(), 0);
    EXPECT_EQ(member->getMode(), 0U);
    EXPECT_EQ(namesOf(archive), (Names{"a.o", ""}));
}

TEST_F(Reader, ForgivenRegionStillFindsNoContents) {
    handler.goesOn = true;
    folder.write(
        "lib.a",
        ArchiveBuilder().add({.name = "a.o", .contents = "12", .rawSize = "30        "}).bytes());
    arlib::Archive archive;
    EXPECT_FALSE(read("lib.a", archive));
    EXPECT_EQ(handler.reports.back(), "0: I/O error reading file: Input/output error");
}

TEST_F(Reader, LongNamesEndAtTheirEntryOrANul) {
    const std::string table = "dir/first_long_name.o/\nback\\slash.o/\ncut\0off/\nno_end"s;
    ArchiveBuilder builder;
    builder.rawNameTable(table);
    for (const char* index : {"/0", "/1", "/4", "/10", "/23", "/28", "/37", "/41", "/46", "/48"}) {
        builder.add({.name = "x", .rawName = testsupport::padded(index, 16)});
    }
    builder.add("a_name_that_makes_a_table.o", "");
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    handler.goesOn = true;
    ASSERT_TRUE(read("lib.a", archive));
    EXPECT_EQ(namesOf(archive), (Names{"//", "first_long_name.o", "first_long_name.o",
                                       "first_long_name.o", "long_name.o", "slash.o", "slash.o",
                                       "cut", "off", "no_end", "_end", "first_long_name.o"}));
}

// Members may refer to any place of the table, so many long names fit into a small file.
TEST_F(Reader, LongNamesAreSharedNotCopied) {
    std::string bytes(testsupport::archiveMagic);
    const std::string table(1 << 20, 'n');
    bytes += testsupport::headerText("//", 0, 0, 0, 0, table.size()) + table;
    constexpr uint32_t members = 2000;
    for (uint32_t i = 0; i < members; ++i) {
        bytes += testsupport::headerText("/" + std::to_string(i), 0, 0, 0, 0, 0);
    }
    folder.write("lib.a", bytes);
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    const arlib::ArchiveMember* first = archive.getMembers()[1];
    for (uint32_t i = 0; i < members; ++i) {
        const arlib::ArchiveMember* member = archive.getMembers()[i + 1];
        EXPECT_EQ(member->getName(), first->getName() + i) << "one text for all";
        EXPECT_EQ(member->getNameLength(), table.size() - i);
    }
}

TEST_F(Reader, SizeIsNeverForgiven) {
    handler.goesOn = true;
    folder.write("lib.a", ArchiveBuilder().add({.name = "a.o", .rawSize = "ten       "}).bytes());
    arlib::Archive archive;
    EXPECT_FALSE(read("lib.a", archive));
    EXPECT_EQ(handler.reports, Names{"0: Archive member header starting at offset 8 contains "
                                     "invalid size string 'ten       '"});
}

TEST_F(Reader, SecondTablesAreMembersWithoutName) {
    const std::string table = "a_member_with_a_long_name.o/\n";
    ArchiveBuilder builder;
    builder.add("a_member_with_a_long_name.o", "1");
    builder.add({.name = "x", .contents = "2", .rawName = "//              "});
    builder.add({.name = "x", .contents = "3", .rawName = "/               "});
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    EXPECT_EQ(namesOf(archive), (Names{"//", "a_member_with_a_long_name.o", "", ""}));
    EXPECT_EQ(contentsOf(archive.getFileNameTable()), table);
    EXPECT_EQ(archive.getSymbolTable(), nullptr);
}

} // namespace
} // namespace arlibtest
