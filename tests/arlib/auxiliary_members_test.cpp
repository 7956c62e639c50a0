// The file name table and the symbol table as they are rebuilt.

#include <string>
#include <vector>

#include "arlib/interface/symbol_name_list.h"
#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

// Object modules of the test's own: the contents are the names that they define, one a line, or
// "!" and the text of a failure.
class ListedModuleType final : public arlib::ObjectModuleArchiveMemberType {
public:
    bool getSymbols(arlib::ArchiveMember& member, arlib::SymbolNameList& names,
                    std::string& failure) const override {
        const std::string text = contentsOf(&member);
        for (size_t start = 0; start < text.size();) {
            const size_t end = std::min(text.size(), text.find('\n', start));
            const std::string line = text.substr(start, end - start);
            if (line[0] == '!') {
                failure = line.substr(1);
                return false;
            }
            names.add(line);
            start = end + 1;
        }
        return true;
    }
    bool getBuildAttributes(arlib::ArchiveMember&, attributes::FullAttr&, bool) const override {
        return false;
    }
};

const ListedModuleType moduleType;

class Tables : public ArlibTest {
protected:
    arlib::ArchiveMember* addModule(arlib::Archive& archive, const char* name,
                                    const std::string& symbols) {
        arlib::ArchiveMember* member = add(archive, name, symbols);
        member->setType(&moduleType);
        return member;
    }

    // What stands in the file after writing.
    testsupport::ParsedArchive written(arlib::Archive& archive) {
        EXPECT_TRUE(write("out.a", archive));
        testsupport::ParsedArchive parsed = testsupport::parseArchive(folder.read("out.a"));
        EXPECT_EQ(parsed.error, "");
        return parsed;
    }
};

Names symbolsOf(const testsupport::ParsedArchive& archive) {
    Names symbols;
    for (const testsupport::ParsedSymbol& symbol : archive.symbols) {
        symbols.push_back(symbol.name + " in " + symbol.member);
    }
    return symbols;
}

TEST_F(Tables, NameOfSixteenCharactersIsLong) {
    arlib::Archive archive;
    add(archive, "123456789012345", "1");
    add(archive, "1234567890123456", "2");
    add(archive, "another_long_name.o", "3");
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    ASSERT_NE(archive.getFileNameTable(), nullptr);
    EXPECT_EQ(contentsOf(archive.getFileNameTable()), "1234567890123456/\nanother_long_name.o/\n");
    EXPECT_EQ(archive.getMembers()[2]->getLongNameOffset(), 0U);
    EXPECT_EQ(archive.getMembers()[3]->getLongNameOffset(), 18U);
    EXPECT_EQ(namesOf(archive)[0], "//");
}

TEST_F(Tables, LastLongNameTakesTheTableAlong) {
    arlib::Archive archive;
    add(archive, "a.o", "1");
    arlib::ArchiveMember* longNamed = add(archive, "1234567890123456", "2");
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    archive.deleteMember(longNamed);
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    EXPECT_EQ(archive.getFileNameTable(), nullptr);
    EXPECT_EQ(namesOf(archive), Names{"a.o"});
}

TEST_F(Tables, StandInFrontSymbolsFirst) {
    arlib::Archive archive;
    addModule(archive, "1234567890123456.o", "alpha\n");
    addModule(archive, "b.o", "beta\n");
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    EXPECT_EQ(namesOf(archive), (Names{"/", "//", "1234567890123456.o", "b.o"}));
    EXPECT_TRUE(archive.areMemberOffsetsUpToDate());
}

TEST_F(Tables, OffsetsAreThoseOfTheFile) {
    arlib::Archive archive;
    addModule(archive, "1234567890123456.o", "alpha\nodd\n");
    addModule(archive, "b.o", "beta\n");
    const testsupport::ParsedArchive parsed = written(archive);
    EXPECT_EQ(symbolsOf(parsed),
              (Names{"alpha in 1234567890123456.o", "odd in 1234567890123456.o", "beta in b.o"}));
    for (const testsupport::ParsedMember& member : parsed.members) {
        EXPECT_EQ(member.headerOffset % 2, 0U);
    }
}

