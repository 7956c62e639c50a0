// The archive in memory: members coming, going and moving, looked up by name.

#include <cerrno>
#include <map>
#include <random>
#include <string>

#include "platform/interface/wildcard.h"
#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

class Model : public ArlibTest {};

Names found(arlib::Archive& archive, const char* name) {
    arlib::ArchiveMemberList list;
    archive.findMembers(name, list);
    Names names;
    for (uint32_t i = 0; i < list.getSize(); ++i) {
        names.push_back(list.get(i)->getName());
    }
    return names;
}

TEST_F(Model, StartsEmptyAndUpToDate) {
    const arlib::Archive archive;
    EXPECT_EQ(archive.getMembers().getSize(), 0U);
    EXPECT_EQ(archive.getFileName(), nullptr);
    EXPECT_EQ(archive.getSymbolTableMode(), arlib::SymbolTableMode_IfNeeded);
    EXPECT_TRUE(archive.areMemberOffsetsUpToDate());
    EXPECT_TRUE(archive.isFileNameTableUpToDate());
    EXPECT_TRUE(archive.isSymbolTableUpToDate());
}

TEST_F(Model, FileNameIsCopied) {
    arlib::Archive archive;
    std::string name = "lib.a";
    archive.setFileName(name.c_str());
    const char* copy = archive.getFileName();
    name = "other";
    EXPECT_STREQ(copy, "lib.a");
    archive.setFileName("lib.a");
    EXPECT_EQ(archive.getFileName(), copy) << "an equal name is not copied again";
    archive.setFileName(nullptr);
    EXPECT_EQ(archive.getFileName(), nullptr);
}

TEST_F(Model, AddedMemberIsEmptyAndOfUnknownType) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = archive.addMember("a.o", 5, 6, 7, 0100600);
    EXPECT_STREQ(member->getName(), "a.o");
    EXPECT_EQ(member->getDate(), 5);
    EXPECT_EQ(member->getUid(), 6);
    EXPECT_EQ(member->getGid(), 7);
    EXPECT_EQ(member->getMode(), 0100600U);
    EXPECT_EQ(member->getSize(), 0U);
    EXPECT_EQ(member->getType(), arlib::getUnknownType());
    EXPECT_EQ(member->getLocation(), nullptr);
    EXPECT_TRUE(member->isChanged());
    EXPECT_FALSE(archive.isFileNameTableUpToDate());
    EXPECT_FALSE(archive.isSymbolTableUpToDate());
    EXPECT_TRUE(archive.areMemberOffsetsUpToDate()) << "a member without contents moves nothing";
}

TEST_F(Model, MemberFromFileHasItsAttributes) {
    folder.write("sub/x.o", "12345");
    folder.setTime("sub/x.o", 1234567890);
    folder.setMode("sub/x.o", 0751);
    arlib::Archive archive;
    arlib::ArchiveMember* member = archive.addMemberFromFile(pathOf("sub/x.o").c_str());
    ASSERT_NE(member, nullptr);
    EXPECT_STREQ(member->getName(), "x.o");
    EXPECT_EQ(member->getDate(), 1234567890);
    EXPECT_EQ(member->getMode(), 0100751U);
    EXPECT_EQ(member->getSize(), 5U);
    EXPECT_TRUE(member->isChanged());
    EXPECT_EQ(member->getContents(), nullptr);
    EXPECT_EQ(contentsOf(member), "12345");
    EXPECT_FALSE(archive.areMemberOffsetsUpToDate());
}

TEST_F(Model, FileThatIsNotThereCannotBeAdded) {
    arlib::Archive archive;
    EXPECT_EQ(archive.addMemberFromFile(pathOf("nothing").c_str()), nullptr) << "no handler";
    archive.setErrorHandler(&handler);
    EXPECT_EQ(archive.addMemberFromFile(pathOf("nothing").c_str()), nullptr);
    EXPECT_EQ(handler.reports, Names{"0: I/O error reading file '" + pathOf("nothing") +
                                     "': No such file or directory"});
    EXPECT_EQ(archive.getMembers().getSize(), 0U);
}

