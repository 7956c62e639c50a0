// The writer's side of the format, and what holds after it.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "arlib/interface/contents_location.h"
#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

class Writer : public ArlibTest {};

TEST_F(Writer, EmptyArchiveIsTheMagic) {
    arlib::Archive archive;
    ASSERT_TRUE(write("out.a", archive));
    EXPECT_EQ(folder.read("out.a"), "!<arch>\n");
}

TEST_F(Writer, HeaderFieldsAreCutOnTheRight) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = add(archive, "a.o", "odd");
    member->setDate(-1);
    member->setUid(-2);
    member->setGid(12345678);
    member->setMode(0777777777);
    ASSERT_TRUE(write("out.a", archive));
    EXPECT_EQ(folder.read("out.a"), "!<arch>\n"
                                    "a.o/            4294967295  42949612345677777777"
                                    "3         `\nodd\n");
}

TEST_F(Writer, NameOfFifteenCharactersFillsItsField) {
    arlib::Archive archive;
    add(archive, "123456789012345", "");
    ASSERT_TRUE(write("out.a", archive));
    EXPECT_EQ(folder.read("out.a").substr(8, 17), "123456789012345/1");
}

TEST_F(Writer, EveryMemberLiesInTheNewFileAfterwards) {
    folder.write("lib.a", testsupport::ArchiveBuilder().add("a.o", "one").bytes());
    folder.write("b.o", "two");
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    ASSERT_NE(archive.addMemberFromFile(pathOf("b.o").c_str()), nullptr);
    add(archive, "c.o", "three");
    ASSERT_TRUE(write("out.a", archive));
    folder.remove("lib.a");
    folder.remove("b.o");
    EXPECT_STREQ(archive.getFileName(), pathOf("out.a").c_str());
    for (arlib::ArchiveMember* member : archive.getMembers()) {
        EXPECT_EQ(member->getLocation()->getFileName(), pathOf("out.a"));
        EXPECT_EQ(member->getLocation()->getOffset(), member->getOffset() + 60);
    }
    EXPECT_EQ(contentsOf(archive.getMembers()[0]), "one");
    EXPECT_EQ(contentsOf(archive.getMembers()[1]), "two");
    ASSERT_TRUE(archive.getMembers()[2]->releaseContents());
    EXPECT_EQ(contentsOf(archive.getMembers()[2]), "three");
    EXPECT_TRUE(archive.getMembers()[1]->isChanged()) << "the mark stays as it was";
}

TEST_F(Writer, OverwritesTheFileThatWasRead) {
    folder.write("lib.a", testsupport::ArchiveBuilder().add("a.o", "one").bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    add(archive, "b.o", "two");
    ASSERT_TRUE(write("lib.a", archive));
    ASSERT_TRUE(write("lib.a", archive)) << "and again from the new one";
    const testsupport::ParsedArchive parsed = testsupport::parseArchive(folder.read("lib.a"));
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(parsed.names(), (Names{"a.o", "b.o"}));
    EXPECT_EQ(folder.entries(), Names{"lib.a"});
}

TEST_F(Writer, WithoutHandlerFailsQuietlyAndCleansUp) {
    folder.write("x.o", "12345");
    arlib::Archive archive;
    ASSERT_NE(archive.addMemberFromFile(pathOf("x.o").c_str()), nullptr);
    folder.remove("x.o");
    EXPECT_FALSE(arlib::ArchiveFileWriter().writeFile(pathOf("out.a").c_str(), archive));
    EXPECT_EQ(folder.entries(), Names{});
}

TEST_F(Writer, MembersOfAllSizesKeepTheirBytes) {
    testsupport::ArchiveBuilder builder;
    std::vector<std::string> bodies;
    constexpr size_t sizes[] = {0, 1, 100, 32767, 32768, 65536, 300001, 2000000};
    for (const size_t size : sizes) {
        bodies.emplace_back(size, static_cast<char>('a' + bodies.size()));
        builder.add("m" + std::to_string(bodies.size()), bodies.back());
    }
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    ASSERT_TRUE(write("out.a", archive));
    EXPECT_TRUE(folder.read("out.a") == folder.read("lib.a"));
}

} // namespace
} // namespace arlibtest
