// The builder's bytes against bytes written out by hand.
#include "tests/support/archive_builder.h"

#include <gtest/gtest.h>

namespace testsupport {
namespace {

TEST(ArchiveBuilder, EmptyArchiveIsTheMagic) {
    EXPECT_EQ(ArchiveBuilder().bytes(), "!<arch>\n");
}

TEST(ArchiveBuilder, OneMemberIsHeaderContentsAndPadding) {
    const std::string bytes =
        ArchiveBuilder()
            .add({.name = "a.o", .contents = "xyz", .date = 12, .uid = 3, .gid = 4, .mode = 0644})
            .bytes();
    EXPECT_EQ(bytes, "!<arch>\n"
                     "a.o/            12          3     4     644     3         `\nxyz\n");
}

TEST(ArchiveBuilder, ContentsOfEvenSizeHaveNoPadding) {
    EXPECT_EQ(ArchiveBuilder().add("a", "xy").bytes(),
              "!<arch>\n"
              "a/              0           0     0     100644  2         `\nxy");
}

TEST(ArchiveBuilder, LongNamesGoToTheNameTable) {
    ArchiveBuilder builder;
    builder.add("sixteen_chars__a", "1")
        .add("fifteen_chars_a", "22")
        .add("another_name_of_24_chars", "");
    EXPECT_EQ(builder.bytes(), "!<arch>\n"
                               "//              0           0     0     100644  44        `\n"
                               "sixteen_chars__a/\nanother_name_of_24_chars/\n"
                               "/0              0           0     0     100644  1         `\n1\n"
                               "fifteen_chars_a/0           0     0     100644  2         `\n22"
                               "/18             0           0     0     100644  0         `\n");
}

TEST(ArchiveBuilder, SymbolTableStandsInFrontAndRefersToHeaders) {
    ArchiveBuilder builder;
    builder.add("a.o", "123").add("b.o", "45").symbol("main", 1).symbol("f", 0);
    const std::string table = std::string("\0\0\0\2", 4) + bigEndian32(152) + bigEndian32(88) +
                              std::string("main\0f\0", 7);
    EXPECT_EQ(builder.symbolTableContents(), table);
    EXPECT_EQ(builder.offsetOf(0), 88U);
    EXPECT_EQ(builder.offsetOf(1), 152U);
    const std::string bytes = builder.bytes();
    EXPECT_EQ(bytes.substr(8, 60), "/               0           0     0     100644  19        `\n");
    EXPECT_EQ(bytes.substr(68, 20), table + "\n");
    EXPECT_EQ(bytes.substr(88, 4), "a.o/");
    EXPECT_EQ(bytes.substr(152, 4), "b.o/");
}

TEST(ArchiveBuilder, EmptySymbolTableIsFourBytes) {
    EXPECT_EQ(ArchiveBuilder().withSymbolTable().bytes().substr(68), std::string(4, '\0'));
}

TEST(ArchiveBuilder, RawTablesAreTakenAsTheyAre) {
    ArchiveBuilder builder;
    builder.rawSymbolTable("abc").rawNameTable("x/\n").add("a_name_of_many_characters", "");
    const std::string bytes = builder.bytes();
    EXPECT_EQ(bytes.substr(68, 4), "abc\n");
    EXPECT_EQ(bytes.substr(72 + 60, 4), "x/\n\n");
    EXPECT_EQ(bytes.substr(136, 16), "/0              ");
    EXPECT_EQ(builder.offsetOf(0), 136U);
}

TEST(ArchiveBuilder, NameTableCanBeLeftOut) {
    const std::string bytes =
        ArchiveBuilder().withoutNameTable().add("a_name_of_many_characters", "").bytes();
    EXPECT_EQ(bytes.substr(8, 16), "/0              ");
    EXPECT_EQ(bytes.size(), 68U);
}

TEST(ArchiveBuilder, EveryHeaderFieldCanBeRaw) {
    EXPECT_EQ(ArchiveBuilder()
                  .add({.contents = "c",
                        .rawName = "NNNNNNNNNNNNNNNN",
                        .rawDate = "DDDDDDDDDDDD",
                        .rawUid = "UUUUUU",
                        .rawGid = "GGGGGG",
                        .rawMode = "MMMMMMMM",
                        .rawSize = "SSSSSSSSSS",
                        .rawMagic = "??",
                        .rawPadding = "\1"})
                  .bytes(),
              "!<arch>\nNNNNNNNNNNNNNNNNDDDDDDDDDDDDUUUUUUGGGGGGMMMMMMMMSSSSSSSSSS??c\1");
}

TEST(ArchiveBuilder, TablesHaveRawFieldsToo) {
    ArchiveBuilder builder;
    builder.withSymbolTable();
    builder.symbolTableHeader().rawDate = std::string(12, ' ');
    builder.symbolTableHeader().rawSize = "9         ";
    EXPECT_EQ(builder.bytes().substr(8, 60),
              "/                           0     0     100644  9         `\n");
}

TEST(ArchiveBuilder, MagicCanBeReplaced) {
    EXPECT_EQ(ArchiveBuilder().magic("!<thin>\n").bytes(), "!<thin>\n");
}

TEST(ArchiveBuilder, ValuesTooWideAreRefused) {
    EXPECT_THROW(ArchiveBuilder().add({.name = "a", .uid = 1000000}).bytes(), std::length_error);
    EXPECT_NO_THROW(ArchiveBuilder().add({.name = "a", .uid = 999999}).bytes());
}

TEST(ArchiveBuilder, HeaderTextFillsEveryField) {
    EXPECT_EQ(headerText("//", 0, 0, 0, 0, 7),
              "//              0           0     0     0       7         `\n");
}

} // namespace
} // namespace testsupport