TEST_F(Model, FileOlderThanTheFormatCannotBeAdded) {
    folder.write("x.o", "1");
    folder.setTime("x.o", -5);
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    EXPECT_EQ(archive.addMemberFromFile(pathOf("x.o").c_str()), nullptr);
    EXPECT_EQ(handler.reports.size(), 1U);
}

TEST_F(Model, RegionBeyondTheFileIsReported) {
    folder.write("f", "0123456789");
    arlib::Archive archive;
    EXPECT_EQ(archive.addMemberFromFileRegion("m", pathOf("f").c_str(), 4, 7), nullptr);
    archive.setErrorHandler(&handler);
    EXPECT_EQ(archive.addMemberFromFileRegion("m", pathOf("f").c_str(), 4, 7), nullptr);
    EXPECT_EQ(archive.addMemberFromFileRegion("m", pathOf("f").c_str(), 11, 0), nullptr);
    EXPECT_EQ(archive.addMemberFromFileRegion("m", pathOf("f").c_str(), UINT64_MAX, 2), nullptr);
    EXPECT_EQ(handler.reports.size(), 3U);
    EXPECT_EQ(handler.reports[0], "0: Error reading member 'm': archive member is at offset 4 and "
                                  "has size 7 but archive file is only 10 bytes long");
}

TEST_F(Model, ForgivenRegionIsCut) {
    folder.write("f", "0123456789");
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    handler.goesOn = true;
    arlib::ArchiveMember* cut = archive.addMemberFromFileRegion("m", pathOf("f").c_str(), 4, 7);
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(contentsOf(cut), "456789");
    arlib::ArchiveMember* none =
        archive.addMemberFromFileRegion("n", pathOf("f").c_str(), 50, UINT64_MAX);
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->getSize(), 0U);
}

TEST_F(Model, RegionNameIsCutAtTheLastSeparator) {
    folder.write("f", "0123456789");
    arlib::Archive archive;
    EXPECT_STREQ(archive.addMemberFromFileRegion("a/b\\c.o", pathOf("f").c_str(), 0, 1)->getName(),
                 "c.o");
    EXPECT_STREQ(archive.addMemberFromFileRegion("a/", pathOf("f").c_str(), 0, 1)->getName(), "");
}

TEST_F(Model, MovingIsRemovingAndInserting) {
    arlib::Archive archive;
    arlib::ArchiveMember* a = add(archive, "a");
    add(archive, "b");
    add(archive, "c");
    archive.moveMember(a, 1);
    EXPECT_EQ(namesOf(archive), (Names{"b", "a", "c"}));
    archive.moveMember(a, 2);
    EXPECT_EQ(namesOf(archive), (Names{"b", "c", "a"}));
    archive.moveMember(a, 0);
    EXPECT_EQ(namesOf(archive), (Names{"a", "b", "c"}));
    archive.moveMember(a, 3);
    EXPECT_EQ(namesOf(archive), (Names{"b", "c", "a"}));
}