TEST_F(Tables, MembersThatAreNoModulesDefineNothing) {
    arlib::Archive archive;
    add(archive, "text", "alpha\n");
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    EXPECT_EQ(archive.getSymbolTable(), nullptr) << "none is needed";
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    archive.markSymbolTableStale();
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    ASSERT_NE(archive.getSymbolTable(), nullptr);
    EXPECT_EQ(contentsOf(archive.getSymbolTable()), std::string(4, '\0'));
    archive.setSymbolTableMode(arlib::SymbolTableMode_None);
    archive.markSymbolTableStale();
    ASSERT_TRUE(archive.updateAuxiliaryMembers());
    EXPECT_EQ(archive.getSymbolTable(), nullptr);
}

TEST_F(Tables, NameIsListedForEachMemberThatDefinesIt) {
    arlib::Archive archive;
    addModule(archive, "a.o", "same\nsame\n");
    addModule(archive, "b.o", "other\nsame\n");
    EXPECT_EQ(symbolsOf(written(archive)),
              (Names{"same in a.o", "same in a.o", "other in b.o", "same in b.o"}));
}

TEST_F(Tables, UniqueSymbolsStayWithTheFirstMember) {
    arlib::Archive archive;
    archive.setUniqueSymbols(true);
    addModule(archive, "a.o", "same\nsame\n");
    addModule(archive, "b.o", "other\nsame\n");
    EXPECT_EQ(symbolsOf(written(archive)), (Names{"same in a.o", "other in b.o"}));
}

TEST_F(Tables, UnreadableMemberAddsNoneOfItsNames) {
    arlib::Archive archive;
    addModule(archive, "a.o", "alpha\n");
    addModule(archive, "bad.o", "gathered\n!no section names\n");
    addModule(archive, "c.o", "gamma\n");
    handler.goesOn = true;
    EXPECT_EQ(symbolsOf(written(archive)), (Names{"alpha in a.o", "gamma in c.o"}));
    EXPECT_EQ(handler.reports,
              Names{"2: Unable to read symbols defined in archive member #1 'bad.o': no section "
                    "names"});
}

TEST_F(Tables, UnreadableMemberMayStopTheCollection) {
    arlib::Archive archive;
    addModule(archive, "a.o", "alpha\n");
    addModule(archive, "bad.o", "!broken\n");
    addModule(archive, "c.o", "gamma\n");
    EXPECT_EQ(symbolsOf(written(archive)), Names{"alpha in a.o"}) << "those so far are taken";
}

TEST_F(Tables, AreRebuiltWithNeutralFields) {
    testsupport::ArchiveBuilder builder;
    builder.add("a_rather_long_name.o", "1").symbol("x", 0);
    builder.symbolTableHeader().date = 99;
    builder.symbolTableHeader().uid = 98;
    builder.nameTableHeader().gid = 97;
    builder.nameTableHeader().mode = 0644;
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    archive.moveMember(archive.getMembers()[0], 1);
    const testsupport::ParsedArchive parsed = written(archive);
    for (const char* table : {"/", "//"}) {
        ASSERT_NE(parsed.table(table), nullptr);
        EXPECT_EQ(parsed.table(table)->header.substr(16, 32), "0           0     0     0       ");
    }
}

TEST_F(Tables, ThatAreNotStaleStayAsRead) {
    testsupport::ArchiveBuilder builder;
    builder.add("a_rather_long_name.o", "1").rawNameTable("junk/\na_rather_long_name.o/\n");
    builder.withSymbolTable().rawSymbolTable(std::string(9, '\0'));
    builder.symbolTableHeader().date = 99;
    std::string bytes = builder.bytes();
    // The member's index is that of the table that would have been built.
    bytes.replace(bytes.find("/0 "), 2, "/6");
    folder.write("lib.a", bytes);
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    ASSERT_TRUE(write("out.a", archive));
    const testsupport::ParsedArchive parsed =
        testsupport::parseArchive(folder.read("out.a"), testsupport::ArchiveRules::AnyTool);
    EXPECT_EQ(parsed.table("/")->contents, std::string(9, '\0'));
    EXPECT_EQ(parsed.table("/")->date, 99U);
    EXPECT_EQ(parsed.table("//")->contents, "junk/\na_rather_long_name.o/\n");
    EXPECT_EQ(parsed.names(), Names{"a_rather_long_name.o"});
}

} // namespace
} // namespace arlibtest