TEST_F(Model, MovingToTheOwnPlaceChangesNoFlag) {
    testsupport::ArchiveBuilder builder;
    folder.write("lib.a", builder.add("a.o", "1").add("b.o", "2").bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    archive.moveMember(archive.getMembers()[1], 1);
    EXPECT_TRUE(archive.isFileNameTableUpToDate());
    EXPECT_TRUE(archive.isSymbolTableUpToDate());
    archive.moveMember(archive.getMembers()[1], 0);
    EXPECT_FALSE(archive.isFileNameTableUpToDate());
    EXPECT_FALSE(archive.isSymbolTableUpToDate());
    EXPECT_TRUE(archive.areMemberOffsetsUpToDate()) << "the tables bring the offsets along";
}

TEST_F(Model, IndexOfADeletedMember) {
    arlib::Archive archive;
    arlib::ArchiveMember* a = add(archive, "a");
    arlib::ArchiveMember* b = add(archive, "b");
    EXPECT_EQ(b->getIndex(), 1U);
    archive.deleteMember(a);
    EXPECT_EQ(archive.getIndex(a), 0x80000000U);
    EXPECT_EQ(b->getIndex(), 0U);
}

TEST_F(Model, FindIgnoresCaseAndKeepsListOrder) {
    arlib::Archive archive;
    add(archive, "Foo.o");
    add(archive, "bar.o");
    add(archive, "FOO.O");
    arlib::ArchiveMember* last = add(archive, "foo.o");
    EXPECT_EQ(found(archive, "fOO.o"), (Names{"Foo.o", "FOO.O", "foo.o"}));
    EXPECT_EQ(found(archive, "baz.o"), Names{});
    archive.moveMember(last, 0);
    EXPECT_EQ(found(archive, "foo.o"), (Names{"foo.o", "Foo.o", "FOO.O"}));
    archive.moveMember(archive.getMembers()[1], 3);
    EXPECT_EQ(found(archive, "foo.o"), (Names{"foo.o", "FOO.O", "Foo.o"}));
}

TEST_F(Model, RenamedMemberIsFoundByItsNewName) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = add(archive, "old");
    EXPECT_EQ(found(archive, "old"), Names{"old"});
    member->setName("new");
    EXPECT_EQ(found(archive, "old"), Names{});
    EXPECT_EQ(found(archive, "NEW"), Names{"new"});
}

TEST_F(Model, UnchangedMemberIsTheFirstThatStandsAsRead) {
    testsupport::ArchiveBuilder builder;
    folder.write("lib.a", builder.add("x.o", "1").add("X.O", "2").bytes());
    folder.write("x.o", "new");
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    arlib::ArchiveMember* first = archive.getMembers()[0];
    arlib::ArchiveMember* second = archive.getMembers()[1];
    EXPECT_EQ(archive.findUnchangedMember("x.o"), first);
    ASSERT_TRUE(first->replaceFromFile(pathOf("x.o").c_str()));
    EXPECT_EQ(archive.findUnchangedMember("x.o"), second);
    ASSERT_TRUE(second->replaceFromFile(pathOf("x.o").c_str()));
    EXPECT_EQ(archive.findUnchangedMember("x.o"), nullptr);
    EXPECT_EQ(archive.findUnchangedMember("y.o"), nullptr);
}

// A member without a name, as a damaged archive may hold, is no reason to overwrite a table.
TEST_F(Model, TablesAreNeverTheUnchangedMember) {
    testsupport::ArchiveBuilder builder;
    folder.write("lib.a", builder.add("x.o", "1").withSymbolTable().bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    EXPECT_EQ(found(archive, "").size(), 1U);
    EXPECT_EQ(archive.findUnchangedMember(""), nullptr);
    EXPECT_EQ(archive.findFirstMember(""), nullptr);
    EXPECT_EQ(archive.findFirstMember("X.O"), archive.getMembers()[1]);
}

TEST_F(Model, NamesakesKeepListOrderWhenATableMovesToTheFront) {
    arlib::Archive archive;
    add(archive, "x.o");
    arlib::ArchiveMember* nameless = add(archive, "");
    EXPECT_EQ(found(archive, "").size(), 1U);
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    arlib::ArchiveMemberList list;
    archive.findMembers("", list);
    ASSERT_EQ(list.getSize(), 2U);
    EXPECT_EQ(list.get(0), archive.getSymbolTable());
    EXPECT_EQ(list.get(1), nameless);
}

TEST_F(Model, ReplacingTakesSizeAndAttributesOfTheFile) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = add(archive, "x.o", "old");
    folder.write("f", "0123456789");
    folder.setTime("f", 777);
    ASSERT_TRUE(member->replaceFromFileRegion(pathOf("f").c_str(), 2, 3));
    EXPECT_STREQ(member->getName(), "x.o");
    EXPECT_EQ(member->getDate(), 777);
    EXPECT_EQ(contentsOf(member), "234");
}

TEST_F(Model, FailedReplacementLeavesTheMember) {
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = add(archive, "x.o", "old");
    folder.write("f", "0123456789");
    EXPECT_FALSE(member->replaceFromFile(pathOf("nothing").c_str()));
    EXPECT_FALSE(member->replaceFromFileRegion(pathOf("f").c_str(), 8, 3));
    EXPECT_EQ(handler.reports[1], "0: Error reading region from file '" + pathOf("f") +
                                      "' at offset 8 with size 3: file is only 10 bytes long");
    EXPECT_EQ(contentsOf(member), "old");
    EXPECT_EQ(member->getDate(), 1);
}

TEST_F(Model, ClearForgetsMembersButKeepsSettings) {
    arlib::Archive archive;
    archive.setFileName("lib.a");
    archive.setDebugSymbols(true);
    add(archive, "a");
    EXPECT_EQ(found(archive, "a").size(), 1U);
    archive.clear();
    EXPECT_EQ(found(archive, "a").size(), 0U);
    EXPECT_EQ(archive.getMembers().getSize(), 0U);
    EXPECT_TRUE(archive.isSymbolTableUpToDate());
    EXPECT_TRUE(archive.getDebugSymbols());
    EXPECT_STREQ(archive.getFileName(), "lib.a");
}

// Long random histories against the plain rule: walk the list and compare folded names.
TEST_F(Model, LookUpEqualsAWalkOverTheList) {
    const char* names[] = {"a", "A", "b", "B", "ab", "aB", "c"};
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](uint32_t limit) {
            return std::uniform_int_distribution<uint32_t>(0, limit - 1)(random);
        };
        arlib::Archive archive;
        for (int step = 0; step < 300; ++step) {
            const uint32_t count = archive.getMembers().getSize();
            const uint32_t choice = below(10);
            if (count == 0 || choice < 5) {
                add(archive, names[below(7)]);
            } else if (choice < 7) {
                archive.deleteMember(archive.getMembers()[below(count)]);
            } else if (choice < 9) {
                archive.moveMember(archive.getMembers()[below(count)], below(count));
            } else {
                archive.getMembers()[below(count)]->setName(names[below(7)]);
            }
            const char* wanted = names[below(7)];
            Names expected;
            for (const arlib::ArchiveMember* member : archive.getMembers()) {
                if (platform::wildcardMatch(wanted, member->getName())) {
                    expected.push_back(member->getName());
                }
            }
            ASSERT_EQ(found(archive, wanted), expected) << "seed " << seed << " step " << step;
        }
    }
}

using ModelDeath = Model;

TEST_F(ModelDeath, OffsetsThatAreNotUpToDateCannotBeAsked) {
    folder.write("x", "1");
    arlib::Archive archive;
    arlib::ArchiveMember* member = archive.addMemberFromFile(pathOf("x").c_str());
    EXPECT_EXIT(static_cast<void>(member->getOffset()), testing::ExitedWithCode(1),
                "arlib/src/archive_member line [0-9]+ "
                "\\(m_Archive->m_ArchiveMemberOffsetsUpToDate\\)");
}

TEST_F(ModelDeath, MisuseIsAnInternalFault) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = add(archive, "a");
    EXPECT_EXIT(member->recomputeType(), testing::ExitedWithCode(1), "m_Type == NULL");
    EXPECT_EXIT(member->setName(nullptr), testing::ExitedWithCode(1), "name != NULL");
    EXPECT_EXIT(archive.moveMember(member, 2), testing::ExitedWithCode(1), "newIndex <= count");
    EXPECT_EXIT(archive.deleteMember(nullptr), testing::ExitedWithCode(1), "member != NULL");
    EXPECT_EXIT(archive.addMember(nullptr, 0, 0, 0, 0), testing::ExitedWithCode(1), "name != NULL");
}

} // namespace
} // namespace arlibtest
